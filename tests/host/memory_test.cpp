#include <uvelhost/memory.h>

#include "memory_account.h"
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using HostMemory = MemoryAccount;

static bool AlignedForAnything(const void *block) {
    return reinterpret_cast<uintptr_t>(block) % alignof(std::max_align_t) == 0;
}

/* ---- handles */

TEST_F(HostMemory, ASecondRegistrationUnderOneNameGivesTheSameHandle) {
    uint32_t first = Open("memory/twice"), second = Open("memory/twice");
    EXPECT_EQ(first, second);
    EXPECT_NE(UVELHOST_NONE, first);
    EXPECT_NE(first, Open("memory/other"));
}

TEST_F(HostMemory, NamesThatDifferBehindWhatIsShownAreDifferentAccounts) {
    const std::string shown(31, 'n');
    uint32_t a = Open(shown + "a"), b = Open(shown + "b");
    EXPECT_NE(a, b);
    EXPECT_EQ(shown, Stats(a).szName);
    EXPECT_EQ(shown, Stats(b).szName);
}

TEST_F(HostMemory, TheNameNeedNotOutliveTheRegistration) {
    std::string name = "memory/passing";
    uint32_t handle = Open(name);
    name.assign(name.size(), 'x');
    EXPECT_STREQ("memory/passing", Stats(handle).szName);
}

TEST_F(HostMemory, RegistrationWithoutNameOrResultFails) {
    uint32_t handle = 77;
    EXPECT_NE(0u, QAL_HandleInitialize(nullptr, &handle));
    EXPECT_EQ(77u, handle);
    EXPECT_NE(0u, QAL_HandleInitialize("memory/none", nullptr));
}

static void FillTheTableOfHandles() {
    uint32_t handle = 0;
    unsigned opened = 0;
    while (opened < 2000 && QAL_HandleInitialize(("memory/full/" + std::to_string(opened)).c_str(), &handle) == 0)
        ++opened;
    QAL_MEM_STATS_S stats;
    handle = 77;
    bool full = opened < 1024 && QAL_HandleInitialize("memory/full/one more", &handle) != 0 && handle == 77;
    bool known = QAL_HandleInitialize("memory/full/0", &handle) == 0 && QAL_MemGetStats(1023, &stats) == 0;
    bool none_behind = QAL_MemGetStats(1024, &stats) != 0;
    std::_Exit(full && known && none_behind ? 0 : 1);
}

TEST_F(HostMemory, AFullTableOfHandlesRefusesNewNamesOnly) {
    EXPECT_EXIT(FillTheTableOfHandles(), testing::ExitedWithCode(0), "");
}

TEST_F(HostMemory, HandlesAreNumberedWithoutGaps) {
    uint32_t last = Open("memory/last");
    QAL_MEM_STATS_S stats;
    uint32_t count = 0;
    while (QAL_MemGetStats(count, &stats) == 0)
        ++count;
    EXPECT_GT(count, last);
    EXPECT_NE(0u, QAL_MemGetStats(UVELHOST_NONE, &stats));
}

TEST_F(HostMemory, LevelsNeedAPlaceToGo) {
    EXPECT_NE(0u, QAL_MemGetStats(handle_, nullptr));
}

