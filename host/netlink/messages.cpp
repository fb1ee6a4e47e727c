#include "netlink/messages.h"

#include <cstring>
#include <iterator>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

namespace uvel::host::netlink {

namespace {

/* The attributes behind a message's head of `head_size` bytes, or within an attribute. One that does not fit ends the
 * walk. */
class Attributes {
  public:
    Attributes(const nlmsghdr *message, std::size_t head_size)
        : first_(static_cast<const nlattr *>(mnl_nlmsg_get_payload_offset(message, head_size))),
          end_(static_cast<const char *>(mnl_nlmsg_get_payload_tail(message))) {}
    explicit Attributes(const nlattr *parent)
        : first_(static_cast<const nlattr *>(mnl_attr_get_payload(parent))),
          end_(static_cast<const char *>(mnl_attr_get_payload(parent)) + mnl_attr_get_payload_len(parent)) {}

    struct Iterator {
        const nlattr *attribute;
        const char *end;
        const nlattr *operator*() const { return attribute; }
        Iterator &operator++() {
            attribute = mnl_attr_next(attribute);
            return *this;
        }
        bool operator!=(std::default_sentinel_t) const {
            return mnl_attr_ok(attribute, static_cast<int>(end - reinterpret_cast<const char *>(attribute)));
        }
    };
    Iterator begin() const { return {first_, end_}; }
    std::default_sentinel_t end() const { return {}; }

  private:
    const nlattr *first_;
    const char *end_;
};

/* A number of at most 32 bits; 0 for an attribute that is too short for it. */
template <typename Number>
Number NumberOf(const nlattr *attribute) {
    Number number = 0;
    if (mnl_attr_get_payload_len(attribute) >= sizeof number)
        std::memcpy(&number, mnl_attr_get_payload(attribute), sizeof number);
    return number;
}

std::string TextOf(const nlattr *attribute) {
    const auto *text = static_cast<const char *>(mnl_attr_get_payload(attribute));
    return {text, strnlen(text, mnl_attr_get_payload_len(attribute))};
}

template <std::size_t SIZE>
bool CopyBytes(const nlattr *attribute, std::array<uint8_t, SIZE> &bytes, std::size_t size = SIZE) {
    if (mnl_attr_get_payload_len(attribute) != size)
        return false;
    std::memcpy(bytes.data(), mnl_attr_get_payload(attribute), size);
    return true;
}

void ReadKindData(const nlattr *data, Link &link) {
    for (const nlattr *attribute : Attributes(data)) {
        const uint16_t type = mnl_attr_get_type(attribute);
        if (link.kind == "vlan" && type == IFLA_VLAN_ID)
            link.vlan = NumberOf<uint16_t>(attribute);
        else if (link.kind == "vrf" && type == IFLA_VRF_TABLE)
            link.table = NumberOf<uint32_t>(attribute);
        else if (link.kind == "bridge" && type == IFLA_BR_VLAN_FILTERING)
            link.filters = NumberOf<uint8_t>(attribute) != 0;
    }
}

void ReadPortData(const nlattr *data, Link &link) {
    constexpr uint8_t BOND_ACTIVE = 0;
    for (const nlattr *attribute : Attributes(data)) {
        const uint16_t type = mnl_attr_get_type(attribute);
        if (link.port_kind == "vrf" && type == IFLA_VRF_PORT_TABLE)
            link.port_table = NumberOf<uint32_t>(attribute);
        else if (link.port_kind == "bond" && type == IFLA_BOND_SLAVE_STATE)
            link.active = NumberOf<uint8_t>(attribute) == BOND_ACTIVE;
    }
}

/* The kinds say how the data that belongs to them reads, so they are looked for first. */
void ReadKinds(const nlattr *info, Link &link) {
    for (const nlattr *attribute : Attributes(info)) {
        if (mnl_attr_get_type(attribute) == IFLA_INFO_KIND)
            link.kind = TextOf(attribute);
        else if (mnl_attr_get_type(attribute) == IFLA_INFO_SLAVE_KIND)
            link.port_kind = TextOf(attribute);
    }
    for (const nlattr *attribute : Attributes(info)) {
        if (mnl_attr_get_type(attribute) == IFLA_INFO_DATA)
            ReadKindData(attribute, link);
        else if (mnl_attr_get_type(attribute) == IFLA_INFO_SLAVE_DATA)
            ReadPortData(attribute, link);
    }
}

} // namespace

bool ReadLink(const nlmsghdr *message, Link &link) {
    const auto *head = static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(message));
    if (mnl_nlmsg_get_payload_len(message) < sizeof *head || head->ifi_family != AF_UNSPEC || head->ifi_index <= 0)
        return false;
    link = {};
    link.index = static_cast<uint32_t>(head->ifi_index);
    link.hardware = head->ifi_type;
    link.flags = head->ifi_flags;
    link.carrier = (head->ifi_flags & IFF_LOWER_UP) != 0;
    bool elsewhere = false; /* the lower device lives in another namespace: its index means nothing here */
    for (const nlattr *attribute : Attributes(message, sizeof *head)) {
        switch (mnl_attr_get_type(attribute)) {
        case IFLA_IFNAME:
            link.name = TextOf(attribute);
            break;
        case IFLA_ADDRESS:
            (void)CopyBytes(attribute, link.mac);
            break;
        case IFLA_MASTER:
            link.master = NumberOf<uint32_t>(attribute);
            break;
        case IFLA_LINK:
            link.lower = NumberOf<uint32_t>(attribute);
            break;
        case IFLA_LINK_NETNSID:
            elsewhere = true;
            break;
        case IFLA_OPERSTATE:
            link.operational = NumberOf<uint8_t>(attribute);
            break;
        case IFLA_CARRIER:
            link.carrier = NumberOf<uint8_t>(attribute) != 0;
            break;
        case IFLA_LINKINFO:
            ReadKinds(attribute, link);
            break;
        default:
            break;
        }
    }
    if (elsewhere || link.lower == link.index)
        link.lower = 0;
    return !link.name.empty(); /* messages about one aspect of a device bear no name */
}

