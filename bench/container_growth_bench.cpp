// How the containers and the sort grow beside trees and the standard sorts, from 16 to a million records of 64 bytes.
// bench/plot draws the curves.

#include "record_sets.h"

#include <absl/container/btree_map.h>
#include <glib.h>
#include <map>
#include <memory>
#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_quicksort.h>

namespace {

constexpr uint32_t MODULE = 1;

/* Each of these holds the records 1, 3, 5, ... and offers: find one, add one, remove one. */

class OrderedTable {
  public:
    /* One insertion after the other would take hours for a million: the array is put in at once. */
    explicit OrderedTable(const std::vector<Record> &shuffled) {
        const std::vector<Record> records = Ascending(shuffled.size());
        table_->ulCount = static_cast<uint32_t>(records.size());
        table_->pElmts = KIVO_MemAlloc(MODULE, static_cast<uint32_t>(records.size() * sizeof(Record)));
        std::copy(records.begin(), records.end(), static_cast<Record *>(table_->pElmts));
    }
    ~OrderedTable() { SRVOT_DeleteOTbl(&table_); }

    const void *Find(const uint32_t *id) { return SRVOT_FindElmt(table_, id); }
    void Add(const Record &record) { SRVOT_AddElmt(table_, &record.id, &record); }
    void Remove(const Record &record) { SRVOT_RemoveElmtByKey(table_, &record.id); }

  private:
    SRVOT_TBL_S *table_ = SRVOT_CreateNew(MODULE, sizeof(Record), UINT32_MAX, Record_CompareWithKey);
};

class LinkTable {
  public:
    explicit LinkTable(std::vector<Record> &shuffled) {
        const std::vector<void *> pointers = AscendingPointersTo(shuffled);
        table_->ulCount = static_cast<uint32_t>(pointers.size());
        table_->ppLinks =
            static_cast<void **>(KIVO_MemAlloc(MODULE, static_cast<uint32_t>(pointers.size() * sizeof(void *))));
        std::copy(pointers.begin(), pointers.end(), table_->ppLinks);
    }
    ~LinkTable() { SRVSTL_DeleteSTbl(&table_, nullptr); }

    const void *Find(const uint32_t *id) { return SRVSTL_FindLink(table_, id); }
    void Add(Record &record) { SRVSTL_SetLink(table_, &record.id, &record); }
    void Remove(const Record &record) { SRVSTL_RemoveLink(table_, &record.id); }

  private:
    SRVSTL_TBL_S *table_ = SRVSTL_CreateNew(MODULE, UINT32_MAX, Record_CompareWithKey);
};

template <typename Map>
class MapOfRecords {
  public:
    explicit MapOfRecords(const std::vector<Record> &shuffled) {
        for (const Record &record : shuffled)
            Add(record);
    }

    const void *Find(const uint32_t *id) {
        const auto found = map_.find(*id);
        return found == map_.end() ? nullptr : &found->second;
    }
    void Add(const Record &record) { map_.emplace(record.id, record); }
    void Remove(const Record &record) { map_.erase(record.id); }

  private:
    Map map_;
};

using StdMap = MapOfRecords<std::map<uint32_t, Record>>;
using AbslBtreeMap = MapOfRecords<absl::btree_map<uint32_t, Record>>;

class GLibTree {
  public:
    explicit GLibTree(std::vector<Record> &shuffled) {
        for (Record &record : shuffled)
            Add(record);
    }
    ~GLibTree() { g_tree_destroy(tree_); }

    const void *Find(const uint32_t *id) { return g_tree_lookup(tree_, id); }
    void Add(Record &record) { g_tree_insert(tree_, &record.id, &record); }
    void Remove(const Record &record) { g_tree_remove(tree_, &record.id); }

  private:
    GTree *tree_ = g_tree_new(Record_CompareWithKey);
};

/* Made once for each number of records: a million of them take longer to make than to measure. */
template <typename Container>
Container &Filled(std::size_t count) {
    static std::map<std::size_t, std::pair<std::vector<Record>, std::unique_ptr<Container>>> made;
    auto &[records, container] = made[count];
    if (container == nullptr) {
        records = Shuffled(count);
        container = std::make_unique<Container>(records);
    }
    return *container;
}

template <typename Container>
void LookUp(benchmark::State &state) {
    Container &container = Filled<Container>(CountOf(state));
    ForEveryDraw(state, Draws(CountOf(state)), [&](const uint32_t *id) { return container.Find(id); });
}

/* One record goes in and out again, at a place that is drawn. */
template <typename Container>
void AddAndRemove(benchmark::State &state) {
    Container &container = Filled<Container>(CountOf(state));
    Record record{};
    ForEveryDraw(state, Draws(CountOf(state), 1), [&](const uint32_t *id) {
        record.id = *id;
        container.Add(record);
        container.Remove(record);
        return &container;
    });
}

void QuickSort(benchmark::State &state) {
    SortPointers(state, [](std::vector<void *> &pointers) {
        SRVQS_QuickSort(pointers.data(), static_cast<uint32_t>(pointers.size()), Record_Compare);
    });
}

void GlibcQsort(benchmark::State &state) {
    SortPointers(state, [](std::vector<void *> &pointers) {
        glibc_qsort(pointers.data(), pointers.size(), sizeof(void *), Record_CompareForQsort);
    });
}

void StdSort(benchmark::State &state) {
    SortPointers(state,
                 [](std::vector<void *> &pointers) { std::sort(pointers.begin(), pointers.end(), Record_Less); });
}

void Sizes(benchmark::internal::Benchmark *benchmark) {
    for (const int count : {16, 64, 256, 1000, 4000, 16000, 64000, 250000, 1000000})
        benchmark->Arg(count);
}

BENCHMARK_TEMPLATE(LookUp, OrderedTable)->Apply(Sizes);
BENCHMARK_TEMPLATE(LookUp, LinkTable)->Apply(Sizes);
BENCHMARK_TEMPLATE(LookUp, StdMap)->Apply(Sizes);
BENCHMARK_TEMPLATE(LookUp, GLibTree)->Apply(Sizes);
BENCHMARK_TEMPLATE(LookUp, AbslBtreeMap)->Apply(Sizes);

BENCHMARK_TEMPLATE(AddAndRemove, OrderedTable)->Apply(Sizes);
BENCHMARK_TEMPLATE(AddAndRemove, LinkTable)->Apply(Sizes);
BENCHMARK_TEMPLATE(AddAndRemove, StdMap)->Apply(Sizes);
BENCHMARK_TEMPLATE(AddAndRemove, GLibTree)->Apply(Sizes);
BENCHMARK_TEMPLATE(AddAndRemove, AbslBtreeMap)->Apply(Sizes);

BENCHMARK(QuickSort)->Apply(Sizes);
BENCHMARK(GlibcQsort)->Apply(Sizes);
BENCHMARK(StdSort)->Apply(Sizes);

} // namespace
