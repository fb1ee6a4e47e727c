#include <uvelhost/model_view.h>

#include "model/batch.h"
#include "model/query.h"

using namespace uvel::host::model;

namespace {

/* What the calling thread sees: its open batch, without one what is published. */
class View {
  public:
    const Snapshot *operator->() const {
        const Batch *open = OpenBatch();
        return open != nullptr ? open->next.get() : &*model_;
    }

  private:
    const Reading model_;
};

template <typename Key, typename T>
uint32_t Get(Table<Key, T> Snapshot::*table, const Key &key, T *out) {
    const View view;
    return Write((view.operator->()->*table).Get(key), out, [](const T &object) { return object; });
}

template <typename Key, typename T>
uint32_t Next(Table<Key, T> Snapshot::*table, const Key &from, T *out) {
    const View view;
    const T *found = nullptr;
    (view.operator->()->*table).VisitFrom(from, [&](const Key &, const Node<T> &node) {
        found = &node.value;
        return false;
    });
    return Write(found, out, [](const T &object) { return object; });
}

} // namespace

uint64_t MDL_GetVersion(void) {
    const Reading model;
    return model->version;
}

uint32_t MDL_GetDevice(MDL_DEVICE_S *pstDevice) {
    const View view;
    return Write(&view->device, pstDevice, [](const MDL_DEVICE_S &device) { return device; });
}

uint32_t MDL_GetBoard(uint32_t ulSlot, MDL_BOARD_S *pstBoard) {
    return Get(&Snapshot::boards, ulSlot, pstBoard);
}

uint32_t MDL_NextBoard(uint32_t ulSlot, MDL_BOARD_S *pstBoard) {
    return Next(&Snapshot::boards, ulSlot, pstBoard);
}

/* ---- interfaces */

uint32_t MDL_GetIf(uint32_t ulIfIndex, MDL_IF_S *pstIf) {
    return Get(&Snapshot::interfaces, ulIfIndex, pstIf);
}

uint32_t MDL_NextIf(uint32_t ulIfIndex, MDL_IF_S *pstIf) {
    return Next(&Snapshot::interfaces, ulIfIndex, pstIf);
}

uint32_t MDL_FindIf(const char *pszName, uint32_t *pulIfIndex) {
    if (pszName == nullptr || pulIfIndex == nullptr || strnlen(pszName, IF_NAME_SIZE) == IF_NAME_SIZE)
        return 1;
    const View view;
    uint32_t result = 1;
    view->interfaces_by_name.VisitFrom(MakeNameKey<IF_NAME_SIZE>(pszName, 0),
                                       [&](const IfNameKey &key, uint32_t index) {
                                           if (std::strcmp(key.name, pszName) == 0) {
                                               *pulIfIndex = index;
                                               result = UVELHOST_OK;
                                           }
                                           return false;
                                       });
    return result;
}

/* ---- addresses */

uint32_t MDL_NextAddr4(uint32_t ulIfIndex, uint32_t ulAddr, MDL_ADDR4_S *pstAddr) {
    Addr4 found;
    if (pstAddr == nullptr || Next(&Snapshot::addr4, Pair(ulIfIndex, ulAddr), &found) != UVELHOST_OK)
        return 1;
    *pstAddr = found.addr;
    return UVELHOST_OK;
}

uint32_t MDL_NextAddr6(uint32_t ulIfIndex, const uint8_t aucAddr[16], MDL_ADDR6_S *pstAddr) {
    if (aucAddr == nullptr)
        return 1;
    Addr6Key from = {ulIfIndex, {}};
    std::memcpy(from.addr.data(), aucAddr, from.addr.size());
    return Next(&Snapshot::addr6, from, pstAddr);
}

uint32_t MDL_NextVrrp(uint32_t ulIfIndex, uint32_t ulAddr, MDL_VRRP_S *pstVrrp) {
    return Next(&Snapshot::vrrp, Pair(ulIfIndex, ulAddr), pstVrrp);
}

