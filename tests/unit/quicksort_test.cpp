// The explicit-stack quicksort: outcome, comparisons, pauses and waiting ranges.

#include "guarded_text.h"
#include "quicksort_inputs.h"
#include "quicksort_reference.h"
#include "random_walk.h"

#include <cmath>

namespace {

using namespace quicksort_inputs;

uint64_t g_comparisons;

int32_t CountAndCompare(const void *a, const void *b) {
    ++g_comparisons;
    return ByValue(a, b);
}

/* Sorts and checks the values; gives the number of comparisons. */
uint64_t ComparisonsFor(Values values) {
    Entries entries = EntriesOf(values);
    g_comparisons = 0;
    Sort(entries, CountAndCompare);
    ExpectSorted(values, entries);
    return g_comparisons;
}

double Log2(uint32_t count) {
    return std::log2(static_cast<double>(count));
}

/* ---- outcome */

TEST(QuickSort, SortsEveryOrderOfFewEntries) {
    for (uint32_t count = 1; count <= 7; ++count) {
        Values values = Ascending(count);
        do {
            Values input = values;
            Entries entries = EntriesOf(input);
            Sort(entries);
            ASSERT_EQ(Ascending(count), ValuesOf(entries));
        } while (std::next_permutation(values.begin(), values.end()));
    }
}

TEST(QuickSort, SortsAsAStableSortDoesUpToTheOrderOfEqualEntries) {
    RandomWalk walk(3401);
    std::mt19937 random(walk.Seed());
    for (uint32_t count = 1; count <= 300; ++count) {
        for (const uint32_t distinct : {1u, 2u, 7u, count, 100 * count}) {
            Values values = Random(count, distinct, random);
            Entries entries = EntriesOf(values);
            Sort(entries);
            ExpectSorted(values, entries);
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << count << " entries";
    }
}

TEST(QuickSort, SortsManyEntries) {
    std::mt19937 random(3402);
    for (const uint32_t distinct : {3u, 1000u, 0xFFFFFFFFu}) {
        Values values = Random(60000, distinct, random);
        Entries entries = EntriesOf(values);
        Sort(entries);
        ExpectSorted(values, entries);
    }
}

TEST(QuickSort, DoesNothingForNoEntriesOrACountThatIsNegative) {
    Values values = {2, 1};
    Entries entries = EntriesOf(values);
    const Entries before = entries;
    g_comparisons = 0;
    for (const uint32_t count : {0u, 0x80000000u, 0xFFFFFFFFu})
        SRVQS_QuickSort(entries.data(), count, CountAndCompare);
    EXPECT_EQ(before, entries);
    EXPECT_EQ(0u, g_comparisons);
    EXPECT_EQ(0u, kit::Op<QAL_TaskRunDelay>().Calls());
}

TEST(QuickSort, DoesNothingWithoutAnArrayOrAComparison) {
    Values values = {2, 1};
    Entries entries = EntriesOf(values);
    const Entries before = entries;
    SRVQS_QuickSort(nullptr, 2, ByValue);
    SRVQS_QuickSort(entries.data(), 2, nullptr);
    EXPECT_EQ(before, entries);
}

TEST(QuickSort, LeavesOneEntryWithoutLookingAtIt) {
    EXPECT_EQ(0u, ComparisonsFor({7}));
}

TEST(QuickSort, KeepsTheOrderOfEqualEntriesUpToElevenOfThem) {
    std::mt19937 random(3403);
    for (int round = 0; round < 500; ++round) {
        Values values = Random(11, 4, random);
        Entries entries = EntriesOf(values);
        Entries expected = entries;
        std::stable_sort(expected.begin(), expected.end(), [](void *a, void *b) { return ValueOf(a) < ValueOf(b); });
        Sort(entries);
        ASSERT_EQ(expected, entries);
    }
}

TEST(QuickSort, OnlyMovesEntriesAndNeverReadsThem) {
    /* Entries are 64-bit values of any kind. */
    Entries entries;
    for (uint64_t i = 0; i < 100; ++i)
        entries.push_back(reinterpret_cast<void *>(i * 0x9E3779B97F4A7C15));
    Entries expected = entries;
    std::sort(expected.begin(), expected.end());
    Sort(entries, [](const void *a, const void *b) { return (a > b) - (a < b); });
    EXPECT_EQ(expected, entries);
}

Entries *g_inner;

TEST(QuickSort, MayBeCalledFromAComparison) {
    Values inner_values = Descending(20);
    Entries inner = EntriesOf(inner_values);
    g_inner = &inner;
    std::mt19937 random(3404);
    Values values = Random(50, 20, random);
    Entries entries = EntriesOf(values);
    Sort(entries, [](const void *a, const void *b) {
        Entries copy = *g_inner;
        Sort(copy);
        EXPECT_EQ(Ascending(20), ValuesOf(copy));
        return ByValue(a, b);
    });
    ExpectSorted(values, entries);
}

/* ---- the way there */

/* The log of a sort of these values, which do not all descend, without its look whether they do: neighbours in turn up
 * to the first that do not, if there are more than eleven. */
Log BehindTheLook(const Values &values, const Log &log) {
    Log look;
    for (std::size_t i = 1; values.size() > 11 && (i == 1 || values[i - 2] > values[i - 1]); ++i)
        look.emplace_back(&values[i - 1], &values[i]);
    const auto [left, end] = std::mismatch(look.begin(), look.end(), log.begin(), log.end());
    EXPECT_TRUE(left == look.end()) << "another look for a descent of " << values.size() << " entries";
    return Log(end, log.end());
}

/* Sorts values that do not all descend with the library and with the reference, and expects the same entries,
 * comparisons and pauses. Gives the most ranges that waited at one time. */
std::size_t ExpectTheReferencesWay(Values values) {
    Entries entries = EntriesOf(values);
    Entries expected = entries;
    Log expected_log;
    QuicksortReference reference(
        [&expected_log](const void *a, const void *b) {
            expected_log.emplace_back(a, b);
            return ByValue(a, b);
        },
        [&expected_log] { expected_log.emplace_back(nullptr, nullptr); });
    reference.Sort(expected);
    LoggedPauses pauses;
    Sort(entries, LogAndCompare);
    const Log log = BehindTheLook(values, g_log);
    EXPECT_TRUE(expected == entries) << "another order of " << values.size();
    EXPECT_TRUE(expected_log == log) << "other comparisons or pauses for " << values.size()
                                     << " entries: " << expected_log.size() << " expected, " << log.size() << " made";
    return reference.deepest;
}

TEST(QuickSort, ComparesSwapsAndPausesAsItsRulesSay) {
    RandomWalk walk(3405);
    std::mt19937 random(walk.Seed());
    for (uint32_t count = 1; count <= 11; ++count)
        ExpectTheReferencesWay(Descending(count));
    for (uint32_t count = 1; count <= 150; ++count) {
        ExpectTheReferencesWay(Ascending(count));
        ExpectTheReferencesWay(Values(count, 5));
        for (const uint32_t distinct : {2u, 10u, 1000u})
            ExpectTheReferencesWay(Random(count, distinct, random));
        ASSERT_FALSE(testing::Test::HasFailure()) << count << " entries";
    }
    for (const uint32_t count : {1000u, 4096u, 20000u}) {
        ExpectTheReferencesWay(Ascending(count));
        ExpectTheReferencesWay(HalfDescending(count, random));
        ExpectTheReferencesWay(Values(count, 5));
        for (const uint32_t distinct : {2u, 50u, 0xFFFFFFFFu})
            ExpectTheReferencesWay(Random(count, distinct, random));
    }
}

TEST(QuickSort, HasNoMoreRangesWaitingThanTheLogarithmOfTheCountAndOne) {
    std::mt19937 random(3406);
    for (const uint32_t count : {12u, 100u, 1000u, 30000u}) {
        EXPECT_LE(ExpectTheReferencesWay(Ascending(count)), Log2(count) + 1);
        EXPECT_LE(ExpectTheReferencesWay(Values(count, 5)), Log2(count) + 1);
        EXPECT_LE(ExpectTheReferencesWay(Random(count, 0xFFFFFFFF, random)), Log2(count) + 1);
    }
}

TEST(QuickSort, InsertsUpToElevenEntriesAndSplitsTwelve) {
    Values eleven = Ascending(11);
    Entries entries = EntriesOf(eleven);
    LoggedPauses pauses;
    Sort(entries, LogAndCompare);
    Log neighbours;
    for (std::size_t i = 1; i < 11; ++i)
        neighbours.emplace_back(&eleven[i - 1], &eleven[i]);
    EXPECT_EQ(neighbours, g_log);

    Values twelve = Ascending(12);
    entries = EntriesOf(twelve);
    g_log.clear();
    Sort(entries, LogAndCompare);
    ASSERT_LE(4u, g_log.size());
    const Log begin(g_log.begin(), g_log.begin() + 4);
    const Log expected = {{&twelve[0], &twelve[1]}, // is it descending?
                          {&twelve[0], &twelve[5]}, // the median of three
                          {&twelve[11], &twelve[0]},
                          {&twelve[11], &twelve[5]}};
    EXPECT_EQ(expected, begin);
}

TEST(QuickSort, TakesOneComparisonForEachEntryOfADescendingArray) {
    EXPECT_EQ(3999u, ComparisonsFor(Descending(4000)));
    EXPECT_EQ(11u, ComparisonsFor(Descending(12)));
}

TEST(QuickSort, PausesBeforeEvery65536thLookForADescentAndBeforeEvery64thExchangeThatTurnsItRound) {
    Values values = Descending(150000);
    Entries entries = EntriesOf(values);
    LoggedPauses pauses;
    Sort(entries, LogAndCompare);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < g_log.size(); ++i) {
        if (g_log[i].first == nullptr)
            places.push_back(i);
    }
    constexpr std::size_t LOOK = 149999 + 2;
    std::vector<std::size_t> expected = {65535, 131071 + 1};
    for (std::size_t i = 0; i < 75000 / 64; ++i)
        expected.push_back(LOOK + i);
    EXPECT_EQ(expected, places);
}

TEST(QuickSort, IsNotMisledByAnArrayThatIsDescendingAlmostToItsEnd) {
    for (const uint32_t count : {12u, 13u, 500u}) {
        Values values = Descending(count);
        values[count - 1] = values[count - 2];
        ComparisonsFor(values);
        std::swap(values[count - 1], values[0]);
        ComparisonsFor(values);
    }
}

TEST(QuickSort, TakesAboutNLogNComparisonsForOrderedAndEqualEntries) {
    for (const uint32_t count : {12u, 100u, 4000u, 30000u}) {
        const double bound = 1.2 * count * Log2(count) + 16;
        EXPECT_LE(static_cast<double>(ComparisonsFor(Ascending(count))), bound);
        EXPECT_LE(static_cast<double>(ComparisonsFor(Descending(count))), bound);
        EXPECT_LE(static_cast<double>(ComparisonsFor(Values(count, 1))), bound);
    }
}

/* ---- inputs against it */

/* Decides the values as late as it can, so that every pivot turns out to be among the smallest (the adversary of
 * McIlroy). Whatever sort asks it ends with an order that it needs as long for again. */
class Adversary {
  public:
    explicit Adversary(uint32_t count) : values(count, UNDECIDED) {}

