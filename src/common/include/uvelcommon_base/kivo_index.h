/* Table indexes: pools that hand out the free numbers of fixed ranges.
 *
 * A pool covers the indexes min to max of some table. Its free indexes stand in a ring of slots, taken at the head and
 * given back at the tail, so a freed index rests until all that were freed before it are in use again. Taking and
 * freeing cost a few loads and stores, whatever the size of the pool; a slot costs 8 bytes.
 *
 * Usage:
 *     if (KIVO_InitTableIndex(&ulPoolId, 0, 1023) != KIVO_OK) ...
 *     ulIndex = KIVO_AllocTableIndex(ulPoolId);                    // KIVO_NONE: all in use
 *     ...
 *     KIVO_FreeTableIndex(ulPoolId, ulIndex);
 *
 * Rebuilding a pool that nothing was taken from yet, in one of two ways:
 *     for (each index in use, ascending) (void)KIVO_SetTableHeadByIndex(ulPoolId, ulIndex);   // pools whose min is 0
 * or
 *     for (each free index) KIVO_SetTableTailByIndex(ulPoolId, ulIndex);
 *     (void)KIVO_SmoothTableIndex(ulPoolId);
 *
 * Ownership: pools live as long as the process; nothing is given back.
 * Threads: one caller at a time. Create the pools during start-up.
 * Pool ids: valid are those that KIVO_InitTableIndex gave out. An id at or above g_ulTotalTableNum is refused. One
 * below it that was not given out yet meets a record of zeros: nothing can be taken from it or put into it; its head
 * and tail positions and its used count read 0, the values there KIVO_NONE. */
#ifndef UVELCOMMON_BASE_KIVO_INDEX_H
#define UVELCOMMON_BASE_KIVO_INDEX_H

#include "kivo_types.h"

/* One pool. Read only: the operations below keep head and tail within the ring. */
typedef struct {
    uint64_t *pullSlots; /* max + 1 - min slots: a free index, or 0xFFFFFFFF for a taken one */
    uint32_t ulHead;     /* position of the next allocation */
    uint32_t ulTail;     /* position where the next freed index is written */
    uint32_t ulUsed;     /* indexes handed out */
    uint32_t ulMin;      /* lowest index */
    uint32_t ulMax;      /* highest index */
} KIVO_TABLE_INDEX_S;

/* The registry: an array of records, one a pool, the pool id being the position. Null until the first pool is created
 * or the start-up sequence provides the array. It moves when it grows: do not keep addresses of records. */
UVEL_DATA KIVO_TABLE_INDEX_S *g_stTableIndex;

/* Records the registry has room for: 0 at load, 30 more whenever it grows. */
UVEL_DATA uint32_t g_ulTotalTableNum;

/* Creates a pool of the indexes ulMin to ulMax, all free in ascending order, and writes its id to *pulPoolId; ids count
 * up from 0. Give a ulMax below 0xFFFFFFFF: that index would read as KIVO_NONE when it is handed out.
 * 1, with *pulPoolId untouched and no id used up, when pulPoolId is null, ulMax is below ulMin, or memory is short.
 * Slots that cannot be had, for want of memory or because the pool would have more than 0x1FFFFFFF of them (the host
 * allocates less than 4 GiB at a time), raise the host's fatal error besides; should that return, nothing is lost. */
UVEL_API uint32_t KIVO_InitTableIndex(uint32_t *pulPoolId, uint32_t ulMin, uint32_t ulMax);

/* Takes the next free index. KIVO_NONE when all are in use, when the slot at the head is marked taken (which only the
 * setters and smoothing bring about), and when an index outside the pool's range stands there. */
UVEL_API uint32_t KIVO_AllocTableIndex(uint32_t ulPoolId);

/* Gives ulIndex back, behind all free ones. Nothing happens while nothing is handed out. The index itself is not
 * checked: give back only what is in use, and once; an index freed twice is handed out twice. */
UVEL_API void KIVO_FreeTableIndex(uint32_t ulPoolId, uint32_t ulIndex);

/* Takes the index ulIndex of a pool whose min is 0 and continues with its successor at the next allocation. The slot
 * marked taken is the one at ring position ulIndex, which holds that index in a pool that was just created.
 * 0, or 1 when ulIndex is not in the pool's range or all are in use. A position outside the ring, possible when min is
 * not 0, gives 1 as well; one inside is marked although another index stands there: do not use this on such pools.
 * An id at or above g_ulTotalTableNum raises an assertion and gives 1. */
UVEL_API uint32_t KIVO_SetTableHeadByIndex(uint32_t ulPoolId, uint32_t ulIndex);

/* Writes ulIndex as a free index at the tail, over what stands there, and moves the tail on. The used count does not
 * change and the index is not checked. An id at or above g_ulTotalTableNum raises an assertion. */
UVEL_API void KIVO_SetTableTailByIndex(uint32_t ulPoolId, uint32_t ulIndex);

/* Ends a rebuilding with KIVO_SetTableTailByIndex: marks the slots from the tail to the end of the ring taken and
 * starts at position 0 again, so that exactly the indexes written are handed out. With the tail at 0 (nothing written,
 * or as many as the ring has slots) nothing changes. The used count stays as it is. 0; an id at or above
 * g_ulTotalTableNum raises an assertion and gives 1. */
UVEL_API uint32_t KIVO_SmoothTableIndex(uint32_t ulPoolId);

/* The slot at the head: the next index to be handed out, or KIVO_NONE when it is taken or the id is too large. */
UVEL_API uint32_t KIVO_QueryTableIndexHeadValue(uint32_t ulPoolId);

/* The slot at the tail, which the next freed index overwrites; KIVO_NONE when it is taken or the id is too large. */
UVEL_API uint32_t KIVO_QueryTableIndexTailValue(uint32_t ulPoolId);

/* Position of the head in the ring, KIVO_NONE when the id is too large. */
UVEL_API uint32_t KIVO_QueryTableIndexHeadSuffix(uint32_t ulPoolId);

/* Position of the tail in the ring, KIVO_NONE when the id is too large. */
UVEL_API uint32_t KIVO_QueryTableIndexTailSuffix(uint32_t ulPoolId);

/* Indexes handed out, KIVO_NONE when the id is too large. */
UVEL_API uint32_t KIVO_QueryTableIndexUsedNum(uint32_t ulPoolId);

#endif
