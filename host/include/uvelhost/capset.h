/* Capability set: named items with values that say what the device can do. */
#ifndef UVELHOST_CAPSET_H
#define UVELHOST_CAPSET_H

#include "types.h"

/* Opens this process's view of the set; what the items hold is fixed from then on. Again without capset_destroy is a
 * success. Fails, with a reason for people to see, when the set cannot be read. */
UVELHOST_API uint32_t capset_init(void);

/* Closes the view. Fails when none is open. */
UVELHOST_API uint32_t capset_destroy(void);

/* Writes the value of an item, in host byte order, and its size in bytes. *pulSize is the room on the way in; every
 * item of this host is a u32, so 4. Fails, with both untouched, for null arguments, without an open view, for an
 * unknown item and when the value does not fit. Callers may ask with null arguments and rely on the failure. */
UVELHOST_API uint32_t capset_query_with_itemname(const char *pszItem, void *pValue, uint32_t *pulSize);

#endif
