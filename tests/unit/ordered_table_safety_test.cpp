// The ordered table with comparisons that contradict themselves, elements without bytes, no comparison, no memory:
// nothing outside its array is read or written.

#include "guarded_memory.h"
#include "ordered_tables.h"
#include "random_walk.h"

#include <set>

namespace {

using namespace ordered_tables;

RandomWalk *g_random;

/* Reads both whole, as an honest comparison may, and answers anything. */
int32_t Anything(const void *element, const void *key) {
    const auto *session = static_cast<const Session *>(element);
    const uint32_t sum = session->id + session->user + session->state[3] + *static_cast<const uint32_t *>(key);
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

void DoAnything(SRVOT_TBL_S *table, RandomWalk &random) {
    const Session session = Make(random.Below(30));
    const uint32_t key = random.Below(30);
    Session copies[12];
    switch (random.Below(13)) {
    case 0:
    case 1:
    case 2:
        SRVOT_AddElmt(table, &key, &session);
        break;
    case 3:
        SRVOT_RemoveElmtByKey(table, &key);
        break;
    case 4:
        SRVOT_RemoveCurrElmt(table);
        break;
    case 5:
        SRVOT_RemoveNode(table, SRVOT_GetElmt(table, random.Below(10)));
        break;
    case 6:
        SRVOT_FindElmt(table, &key);
        break;
    case 7:
        SRVOT_FindProxElmt(table, &key);
        break;
    case 8:
        SRVOT_GetNextElmt(table);
        break;
    case 9:
        SRVOT_GetPrevElmt(table);
        break;
    case 10:
        SRVOT_GetNextNode(table, &key, copies);
        break;
    case 11:
        SRVOT_GetAllElmts(table, copies, sizeof copies);
        break;
    default:
        SRVOT_GetLastElmt(table);
    }
}

/* Runs operations on a table that compares so, and expects an array of the right size after each. */
void Torture(SRVOT_CMP_FUNC compare, uint32_t operations) {
    RandomWalk random(3103);
    g_random = &random;
    GuardedMemory memory;
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Session), 10, compare);
    for (uint32_t i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
        DoAnything(table, random);
        ASSERT_LE(table->ulCount, 10u);
        ASSERT_EQ(table->ulCount == 0 ? 1u : 2u, memory.Blocks());
        if (table->ulCount != 0)
            ASSERT_EQ(table->ulCount * sizeof(Session), memory.SizeOf(table->pElmts)) << "operation " << i;
        else
            ASSERT_EQ(nullptr, table->pElmts);
    }
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
}

TEST(OrderedTableSafety, StaysInsideItsArrayWithAComparisonThatAnswersAnything) {
    Torture(Anything, 20000);
}

TEST(OrderedTableSafety, StaysInsideItsArrayWithAComparisonThatAlwaysAnswersTheSame) {
    Torture(AlwaysBefore, 2000);
    Torture(AlwaysEqual, 2000);
    Torture(AlwaysAfter, 2000);
}

TEST(OrderedTableSafety, StaysInsideItsArrayWhenKeysDisagreeWithTheirData) {
    Torture(ById, 5000); // DoAnything inserts under a key that is not the element's
}

TEST(OrderedTableSafety, SearchesInsideItsArrayWhateverTheComparisonAnswers) {
    /* Every way that a search of a table of each count can take: the answers are the bits of a number. */
    static uint32_t answers;
    static std::set<const void *> probed;
    GuardedMemory memory;
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Session), 40, AlwaysBefore);
    const auto by_bits = [](const void *element, const void *) {
        probed.insert(element);
        const int32_t order = (answers & 1) != 0 ? 1 : -1;
        answers >>= 1;
        return order;
    };
    for (uint32_t count = 1; count <= 40; ++count) {
        table->pfCompare = AlwaysBefore;
        ASSERT_EQ(0u, Add(table, count));
        table->pfCompare = by_bits;
        for (uint32_t way = 0; way < 256; ++way) {
            answers = way;
            const void *end = SRVOT_FindProxElmt(table, &way);
            ASSERT_EQ(SRVOT_GetElmt(table, table->ulCursor), end);
            ASSERT_NE(nullptr, end);
        }
        EXPECT_EQ(count, probed.size()) << "places probed in a table of " << count;
        probed.clear();
    }
    SRVOT_DeleteOTbl(&table);
}

/* ---- elements of no bytes */

class SizelessElements : public testing::Test {
  protected:
    SizelessElements() {
        table = SRVOT_CreateNew(MODULE, 0, 5, AlwaysBefore);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(0u, SRVOT_AddElmt(table, nullptr, this));
    }
    ~SizelessElements() override { SRVOT_DeleteOTbl(&table); }

    GuardedMemory memory;
    SRVOT_TBL_S *table;
};

TEST_F(SizelessElements, AreCountedUpToTheSpecification) {
    EXPECT_EQ(3u, SRVOT_GetCount(table));
    EXPECT_EQ(2u, SRVOT_GetCurrElmtIndex(table));
    EXPECT_EQ(0u, memory.SizeOf(table->pElmts));
    EXPECT_EQ(0u, SRVOT_AddElmt(table, nullptr, this));
    EXPECT_EQ(0u, SRVOT_AddElmt(table, nullptr, this));
    EXPECT_EQ(3u, SRVOT_AddElmt(table, nullptr, this));
    EXPECT_EQ(2u, memory.Blocks());
}

