/* Boards: this board, other boards, their processors, and which of them is the master.
 *
 * A board sits in a slot; slots are numbered through all chassis (global) and within one (local), processors through the
 * device (global) and on their board (local). IPv4 addresses are those of the device's inner network, in host order. A
 * main board carries the control plane; one of them is the master.
 *
 * Usage:
 *     ulSlot = UVEL_GetSelfSlotId();                                // 0 as long as the host does not know it
 *     if (SRV_IsMasterBoard() == 1) ...
 *     ulCount = 4;                                                  // room of the array
 *     if (UVEL_GetMpuAllSlot(aulSlot, &ulCount) == KIVO_OK) ...
 *
 * Ownership: nothing is allocated. The numbers of this board that do not change (chassis, slot, processors) are asked of
 * the host until it answers and kept from then on.
 * Threads: any.
 * Errors: queries that give a value give 0 for what does not exist, unless it says otherwise. The others give the host's
 * result: 0, or a failure that leaves the out-parameters as they were. A null out-pointer is a failure. Nothing is
 * logged. */
#ifndef UVELCOMMON_BASE_KIVO_BOARD_QUERY_H
#define UVELCOMMON_BASE_KIVO_BOARD_QUERY_H

#include <uvelcommon_base/kivo_types.h>

/* ---- this board ---- */

/* Number of this board, as high availability names boards. */
UVEL_API uint32_t NacUtilGetSelfBoardID(void);

/* The same as NacUtilGetSelfBoardID. */
UVEL_API uint32_t KIVO_Adapt_GetSelfBoardId(void);

/* Number of this board; on the master board its number as high availability tells it. */
UVEL_API uint32_t Kivo_Adapt_GetSelfBoardSlotId(void);

/* Number of the chassis that this board sits in. */
UVEL_API uint32_t UVEL_GetSelfChassisId(void);

/* Global slot of this board. */
UVEL_API uint32_t UVEL_GetSelfSlotId(void);

/* Global number of the processor that this process runs on. */
UVEL_API uint32_t UVEL_GetSelfCpuId(void);

/* Number of that processor on its board. */
UVEL_API uint32_t UVEL_GetSelfLocalCpuId(void);

/* Address of this board. */
UVEL_API uint32_t UVEL_DevGetSelfBoardIp(uint32_t *pulAddr);

/* ---- any board ---- */

/* 1 when a board is in the slot, otherwise 0. */
UVEL_API uint32_t UVEL_GetBoardPresent(uint32_t ulSlot, uint32_t *pulPresent);

/* 1 when the board in the slot has registered with the main board, otherwise 0. */
UVEL_API uint32_t UVEL_GetBoardRegisterStatus(uint32_t ulSlot, uint32_t *pulStatus);

/* 1 when the board in the slot is in service, otherwise 0. */
UVEL_API uint32_t UVEL_IF_RealBoardIsUp(uint32_t ulSlot);

/* Global number of the main processor of the board in the slot. */
UVEL_API uint32_t UVEL_GetMainCpuIdBySlotId(uint32_t ulSlot);

/* Number of that processor on its board. */
UVEL_API uint32_t UVEL_GetMainLocalCpuIdBySlotId(uint32_t ulSlot);

/* Address of a processor on the board ulSlot; 0 is its main processor. */
UVEL_API uint32_t UVEL_GetIpBySlotAndCpu(uint32_t ulSlot, uint32_t ulCpu, uint32_t *pulAddr);

/* ---- slots ---- */

/* Number of a global slot within its chassis. */
UVEL_API uint32_t UVEL_GetLocalSlotIdByGlobalSlotId(uint32_t ulGlobalSlot, uint32_t *pulLocalSlot);

/* Global number of a slot of this board's chassis. */
UVEL_API uint32_t UVEL_GetGlobalSlotIdByLocalSlotId(uint32_t ulLocalSlot, uint32_t *pulGlobalSlot);

/* Number that the device's hardware gives to a slot; an unknown slot leaves *pulPhySlot as it was. */
UVEL_API void KIVO_Adapt_DRV_GetPhySlot(uint32_t ulSlot, uint32_t *pulPhySlot);

/* ---- main boards ---- */

/* Lowest and highest slot that a main board can be in. The highest is asked for first: when the lowest then fails,
 * *pulMax is written already. */
UVEL_API uint32_t UVEL_DevGetMpuBoardRange(uint32_t *pulMin, uint32_t *pulMax);

/* Slots of the main boards that are there, ascending, and their number. *pulCount is the room of the array in entries on
 * the way in. */
UVEL_API uint32_t UVEL_GetMpuAllSlot(uint32_t *pulSlot, uint32_t *pulCount);

/* As UVEL_GetMpuAllSlot, with the address of each board (0: not known) in the second array of the same room. */
UVEL_API uint32_t UVEL_GetMpuAllSlotAndIp(uint32_t *pulSlot, uint32_t *pulAddr, uint32_t *pulCount);

/* Address of the master board. */
UVEL_API uint32_t UVEL_GetMasterMainBoardIp(uint32_t *pulAddr);

/* The same as UVEL_GetMasterMainBoardIp. */
UVEL_API uint32_t UVEL_DevGetMasterMainBoardIp(uint32_t *pulAddr);

/* Address of the standby board. */
UVEL_API uint32_t UVEL_GetBackUpMainBoardIp(uint32_t *pulAddr);

/* The same as UVEL_GetBackUpMainBoardIp. */
UVEL_API uint32_t UVEL_DevGetBackUpMainBoardIp(uint32_t *pulAddr);

/* ---- roles ---- */

/* 1 when this board is the master, as high availability says. */
UVEL_API uint32_t UVEL_IsMasterBoard(void);

/* 1 when the standby board is ready to take over. */
UVEL_API uint32_t KIVO_HA_SlaveIsReady(void);

/* 1 while everything that exists is being sent to the standby board. */
UVEL_API uint32_t KIVO_Adapt_IsBatchBackupStatus(void);

/* 1 when the master board is another than this one, 0 when it is this one. */
UVEL_API uint32_t KIVO_ADP_IsSupportUserDetectBySam(void);

/* What services go by, so that a product without board roles (product switch 8 is not 1) counts every board as the
 * master, and none as a standby. */

/* KIVO_HA_SlaveIsReady where the product has board roles, otherwise 0. */
UVEL_API uint32_t SRV_IsSlaveReady(void);

/* UVEL_IsMasterBoard where the product has board roles, otherwise 1. */
UVEL_API uint32_t SRV_IsMasterBoard(void);

/* 1 when SRV_IsMasterBoard answers 0, otherwise 0. */
UVEL_API uint32_t SRV_IsSlaveBoard(void);

#endif
