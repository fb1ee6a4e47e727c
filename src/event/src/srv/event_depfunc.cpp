/* What the event task depends on: its settings and the hooks of the product layer. */

#include <uvelcommon_base/uvel_event.h>

#include <cstddef>
#include <uvelhost/assert.h>

static_assert(sizeof(UVEL_EVENT_ADP_HOOK_S) == 32);
static_assert(offsetof(UVEL_EVENT_ADP_HOOK_S, pfIfMainProcess) == 0);
static_assert(offsetof(UVEL_EVENT_ADP_HOOK_S, pfInitDeadloopMon) == 8);
static_assert(offsetof(UVEL_EVENT_ADP_HOOK_S, pfRegEventCallBack) == 16);
static_assert(offsetof(UVEL_EVENT_ADP_HOOK_S, pfGetSelfComTypeId) == 24);

static constexpr char SOURCE[] = "src/event/src/srv/event_depfunc";

KIVO_HOOK g_eventAdpHookFunc[4];
KIVO_HOOK g_eventUmiFunc[2];
KIVO_HOOK g_eventRegOmFunc[1];
KIVO_HOOK g_eventDbmProcFuncHook[1];

enum : uint32_t { IF_MAIN_PROCESS, INIT_DEADLOOP_MON, REG_EVENT_CALLBACK, GET_SELF_COM_TYPE_ID };

/* The third specification is there for the product's eyes only. */
uint32_t g_eventSpecs[3] = {10240, 2048, 0};
static constexpr uint32_t SPECS_IN_REACH = 2;

SYS_APP_INFO_S g_eventdpAppInfo;
uint32_t g_eventSelfPubModuleID;
uint32_t g_eventIoPubModuleID;
uint32_t g_eventSelfPubIpcTID;
uint32_t g_eventTaskID;
uint32_t g_eventQueID;
uint32_t g_eventRpcQueID;

static constexpr uint32_t TASK_PRIORITY = 85;

static bool g_bAppRegistered = false;

void UVEL_EVENT_Api_SetGlobalVariable(uint32_t ulSelfMid, uint32_t ulIoMid, uint32_t ulSelfChannel) {
    g_eventdpAppInfo.ulMid = ulSelfMid;
    g_eventIoPubModuleID = ulIoMid;
    g_eventSelfPubIpcTID = ulSelfChannel;
}

void UVEL_EVENT_Api_SetSpecs(uint32_t ulIndex, uint32_t ulValue) {
    if (ulIndex < SPECS_IN_REACH)
        g_eventSpecs[ulIndex] = ulValue;
}

uint32_t UVEL_EVENT_Api_GetSpecs(uint32_t ulIndex) {
    return ulIndex < SPECS_IN_REACH ? g_eventSpecs[ulIndex] : 0;
}

template <typename Hook>
static void SetIfEmpty(uint32_t ulSlot, Hook pfHook) {
    if (g_eventAdpHookFunc[ulSlot] == nullptr)
        g_eventAdpHookFunc[ulSlot] = reinterpret_cast<KIVO_HOOK>(pfHook);
}

void UVEL_EVENT_Api_SetAdpHook(const UVEL_EVENT_ADP_HOOK_S *pstHooks) {
    if (pstHooks == nullptr)
        return;
    SetIfEmpty(IF_MAIN_PROCESS, pstHooks->pfIfMainProcess);
    SetIfEmpty(INIT_DEADLOOP_MON, pstHooks->pfInitDeadloopMon);
    SetIfEmpty(REG_EVENT_CALLBACK, pstHooks->pfRegEventCallBack);
    SetIfEmpty(GET_SELF_COM_TYPE_ID, pstHooks->pfGetSelfComTypeId);
}

uint32_t UVEL_EVENT_Api_RegApp(void) {
    if (g_bAppRegistered)
        return KIVO_OK;
    g_bAppRegistered = true; /* before the work: a refused record is not published again */
    g_eventdpAppInfo.ulPriority = TASK_PRIORITY;
    return SYS_RegAppInfo(&g_eventdpAppInfo);
}

using NUMBER_HOOK = uint32_t (*)(void);

static uint32_t CallOr(KIVO_HOOK pfHook, uint32_t ulEmpty) {
    return pfHook == nullptr ? ulEmpty : reinterpret_cast<NUMBER_HOOK>(pfHook)();
}

uint32_t UVEL_EVENT_Hook_IfMainProcess(void) {
    return CallOr(g_eventAdpHookFunc[IF_MAIN_PROCESS], 1);
}

uint32_t UVEL_EVENT_Hook_InitDeadloopMon(void) {
    return CallOr(g_eventAdpHookFunc[INIT_DEADLOOP_MON], 0);
}

void UVEL_EVENT_Hook_RegEventCallBack(void) {
    const KIVO_HOOK pfHook = g_eventAdpHookFunc[REG_EVENT_CALLBACK];
    if (pfHook != nullptr)
        pfHook();
}

uint32_t UVEL_EVENT_Hook_GetSelfComTypeId(void) {
    const KIVO_HOOK pfHook = g_eventAdpHookFunc[GET_SELF_COM_TYPE_ID];
    if (pfHook == nullptr)
        qal_assert(SOURCE, __LINE__);
    return CallOr(pfHook, 0);
}

static uint32_t CallWithWords(KIVO_HOOK pfHook, KIVO_WORDS) {
    using WORDS_FUNC =
        uint32_t (*)(uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t);
    if (pfHook == nullptr)
        return 0;
    return reinterpret_cast<WORDS_FUNC>(pfHook)(ulArg1, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8);
}

uint32_t UVEL_EVENT_Hook_Umi_CmdSendMsg(KIVO_WORDS) {
    return CallWithWords(g_eventUmiFunc[0], ulArg1, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8);
}

uint32_t UVEL_EVENT_Hook_Umi_AppendSetDebugMsg(KIVO_WORDS) {
    return CallWithWords(g_eventUmiFunc[1], ulArg1, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8);
}

uint32_t UVEL_EVENT_Hook_CmdInit(void) {
    return CallOr(g_eventRegOmFunc[0], 0);
}

uint32_t UVEL_EVENT_Hook_Dbm_ProcEntry(void *pMsg, uint32_t ulKind, void *pContext, void **ppReply) {
    const auto pfHook = reinterpret_cast<UVEL_EVENT_DBM_HOOK>(g_eventDbmProcFuncHook[0]);
    if (pfHook != nullptr)
        return pfHook(pMsg, ulKind, pContext, ppReply);
    qal_assert(SOURCE, __LINE__);
    return KIVO_FAIL;
}

void UVEL_EVENT_DbgOutput(uint32_t, const char *, ...) {}
