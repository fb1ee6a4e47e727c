#include <uvelhost/interface.h>

#include "model/query.h"

using namespace uvel::host::model;

namespace {

uint32_t WriteState(uint32_t if_index, uint32_t *out, uint32_t MDL_IF_S::*state) {
    const AskedInterface asked(if_index);
    return Write(asked.Get(), out, [&](const MDL_IF_S &each) { return Effective(each, each.*state); });
}

/* 1 when there is the interface and it is as asked. */
template <typename Is>
uint32_t Answer(uint32_t if_index, Is &&is) {
    const AskedInterface asked(if_index);
    const MDL_IF_S *interface = asked.Get();
    return interface != nullptr && is(*interface);
}

/* The record that the operations on whole records hand out. */
thread_local IF_IFNET_S t_record;

const IF_IFNET_S *Record(const MDL_IF_S *interface) {
    if (interface == nullptr)
        return nullptr;
    t_record.ulIfIndex = interface->ulIfIndex;
    t_record.ulMainIfIndex = interface->ulMainIfIndex;
    t_record.ulPortType = interface->ulPortType;
    t_record.ulPhyType = interface->ulPhyType;
    t_record.ulLineState = Effective(*interface, interface->ulLineState);
    t_record.ulPhyState = Effective(*interface, interface->ulPhyState);
    t_record.usVlanId = interface->usVlanId;
    std::memcpy(t_record.aucMac, interface->aucMac, sizeof t_record.aucMac);
    std::memcpy(t_record.szName, interface->szName, sizeof t_record.szName);
    return &t_record;
}

/* The sub-interface with the lowest index not below `from`. */
const IF_IFNET_S *SubIfFrom(uint32_t main, uint32_t from) {
    const Reading model;
    const MDL_IF_S *found = nullptr;
    model->sub_interfaces.VisitFrom(Pair(main, from), [&](uint64_t key, uint32_t if_index) {
        if (First(key) == main)
            found = model->interfaces.Get(if_index);
        return false;
    });
    return Record(found);
}

} // namespace

uint32_t BDS_IsValidIfIndex(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex);
}

/* ---- kind */

uint32_t BDS_IfnetIsSwitchPort(uint32_t ulIfIndex) {
    return Answer(ulIfIndex, [](const MDL_IF_S &each) { return each.ulLayer == 2; });
}

uint32_t BDS_IfnetIsL3IF(uint32_t ulIfIndex) {
    return Answer(ulIfIndex, [](const MDL_IF_S &each) { return each.ulLayer == 3; });
}

uint32_t BDS_IfnetIsSubIf(uint32_t ulIfIndex) {
    return Answer(ulIfIndex, [](const MDL_IF_S &each) { return each.ulMainIfIndex != each.ulIfIndex; });
}

uint32_t BDS_IfnetIsTempIf(uint32_t ulIfIndex) {
    return Answer(ulIfIndex, [](const MDL_IF_S &each) { return (each.ulFlags & MDL_IF_TEMP) != 0; });
}

uint32_t IFPDT_IsAdminEthPort(uint32_t ulIfIndex) {
    return Answer(ulIfIndex, [](const MDL_IF_S &each) { return (each.ulFlags & MDL_IF_ADMIN_ETH) != 0; });
}

uint32_t BDS_IfnetGetPortType(uint32_t ulIfIndex, uint32_t *pulType) {
    const AskedInterface asked(ulIfIndex);
    return Write(asked.Get(), pulType, [](const MDL_IF_S &each) { return each.ulPortType; });
}

uint32_t BDS_IfnetGetPhyType(uint32_t ulIfIndex, uint32_t *pulType) {
    const AskedInterface asked(ulIfIndex);
    return Write(asked.Get(), pulType, [](const MDL_IF_S &each) { return each.ulPhyType; });
}

/* ---- state */

uint32_t BDS_IfnetGetLineState(uint32_t ulIfIndex, uint32_t *pulState) {
    return WriteState(ulIfIndex, pulState, &MDL_IF_S::ulLineState);
}

uint32_t BDS_IfnetGetIpv6LinkState(uint32_t ulIfIndex, uint32_t *pulState) {
    return WriteState(ulIfIndex, pulState, &MDL_IF_S::ulIpv6State);
}

uint32_t BDS_IfnetGetIfPhyState(uint32_t ulIfIndex, uint32_t *pulState) {
    return WriteState(ulIfIndex, pulState, &MDL_IF_S::ulPhyState);
}

/* ---- place */

uint32_t BDS_IfnetGetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot) {
    return WriteField(ulIfIndex, pulSlot, &MDL_IF_S::ulSlot, UVELHOST_NONE);
}

