// A call through a forwarder into a hook, beside a call of the same function as a plain exported one: a hook without work
// called back to back, where nothing but the number of taken jumps counts, and a hook that reads its product's table,
// with a caller that acts on each answer before it asks again.

#include <benchmark/benchmark.h>
#include <uvelcommon_base/kivo_hook_interface.h>

#include "bench_product.h"

template <auto Function>
static void WithoutWork(benchmark::State &state) {
    uint32_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(Function(++index));
}

template <auto Function>
static void TableLookup(benchmark::State &state) {
    uint32_t index = 0;
    for (auto _ : state)
        index = index + 1 + Function(index);
    benchmark::DoNotOptimize(index);
}

static void InstallHooks(const benchmark::State &) {
    const KIVO_HOOK is_l2 = reinterpret_cast<KIVO_HOOK>(BenchProduct_IsL2If);
    const KIVO_HOOK is_l3 = reinterpret_cast<KIVO_HOOK>(BenchProduct_IsL3If);
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &is_l2);
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L3IF, &is_l3);
}

BENCHMARK(TableLookup<BenchProduct_IsL3If>)->Name("TableLookup/PlainExportedFunction");
BENCHMARK(TableLookup<KIVO_IF_IsL3IF>)->Name("TableLookup/ThroughForwarder")->Setup(InstallHooks);
BENCHMARK(WithoutWork<BenchProduct_IsL2If>)->Name("WithoutWork/PlainExportedFunction");
BENCHMARK(WithoutWork<KIVO_IF_IsL2IF>)->Name("WithoutWork/ThroughForwarder")->Setup(InstallHooks);
