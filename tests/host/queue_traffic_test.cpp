// Queues with many tasks at both ends.

#include <uvelhost/queue.h>

#include "number_queue.h"
#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {

/* Writers and readers on one queue; every element says who wrote it and its number there. */
struct Traffic {
    static constexpr int WRITERS = 4, READERS = 2;
    static constexpr uint64_t EACH = 10000, STOP = ~uint64_t{0};

    explicit Traffic(uint32_t depth) : queue(depth) {}

    void Run() {
        std::vector<std::thread> writers, readers;
        for (int r = 0; r < READERS; ++r)
            readers.emplace_back([this, r] { Read(received[r]); });
        for (uint64_t w = 0; w < WRITERS; ++w)
            writers.emplace_back([this, w] { Write(w); });
        for (std::thread &writer : writers)
            writer.join();
        for (int r = 0; r < READERS; ++r)
            while (!queue.Write(STOP))
                std::this_thread::yield();
        for (std::thread &reader : readers)
            reader.join();
    }

    void Write(uint64_t writer) {
        uint64_t refused_here = 0;
        for (uint64_t i = 0; i < EACH; ++i) {
            while (!queue.Write(writer << 32 | i)) {
                ++refused_here;
                std::this_thread::yield();
            }
        }
        refused += refused_here;
    }

    void Read(std::vector<uint64_t> &into) {
        uint64_t value = 0;
        while (queue.Read(value, UVELHOST_WAIT_FOREVER) && value != STOP)
            into.push_back(value);
    }

    NumberQueue queue;
    std::vector<uint64_t> received[READERS];
    std::atomic<uint64_t> refused{0};
};

} // namespace

class HostQueueTraffic : public testing::TestWithParam<uint32_t> {};

TEST_P(HostQueueTraffic, NothingIsLostDoubledOrOutOfItsWritersOrder) {
    Traffic traffic(GetParam());
    traffic.Run();
    std::vector<uint64_t> all;
    for (const auto &one_reader : traffic.received) {
        uint64_t next[Traffic::WRITERS] = {};
        for (uint64_t value : one_reader) {
            ASSERT_LT(value >> 32, uint64_t{Traffic::WRITERS});
            ASSERT_GE(value & 0xFFFFFFFF, next[value >> 32]) << "a later element of this writer came first";
            next[value >> 32] = (value & 0xFFFFFFFF) + 1;
        }
        all.insert(all.end(), one_reader.begin(), one_reader.end());
    }
    std::sort(all.begin(), all.end());
    ASSERT_EQ(Traffic::WRITERS * Traffic::EACH, all.size());
    for (uint64_t i = 0; i < all.size(); ++i)
        ASSERT_EQ((i / Traffic::EACH) << 32 | i % Traffic::EACH, all[i]);
}

TEST_P(HostQueueTraffic, CountersAddUpAfterwards) {
    Traffic traffic(GetParam());
    traffic.Run();
    QAL_QUEUE_STATS_S stats = traffic.queue.Stats();
    EXPECT_EQ(Traffic::WRITERS * Traffic::EACH + Traffic::READERS, stats.ulWritten);
    EXPECT_EQ(stats.ulWritten, stats.ulRead);
    EXPECT_EQ(0u, stats.ulUsed);
    EXPECT_GE(stats.ulRefused, traffic.refused);
    EXPECT_GE(stats.ulPeak, 1u);
    EXPECT_LE(stats.ulPeak, GetParam());
    if (stats.ulRefused != 0) {
        EXPECT_EQ(GetParam(), stats.ulPeak) << "it was full at some time";
    }
}

INSTANTIATE_TEST_SUITE_P(Depths, HostQueueTraffic, testing::Values(1, 2, 3, 7, 64, 10240));

namespace {

/* Things that are there for the taking, one each. */
class Tokens {
  public:
    explicit Tokens(int64_t count) : count_(count) {}
    void Put() { ++count_; }
    bool Take() {
        int64_t count = count_;
        while (count > 0)
            if (count_.compare_exchange_weak(count, count - 1))
                return true;
        return false;
    }

  private:
    std::atomic<int64_t> count_;
};

} // namespace

/* Who holds a token for a free place, put there after a read had returned, must be able to write; who holds one for an
 * element, put there after a write had returned, must be able to read without waiting. */
TEST(HostQueue, AFreePlaceIsNeverRefusedAndACompleteElementNeverMissed) {
    constexpr uint32_t DEPTH = 3;
    constexpr uint64_t EACH = 4000;
    NumberQueue queue(DEPTH);
    Tokens places(DEPTH), elements(0);
    std::atomic<uint64_t> wrongly_full{0}, wrongly_empty{0};
    auto work = [](Tokens &from, Tokens &to, std::atomic<uint64_t> &wrong, auto operation) {
        for (uint64_t done = 0; done < EACH;) {
            if (!from.Take()) {
                std::this_thread::yield();
                continue;
            }
            while (!operation(done))
                ++wrong;
            ++done;
            to.Put();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] { work(places, elements, wrongly_full, [&](uint64_t n) { return queue.Write(n); }); });
        threads.emplace_back([&] {
            work(elements, places, wrongly_empty, [&](uint64_t) {
                uint64_t value = 0;
                return queue.Read(value);
            });
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(0u, wrongly_full);
    EXPECT_EQ(0u, wrongly_empty);
    EXPECT_EQ(0u, queue.Stats().ulRefused);
}

TEST(HostQueue, CountersReadDuringTrafficArePlausible) {
    NumberQueue queue(8);
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (uint64_t i = 0; !stop; ++i)
            queue.Write(i);
    });
    std::thread reader([&] {
        uint64_t value = 0;
        while (!stop)
            queue.Read(value, 1);
    });
    uint64_t last_written = 0, last_read = 0;
    for (int i = 0; i < 20000; ++i) {
        QAL_QUEUE_STATS_S stats = queue.Stats();
        ASSERT_LE(stats.ulUsed, 8u);
        ASSERT_LE(stats.ulPeak, 8u);
        ASSERT_LE(stats.ulRead, stats.ulWritten);
        ASSERT_GE(stats.ulWritten, last_written);
        ASSERT_GE(stats.ulRead, last_read);
        last_written = stats.ulWritten;
        last_read = stats.ulRead;
    }
    stop = true;
    writer.join();
    reader.join();
}