TEST_F(SizelessElements, AreSearchedByTheirIndexes) {
    EXPECT_EQ(nullptr, SRVOT_FindElmt(table, nullptr));
    EXPECT_EQ(table->pElmts, SRVOT_FindProxElmt(table, nullptr));
    EXPECT_EQ(2u, SRVOT_GetCurrElmtIndex(table));
    table->pfCompare = AlwaysAfter;
    EXPECT_EQ(table->pElmts, SRVOT_FindProxElmt(table, nullptr));
    EXPECT_EQ(0u, SRVOT_GetCurrElmtIndex(table));
    table->pfCompare = AlwaysEqual;
    EXPECT_EQ(table->pElmts, SRVOT_FindElmt(table, nullptr));
    EXPECT_EQ(1u, SRVOT_GetCurrElmtIndex(table));
    EXPECT_EQ(4u, SRVOT_AddElmt(table, nullptr, this));
}

TEST_F(SizelessElements, AreWalked) {
    EXPECT_EQ(table->pElmts, SRVOT_GetFirstElmt(table));
    EXPECT_EQ(table->pElmts, SRVOT_GetNextElmt(table));
    EXPECT_EQ(table->pElmts, SRVOT_GetNextElmt(table));
    EXPECT_EQ(nullptr, SRVOT_GetNextElmt(table));
    EXPECT_EQ(1u, SRVOT_FindElmtIdByConds(table, 1, 0, nullptr));
    const SRVOT_COND_S condition = {0, this, 0};
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(table, 0, 1, &condition));
}

TEST_F(SizelessElements, AreRemovedAllTogetherOnly) {
    EXPECT_EQ(5u, SRVOT_RemoveNode(table, table->pElmts));
    EXPECT_EQ(5u, SRVOT_RemoveCurrElmt(table));
    table->pfCompare = AlwaysEqual;
    EXPECT_EQ(5u, SRVOT_RemoveElmtByKey(table, nullptr));
    EXPECT_EQ(3u, SRVOT_GetCount(table));
    EXPECT_EQ(0u, SRVOT_RemoveAllElmt(table));
    EXPECT_EQ(nullptr, table->pElmts);
    EXPECT_EQ(1u, memory.Blocks());
}

/* ---- no comparison */

TEST(OrderedTableWithoutAComparison, TakesOneElementAndFindsNothing) {
    GuardedMemory memory;
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Session), 5, nullptr);
    const uint32_t key = 1;
    Session copy{};
    EXPECT_EQ(0u, Add(table, 1));
    EXPECT_EQ(1u, Add(table, 2));
    EXPECT_EQ(nullptr, SRVOT_FindElmt(table, &key));
    EXPECT_EQ(nullptr, SRVOT_FindProxElmt(table, &key));
    EXPECT_EQ(5u, SRVOT_RemoveElmtByKey(table, &key));
    EXPECT_EQ(1u, SRVOT_GetNextNode(table, &key, &copy));
    EXPECT_EQ(U32{1}, IdsOf(table));
    EXPECT_EQ(0u, SRVOT_GetCurrElmtIndex(table));
    EXPECT_EQ(0u, SRVOT_GetFirstNode(table, &copy));
    EXPECT_EQ(Make(1), copy);
    EXPECT_EQ(0u, SRVOT_RemoveCurrElmt(table));
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
}

/* ---- callbacks and memory */

SRVOT_TBL_S *g_asked;

TEST(OrderedTableSafety, LetsAComparisonAskItsTable) {
    g_asked = SRVOT_CreateNew(MODULE, sizeof(Session), 5, [](const void *element, const void *key) {
        EXPECT_NE(0u, SRVOT_GetCount(g_asked));
        EXPECT_EQ(g_asked->pElmts, SRVOT_GetElmt(g_asked, 0));
        return ById(element, key);
    });
    for (const uint32_t id : {3u, 1u, 2u})
        EXPECT_EQ(0u, Add(g_asked, id));
    EXPECT_EQ((U32{1, 2, 3}), IdsOf(g_asked));
    SRVOT_DeleteOTbl(&g_asked);
}

/* What the operations say they did is what the table holds, whichever of them had no memory. */
void UseATable() {
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Session), 6, ById);
    if (table == nullptr)
        return;
    std::set<uint32_t> ids;
    for (const uint32_t id : {4u, 2u, 6u, 1u, 5u}) {
        if (Add(table, id) == 0)
            ids.insert(id);
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    for (const uint32_t id : {4u, 1u, 6u}) {
        if (SRVOT_RemoveElmtByKey(table, &id) == 0)
            ids.erase(id);
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    for (const void *p = SRVOT_GetFirstElmt(table); p != nullptr; p = SRVOT_GetNextElmt(table)) {
        const uint32_t id = static_cast<const Session *>(p)->id;
        if (SRVOT_RemoveCurrElmt(table) == 0)
            ids.erase(id);
        EXPECT_EQ(U32(ids.begin(), ids.end()), IdsOf(table));
    }
    EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
}

TEST(OrderedTableSafety, LosesNothingWhicheverAllocationFails) {
    UseATable(); // the account is open now, whichever test ran before
    /* The header, five insertions, four removals (that of the last element needs no memory); each fails once, and with
     * all that follow. */
    EXPECT_EQ(2 * (1 + 5 + 4), kit::SweepAllocations(UseATable, UseATable));
}

} // namespace
