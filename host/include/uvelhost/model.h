/* Device model: what feeders of this host tell about the device, and the queries of the other headers answer from.
 *
 * A feeder (the kernel's link messages, a scenario file, a test) opens a batch, puts and removes objects, and commits.
 * The commit publishes all of it at once; queries answer from it at once and never wait for a feeder. Every change
 * becomes notifications, which the host's notifying thread delivers in order.
 *
 * Usage:
 *     MDL_BATCH *pstBatch = MDL_Begin(FEEDER, 0);
 *     MDL_IF_S stIf;
 *     MDL_InitIf(&stIf, 7, "GigabitEthernet0/0/1");
 *     stIf.ulPhyState = stIf.ulLineState = IF_STATE_UP;
 *     MDL_PutIf(pstBatch, &stIf);                       // adds it, or changes what is different
 *     MDL_PutAddr4(pstBatch, &stAddr);
 *     ulRet = MDL_Commit(pstBatch);                     // pstBatch is gone, whatever the result
 *
 * First load and resynchronisation are the same: MDL_MarkAll, put everything that is there (in one batch or several),
 * then MDL_Sweep removes what was not put again. Putting what is there already changes and notifies nothing.
 *
 * Objects may come in any order: an address may be put before its interface. An object belongs to the feeder that put
 * it last; a sweep removes only what belongs to the sweeping feeder. When an interface, a trunk or a VLAN is removed,
 * what hangs on it goes first: addresses, memberships, VLANs of the port.
 *
 * Notifications that changes cause (numbers as in events.h and vrf.h):
 *
 *     slot: board present, gone, in service, out of it       IF_EVT_SLOT 0, 1, 2, 3 (slot, MDL_BOARD_*)
 *     interface added; name changed; going; changed          IF_EVT_IF 2; 3; 6; 25
 *     line, physical, IPv6, administrative state             IF_EVT_IOCTL 2, 3, 7, 8 (state 0 or 1, flags bit 0: up,
 *                                                            bit 6: by administration); 12 instead of 2 for a
 *                                                            layer-2 sub-interface
 *     VRF of an interface                                    IF_EVT_VRF_SET 10 (interface index)
 *     VLAN bound to, released from a bridge domain           IF_EVT_BD 0, 1 (domain, VLAN)
 *     IPv4 address added, removed                            IP event 16, 32
 *     VLANs created; going; gone                             577; 579+; 579, neighbours in a batch in one bitmap
 *     VLAN attribute                                         81+
 *     sub-VLAN joined, left its super-VLAN                   49, 65
 *     VLAN interface up, down                                129, 130
 *     ports joined a VLAN; left a VLAN or a range            161; 177, 179; neighbours in a batch in one list of ports
 *     port became layer 3; layer 2                           193+ and 193; 209+ and 209
 *     VLAN of a port's untagged frames                       241 (value: the VLAN)
 *     member joined a trunk; left it                         class 2 event 3, class 3 event 8; class 1 event 2,
 *                                                            class 3 event 7
 *     trunk going                                            class 3 event 6 (trunk id, interface index)
 *     virtual system created, deleted                        VRF_EVT_CREATED, VRF_EVT_DELETED
 *
 * While the notification that something goes is delivered, queries from inside it still find what goes, also when a
 * successor is there already. All else they answer as it is now: what a later batch changed or removed before the
 * notification about it is delivered is found changed, or not at all, and who asks tells that, or nothing.
 *
 * Results: 0; 1 for a bad argument (nothing is changed), and for memory (the batch is lost as a whole: the commit
 * fails). Removing what is not there is a success.
 * Threads: a batch belongs to the thread that began it; a second feeder waits in MDL_Begin until the first has ended
 * its batch. A callback may change the model. */
#ifndef UVELHOST_MODEL_H
#define UVELHOST_MODEL_H

#include "interface.h"
#include "l2if.h"
#include "types.h"
#include "vrf.h"

#define MDL_MAX_CPUS 16U            /* processors of a board at most */
#define MDL_MAX_SWITCH_PORTS 65536U /* switch ports of a device at most */
#define MDL_NAME_SIZE 64U           /* bytes that hold every system name, terminator included */

#define MDL_AUTO 0xFFFFFFFEU /* as an index: the one it has, a new object gets the lowest free one */
#define MDL_NO_VLAN 0xFFFFU  /* as a VLAN: none */

