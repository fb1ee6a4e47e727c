/* Interfaces: that they come and go, and commands carried out on them. */
#include "kivo_oxmif/fill.h"

#include <uvelcommon_base/kivo_if_query.h>
#include <uvelhost/interface.h>

using oxm::Way;

static constexpr uint32_t PORT_TYPE_LOOPBACK = 11;
static constexpr uint32_t CHECK_KIND = 42;

static constexpr oxm::ROUTE_S INTERFACE[] = {{2, KIVO_EVT_IF, 0, Way::QUEUE},
                                             {3, KIVO_EVT_IF, 19, Way::QUEUE},
                                             {oxm::IF_DELETED, KIVO_EVT_IF, 1, Way::QUEUE},
                                             {25, KIVO_EVT_IF, 21, Way::QUEUE}};

static KIVO_EVT_IF_S IfRecord(uint32_t ulParam, uint32_t ulIfIndex) {
    return {sizeof(KIVO_EVT_IF_S), EXEC_GetCurrentUserId(), KIVO_NONE, ulParam, KIVO_NONE, KIVO_NONE, ulIfIndex};
}

uint32_t KIVO_Adapt_IFEvtCB(uint32_t ulEvent, uint32_t ulIfIndex) {
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(INTERFACE, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    KIVO_EVT_IF_S stRecord = IfRecord(KIVO_NONE, ulIfIndex);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_IFNotifyEvtCB(uint32_t ulIfIndex, uint32_t ulCommand, uint32_t ulParam, uint32_t) {
    const uint32_t ulSubEvent = KIVO_Get_KivoIFCmdtype(ulCommand);
    if (ulSubEvent == KIVO_NONE)
        return KIVO_OK;
    return oxm::Queue(KIVO_EVT_IF, ulSubEvent, IfRecord(ulParam, ulIfIndex));
}

static bool IsLoopback(uint32_t ulIfIndex) {
    uint32_t ulPortType = 0;
    return BDS_IfnetGetPortType(ulIfIndex, &ulPortType) == UVELHOST_OK && ulPortType == PORT_TYPE_LOOPBACK;
}

uint32_t KIVO_Adapt_IfLoopDeleteEvtCB(uint32_t ulEvent, uint32_t ulIfIndex) {
    KIVO_EVT_IF_S stRecord;
    if (ulEvent != oxm::IF_DELETED || !IsLoopback(ulIfIndex) || !oxmif::FillWithOnes(&stRecord))
        return KIVO_OK;
    stRecord = IfRecord(KIVO_NONE, ulIfIndex);
    return oxm::Queue(KIVO_EVT_IF, 1, stRecord);
}

uint32_t KIVO_Adapt_IFCfgCheckExtend(uint32_t ulKind, uint32_t ulA, uint32_t ulB, uint32_t ulC) {
    KIVO_EVT_IF_S stRecord;
    if (ulKind != CHECK_KIND || !oxmif::FillWithOnes(&stRecord))
        return KIVO_OK;
    stRecord.ulLen = sizeof(stRecord);
    stRecord.ulUserId = ulC; /* no user here: the layout has no other place for it */
    stRecord.ulParam = ulB;
    stRecord.ulIfIndex = ulA;
    return UVEL_EventCallBackNotify(KIVO_EVT_IF_CFG_CHECK, 0, &stRecord);
}
