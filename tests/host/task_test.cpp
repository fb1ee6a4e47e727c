#include <uvelhost/task.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

constexpr uint32_t DONE = 0x80000000; /* event by which a task tells the test that it is through */
constexpr uint32_t GO = 0x40000000;   /* event by which the test lets a task end */
constexpr uint32_t LONG = 60000;      /* more than any test takes */

uint32_t g_test_task; /* the task that runs the test */
std::atomic<uint32_t> g_created;
std::atomic<uint32_t> g_seen;
uintptr_t g_args[QAL_TASK_ARGS];
char g_name[16];

class HostTask : public testing::Test {
  protected:
    HostTask() {
        g_test_task = QAL_TaskGetSelf();
        g_created = g_seen = 0;
        QAL_EventRead(0xFFFFFFFF, QAL_EVENT_ANY, 0, nullptr); /* what an earlier test left */
    }

    static uint32_t Start(QAL_TASK_ENTRY entry, const char *name = "task", const uintptr_t *args = nullptr) {
        uint32_t task = 0;
        EXPECT_EQ(0u, QAL_CreateTask(name, &task, entry, 100, 0, args));
        return task;
    }

    static void AwaitDone() { ASSERT_EQ(0u, QAL_EventRead(DONE, QAL_EVENT_ALL, LONG, nullptr)); }

    /* A task tells that it is through a little before it has ended. */
    static void AwaitEnd(uint32_t task) {
        while (QAL_EventWrite(task, 0) == 0)
            std::this_thread::yield();
    }
};

using HostEvent = HostTask;

void TellDone() {
    QAL_EventWrite(g_test_task, DONE);
}

void WaitForGo() {
    QAL_EventRead(GO, QAL_EVENT_ALL, LONG, nullptr);
    TellDone();
}

void RecordSelf() {
    g_seen = QAL_TaskGetSelf();
    QAL_TaskGetArgs(g_args);
    QAL_TaskGetName(QAL_TaskGetSelf(), g_name);
    TellDone();
}

} // namespace

/* ---- tasks */

TEST_F(HostTask, ATaskRunsItsEntryWithItsNumberNameAndArguments) {
    uintptr_t args[QAL_TASK_ARGS] = {1, ~uintptr_t{0}, 0, reinterpret_cast<uintptr_t>(&g_args)};
    uint32_t task = Start(RecordSelf, "KIVODB_ConnTask", args);
    args[0] = 99; /* the task has its own copy */
    AwaitDone();
    EXPECT_EQ(task, g_seen);
    EXPECT_NE(0u, task);
    EXPECT_NE(UVELHOST_NONE, task);
    EXPECT_STREQ("KIVODB_ConnTask", g_name);
    EXPECT_EQ(~uintptr_t{0}, g_args[1]);
    EXPECT_EQ(0u, g_args[2]);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(&g_args), g_args[3]);
    EXPECT_EQ(1u, g_args[0]);
}

TEST_F(HostTask, WithoutArgumentsATaskGetsZeros) {
    std::memset(g_args, 0xFF, sizeof g_args);
    Start(RecordSelf);
    AwaitDone();
    for (uintptr_t arg : g_args)
        EXPECT_EQ(0u, arg);
}

TEST_F(HostTask, LongNamesAreCut) {
    Start(RecordSelf, "0123456789ABCDEFGHI");
    AwaitDone();
    EXPECT_STREQ("0123456789ABCDE", g_name);
}

static uint32_t g_written_before;

TEST_F(HostTask, TheNumberIsWrittenBeforeTheEntryRuns) {
    for (int i = 0; i < 200; ++i) {
        g_written_before = 0;
        ASSERT_EQ(0u, QAL_CreateTask(
                          "early", &g_written_before,
                          [] {
                              g_seen = g_written_before == QAL_TaskGetSelf() ? 1 : 2;
                              TellDone();
                          },
                          0, 0, nullptr));
        AwaitDone();
        ASSERT_EQ(1u, g_seen);
    }
}

