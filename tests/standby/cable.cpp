#include "cable.h"

#include <algorithm>
#include <utility>

namespace cable {

using uvel::host::standby::DataOf;
using uvel::host::standby::Get;
using uvel::host::standby::Put;

constexpr uint32_t SAID = 0xFFFFFFFF; /* key of messages that belong to no table */

std::vector<uint8_t> Message(uint32_t key, const std::string &payload, bool erase) {
    std::vector<uint8_t> message(48 + payload.size());
    Put(&message[12], key);
    Put(&message[28], static_cast<uint16_t>(erase ? 1 : 0));
    Put(&message[32], static_cast<uint32_t>(payload.size()));
    std::copy(payload.begin(), payload.end(), message.begin() + 48);
    return message;
}

EndpointSettings Settings(const std::string &name, const std::string &peer_name) {
    EndpointSettings settings;
    settings.name = name;
    settings.peer_name = peer_name;
    settings.window = 1 << 20;
    return settings;
}

Endpoint::Sending SendTo(Endpoint &endpoint, const std::vector<uint8_t> &message, Endpoint::Patience patience) {
    Smbuf smbuf = uvel::host::standby::MakeSmbuf(static_cast<uint32_t>(message.size()));
    std::copy(message.begin(), message.end(), DataOf(smbuf.get()));
    return endpoint.Send(7, 255, std::move(smbuf), static_cast<uint32_t>(message.size()), patience);
}

Endpoint::Sending Side::Set(uint32_t key, const std::string &value) {
    own[key] = value;
    return SendTo(endpoint, Message(key, value));
}

Endpoint::Sending Side::Erase(uint32_t key) {
    own.erase(key);
    return SendTo(endpoint, Message(key, "", true));
}

Endpoint::Sending Side::Say(const std::string &text) {
    return SendTo(endpoint, Message(SAID, text));
}

void Side::Batch() {
    if (batch_wanted == 0)
        return;
    const uint32_t batch = std::exchange(batch_wanted, 0);
    for (const auto &[key, value] : own)
        (void)SendTo(endpoint, Message(key, value));
    (void)endpoint.BatchDone(batch);
}

void Side::Apply(uint32_t key, bool erase, const std::string &value) {
    if (key == SAID) {
        said.push_back(value);
        return;
    }
    for (Table *table : {&copy, batching_ ? &fresh_ : nullptr}) {
        if (table == nullptr)
            continue;
        if (erase)
            table->erase(key);
        else
            (*table)[key] = value;
    }
}

bool Side::Received(uint32_t, uint8_t, Smbuf message, uint32_t length) {
    if (not_taken > 0) {
        --not_taken;
        return false;
    }
    const uint8_t *bytes = DataOf(message.get());
    const auto fragment = Get<uint32_t>(bytes + 44);
    if (fragment != next_fragment_) {
        ++broken;
        return true;
    }
    partial_.append(reinterpret_cast<const char *>(bytes) + 48, length - 48);
    ++next_fragment_;
    if (partial_.size() < Get<uint32_t>(bytes + 32))
        return true;
    Apply(Get<uint32_t>(bytes + 12), Get<uint16_t>(bytes + 28) == 1, partial_);
    partial_.clear();
    next_fragment_ = 0;
    return true;
}

void Side::PeerIsNew() {
    ++news;
    partial_.clear();
    next_fragment_ = 0;
    batching_ = false;
}

void Side::PeerBatch(bool begins) {
    if (begins)
        fresh_.clear();
    else
        copy = fresh_;
    batching_ = begins;
}

/* ---- the cable */

std::vector<uint8_t> TakeOutput(Side &from, uint64_t now) {
    std::vector<uint8_t> said;
    for (auto bytes = from.endpoint.Output(); !bytes.empty(); bytes = from.endpoint.Output()) {
        said.insert(said.end(), bytes.begin(), bytes.end());
        from.endpoint.Written(now);
    }
    return said;
}

Endpoint::Step Hand(Side &to, const std::vector<uint8_t> &bytes, uint64_t now) {
    for (std::size_t at = 0; at < bytes.size();) {
        const auto room = to.endpoint.Room();
        const std::size_t part = std::min(room.size(), bytes.size() - at);
        std::copy_n(bytes.data() + at, part, room.data());
        at += part;
        if (to.endpoint.Filled(part, now) == Endpoint::Step::CLOSE)
            return Endpoint::Step::CLOSE;
    }
    to.endpoint.Drained();
    return Endpoint::Step::GOOD;
}

void Cable::Connect(uint64_t now) {
    Cut();
    connected_ = true;
    a_->endpoint.Connected(now);
    b_->endpoint.Connected(now);
}

void Cable::Cut() {
    if (!connected_)
        return;
    connected_ = false;
    to_a_.clear();
    to_b_.clear();
    a_->endpoint.Lost();
    b_->endpoint.Lost();
}

bool Cable::Move(Side &from, Side &to, std::vector<uint8_t> &wire, std::size_t &budget, uint64_t &count, uint64_t now,
                 std::mt19937 *random) {
    const std::vector<uint8_t> said = TakeOutput(from, now);
    wire.insert(wire.end(), said.begin(), said.end());
    std::size_t at = 0;
    while (at < wire.size() && budget > 0) {
        const auto room = to.endpoint.Room();
        std::size_t part = std::min({wire.size() - at, room.size(), budget});
        if (random != nullptr)
            part = std::min<std::size_t>(part, 1 + (*random)() % 300);
        std::copy_n(wire.data() + at, part, room.data());
        at += part;
        budget -= part;
        count += part;
        if (to.endpoint.Filled(part, now) == Endpoint::Step::CLOSE) {
            Cut();
            return true;
        }
        if (random != nullptr && (*random)() % 4 == 0)
            break;
    }
    wire.erase(wire.begin(), wire.begin() + static_cast<std::ptrdiff_t>(at));
    to.endpoint.Drained();
    return at != 0;
}

void Cable::Carry(uint64_t now, std::mt19937 *random, std::size_t a_to_b, std::size_t b_to_a) {
    for (bool moved = true; moved && connected_;) {
        moved = Move(*a_, *b_, to_b_, a_to_b, carried_a_to_b, now, random);
        if (connected_)
            moved = Move(*b_, *a_, to_a_, b_to_a, carried_b_to_a, now, random) || moved;
        if (a_to_b == 0 || b_to_a == 0)
            Cut();
    }
}

void Settle(Cable &cable, Side &a, Side &b, uint64_t now) {
    for (int i = 0; i < 8; ++i) {
        if (!cable.Connected())
            cable.Connect(now);
        cable.Carry(now);
        a.Batch();
        b.Batch();
    }
}

} // namespace cable
