// Removal from the ordered table, and where it leaves the cursor.

#include "ordered_tables.h"

namespace {

using namespace ordered_tables;

class OrderedTableRemoval : public Table {};

TEST_F(OrderedTableRemoval, TakesTheFirstAMiddleAndTheLastElement) {
    Fill({10, 20, 30, 40, 50});
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(0)));
    EXPECT_EQ((U32{20, 30, 40, 50}), Ids());
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(1)));
    EXPECT_EQ((U32{20, 40, 50}), Ids());
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(2)));
    EXPECT_EQ((U32{20, 40}), Ids());
    EXPECT_EQ(Make(20), *At(0));
    EXPECT_EQ(Make(40), *At(1));
}

TEST_F(OrderedTableRemoval, LeavesAnArrayThatFitsExactly) {
    Fill({10, 20, 30});
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(1)));
    EXPECT_EQ(2u * 12, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_EQ(before + 2, kit::LiveBlocks());
}

TEST_F(OrderedTableRemoval, OfTheOnlyElementReleasesTheArrayAndNeedsNoMemory) {
    for (const uint32_t cursor : {0u, 1u, 5u, NONE}) {
        Fill({10});
        tbl->ulCursor = cursor;
        kit::Op<QAL_MemAlloc_F>().FailsFrom(1);
        EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(0)));
        kit::Op<QAL_MemAlloc_F>().FailsOn(0);
        EXPECT_EQ(nullptr, tbl->pElmts);
        EXPECT_EQ(0u, SRVOT_GetCount(tbl));
        EXPECT_EQ(NONE, Cursor());
        EXPECT_EQ(before + 1, kit::LiveBlocks());
    }
}

TEST_F(OrderedTableRemoval, RefusesWhatIsNoElementOfTheTable) {
    Fill({10, 20, 30});
    const Session *array = At(0);
    const auto *bytes = reinterpret_cast<const uint8_t *>(array);
    const auto refused = [this](const void *place) { return SRVOT_RemoveNode(tbl, place) == 5; };
    EXPECT_TRUE(refused(nullptr));
    EXPECT_TRUE(refused(bytes + 1));
    EXPECT_TRUE(refused(bytes + 11));
    EXPECT_TRUE(refused(bytes + 35));
    EXPECT_TRUE(refused(array - 1));
    EXPECT_TRUE(refused(array + 3));
    EXPECT_TRUE(refused(array + 4));
    EXPECT_TRUE(refused(bytes - 1));
    EXPECT_TRUE(refused(tbl));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(5u, SRVOT_RemoveNode(nullptr, array));
    EXPECT_EQ(5u, SRVOT_RemoveNode(nullptr, nullptr));
}

TEST_F(OrderedTableRemoval, LooksAtAllBitsOfAnAddress) {
    Fill({10, 20, 30});
    const uintptr_t second = reinterpret_cast<uintptr_t>(At(1));
    for (const uintptr_t apart : {uintptr_t{1} << 32, uintptr_t{3} << 32, uintptr_t{1} << 46}) {
        EXPECT_EQ(5u, SRVOT_RemoveNode(tbl, reinterpret_cast<void *>(second + apart)));
        EXPECT_EQ(5u, SRVOT_RemoveNode(tbl, reinterpret_cast<void *>(second - apart)));
    }
    EXPECT_EQ((U32{10, 20, 30}), Ids());
}

TEST_F(OrderedTableRemoval, RefusesEverythingWhenTheTableIsEmpty) {
    const Session session = Make(1);
    EXPECT_EQ(5u, SRVOT_RemoveNode(tbl, &session));
    EXPECT_EQ(5u, SRVOT_RemoveNode(tbl, tbl));
    EXPECT_EQ(5u, RemoveByKey(1));
    EXPECT_EQ(5u, SRVOT_RemoveCurrElmt(tbl));
    EXPECT_EQ(NONE, Cursor());
}

/* Cursor of a table of four elements before and after one of them is removed. */
struct CursorRow {
    uint32_t before;
    uint32_t removed;
    uint32_t after;
};

TEST_F(OrderedTableRemoval, MovesTheCursorBackFromTheRemovedElementOnAndNotBeforeIt) {
    const CursorRow rows[] = {
        {0, 0, NONE}, {0, 1, 0}, {0, 2, 0}, {0, 3, 0}, // on the first
        {1, 0, 0},    {1, 1, 0}, {1, 2, 1}, {1, 3, 1}, {2, 0, 1}, {2, 1, 1},
        {2, 2, 1},    {2, 3, 2}, {3, 0, 2}, {3, 1, 2}, {3, 2, 2}, {3, 3, 2}, // on the last
        {4, 0, 3},    {4, 1, 3}, {4, 2, 3}, {4, 3, 3},                       // past the end, and past the end of three
    };
    for (const CursorRow &row : rows) {
        Fill({10, 20, 30, 40});
        tbl->ulCursor = row.before;
        EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(row.removed)));
        EXPECT_EQ(row.after, Cursor()) << "cursor " << row.before << ", removed " << row.removed;
    }
}

TEST_F(OrderedTableRemoval, PutsACursorBeforeTheFirstElementPastTheEnd) {
    for (uint32_t removed = 0; removed < 3; ++removed) {
        Fill({10, 20, 30});
        EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(removed)));
        EXPECT_EQ(0xFFFFFFFEu, Cursor());
        EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
        EXPECT_EQ(2u, Cursor());
    }
}

