/* Book-keeping of how long a thread has run without a pause. */
#ifndef UVEL_HOST_OS_RUN_DELAY_H
#define UVEL_HOST_OS_RUN_DELAY_H

namespace uvel::host {

/* The calling thread has just slept: what it ran before does not count any more. Every waiting operation of the host
 * says this after it slept. */
void NoteSlept();

} // namespace uvel::host

#endif
