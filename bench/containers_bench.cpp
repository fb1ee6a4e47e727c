// The containers and the sort beside what a C programmer would take instead.

#include "record_sets.h"

#include <cstring>
#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_quicksort.h>

namespace {

constexpr uint32_t MODULE = 1;

/* ---- look-up of a 64-byte record */

SRVOT_TBL_S *OrderedTable(std::size_t count) {
    SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Record), static_cast<uint32_t>(count), Record_CompareWithKey);
    for (const Record &record : Ascending(count))
        SRVOT_AddElmt(table, &record.id, &record);
    return table;
}

void OrderedTable_Find(benchmark::State &state, uint32_t offset) {
    SRVOT_TBL_S *table = OrderedTable(CountOf(state));
    ForEveryDraw(state, Draws(CountOf(state), offset), [=](const uint32_t *id) { return SRVOT_FindElmt(table, id); });
    SRVOT_DeleteOTbl(&table);
}

void Bsearch_Records(benchmark::State &state, uint32_t offset) {
    const std::vector<Record> records = Ascending(CountOf(state));
    ForEveryDraw(state, Draws(CountOf(state), offset), [&](const uint32_t *id) {
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
    ForEveryDraw(state, Draws(CountOf(state), offset), [=](const uint32_t *id) { return SRVSTL_FindLink(table, id); });
    SRVSTL_DeleteSTbl(&table, nullptr);
}

void Bsearch_Pointers(benchmark::State &state, uint32_t offset) {
    std::vector<Record> records = Shuffled(CountOf(state));
    const std::vector<void *> pointers = AscendingPointersTo(records);
    ForEveryDraw(state, Draws(CountOf(state), offset), [&](const uint32_t *id) -> void * {
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
