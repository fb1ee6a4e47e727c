#include <uvelcommon_base/kivo_index.h>

#include <cstddef>
#include <cstring>

#include <uvelcommon_base/kivo_mem.h>
#include <uvelhost/assert.h>

static_assert(sizeof(KIVO_TABLE_INDEX_S) == 32, "30 records are 960 bytes");
static_assert(offsetof(KIVO_TABLE_INDEX_S, pullSlots) == 0);
static_assert(offsetof(KIVO_TABLE_INDEX_S, ulHead) == 8);
static_assert(offsetof(KIVO_TABLE_INDEX_S, ulTail) == 12);
static_assert(offsetof(KIVO_TABLE_INDEX_S, ulUsed) == 16);
static_assert(offsetof(KIVO_TABLE_INDEX_S, ulMin) == 20);
static_assert(offsetof(KIVO_TABLE_INDEX_S, ulMax) == 24);

static constexpr char SOURCE[] = "src/common/src/smi/kivo_index_mng";
static constexpr uint32_t GROWTH = 30;       /* records added at a time */
static constexpr uint64_t TAKEN = KIVO_NONE; /* what a slot without a free index holds */

KIVO_TABLE_INDEX_S *g_stTableIndex = nullptr;
uint32_t g_ulTotalTableNum = 0;

static uint32_t g_ulPoolsCreated = 0; /* the next pool id */

/* The record with this id, created or not; null beyond the registry's capacity, and while there is no registry. */
static KIVO_TABLE_INDEX_S *Record(uint32_t ulPoolId) {
    return ulPoolId < g_ulTotalTableNum && g_stTableIndex != nullptr ? &g_stTableIndex[ulPoolId] : nullptr;
}

/* 1 for a record of zeros; such a record is told by its missing slots. */
static uint32_t RingSize(const KIVO_TABLE_INDEX_S &stPool) {
    return stPool.ulMax + 1 - stPool.ulMin;
}

static uint32_t Successor(const KIVO_TABLE_INDEX_S &stPool, uint32_t ulPos) {
    return ulPos + 1 < RingSize(stPool) ? ulPos + 1 : 0;
}

static uint32_t SlotValue(const KIVO_TABLE_INDEX_S &stPool, uint32_t ulPos) {
    if (stPool.pullSlots == nullptr || ulPos >= RingSize(stPool))
        return KIVO_NONE;
    return static_cast<uint32_t>(stPool.pullSlots[ulPos]);
}

static void PutAtTail(KIVO_TABLE_INDEX_S &stPool, uint32_t ulIndex) {
    stPool.pullSlots[stPool.ulTail] = ulIndex;
    stPool.ulTail = Successor(stPool, stPool.ulTail);
}

/* The new records become zero, which is how an id that was not given out yet is recognised. */
static bool GrowRegistry() {
    const uint32_t ulOld = g_stTableIndex == nullptr ? 0 : g_ulTotalTableNum;
    const uint64_t ullBytes = (uint64_t{g_ulTotalTableNum} + GROWTH) * sizeof(KIVO_TABLE_INDEX_S);
    if (ullBytes > UINT32_MAX)
        return false;

    g_ulTotalTableNum += GROWTH;
    void *pGrown = KIVO_MemReAlloc(g_stTableIndex, static_cast<uint32_t>(ullBytes));
    if (pGrown == nullptr) {
        g_ulTotalTableNum -= GROWTH;
        return false;
    }
    g_stTableIndex = static_cast<KIVO_TABLE_INDEX_S *>(pGrown);
    std::memset(g_stTableIndex + ulOld, 0, (g_ulTotalTableNum - ulOld) * sizeof(KIVO_TABLE_INDEX_S));
    return true;
}

uint32_t KIVO_InitTableIndex(uint32_t *pulPoolId, uint32_t ulMin, uint32_t ulMax) {
    if (pulPoolId == nullptr || ulMax < ulMin)
        return KIVO_FAIL;

    /* More than one step is needed only when the start-up sequence put a smaller registry in place of ours. */
    while (Record(g_ulPoolsCreated) == nullptr) {
        if (!GrowRegistry())
            return KIVO_FAIL;
    }

    const uint64_t ullSlots = uint64_t{ulMax} - ulMin + 1;
    const uint64_t ullBytes = ullSlots * sizeof(uint64_t);
    void *pSlots = nullptr;
    if (ullBytes <= UINT32_MAX)
        pSlots = KIVO_MemAlloc(KIVO_LIB_MID, static_cast<uint32_t>(ullBytes));
    if (pSlots == nullptr) {
        QALFatalError_X(SOURCE, __LINE__);
        return KIVO_FAIL;
    }

    KIVO_TABLE_INDEX_S &stPool = g_stTableIndex[g_ulPoolsCreated];
    stPool = {static_cast<uint64_t *>(pSlots), 0, 0, 0, ulMin, ulMax};
    for (uint64_t k = 0; k < ullSlots; ++k)
        stPool.pullSlots[k] = ulMin + k;
    *pulPoolId = g_ulPoolsCreated++;
    return KIVO_OK;
}

