/* Address text to packed form. */
#include <uvelcommon_base/kivo_inet.h>

#include <cstring>
#include <uvelhost/assert.h>

#include "kivo_ipcommon/ipv6_groups.h"

static constexpr char SOURCE[] = "src/common_adp/src/kivo_oxm_adapt";
static constexpr uint32_t PARTS = KIVO_INET_V4_SIZE;

int32_t oxm_inet_pton(int16_t sFamily, const char *pszText, void *pAddr) {
    if (sFamily == KIVO_INET_V4)
        return kivo_inet_pton4(pszText, static_cast<uint8_t *>(pAddr));
    if (sFamily == KIVO_INET_V6)
        return kivo_inet_pton6(pszText, static_cast<uint8_t *>(pAddr));
    return -1;
}

int32_t KIVO_oxm_inet_pton(int16_t sFamily, const char *pszText, void *pAddr) {
    return oxm_inet_pton(sFamily, pszText, pAddr);
}

/* Copies a packed address out and returns 1. Of all that can make a bounded copy of a constant size fail only a missing
 * destination is left; like any failed copy it is reported and changes nothing of the result. */
template <size_t SIZE>
static inline int32_t CopyOut(uint8_t *pucAddr, const uint8_t (&aucAddr)[SIZE]) {
    if (pucAddr == nullptr)
        qal_assert(SOURCE, __LINE__);
    else
        memcpy(pucAddr, aucAddr, SIZE);
    return 1;
}

/* Reads any four parts, those with more than three digits too. */
__attribute__((noinline)) static int32_t ReadAnyParts(const char *pszText, uint8_t *pucAddr) {
    uint8_t aucPart[PARTS] = {};
    uint32_t ulParts = 0;
    uint32_t ulValue = 0;
    bool bDigit = false;
    for (; *pszText != '\0'; ++pszText) {
        const uint32_t ulDigit = static_cast<uint8_t>(*pszText) - static_cast<uint32_t>('0');
        if (ulDigit <= 9) {
            ulValue = ulValue * 10 + ulDigit;
            if (ulValue > 255 || (!bDigit && ulParts == PARTS))
                return 0;
            ulParts += !bDigit;
            bDigit = true;
            aucPart[ulParts - 1] = static_cast<uint8_t>(ulValue);
        } else if (*pszText == '.' && bDigit && ulParts < PARTS) {
            ulValue = 0;
            bDigit = false;
        } else {
            return 0;
        }
    }
    return ulParts == PARTS ? CopyOut(pucAddr, aucPart) : 0;
}

/* Reads a part of one to three digits, appends it to *pulAddr and returns what stands behind it; null when there is no
 * such part. Whether there is a third digit is as good as random: that is computed, not decided by a branch. Parts of
 * one digit are rare enough for one. */
static inline const char *ReadPart(const char *pszText, uint32_t *pulAddr) {
    const uint32_t ulFirst = static_cast<uint8_t>(pszText[0]) - static_cast<uint32_t>('0');
    if (ulFirst > 9)
        return nullptr;
    const uint32_t ulSecond = static_cast<uint8_t>(pszText[1]) - static_cast<uint32_t>('0');
    if (ulSecond > 9) {
        *pulAddr = *pulAddr << 8 | ulFirst;
        return pszText + 1;
    }
    const uint32_t ulThird = static_cast<uint8_t>(pszText[2]) - static_cast<uint32_t>('0');
    intptr_t lThird = -static_cast<intptr_t>(ulThird <= 9); /* all ones or 0 */
    __asm__("" : "+r"(lThird)); /* hides that from the compiler, which would make a branch of it */
    uint32_t ulValue = ulFirst * 10 + ulSecond;
    ulValue += (ulValue * 9 + ulThird) & static_cast<uint32_t>(lThird);
    if (ulValue > 255)
        return nullptr;
    *pulAddr = *pulAddr << 8 | ulValue;
    return pszText + 2 - lThird;
}

/* Reads '.' and a part; null when there are no such, or were none before. */
static inline const char *ReadNextPart(const char *pszText, uint32_t *pulAddr) {
    return pszText != nullptr && *pszText == '.' ? ReadPart(pszText + 1, pulAddr) : nullptr;
}

int32_t kivo_inet_pton4(const char *pszText, uint8_t *pucAddr) {
    uint32_t ulAddr = 0;
    const char *pszEnd = ReadPart(pszText, &ulAddr);
    pszEnd = ReadNextPart(pszEnd, &ulAddr);
    pszEnd = ReadNextPart(pszEnd, &ulAddr);
    pszEnd = ReadNextPart(pszEnd, &ulAddr);
    if (pszEnd == nullptr || *pszEnd != '\0')
        return ReadAnyParts(pszText, pucAddr);
    const uint8_t aucAddr[] = {static_cast<uint8_t>(ulAddr >> 24), static_cast<uint8_t>(ulAddr >> 16),
                               static_cast<uint8_t>(ulAddr >> 8), static_cast<uint8_t>(ulAddr)};
    return CopyOut(pucAddr, aucAddr);
}

/* Takes the IPv4 address at the end of the text for the last two groups; false when there is none or no room. */
static bool StoreIpv4Tail(IPV6_TEXT_S &stText) {
    uint8_t aucTail[KIVO_INET_V4_SIZE];
    if (stText.ulGroups > IPV6_GROUPS - 2 || kivo_inet_pton4(stText.pszToken, aucTail) != 1)
        return false;
    return IPV6_StoreGroup(stText, static_cast<uint32_t>(aucTail[0] << 8 | aucTail[1])) &&
           IPV6_StoreGroup(stText, static_cast<uint32_t>(aucTail[2] << 8 | aucTail[3]));
}

int32_t kivo_inet_pton6(const char *pszText, uint8_t *pucAddr) {
    IPV6_TEXT_S stText;
    const char *pszStop;
    const IPV6_STOP enStop = IPV6_ReadGroups(pszText, stText, &pszStop);
    if (enStop != IPV6_STOP::END && (enStop != IPV6_STOP::OTHER || *pszStop != '.' || !StoreIpv4Tail(stText)))
        return 0;
    uint8_t aucAddr[KIVO_INET_V6_SIZE];
    return IPV6_Finish(stText, aucAddr) ? CopyOut(pucAddr, aucAddr) : 0;
}
