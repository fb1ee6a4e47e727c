// Removal from the sorted link table, and where it leaves the cursor; null links.

#include "link_tables.h"

namespace {

using namespace link_tables;

class LinkTableRemoval : public Table {};

TEST_F(LinkTableRemoval, TakesTheFirstAMiddleAndTheLastLink) {
    Fill({10, 20, 30, 40, 50});
    EXPECT_EQ(0u, Remove(10));
    EXPECT_EQ((U32{20, 30, 40, 50}), Ids());
    EXPECT_EQ(0u, Remove(30));
    EXPECT_EQ((U32{20, 40, 50}), Ids());
    EXPECT_EQ(0u, Remove(50));
    EXPECT_EQ((U32{20, 40}), Ids());
}

TEST_F(LinkTableRemoval, LeavesAnArrayThatFitsExactly) {
    Fill({10, 20, 30});
    EXPECT_EQ(0u, Remove(20));
    EXPECT_EQ(2u * 8, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
    SRVSTL_GetFirstLink(tbl);
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ(8u, std::get<2>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_EQ(before + 2, kit::LiveBlocks());
}

TEST_F(LinkTableRemoval, OfTheOnlyLinkReleasesTheArrayAndNeedsNoMemory) {
    for (const bool by_key : {true, false}) {
        Fill({10});
        tbl->ulCursor = 0;
        kit::Op<QAL_MemAlloc_F>().FailsFrom(1);
        EXPECT_EQ(0u, by_key ? Remove(10) : SRVSTL_RemoveCurr(tbl));
        kit::Op<QAL_MemAlloc_F>().FailsOn(0);
        EXPECT_EQ(nullptr, tbl->ppLinks);
        EXPECT_EQ(0u, SRVSTL_GetLinkCount(tbl));
        EXPECT_EQ(NONE, Cursor());
        EXPECT_EQ(before + 1, kit::LiveBlocks());
    }
}

/* Cursor of a table of four links before and after one of them is removed. */
struct CursorRow {
    uint32_t before;
    uint32_t removed;
    uint32_t after;
};

TEST_F(LinkTableRemoval, ByKeyKeepsTheCursorOnItsLinkOrTheOneBefore) {
    const CursorRow rows[] = {
        {0, 0, NONE}, {0, 1, 0}, {0, 2, 0}, {0, 3, 0}, // on the first
        {1, 0, 0},    {1, 1, 0}, {1, 2, 1}, {1, 3, 1}, {2, 0, 1}, {2, 1, 1},
        {2, 2, 1},    {2, 3, 2}, {3, 0, 2}, {3, 1, 2}, {3, 2, 2}, {3, 3, 2}, // on the last
        {4, 0, 3},    {4, 1, 3}, {4, 2, 3}, {4, 3, 3},                       // past the end, and past the end of three
    };
    for (const CursorRow &row : rows) {
        Fill({10, 20, 30, 40});
        tbl->ulCursor = row.before;
        EXPECT_EQ(0u, Remove(10 * row.removed + 10));
        EXPECT_EQ(row.after, Cursor()) << "cursor " << row.before << ", removed " << row.removed;
    }
}

TEST_F(LinkTableRemoval, ByKeyPutsACursorBeforeTheFirstLinkPastTheEnd) {
    for (const uint32_t id : {10u, 20u, 30u}) {
        Fill({10, 20, 30});
        EXPECT_EQ(0u, Remove(id));
        EXPECT_EQ(0xFFFFFFFEu, Cursor());
        EXPECT_EQ(nullptr, SRVSTL_GetCurrLink(tbl));
        EXPECT_EQ(nullptr, SRVSTL_GetPrevLink(tbl));
        EXPECT_EQ(0xFFFFFFFEu, Cursor());
        EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
        EXPECT_EQ(2u, Cursor());
    }
}

TEST_F(LinkTableRemoval, ByAMissingKeyChangesNothing) {
    Fill({10, 20, 30});
    Find(20);
    for (const uint32_t id : {5u, 15u, 35u})
        EXPECT_EQ(5u, Remove(id));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(1u, Cursor());
}

TEST_F(LinkTableRemoval, FindsNothingInNothing) {
    const uint32_t key = 10;
    EXPECT_EQ(5u, SRVSTL_RemoveLink(nullptr, &key));
    EXPECT_EQ(5u, SRVSTL_RemoveCurr(nullptr));
    EXPECT_EQ(5u, Remove(10));
    EXPECT_EQ(5u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(LinkTableRemoval, OfTheCurrentLinkContinuesWithItsSuccessor) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ((U32{10, 30}), Ids());
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(Link(30), SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetNextLink(tbl));
}

TEST_F(LinkTableRemoval, OfTheFirstLinkContinuesWithTheNewFirst) {
    Fill({10, 20, 30});
    SRVSTL_GetFirstLink(tbl);
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(Link(20), SRVSTL_GetNextLink(tbl));
}

TEST_F(LinkTableRemoval, NeedsACurrentLinkToRemoveIt) {
    Fill({10, 20});
    for (const uint32_t nowhere : {2u, 0xFFFFFFFEu, NONE}) {
        tbl->ulCursor = nowhere;
        EXPECT_EQ(5u, SRVSTL_RemoveCurr(tbl));
        EXPECT_EQ(nowhere, Cursor());
    }
    EXPECT_EQ((U32{10, 20}), Ids());
}

TEST_F(LinkTableRemoval, WhileWalkingVisitsEveryLinkOnce) {
    /* Every subset of eight links is removed on the way, once as the current link and once by its key. */
    for (uint32_t subset = 0; subset < 512; ++subset) {
        Fill({1, 2, 3, 4, 5, 6, 7, 8});
        U32 visited;
        U32 kept;
        for (void *p = SRVSTL_GetFirstLink(tbl); p != nullptr; p = SRVSTL_GetNextLink(tbl)) {
            const uint32_t id = IdOf(p);
            visited.push_back(id);
            if ((subset >> (id - 1) & 1) != 0)
                ASSERT_EQ(0u, subset >= 256 ? SRVSTL_RemoveCurr(tbl) : Remove(id));
            else
                kept.push_back(id);
        }
        ASSERT_EQ((U32{1, 2, 3, 4, 5, 6, 7, 8}), visited);
        ASSERT_EQ(kept, Ids());
    }
}

TEST_F(LinkTableRemoval, OfOthersWhileWalkingDisturbsNothing) {
    Fill({10, 20, 30, 40, 50});
    Find(30);
    EXPECT_EQ(0u, Remove(10));
    EXPECT_EQ(Link(30), SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(0u, Remove(50));
    EXPECT_EQ(Link(30), SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(Link(40), SRVSTL_GetNextLink(tbl));
}

TEST_F(LinkTableRemoval, ByKeyLeavesTheCursorOnTheLinkWhenThereIsNoMemory) {
    Fill({10, 20, 30});
    const void *array = tbl->ppLinks;
    for (const uint32_t cursor : {NONE, 0u, 2u, 3u}) {
        tbl->ulCursor = cursor;
        kit::Op<QAL_MemAlloc_F>().FailsOn(1);
        EXPECT_EQ(2u, Remove(20));
        EXPECT_EQ((U32{10, 20, 30}), Ids());
        EXPECT_EQ(array, tbl->ppLinks);
        EXPECT_EQ(1u, Cursor());
    }
}

TEST_F(LinkTableRemoval, OfTheCurrentLinkChangesNothingWhenThereIsNoMemory) {
    Fill({10, 20, 30});
    Find(30);
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(2u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ((U32{10, 20, 30}), Ids());
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ((U32{10, 20}), Ids());
}

/* ---- all at once */

SRVSTL_TBL_S *g_table;
U32 g_freed;

void Free(void *link) {
    g_freed.push_back(IdOf(link));
}

TEST_F(LinkTableRemoval, OfAllLinksFreesThemFromTheLastToTheFirst) {
    g_freed.clear();
    Fill({30, 10, 20});
    Find(20);
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, Free));
    EXPECT_EQ((U32{30, 20, 10}), g_freed);
    EXPECT_EQ(0u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ(nullptr, tbl->ppLinks);
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(before + 1, kit::LiveBlocks());
    EXPECT_EQ(0u, Set(7));
    EXPECT_EQ(U32{7}, Ids());
}

TEST_F(LinkTableRemoval, OfAllLinksWithoutAFunctionFreesOnlyTheArray) {
    Fill({10, 20});
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, nullptr));
    EXPECT_EQ(nullptr, tbl->ppLinks);
    EXPECT_EQ(before + 1, kit::LiveBlocks());
    EXPECT_EQ(10u, Link(10)->id);
}

TEST_F(LinkTableRemoval, OfAllLinksLeavesAnEmptyTableAloneWithItsCursor) {
    g_freed.clear();
    SRVSTL_GetNextLink(tbl);
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, Free));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(U32{}, g_freed);
    EXPECT_EQ(0u, kit::Op<QAL_MemFree_F>().Calls());
    EXPECT_EQ(1u, SRVSTL_RemoveAllLink(nullptr, Free));
    EXPECT_EQ(1u, SRVSTL_RemoveAllLink(nullptr, nullptr));
}

TEST_F(LinkTableRemoval, WithTheTableFreesTheLinksToo) {
    g_freed.clear();
    Fill({10, 20});
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&tbl, Free));
    EXPECT_EQ((U32{20, 10}), g_freed);
    EXPECT_EQ(nullptr, tbl);
    EXPECT_EQ(1u, SRVSTL_DeleteSTbl(&tbl, Free));
    EXPECT_EQ(1u, SRVSTL_DeleteSTbl(nullptr, Free));
    EXPECT_EQ(2u, g_freed.size());
}