/* Feeders of this host; other numbers are free. */
#define MDL_FEEDER_KERNEL 1U
#define MDL_FEEDER_SCENARIO 2U

/* An open batch; belongs to the thread that began it. */
typedef struct MDL_BATCH MDL_BATCH;

/* ---- objects; addresses and masks as in ip.h, states as in interface.h, UVELHOST_NONE for "none" ---- */

/* The device as such. */
typedef struct {
    uint32_t ulSelfSlot;       /* slot of this board; UVELHOST_NONE: not known */
    uint32_t ulSelfCpu;        /* processor that the process runs on, its number on the board */
    uint32_t ulOnlyLsw;        /* 1 for a pure LAN switch */
    uint32_t ulMaxSwitchPorts; /* 1 to MDL_MAX_SWITCH_PORTS */
    uint32_t ulHasMac;         /* 1 when aucMac is known */
    uint8_t aucMac[6];         /* in the order of transmission */
    uint8_t aucReserved[2];
    uint32_t ulHasName;         /* 1 when the system has a name; it may still be empty (not known yet) */
    char szName[MDL_NAME_SIZE]; /* 63 characters at most */
} MDL_DEVICE_S;

#define MDL_BOARD_MAIN 0U    /* it controls the device */
#define MDL_BOARD_LINE 1U    /* it carries ports */
#define MDL_BOARD_SERVICE 2U /* its processors are service processors */

/* A slot of the device and the board in it. */
typedef struct {
    uint32_t ulSlot;                /* global number, below 0xFFFF; a board's number is that of its slot */
    uint32_t ulChassis;             /* number of the chassis that it is in */
    uint32_t ulLocalSlot;           /* number in the chassis */
    uint32_t ulPhySlot;             /* number that the hardware gives */
    uint32_t ulRole;                /* MDL_BOARD_*: what the slot is for */
    uint32_t ulPresent;             /* 1 when a board is in it */
    uint32_t ulRegistered;          /* 1 when the board has made itself known */
    uint32_t ulOnline;              /* 1 when the board is in service */
    uint32_t ulCpuCount;            /* at most MDL_MAX_CPUS */
    uint32_t ulMainCpu;             /* number on the board, below ulCpuCount unless that is 0 */
    uint32_t ulFirstCpu;            /* global number of the processor 0; the others follow */
    uint32_t aulAddr[MDL_MAX_CPUS]; /* [0] of the main processor; 0: not known */
} MDL_BOARD_S;

#define MDL_IF_PLAIN 0U /* neither of the following */
#define MDL_IF_VLAN 1U  /* layer-3 interface of usVlanId */
#define MDL_IF_VBD 2U   /* interface of the bridge domain ulBd */

#define MDL_IF_TEMP 1U      /* kept out of the configuration */
#define MDL_IF_ADMIN_ETH 2U /* Ethernet port of the management */

/* An interface. What is asked for most comes first: it lies in the cache line that every question about the interface
 * reads. */
typedef struct {
    uint32_t ulIfIndex;          /* key: neither 0 nor 0xFFFFFFFF */
    uint32_t ulMainIfIndex;      /* of a sub-interface; otherwise 0 or its own */
    uint32_t ulPortType;         /* the host's number for the kind of port */
    uint32_t ulPhyType;          /* the host's number for the physical kind */
    uint32_t ulLayer;            /* 2 or 3 */
    uint32_t ulLineState;        /* of the line: IF_STATE_UP, IF_STATE_DOWN */
    uint32_t ulIpv6State;        /* of IPv6: the same */
    uint32_t ulPhyState;         /* of the port: the same */
    uint32_t ulAdminDown;        /* 1: taken down by administration, the three states then answer "down" */
    uint32_t ulVrf;              /* of IPv4 */
    uint32_t ulIpv6Vrf;          /* of IPv6 */
    uint32_t ulKind;             /* MDL_IF_* kind */
    uint32_t ulFlags;            /* MDL_IF_TEMP, MDL_IF_ADMIN_ETH */
    uint32_t ulSlot;             /* UVELHOST_NONE: sits on no single board */
    uint32_t ulCard;             /* of the slot; UVELHOST_NONE */
    uint32_t ulPort;             /* of the card; UVELHOST_NONE */
    uint32_t ulPortIndex;        /* of a switch port, below ulMaxSwitchPorts; MDL_AUTO, UVELHOST_NONE */
    uint32_t ulPortMode;         /* L2IF_MODE_* */
    uint32_t ulBd;               /* bridge domain, below 0x10000; UVELHOST_NONE */
    uint32_t ulVap;              /* virtual access point; UVELHOST_NONE */
    uint16_t usVlanId;           /* that a VLAN interface or sub-interface stands for; MDL_NO_VLAN */
    uint16_t usPvid;             /* of a switch port's untagged frames; MDL_NO_VLAN */
    uint8_t aucMac[IF_MAC_SIZE]; /* in the order of transmission */
    uint8_t aucReserved[2];
    char szName[IF_NAME_SIZE];      /* terminated */
    char szShortName[IF_NAME_SIZE]; /* empty: the name */
} MDL_IF_S;

