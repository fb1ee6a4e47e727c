// What follows from the frames beside the messages: acknowledgements, streams, introductions, versions, marks of batches,
// roles.

#include "meeting.h"

#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace cable;
using uvel::host::standby::Get;
using uvel::host::standby::Modules;
using uvel::host::standby::Put;

/* What becomes of a frame at this phase, and that the next connection goes on. */
Step Take(Phase phase, const Bytes &frame) {
    Meeting meeting(phase);
    const Step step = Hand(meeting.b, frame, NOW);
    EXPECT_EQ(step == Step::CLOSE ? 1u : 0u, meeting.b.counters.Copy().ulViolations);
    meeting.GoOn();
    return step;
}

TEST(Acknowledgement, IsOfWhatWasSent) {
    Meeting meeting(Phase::RUNNING);
    const auto acknowledge = [&](uint64_t number) { return Hand(meeting.b, Frame(FrameType::ACK, number), NOW); };
    EXPECT_EQ(Step::GOOD, acknowledge(B_TAKEN));
    EXPECT_LT(0u, meeting.b.endpoint.BytesHeld());
    EXPECT_EQ(Step::GOOD, acknowledge(B_SENT));
    EXPECT_EQ(0u, meeting.b.endpoint.BytesHeld());
    EXPECT_EQ(Step::GOOD, acknowledge(B_HEARD)) << "an old one says nothing new";
    EXPECT_EQ(B_SENT, meeting.b.counters.Copy().ulAcknowledged);
    EXPECT_EQ(Step::CLOSE, acknowledge(B_SENT + 1));
    EXPECT_EQ(B_SENT, meeting.b.counters.Copy().ulAcknowledged);
    meeting.GoOn();
}

TEST(Stream, GoesOnBehindWhatWasTakenOrBeginsAnew) {
    const auto follows = [](bool known, uint64_t number, int news) {
        Meeting meeting(Phase::AWAIT_STREAM);
        Bytes frame = known ? meeting.stream : Frame(FrameType::STREAM, 0, Bytes(8, 1));
        Put(&frame[12], number);
        news += meeting.b.news;
        const Step step = Hand(meeting.b, frame, NOW);
        EXPECT_EQ(step == Step::GOOD, meeting.b.endpoint.IsUp());
        EXPECT_EQ(news, meeting.b.news);
        meeting.GoOn();
        return step == Step::GOOD;
    };
    EXPECT_TRUE(follows(true, A_TOLD + 1, 0));
    for (const uint64_t number : {uint64_t{0}, uint64_t{1}, A_TOLD, A_TOLD + 2, UINT64_MAX})
        EXPECT_FALSE(follows(true, number, 0)) << number;
    EXPECT_TRUE(follows(false, 1, 1));
    for (const uint64_t number : {uint64_t{0}, uint64_t{2}, A_TOLD + 1, UINT64_MAX})
        EXPECT_FALSE(follows(false, number, 0)) << number;
    EXPECT_EQ(Step::CLOSE, Take(Phase::AWAIT_STREAM, Frame(FrameType::STREAM, 1, Bytes(8, 0)))) << "no name";
    for (const std::size_t length : {0u, 7u, 9u})
        EXPECT_EQ(Step::CLOSE, Take(Phase::AWAIT_STREAM, Frame(FrameType::STREAM, 1, Bytes(length, 1)))) << length;
}

/* Where B's own stream goes on after A's introduction: the number in its STREAM frame, 1 for a new one. */
uint64_t GoesOnFrom(bool known, uint64_t received) {
    Meeting meeting(Phase::AWAIT_HELLO);
    Bytes hello = meeting.hello;
    if (!known)
        hello[FRAME_HEAD + 8] ^= 1;
    Put(&hello[FRAME_HEAD + 16], received);
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, hello, NOW));
    const Bytes said = TakeOutput(meeting.b, NOW);
    const std::size_t stream = FRAME_HEAD + Get<uint32_t>(said.data()); /* behind its own introduction */
    EXPECT_EQ(3, said.at(stream + 4));
    const bool same = Bytes(&said[stream + FRAME_HEAD], &said[stream + FRAME_HEAD + 8]) ==
                      Bytes(&meeting.hello[FRAME_HEAD + 8], &meeting.hello[FRAME_HEAD + 16]);
    const auto number = Get<uint64_t>(&said.at(stream + 12));
    EXPECT_EQ(same, number != 1);
    meeting.GoOn();
    return number;
}

