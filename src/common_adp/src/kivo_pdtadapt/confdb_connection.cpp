/* The connection to the configuration database and the task that waits on it. */
#include <uvelcommon_base/kivo_confdb.h>

#include <securec.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/epoll.h>
#include <uvelhost/task.h>

static constexpr int32_t NOT_CONNECTED = -1;
static constexpr char TASK_NAME[] = "KIVODB_ConnTask";
static constexpr uint32_t TASK_PRIORITY = 85;
static constexpr uint32_t BATCH = 32;
static constexpr uint32_t RETRY_SECONDS = 1;

static int32_t g_lEpFd = NOT_CONNECTED;
static DB_CONN_S *g_pstConn;
static uint32_t g_ulConnTask;

void uVEL_Adapt_SubPubEvent() {
    if (g_lEpFd != NOT_CONNECTED)
        return;
    const int32_t lEpFd = MESH_EpollCreate();
    if (lEpFd < 0)
        return;
    g_lEpFd = lEpFd;

    const DB_CONN_DESC_S stDesc = {"shm:unix_emserver", "osc", {}};
    const uintptr_t aulArgs[QAL_TASK_ARGS] = {};
    if (db_create_sub_connect(&stDesc, uVEL_AdaptConnectEpoll, &g_pstConn) == UVELHOST_OK &&
        QAL_CreateTask(TASK_NAME, &g_ulConnTask, uVEL_AdaptConnEpollTask, TASK_PRIORITY, 0, aulArgs) == UVELHOST_OK) {
        UVEL_SubKvTable("system_info", KIVO_SysNameCallback);
        UVEL_SubKvTable("devm_global", KIVO_SysMacCallback);
        return;
    }
    (void)MESH_Close(g_lEpFd);
    g_lEpFd = NOT_CONNECTED;
}

void UVEL_SubKvTable(const char *pszTable, DB_KV_CB pfCallback) {
    DB_SUB_DESC_S stDesc{};
    uint32_t ulSubId = 0;
    stDesc.ulChangeMask = DB_CHANGE_ALL;
    stDesc.pfCallback = pfCallback;
    stDesc.ucFromStart = 1;
    (void)db_sub_kv_with_conn(g_pstConn, pszTable, &stDesc, &ulSubId);
}

void uVEL_AdaptConnectEpoll(int32_t lFd, uint32_t ulRemove) {
    (void)uVEL_AdaptConnectEpollCtrl(g_lEpFd, lFd, ulRemove);
}

uint32_t uVEL_AdaptConnectEpollCtrl(int32_t lEpFd, int32_t lFd, uint32_t ulRemove) {
    uint32_t ulRet;
    if (ulRemove == 0) {
        MESH_EPOLL_EVENT_S stEvent{};
        stEvent.ulEvents = MESH_EPOLL_IN;
        stEvent.ulFd = static_cast<uint32_t>(lFd);
        ulRet = MESH_EpollCtl(lEpFd, MESH_EPOLL_ADD, lFd, &stEvent);
    } else {
        ulRet = MESH_EpollCtl(lEpFd, MESH_EPOLL_DEL, lFd, nullptr);
    }
    if (ulRet != UVELHOST_OK)
        NAC_Utils_PvtLog(0, "uVEL_AdaptConnectEpollCtrl MESH_EpollCtl fail, ret:%u \n", ulRet);
    return ulRet;
}

/* The pause after every batch, an empty one too, bounds the task's share of the processor. */
static void HandleBatch(const MESH_EPOLL_EVENT_S *pstEvents, uint32_t ulCount) {
    for (uint32_t i = 0; i < ulCount; ++i)
        (void)db_handle_event(static_cast<int32_t>(pstEvents[i].ulFd));
    QAL_TaskRunDelay(100, 10);
}

void uVEL_AdaptConnEpollTask() {
    MESH_EPOLL_EVENT_S astEvents[BATCH];
    (void)prctl(PR_SET_NAME, TASK_NAME);
    const errno_t ret = memset_s(astEvents, sizeof(astEvents), 0, sizeof(astEvents));
    if (ret != EOK)
        NAC_Utils_PvtLog(0, "uVEL_AdaptConnEpollTask memset fail, ret:%u \n", static_cast<uint32_t>(ret));

    for (;;) {
        const int32_t lReady = MESH_EpollWait(g_lEpFd, astEvents, BATCH, -1);
        if (lReady < 0) {
            (void)sleep(RETRY_SECONDS);
            continue;
        }
        const uint32_t ulReady = static_cast<uint32_t>(lReady);
        HandleBatch(astEvents, ulReady < BATCH ? ulReady : BATCH);
    }
}
