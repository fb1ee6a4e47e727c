/* Forwarders to product hooks: hot standby between two devices.
 *
 * Every function calls the hook of its name (see kivo_hooks.h) and returns its result; "0 without a hook" and the like
 * is the answer where none is installed: that of a product without hot standby. */
#ifndef UVELCOMMON_BASE_KIVO_HOOK_STANDBY_H
#define UVELCOMMON_BASE_KIVO_HOOK_STANDBY_H

#include "kivo_hooks.h"

/* A socket buffer for ulSize bytes, charged to module ulMid; null when memory is short. Null without a hook. */
UVEL_API void *KIVO_YSB_Smbuf_Create(uint32_t ulMid, uint32_t ulSize);

/* Releases a socket buffer. Null is ignored; nothing happens without a hook. */
UVEL_API void KIVO_YSB_Smbuf_Destroy(void *pSmbuf);

/* Address of the data in a socket buffer. Null without a hook. */
UVEL_API void *KIVO_YSB_Smbuf_M2D(void *pSmbuf);

/* Sends ulLength bytes of a message to the peer device. 1 without a hook. */
UVEL_API uint32_t KIVO_YSB_Output_Packet_Smbuf(uintptr_t ulFirst, uintptr_t ulSecond, uint32_t ulLength);

/* Sends ulLength bytes of a message to the peer's CPU ulChannel (cut to 8 bits). 1 without a hook. */
UVEL_API uint32_t KIVO_Ysb_AdaptOutputPacket_Smbuf(uintptr_t ulFirst, uintptr_t ulSecond, uint32_t ulLength,
                                                   uint32_t ulChannel);

/* Whether this device is the active one, into *pulActive. Without a hook *pulActive becomes 0 (when the pointer is not
 * null) and the result is 0. */
UVEL_API uint32_t KIVO_YSB_IsActiveStatus(uint32_t *pulActive);

/* 1 exactly when the hook answers 1, otherwise 0. 0 without a hook. */
UVEL_API uint32_t KIVO_YSB_IsBackup(void);

/* Whether hot standby is really enabled. 0 without a hook. */
UVEL_API uint32_t KIVO_YSB_IsRealEnable(KIVO_WORDS);

/* Registers the local version of a module; the third argument is cut to 8 bits. 0 without a hook. */
UVEL_API uint32_t KIVO_Ysb_LocalVersion_Register(KIVO_WORDS);

/* Module id on the channel. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_Ysb_MOID_Get(KIVO_WORDS);

/* Version negotiated with the peer. 1 without a hook. */
UVEL_API uint32_t KIVO_Ysb_Nego_Version_Get(KIVO_WORDS);

/* Registers a function that is told when a batch backup has been received. 0 without a hook. */
UVEL_API uint32_t KIVO_Ysb_Reg_Recv_Batch_Finish_Callback(KIVO_WORDS);

/* CPUs that take part in hot standby. 1 without a hook. */
UVEL_API uint32_t KIVO_Get_YsbCpuNum(KIVO_WORDS);

/* Board of the peer that a message belongs to. 0xFF without a hook. */
UVEL_API uint32_t KIVO_Ysb_MsgCalc_RemoteTPB(KIVO_WORDS);

/* Whether a CPU id is a local one. 1 without a hook. */
UVEL_API uint32_t KIVO_Ysb_IsLocalCpuId(KIVO_WORDS);

/* 1 while a batch backup runs. 0 without a hook. */
UVEL_API uint32_t KIVO_HA_IsBatchBackupStatus(void);

#endif