TEST(Introduction, TellsFromWhereTheStreamGoesOn) {
    EXPECT_EQ(B_HEARD + 1, GoesOnFrom(true, B_HEARD));
    EXPECT_EQ(B_TAKEN + 1, GoesOnFrom(true, B_TAKEN));
    EXPECT_EQ(B_SENT + 1, GoesOnFrom(true, B_SENT));
    EXPECT_EQ(1u, GoesOnFrom(true, B_HEARD - 1)) << "it was acknowledged and is kept no more";
    EXPECT_EQ(1u, GoesOnFrom(true, B_SENT + 1)) << "it was never sent";
    EXPECT_EQ(1u, GoesOnFrom(true, UINT64_MAX));
    EXPECT_EQ(1u, GoesOnFrom(false, B_TAKEN)) << "another stream";
}

/* Of this many bytes, cut or with versions of modules that are all alike. */
Step TakeHello(std::size_t length) {
    Bytes hello = Meeting(Phase::AWAIT_HELLO).hello;
    hello.resize(FRAME_HEAD + 42);
    hello.resize(FRAME_HEAD + length, 1);
    Put(hello.data(), static_cast<uint32_t>(length));
    return Take(Phase::AWAIT_HELLO, hello);
}

TEST(Introduction, IsWholeWithUpTo1024Versions) {
    for (const std::size_t length : {42u, 42u + 9, 42u + 1024 * 9})
        EXPECT_EQ(Step::GOOD, TakeHello(length)) << length;
    for (const std::size_t length : {0u, 7u, 8u, 41u, 43u, 42u + 8, 42u + 1025 * 9})
        EXPECT_EQ(Step::CLOSE, TakeHello(length)) << length;
}

TEST(Versions, ComeInPiecesOfNineBytesAndNotAbove1024) {
    const auto take = [](std::size_t length) {
        return Take(Phase::RUNNING, Frame(FrameType::VERSIONS, 0, Bytes(length, 1)));
    };
    for (const std::size_t length : {0u, 9u, 18u, 1024u * 9})
        EXPECT_EQ(Step::GOOD, take(length)) << length;
    for (const std::size_t length : {1u, 8u, 10u, 1025u * 9})
        EXPECT_EQ(Step::CLOSE, take(length)) << length;
}

TEST(Versions, OfAPeerThatTellsMoreOnAConnectionHoldAtOnce) {
    constexpr uint32_t LATE = 0x00120000;
    Meeting meeting(Phase::RUNNING);
    bool tell_now = false;
    ASSERT_TRUE(Modules::Instance().Add(LATE) && Modules::Instance().Register({LATE, 7, 1}, &tell_now));
    ASSERT_TRUE(tell_now);
    meeting.b.endpoint.TellVersions();
    const Bytes told = {9, 0, 0,    0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, /* the head */
                        0, 0, 0x12, 0, 7,  0, 0, 0, 1};
    EXPECT_EQ(told, TakeOutput(meeting.b, NOW));
    EXPECT_EQ(std::nullopt, Modules::Instance().Negotiated(LATE)) << "the peer has not told its own";
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, Frame(FrameType::VERSIONS, 0, {0, 0, 0x12, 0, 5, 0, 0, 0, 0}), NOW));
    EXPECT_EQ(5u, Modules::Instance().Negotiated(LATE));
    meeting.b.endpoint.TellVersions();
    meeting.GoOn();
}

