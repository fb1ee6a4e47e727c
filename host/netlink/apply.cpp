/* Messages of the kernel: into the state, and, once everything has been read, each at once into the model. */
#include "netlink/feeder.h"

#include <algorithm>
#include <linux/rtnetlink.h>
#include <set>
#include <utility>

namespace uvel::host::netlink {

namespace {

bool CanHaveVlans(const Link &link) {
    return link.kind == "bridge" || link.port_kind == "bridge";
}

void SetVlans(Vlans &vlans, const VlanRange &range, bool there) {
    for (uint32_t vlan = range.first; vlan <= range.last; ++vlan) {
        Set(vlans.untagged, vlan, there && range.untagged);
        Set(vlans.tagged, vlan, there && !range.untagged);
    }
    if (there && range.pvid)
        vlans.pvid = range.first;
    else if (vlans.pvid >= range.first && vlans.pvid <= range.last)
        vlans.pvid = 0;
}

} // namespace

void Feeder::Apply(const nlmsghdr *message) {
    messages_.fetch_add(1, std::memory_order_relaxed);
    switch (message->nlmsg_type) {
    case RTM_NEWLINK:
        return ApplyLink(message);
    case RTM_DELLINK:
        return ApplyLinkGone(message);
    case RTM_NEWADDR:
    case RTM_DELADDR:
        return ApplyAddress(message, message->nlmsg_type == RTM_NEWADDR);
    case RTM_NEWVLAN:
    case RTM_DELVLAN:
        return ApplyVlans(message, message->nlmsg_type == RTM_NEWVLAN);
    default:
        return;
    }
}

/* The kernel repeats itself: what is as it was is not written. */
void Feeder::ApplyLink(const nlmsghdr *message) {
    Link link;
    if (!ReadLink(message, link))
        return;
    std::optional<Link> before;
    if (const auto found = state_.links.find(link.index); found != state_.links.end()) {
        if (found->second == link)
            return;
        before = std::move(found->second);
    }
    if (!CanHaveVlans(link) || (before.has_value() && before->master != link.master))
        state_.vlans.erase(link.index);
    const Link &current = state_.links[link.index] = std::move(link);
    if (!loading_)
        writer_.PutLink(state_, current, before.has_value() ? &*before : nullptr);
}

void Feeder::ApplyLinkGone(const nlmsghdr *message) {
    Link link;
    if (!ReadLink(message, link))
        return;
    auto node = state_.links.extract(link.index);
    if (node.empty())
        return;
    state_.addresses.erase(link.index);
    state_.vlans.erase(link.index);
    if (!loading_)
        writer_.RemoveLink(state_, node.mapped());
}

void Feeder::ApplyAddress(const nlmsghdr *message, bool there) {
    Address address;
    if (!ReadAddress(message, address))
        return;
    std::vector<Address> &addresses = state_.addresses[address.if_index];
    const auto found =
        std::find_if(addresses.begin(), addresses.end(), [&](const Address &each) { return each.SameAs(address); });
    const bool was_there = found != addresses.end();
    if (there == was_there && (!there || *found == address))
        return;
    if (there && was_there)
        *found = address;
    else if (there)
        addresses.push_back(address);
    else
        addresses.erase(found);
    if (!loading_)
        writer_.PutAddresses(state_, address);
}

void Feeder::ApplyVlans(const nlmsghdr *message, bool there) {
    std::set<uint32_t> changed;
    ReadVlans(message, [&](const VlanRange &range) {
        Vlans &vlans = state_.vlans[range.if_index];
        const Vlans before = vlans;
        SetVlans(vlans, range, there);
        if (vlans != before)
            changed.insert(range.if_index);
    });
    if (loading_)
        return;
    for (uint32_t index : changed) {
        if (const Link *link = state_.Find(index); link != nullptr)
            writer_.PutVlans(state_, *link);
    }
}

} // namespace uvel::host::netlink