TEST_F(HostMemory, ModulesShareTheAccountModule) {
    uint32_t handle = QAL_ConverMIDTOHandle(0xC21E0000);
    EXPECT_EQ(handle, QAL_ConverMIDTOHandle(0));
    EXPECT_EQ(handle, QAL_ConverMIDTOHandle(0xFFFFFFFF));
    EXPECT_EQ(handle, Open("module"));
    EXPECT_STREQ("module", Stats(handle).szName);
    void *block = QAL_MemAlloc(handle, 0, 8);
    EXPECT_NE(nullptr, block);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

/* ---- blocks */

TEST_F(HostMemory, BlocksOfEverySizeAreAlignedAndTheirOwn) {
    std::vector<unsigned char *> blocks;
    for (uint32_t size = 0; size < 600; ++size) {
        auto *block = static_cast<unsigned char *>(Alloc(size));
        ASSERT_NE(nullptr, block);
        EXPECT_TRUE(AlignedForAnything(block)) << size;
        std::memset(block, static_cast<int>(size & 0xFF), size);
        blocks.push_back(block);
    }
    for (uint32_t size = 0; size < 600; ++size) {
        for (uint32_t i = 0; i < size; ++i)
            ASSERT_EQ(size & 0xFF, blocks[size][i]) << "byte " << i << " of the block of " << size;
        EXPECT_EQ(0u, QAL_MemFree(0, blocks[size]));
    }
}

TEST_F(HostMemory, SizeZeroGivesABlockOfItsOwn) {
    void *a = Alloc(0), *b = Alloc(0);
    EXPECT_NE(nullptr, a);
    EXPECT_NE(nullptr, b);
    EXPECT_NE(a, b);
    EXPECT_EQ(2u, Now().ulBlocks);
    EXPECT_EQ(0u, Now().ulBytes);
    EXPECT_EQ(0u, QAL_MemFree(0, a));
    EXPECT_EQ(0u, QAL_MemFree(0, b));
}

TEST_F(HostMemory, AnUnknownHandleGivesNothing) {
    EXPECT_EQ(nullptr, QAL_MemAlloc(UVELHOST_NONE, 0, 8));
    EXPECT_EQ(nullptr, QAL_MemAlloc(1024, 0, 8));
    EXPECT_EQ(nullptr, QAL_MemReAlloc(UVELHOST_NONE, 0, nullptr, 8));
}

TEST_F(HostMemory, ThePartitionIsIgnored) {
    void *block = QAL_MemAlloc(handle_, 255, 8);
    EXPECT_NE(nullptr, block);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, TheFirstArgumentOfAReleaseIsNotLookedAt) {
    EXPECT_EQ(0u, QAL_MemFree(0xFFFFFFFF, Alloc(8)));
    EXPECT_EQ(0u, QAL_MemFree(12345, Alloc(8)));
}

TEST_F(HostMemory, TheLargestSizesDoNotWrap) {
    for (uint32_t size : {0xFFFFFFFFU, 0xFFFFFFF0U, 0xFFFFFFEFU, 0x80000000U}) {
        auto *block = static_cast<unsigned char *>(Alloc(size));
        if (block == nullptr)
            continue; /* memory may be short for it; a short block would be the error */
        block[0] = 1;
        block[size - 1] = 2;
        EXPECT_EQ(size, Now().ulBytes);
        EXPECT_EQ(0u, QAL_MemFree(0, block));
    }
    EXPECT_EQ(0u, Now().ulBytes);
}

TEST_F(HostMemory, ABlockWithAPositionIsABlockLikeOthers) {
    void *block = QAL_MemAlloc_F(handle_, 0, 100, "src/somewhere", 12);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(100u, Now().ulBytes);
    EXPECT_EQ(0u, QAL_MemFree_F(0, block, "src/somewhere", 13));
    EXPECT_EQ(0u, QAL_MemFree(0, QAL_MemAlloc_F(handle_, 0, 100, nullptr, 0)));
    EXPECT_EQ(0u, QAL_MemFree_F(0, Alloc(1), nullptr, 0));
}

TEST_F(HostMemory, RefusalsWithAPositionAreReportedOncePerPlace) {
    auto reported = [](auto call) {
        testing::internal::CaptureStderr();
        call();
        return testing::internal::GetCapturedStderr();
    };
    auto allocation = [] { EXPECT_EQ(nullptr, QAL_MemAlloc_F(UVELHOST_NONE, 0, 8, "src/refused", 4711)); };
    auto release = [] { EXPECT_EQ(1u, QAL_MemFree_F(0, nullptr, "src/refused", 4712)); };
    std::string text = reported(allocation);
    EXPECT_NE(std::string::npos, text.find("src/refused"));
    EXPECT_NE(std::string::npos, text.find("4711"));
    EXPECT_NE(std::string::npos, reported(release).find("4712"));
    EXPECT_EQ("", reported(allocation));
    EXPECT_EQ("", reported(release));
}

/* ---- another size */

TEST_F(HostMemory, ResizingNothingAllocates) {
    void *block = Resize(nullptr, 10);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(1u, Now().ulBlocks);
    EXPECT_EQ(10u, Now().ulBytes);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, ResizingKeepsTheContentsUpToTheSmallerSize) {
    auto *block = static_cast<unsigned char *>(Alloc(100));
    for (unsigned i = 0; i < 100; ++i)
        block[i] = static_cast<unsigned char>(i);
    for (uint32_t size : {101U, 5000U, 1000000U, 60U, 100000U}) {
        block = static_cast<unsigned char *>(Resize(block, size));
        ASSERT_NE(nullptr, block);
        EXPECT_TRUE(AlignedForAnything(block));
        for (unsigned i = 0; i < 60; ++i)
            ASSERT_EQ(i, block[i]) << "size " << size;
        EXPECT_EQ(size, Now().ulBytes);
        EXPECT_EQ(1u, Now().ulBlocks);
    }
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, ResizingToZeroKeepsABlock) {
    void *block = Resize(Alloc(10), 0);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(1u, Now().ulBlocks);
    EXPECT_EQ(0u, Now().ulBytes);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, AResizedBlockStaysOnItsHandle) {
    uint32_t other = Open("memory/resize/other");
    void *block = QAL_MemReAlloc(other, 0, Alloc(10), 20);
    EXPECT_EQ(20u, Now().ulBytes);
    EXPECT_EQ(0u, Stats(other).ulBlocks);
    block = QAL_MemReAlloc(UVELHOST_NONE, 0, block, 30);
    EXPECT_EQ(30u, Now().ulBytes);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, WhatIsNoBlockIsNotResized) {
    alignas(16) unsigned char area[64] = {};
    EXPECT_EQ(nullptr, Resize(area + 32, 10));
    EXPECT_EQ(0u, Now().ulAllocs);
}

/* ---- what is no block */

TEST_F(HostMemory, ReleasingNullIsRefused) {
    EXPECT_EQ(1u, QAL_MemFree(0, nullptr));
    EXPECT_EQ(1u, QAL_MemFree_F(0, nullptr, nullptr, 1));
}

TEST_F(HostMemory, ReleasingWhatIsNoBlockIsRefused) {
    alignas(16) static unsigned char area[64];
    alignas(16) unsigned char local[64] = {};
    void *foreign = std::malloc(100);
    EXPECT_EQ(1u, QAL_MemFree(0, area + 16));
    EXPECT_EQ(1u, QAL_MemFree(0, local + 16));
    EXPECT_EQ(1u, QAL_MemFree(0, local + 17));
    EXPECT_EQ(1u, QAL_MemFree(0, foreign));
    EXPECT_EQ(1u, QAL_MemFree(0, reinterpret_cast<void *>(uintptr_t{16})));
    std::free(foreign);
}

TEST_F(HostMemory, ReleasingTheMiddleOfABlockIsRefused) {
    auto *block = static_cast<unsigned char *>(Alloc(100));
    std::memset(block, 0, 100);
    EXPECT_EQ(1u, QAL_MemFree(0, block + 1));
    EXPECT_EQ(1u, QAL_MemFree(0, block + 16));
    EXPECT_EQ(1u, Now().ulBlocks);
    EXPECT_EQ(0u, QAL_MemFree(0, block));
}

TEST_F(HostMemory, ASecondReleaseIsRefusedAndCountsNothing) {
    for (uint32_t size : {0U, 1U, 64U, 1000U, 8000U}) {
        void *keeps_the_page = Alloc(size);
        void *block = Alloc(size);
        EXPECT_EQ(0u, QAL_MemFree(0, block));
        EXPECT_EQ(1u, QAL_MemFree(0, block)) << size;
        EXPECT_EQ(nullptr, Resize(block, 10)) << size;
        EXPECT_EQ(1u, Now().ulBlocks);
        EXPECT_EQ(0u, QAL_MemFree(0, keeps_the_page));
    }
}
