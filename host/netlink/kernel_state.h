/* What the kernel has, as far as it was read. */
#ifndef UVEL_HOST_NETLINK_KERNEL_STATE_H
#define UVEL_HOST_NETLINK_KERNEL_STATE_H

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "netlink/messages.h"
#include <uvelhost/l2if.h>

namespace uvel::host::netlink {

constexpr uint32_t VLAN_IDS = 4096;

using VlanBitmap = std::array<uint32_t, L2IF_VLAN_BITMAP_WORDS>;

inline bool Has(const VlanBitmap &vlans, uint32_t vlan) {
    return (vlans[vlan / 32] >> vlan % 32 & 1) != 0;
}

inline void Set(VlanBitmap &vlans, uint32_t vlan, bool on) {
    const uint32_t bit = 1U << vlan % 32;
    vlans[vlan / 32] = on ? vlans[vlan / 32] | bit : vlans[vlan / 32] & ~bit;
}

/* VLANs of a bridge or of a port of one. */
struct Vlans {
    VlanBitmap untagged = {};
    VlanBitmap tagged = {};
    uint16_t pvid = 0; /* 0: none */

    bool operator==(const Vlans &) const = default;
};

struct KernelState {
    std::map<uint32_t, Link> links;
    std::map<uint32_t, std::vector<Address>> addresses; /* of an interface, oldest first */
    std::map<uint32_t, Vlans> vlans;

    const Link *Find(uint32_t index) const {
        const auto found = links.find(index);
        return found == links.end() ? nullptr : &found->second;
    }
};

} // namespace uvel::host::netlink

#endif
