// Frames as no honest peer sends them: every field of the head at its ends and beside its true value, one by one and in
// all pairs. What is taken, what is waited for and what ends the connection follows from the head alone, and whatever
// it was, the next connection goes on as if nothing had happened.

#include "cable.h"
#include "frame_field.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace cable;
using uvel::host::standby::FRAME_HEAD;
using uvel::host::standby::FrameType;
using uvel::host::standby::Get;

constexpr uint64_t NOW = 1'000'000;
constexpr uint32_t MAX_MESSAGE = 1000;
constexpr uint32_t MAX_CONTROL = 16 * 1024;
constexpr uint32_t BODY = 48 + 5;
constexpr uint64_t NEXT = 2; /* number, behind the mark that begins a batch */

/* Length, type, processor, nothing, module and number of the frame; total length in the message's header. */
constexpr Field FIELDS[] = {{0, 4}, {4, 1}, {5, 1}, {6, 2}, {8, 4}, {12, 8}, {FRAME_HEAD + 32, 4}};

std::vector<uint8_t> TrueFrame() {
    std::vector<uint8_t> frame;
    uvel::host::standby::AppendFrame(frame, {0, FrameType::DATA, 255, 7, NEXT}, Message(1, "hello"));
    return frame;
}

enum class Fate { TAKEN, WAITED_FOR, ENDS };

Fate FateOf(const std::vector<uint8_t> &frame) {
    const auto length = Get<uint32_t>(&frame[0]);
    const bool data = frame[4] == static_cast<uint8_t>(FrameType::DATA);
    if (Get<uint16_t>(&frame[6]) != 0 || frame[4] < 1 || frame[4] > 10)
        return Fate::ENDS;
    if (data ? length < 48 || length > 48 + MAX_MESSAGE : length > MAX_CONTROL)
        return Fate::ENDS;
    if (length > BODY)
        return Fate::WAITED_FOR;
    /* What is no DATA ends it too: out of turn, or malformed, or followed by what is no frame. */
    return data && Get<uint64_t>(&frame[12]) == NEXT && Get<uint32_t>(&frame[FRAME_HEAD + 32]) <= MAX_MESSAGE
               ? Fate::TAKEN
               : Fate::ENDS;
}

EndpointSettings Receiver() {
    EndpointSettings settings = Settings("b", "a");
    settings.max_message = MAX_MESSAGE;
    return settings;
}

void Try(const std::vector<uint8_t> &frame) {
    Side a(Settings("a", "b"), NOW);
    Side b(Receiver(), NOW);
    Cable line(a, b);
    line.Connect(NOW);
    line.Carry(NOW);
    ASSERT_TRUE(b.endpoint.IsUp());

    const Fate fate = FateOf(frame);
    const auto room = b.endpoint.Room();
    ASSERT_LE(frame.size(), room.size());
    std::copy(frame.begin(), frame.end(), room.begin());
    const Endpoint::Step step = b.endpoint.Filled(frame.size(), NOW);
    ASSERT_EQ(fate == Fate::ENDS, step == Endpoint::Step::CLOSE);
    ASSERT_EQ(fate == Fate::TAKEN ? 1u : 0u, b.counters.Copy().ulPacketsReceived);
    ASSERT_EQ(fate == Fate::ENDS ? 1u : 0u, b.counters.Copy().ulViolations);
    if (fate == Fate::WAITED_FOR) {
        ASSERT_FALSE(b.endpoint.Room().empty());
    }

    line.Cut();
    const std::size_t before = b.said.size();
    Settle(line, a, b, NOW);
    a.Say("after all");
    line.Carry(NOW);
    ASSERT_EQ(before + 1, b.said.size());
    ASSERT_EQ("after all", b.said.back());
}

TEST(Frames, AreTakenByTheirHeadsAndOtherwiseEndTheConnection) {
    ASSERT_EQ(Fate::TAKEN, FateOf(TrueFrame()));
    std::set<Fate> met;
    int cases = 0;
    ForEveryTwoChanges(FIELDS, [&](const Change &first, const Change &second) {
        if (HasFatalFailure())
            return;
        SCOPED_TRACE(first.Text() + ", " + second.Text());
        std::vector<uint8_t> frame = TrueFrame();
        first.Make(frame);
        second.Make(frame);
        Try(frame);
        met.insert(FateOf(frame));
        ++cases;
    });
    EXPECT_EQ(3u, met.size());
    EXPECT_GT(cases, 1000);
}

/* Each length up to the limit and beyond. */
TEST(Frames, OfEveryLengthAreBoundedByTheLargestMessage) {
    for (uint32_t length = 0; length <= 48 + MAX_MESSAGE + 2; ++length) {
        std::vector<uint8_t> frame = TrueFrame();
        uvel::host::standby::Put(frame.data(), length);
        SCOPED_TRACE("length " + std::to_string(length));
        Try(frame);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

/* DATA of this many payload bytes, which tell its number. */
std::vector<uint8_t> DataFrame(uint64_t number, uint32_t payload) {
    std::vector<uint8_t> body(48 + payload, static_cast<uint8_t>(number));
    std::vector<uint8_t> frame;
    uvel::host::standby::AppendFrame(frame, {0, FrameType::DATA, 255, 7, number}, body);
    return frame;
}

TEST(FrameReader, TakesLongAndShortFramesInPiecesOfAnySize) {
    using uvel::host::standby::FrameReader;
    std::vector<uint8_t> stream;
    const std::vector<uint32_t> payloads = {40000, 5, 65536, 65536, 0, 20000, 200000, 1, 33000, 32000};
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        const std::vector<uint8_t> frame = DataFrame(i + 1, payloads[i]);
        stream.insert(stream.end(), frame.begin(), frame.end());
    }
    for (const std::size_t piece : {1U, 7U, 19U, 20U, 21U, 1000U, 16384U, 1000000U}) {
        SCOPED_TRACE(piece);
        FrameReader reader(200000);
        std::size_t taken = 0;
        for (std::size_t at = 0; at < stream.size();) {
            const auto room = reader.Room();
            ASSERT_FALSE(room.empty());
            const std::size_t part = std::min({piece, room.size(), stream.size() - at});
            std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(at), part, room.begin());
            reader.Filled(part);
            at += part;
            uvel::host::standby::Frame frame;
            FrameReader::Result result;
            while ((result = reader.Take(frame)) == FrameReader::Result::FRAME) {
                ASSERT_EQ(taken + 1, frame.head.number);
                ASSERT_EQ(48 + payloads[taken], frame.head.length);
                const uint8_t *data = uvel::host::standby::DataOf(frame.message.get());
                ASSERT_EQ(frame.head.length,
                          std::count(data, data + frame.head.length, static_cast<uint8_t>(taken + 1)));
                ++taken;
            }
            ASSERT_EQ(FrameReader::Result::MORE, result);
        }
        EXPECT_EQ(payloads.size(), taken);
    }
}

} // namespace
