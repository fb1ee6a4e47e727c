/* Bounded queues of fixed-size elements, first in first out over all writers.
 *
 * Any number of tasks may write and read. A full queue refuses at once. Elements are copied in and out.
 *
 * Full and empty are meant to the letter: a write is refused only when at some moment of the call every place was
 * taken, a read finds nothing only when at some moment of the call no element was there. */
#ifndef UVELHOST_QUEUE_H
#define UVELHOST_QUEUE_H

#include "types.h"

#define QAL_MAX_QUEUES 256U /* queues are numbered from 1 to this */

/* A queue and its counters since it was made. */
typedef struct {
    char szName[16];        /* name given at creation, cut to 15 characters */
    uint32_t ulDepth;       /* elements it can hold */
    uint32_t ulElementSize; /* bytes */
    uint32_t ulUsed;        /* elements in it now */
    uint32_t ulPeak;        /* most elements seen in it so far; ulDepth once a write was refused */
    uint64_t ulWritten;     /* elements accepted */
    uint64_t ulRead;        /* elements handed out */
    uint64_t ulRefused;     /* writes refused because it was full */
} QAL_QUEUE_STATS_S;

/* Makes a queue of ulDepth elements (1 to 16777216) of ulElementSize bytes (1 to 4096) and writes its number, never 0
 * or 0xFFFFFFFF, to *pulQueue. Two queues may have one name. Fails for bad arguments, when memory is short and when the
 * table of queues (QAL_MAX_QUEUES) is full. */
UVELHOST_API uint32_t QAL_QueueCreate(const char *pszName, uint32_t ulDepth, uint32_t ulElementSize,
                                      uint32_t *pulQueue);

/* Releases a queue with what is in it. Nobody may use it any more; its number may be given to a later queue. Fails for
 * an unknown queue. */
UVELHOST_API uint32_t QAL_QueueDelete(uint32_t ulQueue);

/* Copies one element of ulSize bytes into the queue and wakes a reader; never waits. Fails for an unknown queue, a
 * size other than the queue's, a null element, and when the queue is full. */
UVELHOST_API uint32_t QAL_QueueAsyWrite(uint32_t ulQueue, const void *pElement, uint32_t ulSize);

/* Takes the oldest element out of the queue, waiting at most ulTimeoutMs for one (0: does not wait). 0 with an element,
 * otherwise a failure (empty, unknown queue, wrong size, null buffer) and the buffer is untouched. */
UVELHOST_API uint32_t QAL_QueueRead(uint32_t ulQueue, void *pElement, uint32_t ulSize, uint32_t ulTimeoutMs);

/* Copies the counters of a queue. Queues are numbered from 1 to 256, without gaps as long as none is deleted. Fails for
 * an unknown queue. */
UVELHOST_API uint32_t QAL_QueueGetStats(uint32_t ulQueue, QAL_QUEUE_STATS_S *pstStats);

#endif
