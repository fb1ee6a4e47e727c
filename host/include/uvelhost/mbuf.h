/* Message buffers: packets on their way through the platform.
 *
 * A packet is a chain of buffers. Each buffer, with the bytes its data pointer leads to, is one block of the memory
 * service (QAL_MemAlloc), so whoever makes one needs no more than that. A packet belongs to whoever was given it. */
#ifndef UVELHOST_MBUF_H
#define UVELHOST_MBUF_H

#include "types.h"

#define MBUF_FLAG_L2BNG 0x1U /* the packet takes the layer-2 access road */

typedef struct MBUF MBUF_S;

/* One buffer of a packet. */
struct MBUF {
    MBUF_S *pstNext;            /* next buffer of the packet, or null */
    uint8_t *pucData;           /* first byte in this buffer */
    uint32_t ulTotalDataLength; /* bytes in the whole packet, kept in its first buffer */
    uint16_t usDataLength;      /* bytes in this buffer */
    uint16_t usReserved;        /* 0 */
    uint32_t ulFlags;           /* MBUF_FLAG_*, kept in the packet's first buffer */
    uint32_t ulReserved;        /* 0 */
};
UVELHOST_STATIC_ASSERT(sizeof(void *) != 8 || sizeof(struct MBUF) == 32, "no hidden padding");

/* Releases a packet, all buffers of its chain. Null is ignored. */
UVELHOST_API void MBUF_Destroy(MBUF_S *pstMbuf);

#endif
