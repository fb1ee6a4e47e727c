#include <uvelhost/queue.h>

#include "number_queue.h"
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <deque>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Queue = NumberQueue;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

constexpr uint64_t UNTOUCHED = 0x5555555555555555U;

} // namespace

/* ---- creation */

TEST(HostQueue, BadArgumentsMakeNoQueue) {
    uint32_t queue = 77;
    EXPECT_NE(0u, QAL_QueueCreate(nullptr, 1, 1, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 0, 1, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 16777217, 1, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 0xFFFFFFFF, 1, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 1, 0, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 1, 4097, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 1, 0xFFFFFFFF, &queue));
    EXPECT_NE(0u, QAL_QueueCreate("x", 1, 1, nullptr));
    EXPECT_EQ(77u, queue);
}

TEST(HostQueue, TheLargestDepthAndTheLargestElementAreGranted) {
    uint32_t deep = 0, wide = 0;
    ASSERT_EQ(0u, QAL_QueueCreate("deep", 16777216, 1, &deep));
    ASSERT_EQ(0u, QAL_QueueCreate("wide", 2, 4096, &wide));
    std::array<unsigned char, 4096> element, back = {};
    for (std::size_t i = 0; i < element.size(); ++i)
        element[i] = static_cast<unsigned char>(i * 7);
    EXPECT_EQ(0u, QAL_QueueAsyWrite(wide, element.data(), 4096));
    EXPECT_EQ(0u, QAL_QueueRead(wide, back.data(), 4096, 0));
    EXPECT_EQ(element, back);
    EXPECT_EQ(0u, QAL_QueueDelete(deep));
    EXPECT_EQ(0u, QAL_QueueDelete(wide));
}

TEST(HostQueue, TwoQueuesOfOneNameAreTwoQueues) {
    Queue a(4, "SAME"), b(4, "SAME");
    EXPECT_NE(a.Number(), b.Number());
    EXPECT_TRUE(a.Write(1));
    uint64_t value = UNTOUCHED;
    EXPECT_FALSE(b.Read(value));
}

TEST(HostQueue, NumbersCountFromOneAndATableFullOfQueuesRefusesMore) {
    std::vector<uint32_t> queues;
    uint32_t queue = 0;
    while (queues.size() < 300 && QAL_QueueCreate("many", 1, 1, &queue) == 0)
        queues.push_back(queue);
    EXPECT_EQ(256u, queues.size());
    for (uint32_t i = 0; i < queues.size(); ++i)
        EXPECT_EQ(i + 1, queues[i]);
    queue = 77;
    EXPECT_NE(0u, QAL_QueueCreate("more", 1, 1, &queue));
    EXPECT_EQ(77u, queue);
    EXPECT_EQ(0u, QAL_QueueDelete(queues[100]));
    EXPECT_EQ(0u, QAL_QueueCreate("again", 1, 1, &queues[100]));
    for (uint32_t each : queues)
        EXPECT_EQ(0u, QAL_QueueDelete(each));
}

TEST(HostQueue, ADeletedQueueIsUnknown) {
    uint32_t queue = 0;
    ASSERT_EQ(0u, QAL_QueueCreate("gone", 4, 4, &queue));
    uint32_t element = 0;
    ASSERT_EQ(0u, QAL_QueueAsyWrite(queue, &element, 4));
    EXPECT_EQ(0u, QAL_QueueDelete(queue));
    QAL_QUEUE_STATS_S stats;
    for (uint32_t unknown : {queue, 0U, 257U, 0xFFFFFFFFU}) {
        EXPECT_NE(0u, QAL_QueueDelete(unknown));
        EXPECT_NE(0u, QAL_QueueAsyWrite(unknown, &element, 4));
        EXPECT_NE(0u, QAL_QueueRead(unknown, &element, 4, 0));
        EXPECT_NE(0u, QAL_QueueGetStats(unknown, &stats));
    }
}

/* ---- elements */

