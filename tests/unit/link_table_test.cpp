// The sorted link table: its life, insertion, look-up and the moves of its cursor.

#include "link_tables.h"
#include "sorted_model.h"

#include <algorithm>
#include <sys/mman.h>

namespace {

using namespace link_tables;

class LinkTable : public Table {};

/* ---- creation and destruction */

TEST_F(LinkTable, BeginsEmptyWithTheCursorBeforeTheFirstLink) {
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(7, 9, ById);
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(7u, table->ulMid);
    EXPECT_EQ(0u, table->ulCount);
    EXPECT_EQ(9u, table->ulSpec);
    EXPECT_EQ(NONE, table->ulCursor);
    EXPECT_EQ(&ById, table->pfCompare);
    EXPECT_EQ(nullptr, table->ppLinks);
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
}

TEST_F(LinkTable, TakesOneBlockForItsHeaderAndSaysWhoAllocates) {
    const uint64_t calls = kit::Op<QAL_MemAlloc_F>().Calls();
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, 9, ById);
    EXPECT_EQ(calls + 1, kit::Op<QAL_MemAlloc_F>().Calls());
    EXPECT_EQ(32u, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_NE(0u, std::get<4>(kit::Op<QAL_MemAlloc_F>().Last()));
    SRVSTL_DeleteSTbl(&table, nullptr);
}

TEST_F(LinkTable, IsNotCreatedWithoutMemory) {
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(nullptr, SRVSTL_CreateNew(MODULE, 9, ById));
}

TEST_F(LinkTable, IsCreatedFromAnyArguments) {
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(0, 0, nullptr);
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
}

TEST_F(LinkTable, IsGoneAfterItsDeletionWithArrayAndHeader) {
    Fill({1, 2, 3});
    EXPECT_EQ(before + 2, kit::LiveBlocks());
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&tbl, nullptr));
    EXPECT_EQ(nullptr, tbl);
    EXPECT_EQ(before, kit::LiveBlocks());
}

TEST_F(LinkTable, IsNotDeletedTwice) {
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&tbl, nullptr));
    EXPECT_EQ(1u, SRVSTL_DeleteSTbl(&tbl, nullptr));
    EXPECT_EQ(1u, SRVSTL_DeleteSTbl(nullptr, nullptr));
}

/* ---- insertion */

TEST_F(LinkTable, PutsTheFirstLinkAtIndexZero) {
    EXPECT_EQ(0u, Set(20));
    EXPECT_EQ(U32{20}, Ids());
    EXPECT_EQ(0u, Cursor());
}

TEST_F(LinkTable, PutsALinkBeforeAllBetweenAndBehindAll) {
    Fill({20, 40});
    EXPECT_EQ(0u, Set(10));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(0u, Set(30));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(0u, Set(50));
    EXPECT_EQ(4u, Cursor());
    EXPECT_EQ((U32{10, 20, 30, 40, 50}), Ids());
    EXPECT_EQ(5u, SRVSTL_GetLinkCount(tbl));
}

