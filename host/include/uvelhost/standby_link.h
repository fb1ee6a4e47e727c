/* The hot-standby link: how an application configures, watches and feeds it. What the library above calls stands in
 * standby.h.
 *
 * Two devices of a pair hold one connection, TCP with TLS 1.3. Both prove themselves by certificates of one pinned
 * authority, each expects the other's name. Messages arrive in order, none twice, none missing: they are numbered and
 * kept until the peer has acknowledged them, and sent again after a reconnect. Where that is not possible - the peer is
 * a new process, or more was sent while it was away than the window keeps - the owner is asked to send everything
 * (batch backup).
 *
 * Usage:
 *     YSB_LINK_CONFIG_S stConfig = {0};
 *     stConfig.pszListen = "0.0.0.0:4711"; stConfig.pszPeer = "192.0.2.2:4711"; ...
 *     if (YSB_Link_Open(&stConfig, szError, sizeof szError) != UVELHOST_OK) ...
 *     ...
 *     YSB_Link_Close();
 *
 * Messages and fragments: a message of more payload than the MTU is cut into fragments, each a socket buffer with the
 * message's header, in which the host has set the fragment number (0, 1, 2, ...). The receiver's callback gets the
 * fragments one after the other, never mixed with those of another message, and puts them together; the channel's
 * sequential receiver does that with one context for the link, which is to be emptied when pfPeerIsNew is called.
 *
 * Batch backup: pfBatch asks the owner to send everything that it has. What others send meanwhile may come before or
 * after. The owner says YSB_Link_BatchDone when all of it was given to the output operations; pfBatchDelivered tells
 * that the peer has it. On the peer, pfPeerBatch frames what belongs to the batch: what was there before and does not
 * come again in between is gone. Both devices are asked, whatever their role; one that has nothing says so by
 * YSB_Link_BatchDone.
 *
 * Threads: pfBatch is called on a thread of its own, on which output waits for room in the window as long as the link
 * is open. pfStateChanged and pfProgress are called on any thread. All other callbacks are called on the link's thread,
 * which they must not hold up; output from there does not wait. On other threads output waits for ulSendWaitMs at most.
 * A message that finds no room is refused and counted, and everything is asked for again when there is room: nothing is
 * lost silently. YSB_Link_Open and YSB_Link_Close must not be called from callbacks. */
#ifndef UVELHOST_STANDBY_LINK_H
#define UVELHOST_STANDBY_LINK_H

#include "standby.h"

/* Roles. */
#define YSB_LINK_ROLE_AUTO 0U    /* the pair decides */
#define YSB_LINK_ROLE_ACTIVE 1U  /* this device is the active one */
#define YSB_LINK_ROLE_STANDBY 2U /* this device is never the active one */

/* Why a peer was turned away, or turned this device away. */
#define YSB_LINK_REFUSED_NO_CERTIFICATE 1U
#define YSB_LINK_REFUSED_AUTHORITY 2U   /* certificate of another authority, or not valid now */
#define YSB_LINK_REFUSED_NAME 3U        /* certificate of another device */
#define YSB_LINK_REFUSED_TLS_VERSION 4U /* older than TLS 1.3 */
#define YSB_LINK_REFUSED_VERSION 5U     /* another version of the link's protocol */
#define YSB_LINK_REFUSED_ROLE 6U        /* both are configured as the active one */
#define YSB_LINK_REFUSED_TLS 7U         /* no TLS, or broken */
#define YSB_LINK_REFUSED_TIMEOUT 8U     /* too slow with its introduction */
#define YSB_LINK_REFUSALS 9U

#define YSB_LINK_ANY_CPU 255U /* processor of messages that were not sent to one */

/* Configuration. 0 takes the default that stands behind a number. Texts and the structure are read during
 * YSB_Link_Open only. */
