// The ordered table: its life, insertion, look-up and the moves of its cursor.

#include "ordered_tables.h"
#include "sorted_model.h"

namespace {

using namespace ordered_tables;

class OrderedTable : public Table {};

/* ---- creation and destruction */

TEST_F(OrderedTable, BeginsEmptyWithTheCursorBeforeTheFirstElement) {
    SRVOT_TBL_S *table = SRVOT_CreateNew(7, 16, 9, ById);
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(7u, table->ulMid);
    EXPECT_EQ(16u, table->ulElmtSize);
    EXPECT_EQ(0u, table->ulCount);
    EXPECT_EQ(9u, table->ulSpec);
    EXPECT_EQ(NONE, table->ulCursor);
    EXPECT_EQ(&ById, table->pfCompare);
    EXPECT_EQ(nullptr, table->pElmts);
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
}

TEST_F(OrderedTable, TakesOneBlockForItsHeaderAndSaysWhoAllocates) {
    const uint64_t calls = kit::Op<QAL_MemAlloc_F>().Calls();
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Session), 9, ById);
    EXPECT_EQ(calls + 1, kit::Op<QAL_MemAlloc_F>().Calls());
    EXPECT_EQ(40u, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_NE(0u, std::get<4>(kit::Op<QAL_MemAlloc_F>().Last()));
    SRVOT_DeleteOTbl(&table);
}

TEST_F(OrderedTable, IsNotCreatedWithoutMemory) {
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(nullptr, SRVOT_CreateNew(MODULE, sizeof(Session), 9, ById));
}

TEST_F(OrderedTable, IsCreatedFromAnyArguments) {
    SRVOT_TBL_S *table = SRVOT_CreateNew(0, 0, 0, nullptr);
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
}

TEST_F(OrderedTable, IsGoneAfterItsDeletionWithArrayAndHeader) {
    Fill({1, 2, 3});
    EXPECT_EQ(before + 2, kit::LiveBlocks());
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&tbl));
    EXPECT_EQ(nullptr, tbl);
    EXPECT_EQ(before, kit::LiveBlocks());
}

TEST_F(OrderedTable, ThatIsEmptyHasOnlyAHeaderToRelease) {
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&tbl));
    EXPECT_EQ(nullptr, tbl);
    EXPECT_EQ(1u, kit::Op<QAL_MemFree_F>().Calls());
}

TEST_F(OrderedTable, IsNotDeletedTwice) {
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&tbl));
    EXPECT_EQ(1u, SRVOT_DeleteOTbl(&tbl));
    EXPECT_EQ(1u, SRVOT_DeleteOTbl(nullptr));
}

/* ---- insertion */

TEST_F(OrderedTable, PutsTheFirstElementAtIndexZero) {
    EXPECT_EQ(0u, Add(tbl, 20));
    EXPECT_EQ(U32{20}, Ids());
    EXPECT_EQ(0u, Cursor());
}

TEST_F(OrderedTable, PutsAnElementBeforeAllBetweenAndBehindAll) {
    Fill({20, 40});
    EXPECT_EQ(0u, Add(tbl, 10));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(0u, Add(tbl, 30));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(0u, Add(tbl, 50));
    EXPECT_EQ(4u, Cursor());
    EXPECT_EQ((U32{10, 20, 30, 40, 50}), Ids());
    EXPECT_EQ(5u, SRVOT_GetCount(tbl));
}

