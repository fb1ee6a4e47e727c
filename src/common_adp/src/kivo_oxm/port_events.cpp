/* Layer-2 ports: their VLANs, QinQ, and changes between the layers. */
#include "kivo_oxm/arguments.h"

#include <cstring>
#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelhost/interface.h>
#include <uvelhost/task.h>

using oxm::Way;

/* An entry of a port list in an event. */
static constexpr uint32_t ENTRY_SIZE = sizeof(uint32_t);

static constexpr uint32_t PORTS_OF_RANGE = 179;

static constexpr oxm::ROUTE_S VLAN_PORTS[] = {
    {161, KIVO_EVT_VLAN_PORTS_161, 14, Way::QUEUE},
    {177, KIVO_EVT_VLAN_PORTS_177, 15, Way::QUEUE},
    {PORTS_OF_RANGE, KIVO_EVT_VLAN_RANGE_PORTS_179, 46, Way::QUEUE},
};

static constexpr oxm::ROUTE_S QINQ[] = {
    {337, KIVO_EVT_QINQ_337, 0, Way::QUEUE},
    {L2IF_EVT_NOW | 337, KIVO_EVT_QINQ_NOW_337, 0, Way::NOW},
    {353, KIVO_EVT_QINQ_353, 0, Way::QUEUE},
    {L2IF_EVT_NOW | 353, KIVO_EVT_QINQ_NOW_353, 0, Way::NOW},
};

static constexpr oxm::ROUTE_S SWITCH[] = {
    {193, KIVO_EVT_PORT_SWITCH_193, 32, Way::QUEUE},
    {209, KIVO_EVT_PORT_SWITCH_209, 28, Way::QUEUE},
    {210, KIVO_EVT_PORT_SWITCH_210, 30, Way::QUEUE},
    {L2IF_EVT_NOW | 193, KIVO_EVT_PORT_SWITCH_NOW_193, 31, Way::NOW},
    {L2IF_EVT_NOW | 209, KIVO_EVT_PORT_SWITCH_NOW_209, 29, Way::NOW},
};

static constexpr uint32_t PHY_TYPE_IGNORED = 47;

/* For QAL_TaskRunDelay: give way after so many milliseconds, for so many. */
static constexpr uint32_t HELD_MS = 200;
static constexpr uint32_t DELAY_MS = 20;

uint32_t KIVO_Adapt_VlanAddDelPortEvtCBEnque(uint32_t ulEvent, const KIVO_EVT_VLAN_PORTS_S *pstHead,
                                             const L2IF_PORT_LIST_S *pstPorts) {
    if (pstHead == nullptr || pstPorts == nullptr || pstPorts->ulCount == 0)
        return KIVO_FAIL;
    const uint64_t ullPortsSize = static_cast<uint64_t>(pstPorts->ulCount) * ENTRY_SIZE;
    const uint64_t ullSize = sizeof(KIVO_EVT_VLAN_PORTS_S) + ullPortsSize;
    if (ullSize > UINT32_MAX)
        return KIVO_FAIL;
    void *pMessage = KIVO_MemAlloc(KIVO_LIB_MID, static_cast<uint32_t>(ullSize));
    if (pMessage == nullptr)
        return KIVO_FAIL;
    auto *pstMessage = static_cast<KIVO_EVT_VLAN_PORTS_S *>(pMessage);
    *pstMessage = *pstHead;
    pstMessage->ulCount = pstPorts->ulCount;
    std::memcpy(pstMessage + 1, oxm::EntriesOf<uint32_t>(pstPorts), ullPortsSize);
    (void)UVEL_EVENT_Api_SendEventMsg(ulEvent, ulEvent, pMessage, static_cast<uint32_t>(ullSize));
    (void)KIVO_MemFree(pMessage);
    return KIVO_OK;
}

