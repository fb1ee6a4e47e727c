/* Layer 2: VLANs, switch ports and what binds them.
 *
 * A VLAN id is a u16, 0 to 4095. A set of VLANs is a bitmap of 128 words, VLAN v in bit (v mod 32) of word v / 32. A
 * switch port has a port index of its own, counted from 0, beside the index of its interface.
 *
 * Usage:
 *     ulIfIndex = KIVO_Adapt_IF_GetIFIndexByVlanID(usVlanId);                       // 0xFFFFFFFF: it has no interface
 *     if (L2IF_SH_DYNVP_GetVlanListByPort(ulPort, aulBitmap) == KIVO_OK &&
 *         KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(usVlanId, aulBitmap) == 1) ...
 *
 * Ownership: nothing is allocated or kept.
 * Threads: any.
 * Errors: queries that give a value give a fixed one, named with each, for what does not exist. The others give the
 * host's result: 0, or a failure that leaves the out-parameters as they were. A null out-pointer is a failure. Nothing
 * is logged. */
#ifndef UVELCOMMON_BASE_KIVO_L2_QUERY_H
#define UVELCOMMON_BASE_KIVO_L2_QUERY_H

#include <uvelcommon_base/kivo_types.h>

#define KIVO_NO_VLAN 65535U         /* stands for no VLAN */
#define KIVO_VLAN_BITMAP_WORDS 128U /* of a VLAN bitmap: VLAN v is bit (v mod 32) of word v / 32 */

/* ---- VLANs and interfaces ---- */

/* Interface of a VLAN: of the bridge domain that it is bridged into where that has one, else the VLAN's own; 0xFFFFFFFF
 * for none. */
UVEL_API uint32_t KIVO_Adapt_IF_GetIFIndexByVlanID(uint16_t usVlanId);

/* The VLAN's own interface; 0xFFFFFFFF for none. */
UVEL_API uint32_t UVEL_L2IF_GetIfIndexByVlanId(uint16_t usVlanId);

/* The VLAN's own interface. */
UVEL_API uint32_t L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex);

/* The same as L2IF_VLAN_GetVlanIfIndex. */
UVEL_API uint32_t KIVO_L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex);

/* VLAN that a VLAN interface or sub-interface stands for; KIVO_NO_VLAN for others. */
UVEL_API uint32_t KIVO_IF_GetVlanIdByIfIndex(uint32_t ulIfIndex);

/* The same question as KIVO_IF_GetVlanIdByIfIndex, under a product hook's name. */
UVEL_API uint32_t KIVO_Adapt_IF_GetVlanIdByIfIndex(uint32_t ulIfIndex);

/* VLAN of any interface, of a switch port that of its untagged frames; KIVO_NO_VLAN for none. */
UVEL_API uint32_t UVEL_L2IF_GetVlanIdByIfIndex(uint32_t ulIfIndex);

/* As UVEL_L2IF_GetVlanIdByIfIndex, for an interface of a bridge domain the low 16 bits of the domain. pulId must not be
 * null (1 else) but is never written: the id is the result. */
UVEL_API uint32_t UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(uint32_t ulIfIndex, const uint32_t *pulId);

/* 1 when the VLAN exists. */
UVEL_API uint32_t L2IF_VLAN_IsUsed(uint16_t usVlanId);

/* 1 when the VLAN's bit is set in the bitmap. 0 for an id above 4095 and for null. */
UVEL_API uint32_t KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(uint16_t usVlanId, const uint32_t *paulBitmap);

/* Always 0. The host is asked for the port index of the interface all the same. */
UVEL_API uint32_t KIVO_Adapt_GetBitByVlanIdAndPortIndex(uint16_t usVlanId, uint32_t ulIfIndex);

/* ---- switch ports ---- */

/* Number of switch ports that the device can have; every port index is below it. */
UVEL_API uint32_t L2IF_SH_GetMaxSwitchPortNum(void);

/* 1 when the port index is below L2IF_SH_GetMaxSwitchPortNum. */
UVEL_API uint32_t KIVO_L2IF_IsValidPortIndex(uint32_t ulPortIndex);

/* 1 when the port index belongs to a port. */
UVEL_API uint32_t L2IF_PORT_IsUsed(uint32_t ulPortIndex);

/* The same as L2IF_PORT_IsUsed. */
UVEL_API uint32_t KIVO_L2IF_PORT_IsUsed(uint32_t ulPortIndex);

/* Interface of a switch port. */
UVEL_API uint32_t L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex);

/* The same as L2IF_PORT_GetIfIndex. */
UVEL_API uint32_t KIVO_L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex);

/* Port index of an interface. */
UVEL_API uint32_t L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex);

/* The same as L2IF_SH_PORT_GetIndexByIfIndex. */
UVEL_API uint32_t KIVO_L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex);

/* VLAN of the port's untagged frames, provided that the port is in mode ulMode (the host's L2IF_MODE_*). */
UVEL_API uint32_t L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId);

/* The same as L2IF_SH_GetVlanIdFromMode. */
UVEL_API uint32_t KIVO_L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId);

/* ---- bindings ---- */

/* 1 when the port is in the VLAN by configuration. */
UVEL_API uint32_t KIVO_Adapt_PortIsInCfgVlan(uint32_t ulPortIndex, uint16_t usVlanId);

/* VLANs that the port has joined without configuration, all 128 words. */
UVEL_API uint32_t L2IF_SH_DYNVP_GetVlanListByPort(uint32_t ulPortIndex, uint32_t aulBitmap[KIVO_VLAN_BITMAP_WORDS]);

/* Port indices that have joined the VLAN without configuration, ascending, and their number. *pulCount is the room of
 * the array in entries on the way in. */
UVEL_API uint32_t L2IF_SH_DYNVP_GetPortListByVlan(uint16_t usVlanId, uint32_t *pulPortIndex, uint32_t *pulCount);

/* How the VLAN is bound to the port without configuration (the host's L2IF_BIND_*). */
UVEL_API uint32_t L2IF_SH_DYNVP_GetVlanPortBindMode(uint16_t usVlanId, uint32_t ulPortIndex, uint32_t *pulMode);

#endif
