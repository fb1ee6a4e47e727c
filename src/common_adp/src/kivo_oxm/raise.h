/* Raising events: what all adapters share. */
#ifndef KIVO_OXM_RAISE_H
#define KIVO_OXM_RAISE_H

#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/exec.h>

namespace oxm {

/* The host's number for an interface that goes. */
inline constexpr uint32_t IF_DELETED = 6;

enum class Way : uint8_t { NOW, QUEUE };

/* What becomes of a notification of the host. */
struct ROUTE_S {
    uint32_t ulHostEvent;
    uint32_t ulEvent;
    uint32_t ulSubEvent;
    Way enWay;
};

template <uint32_t COUNT>
const ROUTE_S *FindRoute(const ROUTE_S (&astRoutes)[COUNT], uint32_t ulHostEvent) {
    for (const ROUTE_S &stRoute : astRoutes) {
        if (stRoute.ulHostEvent == ulHostEvent)
            return &stRoute;
    }
    return nullptr;
}

/* A record of zeros with its head. */
template <typename Record>
Record ZeroRecord() {
    Record stRecord{};
    stRecord.ulLen = sizeof(Record);
    stRecord.ulUserId = EXEC_GetCurrentUserId();
    return stRecord;
}

template <typename Record>
uint32_t Queue(uint32_t ulEvent, uint32_t ulSubEvent, const Record &stRecord) {
    return UVEL_EVENT_Api_SendEventMsg(ulEvent, ulSubEvent, &stRecord, sizeof(Record));
}

template <typename Record>
uint32_t Raise(const ROUTE_S &stRoute, Record &stRecord) {
    return stRoute.enWay == Way::NOW ? UVEL_EventCallBackNotify(stRoute.ulEvent, stRoute.ulSubEvent, &stRecord)
                                     : Queue(stRoute.ulEvent, stRoute.ulSubEvent, stRecord);
}

} // namespace oxm

#endif
