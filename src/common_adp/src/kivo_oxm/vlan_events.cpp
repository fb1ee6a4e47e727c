/* VLANs: batches, attributes, sub-VLANs, their interfaces and their configuration. */
#include "kivo_oxm/arguments.h"

#include <securec.h>

using oxm::Way;

static constexpr oxm::ROUTE_S BATCH[] = {
    {577, KIVO_EVT_VLANS_577, 9, Way::QUEUE},  {578, KIVO_EVT_VLANS_578, 10, Way::QUEUE},
    {579, KIVO_EVT_VLANS_579, 11, Way::QUEUE}, {580, KIVO_EVT_VLANS_580, 12, Way::QUEUE},
    {582, KIVO_EVT_VLANS_582, 42, Way::QUEUE}, {L2IF_EVT_NOW | 579, KIVO_EVT_VLANS_NOW_579, 13, Way::NOW},
};

static constexpr oxm::ROUTE_S SUB_VLAN[] = {{49, KIVO_EVT_SUB_VLAN_49, 0, Way::QUEUE},
                                            {65, KIVO_EVT_SUB_VLAN_65, 0, Way::QUEUE}};

static constexpr oxm::ROUTE_S ATTRIBUTE[] = {{L2IF_EVT_NOW | 81, KIVO_EVT_VLAN_ATTR, 0, Way::NOW}};

static constexpr oxm::ROUTE_S STATE[] = {{129, KIVO_EVT_VLAN_STATE, 17, Way::QUEUE},
                                         {130, KIVO_EVT_VLAN_STATE, 16, Way::QUEUE}};

static constexpr uint32_t BUILDRUN = 368;
static constexpr uint32_t BUILDRUN_BY_COPY = 387;

static constexpr uint32_t VLANS_CREATED = L2IF_EVT_NOW | 17;
static constexpr uint32_t VLAN_IDS = 4096;

uint32_t KIVO_Adapt_VlanBatchEvtCB(const void *, uint32_t ulEvent, void *pBitmap) {
    if (pBitmap == nullptr)
        return oxm::BadArgument(__LINE__);
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(BATCH, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_VLANS_S>();
    if (memcpy_s(stRecord.aulBitmap, sizeof(stRecord.aulBitmap), pBitmap, sizeof(stRecord.aulBitmap)) != EOK)
        qal_assert(oxm::SOURCE, __LINE__);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_SubVlanEvtCB(const void *pSuperVlan, uint32_t ulEvent, void *pSubVlan) {
    if (pSuperVlan == nullptr || pSubVlan == nullptr)
        return oxm::BadArgument(__LINE__);
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(SUB_VLAN, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_SUB_VLAN_S>();
    stRecord.usSuperVlan = oxm::Word16(pSuperVlan);
    stRecord.usSubVlan = oxm::Word16(pSubVlan);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_VlanSetAttrEvtCB(const void *pVlan, uint32_t ulEvent, void *pAttr) {
    if (pVlan == nullptr || pAttr == nullptr)
        return oxm::BadArgument(__LINE__);
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(ATTRIBUTE, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_VLAN_ATTR_S>();
    stRecord.ulAttr = oxm::Word32(pAttr);
    stRecord.usVlan = oxm::Word16(pVlan);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_L2ifVlanUpDownEvtCB(const void *pVlan, uint32_t ulEvent, void *) {
    if (pVlan == nullptr)
        return oxm::BadArgument(__LINE__);
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(STATE, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_VLAN_STATE_S>();
    stRecord.usVlan = oxm::Word16(pVlan);
    return oxm::Raise(*pstRoute, stRecord);
}

static uint32_t NotifyBuildRun(uint32_t ulEvent, const void *pVlan, const void *pContext) {
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_BUILDRUN_S>();
    stRecord.ullContext = reinterpret_cast<uintptr_t>(pContext);
    stRecord.usVlan = oxm::Word16(pVlan);
    return UVEL_EventCallBackNotify(ulEvent, 0, &stRecord);
}

uint32_t UVEL_Vlan_BuildRun(const void *pVlan, uint32_t ulEvent, void *pContext) {
    if (pVlan == nullptr || pContext == nullptr)
        return KIVO_FAIL;
    switch (ulEvent) {
    case BUILDRUN:
        return NotifyBuildRun(KIVO_EVT_BUILDRUN_368, pVlan, pContext);
    case BUILDRUN_BY_COPY: {
        void *pCopy = pContext; /* callbacks of this event expect to look through one pointer more */
        return NotifyBuildRun(KIVO_EVT_BUILDRUN_387, pVlan, &pCopy);
    }
    default:
        return KIVO_OK;
    }
}

/* The host promises ids below 4096; another one must not write behind the bitmap. */
static void SetVlans(KIVO_EVT_VLANS_S *pstRecord, const uint16_t *pusVlans, uint32_t ulCount) {
    for (uint32_t i = 0; i < ulCount; ++i) {
        if (pusVlans[i] < VLAN_IDS)
            pstRecord->aulBitmap[pusVlans[i] / 32] |= 1U << (pusVlans[i] % 32);
    }
}

uint32_t KIVO_Adapt_RcvVlanCreateEvt(const void *pVlans, uint32_t ulEvent, void *pCount) {
    if (pCount == nullptr)
        return oxm::BadArgument(__LINE__);
    if (ulEvent != VLANS_CREATED)
        return KIVO_OK;
    const uint32_t ulCount = oxm::Word32(pCount);
    if (pVlans == nullptr && ulCount != 0)
        return oxm::BadArgument(__LINE__);
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_VLANS_S>();
    SetVlans(&stRecord, static_cast<const uint16_t *>(pVlans), ulCount);
    return UVEL_EventCallBackNotify(KIVO_EVT_VLANS_CREATED, KIVO_EVT_VLANS_CREATED, &stRecord);
}
