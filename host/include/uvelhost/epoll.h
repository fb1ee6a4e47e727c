/* Waiting for descriptors. A set of descriptors is itself a descriptor. */
#ifndef UVELHOST_EPOLL_H
#define UVELHOST_EPOLL_H

#include <stddef.h>

#include "types.h"

/* What MESH_EpollCtl does with a descriptor: adds it, changes what it waits for, takes it out. */
#define MESH_EPOLL_ADD 0U
#define MESH_EPOLL_MOD 1U
#define MESH_EPOLL_DEL 2U

#define MESH_EPOLL_IN 1U /* can be read, or is at its end */

/* What to wait for, and what has come. */
typedef struct {
    uint32_t ulEvents; /* sum of MESH_EPOLL_* event bits */
    uint32_t aulReserved1[5];
    uint32_t ulFd; /* given with the descriptor, comes back when it is ready; callers put the descriptor here */
    uint32_t ulReserved2;
} MESH_EPOLL_EVENT_S;
UVELHOST_STATIC_ASSERT(sizeof(MESH_EPOLL_EVENT_S) == 32, "arrays of events have this step");
UVELHOST_STATIC_ASSERT(offsetof(MESH_EPOLL_EVENT_S, ulFd) == 24, "callers read the descriptor at offset 24");

/* Makes an empty set; its descriptor, or -1 when resources are short. */
UVELHOST_API int32_t MESH_EpollCreate(void);

/* Adds lFd to the set for the events in *pstEvent, changes what it waits for, or takes it out (pstEvent is null then).
 * Fails, with a reason for people to see, for an unknown operation, a descriptor that is not open, adding what is in
 * the set and removing what is not. Another thread may be waiting meanwhile. */
UVELHOST_API uint32_t MESH_EpollCtl(int32_t lEpFd, uint32_t ulOperation, int32_t lFd,
                                    const MESH_EPOLL_EVENT_S *pstEvent);

/* Waits until a descriptor of the set is ready, at most lTimeoutMs (-1: without limit, 0: does not wait), and writes at
 * most ulMax ready ones. The number written, 0 when the time is over; negative when the set cannot be waited for (a
 * signal is no such reason). Callers pause for a second after that and try again. */
UVELHOST_API int32_t MESH_EpollWait(int32_t lEpFd, MESH_EPOLL_EVENT_S *pstEvents, uint32_t ulMax, int32_t lTimeoutMs);

/* Closes a set. The descriptors in it stay open. Fails for one that is not open. */
UVELHOST_API uint32_t MESH_Close(int32_t lEpFd);

#endif
