// What an account tells about itself: levels, peaks, shortages, the soft quota.

#include <uvelhost/memory.h>

#include "memory_account.h"
#include "sanitizers.h"
#include <algorithm>
#include <atomic>
#include <barrier>
#include <cstdlib>
#include <cstring>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

using HostMemoryLevels = MemoryAccount;

TEST_F(HostMemoryLevels, ANewAccountIsEmpty) {
    QAL_MEM_STATS_S stats;
    std::memset(&stats, 0xFF, sizeof stats);
    ASSERT_EQ(0u, QAL_MemGetStats(handle_, &stats));
    EXPECT_EQ(0u, stats.ulBlocks);
    EXPECT_EQ(0u, stats.ulBytes);
    EXPECT_EQ(0u, stats.ulPeakBytes);
    EXPECT_EQ(0u, stats.ulAllocs);
    EXPECT_EQ(0u, stats.ulFailures);
    EXPECT_EQ(0u, stats.ulQuota);
    EXPECT_EQ(0u, stats.ulOverQuota);
}

TEST_F(HostMemoryLevels, BlocksAndBytesFollowEveryCall) {
    void *a = Alloc(100), *b = Alloc(28);
    EXPECT_EQ(2u, Now().ulBlocks);
    EXPECT_EQ(128u, Now().ulBytes);
    EXPECT_EQ(2u, Now().ulAllocs);
    a = Resize(a, 50);
    EXPECT_EQ(2u, Now().ulBlocks);
    EXPECT_EQ(78u, Now().ulBytes);
    EXPECT_EQ(3u, Now().ulAllocs);
    EXPECT_EQ(0u, QAL_MemFree(0, a));
    EXPECT_EQ(0u, QAL_MemFree(0, b));
    EXPECT_EQ(0u, Now().ulBytes);
    EXPECT_EQ(3u, Now().ulAllocs);
}

TEST_F(HostMemoryLevels, AccountsAreCountedApart) {
    uint32_t other = Open("memory/apart");
    void *block = Alloc(100);
    EXPECT_EQ(0u, Stats(other).ulBlocks);
    EXPECT_EQ(0u, Stats(other).ulAllocs);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemoryLevels, ThePeakOfOneThreadIsExact) {
    void *a = Alloc(1000);
    void *b = Alloc(500);
    EXPECT_EQ(0u, QAL_MemFree(0, a));
    EXPECT_EQ(1500u, Now().ulPeakBytes);
    void *c = Alloc(1001);
    EXPECT_EQ(1501u, Now().ulPeakBytes);
    EXPECT_EQ(0u, QAL_MemFree(0, b));
    EXPECT_EQ(0u, QAL_MemFree(0, c));
    EXPECT_EQ(1501u, Now().ulPeakBytes);
}

TEST_F(HostMemoryLevels, ThePeakOfOneThreadIsExactThroughLargeSwings) {
    uint64_t level = 0, peak = 0;
    std::vector<std::pair<void *, uint32_t>> blocks;
    uint32_t random = 12345;
    for (int step = 0; step < 20000; ++step) {
        random = random * 1664525 + 1013904223;
        if (blocks.size() < 2 || (random >> 16 & 3) != 0) {
            uint32_t size = (random >> 8) % 3000;
            blocks.emplace_back(Alloc(size), size);
            level += size;
        } else {
            for (std::size_t n = (random >> 20) % blocks.size(); n > 0; --n) {
                EXPECT_EQ(0u, QAL_MemFree(0, blocks.back().first));
                level -= blocks.back().second;
                blocks.pop_back();
            }
        }
        peak = std::max(peak, level);
        ASSERT_EQ(level, Now().ulBytes);
        ASSERT_EQ(peak, Now().ulPeakBytes) << "step " << step;
    }
    for (auto &[block, size] : blocks)
        EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemoryLevels, ThePeakDoesNotNeedSomebodyToLookMeanwhile) {
    std::vector<void *> blocks;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 1000 - 100 * round; ++i)
            blocks.push_back(Alloc(100));
        for (void *block : blocks)
            EXPECT_EQ(0u, QAL_MemFree(0, block));
        blocks.clear();
    }
    EXPECT_EQ(100000u, Now().ulPeakBytes);
}

TEST_F(HostMemoryLevels, ABlockMayBeReleasedByAnotherThread) {
    std::vector<void *> blocks;
    for (int i = 0; i < 1000; ++i)
        blocks.push_back(Alloc(100));
    std::thread([&] {
        for (void *block : blocks)
            EXPECT_EQ(0u, QAL_MemFree(0, block));
    }).join();
    EXPECT_EQ(0u, Now().ulBlocks);
    EXPECT_EQ(0u, Now().ulBytes);
}

