/* The sending half: messages of any thread into the stream, batches, roles. */

#include "standby/endpoint.h"

#include "standby/role.h"
#include <algorithm>
#include <chrono>
#include <new>
#include <random>
#include <uvelhost/crypto.h>
#include <uvelhost/ha.h>

namespace uvel::host::standby {

using C = YSB_LINK_COUNTERS_S;

constexpr uint32_t FRAGMENT_NUMBER = 44; /* offset in a message's header */

/* Payload from which on a message is kept in its own buffer in place of a copy; but no buffer that is much larger than
 * its message, for the window counts messages. */
constexpr uint32_t KEEP_BUFFER = 16384;

static bool IsWorthKeeping(const YSB_SMBUF &message, uint32_t length, uint32_t mtu) {
    const uint32_t payload = length - MESSAGE_HEADER;
    return payload >= KEEP_BUFFER && payload <= mtu && message.size - length <= length / 4;
}

static uint32_t FragmentsOf(uint32_t payload, uint32_t mtu) {
    return payload == 0 ? 1 : (payload - 1) / mtu + 1;
}

/* What a message takes in the stream. */
static std::size_t BytesFor(uint32_t payload, uint32_t mtu) {
    return std::size_t{FragmentsOf(payload, mtu)} * (FRAME_HEAD + MESSAGE_HEADER) + payload;
}

Endpoint::Endpoint(EndpointSettings settings, EndpointOwner &owner, Counters &counters, uint64_t now)
    : settings_(std::move(settings)), owner_(owner), counters_(counters), stream_(settings_.window),
      role_(settings_.role), active_(settings_.role == YSB_LINK_ROLE_ACTIVE), reader_(settings_.max_message),
      alone_since_(now) {}

void Endpoint::Make(const Calls &calls) {
    if (calls.state_changed)
        owner_.StateChanged();
    if (calls.progress)
        owner_.Progress();
    if (calls.batch_delivered != 0)
        owner_.BatchDelivered(calls.batch_delivered);
    if (calls.batch_wanted != 0)
        owner_.BatchWanted(calls.batch_wanted);
}

/* Whether the message can travel at all: a receiver that puts fragments together goes by the total length in the
 * header, which must therefore be true of a message that is cut, and must not announce more than there is. */
Endpoint::Sending Endpoint::Check(YSB_SMBUF &message, uint32_t length) {
    if (length < MESSAGE_HEADER || length > message.size) {
        counters_.AddAlone(&C::ulRefusedMalformed);
        return Sending::MALFORMED;
    }
    const uint32_t payload = length - MESSAGE_HEADER;
    if (payload > settings_.max_message || (peer_max_message_ != 0 && payload > peer_max_message_)) {
        counters_.AddAlone(&C::ulRefusedTooLarge);
        return Sending::TOO_LARGE;
    }
    const uint32_t total = Get<uint32_t>(DataOf(&message) + TOTAL_LENGTH);
    if (total > payload || (payload > settings_.mtu && total != payload)) {
        counters_.AddAlone(&C::ulRefusedMalformed);
        return Sending::MALFORMED;
    }
    return Sending::ACCEPTED;
}

/* There is no room. While the peer is there, everything is sent again as soon as there is some. While it is away, there
 * is no going on from here, only from the beginning. That the state is another one now the link's thread tells: the
 * sender may hold locks of its own. */
void Endpoint::Overflow() {
    if (attached_) {
        fell_behind_ = fell_behind_ || !gap_;
        gap_ = true;
        return;
    }
    stream_.Restart(0);
    batch_end_ = 0;
    delivered_ = false;
    room_.notify_all();
}

bool Endpoint::WaitForRoom(std::unique_lock<std::mutex> &lock, std::size_t bytes, Patience patience) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(settings_.send_wait_ms);
    const uint64_t name = stream_.Name();
    const auto settled = [&] { return shut_ || stream_.Name() != name || stream_.Fits(bytes); };
    ++waiting_;
    if (patience == Patience::BATCH)
        room_.wait(lock, settled);
    else if (patience == Patience::SHORT && attached_ && !gap_) /* with a gap everything is sent again anyway */
        room_.wait_until(lock, until, [&] { return settled() || !attached_; });
    --waiting_;
    /* A batch belongs to the stream it was asked for. */
    return !shut_ && stream_.IsOpen() && stream_.Fits(bytes) && (stream_.Name() == name || patience != Patience::BATCH);
}

