/* The public headers used from C, all in one unit: every family answers a simple question. Prints what fails. */

#include <stdio.h>
#include <string.h>
#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_array.h>
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelcommon_base/kivo_hook_product.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_show.h>
#include <uvelcommon_base/kivo_string.h>
#include <uvelcommon_base/kivo_version.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/memory.h>
#include <uvelhost/queue.h>

static int g_failed;

static void Check(int bHolds, const char *pszWhat) {
    if (!bHolds) {
        printf("FAILS: %s\n", pszWhat);
        g_failed = 1;
    }
}

#define CHECK(condition) Check((condition), #condition)

static uint32_t OnlyPortSeven(uint32_t ulIfIndex) {
    return ulIfIndex == 7 ? 1 : 0;
}

static void CheckHooks(void) {
    KIVO_HOOK pfHook = (KIVO_HOOK)OnlyPortSeven;

    CHECK(KIVO_IF_IsSUBIF(7) == 0);
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_SUBIF, &pfHook);
    CHECK(KIVO_IF_IsSUBIF(7) == 1);
    CHECK(g_stKIVOPubHook[4] == (KIVO_HOOK)OnlyPortSeven);
    CHECK(Kivo_GetSelfBoardId() == 0);
    CHECK(KIVO_YSB_IsBackup() == 0);
    CHECK(KIVO_Is_SupportOnlyLsw() == 0);
    CHECK(BTRC_Pub_NoInst_OutInfo(0, 0, 0, 0, 0, 0, 0, 0) == 1);
}

static uint32_t ShowNothing(void) {
    return KIVO_OK;
}

static void CheckStore(void) {
    uint32_t ulPool = 0;

    KIVO_SetPdtOxmCfgSwitch(3, 0x1FF);
    CHECK(KIVO_GetPdtOxmCfgSwitch(3) == 255);
    CHECK(KIVO_InitTableIndex(&ulPool, 5, 7) == KIVO_OK);
    CHECK(KIVO_AllocTableIndex(ulPool) == 5);
    CHECK(UVEL_FuncRegShowFeature(1, ShowNothing) == KIVO_OK);
    CHECK(g_stDllShowFeatureTbl.ulCount == 1);
    CHECK(strcmp(KIVO_GetVerion(), "V100R007C00B250") == 0);
    CHECK(NAC_GetUtilsPvtLogGlobalSwitch() == 0);
    CHECK(CHI_Init() == KIVO_OK && CHI_MsgP2C(CHI_BACK_HA, 5) == 0);
}

static void CheckMemoryAndTexts(void) {
    uint32_t aulValues[] = {3, 1, 2};
    uint32_t ulIndex = 9;
    uint32_t ulValue = 0;
    char szText[] = "mon";
    void *pBlock = KIVO_MemAlloc(1, 8);

    CHECK(pBlock != NULL);
    CHECK(KIVO_MemFree(pBlock) == KIVO_OK);
    UVEL_QuickSort(aulValues, 0, 2);
    CHECK(aulValues[0] == 1 && aulValues[2] == 3);
    CHECK(SRVAR_FindElmtFromU32Array(aulValues, 3, 2, &ulIndex) == KIVO_OK && ulIndex == 1);
    CHECK(SRV_StringToUpper(szText) == KIVO_OK && strcmp(szText, "MON") == 0);
    CHECK(SRV_Atoul(" 42", &ulValue) == KIVO_OK && ulValue == 42);
}

static void CheckHost(void) {
    uint32_t ulQueue = 0;
    uint32_t ulElement = 17;

    CHECK(QAL_QueueCreate("C", 2, sizeof(ulElement), &ulQueue) == UVELHOST_OK);
    CHECK(QAL_QueueAsyWrite(ulQueue, &ulElement, sizeof(ulElement)) == UVELHOST_OK);
    ulElement = 0;
    CHECK(QAL_QueueRead(ulQueue, &ulElement, sizeof(ulElement), 0) == UVELHOST_OK && ulElement == 17);
    CHECK(QAL_QueueDelete(ulQueue) == UVELHOST_OK);
}

int main(void) {
    CheckHooks();
    CheckStore();
    CheckMemoryAndTexts();
    CheckHost();
    return g_failed;
}
