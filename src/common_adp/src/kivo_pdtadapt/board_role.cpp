/* Which board is the master, and what this board is. */
#include <uvelcommon_base/kivo_board_query.h>

#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/device.h>
#include <uvelhost/ha.h>

/* The product switch that says whether boards have roles. */
static constexpr uint32_t SWITCH_BOARD_ROLES = 8;
static constexpr uint32_t MAIN_CPU = 0;

/* High availability names a board in the low 16 bits of its answer; what stands above is its own. */
static uint32_t MasterBoard() {
    return HA_GetMasterBoardID() & 0xFFFF;
}

static uint32_t StandbyBoard() {
    return HA_GetSlaveBoardID() & 0xFFFF;
}

uint32_t Kivo_Adapt_GetSelfBoardSlotId(void) {
    return UVEL_IsMasterBoard() == 1 ? MasterBoard() : NacUtilGetSelfBoardID();
}

uint32_t UVEL_GetMasterMainBoardIp(uint32_t *pulAddr) {
    return DEVM_DB_GetIpBySlotAndCpu(MasterBoard(), MAIN_CPU, pulAddr);
}

uint32_t UVEL_DevGetMasterMainBoardIp(uint32_t *pulAddr) {
    return UVEL_GetMasterMainBoardIp(pulAddr);
}

uint32_t UVEL_GetBackUpMainBoardIp(uint32_t *pulAddr) {
    return DEVM_DB_GetIpBySlotAndCpu(StandbyBoard(), MAIN_CPU, pulAddr);
}

uint32_t UVEL_DevGetBackUpMainBoardIp(uint32_t *pulAddr) {
    return UVEL_GetBackUpMainBoardIp(pulAddr);
}

uint32_t UVEL_IsMasterBoard(void) {
    return HA_GetBoardType() == HA_BOARD_MASTER ? 1 : 0;
}

uint32_t KIVO_HA_SlaveIsReady(void) {
    return HA_SlaveIsReady() == 0 ? 1 : 0;
}

uint32_t KIVO_Adapt_IsBatchBackupStatus(void) {
    return HA_GetState() == HA_STATE_BATCH ? 1 : 0;
}

/* This board's number is kept once the host has told it, -1 until then; a failure counts as 0 and is not kept. */
uint32_t KIVO_ADP_IsSupportUserDetectBySam(void) {
    static int32_t iSelf = -1;
    int32_t iKnown = __atomic_load_n(&iSelf, __ATOMIC_RELAXED);
    if (iKnown == -1) {
        uint32_t ulRead = 0;
        const bool bDone = DEVM_DB_GetSelfBoardId(&ulRead) == KIVO_OK;
        iKnown = bDone ? static_cast<int32_t>(ulRead) : 0;
        if (bDone)
            __atomic_store_n(&iSelf, iKnown, __ATOMIC_RELAXED);
    }
    return MasterBoard() != static_cast<uint32_t>(iKnown) ? 1 : 0;
}

static bool HasBoardRoles() {
    return KIVO_GetPdtOxmCfgSwitch(SWITCH_BOARD_ROLES) == 1;
}

uint32_t SRV_IsSlaveReady(void) {
    return HasBoardRoles() ? KIVO_HA_SlaveIsReady() : 0;
}

uint32_t SRV_IsMasterBoard(void) {
    return HasBoardRoles() ? UVEL_IsMasterBoard() : 1;
}

uint32_t SRV_IsSlaveBoard(void) {
    return SRV_IsMasterBoard() == 0 ? 1 : 0;
}