TEST(HostQueue, ElementsOfEverySizeComeOutAsTheyWentIn) {
    for (uint32_t size = 1; size <= 130; ++size) {
        uint32_t queue = 0;
        ASSERT_EQ(0u, QAL_QueueCreate("sizes", 3, size, &queue));
        std::vector<unsigned char> element(size), back(size + 1, 0xEE);
        for (uint32_t round = 0; round < 7; ++round) {
            for (uint32_t i = 0; i < size; ++i)
                element[i] = static_cast<unsigned char>(i * 31 + round);
            ASSERT_EQ(0u, QAL_QueueAsyWrite(queue, element.data(), size));
            ASSERT_EQ(0u, QAL_QueueRead(queue, back.data(), size, 0));
            ASSERT_EQ(0, std::memcmp(element.data(), back.data(), size)) << size;
            ASSERT_EQ(0xEE, back[size]) << "one byte too many at size " << size;
        }
        EXPECT_EQ(0u, QAL_QueueDelete(queue));
    }
}

/* Random writes and reads beside a plain list of what must be in the queue. */
TEST(HostQueue, FirstInIsFirstOutThroughManyLaps) {
    for (uint32_t depth : {1U, 2U, 3U, 5U, 7U, 8U, 100U}) {
        constexpr uint32_t SEED = 20240307;
        SCOPED_TRACE("depth " + std::to_string(depth) + ", seed " + std::to_string(SEED));
        std::minstd_rand random(SEED);
        Queue queue(depth);
        std::deque<uint64_t> expected;
        for (uint64_t step = 0; step < 20000; ++step) {
            if (random() % 2 == 0) {
                ASSERT_EQ(expected.size() < depth, queue.Write(step));
                if (expected.size() < depth)
                    expected.push_back(step);
            } else {
                uint64_t value = UNTOUCHED;
                ASSERT_EQ(!expected.empty(), queue.Read(value));
                ASSERT_EQ(expected.empty() ? UNTOUCHED : expected.front(), value);
                if (!expected.empty())
                    expected.pop_front();
            }
            ASSERT_EQ(expected.size(), queue.Stats().ulUsed);
        }
    }
}

TEST(HostQueue, ExactlyTheDepthFits) {
    for (uint32_t depth : {1U, 2U, 3U, 10U, 1000U, 10240U}) {
        Queue queue(depth);
        for (uint32_t lap = 0; lap < 3; ++lap) {
            for (uint32_t i = 0; i < depth; ++i)
                ASSERT_TRUE(queue.Write(i));
            EXPECT_FALSE(queue.Write(99)) << depth;
            EXPECT_FALSE(queue.Write(99)) << depth;
            uint64_t value = UNTOUCHED;
            for (uint32_t i = 0; i < depth; ++i) {
                ASSERT_TRUE(queue.Read(value));
                ASSERT_EQ(i, value);
            }
            value = UNTOUCHED;
            EXPECT_FALSE(queue.Read(value));
            EXPECT_EQ(UNTOUCHED, value);
        }
    }
}

TEST(HostQueue, AFullQueueTakesOneMoreAfterARead) {
    Queue queue(3);
    for (uint64_t i = 0; i < 3; ++i)
        EXPECT_TRUE(queue.Write(i));
    uint64_t value = 0;
    for (uint64_t i = 3; i < 50; ++i) {
        EXPECT_FALSE(queue.Write(1000));
        EXPECT_TRUE(queue.Read(value));
        EXPECT_EQ(i - 3, value);
        EXPECT_TRUE(queue.Write(i));
    }
}

