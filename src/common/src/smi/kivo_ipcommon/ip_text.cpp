/* IPv4 and IPv6 addresses to text and back. */
#include <uvelcommon_base/kivo_ip.h>

#include <securec.h>
#include <uvelcommon_base/kivo_inet.h>
#include <uvelhost/assert.h>
#include <uvelhost/strings.h>

#include "kivo_common/text_ring.h"
#include "kivo_ipcommon/ipv6_groups.h"

static constexpr char SOURCE[] = "src/common/src/smi/kivo_ipcommon";

static TEXT_RING_S<KIVO_INET_V4_ROOM> g_stIpv4Ring;
static TEXT_RING_S<64> g_stIpv6Ring;

const char *SRV_IpAddrtoStr(uint32_t ulAddr) {
    char *szBuffer = TEXT_RING_Next(g_stIpv4Ring);
    if (sprintf_s(szBuffer, KIVO_INET_V4_ROOM, "%u.%u.%u.%u", ulAddr >> 24, ulAddr >> 16 & 0xFF, ulAddr >> 8 & 0xFF,
                  ulAddr & 0xFF) < 0)
        qal_assert(SOURCE, __LINE__);
    return szBuffer;
}

int32_t SRV_SubnettoStr(uint32_t ulAddr, uint32_t ulLen, char *szBuffer, uint32_t ulSize) {
    return sprintf_s(szBuffer, ulSize, "%u.%u.%u.%u/%u", ulAddr >> 24, ulAddr >> 16 & 0xFF, ulAddr >> 8 & 0xFF,
                     ulAddr & 0xFF, ulLen);
}

uint32_t SRV_StrToIpAddr(const char *pszText, uint32_t *pulAddr) {
    const uint32_t ulLen = QAL_StrLen(pszText);
    if (ulLen == 0)
        return KIVO_FAIL;
    for (uint32_t i = 0; i < ulLen; ++i) {
        if (pszText[i] != '.' && (pszText[i] < '0' || pszText[i] > '9'))
            return KIVO_FAIL;
    }
    return QAL_StrToIpAddr(pszText, pulAddr);
}

const char *SRV_Ipv6AddrtoStr(const uint8_t *pucAddr) {
    if (pucAddr == nullptr)
        return TEXT_RING_NONE;
    char *szBuffer = TEXT_RING_Next(g_stIpv6Ring);
    (void)KIVO_oxm_inet_ntop(KIVO_INET_V6, pucAddr, szBuffer, KIVO_INET_V6_ROOM);
    return szBuffer;
}

uint32_t SRV_StrtoIpv6Addr(const char *pszText, uint8_t *pucAddr) {
    if (pszText == nullptr || pucAddr == nullptr)
        return KIVO_FAIL;
    return KIVO_oxm_inet_pton(KIVO_INET_V6, pszText, pucAddr) == 1 ? KIVO_OK : KIVO_FAIL;
}

uint32_t SRV_StrToIPv6(const char *pszText, uint8_t *pucBuffer, uint32_t ulSize) {
    IPV6_TEXT_S stText;
    const char *pszStop;
    switch (IPV6_ReadGroups(pszText, stText, &pszStop)) {
    case IPV6_STOP::OTHER:
        return KIVO_OK; /* a success without an address, for any other character: a contract */
    case IPV6_STOP::FAIL:
        return KIVO_FAIL;
    case IPV6_STOP::END:
        break;
    }
    return ulSize >= SRV_IPV6_SIZE && IPV6_Finish(stText, pucBuffer) ? KIVO_OK : KIVO_FAIL;
}
