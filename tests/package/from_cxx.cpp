// A foreign C++ program, as from_c.c.
#include <cstdio>
#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_mem.h>

int main() {
    const auto hook = reinterpret_cast<KIVO_HOOK>(+[](uint32_t index) -> uint32_t { return index == 7; });
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &hook);
    g_stBtrcPubApiHook[BTRC_PUB_GET_INFO_LEVEL] = reinterpret_cast<KIVO_HOOK>(+[]() -> uint32_t { return 3; });
    void *block = KIVO_MemAlloc(0, 100);
    const bool ok = KIVO_IF_IsL2IF(7) == 1 && KIVO_IF_IsL2IF(8) == 0 && block != nullptr && KIVO_MemFree(block) == 0 &&
                    BTRC_Pub_GetInfoLevel(0, 0, 0, 0, 0, 0, 0, 0) == 3;
    std::printf("from C++: %s\n", ok ? "works" : "FAILS");
    return ok ? 0 : 1;
}
