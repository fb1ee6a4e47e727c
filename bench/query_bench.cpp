/* Queries of the library by interface index, through the host to a device model of 10,000 interfaces: quiet, and while a
 * feeder changes it without pause. */
#include "busy_model.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <shared_mutex>
#include <unordered_map>
#include <uvelcommon_base/kivo_addr_query.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_startup.h>

namespace {

using namespace busy_model;

enum class Model { QUIET, CHANGING };

uint32_t FirstOfName(uint32_t if_index) {
    return static_cast<uint32_t>(KIVO_IF_GetNameByIfIndex(if_index)[0]);
}

template <uint32_t (*Ask)(uint32_t), Model MODEL>
void Query(benchmark::State &state) {
    KIVO_VirtualToHook();
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    Load(indices);
    const std::vector<uint32_t> order = Shuffled(indices);
    std::unique_ptr<Feeder> feeder;
    if (MODEL == Model::CHANGING)
        feeder = std::make_unique<Feeder>(indices);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Ask(order[i]));
        i = i + 1 == order.size() ? 0 : i + 1;
    }
    if (feeder != nullptr)
        state.counters["changes"] =
            benchmark::Counter(static_cast<double>(feeder->Changes()), benchmark::Counter::kIsRate);
}

/* What a program does without the model: a hash table of the same records behind a lock that readers share. */
template <Model MODEL>
void LockedTable(benchmark::State &state) {
    const std::vector<uint32_t> indices = Indices(Numbers::DENSE);
    std::unordered_map<uint32_t, MDL_IF_S> table;
    std::shared_mutex lock;
    for (uint32_t index : indices)
        table.emplace(index, Interface(index));
    const std::vector<uint32_t> order = Shuffled(indices);
    std::atomic<bool> stop = MODEL == Model::QUIET;
    std::thread feeder([&] {
        for (std::size_t i = 0; !stop; ++i) {
            const MDL_IF_S interface = Interface(indices[i % indices.size()]);
            const std::lock_guard writing(lock);
            table[interface.ulIfIndex] = interface;
        }
    });
    std::size_t i = 0;
    for (auto _ : state) {
        const std::shared_lock reading(lock);
        benchmark::DoNotOptimize(table.find(order[i])->second.ulPortType);
        i = i + 1 == order.size() ? 0 : i + 1;
    }
    stop = true;
    feeder.join();
}

#define BOTH(name, ask)                                                                                                \
    BENCHMARK(Query<ask, Model::QUIET>)->Name(name "/quiet");                                                          \
    BENCHMARK(Query<ask, Model::CHANGING>)->Name(name "/changing")

BOTH("PortType", KIVO_IF_GetPortType);
BOTH("PhysicalState", KIVO_IF_IsPhyStateUp);
BOTH("Layer2ThroughHook", KIVO_IF_IsL2IF);
BOTH("Vrf", KIVO_IF_GetVrfIndexByIfIndex);
BOTH("Name", FirstOfName);
BENCHMARK(LockedTable<Model::QUIET>)->Name("LockedTable/quiet");
BENCHMARK(LockedTable<Model::CHANGING>)->Name("LockedTable/changing");

} // namespace