TEST_F(LinkTableRemoval, ResetsTheTableOnlyAfterTheLastLinkIsFreed) {
    Fill({10, 20, 30});
    Find(20);
    g_table = tbl;
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, [](void *) {
                  EXPECT_EQ(3u, SRVSTL_GetLinkCount(g_table));
                  EXPECT_EQ(1u, g_table->ulCursor);
                  EXPECT_NE(nullptr, g_table->ppLinks);
              }));
    EXPECT_EQ(0u, SRVSTL_GetLinkCount(tbl));
}

TEST_F(LinkTableRemoval, LetsTheFreeFunctionRemoveItsLinkFromTheTable) {
    g_freed.clear();
    Fill({10, 20, 30, 40});
    g_table = tbl;
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, [](void *link) {
                  const uint32_t id = IdOf(link);
                  g_freed.push_back(id);
                  EXPECT_EQ(0u, SRVSTL_RemoveLink(g_table, &id));
              }));
    EXPECT_EQ((U32{40, 30, 20, 10}), g_freed);
    EXPECT_EQ(nullptr, tbl->ppLinks);
    EXPECT_EQ(NONE, Cursor());
}

TEST_F(LinkTableRemoval, LetsTheFreeFunctionEmptyTheTable) {
    g_freed.clear();
    Fill({10, 20, 30});
    g_table = tbl;
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, [](void *link) {
                  Free(link);
                  EXPECT_EQ(0u, SRVSTL_RemoveAllLink(g_table, nullptr));
              }));
    EXPECT_EQ(U32{30}, g_freed);
    EXPECT_EQ(nullptr, tbl->ppLinks);
}

