/* Memory: blocks from named accounts.
 *
 * A module opens an account ("handle") under a name and allocates from it. The host counts for every handle the blocks
 * and bytes in use, their highest level and the refused requests. A block remembers its handle, so releasing needs
 * none, and any thread may release what another one allocated.
 *
 * Any thread may call anything here. Levels that are read while others allocate are those of some moment nearby; they
 * are exact when nobody does.
 *
 * Partitions are numbered areas of the platform's memory. On Linux there is one; the number is accepted and ignored. */
#ifndef UVELHOST_MEMORY_H
#define UVELHOST_MEMORY_H

#include "types.h"

/* Number of the system memory partition, read by callers at every allocation. */
UVELHOST_DATA uint8_t g_ucSysMemPtNo;

/* Level of one handle. Bytes are those the callers asked for, without the host's own overhead. */
typedef struct {
    char szName[32];      /* the name given at registration, cut to 31 characters */
    uint64_t ulBlocks;    /* blocks in use */
    uint64_t ulBytes;     /* bytes in use */
    uint64_t ulPeakBytes; /* highest ulBytes so far; with several threads within 16 KiB for each of them */
    uint64_t ulAllocs;    /* requests that were granted since registration, those for another size among them */
    uint64_t ulFailures;  /* requests that were refused for want of memory */
    uint64_t ulQuota;     /* soft quota in bytes, 0 for none */
    uint64_t ulOverQuota; /* requests after which ulBytes was above the soft quota */
} QAL_MEM_STATS_S;

/* Opens the account pszName and writes its handle to *pulHandle; handles count up from 0. A second registration under one
 * name succeeds and gives the same handle. Fails, with *pulHandle untouched, for a null argument, when the table of
 * handles (1024 entries, "module" among them) is full and when memory is short. */
UVELHOST_API uint32_t QAL_HandleInitialize(const char *pszName, uint32_t *pulHandle);

/* Memory handle that is charged for the module ulMid; modules without a handle of their own share the account
 * "module". */
UVELHOST_API uint32_t QAL_ConverMIDTOHandle(uint32_t ulMid);

/* A block of ulSize bytes, aligned for any object, not cleared; null when memory is short or the handle is unknown.
 * Size 0 gives a block of its own that must be released too. */
UVELHOST_API void *QAL_MemAlloc(uint32_t ulHandle, uint8_t ucPartition, uint32_t ulSize);

/* As QAL_MemAlloc; a refused request is reported on standard error, once for each pszFile and ulLine. */
UVELHOST_API void *QAL_MemAlloc_F(uint32_t ulHandle, uint8_t ucPartition, uint32_t ulSize, const char *pszFile,
                                  uint32_t ulLine);

/* Resizes pBlock (null: allocates) and keeps its contents up to the smaller size; the block stays on the handle it was
 * allocated from. Null when memory is short and for what is no block of this host; pBlock is then as it was. */
UVELHOST_API void *QAL_MemReAlloc(uint32_t ulHandle, uint8_t ucPartition, void *pBlock, uint32_t ulSize);

/* Releases pBlock. The first argument is not looked at (callers pass 0). 1 for null and for what is no block of this
 * host, as far as that can be told. */
UVELHOST_API uint32_t QAL_MemFree(uint32_t ulMid, void *pBlock);

/* As QAL_MemFree; a refused release is reported on standard error, once for each pszFile and ulLine. */
UVELHOST_API uint32_t QAL_MemFree_F(uint32_t ulMid, void *pBlock, const char *pszFile, uint32_t ulLine);

/* Copies the level of ulHandle. Handles are numbered from 0 without gaps: counting up until this fails visits all. */
UVELHOST_API uint32_t QAL_MemGetStats(uint32_t ulHandle, QAL_MEM_STATS_S *pstStats);

/* Soft quota of ulHandle in bytes, 0 for none. Going above it refuses nothing; it is counted, for people to see. */
UVELHOST_API uint32_t QAL_MemSetQuota(uint32_t ulHandle, uint64_t ulBytes);

#endif
