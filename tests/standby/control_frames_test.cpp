// Frames beside the messages, as no honest peer sends them: every field of their heads and bodies at its ends and beside
// its true value, one by one and in all pairs, when it is their turn and when it is not. Each is taken for what it says
// or ends the connection, and whatever it was, the next connection goes on.

#include "frame_field.h"
#include "meeting.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <malloc.h>
#include <numeric>
#include <optional>
#include <set>

namespace {

using namespace cable;
using uvel::host::standby::Get;
using uvel::host::standby::Modules;
using uvel::host::standby::Refusal;

constexpr uint32_t MAX_CONTROL = 16 * 1024;
constexpr uint32_t MODULE = 0x00110000;
constexpr Phase PHASES[] = {Phase::AWAIT_HELLO, Phase::AWAIT_STREAM, Phase::RUNNING};

/* What A says at its turn; of HELLO and STREAM what it has said in this meeting. */
Bytes TrueFrame(FrameType type, const Meeting &meeting) {
    switch (type) {
    case FrameType::HELLO:
        return meeting.hello;
    case FrameType::STREAM:
        return meeting.stream.empty() ? Frame(type, A_TOLD + 1, Bytes(8, 1)) : meeting.stream;
    case FrameType::REFUSE:
        return Frame(type, 6);
    case FrameType::BATCH_BEGIN:
    case FrameType::BATCH_END:
        return Frame(type, A_BEGAN + 1);
    case FrameType::ROLE:
        return Frame(type, 0, {0, 1, TERM, 0, 0, 0, PRIORITY, 0, 0, 0});
    case FrameType::VERSIONS:
        return Frame(type, 0, {1, 0, 0x11, 0, 3, 0, 0, 0, 1, 2, 0, 0x11, 0, 9, 0, 0, 0, 0});
    default:
        return Frame(type, B_SENT);
    }
}

/* ---- what is to become of a frame */

enum class Fate { TAKEN, WAITED_FOR, VIOLATION, REFUSED, REFUSES };

Fate TakenIf(bool good) {
    return good ? Fate::TAKEN : Fate::VIOLATION;
}

/* Configured role, active or not, term, priority. */
bool IsRole(const uint8_t *body) {
    return body[0] <= 2 && body[1] <= 1;
}

Fate FateOfHello(const Bytes &body) {
    if (body.size() < 8 || Bytes(body.begin(), body.begin() + 4) != Bytes{'U', 'V', 'H', 'S'})
        return Fate::VIOLATION;
    if (Get<uint16_t>(&body[4]) != 1)
        return Fate::REFUSED;
    if (body.size() < 42 || (body.size() - 42) % 9 != 0)
        return Fate::VIOLATION;
    const auto cpus = Get<uint32_t>(&body[28]);
    return TakenIf(cpus >= 1 && cpus <= 255 && IsRole(&body[32]));
}

bool StreamGoesOn(const Bytes &body, uint64_t number, const Meeting &meeting) {
    if (body.size() != 8)
        return false;
    if (body == Bytes(meeting.stream.begin() + FRAME_HEAD, meeting.stream.begin() + FRAME_HEAD + 8))
        return number == A_TOLD + 1;
    return body != Bytes(8, 0) && number == 1;
}

Fate FateOf(const Bytes &frame, Phase phase, const Meeting &meeting) {
    const auto length = Get<uint32_t>(&frame[0]);
    const auto type = static_cast<FrameType>(frame[4]);
    if (Get<uint16_t>(&frame[6]) != 0 || type < FrameType::HELLO || type > FrameType::VERSIONS ||
        type == FrameType::DATA || length > MAX_CONTROL)
        return Fate::VIOLATION; /* DATA: no body here is as long as the header of a message */
    if (length > frame.size() - FRAME_HEAD)
        return Fate::WAITED_FOR;
    const Bytes body(frame.begin() + FRAME_HEAD, frame.begin() + FRAME_HEAD + length);
    const auto number = Get<uint64_t>(&frame[12]);
    if (type == FrameType::REFUSE)
        return Fate::REFUSES;
    if (type == FrameType::HELLO)
        return phase == Phase::AWAIT_HELLO ? FateOfHello(body) : Fate::VIOLATION;
    if (type == FrameType::STREAM)
        return TakenIf(phase == Phase::AWAIT_STREAM && StreamGoesOn(body, number, meeting));
    if (phase != Phase::RUNNING)
        return Fate::VIOLATION;
    if (type == FrameType::ROLE)
        return TakenIf(length == 10 && IsRole(body.data()));
    if (type == FrameType::VERSIONS)
        return TakenIf(length % 9 == 0);
    if (type == FrameType::BATCH_BEGIN || type == FrameType::BATCH_END)
        return TakenIf(length == 0 && number == A_BEGAN + 1);
    return TakenIf(length == 0 && number <= B_SENT);
}

/* ---- one case */

uint64_t RefusedBy(Side &side) {
    const YSB_LINK_COUNTERS_S counters = side.counters.Copy();
    return std::accumulate(std::begin(counters.aulRefusedBy), std::end(counters.aulRefusedBy), uint64_t{0});
}

std::size_t MemoryInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

Fate Try(Meeting &meeting, Phase phase, const Bytes &frame) {
    const Fate fate = FateOf(frame, phase, meeting);
    const std::size_t before = MemoryInUse();
    const Step step = Hand(meeting.b, frame, NOW);
    EXPECT_LT(MemoryInUse(), before + 1'000'000) << "whatever the frame announces";
    EXPECT_EQ(fate == Fate::TAKEN || fate == Fate::WAITED_FOR, step == Step::GOOD);
    EXPECT_EQ(fate == Fate::VIOLATION ? 1u : 0u, meeting.b.counters.Copy().ulViolations);
    EXPECT_EQ(fate == Fate::REFUSES ? 1u : 0u, RefusedBy(meeting.b));
    EXPECT_EQ(fate == Fate::REFUSED ? Refusal::LINK_VERSION : Refusal::NONE, meeting.b.endpoint.Refused());
    EXPECT_FALSE(meeting.b.endpoint.Room().empty());
    meeting.GoOn();
    return fate;
}

/* ---- all of them */

struct Kind {
    const char *name;
    FrameType type;
    Phase turn;
    std::vector<Field> body;
    std::set<Fate> fates; /* that it meets at its turn */
};

void PrintTo(const Kind &kind, std::ostream *out) {
    *out << kind.name;
}

class ControlFrames : public testing::TestWithParam<Kind> {
  protected:
    static void SetUpTestSuite() {
        bool tell_now = false;
        ASSERT_TRUE(Modules::Instance().Add(MODULE) && Modules::Instance().Register({MODULE, 1, 1}, &tell_now));
    }
    static std::vector<Field> Fields() {
        /* Length, type, processor, nothing, module, number. */
        std::vector<Field> fields = {{0, 4}, {4, 1}, {5, 1}, {6, 2}, {8, 4}, {12, 8}};
        for (const Field &field : GetParam().body)
            fields.push_back({FRAME_HEAD + field.offset, field.width});
        return fields;
    }
    void TryWith(Phase phase, const Change &first, const std::optional<Change> &second = std::nullopt) {
        if (HasFailure())
            return;
        SCOPED_TRACE(first.Text() + (second ? ", " + second->Text() : ""));
        Meeting meeting(phase);
        Bytes frame = TrueFrame(GetParam().type, meeting);
        first.Make(frame);
        if (second)
            second->Make(frame);
        met.insert(Try(meeting, phase, frame));
    }

