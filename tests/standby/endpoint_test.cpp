#include "cable.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>
#include <uvelhost/ha.h>

namespace {

using namespace cable;
using Sending = Endpoint::Sending;

constexpr uint64_t NOW = 1'000'000;

class Pair : public testing::Test {
  protected:
    ~Pair() override {
        EXPECT_EQ(0, a.broken);
        EXPECT_EQ(0, b.broken);
    }
    void Connect() {
        cable.Connect(NOW);
        cable.Carry(NOW);
    }
    YSB_LINK_COUNTERS_S CountersOfA() { return a.counters.Copy(); }

    Side a{Settings("a", "b"), NOW};
    Side b{Settings("b", "a"), NOW};
    Cable cable{a, b};
};

TEST_F(Pair, ThatMeetsIsAskedForEverythingOnBothSides) {
    a.own = {{1, "one"}, {2, "two"}};
    Connect();
    EXPECT_EQ(1u, a.batch_wanted);
    EXPECT_EQ(1u, b.batch_wanted);
    EXPECT_EQ(1, a.news);
    EXPECT_EQ(1, b.news);
    a.Batch();
    b.Batch();
    cable.Carry(NOW);
    EXPECT_EQ(a.own, b.copy);
    EXPECT_EQ(std::vector<uint32_t>{1}, a.delivered);
    EXPECT_EQ(std::vector<uint32_t>{1}, b.delivered);
}

TEST_F(Pair, CarriesMessagesInOrder) {
    Connect();
    std::vector<std::string> expected;
    for (int i = 0; i < 1000; ++i) {
        expected.push_back(std::to_string(i));
        ASSERT_EQ(Sending::ACCEPTED, a.Say(expected.back()));
    }
    cable.Carry(NOW);
    EXPECT_EQ(expected, b.said);
    EXPECT_EQ(1000u, CountersOfA().ulMessagesSent);
    EXPECT_EQ(1000u, b.counters.Copy().ulPacketsReceived);
    EXPECT_EQ(0u, a.endpoint.BytesHeld()) << "all acknowledged";
}

TEST_F(Pair, SendsAgainWhatWasNotAcknowledgedWhenTheCableIsCut) {
    Connect();
    Settle(cable, a, b, NOW);
    a.Say("one");
    cable.Cut();
    a.Say("two");
    Connect();
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), b.said);
    EXPECT_EQ(1u, CountersOfA().ulResumed);
    EXPECT_EQ(1u, CountersOfA().ulNewStreams);
    EXPECT_EQ(1, b.news) << "the stream went on";
}

TEST_F(Pair, WithANewPeerBeginsAnewAndAsksForEverything) {
    Connect();
    Settle(cable, a, b, NOW);
    a.Set(1, "one");
    cable.Carry(NOW);
    cable.Cut();
    Side fresh(Settings("b", "a"), NOW);
    Cable second(a, fresh);
    Settle(second, a, fresh, NOW);
    EXPECT_EQ(a.own, fresh.copy);
    EXPECT_EQ((std::vector<uint32_t>{1, 2}), a.delivered);
    EXPECT_EQ(2u, CountersOfA().ulNewStreams);
}

TEST_F(Pair, CutAfterEveryByteOfAStreamLosesNothingAndRepeatsNothing) {
    const auto speak = [](Side &side, int from) {
        for (int i = from; i < from + 10; ++i)
            side.Say("message " + std::to_string(i) + std::string(static_cast<std::size_t>(i * 13 % 90), '.'));
    };
    /* The stream of A from the first byte of its connection to the last: */
    Connect();
    Settle(cable, a, b, NOW);
    cable.Cut();
    speak(a, 0);
    const uint64_t before = cable.carried_a_to_b;
    Connect();
    speak(a, 10);
    cable.Carry(NOW);
    const uint64_t bytes = cable.carried_a_to_b - before;
    ASSERT_GE(bytes, 2048u);
    const std::vector<std::string> expected = b.said;
    ASSERT_EQ(20u, expected.size());

    for (const bool other_way : {false, true}) {
        for (uint64_t cut = 1; cut <= bytes; ++cut) {
            Side c(Settings("a", "b"), NOW);
            Side d(Settings("b", "a"), NOW);
            Cable line(c, d);
            Settle(line, c, d, NOW);
            line.Cut();
            speak(c, 0);
            line.Connect(NOW);
            line.Carry(NOW, nullptr, other_way ? SIZE_MAX : cut, other_way ? cut : SIZE_MAX);
            speak(c, 10);
            if (line.Connected())
                line.Carry(NOW);
            Settle(line, c, d, NOW);
            ASSERT_EQ(expected, d.said) << "cut after byte " << cut;
            ASSERT_EQ(0, d.broken);
        }
    }
}

