/* Events of the host: their ids and the records that callbacks receive.
 *
 * The library's adapters turn every notification of the host into an event: an id, a sub-event id and a record of fixed
 * layout. Modules register for ids with UVEL_EventCallBackReg; their callback gets the sub-event id and a pointer to the
 * record.
 *
 *     static uint32_t OnTrunkMember(uint32_t ulSubEvent, void *pData) {
 *         const KIVO_EVT_TRUNK_MEMBER_S *pstMember = (const KIVO_EVT_TRUNK_MEMBER_S *)pData;
 *         ...
 *     }
 *
 * "now" events run their callbacks before the host's call returns, on the host's thread; "queue" events are copied and
 * run them later on the event task. Which way an event goes never changes.
 *
 *     id          sub-event              way    record                   comes from
 *     0           0                      queue  none                     configuration recovered
 *     1           0 to 23, not 2         queue  KIVO_EVT_IF_S            interface, by its changes and its commands
 *     3           0 to 3                 queue  KIVO_EVT_SLOT_S          slot
 *     4           4 to 8                 queue  KIVO_EVT_CARD_S          card
 *     5           23, 24, 26, 27, 32     queue  KIVO_EVT_IF_STATE_S      state of an interface
 *     6           0, 1                   now    KIVO_EVT_IP_S            IPv4 address of an interface
 *     8           0                      now    KIVO_EVT_VLAN_ATTR_S     attribute of a VLAN
 *     9 to 12, 42 the id                 queue  KIVO_EVT_VLANS_S         VLANs in batches
 *     13          13                     now    KIVO_EVT_VLANS_S         the same
 *     14, 15, 46  the id                 queue  KIVO_EVT_VLAN_PORTS_S    ports of a VLAN; 46: of a range of VLANs
 *     16, 17      0                      queue  KIVO_EVT_SUB_VLAN_S      sub-VLAN of a super-VLAN
 *     18, 20      0                      queue  KIVO_EVT_QINQ_S          QinQ of a port
 *     19, 21      0                      now    KIVO_EVT_QINQ_S          the same
 *     22, 24      the id                 queue  KIVO_EVT_TRUNK_MEMBER_S  member of a trunk
 *     23, 25      the id                 now    KIVO_EVT_TRUNK_MEMBER_S  the same
 *     26          0                      queue  KIVO_EVT_TRUNK_DEL_S     a trunk goes
 *     27          16, 17                 queue  KIVO_EVT_VLAN_STATE_S    interface of a VLAN, up or down
 *     28, 30, 32  the id                 queue  KIVO_EVT_PORT_SWITCH_S   port changes between layers
 *     29, 31      the id                 now    KIVO_EVT_PORT_SWITCH_S   the same
 *     34, 35      0                      now    KIVO_EVT_BUILDRUN_S      configuration of a VLAN is shown
 *     41          31                     queue  KIVO_EVT_VRF_SET_S       VRF of something
 *     45          45                     now    KIVO_EVT_BD_S            bridge domain
 *     47, 48      the id                 queue  KIVO_EVT_PORT_S          value of a port
 *     1101        0xFFFFFFFF             queue  u16 virtual-system id    virtual system created
 *     1101        0                      now    KIVO_EVT_VSYS_S          virtual system that was there at start-up
 *     1102        0xFFFFFFFF             queue  u16 virtual-system id    virtual system deleted
 *     1200, 1201  0                      now    the host's own data      question: may a member, may a port change?
 *     1300        0                      now    KIVO_EVT_IF_S            question: may an interface be configured so?
 *     1301        1301                   now    KIVO_EVT_VLANS_S         VLANs created
 *     1302        0                      now    KIVO_EVT_HYBRID_S        hybrid trunk port added to a VLAN
 *
 * Where an id stands for one of several host events of a kind, its name below carries the number of the host's event
 * (NOW: the one with bit 30). What the platform means by each of these numbers is the platform's affair.
 *
 * All fields are in host byte order. Most records begin with their length in bytes and the user on whose behalf the
 * change happened (EXEC_GetCurrentUserId). Reserved fields are zero where nothing else is said.
 * Ownership: a record is valid during the callback only. */
