// A product layer's function, exported from a shared library of its own as such functions are.
#pragma once

#include <cstdint>

extern "C" __attribute__((visibility("default"))) uint32_t BenchProduct_IsL2If(uint32_t index);
