/* Interfaces: what they are, what state they are in, where they sit and what they are called.
 *
 * An interface is named by its index, a u32; 0 and 0xFFFFFFFF name none and are called invalid here. Each query asks the
 * host at that moment, waits for nobody and logs nothing.
 *
 * Usage:
 *     if (KIVO_IF_IsPhyStateUp(ulIfIndex) == 1) ...
 *     if (IFPDT_GetSlotByIfIndex(ulIfIndex, &ulSlot) != KIVO_OK) ...
 *     (void)strcpy_s(szName, sizeof(szName), KIVO_IF_GetNameByIfIndex(ulIfIndex));         // copied at once, see below
 *
 * Ownership: the two name queries that give a text keep one buffer each, which their next call overwrites, whoever makes
 * it: copy the text at once. Records belong to the host (see IF_GetIfByIndex).
 * Threads: any, except for these two name buffers.
 * Errors: queries that give a value give a fixed one, named with each, for an index without an interface. The others
 * give the host's result: 0, or a failure that leaves the out-parameters as they were unless it says otherwise. A null
 * out-pointer is a failure. */
#ifndef UVELCOMMON_BASE_KIVO_IF_QUERY_H
#define UVELCOMMON_BASE_KIVO_IF_QUERY_H

#include <uvelcommon_base/kivo_types.h>
#include <uvelhost/interface.h>

/* States of a line and of a port. */
#define KIVO_IF_STATE_UP 1U
#define KIVO_IF_STATE_DOWN 2U
#define KIVO_IF_STATE_UNKNOWN 10U

/* ---- index and kind ---- */

/* 0 for the invalid indices 0 and 0xFFFFFFFF, otherwise 1. Whether there is such an interface is not asked. */
UVEL_API uint32_t KIVO_IF_IsValidIfIndex(uint32_t ulIfIndex);

/* 1 for an index whose top byte is 0x60, which is a layer-2 interface by its number; otherwise what the host says: 1 for
 * a switch port, 0 for any other. */
UVEL_API uint32_t KIVO_Adapt_IF_GetIFLayerType(uint32_t ulIfIndex);

/* 1 when the layer type is 1. 0 for an invalid index. */
UVEL_API uint32_t KIVO_Adapt_IF_IS_L2IF(uint32_t ulIfIndex);

/* 1 when the layer type is not 1. 0 for an invalid index. */
UVEL_API uint32_t KIVO_Adapt_IF_IS_L3IF(uint32_t ulIfIndex);

/* 1 for a sub-interface. 0 for an invalid index. */
UVEL_API uint32_t KIVO_Adapt_IF_IS_SUBIF(uint32_t ulIfIndex);

/* 1 for an interface of the wide-area side: a layer-3 interface that is no sub-interface and whose port type is 1, 25,
 * 26, 32, 33, 43, 97, 98, 99, 102 or 103. For a member of a trunk the trunk's interface is looked at. */
UVEL_API uint32_t KIVO_Adapt_IsWANInterface(uint32_t ulIfIndex);

/* Port type; 0 for none. */
UVEL_API uint32_t KIVO_IF_GetPortType(uint32_t ulIfIndex);

/* Physical type; 0xFFFFFFFF for none. */
UVEL_API uint32_t KIVO_IF_GetIfPhyType(uint32_t ulIfIndex);

/* 1 for an interface made for a while only. */
UVEL_API uint32_t IF_INTF_IsTempIf(uint32_t ulIfIndex);

/* 1 for an Ethernet port that serves the device's management alone. */
UVEL_API uint32_t KIVO_IFPDT_IsAdminEthPort(uint32_t ulIfIndex);

/* The library's number for a command of the host's interface notifications, 0xFFFFFFFF for one that it does not know. */
UVEL_API uint32_t KIVO_Get_KivoIFCmdtype(uint32_t ulCommand);

/* The library's number for an interface type of the host: the same number, whatever it is. */
UVEL_API uint32_t KIVO_Get_OxmIfType(uint32_t ulType);

/* ---- state ---- */

/* KIVO_IF_STATE_UP when IPv4 or IPv6 can use the line, KIVO_IF_STATE_DOWN when neither can; KIVO_IF_STATE_UNKNOWN, with
 * an assertion, when the host cannot tell one of the two. */
UVEL_API uint32_t KIVO_IF_GetIfLineStatuesByIndex(uint32_t ulIfIndex);

/* The physical state; KIVO_IF_STATE_UNKNOWN for none. */
UVEL_API uint32_t KIVO_IF_GetIfPhyStatusByIndex(uint32_t ulIfIndex);

/* 1 when IPv4 can use the line, otherwise 0. */
UVEL_API uint32_t KIVO_IF_IsLineStateUp(uint32_t ulIfIndex);