#ifndef UVELCOMMON_BASE_KIVO_EVENT_RECORDS_H
#define UVELCOMMON_BASE_KIVO_EVENT_RECORDS_H

#include <uvelcommon_base/kivo_types.h>

/* ---- event ids ---- */

#define KIVO_EVT_CFG_RECOVERED 0U           /* configuration recovered */
#define KIVO_EVT_IF 1U                      /* interface */
#define KIVO_EVT_SLOT 3U                    /* slot */
#define KIVO_EVT_CARD 4U                    /* card */
#define KIVO_EVT_IF_STATE 5U                /* state of an interface */
#define KIVO_EVT_IP 6U                      /* IPv4 address of an interface */
#define KIVO_EVT_VLAN_ATTR 8U               /* attribute of a VLAN */
#define KIVO_EVT_VLANS_577 9U               /* VLANs, host event 577 */
#define KIVO_EVT_VLANS_578 10U              /* VLANs, host event 578 */
#define KIVO_EVT_VLANS_579 11U              /* VLANs, host event 579 */
#define KIVO_EVT_VLANS_580 12U              /* VLANs, host event 580 */
#define KIVO_EVT_VLANS_NOW_579 13U          /* the same as 579, at once */
#define KIVO_EVT_VLAN_PORTS_161 14U         /* ports of a VLAN, host event 161 */
#define KIVO_EVT_VLAN_PORTS_177 15U         /* ports of a VLAN, host event 177 */
#define KIVO_EVT_SUB_VLAN_49 16U            /* sub-VLAN, host event 49 */
#define KIVO_EVT_SUB_VLAN_65 17U            /* sub-VLAN, host event 65 */
#define KIVO_EVT_QINQ_337 18U               /* QinQ, host event 337 */
#define KIVO_EVT_QINQ_NOW_337 19U           /* the same, at once */
#define KIVO_EVT_QINQ_353 20U               /* QinQ, host event 353 */
#define KIVO_EVT_QINQ_NOW_353 21U           /* the same, at once */
#define KIVO_EVT_TRUNK_MEMBER_8 22U         /* member of a trunk, host event 8 */
#define KIVO_EVT_TRUNK_MEMBER_3 23U         /* member of a trunk, host event 3, at once */
#define KIVO_EVT_TRUNK_MEMBER_7 24U         /* member of a trunk, host event 7 */
#define KIVO_EVT_TRUNK_MEMBER_2 25U         /* member of a trunk, host event 2, at once */
#define KIVO_EVT_TRUNK_DEL 26U              /* a trunk goes */
#define KIVO_EVT_VLAN_STATE 27U             /* interface of a VLAN */
#define KIVO_EVT_PORT_SWITCH_209 28U        /* port changes between layers, host event 209 */
#define KIVO_EVT_PORT_SWITCH_NOW_209 29U    /* the same, at once */
#define KIVO_EVT_PORT_SWITCH_210 30U        /* host event 210 */
#define KIVO_EVT_PORT_SWITCH_NOW_193 31U    /* host event 193, at once */
#define KIVO_EVT_PORT_SWITCH_193 32U        /* host event 193 */
#define KIVO_EVT_BUILDRUN_387 34U           /* configuration of a VLAN is shown, host event 387 */
#define KIVO_EVT_BUILDRUN_368 35U           /* the same, host event 368 */
#define KIVO_EVT_VRF_SET 41U                /* VRF of something */
#define KIVO_EVT_VLANS_582 42U              /* VLANs, host event 582 */
#define KIVO_EVT_BD 45U                     /* bridge domain */
#define KIVO_EVT_VLAN_RANGE_PORTS_179 46U   /* ports of a range of VLANs, host event 179 */
#define KIVO_EVT_PORT_593 47U               /* value of a port, host event 593 */
#define KIVO_EVT_PORT_241 48U               /* value of a port, host event 241 */
#define KIVO_EVT_VSYS_CREATED 1101U         /* virtual system created */
#define KIVO_EVT_VSYS_DELETED 1102U         /* virtual system deleted */
#define KIVO_EVT_TRUNK_MEMBER_HAS_CFG 1200U /* question: may a member of a trunk change? */
#define KIVO_EVT_PORT_HAS_CFG 1201U         /* question: may a port change? */
#define KIVO_EVT_IF_CFG_CHECK 1300U         /* question: may an interface be configured so? */
#define KIVO_EVT_VLANS_CREATED 1301U        /* VLANs created */
#define KIVO_EVT_HYBRID_PORT_ADDED 1302U    /* hybrid trunk port added to a VLAN */

