#include <uvelcommon_base/kivo_index.h>

#include <algorithm>
#include <deque>
#include <random>

#include "index_pools.h"

using namespace index_pools;

namespace {

/* Creation of pools, and what is refused. */

TEST(IndexPool, StartsWithAllIndexesFreeInAscendingOrder) {
    const uint32_t pool = NewPool(5, 7);
    EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    EXPECT_EQ(5u, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(5u, KIVO_QueryTableIndexTailValue(pool));
    EXPECT_EQ((U32{5, 6, 7}), TakeAll(pool));
}

TEST(IndexPool, KeepsItsStateInThePublishedRecord) {
    const uint32_t pool = NewPool(5, 7);
    KIVO_AllocTableIndex(pool);
    KIVO_AllocTableIndex(pool);
    KIVO_FreeTableIndex(pool, 6);
    const KIVO_TABLE_INDEX_S &record = g_stTableIndex[pool];
    EXPECT_EQ(2u, record.ulHead);
    EXPECT_EQ(1u, record.ulTail);
    EXPECT_EQ(1u, record.ulUsed);
    EXPECT_EQ(5u, record.ulMin);
    EXPECT_EQ(7u, record.ulMax);
    EXPECT_EQ(6u, record.pullSlots[0]);
    EXPECT_EQ(0x00000000FFFFFFFFu, record.pullSlots[1]);
    EXPECT_EQ(7u, record.pullSlots[2]);
}

TEST(IndexPool, MayHoldASingleIndex) {
    const uint32_t pool = NewPool(9, 9);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(U32{9}, TakeAll(pool));
        EXPECT_EQ(StateIs(0, 0, 1), State(pool));
        KIVO_FreeTableIndex(pool, 9);
        EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    }
}

TEST(IndexPool, IsNotCreatedFromBadArguments) {
    const uint32_t before = NewPool(0, 0);
    uint32_t pool = UNTOUCHED;
    EXPECT_EQ(1u, KIVO_InitTableIndex(nullptr, 0, 9));
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 8, 7));
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0xFFFFFFFF, 0));
    EXPECT_EQ(UNTOUCHED, pool);
    EXPECT_EQ(before + 1, NewPool(0, 0)); // no id was used up
}

TEST(IndexPool, WithoutMemoryForItsSlotsIsAFatalErrorAndUsesUpNoId) {
    const uint32_t before = NewPool(0, 0);
    const uint64_t blocks = kit::LiveBlocks();
    uint32_t pool = UNTOUCHED;
    kit::Op<QAL_MemAlloc>().FailsOn(1, nullptr);
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 9));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeFatals());
    EXPECT_EQ(UNTOUCHED, pool);
    EXPECT_EQ(blocks, kit::LiveBlocks());
    EXPECT_EQ(NONE, KIVO_AllocTableIndex(before + 1));
    EXPECT_EQ(before + 1, NewPool(0, 0));
}

TEST(IndexPool, LargerThanTheHostCanAllocateIsAFatalErrorWithoutAskingIt) {
    const uint32_t before = NewPool(0, 0);
    const uint64_t asked = kit::Op<QAL_MemAlloc>().Calls();
    uint32_t pool = UNTOUCHED;
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 0xFFFFFFFF));          // 2^32 slots
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 1, 0xFFFFFFFF));          // 2^32 - 1
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0, 0x1FFFFFFF));          // 2^29: 4 GiB
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 0x80000000, 0xA0000000)); // 2^29 + 1
    EXPECT_EQ((kit::Sources{SOURCE, SOURCE, SOURCE, SOURCE}), kit::TakeFatals());
    EXPECT_EQ(asked, kit::Op<QAL_MemAlloc>().Calls());
    EXPECT_EQ(UNTOUCHED, pool);
    EXPECT_EQ(before + 1, NewPool(0, 0));
}

TEST(IndexPool, MayAskTheHostForAlmostFourGigabytes) {
    NewPool(0, 0); // the registry has its memory already, in most cases
    uint32_t pool = UNTOUCHED;
    kit::Op<QAL_MemAlloc>().Returns(nullptr);
    EXPECT_EQ(1u, KIVO_InitTableIndex(&pool, 1, 0x1FFFFFFF));
    EXPECT_EQ(0xFFFFFFF8u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeFatals());
}

/* Taking and freeing. */

