// What the ordered table copies into buffers of the caller, and its search by conditions.

#include "guarded_memory.h"
#include "ordered_tables.h"

namespace {

using namespace ordered_tables;

const Session UNTOUCHED = {0xDEADBEEF, 0xDEADBEEF, {0xDE, 0xAD, 0xBE, 0xEF}};

class OrderedTableCopy : public Table {
  protected:
    uint32_t NextNode(uint32_t id) { return SRVOT_GetNextNode(tbl, &id, &copies[0]); }

    /* One element more than is ever copied. */
    Session copies[4] = {UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED};
};

TEST_F(OrderedTableCopy, OfTheFirstElementTakesOneElement) {
    Fill({10, 20});
    Find(20);
    EXPECT_EQ(0u, SRVOT_GetFirstNode(tbl, copies));
    EXPECT_EQ(Make(10), copies[0]);
    EXPECT_EQ(UNTOUCHED, copies[1]);
    EXPECT_EQ(1u, Cursor());
}

TEST_F(OrderedTableCopy, OfTheFirstElementNeedsAnElementAndABuffer) {
    EXPECT_EQ(1u, SRVOT_GetFirstNode(tbl, copies));
    EXPECT_EQ(1u, SRVOT_GetFirstNode(nullptr, copies));
    Fill({10});
    EXPECT_EQ(1u, SRVOT_GetFirstNode(tbl, nullptr));
    EXPECT_EQ(UNTOUCHED, copies[0]);
}

TEST_F(OrderedTableCopy, OfTheNextElementTakesTheFirstAboveTheKey) {
    Fill({10, 20, 30});
    const std::pair<uint32_t, uint32_t> rows[] = {{0, 10}, {9, 10}, {10, 20}, {15, 20}, {19, 20}, {20, 30}, {29, 30}};
    for (const auto &[key, next] : rows) {
        EXPECT_EQ(0u, NextNode(key));
        EXPECT_EQ(Make(next), copies[0]) << "above " << key;
        EXPECT_EQ(next / 10 - 1, Cursor()) << "above " << key;
    }
    EXPECT_EQ(UNTOUCHED, copies[1]);
}

TEST_F(OrderedTableCopy, OfTheNextElementFindsNoneAboveTheLast) {
    Fill({10, 20, 30});
    for (const uint32_t key : {30u, 31u, NONE}) {
        EXPECT_EQ(1u, NextNode(key));
        EXPECT_EQ(3u, Cursor());
    }
    EXPECT_EQ(UNTOUCHED, copies[0]);
}

TEST_F(OrderedTableCopy, OfTheNextElementWalksTheTableWhateverHappensToTheCursorBetween) {
    Fill({10, 20, 30, 40});
    U32 walked;
    for (uint32_t ret = SRVOT_GetFirstNode(tbl, copies); ret == 0; ret = NextNode(copies[0].id)) {
        walked.push_back(copies[0].id);
        tbl->ulCursor = static_cast<uint32_t>(walked.size() * 7);
        if (copies[0].id == 20) {
            ASSERT_EQ(0u, RemoveByKey(20));
            ASSERT_EQ(0u, Add(tbl, 25));
        }
    }
    EXPECT_EQ((U32{10, 20, 25, 30, 40}), walked);
}

TEST_F(OrderedTableCopy, OfTheNextElementNeedsATableWithElementsAndABuffer) {
    EXPECT_EQ(1u, NextNode(0));
    EXPECT_EQ(NONE, Cursor());
    const uint32_t key = 0;
    EXPECT_EQ(1u, SRVOT_GetNextNode(nullptr, &key, copies));
    Fill({10});
    EXPECT_EQ(1u, SRVOT_GetNextNode(tbl, &key, nullptr));
    EXPECT_EQ(NONE, Cursor());
    EXPECT_EQ(UNTOUCHED, copies[0]);
}

TEST_F(OrderedTableCopy, OfAllElementsTakesNoMoreThanThereAre) {
    Fill({10, 20, 30});
    Find(20);
    EXPECT_EQ(0u, SRVOT_GetAllElmts(tbl, copies, 36));
    EXPECT_EQ(Make(10), copies[0]);
    EXPECT_EQ(Make(20), copies[1]);
    EXPECT_EQ(Make(30), copies[2]);
    EXPECT_EQ(UNTOUCHED, copies[3]);
    EXPECT_EQ(1u, Cursor());

    copies[0] = copies[2] = UNTOUCHED;
    EXPECT_EQ(0u, SRVOT_GetAllElmts(tbl, copies, 48));
    EXPECT_EQ(Make(10), copies[0]);
    EXPECT_EQ(Make(30), copies[2]);
    EXPECT_EQ(UNTOUCHED, copies[3]);
}

TEST_F(OrderedTableCopy, OfAllElementsIsRefusedWhenTheBufferIsAByteTooShort) {
    Fill({10, 20, 30});
    EXPECT_EQ(1u, SRVOT_GetAllElmts(tbl, copies, 35));
    EXPECT_EQ(1u, SRVOT_GetAllElmts(tbl, copies, 0));
    EXPECT_EQ(UNTOUCHED, copies[0]);
}

TEST_F(OrderedTableCopy, OfAllElementsNeedsElementsAndABuffer) {
    EXPECT_EQ(1u, SRVOT_GetAllElmts(tbl, copies, 36));
    EXPECT_EQ(1u, SRVOT_GetAllElmts(nullptr, copies, 36));
    Fill({10});
    EXPECT_EQ(1u, SRVOT_GetAllElmts(tbl, nullptr, 36));
    EXPECT_EQ(UNTOUCHED, copies[0]);
}

TEST_F(OrderedTableCopy, ThatTheCheckedCopyRefusesAssertsAndSucceeds) {
    Fill({10});
    EXPECT_EQ(0u, SRVOT_GetAllElmts(tbl, copies, 0x80000000));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ(UNTOUCHED, copies[0]);

    tbl->ulElmtSize = 0;
    const uint32_t key = 0;
    EXPECT_EQ(0u, SRVOT_GetFirstNode(tbl, copies));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ(0u, SRVOT_GetNextNode(tbl, &key, copies));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ(0u, SRVOT_GetAllElmts(tbl, copies, 0));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ(UNTOUCHED, copies[0]);
    tbl->ulElmtSize = sizeof(Session);
}

TEST_F(OrderedTableCopy, OfMoreThanFourGigabytesIsNotTakenForAShortOne) {
    /* 0x10000 elements of 0x10001 bytes are 65536 more than 2^32. */
    uint8_t element = 0;
    SRVOT_TBL_S table = {MODULE, 0x10001, 0x10000, 0x10000, NONE, ById, &element};
    std::vector<uint8_t> buffer(65536, 0xEE);
    EXPECT_EQ(1u, SRVOT_GetAllElmts(&table, buffer.data(), 65536));
    EXPECT_EQ(std::vector<uint8_t>(65536, 0xEE), buffer);
}

/* ---- conditions */

class OrderedTableConditions : public Table {
  protected:
    /* users 1, 2, 1, 2, 1 and states that tell the halves apart */
    void SetUp() override {
        Fill({10, 20, 30, 40, 50});
        for (uint32_t i = 0; i < 5; ++i) {
            At(i)->user = i % 2 + 1;
            At(i)->state[0] = i < 3 ? 7 : 8;
        }
        tbl->ulCursor = 2;
    }

