/* Changes of VLANs and of the VLANs of ports. */
#include "model/batch.h"

#include <bit>

using namespace uvel::host::model;

namespace {

constexpr uint32_t VLANS = 4096;

void SetBit(uint32_t *bitmap, uint32_t vlan, bool on) {
    const uint32_t bit = 1U << vlan % 32;
    bitmap[vlan / 32] = on ? bitmap[vlan / 32] | bit : bitmap[vlan / 32] & ~bit;
}

void Bind(MDL_PORT_VLANS_S &vlans, uint32_t vlan, uint32_t bind, bool dynamic) {
    SetBit(dynamic ? vlans.aulDynUntagged : vlans.aulUntagged, vlan, bind == L2IF_BIND_UNTAGGED);
    SetBit(dynamic ? vlans.aulDynTagged : vlans.aulTagged, vlan, bind == L2IF_BIND_TAGGED);
}

uint32_t VlansOfWord(const MDL_PORT_VLANS_S &vlans, uint32_t word) {
    return vlans.aulUntagged[word] | vlans.aulTagged[word] | vlans.aulDynUntagged[word] | vlans.aulDynTagged[word];
}

/* Calls visit(vlan) for the VLANs that are in one set and not in the other, ascending. Most changes concern few of the
 * 4096, so whole words are passed over. */
template <typename Visit>
void VisitMissing(const MDL_PORT_VLANS_S &in, const MDL_PORT_VLANS_S &from, Visit visit) {
    for (uint32_t word = 0; word < L2IF_VLAN_BITMAP_WORDS; ++word)
        for (uint32_t bits = VlansOfWord(in, word) & ~VlansOfWord(from, word); bits != 0; bits &= bits - 1)
            visit(word * 32 + static_cast<uint32_t>(std::countr_zero(bits)));
}

/* The ports that left, in runs of VLANs; those that joined, VLAN by VLAN. */
void NotifyPort(Batch &batch, const MDL_PORT_VLANS_S &before, const MDL_PORT_VLANS_S &after) {
    constexpr uint32_t ADDED = 161, DELETED = 177, DELETED_RANGE = 179;
    uint32_t first = VLANS;
    uint32_t last = VLANS;
    const auto end_run = [&] {
        if (first != VLANS)
            batch.notices->AddPortToList(first, last, first == last ? DELETED : DELETED_RANGE, after.ulPortIndex);
    };
    VisitMissing(before, after, [&](uint32_t vlan) {
        if (first == VLANS || vlan != last + 1) {
            end_run();
            first = vlan;
        }
        last = vlan;
    });
    end_run();
    VisitMissing(after, before,
                 [&](uint32_t vlan) { batch.notices->AddPortToList(vlan, vlan, ADDED, after.ulPortIndex); });
}

void NotifySubVlan(Batch &batch, uint32_t event, uint32_t super_vlan, uint32_t vlan) {
    const auto super = static_cast<uint16_t>(super_vlan);
    const auto sub = static_cast<uint16_t>(vlan);
    const uint32_t key = batch.notices->AddBytes(super);
    batch.notices->Add({.topic = MDL_TOPIC_L2, .event = event, .key = key, .data = batch.notices->AddBytes(sub)});
}

void NotifyBd(Batch &batch, uint32_t sub_type, uint32_t bd, uint32_t vlan) {
    batch.notices->Add({.topic = MDL_TOPIC_BD, .event = sub_type, .a = bd, .b = vlan});
}

void NotifyVlan(Batch &batch, const MDL_VLAN_S &before, const MDL_VLAN_S &after) {
    constexpr uint32_t JOINED = 49, LEFT = 65, ATTRIBUTE = 81 | L2IF_EVT_NOW, BOUND = 0, RELEASED = 1;
    const uint32_t vlan = after.ulVlanId;
    if (before.ulSuperVlan != after.ulSuperVlan) {
        if (before.ulSuperVlan != UVELHOST_NONE)
            NotifySubVlan(batch, LEFT, before.ulSuperVlan, vlan);
        if (after.ulSuperVlan != UVELHOST_NONE)
            NotifySubVlan(batch, JOINED, after.ulSuperVlan, vlan);
    }
    if (before.ulBd != after.ulBd) {
        if (before.ulBd != UVELHOST_NONE)
            NotifyBd(batch, RELEASED, before.ulBd, vlan);
        if (after.ulBd != UVELHOST_NONE)
            NotifyBd(batch, BOUND, after.ulBd, vlan);
    }
    if (before.ulAttribute != after.ulAttribute) {
        const uint32_t key = batch.notices->AddBytes(static_cast<uint16_t>(vlan));
        const uint32_t data = batch.notices->AddBytes(after.ulAttribute);
        batch.notices->Add({.topic = MDL_TOPIC_L2, .event = ATTRIBUTE, .key = key, .data = data});
    }
}

constexpr MDL_VLAN_S BareVlan(uint32_t vlan) {
    return {vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
}

/* All ports leave a VLAN. */
void EmptyVlan(Batch &batch, uint32_t vlan) {
    std::vector<uint32_t> ports;
    batch.next->port_vlans.VisitFrom(0, [&](uint32_t port, const Node<MDL_PORT_VLANS_S> &node) {
        if (IsInVlan(node.value, vlan))
            ports.push_back(port);
        return true;
    });
    for (uint32_t port : ports) {
        MDL_PORT_VLANS_S vlans = *batch.next->port_vlans.Get(port);
        Bind(vlans, vlan, L2IF_BIND_NONE, false);
        Bind(vlans, vlan, L2IF_BIND_NONE, true);
        PutPortVlans(batch, vlans);
    }
}

bool IsGood(const MDL_PORT_VLANS_S &vlans) {
    for (uint32_t i = 0; i < L2IF_VLAN_BITMAP_WORDS; ++i)
        if ((vlans.aulUntagged[i] & vlans.aulTagged[i]) != 0 || (vlans.aulDynUntagged[i] & vlans.aulDynTagged[i]) != 0)
            return false;
    return vlans.ulPortIndex < MDL_MAX_SWITCH_PORTS;
}

} // namespace

namespace uvel::host::model {

void RemoveVlan(Batch &batch, uint32_t vlan) {
    const MDL_VLAN_S *old = batch.next->vlans.Get(vlan);
    if (old == nullptr)
        return;
    MDL_VLAN_S bare = BareVlan(vlan);
    bare.ulAttribute = old->ulAttribute;
    EmptyVlan(batch, vlan);
    NotifyVlan(batch, *old, bare);
    batch.notices->AddVlanToBatch(vlan, 579 | L2IF_EVT_NOW, 579);
    batch.next->vlans.Erase(batch.draft, vlan);
}

void PutPortVlans(Batch &batch, const MDL_PORT_VLANS_S &vlans) {
    const auto before = Put(batch, batch.next->port_vlans, vlans.ulPortIndex, vlans);
    const MDL_PORT_VLANS_S none = {};
    if (before.changed)
        NotifyPort(batch, before.old == nullptr ? none : *before.old, vlans);
}

void RemovePortVlans(Batch &batch, uint32_t port_index) {
    const MDL_PORT_VLANS_S *old = batch.next->port_vlans.Get(port_index);
    if (old == nullptr)
        return;
    MDL_PORT_VLANS_S none = {};
    none.ulPortIndex = port_index;
    NotifyPort(batch, *old, none);
    batch.next->port_vlans.Erase(batch.draft, port_index);
}

} // namespace uvel::host::model

uint32_t MDL_PutVlan(MDL_BATCH *pstBatch, const MDL_VLAN_S *pstVlan) {
    if (pstVlan == nullptr || pstVlan->ulVlanId >= VLANS ||
        (pstVlan->ulSuperVlan >= VLANS && pstVlan->ulSuperVlan != UVELHOST_NONE) ||
        (pstVlan->ulBd >= 0x10000 && pstVlan->ulBd != UVELHOST_NONE))
        return 1;
    return Change(pstBatch, [&] {
        const auto before = Put(*pstBatch, pstBatch->next->vlans, pstVlan->ulVlanId, *pstVlan);
        if (!before.changed)
            return;
        if (before.old == nullptr)
            pstBatch->notices->AddVlanToBatch(pstVlan->ulVlanId, 0, 577);
        NotifyVlan(*pstBatch, before.old == nullptr ? BareVlan(pstVlan->ulVlanId) : *before.old, *pstVlan);
    });
}

uint32_t MDL_RemoveVlan(MDL_BATCH *pstBatch, uint32_t ulVlanId) {
    return Change(pstBatch, [&] { RemoveVlan(*pstBatch, ulVlanId); });
}

uint32_t MDL_PutPortVlans(MDL_BATCH *pstBatch, const MDL_PORT_VLANS_S *pstVlans) {
    if (pstVlans == nullptr || !IsGood(*pstVlans))
        return 1;
    return Change(pstBatch, [&] { PutPortVlans(*pstBatch, *pstVlans); });
}

uint32_t MDL_BindVlans(MDL_BATCH *pstBatch, uint32_t ulPortIndex, uint32_t ulFirst, uint32_t ulLast, uint32_t ulBind,
                       uint32_t ulDynamic) {
    if (ulPortIndex >= MDL_MAX_SWITCH_PORTS || ulFirst > ulLast || ulLast >= VLANS || ulBind > L2IF_BIND_TAGGED ||
        ulDynamic > 1)
        return 1;
    return Change(pstBatch, [&] {
        const MDL_PORT_VLANS_S *old = pstBatch->next->port_vlans.Get(ulPortIndex);
        MDL_PORT_VLANS_S vlans = {};
        if (old != nullptr)
            vlans = *old;
        vlans.ulPortIndex = ulPortIndex;
        for (uint32_t vlan = ulFirst; vlan <= ulLast; ++vlan)
            Bind(vlans, vlan, ulBind, ulDynamic != 0);
        PutPortVlans(*pstBatch, vlans);
    });
}

uint32_t MDL_RemovePortVlans(MDL_BATCH *pstBatch, uint32_t ulPortIndex) {
    return Change(pstBatch, [&] { RemovePortVlans(*pstBatch, ulPortIndex); });
}