/* An IPv4 address of an interface; both together are the key. */
typedef struct {
    uint32_t ulIfIndex;   /* of the interface, which may come later */
    uint32_t ulAddr;      /* in host order: 10.0.0.1 is 0x0A000001 */
    uint32_t ulPrefixLen; /* 0 to 32 */
    uint32_t ulMain;      /* 1 for the main address; putting another one takes this from the former */
    uint32_t ulFlag;      /* IP_FLAG_CONFIGURED, IP_FLAG_OBTAINED or IP_FLAG_BORROWED */
} MDL_ADDR4_S;

/* An IPv6 address of an interface; both together are the key. */
typedef struct {
    uint32_t ulIfIndex;   /* of the interface, which may come later */
    uint8_t aucAddr[16];  /* in network order */
    uint32_t ulPrefixLen; /* 0 to 128 */
} MDL_ADDR6_S;

/* A VLAN. */
typedef struct {
    uint32_t ulVlanId;    /* 0 to 4095 */
    uint32_t ulSuperVlan; /* UVELHOST_NONE */
    uint32_t ulAttribute; /* the host's attribute of it, passed on as it is */
    uint32_t ulBd;        /* bridge domain that it is bridged into, below 0x10000; UVELHOST_NONE */
} MDL_VLAN_S;

/* The VLANs of a switch port. In each pair of bitmaps a VLAN is in one at most. */
typedef struct {
    uint32_t ulPortIndex;                            /* key: of the switch port */
    uint32_t aulUntagged[L2IF_VLAN_BITMAP_WORDS];    /* by configuration */
    uint32_t aulTagged[L2IF_VLAN_BITMAP_WORDS];      /* by configuration */
    uint32_t aulDynUntagged[L2IF_VLAN_BITMAP_WORDS]; /* joined without configuration */
    uint32_t aulDynTagged[L2IF_VLAN_BITMAP_WORDS];   /* joined without configuration */
} MDL_PORT_VLANS_S;

/* A trunk. */
typedef struct {
    uint32_t ulTrunkIndex; /* MDL_AUTO */
    uint32_t ulTrunkId;    /* key: number that people know it by */
    uint32_t ulIfIndex;    /* of its own interface */
} MDL_TRUNK_S;

/* A member of a trunk; an interface is member of one trunk at most. */
typedef struct {
    uint32_t ulIfIndex; /* key: of the member */
    uint32_t ulTrunkId; /* of the trunk, which may come later */
    uint32_t ulActive;  /* 1 when the trunk may send through it */
} MDL_MEMBER_S;

/* A VRF. */
typedef struct {
    uint32_t ulVrfIndex;        /* key */
    uint32_t ulIpv4;            /* 1: has an IPv4 instance */
    uint32_t ulIpv6;            /* 1: has an IPv6 instance */
    uint32_t ulVsys;            /* 1: backs the virtual system of the same number (then below 0x10000) */
    char szName[VRF_NAME_SIZE]; /* terminated */
} MDL_VRF_S;

/* A virtual router on an interface; interface and virtual address are the key. */
typedef struct {
    uint32_t ulIfIndex; /* of the interface */
    uint32_t ulAddr;    /* virtual address */
    uint32_t ulMaster;  /* 1 when this device is its master */
    uint8_t aucMac[6];  /* virtual address, in the order of transmission */
    uint8_t aucReserved[2];
} MDL_VRRP_S;

