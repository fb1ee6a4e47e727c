// The record that containers and sorts are measured with, and its comparisons: functions of a product layer, which no
// compiler can look into from the outside.
#pragma once

#include <cstdint>

struct Record {
    uint32_t id;
    uint8_t rest[60];
};

extern "C" {
#pragma GCC visibility push(default)
/* Of this library's containers and sort. */
int32_t Record_CompareWithKey(const void *record, const void *id);
int32_t Record_Compare(const void *a, const void *b);
/* Of bsearch over records and over pointers to them; of qsort and std::sort over pointers. */
int Record_CompareForBsearch(const void *id, const void *record);
int Record_CompareForPointerBsearch(const void *id, const void *slot);
int Record_CompareForQsort(const void *slot_a, const void *slot_b);
bool Record_Less(const void *a, const void *b);
#pragma GCC visibility pop
}
