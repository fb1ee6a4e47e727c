// The containers and the sort beside what a C programmer would take instead.
//
// Keys come in an order that no branch predictor learns: 65536 random draws before the order repeats.

#include "record.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <random>
#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_quicksort.h>
#include <vector>

namespace {

constexpr uint32_t MODULE = 1;
constexpr std::size_t DRAWS = 65536;

using Bsearch = void *(*)(const void *, const void *, std::size_t, std::size_t, int (*)(const void *, const void *));
using Qsort = void (*)(void *, std::size_t, std::size_t, int (*)(const void *, const void *));

/* glibc's own functions, not what its headers inline into the caller. */
volatile Bsearch glibc_bsearch = bsearch;
volatile Qsort glibc_qsort = qsort;

/* Records with the ids 1, 3, 5, ... */
std::vector<Record> Ascending(std::size_t count) {
    std::vector<Record> records(count);
    for (std::size_t i = 0; i < count; ++i)
        records[i].id = static_cast<uint32_t>(2 * i + 1);
    return records;
}

std::vector<Record> Shuffled(std::size_t count) {
    std::vector<Record> records = Ascending(count);
    std::shuffle(records.begin(), records.end(), std::mt19937(1));
    return records;
}

std::vector<void *> PointersTo(std::vector<Record> &records) {
    std::vector<void *> pointers;
    for (Record &record : records)
        pointers.push_back(&record);
    return pointers;
}

std::vector<void *> AscendingPointersTo(std::vector<Record> &shuffled) {
    std::vector<void *> pointers = PointersTo(shuffled);
    std::sort(pointers.begin(), pointers.end(), Record_Less);
    return pointers;
}

/* Ids of records in random order; offset 1 gives ids that no record has. */
std::vector<uint32_t> Draws(std::size_t count, uint32_t offset = 0) {
    std::mt19937 random(2);
    std::uniform_int_distribution<uint32_t> index(0, static_cast<uint32_t>(count - 1));
    std::vector<uint32_t> ids(DRAWS);
    for (uint32_t &id : ids)
        id = 2 * index(random) + 1 + offset;
    return ids;
}

std::size_t CountOf(const benchmark::State &state) {
    return static_cast<std::size_t>(state.range(0));
}

template <typename Lookup>
void Look(benchmark::State &state, const std::vector<uint32_t> &ids, Lookup lookup) {
    std::size_t draw = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup(&ids[draw]));
        draw = (draw + 1) % DRAWS;
    }
}

/* ---- look-up of a 64-byte record */

SRVOT_TBL_S *OrderedTable(std::size_t count) {
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Record), static_cast<uint32_t>(count), Record_CompareWithKey);
    for (const Record &record : Ascending(count))
        SRVOT_AddElmt(table, &record.id, &record);
    return table;
}

void OrderedTable_Find(benchmark::State &state, uint32_t offset) {
    SRVOT_TBL_S *table = OrderedTable(CountOf(state));
    Look(state, Draws(CountOf(state), offset), [=](const uint32_t *id) { return SRVOT_FindElmt(table, id); });
    SRVOT_DeleteOTbl(&table);
}

void Bsearch_Records(benchmark::State &state, uint32_t offset) {
    const std::vector<Record> records = Ascending(CountOf(state));
    Look(state, Draws(CountOf(state), offset), [&](const uint32_t *id) {
        return glibc_bsearch(id, records.data(), records.size(), sizeof(Record), Record_CompareForBsearch);
    });
}

BENCHMARK_CAPTURE(OrderedTable_Find, hit, 0)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(Bsearch_Records, hit, 0)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(OrderedTable_Find, miss, 1)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(Bsearch_Records, miss, 1)->Arg(16)->Arg(256)->Arg(4096);

/* ---- look-up of a link */

void LinkTable_Find(benchmark::State &state, uint32_t offset) {
    std::vector<Record> records = Shuffled(CountOf(state));
    SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, static_cast<uint32_t>(CountOf(state)), Record_CompareWithKey);
    for (Record &record : records)
        SRVSTL_SetLink(table, &record.id, &record);
    Look(state, Draws(CountOf(state), offset), [=](const uint32_t *id) { return SRVSTL_FindLink(table, id); });
    SRVSTL_DeleteSTbl(&table, nullptr);
}