/* A route to a user, as RM_SetUnr4Rt adds it. */
typedef struct {
    uint32_t ulVrfIndex;  /* of the VRF that it is in */
    uint32_t ulAddr;      /* of the user, in host order */
    uint32_t ulPrefixLen; /* 0 to 32 */
    uint32_t ulIfIndex;   /* where it leads out */
    uint32_t ulNextHop;   /* in host order */
} MDL_ROUTE_S;

/* ---- batches ---- */

/* Opens a batch for the feeder ulFeeder, a number that feeders agree on; ulUserId is on whose behalf the changes are
 * made (EXEC_GetCurrentUserId inside their notifications). Waits while another thread's batch is open. Null when
 * memory is short, and when this thread has a batch open already. */
UVELHOST_API MDL_BATCH *MDL_Begin(uint32_t ulFeeder, uint32_t ulUserId);

/* Publishes the batch, queues its notifications and ends it. */
UVELHOST_API uint32_t MDL_Commit(MDL_BATCH *pstBatch);

/* Ends the batch without a trace. */
UVELHOST_API void MDL_Abort(MDL_BATCH *pstBatch);

/* Begins a mark and sweep: what belongs to the batch's feeder counts as not seen until it is put again or touched. */
UVELHOST_API uint32_t MDL_MarkAll(MDL_BATCH *pstBatch);

/* Removes what belongs to the batch's feeder and was not seen since its last MDL_MarkAll: nothing without one. */
UVELHOST_API uint32_t MDL_Sweep(MDL_BATCH *pstBatch);

/* Removes everything, whoever it belongs to, and forgets the device. */
UVELHOST_API uint32_t MDL_RemoveAll(MDL_BATCH *pstBatch);

/* ---- changes: each adds the object or makes it equal to the record; each remove takes it away ---- */

/* Fills a record with what is usual: a plain layer-3 interface that is down, on no board, in no VLAN. */
UVELHOST_API void MDL_InitIf(MDL_IF_S *pstIf, uint32_t ulIfIndex, const char *pszName);

/* Fills a record of a device of which nothing is known. */
UVELHOST_API void MDL_InitDevice(MDL_DEVICE_S *pstDevice);

/* The device as such: names, numbers, MAC address. */
UVELHOST_API uint32_t MDL_PutDevice(MDL_BATCH *pstBatch, const MDL_DEVICE_S *pstDevice);
/* A slot and its board, by ulSlot. */
UVELHOST_API uint32_t MDL_PutBoard(MDL_BATCH *pstBatch, const MDL_BOARD_S *pstBoard);
UVELHOST_API uint32_t MDL_RemoveBoard(MDL_BATCH *pstBatch, uint32_t ulSlot);

/* An interface, by its index. What hangs on it goes with it. */
UVELHOST_API uint32_t MDL_PutIf(MDL_BATCH *pstBatch, const MDL_IF_S *pstIf);
UVELHOST_API uint32_t MDL_RemoveIf(MDL_BATCH *pstBatch, uint32_t ulIfIndex);

/* Addresses of an interface. Host order for IPv4, network order for IPv6. */
UVELHOST_API uint32_t MDL_PutAddr4(MDL_BATCH *pstBatch, const MDL_ADDR4_S *pstAddr);
UVELHOST_API uint32_t MDL_RemoveAddr4(MDL_BATCH *pstBatch, uint32_t ulIfIndex, uint32_t ulAddr);
UVELHOST_API uint32_t MDL_PutAddr6(MDL_BATCH *pstBatch, const MDL_ADDR6_S *pstAddr);
UVELHOST_API uint32_t MDL_RemoveAddr6(MDL_BATCH *pstBatch, uint32_t ulIfIndex, const uint8_t aucAddr[16]);

/* A VLAN, 0 to 4095. Memberships of ports go with it. */
UVELHOST_API uint32_t MDL_PutVlan(MDL_BATCH *pstBatch, const MDL_VLAN_S *pstVlan);
UVELHOST_API uint32_t MDL_RemoveVlan(MDL_BATCH *pstBatch, uint32_t ulVlanId);

/* All VLANs of a port at once. */
UVELHOST_API uint32_t MDL_PutPortVlans(MDL_BATCH *pstBatch, const MDL_PORT_VLANS_S *pstVlans);

