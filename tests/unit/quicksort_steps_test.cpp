// The steps of the quicksort: exchange, stack, insertion sort, split.

#include "guarded_text.h"
#include "quicksort_inputs.h"

namespace {

using namespace quicksort_inputs;

constexpr int32_t UNTOUCHED = -7;

/* ---- exchange and stack */

TEST(QuickSortInterChange, ExchangesTwoEntries) {
    uint32_t a = 1;
    uint32_t b = 2;
    void *entries[] = {&a, &b};
    SRVQS_InterChange(&entries[0], &entries[1]);
    EXPECT_EQ(&b, entries[0]);
    EXPECT_EQ(&a, entries[1]);
    SRVQS_InterChange(&entries[0], &entries[0]);
    EXPECT_EQ(&b, entries[0]);
}

TEST(QuickSortInterChange, DoesNothingWithoutBothPlaces) {
    uint32_t a = 1;
    void *entry = &a;
    SRVQS_InterChange(&entry, nullptr);
    SRVQS_InterChange(nullptr, &entry);
    EXPECT_EQ(&a, entry);
}

class QuickSortStack : public testing::Test {
  protected:
    QuickSortStack() { stack.lTop = -1; }

    std::pair<uint32_t, uint32_t> Pop() {
        std::pair<uint32_t, uint32_t> range = {77, 77};
        SRVQS_Pop(&stack, &range.first, &range.second);
        return range;
    }

