#include "netlink/writer.h"

#include <algorithm>
#include <charconv>
#include <linux/if_addr.h>
#include <sys/socket.h>
#include <utility>
#include <uvelhost/ip.h>

#include "netlink/describe.h"

namespace uvel::host::netlink {

namespace {

constexpr uint32_t VIRTUAL_SYSTEMS = 0x10000;
constexpr MDL_VRF_S PUBLIC_VRF = {0, 1, 1, 1, "public"};

/* Identifiers of trunks whose names end with no number, or one that is taken. */
constexpr uint32_t FIRST_UNNUMBERED_TRUNK = 4096;

/* The number at the end of a name. */
uint32_t NumberInName(const std::string &name) {
    const std::size_t last = name.find_last_not_of("0123456789");
    const std::size_t begin = last == std::string::npos ? 0 : last + 1;
    uint32_t number = UVELHOST_NONE;
    const auto result = std::from_chars(name.data() + begin, name.data() + name.size(), number);
    return result.ec == std::errc() ? number : UVELHOST_NONE;
}

/* IPv6 addresses count once the kernel knows that they are free. */
bool IsUsable(const Address &address) {
    return (address.flags & (IFA_F_TENTATIVE | IFA_F_DADFAILED)) == 0 || (address.flags & IFA_F_OPTIMISTIC) != 0;
}

const Address *MainOf(const std::vector<Address> &addresses) {
    const auto found = std::find_if(addresses.begin(), addresses.end(), [](const Address &each) {
        return each.family == AF_INET && (each.flags & IFA_F_SECONDARY) == 0;
    });
    return found == addresses.end() ? nullptr : &*found;
}

uint32_t Ipv4Of(const Address &address) {
    return static_cast<uint32_t>(address.bytes[0]) << 24 | static_cast<uint32_t>(address.bytes[1]) << 16 |
           static_cast<uint32_t>(address.bytes[2]) << 8 | address.bytes[3];
}

} // namespace

uint32_t Numbers::Get(uint32_t index, uint32_t wished, uint32_t from) {
    if (const auto found = of_.find(index); found != of_.end())
        return found->second;
    uint32_t number = wished;
    if (number == UVELHOST_NONE || taken_.contains(number)) {
        number = from;
        for (auto next = taken_.lower_bound(from); next != taken_.end() && *next == number; ++next)
            ++number;
    }
    of_.emplace(index, number);
    taken_.insert(number);
    return number;
}

uint32_t Numbers::Find(uint32_t index) const {
    const auto found = of_.find(index);
    return found == of_.end() ? UVELHOST_NONE : found->second;
}

void Numbers::Release(uint32_t index) {
    if (const auto found = of_.find(index); found != of_.end()) {
        taken_.erase(found->second);
        of_.erase(found);
    }
}

Writer::~Writer() {
    MDL_Abort(batch_);
}

bool Writer::Open() {
    if (batch_ == nullptr && !lost_) {
        batch_ = MDL_Begin(config_.ulFeeder, 0);
        lost_ = batch_ == nullptr;
    }
    return !lost_;
}

bool Writer::Commit() {
    MDL_BATCH *const batch = std::exchange(batch_, nullptr);
    const bool lost = std::exchange(lost_, false);
    return !lost && (batch == nullptr || MDL_Commit(batch) == UVELHOST_OK);
}

/* ---- links ---- */

void Writer::PutLink(const KernelState &state, const Link &link, const Link *before) {
    if (!Open())
        return;
    if (before != nullptr)
        LeaveMaster(*before, link);
    if (IsVrf(link))
        PutVrf(link);
    PutIf(state, link);
    if (!IsSwitchPort(link))
        ports_.Release(link.index);
    if (IsBond(link))
        PutTrunk(link);
    if (IsTrunkMember(link))
        PutMember(state, link);
    ReplaceVlans(link, EffectiveVlans(state, link));
    if (before == nullptr || !ConcernsOthers(*before, link))
        return;
    for (const auto &[index, other] : state.links) {
        if (other.master == link.index || other.lower == link.index)
            PutVlans(state, other);
    }
}

/* What held through the former master ends before the link becomes something else. */
void Writer::LeaveMaster(const Link &before, const Link &after) {
    if (IsTrunkMember(before) && !IsTrunkMember(after))
        Count(MDL_RemoveMember(batch_, before.index));
    if (IsSwitchPort(before) && (!IsSwitchPort(after) || before.master != after.master))
        RemoveVlans(before);
}

void Writer::RemoveLink(const KernelState &state, const Link &link) {
    if (!Open())
        return;
    RemoveVlans(link);
    if (const uint32_t trunk = trunks_.Find(link.index); trunk != UVELHOST_NONE) {
        Count(MDL_RemoveTrunk(batch_, trunk));
        trunks_.Release(link.index);
    }
    Count(MDL_RemoveIf(batch_, link.index));
    ports_.Release(link.index);
    if (IsVrf(link))
        RemoveVrf(state, link);
}

void Writer::PutIf(const KernelState &state, const Link &link) {
    MDL_IF_S record = DescribeLink(state, link, config_.ulSlot);
    if (IsSwitchPort(link))
        record.ulPortIndex = ports_.Get(link.index, UVELHOST_NONE, 0);
    const uint32_t result = MDL_PutIf(batch_, &record);
    Count(result);
    if (result == UVELHOST_OK || !IsSwitchPort(link))
        return;
    ports_.Release(link.index); /* more ports than the device can have: an interface all the same */
    record.ulPortIndex = UVELHOST_NONE;
    Count(MDL_PutIf(batch_, &record));
}

/* ---- VRFs ---- */

void Writer::PutVrf(const Link &link) {
    MDL_VRF_S record = {link.table, 1, 1, link.table < VIRTUAL_SYSTEMS, {}};
    link.name.copy(record.szName, sizeof record.szName - 1);
    Count(MDL_PutVrf(batch_, &record));
}

/* Two devices may share a table: the VRF stays as long as one of them does. */
void Writer::RemoveVrf(const KernelState &state, const Link &link) {
    for (const auto &[index, other] : state.links) {
        if (IsVrf(other) && other.table == link.table)
            return PutVrf(other);
    }
    Count(MDL_RemoveVrf(batch_, link.table));
}

/* ---- trunks ---- */

uint32_t Writer::TrunkOf(const Link &bond) {
    return trunks_.Get(bond.index, NumberInName(bond.name), FIRST_UNNUMBERED_TRUNK);
}

void Writer::PutTrunk(const Link &link) {
    const MDL_TRUNK_S record = {MDL_AUTO, TrunkOf(link), link.index};
    Count(MDL_PutTrunk(batch_, &record));
}

void Writer::PutMember(const KernelState &state, const Link &link) {
    const Link *bond = state.Find(link.master);
    if (bond == nullptr)
        return;
    const MDL_MEMBER_S record = {link.index, TrunkOf(*bond), link.active && link.carrier};
    Count(MDL_PutMember(batch_, &record));
}

/* ---- addresses ---- */

void Writer::PutAddress(const Address &address, bool main) {
    if (address.family == AF_INET6) {
        MDL_ADDR6_S record = {address.if_index, {}, address.prefix_len};
        std::copy(address.bytes.begin(), address.bytes.end(), record.aucAddr);
        Count(MDL_PutAddr6(batch_, &record));
        return;
    }
    const uint32_t flag = (address.flags & IFA_F_PERMANENT) != 0 ? IP_FLAG_CONFIGURED : IP_FLAG_OBTAINED;
    const MDL_ADDR4_S record = {address.if_index, Ipv4Of(address), address.prefix_len, main, flag};
    Count(MDL_PutAddr4(batch_, &record));
}

void Writer::RemoveAddress(const Address &address) {
    if (address.family == AF_INET6)
        Count(MDL_RemoveAddr6(batch_, address.if_index, address.bytes.data()));
    else
        Count(MDL_RemoveAddr4(batch_, address.if_index, Ipv4Of(address)));
}

/* The same address may stand there with several prefix lengths; the model has it once. */
void Writer::PutAddresses(const KernelState &state, const Address &changed) {
    if (!Open())
        return;
    const auto found = state.addresses.find(changed.if_index);
    const std::vector<Address> none;
    const std::vector<Address> &addresses = found == state.addresses.end() ? none : found->second;
    const auto same = std::find_if(addresses.begin(), addresses.end(), [&](const Address &each) {
        return each.family == changed.family && each.bytes == changed.bytes && IsUsable(each);
    });
    if (same == addresses.end())
        RemoveAddress(changed);
    const Address *main = MainOf(addresses);
    if (same != addresses.end())
        PutAddress(*same, &*same == main);
    if (main != nullptr && (same == addresses.end() || &*same != main))
        PutAddress(*main, true);
}

/* ---- VLANs ---- */

void Writer::PutVlans(const KernelState &state, const Link &link) {
    if (!Open())
        return;
    ReplaceVlans(link, EffectiveVlans(state, link));
    PutIf(state, link);
}

/* VLANs exist before ports join them and as long as one is in them. */
void Writer::ReplaceVlans(const Link &link, const Vlans &vlans) {
    const auto found = written_vlans_.find(link.index);
    const Vlans before = found == written_vlans_.end() ? Vlans{} : found->second;
    if (before == vlans)
        return;
    CountVlans(vlans, true);
    if (const uint32_t port = ports_.Find(link.index); port != UVELHOST_NONE)
        BindVlans(port, &before, vlans);
    CountVlans(before, false);
    written_vlans_[link.index] = vlans;
}

void Writer::RemoveVlans(const Link &link) {
    ReplaceVlans(link, {});
    written_vlans_.erase(link.index);
    if (const uint32_t port = ports_.Find(link.index); port != UVELHOST_NONE)
        Count(MDL_RemovePortVlans(batch_, port));
}

void Writer::CountVlans(const Vlans &vlans, bool on) {
    for (uint32_t vlan = 0; vlan < VLAN_IDS; ++vlan) {
        if (!Has(vlans.untagged, vlan) && !Has(vlans.tagged, vlan))
            continue;
        uint32_t &users = vlan_users_[vlan];
        if (on && users++ == 0) {
            const MDL_VLAN_S record = {vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
            Count(MDL_PutVlan(batch_, &record));
        } else if (!on && --users == 0) {
            Count(MDL_RemoveVlan(batch_, vlan));
        }
    }
}

/* Writes the VLANs of a port in runs; those that are as they were `before` are left out (null: none are). */
void Writer::BindVlans(uint32_t port, const Vlans *before, const Vlans &after) {
    const auto bind = [](const Vlans &vlans, uint32_t vlan) {
        return Has(vlans.untagged, vlan) ? L2IF_BIND_UNTAGGED
               : Has(vlans.tagged, vlan) ? L2IF_BIND_TAGGED
                                         : L2IF_BIND_NONE;
    };
    const auto differs = [&](uint32_t vlan) { return before == nullptr || bind(*before, vlan) != bind(after, vlan); };
    for (uint32_t vlan = 0; vlan < VLAN_IDS; ++vlan) {
        if (!differs(vlan))
            continue;
        const uint32_t first = vlan;
        const uint32_t binding = bind(after, vlan);
        while (vlan + 1 < VLAN_IDS && differs(vlan + 1) && bind(after, vlan + 1) == binding)
            ++vlan;
        Count(MDL_BindVlans(batch_, port, first, vlan, binding, 0));
    }
}

/* ---- everything ---- */

void Writer::PutAll(const KernelState &state) {
    if (!Open())
        return;
    Count(MDL_MarkAll(batch_));
    Count(MDL_PutVrf(batch_, &PUBLIC_VRF));
    ports_.KeepOnly([&](uint32_t index) { return state.Find(index) != nullptr && IsSwitchPort(*state.Find(index)); });
    trunks_.KeepOnly([&](uint32_t index) { return state.Find(index) != nullptr && IsBond(*state.Find(index)); });
    written_vlans_.clear();
    vlan_users_ = {};
    for (const auto &[index, link] : state.links) {
        if (IsVrf(link))
            PutVrf(link);
        if (IsBond(link))
            PutTrunk(link);
    }
    for (const auto &[index, link] : state.links) {
        PutIf(state, link);
        if (IsTrunkMember(link))
            PutMember(state, link);
        PutAllVlans(state, link);
    }
    for (const auto &[index, addresses] : state.addresses)
        PutAllAddresses(addresses);
    Count(MDL_Sweep(batch_));
}

void Writer::PutAllVlans(const KernelState &state, const Link &link) {
    const Vlans vlans = EffectiveVlans(state, link);
    CountVlans(vlans, true);
    if (const uint32_t port = ports_.Find(link.index); port != UVELHOST_NONE)
        BindVlans(port, nullptr, vlans);
    if (vlans != Vlans{})
        written_vlans_[link.index] = vlans;
}

void Writer::PutAllAddresses(const std::vector<Address> &addresses) {
    const Address *main = MainOf(addresses);
    for (const Address &address : addresses) {
        if (IsUsable(address))
            PutAddress(address, &address == main);
    }
}

} // namespace uvel::host::netlink
