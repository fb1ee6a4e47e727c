#include <uvelcommon_base/uvel_event_callback.h>

#include <cstddef>
#include <cstring>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelhost/task.h>
#include <uvelhost/time.h>

DLL_S *g_szDllKIVOEvtCBRegTbl;
uint32_t g_ulLastErrMid;

static_assert(UVEL_EVENT_COUNT * sizeof(DLL_S) == 64000);
static_assert(sizeof(UVEL_EVENT_NODE_S) == 88);
static_assert(offsetof(UVEL_EVENT_NODE_S, stNode) == 0);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulMid) == 24);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulSubKey) == 28);
static_assert(offsetof(UVEL_EVENT_NODE_S, ucPriority) == 32);
static_assert(offsetof(UVEL_EVENT_NODE_S, ucContinueOnFailure) == 33);
static_assert(offsetof(UVEL_EVENT_NODE_S, ucAlsoOnStandby) == 34);
static_assert(offsetof(UVEL_EVENT_NODE_S, ucUnregistered) == 35);
static_assert(offsetof(UVEL_EVENT_NODE_S, pfCallback) == 40);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulCalls) == 48);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulFailures) == 52);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulStartSeconds) == 56);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulStartMs) == 64);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulTotalMs) == 72);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulLastResult) == 80);
static_assert(offsetof(UVEL_EVENT_NODE_S, ulWorstMs) == 84);

namespace {

/* A notification on its way through a list. A callback may move any node to another priority, which frees it: pstPlace
 * then falls back to the node before, and a walk that was calling the node goes on with a copy of it. */
struct Walk {
    DLL_NODE_S *pstPlace;          /* how far the walk has come; in the list */
    UVEL_EVENT_NODE_S *pstCurrent; /* the node being called, or stGone */
    Walk *pstOuter;                /* the walk whose callback began this one */
    UVEL_EVENT_NODE_S stGone;
};

} // namespace

/* The walks of the calling task, innermost first. */
static constinit thread_local Walk *t_pstWalks __attribute__((tls_model("initial-exec"))) = nullptr;

static UVEL_EVENT_NODE_S *NodeOf(DLL_NODE_S *pstLinks) {
    return reinterpret_cast<UVEL_EVENT_NODE_S *>(pstLinks);
}

/* The head as the end mark of its circle of nodes. */
static DLL_NODE_S *EndOf(DLL_S *pstList) {
    return reinterpret_cast<DLL_NODE_S *>(pstList);
}

static bool CreateRegistry(uint32_t ulMid) {
    DLL_S *pstTable = static_cast<DLL_S *>(KIVO_MemAlloc(ulMid, UVEL_EVENT_COUNT * sizeof(DLL_S)));
    if (pstTable == nullptr)
        return false;
    for (uint32_t ulEvent = 0; ulEvent < UVEL_EVENT_COUNT; ++ulEvent) {
        DLL_S *pstList = pstTable + ulEvent;
        *pstList = DLL_S{EndOf(pstList), EndOf(pstList), nullptr, 0};
    }
    g_szDllKIVOEvtCBRegTbl = pstTable;
    return true;
}

static bool IsSame(const UVEL_EVENT_NODE_S *pstNode, uint32_t ulMid, uint32_t ulSubKey,
                   UVEL_EVENT_CALLBACK pfCallback) {
    return pstNode->ulMid == ulMid && pstNode->ulSubKey == ulSubKey && pstNode->pfCallback == pfCallback;
}

static UVEL_EVENT_NODE_S *Find(DLL_S *pstList, uint32_t ulMid, uint32_t ulSubKey, UVEL_EVENT_CALLBACK pfCallback) {
    for (DLL_NODE_S *pstLinks = pstList->pstNext; pstLinks != EndOf(pstList); pstLinks = pstLinks->pstNext)
        if (IsSame(NodeOf(pstLinks), ulMid, ulSubKey, pfCallback))
            return NodeOf(pstLinks);
    return nullptr;
}

static void Remove(DLL_S *pstList, UVEL_EVENT_NODE_S *pstNode) {
    for (Walk *pstWalk = t_pstWalks; pstWalk != nullptr; pstWalk = pstWalk->pstOuter) {
        if (pstWalk->pstPlace == &pstNode->stNode)
            pstWalk->pstPlace = pstNode->stNode.pstPrev;
        if (pstWalk->pstCurrent == pstNode) {
            pstWalk->stGone = *pstNode;
            pstWalk->pstCurrent = &pstWalk->stGone;
        }
    }
    DLL_Delete(pstList, &pstNode->stNode);
    (void)KIVO_MemFree(pstNode);
}

