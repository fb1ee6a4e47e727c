/* Tasks, their events, and giving way.
 *
 * A task is a thread with a name and a number. Every task has a word of 32 event bits that others set and that it
 * waits for. Threads that were not made here (the main thread, a library's thread) become tasks at their first call. */
#ifndef UVELHOST_TASK_H
#define UVELHOST_TASK_H

#include "types.h"

/* What a task runs; its return ends the task. */
typedef void (*QAL_TASK_ENTRY)(void);

#define QAL_TASK_ARGS 4U /* words that a task is given */

#define QAL_EVENT_ALL 0U /* wait until all bits of the mask are set */
#define QAL_EVENT_ANY 1U /* wait until one of them is set */

/* Starts a task. The name is cut to 15 characters. ulPriority is 0 to 255 on the platform's scale; the scheduler of
 * Linux is left as it is. ulOptions is reserved (0). aulArgs is copied (null: zeros); the task reads its copy with
 * QAL_TaskGetArgs. *pulTask is written before the entry runs. The task ends when its entry returns; nobody need wait
 * for that. Fails for a null name, id or entry, for another priority or option, when no thread can be made and when the
 * table of tasks (4096) is full. */
UVELHOST_API uint32_t QAL_CreateTask(const char *pszName, uint32_t *pulTask, QAL_TASK_ENTRY pfEntry,
                                     uint32_t ulPriority, uint32_t ulOptions, const uintptr_t aulArgs[QAL_TASK_ARGS]);

/* Arguments that the calling task was created with; zeros for a thread that was not made by QAL_CreateTask. */
UVELHOST_API void QAL_TaskGetArgs(uintptr_t aulArgs[QAL_TASK_ARGS]);

/* Number of the calling task, never 0; 0xFFFFFFFF only for a thread that cannot become a task because the table is
 * full. The number of a task that has ended is not given to another one for a long time. */
UVELHOST_API uint32_t QAL_TaskGetSelf(void);

/* Name of a task (15 characters and terminator), for people to see. Fails for an unknown task and for one that has
 * ended. */
UVELHOST_API uint32_t QAL_TaskGetName(uint32_t ulTask, char szName[16]);

/* Waits until the bits of ulMask are set as ulOptions says, at most ulTimeoutMs (0: does not wait), takes them out of
 * the task's word and writes those it took to *pulEvents (may be null). Only bits of the mask are taken. 1, with
 * *pulEvents untouched, when the time is over, the mask is 0 or the options are unknown. */
UVELHOST_API uint32_t QAL_EventRead(uint32_t ulMask, uint32_t ulOptions, uint32_t ulTimeoutMs, uint32_t *pulEvents);

/* Sets bits in the word of a task and wakes it. Fails for an unknown task and for one that has ended. */
UVELHOST_API uint32_t QAL_EventWrite(uint32_t ulTask, uint32_t ulEvents);

/* Gives way to other tasks when the caller has run for ulHeldMs milliseconds since it last waited in an operation of
 * this host or gave way; a task's first call starts the count. The caller goes on as soon as nobody else wants the
 * processor, after ulDelayMs at the latest as far as the scheduler allows. In the common case nothing but a coarse
 * clock is read. */
UVELHOST_API void QAL_TaskRunDelay(uint32_t ulHeldMs, uint32_t ulDelayMs);

#endif
