#include <uvelhost/task.h>

#include "os/futex.h"
#include "os/task_table.h"
#include <atomic>
#include <memory>
#include <new>
#include <pthread.h>

using namespace uvel::host;

static_assert(QAL_TASK_ARGS == TASK_ARGS);

namespace {

constexpr uint32_t MAX_PRIORITY = 255;

/* What a new thread needs to become the task. */
struct Start {
    Task *task;
    QAL_TASK_ENTRY entry;
    std::atomic<uint32_t> go{0};
};

/* Also undone when the entry leaves through pthread_exit, which unwinds this frame. */
void *Run(void *argument) {
    std::unique_ptr<Start> start(static_cast<Start *>(argument));
    while (start->go.load(std::memory_order_acquire) == 0)
        FutexWait(&start->go, 0, Deadline(UVELHOST_WAIT_FOREVER));
    TaskOfThisThread here(start->task);
    pthread_setname_np(pthread_self(), start->task->name);
    QAL_TASK_ENTRY entry = start->entry;
    start.reset();
    entry();
    return nullptr;
}

} // namespace

uint32_t QAL_CreateTask(const char *pszName, uint32_t *pulTask, QAL_TASK_ENTRY pfEntry, uint32_t ulPriority,
                        uint32_t ulOptions, const uintptr_t aulArgs[QAL_TASK_ARGS]) {
    if (pszName == nullptr || pulTask == nullptr || pfEntry == nullptr || ulPriority > MAX_PRIORITY || ulOptions != 0)
        return 1;
    auto *start = new (std::nothrow) Start;
    if (start == nullptr)
        return 1;
    start->task = TakeTask(pszName, aulArgs);
    start->entry = pfEntry;
    pthread_t thread;
    if (start->task == nullptr || pthread_create(&thread, nullptr, Run, start) != 0) {
        if (start->task != nullptr)
            FreeTask(start->task);
        delete start;
        return 1;
    }
    pthread_detach(thread);
    *pulTask = NumberOf(start->task);
    /* The thread frees `start` as soon as it may go; the wake-up needs no more than the word's address. */
    std::atomic<uint32_t> *go = &start->go;
    go->store(1, std::memory_order_release);
    FutexWakeAll(go);
    return UVELHOST_OK;
}

void QAL_TaskGetArgs(uintptr_t aulArgs[QAL_TASK_ARGS]) {
    if (aulArgs == nullptr)
        return;
    const Task *task = CurrentTask();
    for (uint32_t i = 0; i < QAL_TASK_ARGS; ++i)
        aulArgs[i] = task == nullptr ? 0 : task->args[i];
}

uint32_t QAL_TaskGetSelf(void) {
    const Task *task = CurrentTask();
    return task == nullptr ? UVELHOST_NONE : NumberOf(task);
}

uint32_t QAL_TaskGetName(uint32_t ulTask, char szName[16]) {
    return szName != nullptr && CopyTaskName(ulTask, szName) ? UVELHOST_OK : 1;
}
