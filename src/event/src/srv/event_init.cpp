/* How the event task comes up: queue, channel, database calls, component. */

#include <uvelcommon_base/uvel_event.h>

#include <uvelhost/assert.h>
#include <uvelhost/ipc.h>
#include <uvelhost/queue.h>

static constexpr char SOURCE[] = "src/event/src/srv/event_init";

void UVEL_EVENT_CreateQueIpc(void) {
    const uint32_t ulDepth = UVEL_EVENT_Api_GetSpecs(UVEL_EVENT_SPEC_QUEUE_DEPTH);
    if (QAL_QueueCreate("EVNT", ulDepth, sizeof(UVEL_EVENT_ELEMENT_S), &g_eventQueID) != 0) {
        QALFatalError_X(SOURCE, __LINE__);
        return;
    }
    if (IPC_Create(g_eventSelfPubIpcTID, IPC_MODE_CALLBACK, UVEL_EVENT_IpcCallback) != 0)
        QALFatalError_X(SOURCE, __LINE__);
}

void UVEL_EVENT_RegisterRPC(uint32_t ulMid) {
    if (IPC_RPC_RegisterEx(ulMid, IPC_RPC_MODE_DIRECT, IPC_RPC_TYPE_SYNC, UVEL_EVENT_RpcCallback) != 0)
        QALFatalError_X(SOURCE, __LINE__);
}

uint32_t UVEL_EVENT_Init(void) {
    g_eventSelfPubModuleID = g_eventdpAppInfo.ulMid;
    g_eventTaskID = g_eventdpAppInfo.ulTaskId;
    UVEL_EVENT_CreateQueIpc();
    UVEL_EVENT_RegisterRPC(g_eventSelfPubModuleID);
    if (UVEL_EVENT_Hook_IfMainProcess() != 1 &&
        CMNGA_ModuleRegister(g_eventSelfPubModuleID, UVEL_EVENT_Hook_GetSelfComTypeId()) != 0)
        QALFatalError_X(SOURCE, __LINE__);
    (void)UVEL_EVENT_Hook_InitDeadloopMon();
    UVEL_EVENT_Hook_RegEventCallBack();
    return KIVO_OK;
}
