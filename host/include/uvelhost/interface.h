/* Interfaces: what they are, where they sit, what state they are in.
 *
 * An interface is named by its index, a u32; 0 and 0xFFFFFFFF name none. Indices with the top byte 0x60 belong to
 * layer-2 virtual interfaces. Port types and physical types are numbers of the platform that callers compare with; a
 * loopback interface has port type 11.
 *
 * Every query answers from what the host knows at that moment and waits for nobody. It fails for an index without an
 * interface and for a null out-pointer. Callers turn a failure into a "none" value of their own and neither retry nor
 * log. Questions that are answered with 1 (yes) or 0 (no) have no failure: what does not exist is a "no". */
#ifndef UVELHOST_INTERFACE_H
#define UVELHOST_INTERFACE_H

#include "types.h"

#define IF_NAME_SIZE 64U /* bytes that hold every interface name, terminator included */
#define IF_MAC_SIZE 6U   /* bytes of a MAC address */

/* States of a line and of a port. */
#define IF_STATE_UP 1U
#define IF_STATE_DOWN 2U

/* One interface as the host hands it out whole. */
typedef struct {
    uint32_t ulIfIndex;          /* index of the interface, never 0 or 0xFFFFFFFF */
    uint32_t ulMainIfIndex;      /* for a sub-interface the interface it belongs to, otherwise its own index */
    uint32_t ulPortType;         /* the host's number for the kind of port */
    uint32_t ulPhyType;          /* the host's number for the physical kind */
    uint32_t ulLineState;        /* IF_STATE_UP or IF_STATE_DOWN */
    uint32_t ulPhyState;         /* IF_STATE_UP or IF_STATE_DOWN */
    uint16_t usVlanId;           /* 65535 for none */
    uint8_t aucMac[IF_MAC_SIZE]; /* in the order of transmission, zeros when it has none */
    char szName[IF_NAME_SIZE];   /* terminated */
} IF_IFNET_S;

/* 1 when ulIfIndex can be the index of an interface, 0 for 0 and 0xFFFFFFFF. Whether there is one is not asked. */
UVELHOST_API uint32_t BDS_IsValidIfIndex(uint32_t ulIfIndex);

/* ---- kind ---- */

/* 1 for an interface that switches frames (layer 2), otherwise 0. */
UVELHOST_API uint32_t BDS_IfnetIsSwitchPort(uint32_t ulIfIndex);

/* 1 for an interface that routes packets (layer 3), otherwise 0. */
UVELHOST_API uint32_t BDS_IfnetIsL3IF(uint32_t ulIfIndex);

/* 1 for a sub-interface, otherwise 0. */
UVELHOST_API uint32_t BDS_IfnetIsSubIf(uint32_t ulIfIndex);

/* 1 for an interface made for a while only (kept out of the configuration), otherwise 0. */
UVELHOST_API uint32_t BDS_IfnetIsTempIf(uint32_t ulIfIndex);

/* 1 for an Ethernet port that serves the device's management alone, otherwise 0. */
UVELHOST_API uint32_t IFPDT_IsAdminEthPort(uint32_t ulIfIndex);

/* Writes the port type. */
UVELHOST_API uint32_t BDS_IfnetGetPortType(uint32_t ulIfIndex, uint32_t *pulType);

/* Writes the physical type. */
UVELHOST_API uint32_t BDS_IfnetGetPhyType(uint32_t ulIfIndex, uint32_t *pulType);

/* ---- state ---- */

/* Writes the line state for IPv4: IF_STATE_UP or IF_STATE_DOWN. */
UVELHOST_API uint32_t BDS_IfnetGetLineState(uint32_t ulIfIndex, uint32_t *pulState);

/* Writes the link state for IPv6: IF_STATE_UP or IF_STATE_DOWN. */
UVELHOST_API uint32_t BDS_IfnetGetIpv6LinkState(uint32_t ulIfIndex, uint32_t *pulState);

/* Writes the physical state: IF_STATE_UP or IF_STATE_DOWN. */
UVELHOST_API uint32_t BDS_IfnetGetIfPhyState(uint32_t ulIfIndex, uint32_t *pulState);

/* Takes the interface down by administration, as the operator's command would. Already down is success. The state
 * change is announced to those registered for it, perhaps after this has returned. */
UVELHOST_API uint32_t IF_INTF_ShutDownInterface(uint32_t ulIfIndex);

/* Lifts IF_INTF_ShutDownInterface. Not taken down is success. */
UVELHOST_API uint32_t IF_INTF_NoShutDownInterface(uint32_t ulIfIndex);

