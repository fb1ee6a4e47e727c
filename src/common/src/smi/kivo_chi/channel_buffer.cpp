/* Channel buffers: one block of header and payload, plain memory or a socket buffer of the host. */

#include "channel.h"

#include <securec.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelhost/assert.h>

using chi::SOURCE;

uint32_t g_ulUVELCommMid = 0;

static bool HasBuffers(uint32_t ulBackType) {
    return ulBackType <= CHI_BACK_YSB;
}

uint8_t *chi::HeaderOf(uint32_t ulBackType, void *pBuffer) {
    if (pBuffer == nullptr || !HasBuffers(ulBackType))
        return nullptr;
    return static_cast<uint8_t *>(ulBackType == CHI_BACK_YSB ? KIVO_YSB_Smbuf_M2D(pBuffer) : pBuffer);
}

uint8_t *chi::PayloadOf(uint32_t ulBackType, void *pBuffer) {
    uint8_t *pucHeader = HeaderOf(ulBackType, pBuffer);
    return pucHeader == nullptr ? nullptr : pucHeader + CHI_GetMsgHeadLen(ulBackType);
}

bool chi::Copy(uint8_t *pucDest, uint32_t ulRoom, const void *pSource, uint32_t ulLen) {
    /* A message may be larger than the bounded copy takes for a room. */
    const size_t ulBound = ulRoom < SECUREC_MEM_MAX_LEN ? ulRoom : SECUREC_MEM_MAX_LEN;
    if (memcpy_s(pucDest, ulBound, pSource, ulLen) == EOK)
        return true;
    qal_assert(SOURCE, __LINE__);
    return false;
}

uint32_t CHI_GetMsgHeadLen(uint32_t ulBackType) {
    switch (ulBackType) {
    case CHI_BACK_HA:
        return chi::HEADER_HA;
    case CHI_BACK_HSB:
        return chi::HEADER_HSB;
    case CHI_BACK_YSB:
        return chi::HEADER_YSB;
    default:
        return 0;
    }
}

uint32_t CBUF_Alloc(uint32_t ulBackType, void **ppBuffer, uint32_t ulPayload) {
    if (ppBuffer == nullptr || !HasBuffers(ulBackType)) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    const uint32_t ulHeader = CHI_GetMsgHeadLen(ulBackType);
    const uint64_t ulSize = static_cast<uint64_t>(ulPayload) + ulHeader;
    if (ulSize > UINT32_MAX)
        return KIVO_FAIL;
    void *pBuffer = ulBackType == CHI_BACK_YSB ? KIVO_YSB_Smbuf_Create(g_ulUVELCommMid, static_cast<uint32_t>(ulSize))
                                               : KIVO_MemAlloc(g_ulUVELCommMid, static_cast<uint32_t>(ulSize));
    if (pBuffer == nullptr)
        return KIVO_FAIL;
    /* A socket buffer without data is handed out all the same. */
    uint8_t *pucHeader = chi::HeaderOf(ulBackType, pBuffer);
    if (pucHeader != nullptr && memset_s(pucHeader, ulHeader, 0, ulHeader) != EOK)
        qal_assert(SOURCE, __LINE__);
    *ppBuffer = pBuffer;
    return KIVO_OK;
}

void *CBUF_C2D(uint32_t ulBackType, void *pBuffer) {
    if (pBuffer == nullptr || !HasBuffers(ulBackType)) {
        qal_assert(SOURCE, __LINE__);
        return nullptr;
    }
    /* Not tested for null, so that the distance holds for every socket buffer: a number, not a pointer, is added to. */
    const uintptr_t ulHeader = reinterpret_cast<uintptr_t>(chi::HeaderOf(ulBackType, pBuffer));
    return reinterpret_cast<void *>(ulHeader + CHI_GetMsgHeadLen(ulBackType));
}

void CBUF_Free(uint32_t ulBackType, void *pBuffer) {
    if (pBuffer == nullptr || !HasBuffers(ulBackType)) {
        qal_assert(SOURCE, __LINE__);
        return;
    }
    if (ulBackType == CHI_BACK_YSB)
        KIVO_YSB_Smbuf_Destroy(pBuffer);
    else
        (void)KIVO_MemFree(pBuffer);
}
