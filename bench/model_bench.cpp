/* Queries of the device model with 10,000 interfaces, quiet and while a feeder changes it without pause; changes. */
#include "busy_model.h"

#include <benchmark/benchmark.h>
#include <fstream>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <uvelhost/model_events.h>
#include <uvelhost/model_view.h>
#include <uvelhost/trunk.h>

namespace {

using namespace busy_model;

template <Numbers NUMBERS, bool CHANGING>
void QueryByIndex(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(NUMBERS);
    Load(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::unique_ptr<Feeder> feeder;
    if (CHANGING)
        feeder = std::make_unique<Feeder>(indices);
    std::size_t i = 0;
    for (auto _ : state) {
        uint32_t type = 0;
        BDS_IfnetGetPortType(order[i], &type);
        benchmark::DoNotOptimize(type);
        i = i + 1 == order.size() ? 0 : i + 1;
    }
    if (feeder != nullptr)
        state.counters["changes"] =
            benchmark::Counter(static_cast<double>(feeder->Changes()), benchmark::Counter::kIsRate);
}

void QueryOfTrunkMembership(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    Load(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(BDS_TrunkIsPortInTrunk(order[i]));
        i = i + 1 == order.size() ? 0 : i + 1;
    }
}

/* The obvious alternative: a hash table behind a lock that readers share. */
struct LockedTable {
    explicit LockedTable(const std::vector<uint32_t> &indices) {
        for (uint32_t index : indices)
            table.emplace(index, Interface(index));
    }

    void Put(const MDL_IF_S &interface) {
        const std::lock_guard writing(lock);
        table[interface.ulIfIndex] = interface;
    }

    std::unordered_map<uint32_t, MDL_IF_S> table;
    std::shared_mutex lock;
};

template <Numbers NUMBERS, bool CHANGING>
void LockedQuery(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(NUMBERS);
    LockedTable locked(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::atomic<bool> stop = !CHANGING;
    std::thread feeder([&] {
        for (uint32_t i = 0; !stop; ++i)
            locked.Put(Interface(indices[i % indices.size()]));
    });
    std::size_t i = 0;
    for (auto _ : state) {
        std::shared_lock reading(locked.lock);
        benchmark::DoNotOptimize(locked.table.find(order[i])->second.ulPortType);
        i = i + 1 == order.size() ? 0 : i + 1;
    }
    stop = true;
    feeder.join();
}

/* ---- by name */

std::vector<std::string> ShuffledNames() {
    std::vector<std::string> names;
    for (uint32_t index : Shuffled(Indices(Numbers::DENSE)))
        names.push_back(Interface(index).szName);
    return names;
}

void QueryByName(benchmark::State &state) {
    Load(Indices(Numbers::DENSE));
    const std::vector<std::string> names = ShuffledNames();
    std::size_t i = 0;
    for (auto _ : state) {
        uint32_t if_index = 0;
        MDL_FindIf(names[i].c_str(), &if_index);
        benchmark::DoNotOptimize(if_index);
        i = i + 1 == names.size() ? 0 : i + 1;
    }
}

void LockedQueryByName(benchmark::State &state) {
    std::unordered_map<std::string, uint32_t> table;
    std::shared_mutex lock;
    for (uint32_t index : Indices(Numbers::DENSE))
        table.emplace(Interface(index).szName, index);
    const std::vector<std::string> names = ShuffledNames();
    std::size_t i = 0;
    for (auto _ : state) {
        std::shared_lock reading(lock);
        benchmark::DoNotOptimize(table.find(names[i].c_str())->second);
        i = i + 1 == names.size() ? 0 : i + 1;
    }
}

/* ---- changes */

void ChangeOfOneInterface(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    Load(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::size_t i = 0;
    uint32_t round = 0;
    for (auto _ : state) {
        MDL_IF_S interface = Interface(order[i]);
        interface.ulPhyType = ++round;
        MDL_BATCH *batch = MDL_Begin(1, 0);
        MDL_PutIf(batch, &interface);
        MDL_Commit(batch);
        i = i + 1 == order.size() ? 0 : i + 1;
    }
}

void LockedChange(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    LockedTable locked(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::size_t i = 0;
    for (auto _ : state) {
        locked.Put(Interface(order[i]));
        i = i + 1 == order.size() ? 0 : i + 1;
    }
}

/* What the kernel's resynchronisation costs when nothing has changed. */
void ResyncWithoutDifference(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    Load(indices);
    for (auto _ : state) {
        MDL_BATCH *batch = MDL_Begin(1, 0);
        MDL_MarkAll(batch);
        for (uint32_t index : indices) {
            const MDL_IF_S interface = Interface(index);
            MDL_PutIf(batch, &interface);
        }
        MDL_Sweep(batch);
        MDL_Commit(batch);
    }
}

/* What it costs without the model: everything is built anew and replaces the former. */
void LockedResync(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    LockedTable locked(indices);
    for (auto _ : state) {
        LockedTable next(indices);
        const std::lock_guard writing(locked.lock);
        locked.table.swap(next.table);
    }
}

/* Memory that the process holds. */
double ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * 4096;
}

/* What an interface takes in the model, everything that leads to it included. Once: later on the process has memory to
 * spare. */
double BytesOfAnInterface() {
    static const double bytes = [] {
        constexpr uint32_t MANY = 10 * INTERFACES;
        const double before = ResidentBytes();
        MDL_BATCH *batch = MDL_Begin(1, 0);
        for (uint32_t index = 1; index <= MANY; ++index) {
            const MDL_IF_S interface = Interface(index);
            MDL_PutIf(batch, &interface);
        }
        MDL_Commit(batch);
        MDL_Drain(UVELHOST_WAIT_FOREVER);
        return (ResidentBytes() - before) / MANY;
    }();
    return bytes;
}

void FirstLoad(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    state.counters["bytes"] = BytesOfAnInterface();
    for (auto _ : state)
        Load(indices);
}

BENCHMARK(QueryByIndex<Numbers::DENSE, false>)->Name("ByIndex/row/quiet");
BENCHMARK(QueryByIndex<Numbers::DENSE, true>)->Name("ByIndex/row/changing");
BENCHMARK(QueryByIndex<Numbers::SPARSE, false>)->Name("ByIndex/anywhere/quiet");
BENCHMARK(QueryByIndex<Numbers::SPARSE, true>)->Name("ByIndex/anywhere/changing");
BENCHMARK(LockedQuery<Numbers::DENSE, false>)->Name("Locked/row/quiet");
BENCHMARK(LockedQuery<Numbers::DENSE, true>)->Name("Locked/row/changing");
BENCHMARK(LockedQuery<Numbers::SPARSE, false>)->Name("Locked/anywhere/quiet");
BENCHMARK(LockedQuery<Numbers::SPARSE, true>)->Name("Locked/anywhere/changing");
BENCHMARK(QueryOfTrunkMembership)->Name("TrunkMembership");
BENCHMARK(QueryByName)->Name("ByName");
BENCHMARK(LockedQueryByName)->Name("LockedByName");
BENCHMARK(ChangeOfOneInterface)->Name("Change");
BENCHMARK(LockedChange)->Name("LockedChange");
BENCHMARK(ResyncWithoutDifference)->Name("Resync")->Unit(benchmark::kMillisecond);
BENCHMARK(LockedResync)->Name("LockedResync")->Unit(benchmark::kMillisecond);
BENCHMARK(FirstLoad)->Unit(benchmark::kMillisecond);

} // namespace
