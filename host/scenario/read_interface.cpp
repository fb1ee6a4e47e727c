/* Interfaces in scenarios. What a key names is changed, the rest stays as it is. */
#include "scenario/scenario.h"

#include "scenario/values.h"
#include <cstring>
#include <uvelhost/ip.h>
#include <uvelhost/model_view.h>

namespace uvel::host::scenario {

namespace {

using yaml::Fields;
using yaml::Node;

/* Changes one field of a record. */
using Setter = std::function<void(MDL_IF_S &)>;

class Setters {
  public:
    explicit Setters(const Fields &fields) : fields_(fields) {}

    /* The field takes what read(node) answers, where the key stands. */
    template <typename Field, typename Read>
    void Take(std::string_view key, Field MDL_IF_S::*field, Read &&read) {
        if (const auto node = fields_.Optional(key))
            setters_.push_back(
                [field, value = static_cast<Field>(read(*node))](MDL_IF_S &each) { each.*field = value; });
    }

    void Flag(std::string_view key, uint32_t bit) {
        if (const auto node = fields_.Optional(key))
            setters_.push_back([bit, on = node->Flag()](MDL_IF_S &each) {
                each.ulFlags = on ? each.ulFlags | bit : each.ulFlags & ~bit;
            });
    }

    void Text(std::string_view key, char (MDL_IF_S::*field)[IF_NAME_SIZE], size_t min) {
        if (const auto node = fields_.Optional(key))
            setters_.push_back([field, text = node->Text(min, IF_NAME_SIZE - 1)](MDL_IF_S &each) {
                std::memset(each.*field, 0, IF_NAME_SIZE);
                std::memcpy(each.*field, text.data(), text.size());
            });
    }

    void Add(Setter setter) { setters_.push_back(std::move(setter)); }
    std::vector<Setter> All() && { return std::move(setters_); }