TEST_F(HostTask, BadArgumentsMakeNoTask) {
    uint32_t task = 77;
    EXPECT_NE(0u, QAL_CreateTask(nullptr, &task, RecordSelf, 0, 0, nullptr));
    EXPECT_NE(0u, QAL_CreateTask("x", nullptr, RecordSelf, 0, 0, nullptr));
    EXPECT_NE(0u, QAL_CreateTask("x", &task, nullptr, 0, 0, nullptr));
    EXPECT_NE(0u, QAL_CreateTask("x", &task, RecordSelf, 256, 0, nullptr));
    EXPECT_NE(0u, QAL_CreateTask("x", &task, RecordSelf, 0, 1, nullptr));
    EXPECT_EQ(77u, task);
    EXPECT_EQ(0u, g_seen);
}

TEST_F(HostTask, EveryPriorityOfTheScaleIsAccepted) {
    for (uint32_t priority : {0U, 85U, 255U}) {
        uint32_t task = 0;
        EXPECT_EQ(0u, QAL_CreateTask("p", &task, RecordSelf, priority, 0, nullptr));
        AwaitDone();
    }
}

TEST_F(HostTask, AThreadMadeElsewhereIsATaskToo) {
    uint32_t first = 0, second = 0;
    uintptr_t args[QAL_TASK_ARGS];
    std::memset(args, 0xFF, sizeof args);
    std::thread([&] {
        first = QAL_TaskGetSelf();
        second = QAL_TaskGetSelf();
        QAL_TaskGetArgs(args);
    }).join();
    EXPECT_EQ(first, second);
    EXPECT_NE(0u, first);
    EXPECT_NE(UVELHOST_NONE, first);
    EXPECT_NE(g_test_task, first);
    for (uintptr_t arg : args)
        EXPECT_EQ(0u, arg);
    QAL_TaskGetArgs(nullptr);
}

TEST_F(HostTask, AThreadMadeElsewhereCanBeNamedByItsNumber) {
    char name[16];
    std::memset(name, 'x', sizeof name);
    EXPECT_EQ(0u, QAL_TaskGetName(g_test_task, name));
    EXPECT_LT(strnlen(name, sizeof name), sizeof name);
}

TEST_F(HostTask, UnknownTasksHaveNoNameAndTakeNoEvents) {
    char name[16] = "untouched";
    for (uint32_t unknown : {0U, 1U, 0xFFFFFFFFU, g_test_task + 1, g_test_task ^ 0x80000000U}) {
        EXPECT_NE(0u, QAL_TaskGetName(unknown, name));
        EXPECT_NE(0u, QAL_EventWrite(unknown, 1));
    }
    EXPECT_NE(0u, QAL_TaskGetName(g_test_task, nullptr));
    EXPECT_STREQ("untouched", name);
}

TEST_F(HostTask, ATaskThatHasEndedIsUnknown) {
    uint32_t task = Start(WaitForGo);
    char name[16];
    EXPECT_EQ(0u, QAL_TaskGetName(task, name));
    EXPECT_EQ(0u, QAL_EventWrite(task, GO));
    AwaitDone();
    AwaitEnd(task);
    EXPECT_NE(0u, QAL_EventWrite(task, 1));
    EXPECT_NE(0u, QAL_TaskGetName(task, name));
}

TEST_F(HostTask, AThreadMadeElsewhereIsUnknownAfterItsEnd) {
    uint32_t task = 0;
    std::thread([&] { task = QAL_TaskGetSelf(); }).join();
    EXPECT_NE(0u, QAL_EventWrite(task, 1));
}

TEST_F(HostTask, ATaskThatEndsItsThreadIsUnknownToo) {
    uint32_t task = Start([] {
        TellDone();
        pthread_exit(nullptr);
    });
    AwaitDone();
    AwaitEnd(task);
    EXPECT_NE(0u, QAL_EventWrite(task, 1));
}

TEST_F(HostTask, TheNumberOfAnEndedTaskIsNotUsedAgainSoon) {
    std::set<uint32_t> numbers;
    for (int i = 0; i < 6000; ++i) {
        uint32_t task = 0;
        if (i % 10 == 0) {
            task = Start(TellDone);
            AwaitDone();
        } else {
            std::thread([&] { task = QAL_TaskGetSelf(); }).join();
        }
        ASSERT_TRUE(numbers.insert(task).second) << "number " << task << " came twice";
    }
}

