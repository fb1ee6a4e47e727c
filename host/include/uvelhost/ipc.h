/* Messages and calls between processes, and between tasks of one process.
 *
 * A message is a block of bytes; its pointer leads to the first byte of the body. What the host keeps with it (length,
 * node and channel ids) is out of sight. A node is a process on a board, a channel is where a task of it receives.
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

/* ---- receiving ---- */

/* Opens the channel ulChannel of this process. ulMode is IPC_MODE_CALLBACK. Fails for another mode, a null function, a
 * channel that is open already, and when the host's resources are short; the library cannot go on without its channel
 * and raises a fatal error. Messages may arrive before this returns. */
UVELHOST_API uint32_t IPC_Create(uint32_t ulChannel, uint32_t ulMode, IPC_RECV_CB pfReceive);

/* Offers the module ulMid to callers. ulMode is IPC_RPC_MODE_DIRECT, ulType IPC_RPC_TYPE_SYNC. Fails for others, for a
 * null function and for a module that is offered already; the library raises a fatal error then. Calls may arrive
 * before this returns. */
UVELHOST_API uint32_t IPC_RPC_RegisterEx(uint32_t ulMid, uint32_t ulMode, uint32_t ulType, IPC_RPC_CB pfCall);

/* ---- messages of the configuration database ---- */

#define DBI_MAGIC 0x44424931U /* "DBI1" */
#define DBI_VERSION 1U

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
