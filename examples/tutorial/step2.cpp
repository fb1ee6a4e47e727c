/* Step 2: it hears of every line that goes down, and counts. */

#include <cstring>
#include <mutex>
#include <string>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uveld/module.h>

namespace {

constexpr uint32_t MID = 0xC2500000;
constexpr uint32_t MOST_INTERFACES = 10'000;
constexpr uint32_t LINE_STATE = 27; /* sub-event of KIVO_EVT_IF_STATE */

/* How often a line went down. */
struct Flaps {
    char name[IF_NAME_SIZE];
    uint32_t count;
};

const UVELD_CONTEXT_S *g_uveld = nullptr;
std::mutex g_lock; /* the table is asked and changed on several threads */
SRVOT_TBL_S *g_flaps = nullptr;

void Log(uint32_t level, const std::string &text) {
    g_uveld->pfLog(g_uveld->pModule, level, text.c_str());
}

int32_t CompareName(const void *element, const void *key) {
    return std::strcmp(static_cast<const Flaps *>(element)->name, static_cast<const char *>(key));
}

/* One more for the interface of this name: how many that makes. 0: there is no room for it. */
uint32_t CountOne(const Flaps &fresh) {
    const std::lock_guard lock(g_lock);
    auto *flaps = static_cast<Flaps *>(SRVOT_FindElmt(g_flaps, fresh.name));
    if (flaps == nullptr && SRVOT_AddElmt(g_flaps, fresh.name, &fresh) == KIVO_OK)
        flaps = static_cast<Flaps *>(SRVOT_GetCurrElmt(g_flaps));
    return flaps == nullptr ? 0 : ++flaps->count;
}

uint32_t OnLineState(uint32_t, void *data) {
    const auto *state = static_cast<const KIVO_EVT_IF_STATE_S *>(data);
    Flaps flaps{};
    if (state->ulState != KIVO_EVT_STATE_DOWN ||
        IF_GetIfNameByIfIndex(state->ulIfIndex, flaps.name, sizeof flaps.name) != KIVO_OK)
        return KIVO_OK;
    flaps.count = CountOne(flaps);
    if (flaps.count == 0)
        return KIVO_FAIL;
    Log(UVELD_LOG_INFO, std::string(flaps.name) + " went down, flaps: " + std::to_string(flaps.count));
    return KIVO_OK;
}

uint32_t Start(const UVELD_CONTEXT_S *context) {
    g_uveld = context;
    g_flaps = SRVOT_CreateNew(MID, sizeof(Flaps), MOST_INTERFACES, CompareName);
    if (g_flaps == nullptr)
        return KIVO_FAIL;
    Log(UVELD_LOG_INFO, "watches the lines");
    return UVEL_EventCallBackReg(MID, KIVO_EVT_IF_STATE, LINE_STATE, 10, 1, 0, OnLineState);
}

} // namespace

const UVELD_MODULE_S *UveldModule(void) {
    static const UVELD_MODULE_S module = {UVELD_MODULE_VERSION, "flaps", MID, Start, nullptr, nullptr};
    return &module;
}
