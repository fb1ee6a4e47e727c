/* How the event task comes up, and with it the whole library. */

#include "kit.h"

#include <array>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <mutex>
#include <sys/wait.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>

namespace {

const kit::Sources INIT{"src/event/src/srv/event_init"};
const kit::Sources MAIN{"src/event/src/srv/event_main"};
const kit::Sources DEPFUNC{"src/event/src/srv/event_depfunc"};

std::string g_hooksCalled;

UVEL_EVENT_ADP_HOOK_S Hooks() {
    return {[] {
                g_hooksCalled += "main? ";
                return 0u;
            },
            [] {
                g_hooksCalled += "deadloop ";
                return 1u; /* not looked at */
            },
            [] { g_hooksCalled += "callbacks "; },
            [] {
                g_hooksCalled += "type? ";
                return 14u;
            }};
}

void InstallHooks() {
    const UVEL_EVENT_ADP_HOOK_S hooks = Hooks();
    UVEL_EVENT_Api_SetAdpHook(&hooks);
}

class EventStart : public testing::Test {
  protected:
    EventStart() {
        UVEL_EVENT_Api_SetGlobalVariable(66, 67, 119);
        g_eventdpAppInfo.ulTaskId = 1234;
        kit::Op<QAL_QueueCreate>().Does([](const char *, uint32_t, uint32_t, uint32_t *queue) {
            *queue = 5;
            return 0u;
        });
        kit::Op<IPC_Create>().Returns(0);
        kit::Op<IPC_RPC_RegisterEx>().Returns(0);
        kit::Op<CMNGA_ModuleRegister>().Returns(0);
        kit::Op<QAL_EventRead>().Returns(0);
        kit::Op<QAL_EventWrite>().Returns(0);
        kit::Op<OXM_GetTaskFollowMe>().Returns(4321);
    }
};

TEST_F(EventStart, TheTaskTakesItsIdentityFromTheApplicationRecord) {
    EXPECT_EQ(0u, UVEL_EVENT_Init());
    EXPECT_EQ(66u, g_eventSelfPubModuleID);
    EXPECT_EQ(1234u, g_eventTaskID);
    EXPECT_EQ(5u, g_eventQueID);
}

TEST_F(EventStart, AMainProcessRegistersNoComponent) {
    kit::Recorder recorder;
    EXPECT_EQ(0u, UVEL_EVENT_Init()) << "without hooks it is the main process";
    EXPECT_EQ((std::vector<std::string>{"QAL_QueueCreate(\"EVNT\", 10240, 32, ptr)",
                                        "IPC_Create(119, 2, UVEL_EVENT_IpcCallback)",
                                        "IPC_RPC_RegisterEx(66, 0, 2, UVEL_EVENT_RpcCallback)"}),
              recorder.Calls());
}

TEST_F(EventStart, AMainProcessCallsTheOtherHooksOfTheStart) {
    InstallHooks();
    g_eventAdpHookFunc[0] = reinterpret_cast<KIVO_HOOK>(+[] {
        g_hooksCalled += "main? ";
        return 1u;
    });
    EXPECT_EQ(0u, UVEL_EVENT_Init());
    EXPECT_EQ("main? deadloop callbacks ", g_hooksCalled);
    EXPECT_EQ(0u, kit::Op<CMNGA_ModuleRegister>().Calls());
}

TEST_F(EventStart, AnyOtherProcessRegistersAsAComponentOfItsType) {
    InstallHooks();
    UVEL_EVENT_Api_SetSpecs(0, 300);
    kit::Recorder recorder;
    EXPECT_EQ(0u, UVEL_EVENT_Init());
    EXPECT_EQ((std::vector<std::string>{
                  "QAL_QueueCreate(\"EVNT\", 300, 32, ptr)", "IPC_Create(119, 2, UVEL_EVENT_IpcCallback)",
                  "IPC_RPC_RegisterEx(66, 0, 2, UVEL_EVENT_RpcCallback)", "CMNGA_ModuleRegister(66, 14)"}),
              recorder.Calls());
    EXPECT_EQ("main? type? deadloop callbacks ", g_hooksCalled);
}

TEST_F(EventStart, OnlyTheAnswerOneMakesAMainProcess) {
    static uint32_t s_answer;
    const UVEL_EVENT_ADP_HOOK_S hooks = {[] { return s_answer; }, nullptr, nullptr, [] { return 14u; }};
    UVEL_EVENT_Api_SetAdpHook(&hooks);
    for (const uint32_t answer : {0u, 2u, 0xFFFFFFFFu, 1u}) {
        s_answer = answer;
        EXPECT_EQ(0u, UVEL_EVENT_Init());
    }
    EXPECT_EQ(3u, kit::Op<CMNGA_ModuleRegister>().Calls());
}

TEST_F(EventStart, AComponentWithoutATypeAssertsAndRegistersTypeZero) {
    const UVEL_EVENT_ADP_HOOK_S hooks = {[] { return 0u; }, nullptr, nullptr, nullptr};
    UVEL_EVENT_Api_SetAdpHook(&hooks);
    EXPECT_EQ(0u, UVEL_EVENT_Init());
    EXPECT_EQ(DEPFUNC, kit::TakeAsserts());
    EXPECT_EQ((std::tuple{66u, 0u}), kit::Op<CMNGA_ModuleRegister>().Last());
}

/* ---- every failure is fatal ---- */

TEST_F(EventStart, WithoutAQueueIsFatalAndNoChannelIsOpened) {
    kit::Op<QAL_QueueCreate>().Returns(1);
    UVEL_EVENT_CreateQueIpc();
    EXPECT_EQ(INIT, kit::TakeFatals());
    EXPECT_EQ(0u, kit::Op<IPC_Create>().Calls());
}

TEST_F(EventStart, WithoutAChannelIsFatal) {
    kit::Op<IPC_Create>().Returns(1);
    UVEL_EVENT_CreateQueIpc();
    EXPECT_EQ(INIT, kit::TakeFatals());
}

TEST_F(EventStart, WithoutDatabaseCallsIsFatal) {
    kit::Op<IPC_RPC_RegisterEx>().Returns(1);
    UVEL_EVENT_RegisterRPC(77);
    EXPECT_EQ(INIT, kit::TakeFatals());
    EXPECT_EQ(77u, std::get<0>(kit::Op<IPC_RPC_RegisterEx>().Last()));
}

TEST_F(EventStart, WithoutItsPlaceAmongTheComponentsIsFatal) {
    InstallHooks();
    kit::Op<CMNGA_ModuleRegister>().Returns(1);
    EXPECT_EQ(0u, UVEL_EVENT_Init());
    EXPECT_EQ(INIT, kit::TakeFatals());
    EXPECT_EQ("main? type? deadloop callbacks ", g_hooksCalled) << "the two hooks of the start in every case";
}

TEST_F(EventStart, AFailedHandshakeIsFatalAndTheTaskDoesNotServe) {
    kit::Op<QAL_EventRead>().FailsOn(1);
    UVEL_EVENT_TaskEntry();
    EXPECT_EQ(MAIN, kit::TakeFatals());
    EXPECT_EQ(0u, kit::Op<QAL_QueueCreate>().Calls());

    kit::Op<QAL_EventWrite>().FailsOn(1);
    UVEL_EVENT_TaskEntry();
    EXPECT_EQ(MAIN, kit::TakeFatals());
    EXPECT_EQ(2u, kit::Op<QAL_EventRead>().Calls());

    kit::Op<QAL_EventRead>().FailsOn(2);
    UVEL_EVENT_TaskEntry();
    EXPECT_EQ(MAIN, kit::TakeFatals());
    EXPECT_EQ(0u, kit::Op<L3VPN_GetFirstVrfIdAndVrfName>().Calls());
    EXPECT_EQ(0u, kit::Op<QAL_QueueRead>().Calls());
}

struct FatalRow {
    const char *what;
    void (*fail)();
};

TEST_F(EventStart, AFatalErrorEndsTheProcess) {
    const FatalRow rows[] = {
        {"first wait", [] { kit::Op<QAL_EventRead>().FailsOn(1); }},
        {"queue", [] { kit::Op<QAL_QueueCreate>().Returns(1); }},
        {"channel", [] { kit::Op<IPC_Create>().Returns(1); }},
        {"calls", [] { kit::Op<IPC_RPC_RegisterEx>().Returns(1); }},
        {"component", [] { kit::Op<CMNGA_ModuleRegister>().Returns(1); }},
        {"following task", [] { kit::Op<QAL_EventWrite>().Returns(1); }},
        {"second wait", [] { kit::Op<QAL_EventRead>().FailsOn(2); }},
    };
    for (const FatalRow &row : rows) {
        const int status = kit::StatusOfFreshProcess([&] {
            InstallHooks();
            kit::Op<QALFatalError_X>().Does(nullptr); /* the real one */
            row.fail();
            UVEL_EVENT_TaskEntry();
        });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << row.what << ": " << status;
    }
}

/* ---- the whole road ---- */

/* Lets a task serve until it asks the queue for the n-th time, and keeps it there. */
class Stop {
  public:
    explicit Stop(uint64_t reads) {
        kit::Op<QAL_QueueRead>().Does([this, reads](uint32_t queue, void *element, uint32_t size, uint32_t timeout) {
            if (kit::Op<QAL_QueueRead>().Calls() < reads)
                return kit::Op<QAL_QueueRead>().Real(queue, element, size, timeout);
            std::unique_lock lock(lock_);
            reached_ = true;
            changed_.notify_all();
            changed_.wait(lock, [] { return false; });
            return 1u;
        });
    }

