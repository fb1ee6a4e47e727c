// Opening the configuration database, its task, and the way back when something fails.

#include "kit.h"

#include <chrono>
#include <cstring>
#include <pthread.h>
#include <thread>
#include <uvelcommon_base/kivo_confdb.h>

namespace {

constexpr int32_t SET = 77;
auto *const CONNECTION = reinterpret_cast<DB_CONN_S *>(0x5000);

using Calls = std::vector<std::string>;

const Calls OPENING{
    "MESH_EpollCreate()",
    "db_create_sub_connect(ptr, uVEL_AdaptConnectEpoll, ptr)",
    "QAL_CreateTask(\"KIVODB_ConnTask\", ptr, uVEL_AdaptConnEpollTask, 85, 0, ptr)",
    "db_sub_kv_with_conn(ptr, \"system_info\", ptr, ptr)",
    "db_sub_kv_with_conn(ptr, \"devm_global\", ptr, ptr)",
};

/* A host on which everything succeeds and nothing runs. */
class ConfdbConnection : public testing::Test {
  protected:
    ConfdbConnection() {
        kit::Op<MESH_EpollCreate>().Returns(SET);
        kit::Op<MESH_EpollCtl>().Returns(0);
        kit::Op<MESH_Close>().Returns(0);
        kit::Op<db_create_sub_connect>().Does([](const DB_CONN_DESC_S *, DB_CONNECT_CB, DB_CONN_S **connection) {
            *connection = CONNECTION;
            return 0U;
        });
        kit::Op<db_sub_kv_with_conn>().Returns(0);
        kit::Op<QAL_CreateTask>().Returns(0);
    }

