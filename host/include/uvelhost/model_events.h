/* Notifications of this host seen from the other side: raising any of them, waiting for their delivery, and who has
 * registered. For feeders whose changes are more than the model knows, for scenarios and for tests.
 *
 *     MDL_EVENT_S stEvent = {.ulTopic = MDL_TOPIC_NOTIFY, .ulEvent = 7, .ulA = ulIfIndex};
 *     ulRet = MDL_Raise(NULL, &stEvent);
 *     ulRet = MDL_Drain(UVELHOST_WAIT_FOREVER);          // everything raised so far has been delivered
 *
 * Results: 0, and 1 for a bad argument and when memory is short. */
#ifndef UVELHOST_MODEL_EVENTS_H
#define UVELHOST_MODEL_EVENTS_H

#include "events.h"
#include "model.h"
#include "vrf.h"

/* Kinds of notifications, and what the callback's arguments are taken from. */
#define MDL_TOPIC_SLOT 2U       /* (ulEvent, ulA, ulB) */
#define MDL_TOPIC_CARD 3U       /* (ulEvent, ulA, ulB, ulC) */
#define MDL_TOPIC_IF 5U         /* (ulEvent, ulA = interface) */
#define MDL_TOPIC_VRF_SET 8U    /* (ulEvent, ulA) */
#define MDL_TOPIC_IOCTL 9U      /* (ulEvent, ulA = state, ulB = interface, pData = u32 flags or null) */
#define MDL_TOPIC_BD 13U        /* (ulEvent = sub-type, ulA, low 16 bits of ulB) */
#define MDL_TOPIC_NOTIFY 100U   /* (ulA = interface, ulEvent = command, ulB, ulC) */
#define MDL_TOPIC_IP 101U       /* (ulA = interface, ulEvent, ulB = address in network order) */
#define MDL_TOPIC_CFM_OVER 102U /* (); comes once: again is a success and nothing more */
#define MDL_TOPIC_L2 103U       /* (pKey, ulEvent, pData), both with their sizes, either may be null */
#define MDL_TOPIC_TRUNK 104U    /* class ulC; (ulA = trunk id, ulEvent, ulB), in class 1 event 11 pData for ulB */
#define MDL_TOPIC_VRF 105U      /* (ulEvent = kind, low 16 bits of ulA) */

#define MDL_MAX_EVENT_BYTES 65536U /* of a key and of data */

/* A notification; what its members hold stands with its topic above, what it has not is 0 or null. */
typedef struct {
    uint32_t ulTopic;    /* MDL_TOPIC_* */
    uint32_t ulEvent;    /* number of the event */
    uint32_t ulA;        /* first argument */
    uint32_t ulB;        /* second argument */
    uint32_t ulC;        /* third argument, or the class */
    uint32_t ulKeySize;  /* bytes at pKey */
    uint32_t ulDataSize; /* bytes at pData */
    const void *pKey;    /* copied */
    const void *pData;   /* copied */
} MDL_EVENT_S;

/* Queues a notification: in a batch among those of its changes, without one at once, on behalf of the thread's user.
 * Fails for a topic, and a layer-2 or trunk event, that the host does not know. */
UVELHOST_API uint32_t MDL_Raise(MDL_BATCH *pstBatch, const MDL_EVENT_S *pstEvent);

/* Raises a notification, waits until it is delivered and writes 1 when every callback answered 0, otherwise 0: the way
 * to ask a question. Fails inside a callback. */
UVELHOST_API uint32_t MDL_Ask(const MDL_EVENT_S *pstEvent, uint32_t *pulYes);

/* Waits until every notification queued before has been delivered, at most ulTimeoutMs; fails when the time is over,
 * and inside a callback. */
UVELHOST_API uint32_t MDL_Drain(uint32_t ulTimeoutMs);

/* ---- who listens ---- */

/* A registration for notifications, and what has become of it. */
typedef struct {
    uint32_t ulTopic;    /* MDL_TOPIC_* */
    uint32_t ulSelector; /* sub-type, class, group or kind that it is registered for; UVELHOST_NONE: all */
    uint32_t ulEvent;    /* event of a trunk class; otherwise UVELHOST_NONE */
    uint32_t ulPriority; /* as it was registered; 0 where the topic has none */
    uint32_t ulMid;      /* module that registered */
    uint32_t ulMask;     /* as it was registered */
    uint64_t ulCalls;    /* calls since then */
    uint64_t ulFailures; /* calls that did not answer 0 */
    char szName[32];     /* cut to fit */
} MDL_LISTENER_S;

/* Writes the ulNumber-th registration, counted from 0 in the order of registration; fails behind the last. */
UVELHOST_API uint32_t MDL_GetListener(uint32_t ulNumber, MDL_LISTENER_S *pstListener);

/* Counters of all notifications. */
typedef struct {
    uint64_t ulQueued;    /* notifications queued since start */
    uint64_t ulDelivered; /* of them delivered, also those that nobody listened to */
    uint64_t ulHighWater; /* most that waited at a time */
    uint64_t ulFailures;  /* callbacks that did not answer 0 */
} MDL_NOTICE_STATS_S;

/* Copies the counters. Null is ignored. */
UVELHOST_API void MDL_GetNoticeStats(MDL_NOTICE_STATS_S *pstStats);

#endif
