/* Changes of trunks, their members, and VRFs. */
#include "model/batch.h"

using namespace uvel::host::model;

namespace {

void NotifyTrunk(Batch &batch, uint32_t trunk_class, uint32_t event, uint32_t trunk_id, uint32_t value) {
    batch.notices->Add({.topic = MDL_TOPIC_TRUNK, .event = event, .a = trunk_id, .b = value, .c = trunk_class});
}

void NotifyVsys(Batch &batch, uint32_t kind, uint32_t vrf) {
    batch.notices->Add({.topic = MDL_TOPIC_VRF, .event = kind, .a = vrf});
}

/* Settles the trunk's index; false when id, index or interface belongs to another trunk. */
bool SettleTrunk(const Snapshot &next, MDL_TRUNK_S &trunk) {
    const uint32_t *index = next.trunk_by_id.Find(trunk.ulTrunkId);
    if (trunk.ulTrunkIndex == MDL_AUTO)
        trunk.ulTrunkIndex = index != nullptr ? *index : LowestFree(next.trunks);
    const uint32_t *of_interface = next.trunk_by_interface.Find(trunk.ulIfIndex);
    const MDL_TRUNK_S *there = next.trunks.Get(trunk.ulTrunkIndex);
    return (index == nullptr || *index == trunk.ulTrunkIndex) &&
           (of_interface == nullptr || *of_interface == trunk.ulTrunkIndex) &&
           (there == nullptr || there->ulTrunkId == trunk.ulTrunkId);
}

} // namespace

namespace uvel::host::model {

void RemoveTrunk(Batch &batch, uint32_t trunk_index) {
    constexpr uint32_t CLASS_DONE = 3, GOING = 6;
    Snapshot &next = *batch.next;
    const MDL_TRUNK_S *trunk = next.trunks.Get(trunk_index);
    if (trunk == nullptr)
        return;
    std::vector<uint32_t> members;
    next.members_of_trunk.VisitFrom(Pair(trunk->ulTrunkId, 0), [&](uint64_t key, uint32_t if_index) {
        if (First(key) == trunk->ulTrunkId)
            members.push_back(if_index);
        return First(key) == trunk->ulTrunkId;
    });
    for (uint32_t if_index : members)
        RemoveMember(batch, if_index);
    NotifyTrunk(batch, CLASS_DONE, GOING, trunk->ulTrunkId, trunk->ulIfIndex);
    batch.notices->AddGoing(*trunk);
    next.trunk_by_id.Erase(batch.draft, trunk->ulTrunkId);
    next.trunk_by_interface.Erase(batch.draft, trunk->ulIfIndex);
    next.trunks.Erase(batch.draft, trunk_index);
}

void RemoveMember(Batch &batch, uint32_t if_index) {
    const MDL_MEMBER_S *member = batch.next->members.Get(if_index);
    if (member == nullptr)
        return;
    NotifyTrunk(batch, 1, 2, member->ulTrunkId, if_index);
    NotifyTrunk(batch, 3, 7, member->ulTrunkId, if_index);
    batch.next->members_of_trunk.Erase(batch.draft, Pair(member->ulTrunkId, if_index));
    batch.next->members.Erase(batch.draft, if_index);
}

void RemoveVrf(Batch &batch, uint32_t vrf_index) {
    const MDL_VRF_S *vrf = batch.next->vrfs.Get(vrf_index);
    if (vrf == nullptr)
        return;
    if (vrf->ulVsys != 0)
        NotifyVsys(batch, VRF_EVT_DELETED, vrf_index);
    batch.next->vrfs_by_name.Erase(batch.draft, MakeNameKey<VRF_NAME_SIZE>(vrf->szName, vrf_index));
    batch.next->vrfs.Erase(batch.draft, vrf_index);
}

} // namespace uvel::host::model

