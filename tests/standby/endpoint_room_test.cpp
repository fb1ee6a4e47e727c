// Endpoints when room or memory is short, here or at the peer.

#include "cable.h"

#include <gtest/gtest.h>
#include <memory_shortage.h>
#include <uvelhost/ha.h>

namespace {

using namespace cable;
using Sending = Endpoint::Sending;

constexpr uint64_t NOW = 1'000'000;
constexpr std::size_t WINDOW = 1 << 20; /* of cable's Settings */

class Room : public testing::Test {
  protected:
    Room() { Settle(cable, a, b, NOW); }

    /* Sends until there is no room; so many were accepted. */
    int Fill() {
        int accepted = 0;
        while (a.Set(static_cast<uint32_t>(accepted % 5), std::string(60000, 'x')) == Sending::ACCEPTED)
            ++accepted;
        return accepted;
    }

    Side a{Settings("a", "b"), NOW};
    Side b{Settings("b", "a"), NOW};
    Cable cable{a, b};
};

TEST_F(Room, WhatThePeerCouldNotTakeComesAgain) {
    b.not_taken = 1;
    for (const char *text : {"one", "two", "three"})
        ASSERT_EQ(Sending::ACCEPTED, a.Say(text));
    const uint64_t taken = b.counters.Copy().ulPacketsReceived;
    cable.Carry(NOW);
    EXPECT_FALSE(cable.Connected());
    EXPECT_EQ("a packet of the peer could not be taken, it has to come again", b.endpoint.Trouble());
    EXPECT_TRUE(b.said.empty());
    EXPECT_EQ(taken, b.counters.Copy().ulPacketsReceived);
    cable.Connect(NOW);
    cable.Carry(NOW);
    EXPECT_EQ((std::vector<std::string>{"one", "two", "three"}), b.said);
    EXPECT_EQ(1u, a.counters.Copy().ulResumed);
    EXPECT_EQ(0u, b.counters.Copy().ulViolations);
}

TEST_F(Room, AMessageAboveTheWindowIsNotKeptOutByShortOnes) {
    ASSERT_EQ(Sending::ACCEPTED, a.Say("always one on its way"));
    EXPECT_EQ(Sending::ACCEPTED, a.Say(std::string(2 * WINDOW, 'x')));
    EXPECT_EQ(Sending::NO_ROOM, a.Say(std::string(2 * WINDOW, 'x'))) << "one is enough";
    EXPECT_EQ(Sending::NO_ROOM, a.Say("short"));
    cable.Carry(NOW);
    EXPECT_EQ(0u, a.endpoint.BytesHeld());
}

TEST_F(Room, ALongMessageNeedsHalfTheWindow) {
    ASSERT_EQ(Sending::ACCEPTED, a.Say(std::string(WINDOW / 2, 'x')));
    EXPECT_EQ(Sending::NO_ROOM, a.Say(std::string(WINDOW / 2, 'x')));
    EXPECT_EQ(Sending::ACCEPTED, a.Say(std::string(WINDOW / 4, 'x')));
}

TEST_F(Room, TheStateSaysThatAMessageIsMissing) {
    ASSERT_EQ(uint32_t{HA_STATE_REALTIME}, a.endpoint.State().ulBackup);
    const int before = a.states;
    Fill();
    EXPECT_EQ(uint32_t{HA_STATE_BATCH}, a.endpoint.State().ulBackup);
    EXPECT_EQ(before, a.states) << "who sends may hold locks";
    EXPECT_EQ(Endpoint::Step::GOOD, a.endpoint.Tick(NOW));
    EXPECT_EQ(before + 1, a.states);
    a.Say("refused as well");
    EXPECT_EQ(Endpoint::Step::GOOD, a.endpoint.Tick(NOW));
    EXPECT_EQ(before + 1, a.states) << "told once";
    Settle(cable, a, b, NOW);
    EXPECT_EQ(uint32_t{HA_STATE_REALTIME}, a.endpoint.State().ulBackup);
    EXPECT_TRUE(a.own == b.copy);
}

TEST_F(Room, ABatchIsNotDeliveredWhileAMessageIsMissing) {
    ASSERT_TRUE(a.endpoint.StartBatch());
    ASSERT_TRUE(a.endpoint.BatchDone(a.batch_wanted));
    const std::size_t delivered = a.delivered.size();
    a.batch_wanted = 0;
    Fill();
    cable.Carry(NOW);
    EXPECT_EQ(delivered, a.delivered.size());
    EXPECT_NE(0u, a.batch_wanted) << "asked again, and that one will be";
    Settle(cable, a, b, NOW);
    EXPECT_EQ(delivered + 1, a.delivered.size());
}

TEST_F(Room, ALengthBeyondTheBufferIsMalformedAndCounted) {
    Smbuf smbuf = uvel::host::standby::MakeSmbuf(60);
    std::fill_n(uvel::host::standby::DataOf(smbuf.get()), 60, uint8_t{0});
    EXPECT_EQ(Sending::MALFORMED, a.endpoint.Send(7, 255, std::move(smbuf), 61, Endpoint::Patience::NONE));
    EXPECT_EQ(1u, a.counters.Copy().ulRefusedMalformed);
}

/* ---- memory */

TEST_F(Room, ShortMessagesBetweenLongOnesTakeLittleMemory) {
    const std::size_t before = memory_shortage::Taken();
    for (int i = 0; i % 2 == 0 ? a.Say(std::string(16384, 'x')) == Sending::ACCEPTED : a.Say("") == Sending::ACCEPTED;
         ++i)
        ASSERT_LT(i, 1000);
    EXPECT_GT(a.endpoint.BytesHeld(), WINDOW - 20000);
    EXPECT_LT(memory_shortage::Taken() - before, 4 * WINDOW) << "messages as they are made, and half again of them";
}

TEST_F(Room, ABufferMuchLargerThanItsMessageIsNotKept) {
    const std::vector<uint8_t> message = Message(1, std::string(16384, 'x'));
    const auto taken = [&](uint32_t buffer) {
        Smbuf smbuf = uvel::host::standby::MakeSmbuf(buffer);
        std::copy(message.begin(), message.end(), uvel::host::standby::DataOf(smbuf.get()));
        const std::size_t before = memory_shortage::Taken();
        EXPECT_EQ(Sending::ACCEPTED, a.endpoint.Send(7, 255, std::move(smbuf), static_cast<uint32_t>(message.size()),
                                                     Endpoint::Patience::NONE));
        return memory_shortage::Taken() - before;
    };
    EXPECT_LT(taken(static_cast<uint32_t>(message.size())), 4096u) << "its buffer travels";
    EXPECT_LT(taken(static_cast<uint32_t>(message.size()) + 4096), 4096u);
    EXPECT_GT(taken(1 << 20), 16384u) << "a copy travels";
}

TEST_F(Room, AMessageForWhichThereIsNoMemoryIsMadeUpForByABatch) {
    a.own[1] = "value";
    const std::vector<uint8_t> message = Message(1, std::string(500000, 'x')); /* more than is kept ready */
    Sending result = Sending::ACCEPTED;
    {
        const memory_shortage::Shortage shortage(0);
        result = SendTo(a.endpoint, message);
    }
    EXPECT_EQ(Sending::NO_MEMORY, result);
    EXPECT_EQ(1u, a.counters.Copy().ulRefusedMemory);
    EXPECT_EQ(uint32_t{HA_STATE_BATCH}, a.endpoint.State().ulBackup);
    for (Side *side : {&a, &b})
        side->endpoint.Tick(NOW + 1000); /* heartbeats acknowledge */
    Settle(cable, a, b, NOW + 1000);
    EXPECT_TRUE(a.own == b.copy);
}

TEST_F(Room, ABatchThatCannotBeEndedForWantOfMemoryIsDoneAnew) {
    ASSERT_TRUE(a.endpoint.StartBatch());
    const uint32_t batch = a.batch_wanted;
    ASSERT_EQ(Sending::ACCEPTED, a.Say(std::string(20000, 'x'))); /* behind it the mark needs a place of its own */
    bool is_done = true;
    {
        const memory_shortage::Shortage shortage(0);
        is_done = a.endpoint.BatchDone(batch);
    }
    EXPECT_FALSE(is_done);
    for (Side *side : {&a, &b})
        side->endpoint.Tick(NOW + 1000);
    cable.Carry(NOW + 1000);
    EXPECT_EQ(batch + 1, a.batch_wanted);
    Settle(cable, a, b, NOW + 1000);
    EXPECT_EQ(uint32_t{HA_STATE_REALTIME}, a.endpoint.State().ulBackup);
}

} // namespace
