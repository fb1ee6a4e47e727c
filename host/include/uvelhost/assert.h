/* Assertions and fatal errors: how the library reports what should not happen.
 *
 * A failed assertion is reported and the caller goes on; it never ends the process. A fatal error ends it. The source
 * text names a module ("src/common/src/smi/kivo_common"), the line a place in it. */
#ifndef UVELHOST_ASSERT_H
#define UVELHOST_ASSERT_H

#include "types.h"

/* Called with the place of a failed assertion and how often it has failed there, this time included. pszSource
 * lives on. */
typedef void (*QAL_ASSERT_HOOK)(const char *pszSource, uint32_t ulLine, uint64_t ulCount);
/* Called with the place of an error that leaves the process unusable. */
typedef void (*QAL_FATAL_HOOK)(const char *pszSource, uint32_t ulLine);

/* Reports a failed assertion: the first time at each place as one line on standard error, afterwards only counted. Uses
 * no memory and no lock, so any thread and any signal handler may call. Places are told apart by the text, not by its
 * address; the text need not outlive the call. */
UVELHOST_API void qal_assert(const char *pszSource, uint32_t ulLine);

/* Reports an error that leaves the process unusable, as one line on standard error, and ends it with SIGABRT. When a
 * fatal hook is installed, that is called instead and this returns when the hook does. */
UVELHOST_API void QALFatalError_X(const char *pszSource, uint32_t ulLine);

/* Failed assertions since start at one place, or at all places when pszSource is null. The host tells 1024 places
 * apart; further ones count only for all places. */
UVELHOST_API uint64_t QAL_AssertGetCount(const char *pszSource, uint32_t ulLine);

/* Installs a function that every failed assertion calls after it was counted, in place of the report on standard error
 * (null: none). ulCount is the count of the place, this time included. */
UVELHOST_API void QAL_AssertSetHook(QAL_ASSERT_HOOK pfHook);

/* Installs a function that is called in place of ending the process (null: none). */
UVELHOST_API void QAL_FatalSetHook(QAL_FATAL_HOOK pfHook);

#endif
