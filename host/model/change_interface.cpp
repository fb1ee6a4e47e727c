/* Changes of interfaces. */
#include "model/batch.h"

using namespace uvel::host::model;

namespace {

bool IsState(uint32_t state) {
    return state == IF_STATE_UP || state == IF_STATE_DOWN;
}

bool IsVlan(uint32_t vlan) {
    return vlan <= 4095 || vlan == MDL_NO_VLAN;
}

bool IsGood(const MDL_IF_S &interface) {
    const bool stands_for_one = interface.ulKind == MDL_IF_VLAN  ? interface.usVlanId != MDL_NO_VLAN
                                : interface.ulKind == MDL_IF_VBD ? interface.ulBd != UVELHOST_NONE
                                                                 : interface.ulKind == MDL_IF_PLAIN;
    return IsIfIndex(interface.ulIfIndex) && stands_for_one && interface.ulFlags <= (MDL_IF_TEMP | MDL_IF_ADMIN_ETH) &&
           (interface.ulLayer == 2 || interface.ulLayer == 3) && IsState(interface.ulLineState) &&
           IsState(interface.ulIpv6State) && IsState(interface.ulPhyState) && interface.ulAdminDown <= 1 &&
           interface.ulPortMode <= L2IF_MODE_HYBRID && IsVlan(interface.usVlanId) && IsVlan(interface.usPvid) &&
           (interface.ulBd < 0x10000 || interface.ulBd == UVELHOST_NONE);
}

/* Settles the port index; false when it is another interface's or too high. */
bool SettlePort(const Snapshot &next, const MDL_IF_S *old, MDL_IF_S &interface) {
    if (interface.ulPortIndex == MDL_AUTO)
        interface.ulPortIndex =
            old != nullptr && old->ulPortIndex != UVELHOST_NONE ? old->ulPortIndex : LowestFree(next.interface_of_port);
    if (interface.ulPortIndex == UVELHOST_NONE)
        return true;
    const uint32_t *owner = next.interface_of_port.Find(interface.ulPortIndex);
    return interface.ulPortIndex < next.device.ulMaxSwitchPorts && (owner == nullptr || *owner == interface.ulIfIndex);
}

bool IsSub(const MDL_IF_S &interface) {
    return interface.ulMainIfIndex != interface.ulIfIndex;
}

/* The other ways in which an interface is asked for. */
void Unindex(Batch &batch, const MDL_IF_S &interface) {
    Snapshot &next = *batch.next;
    next.interfaces_by_name.Erase(batch.draft, MakeNameKey<IF_NAME_SIZE>(interface.szName, interface.ulIfIndex));
    if (interface.ulPortIndex != UVELHOST_NONE)
        next.interface_of_port.Erase(batch.draft, interface.ulPortIndex);
    if (IsSub(interface))
        next.sub_interfaces.Erase(batch.draft, Pair(interface.ulMainIfIndex, interface.ulIfIndex));
    if (interface.ulKind == MDL_IF_VLAN)
        next.vlan_interfaces.Erase(batch.draft, Pair(interface.usVlanId, interface.ulIfIndex));
    if (interface.ulKind == MDL_IF_VBD)
        next.bd_interfaces.Erase(batch.draft, Pair(interface.ulBd, interface.ulIfIndex));
}

void Index(Batch &batch, const MDL_IF_S &interface) {
    Snapshot &next = *batch.next;
    const uint32_t if_index = interface.ulIfIndex;
    next.interfaces_by_name.Set(batch.draft, MakeNameKey<IF_NAME_SIZE>(interface.szName, if_index), if_index);
    if (interface.ulPortIndex != UVELHOST_NONE)
        next.interface_of_port.Set(batch.draft, interface.ulPortIndex, if_index);
    if (IsSub(interface))
        next.sub_interfaces.Set(batch.draft, Pair(interface.ulMainIfIndex, if_index), if_index);
    if (interface.ulKind == MDL_IF_VLAN)
        next.vlan_interfaces.Set(batch.draft, Pair(interface.usVlanId, if_index), if_index);
    if (interface.ulKind == MDL_IF_VBD)
        next.bd_interfaces.Set(batch.draft, Pair(interface.ulBd, if_index), if_index);
}

/* Whether both stand in the same places of the indexes. */
bool SameIndexes(const MDL_IF_S &left, const MDL_IF_S &right) {
    return std::strcmp(left.szName, right.szName) == 0 && left.ulPortIndex == right.ulPortIndex &&
           left.ulMainIfIndex == right.ulMainIfIndex && left.ulKind == right.ulKind &&
           left.usVlanId == right.usVlanId && left.ulBd == right.ulBd;
}

void NotifyIf(Batch &batch, uint32_t event, uint32_t if_index) {
    batch.notices->Add({.topic = MDL_TOPIC_IF, .event = event, .a = if_index});
}

void NotifyState(Batch &batch, uint32_t command, uint32_t up, const MDL_IF_S &interface, uint32_t by_admin) {
    constexpr uint32_t FLAG_UP = 1U << 0, FLAG_BY_ADMIN = 1U << 6;
    const uint32_t flags = (up != 0 ? FLAG_UP : 0) | (by_admin != 0 ? FLAG_BY_ADMIN : 0);
    batch.notices->Add({.topic = MDL_TOPIC_IOCTL,
                        .event = command,
                        .a = up,
                        .b = interface.ulIfIndex,
                        .data = batch.notices->AddBytes(flags)});
}

void NotifyVlanInterface(Batch &batch, uint32_t up, uint16_t vlan) {
    batch.notices->Add({.topic = MDL_TOPIC_L2, .event = up != 0 ? 129U : 130U, .key = batch.notices->AddBytes(vlan)});
}

void NotifyStates(Batch &batch, const MDL_IF_S &before, const MDL_IF_S &after) {
    constexpr uint32_t LINE = 2, PHYSICAL = 3, IPV6 = 7, ADMIN = 8, L2_SUB_LINE = 12;
    const uint32_t by_admin = before.ulAdminDown != after.ulAdminDown;
    const auto tell = [&](uint32_t command, uint32_t was, uint32_t is) {
        if (Effective(before, was) != Effective(after, is))
            NotifyState(batch, command, Effective(after, is) == IF_STATE_UP, after, by_admin);
    };
    if (by_admin != 0)
        NotifyState(batch, ADMIN, after.ulAdminDown == 0, after, by_admin);
    tell(PHYSICAL, before.ulPhyState, after.ulPhyState);
    tell(IsSub(after) && after.ulLayer == 2 ? L2_SUB_LINE : LINE, before.ulLineState, after.ulLineState);
    tell(IPV6, before.ulIpv6State, after.ulIpv6State);
    const uint32_t line = Effective(after, after.ulLineState);
    if (after.ulKind == MDL_IF_VLAN && Effective(before, before.ulLineState) != line)
        NotifyVlanInterface(batch, line == IF_STATE_UP, after.usVlanId);
}

void NotifyLayer(Batch &batch, const MDL_IF_S &interface) {
    const uint32_t event = interface.ulLayer == 3 ? 193 : 209;
    const uint32_t key = batch.notices->AddBytes(interface.ulIfIndex);
    batch.notices->Add({.topic = MDL_TOPIC_L2, .event = event | L2IF_EVT_NOW, .key = key});
    batch.notices->Add({.topic = MDL_TOPIC_L2, .event = event, .key = key});
}

void NotifyPvid(Batch &batch, const MDL_IF_S &interface) {
    const uint32_t key = batch.notices->AddBytes(interface.ulPortIndex);
    const uint32_t data = batch.notices->AddBytes(interface.usPvid);
    batch.notices->Add({.topic = MDL_TOPIC_L2, .event = 241, .key = key, .data = data});
}

/* Whether something differs that no notification of its own tells. */
bool DifferOtherwise(MDL_IF_S before, const MDL_IF_S &after) {
    before.ulLineState = after.ulLineState;
    before.ulIpv6State = after.ulIpv6State;
    before.ulPhyState = after.ulPhyState;
    before.ulAdminDown = after.ulAdminDown;
    before.ulLayer = after.ulLayer;
    before.ulVrf = after.ulVrf;
    before.ulIpv6Vrf = after.ulIpv6Vrf;
    before.usPvid = after.usPvid;
    std::memcpy(before.szName, after.szName, sizeof before.szName);
    return std::memcmp(&before, &after, sizeof before) != 0;
}

void NotifyChanges(Batch &batch, const MDL_IF_S &before, const MDL_IF_S &after) {
    constexpr uint32_t RENAMED = 3, CHANGED = 25, VRF_SET = 10;
    if (std::strcmp(before.szName, after.szName) != 0)
        NotifyIf(batch, RENAMED, after.ulIfIndex);
    if (DifferOtherwise(before, after))
        NotifyIf(batch, CHANGED, after.ulIfIndex);
    if (before.ulLayer != after.ulLayer)
        NotifyLayer(batch, after);
    if (before.ulVrf != after.ulVrf || before.ulIpv6Vrf != after.ulIpv6Vrf)
        batch.notices->Add({.topic = MDL_TOPIC_VRF_SET, .event = VRF_SET, .a = after.ulIfIndex});
    if (before.usPvid != after.usPvid && after.ulPortIndex != UVELHOST_NONE)
        NotifyPvid(batch, after);
    NotifyStates(batch, before, after);
}

/* A new interface is told as one that is down and in no VRF, and then became what it is. */
void NotifyNew(Batch &batch, const MDL_IF_S &interface) {
    constexpr uint32_t ADDED = 2;
    MDL_IF_S before = interface;
    before.ulLineState = before.ulIpv6State = before.ulPhyState = IF_STATE_DOWN;
    before.ulVrf = before.ulIpv6Vrf = 0;
    before.usPvid = MDL_NO_VLAN;
    NotifyIf(batch, ADDED, interface.ulIfIndex);
    NotifyChanges(batch, before, interface);
}

/* Takes away what hangs on an interface. */
void RemoveWhatHangsOn(Batch &batch, const MDL_IF_S &interface) {
    Snapshot &next = *batch.next;
    const uint32_t if_index = interface.ulIfIndex;
    std::vector<uint64_t> pairs;
    const auto collect = [&](uint64_t key, const auto &) {
        if (First(key) == if_index)
            pairs.push_back(key);
        return First(key) == if_index;
    };
    next.vrrp.VisitFrom(Pair(if_index, 0), collect);
    for (uint64_t key : pairs)
        RemoveVrrp(batch, key);
    pairs.clear();
    next.addr4.VisitFrom(Pair(if_index, 0), collect);
    for (uint64_t key : pairs)
        RemoveAddr4(batch, key);
    std::vector<Addr6Key> addresses;
    next.addr6.VisitFrom(Addr6Key{if_index, {}}, [&](const Addr6Key &key, const auto &) {
        if (key.if_index == if_index)
            addresses.push_back(key);
        return key.if_index == if_index;
    });
    for (const Addr6Key &key : addresses)
        RemoveAddr6(batch, key);
    RemoveMember(batch, if_index);
    if (interface.ulPortIndex != UVELHOST_NONE)
        RemovePortVlans(batch, interface.ulPortIndex);
}

} // namespace

