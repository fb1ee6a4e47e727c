#include <uvelcommon_base/kivo_index.h>

#include <cstring>

#include <uvelcommon_base/kivo_mem.h>

#include "index_pools.h"

using namespace index_pools;

namespace {

/* What start-up does: a registry of 30 records of zeros in place of whatever is there. */
void ProvideRegistry() {
    g_stTableIndex = static_cast<KIVO_TABLE_INDEX_S *>(KIVO_MemAlloc(KIVO_LIB_MID, 960));
    ASSERT_NE(nullptr, g_stTableIndex);
    std::memset(g_stTableIndex, 0, 960);
    g_ulTotalTableNum = 30;
}

/* A host whose memory is full of leftovers: what a block grows by, all of it for a new block, is not zero. */
void *DirtyReAlloc(uint32_t handle, uint8_t partition, void *block, uint32_t size) {
    const uint32_t kept = block == nullptr ? 0 : size - 960;
    void *grown = kit::Op<QAL_MemReAlloc>().Real(handle, partition, block, size);
    std::memset(static_cast<char *>(grown) + kept, 0xA5, size - kept);
    return grown;
}

/* These tests need the registry as a process finds it. They leave this process as it is and come before those of
 * single pools, so that they also hold when all tests run in one process. */

void OnFreshRegistry(const std::function<void()> &body) {
    ASSERT_EQ(nullptr, g_stTableIndex) << "this process created pools before";
    kit::InFreshProcess(body);
}

TEST(IndexRegistry, IsEmptyAtLoad) {
    OnFreshRegistry([] {
        EXPECT_EQ(nullptr, g_stTableIndex);
        EXPECT_EQ(0u, g_ulTotalTableNum);
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(0));
    });
}

TEST(IndexRegistry, HasRoomForThirtyPoolsOnceTheFirstIsCreated) {
    OnFreshRegistry([] {
        EXPECT_EQ(0u, NewPool(5, 7));
        EXPECT_EQ(30u, g_ulTotalTableNum);
        EXPECT_EQ(nullptr, std::get<2>(kit::Op<QAL_MemReAlloc>().Last()));
        EXPECT_EQ(960u, std::get<3>(kit::Op<QAL_MemReAlloc>().Last()));
        EXPECT_EQ(1u, kit::Op<QAL_MemAlloc>().Calls());
        EXPECT_EQ(24u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
        EXPECT_EQ(2u, kit::LiveBlocks());
    });
}

TEST(IndexRegistry, AsksTheHostForTheRegistryBeforeTheSlots) {
    OnFreshRegistry([] {
        U32 order;
        kit::Op<QAL_MemReAlloc>().Does([&order](uint32_t handle, uint8_t partition, void *block, uint32_t size) {
            order.push_back(size);
            return kit::Op<QAL_MemReAlloc>().Real(handle, partition, block, size);
        });
        kit::Op<QAL_MemAlloc>().Does([&order](uint32_t handle, uint8_t partition, uint32_t size) {
            order.push_back(size);
            return kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
        });
        NewPool(0, 0);
        NewPool(1, 100);
        EXPECT_EQ((U32{960, 8, 800}), order);
    });
}

TEST(IndexRegistry, GivesIdsInTheOrderOfCreation) {
    OnFreshRegistry([] {
        for (uint32_t id = 0; id < 40; ++id)
            EXPECT_EQ(id, NewPool(id, id + 1));
    });
}

TEST(IndexRegistry, GrowsToSixtyWithTheThirtyFirstPoolAndKeepsTheEarlierOnes) {
    OnFreshRegistry([] {
        for (uint32_t id = 0; id < 30; ++id)
            NewPool(100 * id, 100 * id + 1);
        EXPECT_EQ(0u, KIVO_AllocTableIndex(0));
        EXPECT_EQ(1u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(30u, g_ulTotalTableNum);

        EXPECT_EQ(30u, NewPool(3000, 3001));
        EXPECT_EQ(60u, g_ulTotalTableNum);
        EXPECT_EQ(2u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(1920u, std::get<3>(kit::Op<QAL_MemReAlloc>().Last()));
        EXPECT_EQ(U32{1}, TakeAll(0));
        for (uint32_t id = 1; id <= 30; ++id)
            EXPECT_EQ(Counting(100 * id, 2), TakeAll(id));
    });
}

TEST(IndexRegistry, ClearsTheRecordsItGrowsBy) {
    OnFreshRegistry([] {
        kit::Op<QAL_MemReAlloc>().Does(DirtyReAlloc);
        for (uint32_t id = 0; id < 31; ++id) {
            for (uint32_t unused = id; unused < g_ulTotalTableNum; ++unused)
                ASSERT_TRUE(RecordIsZero(unused)) << unused;
            NewPool(0, 9);
        }
        for (uint32_t unused = 31; unused < 60; ++unused)
            ASSERT_TRUE(RecordIsZero(unused)) << unused;
    });
}

TEST(IndexRegistry, UsesTheArrayThatStartUpProvided) {
    OnFreshRegistry([] {
        ProvideRegistry();
        const KIVO_TABLE_INDEX_S *provided = g_stTableIndex;
        for (uint32_t id = 0; id < 30; ++id)
            EXPECT_EQ(id, NewPool(id, id));
        EXPECT_EQ(0u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(provided, g_stTableIndex);

        EXPECT_EQ(30u, NewPool(30, 30));
        EXPECT_EQ(1u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(static_cast<const void *>(provided), std::get<2>(kit::Op<QAL_MemReAlloc>().Last()));
        EXPECT_EQ(60u, g_ulTotalTableNum);
        for (uint32_t id = 0; id <= 30; ++id)
            EXPECT_EQ(U32{id}, TakeAll(id));
    });
}

TEST(IndexRegistry, StaysWithinAnArrayThatStartUpProvidedTooLate) {
    OnFreshRegistry([] {
        for (uint32_t id = 0; id < 65; ++id)
            NewPool(id, id);
        KIVO_TABLE_INDEX_S *lost = g_stTableIndex;
        ProvideRegistry();
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(0));
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(64));
        EXPECT_EQ(65u, NewPool(7, 8));
        EXPECT_EQ(90u, g_ulTotalTableNum);
        EXPECT_EQ((U32{7, 8}), TakeAll(65));
        EXPECT_TRUE(RecordIsZero(64));
        for (uint32_t id = 0; id < 65; ++id)
            EXPECT_EQ(0u, KIVO_MemFree(lost[id].pullSlots));
        EXPECT_EQ(0u, KIVO_MemFree(lost));
    });
}

TEST(IndexRegistry, SurvivesAStartUpThatCouldNotProvideTheArray) {
    OnFreshRegistry([] {
        g_ulTotalTableNum = 30; // and g_stTableIndex null
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(0));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadValue(29));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexUsedNum(0));
        KIVO_FreeTableIndex(0, 1);
        EXPECT_EQ(1u, KIVO_SmoothTableIndex(0));
        EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
        kit::Op<QAL_MemReAlloc>().Does(DirtyReAlloc);
        EXPECT_EQ(0u, NewPool(5, 6));
        EXPECT_EQ((U32{5, 6}), TakeAll(0));
        for (uint32_t unused = 1; unused < g_ulTotalTableNum; ++unused)
            ASSERT_TRUE(RecordIsZero(unused)) << unused;
    });
}