TEST_F(LinkTable, IsInOrderWhateverTheOrderOfInsertion) {
    U32 order = {1, 2, 3, 4, 5, 6};
    do {
        Fill(order);
        ASSERT_EQ((U32{1, 2, 3, 4, 5, 6}), Ids());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(LinkTable, KeepsTheCallersRecordsNotCopies) {
    Fill({10, 20});
    EXPECT_EQ(Link(10), SRVSTL_GetLink(tbl, 0));
    EXPECT_EQ(Link(20), SRVSTL_GetLink(tbl, 1));
}

TEST_F(LinkTable, PlacesALinkByTheKeyNotByItsRecord) {
    Fill({10, 30});
    const uint32_t key = 20;
    EXPECT_EQ(0u, SRVSTL_SetLink(tbl, &key, Link(99)));
    EXPECT_EQ((U32{10, 99, 30}), Ids());
}

TEST_F(LinkTable, IsFittedExactlyAfterEveryInsertion) {
    for (uint32_t count = 1; count <= 20; ++count) {
        ASSERT_EQ(0u, Set(count));
        EXPECT_EQ(count * 8, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
        EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
        EXPECT_EQ(before + 2, kit::LiveBlocks());
    }
    EXPECT_EQ(1u + 20, kit::Op<QAL_MemAlloc_F>().Calls());
}

TEST_F(LinkTable, RefusesAKeyThatIsThereAlready) {
    Fill({10, 20, 30});
    const uint32_t key = 20;
    EXPECT_EQ(4u, SRVSTL_SetLink(tbl, &key, Link(99)));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(1u, Cursor());
}

TEST_F(LinkTable, TellsAKeyThatIsThereFromAFullTable) {
    Fill(3, {10, 20, 30});
    EXPECT_EQ(4u, Set(10));
    EXPECT_EQ(4u, Set(30));
    EXPECT_EQ(3u, Set(40));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
}

TEST_F(LinkTable, LeavesTheCursorAtTheRefusedPlaceWhenItIsFull) {
    Fill(3, {10, 20, 30});
    EXPECT_EQ(3u, Set(5));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(3u, Set(22));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(3u, Set(35));
    EXPECT_EQ(3u, Cursor());
}

TEST_F(LinkTable, OfSpecificationZeroRefusesEveryLink) {
    Fill(0, {});
    EXPECT_EQ(3u, Set(1));
    EXPECT_EQ(3u, Set(1));
    EXPECT_EQ(0u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ(nullptr, tbl->ppLinks);
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(LinkTable, TakesAsManyLinksAsItsSpecification) {
    Fill(2, {1, 2});
    EXPECT_EQ(3u, Set(3));
    EXPECT_EQ(0u, Remove(1));
    EXPECT_EQ(0u, Set(3));
    EXPECT_EQ((U32{2, 3}), Ids());
}

TEST_F(LinkTable, RefusesToInsertIntoNothing) {
    const uint32_t key = 1;
    EXPECT_EQ(1u, SRVSTL_SetLink(nullptr, &key, Link(1)));
    EXPECT_EQ(1u, SRVSTL_SetLink(nullptr, nullptr, nullptr));
}

TEST_F(LinkTable, IsAsItWasWhenThereIsNoMemoryForAnInsertion) {
    Fill({10, 20, 30});
    Find(30);
    const void *array = tbl->ppLinks;
    for (const uint32_t id : {5u, 15u, 35u}) {
        kit::Op<QAL_MemAlloc_F>().FailsOn(1);
        EXPECT_EQ(2u, Set(id));
        EXPECT_EQ((U32{10, 20, 30}), Ids());
        EXPECT_EQ(array, tbl->ppLinks);
        EXPECT_EQ(2u, Cursor());
    }
    EXPECT_EQ(0u, Set(5));
    EXPECT_EQ((U32{5, 10, 20, 30}), Ids());
}

TEST_F(LinkTable, ThatIsEmptyStaysSoWhenThereIsNoMemory) {
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(2u, Set(1));
    EXPECT_EQ(nullptr, tbl->ppLinks);
    EXPECT_EQ(0u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(LinkTable, DoesNotGrowBeyondFourGigabytes) {
    /* Pages that nobody writes cost nothing: an array of null links. */
    const std::size_t bytes = std::size_t{0x1FFFFFFF} * sizeof(void *);
    void *links = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, links);
    const auto after = [](const void *, const void *) { return 1; };
    SRVSTL_TBL_S table = {MODULE, 0x1FFFFFFF, NONE, NONE, after, static_cast<void **>(links)};
    EXPECT_EQ(2u, SRVSTL_SetLink(&table, nullptr, Link(1)));
    EXPECT_EQ(0x1FFFFFFFu, table.ulCount);
    EXPECT_EQ(NONE, table.ulCursor);
    EXPECT_EQ(1u, kit::Op<QAL_MemAlloc_F>().Calls()) << "only the fixture's";
    munmap(links, bytes);
}

/* ---- look-up */

TEST_F(LinkTable, FindsEveryLinkAndMakesItTheCurrentOne) {
    for (uint32_t count = 1; count <= 40; ++count) {
        U32 ids;
        for (uint32_t i = 0; i < count; ++i)
            ids.push_back(3 * i + 3);
        Fill(ids);
        for (uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(Link(ids[i]), Find(ids[i]));
            ASSERT_EQ(i, Cursor());
        }
    }
}

TEST_F(LinkTable, LeavesTheCursorWhenAKeyIsMissing) {
    Fill({10, 20, 30});
    Find(20);
    for (const uint32_t id : {5u, 15u, 22u, 35u}) {
        EXPECT_EQ(nullptr, Find(id));
        EXPECT_EQ(1u, Cursor());
    }
}

TEST_F(LinkTable, FindsTheGreatestLinkBelowAMissingKeyOrTheFirst) {
    Fill({10, 20, 30});
    const std::array<std::array<uint32_t, 3>, 7> rows = {
        {{5, 10, 0}, {10, 10, 0}, {15, 10, 0}, {20, 20, 1}, {22, 20, 1}, {30, 30, 2}, {35, 30, 2}}};
    for (const auto &[key, id, cursor] : rows) {
        EXPECT_EQ(Link(id), FindProx(key)) << key;
        EXPECT_EQ(cursor, Cursor()) << key;
    }
}

TEST_F(LinkTable, FindsNothingInAnEmptyTable) {
    tbl->ulCursor = 17;
    EXPECT_EQ(nullptr, Find(1));
    EXPECT_EQ(nullptr, FindProx(1));
    EXPECT_EQ(17u, Cursor());
    const uint32_t key = 1;
    EXPECT_EQ(nullptr, SRVSTL_FindLink(nullptr, &key));
    EXPECT_EQ(nullptr, SRVSTL_FindProxLink(nullptr, &key));
}

U32 g_probes;

int32_t RecordProbe(const void *link, const void *key) {
    g_probes.push_back(IdOf(link));
    return ById(link, key);
}

TEST_F(LinkTable, LooksAtTheMiddleOfWhatIsLeftForEveryCountAndKey) {
    for (const uint32_t count : SearchedCounts(90)) {
        U32 ids;
        for (uint32_t i = 1; i <= count; ++i)
            ids.push_back(2 * i);
        Fill(count, ids);
        tbl->pfCompare = RecordProbe;
        for (uint32_t key = 1; key <= 2 * count + 1; ++key) {
            const bool there = key % 2 == 0;
            g_probes.clear();
            tbl->ulCursor = NONE;
            ASSERT_EQ(there ? Link(key) : nullptr, Find(key)) << "key " << key << " of " << count;
            ASSERT_EQ(there ? key / 2 - 1 : NONE, Cursor()) << "key " << key << " of " << count;
            ASSERT_EQ(ProbesOf(ids, key), g_probes) << "key " << key << " of " << count;
            g_probes.clear();
            FindProx(key);
            ASSERT_EQ(ProbesOf(ids, key), g_probes) << "key " << key << " of " << count;
        }
    }
}

const void *g_askedLink;
const void *g_askedKey;

TEST_F(LinkTable, HandsTheComparisonTheLinkFirstAndTheKeyAsItIs) {
    Fill({10});
    tbl->pfCompare = [](const void *link, const void *key) {
        g_askedLink = link;
        g_askedKey = key;
        return 1;
    };
    const uint32_t key = 3;
    SRVSTL_FindLink(tbl, &key);
    EXPECT_EQ(Link(10), g_askedLink);
    EXPECT_EQ(&key, g_askedKey);
    SRVSTL_FindProxLink(tbl, nullptr);
    EXPECT_EQ(nullptr, g_askedKey);
}

/* ---- cursor */

TEST_F(LinkTable, IsWalkedForwards) {
    Fill({10, 20, 30});
    EXPECT_EQ(Link(10), SRVSTL_GetFirstLink(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(Link(20), SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(Link(30), SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(3u, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(3u, Cursor());
}

TEST_F(LinkTable, IsWalkedBackwards) {
    Fill({10, 20, 30});
    EXPECT_EQ(Link(30), SRVSTL_GetLastLink(tbl));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(Link(20), SRVSTL_GetPrevLink(tbl));
    EXPECT_EQ(Link(10), SRVSTL_GetPrevLink(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(tbl));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(tbl));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(Link(10), SRVSTL_GetNextLink(tbl));
}

TEST_F(LinkTable, DoesNotComeBackFromPastTheEnd) {
    Fill({10, 20});
    for (const uint32_t past : {2u, 3u, 0xFFFFFFFEu}) {
        tbl->ulCursor = past;
        EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(tbl));
        EXPECT_EQ(past, Cursor());
        EXPECT_EQ(nullptr, SRVSTL_GetCurrLink(tbl));
        EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
        EXPECT_EQ(2u, Cursor());
    }
}

TEST_F(LinkTable, MovesTheCursorOfAnEmptyTableToZeroByAStepForwardsOnly) {
    EXPECT_EQ(nullptr, SRVSTL_GetFirstLink(tbl));
    EXPECT_EQ(nullptr, SRVSTL_GetLastLink(tbl));
    EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(tbl));
    EXPECT_EQ(nullptr, SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(nullptr, SRVSTL_GetLink(tbl, 0));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(0u, Cursor());
}

TEST_F(LinkTable, GivesTheLinkAtAnIndexWithoutMovingTheCursor) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(Link(20), SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(Link(10), SRVSTL_GetLink(tbl, 0));
    EXPECT_EQ(Link(30), SRVSTL_GetLink(tbl, 2));
    EXPECT_EQ(nullptr, SRVSTL_GetLink(tbl, 3));
    EXPECT_EQ(nullptr, SRVSTL_GetLink(tbl, NONE));
    EXPECT_EQ(1u, Cursor());
}

TEST_F(LinkTable, ThatIsNullHasNothing) {
    EXPECT_EQ(nullptr, SRVSTL_GetFirstLink(nullptr));
    EXPECT_EQ(nullptr, SRVSTL_GetLastLink(nullptr));
    EXPECT_EQ(nullptr, SRVSTL_GetNextLink(nullptr));
    EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(nullptr));
    EXPECT_EQ(nullptr, SRVSTL_GetCurrLink(nullptr));
    EXPECT_EQ(nullptr, SRVSTL_GetLink(nullptr, 0));
    EXPECT_EQ(0u, SRVSTL_GetLinkCount(nullptr));
}

} // namespace
