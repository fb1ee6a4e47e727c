/* The table on two devices: every change goes to the peer over the hot-standby channel, a new peer gets everything. */
#pragma once

#include <atomic>

#include "server.h"
#include "sessions.h"

namespace session_table {

class Backup {
  public:
    /* `mod_id` names the module's messages on the link, the same on both devices. */
    Backup(Sessions *sessions, uint32_t mod_id) : sessions_(sessions), mod_id_(mod_id) {}

    /* Sends a change. Called in the order of the changes, with the table locked. */
    void Send(Change change, const Session &session);

    /* Sends all sessions of the active device; may wait for room. */
    void SendAll();

    /* A message of the peer: a channel buffer, which is freed. */
    void Receive(void *message);

    /* A batch of the peer begins or is complete. */
    void PeerBatch(bool begins);

    /* The answer to somebody whose change was carried out and sent: it waits until the peer has the change, or says that
     * it is on this device alone. */
    static Reply Promise();
    static bool IsKept(Reply *promise);

    /* Messages of the peer that were not understood. */
    uint64_t MalformedMessages() const { return malformed_.load(); }

  private:
    Sessions *sessions_;
    uint32_t mod_id_;
    std::atomic<uint32_t> message_id_{0};
    std::atomic<uint64_t> malformed_{0};
};

} // namespace session_table
