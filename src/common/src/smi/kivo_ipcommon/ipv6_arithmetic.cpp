/* IPv6 addresses as numbers of 128 bits. */
#include <uvelcommon_base/kivo_ip.h>

#include "kivo_ipcommon/ipv6_value.h"

static constexpr IPV6_VALUE_S ONE = {0, 1};
static constexpr uint32_t NEAR_BITS = 24; /* differences are exact among addresses that share all bits above these */

void SRV_GetNextIPv6Addr(uint8_t *pucAddr) {
    IPV6_Store(pucAddr, IPV6_Add(IPV6_Load(pucAddr), ONE));
}

void SRV_GetPreIPv6Addr(uint8_t *pucAddr) {
    IPV6_Store(pucAddr, IPV6_Sub(IPV6_Load(pucAddr), ONE));
}

void SRV_IPv6Addr_ADD(const uint8_t *pucA, const uint8_t *pucB, uint8_t *pucOut) {
    IPV6_Store(pucOut, IPV6_Add(IPV6_Load(pucA), IPV6_Load(pucB)));
}

void SRV_IPv6Addr_SUB(const uint8_t *pucA, const uint8_t *pucB, uint8_t *pucOut) {
    IPV6_Store(pucOut, IPV6_Sub(IPV6_Load(pucA), IPV6_Load(pucB)));
}

uint32_t SRV_CompareIPv6Addr(const uint8_t *pucA, const uint8_t *pucB) {
    if (pucA == pucB)
        return 0;
    const IPV6_VALUE_S stA = IPV6_Load(pucA);
    const IPV6_VALUE_S stB = IPV6_Load(pucB);
    const bool bHighEqual = stA.ulHigh == stB.ulHigh;
    if (bHighEqual && stA.ulLow == stB.ulLow)
        return 0;
    const bool bAbove = bHighEqual ? stA.ulLow > stB.ulLow : stA.ulHigh > stB.ulHigh;
    return bAbove ? SRV_IPV6_ABOVE : SRV_IPV6_BELOW;
}

int32_t SRV_IPv6AddrDiff(const uint8_t *pucA, const uint8_t *pucB) {
    const IPV6_VALUE_S stA = IPV6_Load(pucA);
    const IPV6_VALUE_S stB = IPV6_Load(pucB);
    if (stA.ulHigh != stB.ulHigh)
        return stA.ulHigh > stB.ulHigh ? SRV_IPV6_FAR : -SRV_IPV6_FAR;
    if (stA.ulLow >> NEAR_BITS != stB.ulLow >> NEAR_BITS)
        return stA.ulLow > stB.ulLow ? SRV_IPV6_FAR : -SRV_IPV6_FAR;
    return static_cast<int32_t>(static_cast<int64_t>(stA.ulLow - stB.ulLow));
}

uint32_t SRV_IPv6AddrInSection(const uint8_t *pucAddr, const uint8_t *pucLow, const uint8_t *pucHigh) {
    if (SRV_CompareIPv6Addr(pucAddr, pucLow) == SRV_IPV6_BELOW)
        return SRV_IPV6_BELOW;
    return SRV_CompareIPv6Addr(pucAddr, pucHigh) == SRV_IPV6_ABOVE ? SRV_IPV6_ABOVE : 0;
}