TEST(IndexRegistry, KeepsItsCapacityWhenItCannotGrow) {
    OnFreshRegistry([] {
        uint32_t pool = UNTOUCHED;
        kit::Op<QAL_MemReAlloc>().FailsOn(1, nullptr);
        EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 9));
        EXPECT_EQ(UNTOUCHED, pool);
        EXPECT_EQ(0u, g_ulTotalTableNum);
        EXPECT_EQ(nullptr, g_stTableIndex);
        EXPECT_EQ(0u, kit::Op<QAL_MemAlloc>().Calls());
        EXPECT_EQ(0u, NewPool(0, 9));
    });
}

TEST(IndexRegistry, KeepsItsPoolsWhenItCannotGrow) {
    OnFreshRegistry([] {
        for (uint32_t id = 0; id < 30; ++id)
            NewPool(id, id);
        uint32_t pool = UNTOUCHED;
        kit::Op<QAL_MemReAlloc>().FailsOn(1, nullptr);
        EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 9));
        EXPECT_EQ(UNTOUCHED, pool);
        EXPECT_EQ(30u, g_ulTotalTableNum);
        EXPECT_EQ(U32{29}, TakeAll(29));
        EXPECT_EQ(30u, NewPool(30, 30));
    });
}

TEST(IndexRegistry, IsNotGrownBeyondFourGigabytes) {
    OnFreshRegistry([] {
        g_ulTotalTableNum = 134217727 - 29; // with 30 more, 4 GiB
        uint32_t pool = UNTOUCHED;
        EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 0));
        EXPECT_EQ(0u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(134217727u - 29, g_ulTotalTableNum);
        g_ulTotalTableNum = 0xFFFFFFFF; // where 30 more wrap
        EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 0));
        EXPECT_EQ(0u, kit::Op<QAL_MemReAlloc>().Calls());
        EXPECT_EQ(UNTOUCHED, pool);
    });
}

TEST(IndexRegistry, WithoutAMemoryAccountCreatesNothing) {
    OnFreshRegistry([] {
        uint32_t pool = UNTOUCHED;
        kit::Op<QAL_HandleInitialize>().FailsOn(1);
        EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 9));
        EXPECT_EQ(UNTOUCHED, pool);
        EXPECT_EQ(0u, g_ulTotalTableNum);
        EXPECT_EQ(0u, NewPool(0, 9));
    });
}

TEST(IndexRegistry, LosesNothingWhicheverAllocationFails) {
    const auto scenario = [] {
        uint32_t next = 0;
        for (int i = 0; i < 32; ++i) {
            const uint32_t capacity = g_ulTotalTableNum;
            uint32_t pool = UNTOUCHED;
            if (KIVO_InitTableIndex(&pool, 10, 12) == 0) {
                EXPECT_EQ(next++, pool);
            } else {
                EXPECT_EQ(UNTOUCHED, pool);
                EXPECT_TRUE(g_ulTotalTableNum == capacity || g_ulTotalTableNum == capacity + 30);
            }
        }
        for (uint32_t pool = 0; pool < g_ulTotalTableNum; ++pool)
            EXPECT_EQ(pool < next ? Counting(10, 3) : U32{}, TakeAll(pool));
    };
    const auto after = [] {
        const uint32_t pool = NewPool(1, 2);
        EXPECT_EQ((U32{1, 2}), TakeAll(pool));
    };
    ASSERT_EQ(nullptr, g_stTableIndex) << "this process created pools before";
    /* The account, 32 pools, and the registry twice; each fails once, and with all that follow. */
    EXPECT_EQ(2 * (1 + 32 + 2), kit::SweepAllocations(scenario, after));
}

} // namespace
