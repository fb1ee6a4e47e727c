/* The module's heart: the table, who may change it, and who hears of a change. */
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "settings.h"
#include "store.h"

namespace session_table {

class Sessions {
  public:
    /* Hears of each change, in order, while the table is locked. */
    using Listener = std::function<void(Change, const Session &)>;

    Sessions(uint32_t mid, const Settings &settings) : settings_(settings), store_(mid, settings.max_sessions) {}

    void SetListener(Listener listener) { listener_ = std::move(listener); }

    /* Checks and adds a session. Empty when it was added, otherwise the reason. */
    std::string LogOn(const Session &session);

    /* Empty when there was such a session, otherwise the reason. */
    std::string LogOff(const Mac &mac);

    /* Only the active device changes its table by itself; one on standby follows its peer's (Apply). A new table is
     * active. */
    void SetActive(bool active);
    bool IsActive() const;

    /* The interface went down or away: its sessions end, on the active device. Their number. */
    uint32_t InterfaceDown(uint32_t ifindex) { return End(ifindex, Store::ANY_VLAN); }

    /* The port left a VLAN: its sessions there end. Their number. */
    uint32_t PortLeftVlan(uint32_t ifindex, uint32_t vlan) { return End(ifindex, vlan); }

    std::optional<Session> Look(const Mac &mac) const;
    Digest GetDigest() const;

    /* A change that the peer made; the active device does not listen. */
    void Apply(Change change, const Session &session);

    /* The peer sends everything: what it does not send until EndOfBatch is gone. The number that was. */
    void BeginBatch();
    uint32_t EndOfBatch();

    /* Tells `listener` of all sessions as if they were just added, without locking the table while it is told: it may
     * wait. A session that changes meanwhile is told again, so that what was told last is how it is. */
    void TellAll(const Listener &listener) const;

  private:
    std::string Check(const Session &session) const;
    std::string Add(const Session &session);
    uint32_t End(uint32_t ifindex, uint32_t vlan);
    void Tell(Change change, const Session &session) const;
    void TellAsItIs(const Session &session, const Listener &listener) const;

    const Settings settings_;
    Listener listener_;
    mutable std::mutex lock_;
    bool active_ = true;
    Store store_;
};

} // namespace session_table
