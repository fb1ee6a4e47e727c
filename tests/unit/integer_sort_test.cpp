#include <uvelcommon_base/kivo_array.h>

#include <algorithm>
#include <numeric>
#include <pthread.h>
#include <random>
#include <vector>

#include "kit.h"

namespace {

using U32 = std::vector<uint32_t>;

U32 Sorted(U32 values) {
    UVEL_QuickSort(values.data(), 0, static_cast<int32_t>(values.size()) - 1);
    return values;
}

TEST(IntegerSort, SortsByUnsignedValue) {
    EXPECT_EQ((U32{0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF}), Sorted({0xFFFFFFFF, 1, 0x80000000, 0, 0x7FFFFFFF}));
}

TEST(IntegerSort, SortsTwoElements) {
    EXPECT_EQ((U32{1, 2}), Sorted({2, 1}));
    EXPECT_EQ((U32{1, 2}), Sorted({1, 2}));
    EXPECT_EQ((U32{2, 2}), Sorted({2, 2}));
}

TEST(IntegerSort, LeavesTheArrayAloneWhenHighIsNotAboveLow) {
    U32 values = {3, 2, 1};
    UVEL_QuickSort(values.data(), 1, 1);
    UVEL_QuickSort(values.data(), 0, -1);
    UVEL_QuickSort(values.data(), 2, 0);
    UVEL_QuickSort(values.data(), 0, INT32_MIN);
    UVEL_QuickSort(values.data(), INT32_MAX, INT32_MIN);
    UVEL_QuickSort(values.data(), INT32_MAX, INT32_MAX);
    EXPECT_EQ((U32{3, 2, 1}), values);
}

TEST(IntegerSort, IgnoresANullArray) {
    UVEL_QuickSort(nullptr, 0, 10);
    UVEL_QuickSort(nullptr, INT32_MIN, INT32_MAX);
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

TEST(IntegerSort, SortsTheGivenRangeAndNothingElse) {
    U32 values = {9, 8, 7, 6, 5, 4};
    UVEL_QuickSort(values.data(), 1, 4);
    EXPECT_EQ((U32{9, 5, 6, 7, 8, 4}), values);
}

TEST(IntegerSort, CountsPositionsFromThePointerInBothDirections) {
    U32 values = {9, 8, 7, 6, 5, 4};
    UVEL_QuickSort(values.data() + 3, -2, 1);
    EXPECT_EQ((U32{9, 5, 6, 7, 8, 4}), values);
}

/* Every arrangement of up to seven elements, equal ones included. */
TEST(IntegerSort, SortsEveryShortArrangement) {
    for (uint32_t length = 2; length <= 7; ++length) {
        for (uint32_t kinds = 1; kinds <= length; ++kinds) {
            U32 values(length);
            for (uint32_t i = 0; i < length; ++i)
                values[i] = std::min(i, kinds - 1);
            const U32 expected = values;
            do
                ASSERT_EQ(expected, Sorted(values)) << testing::PrintToString(values);
            while (std::next_permutation(values.begin(), values.end()));
        }
    }
}

TEST(IntegerSort, AgreesWithTheStandardSortOnRandomArrays) {
    const uint32_t seed = 33;
    std::mt19937 random(seed);
    for (int round = 0; round < 400; ++round) {
        const uint32_t range = round % 3 == 0 ? 0xFFFFFFFF : round % 3 == 1 ? 1000 : 5;
        U32 values(2 + random() % 700);
        for (uint32_t &value : values)
            value = static_cast<uint32_t>(random() % range);
        const uint32_t low = static_cast<uint32_t>(random() % values.size());
        const uint32_t high = low + static_cast<uint32_t>(random() % (values.size() - low));
        U32 expected = values;
        std::sort(expected.begin() + low, expected.begin() + high + 1);
        UVEL_QuickSort(values.data(), static_cast<int32_t>(low), static_cast<int32_t>(high));
        ASSERT_EQ(expected, values) << "seed " << seed << ", round " << round;
    }
}

/* Runs `body` on a task with little stack: one that went as deep as there are elements would crash there. */
void OnSmallStack(void (*body)()) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 256 * 1024));
    pthread_t thread;
    const auto entry = [](void *argument) -> void * {
        reinterpret_cast<void (*)()>(argument)();
        return nullptr;
    };
    ASSERT_EQ(0, pthread_create(&thread, &attributes, entry, reinterpret_cast<void *>(body)));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

constexpr uint32_t MANY = 20000;

TEST(IntegerSort, NeedsLittleStackForEqualElements) {
    OnSmallStack([] { EXPECT_EQ(U32(MANY, 7), Sorted(U32(MANY, 7))); });
}

TEST(IntegerSort, NeedsLittleStackForAscendingAndDescendingElements) {
    OnSmallStack([] {
        U32 ascending(MANY);
        std::iota(ascending.begin(), ascending.end(), 0);
        EXPECT_EQ(ascending, Sorted(ascending));
        EXPECT_EQ(ascending, Sorted(U32(ascending.rbegin(), ascending.rend())));
    });
}

} // namespace
