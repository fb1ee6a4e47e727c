/* Hash tables of caller-defined nodes, several nodes with one hash value chained in insertion order.
 *
 * A table hands out nodes (LITE_HASH_NewData), the caller fills one and links it (LITE_HASH_AddNode). Removing a node
 * from the table and releasing its memory are two steps. One caller at a time; the functions of a table must not call
 * back into it. */
#ifndef UVELHOST_HASH_H
#define UVELHOST_HASH_H

#include "types.h"

/* A hash table with chains. */
typedef struct LITE_HASH LITE_HASH_S;

typedef uint32_t (*LITE_HASH_KEY_FUNC)(const void *pNode);                  /* hash value of a node */
typedef uint32_t (*LITE_HASH_COMPARE_FUNC)(const void *pA, const void *pB); /* 1: equal keys */

/* Limit that stands for "no limit of its own". */
#define LITE_HASH_UNLIMITED 0xFFFFFFFCU

/* A table for at most ulMaxNodes nodes of ulNodeSize bytes in ulBuckets chains (hash value modulo ulBuckets), charged
 * to ulMemHandle. Null when memory is short, a function is null or a size is 0. */
UVELHOST_API LITE_HASH_S *LITE_HASH_CreateWithListCurr(uint32_t ulMaxNodes, uint32_t ulNodeSize, uint32_t ulBuckets,
                                                       LITE_HASH_KEY_FUNC pfKey, LITE_HASH_COMPARE_FUNC pfCompare,
                                                       uint32_t ulMemHandle);

/* Releases the table and every node linked into it. Nodes that are not linked must have been released before: nothing
 * can release them afterwards. Null is ignored. */
UVELHOST_API void LITE_HASH_Destroy(LITE_HASH_S *pstHash);

/* The oldest node whose key equals that of pKeyNode, or null. */
UVELHOST_API void *LITE_HASH_FindElmtFromFirst(LITE_HASH_S *pstHash, const void *pKeyNode);

/* A zeroed node that is not linked yet; null when memory is short and when ulMaxNodes nodes exist, linked or not. */
UVELHOST_API void *LITE_HASH_NewData(LITE_HASH_S *pstHash);

/* Links a node from LITE_HASH_NewData by the key it holds now, which must not change while it is linked. 1 for a null
 * argument, and for a node that is linked already or another table's. */
UVELHOST_API uint32_t LITE_HASH_AddNode(LITE_HASH_S *pstHash, void *pNode);

/* Unlinks the oldest node whose key equals that of pKeyNode and leaves its memory to the caller. 1 when there is
 * none. */
UVELHOST_API uint32_t LITE_HASH_RemoveElmtByKey(LITE_HASH_S *pstHash, const void *pKeyNode);

/* Releases a node that is not linked. Null, a linked node and another table's are ignored. */
UVELHOST_API void LITE_HASH_FreeData(LITE_HASH_S *pstHash, void *pNode);

/* Nodes linked into the table; 0 for null. */
UVELHOST_API uint32_t LITE_HASH_GetCount(const LITE_HASH_S *pstHash);

#endif
