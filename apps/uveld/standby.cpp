#include "standby.h"

#include <atomic>
#include <stdexcept>
#include <uvelhost/standby_link.h>

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

void OnPacket(void *context, uint32_t mod_id, uint8_t, YSB_SMBUF_S *buffer, uint32_t length) {
    bool is_taken = false;
    ForParts(context, [&](const UVELD_STANDBY_S &standby) {
        if (!is_taken && standby.ulModId == mod_id && standby.pfReceive != nullptr) {
            is_taken = true;
            standby.pfReceive(buffer, length);
        }
    });
    if (!is_taken) {
        spdlog::warn("standby: a packet of the unknown module id {} was dropped", mod_id);
        YSB_Adapt_Smbuf_Destroy(buffer);
    }
}

void OnPeerIsNew(void *context) {
    ForParts(context, [](const UVELD_STANDBY_S &standby) {
        if (standby.pfPeerIsNew != nullptr)
            standby.pfPeerIsNew();
    });
}

void OnBatch(void *context, uint32_t batch) {
    spdlog::info("standby: the peer is to get everything (batch {})", batch);
    ForParts(context, [](const UVELD_STANDBY_S &standby) {
        if (standby.pfBatch != nullptr)
            standby.pfBatch();
    });
    (void)YSB_Link_BatchDone(batch);
}

void OnBatchDelivered(void *, uint32_t batch) {
    spdlog::info("standby: the peer has everything (batch {})", batch);
}

void OnPeerBatch(void *context, uint32_t begins) {
    spdlog::info("standby: a batch of the peer {}", begins == 1 ? "begins" : "is complete");
    ForParts(context, [begins](const UVELD_STANDBY_S &standby) {
        if (standby.pfPeerBatch != nullptr)
            standby.pfPeerBatch(begins);
    });
}

/* Modules hear of a role only when it changed; at first every role is new. */
std::atomic<int> g_role{-1};

void OnState(void *context) {
    YSB_LINK_STATE_S state;
    if (YSB_Link_GetState(&state) != UVELHOST_OK)
        return;
    spdlog::info("standby: {}, the peer is {}", state.ulActive == 1 ? "active" : "not active",
                 state.ulConnected == 1 ? "there" : "away");
    if (g_role.exchange(static_cast<int>(state.ulActive)) == static_cast<int>(state.ulActive))
        return;
    ForParts(context, [&](const UVELD_STANDBY_S &standby) {
        if (standby.pfRole != nullptr)
            standby.pfRole(state.ulActive);
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
    char error[256] = "";
    if (YSB_Link_Open(&link, error, sizeof error) != UVELHOST_OK)
        throw std::runtime_error(std::string("the standby link cannot be opened: ") + error);
    OnState(link.pContext); /* a link that begins with its role may have nothing to report later */
}

void CloseLink() {
    YSB_Link_Close();
}

} // namespace uveld
