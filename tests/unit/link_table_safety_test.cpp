// The sorted link table with comparisons that contradict themselves, no comparison, no memory: nothing outside its array
// is read or written.

#include "guarded_memory.h"
#include "link_tables.h"
#include "random_walk.h"

#include <set>

namespace {

using namespace link_tables;

RandomWalk *g_random;
Session g_sessions[30];

int32_t Anything(const void *link, const void *key) {
    const uint32_t sum = IdOf(link) + *static_cast<const uint32_t *>(key);
    return static_cast<int32_t>((sum + g_random->Below(3)) % 3) - 1;
}

int32_t AlwaysBefore(const void *, const void *) {
    return -1;
}

int32_t AlwaysEqual(const void *, const void *) {
    return 0;
}

int32_t AlwaysAfter(const void *, const void *) {
    return 1;
}

void DoAnything(SRVSTL_TBL_S *table, RandomWalk &random) {
    const uint32_t key = random.Below(30);
    switch (random.Below(10)) {
    case 0:
    case 1:
    case 2:
        SRVSTL_SetLink(table, &key, random.OnceIn(5) ? nullptr : &g_sessions[random.Below(30)]);
        break;
    case 3:
        SRVSTL_RemoveLink(table, &key);
        break;
    case 4:
        SRVSTL_RemoveCurr(table);
        break;
    case 5:
        SRVSTL_FindLink(table, &key);
        break;
    case 6:
        SRVSTL_FindProxLink(table, &key);
        break;
    case 7:
        SRVSTL_GetNextLink(table);
        break;
    case 8:
        SRVSTL_GetPrevLink(table);
        break;
    default:
        SRVSTL_GetLastLink(table);
    }
}

/* Runs operations on a table that compares so, and expects an array of the right size after each. */
void Torture(SRVSTL_CMP_FUNC compare, uint32_t operations) {
    RandomWalk random(3203);
    g_random = &random;
    GuardedMemory memory;
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, 10, compare);
    for (uint32_t i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
        DoAnything(table, random);
        ASSERT_LE(table->ulCount, 10u);
        ASSERT_EQ(table->ulCount == 0 ? 1u : 2u, memory.Blocks());
        if (table->ulCount != 0)
            ASSERT_EQ(table->ulCount * sizeof(void *), memory.SizeOf(table->ppLinks)) << "operation " << i;
        else
            ASSERT_EQ(nullptr, table->ppLinks);
    }
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
}

TEST(LinkTableSafety, StaysInsideItsArrayWithAComparisonThatAnswersAnything) {
    Torture(Anything, 20000);
}

TEST(LinkTableSafety, StaysInsideItsArrayWithAComparisonThatAlwaysAnswersTheSame) {
    Torture(AlwaysBefore, 2000);
    Torture(AlwaysEqual, 2000);
    Torture(AlwaysAfter, 2000);
}

TEST(LinkTableSafety, StaysInsideItsArrayWhenKeysDisagreeWithTheirRecords) {
    Torture(ById, 5000); // DoAnything inserts under a key that is not the record's
}

TEST(LinkTableSafety, SearchesInsideItsArrayWhateverTheComparisonAnswers) {
    /* Every way that a search of a table of each count can take: the answers are the bits of a number. */
    static uint32_t answers;
    GuardedMemory memory;
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, 40, AlwaysBefore);
    const auto by_bits = [](const void *, const void *) {
        const int32_t order = (answers & 1) != 0 ? 1 : -1;
        answers >>= 1;
        return order;
    };
    for (uint32_t count = 1; count <= 40; ++count) {
        table->pfCompare = AlwaysBefore;
        ASSERT_EQ(0u, SRVSTL_SetLink(table, &count, &g_sessions[count % 30]));
        table->pfCompare = by_bits;
        std::set<uint32_t> ends;
        for (uint32_t way = 0; way < 256; ++way) {
            answers = way;
            const void *end = SRVSTL_FindProxLink(table, &way);
            ASSERT_EQ(SRVSTL_GetLink(table, table->ulCursor), end);
            ends.insert(table->ulCursor);
        }
        EXPECT_EQ(count, ends.size()) << "places where a search of a table of " << count << " ends";
    }
    SRVSTL_DeleteSTbl(&table, nullptr);
}

TEST(LinkTableWithoutAComparison, TakesOneLinkAndFindsNothing) {
    GuardedMemory memory;
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, 5, nullptr);
    const uint32_t key = 1;
    EXPECT_EQ(0u, SRVSTL_SetLink(table, &key, &g_sessions[1]));
    EXPECT_EQ(1u, SRVSTL_SetLink(table, &key, &g_sessions[2]));
    EXPECT_EQ(nullptr, SRVSTL_FindLink(table, &key));
    EXPECT_EQ(nullptr, SRVSTL_FindProxLink(table, &key));
    EXPECT_EQ(5u, SRVSTL_RemoveLink(table, &key));
    EXPECT_EQ(1u, SRVSTL_GetLinkCount(table));
    EXPECT_EQ(&g_sessions[1], SRVSTL_GetCurrLink(table));
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(table));
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
}

/* What the operations say they did is what the table holds, whichever of them had no memory. */
void UseATable() {
    for (uint32_t id = 0; id < 30; ++id)
        g_sessions[id].id = id;
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, 6, ById);
    if (table == nullptr)
        return;
    std::set<uint32_t> ids;
    for (const uint32_t id : {4u, 2u, 6u, 1u, 5u}) {
        if (SRVSTL_SetLink(table, &id, &g_sessions[id]) == 0)
            ids.insert(id);
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    for (const uint32_t id : {4u, 1u, 6u}) {
        if (SRVSTL_RemoveLink(table, &id) == 0)
            ids.erase(id);
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    for (const void *p = SRVSTL_GetFirstLink(table); p != nullptr; p = SRVSTL_GetNextLink(table)) {
        if (SRVSTL_RemoveCurr(table) == 0)
            ids.erase(IdOf(p));
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
}

TEST(LinkTableSafety, LosesNothingWhicheverAllocationFails) {
    UseATable(); // the account is open now, whichever test ran before
    /* The header, five insertions, four removals (that of the last link needs no memory); each fails once, and with all
     * that follow. */
    EXPECT_EQ(2 * (1 + 5 + 4), kit::SweepAllocations(UseATable, UseATable));
}

} // namespace
