/* A product layer in one file: brings the parts of the library up that need no event task, and shows them at work.
 *
 * Run it with ./demo. Nothing here is needed by the library; it is what its users write. */

#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_show.h>
#include <uvelcommon_base/kivo_version.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/memory.h>

#define MY_MID 0x00010000U

static void Title(const char *pszTitle) {
    printf("\n\033[1m%s\033[0m\n", pszTitle);
}

/* Hooks: the product says which interfaces are layer-2 ports. */

static uint32_t PortsAreLayer2(uint32_t ulIfIndex) {
    return ulIfIndex <= 24 ? 1 : 0;
}

static void ShowHooks(void) {
    KIVO_HOOK pfHook = (KIVO_HOOK)PortsAreLayer2;

    Title("Hooks: the product's answer, and the safe one without it");
    printf("  interface 7 is layer 2?   before: %" PRIu32, KIVO_IF_IsL2IF(7));
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &pfHook);
    printf("   after installing a hook: %" PRIu32 "\n", KIVO_IF_IsL2IF(7));
}

/* Settings: limits and switches that the product layer sets at start-up. */

static void ShowSettings(void) {
    Title("Settings: one setter and one checked getter per table");
    KIVO_SetKivoCommonSpec(5, 1500);
    KIVO_SetPdtOxmCfgSwitch(8, 0x1FF);
    printf("  specification 5: %" PRIu32 ", switch 8 set to 0x1FF: %" PRIu32 ", task id 62 refused: %" PRIu32 "\n",
           KIVO_GetKivoCommonSpec(5), KIVO_GetPdtOxmCfgSwitch(8), KIVO_SetTID(62, 1));
}

/* Index pools: numbers that rest as long as possible before they are handed out again. */

static void ShowPool(void) {
    uint32_t ulPool = 0;
    uint32_t i;

    Title("Index pool 5 to 7: first in, first out");
    if (KIVO_InitTableIndex(&ulPool, 5, 7) != KIVO_OK)
        return;
    printf("  taken:");
    for (i = 0; i < 4; ++i)
        printf(" 0x%" PRIX32, KIVO_AllocTableIndex(ulPool));
    KIVO_FreeTableIndex(ulPool, 6);
    KIVO_FreeTableIndex(ulPool, 5);
    printf("   after giving 6 and 5 back:");
    for (i = 0; i < 2; ++i)
        printf(" 0x%" PRIX32, KIVO_AllocTableIndex(ulPool));
    printf("\n");
}

/* Registries and dialog: the product's command handling calls what modules registered. */

static uint32_t ShowMyModule(void) {
    printf("  [module 0x%08" PRIX32 "] everything is well\n", MY_MID);
    return KIVO_OK;
}

static void Speak(uint32_t ulCode, const char *pszText) {
    printf("  dialog %" PRIu32 ": %s\n", ulCode, pszText);
}

static void ShowRegistry(void) {
    const DLL_NODE_S *pstNode;

    Title("Show registry and dialog hook");
    (void)UVEL_FuncRegShowModuleID(MY_MID, ShowMyModule);
    for (pstNode = g_stDllShowModuleTbl.pstNext; pstNode != (const DLL_NODE_S *)&g_stDllShowModuleTbl;
         pstNode = pstNode->pstNext)
        (void)((const UVEL_SHOW_NODE_S *)pstNode)->pfShow();
    NAC_Utils_RegDiaLogHook(Speak);
    NAC_Utils_Dialog(7, "%s has %d ports", "this device", 24);
}

/* Memory: one account for everything, with its level for people to see. */

static void ShowMemory(void) {
    QAL_MEM_STATS_S stStats;
    uint32_t ulHandle;
    void *pBlock = KIVO_MemAlloc_F(MY_MID, 4096, __FILE__, __LINE__);

    Title("Memory accounts");
    printf("  %-16s %10s %12s %12s %10s\n", "account", "blocks", "bytes", "peak", "refused");
    for (ulHandle = 0; QAL_MemGetStats(ulHandle, &stStats) == 0; ++ulHandle)
        printf("  %-16s %10" PRIu64 " %12" PRIu64 " %12" PRIu64 " %10" PRIu64 "\n", stStats.szName, stStats.ulBlocks,
               stStats.ulBytes, stStats.ulPeakBytes, stStats.ulFailures);
    (void)KIVO_MemFree_F(pBlock, __FILE__, __LINE__);
}

int main(void) {
    char szBanner[512];

    printf("%s", UVEL_VersionInfo(szBanner) + strlen("\r\n\r\n"));
    printf(" (service layer %s)\n", KIVO_GetVerion());
    ShowHooks();
    ShowSettings();
    ShowPool();
    ShowRegistry();
    ShowMemory();
    return 0;
}
