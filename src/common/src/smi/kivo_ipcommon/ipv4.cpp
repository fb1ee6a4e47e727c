/* IPv4 masks and validity. */
#include <uvelcommon_base/kivo_ip.h>

static uint32_t FirstOctet(uint32_t ulAddr) {
    return ulAddr >> 24;
}

uint32_t SRV_LentoMask(uint32_t ulLen) {
    if (ulLen == 0)
        return 0;
    return ulLen >= 32 ? 0xFFFFFFFFU : 0xFFFFFFFFU << (32 - ulLen);
}

/* This rule and the next one differ in loopback on purpose; do not make one of the two. */
uint32_t SRV_IsValidIpAddr(uint32_t ulAddr) {
    const uint32_t ulFirst = FirstOctet(ulAddr);
    return ulFirst != 0 && ulFirst != 127 && ulFirst < 224;
}

uint32_t KIVO_IP_IsInvalidAddr(uint32_t ulAddr) {
    const uint32_t ulFirst = FirstOctet(ulAddr);
    return ulFirst == 0 || ulFirst >= 224;
}
