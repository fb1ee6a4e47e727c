/* Message buffers: fields of a packet of the host, for callers that do not know its layout.
 *
 * Usage:
 *     UVEL_MBUF_SET_DATA_LENGTH(pstMbuf, usBytes);
 *     UVEL_MBUF_SET_TOTAL_DATA_LENGTH(pstMbuf, usBytes);
 *
 * Threads: a packet belongs to one caller at a time. Errors: a null packet has length 0 and takes none. */
#ifndef UVELCOMMON_BASE_KIVO_MBUF_H
#define UVELCOMMON_BASE_KIVO_MBUF_H

#include <uvelcommon_base/kivo_types.h>
#include <uvelhost/mbuf.h>

/* Says how many bytes the whole packet has; pstMbuf is its first buffer. */
UVEL_API void UVEL_MBUF_SET_TOTAL_DATA_LENGTH(MBUF_S *pstMbuf, uint32_t ulLength);

/* Bytes in this buffer of the packet. */
UVEL_API uint16_t UVEL_MBUF_GET_DATA_LENGTH(const MBUF_S *pstMbuf);

/* Says how many bytes this buffer of the packet has. */
UVEL_API void UVEL_MBUF_SET_DATA_LENGTH(MBUF_S *pstMbuf, uint16_t usLength);

/* Marks the packet for the layer-2 access road (MBUF_FLAG_L2BNG). Nothing is sent or released here. Always 1, also for
 * null. */
UVEL_API uint32_t UVEL_IF_QosL2BNGTransmit(MBUF_S *pstMbuf);

#endif
