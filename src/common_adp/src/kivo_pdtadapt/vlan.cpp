/* Layer 2: VLANs and their interfaces. */
#include <uvelcommon_base/kivo_l2_query.h>

#include "host_read.h"
#include <uvelhost/interface.h>
#include <uvelhost/l2if.h>

static_assert(KIVO_NO_VLAN == NO_VLAN && KIVO_VLAN_BITMAP_WORDS == L2IF_VLAN_BITMAP_WORDS);

uint32_t KIVO_Adapt_IF_GetIFIndexByVlanID(uint16_t usVlanId) {
    uint32_t ulIfIndex = KIVO_NONE;
    if (BDS_L2_VlanGetVbdIfIndex(usVlanId, &ulIfIndex) == KIVO_OK)
        return ulIfIndex;
    return ReadOr<BDS_L2IF_VLAN_GetIfIndexByVlanId>(KIVO_NONE, usVlanId);
}

uint32_t UVEL_L2IF_GetIfIndexByVlanId(uint16_t usVlanId) {
    return ReadOr<BDS_L2_VlanGetIfIndex>(KIVO_NONE, usVlanId);
}

uint32_t L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex) {
    return BDS_L2IF_VLAN_GetVlanIfIndex(usVlanId, pulIfIndex);
}

uint32_t KIVO_L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex) {
    return L2IF_VLAN_GetVlanIfIndex(usVlanId, pulIfIndex);
}

uint32_t KIVO_IF_GetVlanIdByIfIndex(uint32_t ulIfIndex) {
    return ReadOr<BDS_IfnetGetVlanIdByIfIndex>(NO_VLAN, ulIfIndex);
}

uint32_t KIVO_Adapt_IF_GetVlanIdByIfIndex(uint32_t ulIfIndex) {
    return KIVO_IF_GetVlanIdByIfIndex(ulIfIndex);
}

/* The status is not looked at: what a failure leaves is the preset value. */
static uint32_t IdOfInterface(uint32_t ulIfIndex, uint32_t ulOption) {
    uint32_t ulId = NO_VLAN;
    (void)BDS_L2_VlanGetIdByIfIndex(ulIfIndex, ulOption, &ulId);
    return ulId & 0xFFFF;
}

uint32_t UVEL_L2IF_GetVlanIdByIfIndex(uint32_t ulIfIndex) {
    return IdOfInterface(ulIfIndex, L2IF_ID_VLAN);
}

/* That the pointer is asked for and never written is relied on. */
uint32_t UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(uint32_t ulIfIndex, const uint32_t *pulId) {
    return pulId == nullptr ? KIVO_FAIL : IdOfInterface(ulIfIndex, L2IF_ID_VLAN_OR_BD);
}

uint32_t L2IF_VLAN_IsUsed(uint16_t usVlanId) {
    return BDS_L2IF_VLAN_IsUsed(usVlanId);
}

uint32_t KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(uint16_t usVlanId, const uint32_t *paulBitmap) {
    if (paulBitmap == nullptr || usVlanId / 32 >= KIVO_VLAN_BITMAP_WORDS)
        return 0;
    return paulBitmap[usVlanId / 32] >> usVlanId % 32 & 1;
}

/* A stub on purpose: the answer does not depend on what the host says. */
uint32_t KIVO_Adapt_GetBitByVlanIdAndPortIndex(uint16_t, uint32_t ulIfIndex) {
    uint32_t ulPortIndex = 0;
    (void)L2IF_SH_PORT_GetIndexByIfIndex(ulIfIndex, &ulPortIndex);
    return 0;
}
