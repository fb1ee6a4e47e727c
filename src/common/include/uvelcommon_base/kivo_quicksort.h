/* Quicksort of record pointers without recursion, and the address array that it is mostly run over.
 *
 * The sort takes n log n comparisons, neither recursion nor memory (its pending ranges stand on a fixed stack in its
 * own frame), and gives way to other tasks again and again. Equal entries end in no particular order.
 *
 * An address array holds pointers to private copies of records, up to a fixed capacity.
 *
 * Usage:
 *     static int32_t ById(const void *pA, const void *pB) {        // the entries, that is the records themselves
 *         const uint32_t ulA = ((const SESSION_S *)pA)->ulId, ulB = ((const SESSION_S *)pB)->ulId;
 *         return (ulA > ulB) - (ulA < ulB);
 *     }
 *     SRVQS_ADDR_ARRAY_S stSessions;
 *     if (SRVQS_AddrArrayInit(ulMid, &stSessions, ulMax) != KIVO_OK) ...
 *     for (each session) (void)SRVQS_PushDataToAddrArray(ulMid, &stSession, sizeof(stSession), &stSessions);
 *     SRVQS_QuickSort(stSessions.ppEntries, stSessions.ulCount, ById);
 *     for (i = 0; i < stSessions.ulCount; i++) Show(stSessions.ppEntries[i]);
 *     SRVQS_AddrArrayFree(&stSessions);
 *
 * Ownership: the sort keeps nothing; an address array owns its slots and copies until SRVQS_AddrArrayFree.
 * Threads: any, each on arrays of its own.
 * Errors: the sort has none; null arrays and comparisons do nothing. A comparison that contradicts itself leaves the
 * entries in some order; nothing beside them is touched. Operations of the address array return 0, or 1 and then have
 * changed nothing. */
#ifndef UVELCOMMON_BASE_KIVO_QUICKSORT_H
#define UVELCOMMON_BASE_KIVO_QUICKSORT_H

#include "kivo_types.h"

/* Compares two entries (not their addresses): negative, 0 or positive as pA sorts before, with or after pB. Entries are
 * 64-bit values that the sort only moves; what does not point to a record may be cast. */
typedef int32_t (*SRVQS_CMP_FUNC)(const void *pA, const void *pB);

#define SRVQS_STACK_SIZE 100U /* ranges that may wait */

/* A range that waits to be sorted, both ends included. An empty one has ulHigh + 1 == ulLow. */
typedef struct {
    uint32_t ulLow;  /* index of the first entry */
    uint32_t ulHigh; /* index of the last entry */
} SRVQS_RANGE_S;

/* The pending ranges of a sort. The larger part of a split range is always the one that waits, so there are never more
 * than log2 of the entry count, plus one. */
typedef struct {
    SRVQS_RANGE_S astRanges[SRVQS_STACK_SIZE]; /* those up to lTop wait */
    int32_t lTop;                              /* index of the topmost range, -1 when none waits */
} SRVQS_STACK_S;

/* Pointers to private copies of records. */
typedef struct {
    void **ppEntries;    /* ulCapacity slots, the first ulCount in use; null for capacity 0 and after the release */
    uint32_t ulCapacity; /* slots */
    uint32_t ulCount;    /* slots in use */
} SRVQS_ADDR_ARRAY_S;

/* Sorts ulCount entries in ascending order; nothing happens for 0 and for 0x80000000 and more. Calls
 * QAL_TaskRunDelay(200, 20) at every 64th range that it works on and at every 64th comparison within one split.
 *
 * Two kinds of input would take quadratic time. More than eleven entries that all descend are turned round, with the
 * call at every 64th exchange; whether they do is seen from neighbours, compared up to the first that do not, with the
 * call at every 65536th. And where splits take far more comparisons than those of random entries would, the ranges that
 * are left are heap sorted, with the call at every 64th comparison; equal entries may end in another order than splits
 * leave them in. */
UVEL_API void SRVQS_QuickSort(void **ppArray, uint32_t ulCount, SRVQS_CMP_FUNC pfCompare);

/* The steps of the sort, for callers that sort in a way of their own. Positions are indexes of ppArray. */

/* Exchanges two entries. */
UVEL_API void SRVQS_InterChange(void **ppA, void **ppB);

/* Puts a range on the stack; a full stack stays as it is. */
UVEL_API void SRVQS_Push(SRVQS_STACK_S *pstStack, uint32_t ulLow, uint32_t ulHigh);

/* Takes the topmost range off the stack; from an empty stack nothing is taken and nothing written. */
UVEL_API void SRVQS_Pop(SRVQS_STACK_S *pstStack, uint32_t *pulLow, uint32_t *pulHigh);

/* Sorts the entries lLow to ulHigh, both included, keeping the order of equal ones; n * n / 4 comparisons for random
 * entries. ulHigh counts as signed, so that the range (0, -1) is empty. */
UVEL_API void SRVQS_InsertionSort(void **ppArray, int32_t lLow, uint32_t ulHigh, SRVQS_CMP_FUNC pfCompare);

/* Splits the entries lLow to lHigh, both included, around the median of the first, the middle and the last one, and
 * writes the index where that ends up to *plPivot: what sorts before it stands below, what sorts after it above, what
 * is equal on either side. Nothing is touched for an empty range. Calls QAL_TaskRunDelay(200, 20) before every 64th
 * comparison after the choice of the median. */
UVEL_API void SRVQS_Split(void **ppArray, int32_t lLow, int32_t lHigh, int32_t *plPivot, SRVQS_CMP_FUNC pfCompare);

/* Makes *pstArray an empty array of ulCapacity slots (what it held before is not released); with capacity 0 every push
 * is refused. 1: null array, no memory, or slots of more than 0xFFFFFFFF bytes; *pstArray is then all zero. */
UVEL_API uint32_t SRVQS_AddrArrayInit(uint32_t ulMid, SRVQS_ADDR_ARRAY_S *pstArray, uint32_t ulCapacity);

/* Appends a private copy of the ulLen bytes at pData. 1: null data or array, length 0, no slot left, or no memory. */
UVEL_API uint32_t SRVQS_PushDataToAddrArray(uint32_t ulMid, const void *pData, uint32_t ulLen,
                                            SRVQS_ADDR_ARRAY_S *pstArray);

/* Releases the copies, the last one first, and the slots. Capacity and count stay as they were (no push succeeds any
 * more); the array must be made anew before its next use. Nothing happens for null, and when it is released already. */
UVEL_API void SRVQS_AddrArrayFree(SRVQS_ADDR_ARRAY_S *pstArray);

#endif
