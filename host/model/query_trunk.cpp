#include <uvelhost/trunk.h>

#include "model/query.h"
#include <bitset>

using namespace uvel::host::model;

namespace {

const MDL_TRUNK_S *TrunkById(const Reading &model, uint32_t trunk_id) {
    if (const MDL_TRUNK_S *going = GoingTrunk(trunk_id); going != nullptr)
        return going;
    const uint32_t *index = model->trunk_by_id.Find(trunk_id);
    return index != nullptr ? model->trunks.Get(*index) : nullptr;
}

const MDL_TRUNK_S *TrunkByIf(const Reading &model, uint32_t if_index) {
    if (const MDL_TRUNK_S *going = GoingTrunkOfIf(if_index); going != nullptr)
        return going;
    const uint32_t *index = model->trunk_by_interface.Find(if_index);
    return index != nullptr ? model->trunks.Get(*index) : nullptr;
}

/* The trunk that the interface is a member of. One that goes has left its trunk before. */
const MDL_TRUNK_S *TrunkOfMember(const Reading &model, uint32_t if_index) {
    const MDL_MEMBER_S *member = model->members.Get(if_index);
    return member == nullptr || GoingIf(if_index) != nullptr ? nullptr : TrunkById(model, member->ulTrunkId);
}

/* Calls visit(member) in ascending order of the interfaces until it answers false. A trunk that goes has none: they went
 * before it, and who is there now belongs to its successor. */
template <typename Visit>
void VisitMembers(const Reading &model, const MDL_TRUNK_S &trunk, Visit &&visit) {
    if (GoingTrunk(trunk.ulTrunkId) == &trunk)
        return;
    model->members_of_trunk.VisitFrom(Pair(trunk.ulTrunkId, 0), [&](uint64_t key, uint32_t if_index) {
        return First(key) == trunk.ulTrunkId && visit(*model->members.Get(if_index));
    });
}

uint32_t SlotOf(const Reading &model, const MDL_MEMBER_S &member) {
    const MDL_IF_S *interface = model->interfaces.Get(member.ulIfIndex);
    return interface == nullptr ? UVELHOST_NONE : interface->ulSlot;
}

bool IsUp(const Reading &model, uint32_t if_index) {
    const MDL_IF_S *interface = model->interfaces.Get(if_index);
    return interface != nullptr && Effective(*interface, interface->ulPhyState) == IF_STATE_UP;
}

} // namespace

uint32_t Trunk_IF_IsTrunk(uint32_t ulIfIndex) {
    const Reading model;
    return TrunkByIf(model, ulIfIndex) != nullptr;
}

uint32_t BDS_TrunkIsPortInTrunk(uint32_t ulIfIndex) {
    const Reading model;
    return TrunkOfMember(model, ulIfIndex) != nullptr;
}

uint32_t BDS_TrunkGetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex) {
    const Reading model;
    const MDL_TRUNK_S *trunk = TrunkByIf(model, ulIfIndex);
    if (trunk == nullptr)
        trunk = TrunkOfMember(model, ulIfIndex);
    if (pulIsTrunk == nullptr || pulTrunkIndex == nullptr || (trunk == nullptr && FindIf(model, ulIfIndex) == nullptr))
        return 1;
    *pulIsTrunk = trunk != nullptr;
    if (trunk != nullptr)
        *pulTrunkIndex = trunk->ulTrunkIndex;
    return UVELHOST_OK;
}

uint32_t BDS_TrunkGetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex) {
    const Reading model;
    return Write(TrunkOfMember(model, ulIfIndex), pulTrunkIfIndex,
                 [](const MDL_TRUNK_S &each) { return each.ulIfIndex; });
}

uint32_t Trunk_GetIndexByTrunkID(uint32_t ulTrunkId) {
    const Reading model;
    const MDL_TRUNK_S *trunk = TrunkById(model, ulTrunkId);
    return trunk == nullptr ? UVELHOST_NONE : trunk->ulTrunkIndex;
}

uint32_t BDS_TrunkGetTrunkMem(uint32_t ulTrunkIndex, uint32_t *pulIfIndex, uint32_t *pulCount) {
    const Reading model;
    const MDL_TRUNK_S *trunk = model->trunks.Get(ulTrunkIndex);
    if (trunk == nullptr)
        return 1;
    return WriteNumbers(pulIfIndex, pulCount, [&](auto &&add) {
        VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
            add(member.ulIfIndex);
            return true;
        });
    });
}

uint32_t BDS_TrunkGetAllBoard(uint32_t ulTrunkIndex, uint32_t *pulSlot, uint32_t *pulCount) {
    const Reading model;
    const MDL_TRUNK_S *trunk = model->trunks.Get(ulTrunkIndex);
    if (trunk == nullptr)
        return 1;
    std::bitset<0xFFFF> slots;
    VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
        if (SlotOf(model, member) < slots.size())
            slots.set(SlotOf(model, member));
        return true;
    });
    return WriteNumbers(pulSlot, pulCount, [&](auto &&add) {
        for (std::size_t slot = slots._Find_first(); slot < slots.size(); slot = slots._Find_next(slot))
            add(static_cast<uint32_t>(slot));
    });
}

uint32_t BDS_TRUNK_GetMemCountOnSlot(uint32_t ulTrunkIfIndex, uint32_t ulSlot) {
    const Reading model;
    const MDL_TRUNK_S *trunk = TrunkByIf(model, ulTrunkIfIndex);
    uint32_t count = 0;
    if (trunk != nullptr && ulSlot != UVELHOST_NONE)
        VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
            count += SlotOf(model, member) == ulSlot;
            return true;
        });
    return count;
}

uint32_t BDS_TrunkSelectFirstUpPort(uint32_t ulTrunkIndex, uint32_t *pulIfIndex) {
    const Reading model;
    const MDL_TRUNK_S *trunk = model->trunks.Get(ulTrunkIndex);
    if (trunk == nullptr || pulIfIndex == nullptr)
        return 1;
    uint32_t result = 1;
    VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
        if (!IsUp(model, member.ulIfIndex))
            return true;
        *pulIfIndex = member.ulIfIndex;
        result = UVELHOST_OK;
        return false;
    });
    return result;
}

uint32_t BDS_TrunkActiveIfIndexByTrunkIfIndex(uint32_t ulTrunkIfIndex, uint32_t ulHash, uint32_t *pulIfIndex) {
    const Reading model;
    const MDL_TRUNK_S *trunk = TrunkByIf(model, ulTrunkIfIndex);
    if (trunk == nullptr || pulIfIndex == nullptr)
        return 1;
    uint32_t active = 0;
    VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
        active += member.ulActive;
        return true;
    });
    if (active == 0)
        return 1;
    uint32_t skip = ulHash % active;
    VisitMembers(model, *trunk, [&](const MDL_MEMBER_S &member) {
        if (member.ulActive == 0 || skip-- != 0)
            return true;
        *pulIfIndex = member.ulIfIndex;
        return false;
    });
    return UVELHOST_OK;
}
