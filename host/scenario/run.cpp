/* Carrying a scenario out. */
#include <uvelhost/scenario.h>

#include "os/futex.h"
#include "scenario/scenario.h"
#include "scenario/text.h"
#include <algorithm>

using namespace uvel::host::scenario;

namespace {

/* Runs apply(batch) in a batch that is committed unless there is a complaint; writes that and answers 1 then. */
template <typename Apply>
uint32_t InBatch(const Step &step, char *error, uint32_t size, Apply &&apply) noexcept {
    MDL_BATCH *batch = MDL_Begin(MDL_FEEDER_SCENARIO, step.user);
    const char *complaint = "the model cannot be changed: memory is short, or this thread is changing it";
    if (batch == nullptr) {
        WriteCut(complaint, error, size);
        return 1;
    }
    try {
        const std::string refusal = apply(batch);
        if (!refusal.empty()) {
            MDL_Abort(batch);
            WriteCut(refusal.c_str(), error, size);
            return 1;
        }
    } catch (const std::bad_alloc &) {
        MDL_Abort(batch);
        WriteCut(complaint, error, size);
        return 1;
    }
    if (MDL_Commit(batch) != UVELHOST_OK) {
        WriteCut(complaint, error, size);
        return 1;
    }
    for (const MDL_HA_S &role : step.roles)
        MDL_SetHa(&role);
    return UVELHOST_OK;
}

uint64_t NowMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

/* Waits until `due` on the clock above; false when the run was stopped. */
bool WaitUntil(const std::atomic<uint32_t> &stop, uint64_t due) {
    for (;;) {
        const uint64_t now = NowMs();
        if (stop.load(std::memory_order_acquire) != 0)
            return false;
        if (now >= due)
            return true;
        const auto wait = static_cast<uint32_t>(std::min<uint64_t>(due - now, 3600000));
        uvel::host::FutexWait(&stop, 0, uvel::host::Deadline(wait));
    }
}

} // namespace

namespace uvel::host::scenario {

std::string ApplyStep(MDL_BATCH *batch, const Step &step) {
    for (const Operation &operation : step.operations)
        if (operation.apply(batch) != UVELHOST_OK)
            return operation.refusal;
    return {};
}

std::string ApplyDevice(MDL_BATCH *batch, const Step &device) {
    MDL_MarkAll(batch);
    std::string refusal = ApplyStep(batch, device);
    MDL_Sweep(batch);
    return refusal;
}

} // namespace uvel::host::scenario

uint32_t SCN_GetStepCount(const SCN_SCENARIO *pstScenario) {
    return pstScenario == nullptr ? 0 : static_cast<uint32_t>(pstScenario->steps.size());
}

uint32_t SCN_GetStepTime(const SCN_SCENARIO *pstScenario, uint32_t ulStep, uint64_t *pulTimeMs) {
    if (pulTimeMs == nullptr || ulStep >= SCN_GetStepCount(pstScenario))
        return 1;
    *pulTimeMs = pstScenario->steps[ulStep].at_ms;
    return UVELHOST_OK;
}

uint32_t SCN_ApplyDevice(SCN_SCENARIO *pstScenario, char *pszError, uint32_t ulSize) {
    if (pstScenario == nullptr)
        return 1;
    if (!pstScenario->has_device)
        return UVELHOST_OK;
    return InBatch(pstScenario->device, pszError, ulSize,
                   [&](MDL_BATCH *batch) { return ApplyDevice(batch, pstScenario->device); });
}

uint32_t SCN_ApplyStep(SCN_SCENARIO *pstScenario, uint32_t ulStep, char *pszError, uint32_t ulSize) {
    if (ulStep >= SCN_GetStepCount(pstScenario))
        return 1;
    const Step &step = pstScenario->steps[ulStep];
    return InBatch(step, pszError, ulSize, [&](MDL_BATCH *batch) { return ApplyStep(batch, step); });
}

uint32_t SCN_Run(SCN_SCENARIO *pstScenario, uint32_t ulSpeedPercent, char *pszError, uint32_t ulSize) {
    if (pstScenario == nullptr)
        return 1;
    if (pstScenario->stop.load(std::memory_order_acquire) != 0)
        return SCN_STOPPED;
    const uint64_t start = NowMs();
    if (SCN_ApplyDevice(pstScenario, pszError, ulSize) != UVELHOST_OK)
        return 1;
    for (uint32_t i = 0; i < SCN_GetStepCount(pstScenario); ++i) {
        const uint64_t at = pstScenario->steps[i].at_ms;
        if (!WaitUntil(pstScenario->stop, ulSpeedPercent == 0 ? start : start + at * 100 / ulSpeedPercent))
            return SCN_STOPPED;
        if (SCN_ApplyStep(pstScenario, i, pszError, ulSize) != UVELHOST_OK)
            return 1;
    }
    return UVELHOST_OK;
}

void SCN_Stop(SCN_SCENARIO *pstScenario) {
    if (pstScenario == nullptr)
        return;
    pstScenario->stop.store(1, std::memory_order_release);
    uvel::host::FutexWakeAll(&pstScenario->stop);
}