TEST_F(OrderedTableRemoval, ComparesPlacesInThirtyTwoBits) {
    /* 0x15555556 times 12 is 2^32 + 8: the position of a cursor far past the end lies before the second element. */
    Fill({10, 20, 30});
    tbl->ulCursor = 0x15555556;
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(1)));
    EXPECT_EQ(0x15555556u, Cursor());
    EXPECT_EQ(0u, SRVOT_RemoveNode(tbl, At(0)));
    EXPECT_EQ(0x15555555u, Cursor());
}

TEST_F(OrderedTableRemoval, ByKeyTakesTheElementThatMatches) {
    Fill({10, 20, 30});
    EXPECT_EQ(0u, RemoveByKey(20));
    EXPECT_EQ((U32{10, 30}), Ids());
    EXPECT_EQ(0u, RemoveByKey(30));
    EXPECT_EQ(0u, RemoveByKey(10));
    EXPECT_EQ(nullptr, tbl->pElmts);
}

TEST_F(OrderedTableRemoval, ByKeyLeavesTheCursorOnTheElementBefore) {
    Fill({10, 20, 30});
    Find(10);
    EXPECT_EQ(0u, RemoveByKey(30));
    EXPECT_EQ(1u, Cursor());
    EXPECT_EQ(0u, RemoveByKey(10));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(20u, IdOf(SRVOT_GetNextElmt(tbl)));
}

TEST_F(OrderedTableRemoval, ByAMissingKeyChangesNothing) {
    Fill({10, 20, 30});
    Find(20);
    for (const uint32_t id : {5u, 15u, 35u})
        EXPECT_EQ(5u, RemoveByKey(id));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(1u, Cursor());
    const uint32_t key = 10;
    EXPECT_EQ(5u, SRVOT_RemoveElmtByKey(nullptr, &key));
}

TEST_F(OrderedTableRemoval, OfTheCurrentElementContinuesWithItsSuccessor) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(0u, SRVOT_RemoveCurrElmt(tbl));
    EXPECT_EQ((U32{10, 30}), Ids());
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(30u, IdOf(SRVOT_GetNextElmt(tbl)));
}

TEST_F(OrderedTableRemoval, OfTheFirstElementContinuesWithTheNewFirst) {
    Fill({10, 20, 30});
    SRVOT_GetFirstElmt(tbl);
    EXPECT_EQ(0u, SRVOT_RemoveCurrElmt(tbl));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(20u, IdOf(SRVOT_GetNextElmt(tbl)));
}

TEST_F(OrderedTableRemoval, OfTheLastElementEndsAWalk) {
    Fill({10, 20});
    SRVOT_GetLastElmt(tbl);
    EXPECT_EQ(0u, SRVOT_RemoveCurrElmt(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
}

TEST_F(OrderedTableRemoval, NeedsACurrentElementToRemoveIt) {
    Fill({10, 20});
    for (const uint32_t nowhere : {2u, 0xFFFFFFFEu, NONE}) {
        tbl->ulCursor = nowhere;
        EXPECT_EQ(5u, SRVOT_RemoveCurrElmt(tbl));
        EXPECT_EQ(nowhere, Cursor());
    }
    EXPECT_EQ((U32{10, 20}), Ids());
    EXPECT_EQ(5u, SRVOT_RemoveCurrElmt(nullptr));
}

TEST_F(OrderedTableRemoval, WhileWalkingVisitsEveryElementOnce) {
    /* Every subset of eight elements is removed on the way. */
    for (uint32_t subset = 0; subset < 256; ++subset) {
        Fill({1, 2, 3, 4, 5, 6, 7, 8});
        U32 visited;
        U32 kept;
        for (void *p = SRVOT_GetFirstElmt(tbl); p != nullptr; p = SRVOT_GetNextElmt(tbl)) {
            const uint32_t id = IdOf(p);
            visited.push_back(id);
            if ((subset >> (id - 1) & 1) != 0)
                ASSERT_EQ(0u, SRVOT_RemoveCurrElmt(tbl));
            else
                kept.push_back(id);
        }
        ASSERT_EQ((U32{1, 2, 3, 4, 5, 6, 7, 8}), visited);
        ASSERT_EQ(kept, Ids());
    }
}

TEST_F(OrderedTableRemoval, LeavesTheTableAsItWasWhenThereIsNoMemory) {
    Fill({10, 20, 30});
    Find(30);
    const void *array = tbl->pElmts;
    kit::Op<QAL_MemAlloc_F>().FailsFrom(1);
    EXPECT_EQ(2u, SRVOT_RemoveNode(tbl, At(0)));
    EXPECT_EQ(2u, RemoveByKey(10));
    EXPECT_EQ(2u, SRVOT_RemoveCurrElmt(tbl));
    kit::Op<QAL_MemAlloc_F>().FailsOn(0);
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(array, tbl->pElmts);
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(0u, SRVOT_RemoveCurrElmt(tbl));
    EXPECT_EQ((U32{10, 20}), Ids());
}

TEST_F(OrderedTableRemoval, OfAllElementsKeepsTheTable) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(0u, SRVOT_RemoveAllElmt(tbl));
    EXPECT_EQ(0u, SRVOT_GetCount(tbl));
    EXPECT_EQ(nullptr, tbl->pElmts);
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(before + 1, kit::LiveBlocks());
    EXPECT_EQ(0u, Add(tbl, 7));
    EXPECT_EQ(U32{7}, Ids());
}

TEST_F(OrderedTableRemoval, OfAllElementsLeavesAnEmptyTableAloneWithItsCursor) {
    SRVOT_GetNextElmt(tbl);
    EXPECT_EQ(0u, SRVOT_RemoveAllElmt(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(0u, kit::Op<QAL_MemFree_F>().Calls());
    EXPECT_EQ(1u, SRVOT_RemoveAllElmt(nullptr));
}

} // namespace
