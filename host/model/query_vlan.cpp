#include <uvelhost/l2if.h>

#include "model/query.h"

using namespace uvel::host::model;

namespace {

/* Second number of the first pair that begins with `first`; UVELHOST_NONE without one. */
uint32_t FirstWith(const SortedMap<uint64_t, uint32_t> &map, uint32_t first) {
    uint32_t found = UVELHOST_NONE;
    map.VisitFrom(Pair(first, 0), [&](uint64_t key, uint32_t second) {
        if (First(key) == first)
            found = second;
        return false;
    });
    return found;
}

uint32_t WriteFirst(const SortedMap<uint64_t, uint32_t> &map, uint32_t first, uint32_t *out) {
    const uint32_t found = FirstWith(map, first);
    if (found == UVELHOST_NONE || out == nullptr)
        return 1;
    *out = found;
    return UVELHOST_OK;
}

const MDL_IF_S *InterfaceOfPort(const Reading &model, uint32_t port_index) {
    if (const MDL_IF_S *going = GoingPort(port_index); going != nullptr)
        return going;
    const uint32_t *if_index = model->interface_of_port.Find(port_index);
    return if_index != nullptr ? model->interfaces.Get(*if_index) : nullptr;
}

} // namespace

/* ---- VLANs */

uint32_t BDS_L2IF_VLAN_IsUsed(uint16_t usVlanId) {
    const Reading model;
    return model->vlans.Get(usVlanId) != nullptr;
}

uint32_t BDS_L2IF_VLAN_GetIfIndexByVlanId(uint16_t usVlanId, uint32_t *pulIfIndex) {
    const Reading model;
    return WriteFirst(model->vlan_interfaces, usVlanId, pulIfIndex);
}

uint32_t BDS_L2IF_VLAN_GetVlanIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex) {
    const Reading model;
    return WriteFirst(model->vlan_interfaces, usVlanId, pulIfIndex);
}

uint32_t BDS_L2_VlanGetIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex) {
    const Reading model;
    return WriteFirst(model->vlan_interfaces, usVlanId, pulIfIndex);
}

uint32_t BDS_L2_VlanGetVbdIfIndex(uint16_t usVlanId, uint32_t *pulIfIndex) {
    const Reading model;
    const MDL_VLAN_S *vlan = model->vlans.Get(usVlanId);
    return vlan == nullptr || vlan->ulBd == UVELHOST_NONE ? 1
                                                          : WriteFirst(model->bd_interfaces, vlan->ulBd, pulIfIndex);
}

uint32_t BDS_L2_VlanGetIdByIfIndex(uint32_t ulIfIndex, uint32_t ulOption, uint32_t *pulId) {
    const Reading model;
    const MDL_IF_S *interface = FindIf(model, ulIfIndex);
    if (interface == nullptr || pulId == nullptr || ulOption > L2IF_ID_VLAN_OR_BD)
        return 1;
    if (ulOption == L2IF_ID_VLAN_OR_BD && interface->ulBd != UVELHOST_NONE) {
        *pulId = interface->ulBd;
        return UVELHOST_OK;
    }
    const uint16_t vlan = interface->usVlanId != MDL_NO_VLAN        ? interface->usVlanId
                          : interface->ulPortIndex != UVELHOST_NONE ? interface->usPvid
                                                                    : static_cast<uint16_t>(MDL_NO_VLAN);
    if (vlan == MDL_NO_VLAN)
        return 1;
    *pulId = vlan;
    return UVELHOST_OK;
}

/* ---- switch ports */

uint32_t BDS_L2IF_SH_GetMaxSwitchPortNum(void) {
    const Reading model;
    return model->device.ulMaxSwitchPorts;
}

uint32_t BDS_L2IF_PORT_IsUsed(uint32_t ulPortIndex) {
    const Reading model;
    return InterfaceOfPort(model, ulPortIndex) != nullptr;
}

uint32_t BDS_L2IF_PORT_GetIfIndex(uint32_t ulPortIndex, uint32_t *pulIfIndex) {
    const Reading model;
    return Write(InterfaceOfPort(model, ulPortIndex), pulIfIndex, [](const MDL_IF_S &each) { return each.ulIfIndex; });
}

uint32_t BDS_L2IF_SH_PORT_GetIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex) {
    return WriteField(ulIfIndex, pulPortIndex, &MDL_IF_S::ulPortIndex, UVELHOST_NONE);
}

uint32_t BDS_L2IF_SH_GetVlanIdFromMode(uint32_t ulPortIndex, uint32_t ulMode, uint16_t *pusVlanId) {
    const Reading model;
    const MDL_IF_S *port = InterfaceOfPort(model, ulPortIndex);
    if (port == nullptr || pusVlanId == nullptr || port->ulPortMode != ulMode || port->usPvid == MDL_NO_VLAN)
        return 1;
    *pusVlanId = port->usPvid;
    return UVELHOST_OK;
}

/* ---- bindings */

uint32_t L2IF_VP_PortIsInCfgVlan(uint32_t ulPortIndex, uint16_t usVlanId) {
    const Reading model;
    const MDL_PORT_VLANS_S *vlans = model->port_vlans.Get(ulPortIndex);
    return vlans != nullptr && usVlanId < 4096 &&
           (Has(vlans->aulUntagged, usVlanId) || Has(vlans->aulTagged, usVlanId));
}

uint32_t BDS_L2IF_SH_DYNVP_GetVlanListByPort(uint32_t ulPortIndex, uint32_t aulBitmap[L2IF_VLAN_BITMAP_WORDS]) {
    const Reading model;
    if (aulBitmap == nullptr || InterfaceOfPort(model, ulPortIndex) == nullptr)
        return 1;
    const MDL_PORT_VLANS_S *vlans = model->port_vlans.Get(ulPortIndex);
    for (uint32_t i = 0; i < L2IF_VLAN_BITMAP_WORDS; ++i)
        aulBitmap[i] = vlans == nullptr ? 0 : vlans->aulDynUntagged[i] | vlans->aulDynTagged[i];
    return UVELHOST_OK;
}

uint32_t BDS_L2IF_SH_DYNVP_GetPortListByVlan(uint16_t usVlanId, uint32_t *pulPortIndex, uint32_t *pulCount) {
    const Reading model;
    if (model->vlans.Get(usVlanId) == nullptr)
        return 1;
    return WriteNumbers(pulPortIndex, pulCount, [&](auto &&add) {
        model->port_vlans.VisitFrom(0, [&](uint32_t port, const Node<MDL_PORT_VLANS_S> &node) {
            if (Has(node.value.aulDynUntagged, usVlanId) || Has(node.value.aulDynTagged, usVlanId))
                add(port);
            return true;
        });
    });
}

uint32_t BDS_L2IF_SH_DYNVP_GetVlanPortBindMode(uint16_t usVlanId, uint32_t ulPortIndex, uint32_t *pulMode) {
    const Reading model;
    if (pulMode == nullptr || model->vlans.Get(usVlanId) == nullptr || InterfaceOfPort(model, ulPortIndex) == nullptr)
        return 1;
    const MDL_PORT_VLANS_S *vlans = model->port_vlans.Get(ulPortIndex);
    *pulMode = vlans == nullptr                       ? L2IF_BIND_NONE
               : Has(vlans->aulDynTagged, usVlanId)   ? L2IF_BIND_TAGGED
               : Has(vlans->aulDynUntagged, usVlanId) ? L2IF_BIND_UNTAGGED
                                                      : L2IF_BIND_NONE;
    return UVELHOST_OK;
}
