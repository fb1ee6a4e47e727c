#include "event_listeners.h"

#include <cstring>
#include <uvelcommon_base/uvel_event.h>

namespace {

const kit::Sources MAIN{"src/event/src/srv/event_main"};
const kit::Sources DEPFUNC{"src/event/src/srv/event_depfunc"};

constexpr uint32_t CHANNEL = 0x77;

uint64_t MessagesInUse() {
    QAL_MEM_STATS_S stats{};
    EXPECT_EQ(0u, QAL_MemGetStats(0, &stats)); /* the account of modules without one of their own */
    return stats.ulBlocks;
}

/* A process whose event queue is there, without a task: the test takes the elements out itself. */
class EventTask : public testing::Test {
  protected:
    EventTask() {
        UVEL_EVENT_Api_SetGlobalVariable(0x42, 0x43, CHANNEL);
        UVEL_EVENT_Api_SetSpecs(0, 4);
        kit::Op<IPC_Create>().Returns(0);
        UVEL_EVENT_CreateQueIpc();
        g_eventSelfPubModuleID = 0x42;
        before = MessagesInUse();
    }

    ~EventTask() override { EXPECT_EQ(before, MessagesInUse()) << "messages lost"; }

    static UVEL_EVENT_ELEMENT_S Take() {
        UVEL_EVENT_ELEMENT_S element{};
        EXPECT_EQ(0u, QAL_QueueRead(g_eventQueID, &element, sizeof element, 0));
        return element;
    }

    static bool QueueIsEmpty() {
        UVEL_EVENT_ELEMENT_S element{};
        return QAL_QueueRead(g_eventQueID, &element, sizeof element, 0) != 0;
    }

    static UVEL_EVENT_ELEMENT_S Element(uint64_t type, void *message, uint64_t length = 12, uint64_t reserved = 0) {
        return {type, message, length, reserved};
    }

    Listeners listeners;
    uint64_t before = 0;
};

/* ---- sending ---- */

TEST_F(EventTask, AnEventTravelsAsHeaderAndData) {
    const uint8_t data[5] = {1, 2, 3, 4, 5};
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(0x01020304, 0x05060708, data, 5));
    const UVEL_EVENT_ELEMENT_S element = Take();
    EXPECT_EQ(0xABCD1001u, element.ullMsgType);
    EXPECT_EQ(17u, element.ullLength);
    EXPECT_EQ(0u, element.ullReserved);
    const uint8_t expected[17] = {4, 3, 2, 1, 8, 7, 6, 5, 0, 0, 0, 0, 1, 2, 3, 4, 5};
    EXPECT_EQ(0, std::memcmp(expected, element.pMsg, 17));
    EXPECT_EQ(0u, IPC_FreeMsg(element.pMsg));
}

TEST_F(EventTask, SendingMakesTheseHostCalls) {
    const uint32_t data = 7;
    kit::Op<IPC_GetSelfNodeId>().Returns(9);
    kit::Op<QAL_QueueAsyWrite>().Does([](uint32_t, const void *element, uint32_t) {
        EXPECT_EQ(0u, IPC_FreeMsg(static_cast<const UVEL_EVENT_ELEMENT_S *>(element)->pMsg));
        return 0u;
    });
    g_eventQueID = 55;
    kit::Recorder recorder;
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 4));
    EXPECT_EQ((std::vector<std::string>{"IPC_AllocMsg_X(66, 16)", "IPC_SetSrcAndDstChannelId(ptr, 119, 119)",
                                        "IPC_GetSelfNodeId()", "IPC_SetSrcAndDstNodeId(ptr, 9, 9)",
                                        "QAL_QueueAsyWrite(55, ptr, 32)", "IPC_FreeMsg(ptr)"}),
              recorder.Calls());
}

TEST_F(EventTask, AnEventWithoutDataIsTwelveBytesLong) {
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(1, 2, nullptr, 0));
    const UVEL_EVENT_ELEMENT_S element = Take();
    EXPECT_EQ(12u, element.ullLength);
    EXPECT_EQ(12u, IPC_GetMsgLen(element.pMsg));
    EXPECT_EQ(0u, IPC_FreeMsg(element.pMsg));
}

