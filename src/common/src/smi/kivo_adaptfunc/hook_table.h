/* The one table of the hook frame. The plain forwarders, the mapping of hook ids to slots and the installation of the
 * adapters are made from it.
 *
 * KIVO_HOOK_TABLE (X) calls for every hook, in the order of hook ids:
 *     X (id, slot, forwarder, rule, result, empty, arguments, adapter)
 *
 *     rule       PLAIN: load, test, jump; OWN: written out in own_forwarders.cpp; NONE: no forwarder in this library
 *     result     of the forwarder and its hook
 *     empty      what the forwarder returns when the slot is empty
 *     arguments  one of the argument lists of hook_arguments.h
 *     adapter    what the library itself installs; NO_ADAPTER where that is left to the product layer
 *
 * Result, empty and arguments stand in plain rows only: a forwarder that is written out says them itself.
 *
 * The numbering of slots differs from that of hook ids on purpose: ids are what product layers pass, slots the order in
 * which the table was declared. */
#ifndef KIVO_ADAPTFUNC_HOOK_TABLE_H
#define KIVO_ADAPTFUNC_HOOK_TABLE_H

#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelcommon_base/kivo_hook_product.h>
#include <uvelcommon_base/kivo_hook_standby.h>

#define NO_RESULT

/* clang-format off */
#define KIVO_HOOK_TABLE(X) \
    X( 0,  0, KIVO_GetIfIpAddrByIndex,                 PLAIN, uint32_t, 1,          IFINDEX_OUT,      KIVO_Adapt_GetIfIpAddrByIndex) \
    X( 1,  1, KIVO_L2IF_GET_VLAN_IN_VLANBITMAP,        PLAIN, uint32_t, 0,          VLAN_BITMAP,      KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP) \
    X( 2,  2, KIVO_IF_GetIFIndexByVlanID,              PLAIN, uint32_t, KIVO_NONE,  VLAN,             KIVO_Adapt_IF_GetIFIndexByVlanID) \
    X( 3,  3, KIVO_HookWithoutForwarder,               NONE,  ,         ,           ,                 KIVO_Adapt_IF_GetVlanIdByIfIndex) \
    X( 4,  4, KIVO_IF_IsSUBIF,                         PLAIN, uint32_t, 0,          IFINDEX,          KIVO_Adapt_IF_IS_SUBIF) \
    X( 5,  5, KIVO_IF_IsL2IF,                          PLAIN, uint32_t, 0,          IFINDEX,          KIVO_Adapt_IF_IS_L2IF) \
    X( 6,  6, KIVO_IF_IsL3IF,                          PLAIN, uint32_t, 0,          IFINDEX,          KIVO_Adapt_IF_IS_L3IF) \
    X( 7,  7, KIVO_GetBitByVlanIdAndIfIndex,           PLAIN, uint32_t, 0,          VLAN_IFINDEX,     KIVO_Adapt_GetBitByVlanIdAndPortIndex) \
    X( 8,  8, Kivo_GetSelfBoardId,                     PLAIN, uint32_t, 0,          NOTHING,          NacUtilGetSelfBoardID) \
    X( 9,  9, KIVO_TRUNK_ADP_GetMemCountOnSlot,        PLAIN, uint32_t, 0,          WORDS,            TRUNK_ADP_GetMemCountOnSlot) \
    X(10, 10, KIVO_IFGetDbssAccessPort,                PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(11, 11, KIVO_PortIsInCfgVlan,                    PLAIN, uint32_t, 1,          WORDS_2ND_U16,    KIVO_Adapt_PortIsInCfgVlan) \
    X(12, 12, KIVO_IF_GetAddrFlag,                     PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_GetAddrFlag) \
    X(13, 13, KIVO_RM_Unr4Rt,                          PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_SetUnr4Rt) \
    X(14, 14, KIVO_IPC_GetMainNodeID,                  PLAIN, uint32_t, KIVO_NONE,  NOTHING,          KIVO_Adapt_IPC_GetMainNodeID) \
    X(15, 35, KIVO_IPC_GetProcessIdByMidID,            PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_GetProcessIdByMid) \
    X(16, 36, KIVO_IPC_GetSelfProcessId,               PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(17, 15, KIVO_Gethostname,                        PLAIN, uint32_t, KIVO_NONE,  BUFFER,           KIVO_Adapt_Gethostname) \
    X(18, 16, KIVO_IsPortInUse,                        PLAIN, uint32_t, KIVO_NONE,  WORDS_1ST_2ND_U16, NO_ADAPTER) \
    X(19, 75, KIVO_RegisterPort,                       PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(20, 76, KIVO_UnRegisterPort,                     PLAIN, void,     NO_RESULT,  WORDS,            NO_ADAPTER) \
    X(21, 17, KIVO_CFG_GetVsysID,                      PLAIN, uint32_t, 0,          WORDS,            KIVO_Adapt_CFG_GetVsysID) \
    X(22, 18, KIVO_YSB_Smbuf_Create,                   PLAIN, void *,   nullptr,    MID_SIZE,         YSB_Adapt_Smbuf_Create) \
    X(23, 19, KIVO_YSB_Smbuf_Destroy,                  OWN,   ,         ,           ,                 YSB_Adapt_Smbuf_Destroy) \
    X(24, 20, KIVO_YSB_Smbuf_M2D,                      PLAIN, void *,   nullptr,    POINTER,          YSB_Adapt_Smbuf_M2D) \
    X(25, 21, KIVO_YSB_Output_Packet_Smbuf,            PLAIN, uint32_t, 1,          OUTPUT,           YSB_Adapt_Output_Packet_Smbuf) \
    X(26, 22, KIVO_YSB_IsActiveStatus,                 OWN,   ,         ,           ,                 YSB_Adapt_IsActiveStatus) \
    X(27, 23, KIVO_YSB_IsBackup,                       OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(28, 24, KIVO_YSB_IsRealEnable,                   PLAIN, uint32_t, 0,          WORDS,            YsbAdaptIsRealEnable) \
    X(29, 25, KIVO_GetSpuProcessNameMaxLen,            OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(30, 26, KIVO_SpuCpuHelp,                         PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_SpuCpuHelp) \
    X(31, 27, KIVO_SpuProcessNameHelp,                 PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(32, 28, KIVO_SpuCpuCheck,                        PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_SpuCpuCheck) \
    X(33, 29, KIVO_SpuProcessNameCheck,                PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(34, 30, KIVO_IPC_GetNodeIDByProcessName,         PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(35, 31, KIVO_IPC_GetInstanceNameMaxLen,          PLAIN, uint32_t, 1,          OUT,              KIVO_Adapt_GetInstanceNameMaxLen) \
    X(36, 32, KIVO_IPC_GetInstanceNameByNodeID,        PLAIN, uint32_t, 1,          NODE_BUFFER,      KIVO_Adapt_GetInstanceNameByNodeID) \
    X(37, 33, KIVO_IPC_GetProcessNameMaxLen,           PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(38, 34, KIVO_IPC_GetProcessNameByNodeID,         PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(39, 37, KIVO_GetVsysIDByIfFullName,              PLAIN, uint32_t, 0,          TEXT,             KIVO_Adapt_GetVsysIDByIfFullName) \
    X(40, 38, KIVO_GetIpv6VrfIndexByIfIndex,           PLAIN, uint32_t, 0,          IFINDEX,          KIVO_Adapt_GetIpv6VrfIndexByIfIndex) \
    X(41, 39, KIVO_RegistChineseCLI,                   PLAIN, uint32_t, 1,          WORDS,            KIVO_Adapt_RegistChineseCLI) \
    X(42, 40, KIVO_DRV_GetPhySlot,                     PLAIN, void,     NO_RESULT,  WORDS,            KIVO_Adapt_DRV_GetPhySlot) \
    X(43, 41, KIVO_IPC_DBI_GetNodeID,                  OWN,   ,         ,           ,                 KIVO_Adapt_IPC_GetNodeID) \
    X(44, 42, KIVO_GetManagementVlan,                  OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(45, 43, KIVO_GetAclNumByName,                    OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(46, 44, KIVO_IFQosTransmit,                      PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(47, 45, KIVO_Ysb_LocalVersion_Register,          PLAIN, uint32_t, 0,          WORDS_3RD_U8,     YsbAdaptRegisterVersion) \
    X(48, 46, KIVO_Ysb_MOID_Get,                       PLAIN, uint32_t, KIVO_NONE,  WORDS,            YsbAdaptGetModId) \
    X(49, 47, KIVO_Ysb_Nego_Version_Get,               PLAIN, uint32_t, 1,          WORDS,            YsbAdaptGetNegoVersion) \
    X(50, 52, KIVO_Ysb_Reg_Recv_Batch_Finish_Callback, PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(51, 48, KIVO_Get_YsbCpuNum,                      PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(52, 49, KIVO_Ysb_MsgCalc_RemoteTPB,              PLAIN, uint32_t, 0xFF,       WORDS,            NO_ADAPTER) \
    X(53, 50, KIVO_Ysb_AdaptOutputPacket_Smbuf,        PLAIN, uint32_t, 1,          OUTPUT_CHANNEL,   YSB_Adapt_Output_Packet_ToCtrlCpu) \
    X(54, 51, KIVO_Ysb_IsLocalCpuId,                   PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(55, 53, KIVO_DNSE_IsSupport_ClientVpn,           PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(56, 54, KIVO_IF_IsVBDIF,                         PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(57, 55, KIVO_Support_Thread_Register,            PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(58, 56, KIVO_SADP_HBTurnOnMine,                  PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(59, 57, KIVO_SADP_HBTurnOffMine,                 PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(60, 58, KIVO_SADP_HBResponse,                    PLAIN, void,     NO_RESULT,  WORDS,            NO_ADAPTER) \
    X(61, 59, KIVO_SetBdIdToMbuf,                      PLAIN, void,     NO_RESULT,  WORDS,            NO_ADAPTER) \
    X(62, 60, KIVO_GetBdIdFromMbuf,                    PLAIN, void,     NO_RESULT,  WORDS,            NO_ADAPTER) \
    X(63, 61, KIVO_Encode_RegFunc,                     OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(64, 62, KIVO_Encode_CheckStringAndInsert,        PLAIN, uint32_t, 0,          WORDS_7TH_U16,    NO_ADAPTER) \
    X(65, 63, KIVO_Encode_TransCode,                   PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(66, 64, KIVO_Encode_PreViewStringAndInsert,      PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(67, 65, KIVO_Encode_IsNeedTrans,                 PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(68, 66, KIVO_Encode_SetTransResult,              OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(69, 67, KIVO_Encode_SetAsysnResult,              OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(70, 68, KIVO_Encode_SetPreResult,                OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(71, 69, KIVO_Encode_GetLanCharset,               PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(72, 70, KIVO_Is_SupportOnlyLsw,                  OWN,   ,         ,           ,                 KIVO_Adapt_SupportOnlyLsw) \
    X(73, 71, KIVO_HA_IsBatchBackupStatus,             PLAIN, uint32_t, 0,          NOTHING,          KIVO_Adapt_IsBatchBackupStatus) \
    X(74, 72, UVEL_COMP_MNG_Register,                  PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(75, 73, UVEL_COMP_MNG_RegisterEvent,             PLAIN, uint32_t, 1,          WORDS_2ND_U32,    NO_ADAPTER) \
    X(76, 74, UVEL_COMP_MNG_PublishEvent,              PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(77, 77, KIVO_IFPDT_ShutDownInterface,            PLAIN, uint32_t, 0,          WORDS,            KIVO_Adapt_IF_INTF_ShutDownInterface) \
    X(78, 78, KIVO_IFPDT_NoShutDownInterface,          PLAIN, uint32_t, 0,          WORDS,            KIVO_Adapt_IF_INTF_NoShutDownInterface) \
    X(79, 79, KIVO_IF_FindFirstSubIfnet,               PLAIN, void *,   nullptr,    WORDS,            KIVO_Adapt_IF_FindFirstSubIfnet) \
    X(80, 80, KIVO_IF_FindNextSubIfnet,                PLAIN, void *,   nullptr,    WORDS,            KIVO_Adapt_IF_FindNextSubIfnet) \
    X(81, 81, KIVO_IF_QosL2BNGTransmit,                OWN,   ,         ,           ,                 UVEL_IF_QosL2BNGTransmit) \
    X(82, 82, KIVO_VAP_BdBuildrunRegister,             PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(83, 83, KIVO_NotifyWlanAttrChange,               OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(84, 84, KIVO_GetFlexGroupIndexByName,            PLAIN, uint32_t, KIVO_NONE,  WORDS,            NO_ADAPTER) \
    X(85, 85, KIVO_TransCfgAttrFromUvelToWlan,         PLAIN, void,     NO_RESULT,  WORDS,            NO_ADAPTER) \
    X(86, 86, KIVO_ProfileChangeNotifyCfg,             OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(87, 87, KIVO_BranchChangeNotifyCfg,              OWN,   ,         ,           ,                 NO_ADAPTER) \
    X(88, 88, KIVO_IsSupportUserDetectBySam,           PLAIN, uint32_t, 1,          NOTHING,          KIVO_ADP_IsSupportUserDetectBySam) \
    X(89, 89, Kivo_GetSelfBoardSlotId,                 PLAIN, uint32_t, 0,          NOTHING,          Kivo_Adapt_GetSelfBoardSlotId) \
    X(90, 90, KIVO_IsWANInterface,                     PLAIN, uint32_t, 0,          IFINDEX,          KIVO_Adapt_IsWANInterface) \
    X(91, 91, KIVO_Yang_GetNaasVersion,                PLAIN, uint32_t, 0,          WORDS,            NO_ADAPTER) \
    X(92, 92, KIVO_DNSE_GetDynServerFromDHCP,          PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(93, 93, KIVO_GetIfIndexByIPv6Addr,               PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER) \
    X(94, 94, KIVO_DebugOutput2IMAgent,                PLAIN, uint32_t, 1,          WORDS,            NO_ADAPTER)

/* The trace hooks: X (slot, forwarder, result, empty). All pass eight words. */
#define BTRC_PUB_HOOK_TABLE(X) \
    X( 0, BTRC_Pub_IsBTRCEnabled,     uint32_t, 0) \
    X( 1, BTRC_Pub_ClearUserDesc,     void,     NO_RESULT) \
    X( 2, BTRC_Pub_InstFillInfoByMAC, uint32_t, 1) \
    X( 3, BTRC_Pub_InstFillInfoByIP,  uint32_t, 1) \
    X( 4, BTRC_Pub_InstFillInfoByID,  uint32_t, 1) \
    X( 5, BTRC_Pub_InstFillInfoByCID, uint32_t, 1) \
    X( 6, BTRC_Pub_InstQuitByMAC,     uint32_t, 1) \
    X( 7, BTRC_Pub_InstQuitByIP,      uint32_t, 1) \
    X( 8, BTRC_Pub_InstQuitByID,      uint32_t, 1) \
    X( 9, BTRC_Pub_InstQuitByCID,     uint32_t, 1) \
    X(10, BTRC_Pub_GetInstStateByMAC, uint32_t, 1) \
    X(11, BTRC_Pub_GetInstStateByIP,  uint32_t, 1) \
    X(12, BTRC_Pub_GetInstStateByID,  uint32_t, 1) \
    X(13, BTRC_Pub_GetInstStateByCID, uint32_t, 1) \
    X(14, BTRC_Pub_OutInfoByMAC,      uint32_t, 1) \
    X(15, BTRC_Pub_OutInfoByIP,       uint32_t, 1) \
    X(16, BTRC_Pub_OutInfoByID,       uint32_t, 1) \
    X(17, BTRC_Pub_OutInfoByCID,      uint32_t, 1) \
    X(18, BTRC_Pub_NoInst_OutInfo,    uint32_t, 1) \
    X(19, BTRC_Pub_GetInfoLevel,      uint32_t, 0)
/* clang-format on */

/* The tables under names that are reached without the global offset table: the exported names may be bound elsewhere,
 * as far as the compiler knows, and a forwarder has no instruction to spare. */
extern "C" __attribute__((visibility("hidden"))) KIVO_HOOK g_stKIVOPubHookHere[KIVO_HOOK_COUNT];
extern "C" __attribute__((visibility("hidden"))) KIVO_HOOK g_stBtrcPubApiHookHere[BTRC_PUB_HOOK_COUNT];

/* A hook that is installed late sees what its installer wrote before: the store releases, the load acquires. On x86-64
 * every load does; there it is not asked for, since gcc then carries the arguments on the stack around it. */
#ifdef __x86_64__
static constexpr int HOOK_LOAD_ORDER = __ATOMIC_RELAXED;
#else
static constexpr int HOOK_LOAD_ORDER = __ATOMIC_ACQUIRE;
#endif

/* The hook in *ppfSlot as a function of type Hook, null when the slot is empty; read afresh at every call. */
template <typename Hook>
static inline Hook LoadHook(const KIVO_HOOK *ppfSlot) {
    return reinterpret_cast<Hook>(__atomic_load_n(ppfSlot, HOOK_LOAD_ORDER));
}

/* The same of a slot of the product hook table. */
template <typename Hook>
static inline Hook HookInSlot(uint32_t ulSlot) {
    return LoadHook<Hook>(&g_stKIVOPubHookHere[ulSlot]);
}

#endif
