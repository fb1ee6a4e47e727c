/* What the kernel's messages say, as plain records. */
#ifndef UVEL_HOST_NETLINK_MESSAGES_H
#define UVEL_HOST_NETLINK_MESSAGES_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <libmnl/libmnl.h>
#include <span>
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

/* The messages of a datagram, in their order. A length that leaves the datagram ends the walk; mnl_nlmsg_ok takes one of
 * 2 GiB and more for a negative number, and would go on. */
class Messages {
  public:
    explicit Messages(std::span<const std::byte> datagram) : datagram_(datagram) {}

    class Iterator {
      public:
        explicit Iterator(std::span<const std::byte> rest) : rest_(rest) {}
        const nlmsghdr *operator*() const { return reinterpret_cast<const nlmsghdr *>(rest_.data()); }
        Iterator &operator++() {
            const std::size_t step =
                (std::size_t{(**this)->nlmsg_len} + NLMSG_ALIGNTO - 1) / NLMSG_ALIGNTO * NLMSG_ALIGNTO;
            rest_ = rest_.subspan(std::min(step, rest_.size()));
            return *this;
        }
        bool operator!=(std::default_sentinel_t) const {
            return rest_.size() >= sizeof(nlmsghdr) && (**this)->nlmsg_len >= sizeof(nlmsghdr) &&
                   (**this)->nlmsg_len <= rest_.size();
        }

      private:
        std::span<const std::byte> rest_;
    };
    Iterator begin() const { return Iterator(datagram_); }
    std::default_sentinel_t end() const { return {}; }

  private:
    std::span<const std::byte> datagram_;
};

/* False for a message that is not about a device as such, and for one that makes no sense. */
bool ReadLink(const nlmsghdr *message, Link &link);
bool ReadAddress(const nlmsghdr *message, Address &address);
void ReadVlans(const nlmsghdr *message, const std::function<void(const VlanRange &)> &visit);

} // namespace uvel::host::netlink

#endif