    kit::Recorder recorder{{"MESH_", "db_", "QAL_", "DEV"}};
};

TEST_F(ConfdbConnection, OpensSetConnectionTaskAndSubscriptionsInThisOrder) {
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(OPENING, recorder.Calls());
}

TEST_F(ConfdbConnection, SaysWhereItConnectsToAndAsWhom) {
    const uint8_t zeros[sizeof(DB_CONN_DESC_S) - 16] = {};
    int checked = 0;
    kit::Op<db_create_sub_connect>().Does([&](const DB_CONN_DESC_S *desc, DB_CONNECT_CB, DB_CONN_S **) {
        EXPECT_STREQ("shm:unix_emserver", desc->pszEndpoint);
        EXPECT_STREQ("osc", desc->pszClient);
        EXPECT_EQ(0, std::memcmp(zeros, reinterpret_cast<const uint8_t *>(desc) + 16, sizeof zeros));
        return checked++ == 0 ? 0U : 1U;
    });
    kit::Op<QAL_CreateTask>().Does(
        [&](const char *, uint32_t *, QAL_TASK_ENTRY, uint32_t, uint32_t, const uintptr_t arguments[QAL_TASK_ARGS]) {
            for (uint32_t i = 0; i < QAL_TASK_ARGS; ++i)
                EXPECT_EQ(0u, arguments[i]);
            ++checked;
            return 0U;
        });
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(2, checked);
}

TEST_F(ConfdbConnection, SubscribesToAllChangesAndToWhatIsThere) {
    std::vector<DB_KV_CB> callbacks;
    kit::Op<db_sub_kv_with_conn>().Does(
        [&](DB_CONN_S *connection, const char *, const DB_SUB_DESC_S *desc, uint32_t *) {
            DB_SUB_DESC_S expected;
            std::memset(&expected, 0, sizeof expected);
            expected.ulChangeMask = 15;
            expected.pfCallback = desc->pfCallback;
            expected.ucFromStart = 1;
            EXPECT_EQ(0, std::memcmp(&expected, desc, sizeof expected));
            EXPECT_EQ(CONNECTION, connection);
            callbacks.push_back(desc->pfCallback);
            return 0U;
        });
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ((std::vector<DB_KV_CB>{KIVO_SysNameCallback, KIVO_SysMacCallback}), callbacks);
}

TEST_F(ConfdbConnection, OnceOpenNoFurtherHostCallIsMade) {
    uVEL_Adapt_SubPubEvent();
    recorder.Clear();
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(Calls(), recorder.Calls());
}

TEST_F(ConfdbConnection, WithoutASetNothingIsOpenedAndTheNextCallTriesAgain) {
    for (const int32_t failure : {-1, -24}) {
        kit::Op<MESH_EpollCreate>().FailsOn(1, failure);
        uVEL_Adapt_SubPubEvent();
        EXPECT_EQ(Calls{"MESH_EpollCreate()"}, recorder.Calls());
        recorder.Clear();
    }
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(OPENING, recorder.Calls());
}

TEST_F(ConfdbConnection, WithoutAConnectionTheSetIsClosedAndTheNextCallTriesAgain) {
    kit::Op<db_create_sub_connect>().FailsOn(1);
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ((Calls{OPENING[0], OPENING[1], "MESH_Close(77)"}), recorder.Calls());
    recorder.Clear();
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(OPENING, recorder.Calls());
}

TEST_F(ConfdbConnection, WithoutATaskTheSetIsClosedAndTheNextCallTriesAgain) {
    kit::Op<QAL_CreateTask>().FailsOn(1);
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ((Calls{OPENING[0], OPENING[1], OPENING[2], "MESH_Close(77)"}), recorder.Calls());
    recorder.Clear();
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(OPENING, recorder.Calls());
}

TEST_F(ConfdbConnection, ASetThatCannotBeClosedIsForgottenAllTheSame) {
    kit::Op<QAL_CreateTask>().FailsOn(1);
    kit::Op<MESH_Close>().FailsOn(1);
    uVEL_Adapt_SubPubEvent();
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(2u, kit::Op<MESH_EpollCreate>().Calls());
}

TEST_F(ConfdbConnection, AFailedSubscriptionIsNotReported) {
    kit::Op<db_sub_kv_with_conn>().FailsOn(1);
    uVEL_Adapt_SubPubEvent();
    uVEL_Adapt_SubPubEvent();
    EXPECT_EQ(OPENING, recorder.Calls());
}

TEST_F(ConfdbConnection, DescriptorsOfTheClientGoIntoTheSetAndOutOfIt) {
    kit::Op<db_create_sub_connect>().Does([](const DB_CONN_DESC_S *, DB_CONNECT_CB connect, DB_CONN_S **) {
        connect(12, 0);
        connect(13, 0);
        connect(12, 1);
        return 0U;
    });
    std::vector<uint32_t> added;
    kit::Op<MESH_EpollCtl>().Does([&](int32_t, uint32_t, int32_t, const MESH_EPOLL_EVENT_S *event) {
        if (event != nullptr) {
            EXPECT_EQ(1u, event->ulEvents);
            added.push_back(event->ulFd);
        }
        return 0U;
    });
    uVEL_Adapt_SubPubEvent();
    const Calls calls = recorder.Calls();
    ASSERT_EQ(8u, calls.size());
    EXPECT_EQ("MESH_EpollCtl(77, 0, 12, ptr)", calls[2]);
    EXPECT_EQ("MESH_EpollCtl(77, 0, 13, ptr)", calls[3]);
    EXPECT_EQ("MESH_EpollCtl(77, 2, 12, null)", calls[4]);
    EXPECT_EQ((std::vector<uint32_t>{12, 13}), added);
}

TEST_F(ConfdbConnection, TheResultOfTheSetIsPassedOn) {
    EXPECT_EQ(0u, uVEL_AdaptConnectEpollCtrl(5, 6, 0));
    EXPECT_EQ(0u, uVEL_AdaptConnectEpollCtrl(5, 6, 1));
    kit::Op<MESH_EpollCtl>().Returns(17);
    EXPECT_EQ(17u, uVEL_AdaptConnectEpollCtrl(5, 6, 0));
    EXPECT_EQ(17u, uVEL_AdaptConnectEpollCtrl(5, 6, 0xFFFFFFFF));
    EXPECT_EQ((Calls{"MESH_EpollCtl(5, 0, 6, ptr)", "MESH_EpollCtl(5, 2, 6, null)", "MESH_EpollCtl(5, 0, 6, ptr)",
                     "MESH_EpollCtl(5, 2, 6, null)"}),
              recorder.Calls());
}

TEST_F(ConfdbConnection, BeforeTheOpeningADescriptorGoesToNoSet) {
    uVEL_AdaptConnectEpoll(9, 0);
    EXPECT_EQ(-1, std::get<0>(kit::Op<MESH_EpollCtl>().Last()));
}

/* ---- the task: runs until the waits of the script are over */

class ConfdbTask : public ConfdbConnection {
  protected:
    ConfdbTask() {
        kit::Op<db_handle_event>().Returns(0);
        kit::Op<QAL_TaskRunDelay>().Does([](uint32_t, uint32_t) {});
        uVEL_Adapt_SubPubEvent();
        recorder.Clear();
    }