TEST(BatchMarks, EndWhatHasBegun) {
    Meeting meeting(Phase::RUNNING);
    const auto batches = [&] { return meeting.b.counters.Copy().ulPeerBatches; };
    const uint64_t before = batches();
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, Frame(FrameType::BATCH_BEGIN, A_BEGAN + 1), NOW)) << "begins once more";
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, Frame(FrameType::BATCH_END, A_BEGAN + 2), NOW));
    EXPECT_EQ(before + 1, batches());
    EXPECT_TRUE(meeting.b.copy.empty()) << "the batch brought nothing";
    meeting.b.copy[1] = "kept";
    EXPECT_EQ(Step::CLOSE, Hand(meeting.b, Frame(FrameType::BATCH_END, A_BEGAN + 3), NOW)) << "none runs";
    EXPECT_EQ(before + 1, batches());
    EXPECT_EQ(1u, meeting.b.copy.count(1));
    EXPECT_EQ(1u, meeting.b.counters.Copy().ulViolations);
    meeting.GoOn();
}

Bytes Role(uint8_t configured, uint8_t active, uint32_t term, uint8_t priority) {
    Bytes body(10);
    body[0] = configured;
    body[1] = active;
    Put(&body[2], term);
    body[6] = priority;
    return Frame(FrameType::ROLE, 0, body);
}

TEST(Role, OfThePeerDecidesTheOwn) {
    const auto active_after = [](const Bytes &role) {
        Meeting meeting(Phase::RUNNING);
        EXPECT_EQ(0u, meeting.b.endpoint.State().ulActive);
        EXPECT_EQ(Step::GOOD, Hand(meeting.b, role, NOW));
        const YSB_LINK_STATE_S state = meeting.b.endpoint.State();
        EXPECT_LE(TERM, state.ulTerm) << "it never falls";
        meeting.GoOn();
        return state.ulActive == 1;
    };
    EXPECT_FALSE(active_after(Role(YSB_LINK_ROLE_AUTO, 1, 0, 0))) << "who is active stays so";
    EXPECT_FALSE(active_after(Role(YSB_LINK_ROLE_ACTIVE, 0, TERM, 0)));
    EXPECT_TRUE(active_after(Role(YSB_LINK_ROLE_STANDBY, 1, TERM, 255)));
    EXPECT_TRUE(active_after(Role(YSB_LINK_ROLE_AUTO, 0, TERM, PRIORITY - 1)));
    EXPECT_FALSE(active_after(Role(YSB_LINK_ROLE_AUTO, 0, TERM, PRIORITY))) << "the lower name";
    EXPECT_FALSE(active_after(Role(YSB_LINK_ROLE_AUTO, 0, TERM, PRIORITY + 1)));
}

TEST(Role, TermsEndAtTheLargestAndDoNotBeginAgain) {
    Meeting meeting(Phase::RUNNING);
    const auto term = [&] { return meeting.b.endpoint.State().ulTerm; };
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, Role(YSB_LINK_ROLE_AUTO, 1, UINT32_MAX, 0), NOW));
    EXPECT_EQ(UINT32_MAX, term());
    EXPECT_EQ(Step::GOOD, Hand(meeting.b, Role(YSB_LINK_ROLE_STANDBY, 0, UINT32_MAX, 0), NOW));
    EXPECT_EQ(1u, meeting.b.endpoint.State().ulActive);
    EXPECT_EQ(UINT32_MAX, term()) << "told to take over";
    meeting.b.endpoint.SetRole(YSB_LINK_ROLE_STANDBY);
    meeting.b.endpoint.SetRole(YSB_LINK_ROLE_ACTIVE);
    EXPECT_EQ(UINT32_MAX, term()) << "taken over on request";
    meeting.b.endpoint.SetRole(YSB_LINK_ROLE_STANDBY);
    meeting.b.endpoint.SetRole(YSB_LINK_ROLE_AUTO);
    meeting.b.endpoint.Lost();
    EXPECT_EQ(Step::GOOD, meeting.b.endpoint.Tick(NOW + 3000));
    EXPECT_EQ(1u, meeting.b.endpoint.State().ulActive);
    EXPECT_EQ(UINT32_MAX, term()) << "taken over alone";
    meeting.GoOn();
}

} // namespace