void Bsearch_Pointers(benchmark::State &state, uint32_t offset) {
    std::vector<Record> records = Shuffled(CountOf(state));
    const std::vector<void *> pointers = AscendingPointersTo(records);
    Look(state, Draws(CountOf(state), offset), [&](const uint32_t *id) -> void * {
        auto *slot = static_cast<void **>(
            glibc_bsearch(id, pointers.data(), pointers.size(), sizeof(void *), Record_CompareForPointerBsearch));
        return slot == nullptr ? nullptr : *slot;
    });
}

BENCHMARK_CAPTURE(LinkTable_Find, hit, 0)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(Bsearch_Pointers, hit, 0)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(LinkTable_Find, miss, 1)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK_CAPTURE(Bsearch_Pointers, miss, 1)->Arg(16)->Arg(256)->Arg(4096);

/* ---- building a table of n records in random order */

void OrderedTable_Build(benchmark::State &state) {
    const std::vector<Record> records = Shuffled(CountOf(state));
    for (auto _ : state) {
        SRVOT_TBL_S *table =
            SRVOT_CreateNew(MODULE, sizeof(Record), static_cast<uint32_t>(CountOf(state)), Record_CompareWithKey);
        for (const Record &record : records)
            SRVOT_AddElmt(table, &record.id, &record);
        SRVOT_DeleteOTbl(&table);
    }
}

/* The least that replacing an array costs: for every insertion one allocation, the copies of the parts before and
 * behind its place, one release. The places are those of the same records. */
void CopiesOfTheSameSizes(benchmark::State &state) {
    const std::vector<Record> records = Shuffled(CountOf(state));
    std::vector<std::size_t> places;
    std::vector<uint32_t> present;
    for (const Record &record : records) {
        const auto place = std::lower_bound(present.begin(), present.end(), record.id);
        places.push_back(static_cast<std::size_t>(place - present.begin()));
        present.insert(place, record.id);
    }
    for (auto _ : state) {
        uint8_t *array = nullptr;
        for (std::size_t count = 0; count < places.size(); ++count) {
            const std::size_t before = places[count] * sizeof(Record);
            const std::size_t behind = (count - places[count]) * sizeof(Record);
            auto *grown =
                static_cast<uint8_t *>(KIVO_MemAlloc(MODULE, static_cast<uint32_t>((count + 1) * sizeof(Record))));
            if (before != 0)
                std::memcpy(grown, array, before);
            if (behind != 0)
                std::memcpy(grown + before + sizeof(Record), array + before, behind);
            benchmark::DoNotOptimize(grown);
            KIVO_MemFree(array);
            array = grown;
        }
        KIVO_MemFree(array);
    }
}

BENCHMARK(OrderedTable_Build)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(CopiesOfTheSameSizes)->Arg(4096)->Unit(benchmark::kMillisecond);

/* ---- sorting pointers to records that lie in random order */

template <typename Sort>
void SortPointers(benchmark::State &state, Sort sort) {
    std::vector<Record> records = Shuffled(CountOf(state));
    const std::vector<void *> unsorted = PointersTo(records);
    std::vector<void *> pointers(unsorted.size());
    for (auto _ : state) {
        pointers = unsorted;
        sort(pointers);
        benchmark::DoNotOptimize(pointers.data());
    }
}

void QuickSort(benchmark::State &state) {
    SortPointers(state, [](std::vector<void *> &pointers) {
        SRVQS_QuickSort(pointers.data(), static_cast<uint32_t>(pointers.size()), Record_Compare);
    });
}

void Glibc_Qsort(benchmark::State &state) {
    SortPointers(state, [](std::vector<void *> &pointers) {
        glibc_qsort(pointers.data(), pointers.size(), sizeof(void *), Record_CompareForQsort);
    });
}

void Std_Sort(benchmark::State &state) {
    SortPointers(state,
                 [](std::vector<void *> &pointers) { std::sort(pointers.begin(), pointers.end(), Record_Less); });
}

BENCHMARK(QuickSort)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Glibc_Qsort)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Std_Sort)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace
