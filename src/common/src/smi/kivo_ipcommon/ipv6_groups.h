/* Reader of IPv6 groups, shared by the two IPv6 parsers. They accept different texts, but differ only in what they make
 * of a character that is neither a hex digit nor ':'. */
#ifndef KIVO_IPCOMMON_IPV6_GROUPS_H
#define KIVO_IPCOMMON_IPV6_GROUPS_H

#include "kivo_common/hex_digits.h"
#include "kivo_ipcommon/ipv6_value.h"

constexpr uint32_t IPV6_GROUPS = 8;
constexpr uint32_t IPV6_GROUP_BITS = 16;

/* Groups read so far: those before "::" at the upper end of stHead, the others at the lower end of stTail, so that both
 * together are the address. */
struct IPV6_TEXT_S {
    IPV6_VALUE_S stHead;
    IPV6_VALUE_S stTail;
    uint32_t ulGroups;    /* in both */
    bool bGap;            /* "::" was met */
    const char *pszToken; /* behind the last ':', or the beginning */
};

enum class IPV6_STOP {
    END,   /* at the terminator; all groups are stored */
    OTHER, /* at a character that belongs to no group; the digits right before it are not stored */
    FAIL   /* no address */
};

/* Stores a group; false when there are eight already. */
static inline bool IPV6_StoreGroup(IPV6_TEXT_S &stText, uint32_t ulGroup) {
    if (stText.ulGroups == IPV6_GROUPS)
        return false;
    const IPV6_VALUE_S stTail = stText.stTail;
    stText.stTail.ulHigh = stTail.ulHigh << IPV6_GROUP_BITS | stTail.ulLow >> (64 - IPV6_GROUP_BITS);
    stText.stTail.ulLow = stTail.ulLow << IPV6_GROUP_BITS | ulGroup;
    ++stText.ulGroups;
    return true;
}

/* Takes "::"; false when there was one already. */
static inline bool IPV6_OpenGap(IPV6_TEXT_S &stText) {
    if (stText.bGap)
        return false;
    stText.bGap = true;
    /* No groups need no shift, and eight stand at the upper end as they are. */
    stText.stHead = IPV6_ShiftUp(stText.stTail, (IPV6_BITS - stText.ulGroups * IPV6_GROUP_BITS) % IPV6_BITS);
    stText.stTail = {0, 0};
    return true;
}

/* Reads hex digits, of which the last four make *pulGroup, and returns what stands behind them. The first ones are read
 * step by step, for groups have one to four and a loop around each is what would take the time. */
static inline const char *IPV6_ReadGroup(const char *pszText, uint32_t *pulGroup) {
    uint32_t ulDigit = HEX_ValueOf(pszText[0]);
    if (ulDigit == HEX_NO_DIGIT)
        return pszText;
    *pulGroup = ulDigit;
    ulDigit = HEX_ValueOf(pszText[1]);
    if (ulDigit == HEX_NO_DIGIT)
        return pszText + 1;
    *pulGroup = *pulGroup << 4 | ulDigit;
    ulDigit = HEX_ValueOf(pszText[2]);
    if (ulDigit == HEX_NO_DIGIT)
        return pszText + 2;
    *pulGroup = *pulGroup << 4 | ulDigit;
    for (pszText += 3; (ulDigit = HEX_ValueOf(*pszText)) != HEX_NO_DIGIT; ++pszText)
        *pulGroup = (*pulGroup & 0xFFF) << 4 | ulDigit;
    return pszText;
}

/* Reads groups and colons from pszText. At END and OTHER *ppszStop is the character that stopped it. */
static inline IPV6_STOP IPV6_ReadGroups(const char *pszText, IPV6_TEXT_S &stText, const char **ppszStop) {
    stText = {};
    if (*pszText == ':' && *++pszText != ':')
        return IPV6_STOP::FAIL;
    for (;;) {
        stText.pszToken = pszText;
        uint32_t ulGroup = 0;
        pszText = IPV6_ReadGroup(pszText, &ulGroup);
        const bool bDigits = pszText != stText.pszToken;
        if (*pszText != ':') {
            *ppszStop = pszText;
            if (*pszText != '\0')
                return IPV6_STOP::OTHER;
            return !bDigits || IPV6_StoreGroup(stText, ulGroup) ? IPV6_STOP::END : IPV6_STOP::FAIL;
        }
        ++pszText;
        if (bDigits ? *pszText == '\0' || !IPV6_StoreGroup(stText, ulGroup) : !IPV6_OpenGap(stText))
            return IPV6_STOP::FAIL;
    }
}

/* Writes the address to the 16 bytes at pucAddr. False, and nothing is written, unless there are eight groups, or fewer
 * and "::" for at least one. */
static inline bool IPV6_Finish(const IPV6_TEXT_S &stText, uint8_t *pucAddr) {
    if (stText.bGap == (stText.ulGroups == IPV6_GROUPS))
        return false;
    IPV6_Store(pucAddr, IPV6_Or(stText.stHead, stText.stTail));
    return true;
}

#endif