uint32_t KIVO_Adapt_VlanAddDelPortEvtCB(const void *pVlans, uint32_t ulEvent, void *pPorts) {
    if (pVlans == nullptr || pPorts == nullptr)
        return KIVO_FAIL;
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(VLAN_PORTS, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    const auto *pusVlans = static_cast<const uint16_t *>(pVlans);
    const uint16_t usLast = ulEvent == PORTS_OF_RANGE ? pusVlans[1] : pusVlans[0];
    const KIVO_EVT_VLAN_PORTS_S stHead{EXEC_GetCurrentUserId(), pusVlans[0], usLast, 0};
    return KIVO_Adapt_VlanAddDelPortEvtCBEnque(pstRoute->ulEvent, &stHead,
                                               static_cast<const L2IF_PORT_LIST_S *>(pPorts));
}

/* One port and one VLAN. The record is built anew each time: callbacks may have changed the last one. */
static uint32_t NotifyHybrid(uint32_t ulPort, uint16_t usVlan) {
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_HYBRID_S>();
    stRecord.ulPort = ulPort;
    stRecord.usFirstVlan = usVlan;
    stRecord.usLastVlan = usVlan;
    const uint32_t ulResult = UVEL_EventCallBackNotify(KIVO_EVT_HYBRID_PORT_ADDED, 0, &stRecord);
    QAL_TaskRunDelay(HELD_MS, DELAY_MS);
    return ulResult;
}

uint32_t KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc(const L2IF_VLAN_LIST_S *pstVlans,
                                                     const L2IF_PORT_LIST_S *pstPorts) {
    if (pstVlans == nullptr || pstPorts == nullptr)
        return oxm::BadArgument(__LINE__);
    const auto *pusVlans = oxm::EntriesOf<uint16_t>(pstVlans);
    const auto *pulPorts = oxm::EntriesOf<uint32_t>(pstPorts);
    for (uint32_t ulPort = 0; ulPort < pstPorts->ulCount; ++ulPort) {
        for (uint32_t ulVlan = 0; ulVlan < pstVlans->ulCount; ++ulVlan) {
            if (NotifyHybrid(pulPorts[ulPort], pusVlans[ulVlan]) != KIVO_OK)
                return KIVO_FAIL;
        }
    }
    return KIVO_OK;
}

uint32_t KIVO_Adapt_QinQEvtCB(const void *pPortIndex, uint32_t ulEvent, void *pQinQ) {
    if (pPortIndex == nullptr || pQinQ == nullptr)
        return oxm::BadArgument(__LINE__);
    uint32_t ulIfIndex = 0;
    if (L2IF_PORT_GetIfIndex(oxm::Word32(pPortIndex), &ulIfIndex) != KIVO_OK)
        return KIVO_OK; /* a port that has just gone: its QinQ is nobody's concern */
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(QINQ, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    const auto *pstQinQ = static_cast<const L2IF_QINQ_DATA_S *>(pQinQ);
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_QINQ_S>();
    stRecord.ulIfIndex = ulIfIndex;
    stRecord.usWord6 = pstQinQ->ausWord[6];
    stRecord.usWord8 = pstQinQ->ausWord[8];
    stRecord.usWord9 = pstQinQ->ausWord[9];
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_PortSwitchEvtCB(const void *pIfIndex, uint32_t ulEvent, void *) {
    if (pIfIndex == nullptr)
        return oxm::BadArgument(__LINE__);
    const uint32_t ulIfIndex = oxm::Word32(pIfIndex);
    uint32_t ulPhyType = 0;
    if (BDS_IfnetGetPhyType(ulIfIndex, &ulPhyType) != UVELHOST_OK)
        return KIVO_FAIL;
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(SWITCH, ulEvent);
    if (ulPhyType == PHY_TYPE_IGNORED || pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_PORT_SWITCH_S>();
    stRecord.ulIfIndex = ulIfIndex;
    return oxm::Raise(*pstRoute, stRecord);
}