TEST_F(Pair, CutAnywhereAnyNumberOfTimesEndsWithEqualTables) {
    constexpr uint32_t SEED = 20240311;
    std::mt19937 random(SEED);
    auto pick = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };
    for (int round = 0; round < 60; ++round) {
        EndpointSettings settings = Settings("a", "b");
        settings.mtu = 1 + pick(200);
        Side c(settings, NOW);
        settings.name = "b", settings.peer_name = "a";
        auto d = std::make_unique<Side>(settings, NOW);
        auto line = std::make_unique<Cable>(c, *d);
        for (int step = 0; step < 200; ++step) {
            switch (pick(12)) {
            case 0:
                line->Connect(NOW);
                break;
            case 1:
                line->Cut();
                break;
            case 2:
                if (pick(10) == 0) { /* the standby is a new process */
                    line->Cut();
                    d = std::make_unique<Side>(settings, NOW);
                    line = std::make_unique<Cable>(c, *d);
                }
                break;
            case 3:
                c.Erase(pick(30));
                break;
            case 4:
                c.Batch();
                d->Batch();
                break;
            case 5:
                if (line->Connected())
                    line->Carry(NOW, &random, pick(3000), pick(3000));
                break;
            case 6:
                if (line->Connected())
                    line->Carry(NOW, &random);
                break;
            default:
                c.Set(pick(30), std::string(pick(500), static_cast<char>('a' + pick(26))));
            }
        }
        Settle(*line, c, *d, NOW);
        ASSERT_EQ(c.own, d->copy) << "seed " << SEED << ", round " << round;
        ASSERT_EQ(0, d->broken);
    }
}

TEST_F(Pair, CutsLongMessagesIntoNumberedFragments) {
    EndpointSettings settings = Settings("a", "b");
    settings.mtu = 10;
    Side c(settings, NOW);
    Cable line(c, b);
    line.Connect(NOW);
    line.Carry(NOW);
    for (const std::size_t length : {0u, 1u, 9u, 10u, 11u, 20u, 21u, 1000u})
        ASSERT_EQ(Sending::ACCEPTED, c.Say(std::string(length, 'x')));
    line.Carry(NOW);
    std::vector<std::size_t> lengths;
    for (const std::string &text : b.said)
        lengths.push_back(text.size());
    EXPECT_EQ((std::vector<std::size_t>{0, 1, 9, 10, 11, 20, 21, 1000}), lengths);
    EXPECT_EQ(1u + 1 + 1 + 1 + 2 + 2 + 3 + 100, c.counters.Copy().ulPacketsSent);
}

TEST_F(Pair, RefusesWhatCannotTravel) {
    Connect();
    const auto send = [&](const std::vector<uint8_t> &message) { return SendTo(a.endpoint, message); };
    EXPECT_EQ(Sending::MALFORMED, send(std::vector<uint8_t>(47)));
    std::vector<uint8_t> message = Message(1, "four");
    message[32] = 5;
    EXPECT_EQ(Sending::MALFORMED, send(message)) << "announces more than there is";
    message[32] = 3;
    EXPECT_EQ(Sending::ACCEPTED, send(message));
    message = Message(1, std::string(65537, 'x'));
    EXPECT_EQ(Sending::ACCEPTED, send(message));
    message[32] = 0;
    EXPECT_EQ(Sending::MALFORMED, send(message)) << "is cut and does not say how long it is";
    EXPECT_EQ(Sending::TOO_LARGE, send(Message(1, std::string((16 << 20) + 1, 'x'))));
    EXPECT_EQ(3u, CountersOfA().ulRefusedMalformed);
    EXPECT_EQ(1u, CountersOfA().ulRefusedTooLarge);
}