  private:
    const Fields &fields_;
    std::vector<Setter> setters_;
};

uint32_t ReadState(const Node &node) {
    return node.OneOf<uint32_t>({{"up", IF_STATE_UP}, {"down", IF_STATE_DOWN}});
}

uint16_t ReadVlanOrNone(const Node &node) {
    return static_cast<uint16_t>(ReadOrNone(node, 4095)); /* "none" is cut to MDL_NO_VLAN */
}

uint32_t ReadPortIndex(const Node &node) {
    return node.IsScalar() && node.Text() == "auto" ? MDL_AUTO : ReadOrNone(node, MDL_MAX_SWITCH_PORTS - 1);
}

std::vector<Setter> ReadSetters(const Fields &fields) {
    Setters setters(fields);
    const auto limited = [](uint32_t max) { return [max](const Node &node) { return ReadOrNone(node, max); }; };
    setters.Text("name", &MDL_IF_S::szName, 1);
    setters.Text("short-name", &MDL_IF_S::szShortName, 0);
    setters.Take("main", &MDL_IF_S::ulMainIfIndex, ReadIfIndex);
    setters.Take("kind", &MDL_IF_S::ulKind, [](const Node &node) {
        return node.OneOf<uint32_t>({{"plain", MDL_IF_PLAIN}, {"vlan", MDL_IF_VLAN}, {"bridge-domain", MDL_IF_VBD}});
    });
    setters.Flag("temporary", MDL_IF_TEMP);
    setters.Flag("management", MDL_IF_ADMIN_ETH);
    setters.Take("port-type", &MDL_IF_S::ulPortType, ReadU32);
    setters.Take("phy-type", &MDL_IF_S::ulPhyType, ReadU32);
    setters.Take("layer", &MDL_IF_S::ulLayer, [](const Node &node) { return node.Number(2, 3); });
    if (const auto node = fields.Optional("state"))
        setters.Add([state = ReadState(*node)](MDL_IF_S &each) {
            each.ulLineState = each.ulIpv6State = each.ulPhyState = state;
        });
    setters.Take("line", &MDL_IF_S::ulLineState, ReadState);
    setters.Take("ipv6", &MDL_IF_S::ulIpv6State, ReadState);
    setters.Take("physical", &MDL_IF_S::ulPhyState, ReadState);
    setters.Take("shutdown", &MDL_IF_S::ulAdminDown, [](const Node &node) { return node.Flag(); });
    setters.Take("slot", &MDL_IF_S::ulSlot, limited(0xFFFE));
    setters.Take("card", &MDL_IF_S::ulCard, limited(0xFFFE));
    setters.Take("port", &MDL_IF_S::ulPort, limited(0xFFFE));
    setters.Take("port-index", &MDL_IF_S::ulPortIndex, ReadPortIndex);
    setters.Take("port-mode", &MDL_IF_S::ulPortMode, [](const Node &node) {
        return node.OneOf<uint32_t>(
            {{"access", L2IF_MODE_ACCESS}, {"trunk", L2IF_MODE_TRUNK}, {"hybrid", L2IF_MODE_HYBRID}});
    });
    setters.Take("vrf", &MDL_IF_S::ulVrf, ReadU32);
    setters.Take("ipv6-vrf", &MDL_IF_S::ulIpv6Vrf, ReadU32);
    setters.Take("bridge-domain", &MDL_IF_S::ulBd, limited(0xFFFF));
    setters.Take("vap", &MDL_IF_S::ulVap, limited(0xFFFFFFFE));
    setters.Take("vlan", &MDL_IF_S::usVlanId, ReadVlanOrNone);
    setters.Take("pvid", &MDL_IF_S::usPvid, ReadVlanOrNone);
    if (const auto node = fields.Optional("mac"))
        setters.Add([mac = ReadMac(*node)](MDL_IF_S &each) { std::memcpy(each.aucMac, mac.data(), mac.size()); });
    return std::move(setters).All();
}

void ReadAddresses(const Node &list, uint32_t if_index, Operations &operations) {
    uint32_t main = 1; /* the first IPv4 address of the list */
    for (const Node &node : list.Items()) {
        const Prefix prefix = ReadPrefix(node);
        if (prefix.is_ipv6) {
            MDL_ADDR6_S addr = {if_index, {}, prefix.length};
            std::memcpy(addr.aucAddr, prefix.ipv6.data(), prefix.ipv6.size());
            operations.Add(node, "an address of an interface",
                           [addr](MDL_BATCH *batch) { return MDL_PutAddr6(batch, &addr); });
            continue;
        }
        const MDL_ADDR4_S addr = {if_index, prefix.ipv4, prefix.length, main, IP_FLAG_CONFIGURED};
        main = 0;
        operations.Add(node, "an address of an interface",
                       [addr](MDL_BATCH *batch) { return MDL_PutAddr4(batch, &addr); });
    }
}

void ReadBitmap(const Fields &fields, std::string_view key, uint32_t (&bitmap)[L2IF_VLAN_BITMAP_WORDS]) {
    const auto list = fields.Optional(key);
    if (!list.has_value())
        return;
    for (const Node &node : list->Items()) {
        const auto [first, last] = ReadVlans(node);
        for (uint32_t vlan = first; vlan <= last; ++vlan)
            bitmap[vlan / 32] |= 1U << vlan % 32;
    }
}

/* All VLANs of the port, whatever it was in before. */
void ReadPortVlans(const Node &node, uint32_t if_index, Operations &operations) {
    const Fields fields(node, {"untagged", "tagged", "dynamic-untagged", "dynamic-tagged"});
    MDL_PORT_VLANS_S vlans = {};
    ReadBitmap(fields, "untagged", vlans.aulUntagged);
    ReadBitmap(fields, "tagged", vlans.aulTagged);
    ReadBitmap(fields, "dynamic-untagged", vlans.aulDynUntagged);
    ReadBitmap(fields, "dynamic-tagged", vlans.aulDynTagged);
    operations.Add(node, "VLANs of a switch port (an interface with a port-index), each tagged or untagged",
                   [vlans, if_index](MDL_BATCH *batch) mutable -> uint32_t {
                       MDL_IF_S interface;
                       if (MDL_GetIf(if_index, &interface) != UVELHOST_OK || interface.ulPortIndex == UVELHOST_NONE)
                           return 1;
                       vlans.ulPortIndex = interface.ulPortIndex;
                       return MDL_PutPortVlans(batch, &vlans);
                   });
}

} // namespace

void ReadInterface(const Node &node, Operations &operations) {
    const Fields fields(node, {"index",      "name",      "short-name", "main",      "kind",          "temporary",
                               "management", "port-type", "phy-type",   "layer",     "state",         "line",
                               "ipv6",       "physical",  "shutdown",   "slot",      "card",          "port",
                               "port-index", "port-mode", "vrf",        "ipv6-vrf",  "bridge-domain", "vap",
                               "vlan",       "pvid",      "mac",        "addresses", "vlans"});
    const uint32_t if_index = ReadIfIndex(fields.Required("index"));
    operations.Add(node,
                   "an interface with a name, a free port-index below the device's max-ports, and the vlan or "
                   "bridge-domain that its kind asks for",
                   [if_index, setters = ReadSetters(fields)](MDL_BATCH *batch) {
                       MDL_IF_S interface;
                       if (MDL_GetIf(if_index, &interface) != UVELHOST_OK)
                           MDL_InitIf(&interface, if_index, nullptr);
                       for (const Setter &set : setters)
                           set(interface);
                       return MDL_PutIf(batch, &interface);
                   });
    if (const auto addresses = fields.Optional("addresses"))
        ReadAddresses(*addresses, if_index, operations);
    if (const auto vlans = fields.Optional("vlans"))
        ReadPortVlans(*vlans, if_index, operations);
}

} // namespace uvel::host::scenario
