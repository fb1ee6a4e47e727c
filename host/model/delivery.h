/* Between the queue of notifications and those who registered for them. */
#ifndef UVEL_HOST_MODEL_DELIVERY_H
#define UVEL_HOST_MODEL_DELIVERY_H

#include "model/notices.h"

namespace uvel::host::model {

/* Makes sure that the notifying thread runs. */
bool StartNotifying();

/* Number that the next queued notification will get. */
uint64_t NextNoticeNumber();

/* Whether the calling thread is inside a callback. */
bool IsDelivering();

/* Calls those registered for the notification at `position`; how many did not answer 0. */
uint64_t CallListeners(Notices &notices, uint32_t position);

} // namespace uvel::host::model

#endif
