/* Event task: the one task of a process that hands events to the callback registry.
 *
 * Events are sent by any task of the process, arrive from other processes on the task's channel, and, as messages of
 * the configuration database, go to the product's database hook. Each becomes an element of the queue "EVNT", and the
 * task works off the elements one by one, giving way to other tasks in between.
 *
 * Usage, in the product's start-up task:
 *     UVEL_EVENT_Api_SetGlobalVariable(ulMid, ulIoMid, ulChannel);
 *     UVEL_EVENT_Api_SetAdpHook(&stHooks);
 *     UVEL_EVENT_Api_RegApp();
 *     OXM_SetTaskFollowMe(QAL_TaskGetSelf());
 *     SYS_StartApp("EVNT", UVEL_EVENT_TaskEntry);
 *     QAL_EventWrite(g_eventdpAppInfo.ulTaskId, UVEL_EVENT_START_BIT);                       // begin
 *     QAL_EventRead(UVEL_EVENT_START_BIT, QAL_EVENT_ALL, UVELHOST_WAIT_FOREVER, &ulEvents);  // it is up
 *     QAL_EventWrite(g_eventdpAppInfo.ulTaskId, UVEL_EVENT_START_BIT);                       // serve
 * and then in any task:
 *     UVEL_EVENT_Api_SendEventMsg(ulEventId, ulSubEventId, &stRecord, sizeof stRecord);
 *
 * Ownership: a message belongs to whoever holds its element. Writing to the queue gives it away when it succeeds and
 * frees it when it fails; the task frees it when it has been worked off. Messages of the database belong to its hook.
 * Threads: any task sends; the queue is the one place where tasks meet. Specifications, hooks and identifiers are set
 * at start-up, before the task is created. */
#ifndef UVELCOMMON_BASE_UVEL_EVENT_H
#define UVELCOMMON_BASE_UVEL_EVENT_H

#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_types.h>

#include <uvelhost/component.h>

/* Message types. The two invalid ones assert; others than these are left alone, their messages are not freed. */
#define UVEL_EVENT_MSG_INVALID 0U
#define UVEL_EVENT_MSG_INVALID_FREE 1U /* its message is freed */
#define UVEL_EVENT_MSG_DISCARD 2U      /* its message is freed */
#define UVEL_EVENT_MSG_DATABASE 0x1111U
#define UVEL_EVENT_MSG_EVENT 0xABCD1001U

#define UVEL_EVENT_START_BIT 0x1000U /* bit of the handshake with UVEL_EVENT_TaskEntry */

/* What the queues hold. */
typedef struct {
    uint64_t ullMsgType;  /* UVEL_EVENT_MSG_* */
    void *pMsg;           /* the message, which belongs to whoever has read the element */
    uint64_t ullLength;   /* bytes of the message */
    uint64_t ullReserved; /* 0; its low half is handed to the database hook */
} UVEL_EVENT_ELEMENT_S;

/* Body of an event message; the event's data follows. */
typedef struct {
    uint32_t ulEventId;    /* 0 to 1999 */
    uint32_t ulSubEventId; /* value that sub-keys are compared with */
    uint32_t ulReserved;   /* 0 */
} UVEL_EVENT_HEADER_S;

/* Specifications. */
#define UVEL_EVENT_SPEC_QUEUE_DEPTH 0U /* elements of the queue "EVNT", 10240 unless set */
#define UVEL_EVENT_SPEC_1 1U           /* 2048 unless set; kept for the product */

/* ---- hooks that a product installs ---- */

/* Handles a message of the configuration database. A queued one comes with (message, 0, 0, 0) and belongs to the hook
 * from then on; a call comes with (message, 0xFFFFFFFF, context, reply) and is the caller's. */
typedef uint32_t (*UVEL_EVENT_DBM_HOOK)(void *pMsg, uint32_t ulKind, void *pContext, void **ppReply);

