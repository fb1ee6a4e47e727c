// Records to search and sort, and the order in which they are asked for.
#pragma once

#include "record.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <random>
#include <vector>

/* Draws before their order repeats: more than any branch predictor learns. */
inline constexpr std::size_t DRAWS = 65536;

using Bsearch = void *(*)(const void *, const void *, std::size_t, std::size_t, int (*)(const void *, const void *));
using Qsort = void (*)(void *, std::size_t, std::size_t, int (*)(const void *, const void *));

/* glibc's own functions, not what its headers inline into the caller. */
inline volatile Bsearch glibc_bsearch = bsearch;
inline volatile Qsort glibc_qsort = qsort;

/* Records with the ids 1, 3, 5, ... */
inline std::vector<Record> Ascending(std::size_t count) {
    std::vector<Record> records(count);
    for (std::size_t i = 0; i < count; ++i)
        records[i].id = static_cast<uint32_t>(2 * i + 1);
    return records;
}

inline std::vector<Record> Shuffled(std::size_t count) {
    std::vector<Record> records = Ascending(count);
    std::shuffle(records.begin(), records.end(), std::mt19937(1));
    return records;
}

inline std::vector<void *> PointersTo(std::vector<Record> &records) {
    std::vector<void *> pointers;
    for (Record &record : records)
        pointers.push_back(&record);
    return pointers;
}

inline std::vector<void *> AscendingPointersTo(std::vector<Record> &shuffled) {
    std::vector<void *> pointers = PointersTo(shuffled);
    std::sort(pointers.begin(), pointers.end(), Record_Less);
    return pointers;
}

/* Ids of records in random order; offset 1 gives ids that no record has. */
inline std::vector<uint32_t> Draws(std::size_t count, uint32_t offset = 0) {
    std::mt19937 random(2);
    std::uniform_int_distribution<uint32_t> index(0, static_cast<uint32_t>(count - 1));
    std::vector<uint32_t> ids(DRAWS);
    for (uint32_t &id : ids)
        id = 2 * index(random) + 1 + offset;
    return ids;
}

inline std::size_t CountOf(const benchmark::State &state) {
    return static_cast<std::size_t>(state.range(0));
}

/* Calls the function with one drawn id after the other. */
template <typename Function>
void ForEveryDraw(benchmark::State &state, const std::vector<uint32_t> &ids, Function function) {
    std::size_t draw = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(function(&ids[draw]));
        draw = (draw + 1) % DRAWS;
    }
}

/* Pointers to the same records in one random order after the other, at least DRAWS of them. Made once for each count. */
inline const std::vector<void *> &Unsorted(std::size_t count) {
    static std::map<std::size_t, std::pair<std::vector<Record>, std::vector<void *>>> made;
    auto &[records, unsorted] = made[count];
    if (unsorted.empty())
        records = Shuffled(count);
    std::mt19937 random(3);
    while (unsorted.size() < std::max(count, DRAWS)) {
        std::vector<void *> pointers = PointersTo(records);
        std::shuffle(pointers.begin(), pointers.end(), random);
        unsorted.insert(unsorted.end(), pointers.begin(), pointers.end());
    }
    return unsorted;
}

/* Sorts pointers to records that lie in random order, each time in another one until DRAWS pointers were sorted. */
template <typename Sort>
void SortPointers(benchmark::State &state, Sort sort) {
    const std::size_t count = CountOf(state);
    const std::vector<void *> &unsorted = Unsorted(count);
    std::vector<void *> pointers(count);
    std::size_t next = 0;
    for (auto _ : state) {
        std::copy_n(unsorted.begin() + static_cast<std::ptrdiff_t>(next), count, pointers.begin());
        next = next + count == unsorted.size() ? 0 : next + count;
        sort(pointers);
        benchmark::DoNotOptimize(pointers.data());
    }
}