/* Before the first node of strictly lower priority, so that equals keep the order in which they came. */
static void InsertByPriority(DLL_S *pstList, UVEL_EVENT_NODE_S *pstNode) {
    DLL_NODE_S *pstNext = pstList->pstNext;
    while (pstNext != EndOf(pstList) && NodeOf(pstNext)->ucPriority >= pstNode->ucPriority)
        pstNext = pstNext->pstNext;
    DLL_Insert(pstList, pstNext->pstPrev, &pstNode->stNode);
}

uint32_t UVEL_EventCallBackReg(uint32_t ulMid, uint32_t ulEventId, uint32_t ulSubKey, uint8_t ucPriority,
                               uint8_t ucContinueOnFailure, uint8_t ucAlsoOnStandby, UVEL_EVENT_CALLBACK pfCallback) {
    if (ulEventId >= UVEL_EVENT_COUNT || pfCallback == nullptr)
        return KIVO_FAIL;
    if (g_szDllKIVOEvtCBRegTbl == nullptr && !CreateRegistry(ulMid))
        return KIVO_FAIL;
    DLL_S *pstList = g_szDllKIVOEvtCBRegTbl + ulEventId;
    UVEL_EVENT_NODE_S *pstNode = Find(pstList, ulMid, ulSubKey, pfCallback);
    if (pstNode != nullptr && pstNode->ucPriority == ucPriority) {
        pstNode->ucContinueOnFailure = ucContinueOnFailure;
        pstNode->ucAlsoOnStandby = ucAlsoOnStandby;
        __atomic_store_n(&pstNode->ucUnregistered, 0, __ATOMIC_RELAXED);
        return KIVO_OK;
    }
    if (pstNode != nullptr)
        Remove(pstList, pstNode);

    pstNode = static_cast<UVEL_EVENT_NODE_S *>(KIVO_MemAlloc(ulMid, sizeof *pstNode));
    if (pstNode == nullptr)
        return KIVO_FAIL;
    memset(pstNode, 0, sizeof *pstNode);
    pstNode->ulMid = ulMid;
    pstNode->ulSubKey = ulSubKey;
    pstNode->ucPriority = ucPriority;
    pstNode->ucContinueOnFailure = ucContinueOnFailure;
    pstNode->ucAlsoOnStandby = ucAlsoOnStandby;
    pstNode->pfCallback = pfCallback;
    InsertByPriority(pstList, pstNode);
    return KIVO_OK;
}

uint32_t UVEL_EventCallBackUnReg(uint32_t ulMid, uint32_t ulEventId, uint32_t ulSubKey,
                                 UVEL_EVENT_CALLBACK pfCallback) {
    if (ulEventId >= UVEL_EVENT_COUNT)
        return KIVO_FAIL;
    if (g_szDllKIVOEvtCBRegTbl == nullptr)
        return KIVO_OK;
    DLL_S *pstList = g_szDllKIVOEvtCBRegTbl + ulEventId;
    for (DLL_NODE_S *pstLinks = pstList->pstNext; pstLinks != EndOf(pstList); pstLinks = pstLinks->pstNext)
        if (IsSame(NodeOf(pstLinks), ulMid, ulSubKey, pfCallback))
            __atomic_store_n(&NodeOf(pstLinks)->ucUnregistered, 1, __ATOMIC_RELAXED); /* a walk may be reading it */
    return KIVO_OK;
}

/* The next node of the walk, null at the end. Nodes that were put in front of the place of a node that is gone were
 * passed with it, although they now stand behind pstPlace. */
static UVEL_EVENT_NODE_S *Advance(DLL_S *pstList, Walk &stWalk) {
    DLL_NODE_S *pstNext = stWalk.pstPlace->pstNext;
    if (stWalk.pstCurrent == &stWalk.stGone)
        while (pstNext != EndOf(pstList) && NodeOf(pstNext)->ucPriority > stWalk.stGone.ucPriority)
            pstNext = pstNext->pstNext;
    stWalk.pstPlace = pstNext;
    stWalk.pstCurrent = pstNext == EndOf(pstList) ? nullptr : NodeOf(pstNext);
    return stWalk.pstCurrent;
}

/* What a node books is written whole and without an order: threads of the host may notify one event at once, and the
 * counts may then miss one of two calls. */
