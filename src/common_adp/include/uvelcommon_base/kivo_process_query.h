/* Processes: which nodes and processes serve a module, virtual systems, and the device's command line.
 *
 * Usage:
 *     ulRet = KIVO_Adapt_IPC_GetNodeID(ulMid, ulComTypeId, 0xFFFFFFFF, aulNode, &ulCount);      // any slot
 *     ulRet = KIVO_Adapt_GetInstanceNameByNodeID(ulNode, ulInstance, szName, sizeof(szName));   // "process  3"
 *
 * Ownership: nothing is allocated; what a function keeps it says.
 * Threads: any.
 * Errors: each function says what it gives where there is no answer. Nothing is logged. */
#ifndef UVELCOMMON_BASE_KIVO_PROCESS_QUERY_H
#define UVELCOMMON_BASE_KIVO_PROCESS_QUERY_H

#include <uvelcommon_base/kivo_types.h>
#include <uvelhost/cli.h>

/* Bytes that hold every instance name, terminator included. */
#define KIVO_INSTANCE_NAME_SIZE 32U

/* Id of the main node: 0 at load, set by the product layer and only read by the library. */
UVEL_DATA uint32_t g_uveldMainNodeID;

/* ---- nodes and processes ---- */

/* g_uveldMainNodeID. */
UVEL_API uint32_t KIVO_Adapt_IPC_GetMainNodeID(void);

/* Ids of the nodes that serve the module ulMid, in no particular order, and their number; of a component type and on a
 * slot, each 0xFFFFFFFF for any. The array has room for CMNGA_MAX_NODES entries. 1 for a null out-pointer and when the
 * host cannot tell. */
UVEL_API uint32_t KIVO_Adapt_IPC_GetNodeID(uint32_t ulMid, uint32_t ulComTypeId, uint32_t ulSlot, uint32_t *pulNode,
                                           uint32_t *pulCount);

/* Id of the process on this board that serves the module ulMid. 1 for null and when there is none. */
UVEL_API uint32_t KIVO_Adapt_GetProcessIdByMid(uint32_t ulMid, uint32_t *pulProcessId);

/* "process %2u" with bits 12 to 19 of the instance, into ulSize bytes; a buffer that is too small receives an empty
 * text. The node is not looked at. 0, or 1 with an assertion for a null buffer. */
UVEL_API uint32_t KIVO_Adapt_GetInstanceNameByNodeID(uint32_t ulNodeId, uint32_t ulInstance, char *pszName,
                                                     uint32_t ulSize);

/* KIVO_INSTANCE_NAME_SIZE into *pulLen. 1 for null. */
UVEL_API uint32_t KIVO_Adapt_GetInstanceNameMaxLen(uint32_t *pulLen);

/* ---- virtual systems ---- */

/* Virtual system that the calling task works for, 0 for the device as a whole. */
UVEL_API uint32_t KIVO_Adapt_CFG_GetVsysID(void);

/* Virtual system behind the VPN instance of this name. 0 when there is none and for an id that is not below common
 * specification 0, the number of virtual systems. */
UVEL_API uint32_t KIVO_Adapt_GetVsysIDByIfFullName(const char *pszName);

/* ---- the product and its command line: the host's operations of the same meaning, arguments and results as there ---- */

/* 1 when the device is a pure LAN switch, otherwise 0. */
UVEL_API uint32_t KIVO_Adapt_SupportOnlyLsw(void);

/* Adds Chinese help texts for the commands of the module ulMid; texts and array must live as long as the process. */
UVEL_API uint32_t KIVO_Adapt_RegistChineseCLI(uint32_t ulMid, const CLI_TEXT_S *pstTexts, uint32_t ulCount);

/* Help for a command argument that names a service processor, into ulSize bytes. */
UVEL_API uint32_t KIVO_Adapt_SpuCpuHelp(char *pszHelp, uint32_t ulSize);

/* Reads such an argument. */
UVEL_API uint32_t KIVO_Adapt_SpuCpuCheck(const char *pszArgument, uint32_t *pulSlot, uint32_t *pulCpu);

#endif
