#include "fitted_array.h"

#include <algorithm>

#include <securec.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelhost/assert.h>

#include "source.h"

/* Appends the ulLen bytes at pFrom to what stands before pucTo and returns the new end. In pieces, because the
 * bounds-checked copy refuses more than 2 GiB at a time. */
static uint8_t *Append(uint8_t *pucTo, const void *pFrom, size_t ulLen) {
    const uint8_t *pucFrom = static_cast<const uint8_t *>(pFrom);
    while (ulLen > 0) {
        const size_t ulPiece = std::min<size_t>(ulLen, SECUREC_MEM_MAX_LEN);
        if (memcpy_s(pucTo, ulPiece, pucFrom, ulPiece) != EOK)
            qal_assert(SOURCE, __LINE__);
        pucTo += ulPiece;
        pucFrom += ulPiece;
        ulLen -= ulPiece;
    }
    return pucTo;
}

void *FittedArrayWith(uint32_t ulMid, const void *pOld, uint32_t ulCount, uint32_t ulEntrySize, uint32_t ulIndex,
                      const void *pEntry) {
    const uint64_t ullBytes = (uint64_t{ulCount} + 1) * ulEntrySize;
    if (ullBytes > UINT32_MAX)
        return nullptr;
    void *pNew = KIVO_MemAlloc_F(ulMid, static_cast<uint32_t>(ullBytes), SOURCE, __LINE__);
    if (pNew == nullptr)
        return nullptr;

    const size_t ulBefore = size_t{ulIndex} * ulEntrySize;
    const size_t ulBehind = size_t{ulCount - ulIndex} * ulEntrySize;
    uint8_t *pucEnd = Append(static_cast<uint8_t *>(pNew), pOld, ulBefore);
    pucEnd = Append(pucEnd, pEntry, ulEntrySize);
    if (ulBehind > 0)
        Append(pucEnd, static_cast<const uint8_t *>(pOld) + ulBefore, ulBehind);
    return pNew;
}

void *FittedArrayWithout(uint32_t ulMid, const void *pOld, uint32_t ulCount, uint32_t ulEntrySize, uint32_t ulIndex) {
    const size_t ulBytes = size_t{ulCount - 1} * ulEntrySize;
    void *pNew = KIVO_MemAlloc_F(ulMid, static_cast<uint32_t>(ulBytes), SOURCE, __LINE__);
    if (pNew == nullptr)
        return nullptr;

    const size_t ulBefore = size_t{ulIndex} * ulEntrySize;
    uint8_t *pucEnd = Append(static_cast<uint8_t *>(pNew), pOld, ulBefore);
    Append(pucEnd, static_cast<const uint8_t *>(pOld) + ulBefore + ulEntrySize, ulBytes - ulBefore);
    return pNew;
}
