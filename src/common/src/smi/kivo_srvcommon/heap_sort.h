/* Heap sort: the way out for ranges that median-of-three splits badly. */
#ifndef KIVO_SRVCOMMON_HEAP_SORT_H
#define KIVO_SRVCOMMON_HEAP_SORT_H

#include <uvelcommon_base/kivo_quicksort.h>

/* Sorts ulCount entries in ascending order with n log n comparisons whatever their order; gives way before every 64th
 * comparison. */
void HeapSort(void **ppArray, uint32_t ulCount, SRVQS_CMP_FUNC pfCompare);

#endif
