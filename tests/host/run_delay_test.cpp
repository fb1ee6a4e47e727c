// Whether QAL_TaskRunDelay gives way cannot be seen through the header, so this file looks at how the Linux host does
// it: by sched_yield, which this executable defines before the C library does.

#include <uvelhost/task.h>

#include <chrono>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <uvelhost/epoll.h>
#include <uvelhost/queue.h>

static thread_local unsigned t_yields;

extern "C" int sched_yield() noexcept {
    ++t_yields;
    return static_cast<int>(syscall(SYS_sched_yield));
}

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/* The coarse clock moves in steps of up to ten milliseconds. */
constexpr Milliseconds TICK{10};

void Busy(Milliseconds time) {
    auto end = Clock::now() + time;
    while (Clock::now() < end) {
    }
}

unsigned YieldsOf(uint32_t held_ms) {
    unsigned before = t_yields;
    QAL_TaskRunDelay(held_ms, 20);
    return t_yields - before;
}

/* Runs the body on a thread of its own, whose count begins with its first call. */
template <typename Body>
void OnFreshTask(Body body) {
    std::thread(body).join();
}

} // namespace

TEST(HostRunDelay, TheFirstCallOfATaskNeverGivesWay) {
    OnFreshTask([] {
        Busy(Milliseconds(20));
        EXPECT_EQ(0u, YieldsOf(1));
    });
}

TEST(HostRunDelay, ATaskThatHasNotRunThatLongGoesOn) {
    OnFreshTask([] {
        for (int i = 0; i < 100000; ++i)
            ASSERT_EQ(0u, YieldsOf(UVELHOST_WAIT_FOREVER));
    });
}

TEST(HostRunDelay, ATaskThatHasRunThatLongGivesWayOnceAndStartsAnew) {
    OnFreshTask([] {
        YieldsOf(40);
        Busy(Milliseconds(40) + TICK);
        EXPECT_EQ(1u, YieldsOf(40));
        EXPECT_EQ(0u, YieldsOf(60000));
        Busy(Milliseconds(40) + TICK);
        EXPECT_EQ(1u, YieldsOf(40));
    });
}

TEST(HostRunDelay, GivingWayComesNotBeforeItsTime) {
    OnFreshTask([] {
        auto begin = Clock::now();
        YieldsOf(50);
        while (YieldsOf(50) == 0) {
        }
        EXPECT_GE(Clock::now() - begin, Milliseconds(50) - TICK);
    });
}

TEST(HostRunDelay, WithoutAPermittedTimeEveryCallGivesWay) {
    OnFreshTask([] {
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(1u, YieldsOf(0));
    });
}

/* Whether a task that ran longer than permitted goes on after the wait. On a busy machine it may run that long once more
 * before it asks, so it gets several chances; a wait that does not count would fail every one. */
template <typename Wait>
static bool GoesOnAfter(Wait wait) {
    for (int chance = 0; chance < 20; ++chance) {
        YieldsOf(0);
        Busy(Milliseconds(40) + TICK);
        wait();
        if (YieldsOf(40) == 0)
            return true;
    }
    return false;
}

TEST(HostRunDelay, SleepingForAnEventStartsAnew) {
    OnFreshTask([] {
        EXPECT_TRUE(GoesOnAfter([] { EXPECT_NE(0u, QAL_EventRead(1, QAL_EVENT_ANY, 15, nullptr)); }));
        EXPECT_FALSE(GoesOnAfter([] {}));
    });
}

TEST(HostRunDelay, SleepingForAQueueStartsAnew) {
    OnFreshTask([] {
        uint32_t queue = 0, element = 0;
        ASSERT_EQ(0u, QAL_QueueCreate("delay", 4, 4, &queue));
        EXPECT_TRUE(GoesOnAfter([&] { EXPECT_NE(0u, QAL_QueueRead(queue, &element, 4, 15)); }));
        EXPECT_EQ(0u, QAL_QueueDelete(queue));
    });
}

TEST(HostRunDelay, SleepingForDescriptorsStartsAnew) {
    OnFreshTask([] {
        const int32_t set = MESH_EpollCreate();
        MESH_EPOLL_EVENT_S event;
        EXPECT_TRUE(GoesOnAfter([&] { EXPECT_EQ(0, MESH_EpollWait(set, &event, 1, 15)); }));
        EXPECT_FALSE(GoesOnAfter([&] { EXPECT_EQ(0, MESH_EpollWait(set, &event, 1, 0)); }));
        EXPECT_EQ(0u, MESH_Close(set));
    });
}

TEST(HostRunDelay, ReadsThatDidNotSleepCountAsRunning) {
    OnFreshTask([] {
        uint32_t queue = 0, element = 0;
        ASSERT_EQ(0u, QAL_QueueCreate("delay", 4, 4, &queue));
        YieldsOf(40);
        Busy(Milliseconds(40) + TICK);
        ASSERT_EQ(0u, QAL_EventWrite(QAL_TaskGetSelf(), 1));
        ASSERT_EQ(0u, QAL_EventRead(1, QAL_EVENT_ANY, UVELHOST_WAIT_FOREVER, nullptr));
        ASSERT_EQ(0u, QAL_QueueAsyWrite(queue, &element, 4));
        ASSERT_EQ(0u, QAL_QueueRead(queue, &element, 4, UVELHOST_WAIT_FOREVER));
        EXPECT_NE(0u, QAL_QueueRead(queue, &element, 4, 0));
        EXPECT_EQ(1u, YieldsOf(40));
        EXPECT_EQ(0u, QAL_QueueDelete(queue));
    });
}

TEST(HostRunDelay, TasksAreCountedApart) {
    OnFreshTask([] {
        YieldsOf(40);
        Busy(Milliseconds(40) + TICK);
        OnFreshTask([] { EXPECT_EQ(0u, YieldsOf(40)); });
        EXPECT_EQ(1u, YieldsOf(40));
    });
}
