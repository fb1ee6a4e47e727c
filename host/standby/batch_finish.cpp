#include "standby/batch_finish.h"

#include <atomic>
#include <mutex>
#include <uvelhost/standby_link.h>

namespace {

constexpr unsigned CAPACITY = 64;

std::atomic<YSB_BATCH_FINISH_FUNC> g_functions[CAPACITY];
std::mutex g_lock;

} // namespace

void uvel::host::standby::CallBatchFinish() {
    for (const auto &function : g_functions) {
        const YSB_BATCH_FINISH_FUNC call = function.load(std::memory_order_acquire);
        if (call == nullptr)
            return;
        call();
    }
}

uint32_t YsbAdaptRegRecvBatchFinish(YSB_BATCH_FINISH_FUNC pfFinish) {
    if (pfFinish == nullptr)
        return 1;
    std::lock_guard lock(g_lock);
    for (auto &function : g_functions) {
        const YSB_BATCH_FINISH_FUNC there = function.load(std::memory_order_relaxed);
        if (there == pfFinish)
            return UVELHOST_OK;
        if (there == nullptr) {
            function.store(pfFinish, std::memory_order_release);
            return UVELHOST_OK;
        }
    }
    return 1;
}
