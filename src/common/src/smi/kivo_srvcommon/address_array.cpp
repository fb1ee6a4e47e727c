#include <uvelcommon_base/kivo_quicksort.h>

#include <cstddef>
#include <cstring>

#include <uvelcommon_base/kivo_mem.h>

#include "source.h"

static_assert(sizeof(SRVQS_ADDR_ARRAY_S) == 16);
static_assert(offsetof(SRVQS_ADDR_ARRAY_S, ppEntries) == 0);
static_assert(offsetof(SRVQS_ADDR_ARRAY_S, ulCapacity) == 8);
static_assert(offsetof(SRVQS_ADDR_ARRAY_S, ulCount) == 12);

uint32_t SRVQS_AddrArrayInit(uint32_t ulMid, SRVQS_ADDR_ARRAY_S *pstArray, uint32_t ulCapacity) {
    if (pstArray == nullptr)
        return KIVO_FAIL;
    *pstArray = {};

    const uint64_t ullBytes = uint64_t{ulCapacity} * sizeof(void *);
    if (ullBytes > UINT32_MAX)
        return KIVO_FAIL;
    if (ullBytes != 0) {
        void *pSlots = KIVO_MemAlloc_F(ulMid, static_cast<uint32_t>(ullBytes), SOURCE, __LINE__);
        if (pSlots == nullptr)
            return KIVO_FAIL;
        std::memset(pSlots, 0, ullBytes);
        pstArray->ppEntries = static_cast<void **>(pSlots);
    }
    pstArray->ulCapacity = ulCapacity;
    return KIVO_OK;
}

uint32_t SRVQS_PushDataToAddrArray(uint32_t ulMid, const void *pData, uint32_t ulLen, SRVQS_ADDR_ARRAY_S *pstArray) {
    if (pData == nullptr || pstArray == nullptr || ulLen == 0)
        return KIVO_FAIL;
    /* A released array still has its count and capacity. */
    if (pstArray->ulCount >= pstArray->ulCapacity || pstArray->ppEntries == nullptr)
        return KIVO_FAIL;

    void *pCopy = KIVO_MemAlloc_F(ulMid, ulLen, SOURCE, __LINE__);
    if (pCopy == nullptr)
        return KIVO_FAIL;
    std::memcpy(pCopy, pData, ulLen);
    pstArray->ppEntries[pstArray->ulCount++] = pCopy;
    return KIVO_OK;
}

void SRVQS_AddrArrayFree(SRVQS_ADDR_ARRAY_S *pstArray) {
    if (pstArray == nullptr || pstArray->ppEntries == nullptr)
        return;
    for (uint32_t i = pstArray->ulCount; i-- > 0;)
        (void)KIVO_MemFree_F(pstArray->ppEntries[i], SOURCE, __LINE__);
    (void)KIVO_MemFree_F(pstArray->ppEntries, SOURCE, __LINE__);
    pstArray->ppEntries = nullptr; /* count and capacity stay: callers read the count after the release */
}