uint32_t MDL_PutTrunk(MDL_BATCH *pstBatch, const MDL_TRUNK_S *pstTrunk) {
    if (pstBatch == nullptr || pstTrunk == nullptr || !IsIfIndex(pstTrunk->ulIfIndex) ||
        pstTrunk->ulTrunkIndex == UVELHOST_NONE || pstTrunk->ulTrunkId == UVELHOST_NONE)
        return 1;
    Snapshot &next = *pstBatch->next;
    MDL_TRUNK_S trunk = *pstTrunk;
    if (!SettleTrunk(next, trunk))
        return 1;
    return Change(pstBatch, [&] {
        const auto before = Put(*pstBatch, next.trunks, trunk.ulTrunkIndex, trunk);
        if (!before.changed)
            return;
        if (before.old != nullptr)
            next.trunk_by_interface.Erase(pstBatch->draft, before.old->ulIfIndex);
        next.trunk_by_id.Set(pstBatch->draft, trunk.ulTrunkId, trunk.ulTrunkIndex);
        next.trunk_by_interface.Set(pstBatch->draft, trunk.ulIfIndex, trunk.ulTrunkIndex);
    });
}

uint32_t MDL_RemoveTrunk(MDL_BATCH *pstBatch, uint32_t ulTrunkId) {
    return Change(pstBatch, [&] {
        const uint32_t *index = pstBatch->next->trunk_by_id.Find(ulTrunkId);
        if (index != nullptr)
            RemoveTrunk(*pstBatch, *index);
    });
}

uint32_t MDL_PutMember(MDL_BATCH *pstBatch, const MDL_MEMBER_S *pstMember) {
    if (pstMember == nullptr || !IsIfIndex(pstMember->ulIfIndex) || pstMember->ulTrunkId == UVELHOST_NONE ||
        pstMember->ulActive > 1)
        return 1;
    return Change(pstBatch, [&] {
        Snapshot &next = *pstBatch->next;
        const MDL_MEMBER_S *old = next.members.Get(pstMember->ulIfIndex);
        if (old != nullptr && old->ulTrunkId != pstMember->ulTrunkId)
            RemoveMember(*pstBatch, pstMember->ulIfIndex);
        if (Put(*pstBatch, next.members, pstMember->ulIfIndex, *pstMember).old != nullptr)
            return;
        next.members_of_trunk.Set(pstBatch->draft, Pair(pstMember->ulTrunkId, pstMember->ulIfIndex),
                                  pstMember->ulIfIndex);
        NotifyTrunk(*pstBatch, 2, 3, pstMember->ulTrunkId, pstMember->ulIfIndex);
        NotifyTrunk(*pstBatch, 3, 8, pstMember->ulTrunkId, pstMember->ulIfIndex);
    });
}

uint32_t MDL_RemoveMember(MDL_BATCH *pstBatch, uint32_t ulIfIndex) {
    return Change(pstBatch, [&] { RemoveMember(*pstBatch, ulIfIndex); });
}

uint32_t MDL_PutVrf(MDL_BATCH *pstBatch, const MDL_VRF_S *pstVrf) {
    if (pstVrf == nullptr || pstVrf->ulVrfIndex == UVELHOST_NONE || pstVrf->ulIpv4 > 1 || pstVrf->ulIpv6 > 1 ||
        pstVrf->ulVsys > 1 || (pstVrf->ulVsys != 0 && pstVrf->ulVrfIndex >= 0x10000))
        return 1;
    MDL_VRF_S vrf = *pstVrf;
    if (!CopyText(vrf.szName, pstVrf->szName) || vrf.szName[0] == '\0')
        return 1;
    return Change(pstBatch, [&] {
        Snapshot &next = *pstBatch->next;
        const auto before = Put(*pstBatch, next.vrfs, vrf.ulVrfIndex, vrf);
        if (!before.changed)
            return;
        if (before.old != nullptr)
            next.vrfs_by_name.Erase(pstBatch->draft, MakeNameKey<VRF_NAME_SIZE>(before.old->szName, vrf.ulVrfIndex));
        next.vrfs_by_name.Set(pstBatch->draft, MakeNameKey<VRF_NAME_SIZE>(vrf.szName, vrf.ulVrfIndex), vrf.ulVrfIndex);
        const uint32_t was_vsys = before.old == nullptr ? 0 : before.old->ulVsys;
        if (was_vsys != vrf.ulVsys)
            NotifyVsys(*pstBatch, vrf.ulVsys != 0 ? VRF_EVT_CREATED : VRF_EVT_DELETED, vrf.ulVrfIndex);
    });
}

uint32_t MDL_RemoveVrf(MDL_BATCH *pstBatch, uint32_t ulVrfIndex) {
    return Change(pstBatch, [&] { RemoveVrf(*pstBatch, ulVrfIndex); });
}
