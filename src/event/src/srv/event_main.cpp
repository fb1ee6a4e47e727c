/* The road of an event: sent, queued, taken from the queue, notified, freed. */

#include <uvelcommon_base/uvel_event.h>

#include <cstddef>
#include <securec.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/assert.h>
#include <uvelhost/exec.h>
#include <uvelhost/ipc.h>
#include <uvelhost/queue.h>
#include <uvelhost/task.h>

static constexpr char SOURCE[] = "src/event/src/srv/event_main";

static constexpr uint32_t HEADER_SIZE = sizeof(UVEL_EVENT_HEADER_S);
static_assert(sizeof(UVEL_EVENT_HEADER_S) == 12);
static_assert(offsetof(UVEL_EVENT_HEADER_S, ulEventId) == 0);
static_assert(offsetof(UVEL_EVENT_HEADER_S, ulSubEventId) == 4);
static_assert(offsetof(UVEL_EVENT_HEADER_S, ulReserved) == 8);

static constexpr uint32_t ELEMENT_SIZE = sizeof(UVEL_EVENT_ELEMENT_S);
static_assert(sizeof(UVEL_EVENT_ELEMENT_S) == 32);
static_assert(offsetof(UVEL_EVENT_ELEMENT_S, ullMsgType) == 0);
static_assert(offsetof(UVEL_EVENT_ELEMENT_S, pMsg) == 8);
static_assert(offsetof(UVEL_EVENT_ELEMENT_S, ullLength) == 16);
static_assert(offsetof(UVEL_EVENT_ELEMENT_S, ullReserved) == 24);

static constexpr uint32_t MOST_IN_A_ROW = 200; /* elements of the event queue before the preferred queue's turn */
static constexpr uint32_t READ_FAILED = 0xFFFFFFFF;

/* ---- sending ---- */

/* The result of the queue is not passed on on purpose: senders do not learn of a full queue, its counter does. */
uint32_t UVEL_EVENT_Api_SendEventMsg(uint32_t ulEventId, uint32_t ulSubEventId, const void *pData, uint32_t ulDataLen) {
    UVEL_EVENT_DbgOutput(1, "\r\nSendEventMsg eventId=%u,subEventId=%u,dataLen=%u", ulEventId, ulSubEventId, ulDataLen);
    if ((pData == nullptr) != (ulDataLen == 0)) {
        UVEL_EVENT_DbgOutput(1, "\r\nSendEventMsg data error");
        return KIVO_FAIL;
    }
    const uint64_t ullLength = uint64_t{ulDataLen} + HEADER_SIZE;
    void *pMsg = nullptr;
    if (ullLength <= UINT32_MAX)
        pMsg = IPC_AllocMsg_X(g_eventSelfPubModuleID, static_cast<uint32_t>(ullLength));
    if (pMsg == nullptr) {
        UVEL_EVENT_DbgOutput(1, "\r\nSendEventMsg alloc ipc failed");
        return KIVO_FAIL;
    }
    auto *pstHeader = static_cast<UVEL_EVENT_HEADER_S *>(pMsg);
    *pstHeader = UVEL_EVENT_HEADER_S{ulEventId, ulSubEventId, 0};
    if (ulDataLen != 0 && memcpy_s(pstHeader + 1, ulDataLen, pData, ulDataLen) != EOK)
        qal_assert(SOURCE, __LINE__);
    (void)UVEL_EVENT_WriteEvtQueue(g_eventSelfPubIpcTID, UVEL_EVENT_MSG_EVENT, pMsg, static_cast<uint32_t>(ullLength));
    return KIVO_OK;
}

static bool Enqueue(uint32_t ulMsgType, void *pMsg, uint32_t ulLength) {
    const UVEL_EVENT_ELEMENT_S stElement{ulMsgType, pMsg, ulLength, 0};
    return QAL_QueueAsyWrite(g_eventQueID, &stElement, ELEMENT_SIZE) == 0;
}

uint32_t UVEL_EVENT_WriteEvtQueue(uint32_t ulChannel, uint32_t ulMsgType, void *pMsg, uint32_t ulLength) {
    IPC_SetSrcAndDstChannelId(pMsg, ulChannel, ulChannel);
    const uint32_t ulNode = IPC_GetSelfNodeId();
    IPC_SetSrcAndDstNodeId(pMsg, ulNode, ulNode);
    if (Enqueue(ulMsgType, pMsg, ulLength))
        return KIVO_OK;
    (void)IPC_FreeMsg(pMsg);
    return KIVO_FAIL;
}

/* ---- receiving from the host ---- */

void UVEL_EVENT_IpcCallback(uint32_t ulMsgType, uint32_t, uint32_t ulDstChannel, void *pMsg, uint32_t ulLen) {
    if (ulDstChannel != g_eventSelfPubIpcTID) {
        (void)IPC_FreeMsg(pMsg);
        qal_assert(SOURCE, __LINE__);
        return;
    }
    if (ulMsgType == UVEL_EVENT_MSG_DISCARD) {
        (void)IPC_FreeMsg(pMsg);
        return;
    }
    /* Another process made it: without room for the header nobody may look into it. */
    if (ulMsgType == UVEL_EVENT_MSG_EVENT && ulLen < HEADER_SIZE) {
        (void)IPC_FreeMsg(pMsg);
        qal_assert(SOURCE, __LINE__);
        return;
    }
    if (!Enqueue(ulMsgType, pMsg, ulLen)) {
        UVEL_EVENT_DbgOutput(1, "\r\nWrite queue fail.");
        (void)IPC_FreeMsg(pMsg);
    }
}

