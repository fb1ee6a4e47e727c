/* Configuration database client: tables of keys and values, and word of their changes.
 *
 * Usage: db_create_sub_connect opens a connection and hands its descriptors to the caller's epoll set;
 * db_sub_kv_with_conn subscribes to tables; whenever a descriptor is ready, db_handle_event reads what has arrived and
 * calls the subscription's callback. After a lost connection the client comes back by itself, perhaps with other
 * descriptors, and what it then delivers brings the subscriber to the database's state.
 *
 * Threads: callbacks of notifications run on the thread that calls db_handle_event, one at a time; the callback of the
 * connection on that thread too, and inside db_create_sub_connect. One thread at a time handles a connection. */
#ifndef UVELHOST_CONFDB_H
#define UVELHOST_CONFDB_H

#include <stddef.h>

#include "types.h"

/* Kinds of change; a subscription's mask is a sum of them. */
#define DB_CHANGE_PRESENT 1U /* the key was there when the subscription began */
#define DB_CHANGE_CREATED 2U /* the key is new */
#define DB_CHANGE_CHANGED 4U /* the key has another value */
#define DB_CHANGE_DELETED 8U /* the key is gone */
#define DB_CHANGE_ALL 15U    /* all of them */

/* A connection for subscriptions. */
typedef struct DB_CONN DB_CONN_S;

/* Where to connect to, and as whom. */
typedef struct {
    const char *pszEndpoint; /* what it may be is the host's; read during the call only */
    const char *pszClient;   /* name of this client, for people to see; read during the call only */
    uint64_t aulReserved[6]; /* 0 */
} DB_CONN_DESC_S;
UVELHOST_STATIC_ASSERT(offsetof(DB_CONN_DESC_S, pszClient) == sizeof(void *), "endpoint, then name");

/* One key of a table. Key and value belong to the client and are valid during the call only. */
typedef struct {
    const char *pszKey;     /* terminated */
    const void *pValue;     /* null when the length is 0; not terminated */
    uint32_t ulValueLength; /* bytes; 0 for a deleted key */
    uint32_t ulChange;      /* one of DB_CHANGE_* */
} DB_KV_S;
UVELHOST_STATIC_ASSERT(offsetof(DB_KV_S, pValue) == sizeof(void *), "key, then value");
UVELHOST_STATIC_ASSERT(offsetof(DB_KV_S, ulValueLength) == 2 * sizeof(void *), "value, then length");

/* A descriptor of the connection is to be watched for reading (ulRemove 0) or no longer (any other value). It is still
 * open in both cases; the client closes it. */
typedef void (*DB_CONNECT_CB)(int32_t lFd, uint32_t ulRemove);

/* A key is there or has changed. Changes of one key come in their order, the last one is the database's state. */
typedef void (*DB_KV_CB)(const DB_KV_S *pstKv);

/* What a subscription wants to hear; whole cleared before it is filled. */
typedef struct {
    uint32_t ulChangeMask;   /* sum of DB_CHANGE_* */
    DB_KV_CB pfCallback;     /* called for each of these changes */
    uint8_t ucFromStart;     /* 1: what is in the table comes first, 0: changes only */
    uint8_t aucReserved[7];  /* 0 */
    uint64_t aulReserved[5]; /* 0 */
} DB_SUB_DESC_S;

/* Opens a connection for subscriptions and writes its handle, which is valid for the life of the process. pfConnect is
 * called for each of its descriptors. Fails for null arguments, an endpoint that the client does not understand or
 * cannot use, and when resources are short; everything it had opened is then closed (and pfConnect told), so the caller
 * may try again later. A caller who could not go on after opening may try again too: a connection that nothing was
 * subscribed on is given to whoever opens one for the same endpoint and client. */
UVELHOST_API uint32_t db_create_sub_connect(const DB_CONN_DESC_S *pstDesc, DB_CONNECT_CB pfConnect,
                                            DB_CONN_S **ppstConn);

/* Subscribes to a table, which need not exist yet, and writes the number of the subscription. The descriptor is read
 * during the call only. Never calls back itself: what is there comes through db_handle_event. Fails for null arguments
 * and when resources are short; callers do not report it. */
UVELHOST_API uint32_t db_sub_kv_with_conn(DB_CONN_S *pstConn, const char *pszTable, const DB_SUB_DESC_S *pstDesc,
                                          uint32_t *pulSubId);

/* Reads what is pending on a descriptor of a connection and calls the callbacks; never waits. A descriptor that no
 * connection has (any more) fails and does nothing: it may have been in the same batch of ready ones as its removal. */
UVELHOST_API uint32_t db_handle_event(int32_t lFd);

/* How a connection does, for people to see. */
typedef struct {
    char szClient[32];        /* as its descriptor named it */
    char szTrouble[256];      /* empty, or what was wrong latest while the database is out of reach */
    uint32_t ulSubscriptions; /* tables that are subscribed to */
    uint32_t ulOutages;       /* since the connection was opened, the present one included */
} DB_CONN_STATE_S;

/* State of the connection of number ulNumber, counted from 0 in the order of their opening. Fails behind the last one and
 * for null. Any thread. */
UVELHOST_API uint32_t db_get_state(uint32_t ulNumber, DB_CONN_STATE_S *pstState);

#endif
