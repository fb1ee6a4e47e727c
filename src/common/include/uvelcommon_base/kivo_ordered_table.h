/* Ordered table: records of one size, kept in key order in one exactly fitted array.
 *
 * For small sets that are searched and walked often and rarely changed: n records cost n times their size and one
 * header, a look-up log2 n comparisons, an insertion or removal one allocation and one copy of the array.
 *
 * Usage:
 *     static int32_t SessionCmp(const void *pElmt, const void *pKey) {
 *         const uint32_t ulId = ((const SESSION_S *)pElmt)->ulId, ulKey = *(const uint32_t *)pKey;
 *         return (ulId > ulKey) - (ulId < ulKey);                  // without branches, as the search itself
 *     }
 *     SRVOT_TBL_S *pstTbl = SRVOT_CreateNew(ulMid, sizeof(SESSION_S), 1024, SessionCmp);
 *     ulRet = SRVOT_AddElmt(pstTbl, &stNew.ulId, &stNew);          // 4: the key is there already
 *     pstSession = SRVOT_FindElmt(pstTbl, &ulId);
 *     for (p = SRVOT_GetFirstElmt(pstTbl); p != NULL; p = SRVOT_GetNextElmt(pstTbl))
 *         if (IsOver(p))
 *             (void)SRVOT_RemoveCurrElmt(pstTbl);                  // the walk goes on with the next one
 *     (void)SRVOT_DeleteOTbl(&pstTbl);                             // pstTbl is NULL afterwards
 *
 * Cursor: the table remembers one position: before the first element (0xFFFFFFFF), on an element, or past the end (any
 * other value not below the count). Every operation says what it does to it; those that say nothing leave it alone.
 *
 * Ownership: the table owns its array. An element pointer is valid until the next insertion or removal. Keys and
 * elements that are handed in are copied or only looked at during the call; they may lie in the table.
 * Threads: one caller at a time; the cursor is part of the table. A comparison must not call back into its table.
 * Errors: codes of kivo_types.h. For want of memory (2) the table stays exactly as it was, cursor included. A null table
 * gives the operation's "none": null, 0xFFFFFFFF, 0 or the code of a bad argument. Comparisons that contradict each
 * other or their data spoil the order and what depends on it; memory outside the table is never touched. */
#ifndef UVELCOMMON_BASE_KIVO_ORDERED_TABLE_H
#define UVELCOMMON_BASE_KIVO_ORDERED_TABLE_H

#include "kivo_types.h"

/* Compares a stored element with a key: 0 for a match, positive when the element sorts after the key, negative when it
 * sorts before. The key is whatever the function understands; the table only passes it on. */
typedef int32_t (*SRVOT_CMP_FUNC)(const void *pElmt, const void *pKey);

/* A table. Read only for the caller: the operations below keep the fields in step. */
typedef struct {
    uint32_t ulMid;           /* module id, passed on with every allocation */
    uint32_t ulElmtSize;      /* bytes of an element */
    uint32_t ulCount;         /* elements stored */
    uint32_t ulSpec;          /* most elements that may be stored */
    uint32_t ulCursor;        /* index of the current element */
    SRVOT_CMP_FUNC pfCompare; /* the order */
    void *pElmts;             /* ulCount elements in ascending order; null when there are none */
} SRVOT_TBL_S;

/* One condition of a search: ulLen bytes at ulOffset of the element equal those at pValue. */
typedef struct {
    uint32_t ulOffset;  /* bytes from the start of the element */
    const void *pValue; /* what stands there */
    uint32_t ulLen;     /* its bytes */
} SRVOT_COND_S;

/* A new, empty table of at most ulSpec elements of ulElmtSize bytes, cursor before the first; null when memory is
 * short. Nothing is validated: a table of ulSpec 0 stays empty, elements of size 0 can be added, found and walked but
 * not removed one by one, and without a comparison a table finds nothing and takes one element. */
UVEL_API SRVOT_TBL_S *SRVOT_CreateNew(uint32_t ulMid, uint32_t ulElmtSize, uint32_t ulSpec, SRVOT_CMP_FUNC pfCompare);

/* Destroys the table at *ppstTbl and its elements, and sets *ppstTbl to null. 1 when either pointer is null. */
UVEL_API uint32_t SRVOT_DeleteOTbl(SRVOT_TBL_S **ppstTbl);

/* Inserts a copy of the ulElmtSize bytes at pElmt where pKey belongs; the caller sees to it that the element's own key
 * is pKey. The cursor is the new element then.
 * 1: null table or element (or no comparison to tell the place). 4: the key is there already, told before 3: the table
 * is full. Both leave the cursor where the search for the place ended. 2: no memory, or an array of more than
 * 0xFFFFFFFF bytes. */
UVEL_API uint32_t SRVOT_AddElmt(SRVOT_TBL_S *pstTbl, const void *pKey, const void *pElmt);