TEST_F(Pair, RefusesWhatThePeerDoesNotTake) {
    EndpointSettings settings = Settings("b", "a");
    settings.max_message = 100;
    Side small(settings, NOW);
    Cable line(a, small);
    line.Connect(NOW);
    line.Carry(NOW);
    EXPECT_EQ(Sending::ACCEPTED, a.Say(std::string(100, 'x')));
    EXPECT_EQ(Sending::TOO_LARGE, a.Say(std::string(101, 'x')));
}

TEST_F(Pair, WithoutEverHavingMetRefusesMessages) {
    EXPECT_EQ(Sending::NO_PEER, a.Say("x"));
    EXPECT_EQ(1u, CountersOfA().ulRefusedNoPeer);
}

TEST_F(Pair, MakesUpForWhatFoundNoRoomByABatch) {
    Connect();
    Settle(cable, a, b, NOW);
    for (uint32_t i = 0; a.Set(i % 5, std::string(60000, static_cast<char>('a' + i))) == Sending::ACCEPTED; ++i)
        ASSERT_LT(i, 100u) << "the window is bounded";
    EXPECT_EQ(1u, CountersOfA().ulRefusedWindow);
    EXPECT_LE(a.endpoint.BytesHeld(), std::size_t{1} << 20);
    cable.Carry(NOW);
    EXPECT_EQ(2u, a.batch_wanted) << "asked when there was room again";
    Settle(cable, a, b, NOW);
    EXPECT_TRUE(a.own == b.copy);
}

TEST_F(Pair, ThatIsApartForTooLongBeginsAnew) {
    Connect();
    Settle(cable, a, b, NOW);
    cable.Cut();
    for (uint32_t i = 0; i < 30; ++i)
        a.Set(i % 5, std::string(60000, static_cast<char>('a' + i)));
    a.Erase(3);
    EXPECT_EQ(0u, a.endpoint.BytesHeld()) << "nothing is kept that will not be used";
    Settle(cable, a, b, NOW);
    EXPECT_TRUE(a.own == b.copy);
    EXPECT_EQ(2u, CountersOfA().ulNewStreams);
}

/* The introduction is sent and answered, the connection lives: what finds no room then must not end the stream. */
TEST_F(Pair, ThatHasAgreedMakesUpForWhatFoundNoRoom) {
    a.endpoint.Connected(NOW);
    b.endpoint.Connected(NOW);
    const auto carry = [](Side &from, Side &to) {
        for (auto bytes = from.endpoint.Output(); !bytes.empty(); bytes = from.endpoint.Output()) {
            const std::vector<uint8_t> copy(bytes.begin(), bytes.end());
            from.endpoint.Written(NOW);
            for (std::size_t at = 0; at < copy.size();) {
                const auto room = to.endpoint.Room();
                const std::size_t part = std::min(room.size(), copy.size() - at);
                std::copy_n(copy.begin() + static_cast<std::ptrdiff_t>(at), part, room.begin());
                at += part;
                ASSERT_EQ(Endpoint::Step::GOOD, to.endpoint.Filled(part, NOW));
            }
        }
        to.endpoint.Drained();
    };
    carry(b, a); /* A agrees now and sends; B has heard nothing yet */
    for (uint32_t i = 0; i < 30; ++i)
        (void)a.Set(i % 5, std::string(60000, static_cast<char>('a' + i)));
    EXPECT_EQ(0u, CountersOfA().ulRefusedNoPeer);
    EXPECT_GT(CountersOfA().ulRefusedWindow, 0u);
    for (int i = 0; i < 10; ++i) {
        carry(a, b);
        carry(b, a);
        a.Batch();
        b.Batch();
    }
    EXPECT_TRUE(a.own == b.copy);
}

