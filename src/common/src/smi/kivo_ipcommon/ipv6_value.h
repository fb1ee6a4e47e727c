/* An IPv6 address as a number of 128 bits, in two halves. */
#ifndef KIVO_IPCOMMON_IPV6_VALUE_H
#define KIVO_IPCOMMON_IPV6_VALUE_H

#include <bit>
#include <cstdint>
#include <cstring>

struct IPV6_VALUE_S {
    uint64_t ulHigh;
    uint64_t ulLow;
};

constexpr uint32_t IPV6_BITS = 128;

/* Between host and network order, in both directions. */
static inline uint64_t IPV6_SwapHalf(uint64_t ulHalf) {
    return std::endian::native == std::endian::little ? __builtin_bswap64(ulHalf) : ulHalf;
}

static inline IPV6_VALUE_S IPV6_Load(const uint8_t *pucAddr) {
    uint64_t aulHalf[2];
    memcpy(aulHalf, pucAddr, sizeof(aulHalf));
    return {IPV6_SwapHalf(aulHalf[0]), IPV6_SwapHalf(aulHalf[1])};
}

static inline void IPV6_Store(uint8_t *pucAddr, IPV6_VALUE_S stValue) {
    const uint64_t aulHalf[2] = {IPV6_SwapHalf(stValue.ulHigh), IPV6_SwapHalf(stValue.ulLow)};
    memcpy(pucAddr, aulHalf, sizeof(aulHalf));
}

static inline IPV6_VALUE_S IPV6_Add(IPV6_VALUE_S stA, IPV6_VALUE_S stB) {
    const uint64_t ulLow = stA.ulLow + stB.ulLow;
    return {stA.ulHigh + stB.ulHigh + (ulLow < stA.ulLow), ulLow};
}

static inline IPV6_VALUE_S IPV6_Sub(IPV6_VALUE_S stA, IPV6_VALUE_S stB) {
    return {stA.ulHigh - stB.ulHigh - (stA.ulLow < stB.ulLow), stA.ulLow - stB.ulLow};
}

static inline IPV6_VALUE_S IPV6_And(IPV6_VALUE_S stA, IPV6_VALUE_S stB) {
    return {stA.ulHigh & stB.ulHigh, stA.ulLow & stB.ulLow};
}

static inline IPV6_VALUE_S IPV6_Or(IPV6_VALUE_S stA, IPV6_VALUE_S stB) {
    return {stA.ulHigh | stB.ulHigh, stA.ulLow | stB.ulLow};
}

/* Shifts towards the upper end by 0 to 127 bits. */
static inline IPV6_VALUE_S IPV6_ShiftUp(IPV6_VALUE_S stValue, uint32_t ulBits) {
    const uint32_t ulPart = ulBits & 63;
    const uint64_t ulCarry = stValue.ulLow >> 1 >> (63 - ulPart);
    const uint64_t ulHigh = stValue.ulHigh << ulPart | ulCarry;
    const uint64_t ulLow = stValue.ulLow << ulPart;
    return {ulBits < 64 ? ulHigh : ulLow, ulBits < 64 ? ulLow : 0};
}

#endif
