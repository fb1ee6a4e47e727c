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

/* An array of records of one size, not 0. A place in it is the address of a record. */
struct RECORD_ARRAY_S {
    using PLACE = const uint8_t *;

    PLACE pFirst;
    size_t ulSize;

    PLACE At(size_t ulIndex) const { return pFirst + ulIndex * ulSize; }
    PLACE Above(PLACE place, size_t ulSteps) const { return place + ulSteps * ulSize; }
    PLACE Below(PLACE place, size_t ulSteps) const { return place - ulSteps * ulSize; }
    static const void *Item(PLACE place) { return place; }
    static bool IsSame(PLACE a, PLACE b) { return a == b; }

    /* Brings the next probe's record into the cache, from either side of mid. After k probes an interval has count / 2^k
     * records or one more, so the distance can be had without waiting for the comparisons' answers; it is one record off
     * now and then, and leads no further than to the interval's end, which may be where the array ends. */
    void Fetch(PLACE mid, PLACE, PLACE, size_t ulShortest) const {
        const size_t ulSteps = (ulShortest + 2) / 4;
        __builtin_prefetch(Above(mid, ulSteps));
        __builtin_prefetch(Below(mid, ulSteps));
    }

    /* Exact, since both numbers and the quotient are whole and below 2^32, and several times as fast as the division of
     * integers. */
    uint32_t Index(PLACE place) const {
        const double dOffset = static_cast<double>(place - pFirst);
        return static_cast<uint32_t>(static_cast<int64_t>(dOffset / static_cast<double>(static_cast<int64_t>(ulSize))));
    }

    static PLACE Select(int32_t lOrder, PLACE above, PLACE below) {
#if defined(__x86_64__)
        asm("testl %1, %1\n\tcmovns %2, %0" : "+r"(above) : "r"(lOrder), "r"(below) : "cc");
        return above;
#elif defined(__aarch64__)
        asm("cmp %w1, #0\n\tcsel %0, %0, %2, lt" : "+r"(above) : "r"(lOrder), "r"(below) : "cc");
        return above;
#else
        return lOrder < 0 ? above : below;
#endif
    }
};

/* Items that are found by their index. A place is the index with the item there, so that a pointer on the way to the
 * item is read before it is known whether the item will be the next probe. */
template <typename ITEM_AT>
struct INDEXED_ITEMS_S {
    struct PLACE {
        size_t ulIndex;
        const void *pItem;
    };

    ITEM_AT itemAt;

    PLACE At(size_t ulIndex) const { return {ulIndex, itemAt(ulIndex)}; }
    PLACE Above(PLACE place, size_t ulSteps) const { return At(place.ulIndex + ulSteps); }
    PLACE Below(PLACE place, size_t ulSteps) const { return At(place.ulIndex - ulSteps); }
    static const void *Item(PLACE place) { return place.pItem; }
    static bool IsSame(PLACE a, PLACE b) { return a.ulIndex == b.ulIndex; }
    static uint32_t Index(PLACE place) { return static_cast<uint32_t>(place.ulIndex); }

    /* Brings the next probe's item into the cache, whichever of the two it will be. */
    static void Fetch(PLACE, PLACE above, PLACE below, size_t) {
        __builtin_prefetch(above.pItem);
        __builtin_prefetch(below.pItem);
    }

    static PLACE Select(int32_t lOrder, PLACE above, PLACE below) {
#if defined(__x86_64__)
        asm("testl %2, %2\n\tcmovns %3, %0\n\tcmovns %4, %1"
            : "+&r"(above.ulIndex), "+&r"(above.pItem)
            : "r"(lOrder), "r"(below.ulIndex), "r"(below.pItem)
            : "cc");
        return above;
#elif defined(__aarch64__)
        asm("cmp %w2, #0\n\tcsel %0, %0, %3, lt\n\tcsel %1, %1, %4, lt"
            : "+&r"(above.ulIndex), "+&r"(above.pItem)
            : "r"(lOrder), "r"(below.ulIndex), "r"(below.pItem)
            : "cc");
        return above;
#else
        return lOrder < 0 ? above : below;
#endif
    }
};

template <typename ITEM_AT>
INDEXED_ITEMS_S(ITEM_AT) -> INDEXED_ITEMS_S<ITEM_AT>;

/* Searches the ulCount (at least 1) ascending items of an array for pKey; pfCompare is as in SRVOT_CMP_FUNC.
 *
 * The probes are those of an interval [lo, hi) that begins as [0, count): the item at mid = (lo + hi) / 2 is compared;
 * a match ends the search, else hi = mid or lo = mid, and the search is over when mid stays the same. The interval is
 * kept as mid and its length: mid is lo + length / 2, and the length becomes length / 2 below mid and (length + 1) / 2
 * above it. So both possible next places are known while the comparison still runs, though they stand behind its call:
 * the processor looks that far ahead, and nothing must be kept over the call. The length stands there as it was before
 * it was halved, since the next steps are had from that a moment sooner: (length + 1) / 4 above mid, (length + 2) / 4
 * below it. Every place is one of the array whatever the comparison answers.
 *
 * Select takes the place above for a negative order (the item sorts before the key), else the one below. A predictor
 * guesses this wrong every other time, which costs more than all the rest of a probe. Compilers turn the plain
 * expression into a branch at one optimization level or another, so the processor's own selection is spelled out.
 *
 * With FETCH the next items come into the cache before it is known which of them is wanted. */

template <bool FETCH, typename ARRAY, typename COMPARE>
[[gnu::always_inline]] static inline SEARCH_END_S SortedSearch(const ARRAY &array, uint32_t ulCount, COMPARE pfCompare,
                                                               const void *pKey) {
    size_t ulTwice = size_t{ulCount} * 2; /* the length, twice, or one more */
    size_t ulShortest = ulCount;          /* length of the shortest interval that there is after as many probes */
    auto mid = array.At(ulCount / 2);
    while (true) {
        const int32_t lOrder = pfCompare(array.Item(mid), pKey);
        const auto above = array.Above(mid, (ulTwice + 2) / 8);
        const auto below = array.Below(mid, (ulTwice + 4) / 8);
        if constexpr (FETCH) {
            array.Fetch(mid, above, below, ulShortest);
            ulShortest /= 2;
        }
        if (lOrder == 0)
            return {array.Item(mid), array.Index(mid), true};
        const auto next = array.Select(lOrder, above, below);
        if (array.IsSame(next, mid))
            return {array.Item(mid), array.Index(mid), false};
        ulTwice = ulTwice / 2 + (static_cast<uint32_t>(lOrder) >> 31);
        mid = next;
    }
}

/* A search looks at one cache line of an item. Those of so many items stay in the innermost cache, and fetching them
 * would only keep the processor busy. */
static constexpr uint32_t FEW_ITEMS = 512;

#endif
