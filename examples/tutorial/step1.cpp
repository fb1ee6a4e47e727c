/* Step 1: a module that starts. */

#include <uvelcommon_base/kivo_types.h>
#include <uveld/module.h>

namespace {

constexpr uint32_t MID = 0xC2500000;

const UVELD_CONTEXT_S *g_uveld = nullptr;

void Log(uint32_t level, const char *text) {
    g_uveld->pfLog(g_uveld->pModule, level, text);
}

uint32_t Start(const UVELD_CONTEXT_S *context) {
    g_uveld = context;
    Log(UVELD_LOG_INFO, "watches the lines");
    return KIVO_OK;
}

} // namespace

const UVELD_MODULE_S *UveldModule(void) {
    static const UVELD_MODULE_S module = {UVELD_MODULE_VERSION, "flaps", MID, Start, nullptr, nullptr};
    return &module;
}
