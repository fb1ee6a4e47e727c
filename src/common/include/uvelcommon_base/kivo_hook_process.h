/* Forwarders to product hooks: boards, processes, components and reserved ports.
 *
 * Every function calls the hook of its name (see kivo_hooks.h) and returns its result; "0 without a hook" and the like
 * is the answer where none is installed. */
#ifndef UVELCOMMON_BASE_KIVO_HOOK_PROCESS_H
#define UVELCOMMON_BASE_KIVO_HOOK_PROCESS_H

#include "kivo_hooks.h"

/* Id of this board. 0 without a hook. */
UVEL_API uint32_t Kivo_GetSelfBoardId(void);

/* Slot id of this board. 0 without a hook. */
UVEL_API uint32_t Kivo_GetSelfBoardSlotId(void);

/* Node id of the main process. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_IPC_GetMainNodeID(void);

/* Process id of a module. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetProcessIdByMidID(KIVO_WORDS);

/* Process id of this process. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetSelfProcessId(KIVO_WORDS);

/* System name, terminated, into a buffer of ulSize bytes. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_Gethostname(char *pszBuffer, uint32_t ulSize);

/* Whether a protocol port is in use; the first two arguments are cut to 16 bits. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_IsPortInUse(KIVO_WORDS);

/* Reserves a protocol port. 1 without a hook. */
UVEL_API uint32_t KIVO_RegisterPort(KIVO_WORDS);

/* Gives a reserved protocol port back. Nothing happens without a hook. */
UVEL_API void KIVO_UnRegisterPort(KIVO_WORDS);

/* Longest process name of a service processing unit into *pulLen. A null pointer asserts and gives 1; 1 without a
 * hook. */
UVEL_API uint32_t KIVO_GetSpuProcessNameMaxLen(uint32_t *pulLen);

/* Help text for the CPU argument of a command. 1 without a hook. */
UVEL_API uint32_t KIVO_SpuCpuHelp(KIVO_WORDS);

/* Help text for the process argument of a command. 1 without a hook. */
UVEL_API uint32_t KIVO_SpuProcessNameHelp(KIVO_WORDS);

/* Checks the CPU argument of a command. 1 without a hook. */
UVEL_API uint32_t KIVO_SpuCpuCheck(KIVO_WORDS);

/* Checks the process argument of a command. 1 without a hook. */
UVEL_API uint32_t KIVO_SpuProcessNameCheck(KIVO_WORDS);

/* Node id of a named process. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetNodeIDByProcessName(KIVO_WORDS);

/* Longest instance name into *pulLen. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetInstanceNameMaxLen(uint32_t *pulLen);

/* Name of an instance on a node into a buffer of ulSize bytes. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetInstanceNameByNodeID(uint32_t ulNodeId, uint32_t ulInstance, char *pszBuffer,
                                                   uint32_t ulSize);

/* Longest process name. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetProcessNameMaxLen(KIVO_WORDS);

/* Process name of a node. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_GetProcessNameByNodeID(KIVO_WORDS);

/* Nodes that serve a database table: their ids into paulNodes, their number into *pulCount. A result other than 0 is
 * the hook's; on 0 a list of 1 to 256 nodes has been sorted ascending. 1 without a hook. */
UVEL_API uint32_t KIVO_IPC_DBI_GetNodeID(uintptr_t ulArg1, uintptr_t ulArg2, uintptr_t ulArg3, uint32_t *paulNodes,
                                         uint32_t *pulCount);

/* Registers a thread with the product's supervision. 0 without a hook. */
UVEL_API uint32_t KIVO_Support_Thread_Register(KIVO_WORDS);

/* Starts this process's heartbeat. 0 without a hook. */
UVEL_API uint32_t KIVO_SADP_HBTurnOnMine(KIVO_WORDS);

/* Stops this process's heartbeat. 0 without a hook. */
UVEL_API uint32_t KIVO_SADP_HBTurnOffMine(KIVO_WORDS);

/* Answers a heartbeat. Nothing happens without a hook. */
UVEL_API void KIVO_SADP_HBResponse(KIVO_WORDS);

/* Registers a component with the component manager. 0 without a hook. */
UVEL_API uint32_t UVEL_COMP_MNG_Register(KIVO_WORDS);

/* Subscribes to an event of the component manager; the second argument is cut to 32 bits. 1 without a hook. */
UVEL_API uint32_t UVEL_COMP_MNG_RegisterEvent(KIVO_WORDS);

/* Publishes an event of the component manager. 1 without a hook. */
UVEL_API uint32_t UVEL_COMP_MNG_PublishEvent(KIVO_WORDS);

/* Always 0: configuration is not synchronised between boards. */
UVEL_API uint32_t KIVO_IsConfigSynEnable(void);

/* Always 1: every board supports network admission control. */
UVEL_API uint32_t KIVO_IsBoardSupportNac(void);

#endif
