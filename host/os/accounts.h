/* Memory for the host's own code, charged to an account like the library's. Nothing here is an exported operation, so
 * replacing one of those in a test leaves the host's own allocations alone. */
#ifndef UVEL_HOST_OS_ACCOUNTS_H
#define UVEL_HOST_OS_ACCOUNTS_H

#include <cstdint>

namespace uvel::host {

/* Handle of the account of modules that have none of their own. */
constexpr uint32_t MODULE_ACCOUNT = 0;

/* False when the table of accounts is full or memory is short. */
bool OpenAccount(const char *name, uint32_t *account);

/* A block aligned for any object; null when memory is short or the account is unknown. */
void *Allocate(uint32_t account, uint32_t size);

/* Null when memory is short or `block` is no block of ours; `block` is then as it was. */
void *Reallocate(void *block, uint32_t size);

/* False for null and for what can be told to be no block of ours. */
bool Release(void *block);

} // namespace uvel::host

#endif