    void Wait() {
        std::unique_lock lock(lock_);
        ASSERT_TRUE(changed_.wait_for(lock, std::chrono::seconds(20), [this] { return reached_; }));
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool reached_ = false;
};

/* The road of a service process from its first call to its first event, with all calls of the library to the host. */
TEST(Bringup, MakesTheseHostCallsInThisOrder) {
    static Stop &s_stop = *new Stop(2); /* the task waits in it until the process ends */
    kit::Op<IPC_Create>().Returns(0);
    kit::Op<IPC_RPC_RegisterEx>().Returns(0);
    kit::Op<CMNGA_ModuleRegister>().Returns(0);
    kit::Op<L3VPN_GetFirstVrfIdAndVrfName>().Does([](uint32_t *vrf, char *name) {
        *vrf = 3;
        std::strcpy(name, "blue");
        return 0u;
    });
    kit::Op<L3VPN_GetNextVrfIdAndVrfName>().Returns(1);
    kit::Op<HA_GetBoardType>().Returns(0);
    kit::Recorder recorder({"QAL_", "IPC_", "CMNGA_", "SYS_RegAppInfo", "L3VPN_", "DLL_", "HA_"});

    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    UVEL_EVENT_Api_SetGlobalVariable(66, 67, 119);
    KIVO_SetKivoCommonSpec(0, 16);
    KIVO_SetPdtOxmCfgSwitch(55, 1);
    const UVEL_EVENT_ADP_HOOK_S hooks = Hooks();
    UVEL_EVENT_Api_SetAdpHook(&hooks);
    EXPECT_EQ(0u, UVEL_EventCallBackReg(66, 1101, UVEL_EVENT_ANY_VALUE, 5, 0, 0, [](uint32_t, void *data) {
                  struct {
                      uint32_t vrf;
                      char name[32];
                  } record;
                  std::memcpy(&record, data, sizeof record);
                  EXPECT_EQ(3u, record.vrf);
                  EXPECT_STREQ("blue", record.name);
                  g_hooksCalled += "vsys ";
                  return 0u;
              }));
    EXPECT_EQ(0u, UVEL_EVENT_Api_RegApp());

    /* what the product's start-up task says to the host is not the library's */
    OXM_SetTaskFollowMe(kit::Op<QAL_TaskGetSelf>().Real());
    EXPECT_EQ(0u, SYS_StartApp("EVNT", UVEL_EVENT_TaskEntry));
    const uint32_t task = g_eventdpAppInfo.ulTaskId;
    EXPECT_EQ(0u, kit::Op<QAL_EventWrite>().Real(task, UVEL_EVENT_START_BIT));
    EXPECT_EQ(0u, kit::Op<QAL_EventRead>().Real(UVEL_EVENT_START_BIT, QAL_EVENT_ALL, 20000, nullptr));
    EXPECT_EQ(0u, kit::Op<QAL_QueueAsyWrite>().Real(
                      g_eventQueID, std::array<uint64_t, 4>{UVEL_EVENT_MSG_DISCARD, 0, 0, 0}.data(), 32));
    EXPECT_EQ(0u, kit::Op<QAL_EventWrite>().Real(task, UVEL_EVENT_START_BIT));
    s_stop.Wait();

    std::vector<std::string> calls = recorder.Calls();
    const std::string self = kit::detail::RenderNumber(kit::Op<QAL_TaskGetSelf>().Real());
    EXPECT_EQ((std::vector<std::string>{
                  /* tables */
                  "QAL_HandleInitialize(\"nac-util\", ptr)",
                  "QAL_MemAlloc(1, 0, 960)",
                  /* a module's callback */
                  "QAL_MemAlloc(1, 0, 64000)",
                  "QAL_MemAlloc(1, 0, 88)",
                  "DLL_Insert(ptr, ptr, ptr)",
                  /* the application */
                  "SYS_RegAppInfo(ptr)",
                  /* the task, which the host makes for the product */
                  "QAL_CreateTask(\"EVNT\", ptr, UVEL_EVENT_TaskEntry, 85, 0, null)",
                  "QAL_EventRead(4096, 0, 0xFFFFFFFF, ptr)",
                  "QAL_QueueCreate(\"EVNT\", 10240, 32, ptr)",
                  "IPC_Create(119, 2, UVEL_EVENT_IpcCallback)",
                  "IPC_RPC_RegisterEx(66, 0, 2, UVEL_EVENT_RpcCallback)",
                  "CMNGA_ModuleRegister(66, 14)",
                  "QAL_EventWrite(" + self + ", 4096)",
                  "QAL_EventRead(4096, 0, 0xFFFFFFFF, ptr)",
                  /* the virtual systems that exist */
                  "L3VPN_GetFirstVrfIdAndVrfName(ptr, ptr)",
                  "QAL_TaskRunDelay(200, 20)",
                  "HA_GetBoardType()",
                  "QAL_SecondNow(ptr, ptr)",
                  "QAL_SecondNow(ptr, ptr)",
                  "QAL_TaskRunDelay(200, 20)",
                  "L3VPN_GetNextVrfIdAndVrfName(ptr, ptr)",
                  "L3VPN_ScanVrfIdAndVrfNameFinish()",
                  /* the first element */
                  "QAL_QueueRead(1, ptr, 32, 0xFFFFFFFF)",
                  "IPC_FreeMsg(null)",
                  "QAL_TaskRunDelay(200, 20)",
                  "QAL_QueueRead(1, ptr, 32, 0xFFFFFFFF)",
              }),
              calls);
    EXPECT_EQ("main? type? deadloop callbacks vsys ", g_hooksCalled);
    EXPECT_EQ(task, g_eventTaskID);
}

TEST(Bringup, AFailedReadDoesNotEndTheTask) {
    static Stop &s_stop = *new Stop(5);
    g_eventQueID = 200; /* there is no such queue */
    uint32_t task = 0;
    ASSERT_EQ(0u, QAL_CreateTask("main", &task, UVEL_EVENT_Main, 85, 0, nullptr));
    s_stop.Wait();
}

} // namespace