    std::set<Fate> met;
};

TEST_P(ControlFrames, AtTheirTurnAreTakenForWhatTheySayOrEndTheConnection) {
    ForEveryTwoChanges(Fields(),
                       [&](const Change &first, const Change &second) { TryWith(GetParam().turn, first, second); });
    EXPECT_EQ(GetParam().fates, met);
}

TEST_P(ControlFrames, OutOfTurnEndTheConnection) {
    for (const Phase phase : PHASES) {
        if (phase == GetParam().turn)
            continue;
        SCOPED_TRACE("phase " + std::to_string(static_cast<int>(phase)));
        ForEveryChange(Fields(), [&](const Change &change) { TryWith(phase, change); });
    }
    EXPECT_EQ(1u, met.count(Fate::VIOLATION));
    EXPECT_EQ(0u, met.count(Fate::TAKEN));
}

constexpr Fate TAKEN = Fate::TAKEN, WAITED_FOR = Fate::WAITED_FOR, VIOLATION = Fate::VIOLATION, REFUSED = Fate::REFUSED,
               REFUSES = Fate::REFUSES;

INSTANTIATE_TEST_SUITE_P(
    Of, ControlFrames,
    testing::Values(
        /* Magic, version, nothing, stream, received, largest message, processors; role; module, version, compatible. */
        Kind{"HELLO",
             FrameType::HELLO,
             Phase::AWAIT_HELLO,
             {{0, 4},
              {4, 2},
              {6, 2},
              {8, 8},
              {16, 8},
              {24, 4},
              {28, 4},
              {32, 1},
              {33, 1},
              {34, 4},
              {38, 4},
              {42, 4},
              {46, 4},
              {50, 1}},
             {TAKEN, WAITED_FOR, VIOLATION, REFUSED, REFUSES}},
        Kind{"REFUSE", FrameType::REFUSE, Phase::RUNNING, {}, {WAITED_FOR, VIOLATION, REFUSES}},
        Kind{"STREAM", FrameType::STREAM, Phase::AWAIT_STREAM, {{0, 8}}, {TAKEN, WAITED_FOR, VIOLATION, REFUSES}},
        Kind{"BATCH_BEGIN", FrameType::BATCH_BEGIN, Phase::RUNNING, {}, {TAKEN, WAITED_FOR, VIOLATION}},
        Kind{"BATCH_END", FrameType::BATCH_END, Phase::RUNNING, {}, {TAKEN, WAITED_FOR, VIOLATION}},
        Kind{"ACK", FrameType::ACK, Phase::RUNNING, {}, {TAKEN, WAITED_FOR, VIOLATION}},
        Kind{"HEARTBEAT", FrameType::HEARTBEAT, Phase::RUNNING, {}, {TAKEN, WAITED_FOR, VIOLATION}},
        Kind{"ROLE", FrameType::ROLE, Phase::RUNNING, {{0, 1}, {1, 1}, {2, 4}, {6, 4}}, {TAKEN, WAITED_FOR, VIOLATION}},
        Kind{"VERSIONS",
             FrameType::VERSIONS,
             Phase::RUNNING,
             {{0, 4}, {4, 4}, {8, 1}, {9, 4}, {13, 4}, {17, 1}},
             {TAKEN, WAITED_FOR, VIOLATION}}),
    [](const auto &kind) { return kind.param.name; });

} // namespace
