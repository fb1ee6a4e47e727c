/* Looking into the device model: for inspectors, for feeders that change a part of a record, for tests.
 *
 *     MDL_IF_S stIf;
 *     for (ulNext = 0; MDL_NextIf(ulNext, &stIf) == 0; ulNext = stIf.ulIfIndex + 1) ...
 *
 * Get writes the object with the key, Next the one with the lowest key that is not below the given one; both answer 1
 * when there is none and leave the record untouched. Records are copies. A thread with an open batch sees its own
 * changes; other threads see what has been committed, and a walk of several calls may see several states: it saw one
 * when MDL_GetVersion answers the same before and after. */
#ifndef UVELHOST_MODEL_VIEW_H
#define UVELHOST_MODEL_VIEW_H

#include "model.h"

/* Number of the published state; each commit counts it up. */
UVELHOST_API uint64_t MDL_GetVersion(void);

/* Fails for null only. */
UVELHOST_API uint32_t MDL_GetDevice(MDL_DEVICE_S *pstDevice);

/* The board of a slot; the next one behind it. */
UVELHOST_API uint32_t MDL_GetBoard(uint32_t ulSlot, MDL_BOARD_S *pstBoard);
UVELHOST_API uint32_t MDL_NextBoard(uint32_t ulSlot, MDL_BOARD_S *pstBoard);

/* The interface of an index; the next one behind it. */
UVELHOST_API uint32_t MDL_GetIf(uint32_t ulIfIndex, MDL_IF_S *pstIf);
UVELHOST_API uint32_t MDL_NextIf(uint32_t ulIfIndex, MDL_IF_S *pstIf);

/* Writes the index of the interface of this name; of several the lowest. */
UVELHOST_API uint32_t MDL_FindIf(const char *pszName, uint32_t *pulIfIndex);

/* Addresses in the order of interface and address. */
UVELHOST_API uint32_t MDL_NextAddr4(uint32_t ulIfIndex, uint32_t ulAddr, MDL_ADDR4_S *pstAddr);
UVELHOST_API uint32_t MDL_NextAddr6(uint32_t ulIfIndex, const uint8_t aucAddr[16], MDL_ADDR6_S *pstAddr);

/* A VLAN; the next one behind it. */
UVELHOST_API uint32_t MDL_GetVlan(uint32_t ulVlanId, MDL_VLAN_S *pstVlan);
UVELHOST_API uint32_t MDL_NextVlan(uint32_t ulVlanId, MDL_VLAN_S *pstVlan);

/* Writes which VLANs exist. Fails for null only. */
UVELHOST_API uint32_t MDL_GetVlanBitmap(uint32_t aulBitmap[L2IF_VLAN_BITMAP_WORDS]);

/* Writes the indices of the ports that are in the VLAN, by configuration or without, ascending, and their number.
 * *pulCount is the room of the array in entries on the way in; fails, with both untouched, when they do not fit. */
UVELHOST_API uint32_t MDL_GetVlanPorts(uint32_t ulVlanId, uint32_t *pulPortIndex, uint32_t *pulCount);

/* The VLANs of a switch port; those of the next one behind it. */
UVELHOST_API uint32_t MDL_GetPortVlans(uint32_t ulPortIndex, MDL_PORT_VLANS_S *pstVlans);
UVELHOST_API uint32_t MDL_NextPortVlans(uint32_t ulPortIndex, MDL_PORT_VLANS_S *pstVlans);

/* Trunks by index, members by interface. */
UVELHOST_API uint32_t MDL_GetTrunk(uint32_t ulTrunkIndex, MDL_TRUNK_S *pstTrunk);
UVELHOST_API uint32_t MDL_NextTrunk(uint32_t ulTrunkIndex, MDL_TRUNK_S *pstTrunk);
UVELHOST_API uint32_t MDL_GetMember(uint32_t ulIfIndex, MDL_MEMBER_S *pstMember);
UVELHOST_API uint32_t MDL_NextMember(uint32_t ulIfIndex, MDL_MEMBER_S *pstMember);

/* The VRF of an index; the next one behind it. */
UVELHOST_API uint32_t MDL_GetVrf(uint32_t ulVrfIndex, MDL_VRF_S *pstVrf);
UVELHOST_API uint32_t MDL_NextVrf(uint32_t ulVrfIndex, MDL_VRF_S *pstVrf);

/* Virtual routers in the order of interface and virtual address. */
UVELHOST_API uint32_t MDL_NextVrrp(uint32_t ulIfIndex, uint32_t ulAddr, MDL_VRRP_S *pstVrrp);

/* The first route behind pstAfter (null: the first of all), in the order of the record's fields. */
UVELHOST_API uint32_t MDL_NextRoute(const MDL_ROUTE_S *pstAfter, MDL_ROUTE_S *pstRoute);

#endif
