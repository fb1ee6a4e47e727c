/* Queries of the device model with 10,000 interfaces, quiet and while a feeder changes it without pause; changes. */
#include "busy_model.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <shared_mutex>
#include <unordered_map>
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
template <bool CHANGING>
void SharedLockAndHashTable(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    std::unordered_map<uint32_t, MDL_IF_S> table;
    std::shared_mutex lock;
    for (uint32_t index : indices)
        table.emplace(index, Interface(index));
    const std::vector<uint32_t> order = Shuffled(indices);
    std::atomic<bool> stop = !CHANGING;
    std::thread feeder([&] {
        for (uint32_t i = 0; !stop; ++i) {
            const MDL_IF_S interface = Interface(indices[i % indices.size()]);
            std::lock_guard writing(lock);
            table[interface.ulIfIndex] = interface;
        }
    });
    std::size_t i = 0;
    for (auto _ : state) {
        std::shared_lock reading(lock);
        benchmark::DoNotOptimize(table.find(order[i])->second.ulPortType);
        i = i + 1 == order.size() ? 0 : i + 1;
    }
    stop = true;
    feeder.join();
}

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

void FirstLoad(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    for (auto _ : state)
        Load(indices);
}

BENCHMARK(QueryByIndex<Numbers::DENSE, false>);
BENCHMARK(QueryByIndex<Numbers::SPARSE, false>);
BENCHMARK(QueryByIndex<Numbers::DENSE, true>);
BENCHMARK(QueryByIndex<Numbers::SPARSE, true>);
BENCHMARK(QueryOfTrunkMembership);
BENCHMARK(SharedLockAndHashTable<false>);
BENCHMARK(SharedLockAndHashTable<true>);
BENCHMARK(ChangeOfOneInterface);
BENCHMARK(ResyncWithoutDifference)->Unit(benchmark::kMillisecond);
BENCHMARK(FirstLoad)->Unit(benchmark::kMillisecond);

} // namespace
