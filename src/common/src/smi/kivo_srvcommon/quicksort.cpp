#include <uvelcommon_base/kivo_quicksort.h>

#include <cstddef>

#include "heap_sort.h"
#include "pace.h"

static_assert(sizeof(void *) == 8, "entries are 64-bit values");
static_assert(sizeof(SRVQS_RANGE_S) == 8);
static_assert(offsetof(SRVQS_RANGE_S, ulLow) == 0);
static_assert(offsetof(SRVQS_RANGE_S, ulHigh) == 4);
static_assert(sizeof(SRVQS_STACK_S) == 804);
static_assert(offsetof(SRVQS_STACK_S, astRanges) == 0);
static_assert(offsetof(SRVQS_STACK_S, lTop) == 800);

static constexpr int32_t INSERTION_SPAN = 10; /* ranges of up to this many entries more than one are not split */
static constexpr int64_t AHEAD = 8;           /* a record comes into the cache while so many before it are compared */

static constexpr uint32_t LONG_LOOK = 65536; /* so many comparisons of 3 us stay below the 200 ms of a long hold */

/* Entries that splits may look at before the input counts as one that median-of-three splits badly. Random inputs
 * stay below 1.2 n log2 n. */
static uint64_t SplitBudget(uint32_t ulCount) {
    const uint32_t ulLog2 = 32U - static_cast<uint32_t>(__builtin_clz(ulCount));
    return uint64_t{3} * ulCount * ulLog2;
}

/* Splitting would take quadratic time over a descending array. No two of its entries are equal, so there is only one
 * outcome, and turning it round gives that. Until it is known for one, the host is called as seldom as can be, since
 * other arrays are to cause the calls of their ranges and splits only. */
static bool ReverseDescending(void **ppArray, uint32_t ulCount, SRVQS_CMP_FUNC pfCompare) {
    uint32_t ulComparisons = 0;
    for (uint32_t i = 1; i < ulCount; ++i) {
        Pace<LONG_LOOK>(&ulComparisons);
        if (pfCompare(ppArray[i - 1], ppArray[i]) <= 0)
            return false;
    }
    uint32_t ulExchanges = 0;
    for (uint32_t i = 0, j = ulCount - 1; i < j; ++i, --j) {
        Pace(&ulExchanges);
        SRVQS_InterChange(&ppArray[i], &ppArray[j]);
    }
    return true;
}

void SRVQS_QuickSort(void **ppArray, uint32_t ulCount, SRVQS_CMP_FUNC pfCompare) {
    if (ppArray == nullptr || pfCompare == nullptr || static_cast<int32_t>(ulCount) <= 0)
        return;
    if (ulCount - 1 > INSERTION_SPAN && ReverseDescending(ppArray, ulCount, pfCompare))
        return;

    SRVQS_STACK_S stStack = {};
    stStack.lTop = -1;
    SRVQS_Push(&stStack, 0, ulCount - 1);
    uint32_t ulSteps = 0;
    uint64_t ullBudget = SplitBudget(ulCount);
    while (stStack.lTop >= 0) {
        uint32_t ulLow = 0;
        uint32_t ulHigh = 0;
        SRVQS_Pop(&stStack, &ulLow, &ulHigh);
        int32_t lLow = static_cast<int32_t>(ulLow);
        int32_t lHigh = static_cast<int32_t>(ulHigh);
        while (true) {
            Pace(&ulSteps);
            const int32_t lSpan = lHigh - lLow;
            if (lSpan <= INSERTION_SPAN) {
                SRVQS_InsertionSort(ppArray, lLow, static_cast<uint32_t>(lHigh), pfCompare);
                break;
            }
            if (ullBudget < static_cast<uint32_t>(lSpan)) {
                HeapSort(ppArray + lLow, static_cast<uint32_t>(lSpan) + 1, pfCompare);
                break;
            }
            ullBudget -= static_cast<uint32_t>(lSpan);
            int32_t lPivot = lLow;
            SRVQS_Split(ppArray, lLow, lHigh, &lPivot, pfCompare);
            /* The larger part waits, the right one of equals, so the stack stays as low as log2 of the count. */
            if (lHigh - lPivot >= lPivot - lLow) {
                SRVQS_Push(&stStack, static_cast<uint32_t>(lPivot + 1), static_cast<uint32_t>(lHigh));
                lHigh = lPivot - 1;
            } else {
                SRVQS_Push(&stStack, static_cast<uint32_t>(lLow), static_cast<uint32_t>(lPivot - 1));
                lLow = lPivot + 1;
            }
        }
    }
}