/* ---- null links */

class NullLink : public Table {
  protected:
    /* The null link stands between 20 and 30. */
    void SetUp() override { Fill({10, 20, NULL_ID, 30, 40}); }
};

TEST_F(NullLink, IsCountedAndKeptInOrder) {
    EXPECT_EQ(5u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ((U32{10, 20, NULL_ID, 30, 40}), Ids());
    EXPECT_EQ(nullptr, SRVSTL_GetLink(tbl, 2));
    EXPECT_EQ(Link(30), SRVSTL_GetLink(tbl, 3));
}

TEST_F(NullLink, IsComparedAsAnyOtherWhenALinkIsInserted) {
    EXPECT_EQ(0u, Set(24));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(0u, Set(26));
    EXPECT_EQ(4u, Cursor());
    EXPECT_EQ((U32{10, 20, 24, NULL_ID, 26, 30, 40}), Ids());
    EXPECT_EQ(4u, Set(NULL_ID));
    EXPECT_EQ(3u, Cursor());
}

TEST_F(NullLink, KeepsTheOrderWhereverASearchMeetsIt) {
    /* The null link at every place of the array, and an insertion at every place beside it. */
    const U32 others = {5, 15, 24, 26, 35, 45};
    for (uint32_t first = 0; first < others.size(); ++first) {
        for (uint32_t last = first; last < others.size(); ++last) {
            Fill(U32(others.begin() + first, others.begin() + last + 1));
            ASSERT_EQ(0u, Set(NULL_ID));
            for (const uint32_t id : {4u, 6u, 14u, 16u, 23u, 27u, 34u, 36u, 44u, 46u})
                ASSERT_EQ(0u, Set(id));
            const U32 ids = Ids();
            ASSERT_TRUE(std::is_sorted(ids.begin(), ids.end()));
            ASSERT_EQ(last - first + 1 + 1 + 10, ids.size());
        }
    }
}

TEST_F(NullLink, IsFoundAsTheCurrentPlaceButNotTold) {
    EXPECT_EQ(nullptr, Find(NULL_ID));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(nullptr, SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(Link(30), SRVSTL_GetNextLink(tbl));
    EXPECT_EQ(nullptr, FindProx(28));
    EXPECT_EQ(2u, Cursor());
    EXPECT_EQ(Link(20), SRVSTL_GetPrevLink(tbl));
}

TEST_F(NullLink, IsRefusedByTheRemovalOfTheCurrentLink) {
    Find(NULL_ID);
    EXPECT_EQ(5u, SRVSTL_RemoveCurr(tbl));
    EXPECT_EQ(5u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ(2u, Cursor());
}

TEST_F(NullLink, IsRemovedByItsKey) {
    Find(40);
    EXPECT_EQ(0u, Remove(NULL_ID));
    EXPECT_EQ((U32{10, 20, 30, 40}), Ids());
    EXPECT_EQ(Link(40), SRVSTL_GetCurrLink(tbl));
    EXPECT_EQ(5u, Remove(NULL_ID));
}

TEST_F(NullLink, MayBeTheOnlyLink) {
    Fill({NULL_ID});
    EXPECT_EQ(1u, SRVSTL_GetLinkCount(tbl));
    EXPECT_EQ(nullptr, SRVSTL_GetFirstLink(tbl));
    EXPECT_EQ(0u, Cursor());
    EXPECT_EQ(0u, Remove(NULL_ID));
    EXPECT_EQ(nullptr, tbl->ppLinks);
}

TEST_F(NullLink, IsHandedToTheFreeFunction) {
    g_freed.clear();
    EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, Free));
    EXPECT_EQ((U32{40, 30, NULL_ID, 20, 10}), g_freed);
}

} // namespace
