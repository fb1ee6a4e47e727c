/* Reassembly of messages that came in fragments over the hot-standby channel. Two ways:
 *
 * - the sequential receiver (CHI_RecvMsgForFrag) keeps one message in progress in a context of the caller, requires
 *   fragments in order and puts them together;
 * - the keyed store (CHI_*Rsm*, CHI_AddFrag2Msg) holds up to 128 partial messages at once, marks which fragments came and
 *   reports what is wrong to a callback. It counts bytes, it does not order them: every fragment is written at the
 *   start of the message's payload. Callers that need the payload in order use the sequential receiver.
 *
 * Ownership: the sequential receiver takes every buffer that it is given; what it completes belongs to the caller. The
 * store leaves fragment buffers to the caller; the buffer of a record belongs to the record until it is complete.
 * Threads: a context, a control and what hangs on them belong to the one task that receives for them.
 * Lengths come from the peer: they are added in 64 bits and checked before any copy. */
#ifndef UVELCOMMON_BASE_KIVO_CHI_REASSEMBLY_H
#define UVELCOMMON_BASE_KIVO_CHI_REASSEMBLY_H

#include "kivo_chi.h"

#include <uvelhost/hash.h>
#include <uvelhost/list.h>

#define CHI_RSM_MAX_MSG 128U /* partial messages that a store keeps */

/* Context of the sequential receiver; all zero when idle. */
typedef struct {
    void *pBuffer;       /* the message in progress, or null */
    uint32_t ulMsgId;    /* from its first fragment */
    uint32_t ulFragment; /* number of the last fragment that was accepted */
    uint32_t ulReceived; /* payload bytes placed so far */
    uint32_t ulTotal;    /* payload bytes of the whole message */
} CHI_RECV_CTX_S;

/* One partial message of the keyed store; also the node of its hash table. */
typedef struct {
    DLL_NODE_S stLink;   /* in the list of messages by age */
    void *pBuffer;       /* message buffer, null once handed out */
    uint32_t ulKey;      /* finds the record */
    uint32_t ulMsgId;    /* compared with the first word of every fragment's header */
    uint32_t ulBitMap;   /* bit n is set when fragment n has come */
    uint32_t ulReceived; /* payload bytes that have come */
    uint32_t ulTotal;    /* payload bytes of the whole message */
} CHI_RSM_MSG_S;

/* Why the store's callback is called. */
#define CHI_RSM_DROPPED 0U       /* the oldest message went for the limit of 128 */
#define CHI_RSM_OTHER_MESSAGE 2U /* a fragment of another message */
#define CHI_RSM_TOO_LONG 3U      /* a fragment that does not fit the total length */
#define CHI_RSM_DUPLICATE 4U     /* a fragment that came before */
#define CHI_RSM_NO_MEMORY 6U     /* no memory for a record */
#define CHI_RSM_NOT_INSERTED 7U  /* a record could not be put into the hash table */

/* ulFragment is the fragment's number for CHI_RSM_DUPLICATE, otherwise 0. */
typedef void (*CHI_RSM_ERR_FUNC)(uint32_t ulBackType, uint32_t ulReason, uint32_t ulFragment);

/* A keyed store. */
typedef struct {
    uint32_t ulMid;           /* module that memory is charged to */
    LITE_HASH_S *pstHash;     /* records by their key */
    DLL_S stList;             /* records in the order of arrival; its count is the number of messages */
    CHI_RSM_ERR_FUNC pfError; /* hears of what went wrong; may be null */
} CHI_RSM_CTL_S;

/* The stores in use, one per back type; see CHI_CM_SetMsgRsmCtl. */
UVEL_DATA CHI_RSM_CTL_S *g_pstCMMsgReassemCtl[4];

/* Takes one received buffer with its payload of ulLen bytes at pPayload. 0 when it was consumed; *ppComplete is written
 * when that completed a message (a message that came whole is handed through without a copy) and is otherwise left
 * alone. 1 when the buffer was refused and freed:
 * bad arguments, an unreadable header, a fragment out of order or beyond the total length (both end the message in
 * progress), a fragment of a back type other than YSB, no memory. Only a null pBuffer frees nothing.
 * A fragment of another message ends the one in progress and is taken as a first one; whatever comes over HA and HSB,
 * which have no message ids, counts as that. */
UVEL_API uint32_t CHI_RecvMsgForFrag(uint32_t ulBackType, CHI_RECV_CTX_S *pstContext, void *pBuffer,
                                     const void *pPayload, uint32_t ulLen, void **ppComplete);

/* Makes a store empty and usable; pfError may be null. Its hash table is charged to module ulMid. 1 for a null control
 * and when the table cannot be made. */
UVEL_API uint32_t CHI_InitMsgRsmCtl(CHI_RSM_CTL_S *pstCtl, CHI_RSM_ERR_FUNC pfError, uint32_t ulMid);

/* Names the store of a back type for all to find. 1 for an index above 3. */
UVEL_API uint32_t CHI_CM_SetMsgRsmCtl(uint32_t ulIndex, CHI_RSM_CTL_S *pstCtl);

/* Copies a record into the store's hash table and returns the copy, null when its key is there already, for a null
 * argument and when memory is short. Linking the copy at the end of the store's list is the caller's step. */
UVEL_API CHI_RSM_MSG_S *CHI_AddMsgRsmHash(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord);

/* The record with the key of *pstRecord, or null. */
UVEL_API CHI_RSM_MSG_S *CHI_FindRsmHashNode(CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord);

/* Takes the record with the key of *pstRecord out of the hash table; its memory stays. 1 when there is none. */
UVEL_API uint32_t CHI_DelMsgRsmHash(CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord);

/* Adds ulLen bytes of a fragment to a record. pHeader is the fragment's header, 48 bytes. 0 when the fragment was
 * accepted: *ppComplete is then the message's buffer, and the record is gone, when all its bytes have come, otherwise
 * null. 1 otherwise, with the reason to the callback where there is one. Numbers above 31 have no bit in the bitmap:
 * such fragments are never recognised as duplicates. */
UVEL_API uint32_t CHI_AddFrag2Msg(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, void *pFragment, const void *pData,
                                  uint32_t ulLen, void **ppComplete, const void *pHeader, CHI_RSM_MSG_S *pstRecord);

/* Ends a record: its buffer (if any) is freed, it leaves the list and the hash table and is freed itself. Null arguments
 * are ignored. */
UVEL_API void CHI_DestroyMsgForRsm(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, CHI_RSM_MSG_S *pstRecord);

/* Drops the oldest message when the store holds more than 128; one per call. 1 for a null control. */
UVEL_API uint32_t CHI_MsgNumLimitForRsm(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl);

/* Sets a bit of a bitmap. 1 for a null bitmap and a bit above 31. */
UVEL_API uint32_t CHI_SetBitMap(uint32_t *pulBitMap, uint32_t ulBit);

/* Non-zero when a bit is set; 0 for a null bitmap and a bit above 31. */
UVEL_API uint32_t CHI_GetBitMap(const uint32_t *pulBitMap, uint32_t ulBit);

/* Hash value of a record: the low seven bits of its key; 0xFFFFFFFF for null. */
UVEL_API uint32_t CHI_MsgRsmHashKey(const void *pstRecord);

/* 1 when the keys of two records are equal, 0 otherwise and for null. */
UVEL_API uint32_t CHI_MsgRsmHashCompareKey(const void *pstA, const void *pstB);

#endif