TEST_F(HostTask, WhenNoMoreTasksFitCreationFailsAndWorksAgainLater) {
    std::vector<uint32_t> tasks;
    uint32_t task = 77;
    while (tasks.size() < 5000 &&
           QAL_CreateTask(
               "crowd", &task, [] { QAL_EventRead(GO, QAL_EVENT_ALL, LONG, nullptr); }, 0, 0, nullptr) == 0)
        tasks.push_back(task);
    EXPECT_LT(tasks.size(), 4096u);
    ASSERT_FALSE(tasks.empty());
    EXPECT_EQ(tasks.back(), task) << "the refused creation wrote a number";
    for (uint32_t each : tasks)
        EXPECT_EQ(0u, QAL_EventWrite(each, GO));
    for (uint32_t each : tasks)
        AwaitEnd(each);
    g_seen = 0;
    task = Start(RecordSelf);
    AwaitDone();
    EXPECT_EQ(task, g_seen);
}

/* ---- events */

TEST_F(HostEvent, AllWaitsForEveryBitAndTakesThem) {
    uint32_t taken = 77;
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x1));
    EXPECT_NE(0u, QAL_EventRead(0x3, QAL_EVENT_ALL, 0, &taken));
    EXPECT_EQ(77u, taken);
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x6));
    EXPECT_EQ(0u, QAL_EventRead(0x3, QAL_EVENT_ALL, 0, &taken));
    EXPECT_EQ(0x3u, taken);
    EXPECT_EQ(0u, QAL_EventRead(0x4, QAL_EVENT_ALL, 0, &taken));
    EXPECT_EQ(0x4u, taken);
}

TEST_F(HostEvent, AnyTakesWhatThereIsOfTheMask) {
    uint32_t taken = 77;
    EXPECT_NE(0u, QAL_EventRead(0x7, QAL_EVENT_ANY, 0, &taken));
    EXPECT_EQ(77u, taken);
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x15));
    EXPECT_EQ(0u, QAL_EventRead(0x7, QAL_EVENT_ANY, 0, &taken));
    EXPECT_EQ(0x5u, taken);
    EXPECT_NE(0u, QAL_EventRead(0x7, QAL_EVENT_ANY, 0, &taken));
    EXPECT_EQ(0u, QAL_EventRead(0x10, QAL_EVENT_ANY, 0, &taken));
    EXPECT_EQ(0x10u, taken);
}

TEST_F(HostEvent, BitsAddUpUntilTheyAreTaken) {
    uint32_t taken = 0;
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x1000));
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x1000));
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x80000001));
    EXPECT_EQ(0u, QAL_EventRead(0xFFFFFFFF, QAL_EVENT_ANY, 0, &taken));
    EXPECT_EQ(0x80001001u, taken);
}

TEST_F(HostEvent, WritingNoBitsSetsNone) {
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0));
    EXPECT_NE(0u, QAL_EventRead(0xFFFFFFFF, QAL_EVENT_ANY, 0, nullptr));
}

TEST_F(HostEvent, WhatWasTakenNeedNotBeTold) {
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x3));
    EXPECT_EQ(0u, QAL_EventRead(0x1, QAL_EVENT_ALL, 0, nullptr));
    EXPECT_EQ(0u, QAL_EventRead(0x2, QAL_EVENT_ANY, 0, nullptr));
}

TEST_F(HostEvent, NoMaskOrUnknownOptionsAreRefusedAtOnce) {
    uint32_t taken = 77;
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x1));
    EXPECT_EQ(1u, QAL_EventRead(0, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, &taken));
    EXPECT_EQ(1u, QAL_EventRead(0, QAL_EVENT_ANY, UVELHOST_WAIT_FOREVER, &taken));
    EXPECT_EQ(1u, QAL_EventRead(0x1, 2, UVELHOST_WAIT_FOREVER, &taken));
    EXPECT_EQ(1u, QAL_EventRead(0x1, 0xFFFFFFFF, UVELHOST_WAIT_FOREVER, &taken));
    EXPECT_EQ(77u, taken);
    EXPECT_EQ(0u, QAL_EventRead(0x1, QAL_EVENT_ALL, 0, &taken));
}

TEST_F(HostEvent, AReadWaitsNoShorterThanItWasTold) {
    uint32_t taken = 77;
    EXPECT_EQ(0u, QAL_EventWrite(g_test_task, 0x1)); /* half of what it waits for */
    auto begin = Clock::now();
    EXPECT_EQ(1u, QAL_EventRead(0x3, QAL_EVENT_ALL, 40, &taken));
    EXPECT_GE(Clock::now() - begin, Milliseconds(40));
    EXPECT_EQ(77u, taken);
    EXPECT_EQ(0u, QAL_EventRead(0x1, QAL_EVENT_ALL, 0, &taken));
}