TEST(IndexPool, GivesNoneWhenAllAreInUse) {
    const uint32_t pool = NewPool(5, 7);
    EXPECT_EQ(5u, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(6u, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(7u, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(NONE, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(StateIs(0, 0, 3), State(pool));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexTailValue(pool));
}

TEST(IndexPool, ReusesIndexesInTheOrderOfFreeing) {
    const uint32_t pool = NewPool(5, 7);
    TakeAll(pool);
    KIVO_FreeTableIndex(pool, 6);
    KIVO_FreeTableIndex(pool, 5);
    EXPECT_EQ((U32{6, 5}), TakeAll(pool));
}

TEST(IndexPool, LetsAFreedIndexRestBehindAllFreeOnes) {
    const uint32_t pool = NewPool(1, 4);
    EXPECT_EQ(1u, KIVO_AllocTableIndex(pool));
    KIVO_FreeTableIndex(pool, 1);
    EXPECT_EQ(1u, KIVO_QueryTableIndexHeadSuffix(pool));
    EXPECT_EQ((U32{2, 3, 4, 1}), TakeAll(pool));
}

TEST(IndexPool, IgnoresAFreeWhileNothingIsHandedOut) {
    const uint32_t pool = NewPool(5, 7);
    KIVO_FreeTableIndex(pool, 6);
    EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    EXPECT_EQ((U32{5, 6, 7}), TakeAll(pool));
}

TEST(IndexPool, HandsOutTwiceWhatWasFreedTwice) {
    const uint32_t pool = NewPool(5, 7);
    TakeAll(pool);
    KIVO_FreeTableIndex(pool, 6);
    KIVO_FreeTableIndex(pool, 6);
    EXPECT_EQ((U32{6, 6}), TakeAll(pool));
}

TEST(IndexPool, IsBlockedByAFreedIndexOutsideItsRangeAndChangesNothing) {
    const uint32_t pool = NewPool(5, 7);
    for (const uint32_t stranger : {4U, 8U, NONE}) {
        TakeAll(pool);
        KIVO_FreeTableIndex(pool, stranger);
        const auto state = State(pool);
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(pool));
        EXPECT_EQ(state, State(pool));
        EXPECT_EQ(stranger, KIVO_QueryTableIndexHeadValue(pool));
        /* Clear the way for the next one. */
        g_stTableIndex[pool].pullSlots[KIVO_QueryTableIndexHeadSuffix(pool)] = 5;
    }
}

TEST(IndexPool, LooksAtTheLowHalfOfASlotOnly) {
    const uint32_t pool = NewPool(5, 7);
    g_stTableIndex[pool].pullSlots[0] = 0x1234567800000006;
    EXPECT_EQ(6u, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(6u, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(0x00000000FFFFFFFFu, g_stTableIndex[pool].pullSlots[0]);
}

TEST(IndexPool, CountsTheIndexThatReadsAsNone) {
    const uint32_t pool = NewPool(0xFFFFFFFE, 0xFFFFFFFF);
    EXPECT_EQ(0xFFFFFFFEu, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(2u, KIVO_QueryTableIndexUsedNum(pool));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_AllocTableIndex(pool));
    EXPECT_EQ(2u, KIVO_QueryTableIndexUsedNum(pool));
}

TEST(IndexPool, UsesNoMemoryAfterItsCreation) {
    const uint32_t pool = NewPool(0, 99);
    kit::Recorder recorder;
    TakeAll(pool);
    for (uint32_t index = 0; index < 100; ++index)
        KIVO_FreeTableIndex(pool, index);
    EXPECT_EQ(std::vector<std::string>{}, recorder.Calls());
}

TEST(IndexPool, IsIndependentOfItsNeighbours) {
    const uint32_t first = NewPool(0, 3);
    const uint32_t second = NewPool(0, 3);
    TakeAll(first);
    KIVO_FreeTableIndex(first, 2);
    EXPECT_EQ(StateIs(0, 0, 0), State(second));
    EXPECT_EQ((U32{0, 1, 2, 3}), TakeAll(second));
    EXPECT_EQ(U32{2}, TakeAll(first));
}

/* Setting the head: taking chosen indexes. */

TEST(IndexPoolHead, ContinuesBehindTheIndexesTaken) {
    const uint32_t pool = NewPool(0, 9);
    for (const uint32_t index : {0U, 1U, 2U})
        EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, index));
    EXPECT_EQ(StateIs(3, 0, 3), State(pool));
    EXPECT_EQ(Counting(3, 7), TakeAll(pool));
}

TEST(IndexPoolHead, GoesPastTheIndexesBetween) {
    const uint32_t pool = NewPool(0, 5);
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 1));
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 3));
    EXPECT_EQ(StateIs(4, 0, 2), State(pool));
    EXPECT_EQ((U32{4, 5, 0}), TakeAll(pool)); // then the taken slot of 1
    EXPECT_EQ(StateIs(1, 0, 5), State(pool));
}

