/* IPv4 and MAC addresses of interfaces. */
#include <uvelcommon_base/kivo_addr_query.h>

#include <arpa/inet.h>
#include <cstring>

#include "host_read.h"
#include <uvelcommon_base/kivo_ip.h>
#include <uvelhost/assert.h>
#include <uvelhost/interface.h>
#include <uvelhost/ip.h>

static constexpr char SOURCE[] = "src/common_adp/src/kivo_pdtadapt";

static_assert(KIVO_MAC_SIZE == IF_MAC_SIZE);

uint32_t IP_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet) {
    return BDS_IPGetFirstIpByIfIndex(ulIfIndex, pulAddrNet);
}

uint32_t KIVO_IP_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet) {
    return IP_GetIfIpAddrByIndex(ulIfIndex, pulAddrNet);
}

uint32_t KIVO_Adapt_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddr) {
    if (pulAddr == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    uint32_t ulAddrNet = 0;
    const uint32_t ulResult = IP_GetIfIpAddrByIndex(ulIfIndex, &ulAddrNet);
    if (ulResult == KIVO_OK)
        *pulAddr = ntohl(ulAddrNet);
    return ulResult;
}

uint32_t KIVO_IF_GetMainIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr, uint32_t *pulMask) {
    if (pulMask == nullptr)
        return KIVO_FAIL;
    *pulMask = 0;
    const uint32_t ulResult = BDS_IPGetMainIpByIfIndex(ulIfIndex, pulAddr, pulMask);
    if (ulResult == KIVO_OK && *pulMask <= 32)
        *pulMask = SRV_LentoMask(*pulMask);
    return ulResult;
}

uint32_t UVEL_IP_IF_GetThisIfIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr) {
    return BDS_IPIFGetThisIfIpAddr(ulIfIndex, pulAddr);
}

uint32_t KIVO_IP_GetMask(uint32_t ulIfIndex) {
    return BDS_IsValidIfIndex(ulIfIndex) == 1 ? ReadOr<IP_GetMask>(0U, ulIfIndex) : 0;
}

uint32_t KIVO_Adapt_GetAddrFlag(uint32_t ulIfIndex, uint32_t *pulFlag) {
    return BDS_IPGetIpFlagByIfIndex(ulIfIndex, pulFlag);
}

uint32_t KIVO_Adapt_SetUnr4Rt(uint32_t ulOperation, uint32_t ulVrfIndex, uint32_t ulAddr, uint32_t ulPrefixLen,
                              uint32_t ulIfIndex, uint32_t ulNextHop) {
    return RM_SetUnr4Rt(ulOperation, ulVrfIndex, ulAddr, ulPrefixLen, ulIfIndex, ulNextHop);
}

/* The 1 for an invalid index, which reads as "it is", is relied on. */
uint32_t UVEL_IF_IsThisIfMacAddr(uint32_t ulIfIndex, const uint8_t aucMac[KIVO_MAC_SIZE]) {
    if (!IsIfIndex(ulIfIndex))
        return 1;
    uint8_t aucOwn[KIVO_MAC_SIZE] = {};
    if (aucMac == nullptr || BDS_IfnetGetMacByIfIndex(ulIfIndex, aucOwn) != KIVO_OK)
        return 0;
    return std::memcmp(aucOwn, aucMac, KIVO_MAC_SIZE) == 0 ? 1 : 0;
}

uint32_t UVEL_IF_GetThisIfMacAddrByIfIp(uint32_t ulIfIndex, uint32_t ulAddr, uint8_t aucMac[KIVO_MAC_SIZE]) {
    if (aucMac == nullptr)
        return KIVO_FAIL;
    /* Not the caller's bytes: a virtual address left there by an earlier call would pass for that of ulAddr. */
    uint8_t aucVirtual[KIVO_MAC_SIZE] = {};
    (void)VRRP4_VrrpIsVIp(ulIfIndex, ulAddr, aucVirtual);
    if (VRRP_IsIfMasterByVMac(ulIfIndex, aucVirtual) != 1)
        return BDS_IfnetGetMacByIfIndex(ulIfIndex, aucMac);
    std::memcpy(aucMac, aucVirtual, KIVO_MAC_SIZE);
    return KIVO_OK;
}
