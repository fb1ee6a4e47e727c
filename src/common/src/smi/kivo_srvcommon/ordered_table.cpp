#include <uvelcommon_base/kivo_ordered_table.h>

#include <cstddef>

#include <uvelcommon_base/kivo_mem.h>

#include "fitted_array.h"
#include "sorted_search.h"
#include "source.h"

static_assert(sizeof(SRVOT_TBL_S) == 40);
static_assert(offsetof(SRVOT_TBL_S, ulMid) == 0);
static_assert(offsetof(SRVOT_TBL_S, ulElmtSize) == 4);
static_assert(offsetof(SRVOT_TBL_S, ulCount) == 8);
static_assert(offsetof(SRVOT_TBL_S, ulSpec) == 12);
static_assert(offsetof(SRVOT_TBL_S, ulCursor) == 16);
static_assert(offsetof(SRVOT_TBL_S, pfCompare) == 24);
static_assert(offsetof(SRVOT_TBL_S, pElmts) == 32);
static_assert(sizeof(SRVOT_COND_S) == 24);
static_assert(offsetof(SRVOT_COND_S, ulOffset) == 0);
static_assert(offsetof(SRVOT_COND_S, pValue) == 8);
static_assert(offsetof(SRVOT_COND_S, ulLen) == 16);

SRVOT_TBL_S *SRVOT_CreateNew(uint32_t ulMid, uint32_t ulElmtSize, uint32_t ulSpec, SRVOT_CMP_FUNC pfCompare) {
    auto *pstTbl = static_cast<SRVOT_TBL_S *>(KIVO_MemAlloc_F(ulMid, sizeof(SRVOT_TBL_S), SOURCE, __LINE__));
    if (pstTbl != nullptr)
        *pstTbl = {ulMid, ulElmtSize, 0, ulSpec, KIVO_NONE, pfCompare, nullptr};
    return pstTbl;
}

uint32_t SRVOT_DeleteOTbl(SRVOT_TBL_S **ppstTbl) {
    if (ppstTbl == nullptr || *ppstTbl == nullptr)
        return KIVO_FAIL;
    (void)KIVO_MemFree_F((*ppstTbl)->pElmts, SOURCE, __LINE__);
    (void)KIVO_MemFree_F(*ppstTbl, SOURCE, __LINE__);
    *ppstTbl = nullptr;
    return KIVO_OK;
}

/* Frees the array and installs pElmts of ulCount elements in its place. */
static void Replace(SRVOT_TBL_S *pstTbl, void *pElmts, uint32_t ulCount) {
    (void)KIVO_MemFree_F(pstTbl->pElmts, SOURCE, __LINE__);
    pstTbl->pElmts = pElmts;
    pstTbl->ulCount = ulCount;
}

static void *ElmtAt(const SRVOT_TBL_S *pstTbl, size_t ulIndex) {
    return static_cast<uint8_t *>(pstTbl->pElmts) + ulIndex * pstTbl->ulElmtSize;
}

uint32_t SRVOT_AddElmt(SRVOT_TBL_S *pstTbl, const void *pKey, const void *pElmt) {
    if (pstTbl == nullptr || pElmt == nullptr)
        return KIVO_FAIL;
    if (pstTbl->ulCount != 0 && pstTbl->pfCompare == nullptr)
        return KIVO_FAIL;

    const uint32_t ulCursor = pstTbl->ulCursor;
    uint32_t ulIndex = 0;
    const void *pNear = SRVOT_FindProxElmt(pstTbl, pKey);
    if (pNear != nullptr) {
        const int32_t lOrder = pstTbl->pfCompare(pNear, pKey);
        if (lOrder == 0)
            return KIVO_EXISTS;
        if (lOrder < 0)
            (void)SRVOT_GetNextElmt(pstTbl); /* behind the last one this is the count: append */
        ulIndex = pstTbl->ulCursor;
    }
    if (pstTbl->ulSpec <= pstTbl->ulCount)
        return KIVO_FULL;

    void *pNew = FittedArrayWith(pstTbl->ulMid, pstTbl->pElmts, pstTbl->ulCount, pstTbl->ulElmtSize, ulIndex, pElmt);
    if (pNew == nullptr) {
        pstTbl->ulCursor = ulCursor;
        return KIVO_NO_MEMORY;
    }
    Replace(pstTbl, pNew, pstTbl->ulCount + 1);
    pstTbl->ulCursor = ulIndex;
    return KIVO_OK;
}

