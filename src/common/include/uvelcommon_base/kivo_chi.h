/* Hot-standby channel: messages to the peer device over any of several back services.
 *
 * A back type names the service that carries a message. A channel buffer is the service's header followed directly by
 * the payload; callers keep the pair (back type, handle) and never compute payload addresses themselves. What stands in
 * a header is filled and read through one neutral record, and message types are translated between the channel's own
 * numbers and the service's.
 *
 * Usage:
 *     if (CBUF_Alloc(CHI_BACK_YSB, &pBuffer, ulLen) == KIVO_OK) {
 *         memcpy(CBUF_C2D(CHI_BACK_YSB, pBuffer), pData, ulLen);
 *         (void)CHI_SetMsgInfo(CHI_BACK_YSB, pBuffer, &stInfo);
 *         (void)CHI_YSB_OutputPacket(ulModId, (uintptr_t)pBuffer, CHI_ANY_CHANNEL, 48 + ulLen);
 *     }
 *
 * Ownership: a buffer belongs to whoever holds its handle.
 * Threads: the mapping tables are written once by CHI_Init and only read afterwards; everything else works on the
 * caller's buffers.
 * Errors: misuse (null pointers, unknown back types) asserts and fails softly, as each function says. */
#ifndef UVELCOMMON_BASE_KIVO_CHI_H
#define UVELCOMMON_BASE_KIVO_CHI_H

#include "kivo_types.h"

/* Back types. */
#define CHI_BACK_HA 0U
#define CHI_BACK_HSB 1U
#define CHI_BACK_YSB 2U
#define CHI_BACK_DB 3U /* has a name, but no buffers here */

#define CHI_TYPE_COUNT 9U           /* the channel's message types are 0 to 8 */
#define CHI_NOT_CARRIED 0xFFFFFFFFU /* type that a service does not carry */
#define CHI_ANY_CHANNEL 255U        /* channel of CHI_YSB_OutputPacket that stands for "not to one CPU" */

/* What a header says, the same for all back types. */
typedef struct {
    uint32_t ulWordA;       /* carried unchanged */
    uint32_t ulTotalLength; /* payload bytes of the whole message */
    uint32_t aulWordC[4];   /* carried unchanged */
    uint32_t ulSubType;     /* carried in 16 bits */
    uint32_t ulMsgType; /* sending: channel type; received: the service's type, see CHI_MsgP2C; carried in 16 bits */
    uint8_t aucReserved[8]; /* not used */
    uint32_t ulMsgId;       /* YSB only: one message across its fragments */
    uint32_t ulFragment;    /* YSB only, on receipt: number of this fragment */
} CHI_MSG_INFO_S;

/* Module id that channel buffers are charged to. Zero at load; the product layer sets it. */
UVEL_DATA uint32_t g_ulUVELCommMid;

/* Fills the tables that translate received types. Always 0. */
UVEL_API uint32_t CHI_Init(void);

/* The back service's type of a channel type, CHI_NOT_CARRIED for a type above 8 and one that the service does not
 * carry. YSB carries the channel type itself. An unknown back type asserts and gives the channel type. */
UVEL_API uint32_t CHI_MsgC2P(uint32_t ulBackType, uint32_t ulChannelType);

/* The channel type of a back service's type, CHI_NOT_CARRIED for none. Not the mirror of CHI_MsgC2P: some types are
 * received and never sent. An unknown back type asserts and gives the type itself. */
UVEL_API uint32_t CHI_MsgP2C(uint32_t ulBackType, uint32_t ulServiceType);

/* Writes *pstInfo into the header of a buffer and replaces the record's message type by the service's. 1 for a null
 * argument, a type that is not carried, a socket buffer without data and a back type without buffers; the record is
 * then as it was. */
UVEL_API uint32_t CHI_SetMsgInfo(uint32_t ulBackType, void *pBuffer, CHI_MSG_INFO_S *pstInfo);

/* Reads the header of a buffer. The message type is the service's. 1 for a null argument and an unknown back type (both
 * assert) and for a socket buffer without data. Only YSB writes message id and fragment number. */
UVEL_API uint32_t CHI_GetMsgInfo(uint32_t ulBackType, void *pBuffer, CHI_MSG_INFO_S *pstInfo);

/* Bytes of a back type's header: 48, 352, 48, and 0 for any other. */
UVEL_API uint32_t CHI_GetMsgHeadLen(uint32_t ulBackType);

/* Sends a YSB buffer: to the peer's CPU ucChannel, or, for CHI_ANY_CHANNEL, to the peer. The first two values are those
 * of the output hooks, ulLength counts header and payload. Always 0, whatever became of it. */
UVEL_API uint32_t CHI_YSB_OutputPacket(uintptr_t ulFirst, uintptr_t ulSecond, uint8_t ucChannel, uint32_t ulLength);

/* Largest YSB packet in bytes: common specification 5. */
UVEL_API uint32_t CHI_GetYsbMtu(void);

/* Largest message in bytes: common specification 6. */
UVEL_API uint32_t CHI_GetJumboMsgSize(void);

/* Fragments that the largest message needs: jumbo size / MTU + 1, and 1 while the MTU is 0. */
UVEL_API uint32_t CHI_GetYsbMsgMaxFragNum(void);

/* "HA", "HSB", "YSB", "DB", and an empty text for any other back type. */
UVEL_API const char *CHI_GetBackTypeDescr(uint32_t ulBackType);

/* A buffer for ulPayload bytes behind a cleared header; the payload is not cleared. 1, with *ppBuffer untouched, for a
 * null pointer or a back type without buffers (both assert) and when memory is short. */
UVEL_API uint32_t CBUF_Alloc(uint32_t ulBackType, void **ppBuffer, uint32_t ulPayload);

/* Address of the payload; null for a null buffer or a back type without buffers (both assert). A socket buffer is not
 * asked whether it has data. */
UVEL_API void *CBUF_C2D(uint32_t ulBackType, void *pBuffer);

/* Releases a buffer. A null buffer and a back type without buffers assert. */
UVEL_API void CBUF_Free(uint32_t ulBackType, void *pBuffer);

#endif
