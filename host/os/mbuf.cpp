#include <uvelhost/mbuf.h>

#include <uvelhost/memory.h>

void MBUF_Destroy(MBUF_S *pstMbuf) {
    while (pstMbuf != nullptr) {
        MBUF_S *next = pstMbuf->pstNext;
        QAL_MemFree(0, pstMbuf);
        pstMbuf = next;
    }
}