void Endpoint::AppendMessage(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) {
    uint8_t *header = DataOf(message.get());
    const uint32_t payload = length - MESSAGE_HEADER;
    if (IsWorthKeeping(*message, length, settings_.mtu)) {
        Put(header + FRAGMENT_NUMBER, uint32_t{0});
        stream_.Append({length, FrameType::DATA, cpu, module}, std::move(message));
        return;
    }
    stream_.Prepare(BytesFor(payload, settings_.mtu));
    for (uint32_t fragment = 0, at = 0; fragment < FragmentsOf(payload, settings_.mtu); ++fragment) {
        const uint32_t part = std::min(payload - at, settings_.mtu);
        uint8_t *body = stream_.Append({MESSAGE_HEADER + part, FrameType::DATA, cpu, module});
        std::memcpy(body, header, FRAGMENT_NUMBER);
        Put(body + FRAGMENT_NUMBER, fragment);
        std::memcpy(body + MESSAGE_HEADER, header + MESSAGE_HEADER + at, part);
        at += part;
    }
}

Endpoint::Sending Endpoint::Send(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length, Patience patience) {
    std::unique_lock lock(lock_);
    Sending checked = Check(*message, length);
    if (checked != Sending::ACCEPTED)
        return checked;
    if (!stream_.IsOpen() || shut_) {
        counters_.AddAlone(&C::ulRefusedNoPeer);
        return Sending::NO_PEER;
    }
    const uint32_t payload = length - MESSAGE_HEADER;
    const std::size_t bytes = BytesFor(payload, settings_.mtu);
    if (!stream_.Fits(bytes)) {
        if (!WaitForRoom(lock, bytes, patience)) {
            counters_.AddAlone(&C::ulRefusedWindow);
            if (stream_.IsOpen() && patience != Patience::BATCH)
                Overflow();
            lock.unlock();
            owner_.Wake();
            return Sending::NO_ROOM;
        }
        checked = Check(*message, length); /* the peer may be another one by now */
        if (checked != Sending::ACCEPTED)
            return checked;
    }
    const uint32_t fragments = FragmentsOf(payload, settings_.mtu);
    try {
        AppendMessage(module, cpu, std::move(message), length);
    } catch (const std::bad_alloc &) {
        counters_.AddAlone(&C::ulRefusedMemory);
        Overflow();
        return Sending::NO_MEMORY;
    }
    counters_.AddAlone(&C::ulMessagesSent);
    counters_.AddAlone(&C::ulPacketsSent, fragments);
    counters_.AddAlone(&C::ulBytesSent, std::size_t{fragments} * MESSAGE_HEADER + payload);
    return Sending::ACCEPTED;
}

/* ---- batches */

bool Endpoint::AppendMark(FrameType type) {
    try {
        stream_.Prepare(FRAME_HEAD);
    } catch (const std::bad_alloc &) {
        return false;
    }
    stream_.Append({0, type, 0, batch_});
    return true;
}

bool Endpoint::NewBatch(Calls &calls) {
    ++batch_;
    delivered_ = false;
    batch_end_ = 0;
    gap_ = !AppendMark(FrameType::BATCH_BEGIN);
    if (gap_)
        return false;
    counters_.Add(&C::ulBatches);
    calls.batch_wanted = batch_;
    calls.state_changed = true;
    return true;
}

bool Endpoint::NewStream(Calls &calls) {
    uint64_t name = 0;
    while (name == 0) {
        if (CRYPT_random(reinterpret_cast<uint8_t *>(&name), sizeof name) != UVELHOST_OK)
            name = std::random_device()();
    }
    stream_.Restart(name);
    room_.notify_all();
    counters_.Add(&C::ulNewStreams);
    if (NewBatch(calls))
        return true;
    stream_.Restart(0);
    return false;
}