uint32_t SRVOT_RemoveNode(SRVOT_TBL_S *pstTbl, const void *pElmt) {
    if (pstTbl == nullptr || pElmt == nullptr)
        return KIVO_NOT_FOUND;
    /* An address below the array wraps to an offset far beyond it; with elements of size 0 every offset is beyond. */
    const uint64_t ullOffset = reinterpret_cast<uintptr_t>(pElmt) - reinterpret_cast<uintptr_t>(pstTbl->pElmts);
    if (ullOffset >= uint64_t{pstTbl->ulCount} * pstTbl->ulElmtSize || ullOffset % pstTbl->ulElmtSize != 0)
        return KIVO_NOT_FOUND;
    if (pstTbl->ulCount == 1)
        return SRVOT_RemoveAllElmt(pstTbl);

    const uint32_t ulOffset = static_cast<uint32_t>(ullOffset);
    void *pNew = FittedArrayWithout(pstTbl->ulMid, pstTbl->pElmts, pstTbl->ulCount, pstTbl->ulElmtSize,
                                    ulOffset / pstTbl->ulElmtSize);
    if (pNew == nullptr)
        return KIVO_NO_MEMORY;
    Replace(pstTbl, pNew, pstTbl->ulCount - 1);
    /* The product wraps at 32 bits, and 0xFFFFFFFF becomes 0xFFFFFFFE, on purpose: callers rely on both. */
    if (ulOffset <= pstTbl->ulCursor * pstTbl->ulElmtSize)
        pstTbl->ulCursor--;
    return KIVO_OK;
}

uint32_t SRVOT_RemoveElmtByKey(SRVOT_TBL_S *pstTbl, const void *pKey) {
    const uint32_t ulCursor = SRVOT_GetCurrElmtIndex(pstTbl);
    const void *pElmt = SRVOT_FindElmt(pstTbl, pKey);
    if (pElmt == nullptr)
        return KIVO_NOT_FOUND;
    const uint32_t ulRet = SRVOT_RemoveNode(pstTbl, pElmt);
    if (ulRet == KIVO_NO_MEMORY)
        pstTbl->ulCursor = ulCursor;
    return ulRet;
}

uint32_t SRVOT_RemoveCurrElmt(SRVOT_TBL_S *pstTbl) {
    return SRVOT_RemoveNode(pstTbl, SRVOT_GetCurrElmt(pstTbl));
}

uint32_t SRVOT_RemoveAllElmt(SRVOT_TBL_S *pstTbl) {
    if (pstTbl == nullptr)
        return KIVO_FAIL;
    if (pstTbl->pElmts == nullptr)
        return KIVO_OK;
    Replace(pstTbl, nullptr, 0);
    pstTbl->ulCursor = KIVO_NONE;
    return KIVO_OK;
}

/* Elements of size 0 all lie at one address; only their indexes tell them apart. */
[[gnu::cold, gnu::noinline]] static SEARCH_END_S SearchSizeless(const void *pElmts, uint32_t ulCount,
                                                                SRVOT_CMP_FUNC pfCompare, const void *pKey) {
    const auto itemAt = [pElmts](size_t) { return pElmts; };
    return SortedSearch<false>(INDEXED_ITEMS_S{itemAt}, ulCount, pfCompare, pKey);
}

/* False where there is nothing to search, or nothing to search with. The fields are read once: the compiler must
 * otherwise expect that the comparison changes them. pstTbl is not null, here and in Find. */
