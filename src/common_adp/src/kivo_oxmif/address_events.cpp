/* Addresses and VRFs of interfaces, bridge domains, values of ports. */
#include "kivo_oxmif/fill.h"

#include <arpa/inet.h>

using oxm::Way;

static constexpr oxm::ROUTE_S ADDRESS[] = {{16, KIVO_EVT_IP, 0, Way::NOW}, {32, KIVO_EVT_IP, 1, Way::NOW}};

static constexpr oxm::ROUTE_S PORT[] = {{241, KIVO_EVT_PORT_241, 48, Way::QUEUE},
                                        {593, KIVO_EVT_PORT_593, 47, Way::QUEUE}};

static constexpr oxm::ROUTE_S BRIDGE_DOMAIN[] = {{0, KIVO_EVT_BD, 45, Way::NOW}, {1, KIVO_EVT_BD, 45, Way::NOW}};

static constexpr uint32_t VRF_SET = 10;
static constexpr uint32_t SUB_EVENT_VRF_SET = 31;

uint32_t KIVO_Adapt_IPEvtCB(const uint32_t *pulIfIndex, uint32_t ulEvent, const uint32_t *pulAddrNet) {
    if (pulIfIndex == nullptr || pulAddrNet == nullptr) {
        qal_assert(oxmif::SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(ADDRESS, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_IP_S>();
    stRecord.ulIfIndex = *pulIfIndex;
    stRecord.ulAddr = ntohl(*pulAddrNet);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_VrfSetCB(uint32_t ulEvent, uint32_t ulValue) {
    if (ulEvent != VRF_SET)
        return KIVO_OK;
    return oxm::Queue(KIVO_EVT_VRF_SET, SUB_EVENT_VRF_SET, KIVO_EVT_VRF_SET_S{EXEC_GetCurrentUserId(), ulValue});
}

uint32_t KIVO_Adapt_BdEvtCB(uint32_t ulSubType, uint32_t ulA, uint16_t usB) {
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(BRIDGE_DOMAIN, ulSubType);
    if (pstRoute == nullptr)
        return KIVO_OK;
    KIVO_EVT_BD_S stRecord{ulA, usB, 0};
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_PortChgEvtCB(const void *pPortIndex, uint32_t ulEvent, void *pValue) {
    if (pPortIndex == nullptr || pValue == nullptr)
        return KIVO_FAIL;
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(PORT, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    KIVO_EVT_PORT_S stRecord{EXEC_GetCurrentUserId(), *static_cast<const uint32_t *>(pPortIndex),
                             *static_cast<const uint16_t *>(pValue), 0};
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_PortHasCfgEvtCB(const void *, uint32_t, void *pData) {
    return UVEL_EventCallBackNotify(KIVO_EVT_PORT_HAS_CFG, 0, pData);
}