/* The VLANs ulFirst to ulLast of a port: bound as ulBind (L2IF_BIND_*) says, by configuration (ulDynamic 0) or without
 * (1). */
UVELHOST_API uint32_t MDL_BindVlans(MDL_BATCH *pstBatch, uint32_t ulPortIndex, uint32_t ulFirst, uint32_t ulLast,
                                    uint32_t ulBind, uint32_t ulDynamic);

/* Takes a port out of all VLANs. */
UVELHOST_API uint32_t MDL_RemovePortVlans(MDL_BATCH *pstBatch, uint32_t ulPortIndex);

/* A trunk by its number, a member by its interface. Members go with their trunk. */
UVELHOST_API uint32_t MDL_PutTrunk(MDL_BATCH *pstBatch, const MDL_TRUNK_S *pstTrunk);
UVELHOST_API uint32_t MDL_RemoveTrunk(MDL_BATCH *pstBatch, uint32_t ulTrunkId);
UVELHOST_API uint32_t MDL_PutMember(MDL_BATCH *pstBatch, const MDL_MEMBER_S *pstMember);
UVELHOST_API uint32_t MDL_RemoveMember(MDL_BATCH *pstBatch, uint32_t ulIfIndex);

/* A VRF, by its index. One that backs a virtual system takes that with it. */
UVELHOST_API uint32_t MDL_PutVrf(MDL_BATCH *pstBatch, const MDL_VRF_S *pstVrf);
UVELHOST_API uint32_t MDL_RemoveVrf(MDL_BATCH *pstBatch, uint32_t ulVrfIndex);

/* A virtual router, by interface and virtual address (host order). */
UVELHOST_API uint32_t MDL_PutVrrp(MDL_BATCH *pstBatch, const MDL_VRRP_S *pstVrrp);
UVELHOST_API uint32_t MDL_RemoveVrrp(MDL_BATCH *pstBatch, uint32_t ulIfIndex, uint32_t ulAddr);

/* A route to a user; to remove it takes the record that it was put with. */
UVELHOST_API uint32_t MDL_PutRoute(MDL_BATCH *pstBatch, const MDL_ROUTE_S *pstRoute);
UVELHOST_API uint32_t MDL_RemoveRoute(MDL_BATCH *pstBatch, const MDL_ROUTE_S *pstRoute);

/* ---- outside batches: at once, without a notification ---- */

/* High availability; answers of ha.h. */
typedef struct {
    uint32_t ulBoardType;   /* HA_BOARD_* */
    uint32_t ulMasterBoard; /* below 0xFFFF; UVELHOST_NONE: this board when it is the master */
    uint32_t ulSlaveBoard;  /* below 0xFFFF; UVELHOST_NONE */
    uint32_t ulState;       /* HA_STATE_* */
    uint32_t ulSlaveReady;  /* 1: ready to take over */
} MDL_HA_S;

/* Sets the answers, which ha.h then gives: 1 for null or a board that is out of range. Reads them: null is ignored. */
UVELHOST_API uint32_t MDL_SetHa(const MDL_HA_S *pstHa);
UVELHOST_API void MDL_GetHa(MDL_HA_S *pstHa);

/* User and virtual system that the calling thread works for from now on. */
UVELHOST_API void MDL_SetThreadUser(uint32_t ulUserId);
UVELHOST_API void MDL_SetThreadVsys(uint32_t ulVsysId);

/* Chinese text that the module ulMid registered for pszText (cli.h), or null. */
UVELHOST_API const char *MDL_GetChinese(uint32_t ulMid, const char *pszText);

/* Who carries out what services ask for. Without one the model changes itself. A function answers 0 when the request
 * was passed on; the change itself is then the feeder's to report. Null members: the model changes itself. */
typedef struct {
    /* Takes an interface down (ulDown 1) or up (0) by administration. */
    uint32_t (*pfShutDown)(uint32_t ulIfIndex, uint32_t ulDown);
    uint32_t (*pfRoute)(uint32_t ulOperation, const MDL_ROUTE_S *pstRoute); /* RM_UNR_*; the model keeps the set too */
} MDL_ACTUATOR_S;

/* Installs the actuator, which must live as long as the process; null takes it away. */
UVELHOST_API void MDL_SetActuator(const MDL_ACTUATOR_S *pstActuator);

#endif
