/* The keyed store: partial messages in a hash table, and in a list by age. */

#include "channel.h"

#include <cstddef>
#include <cstring>
#include <securec.h>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelhost/assert.h>
#include <uvelhost/memory.h>

using chi::SOURCE;

static constexpr uint32_t BUCKETS = 128;
static constexpr uint32_t FRAGMENT_OFFSET = 44; /* 16 bits in a fragment's header */

static_assert(sizeof(CHI_RSM_MSG_S) == 56);
static_assert(offsetof(CHI_RSM_MSG_S, stLink) == 0);
static_assert(offsetof(CHI_RSM_MSG_S, pBuffer) == 24);
static_assert(offsetof(CHI_RSM_MSG_S, ulKey) == 32);
static_assert(offsetof(CHI_RSM_MSG_S, ulMsgId) == 36);
static_assert(offsetof(CHI_RSM_MSG_S, ulBitMap) == 40);
static_assert(offsetof(CHI_RSM_MSG_S, ulReceived) == 44);
static_assert(offsetof(CHI_RSM_MSG_S, ulTotal) == 48);
static_assert(sizeof(CHI_RSM_CTL_S) == 56);
static_assert(offsetof(CHI_RSM_CTL_S, ulMid) == 0);
static_assert(offsetof(CHI_RSM_CTL_S, pstHash) == 8);
static_assert(offsetof(CHI_RSM_CTL_S, stList) == 16);
static_assert(offsetof(CHI_RSM_CTL_S, pfError) == 48);

CHI_RSM_CTL_S *g_pstCMMsgReassemCtl[4];

static void Report(const CHI_RSM_CTL_S *pstCtl, uint32_t ulBackType, uint32_t ulReason, uint32_t ulFragment = 0) {
    if (pstCtl->pfError != nullptr)
        pstCtl->pfError(ulBackType, ulReason, ulFragment);
}

uint32_t CHI_MsgRsmHashKey(const void *pstRecord) {
    return pstRecord == nullptr ? KIVO_NONE : static_cast<const CHI_RSM_MSG_S *>(pstRecord)->ulKey & (BUCKETS - 1);
}

uint32_t CHI_MsgRsmHashCompareKey(const void *pstA, const void *pstB) {
    if (pstA == nullptr || pstB == nullptr)
        return 0;
    return static_cast<const CHI_RSM_MSG_S *>(pstA)->ulKey == static_cast<const CHI_RSM_MSG_S *>(pstB)->ulKey ? 1 : 0;
}

uint32_t CHI_InitMsgRsmCtl(CHI_RSM_CTL_S *pstCtl, CHI_RSM_ERR_FUNC pfError, uint32_t ulMid) {
    if (pstCtl == nullptr)
        return KIVO_FAIL;
    LITE_HASH_S *pstHash =
        LITE_HASH_CreateWithListCurr(LITE_HASH_UNLIMITED, sizeof(CHI_RSM_MSG_S), BUCKETS, CHI_MsgRsmHashKey,
                                     CHI_MsgRsmHashCompareKey, QAL_ConverMIDTOHandle(ulMid));
    if (pstHash == nullptr)
        return KIVO_FAIL;
    pstCtl->ulMid = ulMid;
    pstCtl->pstHash = pstHash;
    pstCtl->pfError = pfError;
    DLL_NODE_S *pstHead = reinterpret_cast<DLL_NODE_S *>(&pstCtl->stList);
    pstCtl->stList = DLL_S{pstHead, pstHead, nullptr, 0};
    return KIVO_OK;
}

uint32_t CHI_CM_SetMsgRsmCtl(uint32_t ulIndex, CHI_RSM_CTL_S *pstCtl) {
    if (ulIndex >= sizeof g_pstCMMsgReassemCtl / sizeof g_pstCMMsgReassemCtl[0])
        return KIVO_FAIL;
    g_pstCMMsgReassemCtl[ulIndex] = pstCtl;
    return KIVO_OK;
}

CHI_RSM_MSG_S *CHI_AddMsgRsmHash(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord) {
    if (pstCtl == nullptr || pstRecord == nullptr || CHI_FindRsmHashNode(pstCtl, pstRecord) != nullptr)
        return nullptr;
    auto *pstNode = static_cast<CHI_RSM_MSG_S *>(LITE_HASH_NewData(pstCtl->pstHash));
    if (pstNode == nullptr) {
        Report(pstCtl, ulBackType, CHI_RSM_NO_MEMORY);
        return nullptr;
    }
    if (memcpy_s(pstNode, sizeof *pstNode, pstRecord, sizeof *pstRecord) != EOK)
        qal_assert(SOURCE, __LINE__);
    if (LITE_HASH_AddNode(pstCtl->pstHash, pstNode) != 0) {
        Report(pstCtl, ulBackType, CHI_RSM_NOT_INSERTED);
        LITE_HASH_FreeData(pstCtl->pstHash, pstNode);
        return nullptr;
    }
    return pstNode;
}

CHI_RSM_MSG_S *CHI_FindRsmHashNode(CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord) {
    if (pstCtl == nullptr || pstRecord == nullptr)
        return nullptr;
    return static_cast<CHI_RSM_MSG_S *>(LITE_HASH_FindElmtFromFirst(pstCtl->pstHash, pstRecord));
}