void uvel::host::model::RemoveIf(Batch &batch, uint32_t if_index) {
    constexpr uint32_t GOING = 6;
    const MDL_IF_S *interface = batch.next->interfaces.Get(if_index);
    if (interface == nullptr)
        return;
    RemoveWhatHangsOn(batch, *interface);
    NotifyIf(batch, GOING, if_index);
    batch.notices->AddGoing(*interface);
    Unindex(batch, *interface);
    batch.next->interfaces.Erase(batch.draft, if_index);
}

void MDL_InitIf(MDL_IF_S *pstIf, uint32_t ulIfIndex, const char *pszName) {
    if (pstIf == nullptr)
        return;
    *pstIf = {};
    pstIf->ulIfIndex = pstIf->ulMainIfIndex = ulIfIndex;
    pstIf->ulLayer = 3;
    pstIf->ulLineState = pstIf->ulIpv6State = pstIf->ulPhyState = IF_STATE_DOWN;
    pstIf->ulSlot = pstIf->ulPortIndex = pstIf->ulBd = pstIf->ulVap = UVELHOST_NONE;
    pstIf->ulCard = pstIf->ulPort = UVELHOST_NONE;
    pstIf->usVlanId = pstIf->usPvid = MDL_NO_VLAN;
    if (pszName != nullptr)
        std::memcpy(pstIf->szName, pszName, strnlen(pszName, sizeof pstIf->szName - 1));
}

