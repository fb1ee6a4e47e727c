// Notifications of the host, and the events that become of them.

#include "../unit/sample_device.h"
#include "host_scenarios.h"

#include <pthread.h>
#include <thread>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vlan_events.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>

namespace host_scenarios {

namespace {

using namespace sample;

constexpr uint32_t MODULE = 66;
constexpr uint32_t CHANNEL = 119;
constexpr uint32_t LAST_EVENT = 1999;

Transcript *g_log = nullptr;

uint32_t Hear(uint32_t value, void *) {
    g_log->Say("heard " + std::to_string(value));
    return 0;
}

uint32_t HearAndRefuse(uint32_t value, void *) {
    g_log->Say("refused " + std::to_string(value));
    return 3;
}

void MakeQueue() {
    KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
    KIVO_SetKivoCommonSpec(0, 64);
    UVEL_EVENT_Api_SetGlobalVariable(MODULE, 67, CHANNEL);
    g_eventSelfPubModuleID = MODULE;
    kit::Op<IPC_Create>().Returns(0);
    kit::Op<IPC_RPC_RegisterEx>().Returns(0);
    kit::Op<CMNGA_ModuleRegister>().Returns(0);
    EXPECT_EQ(0u, kit::Op<QAL_QueueCreate>().Real("EVNT", 64, sizeof(UVEL_EVENT_ELEMENT_S), &g_eventQueID));
}

void LoadDeviceAndMakeQueue() {
    Load();
    MakeQueue();
}

/* What a run that went wrong has left in the queue. */
void EmptyQueue() {
    UVEL_EVENT_ELEMENT_S element{};
    while (kit::Op<QAL_QueueRead>().Real(g_eventQueID, &element, sizeof element, 0) == 0)
        kit::Op<IPC_FreeMsg>().Real(element.pMsg);
}

/* Listeners for every event while it lives, taken off again with memory and lists in whatever state they are. */
class Listeners {
  public:
    explicit Listeners(Transcript &log) {
        g_log = &log;
        EmptyQueue();
        for (uint32_t event = 1; event < 64; ++event)
            (void)UVEL_EventCallBackReg(1, event, UVEL_EVENT_ANY_VALUE, 5, 1, 1, Hear);
        for (const uint32_t event : {1101u, 1102u, 1200u, 1201u, LAST_EVENT}) {
            (void)UVEL_EventCallBackReg(1, event, UVEL_EVENT_ANY_VALUE, 5, 1, 0, Hear);
            (void)UVEL_EventCallBackReg(2, event, UVEL_EVENT_ANY_VALUE, 9, 1, 1, HearAndRefuse);
        }
    }
    ~Listeners() {
        for (uint32_t event = 1; event <= LAST_EVENT; ++event) {
            (void)UVEL_EventCallBackUnReg(1, event, UVEL_EVENT_ANY_VALUE, Hear);
            (void)UVEL_EventCallBackUnReg(2, event, UVEL_EVENT_ANY_VALUE, HearAndRefuse);
        }
    }
    Listeners(const Listeners &) = delete;
    Listeners &operator=(const Listeners &) = delete;
};

/* ---- the adapters ---- */

void TellInterfaces(Transcript &log) {
    const Listeners listeners(log);
    const uint32_t flags = 65;
    for (const uint32_t index : {UPLINK, ACCESS_PORT, SUB_INTERFACE, TRUNK}) {
        for (const uint32_t event : {2u, 3u, 6u, 25u})
            log.Ask(KIVO_Adapt_IFEvtCB, event, index);
        log.Ask(KIVO_Adapt_IfLoopDeleteEvtCB, 6, index);
        for (const uint32_t command : {0u, 1u, 3u, 7u, 12u, 23u})
            log.Ask(KIVO_Adapt_IFNotifyEvtCB, index, command, 1, 2);
        for (const uint32_t command : {2u, 3u, 7u, 8u})
            log.Ask(KIVO_Adapt_IOCTLCB, command, 1, index, &flags);
        log.Ask(KIVO_Adapt_IOCTLCB_L2SUBIF, 12, 1, index, &flags);
        log.Ask(KIVO_Adapt_PortSwitchEvtCB, &index, 193, nullptr);
        const uint32_t address = 0x0302010A;
        log.Ask(KIVO_Adapt_IPEvtCB, &index, 16, &address);
        log.Ask(KIVO_Adapt_IFCfgCheckExtend, 42, index, 2, 3);
    }
    for (const uint32_t kind : {0u, 1u, 2u, 3u}) {
        log.Ask(KIVO_Adapt_SlotEvtCB, kind, 1, 2);
        log.Ask(KIVO_Adapt_CardEvtCB, kind, 1, 2, 3);
    }
    log.Ask(KIVO_Adapt_VrfSetCB, 10, BLUE);
    log.Ask(KIVO_Adapt_BdEvtCB, 0, 500, uint16_t{1});
    log.Ask(KIVO_Adapt_CfmRecoveOverCB);
    log.Ask(UVEL_EVENT_QueReadWithEvent);
}

void TellVlans(Transcript &log) {
    const Listeners listeners(log);
    const uint16_t vlans[2] = {12, 13};
    uint16_t other = 13;
    uint32_t attribute = 5, bitmap[128] = {1, 2, 3};
    const uint32_t port = 0;
    for (const uint32_t event : {577u, 578u, 579u, 580u, 582u, L2IF_EVT_NOW | 579u})
        log.Ask(KIVO_Adapt_VlanBatchEvtCB, nullptr, event, bitmap);
    for (const uint32_t event : {49u, 65u})
        log.Ask(KIVO_Adapt_SubVlanEvtCB, vlans, event, &other);
    log.Ask(KIVO_Adapt_VlanSetAttrEvtCB, vlans, L2IF_EVT_NOW | 81, &attribute);
    for (const uint32_t event : {129u, 130u})
        log.Ask(KIVO_Adapt_L2ifVlanUpDownEvtCB, vlans, event, nullptr);
    log.Ask(UVEL_Vlan_BuildRun, vlans, 368, &attribute);
    struct {
        L2IF_PORT_LIST_S head;
        uint32_t ports[2];
    } ports = {{0, 2}, {3, 4}};
    for (const uint32_t event : {161u, 177u, 179u})
        log.Ask(KIVO_Adapt_VlanAddDelPortEvtCB, vlans, event, &ports);
    struct {
        L2IF_VLAN_LIST_S head;
        uint16_t ids[2];
    } list = {{2}, {12, 13}};
    log.Ask(KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc, &list.head, &ports.head);
    L2IF_QINQ_DATA_S qinq = {};
    for (const uint32_t event : {337u, 353u, L2IF_EVT_NOW | 337u})
        log.Ask(KIVO_Adapt_QinQEvtCB, &port, event, &qinq);
    log.Ask(KIVO_Adapt_PortChgEvtCB, &port, 241, &other);
    log.Ask(KIVO_Adapt_PortHasCfgEvtCB, nullptr, 1, nullptr);
    for (const uint32_t event : {2u, 3u, 7u, 8u})
        log.Ask(KIVO_Adapt_TrkMemChgEvtCB, 3, event, MEMBER_UP);
    log.Ask(KIVO_Adapt_TrkMemHasCfgEvtCB, 3, 11, nullptr);
    log.Ask(KIVO_Adapt_TrunkDelEvtCB, 3, 6, 0);
    log.Ask(UVEL_EVENT_QueReadWithEvent);
}

void TellVirtualSystems(Transcript &log) {
    const Listeners listeners(log);
    uint16_t id = 5;
    log.Ask(KIVO_VsysNotifyCallBack, VRF_EVT_CREATED, &id);
    log.Ask(KIVO_VsysNotifyCallBack, VRF_EVT_DELETED, &id);
    log.Ask(KIVO_VsysRecoverInit);
    log.Ask(UVEL_EVENT_QueReadWithEvent);
}

/* ---- the event task ---- */

void SendEvents(Transcript &log) {
    const Listeners listeners(log);
    const uint32_t data = 7;
    for (const uint32_t event : {1u, 1101u, LAST_EVENT})
        log.Ask(UVEL_EVENT_Api_SendEventMsg, event, 4, &data, 4);
    void *message = kit::Op<IPC_AllocMsg_X>().Real(MODULE, 16);
    std::memset(message, 0, 16);
    UVEL_EVENT_IpcCallback(UVEL_EVENT_MSG_EVENT, 1, CHANNEL, message, 16);
    for (const uint32_t type : {UVEL_EVENT_MSG_INVALID_FREE, UVEL_EVENT_MSG_DISCARD}) {
        const UVEL_EVENT_ELEMENT_S element = {type, kit::Op<IPC_AllocMsg_X>().Real(MODULE, 16), 16, 0};
        UVEL_EVENT_ProcessMsg(&element);
    }
    log.Ask(UVEL_EVENT_QueReadWithEvent);
    log.Ask(UVEL_GetMidOfEventCBErr);
}

void AnswerCalls(Transcript &log) {
    const DBI_MSG_HEAD_S head = {DBI_MAGIC, DBI_VERSION, sizeof head, 0};
    void *message = kit::Op<IPC_AllocMsg_X>().Real(MODULE, sizeof head);
    std::memcpy(message, &head, sizeof head);
    uint32_t context = 0;
    void *reply = nullptr;
    log.Ask(UVEL_EVENT_RpcCallback, 1, message, sizeof head, &context, &reply);
    const UVEL_EVENT_ELEMENT_S element = {UVEL_EVENT_MSG_DATABASE, message, sizeof head, 0};
    UVEL_EVENT_ProcessMsg(&element);
    kit::Op<IPC_FreeMsg>().Real(message);
}

uint32_t Zero() {
    return 0;
}

void PrepareTask() {
    LoadDeviceAndMakeQueue();
    const UVEL_EVENT_ADP_HOOK_S hooks = {Zero, Zero, nullptr, Zero};
    UVEL_EVENT_Api_SetAdpHook(&hooks);
    kit::Op<QAL_EventRead>().Returns(0);
    kit::Op<QAL_EventWrite>().Returns(0);
    /* the last step before the endless loop */
    kit::Op<L3VPN_ScanVrfIdAndVrfNameFinish>().Does([] { pthread_exit(nullptr); });
}

void StartTask(Transcript &log) {
    EmptyQueue();
    QAL_QueueDelete(g_eventQueID);
    log.Ask(UVEL_EVENT_Api_RegApp);
    std::thread(UVEL_EVENT_TaskEntry).join();
    log.Say(std::to_string(kit::TakeFatals().size()) + " fatal errors");
}

void Register(Transcript &) {
    KIVO_RegEventCallBack();
}

} // namespace

std::vector<Scenario> EventScenarios() {
    return {{"InterfaceNotifications", Life::SHARED, LoadDeviceAndMakeQueue, TellInterfaces},
            {"VlanNotifications", Life::SHARED, LoadDeviceAndMakeQueue, TellVlans},
            {"VirtualSystems", Life::SHARED, LoadDeviceAndMakeQueue, TellVirtualSystems},
            {"Events", Life::SHARED, MakeQueue, SendEvents},
            {"Calls", Life::SHARED, MakeQueue, AnswerCalls},
            {"TaskStart", Life::ONCE, PrepareTask, StartTask},
            {"Registration", Life::ONCE, MakeQueue, Register}};
}

} // namespace host_scenarios
