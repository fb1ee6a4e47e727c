/* The word of event bits of every task. */
#include <uvelhost/task.h>

#include "os/futex.h"
#include "os/run_delay.h"
#include "os/task_table.h"
#include <bit>

using namespace uvel::host;

/* The half of the state that holds the bits, for the kernel to compare. */
static const void *BitsOf(const Task *task) {
    constexpr int half = std::endian::native == std::endian::little ? 0 : 4;
    return reinterpret_cast<const char *>(&task->state) + half;
}

/* Takes what the caller waits for out of the state it saw; false when it is not there, or the state has changed. */
static bool Take(Task *task, uint64_t &state, uint32_t mask, bool all, uint32_t *taken) {
    auto bits = static_cast<uint32_t>(state) & mask;
    while (all ? bits == mask : bits != 0) {
        if (task->state.compare_exchange_weak(state, state & ~uint64_t{bits})) {
            *taken = bits;
            return true;
        }
        bits = static_cast<uint32_t>(state) & mask;
    }
    return false;
}

/* Only the task itself waits for its word. It says that it sleeps before it looks for the last time, a writer sets its
 * bits before it looks whether somebody sleeps: one of the two sees the other. */
static bool Wait(Task *task, uint32_t mask, bool all, uint32_t timeout_ms, uint32_t *taken) {
    uint64_t state = task->state.load();
    if (Take(task, state, mask, all, taken))
        return true;
    if (timeout_ms == 0)
        return false;
    Deadline deadline(timeout_ms);
    bool done = false;
    bool slept = false;
    task->waiting.store(1);
    for (;;) {
        state = task->state.load();
        done = Take(task, state, mask, all, taken);
        if (done || deadline.Passed())
            break;
        slept = FutexWait(BitsOf(task), static_cast<uint32_t>(state), deadline) || slept;
    }
    task->waiting.store(0);
    if (slept)
        NoteSlept();
    return done;
}

uint32_t QAL_EventRead(uint32_t ulMask, uint32_t ulOptions, uint32_t ulTimeoutMs, uint32_t *pulEvents) {
    if (ulMask == 0 || ulOptions > QAL_EVENT_ANY)
        return 1;
    Task *task = CurrentTask();
    uint32_t taken = 0;
    if (task == nullptr || !Wait(task, ulMask, ulOptions == QAL_EVENT_ALL, ulTimeoutMs, &taken))
        return 1;
    if (pulEvents != nullptr)
        *pulEvents = taken;
    return UVELHOST_OK;
}

uint32_t QAL_EventWrite(uint32_t ulTask, uint32_t ulEvents) {
    Task *task = PlaceOfTask(ulTask);
    uint64_t state = task->state.load();
    do {
        if (ulTask == 0 || NumberOf(state) != ulTask)
            return 1;
    } while (!task->state.compare_exchange_weak(state, state | ulEvents));
    if (task->waiting.load() != 0)
        FutexWakeAll(BitsOf(task));
    return UVELHOST_OK;
}