TEST_F(EventTask, DataAndLengthMustAgree) {
    const uint32_t data = 7;
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, nullptr, 4));
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 0));
    EXPECT_EQ(0u, kit::Op<IPC_AllocMsg_X>().Calls());
    EXPECT_TRUE(QueueIsEmpty());
}

TEST_F(EventTask, WithoutMemoryNothingIsSent) {
    const uint32_t data = 7;
    kit::Op<IPC_AllocMsg_X>().FailsOn(1);
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 4));
    EXPECT_TRUE(QueueIsEmpty());
}

TEST_F(EventTask, ALengthThatLeavesNoRoomForTheHeaderIsRefused) {
    const uint32_t data = 7;
    kit::Op<IPC_AllocMsg_X>().Returns(nullptr);
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 0xFFFFFFFF));
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 0xFFFFFFF4));
    EXPECT_EQ(0u, kit::Op<IPC_AllocMsg_X>().Calls()) << "a length that wraps is not asked for";
    EXPECT_EQ(1u, UVEL_EVENT_Api_SendEventMsg(1, 2, &data, 0xFFFFFFF3));
    EXPECT_EQ(0xFFFFFFFFu, std::get<1>(kit::Op<IPC_AllocMsg_X>().Last()));
}

TEST_F(EventTask, AFullQueueRefusesCountsAndFreesWhileTheSenderIsToldNothing) {
    for (uint32_t i = 0; i < 7; ++i)
        EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(i, 0, nullptr, 0));
    QAL_QUEUE_STATS_S stats{};
    EXPECT_EQ(0u, QAL_QueueGetStats(g_eventQueID, &stats));
    EXPECT_EQ(4u, stats.ulWritten);
    EXPECT_EQ(3u, stats.ulRefused);
    EXPECT_EQ(before + 4, MessagesInUse());
    for (uint32_t i = 0; i < 4; ++i) {
        const UVEL_EVENT_ELEMENT_S element = Take();
        EXPECT_EQ(i, *static_cast<uint32_t *>(element.pMsg)) << "what was accepted is there, in order";
        EXPECT_EQ(0u, IPC_FreeMsg(element.pMsg));
    }
    EXPECT_TRUE(QueueIsEmpty());
}

TEST_F(EventTask, AWriteThatFailsFreesTheMessageAndSaysSo) {
    void *message = IPC_AllocMsg_X(0x42, 12);
    kit::Op<QAL_QueueAsyWrite>().FailsOn(1);
    EXPECT_EQ(1u, UVEL_EVENT_WriteEvtQueue(5, 6, message, 12));
    EXPECT_EQ(before, MessagesInUse());
    EXPECT_EQ(0u, UVEL_EVENT_WriteEvtQueue(5, 6, IPC_AllocMsg_X(0x42, 12), 12));
    const UVEL_EVENT_ELEMENT_S element = Take();
    EXPECT_EQ(6u, element.ullMsgType);
    EXPECT_EQ(12u, element.ullLength);
    EXPECT_EQ(0u, IPC_FreeMsg(element.pMsg));
}

/* ---- receiving ---- */

