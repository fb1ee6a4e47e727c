/* What a link of the kernel is in the terms of the model. */
#ifndef UVEL_HOST_NETLINK_DESCRIBE_H
#define UVEL_HOST_NETLINK_DESCRIBE_H

#include "netlink/kernel_state.h"
#include <uvelhost/model.h>

namespace uvel::host::netlink {

inline bool IsSwitchPort(const Link &link) {
    return link.port_kind == "bridge" && link.master != 0;
}

inline bool IsTrunkMember(const Link &link) {
    return link.port_kind == "bond" && link.master != 0;
}

inline bool IsBond(const Link &link) {
    return link.kind == "bond";
}

inline bool IsVrf(const Link &link) {
    return link.kind == "vrf" && link.table != 0;
}

/* The VLANs that count: those of a bridge that filters and of its ports. */
Vlans EffectiveVlans(const KernelState &state, const Link &link);

/* The interface record without port index. */
MDL_IF_S DescribeLink(const KernelState &state, const Link &link, uint32_t slot);

/* Whether links that stand on or in this one look otherwise since it changed. */
bool ConcernsOthers(const Link &before, const Link &after);

} // namespace uvel::host::netlink

#endif