TEST_F(Pair, KnowsWhatThePeerHasTaken) {
    EXPECT_EQ(0u, a.endpoint.Position());
    Connect();
    a.Say("early");
    EXPECT_EQ(0u, a.endpoint.Position()) << "the peer still has to get everything";
    Settle(cable, a, b, NOW);
    a.Say("one");
    const uint64_t one = a.endpoint.Position();
    a.Say("two");
    const uint64_t two = a.endpoint.Position();
    EXPECT_LT(0u, one);
    EXPECT_LT(one, two);
    EXPECT_EQ(YSB_LINK_FATE_PENDING, a.endpoint.Fate(one));
    const int before = a.progress;
    cable.Carry(NOW);
    EXPECT_LT(before, a.progress);
    EXPECT_EQ(YSB_LINK_FATE_TAKEN, a.endpoint.Fate(one));
    EXPECT_EQ(YSB_LINK_FATE_TAKEN, a.endpoint.Fate(two));
    EXPECT_EQ(YSB_LINK_FATE_UNKNOWN, a.endpoint.Fate(0));
}

TEST_F(Pair, DoesNotKnowWhatBecameOfWhatAPeerThatWentAwayDidNotAcknowledge) {
    Connect();
    Settle(cable, a, b, NOW);
    a.Say("taken");
    const uint64_t taken = a.endpoint.Position();
    cable.Carry(NOW);
    a.Say("lost");
    const uint64_t lost = a.endpoint.Position();
    const int before = a.progress;
    cable.Cut();
    EXPECT_LT(before, a.progress);
    EXPECT_EQ(0u, a.endpoint.Position());
    EXPECT_EQ(YSB_LINK_FATE_TAKEN, a.endpoint.Fate(taken));
    EXPECT_EQ(YSB_LINK_FATE_UNKNOWN, a.endpoint.Fate(lost));

    Side fresh(Settings("b", "a"), NOW);
    Cable second(a, fresh);
    Settle(second, a, fresh, NOW);
    a.Say("to the new peer");
    const uint64_t later = a.endpoint.Position();
    EXPECT_LT(lost, later) << "positions grow through streams";
    second.Carry(NOW);
    EXPECT_EQ(YSB_LINK_FATE_TAKEN, a.endpoint.Fate(later));
    EXPECT_EQ(YSB_LINK_FATE_UNKNOWN, a.endpoint.Fate(lost)) << "the new peer has it from the batch, if at all";
}

TEST_F(Pair, HasNoPositionWhileAMessageIsMissing) {
    Connect();
    Settle(cable, a, b, NOW);
    for (uint32_t i = 0; a.Set(i % 5, std::string(60000, 'x')) == Sending::ACCEPTED; ++i)
        ASSERT_LT(i, 100u);
    EXPECT_EQ(0u, a.endpoint.Position());
    cable.Carry(NOW);
    Settle(cable, a, b, NOW);
    EXPECT_LT(0u, a.endpoint.Position());
}

TEST_F(Pair, KeepsAnOvertakenBatchFromCountingAsDelivered) {
    Connect();
    const uint32_t first = a.batch_wanted;
    cable.Cut();
    Side fresh(Settings("b", "a"), NOW);
    Cable second(a, fresh);
    second.Connect(NOW);
    second.Carry(NOW);
    EXPECT_FALSE(a.endpoint.BatchDone(first));
    EXPECT_TRUE(a.endpoint.BatchDone(first + 1));
    EXPECT_FALSE(a.endpoint.BatchDone(first + 1)) << "once";
    EXPECT_FALSE(a.endpoint.BatchDone(0));
}

TEST_F(Pair, StartsABatchOnRequestWhileConnectedOnly) {
    EXPECT_FALSE(a.endpoint.StartBatch());
    Settle(cable, a, b, NOW);
    b.copy[99] = "left over";
    EXPECT_TRUE(a.endpoint.StartBatch());
    Settle(cable, a, b, NOW);
    EXPECT_EQ(a.own, b.copy);
}

/* Time */

TEST_F(Pair, HeartbeatsKeepTheConnection) {
    Connect();
    for (uint64_t now = NOW; now < NOW + 20000; now += 500) {
        ASSERT_EQ(Endpoint::Step::GOOD, a.endpoint.Tick(now));
        ASSERT_EQ(Endpoint::Step::GOOD, b.endpoint.Tick(now));
        cable.Carry(now);
    }
    EXPECT_TRUE(a.endpoint.IsUp());
}

