// A queue of numbers for tests.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <uvelhost/queue.h>

class NumberQueue {
  public:
    explicit NumberQueue(uint32_t depth, const char *name = "TEST") {
        EXPECT_EQ(0u, QAL_QueueCreate(name, depth, sizeof(uint64_t), &number_));
    }
    ~NumberQueue() { EXPECT_EQ(0u, QAL_QueueDelete(number_)); }
    NumberQueue(const NumberQueue &) = delete;
    NumberQueue &operator=(const NumberQueue &) = delete;

    uint32_t Number() const { return number_; }
    bool Write(uint64_t value) { return QAL_QueueAsyWrite(number_, &value, sizeof value) == 0; }
    bool Read(uint64_t &value, uint32_t timeout_ms = 0) {
        return QAL_QueueRead(number_, &value, sizeof value, timeout_ms) == 0;
    }
    QAL_QUEUE_STATS_S Stats() const {
        QAL_QUEUE_STATS_S stats = {};
        EXPECT_EQ(0u, QAL_QueueGetStats(number_, &stats));
        return stats;
    }

  private:
    uint32_t number_ = 0;
};
