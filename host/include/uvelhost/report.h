/* Reports: lines for people about what the host cannot do at the moment, and about its end - a configuration database
 * that is away, a standby peer that was turned away, a key file that cannot be used. Each tells the same once in an
 * outage. Failed assertions and fatal errors (assert.h) take another way, since they may not allocate or lock. */
#ifndef UVELHOST_REPORT_H
#define UVELHOST_REPORT_H

#include "types.h"

/* One line without its end, valid during the call only. Called on any thread; must not call what may report. */
typedef void (*QAL_REPORT_HOOK)(const char *pszLine);

/* Reports go to this function from now on; null: as at the start, to standard error, behind "uvelhost: ". */
UVELHOST_API void QAL_ReportSetHook(QAL_REPORT_HOOK pfHook);

#endif
