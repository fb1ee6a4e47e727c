// Questions about the device: every query of the library, on a device with an interface of every kind.

#include "../unit/sample_device.h"
#include "host_scenarios.h"

#include <uvelcommon_base/kivo_addr_query.h>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_trunk_query.h>

namespace host_scenarios {

namespace {

using namespace sample;

constexpr uint32_t INTERFACES[] = {ACCESS_PORT, UPLINK, SUB_INTERFACE, MEMBER_DOWN, TRUNK, VLANIF};

void LoadDevice() {
    Load();
    KIVO_SetKivoCommonSpec(0, 64);
    KIVO_SetKivoCommonSpec(4, 250);
}

void AskKinds(Transcript &log) {
    for (const uint32_t index : INTERFACES) {
        log.Ask(KIVO_IF_IsValidIfIndex, index);
        log.Ask(KIVO_Adapt_IF_GetIFLayerType, index);
        log.Ask(KIVO_Adapt_IF_IS_L2IF, index);
        log.Ask(KIVO_Adapt_IF_IS_L3IF, index);
        log.Ask(KIVO_Adapt_IF_IS_SUBIF, index);
        log.Ask(KIVO_Adapt_IsWANInterface, index);
        log.Ask(KIVO_IF_GetPortType, index);
        log.Ask(KIVO_IF_GetIfPhyType, index);
        log.Ask(IF_INTF_IsTempIf, index);
        log.Ask(KIVO_IFPDT_IsAdminEthPort, index);
    }
}

void AskStates(Transcript &log) {
    kit::Op<IF_INTF_NoShutDownInterface>().Real(UPLINK);
    for (const uint32_t index : INTERFACES) {
        log.Ask(KIVO_IF_GetIfLineStatuesByIndex, index);
        log.Ask(KIVO_IF_GetIfPhyStatusByIndex, index);
        log.Ask(KIVO_IF_IsLineStateUp, index);
        log.Ask(KIVO_IF_IsPhyStateUp, index);
    }
    log.Ask(KIVO_Adapt_IF_INTF_ShutDownInterface, UPLINK);
    log.Ask(KIVO_IF_IsPhyStateUp, UPLINK);
    log.Ask(KIVO_Adapt_IF_INTF_NoShutDownInterface, UPLINK);
    log.Ask(KIVO_IF_IsPhyStateUp, UPLINK);
}

void AskPlaces(Transcript &log) {
    for (const uint32_t index : INTERFACES) {
        for (const auto query : {IFPDT_GetSlotByIfIndex, KIVO_IFPDT_GetSlotByIfIndex, IFPDT_GetCardByIfIndex,
                                 KIVO_IFPDT_GetCardByIfIndex, IFPDT_GetPortByIfIndex, KIVO_IFPDT_GetPortByIfIndex,
                                 IFPDT_GetPortIndexByIfIndex, IFPDT_GetVapIndexByDbssIfIndex})
            log.Ask(query, index, log.Out());
        log.Ask(KIVO_Adapt_GetMainIf, index);
    }
}

void AskNames(Transcript &log) {
    for (const uint32_t index : INTERFACES) {
        log.Ask(KIVO_IF_GetNameByIfIndex, index);
        log.Ask(KIVO_IF_GetName, index);
        log.Ask(IF_GetIfNameByIfIndex, index, log.Out(), 64);
        log.Ask(KIVO_IF_INTF_GetSimpleName, index, log.Out(), 64);
    }
    const char *const name = "GigabitEthernet1/0/2";
    log.Ask(IF_INTF_GetNumStrFromName, name, log.Out(), 64);
    log.Ask(KIVO_IF_GetNumStrFromName, name, log.Out(), 64);
    const char *const slot = "3";
    log.Ask(IF_GetSlotIdBySlotStr, slot, log.Out());
    log.Ask(KIVO_IF_GetSlotIdBySlotStr, slot, log.Out());
    log.Ask(KIVO_GetSlotStrBySlotId, 1, log.Out(), 64);
}

void AskRecords(Transcript &log) {
    log.Ask(KIVO_IF_GetIfByIndex, UPLINK);
    const IF_IFNET_S *sub = log.Ask(KIVO_Adapt_IF_FindFirstSubIfnet, UPLINK);
    while (sub != nullptr) {
        log.Say(sub->szName);
        sub = log.Ask(KIVO_Adapt_IF_FindNextSubIfnet, UPLINK, sub);
    }
}

void AskAddresses(Transcript &log) {
    for (const uint32_t index : INTERFACES) {
        for (const auto query : {IP_GetIfIpAddrByIndex, KIVO_IP_GetIfIpAddrByIndex, KIVO_Adapt_GetIfIpAddrByIndex,
                                 UVEL_IP_IF_GetThisIfIpAddr, KIVO_Adapt_GetAddrFlag})
            log.Ask(query, index, log.Out());
        log.Ask(KIVO_IF_GetMainIpAddr, index, log.Out(), log.Out());
        log.Ask(KIVO_IP_GetMask, index);
        log.Ask(UVEL_IF_IsThisIfMacAddr, index, UPLINK_MAC);
        log.Ask(UVEL_IF_IsThisIfMacAddr, index, VIRTUAL_MAC);
        for (const uint32_t address : {0x0A010203u, 0x0A0102FEu})
            log.Ask(UVEL_IF_GetThisIfMacAddrByIfIp, index, address, log.Out());
        log.Ask(KIVO_IF_GetVrfIndexByIfIndex, index);
        log.Ask(KIVO_IF_GetIpV6VrfIndexByIfIndex, index);
        log.Ask(KIVO_Adapt_GetIpv6VrfIndexByIfIndex, index);
        log.Ask(KIVO_IF_IsSetVpn, index);
    }
    log.Ask(KIVO_Adapt_SetUnr4Rt, RM_UNR_ADD, BLUE, 0x0A020000, 16, UPLINK, 0);
    log.Ask(KIVO_Adapt_SetUnr4Rt, RM_UNR_DELETE, BLUE, 0x0A020000, 16, UPLINK, 0);
    const char *const name = "blue";
    log.Ask(KIVO_L3VPN6_VRFMGM_VrfIdQueryByName, name, log.Out());
    log.Ask(KIVO_L3VPN6_VRFMGM_VrfNameQueryById, BLUE, log.Out());
}

void AskVlans(Transcript &log) {
    for (const uint16_t vlan : {uint16_t{12}, uint16_t{13}, uint16_t{77}}) {
        log.Ask(KIVO_Adapt_IF_GetIFIndexByVlanID, vlan);
        log.Ask(UVEL_L2IF_GetIfIndexByVlanId, vlan);
        log.Ask(L2IF_VLAN_GetVlanIfIndex, vlan, log.Out());
        log.Ask(KIVO_L2IF_VLAN_GetVlanIfIndex, vlan, log.Out());
        log.Ask(L2IF_VLAN_IsUsed, vlan);
        log.Ask(KIVO_Adapt_GetBitByVlanIdAndPortIndex, vlan, ACCESS_PORT);
        log.Ask(L2IF_SH_DYNVP_GetPortListByVlan, vlan, log.Out(), log.Out(8));
        log.Ask(L2IF_SH_DYNVP_GetVlanPortBindMode, vlan, 0, log.Out());
        log.Ask(KIVO_Adapt_PortIsInCfgVlan, 0, vlan);
    }
    for (const uint32_t index : INTERFACES) {
        log.Ask(KIVO_IF_GetVlanIdByIfIndex, index);
        log.Ask(KIVO_Adapt_IF_GetVlanIdByIfIndex, index);
        log.Ask(UVEL_L2IF_GetVlanIdByIfIndex, index);
        const uint32_t id = 1;
        log.Ask(UVEL_L2IF_GetVlanIdOrBdIdByIfIndex, index, &id);
    }
}

void AskPorts(Transcript &log) {
    log.Ask(L2IF_SH_GetMaxSwitchPortNum);
    for (const uint32_t port : {0u, 1u}) {
        log.Ask(KIVO_L2IF_IsValidPortIndex, port);
        log.Ask(L2IF_PORT_IsUsed, port);
        log.Ask(KIVO_L2IF_PORT_IsUsed, port);
        log.Ask(L2IF_PORT_GetIfIndex, port, log.Out());
        log.Ask(KIVO_L2IF_PORT_GetIfIndex, port, log.Out());
        for (const uint32_t mode : {0u, 1u, 2u}) {
            log.Ask(L2IF_SH_GetVlanIdFromMode, port, mode, log.Out());
            log.Ask(KIVO_L2IF_SH_GetVlanIdFromMode, port, mode, log.Out());
        }
        log.Ask(L2IF_SH_DYNVP_GetVlanListByPort, port, log.Out());
    }
    log.Ask(L2IF_SH_PORT_GetIndexByIfIndex, ACCESS_PORT, log.Out());
    log.Ask(KIVO_L2IF_SH_PORT_GetIndexByIfIndex, ACCESS_PORT, log.Out());
}

void AskTrunks(Transcript &log) {
    for (const uint32_t index : {TRUNK, MEMBER_UP, UPLINK}) {
        log.Ask(Trunk_GetTrunkIndex, index, log.Out(), log.Out());
        log.Ask(KIVO_Trunk_GetTrunkIndex, index, log.Out(), log.Out());
        log.Ask(UVEL_L2IF_GetTrunkIndex, index);
        log.Ask(Trunk_sh_GetTrunkIfIndexByPort, index, log.Out());
        log.Ask(KIVO_Trunk_sh_GetTrunkIfIndexByPort, index, log.Out());
        log.Ask(TRUNK_ADP_GetMemCountOnSlot, index, 1);
        log.Ask(KIVO_Trunk_SelectActivePortByHash, index, 7, log.Out());
    }
    log.Ask(Trunk_GetTrunkMem, 2, log.Out(), log.Out(8));
    log.Ask(Trunk_ADP_GetAllBoard, 2, log.Out(), log.Out(8));
    log.Ask(Trunk_SelectFirstUpPortByTrunkIndex, 2, log.Out());
}

void AskOwnBoard(Transcript &log) {
    for (const auto query : {NacUtilGetSelfBoardID, KIVO_Adapt_GetSelfBoardId, Kivo_Adapt_GetSelfBoardSlotId,
                             UVEL_GetSelfChassisId, UVEL_GetSelfSlotId, UVEL_GetSelfCpuId, UVEL_GetSelfLocalCpuId,
                             UVEL_IsMasterBoard, KIVO_HA_SlaveIsReady, KIVO_Adapt_IsBatchBackupStatus,
                             KIVO_ADP_IsSupportUserDetectBySam, SRV_IsSlaveReady, SRV_IsMasterBoard, SRV_IsSlaveBoard})
        log.Ask(query);
    for (const auto query : {UVEL_DevGetSelfBoardIp, UVEL_GetMasterMainBoardIp, UVEL_DevGetMasterMainBoardIp,
                             UVEL_GetBackUpMainBoardIp, UVEL_DevGetBackUpMainBoardIp})
        log.Ask(query, log.Out());
}

void AskBoards(Transcript &log) {
    for (const uint32_t slot : {1u, 2u, MASTER_SLOT + 0u}) {
        log.Ask(UVEL_GetBoardPresent, slot, log.Out());
        log.Ask(UVEL_GetBoardRegisterStatus, slot, log.Out());
        log.Ask(UVEL_IF_RealBoardIsUp, slot);
        log.Ask(UVEL_GetMainCpuIdBySlotId, slot);
        log.Ask(UVEL_GetMainLocalCpuIdBySlotId, slot);
        log.Ask(UVEL_GetIpBySlotAndCpu, slot, 0, log.Out());
        log.Ask(UVEL_GetLocalSlotIdByGlobalSlotId, slot, log.Out());
        log.Ask(UVEL_GetGlobalSlotIdByLocalSlotId, slot, log.Out());
        log.Ask(KIVO_Adapt_DRV_GetPhySlot, slot, log.Out());
    }
    log.Ask(UVEL_DevGetMpuBoardRange, log.Out(), log.Out());
    log.Ask(UVEL_GetMpuAllSlot, log.Out(), log.Out(8));
    log.Ask(UVEL_GetMpuAllSlotAndIp, log.Out(), log.Out(), log.Out(8));
}

} // namespace

std::vector<Scenario> QueryScenarios() {
    return {{"InterfaceKinds", Life::SHARED, LoadDevice, AskKinds},
            {"InterfaceStates", Life::SHARED, LoadDevice, AskStates},
            {"InterfacePlaces", Life::SHARED, LoadDevice, AskPlaces},
            {"InterfaceNames", Life::SHARED, LoadDevice, AskNames},
            {"InterfaceRecords", Life::SHARED, LoadDevice, AskRecords},
            {"Addresses", Life::SHARED, LoadDevice, AskAddresses},
            {"Vlans", Life::SHARED, LoadDevice, AskVlans},
            {"SwitchPorts", Life::SHARED, LoadDevice, AskPorts},
            {"Trunks", Life::SHARED, LoadDevice, AskTrunks},
            {"OwnBoard", Life::ONCE, LoadDevice, AskOwnBoard}, /* what it learnt once it does not ask again */
            {"Boards", Life::SHARED, LoadDevice, AskBoards}};
}

} // namespace host_scenarios
