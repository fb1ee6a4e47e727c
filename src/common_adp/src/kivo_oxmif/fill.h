/* What the adapters for interfaces and boards share. */
#ifndef KIVO_OXMIF_FILL_H
#define KIVO_OXMIF_FILL_H

#include <securec.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelhost/assert.h>

#include "kivo_oxm/raise.h"

namespace oxmif {

inline constexpr char SOURCE[] = "src/common_adp/src/kivo_oxmif";

/* Fills a record with 0xFF bytes. Without that the event is not raised and the host hears of no failure. */
template <typename Record>
bool FillWithOnes(Record *pstRecord) {
    if (memset_s(pstRecord, sizeof(Record), 0xFF, sizeof(Record)) == EOK)
        return true;
    qal_assert(SOURCE, __LINE__);
    return false;
}

} // namespace oxmif

#endif
