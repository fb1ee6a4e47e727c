#include "../record.h"

static int Order(uint32_t a, uint32_t b) {
    return (a > b) - (a < b);
}

static uint32_t IdOf(const void *record) {
    return static_cast<const Record *>(record)->id;
}

static const void *At(const void *slot) {
    return *static_cast<const void *const *>(slot);
}

int32_t Record_CompareWithKey(const void *record, const void *id) {
    return Order(IdOf(record), *static_cast<const uint32_t *>(id));
}

int32_t Record_Compare(const void *a, const void *b) {
    return Order(IdOf(a), IdOf(b));
}

int Record_CompareForBsearch(const void *id, const void *record) {
    return Order(*static_cast<const uint32_t *>(id), IdOf(record));
}

int Record_CompareForPointerBsearch(const void *id, const void *slot) {
    return Order(*static_cast<const uint32_t *>(id), IdOf(At(slot)));
}

int Record_CompareForQsort(const void *slot_a, const void *slot_b) {
    return Order(IdOf(At(slot_a)), IdOf(At(slot_b)));
}

bool Record_Less(const void *a, const void *b) {
    return IdOf(a) < IdOf(b);
}