TEST_F(HostMemoryLevels, WhatEndedThreadsAllocatedStaysCounted) {
    void *blocks[20] = {};
    for (void *&block : blocks)
        std::thread([&] { block = Alloc(10); }).join();
    EXPECT_EQ(20u, Now().ulBlocks);
    EXPECT_EQ(200u, Now().ulBytes);
    EXPECT_EQ(20u, Now().ulAllocs);
    for (void *block : blocks)
        EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemoryLevels, NothingIsMiscountedAmongThreads) {
    constexpr int THREADS = 4, ROUNDS = 20000;
    std::vector<std::thread> threads;
    std::vector<void *> left(THREADS);
    for (int t = 0; t < THREADS; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < ROUNDS; ++i) {
                void *block = Alloc(static_cast<uint32_t>(i % 500));
                if (i % 3 == 0)
                    block = Resize(block, 700);
                EXPECT_EQ(0u, QAL_MemFree(0, block));
            }
            left[static_cast<std::size_t>(t)] = Alloc(11);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(4u, Now().ulBlocks);
    EXPECT_EQ(44u, Now().ulBytes);
    EXPECT_EQ(4u * (ROUNDS + (ROUNDS + 2) / 3 + 1), Now().ulAllocs);
    for (void *block : left)
        EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemoryLevels, ThePeakOfSeveralThreadsIsRightWithinTheirSlack) {
    constexpr uint64_t THREADS = 4, EACH = 100 * 1000, SLACK = THREADS * 16 * 1024;
    std::barrier all(THREADS);
    std::vector<std::thread> threads;
    for (uint64_t t = 0; t < THREADS; ++t) {
        threads.emplace_back([&] {
            std::vector<void *> blocks;
            for (uint64_t i = 0; i < EACH / 1000; ++i)
                blocks.push_back(Alloc(1000));
            all.arrive_and_wait();
            for (void *block : blocks)
                EXPECT_EQ(0u, QAL_MemFree(0, block));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_GE(Now().ulPeakBytes, THREADS * EACH - SLACK);
    EXPECT_LE(Now().ulPeakBytes, THREADS * EACH + SLACK);
}

TEST_F(HostMemoryLevels, LevelsReadDuringTrafficArePlausible) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] {
            while (!stop)
                EXPECT_EQ(0u, QAL_MemFree(0, Alloc(1000)));
        });
    }
    for (int i = 0; i < 2000; ++i) {
        QAL_MEM_STATS_S stats = Now();
        ASSERT_LE(stats.ulBytes, 100000u);
        ASSERT_GE(stats.ulPeakBytes, stats.ulBytes);
    }
    stop = true;
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(0u, Now().ulBytes);
}

/* ---- shortage */

static void RunOutOfMemory() {
    uint32_t handle = 0;
    QAL_HandleInitialize("memory/shortage", &handle);
    QAL_MEM_STATS_S before = {}, after = {};
    void *kept = QAL_MemAlloc(handle, 0, 1000);
    std::memset(kept, 'k', 1000);
    rlimit limit = {std::size_t{256} << 20, std::size_t{256} << 20};
    setrlimit(RLIMIT_AS, &limit);
    QAL_MemGetStats(handle, &before);
    bool refused = QAL_MemAlloc(handle, 0, 0x40000000) == nullptr &&
                   QAL_MemAlloc_F(handle, 0, 0x40000000, "src/shortage", 1) == nullptr &&
                   QAL_MemReAlloc(handle, 0, kept, 0x40000000) == nullptr;
    QAL_MemGetStats(handle, &after);
    bool counted = before.ulFailures == 0 && after.ulFailures == 3;
    bool level_kept = after.ulBlocks == 1 && after.ulBytes == 1000 && after.ulAllocs == 1 && after.ulPeakBytes == 1000;
    bool block_kept = static_cast<char *>(kept)[0] == 'k' && static_cast<char *>(kept)[999] == 'k';
    bool released = QAL_MemFree(0, kept) == 0;
    std::_Exit(refused && counted && level_kept && block_kept && released ? 0 : 1);
}

TEST_F(HostMemoryLevels, AShortageIsCountedAndLeavesEverythingAsItWas) {
    if (UNDER_SANITIZER)
        GTEST_SKIP() << "sanitizers need the address space that this test takes away";
    EXPECT_EXIT(RunOutOfMemory(), testing::ExitedWithCode(0), "");
}

/* ---- soft quota */

TEST_F(HostMemoryLevels, GoingAboveTheQuotaIsGrantedAndCounted) {
    ASSERT_EQ(0u, QAL_MemSetQuota(handle_, 1000));
    EXPECT_EQ(1000u, Now().ulQuota);
    void *a = Alloc(1000);
    EXPECT_EQ(0u, Now().ulOverQuota);
    void *b = Alloc(1);
    EXPECT_NE(nullptr, b);
    EXPECT_EQ(1u, Now().ulOverQuota);
    b = Resize(b, 2);
    EXPECT_EQ(2u, Now().ulOverQuota);
    EXPECT_EQ(0u, QAL_MemFree(0, a));
    void *c = Alloc(10);
    EXPECT_EQ(2u, Now().ulOverQuota);
    EXPECT_EQ(0u, QAL_MemFree(0, b));
    EXPECT_EQ(0u, QAL_MemFree(0, c));
}

TEST_F(HostMemoryLevels, TheQuotaSeesTheBytesOfAllThreads) {
    ASSERT_EQ(0u, QAL_MemSetQuota(handle_, 1000));
    void *a = nullptr;
    std::thread([&] { a = Alloc(900); }).join();
    void *b = Alloc(200);
    EXPECT_EQ(1u, Now().ulOverQuota);
    EXPECT_EQ(0u, QAL_MemFree(0, a));
    EXPECT_EQ(0u, QAL_MemFree(0, b));
}

TEST_F(HostMemoryLevels, AQuotaOfZeroIsNone) {
    ASSERT_EQ(0u, QAL_MemSetQuota(handle_, 10));
    ASSERT_EQ(0u, QAL_MemSetQuota(handle_, 0));
    void *block = Alloc(1000);
    EXPECT_EQ(0u, Now().ulOverQuota);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemoryLevels, AnUnknownHandleHasNoQuota) {
    EXPECT_NE(0u, QAL_MemSetQuota(UVELHOST_NONE, 10));
}