bool Endpoint::BatchDone(uint32_t batch) {
    {
        std::lock_guard lock(lock_);
        if (batch == 0 || batch != batch_ || batch_end_ != 0 || !stream_.IsOpen())
            return false;
        if (!AppendMark(FrameType::BATCH_END)) {
            Overflow(); /* a batch that cannot be ended is done anew */
            return false;
        }
        batch_end_ = stream_.LastNumber();
    }
    owner_.Wake();
    return true;
}

bool Endpoint::StartBatch() {
    Calls calls;
    {
        std::lock_guard lock(lock_);
        if (!up_ || !NewBatch(calls))
            return false;
    }
    Make(calls);
    owner_.Wake();
    return true;
}

/* ---- roles and state */

RoleInfo Endpoint::OwnRole() const {
    return {static_cast<uint8_t>(role_), static_cast<uint8_t>(active_), term_, settings_.priority};
}

uint32_t Endpoint::NextTerm() const {
    const uint32_t latest = std::max(term_, peer_role_.term);
    return latest == UINT32_MAX ? latest : latest + 1; /* none is behind one that wrapped */
}

void Endpoint::BecomeActive(bool active, uint32_t least_term, Calls &calls) {
    term_ = std::max(term_, least_term);
    if (active == active_)
        return;
    active_ = active;
    calls.state_changed = true;
}

/* By the configured role; where the pair decides, by what the peer said when it was last heard of. */
bool Endpoint::IsToBeActive() const {
    if (role_ != YSB_LINK_ROLE_AUTO)
        return role_ == YSB_LINK_ROLE_ACTIVE;
    return up_ ? DecideRole(OwnRole(), peer_role_, settings_.name, settings_.peer_name) == Verdict::ACTIVE : active_;
}

void Endpoint::SetRole(uint32_t role) {
    Calls calls;
    {
        std::lock_guard lock(lock_);
        role_ = role;
        const bool active = IsToBeActive();
        BecomeActive(active, active && !active_ ? NextTerm() : term_, calls);
        tell_role_ = true;
    }
    Make(calls);
    owner_.Wake();
}

void Endpoint::TellVersions() {
    {
        std::lock_guard lock(lock_);
        tell_versions_ = true;
    }
    owner_.Wake();
}

uint32_t Endpoint::Backup() const {
    if (!up_)
        return HA_STATE_ALONE;
    if (active_)
        return delivered_ && !gap_ ? HA_STATE_REALTIME : HA_STATE_BATCH;
    switch (peer_batch_) {
    case PeerBatchState::NONE:
        return HA_STATE_WAIT;
    case PeerBatchState::BEGUN:
        return HA_STATE_BATCH;
    default:
        return HA_STATE_REALTIME;
    }
}

YSB_LINK_STATE_S Endpoint::State() const {
    std::lock_guard lock(lock_);
    YSB_LINK_STATE_S state{};
    state.ulConnected = up_ ? 1 : 0;
    state.ulActive = active_ ? 1 : 0;
    state.ulPeerActive = peer_role_.active != 0 ? 1 : 0;
    state.ulBackup = Backup();
    state.ulTerm = term_;
    state.ulPeerCpuNum = up_ ? peer_cpus_ : 0;
    return state;
}

std::size_t Endpoint::BytesHeld() const {
    std::lock_guard lock(lock_);
    return stream_.Held();
}

/* Only while the peer has everything and follows: before, and after a message was refused, a position says nothing. */
uint64_t Endpoint::Position() const {
    std::lock_guard lock(lock_);
    return up_ && delivered_ && !gap_ ? stream_.Position() : 0;
}

uint32_t Endpoint::Fate(uint64_t position) const {
    std::lock_guard lock(lock_);
    if (position > stream_.EarlierPosition() && position <= stream_.TakenPosition())
        return YSB_LINK_FATE_TAKEN;
    return up_ && position > stream_.EarlierPosition() ? YSB_LINK_FATE_PENDING : YSB_LINK_FATE_UNKNOWN;
}

void Endpoint::Shut() {
    std::lock_guard lock(lock_);
    shut_ = true;
    room_.notify_all();
}

} // namespace uvel::host::standby