template <typename Number>
static void Set(Number *pNumber, Number value) {
    __atomic_store_n(pNumber, value, __ATOMIC_RELAXED);
}

template <typename Number>
static void Add(Number *pNumber, Number value) {
    Set(pNumber, static_cast<Number>(__atomic_load_n(pNumber, __ATOMIC_RELAXED) + value));
}

static void BookTime(UVEL_EVENT_NODE_S *pstNode, uint64_t ullMs) {
    Add(&pstNode->ulTotalMs, ullMs);
    if (ullMs > __atomic_load_n(&pstNode->ulWorstMs, __ATOMIC_RELAXED))
        Set(&pstNode->ulWorstMs, ullMs < UINT32_MAX ? static_cast<uint32_t>(ullMs) : UINT32_MAX);
}

/* Calls the walk's node and books the call. When the callback returns, the node may be another one (or its copy), and
 * the start in it that of another call. */
static uint32_t Call(Walk &stWalk, uint32_t ulValue, void *pData) {
    uint32_t ulStartSeconds = 0;
    uint32_t ulStartMs = 0;
    const bool bStartKnown = QAL_SecondNow(&ulStartSeconds, &ulStartMs) == 0;
    UVEL_EVENT_NODE_S *pstNode = stWalk.pstCurrent;
    Set(&pstNode->ulStartSeconds, ulStartSeconds);
    Set(&pstNode->ulStartMs, uint64_t{ulStartMs});
    Add(&pstNode->ulCalls, 1U);
    const uint32_t ulResult = pstNode->pfCallback(ulValue, pData);
    pstNode = stWalk.pstCurrent;
    Set(&pstNode->ulLastResult, ulResult);
    uint32_t ulSeconds = 0;
    uint32_t ulMs = 0;
    if (QAL_SecondNow(&ulSeconds, &ulMs) == 0 && bStartKnown)
        BookTime(pstNode, uint64_t{ulSeconds - ulStartSeconds} * 1000 + ulMs - ulStartMs);
    return ulResult;
}

static bool TakesPart(const UVEL_EVENT_NODE_S *pstNode, bool bMaster, uint32_t ulValue) {
    return __atomic_load_n(&pstNode->ucUnregistered, __ATOMIC_RELAXED) == 0 && pstNode->pfCallback != nullptr &&
           (pstNode->ulSubKey == ulValue || pstNode->ulSubKey == UVEL_EVENT_ANY_VALUE) &&
           (bMaster || pstNode->ucAlsoOnStandby != 0);
}

static uint32_t WalkList(DLL_S *pstList, Walk &stWalk, bool bMaster, uint32_t ulValue, void *pData) {
    while (UVEL_EVENT_NODE_S *pstNode = Advance(pstList, stWalk)) {
        const uint32_t ulResult = TakesPart(pstNode, bMaster, ulValue) ? Call(stWalk, ulValue, pData) : KIVO_OK;
        if (ulResult != KIVO_OK) [[unlikely]] {
            Add(&stWalk.pstCurrent->ulFailures, 1U);
            if (stWalk.pstCurrent->ucContinueOnFailure == 0) {
                Set(&g_ulLastErrMid, stWalk.pstCurrent->ulMid);
                return ulResult;
            }
        }
        QAL_TaskRunDelay(200, 20);
    }
    return KIVO_OK;
}

uint32_t UVEL_EventCallBackNotify(uint32_t ulEventId, uint32_t ulValue, void *pData) {
    if (ulEventId >= UVEL_EVENT_COUNT)
        return KIVO_FAIL;
    if (g_szDllKIVOEvtCBRegTbl == nullptr)
        return KIVO_OK;
    const bool bMaster = UVEL_IsMasterBoard() != 0;
    DLL_S *pstList = g_szDllKIVOEvtCBRegTbl + ulEventId;
    if (pstList->ulCount == 0)
        return KIVO_OK;

    Walk stWalk; /* stGone is filled when it is needed */
    stWalk.pstPlace = EndOf(pstList);
    stWalk.pstCurrent = nullptr;
    stWalk.pstOuter = t_pstWalks;
    t_pstWalks = &stWalk;
    const uint32_t ulResult = WalkList(pstList, stWalk, bMaster, ulValue, pData);
    t_pstWalks = stWalk.pstOuter;
    return ulResult;
}

uint32_t UVEL_GetMidOfEventCBErr(void) {
    return g_ulLastErrMid;
}