/* ---- interfaces, slots, cards ---- */

/* An interface. Fields that an event does not fill are 0xFFFFFFFF. In KIVO_EVT_IF_CFG_CHECK ulUserId and ulParam hold
 * what is to be checked. */
typedef struct {
    uint32_t ulLen;       /* 28 */
    uint32_t ulUserId;    /* on whose behalf it happened */
    uint32_t ulReserved1; /* 0xFFFFFFFF */
    uint32_t ulParam;     /* parameter of the command */
    uint32_t ulReserved2; /* 0xFFFFFFFF */
    uint32_t ulReserved3; /* 0xFFFFFFFF */
    uint32_t ulIfIndex;   /* index of the interface */
} KIVO_EVT_IF_S;

/* A slot: what the host says of it. */
typedef struct {
    uint32_t ulLen;      /* 16 */
    uint32_t ulUserId;   /* on whose behalf it happened */
    uint32_t aulHost[2]; /* words of the host */
} KIVO_EVT_SLOT_S;

/* A card: what the host says of it. */
typedef struct {
    uint32_t ulLen;      /* 20 */
    uint32_t ulUserId;   /* on whose behalf it happened */
    uint32_t aulHost[3]; /* words of the host */
} KIVO_EVT_CARD_S;

/* States of an interface; a state of the host other than down and up is passed on as it is. */
#define KIVO_EVT_STATE_DOWN 28U
#define KIVO_EVT_STATE_UP 29U
#define KIVO_EVT_STATE_L2_SUB_DOWN 33U /* sub-event 32, layer-2 sub-interfaces */
#define KIVO_EVT_STATE_L2_SUB_UP 34U

/* A state of an interface; the sub-event id says which. */
typedef struct {
    uint32_t ulLen;     /* 20 */
    uint32_t ulUserId;  /* on whose behalf it happened */
    uint32_t ulIfIndex; /* index of the interface */
    uint32_t ulState;   /* KIVO_EVT_STATE_* */
    uint32_t ulFlags;   /* bits 0 and 6 of the host's flags */
} KIVO_EVT_IF_STATE_S;

/* ---- addresses, VRFs, bridge domains ---- */

/* An IPv4 address of an interface. */
typedef struct {
    uint32_t ulLen;     /* 16 */
    uint32_t ulUserId;  /* on whose behalf it happened */
    uint32_t ulIfIndex; /* index of the interface */
    uint32_t ulAddr;    /* in host order: 10.0.0.1 is 0x0A000001 */
} KIVO_EVT_IP_S;

/* The VRF of something: what the host says of it. Without a length. */
typedef struct {
    uint32_t ulUserId; /* on whose behalf it happened */
    uint32_t ulHost;   /* word of the host */
} KIVO_EVT_VRF_SET_S;

/* A bridge domain: what the host says of it. Without length and user. */
typedef struct {
    uint32_t ulHost1; /* first word of the host */
    uint16_t usHost2; /* second word of the host */
    uint16_t usReserved;
} KIVO_EVT_BD_S;

/* ---- ports of layer 2 ---- */

/* A value of a port. Without a length. */
typedef struct {
    uint32_t ulUserId;    /* on whose behalf it happened */
    uint32_t ulPortIndex; /* index of the switch port */
    uint16_t usValue;     /* its new value; for 241 the VLAN of untagged frames */
    uint16_t usReserved;
} KIVO_EVT_PORT_S;

/* A port that changes between layer 2 and layer 3. */
typedef struct {
    uint32_t ulLen;     /* 12 */
    uint32_t ulUserId;  /* on whose behalf it happened */
    uint32_t ulIfIndex; /* index of the interface */
} KIVO_EVT_PORT_SWITCH_S;

