/* The plain forwarders, one per row of the hook table: a load, a test and a jump. */

#include "hook_table.h"

#include "hook_arguments.h"

#define FORWARDER_PLAIN(slot, name, result, empty, arguments)                                                          \
    result name(arguments##_TAKES) {                                                                                   \
        const auto pfHook = HookInSlot<result (*)(arguments##_TAKES)>(slot);                                           \
        if (pfHook == nullptr)                                                                                         \
            return empty;                                                                                              \
        return pfHook(arguments##_PASSES);                                                                             \
    }
#define FORWARDER_OWN(slot, name, result, empty, arguments)
#define FORWARDER_NONE(slot, name, result, empty, arguments)

#define FORWARDER(id, slot, name, rule, result, empty, arguments, adapter)                                             \
    FORWARDER_##rule(slot, name, result, empty, arguments)
KIVO_HOOK_TABLE(FORWARDER)

#define TRACE_FORWARDER(slot, name, result, empty)                                                                     \
    result name(WORDS_TAKES) {                                                                                         \
        const auto pfHook = LoadHook<result (*)(WORDS_TAKES)>(&g_stBtrcPubApiHookHere[slot]);                          \
        if (pfHook == nullptr)                                                                                         \
            return empty;                                                                                              \
        return pfHook(WORDS_PASSES);                                                                                   \
    }
BTRC_PUB_HOOK_TABLE(TRACE_FORWARDER)
