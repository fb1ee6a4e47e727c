// Sets of descriptors.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <uvelhost/epoll.h>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class Epoll : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_GE(set, 0);
        ASSERT_EQ(0, pipe(ends));
    }
    ~Epoll() override {
        close(ends[0]);
        close(ends[1]);
        MESH_Close(set);
    }

    static MESH_EPOLL_EVENT_S Readable(uint32_t data) {
        MESH_EPOLL_EVENT_S event{};
        event.ulEvents = MESH_EPOLL_IN;
        event.ulFd = data;
        return event;
    }
    uint32_t Add(int descriptor, uint32_t data) {
        const MESH_EPOLL_EVENT_S event = Readable(data);
        return MESH_EpollCtl(set, MESH_EPOLL_ADD, descriptor, &event);
    }
    int32_t Wait(int32_t timeout_ms) { return MESH_EpollWait(set, events, 4, timeout_ms); }

    int32_t set = MESH_EpollCreate();
    int ends[2] = {-1, -1};
    MESH_EPOLL_EVENT_S events[4] = {};
};

TEST_F(Epoll, AReadableDescriptorComesBackWithItsNumber) {
    ASSERT_EQ(0u, Add(ends[0], 0xFFFFFFF0));
    EXPECT_EQ(0, Wait(0));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    ASSERT_EQ(1, Wait(-1));
    EXPECT_EQ(MESH_EPOLL_IN, events[0].ulEvents);
    EXPECT_EQ(0xFFFFFFF0, events[0].ulFd);
    EXPECT_EQ(0u, events[0].ulReserved2);
    EXPECT_EQ(1, Wait(-1)) << "it is still readable";
}

TEST_F(Epoll, TheEndOfAPipeIsReadable) {
    ASSERT_EQ(0u, Add(ends[0], 5));
    close(std::exchange(ends[1], -1));
    ASSERT_EQ(1, Wait(-1));
    EXPECT_EQ(MESH_EPOLL_IN, events[0].ulEvents);
}

TEST_F(Epoll, ARemovedDescriptorIsNotWaitedFor) {
    ASSERT_EQ(0u, Add(ends[0], 5));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    EXPECT_EQ(0u, MESH_EpollCtl(set, MESH_EPOLL_DEL, ends[0], nullptr));
    EXPECT_EQ(0, Wait(0));
}

TEST_F(Epoll, AChangeReplacesTheNumberAndTheEvents) {
    ASSERT_EQ(0u, Add(ends[0], 5));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    MESH_EPOLL_EVENT_S event = Readable(6);
    EXPECT_EQ(0u, MESH_EpollCtl(set, MESH_EPOLL_MOD, ends[0], &event));
    ASSERT_EQ(1, Wait(0));
    EXPECT_EQ(6u, events[0].ulFd);
    event.ulEvents = 0;
    EXPECT_EQ(0u, MESH_EpollCtl(set, MESH_EPOLL_MOD, ends[0], &event));
    EXPECT_EQ(0, Wait(0));
}

TEST_F(Epoll, MoreReadyOnesThanRoomComeInTurns) {
    int others[3];
    for (int &other : others) {
        other = dup(ends[0]);
        ASSERT_EQ(0u, Add(other, static_cast<uint32_t>(other)));
    }
    ASSERT_EQ(1, write(ends[1], "x", 1));
    EXPECT_EQ(2, MESH_EpollWait(set, events, 2, 0));
    EXPECT_EQ(3, MESH_EpollWait(set, events, 4, 0));
    for (const int other : others)
        close(other);
}

TEST_F(Epoll, WrongOperationsAreRefusedWithAReason) {
    const MESH_EPOLL_EVENT_S event = Readable(1);
    EXPECT_EQ(uint32_t{ENOENT}, MESH_EpollCtl(set, MESH_EPOLL_DEL, ends[0], nullptr));
    EXPECT_EQ(uint32_t{ENOENT}, MESH_EpollCtl(set, MESH_EPOLL_MOD, ends[0], &event));
    ASSERT_EQ(0u, Add(ends[0], 1));
    EXPECT_EQ(uint32_t{EEXIST}, Add(ends[0], 1));
    EXPECT_EQ(uint32_t{EBADF}, Add(-1, 1));
    EXPECT_EQ(uint32_t{EINVAL}, MESH_EpollCtl(set, 3, ends[0], &event));
    EXPECT_EQ(uint32_t{EINVAL}, MESH_EpollCtl(set, MESH_EPOLL_ADD, ends[1], nullptr));
    EXPECT_EQ(uint32_t{EBADF}, MESH_EpollCtl(-1, MESH_EPOLL_ADD, ends[1], &event));
}

TEST_F(Epoll, WhatCannotBeWaitedForIsNegative) {
    EXPECT_GT(0, MESH_EpollWait(-1, events, 4, 0));
    EXPECT_GT(0, MESH_EpollWait(ends[0], events, 4, 0));
    EXPECT_GT(0, MESH_EpollWait(set, nullptr, 4, 0));
    EXPECT_GT(0, MESH_EpollWait(set, events, 0, 0));
}

TEST_F(Epoll, OnlyASetIsClosedAndWhatIsInItStaysOpen) {
    ASSERT_EQ(0u, Add(ends[0], 1));
    EXPECT_NE(0u, MESH_Close(ends[0]));
    EXPECT_EQ(0u, MESH_Close(set));
    EXPECT_NE(0u, MESH_Close(set));
    EXPECT_NE(0u, MESH_Close(-1));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    char read_back = 0;
    EXPECT_EQ(1, read(ends[0], &read_back, 1));
}

TEST_F(Epoll, ASetIsADescriptorOfAnotherSet) {
    const int32_t outer = MESH_EpollCreate();
    const MESH_EPOLL_EVENT_S event = Readable(9);
    ASSERT_EQ(0u, MESH_EpollCtl(outer, MESH_EPOLL_ADD, set, &event));
    ASSERT_EQ(0u, Add(ends[0], 1));
    EXPECT_EQ(0, MESH_EpollWait(outer, events, 4, 0));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    ASSERT_EQ(1, MESH_EpollWait(outer, events, 4, -1));
    EXPECT_EQ(9u, events[0].ulFd);
    MESH_Close(outer);
}

TEST_F(Epoll, ADescriptorAddedWhileAnotherThreadWaitsWakesIt) {
    ASSERT_EQ(1, write(ends[1], "x", 1));
    std::thread adder([&] { EXPECT_EQ(0u, Add(ends[0], 3)); });
    EXPECT_EQ(1, Wait(-1));
    EXPECT_EQ(3u, events[0].ulFd);
    adder.join();
}

void Nothing(int) {}

TEST_F(Epoll, ASignalNeitherEndsAWaitNorMakesItLonger) {
    struct sigaction action {};
    action.sa_handler = Nothing;
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, nullptr));
    const pthread_t waiter = pthread_self();
    std::thread sender([&] {
        for (int i = 0; i < 10; ++i) {
            std::this_thread::sleep_for(10ms);
            pthread_kill(waiter, SIGUSR1);
        }
    });
    const auto begin = Clock::now();
    EXPECT_EQ(0, Wait(150));
    const auto took = Clock::now() - begin;
    sender.join();
    EXPECT_GE(took, 150ms);
    EXPECT_LT(took, 5s);
}

} // namespace
