/* Sorted link table: pointers to the caller's records ("links"), kept in key order in one exactly fitted array.
 *
 * As the ordered table of kivo_ordered_table.h, for records that live elsewhere: a link costs 8 bytes, a look-up log2 n
 * comparisons, an insertion or removal one allocation and one copy of the pointers.
 *
 * Usage:
 *     SRVSTL_TBL_S *pstTbl = SRVSTL_CreateNew(ulMid, 1024, SessionCmp);
 *     ulRet = SRVSTL_SetLink(pstTbl, &pstNew->ulId, pstNew);       // 4: the key is there already
 *     pstSession = SRVSTL_FindLink(pstTbl, &ulId);
 *     for (p = SRVSTL_GetFirstLink(pstTbl); p != NULL; p = SRVSTL_GetNextLink(pstTbl))
 *         if (IsOver(p) && SRVSTL_RemoveCurr(pstTbl) == KIVO_OK)   // the walk goes on with the next one
 *             FreeSession(p);
 *     (void)SRVSTL_DeleteSTbl(&pstTbl, FreeSession);               // pstTbl is NULL afterwards
 *
 * Null links: a link may be null and is then a link like any other: counted, compared (the comparison must bear it),
 * removed by its key. Only the operations that return a link cannot tell it from none, and SRVSTL_RemoveCurr refuses it.
 *
 * Cursor: the table remembers one position: before the first link (0xFFFFFFFF), on a link, or past the end (any other
 * value not below the count). Every operation says what it does to it; those that say nothing leave it alone.
 *
 * Ownership: the records stay the caller's, and alive while they are linked; the table frees them only through the
 * function that SRVSTL_RemoveAllLink and SRVSTL_DeleteSTbl are given.
 * Threads: one caller at a time; the cursor is part of the table. A comparison must not call back into its table.
 * Errors: codes of kivo_types.h. For want of memory (2) the links stay as they were. A null table gives the operation's
 * "none": null, 0 or the code of a bad argument. Without a comparison a table finds nothing and takes one link.
 * Comparisons that contradict each other or their records spoil the order and what depends on it; memory outside the
 * table is never touched. */
#ifndef UVELCOMMON_BASE_KIVO_LINK_TABLE_H
#define UVELCOMMON_BASE_KIVO_LINK_TABLE_H

#include "kivo_types.h"

/* Compares a link with a key: 0 for a match, positive when the link sorts after the key, negative when it sorts before.
 * The key is whatever the function understands; the table only passes it on. */
typedef int32_t (*SRVSTL_CMP_FUNC)(const void *pLink, const void *pKey);

/* Frees a record that was linked. */
typedef void (*SRVSTL_FREE_FUNC)(void *pLink);

/* A table. Read only for the caller: the operations below keep the fields in step. */
typedef struct {
    uint32_t ulMid;            /* module id, passed on with every allocation */
    uint32_t ulCount;          /* links stored */
    uint32_t ulSpec;           /* most links that may be stored */
    uint32_t ulCursor;         /* index of the current link */
    SRVSTL_CMP_FUNC pfCompare; /* the order */
    void **ppLinks;            /* ulCount links in ascending order; null when there are none */
} SRVSTL_TBL_S;

/* A new, empty table of at most ulSpec links, cursor before the first; null when memory is short. Nothing is
 * validated; a table of ulSpec 0 stays empty. */
UVEL_API SRVSTL_TBL_S *SRVSTL_CreateNew(uint32_t ulMid, uint32_t ulSpec, SRVSTL_CMP_FUNC pfCompare);

/* Destroys the table at *ppstTbl as SRVSTL_RemoveAllLink and sets *ppstTbl to null. 1 when either pointer is null. */
UVEL_API uint32_t SRVSTL_DeleteSTbl(SRVSTL_TBL_S **ppstTbl, SRVSTL_FREE_FUNC pfFree);

/* Removes all links, calling pfFree (null: nothing is called) for each from the last to the first while all of them are
 * still in the table, and puts the cursor before the first. A table that is empty already is left alone, cursor
 * included. pfFree may look at the table and remove the link that it is called for; it must not change the table
 * otherwise. 1: null table. */
UVEL_API uint32_t SRVSTL_RemoveAllLink(SRVSTL_TBL_S *pstTbl, SRVSTL_FREE_FUNC pfFree);

/* Inserts pLink (null is a link too) where pKey belongs; the caller sees to it that the record's own key is pKey. The
 * cursor is the new link then.
 * 1: null table (or no comparison to tell the place). 4: the key is there already, told before 3: the table is full.
 * Both leave the cursor where the search for the place ended. 2: no memory; the cursor stays where it was. */
UVEL_API uint32_t SRVSTL_SetLink(SRVSTL_TBL_S *pstTbl, const void *pKey, void *pLink);

/* Removes the link that matches pKey. A cursor behind it or on it moves one back, any other stays: a walk is not
 * disturbed. (A cursor before the first link becomes 0xFFFFFFFE, past the end, unless the table is empty now.)
 * 5: no such link. 2: no memory; the cursor then stands on the link. */
UVEL_API uint32_t SRVSTL_RemoveLink(SRVSTL_TBL_S *pstTbl, const void *pKey);

/* Removes the current link, leaving the cursor on the one before it (0xFFFFFFFF when there is none). 5: there is no
 * current link, or it is null. 2: no memory. */
UVEL_API uint32_t SRVSTL_RemoveCurr(SRVSTL_TBL_S *pstTbl);

/* The link that matches pKey, which becomes the current one; null when there is none. */
UVEL_API void *SRVSTL_FindLink(SRVSTL_TBL_S *pstTbl, const void *pKey);

/* The link at which the search for pKey ends, which becomes the current one: the match, else the greatest link below the
 * key, else (all are above it) the first link. Null only for an empty table. */
UVEL_API void *SRVSTL_FindProxLink(SRVSTL_TBL_S *pstTbl, const void *pKey);

/* The first link, which becomes the current one; null when the table is empty. */
UVEL_API void *SRVSTL_GetFirstLink(SRVSTL_TBL_S *pstTbl);

/* The last link, which becomes the current one; null when the table is empty. */
UVEL_API void *SRVSTL_GetLastLink(SRVSTL_TBL_S *pstTbl);

/* Moves the cursor to the next link and returns it; from the last one on, moves it past the end (to the count) and
 * returns null. */
UVEL_API void *SRVSTL_GetNextLink(SRVSTL_TBL_S *pstTbl);

/* Moves the cursor to the link before and returns it; from the first one, moves it before the first and returns null. A
 * cursor past the end stays there (null): a walk backwards begins with SRVSTL_GetLastLink. */
UVEL_API void *SRVSTL_GetPrevLink(SRVSTL_TBL_S *pstTbl);

/* The current link, or null. */
UVEL_API void *SRVSTL_GetCurrLink(const SRVSTL_TBL_S *pstTbl);

/* The link at ulIndex, or null. */
UVEL_API void *SRVSTL_GetLink(const SRVSTL_TBL_S *pstTbl, uint32_t ulIndex);

/* Links stored; 0 for a null table. */
UVEL_API uint32_t SRVSTL_GetLinkCount(const SRVSTL_TBL_S *pstTbl);

#endif
