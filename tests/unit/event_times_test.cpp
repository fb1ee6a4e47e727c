/* How long callbacks take, by the clock of the board. */

#include "event_listeners.h"

#include <utility>

namespace {

class EventTimes : public testing::Test {
  protected:
    EventTimes() { kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER); }

    Listeners listeners;
    kit::VirtualClock clock;
};

TEST_F(EventTimes, EachCallIsTimed) {
    clock.SetBoot(100, 900);
    Listeners::On('A', [&](uint32_t, void *) {
        clock.Advance(1250);
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(100u, NodeOf('A')->ulStartSeconds);
    EXPECT_EQ(900u, NodeOf('A')->ulStartMs);
    EXPECT_EQ(1250u, NodeOf('A')->ulTotalMs);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(102u, NodeOf('A')->ulStartSeconds);
    EXPECT_EQ(150u, NodeOf('A')->ulStartMs);
    EXPECT_EQ(2500u, NodeOf('A')->ulTotalMs) << "over the turn of a second too, in either direction of the remainder";
}

TEST_F(EventTimes, TheLongestCallIsKept) {
    uint32_t takes = 0;
    Listeners::On('A', [&](uint32_t, void *) {
        clock.Advance(takes);
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    for (const uint32_t milliseconds : {5u, 70u, 20u}) {
        takes = milliseconds;
        EXPECT_EQ(0u, Notify());
    }
    EXPECT_EQ(70u, NodeOf('A')->ulWorstMs);
    EXPECT_EQ(95u, NodeOf('A')->ulTotalMs);
    takes = 0xFFFFFFFF;
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(0xFFFFFFFFu, NodeOf('A')->ulWorstMs);
    EXPECT_EQ(8589934685u, NodeOf('A')->ulTotalMs);
}

TEST_F(EventTimes, TimesReachBeyondThirtyTwoBits) {
    Listeners::On('A', [&](uint32_t, void *) {
        clock.SetBoot(5000000, 0);
        return 0u;
    });
    clock.SetBoot(0, 0);
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(5000000000u, NodeOf('A')->ulTotalMs);
    EXPECT_EQ(0xFFFFFFFFu, NodeOf('A')->ulWorstMs);
}

TEST_F(EventTimes, ACallbackThatNotifiesItsOwnEventIsTimedFromItsOwnStart) {
    bool outer = true;
    Listeners::On('A', [&](uint32_t, void *) {
        if (!std::exchange(outer, false)) {
            clock.Advance(700);
            return 0u;
        }
        clock.Advance(300);
        EXPECT_EQ(0u, Notify());
        clock.Advance(5);
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AA", Listeners::Called());
    EXPECT_EQ(1705u, NodeOf('A')->ulTotalMs) << "700 and 1005";
    EXPECT_EQ(1005u, NodeOf('A')->ulWorstMs);
}

TEST_F(EventTimes, TimesGoOnWhenTheSecondsWrap) {
    clock.SetBoot(0xFFFFFFFF, 999);
    Listeners::On('A', [&](uint32_t, void *) {
        clock.SetBoot(1, 0);
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(0xFFFFFFFFu, NodeOf('A')->ulStartSeconds);
    EXPECT_EQ(1001u, NodeOf('A')->ulTotalMs);
}

TEST_F(EventTimes, ACallWhoseTimeIsNotKnownAddsNothing) {
    for (const uint64_t failing : {1u, 2u}) {
        kit::Op<QAL_SecondNow>().FailsOn(failing);
        EXPECT_EQ(0u, Register('A', 5));
        EXPECT_EQ(0u, Notify());
    }
    EXPECT_EQ(2u, NodeOf('A')->ulCalls);
    EXPECT_EQ(0u, NodeOf('A')->ulTotalMs);
}

} // namespace
