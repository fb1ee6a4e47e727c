// The debug output of the event task, which goes nowhere: seen in a copy whose output keeps its lines.

#define UVEL_EVENT_Api_SendEventMsg ProbedSendEventMsg
#define UVEL_EVENT_WriteEvtQueue ProbedWriteEvtQueue
#define UVEL_EVENT_IpcCallback ProbedIpcCallback
#define UVEL_EVENT_RpcCallback ProbedRpcCallback
#define UVEL_EVENT_ProcessEvtIpcMsg ProbedProcessEvtIpcMsg
#define UVEL_EVENT_ProcessMsg ProbedProcessMsg
#define UVEL_EVENT_QueReadNoEvent ProbedQueReadNoEvent
#define UVEL_EVENT_QueReadWithEvent ProbedQueReadWithEvent
#define UVEL_EVENT_Main ProbedEventMain
#define UVEL_EVENT_TaskEntry ProbedEventTaskEntry
#define UVEL_EVENT_DbgOutput ProbedEventDebug
#define NAC_Utils_PvtLog ProbedEventDebug /* of the same form */
#include "../../src/event/src/srv/event_main.cpp"

#include "event_listeners.h"
#include "probed_log.h"

namespace {

class EventDebug : public testing::Test {
  protected:
    EventDebug() { kit::Op<QAL_QueueAsyWrite>().Returns(1); } /* whatever is queued is freed */

    Listeners listeners;
    const uint32_t data = 7;
};

TEST_F(EventDebug, TellsWhatIsSent) {
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(20, 4000000000, &data, 4));
    EXPECT_EQ(Lines{"1 \r\nSendEventMsg eventId=20,subEventId=4000000000,dataLen=4"}, TakeLines());
}

TEST_F(EventDebug, TellsDataThatDoNotAgreeWithTheirLength) {
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(20, 4, nullptr, 9));
    EXPECT_EQ((Lines{"1 \r\nSendEventMsg eventId=20,subEventId=4,dataLen=9", "1 \r\nSendEventMsg data error"}),
              TakeLines());
}

TEST_F(EventDebug, TellsThatMemoryIsShort) {
    kit::Op<IPC_AllocMsg_X>().Returns(nullptr);
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(20, 4, &data, 4));
    EXPECT_EQ((Lines{"1 \r\nSendEventMsg eventId=20,subEventId=4,dataLen=4", "1 \r\nSendEventMsg alloc ipc failed"}),
              TakeLines());
}

TEST_F(EventDebug, TellsThatWhatArrivedFoundTheQueueFull) {
    UVEL_EVENT_IpcCallback(0xABCD1001, 3, g_eventSelfPubIpcTID, IPC_AllocMsg_X(1, 12), 12);
    EXPECT_EQ(Lines{"1 \r\nWrite queue fail."}, TakeLines());
}

TEST_F(EventDebug, TellsWhatWasNotifiedBetweenTheNotificationAndTheEndOfTheMessage) {
    kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
    Listeners::On('A', [](uint32_t, void *) {
        EXPECT_EQ(Lines{}, TakeLines());
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    kit::Op<IPC_FreeMsg>().Does([](void *message) {
        EXPECT_EQ(Lines{"2 \r\nUVEL_EVENT_ProcessEvtIpcMsg eventID=20,subEventID=4000000000"}, TakeLines());
        return kit::Op<IPC_FreeMsg>().Real(message);
    });
    void *message = IPC_AllocMsg_X(1, 12);
    *static_cast<UVEL_EVENT_HEADER_S *>(message) = {20, 4000000000, 0};
    const UVEL_EVENT_ELEMENT_S element{UVEL_EVENT_MSG_EVENT, message, 12, 0};
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(1u, kit::Op<IPC_FreeMsg>().Calls());
}

} // namespace
