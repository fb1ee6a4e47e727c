// Failing bounds-checked functions in the hook frame and the arrays: each asserts, and the operation goes on as meant.

#include "securec_faults.h"

#include <uvelcommon_base/kivo_array.h>
#include <uvelcommon_base/kivo_hook_interface.h>

namespace {

const kit::Sources ADAPTFUNC{"src/common/src/smi/kivo_adaptfunc"};
const std::string SRVCOMMON = "src/common/src/smi/kivo_srvcommon";

TEST(FailingCopy, OfASlotTextAssertsAndAnswersZero) {
    kit::PrintFault fault(kit::Variadic::SPRINTF_S);
    char text[32] = "before";
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(3, text, sizeof text));
    EXPECT_EQ(ADAPTFUNC, kit::TakeAsserts());
    EXPECT_STREQ("before", text);
}

TEST(FailingCopy, WhileRemovingFromAnArrayAssertsEveryTimeAndGoesOn) {
    const uint32_t before[] = {1, 2, 3, 4};
    uint32_t array[] = {1, 2, 3, 4};
    const uint32_t key = 1;
    kit::Op<memcpy_s>().Returns(22);
    EXPECT_EQ(0u, SRVAR_RemoveElmt(array, 4, 4, &key));
    EXPECT_EQ(kit::Sources(3, SRVCOMMON), kit::TakeAsserts()) << "one for each element that was to move";
    EXPECT_EQ(0u, array[3]) << "the last place is cleared all the same";
    EXPECT_TRUE(std::equal(before, before + 3, array));
}

TEST(FailingClear, AfterRemovingFromAnArrayAsserts) {
    uint32_t array[] = {1, 2};
    const uint32_t first = 1;
    kit::Op<memset_s>().Returns(34);
    EXPECT_EQ(0u, SRVAR_RemoveElmt(array, 2, 4, &first));
    EXPECT_EQ(kit::Sources{SRVCOMMON}, kit::TakeAsserts());
    EXPECT_EQ(2u, array[0]);
    EXPECT_EQ(2u, array[1]);
}

TEST(FailingCopies, OfASwapRemovalAssertOnceEach) {
    uint32_t array[] = {1, 2, 3};
    const uint32_t first = 1;
    kit::Op<memcpy_s>().Returns(22);
    kit::Op<memset_s>().Returns(22);
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(array, 3, 4, &first));
    EXPECT_EQ(kit::Sources(2, SRVCOMMON), kit::TakeAsserts());
}

TEST(FailingCopy, OfAnAppendedElementAsserts) {
    uint32_t array[] = {1, 9};
    const uint32_t element = 2;
    kit::Op<memcpy_s>().FailsOn(1, 22);
    SRVAR_InsertElmtIntail(array, 1, 4, &element);
    EXPECT_EQ(kit::Sources{SRVCOMMON}, kit::TakeAsserts());
    EXPECT_EQ(9u, array[1]);
}

/* The room that the last copy or clearing was told, and how much of it was to be filled. */
template <auto Function>
std::pair<std::size_t, std::size_t> LastRoom() {
    const auto last = kit::Op<Function>().Last();
    return {std::get<1>(last), std::get<3>(last)};
}

TEST(CopiesInAnArray, AreGivenTheRoomOfOneElement) {
    const std::pair<std::size_t, std::size_t> one_element = {4, 4};
    uint32_t array[4] = {1, 2, 3};
    const uint32_t added = 4;
    SRVAR_InsertElmtIntail(array, 3, sizeof added, &added);
    EXPECT_EQ(one_element, LastRoom<memcpy_s>());
    const uint32_t second = 2;
    EXPECT_EQ(0u, SRVAR_RemoveElmt(array, 4, sizeof second, &second));
    EXPECT_EQ(one_element, LastRoom<memcpy_s>());
    EXPECT_EQ(one_element, LastRoom<memset_s>());
}

TEST(CopiesInAnArray, AtASwapRemovalAreGivenTheRoomOfOneElement) {
    const std::pair<std::size_t, std::size_t> one_element = {4, 4};
    uint32_t array[] = {1, 2, 3};
    const uint32_t first = 1;
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(array, 3, sizeof first, &first));
    EXPECT_EQ(one_element, LastRoom<memcpy_s>());
    EXPECT_EQ(one_element, LastRoom<memset_s>());
}

} // namespace
