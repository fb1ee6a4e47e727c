/* Execution: on whose behalf a task works, and which task follows which at start-up. */
#ifndef UVELHOST_EXEC_H
#define UVELHOST_EXEC_H

#include "types.h"

/* Id of the user on whose behalf the calling task works at the moment, 0 for the system itself. Inside a notification
 * it is the user who caused the change. Called for every event record: it costs a load. */
UVELHOST_API uint32_t EXEC_GetCurrentUserId(void);

/* Number of the task that the calling task shall tell when its own part of the start-up is done, with bits in that
 * task's word of events (QAL_EventWrite). 0xFFFFFFFF when the process named none; writing to that fails. */
UVELHOST_API uint32_t OXM_GetTaskFollowMe(void);

/* Names that task, for the whole process; said by whoever brings the process up, before it starts the others. */
UVELHOST_API void OXM_SetTaskFollowMe(uint32_t ulTask);

#endif