TEST(IndexPoolHead, WrapsBehindTheLastIndex) {
    const uint32_t pool = NewPool(0, 5);
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 5));
    EXPECT_EQ(StateIs(0, 0, 1), State(pool));
    EXPECT_EQ((U32{0, 1, 2, 3, 4}), TakeAll(pool));
}

TEST(IndexPoolHead, MarksTheSlotTaken) {
    const uint32_t pool = NewPool(0, 2);
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 1));
    EXPECT_EQ(0u, g_stTableIndex[pool].pullSlots[0]);
    EXPECT_EQ(0x00000000FFFFFFFFu, g_stTableIndex[pool].pullSlots[1]);
    EXPECT_EQ(2u, g_stTableIndex[pool].pullSlots[2]);
}

TEST(IndexPoolHead, RefusesAnIndexOutsideTheRange) {
    const uint32_t pool = NewPool(0, 5);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 6));
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, NONE));
    EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    EXPECT_EQ(Counting(0, 6), TakeAll(pool));
}

TEST(IndexPoolHead, RefusesWhenAllAreInUse) {
    const uint32_t pool = NewPool(0, 2);
    TakeAll(pool);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 1));
    EXPECT_EQ(StateIs(0, 0, 3), State(pool));
}

TEST(IndexPoolHead, CountsAnIndexTakenTwiceTwice) {
    const uint32_t pool = NewPool(0, 2);
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 0));
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 0));
    EXPECT_EQ(StateIs(1, 0, 2), State(pool));
}

TEST(IndexPoolHead, TakesTheIndexForThePositionInAPoolWhoseMinIsNotZero) {
    const uint32_t pool = NewPool(2, 7); // six slots: 2 3 4 5 6 7
    EXPECT_EQ(0u, KIVO_SetTableHeadByIndex(pool, 3));
    EXPECT_EQ(StateIs(4, 0, 1), State(pool));
    EXPECT_EQ((U32{6, 7, 2, 3, 4}), TakeAll(pool)); // then the slot of 5, which was marked
}

TEST(IndexPoolHead, RefusesAPositionOutsideTheRing) {
    const uint32_t pool = NewPool(2, 7);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 1)); // inside the ring, outside the range
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 6));
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 7));
    EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    const uint32_t high = NewPool(1000000, 1000001);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(high, 1000000));
    EXPECT_EQ(Counting(2, 6), TakeAll(pool));
    EXPECT_EQ(Counting(1000000, 2), TakeAll(high));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

/* Setting the tail and smoothing: rebuilding a pool from its free indexes. */

TEST(IndexPoolTail, IsWrittenAndMovedOnWithoutCounting) {
    const uint32_t pool = NewPool(5, 7);
    KIVO_SetTableTailByIndex(pool, 7);
    EXPECT_EQ(StateIs(0, 1, 0), State(pool));
    EXPECT_EQ(7u, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(6u, KIVO_QueryTableIndexTailValue(pool));
}

TEST(IndexPoolTail, WrapsBehindTheLastSlot) {
    const uint32_t pool = NewPool(5, 7);
    for (const uint32_t index : {7U, 6U, 5U})
        KIVO_SetTableTailByIndex(pool, index);
    EXPECT_EQ(StateIs(0, 0, 0), State(pool));
    EXPECT_EQ((U32{7, 6, 5}), TakeAll(pool));
}

TEST(IndexPoolTail, TakesAnyIndex) {
    const uint32_t pool = NewPool(5, 7);
    KIVO_SetTableTailByIndex(pool, 6);
    KIVO_SetTableTailByIndex(pool, 12345);
    EXPECT_EQ(U32{6}, TakeAll(pool));
    EXPECT_EQ(12345u, KIVO_QueryTableIndexHeadValue(pool));
}

TEST(IndexPoolTail, MovesEvenWhenAllAreInUse) {
    const uint32_t pool = NewPool(5, 7);
    TakeAll(pool);
    KIVO_SetTableTailByIndex(pool, 6);
    EXPECT_EQ(StateIs(0, 1, 3), State(pool));
    EXPECT_EQ(NONE, KIVO_AllocTableIndex(pool)); // still counted as in use
    EXPECT_EQ(6u, KIVO_QueryTableIndexHeadValue(pool));
}

TEST(IndexPoolSmoothing, LeavesExactlyTheIndexesWrittenInTheirOrder) {
    const uint32_t pool = NewPool(10, 19);
    for (const uint32_t index : {17U, 11U, 14U})
        KIVO_SetTableTailByIndex(pool, index);
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(pool));
    EXPECT_EQ(StateIs(0, 3, 0), State(pool));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexTailValue(pool));
    EXPECT_EQ((U32{17, 11, 14}), TakeAll(pool));
    EXPECT_EQ(StateIs(3, 3, 3), State(pool)); // exhausted by the mark, not by the count
}