TEST(HostQueue, AnotherSizeOrNoElementIsRefusedAndCountsNothing) {
    Queue queue(4);
    uint64_t value = UNTOUCHED;
    for (uint32_t size : {0U, 1U, 7U, 9U, 4096U, 0xFFFFFFFFU}) {
        EXPECT_NE(0u, QAL_QueueAsyWrite(queue.Number(), &value, size));
        EXPECT_NE(0u, QAL_QueueRead(queue.Number(), &value, size, 0));
    }
    EXPECT_NE(0u, QAL_QueueAsyWrite(queue.Number(), nullptr, sizeof value));
    EXPECT_TRUE(queue.Write(7));
    for (uint32_t size : {0U, 1U, 7U, 9U, 4096U, 0xFFFFFFFFU})
        EXPECT_NE(0u, QAL_QueueRead(queue.Number(), &value, size, UVELHOST_WAIT_FOREVER));
    EXPECT_NE(0u, QAL_QueueRead(queue.Number(), nullptr, sizeof value, 0));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(1u, queue.Stats().ulUsed);
    EXPECT_EQ(1u, queue.Stats().ulWritten);
    EXPECT_EQ(0u, queue.Stats().ulRead);
    EXPECT_EQ(0u, queue.Stats().ulRefused);
}

/* ---- counters */

TEST(HostQueue, CountersFollowEveryCall) {
    Queue queue(3, "COUNTERS");
    QAL_QUEUE_STATS_S stats = queue.Stats();
    EXPECT_STREQ("COUNTERS", stats.szName);
    EXPECT_EQ(3u, stats.ulDepth);
    EXPECT_EQ(8u, stats.ulElementSize);
    EXPECT_EQ(0u, stats.ulUsed + stats.ulPeak + stats.ulWritten + stats.ulRead + stats.ulRefused);

    uint64_t value = 0;
    EXPECT_TRUE(queue.Write(1));
    EXPECT_TRUE(queue.Write(2));
    EXPECT_TRUE(queue.Read(value));
    stats = queue.Stats();
    EXPECT_EQ(1u, stats.ulUsed);
    EXPECT_EQ(2u, stats.ulPeak);
    EXPECT_EQ(2u, stats.ulWritten);
    EXPECT_EQ(1u, stats.ulRead);
    EXPECT_EQ(0u, stats.ulRefused);

    EXPECT_TRUE(queue.Write(3));
    EXPECT_EQ(2u, queue.Stats().ulPeak);
    EXPECT_TRUE(queue.Write(4));
    EXPECT_FALSE(queue.Write(5));
    EXPECT_FALSE(queue.Write(6));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(queue.Read(value));
    EXPECT_FALSE(queue.Read(value));
    stats = queue.Stats();
    EXPECT_EQ(0u, stats.ulUsed);
    EXPECT_EQ(3u, stats.ulPeak);
    EXPECT_EQ(4u, stats.ulWritten);
    EXPECT_EQ(4u, stats.ulRead);
    EXPECT_EQ(2u, stats.ulRefused);
}

TEST(HostQueue, ThePeakIsTheHighestLevelAndStays) {
    Queue queue(100);
    uint64_t value = 0;
    uint32_t peak = 0;
    for (uint32_t level : {1U, 1U, 5U, 3U, 5U, 6U, 2U, 50U, 49U, 51U, 100U, 1U}) {
        for (uint32_t i = 0; i < level; ++i)
            EXPECT_TRUE(queue.Write(i));
        for (uint32_t i = 0; i < level; ++i)
            EXPECT_TRUE(queue.Read(value));
        peak = std::max(peak, level);
        EXPECT_EQ(peak, queue.Stats().ulPeak);
    }
}

TEST(HostQueue, LongNamesAreCut) {
    Queue queue(1, "0123456789ABCDEFGH");
    EXPECT_STREQ("0123456789ABCDE", queue.Stats().szName);
}

TEST(HostQueue, CountersNeedAPlaceToGo) {
    Queue queue(1);
    EXPECT_NE(0u, QAL_QueueGetStats(queue.Number(), nullptr));
}

/* ---- waiting */

TEST(HostQueue, AReadWaitsNoShorterThanItWasTold) {
    Queue queue(4);
    uint64_t value = UNTOUCHED;
    auto begin = Clock::now();
    EXPECT_FALSE(queue.Read(value, 40));
    EXPECT_GE(Clock::now() - begin, Milliseconds(40));
    EXPECT_EQ(UNTOUCHED, value);
}

