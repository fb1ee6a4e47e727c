/* Doubly linked list, circular, with the links inside the caller's records.
 *
 * An empty head points to itself in both directions and counts 0; callers may initialise heads by hand. A record
 * starts with a DLL_NODE_S. Nothing is allocated or locked here. */
#ifndef UVELHOST_LIST_H
#define UVELHOST_LIST_H

#include "types.h"

/* A node, the first member of what is linked. */
typedef struct DLL_NODE DLL_NODE_S;

/* A node; both links are null while it is in no list. */
struct DLL_NODE {
    DLL_NODE_S *pstNext; /* next node, or the head */
    DLL_NODE_S *pstPrev; /* previous node, or the head */
    void *pReserved;
};

/* A list's head, which closes the ring of its nodes. */
typedef struct {
    DLL_NODE_S *pstNext; /* first node, or the head itself */
    DLL_NODE_S *pstPrev; /* last node, or the head itself */
    void *pReserved;
    uint32_t ulCount; /* nodes in the list */
} DLL_S;

/* Makes the head empty. */
UVELHOST_API void DLL_Init(DLL_S *pstList);

/* Links pstNode, which is in no list, behind pstPrev; a null pstPrev, or the head itself (as a node), puts it first.
 * Null list or node: nothing happens. */
UVELHOST_API void DLL_Insert(DLL_S *pstList, DLL_NODE_S *pstPrev, DLL_NODE_S *pstNode);

/* Unlinks pstNode, whose links become null. Null list or node, and a node that is in no list (null links): nothing
 * happens. */
UVELHOST_API void DLL_Delete(DLL_S *pstList, DLL_NODE_S *pstNode);

#endif
