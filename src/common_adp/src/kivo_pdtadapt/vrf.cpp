/* VRFs of interfaces and by name. */
#include <uvelcommon_base/kivo_addr_query.h>

#include "host_read.h"
#include <uvelhost/interface.h>
#include <uvelhost/vrf.h>

static_assert(VRF_NAME_SIZE == 32);

uint32_t KIVO_IF_GetVrfIndexByIfIndex(uint32_t ulIfIndex) {
    if (!IsIfIndex(ulIfIndex) || BDS_IfnetIsSwitchPort(ulIfIndex) == 1)
        return 0;
    return ReadOr<BDS_IfnetGetVrfIndexByIfIndex>(0U, ulIfIndex);
}

uint32_t KIVO_IF_GetIpV6VrfIndexByIfIndex(uint32_t ulIfIndex) {
    return ReadOr<BDS_IfnetGetIpv6VrfIndexByIfIndex>(KIVO_NONE, ulIfIndex);
}

uint32_t KIVO_Adapt_GetIpv6VrfIndexByIfIndex(uint32_t ulIfIndex) {
    return KIVO_IF_GetIpV6VrfIndexByIfIndex(ulIfIndex);
}

uint32_t KIVO_IF_IsSetVpn(uint32_t ulIfIndex) {
    uint32_t ulVrfIndex = 0;
    if (BDS_IfnetGetVrfIndexByIfIndex(ulIfIndex, &ulVrfIndex) != KIVO_OK)
        return 0;
    if (ulVrfIndex != 0)
        return 1;
    return ReadOr<BDS_IfnetGetIpv6VrfIndexByIfIndex>(0U, ulIfIndex) != 0 ? 1 : 0;
}

uint32_t KIVO_L3VPN6_VRFMGM_VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex) {
    return L3VPN6_VRFMGM_VrfIdQueryByName(pszName, pulVrfIndex);
}

uint32_t KIVO_L3VPN6_VRFMGM_VrfNameQueryById(uint32_t ulVrfIndex, char szName[32]) {
    return L3VPN6_VRFMGM_VrfNameQueryById(ulVrfIndex, szName);
}
