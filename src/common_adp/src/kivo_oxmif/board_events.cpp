/* The configuration's recovery, slots and cards. */
#include "kivo_oxmif/fill.h"

using oxm::Way;

static constexpr oxm::ROUTE_S SLOT[] = {{0, KIVO_EVT_SLOT, 0, Way::QUEUE},
                                        {1, KIVO_EVT_SLOT, 2, Way::QUEUE},
                                        {2, KIVO_EVT_SLOT, 1, Way::QUEUE},
                                        {3, KIVO_EVT_SLOT, 3, Way::QUEUE}};

static constexpr oxm::ROUTE_S CARD[] = {{0, KIVO_EVT_CARD, 4, Way::QUEUE},
                                        {1, KIVO_EVT_CARD, 5, Way::QUEUE},
                                        {2, KIVO_EVT_CARD, 8, Way::QUEUE},
                                        {3, KIVO_EVT_CARD, 7, Way::QUEUE},
                                        {4, KIVO_EVT_CARD, 6, Way::QUEUE}};

uint32_t KIVO_Adapt_CfmRecoveOverCB(void) {
    return UVEL_EVENT_Api_SendEventMsg(KIVO_EVT_CFG_RECOVERED, 0, nullptr, 0);
}

uint32_t KIVO_Adapt_SlotEvtCB(uint32_t ulKind, uint32_t ulA, uint32_t ulB) {
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(SLOT, ulKind);
    KIVO_EVT_SLOT_S stRecord;
    if (pstRoute == nullptr || !oxmif::FillWithOnes(&stRecord))
        return KIVO_OK;
    stRecord = {sizeof(stRecord), EXEC_GetCurrentUserId(), {ulA, ulB}};
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_CardEvtCB(uint32_t ulKind, uint32_t ulA, uint32_t ulB, uint32_t ulC) {
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(CARD, ulKind);
    if (pstRoute == nullptr)
        return KIVO_OK;
    KIVO_EVT_CARD_S stRecord{sizeof(stRecord), EXEC_GetCurrentUserId(), {ulA, ulB, ulC}};
    return oxm::Raise(*pstRoute, stRecord);
}