TEST(IndexPoolSmoothing, MarksEverySlotFromTheTailToTheEnd) {
    const uint32_t pool = NewPool(0, 3);
    KIVO_SetTableTailByIndex(pool, 3);
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(pool));
    const uint64_t *slots = g_stTableIndex[pool].pullSlots;
    EXPECT_EQ((std::vector<uint64_t>{3, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}), std::vector<uint64_t>(slots, slots + 4));
}

TEST(IndexPoolSmoothing, StartsAtPositionZeroAgainAndKeepsTheUsedCount) {
    const uint32_t pool = NewPool(0, 5);
    for (const uint32_t index : {0U, 1U, 2U, 3U})
        EXPECT_EQ(index, KIVO_AllocTableIndex(pool));
    KIVO_FreeTableIndex(pool, 2);
    EXPECT_EQ(StateIs(4, 1, 3), State(pool));
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(pool));
    EXPECT_EQ(StateIs(0, 1, 3), State(pool));
    EXPECT_EQ(U32{2}, TakeAll(pool));
    EXPECT_EQ(StateIs(1, 1, 4), State(pool));
}

TEST(IndexPoolSmoothing, ChangesNothingWithTheTailAtZero) {
    const uint32_t pool = NewPool(0, 3);
    KIVO_AllocTableIndex(pool);
    KIVO_AllocTableIndex(pool);
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(pool));
    EXPECT_EQ(StateIs(2, 0, 2), State(pool));
    EXPECT_EQ((U32{2, 3}), TakeAll(pool));
}

TEST(IndexPoolSmoothing, MarksNothingWithATailOutsideTheRing) {
    const uint32_t pool = NewPool(0, 3);
    KIVO_AllocTableIndex(pool);
    g_stTableIndex[pool].ulTail = 4;
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(pool));
    g_stTableIndex[pool].ulTail = 0;
    EXPECT_EQ(StateIs(0, 0, 1), State(pool));
    EXPECT_EQ(3u, g_stTableIndex[pool].pullSlots[3]);
}

/* Ids that were not given out, and records that were damaged. */

TEST(IndexPoolId, AboveTheCapacityIsRefused) {
    NewPool(0, 3);
    for (const uint32_t id : {g_ulTotalTableNum, g_ulTotalTableNum + 1, NONE}) {
        EXPECT_EQ(NONE, KIVO_AllocTableIndex(id));
        KIVO_FreeTableIndex(id, 1);
        EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadValue(id));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexTailValue(id));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadSuffix(id));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexTailSuffix(id));
        EXPECT_EQ(NONE, KIVO_QueryTableIndexUsedNum(id));
        EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    }
}

TEST(IndexPoolId, AboveTheCapacityIsAssertedByTheSettersAndSmoothing) {
    NewPool(0, 3);
    for (const uint32_t id : {g_ulTotalTableNum, NONE}) {
        EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(id, 1));
        EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
        KIVO_SetTableTailByIndex(id, 1);
        EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
        EXPECT_EQ(1u, KIVO_SmoothTableIndex(id));
        EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    }
}

TEST(IndexPoolId, NotGivenOutYetMeetsAnEmptyRecordThatNothingChanges) {
    uint32_t last = NewPool(0, 3);
    if (last == g_ulTotalTableNum - 1)
        last = NewPool(0, 3);
    const uint32_t id = last + 1;
    EXPECT_EQ(NONE, KIVO_AllocTableIndex(id));
    KIVO_FreeTableIndex(id, 0);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(id, 0));
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(id, 1));
    KIVO_SetTableTailByIndex(id, 0);
    EXPECT_EQ(0u, KIVO_SmoothTableIndex(id));
    EXPECT_EQ(StateIs(0, 0, 0), State(id));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadValue(id));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexTailValue(id));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    EXPECT_TRUE(RecordIsZero(id));
    EXPECT_EQ(id, NewPool(4, 4));
    EXPECT_EQ(U32{4}, TakeAll(id));
}

