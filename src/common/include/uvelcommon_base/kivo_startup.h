/* Bringing the library up.
 *
 * The process's start-up task calls UVEL_GlobalVarInit before anything else of the library is used: it gives the
 * settings their defaults and empties the hook table. KIVO_VirtualToHook then puts the library's own adapters to the
 * host into the table. The product layer installs its hooks, in the place of adapters where it likes, sets its
 * specifications and registers its modules. Nothing of this is ever torn down.
 *
 * Threads: from the start-up task, before other tasks use the library; the once-flags are plain ones. */
#ifndef UVELCOMMON_BASE_KIVO_STARTUP_H
#define UVELCOMMON_BASE_KIVO_STARTUP_H

#include "kivo_types.h"

/* Brings the global tables to their defaults, once per process: a second call returns 1 and changes nothing. Hooks
 * that were installed before are gone, the common and service-common specifications stay as they were set. No memory
 * for the registry of index pools is a fatal error (and 1, should the process go on). */
UVEL_API uint32_t UVEL_GlobalVarInit(void);

/* Installs the library's 46 adapters to the host into the hook table, once per process: a later call does nothing, what
 * the product layer has installed since stays. */
UVEL_API void KIVO_VirtualToHook(void);

/* What KIVO_VirtualToHook does, whenever it is called: overrides what stands under the adapters' hook ids. */
UVEL_API void KIVO_VirtualToHookAdp(void);

#endif
