#include "standby.h"

#include <mutex>
#include <standby_hooks.h>
#include <stdexcept>
#include <utility>
#include <uvelhost/standby_link.h>

#include "service_log.h"

namespace uveld {

namespace {

/* Calls `call` with the record of every module that takes part. */
template <typename Call>
void ForParts(void *context, Call call) {
    for (const auto &module : *static_cast<const Modules *>(context)) {
        if (const UVELD_STANDBY_S *standby = module->Standby())
            call(*standby);
    }
}

/* Puts together what the link brings; used on the link's thread alone. */
uvel::apps::MessageAssembler g_assembler;

uint32_t OnPacket(void *context, uint32_t mod_id, uint8_t, YSB_SMBUF_S *packet, uint32_t length) {
    void *message = nullptr;
    const uint32_t result = g_assembler.Take(packet, length, &message);
    if (message == nullptr)
        return result;
    bool is_taken = false;
    ForParts(context, [&](const UVELD_STANDBY_S &standby) {
        if (!is_taken && standby.ulModId == mod_id && standby.pfMessage != nullptr) {
            is_taken = true;
            standby.pfMessage(message);
        }
    });
    if (!is_taken) {
        LogWarning("standby: a message of the unknown module id {} was dropped", mod_id);
        CBUF_Free(CHI_BACK_YSB, message);
    }
    return UVELHOST_OK;
}

void OnPeerIsNew(void *) {
    g_assembler.Reset();
}

void OnBatch(void *context, uint32_t batch) {
    LogInfo("standby: the peer is to get everything (batch {})", batch);
    ForParts(context, [](const UVELD_STANDBY_S &standby) {
        if (standby.pfBatch != nullptr)
            standby.pfBatch();
    });
    (void)YSB_Link_BatchDone(batch);
}

void OnBatchDelivered(void *, uint32_t batch) {
    LogInfo("standby: the peer has everything (batch {})", batch);
}

void OnPeerBatch(void *context, uint32_t begins) {
    LogInfo("standby: a batch of the peer {}", begins == 1 ? "begins" : "is complete");
    ForParts(context, [begins](const UVELD_STANDBY_S &standby) {
        if (standby.pfPeerBatch != nullptr)
            standby.pfPeerBatch(begins);
    });
}

/* Modules hear of a role only when it changed; at first every role is new. States come on several threads: under the lock
 * none overtakes another. */
void OnState(void *context) {
    static std::mutex lock;
    static int role = -1;
    const std::lock_guard guard(lock);
    YSB_LINK_STATE_S state;
    if (YSB_Link_GetState(&state) != UVELHOST_OK)
        return;
    LogInfo("standby: {}, the peer is {}", state.ulActive == 1 ? "active" : "not active",
            state.ulConnected == 1 ? "there" : "away");
    if (std::exchange(role, static_cast<int>(state.ulActive)) == static_cast<int>(state.ulActive))
        return;
    ForParts(context, [&](const UVELD_STANDBY_S &standby) {
        if (standby.pfRole != nullptr)
            standby.pfRole(state.ulActive);
    });
}

void OnProgress(void *context) {
    ForParts(context, [](const UVELD_STANDBY_S &standby) {
        if (standby.pfProgress != nullptr)
            standby.pfProgress();
    });
}

} // namespace

void OpenLink(const StandbyConfiguration &configuration, const Modules &modules) {
    YSB_LINK_CONFIG_S link{};
    link.pszListen = configuration.listen.empty() ? nullptr : configuration.listen.c_str();
    link.pszPeer = configuration.peer.empty() ? nullptr : configuration.peer.c_str();
    link.pszCertificate = configuration.certificate.c_str();
    link.pszKey = configuration.key.c_str();
    link.pszAuthority = configuration.authority.c_str();
    link.pszPeerName = configuration.peer_name.c_str();
    link.ulRole = configuration.role;
    link.ulPriority = configuration.priority;
    link.ulTakeoverMs = configuration.takeover_ms;
    link.ulHeartbeatMs = configuration.heartbeat_ms;
    link.ulTimeoutMs = configuration.timeout_ms;
    link.ulBoard = configuration.board;
    link.ulPeerBoard = configuration.peer_board;
    link.ulWindow = configuration.window_bytes;
    link.pContext = const_cast<Modules *>(&modules); /* the callbacks only read it */
    link.pfReceive = OnPacket;
    link.pfPeerIsNew = OnPeerIsNew;
    link.pfBatch = OnBatch;
    link.pfBatchDelivered = OnBatchDelivered;
    link.pfPeerBatch = OnPeerBatch;
    link.pfStateChanged = OnState;
    link.pfProgress = OnProgress;
    char error[256] = "";
    if (YSB_Link_Open(&link, error, sizeof error) != UVELHOST_OK)
        throw std::runtime_error(std::string("the standby link cannot be opened: ") + error);
    OnState(link.pContext); /* a link that begins with its role may have nothing to report later */
}

void CloseLink() {
    YSB_Link_Close();
}

} // namespace uveld