uint32_t MDL_PutIf(MDL_BATCH *pstBatch, const MDL_IF_S *pstIf) {
    if (pstBatch == nullptr || pstIf == nullptr || !IsGood(*pstIf))
        return 1;
    Snapshot &next = *pstBatch->next;
    MDL_IF_S interface = *pstIf;
    if (!CopyText(interface.szName, pstIf->szName) || !CopyText(interface.szShortName, pstIf->szShortName) ||
        interface.szName[0] == '\0' || !SettlePort(next, next.interfaces.Get(pstIf->ulIfIndex), interface))
        return 1;
    std::memset(interface.aucReserved, 0, sizeof interface.aucReserved);
    if (interface.ulMainIfIndex == 0)
        interface.ulMainIfIndex = interface.ulIfIndex;
    return Change(pstBatch, [&] {
        const auto before = Put(*pstBatch, next.interfaces, interface.ulIfIndex, interface);
        if (!before.changed)
            return;
        if (before.old == nullptr || !SameIndexes(*before.old, interface)) {
            if (before.old != nullptr)
                Unindex(*pstBatch, *before.old);
            Index(*pstBatch, interface);
        }
        if (before.old == nullptr)
            NotifyNew(*pstBatch, interface);
        else
            NotifyChanges(*pstBatch, *before.old, interface);
    });
}

uint32_t MDL_RemoveIf(MDL_BATCH *pstBatch, uint32_t ulIfIndex) {
    return Change(pstBatch, [&] { RemoveIf(*pstBatch, ulIfIndex); });
}