/* What the task asks its product for; members may be null. */
typedef struct {
    uint32_t (*pfIfMainProcess)(void);    /* 1: this process registers no component of its own */
    uint32_t (*pfInitDeadloopMon)(void);  /* sets up the watch over endless loops */
    void (*pfRegEventCallBack)(void);     /* registers the product's callbacks and adapters */
    uint32_t (*pfGetSelfComTypeId)(void); /* component type of this process */
} UVEL_EVENT_ADP_HOOK_S;

/* The task's hook tables. UVEL_EVENT_Api_SetAdpHook fills the first, in the order of the record above; a product fills
 * the others itself. */
UVEL_DATA KIVO_HOOK g_eventAdpHookFunc[4];
UVEL_DATA KIVO_HOOK g_eventUmiFunc[2];         /* Umi_CmdSendMsg, Umi_AppendSetDebugMsg */
UVEL_DATA KIVO_HOOK g_eventRegOmFunc[1];       /* CmdInit */
UVEL_DATA KIVO_HOOK g_eventDbmProcFuncHook[1]; /* Dbm_ProcEntry, a UVEL_EVENT_DBM_HOOK */

/* Call the hooks above. An empty slot answers 1 for IfMainProcess and Dbm_ProcEntry and 0 for the others; those of
 * GetSelfComTypeId and Dbm_ProcEntry assert as well. */
UVEL_API uint32_t UVEL_EVENT_Hook_IfMainProcess(void);
UVEL_API uint32_t UVEL_EVENT_Hook_InitDeadloopMon(void);
UVEL_API void UVEL_EVENT_Hook_RegEventCallBack(void);
UVEL_API uint32_t UVEL_EVENT_Hook_GetSelfComTypeId(void);
UVEL_API uint32_t UVEL_EVENT_Hook_Umi_CmdSendMsg(KIVO_WORDS);
UVEL_API uint32_t UVEL_EVENT_Hook_Umi_AppendSetDebugMsg(KIVO_WORDS);
UVEL_API uint32_t UVEL_EVENT_Hook_CmdInit(void);
UVEL_API uint32_t UVEL_EVENT_Hook_Dbm_ProcEntry(void *pMsg, uint32_t ulKind, void *pContext, void **ppReply);

/* ---- settings ---- */

UVEL_DATA uint32_t g_eventSpecs[3];        /* by UVEL_EVENT_SPEC_* */
UVEL_DATA SYS_APP_INFO_S g_eventdpAppInfo; /* what UVEL_EVENT_Api_RegApp publishes */
UVEL_DATA uint32_t g_eventSelfPubModuleID; /* own module id, from the record when the task starts */
UVEL_DATA uint32_t g_eventIoPubModuleID;   /* module id of the I/O process */
UVEL_DATA uint32_t g_eventSelfPubIpcTID;   /* channel of the event task */
UVEL_DATA uint32_t g_eventTaskID;          /* the event task, from the record when it starts */
UVEL_DATA uint32_t g_eventQueID;           /* the queue "EVNT" */
UVEL_DATA uint32_t g_eventRpcQueID;        /* the queue that UVEL_EVENT_QueReadWithEvent prefers; the product's */

/* Sets the own module id (in the application record), the module id of the I/O process and the task's channel. */
UVEL_API void UVEL_EVENT_Api_SetGlobalVariable(uint32_t ulSelfMid, uint32_t ulIoMid, uint32_t ulSelfChannel);

/* Sets and gets a specification, UVEL_EVENT_SPEC_*. Other indices are ignored and answer 0. */
UVEL_API void UVEL_EVENT_Api_SetSpecs(uint32_t ulIndex, uint32_t ulValue);
UVEL_API uint32_t UVEL_EVENT_Api_GetSpecs(uint32_t ulIndex);

/* Copies the hooks of *pstHooks into those slots that are still empty: who installs first stays. Null is ignored. */
UVEL_API void UVEL_EVENT_Api_SetAdpHook(const UVEL_EVENT_ADP_HOOK_S *pstHooks);