TEST_F(HostEvent, AWaitingTaskIsWokenByTheLastBitItWaitsFor) {
    uint32_t task = Start([] {
        uint32_t taken = 0;
        QAL_EventRead(0x7, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, &taken);
        g_seen = taken;
        TellDone();
    });
    for (uint32_t bit : {0x1U, 0x2U, 0x10U})
        EXPECT_EQ(0u, QAL_EventWrite(task, bit));
    EXPECT_NE(0u, QAL_EventRead(DONE, QAL_EVENT_ALL, 5, nullptr));
    EXPECT_EQ(0u, QAL_EventWrite(task, 0x4));
    AwaitDone();
    EXPECT_EQ(0x7u, g_seen);
}

TEST_F(HostEvent, EveryTaskHasAWordOfItsOwn) {
    uint32_t a = Start(WaitForGo), b = Start(WaitForGo);
    EXPECT_EQ(0u, QAL_EventWrite(a, GO));
    AwaitDone();
    EXPECT_NE(0u, QAL_EventRead(DONE, QAL_EVENT_ALL, 5, nullptr));
    EXPECT_EQ(0u, QAL_EventWrite(b, GO));
    AwaitDone();
}

TEST_F(HostEvent, ANewTaskStartsWithoutEvents) {
    for (int i = 0; i < 300; ++i) {
        uint32_t task = Start([] {
            g_seen = QAL_EventRead(0x1, QAL_EVENT_ANY, 0, nullptr);
            QAL_EventRead(GO, QAL_EVENT_ALL, LONG, nullptr);
            TellDone();
        });
        EXPECT_EQ(0u, QAL_EventWrite(task, GO));
        AwaitDone();
        ASSERT_EQ(1u, g_seen);
        QAL_EventWrite(task, 0x1); /* reaches it at its end, or nobody */
    }
}

/* The writer takes its time differently each round; one lost wake-up hangs. */
TEST_F(HostEvent, NoWakeUpIsLostBetweenTwoTasksThatAnswerEachOther) {
    constexpr int ROUNDS = 20000;
    std::atomic<uint32_t> other{0};
    auto dawdle = [](int round) {
        for (std::atomic<int> i{round % 400}; i > 0; --i) {
        }
    };
    std::thread echo([&] {
        other = QAL_TaskGetSelf();
        for (int i = 0; i < ROUNDS; ++i) {
            ASSERT_EQ(0u, QAL_EventRead(0x1, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, nullptr));
            dawdle(i);
            ASSERT_EQ(0u, QAL_EventWrite(g_test_task, 0x2));
        }
    });
    while (other == 0)
        std::this_thread::yield();
    for (int i = 0; i < ROUNDS; ++i) {
        dawdle(i * 3);
        ASSERT_EQ(0u, QAL_EventWrite(other, 0x1));
        ASSERT_EQ(0u, QAL_EventRead(0x2, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, nullptr));
    }
    echo.join();
}

TEST_F(HostEvent, BitsFromManyTasksAllArrive) {
    constexpr uint32_t WRITERS = 4, ROUNDS = 3000;
    std::vector<std::thread> writers;
    std::atomic<uint32_t> acknowledged[WRITERS] = {};
    for (uint32_t w = 0; w < WRITERS; ++w) {
        writers.emplace_back([&, w] {
            for (uint32_t i = 0; i < ROUNDS; ++i) {
                ASSERT_EQ(0u, QAL_EventWrite(g_test_task, 1U << w));
                while (acknowledged[w] != i + 1)
                    std::this_thread::yield();
            }
        });
    }
    for (uint32_t total = 0; total < WRITERS * ROUNDS;) {
        uint32_t taken = 0;
        ASSERT_EQ(0u, QAL_EventRead((1U << WRITERS) - 1, QAL_EVENT_ANY, LONG, &taken));
        for (uint32_t w = 0; w < WRITERS; ++w) {
            if ((taken >> w & 1) != 0) {
                ++acknowledged[w];
                ++total;
            }
        }
    }
    for (std::thread &writer : writers)
        writer.join();
}