/* ---- place ---- */

/* Writes the slot of the board that carries the interface. An interface that sits on no single board (a trunk, a VLAN
 * interface) has none: a failure, or success with 0xFFFFFFFF. */
UVELHOST_API uint32_t BDS_IfnetGetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot);

/* Writes the number of the card on its board. */
UVELHOST_API uint32_t BDS_IfnetGetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard);

/* Writes the number of the port on its card. */
UVELHOST_API uint32_t BDS_IfnetGetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort);

/* Writes the product's port index: slot in bits 16 to 23, card in bits 13 to 15, port in bits 0 to 5. */
UVELHOST_API uint32_t BDS_IfnetGetPortIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex);

/* Writes the index of the interface that a sub-interface belongs to; for any other interface its own index. */
UVELHOST_API uint32_t BDS_IfnetGetMainIfIndex(uint32_t ulIfIndex, uint32_t *pulMainIfIndex);

/* Writes the number of the virtual access point behind a radio interface. */
UVELHOST_API uint32_t BDS_IfnetGetVapIndexByDbssIfIndex(uint32_t ulIfIndex, uint32_t *pulVapIndex);

/* ---- addresses and memberships ---- */

/* Writes the interface's MAC address, in transmission order. */
UVELHOST_API uint32_t BDS_IfnetGetMacByIfIndex(uint32_t ulIfIndex, uint8_t aucMac[IF_MAC_SIZE]);

/* Writes the VLAN, 0 to 4095, that a VLAN interface or a VLAN sub-interface stands for; fails for others. */
UVELHOST_API uint32_t BDS_IfnetGetVlanIdByIfIndex(uint32_t ulIfIndex, uint16_t *pusVlanId);

/* Writes the index of the VRF that the interface's IPv4 traffic belongs to, 0 for the public one. */
UVELHOST_API uint32_t BDS_IfnetGetVrfIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulVrfIndex);

/* Writes the index of the VRF that the interface's IPv6 traffic belongs to, 0 for the public one. */
UVELHOST_API uint32_t BDS_IfnetGetIpv6VrfIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulVrfIndex);

/* ---- names ---- */

/* Writes the interface's name into ulSize bytes. 1 when there is no such interface or the name does not fit, the buffer
 * is then untouched. */
UVELHOST_API uint32_t BDS_IfnetGetIfNameByIfIndex(uint32_t ulIfIndex, char *pszName, uint32_t ulSize);

/* Writes the interface's short name ("GE1/0/1") into ulSize bytes; failures as for the full name. */
UVELHOST_API uint32_t IF_INTF_GetSimpleName(uint32_t ulIfIndex, char *pszName, uint32_t ulSize);

/* Writes the number part of an interface name, from its first digit on ("GigabitEthernet1/0/1": "1/0/1"). Fails for a
 * null argument, a name without a digit and a result that does not fit. The interface need not exist. */
UVELHOST_API uint32_t BDS_IfnetGetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize);

/* Writes the slot that a slot text ("3", with several chassis "1/3") names. Fails for any other text. */
UVELHOST_API uint32_t BDS_IfnetGetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot);

/* Writes the text that names a slot to people, at most 31 characters, into ulSize bytes. Fails, with the buffer
 * untouched, when it does not fit or the slot number cannot exist. In a device of one chassis an empty slot has
 * its text as well; with several there is none for it, since only a board tells which chassis its slot is in. */
UVELHOST_API uint32_t IF_GetSlotStrBySlotId(uint32_t ulSlot, char *pszSlot, uint32_t ulSize);

/* ---- whole records ----
 * The host keeps the record these three return, one for each thread: it is a copy that stays valid and unchanged until
 * the same thread's next call of any of them. Nobody frees it. */

/* The interface, or null when there is none. */
UVELHOST_API const IF_IFNET_S *IF_GetIfByIndex(uint32_t ulIfIndex);

/* The sub-interface of ulMainIfIndex with the lowest index, or null when it has none. */
UVELHOST_API const IF_IFNET_S *IF_FindFirstSubIfnet(uint32_t ulMainIfIndex);

/* The sub-interface of ulMainIfIndex with the next higher index than pstCurrent, or null at the end. pstCurrent may
 * have been removed meanwhile: only its index is looked at, before the record is overwritten. */
UVELHOST_API const IF_IFNET_S *IF_FindNextSubIfnet(uint32_t ulMainIfIndex, const IF_IFNET_S *pstCurrent);

#endif
