/* Product hooks: functions of the library whose work a product layer does.
 *
 * The library keeps one table of 95 function pointers. At start-up it installs its own adapters to the host into some
 * of them, then the product layer installs or overrides what it likes with KIVOShell_SetHookFunc. The forwarders (the
 * kivo_hook_*.h headers) call through the table; where nothing is installed they answer with a fixed value, so that a
 * facility that a product lacks simply answers "no" or "error".
 *
 * Usage:
 *     static uint32_t MyIsL2If(uint32_t ulIfIndex) { ... }
 *     ...
 *     KIVO_HOOK pfHook = (KIVO_HOOK)MyIsL2If;
 *     KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &pfHook);
 *     ulRet = KIVO_IF_IsL2IF(ulIfIndex);                          // MyIsL2If's answer
 *
 * A hook receives its forwarder's arguments unchanged, unless the forwarder says that it cuts one to its width. Where
 * no argument list is fixed the forwarder passes eight machine words (KIVO_WORDS): a hook with fewer or narrower
 * parameters takes what it needs of them.
 *
 * Threads: install at start-up, before other tasks call. A slot is one aligned word, written and read whole; a
 * forwarder reads it at every call, so a hook that is installed late is seen from the next call on, and sees what its
 * installer wrote before. */
#ifndef UVELCOMMON_BASE_KIVO_HOOKS_H
#define UVELCOMMON_BASE_KIVO_HOOKS_H

#include "kivo_types.h"

#define KIVO_HOOK_COUNT 95U /* slots of the table, numbered from 0 */

/* A function of any type; cast to and from the type that the forwarder names. */
typedef void (*KIVO_HOOK)(void);

/* Arguments of a forwarder whose argument list is the product's own affair. */
#define KIVO_WORDS                                                                                                     \
    uintptr_t ulArg1, uintptr_t ulArg2, uintptr_t ulArg3, uintptr_t ulArg4, uintptr_t ulArg5, uintptr_t ulArg6,        \
        uintptr_t ulArg7, uintptr_t ulArg8

