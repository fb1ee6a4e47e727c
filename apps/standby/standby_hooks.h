/* Joins the hot-standby link of the host to the library, in a service process.
 *
 * The host knows nothing of the library, the library reaches the host through product hooks. What belongs between the
 * two stands here: the hooks of hot standby, and the assembling of messages from the packets that the link delivers. */
#ifndef UVEL_APPS_STANDBY_STANDBY_HOOKS_H
#define UVEL_APPS_STANDBY_STANDBY_HOOKS_H

#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelhost/standby_link.h>

namespace uvel::apps {

/* Installs the hooks of hot standby that the library leaves to the product layer: backup state, processors, finished
 * batches. The others it installs itself (KIVO_VirtualToHook). After UVEL_GlobalVarInit, which empties the table. */
void InstallStandbyHooks();

/* Puts the packets of a link together, one message at a time as they come. For the link's thread alone. */
class MessageAssembler {
  public:
    MessageAssembler() = default;
    ~MessageAssembler() { Reset(); }
    MessageAssembler(const MessageAssembler &) = delete;
    MessageAssembler &operator=(const MessageAssembler &) = delete;

    /* Takes a packet of `length` bytes from YSB_LINK_CONFIG_S::pfReceive. The message that it completes, a channel buffer
     * (CHI_BACK_YSB) of the caller, comes in *message, otherwise null. The result is that of pfReceive: not 0 when memory
     * is short, and the packet must come again. */
    uint32_t Take(YSB_SMBUF_S *packet, uint32_t length, void **message);

    /* Forgets a message in progress: the rest of it will not come (YSB_LINK_CONFIG_S::pfPeerIsNew). */
    void Reset();

  private:
    CHI_RECV_CTX_S context_{};
};

} // namespace uvel::apps

#endif
