/* What the kernel's messages say, as plain records. */
#ifndef UVEL_HOST_NETLINK_MESSAGES_H
#define UVEL_HOST_NETLINK_MESSAGES_H

#include <array>
#include <cstdint>
#include <functional>
#include <libmnl/libmnl.h>
#include <string>

namespace uvel::host::netlink {

struct Link {
    uint32_t index = 0;
    uint32_t hardware = 0;   /* ARPHRD_* */
    uint32_t flags = 0;      /* IFF_* */
    uint32_t master = 0;     /* 0: none */
    uint32_t lower = 0;      /* 0: none in this namespace */
    uint32_t table = 0;      /* of a vrf */
    uint32_t port_table = 0; /* of a member of a vrf */
    uint16_t vlan = 0;       /* of a vlan device */
    uint8_t operational = 0;
    bool carrier = false;
    bool filters = false; /* a bridge that filters VLANs */
    bool active = false;  /* member of a bond that may send */
    std::array<uint8_t, 6> mac = {};
    std::string name;
    std::string kind;
    std::string port_kind;

    bool operator==(const Link &) const = default;
};

struct Address {
    uint32_t if_index = 0;
    uint32_t flags = 0; /* IFA_F_* */
    uint8_t family = 0;
    uint8_t prefix_len = 0;
    std::array<uint8_t, 16> bytes = {};

    bool operator==(const Address &) const = default;
    bool SameAs(const Address &other) const {
        return if_index == other.if_index && family == other.family && prefix_len == other.prefix_len &&
               bytes == other.bytes;
    }
};

/* VLANs of a bridge or of a port of one. */
struct VlanRange {
    uint32_t if_index;
    uint16_t first;
    uint16_t last;
    bool untagged;
    bool pvid;
};

/* False for a message that is not about a device as such, and for one that makes no sense. */
bool ReadLink(const nlmsghdr *message, Link &link);
bool ReadAddress(const nlmsghdr *message, Address &address);
void ReadVlans(const nlmsghdr *message, const std::function<void(const VlanRange &)> &visit);

} // namespace uvel::host::netlink

#endif