uint32_t UVEL_EVENT_RpcCallback(uint32_t, void *pMsg, uint32_t, void *pContext, void **ppReply) {
    if (pMsg == nullptr || pContext == nullptr || ppReply == nullptr)
        return KIVO_FAIL;
    const uint32_t ulCheck = DBI_CheckMsg(pMsg);
    return ulCheck != 0 ? ulCheck : UVEL_EVENT_Hook_Dbm_ProcEntry(pMsg, 0xFFFFFFFF, pContext, ppReply);
}

/* ---- working off ---- */

void UVEL_EVENT_ProcessEvtIpcMsg(const UVEL_EVENT_ELEMENT_S *pstElement) {
    if (pstElement == nullptr || pstElement->pMsg == nullptr)
        return;
    auto *pstHeader = static_cast<UVEL_EVENT_HEADER_S *>(pstElement->pMsg);
    (void)UVEL_EventCallBackNotify(pstHeader->ulEventId, pstHeader->ulSubEventId, pstHeader + 1);
    UVEL_EVENT_DbgOutput(2, "\r\nUVEL_EVENT_ProcessEvtIpcMsg eventID=%u,subEventID=%u", pstHeader->ulEventId,
                         pstHeader->ulSubEventId);
    (void)IPC_FreeMsg(pstHeader);
}

void UVEL_EVENT_ProcessMsg(const UVEL_EVENT_ELEMENT_S *pstElement) {
    if (pstElement == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return;
    }
    switch (pstElement->ullMsgType) {
    case UVEL_EVENT_MSG_EVENT:
        UVEL_EVENT_ProcessEvtIpcMsg(pstElement);
        break;
    case UVEL_EVENT_MSG_DATABASE: /* one that is not valid is nobody's: left alone, as its owner cannot be told */
        if (DBI_CheckMsg(pstElement->pMsg) == 0)
            (void)UVEL_EVENT_Hook_Dbm_ProcEntry(pstElement->pMsg, static_cast<uint32_t>(pstElement->ullReserved),
                                                nullptr, nullptr);
        break;
    case UVEL_EVENT_MSG_INVALID:
        qal_assert(SOURCE, __LINE__);
        break;
    case UVEL_EVENT_MSG_INVALID_FREE:
        qal_assert(SOURCE, __LINE__);
        (void)IPC_FreeMsg(pstElement->pMsg);
        break;
    case UVEL_EVENT_MSG_DISCARD:
        (void)IPC_FreeMsg(pstElement->pMsg);
        break;
    default: /* a type that a product keeps for itself; so is its message */
        break;
    }
}

/* Takes one element out of a queue and works it off; false when there was none. */
static bool ServeOne(uint32_t ulQueue, uint32_t ulTimeoutMs) {
    UVEL_EVENT_ELEMENT_S stElement;
    if (QAL_QueueRead(ulQueue, &stElement, ELEMENT_SIZE, ulTimeoutMs) != 0)
        return false;
    UVEL_EVENT_ProcessMsg(&stElement);
    QAL_TaskRunDelay(200, 20);
    return true;
}

uint32_t UVEL_EVENT_QueReadNoEvent(void) {
    while (ServeOne(g_eventQueID, UVELHOST_WAIT_FOREVER)) {
    }
    return READ_FAILED;
}

uint32_t UVEL_EVENT_QueReadWithEvent(void) {
    for (;;) {
        while (ServeOne(g_eventRpcQueID, 0)) {
        }
        for (uint32_t ulServed = 0; ulServed < MOST_IN_A_ROW; ++ulServed)
            if (!ServeOne(g_eventQueID, 0))
                return READ_FAILED;
    }
}

void UVEL_EVENT_Main(void) {
    for (;;)
        (void)UVEL_EVENT_QueReadNoEvent();
}

/* ---- coming up ---- */

static bool WaitForStartBit() {
    uint32_t ulEvents = 0;
    return QAL_EventRead(UVEL_EVENT_START_BIT, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, &ulEvents) == 0;
}

/* The line of the step that failed, 0 when the task is ready to serve. */
static uint32_t ComeUp() {
    if (!WaitForStartBit())
        return __LINE__;
    if (UVEL_EVENT_Init() != KIVO_OK)
        return __LINE__; // unreachable: what fails in it is fatal there
    if (QAL_EventWrite(OXM_GetTaskFollowMe(), UVEL_EVENT_START_BIT) != 0)
        return __LINE__;
    if (!WaitForStartBit())
        return __LINE__;
    return 0;
}

void UVEL_EVENT_TaskEntry(void) {
    const uint32_t ulFailedLine = ComeUp();
    if (ulFailedLine != 0) {
        QALFatalError_X(SOURCE, ulFailedLine);
        return;
    }
    (void)KIVO_VsysRecoverInit();
    UVEL_EVENT_Main();
}