    struct Ready {
        int32_t result;
        std::vector<uint32_t> descriptors;
    };
    void Run(std::vector<Ready> script) {
        std::size_t step = 0;
        kit::Op<MESH_EpollWait>().Does([&](int32_t, MESH_EPOLL_EVENT_S *events, uint32_t, int32_t) {
            if (step == script.size())
                pthread_exit(nullptr);
            const Ready &ready = script[step++];
            for (std::size_t i = 0; i < ready.descriptors.size(); ++i)
                events[i].ulFd = ready.descriptors[i];
            pthread_getname_np(pthread_self(), name, sizeof name);
            return ready.result;
        });
        std::thread(uVEL_AdaptConnEpollTask).join();
    }

    char name[16] = {};
};

const char WAIT[] = "MESH_EpollWait(77, ptr, 32, 0xFFFFFFFF)";
const char PAUSE[] = "QAL_TaskRunDelay(100, 10)";

TEST_F(ConfdbTask, HandlesWhatIsReadyInItsOrderAndPausesAfterEveryBatch) {
    Run({{3, {31, 30, 32}}, {1, {30}}});
    EXPECT_EQ((Calls{WAIT, "db_handle_event(31)", "db_handle_event(30)", "db_handle_event(32)", PAUSE, WAIT,
                     "db_handle_event(30)", PAUSE, WAIT}),
              recorder.Calls());
    EXPECT_STREQ("KIVODB_ConnTask", name);
}

TEST_F(ConfdbTask, PausesAfterAnEmptyBatchToo) {
    Run({{0, {}}, {0, {}}});
    EXPECT_EQ((Calls{WAIT, PAUSE, WAIT, PAUSE, WAIT}), recorder.Calls());
}

TEST_F(ConfdbTask, AFailedWaitIsTriedAgainASecondLater) {
    const auto begin = std::chrono::steady_clock::now();
    Run({{-5, {}}, {1, {30}}});
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(took, std::chrono::seconds(1));
    EXPECT_LT(took, std::chrono::seconds(5));
    EXPECT_EQ((Calls{WAIT, WAIT, "db_handle_event(30)", PAUSE, WAIT}), recorder.Calls());
}

TEST_F(ConfdbTask, AnEventThatCannotBeHandledDoesNotStopTheOthers) {
    kit::Op<db_handle_event>().Returns(1);
    Run({{2, {30, 31}}});
    EXPECT_EQ((Calls{WAIT, "db_handle_event(30)", "db_handle_event(31)", PAUSE, WAIT}), recorder.Calls());
}

TEST_F(ConfdbTask, AFullBatchIsHandledWholeAndMoreThanThereIsRoomForIsNotBelieved) {
    std::vector<uint32_t> all(32);
    for (uint32_t i = 0; i < 32; ++i)
        all[i] = 100 + i;
    Run({{32, all}, {33, all}});
    EXPECT_EQ(64u, kit::Op<db_handle_event>().Calls());
    EXPECT_EQ(131, std::get<0>(kit::Op<db_handle_event>().Last()));
}

} // namespace
