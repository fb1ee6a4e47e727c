#include <uvelcommon_base/kivo_mbuf.h>

void UVEL_MBUF_SET_TOTAL_DATA_LENGTH(MBUF_S *pstMbuf, uint32_t ulLength) {
    if (pstMbuf != nullptr)
        pstMbuf->ulTotalDataLength = ulLength;
}

uint16_t UVEL_MBUF_GET_DATA_LENGTH(const MBUF_S *pstMbuf) {
    return pstMbuf == nullptr ? 0 : pstMbuf->usDataLength;
}

void UVEL_MBUF_SET_DATA_LENGTH(MBUF_S *pstMbuf, uint16_t usLength) {
    if (pstMbuf != nullptr)
        pstMbuf->usDataLength = usLength;
}

/* The mark is all there is to do, and 1 the answer with and without a packet: callers rely on both. */
uint32_t UVEL_IF_QosL2BNGTransmit(MBUF_S *pstMbuf) {
    if (pstMbuf != nullptr)
        pstMbuf->ulFlags |= MBUF_FLAG_L2BNG;
    return 1;
}