bool ReadAddress(const nlmsghdr *message, Address &address) {
    const auto *head = static_cast<const ifaddrmsg *>(mnl_nlmsg_get_payload(message));
    if (mnl_nlmsg_get_payload_len(message) < sizeof *head ||
        (head->ifa_family != AF_INET && head->ifa_family != AF_INET6) || head->ifa_index == 0)
        return false;
    const std::size_t size = head->ifa_family == AF_INET ? 4 : 16;
    address = {head->ifa_index, head->ifa_flags, head->ifa_family, head->ifa_prefixlen, {}};
    bool local = false, any = false;
    for (const nlattr *attribute : Attributes(message, sizeof *head)) {
        switch (mnl_attr_get_type(attribute)) {
        case IFA_LOCAL:
            any = local = CopyBytes(attribute, address.bytes, size);
            break;
        case IFA_ADDRESS: /* of a link between two: the other end's, when there is a local one */
            any = local || CopyBytes(attribute, address.bytes, size);
            break;
        case IFA_FLAGS:
            address.flags = NumberOf<uint32_t>(attribute);
            break;
        default:
            break;
        }
    }
    return any;
}

void ReadVlans(const nlmsghdr *message, const std::function<void(const VlanRange &)> &visit) {
    const auto *head = static_cast<const br_vlan_msg *>(mnl_nlmsg_get_payload(message));
    if (mnl_nlmsg_get_payload_len(message) < sizeof *head || head->family != AF_BRIDGE)
        return;
    for (const nlattr *entry : Attributes(message, sizeof *head)) {
        if (mnl_attr_get_type(entry) != BRIDGE_VLANDB_ENTRY)
            continue;
        bridge_vlan_info info = {};
        uint16_t last = 0;
        for (const nlattr *attribute : Attributes(entry)) {
            if (mnl_attr_get_type(attribute) == BRIDGE_VLANDB_ENTRY_INFO &&
                mnl_attr_get_payload_len(attribute) >= sizeof info)
                std::memcpy(&info, mnl_attr_get_payload(attribute), sizeof info);
            else if (mnl_attr_get_type(attribute) == BRIDGE_VLANDB_ENTRY_RANGE)
                last = NumberOf<uint16_t>(attribute);
        }
        if (last == 0)
            last = info.vid;
        if (info.vid != 0 && info.vid <= last && last < 4096)
            visit({head->ifindex, info.vid, last, (info.flags & BRIDGE_VLAN_INFO_UNTAGGED) != 0,
                   (info.flags & BRIDGE_VLAN_INFO_PVID) != 0});
    }
}

} // namespace uvel::host::netlink
