/* Text forms of MAC addresses. */
#include <uvelcommon_base/kivo_mac.h>

#include <cstring>
#include <securec.h>

#include "kivo_common/hex_digits.h"
#include "kivo_common/text_ring.h"

static TEXT_RING_S<16> g_stGroupRing;
static TEXT_RING_S<20> g_stByteRing;

/* Writes the address with cSeparator after every PER_GROUP bytes but the last, and a terminator: 12 characters and
 * those separators. Returns the number of characters. The text may overwrite the address, which is read before. */
template <uint32_t PER_GROUP>
static inline int32_t Write(const uint8_t *pucMac, char *szBuffer, const HEX_PAIRS_S &stPairs, char cSeparator) {
    uint8_t aucMac[SRV_MAC_SIZE];
    memcpy(aucMac, pucMac, sizeof(aucMac));
    char *pszEnd = szBuffer;
#pragma GCC unroll 6
    for (uint32_t i = 0; i < SRV_MAC_SIZE; ++i) {
        if (i != 0 && i % PER_GROUP == 0)
            *pszEnd++ = cSeparator;
        memcpy(pszEnd, stPairs.aacPair[aucMac[i]], 2);
        pszEnd += 2;
    }
    *pszEnd = '\0';
    return static_cast<int32_t>(pszEnd - szBuffer);
}

char *SRV_MacAddrToStr(const uint8_t *pucMac, char *szBuffer) {
    if (pucMac == nullptr || szBuffer == nullptr)
        return nullptr;
    memset(szBuffer, 0, SRV_MAC_GROUP_TEXT_ROOM);
    (void)Write<2>(pucMac, szBuffer, HEX_LOWER, '-');
    return szBuffer;
}

int32_t QAL_LongMacToString(const uint8_t *pucMac, char *szBuffer) {
    if (pucMac == nullptr || szBuffer == nullptr)
        return -1;
    return Write<2>(pucMac, szBuffer, HEX_LOWER, '-');
}

int32_t SRV_MacToStrWithoutHyphen(const uint8_t *pucMac, char *szBuffer, uint32_t ulSize) {
    if (szBuffer == nullptr || ulSize == 0 || ulSize > SECUREC_STRING_MAX_LEN)
        return -1; /* no room, or a size that no buffer has */
    if (pucMac == nullptr || ulSize <= 2 * SRV_MAC_SIZE) {
        szBuffer[0] = '\0';
        return -1;
    }
    return Write<SRV_MAC_SIZE>(pucMac, szBuffer, HEX_LOWER, '\0');
}

const char *SRV_MacAddrtoStr(const uint8_t *pucMac) {
    if (pucMac == nullptr)
        return TEXT_RING_NONE;
    char *const szBuffer = TEXT_RING_Next(g_stGroupRing);
    (void)Write<2>(pucMac, szBuffer, HEX_LOWER, '-');
    return szBuffer;
}

const char *SRV_MacAddrtoStrByteSplit(const uint8_t *pucMac) {
    if (pucMac == nullptr)
        return TEXT_RING_NONE;
    char *const szBuffer = TEXT_RING_Next(g_stByteRing);
    (void)Write<1>(pucMac, szBuffer, HEX_LOWER, '-');
    return szBuffer;
}

char *SRV_MacAddrToStrPswWithType(const uint8_t *pucMac, char *szBuffer, uint8_t ucGrouped, uint8_t ucPerByte,
                                  uint8_t ucUpperCase, uint8_t ucColon) {
    if (pucMac == nullptr || szBuffer == nullptr)
        return nullptr;
    /* Every flag is set when it is 1, not when it is not 0. */
    const HEX_PAIRS_S &stPairs = ucUpperCase == 1 ? HEX_UPPER : HEX_LOWER;
    const char cSeparator = ucColon == 1 ? ':' : '-';
    memset(szBuffer, 0, SRV_MAC_TEXT_ROOM);
    if (ucGrouped != 1)
        (void)Write<SRV_MAC_SIZE>(pucMac, szBuffer, stPairs, cSeparator);
    else if (ucPerByte == 1)
        (void)Write<1>(pucMac, szBuffer, stPairs, cSeparator);
    else
        (void)Write<2>(pucMac, szBuffer, stPairs, cSeparator);
    return szBuffer;
}

/* Reads the canonical text, two digits a byte. False, and pucMac untouched, for any other: the text may stand there. */
static bool ReadCanonical(const char *pszText, uint8_t *pucMac) {
    uint8_t aucMac[SRV_MAC_SIZE];
#pragma GCC unroll 6
    for (uint32_t i = 0; i < SRV_MAC_SIZE; ++i) {
        if ((i == 2 || i == 4) && *pszText++ != '-')
            return false;
        const uint8_t ucHigh = HEX_ValueOf(*pszText++);
        if (ucHigh == HEX_NO_DIGIT)
            return false;
        const uint8_t ucLow = HEX_ValueOf(*pszText++);
        if (ucLow == HEX_NO_DIGIT)
            return false;
        aucMac[i] = static_cast<uint8_t>(ucHigh << 4 | ucLow);
    }
    memcpy(pucMac, aucMac, sizeof(aucMac));
    return true;
}

uint32_t SRV_MacStrToAddr(const char *pszText, uint8_t *pucMac) {
    unsigned int aulField[SRV_MAC_SIZE] = {};
    if (pszText == nullptr || pucMac == nullptr)
        return KIVO_FAIL;
    if (ReadCanonical(pszText, pucMac))
        return KIVO_OK;
    /* Everything else is what the scan makes of it, be it one field or none: a contract. */
    (void)sscanf_s(pszText, "%02x%02x-%02x%02x-%02x%02x", &aulField[0], &aulField[1], &aulField[2], &aulField[3],
                   &aulField[4], &aulField[5]);
    for (uint32_t i = 0; i < SRV_MAC_SIZE; ++i)
        pucMac[i] = static_cast<uint8_t>(aulField[i]);
    return KIVO_OK;
}

uint32_t SRV_IsMacAddrZero(const uint8_t *pucMac) {
    static constexpr uint8_t ZERO[SRV_MAC_SIZE] = {};
    return pucMac != nullptr && memcmp(pucMac, ZERO, SRV_MAC_SIZE) == 0 ? 1 : 0;
}

uint32_t SRV_MacAddrtoValid(const uint8_t *pucMac) {
    static constexpr uint8_t BROADCAST[SRV_MAC_SIZE] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return pucMac != nullptr && memcmp(pucMac, BROADCAST, SRV_MAC_SIZE) != 0 ? 1 : 0;
}