/* 1 when the physical state is up, otherwise 0. */
UVEL_API uint32_t KIVO_IF_IsPhyStateUp(uint32_t ulIfIndex);

/* Takes an interface down by administration. */
UVEL_API uint32_t KIVO_Adapt_IF_INTF_ShutDownInterface(uint32_t ulIfIndex);

/* Lifts KIVO_Adapt_IF_INTF_ShutDownInterface. */
UVEL_API uint32_t KIVO_Adapt_IF_INTF_NoShutDownInterface(uint32_t ulIfIndex);

/* ---- place ---- */

/* Slot of the board that carries the interface. A trunk sits on no single board: where the host names no slot for it,
 * it gets the value that common specification 4 reserves for trunks. 1 for an invalid index and when there is no slot;
 * for a valid index *pulSlot is then 0. */
UVEL_API uint32_t IFPDT_GetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot);

/* The same as IFPDT_GetSlotByIfIndex. */
UVEL_API uint32_t KIVO_IFPDT_GetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot);

/* Number of the card on its board. 1 for an invalid index. */
UVEL_API uint32_t IFPDT_GetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard);

/* The same as IFPDT_GetCardByIfIndex. */
UVEL_API uint32_t KIVO_IFPDT_GetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard);

/* Number of the port on its card. 1 for an invalid index. */
UVEL_API uint32_t IFPDT_GetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort);

/* The same as IFPDT_GetPortByIfIndex. */
UVEL_API uint32_t KIVO_IFPDT_GetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort);

/* The product's port index, which the next three take apart. 1 for an invalid index. */
UVEL_API uint32_t IFPDT_GetPortIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPdtIndex);

/* Slot in a product port index: its bits 16 to 23. */
UVEL_API uint32_t KIVO_IFPDT_GetSlotByPdtIndex(uint32_t ulPdtIndex);

/* Card in a product port index: its bits 13 to 15. */
UVEL_API uint32_t KIVO_IFPDT_GetCardByPdtIndex(uint32_t ulPdtIndex);

/* Port in a product port index: its bits 0 to 5. */
UVEL_API uint32_t KIVO_IFPDT_GetPortByPdtIndex(uint32_t ulPdtIndex);

/* Index of the interface that a sub-interface belongs to, for any other interface its own; 0 for none. */
UVEL_API uint32_t KIVO_Adapt_GetMainIf(uint32_t ulIfIndex);

/* Number of the virtual access point behind a radio interface. */
UVEL_API uint32_t IFPDT_GetVapIndexByDbssIfIndex(uint32_t ulIfIndex, uint32_t *pulVapIndex);

/* ---- names ---- */

/* The interface's name, empty when the host has none, in a buffer of this function; null for an invalid index. */
UVEL_API const char *KIVO_IF_GetNameByIfIndex(uint32_t ulIfIndex);

/* The interface's name in a buffer of this function; null when the host answers that there is none. */
UVEL_API const char *KIVO_IF_GetName(uint32_t ulIfIndex);

/* The interface's name into ulSize bytes; 1 when there is none or it does not fit. */
UVEL_API uint32_t IF_GetIfNameByIfIndex(uint32_t ulIfIndex, char *pszName, uint32_t ulSize);

/* The interface's short name into ulSize bytes. */
UVEL_API uint32_t KIVO_IF_INTF_GetSimpleName(uint32_t ulIfIndex, char *pszName, uint32_t ulSize);

/* The number part of an interface name into ulSize bytes ("GigabitEthernet1/0/1": "1/0/1"). */
UVEL_API uint32_t IF_INTF_GetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize);

/* The same as IF_INTF_GetNumStrFromName. */
UVEL_API uint32_t KIVO_IF_GetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize);

/* The slot that a slot text names. */
UVEL_API uint32_t IF_GetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot);

/* The same as IF_GetSlotIdBySlotStr. */
UVEL_API uint32_t KIVO_IF_GetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot);

/* The text that names a slot to people, at most 31 characters, into ulSize bytes. */
UVEL_API uint32_t KIVO_GetSlotStrBySlotId(uint32_t ulSlot, char *pszSlot, uint32_t ulSize);

/* ---- whole records, as the host keeps them for the calling thread until it asks for the next ---- */

/* The interface; null for none. */
UVEL_API const IF_IFNET_S *KIVO_IF_GetIfByIndex(uint32_t ulIfIndex);

/* The sub-interface of ulMainIfIndex with the lowest index; null for none. */
UVEL_API const IF_IFNET_S *KIVO_Adapt_IF_FindFirstSubIfnet(uint32_t ulMainIfIndex);

/* The sub-interface of ulMainIfIndex with the next higher index than pstCurrent; null at the end. */
UVEL_API const IF_IFNET_S *KIVO_Adapt_IF_FindNextSubIfnet(uint32_t ulMainIfIndex, const IF_IFNET_S *pstCurrent);

#endif
