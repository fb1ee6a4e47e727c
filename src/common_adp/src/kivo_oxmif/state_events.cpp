/* States of interfaces. */
#include "kivo_oxmif/fill.h"

using oxm::Way;

static constexpr oxm::ROUTE_S STATE[] = {{2, KIVO_EVT_IF_STATE, 27, Way::QUEUE},
                                         {3, KIVO_EVT_IF_STATE, 26, Way::QUEUE},
                                         {7, KIVO_EVT_IF_STATE, 23, Way::QUEUE},
                                         {8, KIVO_EVT_IF_STATE, 24, Way::QUEUE}};

static constexpr uint32_t COMMAND_L2_SUB = 12;
static constexpr uint32_t SUB_EVENT_L2_SUB = 32;

static constexpr uint32_t HOST_DOWN = 0;
static constexpr uint32_t HOST_UP = 1;
static constexpr uint32_t FLAGS_PASSED_ON = (1U << 0) | (1U << 6);

static KIVO_EVT_IF_STATE_S StateRecord(uint32_t ulIfIndex, uint32_t ulState, const uint32_t *pulFlags) {
    auto stRecord = oxm::ZeroRecord<KIVO_EVT_IF_STATE_S>();
    stRecord.ulIfIndex = ulIfIndex;
    stRecord.ulState = ulState;
    stRecord.ulFlags = pulFlags == nullptr ? 0 : *pulFlags & FLAGS_PASSED_ON;
    return stRecord;
}

static uint32_t StateOf(uint32_t ulHostState) {
    switch (ulHostState) {
    case HOST_DOWN:
        return KIVO_EVT_STATE_DOWN;
    case HOST_UP:
        return KIVO_EVT_STATE_UP;
    default:
        return ulHostState;
    }
}

uint32_t KIVO_Adapt_IOCTLCB(uint32_t ulCommand, uint32_t ulState, uint32_t ulIfIndex, const uint32_t *pulFlags) {
    const oxm::ROUTE_S *pstRoute = oxm::FindRoute(STATE, ulCommand);
    if (pstRoute == nullptr)
        return KIVO_OK;
    KIVO_EVT_IF_STATE_S stRecord = StateRecord(ulIfIndex, StateOf(ulState), pulFlags);
    return oxm::Raise(*pstRoute, stRecord);
}

uint32_t KIVO_Adapt_IOCTLCB_L2SUBIF(uint32_t ulCommand, uint32_t ulState, uint32_t ulIfIndex,
                                    const uint32_t *pulFlags) {
    if (ulCommand != COMMAND_L2_SUB || (ulState != HOST_DOWN && ulState != HOST_UP))
        return KIVO_OK;
    const uint32_t ulEventState = ulState == HOST_DOWN ? KIVO_EVT_STATE_L2_SUB_DOWN : KIVO_EVT_STATE_L2_SUB_UP;
    return oxm::Queue(KIVO_EVT_IF_STATE, SUB_EVENT_L2_SUB, StateRecord(ulIfIndex, ulEventState, pulFlags));
}
