/* The sequential receiver: one message in progress per context, fragments in order. */

#include "channel.h"

#include <cstddef>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelhost/assert.h>

using chi::SOURCE;

static_assert(sizeof(CHI_RECV_CTX_S) == 24);
static_assert(offsetof(CHI_RECV_CTX_S, pBuffer) == 0);
static_assert(offsetof(CHI_RECV_CTX_S, ulMsgId) == 8);
static_assert(offsetof(CHI_RECV_CTX_S, ulFragment) == 12);
static_assert(offsetof(CHI_RECV_CTX_S, ulReceived) == 16);
static_assert(offsetof(CHI_RECV_CTX_S, ulTotal) == 20);

/* Ends the message in progress. Only YSB cuts messages, so whatever came now, that one is YSB's. */
static void Abandon(CHI_RECV_CTX_S *pstContext) {
    CBUF_Free(CHI_BACK_YSB, pstContext->pBuffer);
    *pstContext = CHI_RECV_CTX_S{};
}

/* Copies the payload behind what came before. False when the copy would leave the announced length. */
static bool Append(const CHI_RECV_CTX_S *pstContext, const void *pPayload, uint32_t ulLen) {
    uint8_t *pucMessage = chi::PayloadOf(CHI_BACK_YSB, pstContext->pBuffer);
    return pucMessage != nullptr && chi::Copy(pucMessage + pstContext->ulReceived,
                                              pstContext->ulTotal - pstContext->ulReceived, pPayload, ulLen);
}

/* A further fragment of the message in progress. */
static uint32_t Continue(CHI_RECV_CTX_S *pstContext, const CHI_MSG_INFO_S &stInfo, const void *pPayload, uint32_t ulLen,
                         void **ppComplete) {
    if (pstContext->ulFragment + 1 != stInfo.ulFragment || !Append(pstContext, pPayload, ulLen)) {
        Abandon(pstContext);
        return KIVO_FAIL;
    }
    if (static_cast<uint64_t>(pstContext->ulReceived) + ulLen < pstContext->ulTotal) {
        pstContext->ulFragment = stInfo.ulFragment;
        pstContext->ulReceived += ulLen;
        return KIVO_OK;
    }
    *ppComplete = pstContext->pBuffer;
    *pstContext = CHI_RECV_CTX_S{};
    return KIVO_OK;
}

/* The first fragment of a message of several. What services other than YSB announce is refused, after the allocation
 * that comes first for all. */
static uint32_t Begin(uint32_t ulBackType, CHI_RECV_CTX_S *pstContext, const uint8_t *pucHeader,
                      const CHI_MSG_INFO_S &stInfo, const void *pPayload, uint32_t ulLen) {
    void *pMessage = nullptr;
    if (CBUF_Alloc(ulBackType, &pMessage, stInfo.ulTotalLength) != KIVO_OK)
        return KIVO_FAIL;
    uint8_t *pucMessage = ulBackType == CHI_BACK_YSB ? chi::HeaderOf(ulBackType, pMessage) : nullptr;
    /* A message whose beginning is missing must never be completed. */
    if (pucMessage == nullptr || !chi::Copy(pucMessage, chi::HEADER_YSB, pucHeader, chi::HEADER_YSB) ||
        !chi::Copy(pucMessage + chi::HEADER_YSB, stInfo.ulTotalLength, pPayload, ulLen)) {
        CBUF_Free(ulBackType, pMessage);
        return KIVO_FAIL;
    }
    *pstContext = CHI_RECV_CTX_S{pMessage, stInfo.ulMsgId, stInfo.ulFragment, ulLen, stInfo.ulTotalLength};
    return KIVO_OK;
}

uint32_t CHI_RecvMsgForFrag(uint32_t ulBackType, CHI_RECV_CTX_S *pstContext, void *pBuffer, const void *pPayload,
                            uint32_t ulLen, void **ppComplete) {
    if (pBuffer == nullptr)
        return KIVO_FAIL;
    if (pPayload == nullptr || ppComplete == nullptr || pstContext == nullptr) {
        qal_assert(SOURCE, __LINE__);
        CBUF_Free(ulBackType, pBuffer);
        return KIVO_FAIL;
    }
    const uint8_t *pucHeader = chi::HeaderOf(ulBackType, pBuffer);
    if (pucHeader == nullptr) {
        if (ulBackType > CHI_BACK_YSB)
            qal_assert(SOURCE, __LINE__); /* not the lack of data in a good buffer, but a wrong call */
        CBUF_Free(ulBackType, pBuffer);
        return KIVO_FAIL;
    }
    CHI_MSG_INFO_S stInfo;
    chi::ReadInfo(ulBackType, pucHeader, &stInfo);

    uint32_t ulResult;
    /* The other services have no message ids: theirs is another message always. */
    if (pstContext->pBuffer != nullptr && ulBackType == CHI_BACK_YSB && pstContext->ulMsgId == stInfo.ulMsgId) {
        ulResult = Continue(pstContext, stInfo, pPayload, ulLen, ppComplete);
    } else {
        if (pstContext->pBuffer != nullptr)
            Abandon(pstContext);
        if (stInfo.ulTotalLength <= ulLen) {
            *ppComplete = pBuffer; /* the message came whole */
            return KIVO_OK;
        }
        ulResult = Begin(ulBackType, pstContext, pucHeader, stInfo, pPayload, ulLen);
    }
    CBUF_Free(ulBackType, pBuffer);
    return ulResult;
}
