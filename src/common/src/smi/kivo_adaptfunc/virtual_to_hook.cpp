/* Installs the library's own adapters to the host into the product hook table. */

#include <uvelcommon_base/kivo_startup.h>

#include <cstddef>
#include <iterator>
#include <type_traits>

#include "hook_table.h"
#include <uvelcommon_base/kivo_addr_query.h>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_mbuf.h>
#include <uvelcommon_base/kivo_process_query.h>
#include <uvelcommon_base/kivo_trunk_query.h>
#include <uvelhost/standby.h>

/* The hook ids of the adapters in the order of their installation. */
static constexpr uint8_t ORDER[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  89, 9,  11, 12, 13, 17, 21,
                                    39, 25, 53, 26, 28, 47, 48, 22, 23, 24, 49, 40, 41, 30, 32, 35,
                                    36, 15, 42, 43, 72, 73, 79, 80, 77, 78, 81, 88, 90, 14};
static_assert(sizeof(ORDER) == 46);

#define NO_ADAPTER nullptr

#define HAS_ADAPTER(id, slot, name, rule, result, empty, arguments, adapter)                                           \
    !std::is_same_v<decltype(adapter), std::nullptr_t>,

/* Every adapter of the table is installed, once, and nothing else. */
static constexpr bool OrderIsComplete() {
    bool abExpected[] = {KIVO_HOOK_TABLE(HAS_ADAPTER)};
    for (const uint8_t ucId : ORDER) {
        if (!abExpected[ucId])
            return false;
        abExpected[ucId] = false;
    }
    for (const bool bMissing : abExpected) {
        if (bMissing)
            return false;
    }
    return true;
}
static_assert(OrderIsComplete());

static KIVO_HOOK AsHook(std::nullptr_t) {
    return nullptr;
}

template <typename Result, typename... Arguments>
static KIVO_HOOK AsHook(Result (*pfAdapter)(Arguments...)) {
    return reinterpret_cast<KIVO_HOOK>(pfAdapter);
}

#define ADAPTER(id, slot, name, rule, result, empty, arguments, adapter) AsHook(adapter),

void KIVO_VirtualToHookAdp(void) {
    const KIVO_HOOK apfAdapter[] = {KIVO_HOOK_TABLE(ADAPTER)};
    static_assert(std::size(apfAdapter) == KIVO_HOOK_COUNT);
    for (const uint8_t ucId : ORDER)
        KIVOShell_SetHookFunc(ucId, &apfAdapter[ucId]);
}

/* Later calls do nothing, so that what the product layer has put in the place of an adapter stays there. */
void KIVO_VirtualToHook(void) {
    static bool bDone = false;
    if (bDone)
        return;
    bDone = true;
    KIVO_VirtualToHookAdp();
}
