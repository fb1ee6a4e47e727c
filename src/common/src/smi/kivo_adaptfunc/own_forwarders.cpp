/* The forwarders with rules of their own, in the order of hook ids, and the constant functions beside them. */

#include "hook_table.h"

#include "hook_arguments.h"
#include <cstddef>
#include <securec.h>
#include <uvelcommon_base/kivo_array.h>
#include <uvelhost/assert.h>
#include <uvelhost/interface.h>
#include <uvelhost/mbuf.h>

static_assert(sizeof(KIVO_NOTIFY_S) == 64);
static_assert(offsetof(KIVO_NOTIFY_S, ucField1) == 0);
static_assert(offsetof(KIVO_NOTIFY_S, ulField2) == 4);
static_assert(offsetof(KIVO_NOTIFY_S, ucField3) == 8);
static_assert(offsetof(KIVO_NOTIFY_S, ulField4) == 12);
static_assert(offsetof(KIVO_NOTIFY_S, pField5) == 16);
static_assert(offsetof(KIVO_NOTIFY_S, ulField6) == 24);
static_assert(offsetof(KIVO_NOTIFY_S, ucField7) == 28);
static_assert(offsetof(KIVO_NOTIFY_S, pField8) == 32);
static_assert(offsetof(KIVO_NOTIFY_S, ulField9) == 40);
static_assert(offsetof(KIVO_NOTIFY_S, pField10) == 48);
static_assert(offsetof(KIVO_NOTIFY_S, ulField11) == 56);
static_assert(offsetof(KIVO_NOTIFY_S, ulField12) == 60);

static constexpr char SOURCE[] = "src/common/src/smi/kivo_adaptfunc";

#define SLOT_NAME(id, slot, name, rule, result, empty, arguments, adapter) SLOT_##name = slot,
enum : uint32_t { KIVO_HOOK_TABLE(SLOT_NAME) };

void KIVO_YSB_Smbuf_Destroy(void *pSmbuf) {
    const auto pfHook = HookInSlot<void (*)(void *)>(SLOT_KIVO_YSB_Smbuf_Destroy);
    if (pSmbuf != nullptr && pfHook != nullptr)
        pfHook(pSmbuf);
}

uint32_t KIVO_YSB_IsActiveStatus(uint32_t *pulActive) {
    const auto pfHook = HookInSlot<uint32_t (*)(uint32_t *)>(SLOT_KIVO_YSB_IsActiveStatus);
    if (pfHook != nullptr)
        return pfHook(pulActive);
    if (pulActive != nullptr)
        *pulActive = 0;
    return KIVO_OK;
}

uint32_t KIVO_YSB_IsBackup(void) {
    const auto pfHook = HookInSlot<uint32_t (*)(void)>(SLOT_KIVO_YSB_IsBackup);
    return pfHook != nullptr && pfHook() == 1 ? 1 : 0;
}

uint32_t KIVO_GetSpuProcessNameMaxLen(uint32_t *pulLen) {
    if (pulLen == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return KIVO_FAIL;
    }
    const auto pfHook = HookInSlot<uint32_t (*)(uint32_t *)>(SLOT_KIVO_GetSpuProcessNameMaxLen);
    return pfHook == nullptr ? KIVO_FAIL : pfHook(pulLen);
}

uint32_t KIVO_IPC_DBI_GetNodeID(uintptr_t ulArg1, uintptr_t ulArg2, uintptr_t ulArg3, uint32_t *paulNodes,
                                uint32_t *pulCount) {
    const auto pfHook =
        HookInSlot<uint32_t (*)(uintptr_t, uintptr_t, uintptr_t, uint32_t *, uint32_t *)>(SLOT_KIVO_IPC_DBI_GetNodeID);
    if (pfHook == nullptr)
        return KIVO_FAIL;
    const uint32_t ulResult = pfHook(ulArg1, ulArg2, ulArg3, paulNodes, pulCount);
    if (ulResult != KIVO_OK || pulCount == nullptr)
        return ulResult;
    /* No node wraps to the largest number and is left alone like a list of more than 256. */
    const uint32_t ulHigh = *pulCount - 1;
    if (ulHigh <= 255)
        UVEL_QuickSort(paulNodes, 0, static_cast<int32_t>(ulHigh));
    return KIVO_OK;
}

uint32_t KIVO_GetManagementVlan(uint32_t *pulVlan) {
    if (pulVlan == nullptr)
        return KIVO_FAIL;
    *pulVlan = 0;
    const auto pfHook = HookInSlot<uint32_t (*)(uint32_t *)>(SLOT_KIVO_GetManagementVlan);
    if (pfHook == nullptr)
        return KIVO_FAIL;
    /* The hook's result is the VLAN; what it wrote through the pointer is overwritten on purpose. */
    *pulVlan = pfHook(pulVlan) & 0xFFFF;
    return KIVO_OK;
}

/* The very same operation, odd as the name is. */
uint32_t KIVO_GetIfIndexForAP(uint32_t *pulVlan) {
    return KIVO_GetManagementVlan(pulVlan);
}

