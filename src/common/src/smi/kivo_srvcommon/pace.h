/* Giving way in the loops of the sort. */
#ifndef KIVO_SRVCOMMON_PACE_H
#define KIVO_SRVCOMMON_PACE_H

#include <cstdint>

#include <uvelhost/task.h>

/* Counts one step; before every 64th lets other tasks run when this one has held the processor for long. */
static inline void Pace(uint32_t *pulSteps) {
    if (++*pulSteps % 64 == 0)
        QAL_TaskRunDelay(200, 20);
}

#endif
