/* Components: which process serves which module, and what a process tells the platform about itself. */
#ifndef UVELHOST_COMPONENT_H
#define UVELHOST_COMPONENT_H

#include <stddef.h>

#include "types.h"

#define CMNGA_MAX_NODES 256U /* most nodes that a query writes */

/* What a process publishes about itself. What is not named here is 0 unless a product of its own needs it. */
typedef struct {
    uint32_t ulMid;           /* module id of the process, set by its owner */
    uint32_t ulPriority;      /* priority of its task, set by its owner */
    uint32_t ulTaskId;        /* its task, set by the host */
    uint32_t aulReserved[45]; /* of the platform */
} SYS_APP_INFO_S;
UVELHOST_STATIC_ASSERT(sizeof(SYS_APP_INFO_S) == 192, "the platform's record");
UVELHOST_STATIC_ASSERT(offsetof(SYS_APP_INFO_S, ulMid) == 0, "the module id comes first");

/* Publishes the record for this process. The host keeps the pointer for the life of the process and writes ulTaskId
 * when it starts the task that serves the module (SYS_StartApp), before that task's entry runs. Fails for null, and for
 * another record than the one published already. */
UVELHOST_API uint32_t SYS_RegAppInfo(SYS_APP_INFO_S *pstInfo);

/* Starts the task that serves the module: QAL_CreateTask with the priority of the published record, whose ulTaskId
 * receives the task's number. Fails when no record is published, and as QAL_CreateTask does. */
UVELHOST_API uint32_t SYS_StartApp(const char *pszName, void (*pfEntry)(void));

/* Makes this process the one that serves the module ulMid, as a component of the type ulComTypeId. Again with the same
 * type is a success. A failure leaves the process without its place in the system; the library raises a fatal error. */
UVELHOST_API uint32_t CMNGA_ModuleRegister(uint32_t ulMid, uint32_t ulComTypeId);

/* Writes the ids of the nodes that serve the module ulMid, in no particular order, and their number. Only nodes of the
 * component type ulComTypeId and on the board in ulSlot are meant; 0xFFFFFFFF for either means any. The array has room
 * for CMNGA_MAX_NODES entries; what goes beyond is left out. No such node is a success with the number 0. Fails for
 * null out-pointers and when the component manager cannot be asked. */
UVELHOST_API uint32_t CMNGA_QueryNodeId(uint32_t ulMid, uint32_t ulComTypeId, uint32_t ulSlot, uint32_t *pulNode,
                                        uint32_t *pulCount);

/* Writes the id of the process on this board that serves the module ulMid; fails when none does. */
UVELHOST_API uint32_t CMNGA_QueryCompProcByMid(uint32_t ulMid, uint32_t *pulProcessId);

#endif
