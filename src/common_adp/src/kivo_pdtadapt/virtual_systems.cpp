#include <uvelcommon_base/kivo_vsys.h>

#include "kivo_oxm/raise.h"
#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/task.h>
#include <uvelhost/vrf.h>

static_assert(sizeof(KIVO_EVT_VSYS_S::szVrfName) == VRF_NAME_SIZE);

static constexpr uint32_t ANY_SUB_EVENT = 0xFFFFFFFF;

static bool IsMultiVsysProduct() {
    return KIVO_GetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS) == 1;
}

static bool IsWithinLimit(uint32_t ulVsysId) {
    return ulVsysId < KIVO_GetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT);
}

uint32_t KIVO_VsysNotifyCallBack(uint32_t ulKind, uint16_t *pusVsysId) {
    if (!IsMultiVsysProduct() || pusVsysId == nullptr)
        return KIVO_OK;
    if (!IsWithinLimit(*pusVsysId))
        return KIVO_FAIL;
    switch (ulKind) {
    case VRF_EVT_CREATED:
        return oxm::Queue(KIVO_EVT_VSYS_CREATED, ANY_SUB_EVENT, *pusVsysId);
    case VRF_EVT_DELETED:
        return oxm::Queue(KIVO_EVT_VSYS_DELETED, ANY_SUB_EVENT, *pusVsysId);
    default:
        return KIVO_OK;
    }
}

/* Unlike the notices this is told at once, with another sub-event and the name of the VRF: who starts late needs both
 * before the first notice comes. */
uint32_t KIVO_VsysRecoverInit(void) {
    if (!IsMultiVsysProduct())
        return KIVO_OK;
    KIVO_EVT_VSYS_S stRecord{};
    uint32_t ulResult = L3VPN_GetFirstVrfIdAndVrfName(&stRecord.ulVrfIndex, stRecord.szVrfName);
    while (ulResult == UVELHOST_OK) {
        QAL_TaskRunDelay(200, 20);
        if (IsWithinLimit(stRecord.ulVrfIndex))
            (void)UVEL_EventCallBackNotify(KIVO_EVT_VSYS_CREATED, 0, &stRecord);
        ulResult = L3VPN_GetNextVrfIdAndVrfName(&stRecord.ulVrfIndex, stRecord.szVrfName);
    }
    L3VPN_ScanVrfIdAndVrfNameFinish();
    return KIVO_OK;
}
