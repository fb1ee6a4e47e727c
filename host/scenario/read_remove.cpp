/* What a scenario takes out of the model. */
#include "scenario/scenario.h"

#include "scenario/values.h"

namespace uvel::host::scenario {

namespace {

using yaml::Fields;
using yaml::Node;

void ReadAddress(const Node &node, Operations &operations) {
    const Fields fields(node, {"interface", "address"});
    const uint32_t if_index = ReadIfIndex(fields.Required("interface"));
    const Prefix prefix = ReadPrefix(fields.Required("address"));
    operations.Add(node, "an address", [=](MDL_BATCH *batch) {
        return prefix.is_ipv6 ? MDL_RemoveAddr6(batch, if_index, prefix.ipv6.data())
                              : MDL_RemoveAddr4(batch, if_index, prefix.ipv4);
    });
}

void ReadVrrp(const Node &node, Operations &operations) {
    const Fields fields(node, {"interface", "address"});
    const uint32_t if_index = ReadIfIndex(fields.Required("interface"));
    const uint32_t addr = ReadIpv4(fields.Required("address"));
    operations.Add(node, "a virtual router", [=](MDL_BATCH *batch) { return MDL_RemoveVrrp(batch, if_index, addr); });
}

void ReadRouteToGo(const Node &node, Operations &operations) {
    operations.Add(node, "a route",
                   [route = ReadRoute(node)](MDL_BATCH *batch) { return MDL_RemoveRoute(batch, &route); });
}

void ReadVlanRange(const Node &node, Operations &operations) {
    const auto [first, last] = ReadVlans(node);
    for (uint32_t vlan = first; vlan <= last; ++vlan)
        operations.Add(node, "a VLAN", [vlan](MDL_BATCH *batch) { return MDL_RemoveVlan(batch, vlan); });
}

/* Something that a number names. */
template <uint32_t (*Remove)(MDL_BATCH *, uint32_t)>
void ReadNumber(const Node &node, Operations &operations) {
    const uint32_t number = ReadU32(node);
    operations.Add(node, "a number", [number](MDL_BATCH *batch) { return Remove(batch, number); });
}

} // namespace

void ReadRemove(const Node &remove, Operations &operations) {
    const Fields fields(remove, {"boards", "vrfs", "vlans", "interfaces", "addresses", "port-vlans", "trunks",
                                 "members", "vrrp", "routes"});
    const auto each = [&](std::string_view key, void (*read)(const Node &, Operations &)) {
        if (const auto list = fields.Optional(key))
            for (const Node &node : list->Items())
                read(node, operations);
    };
    each("routes", ReadRouteToGo);
    each("vrrp", ReadVrrp);
    each("addresses", ReadAddress);
    each("members", ReadNumber<MDL_RemoveMember>);
    each("trunks", ReadNumber<MDL_RemoveTrunk>);
    each("port-vlans", ReadNumber<MDL_RemovePortVlans>);
    each("interfaces", ReadNumber<MDL_RemoveIf>);
    each("vlans", ReadVlanRange);
    each("vrfs", ReadNumber<MDL_RemoveVrf>);
    each("boards", ReadNumber<MDL_RemoveBoard>);
}

} // namespace uvel::host::scenario
