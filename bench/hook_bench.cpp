// A call through a forwarder into a hook, beside a call of the same function as a plain exported one.

#include <benchmark/benchmark.h>
#include <uvelcommon_base/kivo_hook_interface.h>

#include "bench_product.h"

static void PlainExportedFunction(benchmark::State &state) {
    uint32_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(BenchProduct_IsL2If(++index));
}
BENCHMARK(PlainExportedFunction);

static void ThroughForwarder(benchmark::State &state) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(BenchProduct_IsL2If);
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &hook);
    uint32_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(KIVO_IF_IsL2IF(++index));
}
BENCHMARK(ThroughForwarder);

static void ForwarderWithoutHook(benchmark::State &state) {
    uint32_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(KIVO_IF_IsL3IF(++index));
}
BENCHMARK(ForwarderWithoutHook);
