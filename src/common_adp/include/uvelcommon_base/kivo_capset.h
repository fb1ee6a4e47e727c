/* Capability set: what the device can do, as named items with 32-bit values.
 *
 * Usage:
 *     if (UVEL_CapSetInit() != KIVO_OK) ...
 *     if (UVEL_GetSpecsByDescr("SRV_SPEC_MAX_USER", &ulMaxUser) != KIVO_OK) ...         // ulMaxUser is 0 then
 *     if (UVEL_IsSupportPortal() == 0) ...                                              // 0: the device supports it
 *
 * Threads: open and close with nobody asking; queries from any thread. */
#ifndef UVELCOMMON_BASE_KIVO_CAPSET_H
#define UVELCOMMON_BASE_KIVO_CAPSET_H

#include <uvelcommon_base/kivo_types.h>

/* Opens this process's view of the set. 0, or 1 and a line of the private log. */
UVEL_API uint32_t UVEL_CapSetInit(void);

/* Closes the view. 0, or 1 and a line of the private log. */
UVEL_API uint32_t UVEL_CapSetDestroy(void);

/* The value of an item. After a failure, which is logged, *pulValue is 0 and the result the host's; with a null argument
 * the result of a failure is 1. The host is asked before the arguments are looked at. */
UVEL_API uint32_t UVEL_GetSpecsByDescr(const char *pszItem, uint32_t *pulValue);

/* 0 when the device supports WLAN, 1 when it does not or the set cannot tell. */
UVEL_API uint32_t UVEL_IsSupportWlan(void);

/* 0 when the device supports the portal, 1 when it does not or the set cannot tell. */
UVEL_API uint32_t UVEL_IsSupportPortal(void);

#endif
