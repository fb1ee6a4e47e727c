/* Capability set: named items with values that say what the device can do.
 *
 * On Linux the set is a YAML file that UVELHOST_CAPSET_FILE names, by default /etc/uvelhost/capset.yaml: one mapping
 * "items" of names (1 to 127 printable characters without blanks) to numbers (0 to 4294967295, decimal or hexadecimal):
 *
 *     items:
 *       EAPOL_FEATUREID_WLAN: 1
 *       SRV_SPEC_MAX_USER: 4096
 *
 * A file with anything else in it is refused whole; what is wrong is told on standard error, with file, line and column. */
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

/* Takes one item of capset_walk; pContext is what was given there. */
typedef void (*CAPSET_WALK_CB)(const char *pszItem, uint32_t ulValue, void *pContext);

/* Calls pfItem with each item of the open view, in the order of their names as bytes, and with pContext; the name is
 * valid during the call. pfItem may ask and close. Fails for a null callback and without an open view. */
UVELHOST_API uint32_t capset_walk(CAPSET_WALK_CB pfItem, void *pContext);

#endif
