#include "sessions.h"

#include <cstring>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_l2_query.h>

namespace session_table {

static constexpr char ON_STANDBY[] = "this device is on standby";

/* Empty, or why this session must not be. */
std::string Sessions::Check(const Session &session) const {
    const auto *name = reinterpret_cast<const uint8_t *>(session.name);
    const size_t length = std::strlen(session.name);
    if (length == 0 || length > settings_.name_max)
        return "the user name must have 1 to " + std::to_string(settings_.name_max) + " characters";
    if (SRV_CheckValidCharFlat(name, static_cast<uint32_t>(length), settings_.name_class) != KIVO_OK)
        return "the user name has a character that is not allowed";
    if (KIVO_IF_IsValidIfIndex(session.ifindex) == 0 || KIVO_IF_GetIfByIndex(session.ifindex) == nullptr)
        return "there is no such interface";
    if (KIVO_IF_IsLineStateUp(session.ifindex) != 1)
        return "the interface is down";
    if (settings_.vlan_check) {
        uint32_t port = 0;
        if (L2IF_SH_PORT_GetIndexByIfIndex(session.ifindex, &port) != KIVO_OK ||
            KIVO_Adapt_PortIsInCfgVlan(port, session.vlan) != 1)
            return "the interface is not in that VLAN";
    }
    return {};
}

void Sessions::Tell(Change change, const Session &session) const {
    if (listener_)
        listener_(change, session);
}

void Sessions::SetActive(bool active) {
    const std::lock_guard lock(lock_);
    active_ = active;
}

bool Sessions::IsActive() const {
    const std::lock_guard lock(lock_);
    return active_;
}

std::string Sessions::LogOn(const Session &session) {
    std::string reason = Check(session);
    return reason.empty() ? Add(session) : reason;
}

std::string Sessions::Add(const Session &session) {
    const std::lock_guard lock(lock_);
    if (!active_)
        return ON_STANDBY;
    switch (store_.Add(session)) {
    case Store::Result::OK:
        Tell(Change::ADDED, session);
        return {};
    case Store::Result::PRESENT:
        return "there is a session of this MAC address";
    case Store::Result::FULL:
        return "there are " + std::to_string(settings_.max_sessions) + " sessions, more are not allowed";
    case Store::Result::NO_MEMORY:
        break;
    }
    return "memory is short";
}

std::string Sessions::LogOff(const Mac &mac) {
    const std::lock_guard lock(lock_);
    if (!active_)
        return ON_STANDBY;
    Session removed;
    if (!store_.Remove(mac, &removed))
        return "there is no session of this MAC address";
    Tell(Change::REMOVED, removed);
    return {};
}

uint32_t Sessions::End(uint32_t ifindex, uint32_t vlan) {
    const std::lock_guard lock(lock_);
    if (!active_)
        return 0;
    const std::vector<Session> ended = store_.RemoveOnInterface(ifindex, vlan);
    for (const Session &session : ended)
        Tell(Change::REMOVED, session);
    return static_cast<uint32_t>(ended.size());
}

std::optional<Session> Sessions::Look(const Mac &mac) const {
    const std::lock_guard lock(lock_);
    const Session *found = store_.Find(mac);
    return found == nullptr ? std::nullopt : std::optional(*found);
}

Digest Sessions::GetDigest() const {
    const std::lock_guard lock(lock_);
    return store_.GetDigest();
}

void Sessions::Apply(Change change, const Session &session) {
    const std::lock_guard lock(lock_);
    if (active_)
        return;
    if (change == Change::ADDED)
        (void)store_.Put(session);
    else
        (void)store_.Remove(session.mac, nullptr);
}

void Sessions::BeginBatch() {
    const std::lock_guard lock(lock_);
    if (!active_)
        store_.MarkAll();
}

uint32_t Sessions::EndOfBatch() {
    const std::lock_guard lock(lock_);
    return active_ ? 0 : static_cast<uint32_t>(store_.RemoveMarked().size());
}

/* The peer must end with what stands here, whatever is said on other threads meanwhile: who changed the session told the
 * peer so, perhaps before this did with what it still was. Looking again afterwards settles it, since a later change is
 * told later. */
void Sessions::TellAsItIs(const Session &session, const Listener &listener) const {
    listener(Change::ADDED, session);
    std::optional<Session> told = session;
    for (std::optional<Session> now = Look(session.mac); now != told; now = Look(session.mac)) {
        told = now;
        listener(now ? Change::ADDED : Change::REMOVED, now.value_or(session));
    }
}

void Sessions::TellAll(const Listener &listener) const {
    for (uint32_t bucket = 0; bucket < Store::BucketCount(); ++bucket) {
        std::vector<Session> sessions;
        {
            const std::lock_guard lock(lock_);
            sessions = store_.InBucket(bucket);
        }
        for (const Session &session : sessions)
            TellAsItIs(session, listener);
    }
}

} // namespace session_table
