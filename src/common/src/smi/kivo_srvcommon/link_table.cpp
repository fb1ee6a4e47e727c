#include <uvelcommon_base/kivo_link_table.h>

#include <cstddef>

#include <uvelcommon_base/kivo_mem.h>

#include "fitted_array.h"
#include "sorted_search.h"
#include "source.h"

static_assert(sizeof(SRVSTL_TBL_S) == 32);
static_assert(offsetof(SRVSTL_TBL_S, ulMid) == 0);
static_assert(offsetof(SRVSTL_TBL_S, ulCount) == 4);
static_assert(offsetof(SRVSTL_TBL_S, ulSpec) == 8);
static_assert(offsetof(SRVSTL_TBL_S, ulCursor) == 12);
static_assert(offsetof(SRVSTL_TBL_S, pfCompare) == 16);
static_assert(offsetof(SRVSTL_TBL_S, ppLinks) == 24);

SRVSTL_TBL_S *SRVSTL_CreateNew(uint32_t ulMid, uint32_t ulSpec, SRVSTL_CMP_FUNC pfCompare) {
    auto *pstTbl = static_cast<SRVSTL_TBL_S *>(KIVO_MemAlloc_F(ulMid, sizeof(SRVSTL_TBL_S), SOURCE, __LINE__));
    if (pstTbl != nullptr)
        *pstTbl = {ulMid, 0, ulSpec, KIVO_NONE, pfCompare, nullptr};
    return pstTbl;
}

uint32_t SRVSTL_DeleteSTbl(SRVSTL_TBL_S **ppstTbl, SRVSTL_FREE_FUNC pfFree) {
    if (ppstTbl == nullptr || *ppstTbl == nullptr)
        return KIVO_FAIL;
    (void)SRVSTL_RemoveAllLink(*ppstTbl, pfFree);
    (void)KIVO_MemFree_F(*ppstTbl, SOURCE, __LINE__);
    *ppstTbl = nullptr;
    return KIVO_OK;
}

/* Frees the array and installs pLinks of ulCount links, with this cursor, in its place. */
static void Replace(SRVSTL_TBL_S *pstTbl, void *pLinks, uint32_t ulCount, uint32_t ulCursor) {
    (void)KIVO_MemFree_F(pstTbl->ppLinks, SOURCE, __LINE__);
    pstTbl->ppLinks = static_cast<void **>(pLinks);
    pstTbl->ulCount = ulCount;
    pstTbl->ulCursor = ulCursor;
}

uint32_t SRVSTL_RemoveAllLink(SRVSTL_TBL_S *pstTbl, SRVSTL_FREE_FUNC pfFree) {
    if (pstTbl == nullptr)
        return KIVO_FAIL;
    if (pstTbl->ppLinks == nullptr)
        return KIVO_OK;

    if (pfFree != nullptr) {
        /* The callback may change the table: array and count are read anew each time. */
        for (uint32_t i = pstTbl->ulCount; i-- > 0;) {
            if (i < pstTbl->ulCount)
                pfFree(pstTbl->ppLinks[i]);
        }
    }
    Replace(pstTbl, nullptr, 0, KIVO_NONE);
    return KIVO_OK;
}

/* False where there is nothing to search, or nothing to search with. A link that was found may be null, so a search
 * tells by the result, never by the link, how it ended. Works on a copy of the header, whose fields the compiler may
 * then fetch all at once. pstTbl is not null, here and in Find. */
template <bool FETCH>
[[gnu::always_inline]] static inline bool Search(const SRVSTL_TBL_S *pstTbl, const void *pKey, SEARCH_END_S *pstEnd) {
    const SRVSTL_TBL_S stTbl = *pstTbl;
    if (stTbl.ulCount == 0 || stTbl.pfCompare == nullptr)
        return false;
    const auto linkAt = [ppLinks = stTbl.ppLinks](size_t ulIndex) -> const void * { return ppLinks[ulIndex]; };
    *pstEnd = SortedSearch<FETCH>(INDEXED_ITEMS_S{linkAt}, stTbl.ulCount, stTbl.pfCompare, pKey);
    return true;
}

uint32_t SRVSTL_SetLink(SRVSTL_TBL_S *pstTbl, const void *pKey, void *pLink) {
    if (pstTbl == nullptr || (pstTbl->ulCount != 0 && pstTbl->pfCompare == nullptr))
        return KIVO_FAIL;

    const uint32_t ulCursor = pstTbl->ulCursor;
    uint32_t ulIndex = 0;
    SEARCH_END_S stEnd;
    if (Search<true>(pstTbl, pKey, &stEnd)) {
        pstTbl->ulCursor = stEnd.ulIndex;
        const int32_t lOrder = pstTbl->pfCompare(stEnd.pItem, pKey);
        if (lOrder == 0)
            return KIVO_EXISTS;
        if (lOrder < 0)
            (void)SRVSTL_GetNextLink(pstTbl); /* behind the last one this is the count: append */
        ulIndex = pstTbl->ulCursor;
    }
    if (pstTbl->ulSpec <= pstTbl->ulCount)
        return KIVO_FULL;

    void *pNew = FittedArrayWith(pstTbl->ulMid, pstTbl->ppLinks, pstTbl->ulCount, sizeof(void *), ulIndex, &pLink);
    if (pNew == nullptr) {
        pstTbl->ulCursor = ulCursor;
        return KIVO_NO_MEMORY;
    }
    Replace(pstTbl, pNew, pstTbl->ulCount + 1, ulIndex);
    return KIVO_OK;
}

