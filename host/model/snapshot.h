/* One state of the whole model. Published snapshots never change. */
#ifndef UVEL_HOST_MODEL_SNAPSHOT_H
#define UVEL_HOST_MODEL_SNAPSHOT_H

#include "model/table.h"
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <uvelhost/model.h>

namespace uvel::host::model {

/* Two numbers, ordered by the first. */
constexpr uint64_t Pair(uint32_t first, uint32_t second) {
    return uint64_t{first} << 32 | second;
}
constexpr uint32_t First(uint64_t pair) {
    return static_cast<uint32_t>(pair >> 32);
}
constexpr uint32_t Second(uint64_t pair) {
    return static_cast<uint32_t>(pair);
}

/* A name that need not be unique, and the object's number. */
template <std::size_t Size>
struct NameKey {
    char name[Size];
    uint32_t number;

    std::strong_ordering operator<=>(const NameKey &other) const {
        const int order = std::strncmp(name, other.name, Size);
        return order != 0 ? order <=> 0 : number <=> other.number;
    }
    bool operator==(const NameKey &other) const { return (*this <=> other) == 0; }
};

/* `name` has no more than Size - 1 characters. */
template <std::size_t Size>
NameKey<Size> MakeNameKey(const char *name, uint32_t number) {
    NameKey<Size> key = {};
    std::memcpy(key.name, name, strnlen(name, Size - 1));
    key.number = number;
    return key;
}

using IfNameKey = NameKey<IF_NAME_SIZE>;
using VrfNameKey = NameKey<VRF_NAME_SIZE>;

struct Addr6Key {
    uint32_t if_index;
    std::array<uint8_t, 16> addr;
    auto operator<=>(const Addr6Key &) const = default;
};

struct RouteKey {
    uint32_t vrf, addr, prefix_len, if_index, next_hop;
    auto operator<=>(const RouteKey &) const = default;
};

/* An address and its age: of an interface's addresses the one with the lower number is older. */
struct Addr4 {
    MDL_ADDR4_S addr;
    uint32_t age;
};

static_assert(sizeof(Link) + offsetof(MDL_IF_S, ulVrf) + sizeof(uint32_t) <= CACHE_LINE,
              "what is asked for most lies in the line that says what is shown");

struct Snapshot {
    uint64_t version = 1;
    const Snapshot *before = nullptr; /* for readers that came while this one was being published */
    MDL_DEVICE_S device = {UVELHOST_NONE, 0, 0, 4096, 0, {}, {}, 0, {}};

    Table<uint32_t, MDL_BOARD_S> boards;
    Table<uint32_t, MDL_IF_S> interfaces;
    Table<uint64_t, Addr4> addr4; /* by (interface, address) */
    Table<Addr6Key, MDL_ADDR6_S> addr6;
    Table<uint32_t, MDL_VLAN_S> vlans;
    Table<uint32_t, MDL_PORT_VLANS_S> port_vlans; /* by port index */
    Table<uint32_t, MDL_TRUNK_S> trunks;          /* by trunk index */
    Table<uint32_t, MDL_MEMBER_S> members;        /* by interface */
    Table<uint32_t, MDL_VRF_S> vrfs;
    Table<uint64_t, MDL_VRRP_S> vrrp; /* by (interface, address) */
    Table<RouteKey, MDL_ROUTE_S> routes;

    /* The same objects by what else they are asked for. */
    SortedMap<IfNameKey, uint32_t> interfaces_by_name;
    SortedMap<VrfNameKey, uint32_t> vrfs_by_name;
    SortedMap<uint32_t, uint32_t> interface_of_port;
    SortedMap<uint64_t, uint32_t> sub_interfaces;  /* (main interface, sub-interface) */
    SortedMap<uint64_t, uint32_t> vlan_interfaces; /* (VLAN, interface) */
    SortedMap<uint64_t, uint32_t> bd_interfaces;   /* (bridge domain, interface) */
    SortedMap<uint32_t, uint32_t> trunk_by_id;
    SortedMap<uint32_t, uint32_t> trunk_by_interface;
    SortedMap<uint64_t, uint32_t> members_of_trunk; /* (trunk id, interface) */

    void SetVersion(uint64_t to) {
        version = to;
        boards.SetVersion(to);
        interfaces.SetVersion(to);
        addr4.SetVersion(to);
        addr6.SetVersion(to);
        vlans.SetVersion(to);
        port_vlans.SetVersion(to);
        trunks.SetVersion(to);
        members.SetVersion(to);
        vrfs.SetVersion(to);
        vrrp.SetVersion(to);
        routes.SetVersion(to);
    }
};

inline bool IsIfIndex(uint32_t if_index) {
    return if_index != 0 && if_index != UVELHOST_NONE;
}

/* Whether a VLAN, 0 to 4095, is in a bitmap. */
inline bool Has(const uint32_t *bitmap, uint32_t vlan) {
    return (bitmap[vlan / 32] >> vlan % 32 & 1) != 0;
}

/* Whether a port is in a VLAN, by configuration or without. */
inline bool IsInVlan(const MDL_PORT_VLANS_S &vlans, uint32_t vlan) {
    return Has(vlans.aulUntagged, vlan) || Has(vlans.aulTagged, vlan) || Has(vlans.aulDynUntagged, vlan) ||
           Has(vlans.aulDynTagged, vlan);
}

/* What an administrative "down" leaves of a state. */
inline uint32_t Effective(const MDL_IF_S &interface, uint32_t state) {
    return interface.ulAdminDown != 0 ? IF_STATE_DOWN : state;
}

} // namespace uvel::host::model

#endif