TEST_F(EventTask, AMessageOnTheTasksChannelIsQueued) {
    void *message = IPC_AllocMsg_X(1, 20);
    UVEL_EVENT_IpcCallback(0x1111, 3, CHANNEL, message, 20);
    const UVEL_EVENT_ELEMENT_S element = Take();
    EXPECT_EQ(0x1111u, element.ullMsgType);
    EXPECT_EQ(message, element.pMsg);
    EXPECT_EQ(20u, element.ullLength);
    EXPECT_EQ(0u, element.ullReserved);
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

TEST_F(EventTask, AMessageOnTheTasksChannelIsQueuedWhateverItsTypeSays) {
    for (const uint32_t type : {0u, 1u, 0x7777u}) {
        void *message = IPC_AllocMsg_X(1, 8);
        UVEL_EVENT_IpcCallback(type, 3, CHANNEL, message, 8);
        const UVEL_EVENT_ELEMENT_S element = Take();
        EXPECT_EQ(type, element.ullMsgType);
        EXPECT_EQ(message, element.pMsg);
        EXPECT_EQ(8u, element.ullLength);
        EXPECT_EQ(0u, IPC_FreeMsg(message));
    }
}

TEST_F(EventTask, AMessageOnAForeignChannelIsFreedAndAsserted) {
    for (const uint32_t type : {0xABCD1001u, 2u}) {
        UVEL_EVENT_IpcCallback(type, CHANNEL, CHANNEL + 1, IPC_AllocMsg_X(1, 20), 20);
        EXPECT_EQ(MAIN, kit::TakeAsserts());
        EXPECT_EQ(before, MessagesInUse());
        EXPECT_TRUE(QueueIsEmpty());
    }
    EXPECT_EQ(2u, kit::Op<IPC_FreeMsg>().Calls());
}

TEST_F(EventTask, AnEventMessageTooShortForItsHeaderIsFreedUnread) {
    for (const uint32_t length : {0u, 11u}) {
        UVEL_EVENT_IpcCallback(0xABCD1001, 3, CHANNEL, IPC_AllocMsg_X(1, length), length);
        EXPECT_EQ(MAIN, kit::TakeAsserts());
        EXPECT_EQ(before, MessagesInUse());
        EXPECT_TRUE(QueueIsEmpty());
    }
    void *message = IPC_AllocMsg_X(1, 12);
    UVEL_EVENT_IpcCallback(0xABCD1001, 3, CHANNEL, message, 12);
    EXPECT_EQ(message, Take().pMsg) << "a header alone is an event without data";
    EXPECT_EQ(0u, IPC_FreeMsg(message));
}

TEST_F(EventTask, AMessageToDiscardIsNotQueued) {
    UVEL_EVENT_IpcCallback(2, 3, CHANNEL, IPC_AllocMsg_X(1, 20), 20);
    EXPECT_EQ(before, MessagesInUse());
    EXPECT_TRUE(QueueIsEmpty());
}

TEST_F(EventTask, AMessageThatFindsTheQueueFullIsFreed) {
    kit::Op<QAL_QueueAsyWrite>().Returns(1);
    UVEL_EVENT_IpcCallback(0xABCD1001, 3, CHANNEL, IPC_AllocMsg_X(1, 20), 20);
    EXPECT_EQ(before, MessagesInUse());
}

struct DatabaseCall {
    void *message;
    uint32_t kind;
    void *context;
    void **reply;

    bool operator==(const DatabaseCall &) const = default;
};

std::vector<DatabaseCall> g_databaseCalls;

uint32_t DatabaseHook(void *message, uint32_t kind, void *context, void **reply) {
    g_databaseCalls.push_back({message, kind, context, reply});
    return 33;
}

void InstallDatabaseHook() {
    g_eventDbmProcFuncHook[0] = reinterpret_cast<KIVO_HOOK>(DatabaseHook);
}

TEST_F(EventTask, ADatabaseCallIsCheckedAndAnsweredByTheHook) {
    InstallDatabaseHook();
    int message = 0;
    int context = 0;
    void *reply = nullptr;
    kit::Op<DBI_CheckMsg>().Returns(0);
    EXPECT_EQ(33u, UVEL_EVENT_RpcCallback(1, &message, 4, &context, &reply));
    EXPECT_EQ((std::vector<DatabaseCall>{{&message, 0xFFFFFFFF, &context, &reply}}), g_databaseCalls);
    EXPECT_EQ(&message, std::get<0>(kit::Op<DBI_CheckMsg>().Last()));

    kit::Op<DBI_CheckMsg>().Returns(21);
    EXPECT_EQ(21u, UVEL_EVENT_RpcCallback(1, &message, 4, &context, &reply));
    EXPECT_EQ(1u, g_databaseCalls.size()) << "a bad message does not reach the hook";
}

TEST_F(EventTask, ADatabaseCallWithoutMessageContextOrReplyDoesNothing) {
    InstallDatabaseHook();
    int something = 0;
    void *reply = nullptr;
    EXPECT_EQ(1u, UVEL_EVENT_RpcCallback(1, nullptr, 4, &something, &reply));
    EXPECT_EQ(1u, UVEL_EVENT_RpcCallback(1, &something, 4, nullptr, &reply));
    EXPECT_EQ(1u, UVEL_EVENT_RpcCallback(1, &something, 4, &something, nullptr));
    EXPECT_EQ(0u, kit::Op<DBI_CheckMsg>().Calls());
    EXPECT_TRUE(g_databaseCalls.empty());
}

/* ---- working off ---- */

TEST_F(EventTask, AnEventMessageReachesTheRegistryAndIsFreed) {
    const uint32_t data = 0xCAFE;
    Listeners::On('A', [](uint32_t value, void *received) {
        EXPECT_EQ(4u, value);
        EXPECT_EQ(0xCAFEu, *static_cast<uint32_t *>(received));
        return 99u; /* nobody looks */
    });
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(20, 4, &data, 4));
    const UVEL_EVENT_ELEMENT_S element = Take();
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ("A", Listeners::Called());
}