/* Publishes the application record with the priority 85, once per process. The result is the host's; 0 for every
 * later call. */
UVEL_API uint32_t UVEL_EVENT_Api_RegApp(void);

/* ---- sending ---- */

/* Sends an event to the event task: a message with a copy of ulDataLen bytes. 0 when the message was handed to the
 * queue, also when that was full: it is freed then and the queue counts it as refused. 1 when data and length disagree
 * (a null pointer with a length, a pointer without) and when memory is short. */
UVEL_API uint32_t UVEL_EVENT_Api_SendEventMsg(uint32_t ulEventId, uint32_t ulSubEventId, const void *pData,
                                              uint32_t ulDataLen);

/* Addresses a message of ulLength bytes to the channel ulChannel of this process and writes it to the event queue.
 * 0 when it is queued; 1 when it was refused, the message is freed then. */
UVEL_API uint32_t UVEL_EVENT_WriteEvtQueue(uint32_t ulChannel, uint32_t ulMsgType, void *pMsg, uint32_t ulLength);

/* ---- the task ---- */

/* Entry of the event task. Waits for UVEL_EVENT_START_BIT, runs UVEL_EVENT_Init, sends the bit to the task that follows
 * (OXM_GetTaskFollowMe), waits for the bit once more, replays the virtual systems that exist and serves the queue for
 * ever. A failure on the way is fatal. */
UVEL_API void UVEL_EVENT_TaskEntry(void);

/* Takes own module and task id from the application record, makes queue and channel, offers the module to database
 * calls, registers the component unless this is the main process, and calls the two hooks of the start. 0; failures are
 * fatal. */
UVEL_API uint32_t UVEL_EVENT_Init(void);
UVEL_API void UVEL_EVENT_CreateQueIpc(void);
UVEL_API void UVEL_EVENT_RegisterRPC(uint32_t ulMid);

/* Serves the queue "EVNT" for ever. */
UVEL_API void UVEL_EVENT_Main(void);

/* Serves the queue "EVNT", waiting for elements, until a read fails; then 0xFFFFFFFF. */
UVEL_API uint32_t UVEL_EVENT_QueReadNoEvent(void);

/* Serves what is in the queues without waiting: everything in g_eventRpcQueID, then up to 200 elements of "EVNT", and
 * so on until "EVNT" is empty; then 0xFFFFFFFF. For products with an event loop of their own. */
UVEL_API uint32_t UVEL_EVENT_QueReadWithEvent(void);

/* Works off one element as its type says. Null asserts. */
UVEL_API void UVEL_EVENT_ProcessMsg(const UVEL_EVENT_ELEMENT_S *pstElement);

/* Notifies the registry of an event message, which has at least its header, and frees it. An element without message is
 * left alone. */
UVEL_API void UVEL_EVENT_ProcessEvtIpcMsg(const UVEL_EVENT_ELEMENT_S *pstElement);

/* Receives for the task's channel, on the host's thread: writes the message to the event queue. What came on another
 * channel and an event message too short for its header are freed with an assertion, what cannot be queued is freed. */
UVEL_API void UVEL_EVENT_IpcCallback(uint32_t ulMsgType, uint32_t ulSrcChannel, uint32_t ulDstChannel, void *pMsg,
                                     uint32_t ulLen);

/* Serves a database call on the host's thread. The result of checking the message when that is not 0, otherwise that of
 * the database hook; 1 for a null message, context or reply. */
UVEL_API uint32_t UVEL_EVENT_RpcCallback(uint32_t ulSrcNode, void *pMsg, uint32_t ulLen, void *pContext,
                                         void **ppReply);

/* Debug output of the event task, switched off for good: outputs nothing. */
UVEL_API void UVEL_EVENT_DbgOutput(uint32_t ulLevel, const char *pszFormat, ...);

#endif