uint32_t KIVO_GetAclNumByName(const char *pszName, uint32_t *pulAclNum) {
    if (pszName == nullptr || pulAclNum == nullptr)
        return KIVO_FAIL;
    const auto pfHook = HookInSlot<uint32_t (*)(const char *, uint32_t *)>(SLOT_KIVO_GetAclNumByName);
    if (pfHook == nullptr)
        return KIVO_FAIL;
    *pulAclNum = pfHook(pszName, pulAclNum);
    return KIVO_OK;
}

/* The encoders that report only whether there was a hook to call. */
#define ENCODER(name)                                                                                                  \
    uint32_t name(WORDS_TAKES) {                                                                                       \
        const auto pfHook = HookInSlot<uint32_t (*)(WORDS_TAKES)>(SLOT_##name);                                        \
        if (pfHook == nullptr)                                                                                         \
            return KIVO_FAIL;                                                                                          \
        (void)pfHook(WORDS_PASSES);                                                                                    \
        return KIVO_OK;                                                                                                \
    }
ENCODER(KIVO_Encode_RegFunc)
ENCODER(KIVO_Encode_SetTransResult)
ENCODER(KIVO_Encode_SetAsysnResult)
ENCODER(KIVO_Encode_SetPreResult)

/* Presence is the answer: the hook is not called, whatever it would say. */
uint32_t KIVO_Is_SupportOnlyLsw(void) {
    return HookInSlot<KIVO_HOOK>(SLOT_KIVO_Is_SupportOnlyLsw) != nullptr ? 1 : 0;
}

/* What stands for a hook that is not installed: the buffer is handed over in any case. */
static uint32_t DestroyUnsent(void *pMbuf, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t,
                              uintptr_t) {
    MBUF_Destroy(static_cast<MBUF_S *>(pMbuf));
    return KIVO_OK;
}

uint32_t KIVO_IF_QosL2BNGTransmit(void *pMbuf, uintptr_t ulArg2, uintptr_t ulArg3, uintptr_t ulArg4, uintptr_t ulArg5,
                                  uintptr_t ulArg6, uintptr_t ulArg7, uintptr_t ulArg8) {
    const auto pfHook = HookInSlot<decltype(&DestroyUnsent)>(SLOT_KIVO_IF_QosL2BNGTransmit);
    const auto pfSend = pfHook != nullptr ? pfHook : DestroyUnsent;
    return pfSend(pMbuf, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8);
}

void KIVO_NotifyWlanAttrChange(const KIVO_NOTIFY_S *pstNotify) {
    const auto pfHook = HookInSlot<KIVO_NOTIFY_WLAN_HOOK>(SLOT_KIVO_NotifyWlanAttrChange);
    if (pfHook == nullptr || pstNotify == nullptr)
        return;
    pfHook(pstNotify->ucField1, pstNotify->ulField2, pstNotify->ucField3, pstNotify->ulField4, pstNotify->pField5,
           pstNotify->ulField6, pstNotify->ucField7, pstNotify->pField8, pstNotify->ulField9, pstNotify->pField10,
           pstNotify->ulField11, pstNotify->ulField12);
}

/* Field 1 stays out of these two. */
static uint32_t NotifyConfiguration(KIVO_NOTIFY_CFG_HOOK pfHook, const KIVO_NOTIFY_S *pstNotify) {
    if (pfHook == nullptr || pstNotify == nullptr)
        return KIVO_FAIL;
    return pfHook(pstNotify->ulField2, pstNotify->ucField3, pstNotify->ulField4, pstNotify->pField5,
                  pstNotify->ulField6, pstNotify->ucField7, pstNotify->pField8, pstNotify->ulField9,
                  pstNotify->pField10, pstNotify->ulField11, pstNotify->ulField12);
}

uint32_t KIVO_ProfileChangeNotifyCfg(const KIVO_NOTIFY_S *pstNotify) {
    return NotifyConfiguration(HookInSlot<KIVO_NOTIFY_CFG_HOOK>(SLOT_KIVO_ProfileChangeNotifyCfg), pstNotify);
}

uint32_t KIVO_BranchChangeNotifyCfg(const KIVO_NOTIFY_S *pstNotify) {
    return NotifyConfiguration(HookInSlot<KIVO_NOTIFY_CFG_HOOK>(SLOT_KIVO_BranchChangeNotifyCfg), pstNotify);
}

uint32_t KIVO_IfSlotSupportWLAN(void) {
    return 0;
}

uint32_t KIVO_IsConfigSynEnable(void) {
    return 0;
}

uint32_t KIVO_IsBoardSupportNac(void) {
    return 1;
}

uint32_t KIVO_GetStringByLogicSlotID(uint32_t ulSlotId, char *pszText, uint32_t ulSize) {
    char szSlot[32] = {};
    (void)IF_GetSlotStrBySlotId(ulSlotId, szSlot, sizeof szSlot);
    if (sprintf_s(pszText, ulSize, "%s", szSlot) < 0)
        qal_assert(SOURCE, __LINE__);
    return KIVO_OK;
}
