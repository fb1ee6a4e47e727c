/* The receiving half, and the life of a connection. */

#include "standby/endpoint.h"

#include "standby/role.h"
#include <algorithm>
#include <utility>
#include <uvelhost/ha.h>

namespace uvel::host::standby {

using C = YSB_LINK_COUNTERS_S;

constexpr std::size_t ACKNOWLEDGE_AFTER = 256 << 10; /* bytes taken, at the latest */

/* ---- connection */

void Endpoint::Connected(uint64_t now) {
    reader_.Reset();
    control_.clear();
    sending_.clear();
    acknowledge_ = heartbeat_ = false;
    phase_ = Phase::AWAIT_HELLO;
    refused_ = Refusal::NONE;
    trouble_.clear();
    last_in_ = last_out_ = now;
    told_ = received_;
    untold_bytes_ = 0;

    Hello hello;
    hello.stream = peer_stream_;
    hello.received = received_;
    hello.max_message = settings_.max_message;
    hello.cpus = settings_.cpus;
    {
        std::lock_guard lock(lock_);
        hello.role = OwnRole();
        tell_role_ = tell_versions_ = false;
    }
    hello.modules = Modules::Instance().Begin(); /* what is registered from here on asks to be told */
    AppendFrame(control_, {0, FrameType::HELLO}, EncodeHello(hello));
}

void Endpoint::Lost() {
    const bool was_up = phase_ == Phase::RUNNING;
    phase_ = Phase::AWAY;
    reader_.Reset();
    Modules::Instance().End();
    {
        std::lock_guard lock(lock_);
        up_ = attached_ = false;
        room_.notify_all();
    }
    if (was_up) {
        alone_since_ = last_in_;
        counters_.Add(&C::ulDisconnects);
        owner_.StateChanged();
        owner_.Progress();
    }
}

Endpoint::Step Endpoint::Close(const char *why, Counters::Field field) {
    trouble_ = why;
    counters_.Add(field);
    return Step::CLOSE;
}

/* The peer is told, so that both sides can say why. */
Endpoint::Step Endpoint::Refuse(Refusal reason, const char *why) {
    refused_ = reason;
    trouble_ = why;
    AppendFrame(control_, {0, FrameType::REFUSE, 0, 0, static_cast<uint64_t>(reason)});
    return Step::CLOSE;
}

std::span<const uint8_t> Endpoint::Output() {
    if (phase_ == Phase::AWAY)
        return {};
    std::unique_lock lock(lock_);
    if (phase_ == Phase::RUNNING) {
        if (tell_role_)
            AppendFrame(control_, {0, FrameType::ROLE}, EncodeRole(OwnRole()));
        if (tell_versions_)
            AppendFrame(control_, {0, FrameType::VERSIONS}, EncodeVersions(Modules::Instance().TakeNew()));
        tell_role_ = tell_versions_ = false;
        if (acknowledge_ || heartbeat_)
            AppendFrame(control_, {0, acknowledge_ ? FrameType::ACK : FrameType::HEARTBEAT, 0, 0, received_});
        acknowledge_ = heartbeat_ = false;
    }
    if (!control_.empty()) {
        sending_.swap(control_);
        control_.clear();
        return sending_;
    }
    return attached_ ? stream_.Unsent() : std::span<const uint8_t>{};
}

void Endpoint::Written(uint64_t now) {
    last_out_ = now;
    if (!sending_.empty()) {
        sending_.clear();
        return;
    }
    std::lock_guard lock(lock_);
    stream_.Sent();
}

uint64_t Endpoint::NextTick() const {
    if (phase_ == Phase::AWAY)
        return alone_since_ + settings_.takeover_ms;
    if (phase_ != Phase::RUNNING)
        return last_in_ + settings_.timeout_ms;
    return std::min(last_in_ + settings_.timeout_ms, last_out_ + settings_.heartbeat_ms);
}

Endpoint::Step Endpoint::Tick(uint64_t now) {
    Calls calls;
    if (phase_ != Phase::AWAY) {
        if (now >= last_in_ + settings_.timeout_ms) {
            if (phase_ != Phase::RUNNING)
                refused_ = Refusal::TIMEOUT;
            return Close("the peer is silent", &C::ulTimeouts);
        }
        if (phase_ == Phase::RUNNING && now >= last_out_ + settings_.heartbeat_ms) {
            heartbeat_ = true;
            last_out_ = now;
        }
        {
            std::lock_guard lock(lock_);
            calls.state_changed = std::exchange(fell_behind_, false);
        }
        Make(calls);
        return Step::GOOD;
    }
    if (now >= alone_since_ + settings_.takeover_ms) {
        std::lock_guard lock(lock_);
        if (role_ == YSB_LINK_ROLE_AUTO && !active_)
            BecomeActive(true, NextTerm(), calls);
    }
    Make(calls);
    return Step::GOOD;
}

/* ---- frames */

Endpoint::Step Endpoint::Filled(std::size_t bytes, uint64_t now) {
    last_in_ = now;
    reader_.Filled(bytes);
    for (;;) {
        Frame frame;
        switch (reader_.Take(frame)) {
        case FrameReader::Result::FRAME:
            break;
        case FrameReader::Result::MORE:
            return Step::GOOD;
        case FrameReader::Result::MALFORMED:
            return Close("the peer sent what is no frame", &C::ulViolations);
        case FrameReader::Result::TOO_LONG:
            counters_.Add(&C::ulOverlong);
            return Close("the peer sent a packet above the maximum", &C::ulViolations);
        default:
            trouble_ = "no memory for a packet of the peer";
            return Step::CLOSE;
        }
        if (Take(frame) == Step::CLOSE)
            return Step::CLOSE;
    }
}

Endpoint::Step Endpoint::Take(Frame &frame) {
    const FrameType type = frame.head.type;
    if (phase_ == Phase::RUNNING && type == FrameType::DATA)
        return OnData(frame);
    if (type == FrameType::REFUSE)
        return OnRefuse(frame);
    if (phase_ == Phase::AWAIT_HELLO && type == FrameType::HELLO)
        return OnHello(frame);
    if (phase_ == Phase::AWAIT_STREAM && type == FrameType::STREAM)
        return OnStream(frame);
    if (phase_ == Phase::RUNNING) {
        switch (type) {
        case FrameType::BATCH_BEGIN:
        case FrameType::BATCH_END:
            return OnMark(frame);
        case FrameType::ACK:
        case FrameType::HEARTBEAT:
            return OnAcknowledge(frame);
        case FrameType::ROLE:
            return OnRole(frame);
        case FrameType::VERSIONS:
            return OnVersions(frame);
        default:
            break;
        }
    }
    return Close("the peer sent a frame out of turn", &C::ulViolations);
}

Endpoint::Step Endpoint::OnRefuse(const Frame &frame) {
    const uint32_t reason = frame.head.number < REFUSALS ? static_cast<uint32_t>(frame.head.number) : 0;
    counters_.AddRefusedBy(reason);
    trouble_ = std::string("the peer refused this device: ") + YSB_Link_RefusalText(reason);
    return Step::CLOSE;
}

Endpoint::Step Endpoint::OnHello(const Frame &frame) {
    Hello hello;
    if (!DecodeHello(frame.body, hello))
        return Close("the peer's introduction is malformed", &C::ulViolations);
    if (hello.version != PROTOCOL_VERSION)
        return Refuse(Refusal::LINK_VERSION, "the peer speaks another version of the link's protocol");
    Modules::Instance().PeerTold(hello.modules);
    return Agree(hello);
}

/* The peer comes to the opposite result. */
static uint8_t PeerActive(Verdict own, const RoleInfo &peer) {
    return own == Verdict::STANDBY && peer.configured != YSB_LINK_ROLE_STANDBY ? 1 : 0;
}

/* Settles the roles, and where the own stream goes on. */
Endpoint::Step Endpoint::Agree(const Hello &hello) {
    Calls calls;
    uint64_t name = 0;
    uint64_t first = 1;
    {
        std::lock_guard lock(lock_);
        const Verdict verdict = DecideRole(OwnRole(), hello.role, settings_.name, settings_.peer_name);
        if (verdict == Verdict::CONFLICT)
            return Refuse(Refusal::ROLE, "both devices are configured to be the active one");
        /* Two that were active at the same time have gone different ways: one of them begins anew. */
        const bool apart = active_ && hello.role.active != 0;
        peer_role_ = hello.role;
        peer_role_.active = PeerActive(verdict, hello.role);
        peer_max_message_ = hello.max_message;
        peer_cpus_ = hello.cpus;
        BecomeActive(verdict == Verdict::ACTIVE, std::max<uint32_t>(hello.role.term, 1), calls);

        const uint64_t acknowledged = stream_.Acknowledged();
        if (!apart && stream_.IsOpen() && hello.stream == stream_.Name() && stream_.Resume(hello.received)) {
            counters_.Add(&C::ulResumed);
            counters_.Add(&C::ulAcknowledged, hello.received - acknowledged);
            counters_.Add(&C::ulResent, stream_.SentNumber() - hello.received);
            first = hello.received + 1;
        } else if (!NewStream(calls)) {
            trouble_ = "no memory for a stream";
            return Step::CLOSE;
        }
        name = stream_.Name();
        attached_ = true;
    }
    uint8_t body[8];
    Put(body, name);
    AppendFrame(control_, {0, FrameType::STREAM, 0, 0, first}, body);
    phase_ = Phase::AWAIT_STREAM;
    Make(calls);
    return Step::GOOD;
}

Endpoint::Step Endpoint::OnStream(const Frame &frame) {
    if (frame.body.size() != 8)
        return Close("the peer's stream has no name", &C::ulViolations);
    const uint64_t name = Get<uint64_t>(frame.body.data());
    const bool goes_on = name == peer_stream_ && frame.head.number == received_ + 1;
    if (name == 0 || (!goes_on && (name == peer_stream_ || frame.head.number != 1)))
        return Close("the peer's stream does not go on where it was", &C::ulViolations);
    if (!goes_on) {
        peer_stream_ = name;
        received_ = told_ = 0;
        counters_.Add(&C::ulPeerStreams);
        owner_.PeerIsNew();
    }
    phase_ = Phase::RUNNING;
    {
        std::lock_guard lock(lock_);
        if (!goes_on)
            peer_batch_ = PeerBatchState::NONE;
        up_ = true;
    }
    counters_.Add(&C::ulConnects);
    owner_.StateChanged();
    return Step::GOOD;
}

bool Endpoint::TakeNumber(const Frame &frame) {
    if (frame.head.number != received_ + 1)
        return false;
    received_ = frame.head.number;
    untold_bytes_ += FRAME_HEAD + frame.head.length;
    if (untold_bytes_ >= ACKNOWLEDGE_AFTER)
        Drained();
    return true;
}

void Endpoint::Drained() {
    if (phase_ != Phase::RUNNING || told_ == received_)
        return;
    told_ = received_;
    untold_bytes_ = 0;
    acknowledge_ = true; /* one frame, however often it becomes due before it is sent */
}

Endpoint::Step Endpoint::OnData(Frame &frame) {
    if (frame.head.number != received_ + 1)
        return Close("the peer's numbers have a gap", &C::ulViolations);
    /* What puts fragments together allocates what the header announces. */
    if (Get<uint32_t>(DataOf(frame.message.get()) + TOTAL_LENGTH) > settings_.max_message) {
        counters_.Add(&C::ulOverlong);
        return Close("the peer announced a message above the maximum", &C::ulViolations);
    }
    if (!owner_.Received(frame.head.module, frame.head.cpu, std::move(frame.message), frame.head.length)) {
        trouble_ = "a packet of the peer could not be taken, it has to come again";
        return Step::CLOSE;
    }
    counters_.AddAlone(&C::ulPacketsReceived);
    counters_.AddAlone(&C::ulBytesReceived, frame.head.length);
    (void)TakeNumber(frame);
    return Step::GOOD;
}

Endpoint::Step Endpoint::OnMark(const Frame &frame) {
    if (frame.head.length != 0 || !TakeNumber(frame))
        return Close("the peer's numbers have a gap", &C::ulViolations);
    const bool begins = frame.head.type == FrameType::BATCH_BEGIN;
    {
        std::lock_guard lock(lock_);
        /* The owner would take the nothing in between for all that the peer has. */
        if (!begins && peer_batch_ != PeerBatchState::BEGUN)
            return Close("the peer ended a batch that had not begun", &C::ulViolations);
        peer_batch_ = begins ? PeerBatchState::BEGUN : PeerBatchState::DONE;
    }
    if (!begins)
        counters_.Add(&C::ulPeerBatches);
    owner_.PeerBatch(begins);
    owner_.StateChanged();
    return Step::GOOD;
}

Endpoint::Step Endpoint::OnAcknowledge(const Frame &frame) {
    Calls calls;
    {
        std::lock_guard lock(lock_);
        const uint64_t before = stream_.Acknowledged();
        if (frame.head.length != 0 || !stream_.Acknowledge(frame.head.number))
            return Close("the peer acknowledged what it was not sent", &C::ulViolations);
        counters_.Add(&C::ulAcknowledged, stream_.Acknowledged() - before);
        calls.progress = stream_.Acknowledged() != before;
        if (batch_end_ != 0 && stream_.Acknowledged() >= batch_end_ && !delivered_ && !gap_) {
            delivered_ = true;
            counters_.Add(&C::ulBatchesDelivered);
            calls.batch_delivered = batch_;
            calls.state_changed = true;
        }
        const bool room = stream_.Held() <= settings_.window / 2;
        if (room && waiting_ > 0)
            room_.notify_all();
        if (room && gap_)
            (void)NewBatch(calls); /* without memory: at the next acknowledgement */
    }
    Make(calls);
    return Step::GOOD;
}

Endpoint::Step Endpoint::OnRole(const Frame &frame) {
    RoleInfo peer;
    if (!DecodeRole(frame.body, peer))
        return Close("the peer's role is malformed", &C::ulViolations);
    Calls calls;
    {
        std::lock_guard lock(lock_);
        const Verdict verdict = DecideRole(OwnRole(), peer, settings_.name, settings_.peer_name);
        if (verdict == Verdict::CONFLICT)
            return Refuse(Refusal::ROLE, "both devices are configured to be the active one");
        /* The one that changed its role told of it; the other one answers when that changed its own. */
        peer_role_ = peer;
        peer_role_.active = PeerActive(verdict, peer);
        const bool before = active_;
        const bool takes_over = verdict == Verdict::ACTIVE && !before;
        BecomeActive(verdict == Verdict::ACTIVE, takes_over ? NextTerm() : peer.term, calls);
        tell_role_ = tell_role_ || active_ != before;
    }
    Make(calls);
    return Step::GOOD;
}

Endpoint::Step Endpoint::OnVersions(const Frame &frame) {
    std::vector<ModuleVersion> versions;
    if (!DecodeVersions(frame.body, versions))
        return Close("the peer's versions are malformed", &C::ulViolations);
    Modules::Instance().PeerTold(versions);
    return Step::GOOD;
}

} // namespace uvel::host::standby