uint32_t MDL_NextRoute(const MDL_ROUTE_S *pstAfter, MDL_ROUTE_S *pstRoute) {
    RouteKey from = {};
    if (pstAfter != nullptr) {
        from = {pstAfter->ulVrfIndex, pstAfter->ulAddr, pstAfter->ulPrefixLen, pstAfter->ulIfIndex,
                pstAfter->ulNextHop};
        if (++from.next_hop == 0 && ++from.if_index == 0) /* the prefix length never wraps */
            ++from.prefix_len;
    }
    return Next(&Snapshot::routes, from, pstRoute);
}

/* ---- VLANs */

uint32_t MDL_GetVlan(uint32_t ulVlanId, MDL_VLAN_S *pstVlan) {
    return Get(&Snapshot::vlans, ulVlanId, pstVlan);
}

uint32_t MDL_NextVlan(uint32_t ulVlanId, MDL_VLAN_S *pstVlan) {
    return Next(&Snapshot::vlans, ulVlanId, pstVlan);
}

uint32_t MDL_GetVlanBitmap(uint32_t aulBitmap[L2IF_VLAN_BITMAP_WORDS]) {
    if (aulBitmap == nullptr)
        return 1;
    const View view;
    std::memset(aulBitmap, 0, L2IF_VLAN_BITMAP_WORDS * sizeof *aulBitmap);
    view->vlans.VisitFrom(0, [&](uint32_t vlan, const auto &) {
        aulBitmap[vlan / 32] |= 1U << vlan % 32;
        return true;
    });
    return UVELHOST_OK;
}

uint32_t MDL_GetVlanPorts(uint32_t ulVlanId, uint32_t *pulPortIndex, uint32_t *pulCount) {
    if (ulVlanId > 4095)
        return 1;
    const View view;
    return WriteNumbers(pulPortIndex, pulCount, [&](auto &&add) {
        view->port_vlans.VisitFrom(0, [&](uint32_t port, const Node<MDL_PORT_VLANS_S> &node) {
            if (IsInVlan(node.value, ulVlanId))
                add(port);
            return true;
        });
    });
}

uint32_t MDL_GetPortVlans(uint32_t ulPortIndex, MDL_PORT_VLANS_S *pstVlans) {
    return Get(&Snapshot::port_vlans, ulPortIndex, pstVlans);
}

uint32_t MDL_NextPortVlans(uint32_t ulPortIndex, MDL_PORT_VLANS_S *pstVlans) {
    return Next(&Snapshot::port_vlans, ulPortIndex, pstVlans);
}

/* ---- trunks and VRFs */

uint32_t MDL_GetTrunk(uint32_t ulTrunkIndex, MDL_TRUNK_S *pstTrunk) {
    return Get(&Snapshot::trunks, ulTrunkIndex, pstTrunk);
}

uint32_t MDL_NextTrunk(uint32_t ulTrunkIndex, MDL_TRUNK_S *pstTrunk) {
    return Next(&Snapshot::trunks, ulTrunkIndex, pstTrunk);
}

uint32_t MDL_GetMember(uint32_t ulIfIndex, MDL_MEMBER_S *pstMember) {
    return Get(&Snapshot::members, ulIfIndex, pstMember);
}

uint32_t MDL_NextMember(uint32_t ulIfIndex, MDL_MEMBER_S *pstMember) {
    return Next(&Snapshot::members, ulIfIndex, pstMember);
}

uint32_t MDL_GetVrf(uint32_t ulVrfIndex, MDL_VRF_S *pstVrf) {
    return Get(&Snapshot::vrfs, ulVrfIndex, pstVrf);
}

uint32_t MDL_NextVrf(uint32_t ulVrfIndex, MDL_VRF_S *pstVrf) {
    return Next(&Snapshot::vrfs, ulVrfIndex, pstVrf);
}