TEST_F(Pair, ASilentPeerIsGone) {
    Connect();
    EXPECT_EQ(Endpoint::Step::GOOD, a.endpoint.Tick(NOW + 2999));
    EXPECT_EQ(Endpoint::Step::CLOSE, a.endpoint.Tick(NOW + 3000));
    EXPECT_EQ(1u, CountersOfA().ulTimeouts);
}

TEST_F(Pair, APeerThatDoesNotIntroduceItselfIsRefused) {
    a.endpoint.Connected(NOW);
    EXPECT_EQ(Endpoint::Step::CLOSE, a.endpoint.Tick(NOW + 3000));
    EXPECT_EQ(uvel::host::standby::Refusal::TIMEOUT, a.endpoint.Refused());
}

TEST_F(Pair, NothingIsDueEarlyOfAPeerThatDoesNotIntroduceItself) {
    a.endpoint.Connected(NOW);
    for (const uint64_t now : {NOW, NOW + 1500, NOW + 2999}) {
        EXPECT_EQ(Endpoint::Step::GOOD, a.endpoint.Tick(now));
        EXPECT_EQ(NOW + 3000, a.endpoint.NextTick()) << "heartbeats belong to connections that work";
    }
}

/* Roles */

TEST_F(Pair, DecidesByNameWhoIsActive) {
    Connect();
    EXPECT_EQ(1u, a.endpoint.State().ulActive);
    EXPECT_EQ(0u, b.endpoint.State().ulActive);
    EXPECT_EQ(1u, b.endpoint.State().ulPeerActive);
}

TEST_F(Pair, ADeviceThatIsAloneTakesOver) {
    EXPECT_EQ(0u, b.endpoint.State().ulActive);
    b.endpoint.Tick(NOW + 2999);
    EXPECT_EQ(0u, b.endpoint.State().ulActive);
    b.endpoint.Tick(NOW + 3000);
    EXPECT_EQ(1u, b.endpoint.State().ulActive);
    EXPECT_EQ(uint32_t{HA_STATE_ALONE}, b.endpoint.State().ulBackup);
    cable.Connect(NOW + 4000);
    cable.Carry(NOW + 4000);
    EXPECT_EQ(1u, b.endpoint.State().ulActive) << "whoever is active stays so";
    EXPECT_EQ(0u, a.endpoint.State().ulActive);
}

TEST_F(Pair, OfTwoActiveDevicesTheLaterOneStaysAndSendsEverything) {
    Settle(cable, a, b, NOW);
    cable.Cut();
    b.endpoint.Tick(NOW + 5000);
    b.own = {{5, "taken over"}};
    a.Set(6, "too late");
    ASSERT_EQ(1u, a.endpoint.State().ulActive);
    ASSERT_EQ(1u, b.endpoint.State().ulActive);
    Settle(cable, a, b, NOW + 5000);
    EXPECT_EQ(0u, a.endpoint.State().ulActive);
    EXPECT_EQ(1u, b.endpoint.State().ulActive);
    EXPECT_EQ(b.own, a.copy);
    EXPECT_EQ(2u, b.counters.Copy().ulNewStreams);
}

TEST_F(Pair, ConfiguredTwiceAsActiveIsRefusedAndSaysSo) {
    EndpointSettings settings = Settings("a", "b");
    settings.role = YSB_LINK_ROLE_ACTIVE;
    Side c(settings, NOW);
    settings.name = "b", settings.peer_name = "a";
    Side d(settings, NOW);
    Cable line(c, d);
    line.Connect(NOW);
    line.Carry(NOW);
    EXPECT_FALSE(line.Connected());
    EXPECT_EQ(uvel::host::standby::Refusal::ROLE, d.endpoint.Refused());
}

TEST_F(Pair, RolesChangeOnRequest) {
    Settle(cable, a, b, NOW);
    b.endpoint.SetRole(YSB_LINK_ROLE_ACTIVE);
    cable.Carry(NOW);
    EXPECT_EQ(0u, a.endpoint.State().ulActive);
    EXPECT_EQ(1u, b.endpoint.State().ulActive);
    b.endpoint.SetRole(YSB_LINK_ROLE_STANDBY);
    cable.Carry(NOW);
    EXPECT_EQ(1u, a.endpoint.State().ulActive);
    EXPECT_EQ(0u, b.endpoint.State().ulActive);
    EXPECT_EQ(1u, b.endpoint.State().ulPeerActive);
}

