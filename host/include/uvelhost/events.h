/* Notifications: how the library hears of changes to interfaces, boards, addresses, VLANs and trunks.
 *
 * A registration names what it wants to hear of and a callback, and holds for the life of the process. Registering is
 * done at start-up by one thread; changes may be announced while it goes on. Changes of virtual systems are in vrf.h.
 *
 * Threads: the host calls back on its notifying thread, one notification at a time, in the order of the changes. A
 * callback may call every query of the host and may take its time; it must not wait for another notification.
 * Ownership: what a callback's pointers lead to belongs to the host and is valid during the call only.
 * Results of callbacks: 0 is fine. Anything else is counted by the host and changes nothing, except for questions (said
 * below), which it answers with "no".
 * Order: callbacks of one notification are called by descending priority where there is one, otherwise and among
 * equals in the order of registration. One function may be registered many times, also for the same thing.
 * Failures of a registration: a null callback, a null name, a type or event that the host does not know, no room. The
 * library reports a failure and goes on with the next registration. */
#ifndef UVELHOST_EVENTS_H
#define UVELHOST_EVENTS_H

#include "types.h"

/* A callback whose type depends on what it is registered for. The registrant converts its function to this type, the
 * host converts it back to the type of the notification before it calls it. */
typedef void (*UVELHOST_CALLBACK)(void);

/* ---- interfaces, slots, cards, bridge domains ---- */

#define IF_EVT_SLOT 2U               /* IF_SLOT_EVT_CB */
#define IF_EVT_CARD 3U               /* IF_CARD_EVT_CB */
#define IF_EVT_IF 5U                 /* IF_IF_EVT_CB */
#define IF_EVT_VRF_SET 8U            /* IF_VRF_SET_EVT_CB */
#define IF_EVT_IOCTL 9U              /* IF_IOCTL_EVT_CB */
#define IF_EVT_BD 13U                /* IF_BD_EVT_CB */
#define IF_EVT_ALL_SUB 0xFFFFFFFFU   /* every sub-type of the type */
#define IF_EVT_MASK_ALL 0xBFFFFFFFU  /* usual mask */
#define IF_EVT_MASK_PART 0x3FFFFFFFU /* usual mask without its top bit */

/* A slot; ulKind 0 to 3 is the sub-type, ulA and ulB say which slot and what of it. */
typedef uint32_t (*IF_SLOT_EVT_CB)(uint32_t ulKind, uint32_t ulA, uint32_t ulB);

/* A card; ulKind 0 to 4 is the sub-type, the others say which card and what of it. */
typedef uint32_t (*IF_CARD_EVT_CB)(uint32_t ulKind, uint32_t ulA, uint32_t ulB, uint32_t ulC);

/* An interface as such; ulEvent is the sub-type. The library listens to 2, 3, 6 (it goes) and 25. */
typedef uint32_t (*IF_IF_EVT_CB)(uint32_t ulEvent, uint32_t ulIfIndex);

/* The VRF of something; ulEvent is the sub-type. The library listens to 10. */
typedef uint32_t (*IF_VRF_SET_EVT_CB)(uint32_t ulEvent, uint32_t ulValue);

/* A state of an interface; ulCommand is the sub-type and says which state, ulState is 0 for down and 1 for up,
 * *pulFlags (may be null) are flag bits of which the library passes on bits 0 and 6. The library listens to 2, 3, 7, 8
 * and, for layer-2 sub-interfaces, 12. */
typedef uint32_t (*IF_IOCTL_EVT_CB)(uint32_t ulCommand, uint32_t ulState, uint32_t ulIfIndex, const uint32_t *pulFlags);

/* A bridge domain; ulSubType 0 or 1. */
typedef uint32_t (*IF_BD_EVT_CB)(uint32_t ulSubType, uint32_t ulA, uint16_t usB);

/* Registers pfCallback, which is of the type that belongs to ulType (IF_EVT_*), for one sub-type or IF_EVT_ALL_SUB.
 * ulMask says under which conditions of the platform the callback wants to be called; on Linux there are none, the mask
 * is recorded and shown. */
UVELHOST_API uint32_t IF_INTF_RegEvtCb(uint32_t ulType, uint32_t ulSubType, UVELHOST_CALLBACK pfCallback,
                                       uint32_t ulMid, uint32_t ulMask);

/* A command was carried out on an interface: ulCommand says which (the library listens to 0, 1 and 3 to 23), ulParam
 * and ulExtra are its parameters. */
typedef uint32_t (*IF_NOTIFY_CB)(uint32_t ulIfIndex, uint32_t ulCommand, uint32_t ulParam, uint32_t ulExtra);

/* Registers pfCallback for all commands on all interfaces. */
UVELHOST_API uint32_t IF_RegNotifyFunc(uint32_t ulMid, IF_NOTIFY_CB pfCallback);

/* ---- addresses ---- */

/* Class of the events of IPv4 addresses. */
#define IP_EVT_CLASS_ADDR 6U

/* An IPv4 address of an interface; the library listens to the events 16 and 32. *pulAddrNet is the address in network
 * order. */
typedef uint32_t (*IP_EVT_CB)(const uint32_t *pulIfIndex, uint32_t ulEvent, const uint32_t *pulAddrNet);