    SRVQS_STACK_S stack{};
};

TEST_F(QuickSortStack, GivesBackTheLastRangeFirst) {
    SRVQS_Push(&stack, 1, 2);
    EXPECT_EQ(0, stack.lTop);
    SRVQS_Push(&stack, 3, 0xFFFFFFFF);
    EXPECT_EQ(1, stack.lTop);
    EXPECT_EQ(1u, stack.astRanges[0].ulLow);
    EXPECT_EQ(2u, stack.astRanges[0].ulHigh);
    EXPECT_EQ(std::pair(3u, 0xFFFFFFFFu), Pop());
    EXPECT_EQ(0, stack.lTop);
    EXPECT_EQ(std::pair(1u, 2u), Pop());
    EXPECT_EQ(-1, stack.lTop);
}

TEST_F(QuickSortStack, HoldsAHundredRangesAndNoMore) {
    for (uint32_t i = 0; i < 100; ++i)
        SRVQS_Push(&stack, i, i + 1000);
    EXPECT_EQ(99, stack.lTop);
    SRVQS_Push(&stack, 100, 1100);
    EXPECT_EQ(99, stack.lTop);
    for (uint32_t i = 100; i-- > 0;)
        EXPECT_EQ(std::pair(i, i + 1000), Pop());
    EXPECT_EQ(-1, stack.lTop);
}

TEST_F(QuickSortStack, ThatIsEmptyGivesNothing) {
    EXPECT_EQ(std::pair(77u, 77u), Pop());
    EXPECT_EQ(-1, stack.lTop);
}

TEST_F(QuickSortStack, IsLeftAloneWhenItsTopIsOutOfPlace) {
    for (const int32_t top : {-2, 100, INT32_MAX, INT32_MIN}) {
        stack.lTop = top;
        SRVQS_Push(&stack, 1, 2);
        EXPECT_EQ(std::pair(77u, 77u), Pop());
        EXPECT_EQ(top, stack.lTop);
    }
    EXPECT_EQ(0u, stack.astRanges[0].ulLow);
    EXPECT_EQ(0u, stack.astRanges[99].ulHigh);
}

TEST_F(QuickSortStack, DoesNothingWithNullPointers) {
    uint32_t end = 77;
    SRVQS_Push(nullptr, 1, 2);
    SRVQS_Push(&stack, 1, 2);
    SRVQS_Pop(nullptr, &end, &end);
    SRVQS_Pop(&stack, nullptr, &end);
    SRVQS_Pop(&stack, &end, nullptr);
    EXPECT_EQ(77u, end);
    EXPECT_EQ(0, stack.lTop);
}

/* ---- insertion sort */

Values InsertionSorted(Values values, int32_t low, uint32_t high) {
    Entries entries = EntriesOf(values);
    SRVQS_InsertionSort(entries.data(), low, high, ByValue);
    return ValuesOf(entries);
}

TEST(QuickSortInsertionSort, SortsBothEndsIncludedAndNothingElse) {
    const Values values = {9, 4, 3, 2, 1, 0};
    EXPECT_EQ((Values{9, 2, 3, 4, 1, 0}), InsertionSorted(values, 1, 3));
    EXPECT_EQ((Values{0, 1, 2, 3, 4, 9}), InsertionSorted(values, 0, 5));
    EXPECT_EQ((Values{9, 4, 3, 2, 0, 1}), InsertionSorted(values, 4, 5));
    EXPECT_EQ((Values{4, 9, 3, 2, 1, 0}), InsertionSorted(values, 0, 1));
}

TEST(QuickSortInsertionSort, LeavesRangesOfOneOrNoEntries) {
    const Values values = {3, 2, 1};
    EXPECT_EQ(values, InsertionSorted(values, 1, 1));
    EXPECT_EQ(values, InsertionSorted(values, 2, 1));
    EXPECT_EQ(values, InsertionSorted(values, 0, 0xFFFFFFFF));
    EXPECT_EQ(values, InsertionSorted(values, 3, 2));
    EXPECT_EQ(values, InsertionSorted(values, INT32_MAX, 2));
    EXPECT_EQ(values, InsertionSorted(values, 0, 0x80000000));
}

TEST(QuickSortInsertionSort, KeepsTheOrderOfEqualEntries) {
    std::mt19937 random(3410);
    for (int round = 0; round < 100; ++round) {
        Values values = Random(40, 5, random);
        Entries entries = EntriesOf(values);
        Entries expected = entries;
        std::stable_sort(expected.begin(), expected.end(), [](void *a, void *b) { return ValueOf(a) < ValueOf(b); });
        SRVQS_InsertionSort(entries.data(), 0, 39, ByValue);
        ASSERT_EQ(expected, entries);
    }
}

TEST(QuickSortInsertionSort, LooksAtNothingBelowItsRange) {
    /* The entry before the range would sort behind all of it; the range begins where the memory does. */
    Values values = {4, 3, 2, 1};
    Entries entries = EntriesOf(values);
    entries.insert(entries.begin(), nullptr);
    SRVQS_InsertionSort(entries.data(), 1, 4, ByValue);
    EXPECT_EQ(nullptr, entries[0]);
    EXPECT_EQ((Values{1, 2, 3, 4}), ValuesOf(Entries(entries.begin() + 1, entries.end())));
}

TEST(QuickSortInsertionSort, ComparesFromTheTopDown) {
    Values values = {1, 3, 2};
    Entries entries = EntriesOf(values);
    g_log.clear();
    SRVQS_InsertionSort(entries.data(), 0, 2, LogAndCompare);
    const Log expected = {{&values[0], &values[1]}, {&values[1], &values[2]}, {&values[0], &values[2]}};
    EXPECT_EQ(expected, g_log);
}

TEST(QuickSortInsertionSort, DoesNothingWithoutAnArrayOrAComparison) {
    Values values = {2, 1};
    Entries entries = EntriesOf(values);
    const Entries before = entries;
    SRVQS_InsertionSort(nullptr, 0, 1, ByValue);
    SRVQS_InsertionSort(entries.data(), 0, 1, nullptr);
    EXPECT_EQ(before, entries);
}

/* ---- split */

/* The values after a split of a range, and the pivot's place. */
std::pair<Values, int32_t> SplitOf(Values values, int32_t low, int32_t high) {
    Entries entries = EntriesOf(values);
    int32_t pivot = UNTOUCHED;
    SRVQS_Split(entries.data(), low, high, &pivot, ByValue);
    return {ValuesOf(entries), pivot};
}

TEST(QuickSortSplit, TakesTheMedianOfTheFirstTheMiddleAndTheLast) {
    Values three = {1, 2, 3};
    do {
        const Values values = {three[0], 0, 9, three[1], 0, 9, three[2]};
        const auto [split, pivot] = SplitOf(values, 0, 6);
        EXPECT_EQ(2u, split[static_cast<std::size_t>(pivot)]);
        EXPECT_EQ(3, pivot) << "two zeros and the 1 are below";
    } while (std::next_permutation(three.begin(), three.end()));
}

TEST(QuickSortSplit, ChoosesAmongEqualEntriesAsItsRulesSay) {
    /* first, middle, last; which of the three becomes the pivot */
    const std::array<std::array<uint32_t, 4>, 7> rows = {{
        {1, 1, 1, 1}, // the middle one counts as the smaller
        {1, 1, 2, 0}, // the last is above both: the larger, which is the first
        {2, 2, 1, 1}, // the last is not above the smaller: the smaller
        {1, 2, 1, 0}, // the last equals the smaller
        {1, 2, 2, 2}, // the last is above the smaller, not above the larger
        {2, 1, 1, 1},
        {2, 1, 2, 2},
    }};
    for (const auto &[first, middle, last, chosen] : rows) {
        Values values = {first, middle, last};
        Entries entries = EntriesOf(values);
        int32_t pivot = UNTOUCHED;
        SRVQS_Split(entries.data(), 0, 2, &pivot, ByValue);
        EXPECT_EQ(&values[chosen], entries[static_cast<std::size_t>(pivot)]) << first << middle << last;
    }
}

TEST(QuickSortSplit, PutsSmallerEntriesBelowThePivotAndLargerAbove) {
    std::mt19937 random(3411);
    for (uint32_t count = 1; count <= 60; ++count) {
        for (const uint32_t distinct : {2u, 8u, 1000u}) {
            Values values = Random(count + 2, distinct, random);
            const int32_t high = static_cast<int32_t>(count);
            const auto [split, pivot] = SplitOf(values, 1, high);
            ASSERT_LE(1, pivot);
            ASSERT_GE(high, pivot);
            const auto at = split.begin() + pivot;
            EXPECT_TRUE(std::all_of(split.begin() + 1, at, [&](uint32_t value) { return value <= *at; }));
            EXPECT_TRUE(std::all_of(at, split.end() - 1, [&](uint32_t value) { return value >= *at; }));
            EXPECT_EQ(values.front(), split.front());
            EXPECT_EQ(values.back(), split.back());
            EXPECT_TRUE(std::is_permutation(values.begin(), values.end(), split.begin()));
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << count << " entries";
    }
}

TEST(QuickSortSplit, HalvesEqualEntries) {
    EXPECT_EQ(50, SplitOf(Values(100, 5), 0, 99).second);
    EXPECT_EQ(50, SplitOf(Values(101, 5), 0, 100).second);
}

TEST(QuickSortSplit, StaysInsideRangesOfOneAndTwoEntries) {
    EXPECT_EQ(std::pair(Values({3, 2, 1}), 1), SplitOf({3, 2, 1}, 1, 1));
    EXPECT_EQ(std::pair(Values({9, 1, 2, 0}), 2), SplitOf({9, 2, 1, 0}, 1, 2));
    EXPECT_EQ(std::pair(Values({9, 1, 2, 0}), 1), SplitOf({9, 1, 2, 0}, 1, 2));
    /* The range is all the memory there is. */
    for (const Values &two : {Values{1, 2}, Values{2, 1}, Values{5, 5}}) {
        Values values = two;
        const Entries entries = EntriesOf(values);
        GuardedText room(entries.data(), 2 * sizeof(void *));
        int32_t pivot = UNTOUCHED;
        SRVQS_Split(reinterpret_cast<void **>(room.Get()), 0, 1, &pivot, ByValue);
        EXPECT_TRUE(pivot == 0 || pivot == 1);
        SRVQS_Split(reinterpret_cast<void **>(room.Get()) + 1, 0, 0, &pivot, ByValue);
        EXPECT_EQ(0, pivot);
    }
}

TEST(QuickSortSplit, LeavesEmptyRangesAndBadArgumentsAlone) {
    const Values values = {3, 2, 1};
    EXPECT_EQ(std::pair(values, UNTOUCHED), SplitOf(values, 1, 0));
    EXPECT_EQ(std::pair(values, UNTOUCHED), SplitOf(values, 0, -1));
    EXPECT_EQ(std::pair(values, UNTOUCHED), SplitOf(values, INT32_MAX, INT32_MIN));
    Values copy = values;
    Entries entries = EntriesOf(copy);
    int32_t pivot = UNTOUCHED;
    SRVQS_Split(nullptr, 0, 2, &pivot, ByValue);
    SRVQS_Split(entries.data(), 0, 2, nullptr, ByValue);
    SRVQS_Split(entries.data(), 0, 2, &pivot, nullptr);
    EXPECT_EQ(UNTOUCHED, pivot);
    EXPECT_EQ(values, ValuesOf(entries));
}

TEST(QuickSortSplit, PausesBeforeEvery64thComparisonAfterTheChoiceOfTheMedian) {
    /* Equal entries stop both scans at each step: as many comparisons as entries. */
    Values values(200, 5);
    Entries entries = EntriesOf(values);
    int32_t pivot = UNTOUCHED;
    LoggedPauses pauses;
    SRVQS_Split(entries.data(), 0, 199, &pivot, LogAndCompare);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < g_log.size(); ++i) {
        if (g_log[i].first == nullptr)
            places.push_back(i);
    }
    /* Two comparisons choose the median of equal entries; each pause counts in the log as well. */
    EXPECT_EQ((std::vector<std::size_t>{2 + 63, 2 + 127 + 1, 2 + 191 + 2}), places);
    EXPECT_EQ(2u + 200 + 3, g_log.size());
}

TEST(QuickSortSplit, BeginsItsCountAnewEachTime) {
    Values values(62, 5);
    Entries entries = EntriesOf(values);
    int32_t pivot = UNTOUCHED;
    for (int i = 0; i < 3; ++i)
        SRVQS_Split(entries.data(), 0, 61, &pivot, ByValue);
    EXPECT_EQ(0u, kit::Op<QAL_TaskRunDelay>().Calls());
}

} // namespace
