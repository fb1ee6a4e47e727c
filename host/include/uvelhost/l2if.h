/* Layer 2: VLANs, switch ports and what binds them.
 *
 * A VLAN id is a u16, 0 to 4095. A set of VLANs is a bitmap of 128 words, VLAN v in bit (v mod 32) of word v / 32. A
 * switch port has an index of its own, counted from 0 below BDS_L2IF_SH_GetMaxSwitchPortNum, beside the index of its
 * interface; "port index" below is the former. A VLAN may have a layer-3 interface, and one that is bridged into a
 * bridge domain may have the interface of that domain.
 *
 * Failures as for interfaces: what does not exist, and a null out-pointer. Callers turn a failure into a "none" value
 * of their own and neither retry nor log. */
#ifndef UVELHOST_L2IF_H
#define UVELHOST_L2IF_H

#include "types.h"

#define L2IF_VLAN_BITMAP_WORDS 128U /* of 32 VLANs each: VLAN v is bit (v mod 32) of word v / 32 */

/* What BDS_L2_VlanGetIdByIfIndex reads. */
#define L2IF_ID_VLAN 0U       /* the VLAN */
#define L2IF_ID_VLAN_OR_BD 1U /* the VLAN, for an interface of a bridge domain the domain */

/* How a port takes frames in. */
#define L2IF_MODE_ACCESS 0U
#define L2IF_MODE_TRUNK 1U
#define L2IF_MODE_HYBRID 2U

/* How a VLAN is bound to a port. */
#define L2IF_BIND_NONE 0U
#define L2IF_BIND_UNTAGGED 1U
#define L2IF_BIND_TAGGED 2U

/* ---- VLANs ---- */

/* 1 when the VLAN exists, otherwise 0. */
UVELHOST_API uint32_t BDS_L2IF_VLAN_IsUsed(uint16_t usVlanId);

/* Writes the index of the VLAN's layer-3 interface. */
UVELHOST_API uint32_t BDS_L2IF_VLAN_GetIfIndexByVlanId(uint16_t usVlanId, uint32_t *pulIfIndex);

/* The same question as BDS_L2IF_VLAN_GetIfIndexByVlanId, as VLAN services ask it. */
UVELHOST_API uint32_t BDS_L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex);

/* The same question as BDS_L2IF_VLAN_GetIfIndexByVlanId, as the layer-2 database answers it. */
UVELHOST_API uint32_t BDS_L2_VlanGetIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex);

/* Writes the index of the interface of the bridge domain that the VLAN is bridged into; fails when it is in none, or
 * the domain has no interface. */
UVELHOST_API uint32_t BDS_L2_VlanGetVbdIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex);

/* Writes the VLAN of an interface: of a VLAN interface or sub-interface the one it stands for, of a switch port the one
 * of its untagged frames. ulOption is L2IF_ID_VLAN or L2IF_ID_VLAN_OR_BD; other values fail. The id is in the low 16
 * bits. */
UVELHOST_API uint32_t BDS_L2_VlanGetIdByIfIndex(uint32_t ulIfIndex, uint32_t ulOption, uint32_t *pulId);

/* ---- switch ports ---- */

/* Number of switch ports that the device can have; every port index is below it. */
UVELHOST_API uint32_t BDS_L2IF_SH_GetMaxSwitchPortNum(void);

/* 1 when the port index belongs to a port, otherwise 0. */
UVELHOST_API uint32_t BDS_L2IF_PORT_IsUsed(uint32_t ulPortIndex);

/* Writes the interface index of a switch port. Asked for every QinQ event: a failure drops that event. */
UVELHOST_API uint32_t BDS_L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex);

/* Writes the port index of an interface; fails when it is no switch port. */
UVELHOST_API uint32_t BDS_L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex);

/* Writes the VLAN of the port's untagged frames, provided that the port is in mode ulMode (L2IF_MODE_*); fails
 * otherwise. */
UVELHOST_API uint32_t BDS_L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId);

/* ---- bindings ---- */

/* 1 when the port is in the VLAN by configuration, otherwise 0. */
UVELHOST_API uint32_t L2IF_VP_PortIsInCfgVlan(uint32_t ulPortIndex, uint16_t usVlanId);

/* Writes the VLANs that the port has joined without configuration (learnt or assigned by a service), all 128 words. A
 * port in none succeeds with an empty bitmap. */
UVELHOST_API uint32_t BDS_L2IF_SH_DYNVP_GetVlanListByPort(uint32_t ulPortIndex,
                                                          uint32_t aulBitmap[L2IF_VLAN_BITMAP_WORDS]);

/* Writes the port indices that have joined the VLAN without configuration, ascending, and their number. *pulCount is
 * the room of the array in entries on the way in; fails, with both untouched, when they do not fit. */
UVELHOST_API uint32_t BDS_L2IF_SH_DYNVP_GetPortListByVlan(uint16_t usVlanId, uint32_t *pulPortIndex,
                                                          uint32_t *pulCount);

/* Writes how the VLAN is bound to the port without configuration: L2IF_BIND_*. */
UVELHOST_API uint32_t BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(uint16_t usVlanId, uint32_t ulPortIndex, uint32_t *pulMode);

#endif
