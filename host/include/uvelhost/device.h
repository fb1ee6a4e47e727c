/* Device: chassis, slots, boards and their processors, the system's MAC address and name.
 *
 * A board sits in a slot; slots are numbered through all chassis (global) and within one (local). A board has
 * processors, numbered on the board (local) and through the device (global). A main board carries the control plane,
 * one of them as the master. IPv4 addresses are those of the device's inner network, in host order.
 *
 * Failures: what does not exist, what the host has not learnt yet, and a null out-pointer. Callers answer 0 or pass
 * the failure on; those that keep an answer (own chassis, slot, processors) ask again only after a failure. */
#ifndef UVELHOST_DEVICE_H
#define UVELHOST_DEVICE_H

#include "types.h"

/* The main processor of a board. */
typedef struct {
    uint32_t ulPresent;    /* other than 0 when the board is there and has a processor */
    uint32_t ulLocalCpuId; /* valid when present */
    uint32_t ulCpuCount;   /* processors on the board */
    uint32_t ulReserved;   /* 0 */
} DEVM_CPU_INFO_S;

/* ---- this board ---- */

/* Writes the number of this board, as high availability names boards. */
UVELHOST_API uint32_t DEVM_DB_GetSelfBoardId(uint32_t *pulBoardId);

/* Writes the number of the chassis that this board sits in. */
UVELHOST_API uint32_t DEVM_DB_GetSelfChassisId(uint32_t *pulChassisId);

/* Writes the global slot of this board. */
UVELHOST_API uint32_t DEVM_DB_GetSelfSlotId(uint32_t *pulSlot);

/* Writes the global number of the processor that the caller runs on. */
UVELHOST_API uint32_t DEVM_DB_GetSelfCpuId(uint32_t *pulCpuId);

/* Writes the number of that processor on its board. */
UVELHOST_API uint32_t DEVM_DB_GetSelfLocalCpuId(uint32_t *pulCpuId);

/* Writes the address of this board. */
UVELHOST_API uint32_t DEVM_DB_GetSelfBoardIp(uint32_t *pulAddr);

/* ---- any board ---- */

/* Writes 1 when a board is in the slot, 0 when the slot is empty; fails for a slot that the device does not have. */
UVELHOST_API uint32_t DEVM_DB_GetBoardPresent(uint32_t ulSlot, uint32_t *pulPresent);

/* Writes 1 when the board in the slot has registered with the main board, otherwise 0. */
UVELHOST_API uint32_t DEVM_DB_GetBoardRegisterStatus(uint32_t ulSlot, uint32_t *pulStatus);

/* Writes 1 when the board in the slot is in service, otherwise another value. */
UVELHOST_API uint32_t DEVM_DB_GetOnlinStatus(uint32_t ulSlot, uint32_t *pulStatus);

/* Fills the record of the main processor of the board in the slot. An empty slot succeeds with ulPresent 0. */
UVELHOST_API uint32_t DEVM_DB_GetCpuInfoBySlotID(uint32_t ulSlot, DEVM_CPU_INFO_S *pstInfo);

/* Writes the global number of a processor from its slot and its number on the board. */
UVELHOST_API uint32_t DEVM_DB_LocalCpuId2GlobalCpuId(uint32_t ulSlot, uint32_t ulLocalCpuId, uint32_t *pulGlobalCpuId);

/* Writes the address of a processor on the board ulSlot; 0 is its main processor. */
UVELHOST_API uint32_t DEVM_DB_GetIpBySlotAndCpu(uint32_t ulSlot, uint32_t ulCpu, uint32_t *pulAddr);

/* ---- slots ---- */

/* Writes the number of a global slot within its chassis. */
UVELHOST_API uint32_t DEVM_DB_GetLocalSlotIdByGlobalSlotId(uint32_t ulGlobalSlot, uint32_t *pulLocalSlot);

/* Writes the global number of a slot of this board's chassis. */
UVELHOST_API uint32_t DEVM_DB_GetGlobalSlotIdByLocalSlotId(uint32_t ulLocalSlot, uint32_t *pulGlobalSlot);

/* Writes the number that the device's hardware gives to a slot; an unknown slot leaves *pulPhySlot untouched. */
UVELHOST_API void DRV_GetPhySlot(uint32_t ulSlot, uint32_t *pulPhySlot);

/* ---- main boards ---- */

/* Writes the lowest slot that a main board can be in. */
UVELHOST_API uint32_t DEVM_DB_GetMinMpuBoardId(uint32_t *pulSlot);

/* Writes the highest slot that a main board can be in. */
UVELHOST_API uint32_t DEVM_DB_GetMaxMpuBoardId(uint32_t *pulSlot);

/* Writes the slots of the main boards that are there, ascending, and their number. *pulCount is the room of the array
 * in entries on the way in; fails, with both untouched, when they do not fit. */
UVELHOST_API uint32_t DEVM_DB_GetMpuAllSlot(uint32_t *pulSlot, uint32_t *pulCount);

/* As DEVM_DB_GetMpuAllSlot, with the address of each board in the second array (0: not known), of the same room. */
UVELHOST_API uint32_t DEVM_GetMpuAllSlotAndIp(uint32_t *pulSlot, uint32_t *pulAddr, uint32_t *pulCount);

/* ---- the system ---- */

/* Writes the system's MAC address, in transmission order. After a failure callers go on with what they have. */
UVELHOST_API uint32_t DEVM_DB_GetSysMac(uint8_t aucMac[6]);

/* Writes the system's name, cut to ulSize - 1 bytes and terminated. Fails for null and size 0, and when the system has
 * no name; an empty text stands for a name that is not known yet. */
UVELHOST_API uint32_t DEV_GetSystemName(char *pszName, uint32_t ulSize);

/* 1 when the device is a pure LAN switch, otherwise 0. */
UVELHOST_API uint32_t DEV_SupportOnlyLsw(void);

#endif
