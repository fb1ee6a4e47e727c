/* The notifying thread: takes notifications in the order in which they were queued and calls who registered before. */
#include "model/delivery.h"

#include "os/futex.h"
#include <algorithm>
#include <atomic>
#include <mutex>
#include <uvelhost/exec.h>
#include <uvelhost/task.h>

namespace uvel::host::model {

constinit thread_local uint32_t t_user __attribute__((tls_model("initial-exec"))) = 0;
constinit thread_local const Notices *t_going __attribute__((tls_model("initial-exec"))) = nullptr;
constinit thread_local uint32_t t_position __attribute__((tls_model("initial-exec"))) = 0;

namespace {

constinit thread_local bool t_delivering = false;

constinit std::mutex g_lock; /* everything below that is not atomic */
Notices *g_first = nullptr;
Notices *g_last = nullptr;
bool g_started = false;
uint64_t g_queued = 0;
uint64_t g_high_water = 0;
constinit std::atomic<uint64_t> g_delivered = 0;
constinit std::atomic<uint64_t> g_failures = 0;
constinit std::atomic<uint32_t> g_more = 0; /* counts additions to the queue; the notifying thread sleeps on it */
constinit std::atomic<uint32_t> g_done = 0; /* counts deliveries; those who drain sleep on it */

Notices *TakeAll() {
    std::lock_guard lock(g_lock);
    Notices *all = g_first;
    g_first = g_last = nullptr;
    return all;
}

void Deliver(Notices &notices) {
    t_delivering = true;
    t_going = notices.HasGoing() ? &notices : nullptr;
    t_user = notices.user;
    for (t_position = 0; t_position < notices.Count(); ++t_position) {
        const uint64_t failures = CallListeners(notices, t_position);
        if (failures != 0) {
            g_failures.fetch_add(failures, std::memory_order_relaxed);
            if (notices.answer != nullptr)
                *notices.answer = false;
        }
        g_delivered.fetch_add(1, std::memory_order_release);
    }
    t_delivering = false;
    t_going = nullptr;
    t_user = 0;
    g_done.fetch_add(1, std::memory_order_release);
    FutexWakeAll(&g_done);
}

[[noreturn]] void NotifyForEver() {
    for (;;) {
        const uint32_t seen = g_more.load(std::memory_order_acquire);
        Notices *notices = TakeAll();
        if (notices == nullptr)
            FutexWait(&g_more, seen, Deadline(UVELHOST_WAIT_FOREVER));
        while (notices != nullptr) {
            Notices *next = notices->next;
            Deliver(*notices);
            delete notices;
            notices = next;
        }
    }
}

} // namespace

bool StartNotifying() {
    std::lock_guard lock(g_lock);
    uint32_t task = 0;
    if (!g_started)
        g_started = QAL_CreateTask("MDL_Notify", &task, NotifyForEver, 100, 0, nullptr) == UVELHOST_OK;
    return g_started;
}

void Enqueue(Notices *notices) {
    {
        std::lock_guard lock(g_lock);
        if (!g_started || notices->Count() == 0) { /* nobody has registered */
            if (notices->Count() != 0) {
                g_queued += notices->Count();
                g_delivered.fetch_add(notices->Count(), std::memory_order_relaxed);
            }
            delete notices;
            return;
        }
        notices->first_number = g_queued;
        g_queued += notices->Count();
        g_high_water = std::max(g_high_water, g_queued - g_delivered.load(std::memory_order_relaxed));
        (g_last == nullptr ? g_first : g_last->next) = notices;
        g_last = notices;
    }
    g_more.fetch_add(1, std::memory_order_release);
    FutexWakeAll(&g_more);
}

uint64_t NextNoticeNumber() {
    std::lock_guard lock(g_lock);
    return g_queued;
}

bool IsDelivering() {
    return t_delivering;
}

} // namespace uvel::host::model

using namespace uvel::host;
using namespace uvel::host::model;

uint32_t MDL_Drain(uint32_t ulTimeoutMs) {
    if (IsDelivering())
        return 1;
    const Deadline deadline(ulTimeoutMs);
    const uint64_t goal = NextNoticeNumber();
    for (;;) {
        const uint32_t seen = g_done.load(std::memory_order_acquire);
        if (g_delivered.load(std::memory_order_acquire) >= goal)
            return UVELHOST_OK;
        if (deadline.Passed())
            return 1;
        FutexWait(&g_done, seen, deadline);
    }
}

void MDL_GetNoticeStats(MDL_NOTICE_STATS_S *pstStats) {
    if (pstStats == nullptr)
        return;
    std::lock_guard lock(g_lock);
    *pstStats = {g_queued, g_delivered.load(), g_high_water, g_failures.load()};
}

uint32_t EXEC_GetCurrentUserId(void) {
    return t_user;
}

void MDL_SetThreadUser(uint32_t ulUserId) {
    t_user = ulUserId;
}
