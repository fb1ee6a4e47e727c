/* The header in front of a payload: written and read field by field at the offsets that the services fix, in host byte
 * order. What lies between the fields belongs to the service. */

#include "channel.h"

#include <cstddef>
#include <cstring>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelhost/assert.h>

using chi::SOURCE;

namespace {

struct Layout {
    uint32_t ulWordC;
    uint32_t ulSubType;
    uint32_t ulMsgType;
    uint32_t ulTotalLength;
    uint32_t ulWordA;
};

constexpr Layout LAYOUTS[] = {
    {12, 28, 30, 32, 44},      /* HA */
    {316, 332, 334, 336, 340}, /* HSB */
    {12, 28, 30, 32, 36},      /* YSB */
};

constexpr uint32_t YSB_MSG_ID = 40;
constexpr uint32_t YSB_FRAGMENT = 44; /* set by the service */

static_assert(sizeof(CHI_MSG_INFO_S) == 48);
static_assert(offsetof(CHI_MSG_INFO_S, ulWordA) == 0);
static_assert(offsetof(CHI_MSG_INFO_S, ulTotalLength) == 4);
static_assert(offsetof(CHI_MSG_INFO_S, aulWordC) == 8);
static_assert(offsetof(CHI_MSG_INFO_S, ulSubType) == 24);
static_assert(offsetof(CHI_MSG_INFO_S, ulMsgType) == 28);
static_assert(offsetof(CHI_MSG_INFO_S, aucReserved) == 32);
static_assert(offsetof(CHI_MSG_INFO_S, ulMsgId) == 40);
static_assert(offsetof(CHI_MSG_INFO_S, ulFragment) == 44);

template <typename T>
void Put(uint8_t *pucHeader, uint32_t ulOffset, T value) {
    std::memcpy(pucHeader + ulOffset, &value, sizeof value);
}

template <typename T>
T Get(const uint8_t *pucHeader, uint32_t ulOffset) {
    T value;
    std::memcpy(&value, pucHeader + ulOffset, sizeof value);
    return value;
}

} // namespace

uint32_t CHI_SetMsgInfo(uint32_t ulBackType, void *pBuffer, CHI_MSG_INFO_S *pstInfo) {
    if (pBuffer == nullptr || pstInfo == nullptr)
        return KIVO_FAIL;
    const uint32_t ulType = CHI_MsgC2P(ulBackType, pstInfo->ulMsgType);
    if (ulType == CHI_NOT_CARRIED)
        return KIVO_FAIL;
    uint8_t *pucHeader = chi::HeaderOf(ulBackType, pBuffer);
    if (pucHeader == nullptr)
        return KIVO_FAIL;

    const Layout &stLayout = LAYOUTS[ulBackType];
    std::memcpy(pucHeader + stLayout.ulWordC, pstInfo->aulWordC, sizeof pstInfo->aulWordC);
    Put(pucHeader, stLayout.ulSubType, static_cast<uint16_t>(pstInfo->ulSubType));
    Put(pucHeader, stLayout.ulMsgType, static_cast<uint16_t>(ulType));
    Put(pucHeader, stLayout.ulTotalLength, pstInfo->ulTotalLength);
    Put(pucHeader, stLayout.ulWordA, pstInfo->ulWordA);
    if (ulBackType == CHI_BACK_YSB)
        Put(pucHeader, YSB_MSG_ID, pstInfo->ulMsgId);
    /* From here on the record holds the service's type. */
    pstInfo->ulMsgType = ulType;
    return KIVO_OK;
}

void chi::ReadInfo(uint32_t ulBackType, const uint8_t *pucHeader, CHI_MSG_INFO_S *pstInfo) {
    const Layout &stLayout = LAYOUTS[ulBackType];
    std::memcpy(pstInfo->aulWordC, pucHeader + stLayout.ulWordC, sizeof pstInfo->aulWordC);
    pstInfo->ulSubType = Get<uint16_t>(pucHeader, stLayout.ulSubType);
    pstInfo->ulMsgType = Get<uint16_t>(pucHeader, stLayout.ulMsgType);
    pstInfo->ulTotalLength = Get<uint32_t>(pucHeader, stLayout.ulTotalLength);
    pstInfo->ulWordA = Get<uint32_t>(pucHeader, stLayout.ulWordA);
    if (ulBackType == CHI_BACK_YSB) {
        pstInfo->ulMsgId = Get<uint32_t>(pucHeader, YSB_MSG_ID);
        pstInfo->ulFragment = Get<uint32_t>(pucHeader, YSB_FRAGMENT);
    }
}

uint32_t CHI_GetMsgInfo(uint32_t ulBackType, void *pBuffer, CHI_MSG_INFO_S *pstInfo) {
    if (pBuffer == nullptr || pstInfo == nullptr || ulBackType > CHI_BACK_YSB) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    const uint8_t *pucHeader = chi::HeaderOf(ulBackType, pBuffer);
    if (pucHeader == nullptr)
        return KIVO_FAIL;
    chi::ReadInfo(ulBackType, pucHeader, pstInfo);
    return KIVO_OK;
}

uint32_t CHI_YSB_OutputPacket(uintptr_t ulFirst, uintptr_t ulSecond, uint8_t ucChannel, uint32_t ulLength) {
    if (ucChannel == CHI_ANY_CHANNEL)
        (void)KIVO_YSB_Output_Packet_Smbuf(ulFirst, ulSecond, ulLength);
    else
        (void)KIVO_Ysb_AdaptOutputPacket_Smbuf(ulFirst, ulSecond, ulLength, ucChannel);
    /* Senders never learn of a failed output; the service repeats or asks for everything again. */
    return KIVO_OK;
}
