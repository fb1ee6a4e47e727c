/* Feeder of the device model from the Linux kernel: links, addresses, bridges and their VLANs, bonds and VRFs of one
 * network namespace.
 *
 * Usage:
 *     NLF_CONFIG_S stConfig;
 *     NLF_InitConfig(&stConfig);
 *     stConfig.ulSlot = 3;
 *     NLF_FEEDER *pstFeeder = NLF_Start(&stConfig);      // the model holds what the kernel has
 *     ...                                                // and follows it
 *     NLF_Stop(pstFeeder);                               // the model keeps what it holds
 *
 * What becomes of the kernel's objects (model.h):
 *
 *     link                       interface of the same index; taken down by administration unless it is up; physical
 *                                state: carrier; line and IPv6 state: carrier, and operational state up or unknown
 *     vlan on a bridge           layer-3 interface of that VLAN
 *     vlan on any other link     sub-interface of it
 *     bridge without filtering   interface of the bridge domain of its index, when that is below 65536; its ports are in
 *                                that domain
 *     bridge that filters        its VLANs and those of its ports exist; ports are bound to theirs by configuration
 *     port of a bridge           switch port, layer 2; its mode follows from its VLANs
 *     bond, its members          trunk, identified by the number at the end of its name where no other trunk has it;
 *                                members are active as the bond says
 *     vrf, its members           VRF of the table's number, both families, and the virtual system of that number when it
 *                                is below 65536; 0 is the public one, "public"
 *     IPv4 address               address; the first that is not secondary is the main one; permanent: by configuration
 *     IPv6 address               address, once it has been found to be free
 *     loopback, other Ethernet   port and physical type 11, 1; all else 0. Ethernet devices that are not made of others
 *                                sit in the slot of the configuration
 *
 * Changes reach the model one by one and in order. When the kernel reports that messages were lost, everything is read
 * anew and the differences reach the model; the same happens at the start.
 *
 * Ownership: the feeder belongs to its starter. Threads: it has one of its own; the operations may be called from any,
 * except from callbacks of notifications. */
#ifndef UVELHOST_NETLINK_H
#define UVELHOST_NETLINK_H

#include "types.h"

/* Port types that the feeder gives. */
#define NLF_PORT_TYPE_OTHER 0U
#define NLF_PORT_TYPE_ETHERNET 1U
#define NLF_PORT_TYPE_LOOPBACK 11U

/* A running feeder. */
typedef struct NLF_FEEDER NLF_FEEDER;

/* What a feeder is started with; NLF_InitConfig fills it. */
typedef struct {
    uint32_t ulFeeder;   /* number of this feeder in the model */
    uint32_t ulSlot;     /* slot of Ethernet devices, UVELHOST_NONE: none */
    uint32_t ulRcvBytes; /* receive buffer asked for */
    uint32_t ulCarryOut; /* 1: taking interfaces down and up, and routes to users, are carried out in the kernel */
} NLF_CONFIG_S;

/* Counters since the start of a feeder. */
typedef struct {
    uint64_t ulMessages;    /* messages of the kernel that were read */
    uint64_t ulOverruns;    /* times that the kernel reported lost messages */
    uint64_t ulLoads;       /* times that everything was read, the start included */
    uint64_t ulInterrupted; /* lists of the kernel that changed while they were read, and were read again */
    uint64_t ulRefused;     /* objects that the model refused */
    uint64_t ulLost;        /* batches that the model could not take: memory was short; everything is read anew then */
} NLF_STATS_S;

/* Feeder 1, no slot, 8 MiB, nothing is carried out. */
UVELHOST_API void NLF_InitConfig(NLF_CONFIG_S *pstConfig);

/* Starts a feeder for the network namespace of the calling thread and waits until everything is in the model. Null for a
 * null configuration, and when the kernel refuses or memory is short. */
UVELHOST_API NLF_FEEDER *NLF_Start(const NLF_CONFIG_S *pstConfig);

/* Waits until what the kernel had reported before the call is in the model, at most ulTimeoutMs; 1 when the time is over
 * and for null. MDL_Drain then waits for the notifications. */
UVELHOST_API uint32_t NLF_Sync(NLF_FEEDER *pstFeeder, uint32_t ulTimeoutMs);

/* Has everything read anew. Null is ignored. */
UVELHOST_API void NLF_Reload(NLF_FEEDER *pstFeeder);

/* Ends and frees a feeder. Null is ignored. */
UVELHOST_API void NLF_Stop(NLF_FEEDER *pstFeeder);

/* Writes the counters; 1 for null. */
UVELHOST_API uint32_t NLF_GetStats(const NLF_FEEDER *pstFeeder, NLF_STATS_S *pstStats);

#endif
