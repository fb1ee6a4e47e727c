/* IPv6 prefixes and masks. */
#include <uvelcommon_base/kivo_ip.h>

#include "kivo_ipcommon/ipv6_value.h"

/* The first ulLen bits of a half; all of them when there are more. */
static constexpr uint64_t HalfMask(uint32_t ulLen) {
    if (ulLen == 0)
        return 0;
    return ulLen >= 64 ? ~UINT64_C(0) : ~UINT64_C(0) << (64 - ulLen);
}

/* Lengths above 128 come from callers that did not check theirs; they get the mask of 128. */
static IPV6_VALUE_S Mask(uint32_t ulLen) {
    return {HalfMask(ulLen), HalfMask(ulLen > 64 ? ulLen - 64 : 0)};
}

/* Bit ulLen alone, counted from 1 at the upper end; nothing for a bit that does not exist. */
static IPV6_VALUE_S Bit(uint32_t ulLen) {
    if (ulLen == 0 || ulLen > IPV6_BITS)
        return {0, 0};
    return ulLen <= 64 ? IPV6_VALUE_S{UINT64_C(1) << (64 - ulLen), 0} : IPV6_VALUE_S{0, UINT64_C(1) << (128 - ulLen)};
}

void SRV_IPv6PrefixLen2Mask(uint8_t ucLen, uint8_t *pucMask) {
    IPV6_Store(pucMask, Mask(ucLen));
}

void SRV_IPv6PrefixLen2Addr(uint8_t ucLen, uint8_t *pucAddr) {
    if (pucAddr != nullptr)
        IPV6_Store(pucAddr, Bit(ucLen));
}

uint32_t SRV_IPv6Mask2PrefixLen(const uint8_t *pucMask) {
    uint32_t ulLen = IPV6_BITS;
    uint32_t i = SRV_IPV6_SIZE - 1;
    while (pucMask[i] == 0) {
        ulLen -= 8;
        if (i-- == 0)
            return ulLen;
    }
    /* The bits of the first byte are not counted: every mask shorter than 8 bits reads as 8. A contract. */
    return i == 0 ? ulLen : ulLen - static_cast<uint32_t>(std::countr_zero(pucMask[i]));
}

void SRV_GetIPv6SubNet(const uint8_t *pucAddr, uint8_t ucLen, uint8_t *pucOut) {
    IPV6_Store(pucOut, IPV6_And(IPV6_Load(pucAddr), Mask(ucLen)));
}

void SRV_GetNextPrefix(uint8_t *pucAddr, uint8_t ucLen) {
    if (ucLen == 0 || ucLen > IPV6_BITS)
        return;
    IPV6_Store(pucAddr, IPV6_And(IPV6_Add(IPV6_Load(pucAddr), Bit(ucLen)), Mask(ucLen)));
}

uint32_t SRV_IPv6PrefixOverLap(const uint8_t *pucA, uint8_t ucLenA, const uint8_t *pucB, uint8_t ucLenB) {
    const IPV6_VALUE_S stA = IPV6_Load(pucA);
    const IPV6_VALUE_S stB = IPV6_Load(pucB);
    const IPV6_VALUE_S stMask = Mask(ucLenA < ucLenB ? ucLenA : ucLenB);
    return (((stA.ulHigh ^ stB.ulHigh) & stMask.ulHigh) | ((stA.ulLow ^ stB.ulLow) & stMask.ulLow)) == 0;
}

uint32_t SRV_IPv6PrefixMatch(const uint8_t *pucA, uint8_t ucLenA, const uint8_t *pucB, uint8_t ucLenB) {
    if (ucLenA != ucLenB || pucA == nullptr || pucB == nullptr)
        return 0;
    return SRV_IPv6PrefixOverLap(pucA, ucLenA, pucB, ucLenB);
}

/* The length is cut to 8 bits, so that 256 holds every address: a contract. */
uint32_t SRV_IPv6AddrInPrefix(const uint8_t *pucAddr, const uint8_t *pucPrefix, uint32_t ulLen) {
    return SRV_IPv6PrefixOverLap(pucAddr, IPV6_BITS, pucPrefix, static_cast<uint8_t>(ulLen));
}
