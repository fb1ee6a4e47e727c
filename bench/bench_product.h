// A product layer's functions, exported from a shared library of its own as such functions are.
#pragma once

#include <cstdint>

#define BENCH_PRODUCT_API extern "C" __attribute__((visibility("default")))

/* An answer without work, from the index alone. */
BENCH_PRODUCT_API uint32_t BenchProduct_IsL2If(uint32_t index);

/* An answer from a table of interfaces: blocks of 64 records each, for the indexes below 4096. */
BENCH_PRODUCT_API uint32_t BenchProduct_IsL3If(uint32_t index);
