/* Exactly fitted arrays: an array that changes is replaced by a new one of just the new length. */
#ifndef KIVO_SRVCOMMON_FITTED_ARRAY_H
#define KIVO_SRVCOMMON_FITTED_ARRAY_H

#include <cstdint>

/* A copy of the ulCount entries at pOld with the one at pEntry put in before ulIndex. pOld is left alone. Null when
 * memory is short or the new array would have more than 0xFFFFFFFF bytes. */
void *FittedArrayWith(uint32_t ulMid, const void *pOld, uint32_t ulCount, uint32_t ulEntrySize, uint32_t ulIndex,
                      const void *pEntry);

/* A copy of the ulCount (at least 2) entries at pOld without the one at ulIndex. pOld is left alone. Null when memory is
 * short. */
void *FittedArrayWithout(uint32_t ulMid, const void *pOld, uint32_t ulCount, uint32_t ulEntrySize, uint32_t ulIndex);

#endif
