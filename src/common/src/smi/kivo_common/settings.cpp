#include <uvelcommon_base/kivo_settings.h>

#include <cstddef>

uint32_t g_aulKivoCommonSpecs[KIVO_COMMON_SPEC_NUM];
uint32_t g_stKIVOPdtOxmCfg[KIVO_PDT_OXM_CFG_NUM];
KIVO_CLI_TEMPLET_S g_stKIVOCliTemplet[KIVO_CLI_TEMPLET_NUM];
uint32_t g_aulKivoTid[KIVO_TID_NUM];
uint32_t g_aulKivoTaskPriority[KIVO_TASK_PRIORITY_NUM];
uint32_t g_KivoModuleIDs[KIVO_MODULE_ID_NUM];
uint32_t g_szKIVOPdtMacroDefineCfg[KIVO_PDT_MACRO_NUM];
uint32_t g_aulSRVCOMMON_Specs[SRVCOMMON_SPEC_NUM];
uint32_t g_aulSRVCOMMON_Feature[1];

static_assert(sizeof(KIVO_CLI_TEMPLET_S) == 16);
static_assert(offsetof(KIVO_CLI_TEMPLET_S, pTemplet) == 0);
static_assert(offsetof(KIVO_CLI_TEMPLET_S, ulIfTypeFlag) == 8);
static_assert(sizeof(g_stKIVOCliTemplet) == 16384);
static_assert(sizeof(g_stKIVOPdtOxmCfg) == 1024 && sizeof(g_szKIVOPdtMacroDefineCfg) == 8192);
static_assert(sizeof(g_aulKivoTid) == 248 && sizeof(g_KivoModuleIDs) == 300);
static_assert(sizeof(g_aulKivoCommonSpecs) == 28 && sizeof(g_aulSRVCOMMON_Specs) == 32);
static_assert(sizeof(g_aulKivoTaskPriority) == 4 && sizeof(g_aulSRVCOMMON_Feature) == 4);

/* What a bad index answers differs from table to table on purpose: products rely on each of these results. */

template <uint32_t N>
static uint32_t Set(uint32_t (&aulTable)[N], uint32_t ulIndex, uint32_t ulValue) {
    if (ulIndex >= N)
        return KIVO_FAIL;
    aulTable[ulIndex] = ulValue;
    return KIVO_OK;
}

template <uint32_t N>
static uint32_t Get(const uint32_t (&aulTable)[N], uint32_t ulIndex, uint32_t ulOutOfRange) {
    return ulIndex < N ? aulTable[ulIndex] : ulOutOfRange;
}

void KIVO_SetKivoCommonSpec(uint32_t ulIndex, uint32_t ulValue) {
    (void)Set(g_aulKivoCommonSpecs, ulIndex, ulValue);
}

uint32_t KIVO_GetKivoCommonSpec(uint32_t ulIndex) {
    return Get(g_aulKivoCommonSpecs, ulIndex, 0);
}

/* The value arrives as a whole word: a caller may leave anything above the 8 bits. */
void KIVO_SetPdtOxmCfgSwitch(uint32_t ulIndex, uint32_t ulValue) {
    (void)Set(g_stKIVOPdtOxmCfg, ulIndex, ulValue & 0xFFU);
}

uint32_t KIVO_GetPdtOxmCfgSwitch(uint32_t ulIndex) {
    return Get(g_stKIVOPdtOxmCfg, ulIndex, 0);
}

void KIVO_SetCliCmdTemplet(uint32_t ulIndex, void *pTemplet) {
    if (ulIndex < KIVO_CLI_TEMPLET_NUM)
        g_stKIVOCliTemplet[ulIndex].pTemplet = pTemplet;
}

void KIVO_SetIfTypeFlag(uint32_t ulIndex, uint32_t ulFlag) {
    if (ulIndex < KIVO_CLI_TEMPLET_NUM)
        g_stKIVOCliTemplet[ulIndex].ulIfTypeFlag = ulFlag;
}

/* No check on purpose: the index is the caller's duty. */
void *UVEL_GetCliCmdTemplet(uint32_t ulIndex) {
    return g_stKIVOCliTemplet[ulIndex].pTemplet;
}

uint32_t KIVO_SetTID(uint32_t ulIndex, uint32_t ulTid) {
    return Set(g_aulKivoTid, ulIndex, ulTid);
}

uint32_t UVEL_GetKivoTid(uint32_t ulIndex) {
    return Get(g_aulKivoTid, ulIndex, KIVO_NONE);
}

uint32_t KIVO_SetTaskPriority(uint32_t ulIndex, uint32_t ulPriority) {
    return Set(g_aulKivoTaskPriority, ulIndex, ulPriority);
}

uint32_t UVEL_GetKivoTaskPriority(uint32_t ulIndex) {
    return Get(g_aulKivoTaskPriority, ulIndex, KIVO_NONE);
}

void KIVO_SetModuleID(uint32_t ulIndex, uint32_t ulMid) {
    (void)Set(g_KivoModuleIDs, ulIndex, ulMid);
}

uint32_t KIVO_GetModuleID(uint32_t ulIndex) {
    return Get(g_KivoModuleIDs, ulIndex, KIVO_NONE);
}

void KIVO_SetPdtMacroDefine(uint32_t ulIndex, uint32_t ulValue) {
    (void)Set(g_szKIVOPdtMacroDefineCfg, ulIndex, ulValue);
}

uint32_t UVEL_GetPdtMacroDefineCfg(uint32_t ulIndex) {
    return Get(g_szKIVOPdtMacroDefineCfg, ulIndex, KIVO_NONE);
}

void SRVCOMMON_SetSpecs(uint32_t ulIndex, uint32_t ulValue) {
    (void)Set(g_aulSRVCOMMON_Specs, ulIndex, ulValue);
}

uint32_t SRVCOMMON_GetSpecs(uint32_t ulIndex) {
    return Get(g_aulSRVCOMMON_Specs, ulIndex, 0);
}

/* Only feature 0 can be set, although all 32 can be asked for. */
void SRVCOMMON_SetFeature(uint32_t ulFeature, uint32_t ulOn) {
    if (ulFeature != 0)
        return;
    if (ulOn != 0)
        g_aulSRVCOMMON_Feature[0] |= 1U;
    else
        g_aulSRVCOMMON_Feature[0] &= ~1U;
}

uint32_t SRVCOMMON_GetFeature(uint32_t ulFeature) {
    return ulFeature < 32 ? (g_aulSRVCOMMON_Feature[0] >> ulFeature) & 1U : 0;
}

uint32_t UVEL_IsDebugVersion(void) {
    return 0;
}
