/* A foreign C program: installs a hook, writes the trace table, allocates. 0 when the library answers as it should. */
#include <stdio.h>
#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_mem.h>

static uint32_t IsL2If(uint32_t ulIfIndex) {
    return ulIfIndex == 7 ? 1 : 0;
}

static uint32_t TracingIsOn(KIVO_WORDS) {
    (void)ulArg1, (void)ulArg2, (void)ulArg3, (void)ulArg4, (void)ulArg5, (void)ulArg6, (void)ulArg7, (void)ulArg8;
    return 1;
}

int main(void) {
    KIVO_HOOK pfHook = (KIVO_HOOK)IsL2If;
    void *pBlock;
    int ok;

    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &pfHook);
    g_stBtrcPubApiHook[BTRC_PUB_IS_ENABLED] = (KIVO_HOOK)TracingIsOn;
    pBlock = KIVO_MemAlloc(0, 100);
    ok = KIVO_IF_IsL2IF(7) == 1 && KIVO_IF_IsL2IF(8) == 0 && BTRC_Pub_IsBTRCEnabled(0, 0, 0, 0, 0, 0, 0, 0) == 1 &&
         pBlock != NULL && KIVO_MemFree(pBlock) == 0;
    printf("from C: %s\n", ok ? "works" : "FAILS");
    return ok ? 0 : 1;
}
