/* From the host's way of answering, a status and an out-parameter, to the library's: the value, or a fixed one for none. */
#ifndef COMMON_ADP_HOST_READ_H
#define COMMON_ADP_HOST_READ_H

#include <uvelcommon_base/kivo_types.h>

static constexpr uint16_t NO_VLAN = 65535;

/* An index is valid when it is greater than 0 or less than -1 as a signed number. */
static inline bool IsIfIndex(uint32_t ulIfIndex) {
    return ulIfIndex != 0 && ulIfIndex != KIVO_NONE;
}

/* The value that the host operation Read writes for the keys, `none` after a failure. */
template <auto Read, typename Value, typename... Keys>
static inline Value ReadOr(Value none, Keys... keys) {
    Value value = none;
    return Read(keys..., &value) == KIVO_OK ? value : none;
}

/* The same question for an interface, asked only for an index that can have one. */
template <auto Read>
static inline uint32_t ReadOfInterface(uint32_t ulIfIndex, uint32_t *pulValue) {
    return IsIfIndex(ulIfIndex) ? Read(ulIfIndex, pulValue) : KIVO_FAIL;
}

#endif
