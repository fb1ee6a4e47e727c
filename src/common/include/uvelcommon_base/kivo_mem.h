/* Memory service: all dynamic memory of the library and of the modules above it, on one account of the host.
 *
 * The account "nac-util" is opened at the first allocation. Module ids are accepted for the callers' sake; everything
 * is charged to the one account.
 *
 * Usage:
 *     SESSION_S *pstSession = (SESSION_S *)KIVO_MemAlloc_F(ulMid, sizeof(*pstSession), __FILE__, __LINE__);
 *     ...
 *     (void)KIVO_MemFree_F(pstSession, __FILE__, __LINE__);
 *
 * Ownership: a block belongs to its caller until it is freed; any thread may free it.
 * Threads: any, as soon as the first allocation is done. Two tasks that allocate for the first time at the same moment
 * may both open the account; the host then gives both the same handle.
 * Errors: null when the account cannot be opened or memory is short; the next allocation tries again. */
#ifndef UVELCOMMON_BASE_KIVO_MEM_H
#define UVELCOMMON_BASE_KIVO_MEM_H

#include "kivo_types.h"

/* Reserved for a table of memory functions. The library neither reads nor writes it. */
UVEL_DATA void *g_stPfKivoMemFunc;

/* A block of ulSize bytes, aligned for any object and not cleared, or null. */
UVEL_API void *KIVO_MemAlloc(uint32_t ulMid, uint32_t ulSize);

/* As KIVO_MemAlloc; the host records the caller's source position. */
UVEL_API void *KIVO_MemAlloc_F(uint32_t ulMid, uint32_t ulSize, const char *pszFile, uint32_t ulLine);

/* Resizes pBlock (null: allocates), keeping its contents up to the smaller size. On null the old block is untouched. */
UVEL_API void *KIVO_MemReAlloc(void *pBlock, uint32_t ulSize);

/* Releases pBlock and returns the host's result; null is ignored with result 0. */
UVEL_API uint32_t KIVO_MemFree(void *pBlock);

/* As KIVO_MemFree; the host records the caller's source position. */
UVEL_API uint32_t KIVO_MemFree_F(void *pBlock, const char *pszFile, uint32_t ulLine);

#endif
