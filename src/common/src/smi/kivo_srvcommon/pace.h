/* Giving way in the loops of the sort. */
#ifndef KIVO_SRVCOMMON_PACE_H
#define KIVO_SRVCOMMON_PACE_H

#include <cstdint>

#include <uvelhost/task.h>

/* Counts one step; before every EVERYth lets other tasks run when this one has held the processor for long. */
template <uint32_t EVERY = 64>
static inline void Pace(uint32_t *pulSteps) {
    if (++*pulSteps % EVERY == 0)
        QAL_TaskRunDelay(200, 20);
}

#endif
