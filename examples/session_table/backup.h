/* The table on two devices: every change goes to the peer over the hot-standby channel, a new peer gets everything. */
#pragma once

#include <atomic>

#include "sessions.h"

namespace session_table {

class Backup {
  public:
    /* `mod_id` names the module's messages on the link, the same on both devices. */
    Backup(Sessions *sessions, uint32_t mod_id) : sessions_(sessions), mod_id_(mod_id) {}

    /* Sends a change. Called in the order of the changes, with the table locked. On a device that is not the active one
     * nothing is sent: its changes are the peer's. */
    void Send(Change change, const Session &session);

    /* A message of the peer: a channel buffer, which is freed. */
    void Receive(void *message);
    void SendAll();
    void PeerBatch(bool begins);
    void SetActive(bool active) { active_.store(active); }

    /* Messages of the peer that were not understood. */
    uint64_t MalformedMessages() const { return malformed_.load(); }

  private:
    void Output(Change change, const Session &session);

    Sessions *sessions_;
    uint32_t mod_id_;
    std::atomic<bool> active_{false};
    std::atomic<uint32_t> message_id_{0};
    std::atomic<uint64_t> malformed_{0};
};

} // namespace session_table