uint32_t CHI_DelMsgRsmHash(CHI_RSM_CTL_S *pstCtl, const CHI_RSM_MSG_S *pstRecord) {
    if (pstCtl == nullptr || pstRecord == nullptr)
        return KIVO_FAIL;
    CHI_RSM_MSG_S stKey{};
    stKey.ulKey = pstRecord->ulKey;
    return LITE_HASH_RemoveElmtByKey(pstCtl->pstHash, &stKey) == 0 ? KIVO_OK : KIVO_FAIL;
}

void CHI_DestroyMsgForRsm(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, CHI_RSM_MSG_S *pstRecord) {
    if (pstCtl == nullptr || pstRecord == nullptr)
        return;
    if (pstRecord->pBuffer != nullptr)
        CBUF_Free(ulBackType, pstRecord->pBuffer);
    DLL_Delete(&pstCtl->stList, &pstRecord->stLink);
    (void)CHI_DelMsgRsmHash(pstCtl, pstRecord);
    LITE_HASH_FreeData(pstCtl->pstHash, pstRecord);
}

uint32_t CHI_MsgNumLimitForRsm(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl) {
    if (pstCtl == nullptr)
        return KIVO_FAIL;
    if (pstCtl->stList.ulCount > CHI_RSM_MAX_MSG) {
        CHI_DestroyMsgForRsm(ulBackType, pstCtl, reinterpret_cast<CHI_RSM_MSG_S *>(pstCtl->stList.pstNext));
        Report(pstCtl, ulBackType, CHI_RSM_DROPPED);
    }
    return KIVO_OK;
}

uint32_t CHI_SetBitMap(uint32_t *pulBitMap, uint32_t ulBit) {
    if (pulBitMap == nullptr || ulBit > 31)
        return KIVO_FAIL;
    *pulBitMap |= 1U << ulBit;
    return KIVO_OK;
}

uint32_t CHI_GetBitMap(const uint32_t *pulBitMap, uint32_t ulBit) {
    return pulBitMap == nullptr || ulBit > 31 ? 0 : *pulBitMap & (1U << ulBit);
}

/* Checks that a fragment belongs to the record and fits into it, and marks it as come. */
static bool Accept(uint32_t ulBackType, const CHI_RSM_CTL_S *pstCtl, const uint8_t *pucPayload, uint32_t ulLen,
                   const void *pHeader, CHI_RSM_MSG_S *pstRecord) {
    uint32_t ulMsgId;
    std::memcpy(&ulMsgId, pucPayload - chi::HEADER_YSB, sizeof ulMsgId);
    if (pstRecord->ulMsgId != ulMsgId) {
        Report(pstCtl, ulBackType, CHI_RSM_OTHER_MESSAGE);
        return false;
    }
    if (static_cast<uint64_t>(pstRecord->ulReceived) + ulLen > pstRecord->ulTotal) {
        Report(pstCtl, ulBackType, CHI_RSM_TOO_LONG);
        return false;
    }
    uint16_t usFragment;
    std::memcpy(&usFragment, static_cast<const uint8_t *>(pHeader) + FRAGMENT_OFFSET, sizeof usFragment);
    if (CHI_GetBitMap(&pstRecord->ulBitMap, usFragment) != 0) {
        Report(pstCtl, ulBackType, CHI_RSM_DUPLICATE, usFragment);
        return false;
    }
    /* Numbers above 31 have no bit and are never recognised as duplicates. */
    (void)CHI_SetBitMap(&pstRecord->ulBitMap, usFragment);
    return true;
}

uint32_t CHI_AddFrag2Msg(uint32_t ulBackType, CHI_RSM_CTL_S *pstCtl, void *pFragment, const void *pData, uint32_t ulLen,
                         void **ppComplete, const void *pHeader, CHI_RSM_MSG_S *pstRecord) {
    if (pstCtl == nullptr || pFragment == nullptr || pData == nullptr || ppComplete == nullptr || pHeader == nullptr ||
        pstRecord == nullptr || pstRecord->pBuffer == nullptr)
        return KIVO_FAIL;
    uint8_t *pucMessage = chi::PayloadOf(ulBackType, pstRecord->pBuffer);
    const uint8_t *pucPayload = chi::PayloadOf(ulBackType, pFragment);
    if (pucMessage == nullptr || pucPayload == nullptr) {
        if (ulBackType > CHI_BACK_YSB)
            qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    if (!Accept(ulBackType, pstCtl, pucPayload, ulLen, pHeader, pstRecord))
        return KIVO_FAIL;

    /* At the start of the payload, not behind what came before: the store counts bytes, it does not order them. */
    if (ulLen != 0)
        (void)chi::Copy(pucMessage, pstRecord->ulTotal, pData, ulLen);
    pstRecord->ulReceived += ulLen;
    *ppComplete = nullptr;
    if (pstRecord->ulReceived == pstRecord->ulTotal) {
        *ppComplete = pstRecord->pBuffer;
        pstRecord->pBuffer = nullptr;
        CHI_DestroyMsgForRsm(ulBackType, pstCtl, pstRecord);
    }
    return KIVO_OK;
}