TEST_F(Pair, OfTwoThatWereToldToStandByTheOneThatMayDecideTakesOver) {
    Settle(cable, a, b, NOW);
    for (Side *side : {&a, &b}) {
        side->endpoint.SetRole(YSB_LINK_ROLE_STANDBY);
        cable.Carry(NOW);
    }
    EXPECT_EQ(0u, a.endpoint.State().ulActive);
    EXPECT_EQ(0u, b.endpoint.State().ulActive);
    const uint32_t term = b.endpoint.State().ulTerm;
    b.endpoint.SetRole(YSB_LINK_ROLE_AUTO);
    EXPECT_EQ(1u, b.endpoint.State().ulActive);
    EXPECT_LT(term, b.endpoint.State().ulTerm);
    cable.Carry(NOW);
    EXPECT_EQ(1u, a.endpoint.State().ulPeerActive);
    a.endpoint.SetRole(YSB_LINK_ROLE_AUTO);
    cable.Carry(NOW);
    EXPECT_EQ(0u, a.endpoint.State().ulActive) << "whoever is active stays so";
    EXPECT_EQ(1u, b.endpoint.State().ulActive);
}

TEST_F(Pair, TellsHowFarTheBackupIs) {
    EXPECT_EQ(uint32_t{HA_STATE_ALONE}, a.endpoint.State().ulBackup);
    Connect();
    EXPECT_EQ(uint32_t{HA_STATE_BATCH}, a.endpoint.State().ulBackup);
    EXPECT_EQ(uint32_t{HA_STATE_BATCH}, b.endpoint.State().ulBackup);
    a.Batch();
    cable.Carry(NOW);
    EXPECT_EQ(uint32_t{HA_STATE_REALTIME}, a.endpoint.State().ulBackup);
    EXPECT_EQ(uint32_t{HA_STATE_REALTIME}, b.endpoint.State().ulBackup);
    cable.Cut();
    EXPECT_EQ(uint32_t{HA_STATE_ALONE}, a.endpoint.State().ulBackup);
}

/* Waiting for room */

TEST_F(Pair, WaitsForRoomAndGoesOnWhenThereIsSome) {
    Connect();
    Settle(cable, a, b, NOW);
    const std::vector<uint8_t> message = Message(1, std::string(60000, 'x'));
    const auto send = [&](Endpoint::Patience patience) { return SendTo(a.endpoint, message, patience); };
    while (send(Endpoint::Patience::NONE) == Sending::ACCEPTED) {
    }
    Sending result = Sending::NO_ROOM;
    std::thread waiter([&] { result = send(Endpoint::Patience::BATCH); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); /* lets it wait; the result does not depend on it */
    cable.Carry(NOW);
    waiter.join();
    EXPECT_EQ(Sending::ACCEPTED, result);
}

TEST_F(Pair, WaitingForRoomEndsWithItsTime) {
    Connect();
    const std::vector<uint8_t> message = Message(1, std::string(60000, 'x'));
    Sending result = Sending::ACCEPTED;
    while (result == Sending::ACCEPTED)
        result = SendTo(a.endpoint, message, Endpoint::Patience::SHORT);
    EXPECT_EQ(Sending::NO_ROOM, result);
    EXPECT_EQ(1u, CountersOfA().ulRefusedWindow);
}

TEST_F(Pair, WaitingForRoomEndsWhenTheLinkIsClosed) {
    Connect();
    const std::vector<uint8_t> message = Message(1, std::string(60000, 'x'));
    Sending result = Sending::ACCEPTED;
    std::thread waiter([&] {
        while (result == Sending::ACCEPTED)
            result = SendTo(a.endpoint, message, Endpoint::Patience::BATCH);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    a.endpoint.Shut();
    waiter.join();
    EXPECT_NE(Sending::ACCEPTED, result);
}

} // namespace