uint32_t BDS_IfnetGetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard) {
    return WriteField(ulIfIndex, pulCard, &MDL_IF_S::ulCard, UVELHOST_NONE);
}

uint32_t BDS_IfnetGetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort) {
    return WriteField(ulIfIndex, pulPort, &MDL_IF_S::ulPort, UVELHOST_NONE);
}

uint32_t BDS_IfnetGetPortIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPortIndex) {
    const AskedInterface asked(ulIfIndex);
    const MDL_IF_S *interface = asked.Get();
    if (interface == nullptr || pulPortIndex == nullptr || interface->ulSlot > 0xFF || interface->ulCard > 7 ||
        interface->ulPort > 63)
        return 1;
    *pulPortIndex = interface->ulSlot << 16 | interface->ulCard << 13 | interface->ulPort;
    return UVELHOST_OK;
}

uint32_t BDS_IfnetGetMainIfIndex(uint32_t ulIfIndex, uint32_t *pulMainIfIndex) {
    const AskedInterface asked(ulIfIndex);
    return Write(asked.Get(), pulMainIfIndex, [](const MDL_IF_S &each) { return each.ulMainIfIndex; });
}

uint32_t BDS_IfnetGetVapIndexByDbssIfIndex(uint32_t ulIfIndex, uint32_t *pulVapIndex) {
    return WriteField(ulIfIndex, pulVapIndex, &MDL_IF_S::ulVap, UVELHOST_NONE);
}

/* ---- addresses and memberships */

uint32_t BDS_IfnetGetMacByIfIndex(uint32_t ulIfIndex, uint8_t aucMac[IF_MAC_SIZE]) {
    const AskedInterface asked(ulIfIndex);
    const MDL_IF_S *interface = asked.Get();
    if (interface == nullptr || aucMac == nullptr)
        return 1;
    std::memcpy(aucMac, interface->aucMac, IF_MAC_SIZE);
    return UVELHOST_OK;
}

uint32_t BDS_IfnetGetVlanIdByIfIndex(uint32_t ulIfIndex, uint16_t *pusVlanId) {
    return WriteField(ulIfIndex, pusVlanId, &MDL_IF_S::usVlanId, MDL_NO_VLAN);
}

uint32_t BDS_IfnetGetVrfIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulVrfIndex) {
    const AskedInterface asked(ulIfIndex);
    return Write(asked.Get(), pulVrfIndex, [](const MDL_IF_S &each) { return each.ulVrf; });
}

uint32_t BDS_IfnetGetIpv6VrfIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulVrfIndex) {
    const AskedInterface asked(ulIfIndex);
    return Write(asked.Get(), pulVrfIndex, [](const MDL_IF_S &each) { return each.ulIpv6Vrf; });
}

/* ---- names */

uint32_t BDS_IfnetGetIfNameByIfIndex(uint32_t ulIfIndex, char *pszName, uint32_t ulSize) {
    const AskedInterface asked(ulIfIndex);
    const MDL_IF_S *interface = asked.Get();
    return interface == nullptr ? 1 : WriteText(interface->szName, pszName, ulSize);
}

uint32_t IF_INTF_GetSimpleName(uint32_t ulIfIndex, char *pszName, uint32_t ulSize) {
    const AskedInterface asked(ulIfIndex);
    const MDL_IF_S *interface = asked.Get();
    if (interface == nullptr)
        return 1;
    return WriteText(interface->szShortName[0] != '\0' ? interface->szShortName : interface->szName, pszName, ulSize);
}

uint32_t BDS_IfnetGetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize) {
    if (pszName == nullptr)
        return 1;
    const char *number = std::strpbrk(pszName, "0123456789");
    return number == nullptr ? 1 : WriteText(number, pszNumber, ulSize);
}

/* ---- whole records */

const IF_IFNET_S *IF_GetIfByIndex(uint32_t ulIfIndex) {
    const AskedInterface asked(ulIfIndex);
    return Record(asked.Get());
}

const IF_IFNET_S *IF_FindFirstSubIfnet(uint32_t ulMainIfIndex) {
    return SubIfFrom(ulMainIfIndex, 0);
}

const IF_IFNET_S *IF_FindNextSubIfnet(uint32_t ulMainIfIndex, const IF_IFNET_S *pstCurrent) {
    return pstCurrent == nullptr || pstCurrent->ulIfIndex == UVELHOST_NONE
               ? nullptr
               : SubIfFrom(ulMainIfIndex, pstCurrent->ulIfIndex + 1);
}
