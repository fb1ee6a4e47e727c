#include <uvelcommon_base/kivo_array.h>

#include <cstddef>
#include <cstring>

#include <securec.h>
#include <uvelhost/assert.h>
#include <uvelhost/strings.h>

#include "source.h"

/* Offsets are computed in the width of a pointer: index times size may exceed 32 bits. */
static uint8_t *Slot(void *pArray, uint32_t ulIndex, uint32_t ulElmtSize) {
    return static_cast<uint8_t *>(pArray) + size_t{ulIndex} * ulElmtSize;
}

static const uint8_t *Slot(const void *pArray, uint32_t ulIndex, uint32_t ulElmtSize) {
    return static_cast<const uint8_t *>(pArray) + size_t{ulIndex} * ulElmtSize;
}

static void CopySlot(uint8_t *pucTo, const void *pFrom, uint32_t ulElmtSize) {
    if (memcpy_s(pucTo, ulElmtSize, pFrom, ulElmtSize) != EOK)
        qal_assert(SOURCE, __LINE__);
}

static void ClearSlot(uint8_t *pucSlot, uint32_t ulElmtSize) {
    if (memset_s(pucSlot, ulElmtSize, 0, ulElmtSize) != EOK)
        qal_assert(SOURCE, __LINE__);
}

template <typename T>
static uint32_t FindValue(const T *pArray, uint32_t ulCount, T value, uint32_t *pulIndex) {
    for (uint32_t i = 0; i < ulCount; ++i) {
        if (pArray[i] == value) {
            *pulIndex = i;
            return KIVO_OK;
        }
    }
    return KIVO_FAIL;
}

uint32_t SRVAR_FindElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t ulValue, uint32_t *pulIndex) {
    return FindValue(pulArray, ulCount, ulValue, pulIndex);
}

uint32_t SRVAR_FindElmtFromU16Array(const uint16_t *pusArray, uint32_t ulCount, uint16_t usValue, uint32_t *pulIndex) {
    return FindValue(pusArray, ulCount, usValue, pulIndex);
}

uint32_t SRVAR_FindMinElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t *pulIndex) {
    if (ulCount == 0)
        return KIVO_FAIL;

    uint32_t ulMin = 0;
    for (uint32_t i = 1; i < ulCount; ++i) {
        if (pulArray[i] < pulArray[ulMin])
            ulMin = i;
    }
    *pulIndex = ulMin;
    return KIVO_OK;
}

uint32_t SRVAR_FindNextSmallElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t ulValue,
                                             uint32_t *pulIndex) {
    uint32_t ulBest = ulCount; /* none yet */
    for (uint32_t i = 0; i < ulCount; ++i) {
        if (pulArray[i] > ulValue && (ulBest == ulCount || pulArray[i] < pulArray[ulBest]))
            ulBest = i;
    }
    if (ulBest == ulCount)
        return KIVO_FAIL;
    *pulIndex = ulBest;
    return KIVO_OK;
}

uint32_t SRVAR_SearchElmtByKey(const void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey,
                               SRVAR_MATCH_FUNC pfMatch, uint32_t *pulIndex) {
    if (pArray == nullptr || pKey == nullptr || pulIndex == nullptr)
        return KIVO_FAIL;

    for (uint32_t i = 0; i < ulCount; ++i) {
        /* A match is 1 here, while 0 means equal in the comparisons of the keyed containers. Keep it. */
        if (pfMatch(Slot(pArray, i, ulElmtSize), pKey) == 1) {
            *pulIndex = i;
            return KIVO_OK;
        }
    }
    return KIVO_FAIL;
}

uint32_t SRVAR_FindElmtIndex(const void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey,
                             uint32_t *pulIndex) {
    if (pArray == nullptr || pKey == nullptr || pulIndex == nullptr)
        return KIVO_FAIL;

    for (uint32_t i = 0; i < ulCount; ++i) {
        if (std::memcmp(Slot(pArray, i, ulElmtSize), pKey, ulElmtSize) == 0) {
            *pulIndex = i;
            return KIVO_OK;
        }
    }
    return KIVO_FAIL;
}

void SRVAR_InsertElmtIntail(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pElmt) {
    if (pArray == nullptr)
        return;
    CopySlot(Slot(pArray, ulCount, ulElmtSize), pElmt, ulElmtSize);
}

uint32_t SRVAR_RemoveElmt(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey) {
    uint32_t ulIndex = 0;
    if (SRVAR_FindElmtIndex(pArray, ulCount, ulElmtSize, pKey, &ulIndex) != KIVO_OK)
        return KIVO_FAIL;

    for (; ulIndex < ulCount - 1; ++ulIndex)
        CopySlot(Slot(pArray, ulIndex, ulElmtSize), Slot(pArray, ulIndex + 1, ulElmtSize), ulElmtSize);
    ClearSlot(Slot(pArray, ulIndex, ulElmtSize), ulElmtSize);
    return KIVO_OK;
}

uint32_t SRVAR_RemoveElmt_Sw(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey) {
    uint32_t ulIndex = 0;
    if (SRVAR_FindElmtIndex(pArray, ulCount, ulElmtSize, pKey, &ulIndex) != KIVO_OK)
        return KIVO_FAIL;

    /* The last element keeps its bytes when it is the one removed, unlike in SRVAR_RemoveElmt. Do not clear it. */
    const uint32_t ulLast = ulCount - 1;
    if (ulIndex != ulLast) {
        CopySlot(Slot(pArray, ulIndex, ulElmtSize), Slot(pArray, ulLast, ulElmtSize), ulElmtSize);
        ClearSlot(Slot(pArray, ulLast, ulElmtSize), ulElmtSize);
    }
    return KIVO_OK;
}

uint32_t KIVO_MemCmp(const void *pA, const void *pB, uint32_t ulLen, int32_t *plResult) {
    if (pA == nullptr || pB == nullptr || plResult == nullptr)
        return KIVO_FAIL;
    *plResult = QAL_MemCmp(pA, pB, ulLen);
    return KIVO_OK;
}
