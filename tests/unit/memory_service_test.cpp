#include "kit.h"

#include <cstring>
#include <uvelcommon_base/kivo_mem.h>

namespace {

constexpr uint32_t MID = 0x12340000;

/* What the host's registration does for the test: it gives the account `handle`. */
void OpensAccount(uint32_t handle) {
    kit::Op<QAL_HandleInitialize>().Does([handle](const char *, uint32_t *out) -> uint32_t {
        *out = handle;
        return 0;
    });
}

TEST(MemoryService, OpensItsAccountAtTheFirstAllocationOnly) {
    kit::Recorder recorder({"QAL_HandleInitialize", "QAL_Mem"});
    void *first = KIVO_MemAlloc(MID, 24);
    void *second = KIVO_MemAlloc_F(MID, 8, "module.c", 7);
    EXPECT_EQ(0u, KIVO_MemFree(first));
    EXPECT_EQ(0u, KIVO_MemFree_F(second, "module.c", 9));
    const uint32_t handle = std::get<0>(kit::Op<QAL_MemAlloc>().Last());
    const std::string account = std::to_string(handle);
    EXPECT_EQ(
        (std::vector<std::string>{"QAL_HandleInitialize(\"nac-util\", ptr)", "QAL_MemAlloc(" + account + ", 0, 24)",
                                  "QAL_MemAlloc_F(" + account + ", 0, 8, \"module.c\", 7)", "QAL_MemFree(0, ptr)",
                                  "QAL_MemFree_F(0, ptr, \"module.c\", 9)"}),
        recorder.Calls());
}

TEST(MemoryService, UsesEveryHandleThatIsNotTheUnopenedOne) {
    OpensAccount(0);
    kit::Op<QAL_MemAlloc>().Returns(nullptr);
    KIVO_MemAlloc(MID, 1);
    KIVO_MemAlloc(MID, 1);
    EXPECT_EQ(1u, kit::Op<QAL_HandleInitialize>().Calls());
    EXPECT_EQ(0u, std::get<0>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST(MemoryService, TriesAgainAfterAFailedRegistration) {
    kit::Op<QAL_HandleInitialize>().FailsOn(1).FailsFrom(1);
    EXPECT_EQ(nullptr, KIVO_MemAlloc(MID, 8));
    EXPECT_EQ(nullptr, KIVO_MemAlloc_F(MID, 8, "f", 1));
    char block = 'x';
    EXPECT_EQ(nullptr, KIVO_MemReAlloc(&block, 8));
    EXPECT_EQ('x', block);
    EXPECT_EQ(3u, kit::Op<QAL_HandleInitialize>().Calls());
    EXPECT_EQ(0u,
              kit::Op<QAL_MemAlloc>().Calls() + kit::Op<QAL_MemAlloc_F>().Calls() + kit::Op<QAL_MemReAlloc>().Calls());
    kit::Op<QAL_HandleInitialize>().Reset();
    void *fresh = KIVO_MemAlloc(MID, 8);
    ASSERT_NE(nullptr, fresh);
    EXPECT_EQ(0u, KIVO_MemFree(fresh));
}

TEST(MemoryService, RegistersAgainWhenTheHostLeavesTheHandleUnopened) {
    kit::Op<QAL_HandleInitialize>().Returns(0);
    kit::Op<QAL_MemAlloc>().Returns(nullptr);
    KIVO_MemAlloc(MID, 1);
    KIVO_MemAlloc(MID, 1);
    EXPECT_EQ(2u, kit::Op<QAL_HandleInitialize>().Calls());
}

TEST(MemoryService, NamesItsAccountAndThePartitionOfTheMomentAtEveryCall) {
    OpensAccount(42);
    kit::Op<QAL_MemAlloc>().Returns(nullptr);
    kit::Op<QAL_MemAlloc_F>().Returns(nullptr);
    kit::Op<QAL_MemReAlloc>().Returns(nullptr);
    const uint8_t before = g_ucSysMemPtNo;
    const char *const file = "module.c";
    char block = 'x';
    for (const uint8_t partition : {uint8_t{3}, uint8_t{250}}) {
        g_ucSysMemPtNo = partition;
        KIVO_MemAlloc(MID, 16);
        KIVO_MemAlloc_F(MID, 17, file, 7);
        KIVO_MemReAlloc(&block, 18);
        EXPECT_EQ(std::tuple(42u, partition, 16u), kit::Op<QAL_MemAlloc>().Last());
        EXPECT_EQ(std::tuple(42u, partition, 17u, file, 7u), kit::Op<QAL_MemAlloc_F>().Last());
        EXPECT_EQ(std::tuple(42u, partition, static_cast<void *>(&block), 18u), kit::Op<QAL_MemReAlloc>().Last());
    }
    g_ucSysMemPtNo = before;
}

TEST(MemoryService, UsesTheLaterHandleOfTwoFirstAllocationsAtOnce) {
    static char block;
    kit::Op<QAL_MemAlloc>().Returns(&block);
    kit::Op<QAL_HandleInitialize>().Does([](const char *, uint32_t *handle) -> uint32_t {
        OpensAccount(7); /* for the other allocation, which comes before this one has its handle */
        EXPECT_EQ(&block, KIVO_MemAlloc(MID, 1));
        EXPECT_EQ(7u, std::get<0>(kit::Op<QAL_MemAlloc>().Last()));
        *handle = 9;
        return 0;
    });
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(&block, KIVO_MemAlloc(MID, 1));
        EXPECT_EQ(9u, std::get<0>(kit::Op<QAL_MemAlloc>().Last()));
    }
    EXPECT_EQ(3u, kit::Op<QAL_MemAlloc>().Calls());
    EXPECT_EQ(2u, kit::Op<QAL_HandleInitialize>().Calls());
}

TEST(MemoryService, ResizesAndKeepsTheContents) {
    char *block = static_cast<char *>(KIVO_MemReAlloc(nullptr, 4));
    ASSERT_NE(nullptr, block);
    std::memcpy(block, "abc", 4);
    block = static_cast<char *>(KIVO_MemReAlloc(block, 4000));
    ASSERT_NE(nullptr, block);
    EXPECT_STREQ("abc", block);
    EXPECT_EQ(1u, kit::LiveBlocks());
    EXPECT_EQ(0u, KIVO_MemFree(block));
    EXPECT_EQ(0u, kit::LiveBlocks());
}

TEST(MemoryService, FreesOfNullCallNothing) {
    EXPECT_EQ(0u, KIVO_MemFree(nullptr));
    EXPECT_EQ(0u, KIVO_MemFree_F(nullptr, "f", 1));
    EXPECT_EQ(0u, kit::Op<QAL_MemFree>().Calls() + kit::Op<QAL_MemFree_F>().Calls());
}

TEST(MemoryService, FreesReturnTheHostsResult) {
    kit::Op<QAL_MemFree>().Returns(77);
    kit::Op<QAL_MemFree_F>().Returns(78);
    int block = 0;
    EXPECT_EQ(77u, KIVO_MemFree(&block));
    EXPECT_EQ(78u, KIVO_MemFree_F(&block, "f", 1));
}

TEST(MemoryService, HasAReservedSlotThatStaysZero) {
    EXPECT_EQ(nullptr, g_stPfKivoMemFunc);
    void *block = KIVO_MemAlloc(MID, 1);
    KIVO_MemFree(block);
    EXPECT_EQ(nullptr, g_stPfKivoMemFunc);
}

TEST(MemoryService, SurvivesEveryFailureOfTheHost) {
    const int injected = kit::SweepAllocations(
        [] {
            for (int i = 0; i < 3; ++i) {
                void *block = KIVO_MemAlloc(MID, 16);
                void *grown = KIVO_MemReAlloc(block, 32);
                KIVO_MemFree(grown != nullptr ? grown : block);
            }
        },
        [] {
            void *block = KIVO_MemAlloc(MID, 16);
            EXPECT_NE(nullptr, block);
            KIVO_MemFree(block);
        });
    EXPECT_GE(injected, 14);
}

} // namespace