template <bool FETCH>
[[gnu::always_inline]] static inline bool Search(const SRVOT_TBL_S *pstTbl, const void *pKey, SEARCH_END_S *pstEnd) {
    const uint32_t ulCount = pstTbl->ulCount;
    const SRVOT_CMP_FUNC pfCompare = pstTbl->pfCompare;
    if (ulCount == 0 || pfCompare == nullptr)
        return false;
    const RECORD_ARRAY_S stElmts = {static_cast<const uint8_t *>(pstTbl->pElmts), pstTbl->ulElmtSize};
    *pstEnd = stElmts.ulSize == 0 ? SearchSizeless(stElmts.pFirst, ulCount, pfCompare, pKey)
                                  : SortedSearch<FETCH>(stElmts, ulCount, pfCompare, pKey);
    return true;
}

/* A function of its own for either, since the two searches together have more values than there are registers. */
template <bool FETCH>
[[gnu::noinline]] static void *Find(SRVOT_TBL_S *pstTbl, const void *pKey) {
    SEARCH_END_S stEnd;
    if (!Search<FETCH>(pstTbl, pKey, &stEnd) || !stEnd.bMatch)
        return nullptr;
    pstTbl->ulCursor = stEnd.ulIndex;
    return const_cast<void *>(stEnd.pItem);
}

void *SRVOT_FindElmt(SRVOT_TBL_S *pstTbl, const void *pKey) {
    if (pstTbl == nullptr)
        return nullptr;
    return pstTbl->ulCount > FEW_ITEMS ? Find<true>(pstTbl, pKey) : Find<false>(pstTbl, pKey);
}

void *SRVOT_FindProxElmt(SRVOT_TBL_S *pstTbl, const void *pKey) {
    SEARCH_END_S stEnd;
    if (pstTbl == nullptr || !Search<true>(pstTbl, pKey, &stEnd))
        return nullptr;
    pstTbl->ulCursor = stEnd.ulIndex;
    return const_cast<void *>(stEnd.pItem);
}

void *SRVOT_GetFirstElmt(SRVOT_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCount == 0)
        return nullptr;
    pstTbl->ulCursor = 0;
    return ElmtAt(pstTbl, 0);
}

void *SRVOT_GetLastElmt(SRVOT_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCount == 0)
        return nullptr;
    pstTbl->ulCursor = pstTbl->ulCount - 1;
    return ElmtAt(pstTbl, pstTbl->ulCursor);
}

void *SRVOT_GetNextElmt(SRVOT_TBL_S *pstTbl) {
    if (pstTbl == nullptr)
        return nullptr;
    const uint32_t ulNext = pstTbl->ulCursor + 1; /* wraps to 0 before the first */
    if (ulNext >= pstTbl->ulCount) {
        pstTbl->ulCursor = pstTbl->ulCount;
        return nullptr;
    }
    pstTbl->ulCursor = ulNext;
    return ElmtAt(pstTbl, ulNext);
}

void *SRVOT_GetPrevElmt(SRVOT_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCursor >= pstTbl->ulCount)
        return nullptr;
    pstTbl->ulCursor--; /* wraps to 0xFFFFFFFF, before the first */
    return SRVOT_GetCurrElmt(pstTbl);
}

void *SRVOT_GetCurrElmt(const SRVOT_TBL_S *pstTbl) {
    return pstTbl == nullptr ? nullptr : SRVOT_GetElmt(pstTbl, pstTbl->ulCursor);
}

void *SRVOT_GetElmt(const SRVOT_TBL_S *pstTbl, uint32_t ulIndex) {
    return pstTbl == nullptr || ulIndex >= pstTbl->ulCount ? nullptr : ElmtAt(pstTbl, ulIndex);
}

uint32_t SRVOT_GetCurrElmtIndex(const SRVOT_TBL_S *pstTbl) {
    return pstTbl == nullptr ? KIVO_NONE : pstTbl->ulCursor;
}

uint32_t SRVOT_GetCount(const SRVOT_TBL_S *pstTbl) {
    return pstTbl == nullptr ? 0 : pstTbl->ulCount;
}

uint32_t SRVOT_GetTblSpec(const SRVOT_TBL_S *pstTbl) {
    return pstTbl == nullptr ? 0 : pstTbl->ulSpec;
}

uint32_t SRVOT_GetElmtSize(const SRVOT_TBL_S *pstTbl) {
    return pstTbl == nullptr ? 0 : pstTbl->ulElmtSize;
}