TEST_F(EventTask, AnEventMessageIsFreedAfterTheNotificationAlsoForABadEventNumber) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(2000, 4, nullptr, 0));
    const UVEL_EVENT_ELEMENT_S element = Take();
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ("", Listeners::Called());
}

TEST_F(EventTask, AnEventElementWithoutAMessageIsLeftAlone) {
    const UVEL_EVENT_ELEMENT_S element = Element(0xABCD1001, nullptr);
    UVEL_EVENT_ProcessMsg(&element);
    UVEL_EVENT_ProcessEvtIpcMsg(nullptr);
    EXPECT_EQ(0u, kit::Op<IPC_FreeMsg>().Calls());
}

TEST_F(EventTask, AnEventElementIsNotifiedWhateverItsLengthSays) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(20, 4, nullptr, 0));
    UVEL_EVENT_ELEMENT_S element = Take();
    element.ullLength = 0;
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

TEST_F(EventTask, ANullElementAsserts) {
    UVEL_EVENT_ProcessMsg(nullptr);
    EXPECT_EQ(MAIN, kit::TakeAsserts());
}

struct TypeRow {
    uint64_t type;
    bool asserts;
    bool frees;
};

TEST_F(EventTask, EveryOtherTypeAssertsAndFreesAsItShould) {
    const TypeRow rows[] = {{0, true, false},           {1, true, true},
                            {2, false, true},           {3, false, false},
                            {0x1110, false, false},     {0xABCD1002, false, false},
                            {0xFFFFFFFF, false, false}, {0x1ABCD1001, false, false} /* all 64 bits count */};
    for (const TypeRow &row : rows) {
        void *message = IPC_AllocMsg_X(1, 12);
        const UVEL_EVENT_ELEMENT_S element = Element(row.type, message);
        UVEL_EVENT_ProcessMsg(&element);
        EXPECT_EQ(row.asserts ? MAIN : kit::Sources{}, kit::TakeAsserts()) << row.type;
        EXPECT_EQ(row.frees ? before : before + 1, MessagesInUse()) << row.type;
        if (!row.frees)
            IPC_FreeMsg(message);
    }
}

TEST_F(EventTask, AValidDatabaseMessagePassesToTheHookWithTheLowHalfOfTheReservedWord) {
    InstallDatabaseHook();
    kit::Op<DBI_CheckMsg>().Returns(0);
    int message = 0;
    UVEL_EVENT_ELEMENT_S element = Element(0x1111, &message);
    UVEL_EVENT_ProcessMsg(&element);
    element.ullReserved = 0x1234567890ABCDEF;
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ((std::vector<DatabaseCall>{{&message, 0, nullptr, nullptr}, {&message, 0x90ABCDEF, nullptr, nullptr}}),
              g_databaseCalls);
    EXPECT_EQ(0u, kit::Op<IPC_FreeMsg>().Calls()) << "it is the hook's from then on";
}

