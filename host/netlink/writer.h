/* Writes what the kernel has into the device model. */
#ifndef UVEL_HOST_NETLINK_WRITER_H
#define UVEL_HOST_NETLINK_WRITER_H

#include <array>
#include <map>
#include <set>

#include "netlink/kernel_state.h"
#include <uvelhost/model.h>
#include <uvelhost/netlink.h>

namespace uvel::host::netlink {

/* Numbers that objects of the kernel bear in the model, as long as they are there. */
class Numbers {
  public:
    /* The number of `index`; a new one gets `wished` when that is free, otherwise the lowest free one from `from` on. */
    uint32_t Get(uint32_t index, uint32_t wished, uint32_t from);
    /* UVELHOST_NONE when it has none. */
    uint32_t Find(uint32_t index) const;
    void Release(uint32_t index);
    /* Releases what is not as asked. */
    template <typename Keep>
    void KeepOnly(Keep &&keep) {
        std::erase_if(of_, [&](const auto &entry) {
            if (keep(entry.first))
                return false;
            taken_.erase(entry.second);
            return true;
        });
    }

  private:
    std::map<uint32_t, uint32_t> of_;
    std::set<uint32_t> taken_;
};

/* One batch at a time: it is opened by the first change and ended by Commit. Every change names the state after it. */
class Writer {
  public:
    explicit Writer(const NLF_CONFIG_S &config) : config_(config) {}
    ~Writer();
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    /* A link is new or has changed; `before` is what it was, null for a new one. */
    void PutLink(const KernelState &state, const Link &link, const Link *before);
    /* A link goes; the state does not hold it any more. */
    void RemoveLink(const KernelState &state, const Link &link);
    /* An address of the interface came, went or changed. */
    void PutAddresses(const KernelState &state, const Address &changed);
    /* The VLANs of the bridge or port changed. */
    void PutVlans(const KernelState &state, const Link &link);
    /* Everything, and nothing else. */
    void PutAll(const KernelState &state);

    /* False when the batch is lost. */
    bool Commit();

    uint64_t Refused() const { return refused_; }

  private:
    bool Open();
    void Count(uint32_t result) { refused_ += result != UVELHOST_OK ? 1 : 0; }
    void LeaveMaster(const Link &before, const Link &after);
    void PutIf(const KernelState &state, const Link &link);
    void PutVrf(const Link &link);
    void RemoveVrf(const KernelState &state, const Link &link);
    uint32_t TrunkOf(const Link &bond);
    void PutTrunk(const Link &link);
    void PutMember(const KernelState &state, const Link &link);
    void PutAddress(const Address &address, bool main);
    void RemoveAddress(const Address &address);
    void PutAllAddresses(const std::vector<Address> &addresses);
    void ReplaceVlans(const Link &link, const Vlans &vlans);
    void RemoveVlans(const Link &link);
    void CountVlans(const Vlans &vlans, bool on);
    void BindVlans(uint32_t port, const Vlans *before, const Vlans &after);
    void PutAllVlans(const KernelState &state, const Link &link);

    NLF_CONFIG_S config_;
    MDL_BATCH *batch_ = nullptr;
    bool lost_ = false;
    uint64_t refused_ = 0;
    Numbers ports_;
    Numbers trunks_;
    std::map<uint32_t, Vlans> written_vlans_;
    std::array<uint32_t, VLAN_IDS> vlan_users_ = {};
};

} // namespace uvel::host::netlink

#endif