/* Removes the link at ulIndex and sets the cursor (0xFFFFFFFF when the table is empty then). */
static uint32_t RemoveAt(SRVSTL_TBL_S *pstTbl, uint32_t ulIndex, uint32_t ulCursor) {
    if (pstTbl->ulCount == 1) {
        Replace(pstTbl, nullptr, 0, KIVO_NONE);
        return KIVO_OK;
    }
    void *pNew = FittedArrayWithout(pstTbl->ulMid, pstTbl->ppLinks, pstTbl->ulCount, sizeof(void *), ulIndex);
    if (pNew == nullptr)
        return KIVO_NO_MEMORY;
    Replace(pstTbl, pNew, pstTbl->ulCount - 1, ulCursor);
    return KIVO_OK;
}

uint32_t SRVSTL_RemoveLink(SRVSTL_TBL_S *pstTbl, const void *pKey) {
    SEARCH_END_S stEnd;
    if (pstTbl == nullptr || !Search<true>(pstTbl, pKey, &stEnd) || !stEnd.bMatch)
        return KIVO_NOT_FOUND;
    /* 0xFFFFFFFF becomes 0xFFFFFFFE, past the end, on purpose: callers rely on it. */
    const uint32_t ulCursor = pstTbl->ulCursor >= stEnd.ulIndex ? pstTbl->ulCursor - 1 : pstTbl->ulCursor;
    pstTbl->ulCursor = stEnd.ulIndex; /* stays there for want of memory */
    return RemoveAt(pstTbl, stEnd.ulIndex, ulCursor);
}

uint32_t SRVSTL_RemoveCurr(SRVSTL_TBL_S *pstTbl) {
    if (SRVSTL_GetCurrLink(pstTbl) == nullptr)
        return KIVO_NOT_FOUND;
    return RemoveAt(pstTbl, pstTbl->ulCursor, pstTbl->ulCursor - 1);
}

/* A function of its own for either, since the two searches together have more values than there are registers. */
template <bool FETCH>
[[gnu::noinline]] static void *Find(SRVSTL_TBL_S *pstTbl, const void *pKey) {
    SEARCH_END_S stEnd;
    if (!Search<FETCH>(pstTbl, pKey, &stEnd) || !stEnd.bMatch)
        return nullptr;
    pstTbl->ulCursor = stEnd.ulIndex;
    return const_cast<void *>(stEnd.pItem);
}

void *SRVSTL_FindLink(SRVSTL_TBL_S *pstTbl, const void *pKey) {
    if (pstTbl == nullptr)
        return nullptr;
    return pstTbl->ulCount > FEW_ITEMS ? Find<true>(pstTbl, pKey) : Find<false>(pstTbl, pKey);
}

void *SRVSTL_FindProxLink(SRVSTL_TBL_S *pstTbl, const void *pKey) {
    SEARCH_END_S stEnd;
    if (pstTbl == nullptr || !Search<true>(pstTbl, pKey, &stEnd))
        return nullptr;
    pstTbl->ulCursor = stEnd.ulIndex;
    return const_cast<void *>(stEnd.pItem);
}

void *SRVSTL_GetFirstLink(SRVSTL_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCount == 0)
        return nullptr;
    pstTbl->ulCursor = 0;
    return pstTbl->ppLinks[0];
}

void *SRVSTL_GetLastLink(SRVSTL_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCount == 0)
        return nullptr;
    pstTbl->ulCursor = pstTbl->ulCount - 1;
    return pstTbl->ppLinks[pstTbl->ulCursor];
}

void *SRVSTL_GetNextLink(SRVSTL_TBL_S *pstTbl) {
    if (pstTbl == nullptr)
        return nullptr;
    const uint32_t ulNext = pstTbl->ulCursor + 1; /* wraps to 0 before the first */
    if (ulNext >= pstTbl->ulCount) {
        pstTbl->ulCursor = pstTbl->ulCount;
        return nullptr;
    }
    pstTbl->ulCursor = ulNext;
    return pstTbl->ppLinks[ulNext];
}

void *SRVSTL_GetPrevLink(SRVSTL_TBL_S *pstTbl) {
    if (pstTbl == nullptr || pstTbl->ulCursor >= pstTbl->ulCount)
        return nullptr;
    pstTbl->ulCursor--; /* wraps to 0xFFFFFFFF, before the first */
    return SRVSTL_GetCurrLink(pstTbl);
}

void *SRVSTL_GetCurrLink(const SRVSTL_TBL_S *pstTbl) {
    return pstTbl == nullptr ? nullptr : SRVSTL_GetLink(pstTbl, pstTbl->ulCursor);
}

void *SRVSTL_GetLink(const SRVSTL_TBL_S *pstTbl, uint32_t ulIndex) {
    return pstTbl == nullptr || ulIndex >= pstTbl->ulCount ? nullptr : pstTbl->ppLinks[ulIndex];
}

uint32_t SRVSTL_GetLinkCount(const SRVSTL_TBL_S *pstTbl) {
    return pstTbl == nullptr ? 0 : pstTbl->ulCount;
}
