/* Functions that modules registered to be told of a complete batch backup of the peer. */
#ifndef UVEL_HOST_STANDBY_BATCH_FINISH_H
#define UVEL_HOST_STANDBY_BATCH_FINISH_H

namespace uvel::host::standby {

/* Calls them in the order of registration. One may register others meanwhile. */
void CallBatchFinish();

} // namespace uvel::host::standby

#endif