TEST_F(OrderedTable, IsInOrderWhateverTheOrderOfInsertion) {
    U32 order = {1, 2, 3, 4, 5, 6};
    do {
        Fill(order);
        ASSERT_EQ((U32{1, 2, 3, 4, 5, 6}), Ids());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(OrderedTable, CopiesAllBytesOfAnElementAndNoMore) {
    struct {
        Session session;
        uint32_t behind;
    } data = {Make(5), 0xDEADBEEF};
    const uint32_t key = 5;
    Fill({1, 9});
    EXPECT_EQ(0u, SRVOT_AddElmt(tbl, &key, &data));
    EXPECT_EQ(Make(1), *At(0));
    EXPECT_EQ(Make(5), *At(1));
    EXPECT_EQ(Make(9), *At(2));
}

TEST_F(OrderedTable, AcceptsAnElementThatLiesInTheTable) {
    Fill({1, 3});
    const uint32_t key = 2;
    EXPECT_EQ(0u, SRVOT_AddElmt(tbl, &key, At(1)));
    EXPECT_EQ((U32{1, 3, 3}), Ids());
}

TEST_F(OrderedTable, PlacesAnElementByTheKeyNotByItsData) {
    Fill({10, 30});
    const uint32_t key = 20;
    const Session data = Make(99);
    EXPECT_EQ(0u, SRVOT_AddElmt(tbl, &key, &data));
    EXPECT_EQ((U32{10, 99, 30}), Ids());
}

TEST_F(OrderedTable, IsFittedExactlyAfterEveryInsertion) {
    for (uint32_t count = 1; count <= 20; ++count) {
        ASSERT_EQ(0u, Add(tbl, count));
        EXPECT_EQ(count * 12, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
        EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
        EXPECT_EQ(before + 2, kit::LiveBlocks());
    }
    EXPECT_EQ(1u + 20, kit::Op<QAL_MemAlloc_F>().Calls());
}

TEST_F(OrderedTable, RefusesAKeyThatIsThereAlready) {
    Fill({10, 20, 30});
    const Session other = {20, 1, {9, 9, 9, 9}};
    EXPECT_EQ(4u, SRVOT_AddElmt(tbl, &other.id, &other));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(Make(20), *At(1));
    EXPECT_EQ(1u, Cursor());
}

TEST_F(OrderedTable, TellsAKeyThatIsThereFromAFullTable) {
    Fill(3, {10, 20, 30});
    EXPECT_EQ(4u, Add(tbl, 10));
    EXPECT_EQ(4u, Add(tbl, 30));
    EXPECT_EQ(3u, Add(tbl, 40));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
}

TEST_F(OrderedTable, LeavesTheCursorAtTheRefusedPlaceWhenItIsFull) {
    Fill(3, {10, 20, 30});
    EXPECT_EQ(3u, Add(tbl, 5));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(3u, Add(tbl, 25));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(3u, Add(tbl, 35));
    EXPECT_EQ(3u, Cursor());
}

TEST_F(OrderedTable, OfSpecificationZeroRefusesEveryElement) {
    Fill(0, {});
    EXPECT_EQ(3u, Add(tbl, 1));
    EXPECT_EQ(3u, Add(tbl, 1));
    EXPECT_EQ(0u, SRVOT_GetCount(tbl));
    EXPECT_EQ(nullptr, tbl->pElmts);
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(OrderedTable, TakesAsManyElementsAsItsSpecification) {
    Fill(2, {});
    EXPECT_EQ(0u, Add(tbl, 1));
    EXPECT_EQ(0u, Add(tbl, 2));
    EXPECT_EQ(3u, Add(tbl, 3));
    EXPECT_EQ(0u, RemoveByKey(1));
    EXPECT_EQ(0u, Add(tbl, 3));
    EXPECT_EQ((U32{2, 3}), Ids());
}

TEST_F(OrderedTable, RefusesToInsertNothingOrIntoNothing) {
    const Session session = Make(1);
    EXPECT_EQ(1u, SRVOT_AddElmt(nullptr, &session.id, &session));
    EXPECT_EQ(1u, SRVOT_AddElmt(tbl, &session.id, nullptr));
    EXPECT_EQ(1u, SRVOT_AddElmt(nullptr, nullptr, nullptr));
    EXPECT_EQ(0u, SRVOT_GetCount(tbl));
}

TEST_F(OrderedTable, IsAsItWasWhenThereIsNoMemoryForAnInsertion) {
    Fill({10, 20, 30});
    SRVOT_FindElmt(tbl, &At(2)->id);
    const void *array = tbl->pElmts;
    for (const uint32_t id : {5u, 15u, 35u}) {
        kit::Op<QAL_MemAlloc_F>().FailsOn(1);
        EXPECT_EQ(2u, Add(tbl, id));
        EXPECT_EQ((U32{10, 20, 30}), Ids());
        EXPECT_EQ(array, tbl->pElmts);
        EXPECT_EQ(2u, Cursor());
    }
    EXPECT_EQ(0u, Add(tbl, 5));
    EXPECT_EQ((U32{5, 10, 20, 30}), Ids());
}

TEST_F(OrderedTable, ThatIsEmptyStaysSoWhenThereIsNoMemory) {
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(2u, Add(tbl, 1));
    EXPECT_EQ(nullptr, tbl->pElmts);
    EXPECT_EQ(0u, SRVOT_GetCount(tbl));
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(OrderedTable, DoesNotGrowBeyondFourGigabytes) {
    uint8_t element = 0;
    SRVOT_TBL_S table = {MODULE, 0x80000000, 1, 5, NONE, [](const void *, const void *) { return -1; }, &element};
    EXPECT_EQ(2u, SRVOT_AddElmt(&table, &element, &element));
    EXPECT_EQ(1u, table.ulCount);
    EXPECT_EQ(NONE, table.ulCursor);
    EXPECT_EQ(1u, kit::Op<QAL_MemAlloc_F>().Calls()) << "only the fixture's";
}

/* ---- look-up */

TEST_F(OrderedTable, FindsEveryElementAndMakesItTheCurrentOne) {
    for (uint32_t count = 1; count <= 40; ++count) {
        U32 ids;
        for (uint32_t i = 0; i < count; ++i)
            ids.push_back(10 * i + 10);
        Fill(ids);
        for (uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(At(i), Find(ids[i]));
            ASSERT_EQ(i, Cursor());
        }
    }
}

TEST_F(OrderedTable, LeavesTheCursorWhenAKeyIsMissing) {
    Fill({10, 20, 30});
    Find(20);
    for (const uint32_t id : {5u, 15u, 25u, 35u}) {
        EXPECT_EQ(nullptr, Find(id));
        EXPECT_EQ(1u, Cursor());
    }
}

TEST_F(OrderedTable, FindsTheGreatestElementBelowAMissingKey) {
    Fill({10, 20, 30});
    EXPECT_EQ(At(0), FindProx(15));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(At(1), FindProx(25));
    EXPECT_EQ(1u, Cursor());
    EXPECT_EQ(At(2), FindProx(35));
    EXPECT_EQ(2u, Cursor());
}

TEST_F(OrderedTable, FindsTheFirstElementForAKeyBelowAll) {
    Fill({10, 20, 30});
    EXPECT_EQ(At(0), FindProx(5));
    EXPECT_EQ(0u, Cursor());
}

TEST_F(OrderedTable, FindsTheElementItselfByProximity) {
    Fill({10, 20, 30});
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(At(i), FindProx(10 * i + 10));
        EXPECT_EQ(i, Cursor());
    }
}

TEST_F(OrderedTable, FindsNothingInAnEmptyTable) {
    tbl->ulCursor = 17;
    EXPECT_EQ(nullptr, Find(1));
    EXPECT_EQ(nullptr, FindProx(1));
    EXPECT_EQ(17u, Cursor());
    const uint32_t key = 1;
    EXPECT_EQ(nullptr, SRVOT_FindElmt(nullptr, &key));
    EXPECT_EQ(nullptr, SRVOT_FindProxElmt(nullptr, &key));
}

U32 g_probes;

int32_t RecordProbe(const void *element, const void *key) {
    g_probes.push_back(static_cast<const Session *>(element)->id);
    return ById(element, key);
}

TEST_F(OrderedTable, LooksAtTheMiddleOfWhatIsLeft) {
    Fill({10, 20, 30, 40, 50, 60, 70});
    tbl->pfCompare = RecordProbe;
    const auto probes = [this](uint32_t id) {
        g_probes.clear();
        FindProx(id);
        return g_probes;
    };
    EXPECT_EQ((U32{40}), probes(40));
    EXPECT_EQ((U32{40, 20, 30}), probes(30));
    EXPECT_EQ((U32{40, 60, 70}), probes(70));
    EXPECT_EQ((U32{40, 60, 50}), probes(55));
    EXPECT_EQ((U32{40, 20, 10}), probes(5));
    EXPECT_EQ((U32{40, 20, 10}), probes(15));
}

TEST_F(OrderedTable, LooksAtTheSameElementsForEveryCountAndKey) {
    for (const uint32_t count : SearchedCounts(130)) {
        U32 ids;
        for (uint32_t i = 1; i <= count; ++i)
            ids.push_back(2 * i);
        Fill(count, ids);
        tbl->pfCompare = RecordProbe;
        for (uint32_t key = 1; key <= 2 * count + 1; ++key) {
            const bool there = key % 2 == 0;
            g_probes.clear();
            tbl->ulCursor = NONE;
            ASSERT_EQ(there ? At(key / 2 - 1) : nullptr, Find(key)) << "key " << key << " of " << count;
            ASSERT_EQ(there ? key / 2 - 1 : NONE, Cursor()) << "key " << key << " of " << count;
            ASSERT_EQ(ProbesOf(ids, key), g_probes) << "key " << key << " of " << count;
            g_probes.clear();
            FindProx(key);
            ASSERT_EQ(ProbesOf(ids, key), g_probes) << "key " << key << " of " << count;
        }
    }
}

const void *g_askedElement;
const void *g_askedKey;

TEST_F(OrderedTable, HandsTheComparisonTheElementFirstAndTheKeyAsItIs) {
    Fill({10});
    tbl->pfCompare = [](const void *element, const void *key) {
        g_askedElement = element;
        g_askedKey = key;
        return 1;
    };
    const uint32_t key = 3;
    SRVOT_FindElmt(tbl, &key);
    EXPECT_EQ(At(0), g_askedElement);
    EXPECT_EQ(&key, g_askedKey);
    SRVOT_FindProxElmt(tbl, nullptr);
    EXPECT_EQ(nullptr, g_askedKey);
}

TEST_F(OrderedTable, TakesAnySignForAnOrder) {
    Fill({10, 20, 30, 40, 50});
    tbl->pfCompare = [](const void *element, const void *key) {
        const int32_t order = ById(element, key);
        return order == 0 ? 0 : order > 0 ? INT32_MAX : INT32_MIN;
    };
    for (uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(At(i), Find(10 * i + 10));
    tbl->pfCompare = [](const void *element, const void *key) { return 2 * ById(element, key); };
    for (uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(At(i), Find(10 * i + 10));
}

/* ---- cursor */

TEST_F(OrderedTable, IsWalkedForwards) {
    Fill({10, 20, 30});
    EXPECT_EQ(10u, IdOf(SRVOT_GetFirstElmt(tbl)));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(20u, IdOf(SRVOT_GetNextElmt(tbl)));
    EXPECT_EQ(30u, IdOf(SRVOT_GetNextElmt(tbl)));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
    EXPECT_EQ(3u, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
    EXPECT_EQ(3u, Cursor());
}

TEST_F(OrderedTable, IsWalkedBackwards) {
    Fill({10, 20, 30});
    EXPECT_EQ(30u, IdOf(SRVOT_GetLastElmt(tbl)));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(20u, IdOf(SRVOT_GetPrevElmt(tbl)));
    EXPECT_EQ(10u, IdOf(SRVOT_GetPrevElmt(tbl)));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetPrevElmt(tbl));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetPrevElmt(tbl));
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(OrderedTable, GoesFromBeforeTheFirstElementToTheFirst) {
    Fill({10, 20});
    EXPECT_EQ(10u, IdOf(SRVOT_GetNextElmt(tbl)));
    EXPECT_EQ(0u, Cursor());
}

TEST_F(OrderedTable, DoesNotComeBackFromPastTheEnd) {
    Fill({10, 20});
    for (const uint32_t past : {2u, 3u, 0xFFFFFFFEu}) {
        tbl->ulCursor = past;
        EXPECT_EQ(nullptr, SRVOT_GetPrevElmt(tbl));
        EXPECT_EQ(past, Cursor());
        EXPECT_EQ(nullptr, SRVOT_GetCurrElmt(tbl));
        EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
        EXPECT_EQ(2u, Cursor());
    }
}

TEST_F(OrderedTable, MovesTheCursorOfAnEmptyTableToZeroByAStepForwardsOnly) {
    EXPECT_EQ(nullptr, SRVOT_GetFirstElmt(tbl));
    EXPECT_EQ(nullptr, SRVOT_GetLastElmt(tbl));
    EXPECT_EQ(nullptr, SRVOT_GetPrevElmt(tbl));
    EXPECT_EQ(nullptr, SRVOT_GetCurrElmt(tbl));
    EXPECT_EQ(nullptr, SRVOT_GetElmt(tbl, 0));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(tbl));
    EXPECT_EQ(0u, Cursor());
}

TEST_F(OrderedTable, TellsTheCurrentElementAndItsIndex) {
    Fill({10, 20, 30});
    EXPECT_EQ(NONE, SRVOT_GetCurrElmtIndex(tbl));
    EXPECT_EQ(nullptr, SRVOT_GetCurrElmt(tbl));
    Find(20);
    EXPECT_EQ(1u, SRVOT_GetCurrElmtIndex(tbl));
    EXPECT_EQ(At(1), SRVOT_GetCurrElmt(tbl));
}

TEST_F(OrderedTable, GivesTheElementAtAnIndexWithoutMovingTheCursor) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(At(0), SRVOT_GetElmt(tbl, 0));
    EXPECT_EQ(At(2), SRVOT_GetElmt(tbl, 2));
    EXPECT_EQ(nullptr, SRVOT_GetElmt(tbl, 3));
    EXPECT_EQ(nullptr, SRVOT_GetElmt(tbl, NONE));
    EXPECT_EQ(1u, Cursor());
}

TEST_F(OrderedTable, TellsItsCountSpecificationAndElementSize) {
    Fill(77, {1, 2});
    EXPECT_EQ(2u, SRVOT_GetCount(tbl));
    EXPECT_EQ(77u, SRVOT_GetTblSpec(tbl));
    EXPECT_EQ(12u, SRVOT_GetElmtSize(tbl));
}

TEST_F(OrderedTable, ThatIsNullHasNothing) {
    EXPECT_EQ(nullptr, SRVOT_GetFirstElmt(nullptr));
    EXPECT_EQ(nullptr, SRVOT_GetLastElmt(nullptr));
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(nullptr));
    EXPECT_EQ(nullptr, SRVOT_GetPrevElmt(nullptr));
    EXPECT_EQ(nullptr, SRVOT_GetCurrElmt(nullptr));
    EXPECT_EQ(nullptr, SRVOT_GetElmt(nullptr, 0));
    EXPECT_EQ(NONE, SRVOT_GetCurrElmtIndex(nullptr));
    EXPECT_EQ(0u, SRVOT_GetCount(nullptr));
    EXPECT_EQ(0u, SRVOT_GetTblSpec(nullptr));
    EXPECT_EQ(0u, SRVOT_GetElmtSize(nullptr));
}

} // namespace
