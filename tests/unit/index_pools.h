/* What the tests of table indexes share. */
#ifndef UVEL_TESTS_UNIT_INDEX_POOLS_H
#define UVEL_TESTS_UNIT_INDEX_POOLS_H

#include <uvelcommon_base/kivo_index.h>

#include <cstring>
#include <numeric>
#include <tuple>
#include <vector>

#include "kit.h"

namespace index_pools {

inline constexpr char SOURCE[] = "src/common/src/smi/kivo_index_mng";
inline constexpr uint32_t NONE = 0xFFFFFFFF;
inline constexpr uint32_t UNTOUCHED = 0xDEADBEEF;

using U32 = std::vector<uint32_t>;

inline uint32_t NewPool(uint32_t min, uint32_t max) {
    uint32_t pool = UNTOUCHED;
    EXPECT_EQ(0u, KIVO_InitTableIndex(&pool, min, max));
    return pool;
}

/* Takes indexes until the pool has no more to give. */
inline U32 TakeAll(uint32_t pool) {
    U32 taken;
    for (uint32_t index = KIVO_AllocTableIndex(pool); index != NONE; index = KIVO_AllocTableIndex(pool))
        taken.push_back(index);
    return taken;
}

inline U32 Counting(uint32_t from, uint32_t count) {
    U32 indexes(count);
    std::iota(indexes.begin(), indexes.end(), from);
    return indexes;
}

/* Head position, tail position and used count. */
inline std::tuple<uint32_t, uint32_t, uint32_t> State(uint32_t pool) {
    return {KIVO_QueryTableIndexHeadSuffix(pool), KIVO_QueryTableIndexTailSuffix(pool),
            KIVO_QueryTableIndexUsedNum(pool)};
}

inline std::tuple<uint32_t, uint32_t, uint32_t> StateIs(uint32_t head, uint32_t tail, uint32_t used) {
    return {head, tail, used};
}

/* True for a record that no pool was created in. */
inline bool RecordIsZero(uint32_t pool) {
    const KIVO_TABLE_INDEX_S zero{};
    return std::memcmp(&g_stTableIndex[pool], &zero, sizeof zero) == 0;
}

} // namespace index_pools

#endif