TEST_F(EventTask, AValidDatabaseMessageWithoutAHookAssertsAndIsNotFreed) {
    kit::Op<DBI_CheckMsg>().Returns(0);
    int message = 0;
    const UVEL_EVENT_ELEMENT_S element = Element(0x1111, &message);
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_EQ(DEPFUNC, kit::TakeAsserts());
    EXPECT_EQ(0u, kit::Op<IPC_FreeMsg>().Calls());
}

TEST_F(EventTask, AnInvalidDatabaseMessageIsLeftAlone) {
    InstallDatabaseHook();
    void *message = IPC_AllocMsg_X(1, 64);
    std::memset(message, 0, 64);
    const UVEL_EVENT_ELEMENT_S element = Element(0x1111, message, 64);
    UVEL_EVENT_ProcessMsg(&element);
    EXPECT_TRUE(g_databaseCalls.empty());
    EXPECT_EQ(before + 1, MessagesInUse());
    IPC_FreeMsg(message);
}

/* ---- the readers ---- */

TEST_F(EventTask, TheWaitingReaderServesUntilAReadFails) {
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(20, 1, nullptr, 0));
    EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(20, 2, nullptr, 0));
    kit::Op<QAL_QueueRead>().FailsOn(3);
    kit::Recorder recorder({"QAL_QueueRead", "IPC_FreeMsg", "QAL_TaskRunDelay"});
    EXPECT_EQ(0xFFFFFFFFu, UVEL_EVENT_QueReadNoEvent());
    EXPECT_EQ((std::vector<std::string>{"QAL_QueueRead(1, ptr, 32, 0xFFFFFFFF)", "IPC_FreeMsg(ptr)",
                                        "QAL_TaskRunDelay(200, 20)", "QAL_QueueRead(1, ptr, 32, 0xFFFFFFFF)",
                                        "IPC_FreeMsg(ptr)", "QAL_TaskRunDelay(200, 20)",
                                        "QAL_QueueRead(1, ptr, 32, 0xFFFFFFFF)"}),
              recorder.Calls());
}

/* The reader with two queues, told by what a scripted host hands out: r an element of the preferred queue, e one of the
 * event queue, each followed by the delay. */
class TwoQueues : public testing::Test {
  protected:
    std::string Serve(std::string preferred, std::string events) {
        g_eventQueID = 1;
        g_eventRpcQueID = 2;
        std::string served;
        kit::Op<QAL_QueueRead>().Does([&](uint32_t queue, void *element, uint32_t size, uint32_t timeout) {
            EXPECT_EQ(32u, size);
            EXPECT_EQ(0u, timeout);
            std::string &left = queue == 2 ? preferred : events;
            if (left.empty() || left[0] == '-') {
                if (!left.empty())
                    left.erase(0, 1);
                served += queue == 2 ? '.' : '!';
                return 1u;
            }
            served += left[0];
            left.erase(0, 1);
            *static_cast<UVEL_EVENT_ELEMENT_S *>(element) = {3, nullptr, 0, 0};
            return 0u;
        });
        EXPECT_EQ(0xFFFFFFFFu, UVEL_EVENT_QueReadWithEvent());
        return served;
    }
};

TEST_F(TwoQueues, ThePreferredQueueIsEmptiedFirst) {
    EXPECT_EQ("rrr.ee!", Serve("rrr", "ee"));
    EXPECT_EQ(5u, kit::Op<QAL_TaskRunDelay>().Calls());
    EXPECT_EQ((std::tuple{200u, 20u}), kit::Op<QAL_TaskRunDelay>().Last());
}

TEST_F(TwoQueues, BothEmptyIsTheEndAtOnce) {
    EXPECT_EQ(".!", Serve("", ""));
}

TEST_F(TwoQueues, AfterTwoHundredEventsThePreferredQueueHasItsTurn) {
    EXPECT_EQ("r." + std::string(200, 'e') + "rr." + std::string(50, 'e') + "!", Serve("r-rr", std::string(250, 'e')));
}

TEST_F(TwoQueues, ExactlyTwoHundredEventsAreFollowedByAnotherRound) {
    EXPECT_EQ("." + std::string(200, 'e') + ".!", Serve("", std::string(200, 'e')));
}

} // namespace
