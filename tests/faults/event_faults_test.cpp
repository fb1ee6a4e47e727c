// A failing bounds-checked function on the road of an event.

#include "securec_faults.h"

#include <uvelcommon_base/uvel_event.h>

namespace {

TEST(FailingCopy, OfAnEventsDataAssertsAndTheMessageIsSent) {
    kit::Op<IPC_Create>().Returns(0);
    UVEL_EVENT_CreateQueIpc();
    const uint32_t data = 7;
    kit::Op<memcpy_s>().FailsOn(1, 34);
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 4));
    EXPECT_EQ(kit::Sources{"src/event/src/srv/event_main"}, kit::TakeAsserts());
    UVEL_EVENT_ELEMENT_S element{};
    ASSERT_EQ(0u, QAL_QueueRead(g_eventQueID, &element, sizeof element, 0));
    EXPECT_EQ(16u, element.ullLength);
    EXPECT_EQ(1u, static_cast<UVEL_EVENT_HEADER_S *>(element.pMsg)->ulEventId);
    EXPECT_EQ(0u, IPC_FreeMsg(element.pMsg));
}

} // namespace
