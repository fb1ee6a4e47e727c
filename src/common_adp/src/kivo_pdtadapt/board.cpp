/* Boards, slots and processors. */
#include <uvelcommon_base/kivo_board_query.h>

#include "host_read.h"
#include <uvelhost/device.h>

uint32_t NacUtilGetSelfBoardID(void) {
    return ReadOr<DEVM_DB_GetSelfBoardId>(0U);
}

uint32_t KIVO_Adapt_GetSelfBoardId(void) {
    return NacUtilGetSelfBoardID();
}

/* A number of this board that does not change: kept from the first answer on, asked for again after a failure. Two
 * threads may both ask, and store the same. */
template <auto Read>
static uint32_t Kept() {
    static uint32_t ulKept = KIVO_NONE;
    const uint32_t ulKnown = __atomic_load_n(&ulKept, __ATOMIC_RELAXED);
    if (ulKnown != KIVO_NONE)
        return ulKnown;
    uint32_t ulRead = 0;
    if (Read(&ulRead) != KIVO_OK)
        return 0;
    __atomic_store_n(&ulKept, ulRead, __ATOMIC_RELAXED);
    return ulRead;
}

uint32_t UVEL_GetSelfChassisId(void) {
    return Kept<DEVM_DB_GetSelfChassisId>();
}

uint32_t UVEL_GetSelfSlotId(void) {
    return Kept<DEVM_DB_GetSelfSlotId>();
}

uint32_t UVEL_GetSelfCpuId(void) {
    return Kept<DEVM_DB_GetSelfCpuId>();
}

uint32_t UVEL_GetSelfLocalCpuId(void) {
    return Kept<DEVM_DB_GetSelfLocalCpuId>();
}

uint32_t UVEL_DevGetSelfBoardIp(uint32_t *pulAddr) {
    return DEVM_DB_GetSelfBoardIp(pulAddr);
}

uint32_t UVEL_GetBoardPresent(uint32_t ulSlot, uint32_t *pulPresent) {
    return DEVM_DB_GetBoardPresent(ulSlot, pulPresent);
}

uint32_t UVEL_GetBoardRegisterStatus(uint32_t ulSlot, uint32_t *pulStatus) {
    return DEVM_DB_GetBoardRegisterStatus(ulSlot, pulStatus);
}

uint32_t UVEL_IF_RealBoardIsUp(uint32_t ulSlot) {
    return ReadOr<DEVM_DB_GetOnlinStatus>(0U, ulSlot) == 1 ? 1 : 0;
}

static bool ReadMainCpu(uint32_t ulSlot, DEVM_CPU_INFO_S *pstInfo) {
    return DEVM_DB_GetCpuInfoBySlotID(ulSlot, pstInfo) == KIVO_OK && pstInfo->ulPresent != 0;
}

uint32_t UVEL_GetMainCpuIdBySlotId(uint32_t ulSlot) {
    DEVM_CPU_INFO_S stInfo = {};
    if (!ReadMainCpu(ulSlot, &stInfo))
        return 0;
    return ReadOr<DEVM_DB_LocalCpuId2GlobalCpuId>(0U, ulSlot, stInfo.ulLocalCpuId);
}

uint32_t UVEL_GetMainLocalCpuIdBySlotId(uint32_t ulSlot) {
    DEVM_CPU_INFO_S stInfo = {};
    return ReadMainCpu(ulSlot, &stInfo) ? stInfo.ulLocalCpuId : 0;
}

uint32_t UVEL_GetIpBySlotAndCpu(uint32_t ulSlot, uint32_t ulCpu, uint32_t *pulAddr) {
    return DEVM_DB_GetIpBySlotAndCpu(ulSlot, ulCpu, pulAddr);
}

uint32_t UVEL_GetLocalSlotIdByGlobalSlotId(uint32_t ulGlobalSlot, uint32_t *pulLocalSlot) {
    return DEVM_DB_GetLocalSlotIdByGlobalSlotId(ulGlobalSlot, pulLocalSlot);
}

uint32_t UVEL_GetGlobalSlotIdByLocalSlotId(uint32_t ulLocalSlot, uint32_t *pulGlobalSlot) {
    return DEVM_DB_GetGlobalSlotIdByLocalSlotId(ulLocalSlot, pulGlobalSlot);
}

void KIVO_Adapt_DRV_GetPhySlot(uint32_t ulSlot, uint32_t *pulPhySlot) {
    DRV_GetPhySlot(ulSlot, pulPhySlot);
}

uint32_t UVEL_DevGetMpuBoardRange(uint32_t *pulMin, uint32_t *pulMax) {
    const uint32_t ulResult = DEVM_DB_GetMaxMpuBoardId(pulMax);
    return ulResult == KIVO_OK ? DEVM_DB_GetMinMpuBoardId(pulMin) : ulResult;
}

uint32_t UVEL_GetMpuAllSlot(uint32_t *pulSlot, uint32_t *pulCount) {
    return DEVM_DB_GetMpuAllSlot(pulSlot, pulCount);
}

uint32_t UVEL_GetMpuAllSlotAndIp(uint32_t *pulSlot, uint32_t *pulAddr, uint32_t *pulCount) {
    return DEVM_GetMpuAllSlotAndIp(pulSlot, pulAddr, pulCount);
}
