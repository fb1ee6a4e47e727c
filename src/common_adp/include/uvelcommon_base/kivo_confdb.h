/* Settings of the whole system from the host's configuration database: system name and system MAC address.
 *
 * The first query opens one subscription connection for the life of the process and starts the task "KIVODB_ConnTask",
 * which hands whatever arrives to the database client. The client then calls the two table callbacks, which keep copies
 * of the values; the queries read these copies. Until the database has delivered, the copies hold what the host told
 * directly.
 *
 * Usage:
 *     KIVO_Adapt_Gethostname(szName, sizeof(szName));
 *     UVEL_GetSysMacAddr(aucMac);
 *
 * Ownership: results are copied to the caller.
 * Threads: any; the copies are read without a lock, so a reader may see a value half changed. Opening is
 * not locked either: let one thread make the first query.
 * Errors: a query always delivers, zeros or an empty text when nothing is known. An opening that fails leaves nothing
 * open and is tried again by the next query that needs it. */
#ifndef UVELCOMMON_BASE_KIVO_CONFDB_H
#define UVELCOMMON_BASE_KIVO_CONFDB_H

#include <uvelcommon_base/kivo_types.h>
#include <uvelhost/confdb.h>

/* The longest system name, in bytes. */
#define KIVO_SYS_NAME_SIZE 256U

/* ---- queries ---- */

/* Copies the system's name into szBuffer, cut to ulSize - 1 bytes, and terminates it at its end and at
 * szBuffer[ulSize - 1]. Empty while the name is not known. Nothing is written for null or size 0. Always 0. */
UVEL_API uint32_t KIVO_Adapt_Gethostname(char *szBuffer, uint32_t ulSize);

/* Copies the system's MAC address, in transmission order; zeros while it is not known. 0, or 1 for null. */
UVEL_API uint32_t EAPADP_GetBridgeMac(uint8_t aucMac[6]);

/* Calls EAPADP_GetBridgeMac. */
UVEL_API uint32_t UVEL_DevGetSysMac(uint8_t aucMac[6]);

/* Calls UVEL_DevGetSysMac. */
UVEL_API uint32_t UVEL_GetSysMacAddr(uint8_t aucMac[6]);

/* ---- connection ---- */

/* Opens the connection, starts its task and subscribes to the tables "system_info" and "devm_global". Does nothing once
 * that has succeeded; after a failure the next call tries again. */
UVEL_API void uVEL_Adapt_SubPubEvent(void);

/* Body of the connection's task; never returns. */
UVEL_API void uVEL_AdaptConnEpollTask(void);

/* Told by the database client that lFd is to be watched (ulRemove 0) or no longer. */
UVEL_API void uVEL_AdaptConnectEpoll(int32_t lFd, uint32_t ulRemove);

/* Adds lFd to the epoll set lEpFd for reading (ulRemove 0) or takes it out. The host's result. */
UVEL_API uint32_t uVEL_AdaptConnectEpollCtrl(int32_t lEpFd, int32_t lFd, uint32_t ulRemove);

/* Subscribes to all changes of a table and to what is in it. Its success is not reported. */
UVEL_API void UVEL_SubKvTable(const char *pszTable, DB_KV_CB pfCallback);

/* ---- callbacks of the tables ---- */

/* Table "system_info": takes over the value of "sys_name", at most KIVO_SYS_NAME_SIZE bytes. */
UVEL_API void KIVO_SysNameCallback(const DB_KV_S *pstKv);

/* Table "devm_global": takes over "system_mac" (at most 6 bytes) and "system_mac_number" (at most 4 bytes, a number in
 * the host's byte order). A value that is too long is refused whole. */
UVEL_API void KIVO_SysMacCallback(const DB_KV_S *pstKv);

#endif
