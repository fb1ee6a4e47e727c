/* Virtual systems: parts of the device with a VRF of their own.
 *
 * A virtual system has a 16-bit id below common specification 0 and a VRF of the same number. Modules hear of them as
 * events 1101 (created) and 1102 (deleted); those that exist when the event task starts are replayed as event 1101 of
 * another sub-event, with the VRF's name (kivo_event_records.h). All of this only on products with several virtual
 * systems: while product switch 55 is not 1, the functions here do nothing and return 0.
 *
 * Beside them stand two tables that relate names of host tasks to virtual systems. The library publishes them; who fills
 * and reads them stands outside.
 *
 * Usage:
 *     KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
 *     KIVO_SetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT, 64);
 *
 * Threads: any. The tables are not locked. */
#ifndef UVELCOMMON_BASE_KIVO_VSYS_H
#define UVELCOMMON_BASE_KIVO_VSYS_H

#include <uvelcommon_base/kivo_types.h>

#define KIVO_SWITCH_VSYS 55U       /* product switch: 1 on products with several virtual systems */
#define KIVO_SPEC_VSYS_LIMIT 0U    /* common specification: ids of virtual systems are below it */
#define KIVO_TASK_VSYS_NUM 58U     /* tasks that every platform has */
#define KIVO_DYN_TASK_VSYS_NUM 50U /* tasks learnt while running */

/* A host task and the virtual system that it works for. */
typedef struct {
    char szTask[32];   /* terminated, the rest zero; some names end with a blank */
    uint32_t ulVsysId; /* 0: the device as a whole */
} KIVO_TASK_VSYS_S;

/* The tasks that every platform has. */
UVEL_DATA KIVO_TASK_VSYS_S g_stTaskVsysidMap[KIVO_TASK_VSYS_NUM];

/* All zero at load. */
UVEL_DATA KIVO_TASK_VSYS_S g_stDynTaskVsysidMap[KIVO_DYN_TASK_VSYS_NUM];

/* The VRF manager's notice that a virtual system was created (kind 1) or deleted (kind 2): queues event 1101 or 1102,
 * sub-event 0xFFFFFFFF, with the 2-byte id and returns the result. 0 for another kind and for null, 1 for an id that is
 * not below the limit. */
UVEL_API uint32_t KIVO_VsysNotifyCallBack(uint32_t ulKind, uint16_t *pusVsysId);

/* Replays the virtual systems that exist: raises event 1101, sub-event 0, at once for each whose VRF index is below the
 * limit, giving way to other tasks before each. Callbacks must not scan VRFs themselves. Always 0. */
UVEL_API uint32_t KIVO_VsysRecoverInit(void);

#endif