/* QinQ of a port: three words of the host's data. */
typedef struct {
    uint32_t ulLen;     /* 20 */
    uint32_t ulUserId;  /* on whose behalf it happened */
    uint32_t ulIfIndex; /* index of the interface */
    uint16_t usWord6;   /* word 6 of the host's data */
    uint16_t usWord8;   /* word 8 */
    uint16_t usWord9;   /* word 9 */
    uint16_t usReserved;
} KIVO_EVT_QINQ_S;

/* A hybrid trunk port and a VLAN it was added to. */
typedef struct {
    uint32_t ulLen;       /* 16 */
    uint32_t ulUserId;    /* on whose behalf it happened */
    uint32_t ulPort;      /* the host's number of the port */
    uint16_t usFirstVlan; /* first VLAN */
    uint16_t usLastVlan;  /* the same VLAN */
} KIVO_EVT_HYBRID_S;

/* ---- VLANs ---- */

/* A set of VLANs: VLAN v is bit (v mod 32) of word v / 32. */
typedef struct {
    uint32_t ulLen;          /* 520 */
    uint32_t ulUserId;       /* on whose behalf it happened */
    uint32_t aulBitmap[128]; /* as above */
} KIVO_EVT_VLANS_S;

/* Ports of the VLANs usFirstVlan to usLastVlan: this head, then ulCount u32 port entries directly behind it. Without a
 * length: it is (ulCount + 3) * 4. */
typedef struct {
    uint32_t ulUserId;    /* on whose behalf it happened */
    uint16_t usFirstVlan; /* first VLAN */
    uint16_t usLastVlan;  /* last VLAN */
    uint32_t ulCount;     /* at least 1 */
} KIVO_EVT_VLAN_PORTS_S;

/* A super-VLAN and a sub-VLAN of it. */
typedef struct {
    uint32_t ulLen;       /* 12 */
    uint32_t ulUserId;    /* on whose behalf it happened */
    uint16_t usSuperVlan; /* VLAN above */
    uint16_t usSubVlan;   /* VLAN that joined or left it */
} KIVO_EVT_SUB_VLAN_S;

/* An attribute of a VLAN. */
typedef struct {
    uint32_t ulLen;    /* 16 */
    uint32_t ulUserId; /* on whose behalf it happened */
    uint32_t ulAttr;   /* the host's attribute */
    uint16_t usVlan;   /* the VLAN */
    uint16_t usReserved;
} KIVO_EVT_VLAN_ATTR_S;

/* The interface of a VLAN; the sub-event id says what became of it. */
typedef struct {
    uint32_t ulLen;    /* 12 */
    uint32_t ulUserId; /* on whose behalf it happened */
    uint16_t usVlan;   /* the VLAN */
    uint16_t usReserved;
} KIVO_EVT_VLAN_STATE_S;

/* The configuration of a VLAN is being shown. */
typedef struct {
    uint32_t ulLen;      /* 24 */
    uint32_t ulUserId;   /* on whose behalf it happened */
    uint64_t ullContext; /* 35: the host's context; 34: the address of a copy of it, valid during the callback */
    uint16_t usVlan;     /* the VLAN */
    uint16_t ausReserved[3];
} KIVO_EVT_BUILDRUN_S;

/* ---- trunks ---- */

/* A member of a trunk. */
typedef struct {
    uint32_t ulLen;        /* 16 */
    uint32_t ulUserId;     /* on whose behalf it happened */
    uint32_t ulMember;     /* interface index of the member */
    uint32_t ulTrunkIndex; /* 0xFFFFFFFF: the host does not know the trunk any more */
} KIVO_EVT_TRUNK_MEMBER_S;

/* A trunk that goes: the second and third argument of the host's notification. */
typedef struct {
    uint32_t ulLen;      /* 16 */
    uint32_t ulUserId;   /* on whose behalf it happened */
    uint32_t aulHost[2]; /* words of the host */
} KIVO_EVT_TRUNK_DEL_S;

/* ---- virtual systems ---- */

/* A virtual system that was there when the event task started. Without length and user. */
typedef struct {
    uint32_t ulVrfIndex; /* index of the VRF that backs it */
    char szVrfName[32];  /* its name, terminated */
} KIVO_EVT_VSYS_S;

#endif