/* Removes the element at pElmt. A cursor behind it or on it moves one back, so that a walk continues with the element
 * after the removed one. (A cursor before the first element becomes 0xFFFFFFFE, past the end, unless the table is empty
 * now.) 5: pElmt is null or not the beginning of an element of this table. 2: no memory. */
UVEL_API uint32_t SRVOT_RemoveNode(SRVOT_TBL_S *pstTbl, const void *pElmt);

/* Removes the element that matches pKey, leaving the cursor on the one before it (0xFFFFFFFF when there is none).
 * 5: no such element. 2: no memory. */
UVEL_API uint32_t SRVOT_RemoveElmtByKey(SRVOT_TBL_S *pstTbl, const void *pKey);

/* Removes the current element, leaving the cursor on the one before it. 5: there is no current element. 2: no memory. */
UVEL_API uint32_t SRVOT_RemoveCurrElmt(SRVOT_TBL_S *pstTbl);

/* Removes all elements and puts the cursor before the first. A table that is empty already is left alone, cursor
 * included. 1: null table. */
UVEL_API uint32_t SRVOT_RemoveAllElmt(SRVOT_TBL_S *pstTbl);

/* The element that matches pKey, which becomes the current one; null when there is none. */
UVEL_API void *SRVOT_FindElmt(SRVOT_TBL_S *pstTbl, const void *pKey);

/* The element at which the search for pKey ends, which becomes the current one: the match, else the greatest element
 * below the key, else (all are above it) the first element. Null only for an empty table. */
UVEL_API void *SRVOT_FindProxElmt(SRVOT_TBL_S *pstTbl, const void *pKey);

/* The first element, which becomes the current one; null when the table is empty. */
UVEL_API void *SRVOT_GetFirstElmt(SRVOT_TBL_S *pstTbl);

/* The last element, which becomes the current one; null when the table is empty. */
UVEL_API void *SRVOT_GetLastElmt(SRVOT_TBL_S *pstTbl);

/* Moves the cursor to the next element and returns it; from the last one on, moves it past the end (to the count) and
 * returns null. */
UVEL_API void *SRVOT_GetNextElmt(SRVOT_TBL_S *pstTbl);

/* Moves the cursor to the element before and returns it; from the first one, moves it before the first and returns
 * null. A cursor past the end stays there (null): a walk backwards begins with SRVOT_GetLastElmt. */
UVEL_API void *SRVOT_GetPrevElmt(SRVOT_TBL_S *pstTbl);

/* The current element, or null. */
UVEL_API void *SRVOT_GetCurrElmt(const SRVOT_TBL_S *pstTbl);

/* The element at ulIndex, or null. */
UVEL_API void *SRVOT_GetElmt(const SRVOT_TBL_S *pstTbl, uint32_t ulIndex);

/* The cursor, 0xFFFFFFFF for a null table. */
UVEL_API uint32_t SRVOT_GetCurrElmtIndex(const SRVOT_TBL_S *pstTbl);

/* Elements stored; 0 for a null table. */
UVEL_API uint32_t SRVOT_GetCount(const SRVOT_TBL_S *pstTbl);

/* Most elements that may be stored; 0 for a null table. */
UVEL_API uint32_t SRVOT_GetTblSpec(const SRVOT_TBL_S *pstTbl);

/* Bytes of an element; 0 for a null table. */
UVEL_API uint32_t SRVOT_GetElmtSize(const SRVOT_TBL_S *pstTbl);

/* Copies the first element to pBuffer, which has room for one. 1: the table is empty or pBuffer null. */
UVEL_API uint32_t SRVOT_GetFirstNode(const SRVOT_TBL_S *pstTbl, void *pBuffer);

/* Copies the first element above pKey to pBuffer, which has room for one; called again with the key of what it gave, it
 * walks the table whatever happens to it between the calls. The cursor ends on that element, or past the end when there
 * is none (1). 1 also when the table is empty or pBuffer null. */
UVEL_API uint32_t SRVOT_GetNextNode(SRVOT_TBL_S *pstTbl, const void *pKey, void *pBuffer);

/* Copies all elements to pBuffer of ulLen bytes. 1: the table is empty, pBuffer null or too short.
 *
 * These three copy with a room of one element or of ulLen bytes. A room of 0 or above 0x7FFFFFFF bytes raises an
 * assertion and copies nothing; the result is 0 all the same. */
UVEL_API uint32_t SRVOT_GetAllElmts(const SRVOT_TBL_S *pstTbl, void *pBuffer, uint32_t ulLen);

/* Index of the first element at or after ulStart that meets all ulCondCount conditions; with no conditions, ulStart if
 * there is such an element. 0xFFFFFFFF when there is none, and when a condition has no value or reaches beyond the
 * element. Looks at one element after the other. */
UVEL_API uint32_t SRVOT_FindElmtIdByConds(const SRVOT_TBL_S *pstTbl, uint32_t ulStart, uint32_t ulCondCount,
                                          const SRVOT_COND_S *pstConds);

#endif
