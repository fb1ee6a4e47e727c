// Failing bounds-checked copies below the ordered table and the sorted link table: each asserts, and the operation goes
// on.

#include "securec_faults.h"

#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_ordered_table.h>

namespace {

const kit::Sources ONE{"src/common/src/smi/kivo_srvcommon"};
constexpr uint32_t MODULE = 1;
constexpr int REFUSED = 34;

int32_t ByNumber(const void *number, const void *key) {
    const uint32_t a = *static_cast<const uint32_t *>(number);
    const uint32_t b = *static_cast<const uint32_t *>(key);
    return (a > b) - (a < b);
}

class FailingCopyOfATable : public testing::Test {
  protected:
    FailingCopyOfATable() {
        for (uint32_t &number : numbers) {
            SRVOT_AddElmt(elements, &number, &number);
            SRVSTL_SetLink(links, &number, &number);
        }
        elements->ulCursor = links->ulCursor = 1;
    }

    ~FailingCopyOfATable() override {
        SRVOT_DeleteOTbl(&elements);
        SRVSTL_DeleteSTbl(&links, nullptr);
    }

    static void FailCopy(uint64_t which) { kit::Op<memcpy_s>().FailsOn(which, REFUSED); }

    uint32_t numbers[3] = {10, 20, 30};
    uint32_t added = 25;
    SRVOT_TBL_S *elements = SRVOT_CreateNew(MODULE, sizeof(uint32_t), 9, ByNumber);
    SRVSTL_TBL_S *links = SRVSTL_CreateNew(MODULE, 9, ByNumber);
};

TEST_F(FailingCopyOfATable, OutOfItAssertsAndSucceeds) {
    uint32_t buffer[3] = {7, 7, 7};
    FailCopy(1);
    EXPECT_EQ(0u, SRVOT_GetFirstNode(elements, buffer));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    FailCopy(1);
    EXPECT_EQ(0u, SRVOT_GetNextNode(elements, &numbers[0], buffer));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    EXPECT_EQ(1u, elements->ulCursor);
    FailCopy(1);
    EXPECT_EQ(0u, SRVOT_GetAllElmts(elements, buffer, sizeof buffer));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    EXPECT_EQ(7u, buffer[0]);
    EXPECT_EQ(7u, buffer[2]);
}

TEST_F(FailingCopyOfATable, IsGivenTheRoomThatTheBufferHas) {
    uint32_t buffer[4] = {};
    EXPECT_EQ(0u, SRVOT_GetFirstNode(elements, buffer));
    EXPECT_EQ(4u, std::get<1>(kit::Op<memcpy_s>().Last()));
    EXPECT_EQ(0u, SRVOT_GetNextNode(elements, &numbers[0], buffer));
    EXPECT_EQ(4u, std::get<1>(kit::Op<memcpy_s>().Last()));
    EXPECT_EQ(0u, SRVOT_GetAllElmts(elements, buffer, sizeof buffer));
    EXPECT_EQ(16u, std::get<1>(kit::Op<memcpy_s>().Last()));
    EXPECT_EQ(12u, std::get<3>(kit::Op<memcpy_s>().Last()));
}

/* The parts before the new element, the element itself, the part behind it. */
TEST_F(FailingCopyOfATable, AtAnInsertionAssertsAndTheElementIsThere) {
    for (uint64_t part = 1; part <= 3; ++part) {
        FailCopy(part);
        EXPECT_EQ(0u, SRVOT_AddElmt(elements, &added, &added));
        EXPECT_EQ(ONE, kit::TakeAsserts()) << "part " << part;
        EXPECT_EQ(4u, elements->ulCount);
        EXPECT_EQ(2u, elements->ulCursor);
        const uint32_t *array = static_cast<const uint32_t *>(elements->pElmts);
        EXPECT_TRUE(part == 1 || array[0] == 10u);
        EXPECT_TRUE(part == 2 || array[2] == 25u);
        EXPECT_TRUE(part == 3 || array[3] == 30u);
        SRVOT_RemoveAllElmt(elements);
        for (const uint32_t &number : numbers)
            SRVOT_AddElmt(elements, &number, &number);
    }
}

TEST_F(FailingCopyOfATable, AtAnInsertionOfALinkAssertsAndTheLinkIsThere) {
    for (uint64_t part = 1; part <= 3; ++part) {
        FailCopy(part);
        EXPECT_EQ(0u, SRVSTL_SetLink(links, &added, &added));
        EXPECT_EQ(ONE, kit::TakeAsserts()) << "part " << part;
        EXPECT_EQ(4u, links->ulCount);
        EXPECT_EQ(2u, links->ulCursor);
        EXPECT_TRUE(part == 1 || links->ppLinks[0] == &numbers[0]);
        EXPECT_TRUE(part == 2 || links->ppLinks[2] == &added);
        EXPECT_TRUE(part == 3 || links->ppLinks[3] == &numbers[2]);
        SRVSTL_RemoveAllLink(links, nullptr);
        for (uint32_t &number : numbers)
            SRVSTL_SetLink(links, &number, &number);
    }
}

TEST_F(FailingCopyOfATable, AtARemovalAssertsAndTheElementIsGone) {
    FailCopy(1); // the part before it
    EXPECT_EQ(0u, SRVOT_RemoveElmtByKey(elements, &numbers[1]));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    EXPECT_EQ(2u, elements->ulCount);
    EXPECT_EQ(0u, elements->ulCursor);
    EXPECT_EQ(30u, static_cast<const uint32_t *>(elements->pElmts)[1]);
}

TEST_F(FailingCopyOfATable, AtARemovalOfALinkAssertsAndTheLinkIsGone) {
    FailCopy(2); // the part behind it
    EXPECT_EQ(0u, SRVSTL_RemoveLink(links, &numbers[1]));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    EXPECT_EQ(2u, links->ulCount);
    EXPECT_EQ(0u, links->ulCursor);
    EXPECT_EQ(&numbers[0], links->ppLinks[0]);
    FailCopy(1);
    EXPECT_EQ(0u, SRVSTL_RemoveCurr(links));
    EXPECT_EQ(ONE, kit::TakeAsserts());
    EXPECT_EQ(1u, links->ulCount);
    EXPECT_EQ(0xFFFFFFFFu, links->ulCursor);
}

TEST_F(FailingCopyOfATable, EveryTimeAssertsForEachPart) {
    kit::Op<memcpy_s>().Returns(REFUSED);
    EXPECT_EQ(0u, SRVOT_AddElmt(elements, &added, &added));
    EXPECT_EQ(3u, kit::TakeAsserts().size());
    EXPECT_EQ(0u, SRVSTL_SetLink(links, &added, &added));
    EXPECT_EQ(3u, kit::TakeAsserts().size());
    EXPECT_EQ(4u, elements->ulCount);
    EXPECT_EQ(4u, links->ulCount);
}

} // namespace
