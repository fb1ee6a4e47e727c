/* What the model asks of the kernel: interfaces up and down, routes to users. */
#ifndef UVEL_HOST_NETLINK_REQUESTS_H
#define UVEL_HOST_NETLINK_REQUESTS_H

namespace uvel::host::netlink {

/* Has the model's requests carried out in the network namespace of the calling thread. False when the kernel refuses. */
bool BeginRequests();
void EndRequests();

} // namespace uvel::host::netlink

#endif