    int32_t Compare(const void *a, const void *b) {
        uint32_t &x = Value(a);
        uint32_t &y = Value(b);
        if (x == UNDECIDED && y == UNDECIDED)
            (&x == candidate_ ? x : y) = next_++;
        if (x == UNDECIDED)
            candidate_ = &x;
        else if (y == UNDECIDED)
            candidate_ = &y;
        return (x > y) - (x < y);
    }

    /* What it decided on; what was never needed comes last. */
    Values Decided() {
        for (uint32_t &value : values) {
            if (value == UNDECIDED)
                value = next_++;
        }
        return values;
    }

    Values values;

  private:
    static constexpr uint32_t UNDECIDED = 0xFFFFFFFF;

    static uint32_t &Value(const void *entry) { return *static_cast<uint32_t *>(const_cast<void *>(entry)); }

    uint32_t next_ = 0;
    const uint32_t *candidate_ = nullptr;
};

Adversary *g_adversary;

/* Values for which plain median-of-three splits off two entries at a time. */
Values MedianKiller(uint32_t count) {
    Adversary adversary(count);
    Entries entries = EntriesOf(adversary.values);
    QuicksortReference reference([&](const void *a, const void *b) { return adversary.Compare(a, b); }, [] {});
    reference.Sort(entries);
    return adversary.Decided();
}

/* The comparisons of a plain quicksort for these values, and the ranges that wait in it. */
std::pair<double, std::size_t> PlainSort(Values values) {
    Entries entries = EntriesOf(values);
    double comparisons = 0;
    QuicksortReference reference(
        [&comparisons](const void *a, const void *b) {
            ++comparisons;
            return ByValue(a, b);
        },
        [] {});
    reference.Sort(entries);
    return {comparisons, reference.deepest};
}

TEST(QuickSortUnderAttack, TakesNLogNComparisonsWherePlainMedianOfThreeTakesQuadraticallyMany) {
    constexpr uint32_t COUNT = 2000;
    Values one_equal_pair = Descending(COUNT);
    one_equal_pair[COUNT / 2] = one_equal_pair[COUNT / 2 - 1];
    for (const Values &values : {MedianKiller(COUNT), one_equal_pair}) {
        const auto [plain, waiting] = PlainSort(values);
        EXPECT_GE(plain, COUNT * COUNT / 10.0) << "no attack";
        EXPECT_LE(waiting, Log2(COUNT) + 1);
        EXPECT_LE(static_cast<double>(ComparisonsFor(values)), 6 * COUNT * Log2(COUNT));
    }
}

TEST(QuickSortUnderAttack, TakesNLogNComparisonsForPipesAndValleys) {
    for (const uint32_t count : {100u, 4000u, 30000u}) {
        const double bound = 6 * count * Log2(count);
        EXPECT_LE(static_cast<double>(ComparisonsFor(OrganPipe(count))), bound);
        EXPECT_LE(static_cast<double>(ComparisonsFor(Valley(count))), bound);
    }
    EXPECT_LE(PlainSort(OrganPipe(1000)).second, Log2(1000) + 1);
    EXPECT_LE(PlainSort(Valley(1000)).second, Log2(1000) + 1);
}

TEST(QuickSortUnderAttack, HoldsAgainstAnAdversaryThatWatchesIt) {
    for (const uint32_t count : {12u, 100u, 4000u, 20000u}) {
        Adversary adversary(count);
        g_adversary = &adversary;
        Entries entries = EntriesOf(adversary.values);
        g_comparisons = 0;
        Sort(entries, [](const void *a, const void *b) {
            ++g_comparisons;
            return g_adversary->Compare(a, b);
        });
        EXPECT_LE(static_cast<double>(g_comparisons), 6 * count * Log2(count) + 50);
        EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), [](void *a, void *b) { return ByValue(a, b) < 0; }));
        EXPECT_LE(static_cast<double>(ComparisonsFor(adversary.Decided())), 6 * count * Log2(count) + 50);
    }
}

