/* A module of uveld that does not come back from where its setting "where" says: start, run, stop, or the callback of an
 * event of the event task. With "where: silent" it registers no show function and does nothing. */
#include <string.h>
#include <unistd.h>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uveld/module.h>

static const char *g_pszWhere = "";

static void StayAt(const char *pszPlace) {
    if (strcmp(g_pszWhere, pszPlace) == 0)
        sleep(60);
}

static uint32_t OnState(uint32_t ulSubEvent, void *pData) {
    (void)ulSubEvent;
    (void)pData;
    StayAt("callback");
    return 0;
}

static uint32_t Start(const UVELD_CONTEXT_S *pstContext) {
    g_pszWhere = pstContext->pfSetting(pstContext->pModule, "where");
    pstContext->pfLog(pstContext->pModule, UVELD_LOG_INFO, "begins");
    StayAt("start");
    return UVEL_EventCallBackReg(0xC2500000U, KIVO_EVT_IF_STATE, UVEL_EVENT_ANY_VALUE, 1, 1, 0, OnState);
}

static void Run(void) {
    StayAt("run");
}

static void Stop(void) {
    StayAt("stop");
}

const UVELD_MODULE_S *UveldModule(void) {
    static const UVELD_MODULE_S stModule = {UVELD_MODULE_VERSION, "stubborn", 0xC2500000U, Start, Run, Stop};
    return &stModule;
}
