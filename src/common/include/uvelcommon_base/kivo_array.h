/* Arrays: search and maintenance of short arrays that the caller owns, byte comparison, integer sort.
 *
 * For slot tables and lists of ids of some dozens of entries: every search walks the array from its beginning. Nothing
 * is allocated; array, capacity and count are the caller's, who also counts up after an append and down after a
 * removal.
 *
 * Usage:
 *     if (SRVAR_FindElmtFromU32Array(aulIfIndex, ulCount, ulIfIndex, &ulPos) != KIVO_OK) {   // not there yet
 *         SRVAR_InsertElmtIntail(aulIfIndex, ulCount, sizeof(aulIfIndex[0]), &ulIfIndex);
 *         ulCount++;
 *     }
 *     if (SRVAR_RemoveElmt(aulIfIndex, ulCount, sizeof(aulIfIndex[0]), &ulIfIndex) == KIVO_OK)
 *         ulCount--;
 *
 * Walking an unsorted array in ascending order of its values, each value once:
 *     ulRet = SRVAR_FindMinElmtFromU32Array(aulId, ulCount, &ulPos);
 *     for (; ulRet == KIVO_OK; ulRet = SRVAR_FindNextSmallElmtFromU32Array(aulId, ulCount, aulId[ulPos], &ulPos)) ...
 *
 * Ownership: nothing is kept; pointers are used during the call only.
 * Threads: any, as long as nobody changes the array during the call.
 * Errors: 0 found or done, 1 not found or bad argument; what a search would write is then untouched. Counts are in
 * elements, sizes in bytes, indexes from 0. */
#ifndef UVELCOMMON_BASE_KIVO_ARRAY_H
#define UVELCOMMON_BASE_KIVO_ARRAY_H

#include "kivo_types.h"

/* Tells whether the element is the one that pKey asks for: 1 for a match, any other value for none. */
typedef uint32_t (*SRVAR_MATCH_FUNC)(const void *pElmt, const void *pKey);

/* The searches for plain values check the count only: with count 0 no pointer is looked at, otherwise the array and
 * pulIndex must be valid. */

/* Index of the first element equal to ulValue. */
UVEL_API uint32_t SRVAR_FindElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t ulValue,
                                             uint32_t *pulIndex);

/* As SRVAR_FindElmtFromU32Array, for elements of 16 bits. */
UVEL_API uint32_t SRVAR_FindElmtFromU16Array(const uint16_t *pusArray, uint32_t ulCount, uint16_t usValue,
                                             uint32_t *pulIndex);

/* Index of the smallest element, the first one when several are equal. */
UVEL_API uint32_t SRVAR_FindMinElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t *pulIndex);

/* Index of the smallest element greater than ulValue, the first one when several are equal. */
UVEL_API uint32_t SRVAR_FindNextSmallElmtFromU32Array(const uint32_t *pulArray, uint32_t ulCount, uint32_t ulValue,
                                                      uint32_t *pulIndex);

/* Index of the first element for which pfMatch gives 1. 1 also when the array, the key or pulIndex is null; pfMatch
 * must be valid when there is an element to ask about. */
UVEL_API uint32_t SRVAR_SearchElmtByKey(const void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey,
                                        SRVAR_MATCH_FUNC pfMatch, uint32_t *pulIndex);

/* Index of the first element whose ulElmtSize bytes equal those at pKey. 1 also when the array, the key or pulIndex is
 * null. */
UVEL_API uint32_t SRVAR_FindElmtIndex(const void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey,
                                      uint32_t *pulIndex);

/* Copies the element at pElmt behind the last one; the array must have room for ulCount + 1 elements. Does nothing for
 * a null array. A copy that cannot be made (pElmt null, element size 0 or above 0x7FFFFFFF) raises an assertion. */
UVEL_API void SRVAR_InsertElmtIntail(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pElmt);

/* Removes the first element whose bytes equal those at pKey (which may lie in the array); the later ones move down by
 * one and the freed slot at the end, index ulCount - 1, becomes zero. A copy that cannot be made raises an assertion
 * and the rest is done all the same. */
UVEL_API uint32_t SRVAR_RemoveElmt(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey);

/* As SRVAR_RemoveElmt in constant time after the search, without keeping the order: the last element takes the place
 * of the removed one and its old slot becomes zero. When the last element itself is removed, its bytes stay in the
 * slot. */
UVEL_API uint32_t SRVAR_RemoveElmt_Sw(void *pArray, uint32_t ulCount, uint32_t ulElmtSize, const void *pKey);

/* Compares ulLen bytes: *plResult is 0 when they are equal and otherwise what the host's comparison gives, negative or
 * positive as the first differing byte of pA is below or above that of pB. 1, with *plResult untouched, when a pointer
 * is null. */
UVEL_API uint32_t KIVO_MemCmp(const void *pA, const void *pB, uint32_t ulLen, int32_t *plResult);

/* Sorts the elements lLow to lHigh, both included, in ascending order of their unsigned values. Nothing happens for a
 * null array or lHigh <= lLow. Takes n log n steps for elements in random order, n * n / 2 when they are sorted
 * already, in either direction, or all equal; the stack needed is small whatever the order. */
UVEL_API void UVEL_QuickSort(uint32_t *pulArray, int32_t lLow, int32_t lHigh);

#endif
