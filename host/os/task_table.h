/* Table of tasks. A task's number holds its place in the table and a count of the place's earlier owners, so a number
 * kept beyond the end of its task is recognised. */
#ifndef UVEL_HOST_OS_TASK_TABLE_H
#define UVEL_HOST_OS_TASK_TABLE_H

#include <atomic>
#include <cstdint>

namespace uvel::host {

constexpr uint32_t MAX_TASKS = 4096;
constexpr uint32_t TASK_NAME_SIZE = 16;
constexpr uint32_t TASK_ARGS = 4;

struct Task {
    /* Number in the upper half, 0 while the place is free; event bits in the lower half. One word, so that bits never
     * reach a task other than the one that was meant. */
    std::atomic<uint64_t> state;
    std::atomic<uint32_t> waiting; /* 1 while the task sleeps for its events */
    uint32_t generation;
    uint32_t next_free;
    char name[TASK_NAME_SIZE];
    uintptr_t args[TASK_ARGS];
};

/* Takes a place; null when the table is full. */
Task *TakeTask(const char *name, const uintptr_t *args);
void FreeTask(Task *task);

inline uint32_t NumberOf(uint64_t state) {
    return static_cast<uint32_t>(state >> 32);
}
inline uint32_t NumberOf(const Task *task) {
    return NumberOf(task->state.load(std::memory_order_relaxed));
}

/* The place a number belongs to, whoever owns it now. */
Task *PlaceOfTask(uint32_t number);

/* Name of a task; false when it is unknown or has ended. */
bool CopyTaskName(uint32_t number, char *name);

/* The calling thread's task; a thread that was not made here becomes one until it ends. Null when the table is full. */
Task *CurrentTask();

/* Makes `task` that of the calling thread while this lives. */
class TaskOfThisThread {
  public:
    explicit TaskOfThisThread(Task *task);
    ~TaskOfThisThread();
    TaskOfThisThread(const TaskOfThisThread &) = delete;
    TaskOfThisThread &operator=(const TaskOfThisThread &) = delete;

  private:
    Task *task_;
};

} // namespace uvel::host

#endif