/* Registers pfCallback for a class of events under a name, for people to see. */
UVELHOST_API uint32_t IP_EventNotifyFuncRegister(const char *pszName, uint32_t ulClass, IP_EVT_CB pfCallback);

/* ---- configuration ---- */

/* The configuration has been recovered after start-up; comes once. */
typedef uint32_t (*CFM_OVER_CB)(void);

/* Registers pfCallback for the end of the configuration's recovery; when that is over already, the callback comes at
 * once, on the notifying thread. The three reserved arguments are 0. */
UVELHOST_API uint32_t CFM_OverNotifyModuleRegister(uint32_t ulMid, uint32_t ulReserved1, uint32_t ulReserved2,
                                                   uint32_t ulReserved3, CFM_OVER_CB pfCallback);

/* ---- layer 2 ----
 * A registration names a group of events; the callback gets the number of the single event. Bit 30 of that number
 * (L2IF_EVT_NOW, written + below) says that listeners must have dealt with the event before the host goes on. The group
 * of a number is (number without bit 30) / 16 + 1, apart from 593 (group 16) and 387 (group 24).
 *
 *   group   announces                        numbers                     pKey                 pData
 *   2       VLANs created, as a list         17+                         u16[] VLANs          u32 their number
 *   4, 5    sub-VLAN of a super-VLAN         49; 65                      u16 super-VLAN       u16 sub-VLAN
 *   6       attribute of a VLAN              81+                         u16 VLAN             u32 attribute
 *   9       VLAN interface up or down        129, 130                    u16 VLAN             null
 *   11      ports of a VLAN                  161                         u16 VLAN             L2IF_PORT_LIST_S
 *   12      ports of a VLAN or a VLAN range  177; 179 (range)            u16[2] first, last   L2IF_PORT_LIST_S
 *   13, 14  port changes between layers      193, 193+; 209, 209+, 210   u32 interface index  null
 *   16      value of a port                  241, 593                    u32 port index       u16 value
 *   22, 23  QinQ of a port                   337, 337+; 353, 353+        u32 port index       L2IF_QINQ_DATA_S
 *   24      configuration of a VLAN shown    368, 387                    u16 VLAN             context of the display
 *   36, 37  VLANs in batches                 577 to 580, 582, 579+       null                 u32[128] VLAN bitmap
 *   54      question: may the port change?   any of the group            of the host          of the host */

/* Bit of an event's number: listeners must have dealt with it before the host goes on. */
#define L2IF_EVT_NOW 0x40000000U

/* Ports in an event: this head, then ulCount u32 port entries directly behind it. */
typedef struct {
    uint32_t ulReserved;
    uint32_t ulCount; /* port entries behind it */
} L2IF_PORT_LIST_S;
UVELHOST_STATIC_ASSERT(sizeof(L2IF_PORT_LIST_S) == 8, "the entries begin at offset 8");

/* VLANs in an event: this head, then ulCount u16 VLAN ids directly behind it. */
typedef struct {
    uint32_t ulCount; /* VLAN ids behind it */
} L2IF_VLAN_LIST_S;
UVELHOST_STATIC_ASSERT(sizeof(L2IF_VLAN_LIST_S) == 4, "the ids begin at offset 4");

/* QinQ data of a port. The library passes on words 6, 8 and 9, counted from 0. */
typedef struct {
    uint16_t ausWord[10]; /* the host's words */
} L2IF_QINQ_DATA_S;
UVELHOST_STATIC_ASSERT(sizeof(L2IF_QINQ_DATA_S) == 20, "ten words");

/* A layer-2 event; the table above says what the pointers lead to. */
typedef uint32_t (*L2IF_EVT_CB)(const void *pKey, uint32_t ulEvent, void *pData);

/* Registers pfCallback for a group of events under a name, for people to see; higher priorities are called first. */
UVELHOST_API uint32_t L2IF_SH_EvtCbFuncReg(const char *pszName, uint32_t ulGroup, uint32_t ulPriority,
                                           L2IF_EVT_CB pfCallback);

/* ---- trunks ---- */

#define TRUNK_EVT_HAS_CFG 11U /* question: may the interface become a member? */

/* A trunk changed: its members (class 1 event 2, class 2 event 3, class 3 events 7 and 8; ulTrunk is the trunk's
 * identifier, ulValue the member) or itself (class 3 event 6: it goes). ulEvent is the event registered for. */
typedef uint32_t (*TRUNK_EVT_CB)(uint32_t ulTrunk, uint32_t ulEvent, uint32_t ulValue);

/* Class 1 event TRUNK_EVT_HAS_CFG: pData is the host's and handed on unread. */
typedef uint32_t (*TRUNK_HAS_CFG_CB)(uint32_t ulTrunk, uint32_t ulEvent, void *pData);

/* Registers pfCallback, of the type that belongs to the event (TRUNK_EVT_CB, TRUNK_HAS_CFG_CB), for one event of a
 * class under a name, for people to see; higher priorities are called first. */
UVELHOST_API uint32_t Trunk_EventNotifyFuncRegister(const char *pszName, uint32_t ulClass, uint32_t ulEvent,
                                                    uint32_t ulPriority, UVELHOST_CALLBACK pfCallback);

#endif