TEST(QuickSortUnderAttack, FollowsItsRulesUntilTheAttackShows) {
    Values values = MedianKiller(2000);
    Entries entries = EntriesOf(values);
    Entries same = entries;
    Log expected;
    QuicksortReference reference(
        [&expected](const void *a, const void *b) {
            expected.emplace_back(a, b);
            return ByValue(a, b);
        },
        [&expected] { expected.emplace_back(nullptr, nullptr); });
    reference.Sort(same);
    LoggedPauses pauses;
    Sort(entries, LogAndCompare);
    const Log log = BehindTheLook(values, g_log);
    const auto parted = std::mismatch(log.begin(), log.end(), expected.begin(), expected.end()).first - log.begin();
    EXPECT_GE(static_cast<double>(parted), 3 * 2000 * Log2(2000));
    EXPECT_LT(static_cast<std::size_t>(parted), log.size());
}

TEST(QuickSortUnderAttack, GoesOnPausing) {
    Values values = MedianKiller(2000);
    Entries entries = EntriesOf(values);
    LoggedPauses pauses;
    Sort(entries, LogAndCompare);
    uint32_t since_pause = 0;
    uint32_t longest = 0;
    for (const auto &[a, b] : g_log) {
        since_pause = a == nullptr ? 0 : since_pause + 1;
        longest = std::max(longest, since_pause);
    }
    /* 63 steps without a pause, each the split of a short range or an insertion sort: 3 + 63 comparisons at the most.
     */
    EXPECT_LE(longest, 64u * 66);
    EXPECT_GE(kit::Op<QAL_TaskRunDelay>().Calls(), g_log.size() / 100);
}

