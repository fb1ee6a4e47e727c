// A memory account for each test.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <uvelhost/memory.h>

inline uint32_t Open(const std::string &name) {
    uint32_t handle = UVELHOST_NONE;
    EXPECT_EQ(0u, QAL_HandleInitialize(name.c_str(), &handle));
    return handle;
}

inline QAL_MEM_STATS_S Stats(uint32_t handle) {
    QAL_MEM_STATS_S stats = {};
    EXPECT_EQ(0u, QAL_MemGetStats(handle, &stats));
    return stats;
}

/* The account has the test's name and must be empty at its end. */
class MemoryAccount : public testing::Test {
  protected:
    ~MemoryAccount() override { EXPECT_EQ(0u, Stats(handle_).ulBlocks) << "memory left over"; }

    void *Alloc(uint32_t size) { return QAL_MemAlloc(handle_, g_ucSysMemPtNo, size); }
    void *Resize(void *block, uint32_t size) { return QAL_MemReAlloc(handle_, g_ucSysMemPtNo, block, size); }
    QAL_MEM_STATS_S Now() const { return Stats(handle_); }

    const uint32_t handle_ = Open(testing::UnitTest::GetInstance()->current_test_info()->name());
};