typedef struct {
    /* "address:port" or "[address]:port". With both, the device whose name sorts first connects and the other one
     * listens; so both devices may be configured alike. Port 0 of pszListen takes any. */
    const char *pszListen; /* or null: always connects */
    const char *pszPeer;   /* or null: always listens */

    /* PEM files: this device's certificate and key, and the one authority that the peer's certificate must be of.
     * YSB_Link_MakeKeys makes them. */
    const char *pszCertificate;
    const char *pszKey;
    const char *pszAuthority;
    const char *pszPeerName; /* DNS name in the peer's certificate */

    uint32_t ulRole;       /* YSB_LINK_ROLE_* */
    uint32_t ulPriority;   /* AUTO: when no other rule decides, the higher one is active, then the lower name */
    uint32_t ulTakeoverMs; /* AUTO: becomes active after so long without the peer; 3000 */
    uint32_t ulCpuNum;     /* processors of this device that take part; 1 */

    uint32_t ulBoard;     /* numbers of this device and of the peer in ha.h, as master and standby board; */
    uint32_t ulPeerBoard; /* with two equal ones ha.h names no boards */

    uint32_t ulMtu;         /* most payload bytes of a packet; 65536 */
    uint32_t ulMaxMessage;  /* most payload bytes of a message, sent and received; 16 MiB, at most 64 MiB */
    uint32_t ulWindow;      /* bytes that are kept for the peer; 4 MiB */
    uint32_t ulSendWaitMs;  /* 200 */
    uint32_t ulHeartbeatMs; /* 1000 */
    uint32_t ulTimeoutMs;   /* a peer that is silent for so long is gone; 3000 */
    uint32_t ulRetryMinMs;  /* pause before connecting again, doubled each time: 100 */
    uint32_t ulRetryMaxMs;  /* to at most: 5000 */

    void *pContext; /* first argument of the callbacks */

    /* A packet has come: the first ulLen bytes of the buffer, which belongs to the callback. ucCpu is the processor it
     * was sent to, or YSB_LINK_ANY_CPU. With 0 the packet counts as taken; with any other result (memory is short) the
     * connection ends and the packet comes again on the next one. Not null. */
    uint32_t (*pfReceive)(void *pContext, uint32_t ulModId, uint8_t ucCpu, YSB_SMBUF_S *pstSmbuf, uint32_t ulLen);
    /* The peer's stream begins anew: what is left of a message in progress will not come. May be null. */
    void (*pfPeerIsNew)(void *pContext);
    /* Send everything; then YSB_Link_BatchDone(ulBatch). Not null. */
    void (*pfBatch)(void *pContext, uint32_t ulBatch);
    /* The peer has all of batch ulBatch. May be null. */
    void (*pfBatchDelivered)(void *pContext, uint32_t ulBatch);
    /* A batch of the peer begins (1) or is complete (0). May be null. */
    void (*pfPeerBatch)(void *pContext, uint32_t ulBegins);
    /* Connection, role or backup state has changed: YSB_Link_GetState tells. May be null. */
    void (*pfStateChanged)(void *pContext);
    /* The peer has taken more, or is gone: YSB_Link_GetFate may answer otherwise than before. May be null. */
    void (*pfProgress)(void *pContext);
} YSB_LINK_CONFIG_S;

/* The link as it is now. */
typedef struct {
    uint32_t ulConnected;  /* 1: the peer is there */
    uint32_t ulActive;     /* 1: this device is the active one */
    uint32_t ulPeerActive; /* 1: the peer said so when it was last heard of */
    uint32_t ulBackup;     /* HA_STATE_* of ha.h, seen from this device */
    uint32_t ulTerm;       /* grows whenever a device takes over */
    uint32_t ulPeerCpuNum; /* 0 without a peer */
    uint32_t ulPort;       /* the port that is listened on, 0 for none */
} YSB_LINK_STATE_S;

/* Since YSB_Link_Open. Messages are those given to the output operations, packets what they were cut into. */
typedef struct {
    uint64_t ulMessagesSent;    /* messages accepted by the output operations */
    uint64_t ulPacketsSent;     /* each once, however often it travelled */
    uint64_t ulBytesSent;       /* headers and payload of these packets */
    uint64_t ulPacketsReceived; /* taken by pfReceive */
    uint64_t ulBytesReceived;   /* headers and payload of these packets */
    uint64_t ulAcknowledged;    /* packets and marks of batches that the peer has taken */
    uint64_t ulResent;          /* the same, sent again after a reconnect */
    uint64_t ulBytesHeld;       /* now kept for the peer */

    uint64_t ulRefusedNoPeer;    /* messages without a peer to send them to */
    uint64_t ulRefusedWindow;    /* messages for which there was no room */
    uint64_t ulRefusedTooLarge;  /* messages above what this device or the peer takes */
    uint64_t ulRefusedMalformed; /* messages whose length and header do not fit together */
    uint64_t ulRefusedMemory;    /* messages for which memory was short */

    uint64_t ulConnects;         /* connections that came to work */
    uint64_t ulDisconnects;      /* and ended */
    uint64_t ulFailedConnects;   /* attempts that did not reach a peer */
    uint64_t ulTimeouts;         /* connections that ended because the peer was silent */
    uint64_t ulViolations;       /* connections that ended because the peer broke the protocol */
    uint64_t ulOverlong;         /* of these: packets or messages above the configured maximum */
    uint64_t ulResumed;          /* own streams that went on where they were */
    uint64_t ulNewStreams;       /* own streams that began anew */
    uint64_t ulPeerStreams;      /* the peer's streams that began anew */
    uint64_t ulBatches;          /* batch backups that the owner was asked for */
    uint64_t ulBatchesDelivered; /* of these: the peer has everything */
    uint64_t ulPeerBatches;      /* batch backups of the peer that were complete */

    uint64_t aulRefused[YSB_LINK_REFUSALS];   /* peers that were turned away, by reason */
    uint64_t aulRefusedBy[YSB_LINK_REFUSALS]; /* times that the peer turned this device away, by reason */
} YSB_LINK_COUNTERS_S;

