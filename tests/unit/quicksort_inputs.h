/* Inputs of the sort's tests: values whose addresses are sorted, and the log of what a sort did. */
#ifndef UVEL_TESTS_UNIT_QUICKSORT_INPUTS_H
#define UVEL_TESTS_UNIT_QUICKSORT_INPUTS_H

#include <uvelcommon_base/kivo_quicksort.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "kit.h"

namespace quicksort_inputs {

using Values = std::vector<uint32_t>;
using Entries = std::vector<void *>;

inline uint32_t ValueOf(const void *entry) {
    return *static_cast<const uint32_t *>(entry);
}

inline int32_t ByValue(const void *a, const void *b) {
    return (ValueOf(a) > ValueOf(b)) - (ValueOf(a) < ValueOf(b));
}

inline Entries EntriesOf(Values &values) {
    Entries entries;
    for (uint32_t &value : values)
        entries.push_back(&value);
    return entries;
}

inline Values ValuesOf(const Entries &entries) {
    Values values;
    for (const void *entry : entries)
        values.push_back(ValueOf(entry));
    return values;
}

inline Values Ascending(uint32_t count) {
    Values values(count);
    std::iota(values.begin(), values.end(), 0);
    return values;
}

inline Values Descending(uint32_t count) {
    Values values = Ascending(count);
    std::reverse(values.begin(), values.end());
    return values;
}

/* Up to the middle and down again. */
inline Values OrganPipe(uint32_t count) {
    Values values = Ascending(count);
    for (uint32_t i = 0; i < count; ++i)
        values[i] = std::min(i, count - 1 - i);
    return values;
}

/* Down to the middle and up again. */
inline Values Valley(uint32_t count) {
    Values values = OrganPipe(count);
    for (uint32_t &value : values)
        value = count - value;
    return values;
}

inline Values Random(uint32_t count, uint32_t distinct, std::mt19937 &random) {
    Values values(count);
    for (uint32_t &value : values)
        value = static_cast<uint32_t>(random() % distinct);
    return values;
}

/* Any values; those up to the middle are in descending order. */
inline Values HalfDescending(uint32_t count, std::mt19937 &random) {
    Values values = Random(count, 0xFFFFFFFF, random);
    std::sort(values.begin(), values.begin() + count / 2, std::greater<>());
    return values;
}

inline void Sort(Entries &entries, SRVQS_CMP_FUNC compare = ByValue) {
    SRVQS_QuickSort(entries.data(), static_cast<uint32_t>(entries.size()), compare);
}

/* Expects the entries to be those of the values, in ascending order. */
inline void ExpectSorted(Values &values, Entries sorted) {
    Entries expected = EntriesOf(values);
    std::stable_sort(expected.begin(), expected.end(), [](void *a, void *b) { return ValueOf(a) < ValueOf(b); });
    EXPECT_EQ(ValuesOf(expected), ValuesOf(sorted));
    std::sort(expected.begin(), expected.end());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(expected, sorted) << "entries lost or doubled";
}

/* Comparisons in order, a pair of nulls for each pause. */
using Log = std::vector<std::pair<const void *, const void *>>;

inline Log g_log;

inline int32_t LogAndCompare(const void *a, const void *b) {
    g_log.emplace_back(a, b);
    return ByValue(a, b);
}

/* Logs the pauses of the library while it lives. */
class LoggedPauses {
  public:
    LoggedPauses() {
        g_log.clear();
        kit::Op<QAL_TaskRunDelay>().Does([](uint32_t held, uint32_t delay) {
            EXPECT_EQ(200u, held);
            EXPECT_EQ(20u, delay);
            g_log.emplace_back(nullptr, nullptr);
        });
    }
    ~LoggedPauses() { kit::Op<QAL_TaskRunDelay>().Does(nullptr); }
    LoggedPauses(const LoggedPauses &) = delete;
    LoggedPauses &operator=(const LoggedPauses &) = delete;
};

} // namespace quicksort_inputs

#endif
