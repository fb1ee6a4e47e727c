/* Bringing the library up.
 *
 * The process's start-up task calls UVEL_GlobalVarInit before anything else of the library is used: it gives the
 * settings their defaults and empties the hook table. The product layer then installs its hooks, sets its
 * specifications and registers its modules. Nothing of this is ever torn down.
 *
 * Threads: from the start-up task, before other tasks use the library; the once-flag is a plain one. */
#ifndef UVELCOMMON_BASE_KIVO_STARTUP_H
#define UVELCOMMON_BASE_KIVO_STARTUP_H

#include "kivo_types.h"

/* Brings the global tables to their defaults, once per process: a second call returns 1 and changes nothing. Hooks
 * that were installed before are gone, the common and service-common specifications stay as they were set. No memory
 * for the registry of index pools is a fatal error (and 1, should the process go on). */
UVEL_API uint32_t UVEL_GlobalVarInit(void);

#endif
