// What comes from the peer on the hot-standby link, inside TLS: whatever it is, an endpoint delivers nothing twice and
// nothing out of order, keeps no more memory than one message, and goes on with an honest peer afterwards.
//
// The first byte says what the rest is:
//   even    bytes as they come from the peer, in pieces whose sizes the byte gives
//   odd     a script for an honest peer and its network: see Play

#include <algorithm>
#include <cstring>
#include <functional>
#include <standby/endpoint.h>
#include <utility>
#include <vector>

#include "fuzz_input.h"

namespace {

using namespace uvel::host::standby;

constexpr uint64_t NOW = 1'000'000;

struct Side final : EndpointOwner {
    explicit Side(const EndpointSettings &settings) : endpoint(settings, *this, counters, NOW) {}

    bool Received(uint32_t, uint8_t, Smbuf message, uint32_t length) override {
        REQUIRE(message != nullptr && length >= MESSAGE_HEADER && length == message->size);
        REQUIRE(length - MESSAGE_HEADER <= 4096);
        REQUIRE(Get<uint32_t>(DataOf(message.get()) + 32) <= 4096);
        numbers.push_back(Get<uint32_t>(DataOf(message.get()) + 12));
        return true;
    }
    void PeerIsNew() override { numbers.clear(); }
    void BatchWanted(uint32_t batch) override { wanted = batch; }
    void BatchDelivered(uint32_t) override {}
    void PeerBatch(bool) override {}
    void StateChanged() override {}
    void Progress() override {}
    void Wake() override {}

    bool Say(uint32_t number, uint32_t size) {
        Smbuf message = MakeSmbuf(MESSAGE_HEADER + size);
        uint8_t *bytes = DataOf(message.get());
        std::memset(bytes, 0, MESSAGE_HEADER + size);
        Put(bytes + 12, number);
        Put(bytes + 32, size);
        return endpoint.Send(1, 2, std::move(message), MESSAGE_HEADER + size, Endpoint::Patience::NONE) ==
               Endpoint::Sending::ACCEPTED;
    }

    Counters counters;
    std::vector<uint32_t> numbers; /* of the peer's current stream */
    uint32_t wanted = 0;
    Endpoint endpoint;
};

EndpointSettings Settings(const char *name, const char *peer) {
    EndpointSettings settings;
    settings.name = name;
    settings.peer_name = peer;
    settings.mtu = 4096;
    settings.max_message = 4096;
    settings.window = 16384;
    return settings;
}

/* False when the endpoint closes. */
bool Feed(Side &side, const uint8_t *bytes, std::size_t size, std::size_t piece) {
    while (size > 0) {
        const auto room = side.endpoint.Room();
        REQUIRE(!room.empty());
        const std::size_t part = std::min({size, room.size(), piece});
        std::memcpy(room.data(), bytes, part);
        bytes += part;
        size -= part;
        if (side.endpoint.Filled(part, NOW) == Endpoint::Step::CLOSE)
            return false;
    }
    side.endpoint.Drained();
    return true;
}

std::vector<uint8_t> Output(Side &side) {
    std::vector<uint8_t> all;
    for (auto bytes = side.endpoint.Output(); !bytes.empty(); bytes = side.endpoint.Output()) {
        all.insert(all.end(), bytes.begin(), bytes.end());
        side.endpoint.Written(NOW);
    }
    return all;
}

void CarryAll(Side &a, Side &b) {
    for (int i = 0; i < 20; ++i) {
        const std::vector<uint8_t> to_b = Output(a);
        const std::vector<uint8_t> to_a = Output(b);
        REQUIRE(Feed(b, to_b.data(), to_b.size(), SIZE_MAX) && Feed(a, to_a.data(), to_a.size(), SIZE_MAX));
        for (Side *side : {&a, &b}) {
            if (side->wanted != 0)
                (void)side->endpoint.BatchDone(std::exchange(side->wanted, 0));
        }
    }
}

void ExpectThatAnHonestPeerGetsOn(Side &side) {
    side.endpoint.Lost();
    Side peer(Settings("b", "a"));
    side.endpoint.Connected(NOW);
    peer.endpoint.Connected(NOW);
    CarryAll(side, peer);
    REQUIRE(side.endpoint.IsUp() && peer.endpoint.IsUp());
    REQUIRE(peer.Say(77, 10));
    CarryAll(side, peer);
    REQUIRE(side.numbers == std::vector<uint32_t>{77});
}

void Raw(const uint8_t *data, std::size_t size, std::size_t piece) {
    Side side(Settings("a", "b"));
    side.endpoint.Connected(NOW);
    (void)Feed(side, data, size, piece);
    (void)Output(side);
    ExpectThatAnHonestPeerGetsOn(side);
}

/* Two bytes a step: what happens, and how much. The network cuts and forgets, it does not change bytes. */
void Play(const uint8_t *data, std::size_t size) {
    Side a(Settings("a", "b"));
    Side b(Settings("b", "a"));
    std::vector<uint8_t> wire;
    uint32_t said = 0;
    bool connected = false;
    const auto cut = [&] {
        if (connected) {
            a.endpoint.Lost();
            b.endpoint.Lost();
        }
        connected = false;
        wire.clear();
    };
    for (std::size_t at = 0; at + 1 < size; at += 2) {
        switch (data[at] % 6) {
        case 0:
            cut();
            a.endpoint.Connected(NOW);
            b.endpoint.Connected(NOW);
            connected = true;
            break;
        case 1:
            cut();
            break;
        case 2:
            if (connected) {
                const std::vector<uint8_t> to_a = Output(b);
                REQUIRE(Feed(a, to_a.data(), to_a.size(), 1 + data[at + 1]));
            }
            break;
        case 3:
        case 4:
            if (connected) {
                const std::vector<uint8_t> more = Output(a);
                wire.insert(wire.end(), more.begin(), more.end());
                const std::size_t part = std::min<std::size_t>(wire.size(), data[at + 1] * 8U);
                REQUIRE(Feed(b, wire.data(), part, 1 + data[at + 1]));
                wire.erase(wire.begin(), wire.begin() + static_cast<std::ptrdiff_t>(part));
            }
            break;
        default:
            (void)a.Say(++said, data[at + 1] * 16U);
        }
        /* What arrived of the current stream are numbers that grow. */
        REQUIRE(std::is_sorted(b.numbers.begin(), b.numbers.end(), std::less_equal<>()));
    }
    cut();
    a.endpoint.Connected(NOW);
    b.endpoint.Connected(NOW);
    CarryAll(a, b);
    const std::size_t before = b.numbers.size();
    REQUIRE(a.Say(++said, 5));
    CarryAll(a, b);
    REQUIRE(b.numbers.size() == before + 1 && b.numbers.back() == said);
    REQUIRE(a.endpoint.BytesHeld() == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    if (data[0] % 2 == 0)
        Raw(data + 1, size - 1, data[0] / 2 + std::size_t{1});
    else
        Play(data + 1, size - 1);
    return 0;
}
