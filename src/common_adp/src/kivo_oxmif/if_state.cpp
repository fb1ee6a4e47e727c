/* Interfaces: state of line and port. */
#include <uvelcommon_base/kivo_if_query.h>

#include "host_read.h"
#include "kivo_oxmif/fill.h"

static_assert(KIVO_IF_STATE_UP == IF_STATE_UP && KIVO_IF_STATE_DOWN == IF_STATE_DOWN);

uint32_t KIVO_IF_GetIfLineStatuesByIndex(uint32_t ulIfIndex) {
    uint32_t ulIpv4 = 0;
    uint32_t ulIpv6 = 0;
    if (BDS_IfnetGetLineState(ulIfIndex, &ulIpv4) != KIVO_OK ||
        BDS_IfnetGetIpv6LinkState(ulIfIndex, &ulIpv6) != KIVO_OK) {
        qal_assert(oxmif::SOURCE, __LINE__);
        return KIVO_IF_STATE_UNKNOWN;
    }
    return ulIpv4 == IF_STATE_UP || ulIpv6 == IF_STATE_UP ? KIVO_IF_STATE_UP : KIVO_IF_STATE_DOWN;
}

uint32_t KIVO_IF_GetIfPhyStatusByIndex(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) ? ReadOr<BDS_IfnetGetIfPhyState>(KIVO_IF_STATE_UNKNOWN, ulIfIndex)
                                : KIVO_IF_STATE_UNKNOWN;
}

uint32_t KIVO_IF_IsLineStateUp(uint32_t ulIfIndex) {
    return ReadOr<BDS_IfnetGetLineState>(0U, ulIfIndex) == IF_STATE_UP ? 1 : 0;
}

uint32_t KIVO_IF_IsPhyStateUp(uint32_t ulIfIndex) {
    return ReadOr<BDS_IfnetGetIfPhyState>(0U, ulIfIndex) == IF_STATE_UP ? 1 : 0;
}

uint32_t KIVO_Adapt_IF_INTF_ShutDownInterface(uint32_t ulIfIndex) {
    return IF_INTF_ShutDownInterface(ulIfIndex);
}

uint32_t KIVO_Adapt_IF_INTF_NoShutDownInterface(uint32_t ulIfIndex) {
    return IF_INTF_NoShutDownInterface(ulIfIndex);
}