TEST(IndexPoolQueries, GiveNoneForPositionsAndCountsThatCannotBe) {
    const uint32_t pool = NewPool(5, 7);
    KIVO_TABLE_INDEX_S &record = g_stTableIndex[pool];
    record.ulHead = 3;
    record.ulTail = 4;
    record.ulUsed = 4;
    EXPECT_EQ(NONE, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(NONE, KIVO_QueryTableIndexTailValue(pool));
    EXPECT_EQ(StateIs(NONE, NONE, NONE), State(pool));
    record.ulHead = 2;
    record.ulTail = 1;
    record.ulUsed = 3;
    EXPECT_EQ(7u, KIVO_QueryTableIndexHeadValue(pool));
    EXPECT_EQ(6u, KIVO_QueryTableIndexTailValue(pool));
    EXPECT_EQ(StateIs(2, 1, 3), State(pool));
}

TEST(IndexPoolQueries, MakeUsedCountsThatCannotBeRefuseEverything) {
    const uint32_t pool = NewPool(0, 2);
    g_stTableIndex[pool].ulUsed = 4;
    EXPECT_EQ(NONE, KIVO_AllocTableIndex(pool));
    KIVO_FreeTableIndex(pool, 1);
    EXPECT_EQ(1u, KIVO_SetTableHeadByIndex(pool, 1));
    EXPECT_EQ(4u, g_stTableIndex[pool].ulUsed);
    EXPECT_EQ(0u, g_stTableIndex[pool].ulTail);
}

/* Random operations against a queue of the free indexes. */

struct Model {
    uint32_t min;
    uint32_t max;
    std::deque<uint32_t> free;
    uint32_t used = 0;

    Model(uint32_t low, uint32_t high) : min(low), max(high) {
        for (uint64_t index = low; index <= high; ++index)
            free.push_back(static_cast<uint32_t>(index));
    }

    uint32_t Alloc() {
        if (free.empty() || free.front() < min || free.front() > max)
            return NONE;
        const uint32_t index = free.front();
        free.pop_front();
        ++used;
        return index;
    }

    void Free(uint32_t index) {
        if (used == 0)
            return;
        free.push_back(index);
        --used;
    }
};

TEST(IndexPoolRandom, AgreesWithAQueueOfFreeIndexes) {
    const uint32_t seed = 35;
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const uint32_t min = static_cast<uint32_t>(random() % 3 == 0 ? 0 : random() % 0xF0000000);
        Model model(min, min + static_cast<uint32_t>(random() % 20));
        const uint32_t pool = NewPool(model.min, model.max);
        for (int step = 0; step < 400; ++step) {
            const uint32_t bias = static_cast<uint32_t>(step / 50 % 2); // filling, then draining
            if (random() % 3 != bias) {
                ASSERT_EQ(model.Alloc(), KIVO_AllocTableIndex(pool)) << "seed " << seed << ", round " << round;
            } else {
                /* Any index of the range, in use or not; now and then one outside. */
                uint32_t index = model.min + static_cast<uint32_t>(random() % (model.max - model.min + 1));
                if (random() % 500 == 0)
                    index = model.max + 1;
                model.Free(index);
                KIVO_FreeTableIndex(pool, index);
            }
            ASSERT_EQ(model.used, KIVO_QueryTableIndexUsedNum(pool));
            ASSERT_EQ(model.free.empty() ? NONE : model.free.front(), KIVO_QueryTableIndexHeadValue(pool));
        }
    }
}

TEST(IndexPoolRandom, RebuiltFromItsFreeIndexesBehavesLikeTheOriginal) {
    const uint32_t seed = 53;
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const uint32_t count = 2 + static_cast<uint32_t>(random() % 30);
        U32 free = Counting(100, count);
        std::shuffle(free.begin(), free.end(), random);
        free.resize(1 + random() % count);
        const uint32_t pool = NewPool(100, 100 + count - 1);
        for (const uint32_t index : free)
            KIVO_SetTableTailByIndex(pool, index);
        ASSERT_EQ(0u, KIVO_SmoothTableIndex(pool));
        ASSERT_EQ(free, TakeAll(pool)) << "seed " << seed << ", round " << round;
    }
}

TEST(IndexPoolRandom, RebuiltFromItsIndexesInUseHandsOutTheOnesBehindThem) {
    for (uint32_t inUse = 1; inUse < 20; ++inUse) {
        const uint32_t pool = NewPool(0, 19);
        for (uint32_t index = 0; index < inUse; ++index)
            ASSERT_EQ(0u, KIVO_SetTableHeadByIndex(pool, index));
        ASSERT_EQ(Counting(inUse, 20 - inUse), TakeAll(pool));
        /* And those in use can be given back one by one. */
        for (uint32_t index = 0; index < 20; ++index)
            KIVO_FreeTableIndex(pool, index);
        ASSERT_EQ(Counting(0, 20), TakeAll(pool));
    }
}

} // namespace
