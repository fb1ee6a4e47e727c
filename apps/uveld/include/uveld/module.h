/* Product modules of uveld: shared objects that uveld loads into its process, with one entry.
 *
 *     static uint32_t Start(const UVELD_CONTEXT_S *pstContext) { ... UVEL_EventCallBackReg(...); return 0; }
 *     static void Run(void) { ... QAL_CreateTask(...); }
 *     static void Stop(void) { ... }
 *
 *     const UVELD_MODULE_S *UveldModule(void) {
 *         static const UVELD_MODULE_S stModule = {UVELD_MODULE_VERSION, "sessions", 0xC2400000U, Start, Run, Stop};
 *         return &stModule;
 *     }
 *
 * Order of a life: uveld loads its modules in the order of its configuration; brings the library up (global tables,
 * own adapters, settings of the configuration); calls every pfStart, where a module installs hooks, sets what is its own
 * and registers for events; starts the event task, the device model's feeder and the standby link; calls every pfRun;
 * and at the end every pfStop, the last module first, while the event task still runs.
 *
 * Threads: pfStart, pfRun and pfStop are called on uveld's main thread, callbacks of events on the event task or, for
 * immediate events, on the host's notifying thread, channel messages on the link's thread. */
#ifndef UVELD_MODULE_H
#define UVELD_MODULE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define UVELD_MODULE_VERSION 1U /* of the records below; uveld refuses modules of another one */

/* A setting of the module from uveld's configuration. */
typedef struct {
    const char *pszName;  /* as in the configuration */
    const char *pszValue; /* text, whatever it looks like */
} UVELD_SETTING_S;

/* Log levels. */
#define UVELD_LOG_ERROR 0U
#define UVELD_LOG_WARNING 1U
#define UVELD_LOG_INFO 2U
#define UVELD_LOG_DEBUG 3U

/* What a module does with the standby link. Every member may be null. All are called on the link's thread except
 * pfBatch, which has a thread of its own and may wait. */
typedef struct {
    uint32_t ulModId; /* the messages of this id are the module's */
    /* A whole message: a channel buffer (CHI_BACK_YSB) that belongs to the callback (CBUF_Free). */
    void (*pfMessage)(void *pBuffer);
    void (*pfBatch)(void);                  /* send everything; the return ends the module's part of the batch */
    void (*pfPeerBatch)(uint32_t ulBegins); /* a batch of the peer begins (1), is complete (0) */
    /* This device is (1) or is not (0) the active one from now on. Must not change the role itself. */
    void (*pfRole)(uint32_t ulActive);
    void (*pfProgress)(void); /* the peer has taken more, or is gone: YSB_Link_GetFate (any thread) */
} UVELD_STANDBY_S;

/* What uveld gives a module. Lives as long as the process; everything in it may be used from any thread. */
typedef struct {
    const char *pszRunDirectory;        /* folder for sockets and files that end with the process */
    const UVELD_SETTING_S *pstSettings; /* in the order of the configuration */
    uint32_t ulSettings;                /* their number */
    /* Value of a setting, or null. */
    const char *(*pfSetting)(const void *pModule, const char *pszName);
    /* A line for the service log. */
    void (*pfLog)(const void *pModule, uint32_t ulLevel, const char *pszText);
    /* Takes part in the standby link; once, during pfStart. 0, or 1 without a link and for a second record of one id. */
    uint32_t (*pfStandby)(const void *pModule, const UVELD_STANDBY_S *pstStandby);
    /* A line of what a show function (kivo_show.h) has to show; only while uveld calls one. */
    void (*pfPrint)(const void *pModule, const char *pszLine);
    const void *pModule; /* first argument of the functions above */
} UVELD_CONTEXT_S;

/* What a module says of itself; lives as long as the process. */
typedef struct {
    uint32_t ulVersion;  /* UVELD_MODULE_VERSION */
    const char *pszName; /* by which people know it; no two modules share one */
    uint32_t ulMid;      /* module id, for the registry and memory */
    /* 0, or anything else to keep uveld from starting; a reason belongs into the log. */
    uint32_t (*pfStart)(const UVELD_CONTEXT_S *pstContext);
    void (*pfRun)(void);  /* may be null */
    void (*pfStop)(void); /* may be null */
} UVELD_MODULE_S;

/* The one entry of a module. */
__attribute__((visibility("default"))) const UVELD_MODULE_S *UveldModule(void);

#ifdef __cplusplus
}
#endif

#endif
