/* The ordered table's copies into buffers of the caller, and its search by conditions. */
#include <uvelcommon_base/kivo_ordered_table.h>

#include <securec.h>
#include <uvelcommon_base/kivo_array.h>
#include <uvelhost/assert.h>

#include "source.h"

/* A copy that fails is reported and changes nothing else: the operation still succeeds. */
static void CopyOut(void *pBuffer, uint32_t ulRoom, const void *pFrom, uint32_t ulLen) {
    if (memcpy_s(pBuffer, ulRoom, pFrom, ulLen) != EOK)
        qal_assert(SOURCE, __LINE__);
}

uint32_t SRVOT_GetFirstNode(const SRVOT_TBL_S *pstTbl, void *pBuffer) {
    if (SRVOT_GetCount(pstTbl) == 0 || pBuffer == nullptr)
        return KIVO_FAIL;
    CopyOut(pBuffer, pstTbl->ulElmtSize, pstTbl->pElmts, pstTbl->ulElmtSize);
    return KIVO_OK;
}

uint32_t SRVOT_GetNextNode(SRVOT_TBL_S *pstTbl, const void *pKey, void *pBuffer) {
    if (pstTbl == nullptr || pBuffer == nullptr)
        return KIVO_FAIL;
    const void *pElmt = SRVOT_FindProxElmt(pstTbl, pKey);
    if (pElmt != nullptr && pstTbl->pfCompare(pElmt, pKey) < 1)
        pElmt = SRVOT_GetNextElmt(pstTbl);
    if (pElmt == nullptr)
        return KIVO_FAIL;
    CopyOut(pBuffer, pstTbl->ulElmtSize, pElmt, pstTbl->ulElmtSize);
    return KIVO_OK;
}

uint32_t SRVOT_GetAllElmts(const SRVOT_TBL_S *pstTbl, void *pBuffer, uint32_t ulLen) {
    if (SRVOT_GetCount(pstTbl) == 0 || pBuffer == nullptr)
        return KIVO_FAIL;
    const uint64_t ullBytes = uint64_t{pstTbl->ulCount} * pstTbl->ulElmtSize;
    if (ulLen < ullBytes)
        return KIVO_FAIL;
    CopyOut(pBuffer, ulLen, pstTbl->pElmts, static_cast<uint32_t>(ullBytes));
    return KIVO_OK;
}

static bool IsWithinElmt(const SRVOT_COND_S &stCond, uint32_t ulElmtSize) {
    return stCond.pValue != nullptr && stCond.ulOffset < ulElmtSize &&
           uint64_t{stCond.ulOffset} + stCond.ulLen <= ulElmtSize;
}

static bool MeetsAll(const void *pElmt, uint32_t ulCondCount, const SRVOT_COND_S *pstConds) {
    for (uint32_t i = 0; i < ulCondCount; ++i) {
        int32_t lOrder = 0;
        (void)KIVO_MemCmp(static_cast<const uint8_t *>(pElmt) + pstConds[i].ulOffset, pstConds[i].pValue,
                          pstConds[i].ulLen, &lOrder);
        if (lOrder != 0)
            return false;
    }
    return true;
}

uint32_t SRVOT_FindElmtIdByConds(const SRVOT_TBL_S *pstTbl, uint32_t ulStart, uint32_t ulCondCount,
                                 const SRVOT_COND_S *pstConds) {
    if (pstTbl == nullptr || (ulCondCount != 0 && pstConds == nullptr))
        return KIVO_NONE;
    for (uint32_t i = 0; i < ulCondCount; ++i) {
        if (!IsWithinElmt(pstConds[i], pstTbl->ulElmtSize))
            return KIVO_NONE;
    }
    for (uint32_t i = ulStart; i < pstTbl->ulCount; ++i) {
        if (MeetsAll(SRVOT_GetElmt(pstTbl, i), ulCondCount, pstConds))
            return i;
    }
    return KIVO_NONE;
}
