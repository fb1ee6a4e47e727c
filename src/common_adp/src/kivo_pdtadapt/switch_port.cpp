/* Layer 2: switch ports and the VLANs bound to them. */
#include <uvelcommon_base/kivo_l2_query.h>

#include <uvelhost/l2if.h>

uint32_t L2IF_SH_GetMaxSwitchPortNum(void) {
    return BDS_L2IF_SH_GetMaxSwitchPortNum();
}

uint32_t KIVO_L2IF_IsValidPortIndex(uint32_t ulPortIndex) {
    return ulPortIndex < L2IF_SH_GetMaxSwitchPortNum() ? 1 : 0;
}

uint32_t L2IF_PORT_IsUsed(uint32_t ulPortIndex) {
    return BDS_L2IF_PORT_IsUsed(ulPortIndex);
}

uint32_t KIVO_L2IF_PORT_IsUsed(uint32_t ulPortIndex) {
    return L2IF_PORT_IsUsed(ulPortIndex);
}

uint32_t L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex) {
    return BDS_L2IF_PORT_GetIfIndex(ulPortIndex, pulIfIndex);
}

uint32_t KIVO_L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex) {
    return L2IF_PORT_GetIfIndex(ulPortIndex, pulIfIndex);
}

uint32_t L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex) {
    return BDS_L2IF_SH_PORT_GetIndexByIfIndex(ulIfIndex, pulPortIndex);
}

uint32_t KIVO_L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex) {
    return L2IF_SH_PORT_GetIndexByIfIndex(ulIfIndex, pulPortIndex);
}

uint32_t L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId) {
    return BDS_L2IF_SH_GetVlanIdFromMode(ulPortIndex, ulMode, pusVlanId);
}

uint32_t KIVO_L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId) {
    return L2IF_SH_GetVlanIdFromMode(ulPortIndex, ulMode, pusVlanId);
}

uint32_t KIVO_Adapt_PortIsInCfgVlan(uint32_t ulPortIndex, uint16_t usVlanId) {
    return L2IF_VP_PortIsInCfgVlan(ulPortIndex, usVlanId);
}

uint32_t L2IF_SH_DYNVP_GetVlanListByPort(uint32_t ulPortIndex, uint32_t aulBitmap[KIVO_VLAN_BITMAP_WORDS]) {
    return BDS_L2IF_SH_DYNVP_GetVlanListByPort(ulPortIndex, aulBitmap);
}

uint32_t L2IF_SH_DYNVP_GetPortListByVlan(uint16_t usVlanId, uint32_t *pulPortIndex, uint32_t *pulCount) {
    return BDS_L2IF_SH_DYNVP_GetPortListByVlan(usVlanId, pulPortIndex, pulCount);
}

uint32_t L2IF_SH_DYNVP_GetVlanPortBindMode(uint16_t usVlanId, uint32_t ulPortIndex, uint32_t *pulMode) {
    return BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(usVlanId, ulPortIndex, pulMode);
}