/* Hook ids, the numbering that product layers use. The table's slots are numbered otherwise. */
enum {
    KIVO_HOOK_GET_IF_IP_ADDR_BY_INDEX = 0,
    KIVO_HOOK_GET_VLAN_IN_VLANBITMAP = 1,
    KIVO_HOOK_IF_GET_IFINDEX_BY_VLAN_ID = 2,
    KIVO_HOOK_IF_GET_VLAN_ID_BY_IFINDEX = 3, /* kept for product code; no forwarder calls it */
    KIVO_HOOK_IF_IS_SUBIF = 4,
    KIVO_HOOK_IF_IS_L2IF = 5,
    KIVO_HOOK_IF_IS_L3IF = 6,
    KIVO_HOOK_GET_BIT_BY_VLAN_ID_AND_IFINDEX = 7,
    KIVO_HOOK_GET_SELF_BOARD_ID = 8,
    KIVO_HOOK_TRUNK_GET_MEM_COUNT_ON_SLOT = 9,
    KIVO_HOOK_IF_GET_DBSS_ACCESS_PORT = 10,
    KIVO_HOOK_PORT_IS_IN_CFG_VLAN = 11,
    KIVO_HOOK_IF_GET_ADDR_FLAG = 12,
    KIVO_HOOK_RM_UNR4_RT = 13,
    KIVO_HOOK_IPC_GET_MAIN_NODE_ID = 14,
    KIVO_HOOK_IPC_GET_PROCESS_ID_BY_MID = 15,
    KIVO_HOOK_IPC_GET_SELF_PROCESS_ID = 16,
    KIVO_HOOK_GETHOSTNAME = 17,
    KIVO_HOOK_IS_PORT_IN_USE = 18,
    KIVO_HOOK_REGISTER_PORT = 19,
    KIVO_HOOK_UNREGISTER_PORT = 20,
    KIVO_HOOK_CFG_GET_VSYS_ID = 21,
    KIVO_HOOK_YSB_SMBUF_CREATE = 22,
    KIVO_HOOK_YSB_SMBUF_DESTROY = 23,
    KIVO_HOOK_YSB_SMBUF_M2D = 24,
    KIVO_HOOK_YSB_OUTPUT_PACKET_SMBUF = 25,
    KIVO_HOOK_YSB_IS_ACTIVE_STATUS = 26,
    KIVO_HOOK_YSB_IS_BACKUP = 27,
    KIVO_HOOK_YSB_IS_REAL_ENABLE = 28,
    KIVO_HOOK_GET_SPU_PROCESS_NAME_MAX_LEN = 29,
    KIVO_HOOK_SPU_CPU_HELP = 30,
    KIVO_HOOK_SPU_PROCESS_NAME_HELP = 31,
    KIVO_HOOK_SPU_CPU_CHECK = 32,
    KIVO_HOOK_SPU_PROCESS_NAME_CHECK = 33,
    KIVO_HOOK_IPC_GET_NODE_ID_BY_PROCESS_NAME = 34,
    KIVO_HOOK_IPC_GET_INSTANCE_NAME_MAX_LEN = 35,
    KIVO_HOOK_IPC_GET_INSTANCE_NAME_BY_NODE_ID = 36,
    KIVO_HOOK_IPC_GET_PROCESS_NAME_MAX_LEN = 37,
    KIVO_HOOK_IPC_GET_PROCESS_NAME_BY_NODE_ID = 38,
    KIVO_HOOK_GET_VSYS_ID_BY_IF_FULL_NAME = 39,
    KIVO_HOOK_GET_IPV6_VRF_INDEX_BY_IFINDEX = 40,
    KIVO_HOOK_REGIST_CHINESE_CLI = 41,
    KIVO_HOOK_DRV_GET_PHY_SLOT = 42,
    KIVO_HOOK_IPC_DBI_GET_NODE_ID = 43,
    KIVO_HOOK_GET_MANAGEMENT_VLAN = 44,
    KIVO_HOOK_GET_ACL_NUM_BY_NAME = 45,
    KIVO_HOOK_IF_QOS_TRANSMIT = 46,
    KIVO_HOOK_YSB_LOCAL_VERSION_REGISTER = 47,
    KIVO_HOOK_YSB_MOID_GET = 48,
    KIVO_HOOK_YSB_NEGO_VERSION_GET = 49,
    KIVO_HOOK_YSB_REG_RECV_BATCH_FINISH_CALLBACK = 50,
    KIVO_HOOK_GET_YSB_CPU_NUM = 51,
    KIVO_HOOK_YSB_MSG_CALC_REMOTE_TPB = 52,
    KIVO_HOOK_YSB_ADAPT_OUTPUT_PACKET_SMBUF = 53,
    KIVO_HOOK_YSB_IS_LOCAL_CPU_ID = 54,
    KIVO_HOOK_DNSE_IS_SUPPORT_CLIENT_VPN = 55,
    KIVO_HOOK_IF_IS_VBDIF = 56,
    KIVO_HOOK_SUPPORT_THREAD_REGISTER = 57,
    KIVO_HOOK_SADP_HB_TURN_ON_MINE = 58,
    KIVO_HOOK_SADP_HB_TURN_OFF_MINE = 59,
    KIVO_HOOK_SADP_HB_RESPONSE = 60,
    KIVO_HOOK_SET_BD_ID_TO_MBUF = 61,
    KIVO_HOOK_GET_BD_ID_FROM_MBUF = 62,
    KIVO_HOOK_ENCODE_REG_FUNC = 63,
    KIVO_HOOK_ENCODE_CHECK_STRING_AND_INSERT = 64,
    KIVO_HOOK_ENCODE_TRANS_CODE = 65,
    KIVO_HOOK_ENCODE_PRE_VIEW_STRING_AND_INSERT = 66,
    KIVO_HOOK_ENCODE_IS_NEED_TRANS = 67,
    KIVO_HOOK_ENCODE_SET_TRANS_RESULT = 68,
    KIVO_HOOK_ENCODE_SET_ASYSN_RESULT = 69,
    KIVO_HOOK_ENCODE_SET_PRE_RESULT = 70,
    KIVO_HOOK_ENCODE_GET_LAN_CHARSET = 71,
    KIVO_HOOK_IS_SUPPORT_ONLY_LSW = 72,
    KIVO_HOOK_HA_IS_BATCH_BACKUP_STATUS = 73,
    KIVO_HOOK_COMP_MNG_REGISTER = 74,
    KIVO_HOOK_COMP_MNG_REGISTER_EVENT = 75,
    KIVO_HOOK_COMP_MNG_PUBLISH_EVENT = 76,
    KIVO_HOOK_IFPDT_SHUT_DOWN_INTERFACE = 77,
    KIVO_HOOK_IFPDT_NO_SHUT_DOWN_INTERFACE = 78,
    KIVO_HOOK_IF_FIND_FIRST_SUB_IFNET = 79,
    KIVO_HOOK_IF_FIND_NEXT_SUB_IFNET = 80,
    KIVO_HOOK_IF_QOS_L2BNG_TRANSMIT = 81,
    KIVO_HOOK_VAP_BD_BUILDRUN_REGISTER = 82,
    KIVO_HOOK_NOTIFY_WLAN_ATTR_CHANGE = 83,
    KIVO_HOOK_GET_FLEX_GROUP_INDEX_BY_NAME = 84,
    KIVO_HOOK_TRANS_CFG_ATTR_FROM_UVEL_TO_WLAN = 85,
    KIVO_HOOK_PROFILE_CHANGE_NOTIFY_CFG = 86,
    KIVO_HOOK_BRANCH_CHANGE_NOTIFY_CFG = 87,
    KIVO_HOOK_IS_SUPPORT_USER_DETECT_BY_SAM = 88,
    KIVO_HOOK_GET_SELF_BOARD_SLOT_ID = 89,
    KIVO_HOOK_IS_WAN_INTERFACE = 90,
    KIVO_HOOK_YANG_GET_NAAS_VERSION = 91,
    KIVO_HOOK_DNSE_GET_DYN_SERVER_FROM_DHCP = 92,
    KIVO_HOOK_GET_IFINDEX_BY_IPV6_ADDR = 93,
    KIVO_HOOK_DEBUG_OUTPUT_TO_IM_AGENT = 94
};

/* The table, in the order of slots. For looking at; KIVOShell_SetHookFunc fills it. */
UVEL_DATA KIVO_HOOK g_stKIVOPubHook[KIVO_HOOK_COUNT];

/* Installs *ppfHook under a hook id in place of what was there; a null *ppfHook uninstalls. An id of 95 or more is
 * ignored. ppfHook is the address of a variable that holds the function, not the function. */
UVEL_API void KIVOShell_SetHookFunc(uint32_t ulHookId, const KIVO_HOOK *ppfHook);

/* What is installed under a hook id, for a product layer that wants to call what it overrides; null for an empty slot
 * and for an id of 95 or more. */
UVEL_API KIVO_HOOK KIVOShell_GetHookFunc(uint32_t ulHookId);

#endif
