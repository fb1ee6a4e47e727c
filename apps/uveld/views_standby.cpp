#include "views.h"

#include <uvelhost/ha.h>
#include <uvelhost/standby_link.h>

namespace uveld {

namespace {

const char *BackupText(uint32_t state) {
    static constexpr const char *TEXTS[] = {"alone", "wait", "batch", "real-time"};
    static_assert(HA_STATE_ALONE == 0 && HA_STATE_WAIT == 1 && HA_STATE_BATCH == 2 && HA_STATE_REALTIME == 3);
    return state < std::size(TEXTS) ? TEXTS[state] : "unknown";
}

} // namespace

Table ShowStandby(const ViewContext &context, const std::vector<std::string> &) {
    if (!context.has_link)
        throw NoView("no standby link is configured");
    YSB_LINK_STATE_S state;
    YSB_LINK_COUNTERS_S counters;
    if (YSB_Link_GetState(&state) != UVELHOST_OK || YSB_Link_GetCounters(&counters) != UVELHOST_OK)
        throw NoView("the standby link is closed");
    Table table({{"name", "Standby"}, {"value", "Value"}});
    table.Add({"connected", state.ulConnected == 1});
    table.Add({"active", state.ulActive == 1});
    table.Add({"peer_active", state.ulPeerActive == 1});
    table.Add({"backup", BackupText(state.ulBackup)});
    table.Add({"term", state.ulTerm});
    table.Add({"port", state.ulPort});
    const std::pair<const char *, uint64_t> numbers[] = {
        {"messages_sent", counters.ulMessagesSent},
        {"packets_sent", counters.ulPacketsSent},
        {"bytes_sent", counters.ulBytesSent},
        {"packets_received", counters.ulPacketsReceived},
        {"bytes_received", counters.ulBytesReceived},
        {"acknowledged", counters.ulAcknowledged},
        {"resent", counters.ulResent},
        {"bytes_held", counters.ulBytesHeld},
        {"refused_no_peer", counters.ulRefusedNoPeer},
        {"refused_window", counters.ulRefusedWindow},
        {"refused_too_large", counters.ulRefusedTooLarge},
        {"refused_malformed", counters.ulRefusedMalformed},
        {"refused_memory", counters.ulRefusedMemory},
        {"connects", counters.ulConnects},
        {"disconnects", counters.ulDisconnects},
        {"failed_connects", counters.ulFailedConnects},
        {"timeouts", counters.ulTimeouts},
        {"violations", counters.ulViolations},
        {"resumed", counters.ulResumed},
        {"new_streams", counters.ulNewStreams},
        {"batches", counters.ulBatches},
        {"batches_delivered", counters.ulBatchesDelivered},
        {"peer_batches", counters.ulPeerBatches},
    };
    for (const auto &[name, value] : numbers)
        table.Add({name, value});
    for (uint32_t reason = 1; reason < YSB_LINK_REFUSALS; ++reason) {
        if (counters.aulRefused[reason] != 0)
            table.Add({std::string("peers turned away: ") + YSB_Link_RefusalText(reason), counters.aulRefused[reason]});
        if (counters.aulRefusedBy[reason] != 0)
            table.Add({std::string("turned away by the peer: ") + YSB_Link_RefusalText(reason),
                       counters.aulRefusedBy[reason]});
    }
    return table;
}

} // namespace uveld
