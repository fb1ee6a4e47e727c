/* Arguments of layer-2 notifications. */
#ifndef KIVO_OXM_ARGUMENTS_H
#define KIVO_OXM_ARGUMENTS_H

#include <uvelcommon_base/kivo_vlan_events.h>
#include <uvelhost/assert.h>

#include "kivo_oxm/raise.h"

namespace oxm {

inline constexpr char SOURCE[] = "src/common_adp/src/kivo_oxm";

/* The answer to a null pointer. */
inline uint32_t BadArgument(uint32_t ulLine) {
    qal_assert(SOURCE, ulLine);
    return KIVO_FAIL;
}

inline uint16_t Word16(const void *pWord) {
    return *static_cast<const uint16_t *>(pWord);
}

inline uint32_t Word32(const void *pWord) {
    return *static_cast<const uint32_t *>(pWord);
}

/* What stands behind the head of a list. */
template <typename Entry, typename Head>
const Entry *EntriesOf(const Head *pstHead) {
    return reinterpret_cast<const Entry *>(pstHead + 1);
}

} // namespace oxm

#endif
