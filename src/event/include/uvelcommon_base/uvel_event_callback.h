/* Event callback registry: which functions hear of which event, and the walk that calls them.
 *
 * An event has a number, 0 to 1999, and carries a u32 value (what it means belongs to the event) and data. Callbacks of
 * one event run in the notifying task, highest priority first, equal priorities in the order of registration. Each call
 * is counted and timed in its node. The first failing callback ends the walk, unless it asked to be passed over.
 *
 * Usage:
 *     UVEL_EventCallBackReg(ulMid, ulEventId, UVEL_EVENT_ANY_VALUE, 5, 0, 1, OnVlanPorts);
 *     ...
 *     if (UVEL_EventCallBackNotify(ulEventId, ulVlan, &stRecord) != KIVO_OK)
 *         ... UVEL_GetMidOfEventCBErr() ...
 *     UVEL_EventCallBackUnReg(ulMid, ulEventId, UVEL_EVENT_ANY_VALUE, OnVlanPorts);
 *
 * From inside a callback everything here may be called, for the event being notified too. What is unregistered is not
 * called any more; what is registered takes part if the walk has not passed its place.
 *
 * Ownership: the registry owns its nodes and lives as long as the process. Unregistering marks a node, which an equal
 * registration revives. A node is freed only when it is registered again with another priority; walks of the same task
 * survive that.
 * Threads: no lock. Register at start-up or from the one task that notifies the event. Any task may unregister while
 * nobody registers: a mark is all that it sets, and a walk of another task that runs the callback finishes it. A node
 * counts for one task: two that notify one event at a time may lose counts.
 * Errors: 1 for an event number above 1999 and for a null callback; 1 when memory is short, the registry is then as it
 * was, except that a node that was to change its priority is gone. */
#ifndef UVELCOMMON_BASE_UVEL_EVENT_CALLBACK_H
#define UVELCOMMON_BASE_UVEL_EVENT_CALLBACK_H

#include <uvelcommon_base/kivo_types.h>

#include <uvelhost/list.h>

#define UVEL_EVENT_COUNT 2000U           /* events are numbered from 0 */
#define UVEL_EVENT_ANY_VALUE 0xFFFFFFFFU /* sub-key that matches every value */

/* Hears of an event; 0 is success. pData belongs to the notifier and is valid during the call. */
typedef uint32_t (*UVEL_EVENT_CALLBACK)(uint32_t ulValue, void *pData);

/* One registration. For looking at. */
typedef struct {
    DLL_NODE_S stNode;              /* first: a pointer to it is one to the record */
    uint32_t ulMid;                 /* module that registered it */
    uint32_t ulSubKey;              /* the value it hears of, UVEL_EVENT_ANY_VALUE for all */
    uint8_t ucPriority;             /* higher runs first */
    uint8_t ucContinueOnFailure;    /* not 0: its failure does not end the walk */
    uint8_t ucAlsoOnStandby;        /* not 0: runs also when this board is not the master */
    uint8_t ucUnregistered;         /* not 0: marked, not called */
    UVEL_EVENT_CALLBACK pfCallback; /* passed over when it is null */
    uint32_t ulCalls;               /* begun, since it was registered */
    uint32_t ulFailures;            /* results other than 0 */
    uint32_t ulStartSeconds;        /* start of the latest call, since the board's start */
    uint64_t ulStartMs;             /* its milliseconds, 0 to 999 */
    uint64_t ulTotalMs;             /* time spent in the callback, all calls together */
    uint32_t ulLastResult;          /* of the latest call that returned */
    uint32_t ulWorstMs;             /* the longest call */
} UVEL_EVENT_NODE_S;

/* The registry: UVEL_EVENT_COUNT lists of UVEL_EVENT_NODE_S. Null until the first registration. */
UVEL_DATA DLL_S *g_szDllKIVOEvtCBRegTbl;

/* Module id of the callback whose failure ended a walk last. A walk that succeeds leaves it. */
UVEL_DATA uint32_t g_ulLastErrMid;

/* Registers pfCallback for the event ulEventId under ulMid, which its memory is charged to; the first registration of
 * all also pays for the registry (64000 bytes). The same module, sub-key and callback with the same priority changes
 * the two flags in place and keeps place and counters; with another priority the node moves and counts afresh. */
UVEL_API uint32_t UVEL_EventCallBackReg(uint32_t ulMid, uint32_t ulEventId, uint32_t ulSubKey, uint8_t ucPriority,
                                        uint8_t ucContinueOnFailure, uint8_t ucAlsoOnStandby,
                                        UVEL_EVENT_CALLBACK pfCallback);

/* Ends a registration. 0 also when there is none; 1 only for a bad event number. */
UVEL_API uint32_t UVEL_EventCallBackUnReg(uint32_t ulMid, uint32_t ulEventId, uint32_t ulSubKey,
                                          UVEL_EVENT_CALLBACK pfCallback);

/* Calls everybody who hears of this value of the event, with pData, and gives way to other tasks between the callbacks.
 * On a board that is not the master only those who asked for it are called. 0 when all that ran succeeded or were to be
 * passed over; otherwise the result of the callback that ended the walk; 1 for a bad event number. */
UVEL_API uint32_t UVEL_EventCallBackNotify(uint32_t ulEventId, uint32_t ulValue, void *pData);

/* g_ulLastErrMid. */
UVEL_API uint32_t UVEL_GetMidOfEventCBErr(void);

#endif