void SRVQS_InterChange(void **ppA, void **ppB) {
    if (ppA == nullptr || ppB == nullptr)
        return;
    void *pA = *ppA;
    *ppA = *ppB;
    *ppB = pA;
}

void SRVQS_Push(SRVQS_STACK_S *pstStack, uint32_t ulLow, uint32_t ulHigh) {
    if (pstStack == nullptr || pstStack->lTop < -1 || pstStack->lTop >= static_cast<int32_t>(SRVQS_STACK_SIZE) - 1)
        return;
    pstStack->astRanges[++pstStack->lTop] = {ulLow, ulHigh};
}

void SRVQS_Pop(SRVQS_STACK_S *pstStack, uint32_t *pulLow, uint32_t *pulHigh) {
    if (pstStack == nullptr || pulLow == nullptr || pulHigh == nullptr)
        return;
    if (pstStack->lTop < 0 || pstStack->lTop >= static_cast<int32_t>(SRVQS_STACK_SIZE))
        return;
    const SRVQS_RANGE_S stRange = pstStack->astRanges[pstStack->lTop--];
    *pulLow = stRange.ulLow;
    *pulHigh = stRange.ulHigh;
}

void SRVQS_InsertionSort(void **ppArray, int32_t lLow, uint32_t ulHigh, SRVQS_CMP_FUNC pfCompare) {
    if (ppArray == nullptr || pfCompare == nullptr)
        return;
    const int64_t llHigh = static_cast<int32_t>(ulHigh);
    for (int64_t k = int64_t{lLow} + 1; k <= llHigh; ++k) {
        void *pEntry = ppArray[k];
        int64_t j = k;
        for (; j > lLow && pfCompare(ppArray[j - 1], pEntry) > 0; --j)
            ppArray[j] = ppArray[j - 1];
        ppArray[j] = pEntry;
    }
}

/* Index of the median of the first, the middle and the last entry. Which one it is among equals is part of the sort's
 * outcome (as long as the heap sort does not take over), so the order of the comparisons stays as it is. */
static int64_t MedianOfThree(void **ppArray, int64_t llLow, int64_t llHigh, SRVQS_CMP_FUNC pfCompare) {
    const int64_t llMid = (llLow + llHigh) / 2;
    const bool bMidSmaller = pfCompare(ppArray[llLow], ppArray[llMid]) >= 0;
    const int64_t llSmaller = bMidSmaller ? llMid : llLow;
    const int64_t llLarger = bMidSmaller ? llLow : llMid;
    if (pfCompare(ppArray[llHigh], ppArray[llSmaller]) <= 0)
        return llSmaller;
    return pfCompare(ppArray[llHigh], ppArray[llLarger]) > 0 ? llLarger : llHigh;
}

void SRVQS_Split(void **ppArray, int32_t lLow, int32_t lHigh, int32_t *plPivot, SRVQS_CMP_FUNC pfCompare) {
    if (ppArray == nullptr || plPivot == nullptr || pfCompare == nullptr || lHigh < lLow)
        return;

    SRVQS_InterChange(&ppArray[MedianOfThree(ppArray, lLow, lHigh, pfCompare)], &ppArray[lLow]);
    void *pPivot = ppArray[lLow];
    int64_t i = lLow;
    int64_t j = int64_t{lHigh} + 1;
    uint32_t ulComparisons = 0;
    do {
        /* The tests against the ends only matter to ranges of one or two entries and to a comparison that contradicts
         * itself; otherwise the pivot stops the way down and an entry not below it the way up. */
        do {
            Pace(&ulComparisons);
            --j;
            if (j - AHEAD > i)
                __builtin_prefetch(ppArray[j - AHEAD]);
        } while (pfCompare(ppArray[j], pPivot) > 0 && j > lLow);
        while (i < lHigh) {
            Pace(&ulComparisons);
            if (i + AHEAD < j)
                __builtin_prefetch(ppArray[i + AHEAD]);
            if (pfCompare(ppArray[++i], pPivot) >= 0)
                break;
        }
        SRVQS_InterChange(&ppArray[i], &ppArray[j]);
    } while (j > i);
    SRVQS_InterChange(&ppArray[i], &ppArray[j]); /* the last exchange was one too many */
    SRVQS_InterChange(&ppArray[lLow], &ppArray[j]);
    *plPivot = static_cast<int32_t>(j);
}
