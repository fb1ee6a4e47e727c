#include "os/run_delay.h"

#include <cstdint>
#include <ctime>
#include <sched.h>
#include <uvelhost/task.h>

/* Coarse milliseconds at which the thread last slept or gave way; 0 before its first call. */
static constinit thread_local uint64_t t_ran_since __attribute__((tls_model("initial-exec"))) = 0;

static uint64_t CoarseMilliseconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000 + 1;
}

void uvel::host::NoteSlept() {
    t_ran_since = CoarseMilliseconds();
}

/* The scheduler gives the processor back as soon as nobody else wants it, and after one slice of the others at the
 * latest, so the limit of the pause needs no clock. */
void QAL_TaskRunDelay(uint32_t ulHeldMs, uint32_t) {
    uint64_t now = CoarseMilliseconds();
    if (t_ran_since == 0) [[unlikely]]
        t_ran_since = now;
    if (now - t_ran_since < ulHeldMs) [[likely]]
        return;
    sched_yield();
    uvel::host::NoteSlept();
}