/* ---- comparisons that contradict themselves */

const Entries *g_entries;

/* Sorts in memory that ends at a page without access, with canaries before it, and expects the same entries in some
 * order afterwards. */
void SortGuarded(Values values, SRVQS_CMP_FUNC compare) {
    const Entries before = EntriesOf(values);
    g_entries = &before;
    Entries with_canaries(8, &values);
    with_canaries.insert(with_canaries.end(), before.begin(), before.end());
    GuardedText room(with_canaries.data(), with_canaries.size() * sizeof(void *));
    void **begin = reinterpret_cast<void **>(room.Get());
    SRVQS_QuickSort(begin + 8, static_cast<uint32_t>(before.size()), compare);
    EXPECT_TRUE(std::all_of(begin, begin + 8, [&](void *canary) { return canary == &values; }));
    std::sort(begin + 8, begin + 8 + before.size());
    EXPECT_TRUE(std::equal(before.begin(), before.end(), begin + 8)) << "entries lost or doubled";
}

void ExpectEntry(const void *entry) {
    if (entry < g_entries->front() || entry > g_entries->back())
        ADD_FAILURE() << "compared what is no entry";
}

TEST(QuickSort, StaysInsideTheArrayWhateverTheComparisonAnswers) {
    static RandomWalk walk(3407);
    for (uint32_t count = 1; count <= 400; count += count < 40 ? 1 : 37) {
        for (int round = 0; round < 20; ++round) {
            SortGuarded(Ascending(count), [](const void *a, const void *b) {
                ExpectEntry(a);
                ExpectEntry(b);
                return static_cast<int32_t>(walk.Below(3)) - 1;
            });
        }
        SortGuarded(Ascending(count), [](const void *, const void *) { return 1; });
        SortGuarded(Ascending(count), [](const void *, const void *) { return -1; });
        SortGuarded(Ascending(count), [](const void *, const void *) { return 0; });
        SortGuarded(Ascending(count), [](const void *a, const void *b) { return a < b ? INT32_MAX : INT32_MIN; });
        ASSERT_FALSE(testing::Test::HasFailure()) << count << " entries";
    }
}

} // namespace