TEST(HostQueue, AReadThatFindsAnElementDoesNotWait) {
    Queue queue(4);
    uint64_t value = 0;
    EXPECT_TRUE(queue.Write(7));
    auto begin = Clock::now();
    EXPECT_TRUE(queue.Read(value, 60000));
    EXPECT_LT(Clock::now() - begin, Milliseconds(30000));
    EXPECT_EQ(7u, value);
}

TEST(HostQueue, AWaitingReaderGetsWhatIsWrittenLater) {
    Queue queue(4);
    std::atomic<bool> begun{false};
    uint64_t forever = 0, limited = 0;
    std::thread reader([&] {
        begun = true;
        EXPECT_TRUE(queue.Read(forever, UVELHOST_WAIT_FOREVER));
        EXPECT_TRUE(queue.Read(limited, 60000));
    });
    while (!begun)
        std::this_thread::yield();
    EXPECT_TRUE(queue.Write(1));
    EXPECT_TRUE(queue.Write(2));
    reader.join();
    EXPECT_EQ(1u, forever);
    EXPECT_EQ(2u, limited);
}

TEST(HostQueue, EveryWaitingReaderGetsAnElement) {
    Queue queue(8);
    std::vector<std::thread> readers;
    std::atomic<uint64_t> sum{0};
    for (int i = 0; i < 6; ++i) {
        readers.emplace_back([&] {
            uint64_t value = 0;
            EXPECT_TRUE(queue.Read(value, UVELHOST_WAIT_FOREVER));
            sum += value;
        });
    }
    for (uint64_t value : {1U, 10U, 100U, 1000U, 10000U, 100000U})
        EXPECT_TRUE(queue.Write(value));
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(111111u, sum);
}

TEST(HostQueue, AReaderWhoseTimeIsOverDoesNotSwallowALaterElement) {
    Queue queue(4);
    uint64_t value = UNTOUCHED;
    EXPECT_FALSE(queue.Read(value, 10));
    EXPECT_TRUE(queue.Write(5));
    EXPECT_TRUE(queue.Read(value));
    EXPECT_EQ(5u, value);
}

/* Each element meets a reader that looks, is about to sleep, just sleeps or just does not, because the writer takes its
 * time differently each round: one lost wake-up hangs. */
TEST(HostQueue, NoWakeUpIsLostBetweenTwoTasksThatAnswerEachOther) {
    Queue there(1), back(1);
    constexpr uint64_t ROUNDS = 40000;
    auto dawdle = [](uint64_t round) {
        for (std::atomic<uint64_t> i{round * 7919 % 800}; i > 0; --i) {
        }
    };
    std::thread echo([&] {
        uint64_t value = 0;
        for (uint64_t i = 0; i < ROUNDS; ++i) {
            ASSERT_TRUE(there.Read(value, UVELHOST_WAIT_FOREVER));
            dawdle(i);
            ASSERT_TRUE(back.Write(value + 1));
        }
    });
    for (uint64_t i = 0; i < ROUNDS; ++i) {
        uint64_t value = 0;
        dawdle(i * 3);
        ASSERT_TRUE(there.Write(i));
        ASSERT_TRUE(back.Read(value, UVELHOST_WAIT_FOREVER));
        ASSERT_EQ(i + 1, value);
    }
    echo.join();
}

TEST(HostQueue, ReadersWithShortTimeLimitsMissNothing) {
    Queue queue(4);
    constexpr uint64_t COUNT = 5000;
    std::atomic<uint64_t> taken{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            uint64_t value = 0;
            while (taken < COUNT)
                if (queue.Read(value, 1))
                    ++taken;
        });
    }
    for (uint64_t i = 0; i < COUNT;) {
        if (queue.Write(i))
            ++i;
        else
            std::this_thread::yield();
    }
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(COUNT, taken);
    EXPECT_EQ(0u, queue.Stats().ulUsed);
}