/* Opens the link of this process; one at a time. On failure pszError (may be null) says why in at most ulErrorSize
 * bytes. */
UVELHOST_API uint32_t YSB_Link_Open(const YSB_LINK_CONFIG_S *pstConfig, char *pszError, uint32_t ulErrorSize);

/* Closes the link; what the peer has not acknowledged is gone. No callback runs afterwards. Without a link nothing
 * happens. */
UVELHOST_API void YSB_Link_Close(void);

/* Everything of batch ulBatch was given to the output operations. Fails when that batch has been overtaken by a newer
 * one or the link is closed: nothing is to be done about that. */
UVELHOST_API uint32_t YSB_Link_BatchDone(uint32_t ulBatch);

/* Asks the owner to send everything, as if the peer were new: for an owner that lost track. Fails without a peer. */
UVELHOST_API uint32_t YSB_Link_StartBatch(void);

/* Changes the configured role, and with it the peer's where that is YSB_LINK_ROLE_AUTO. Fails without a link and for an
 * unknown role. */
UVELHOST_API uint32_t YSB_Link_SetRole(uint32_t ulRole);

/* State of the link. Fails for null and without a link. */
UVELHOST_API uint32_t YSB_Link_GetState(YSB_LINK_STATE_S *pstState);

/* Copies the counters. Fails for null and without a link. */
UVELHOST_API uint32_t YSB_Link_GetCounters(YSB_LINK_COUNTERS_S *pstCounters);

/* ---- knowing that the peer has it ----
 * Whoever promises somebody else that a change is on both devices gives it to an output operation, asks for the
 * position, and keeps the promise back until the peer has taken everything up to there (pfProgress). */

/* Position of what was given to the output operations up to now, on any thread; it only grows. 0 when it would say
 * nothing: without a link and without a peer, while the peer still has to get everything, and when a message found no
 * room: then there is nothing to wait for. */
UVELHOST_API uint64_t YSB_Link_GetPosition(void);

/* What has become of everything up to a position. A callback of the peer that has returned is what counts as taken. */
#define YSB_LINK_FATE_PENDING 0U /* on its way */
#define YSB_LINK_FATE_TAKEN 1U
#define YSB_LINK_FATE_UNKNOWN 2U /* the peer went away before it said so; it gets what is missing when it is back */
UVELHOST_API uint32_t YSB_Link_GetFate(uint64_t ulPosition);

/* What a refusal means, for people; never null. */
UVELHOST_API const char *YSB_Link_RefusalText(uint32_t ulRefusal);

/* Makes in a folder, which it creates where necessary, an authority and the certificates and keys of two devices:
 * authority.pem and, for each device, NAME.pem and NAME.key (mode 0600). The authority's own key is not kept. Existing
 * files are left alone: it fails when one of these is there. A failure leaves none behind. ulDays is how long they are
 * valid. Names are DNS names. */
UVELHOST_API uint32_t YSB_Link_MakeKeys(const char *pszFolder, const char *pszFirst, const char *pszSecond,
                                        uint32_t ulDays, char *pszError, uint32_t ulErrorSize);

/* ---- answers for product hooks ----
 * The product layer installs these where a process uses the link. */

/* 1 on a device with a link whose role is not the active one, otherwise 0. */
UVELHOST_API uint32_t YsbAdaptIsBackup(void);

/* Processors of this device that take part in hot standby; 1 without a link. */
UVELHOST_API uint32_t YsbAdaptGetCpuNum(void);

/* 1 when ulCpu is a processor of this device. */
UVELHOST_API uint32_t YsbAdaptIsLocalCpuId(uint32_t ulCpu);

/* Processor of the peer that stands by for processor ulCpu of this device: the one of the same number; 0xFF when the
 * peer is away or has none. */
UVELHOST_API uint32_t YsbAdaptCalcRemoteTpb(uint32_t ulCpu);

/* Registers a function that is called, on the link's thread, for each batch backup of the peer that is complete. At
 * most 64, each once. Fails for null and when there is no room. */
typedef void (*YSB_BATCH_FINISH_FUNC)(void);
UVELHOST_API uint32_t YsbAdaptRegRecvBatchFinish(YSB_BATCH_FINISH_FUNC pfFinish);

#endif
