/* Configuration database, for those who own settings and for tools: write, read, list and watch.
 *
 * The database holds tables of keys and values. It is a file on this device, used by several processes, or a cluster;
 * which of them says the endpoint:
 *
 *     sqlite:PATH                         a file; it is made when it is missing
 *     etcd://HOST:PORT,HOST:PORT/PREFIX   a cluster; the prefix ("uvel" when it is left out) keeps devices apart
 *     etcds://HOST:PORT,...?ca=FILE&cert=FILE&key=FILE
 *                                         the same over TLS: whom to believe (left out: as the system does), and who
 *                                         this client is (left out: it does not say)
 *     shm:unix_emserver                   the device's own database: what the environment variable UVELHOST_CONFDB
 *                                         says, otherwise sqlite:/run/uvelhost/confdb.sqlite
 *
 * Usage:
 *     if (db_store_open("sqlite:/run/uvelhost/confdb.sqlite", &pstStore) != 0) puts(db_last_error());
 *     db_store_put(pstStore, "system_info", "sys_name", "edge-1", 6, NULL);
 *     db_store_close(pstStore);
 *
 * Names: a table has 1 to 64 bytes and no '/', a key 1 to 1024 bytes; both are UTF-8. A value has 0 to 1 MiB.
 * Revisions count the changes of the database; a later change has a higher one.
 * Errors: besides 0 the codes below; db_last_error says why. A write that has succeeded is on disk (cluster: on the
 * disks of a majority). Operations wait at most about ten seconds for other writers and for an answer.
 * Threads: any, one at a time for each store and each watch. */
#ifndef UVELHOST_CONFDB_WRITER_H
#define UVELHOST_CONFDB_WRITER_H

#include "confdb.h"

/* Results. */
#define DB_OK 0U
#define DB_FAILED 1U    /* see db_last_error */
#define DB_NOT_FOUND 2U /* no such key */
#define DB_NO_ROOM 3U   /* the value is longer than the buffer */

#define DB_TABLE_SIZE 64U             /* longest name of a table, in bytes */
#define DB_KEY_SIZE 1024U             /* longest key, in bytes */
#define DB_VALUE_SIZE (1024U * 1024U) /* longest value, in bytes */

/* An open database. */
typedef struct DB_STORE DB_STORE_S;
/* A watch on one or all tables. */
typedef struct DB_WATCH DB_WATCH_S;

/* One key of the database. Everything in it is valid during the callback only. */
typedef struct {
    const char *pszTable; /* terminated */
    DB_KV_S stKv;         /* ulChange is DB_CHANGE_PRESENT in a list */
    uint64_t ullRevision; /* of the latest change of this key */
} DB_RECORD_S;

/* Takes one record; pContext is what was given with the function. Does not throw. */
typedef void (*DB_RECORD_CB)(void *pContext, const DB_RECORD_S *pstRecord);

/* Why the latest operation of this header that failed on the calling thread did so; "" before the first one. Valid until
 * the next failure on this thread. */
UVELHOST_API const char *db_last_error(void);

/* Opens the database. A cluster is asked only when something is read or written. */
UVELHOST_API uint32_t db_store_open(const char *pszEndpoint, DB_STORE_S **ppstStore);

/* Closes a store; null is none. */
UVELHOST_API void db_store_close(DB_STORE_S *pstStore);

/* Writes a value and, where pullRevision is not null, the revision of the change. Writing the value that is there
 * already is a change too. */
UVELHOST_API uint32_t db_store_put(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey, const void *pValue,
                                   uint32_t ulLength, uint64_t *pullRevision);

/* Deletes a key. DB_NOT_FOUND when there is none. */
UVELHOST_API uint32_t db_store_delete(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey,
                                      uint64_t *pullRevision);

/* Reads a value. *pulLength is the room in bytes on the way in and the length of the value on the way out, also with
 * DB_NO_ROOM, when nothing else is written. */
UVELHOST_API uint32_t db_store_get(DB_STORE_S *pstStore, const char *pszTable, const char *pszKey, void *pBuffer,
                                   uint32_t *pulLength);

/* Calls pfRecord for each key of a table (null: of all tables), in the order of their bytes, as they were at one
 * moment. The callback may use the store. */
UVELHOST_API uint32_t db_store_list(DB_STORE_S *pstStore, const char *pszTable, DB_RECORD_CB pfRecord, void *pContext);

/* Watches a table (null: all tables): what is there first, then every change, as db_sub_kv_with_conn delivers them. An
 * outage of the database is no failure: the watch comes back by itself. */
UVELHOST_API uint32_t db_watch_open(const char *pszEndpoint, const char *pszTable, DB_RECORD_CB pfRecord,
                                    void *pContext, DB_WATCH_S **ppstWatch);

/* The descriptor to wait for until it can be read; the same for the life of the watch. */
UVELHOST_API int32_t db_watch_descriptor(const DB_WATCH_S *pstWatch);

/* Reads what has arrived and calls the callback; never waits. Not from inside the callback. */
UVELHOST_API uint32_t db_watch_handle(DB_WATCH_S *pstWatch);

/* Ends a watch; null is none. Not from inside its callback. */
UVELHOST_API void db_watch_close(DB_WATCH_S *pstWatch);

#endif
