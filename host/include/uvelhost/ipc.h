/* Messages and calls between processes, and between tasks of one process.
 *
 * A message is a block of bytes; its pointer leads to the first byte of the body. What the host keeps with it (length,
 * node and channel ids) is out of sight. A node is a process on a board, a channel is where a task of it receives.
 *
 * Processes of one device meet in a folder, which must belong to their user alone: $UVELHOST_RUN_DIR, without that
 * /run/uvelhost for root and $XDG_RUNTIME_DIR/uvelhost (failing that /tmp/uvelhost-<uid>) for other users. A connection
 * from a process of another user, root excepted, is refused.
 *
 * Usage, to tell the event task of another process something:
 *     CMNGA_QueryNodeId(ulMid, UVELHOST_NONE, UVELHOST_NONE, aulNode, &ulCount);
 *     pMsg = IPC_AllocMsg_X(ulOwnMid, ulLen);
 *     IPC_SetSrcAndDstChannelId(pMsg, ulOwnChannel, ulItsChannel);
 *     IPC_SetSrcAndDstNodeId(pMsg, IPC_GetSelfNodeId(), aulNode[0]);
 *     if (IPC_Send(ulMsgType, pMsg) != 0)
 *         IPC_FreeMsg(pMsg);
 *
 * Ownership: a message belongs to whoever holds it, until that one frees it or hands it on. It may be freed on another
 * thread than the one that allocated it. */
#ifndef UVELHOST_IPC_H
#define UVELHOST_IPC_H

#include "types.h"

/* Way of receiving: the host calls the channel's function as messages arrive. */
#define IPC_MODE_CALLBACK 2U

/* Way of serving calls: on the thread that the call arrives on, and the caller waits for the answer. */
#define IPC_RPC_MODE_DIRECT 0U
#define IPC_RPC_TYPE_SYNC 2U

/* A message arrived on the channel ulDstChannel; the callee owns it now. Called on the host's receiving thread, one
 * message at a time for each channel, in the order in which each sender sent them. It must not wait. */
typedef void (*IPC_RECV_CB)(uint32_t ulMsgType, uint32_t ulSrcChannel, uint32_t ulDstChannel, void *pMsg,
                            uint32_t ulLen);

/* A call came for a module. pMsg of ulLen bytes stays the host's and is valid during the call, as is pContext, the
 * host's record of the call. The answer is a message that the callee leaves in *ppReply (null on entry: no answer); it
 * belongs to the host then. The result goes back to the caller. Called on the host's receiving thread. */
typedef uint32_t (*IPC_RPC_CB)(uint32_t ulSrcNode, void *pMsg, uint32_t ulLen, void *pContext, void **ppReply);

/* ---- messages ---- */

/* A message with a body of ulLen bytes, aligned for any object and not cleared, charged to the module ulMid; null when
 * memory is short. */
UVELHOST_API void *IPC_AllocMsg_X(uint32_t ulMid, uint32_t ulLen);

/* Releases a message. 1 for null. */
UVELHOST_API uint32_t IPC_FreeMsg(void *pMsg);

/* Bytes of a message's body, as it was allocated or received; 0 for null. */
UVELHOST_API uint32_t IPC_GetMsgLen(const void *pMsg);

/* Stores the channels that the message comes from and goes to. Null is ignored. */
UVELHOST_API void IPC_SetSrcAndDstChannelId(void *pMsg, uint32_t ulSrcChannel, uint32_t ulDstChannel);

/* Stores the nodes that the message comes from and goes to. Null is ignored. */
UVELHOST_API void IPC_SetSrcAndDstNodeId(void *pMsg, uint32_t ulSrcNode, uint32_t ulDstNode);

/* Node id of this process; it never changes. Asked for every message: it costs a load. */
UVELHOST_API uint32_t IPC_GetSelfNodeId(void);

/* ---- sending ---- */

#define IPC_MAX_REMOTE 16777216U /* bytes of the longest message that crosses from process to process */

