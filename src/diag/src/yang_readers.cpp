// The typed readers.

#include "yang_tree.h"

#include <cstring>
#include <uvelcommon_base/kivo_ip.h>
#include <uvelcommon_base/kivo_mac.h>
#include <uvelhost/strings.h>

/* Buffers of the readers: what is longer is no such value. */
static constexpr uint32_t NUMBER_ROOM = 16;
static constexpr uint32_t MAC_ROOM = 32;
static constexpr uint32_t IPV4_ROOM = 32;
static constexpr uint32_t IPV6_ROOM = 64;
static constexpr uint32_t IPV6_SIZE = 16;

uint32_t NAC_YANG_XmlGetStr(struct _xmlNode *pstNode, const char *pszPath, char *pszBuffer, uint32_t ulSize) {
    if (pszBuffer == nullptr)
        return KIVO_FAIL;
    return YANG_ReadText(pstNode, pszPath, pszBuffer, ulSize) ? KIVO_OK : KIVO_FAIL;
}

uint32_t NAC_YANG_XmlGetU32(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulValue) {
    char szText[NUMBER_ROOM];
    if (pulValue == nullptr || !YANG_ReadText(pstNode, pszPath, szText, sizeof(szText)))
        return KIVO_FAIL;
    *pulValue = QAL_strtoul(szText, nullptr, 10);
    return KIVO_OK;
}

/* No range check on purpose: the low bits of any number are kept. */
template <typename T>
static uint32_t GetLowBits(struct _xmlNode *pstNode, const char *pszPath, T *pValue) {
    uint32_t ulValue;
    if (pValue == nullptr || NAC_YANG_XmlGetU32(pstNode, pszPath, &ulValue) != KIVO_OK)
        return KIVO_FAIL;
    *pValue = static_cast<T>(ulValue);
    return KIVO_OK;
}

uint32_t NAC_YANG_XmlGetU16(struct _xmlNode *pstNode, const char *pszPath, uint16_t *pusValue) {
    return GetLowBits(pstNode, pszPath, pusValue);
}

uint32_t NAC_YANG_XmlGetU8(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucValue) {
    return GetLowBits(pstNode, pszPath, pucValue);
}

uint32_t NAC_YANG_XmlGetBool(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulValue) {
    char szText[NUMBER_ROOM];
    if (pulValue == nullptr || !YANG_ReadText(pstNode, pszPath, szText, sizeof(szText)))
        return KIVO_FAIL;
    /* Neither "1" nor "True" is true. */
    *pulValue = std::strcmp(szText, "true") == 0 ? 1 : 0;
    return KIVO_OK;
}

/* The address readers parse into a place of their own: a parser may leave half an address behind. */

uint32_t NAC_YANG_XmlGetMac(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucMac) {
    char szText[MAC_ROOM];
    if (pucMac == nullptr || !YANG_ReadText(pstNode, pszPath, szText, sizeof(szText)))
        return KIVO_FAIL;
    uint8_t aucMac[SRV_MAC_SIZE];
    const uint32_t ulResult = SRV_MacStrToAddr(szText, aucMac);
    if (ulResult == KIVO_OK)
        std::memcpy(pucMac, aucMac, sizeof(aucMac));
    return ulResult;
}

uint32_t NAC_YANG_XmlGetIpv4(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulAddr) {
    char szText[IPV4_ROOM];
    if (pulAddr == nullptr || !YANG_ReadText(pstNode, pszPath, szText, sizeof(szText)))
        return KIVO_FAIL;
    uint32_t ulAddr = 0;
    const uint32_t ulResult = SRV_StrToIpAddr(szText, &ulAddr);
    if (ulResult == KIVO_OK)
        *pulAddr = ulAddr;
    return ulResult;
}

uint32_t NAC_YANG_XmlGetIpv6(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucAddr) {
    char szText[IPV6_ROOM];
    if (pucAddr == nullptr || !YANG_ReadText(pstNode, pszPath, szText, sizeof(szText)))
        return KIVO_FAIL;
    uint8_t aucAddr[IPV6_SIZE] = {};
    const uint32_t ulResult = SRV_StrtoIpv6Addr(szText, aucAddr);
    if (ulResult == KIVO_OK)
        std::memcpy(pucAddr, aucAddr, sizeof(aucAddr));
    return ulResult;
}

uint32_t NAC_YANG_XmlGetEmpty(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulExist) {
    const uint32_t ulExist = NAC_YANG_XmlChildExist(pstNode, pszPath);
    if (pulExist != nullptr)
        *pulExist = ulExist;
    return ulExist != 0 ? KIVO_OK : KIVO_FAIL;
}
