/* Binary search of the sorted arrays, written once for the ordered table and the link table. */
#ifndef KIVO_SRVCOMMON_SORTED_SEARCH_H
#define KIVO_SRVCOMMON_SORTED_SEARCH_H

#include <cstddef>
#include <cstdint>

/* Where a search ended: at a match, or at the last probe when there is none. */
struct SEARCH_END_S {
    const void *pItem;
    uint32_t ulIndex;
    bool bMatch;
};

/* Moves to the half above (the item sorts before the key: lOrder is negative) or below. A predictor guesses wrong every
 * other time here, which costs more than all the rest of a probe. Compilers turn the plain expressions into a branch at
 * one optimization level or another, so the processor's own selection is spelled out where it is known. */
static inline void SelectHalf(int32_t lOrder, const void *pAbove, const void *pBelow, size_t ulAbove, size_t ulBelow,
                              const void **ppItem, size_t *pulIndex) {
    const void *pItem = pAbove;
    size_t ulIndex = ulAbove;
#if defined(__x86_64__)
    asm("testl %[order], %[order]\n\t"
        "cmovns %[item_below], %[item]\n\t"
        "cmovns %[index_below], %[index]"
        : [item] "+r"(pItem), [index] "+r"(ulIndex)
        : [order] "r"(lOrder), [item_below] "r"(pBelow), [index_below] "r"(ulBelow)
        : "cc");
#elif defined(__aarch64__)
    asm("cmp %w[order], #0\n\t"
        "csel %[item], %[item], %[item_below], lt\n\t"
        "csel %[index], %[index], %[index_below], lt"
        : [item] "+r"(pItem), [index] "+r"(ulIndex)
        : [order] "r"(lOrder), [item_below] "r"(pBelow), [index_below] "r"(ulBelow)
        : "cc");
#else
    pItem = lOrder < 0 ? pAbove : pBelow;
    ulIndex = lOrder < 0 ? ulAbove : ulBelow;
#endif
    *ppItem = pItem;
    *pulIndex = ulIndex;
}

/* Searches ulCount (at least 1) ascending items for pKey. itemAt gives the item at an index; pfCompare is as in
 * SRVOT_CMP_FUNC.
 *
 * The probes are those of an interval [lo, hi) that begins as [0, count): the item at mid = (lo + hi) / 2 is compared;
 * a match ends the search, else hi = mid or lo = mid, and the search is over when mid stays the same. The interval is
 * kept as mid and its length here: mid is lo + length / 2, and the length becomes length / 2 below mid and
 * (length + 1) / 2 above it. So both possible next probes are known while the comparison still runs, and every index is
 * below the count whatever the comparison answers. */
template <typename ITEM_AT, typename COMPARE>
[[gnu::always_inline]] static inline SEARCH_END_S SortedSearch(uint32_t ulCount, ITEM_AT itemAt, COMPARE pfCompare,
                                                               const void *pKey) {
    size_t ulLen = ulCount;
    size_t ulMid = ulLen / 2;
    const void *pItem = itemAt(ulMid);
    while (true) {
        const size_t ulAbove = ulMid + (ulLen + 1) / 4;
        const size_t ulBelow = ulMid - (ulLen + 2) / 4;
        const void *pAbove = itemAt(ulAbove);
        const void *pBelow = itemAt(ulBelow);
        __builtin_prefetch(pAbove);
        __builtin_prefetch(pBelow);

        const int32_t lOrder = pfCompare(pItem, pKey);
        if (lOrder == 0)
            return {pItem, static_cast<uint32_t>(ulMid), true};

        const void *pNext = nullptr;
        size_t ulNext = 0;
        SelectHalf(lOrder, pAbove, pBelow, ulAbove, ulBelow, &pNext, &ulNext);
        if (ulNext == ulMid)
            return {pItem, static_cast<uint32_t>(ulMid), false};
        ulLen = (ulLen + (static_cast<uint32_t>(lOrder) >> 31)) / 2;
        ulMid = ulNext;
        pItem = pNext;
    }
}

#endif