/* Sends a message of the type ulMsgType to the node and channel that are stored in it; the host owns it then. Messages
 * of one sender to one channel arrive in their order. Waits a second at most when the receiving process does not keep
 * up. A failure leaves the message with the caller: null, no such node, a message for another process that is longer
 * than IPC_MAX_REMOTE, no room for more, and, for this process, no such channel. A channel that another process does
 * not have is that one's to count. */
UVELHOST_API uint32_t IPC_Send(uint32_t ulMsgType, void *pMsg);

/* Counters since start. */
typedef struct {
    uint64_t ulSent;         /* messages accepted by IPC_Send */
    uint64_t ulRefused;      /* messages refused by IPC_Send */
    uint64_t ulReceived;     /* messages handed to a channel's function */
    uint64_t ulDropped;      /* messages that arrived for a channel that is not open, or found no memory */
    uint64_t ulRefusedPeers; /* connections from processes of other users, or that found no memory */
} IPC_STATS_S;

/* Copies the counters of this process. Fails for null and when memory is short. */
UVELHOST_API uint32_t IPC_GetStats(IPC_STATS_S *pstStats);

/* ---- receiving ---- */

/* Opens the channel ulChannel of this process. ulMode is IPC_MODE_CALLBACK. Fails for another mode, a null function, a
 * channel that is open already, and when the host's resources are short; the library cannot go on without its channel
 * and raises a fatal error. Messages may arrive before this returns. */
UVELHOST_API uint32_t IPC_Create(uint32_t ulChannel, uint32_t ulMode, IPC_RECV_CB pfReceive);

/* Offers the module ulMid to callers. ulMode is IPC_RPC_MODE_DIRECT, ulType IPC_RPC_TYPE_SYNC. Fails for others, for a
 * null function and for a module that is offered already; the library raises a fatal error then. Calls may arrive
 * before this returns. */
UVELHOST_API uint32_t IPC_RPC_RegisterEx(uint32_t ulMid, uint32_t ulMode, uint32_t ulType, IPC_RPC_CB pfCall);

#define IPC_RPC_NOBODY 0xFFFFFFFFU /* result of a call that nobody serves at the node */

/* Calls the module ulMid of a node with a message, which stays the caller's, and waits for the answer ulTimeoutMs at
 * most. 0 when an answer came: the callee's result is in *pulResult and its message, the caller's now, in *ppReply (null:
 * none). Fails for null arguments, when the node is not there or goes away, when the time is over, and on the host's
 * receiving thread, which must not wait. */
UVELHOST_API uint32_t IPC_RPC_Call(uint32_t ulNode, uint32_t ulMid, void *pMsg, uint32_t ulTimeoutMs,
                                   uint32_t *pulResult, void **ppReply);

/* ---- messages of the configuration database ---- */

#define DBI_MAGIC 0x44424931U /* "DBI1" */
#define DBI_VERSION 1U        /* of the header below */

/* How such a message begins. What follows is the affair of its sender and of the product's database hook. */
typedef struct {
    uint32_t ulMagic;    /* DBI_MAGIC */
    uint32_t ulVersion;  /* DBI_VERSION */
    uint32_t ulLength;   /* bytes of the message, this header included */
    uint32_t ulReserved; /* 0 */
} DBI_MSG_HEAD_S;

/* Reasons of DBI_CheckMsg. */
#define DBI_NO_MESSAGE 1U    /* null */
#define DBI_TOO_SHORT 2U     /* no room for the header */
#define DBI_NOT_ITS_MAGIC 3U /* something else */
#define DBI_OTHER_VERSION 4U
#define DBI_OTHER_LENGTH 5U /* the header's length is not the message's */

/* 0 when the message is a well-formed message of the configuration database, otherwise the reason, which goes back to a
 * caller as the result of its call. Null is malformed. The message is only read, and within its length. */
UVELHOST_API uint32_t DBI_CheckMsg(const void *pMsg);

#endif
