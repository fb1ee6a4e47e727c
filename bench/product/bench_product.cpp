#include "../bench_product.h"

uint32_t BenchProduct_IsL2If(uint32_t index) {
    return index & 1;
}
