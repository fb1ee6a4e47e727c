#include "os/task_table.h"

#include <cstring>
#include <mutex>
#include <pthread.h>
#include <sys/prctl.h>

namespace uvel::host {

namespace {

constexpr uint32_t INDEX_BITS = 12;
constexpr uint32_t GENERATIONS = 1U << (32 - INDEX_BITS);
static_assert(MAX_TASKS == 1U << INDEX_BITS);

Task g_tasks[MAX_TASKS];
std::mutex g_lock; /* everything in the table but `state` and `waiting` of a task that lives */

/* Free places in the order in which they were given back, so that a number rests as long as possible. Places that were
 * never used follow. */
uint32_t g_first_free = MAX_TASKS;
uint32_t g_last_free = MAX_TASKS;
uint32_t g_used_once = 0;

constinit thread_local Task *t_task __attribute__((tls_model("initial-exec"))) = nullptr;

pthread_key_t g_exit_key;
bool g_exit_key_made = false;

uint32_t TakeIndex() {
    if (g_used_once < MAX_TASKS)
        return g_used_once++;
    uint32_t index = g_first_free;
    if (index != MAX_TASKS)
        g_first_free = g_tasks[index].next_free;
    return index;
}

void AtThreadEnd(void *task) {
    t_task = nullptr;
    FreeTask(static_cast<Task *>(task));
}

bool MakeExitKey() {
    std::lock_guard lock(g_lock);
    g_exit_key_made = g_exit_key_made || pthread_key_create(&g_exit_key, AtThreadEnd) == 0;
    return g_exit_key_made;
}

} // namespace

Task *TakeTask(const char *name, const uintptr_t *args) {
    std::lock_guard lock(g_lock);
    uint32_t index = TakeIndex();
    if (index == MAX_TASKS)
        return nullptr;
    Task &task = g_tasks[index];
    /* generation 0 and the highest one are left out: no number is 0 or 0xFFFFFFFF */
    task.generation = task.generation % (GENERATIONS - 2) + 1;
    task.waiting.store(0, std::memory_order_relaxed);
    std::memset(task.name, 0, sizeof task.name);
    std::memcpy(task.name, name, strnlen(name, sizeof task.name - 1));
    for (uint32_t i = 0; i < TASK_ARGS; ++i)
        task.args[i] = args == nullptr ? 0 : args[i];
    uint32_t number = task.generation << INDEX_BITS | index;
    task.state.store(uint64_t{number} << 32, std::memory_order_release);
    return &task;
}

void FreeTask(Task *task) {
    std::lock_guard lock(g_lock);
    auto index = static_cast<uint32_t>(task - g_tasks);
    task->state.store(0, std::memory_order_release);
    task->next_free = MAX_TASKS;
    if (g_first_free == MAX_TASKS)
        g_first_free = index;
    else
        g_tasks[g_last_free].next_free = index;
    g_last_free = index;
}

Task *PlaceOfTask(uint32_t number) {
    return &g_tasks[number % MAX_TASKS];
}

bool CopyTaskName(uint32_t number, char *name) {
    std::lock_guard lock(g_lock);
    const Task *task = PlaceOfTask(number);
    if (number == 0 || NumberOf(task) != number)
        return false;
    std::memcpy(name, task->name, sizeof task->name);
    return true;
}

TaskOfThisThread::TaskOfThisThread(Task *task) : task_(task) {
    t_task = task;
}

TaskOfThisThread::~TaskOfThisThread() {
    t_task = nullptr;
    FreeTask(task_);
}

Task *CurrentTask() {
    if (t_task != nullptr)
        return t_task;
    if (!MakeExitKey())
        return nullptr;
    char name[TASK_NAME_SIZE] = {};
    prctl(PR_GET_NAME, name);
    Task *task = TakeTask(name, nullptr);
    if (task != nullptr && pthread_setspecific(g_exit_key, task) != 0) {
        FreeTask(task);
        task = nullptr;
    }
    t_task = task;
    return task;
}

} // namespace uvel::host
