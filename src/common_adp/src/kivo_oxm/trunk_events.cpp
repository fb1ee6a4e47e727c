/* Trunks and their members. */
#include "kivo_oxm/arguments.h"

#include <uvelhost/trunk.h>

using oxm::Way;

static constexpr oxm::ROUTE_S MEMBER[] = {
    {2, KIVO_EVT_TRUNK_MEMBER_2, 25, Way::NOW},
    {3, KIVO_EVT_TRUNK_MEMBER_3, 23, Way::NOW},
    {7, KIVO_EVT_TRUNK_MEMBER_7, 24, Way::QUEUE},
    {8, KIVO_EVT_TRUNK_MEMBER_8, 22, Way::QUEUE},
};

uint32_t KIVO_Adapt_TrkMemChgEvtCB(uint32_t ulTrunkId, uint32_t ulEvent, uint32_t ulMember) {
    const uint32_t ulTrunkIndex = Trunk_GetIndexByTrunkID(ulTrunkId);
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(MEMBER, ulEvent);
    if (pstRoute == nullptr)
        return KIVO_OK;
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_TRUNK_MEMBER_S>();
    stRecord.ulMember = ulMember;
    stRecord.ulTrunkIndex = ulTrunkIndex;
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_TrkMemHasCfgEvtCB(uint32_t, uint32_t, void *pData) {
    return UVEL_EventCallBackNotify(KIVO_EVT_TRUNK_MEMBER_HAS_CFG, 0, pData);
}

uint32_t KIVO_Adapt_TrunkDelEvtCB(uint32_t, uint32_t ulEvent, uint32_t ulValue) {
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_TRUNK_DEL_S>();
    stRecord.aulHost[0] = ulEvent;
    stRecord.aulHost[1] = ulValue;
    return oxm::Queue(KIVO_EVT_TRUNK_DEL, 0, stRecord);
}