uint32_t KIVO_AllocTableIndex(uint32_t ulPoolId) {
    KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    if (pstPool == nullptr || pstPool->pullSlots == nullptr || pstPool->ulUsed >= RingSize(*pstPool))
        return KIVO_NONE;

    const uint32_t ulIndex = static_cast<uint32_t>(pstPool->pullSlots[pstPool->ulHead]);
    if (ulIndex < pstPool->ulMin || ulIndex > pstPool->ulMax)
        return KIVO_NONE;
    pstPool->pullSlots[pstPool->ulHead] = TAKEN;
    pstPool->ulHead = Successor(*pstPool, pstPool->ulHead);
    pstPool->ulUsed++;
    return ulIndex;
}

void KIVO_FreeTableIndex(uint32_t ulPoolId, uint32_t ulIndex) {
    KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    if (pstPool == nullptr || pstPool->ulUsed == 0 || pstPool->ulUsed > RingSize(*pstPool))
        return;

    /* Neither range nor double freeing is checked: the ring takes what it is given. Do not add a check. */
    PutAtTail(*pstPool, ulIndex);
    pstPool->ulUsed--;
}

uint32_t KIVO_SetTableHeadByIndex(uint32_t ulPoolId, uint32_t ulIndex) {
    KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    if (pstPool == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    if (ulIndex < pstPool->ulMin || ulIndex > pstPool->ulMax || pstPool->ulUsed >= RingSize(*pstPool))
        return KIVO_FAIL;

    /* The index itself is the position, not its distance from min, which is right for a min of 0 only. Do not change
     * it; where it falls outside the ring there is nothing to mark. */
    if (pstPool->pullSlots == nullptr || ulIndex >= RingSize(*pstPool))
        return KIVO_FAIL;
    pstPool->pullSlots[ulIndex] = TAKEN;
    pstPool->ulHead = Successor(*pstPool, ulIndex);
    pstPool->ulUsed++;
    return KIVO_OK;
}

void KIVO_SetTableTailByIndex(uint32_t ulPoolId, uint32_t ulIndex) {
    KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    if (pstPool == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return;
    }
    if (pstPool->pullSlots != nullptr)
        PutAtTail(*pstPool, ulIndex);
}

uint32_t KIVO_SmoothTableIndex(uint32_t ulPoolId) {
    KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    if (pstPool == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    /* The head stays, too: with nothing written at the tail there is nothing to start again with. */
    if (pstPool->ulTail == 0)
        return KIVO_OK;

    for (uint32_t ulPos = pstPool->ulTail; ulPos < RingSize(*pstPool); ++ulPos)
        pstPool->pullSlots[ulPos] = TAKEN;
    pstPool->ulHead = 0;
    return KIVO_OK;
}

uint32_t KIVO_QueryTableIndexHeadValue(uint32_t ulPoolId) {
    const KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    return pstPool == nullptr ? KIVO_NONE : SlotValue(*pstPool, pstPool->ulHead);
}

uint32_t KIVO_QueryTableIndexTailValue(uint32_t ulPoolId) {
    const KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    return pstPool == nullptr ? KIVO_NONE : SlotValue(*pstPool, pstPool->ulTail);
}

uint32_t KIVO_QueryTableIndexHeadSuffix(uint32_t ulPoolId) {
    const KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    return pstPool == nullptr || pstPool->ulHead >= RingSize(*pstPool) ? KIVO_NONE : pstPool->ulHead;
}

uint32_t KIVO_QueryTableIndexTailSuffix(uint32_t ulPoolId) {
    const KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    return pstPool == nullptr || pstPool->ulTail >= RingSize(*pstPool) ? KIVO_NONE : pstPool->ulTail;
}

uint32_t KIVO_QueryTableIndexUsedNum(uint32_t ulPoolId) {
    const KIVO_TABLE_INDEX_S *pstPool = Record(ulPoolId);
    return pstPool == nullptr || pstPool->ulUsed > RingSize(*pstPool) ? KIVO_NONE : pstPool->ulUsed;
}
