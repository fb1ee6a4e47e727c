/* Queries of the device model with 10,000 interfaces, quiet and while a feeder changes it without pause; changes. */
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <numeric>
#include <random>
#include <shared_mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <uvelhost/interface.h>
#include <uvelhost/model.h>
#include <uvelhost/trunk.h>
#include <vector>

namespace {

constexpr uint32_t INTERFACES = 10000;

enum class Numbers { DENSE, SPARSE };

MDL_IF_S Interface(uint32_t if_index) {
    MDL_IF_S interface;
    MDL_InitIf(&interface, if_index, ("GigabitEthernet0/0/" + std::to_string(if_index)).c_str());
    interface.ulPortType = if_index;
    return interface;
}

/* Interface indices: one behind the other as the kernel gives them, or anywhere. */
std::vector<uint32_t> Indices(Numbers numbers) {
    std::vector<uint32_t> indices(INTERFACES);
    std::iota(indices.begin(), indices.end(), 1);
    std::mt19937 random(7);
    if (numbers == Numbers::SPARSE)
        for (uint32_t &index : indices)
            index = static_cast<uint32_t>(random() % 0xFFFFFFFE + 1);
    return indices;
}

void Load(const std::vector<uint32_t> &indices) {
    MDL_BATCH *batch = MDL_Begin(1, 0);
    MDL_RemoveAll(batch);
    for (uint32_t index : indices) {
        const MDL_IF_S interface = Interface(index);
        MDL_PutIf(batch, &interface);
    }
    MDL_Commit(batch);
}

/* The same indices in an order that no cache foresees. */
std::vector<uint32_t> Shuffled(std::vector<uint32_t> indices) {
    std::shuffle(indices.begin(), indices.end(), std::mt19937(11));
    return indices;
}

/* Changes one interface after the other until it is told to stop. */
class Feeder {
  public:
    explicit Feeder(std::vector<uint32_t> indices) : thread_([this, indices = std::move(indices)] { Run(indices); }) {}
    ~Feeder() {
        stop_ = true;
        thread_.join();
    }
    uint64_t Changes() const { return changes_; }

  private:
    void Run(const std::vector<uint32_t> &indices) {
        for (uint64_t i = 0; !stop_; ++i) {
            MDL_IF_S interface = Interface(indices[i % indices.size()]);
            interface.ulPhyType = static_cast<uint32_t>(i);
            MDL_BATCH *batch = MDL_Begin(1, 0);
            MDL_PutIf(batch, &interface);
            MDL_Commit(batch);
            changes_.fetch_add(1, std::memory_order_relaxed);
        }
    }

    std::atomic<bool> stop_ = false;
    std::atomic<uint64_t> changes_ = 0;
    std::thread thread_;
};

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
