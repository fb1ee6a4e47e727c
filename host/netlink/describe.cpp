#include "netlink/describe.h"

#include <algorithm>
#include <bit>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <uvelhost/netlink.h>

namespace uvel::host::netlink {

namespace {

constexpr uint32_t BRIDGE_DOMAINS = 0x10000;

bool IsPhysical(const Link &link) {
    return link.hardware == ARPHRD_ETHER && (link.kind.empty() || link.kind == "veth");
}

uint32_t PortType(const Link &link) {
    if (link.hardware == ARPHRD_LOOPBACK)
        return NLF_PORT_TYPE_LOOPBACK;
    return IsPhysical(link) ? NLF_PORT_TYPE_ETHERNET : NLF_PORT_TYPE_OTHER;
}

/* Devices that have no operational state of their own leave it unknown. */
bool IsLineUp(const Link &link) {
    return link.carrier && (link.operational == IF_OPER_UP || link.operational == IF_OPER_UNKNOWN);
}

uint32_t State(bool up) {
    return up ? IF_STATE_UP : IF_STATE_DOWN;
}

bool IsFilteringBridge(const Link *link) {
    return link != nullptr && link->kind == "bridge" && link->filters;
}

void DescribeVlanDevice(const KernelState &state, const Link &link, MDL_IF_S &record) {
    const Link *lower = state.Find(link.lower);
    record.usVlanId = link.vlan;
    if (lower != nullptr && lower->kind == "bridge")
        record.ulKind = MDL_IF_VLAN;
    else if (lower != nullptr)
        record.ulMainIfIndex = link.lower;
}

uint32_t CountOf(const VlanBitmap &vlans) {
    uint32_t count = 0;
    for (uint32_t word : vlans)
        count += static_cast<uint32_t>(std::popcount(word));
    return count;
}

/* One untagged VLAN alone: access; tagged ones and at most the port's own untagged: trunk; anything else: hybrid. */
uint32_t PortMode(const Vlans &vlans) {
    const uint32_t untagged = CountOf(vlans.untagged);
    if (untagged > 1)
        return L2IF_MODE_HYBRID;
    return CountOf(vlans.tagged) == 0 ? L2IF_MODE_ACCESS : L2IF_MODE_TRUNK;
}

void DescribePort(const KernelState &state, const Link &link, MDL_IF_S &record) {
    record.ulLayer = 2;
    if (!IsFilteringBridge(state.Find(link.master))) {
        record.ulBd = link.master < BRIDGE_DOMAINS ? link.master : UVELHOST_NONE;
        return;
    }
    const Vlans vlans = EffectiveVlans(state, link);
    record.ulPortMode = PortMode(vlans);
    record.usPvid = vlans.pvid != 0 ? vlans.pvid : static_cast<uint16_t>(MDL_NO_VLAN);
}

uint32_t VrfOf(const KernelState &state, const Link &link) {
    if (IsVrf(link))
        return link.table;
    if (link.port_kind != "vrf" || link.master == 0)
        return 0;
    const Link *master = state.Find(link.master);
    return link.port_table != 0 || master == nullptr ? link.port_table : master->table;
}

} // namespace

Vlans EffectiveVlans(const KernelState &state, const Link &link) {
    const bool counts = IsSwitchPort(link) ? IsFilteringBridge(state.Find(link.master)) : IsFilteringBridge(&link);
    const auto found = state.vlans.find(link.index);
    return counts && found != state.vlans.end() ? found->second : Vlans{};
}

MDL_IF_S DescribeLink(const KernelState &state, const Link &link, uint32_t slot) {
    MDL_IF_S record;
    MDL_InitIf(&record, link.index, link.name.c_str());
    record.ulPortType = record.ulPhyType = PortType(link);
    record.ulPhyState = State(link.carrier);
    record.ulLineState = record.ulIpv6State = State(IsLineUp(link));
    record.ulAdminDown = (link.flags & IFF_UP) == 0;
    record.ulVrf = record.ulIpv6Vrf = VrfOf(state, link);
    std::copy(link.mac.begin(), link.mac.end(), record.aucMac);
    if (IsPhysical(link))
        record.ulSlot = slot;
    if (link.kind == "vlan")
        DescribeVlanDevice(state, link, record);
    if (link.kind == "bridge" && !link.filters && link.index < BRIDGE_DOMAINS) {
        record.ulKind = MDL_IF_VBD;
        record.ulBd = link.index;
    }
    if (IsSwitchPort(link))
        DescribePort(state, link, record);
    return record;
}

bool ConcernsOthers(const Link &before, const Link &after) {
    return before.kind != after.kind || before.filters != after.filters || before.table != after.table;
}

} // namespace uvel::host::netlink