    void TearDown() override { EXPECT_EQ(2u, Cursor()) << "the scan moved the cursor"; }

    uint32_t Search(uint32_t start, const std::vector<SRVOT_COND_S> &conditions) {
        return SRVOT_FindElmtIdByConds(tbl, start, static_cast<uint32_t>(conditions.size()), conditions.data());
    }

    const uint32_t one = 1;
    const uint32_t two = 2;
    const uint8_t seven = 7;
    const uint8_t eight = 8;
    const SRVOT_COND_S user_is_one = {4, &one, 4};
    const SRVOT_COND_S user_is_two = {4, &two, 4};
    const SRVOT_COND_S state_is_seven = {8, &seven, 1};
    const SRVOT_COND_S state_is_eight = {8, &eight, 1};
};

TEST_F(OrderedTableConditions, FindTheFirstElementFromTheStartOn) {
    EXPECT_EQ(0u, Search(0, {user_is_one}));
    EXPECT_EQ(2u, Search(1, {user_is_one}));
    EXPECT_EQ(2u, Search(2, {user_is_one}));
    EXPECT_EQ(1u, Search(0, {user_is_two}));
    EXPECT_EQ(4u, Search(4, {user_is_one}));
    EXPECT_EQ(NONE, Search(4, {user_is_two}));
}

TEST_F(OrderedTableConditions, MustAllBeMet) {
    EXPECT_EQ(1u, Search(0, {user_is_two, state_is_seven}));
    EXPECT_EQ(3u, Search(0, {user_is_two, state_is_eight}));
    EXPECT_EQ(3u, Search(0, {state_is_eight, user_is_two}));
    EXPECT_EQ(4u, Search(0, {state_is_eight, user_is_one, state_is_eight}));
    EXPECT_EQ(NONE, Search(0, {user_is_one, user_is_two}));
    EXPECT_EQ(NONE, Search(2, {user_is_two, state_is_seven}));
}

TEST_F(OrderedTableConditions, MayBeNone) {
    EXPECT_EQ(0u, Search(0, {}));
    EXPECT_EQ(3u, SRVOT_FindElmtIdByConds(tbl, 3, 0, nullptr));
    EXPECT_EQ(4u, Search(4, {}));
}

TEST_F(OrderedTableConditions, FindNothingFromTheCountOn) {
    for (const uint32_t start : {5u, 6u, NONE}) {
        EXPECT_EQ(NONE, Search(start, {}));
        EXPECT_EQ(NONE, Search(start, {user_is_one}));
    }
}

TEST_F(OrderedTableConditions, CompareBytesOfAnyPart) {
    const Session wanted = *At(3);
    EXPECT_EQ(3u, Search(0, {{0, &wanted, 12}}));
    EXPECT_EQ(3u, Search(0, {{11, &wanted.state[3], 1}}));
    EXPECT_EQ(3u, Search(0, {{2, reinterpret_cast<const uint8_t *>(&wanted) + 2, 10}, {0, &wanted.id, 1}}));
}

TEST_F(OrderedTableConditions, OfNoBytesAreAlwaysMet) {
    EXPECT_EQ(0u, Search(0, {{0, &one, 0}}));
    EXPECT_EQ(2u, Search(2, {{11, &one, 0}}));
}

TEST_F(OrderedTableConditions, ThatReachBeyondTheElementFindNothing) {
    const Session wanted = *At(0);
    EXPECT_EQ(0u, Search(0, {{0, &wanted, 12}}));
    EXPECT_EQ(NONE, Search(0, {{0, &wanted, 13}}));
    EXPECT_EQ(NONE, Search(0, {{11, &wanted, 2}}));
    EXPECT_EQ(NONE, Search(0, {{12, &wanted, 0}}));
    EXPECT_EQ(NONE, Search(0, {{12, &wanted, 1}}));
    EXPECT_EQ(NONE, Search(0, {{NONE, &wanted, 1}}));
    EXPECT_EQ(NONE, Search(0, {{4, &wanted, 0xFFFFFFFC}})) << "offset and length add up to 2^32";
    EXPECT_EQ(NONE, Search(0, {{11, &wanted, NONE}}));
    EXPECT_EQ(NONE, Search(0, {{4, nullptr, 4}}));
    EXPECT_EQ(NONE, Search(0, {{4, nullptr, 0}}));
}

TEST_F(OrderedTableConditions, AreAllCheckedBeforeAnyElementIsLookedAt) {
    const SRVOT_COND_S bad = {12, &one, 1};
    EXPECT_EQ(NONE, Search(0, {user_is_one, bad}));
    EXPECT_EQ(NONE, Search(0, {bad, user_is_one}));
    EXPECT_EQ(0u, kit::Op<QAL_MemCmp>().Calls());
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(tbl, 0, 1, nullptr));
}

TEST_F(OrderedTableConditions, AreComparedOneAfterTheOtherUntilOneIsNotMet) {
    EXPECT_EQ(3u, Search(0, {state_is_eight, user_is_two}));
    EXPECT_EQ(4u + 1, kit::Op<QAL_MemCmp>().Calls()) << "four states and one user";
}

TEST_F(OrderedTableConditions, FindNothingInNothing) {
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(nullptr, 0, 0, nullptr));
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(nullptr, 0, 1, &user_is_one));
    SRVOT_TBL_S *empty = SRVOT_CreateNew(MODULE, sizeof(Session), 5, ById);
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(empty, 0, 0, nullptr));
    EXPECT_EQ(NONE, SRVOT_FindElmtIdByConds(empty, 0, 1, &user_is_one));
    SRVOT_DeleteOTbl(&empty);
}

} // namespace
