/* The two hook tables and the installer. */

#include "hook_table.h"

KIVO_HOOK g_stKIVOPubHookHere[KIVO_HOOK_COUNT];
KIVO_HOOK g_stBtrcPubApiHookHere[BTRC_PUB_HOOK_COUNT];

extern "C" {
extern __attribute__((alias("g_stKIVOPubHookHere"))) KIVO_HOOK g_stKIVOPubHook[KIVO_HOOK_COUNT];
extern __attribute__((alias("g_stBtrcPubApiHookHere"))) KIVO_HOOK g_stBtrcPubApiHook[BTRC_PUB_HOOK_COUNT];
}

#define SLOT(id, slot, name, rule, result, empty, arguments, adapter) slot,
static constexpr uint8_t SLOT_OF_ID[] = {KIVO_HOOK_TABLE(SLOT)};

#define ID(id, slot, name, rule, result, empty, arguments, adapter) id,
static constexpr uint8_t IDS[] = {KIVO_HOOK_TABLE(ID)};

/* Ids stand in order and every slot belongs to exactly one of them. */
static constexpr bool IsBijection() {
    bool abTaken[KIVO_HOOK_COUNT] = {};
    for (uint32_t ulId = 0; ulId < KIVO_HOOK_COUNT; ++ulId) {
        const uint8_t ucSlot = SLOT_OF_ID[ulId];
        if (IDS[ulId] != ulId || ucSlot >= KIVO_HOOK_COUNT || abTaken[ucSlot])
            return false;
        abTaken[ucSlot] = true;
    }
    return true;
}

static_assert(sizeof SLOT_OF_ID == KIVO_HOOK_COUNT);
static_assert(IsBijection());

void KIVOShell_SetHookFunc(uint32_t ulHookId, const KIVO_HOOK *ppfHook) {
    if (ulHookId >= KIVO_HOOK_COUNT || ppfHook == nullptr)
        return;
    __atomic_store_n(&g_stKIVOPubHookHere[SLOT_OF_ID[ulHookId]], *ppfHook, __ATOMIC_RELEASE);
}

KIVO_HOOK KIVOShell_GetHookFunc(uint32_t ulHookId) {
    return ulHookId < KIVO_HOOK_COUNT ? HookInSlot<KIVO_HOOK>(SLOT_OF_ID[ulHookId]) : nullptr;
}
