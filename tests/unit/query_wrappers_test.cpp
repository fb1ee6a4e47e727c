// The queries that only hand a question to the host and its answer back, one line each.

#include "pass_through.h"

#include <arpa/inet.h>
#include <uvelcommon_base/kivo_addr_query.h>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_host_helpers.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_process_query.h>
#include <uvelcommon_base/kivo_trunk_query.h>

namespace {

TEST(Wrappers, OfInterfacesPassThrough) {
    EXPECT_PASSES_THROUGH(IF_INTF_IsTempIf, BDS_IfnetIsTempIf);
    EXPECT_PASSES_THROUGH(KIVO_IFPDT_IsAdminEthPort, IFPDT_IsAdminEthPort);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_IF_INTF_ShutDownInterface, IF_INTF_ShutDownInterface);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_IF_INTF_NoShutDownInterface, IF_INTF_NoShutDownInterface);
    EXPECT_PASSES_THROUGH(IFPDT_GetCardByIfIndex, BDS_IfnetGetCardByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_IFPDT_GetCardByIfIndex, BDS_IfnetGetCardByIfIndex);
    EXPECT_PASSES_THROUGH(IFPDT_GetPortByIfIndex, BDS_IfnetGetPortByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_IFPDT_GetPortByIfIndex, BDS_IfnetGetPortByIfIndex);
    EXPECT_PASSES_THROUGH(IFPDT_GetPortIndexByIfIndex, BDS_IfnetGetPortIndexByIfIndex);
    EXPECT_PASSES_THROUGH(IFPDT_GetVapIndexByDbssIfIndex, BDS_IfnetGetVapIndexByDbssIfIndex);
    EXPECT_PASSES_THROUGH(IF_GetIfNameByIfIndex, BDS_IfnetGetIfNameByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_IF_INTF_GetSimpleName, IF_INTF_GetSimpleName);
    EXPECT_PASSES_THROUGH(IF_INTF_GetNumStrFromName, BDS_IfnetGetNumStrFromName);
    EXPECT_PASSES_THROUGH(KIVO_IF_GetNumStrFromName, BDS_IfnetGetNumStrFromName);
    EXPECT_PASSES_THROUGH(IF_GetSlotIdBySlotStr, BDS_IfnetGetSlotIdBySlotStr);
    EXPECT_PASSES_THROUGH(KIVO_IF_GetSlotIdBySlotStr, BDS_IfnetGetSlotIdBySlotStr);
    EXPECT_PASSES_THROUGH(KIVO_GetSlotStrBySlotId, IF_GetSlotStrBySlotId);
    EXPECT_PASSES_THROUGH(KIVO_IF_GetIfByIndex, IF_GetIfByIndex);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_IF_FindFirstSubIfnet, IF_FindFirstSubIfnet);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_IF_FindNextSubIfnet, IF_FindNextSubIfnet);
}

TEST(Wrappers, OfLayer2PassThrough) {
    EXPECT_PASSES_THROUGH(KIVO_Adapt_PortIsInCfgVlan, L2IF_VP_PortIsInCfgVlan);
    EXPECT_PASSES_THROUGH(L2IF_VLAN_GetVlanIfIndex, BDS_L2IF_VLAN_GetVlanIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_L2IF_VLAN_GetVlanIfIndex, BDS_L2IF_VLAN_GetVlanIfIndex);
    EXPECT_PASSES_THROUGH(L2IF_VLAN_IsUsed, BDS_L2IF_VLAN_IsUsed);
    EXPECT_PASSES_THROUGH(L2IF_SH_GetMaxSwitchPortNum, BDS_L2IF_SH_GetMaxSwitchPortNum);
    EXPECT_PASSES_THROUGH(L2IF_SH_GetVlanIdFromMode, BDS_L2IF_SH_GetVlanIdFromMode);
    EXPECT_PASSES_THROUGH(KIVO_L2IF_SH_GetVlanIdFromMode, BDS_L2IF_SH_GetVlanIdFromMode);
    EXPECT_PASSES_THROUGH(L2IF_SH_DYNVP_GetVlanListByPort, BDS_L2IF_SH_DYNVP_GetVlanListByPort);
    EXPECT_PASSES_THROUGH(L2IF_SH_DYNVP_GetPortListByVlan, BDS_L2IF_SH_DYNVP_GetPortListByVlan);
    EXPECT_PASSES_THROUGH(L2IF_SH_DYNVP_GetVlanPortBindMode, BDS_L2IF_SH_DYNVP_GetVlanPortBindMode);
    EXPECT_PASSES_THROUGH(L2IF_SH_PORT_GetIndexByIfIndex, BDS_L2IF_SH_PORT_GetIndexByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_L2IF_SH_PORT_GetIndexByIfIndex, BDS_L2IF_SH_PORT_GetIndexByIfIndex);
    EXPECT_PASSES_THROUGH(L2IF_PORT_IsUsed, BDS_L2IF_PORT_IsUsed);
    EXPECT_PASSES_THROUGH(KIVO_L2IF_PORT_IsUsed, BDS_L2IF_PORT_IsUsed);
    EXPECT_PASSES_THROUGH(L2IF_PORT_GetIfIndex, BDS_L2IF_PORT_GetIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_L2IF_PORT_GetIfIndex, BDS_L2IF_PORT_GetIfIndex);
}

TEST(Wrappers, OfTrunksPassThrough) {
    EXPECT_PASSES_THROUGH(Trunk_GetTrunkIndex, BDS_TrunkGetTrunkIndex);
    EXPECT_PASSES_THROUGH(KIVO_Trunk_GetTrunkIndex, BDS_TrunkGetTrunkIndex);
    EXPECT_PASSES_THROUGH(Trunk_sh_GetTrunkIfIndexByPort, BDS_TrunkGetTrunkIfIndexByPort);
    EXPECT_PASSES_THROUGH(KIVO_Trunk_sh_GetTrunkIfIndexByPort, BDS_TrunkGetTrunkIfIndexByPort);
    EXPECT_PASSES_THROUGH(Trunk_GetTrunkMem, BDS_TrunkGetTrunkMem);
    EXPECT_PASSES_THROUGH(Trunk_ADP_GetAllBoard, BDS_TrunkGetAllBoard);
    EXPECT_PASSES_THROUGH(TRUNK_ADP_GetMemCountOnSlot, BDS_TRUNK_GetMemCountOnSlot);
    EXPECT_PASSES_THROUGH(Trunk_SelectFirstUpPortByTrunkIndex, BDS_TrunkSelectFirstUpPort);
    EXPECT_PASSES_THROUGH(KIVO_Trunk_SelectActivePortByHash, BDS_TrunkActiveIfIndexByTrunkIfIndex);
}

TEST(Wrappers, OfAddressesPassThrough) {
    EXPECT_PASSES_THROUGH(IP_GetIfIpAddrByIndex, BDS_IPGetFirstIpByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_IP_GetIfIpAddrByIndex, BDS_IPGetFirstIpByIfIndex);
    EXPECT_PASSES_THROUGH(UVEL_IP_IF_GetThisIfIpAddr, BDS_IPIFGetThisIfIpAddr);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_GetAddrFlag, BDS_IPGetIpFlagByIfIndex);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_SetUnr4Rt, RM_SetUnr4Rt);
    EXPECT_PASSES_THROUGH(KIVO_L3VPN6_VRFMGM_VrfIdQueryByName, L3VPN6_VRFMGM_VrfIdQueryByName);
    EXPECT_PASSES_THROUGH(KIVO_L3VPN6_VRFMGM_VrfNameQueryById, L3VPN6_VRFMGM_VrfNameQueryById);
}

TEST(Wrappers, OfBoardsPassThrough) {
    EXPECT_PASSES_THROUGH(UVEL_DevGetSelfBoardIp, DEVM_DB_GetSelfBoardIp);
    EXPECT_PASSES_THROUGH(UVEL_GetIpBySlotAndCpu, DEVM_DB_GetIpBySlotAndCpu);
    EXPECT_PASSES_THROUGH(UVEL_GetMpuAllSlot, DEVM_DB_GetMpuAllSlot);
    EXPECT_PASSES_THROUGH(UVEL_GetMpuAllSlotAndIp, DEVM_GetMpuAllSlotAndIp);
    EXPECT_PASSES_THROUGH(UVEL_GetLocalSlotIdByGlobalSlotId, DEVM_DB_GetLocalSlotIdByGlobalSlotId);
    EXPECT_PASSES_THROUGH(UVEL_GetGlobalSlotIdByLocalSlotId, DEVM_DB_GetGlobalSlotIdByLocalSlotId);
    EXPECT_PASSES_THROUGH(UVEL_GetBoardPresent, DEVM_DB_GetBoardPresent);
    EXPECT_PASSES_THROUGH(UVEL_GetBoardRegisterStatus, DEVM_DB_GetBoardRegisterStatus);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_DRV_GetPhySlot, DRV_GetPhySlot);
}

TEST(Wrappers, OfTheProductPassThrough) {
    EXPECT_PASSES_THROUGH(KIVO_Adapt_CFG_GetVsysID, CFG_GetVsysID);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_SupportOnlyLsw, DEV_SupportOnlyLsw);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_RegistChineseCLI, CLI_RegistChinese);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_SpuCpuHelp, SPU_CpuHelp);
    EXPECT_PASSES_THROUGH(KIVO_Adapt_SpuCpuCheck, SPU_CpuCheck);
    EXPECT_PASSES_THROUGH(KIVO_DLL_Delete, DLL_Delete);
    EXPECT_PASSES_THROUGH(KIVO_INET_Cksum, INET_Cksum);
    EXPECT_PASSES_THROUGH(KIVO_IP_NetmaskIsContinue, IP_NetmaskIsContinue);
}

/* Each answers 1 for the interface indices 0 and 0xFFFFFFFF before the host is asked, and writes nothing. */
template <auto Operation>
void ExpectGuarded(uint32_t (*exported)(uint32_t, uint32_t *)) {
    kit::Op<Operation>().Returns(0);
    for (const uint32_t index : {0u, 0xFFFFFFFFu}) {
        uint32_t value = 77;
        EXPECT_EQ(1u, exported(index, &value));
        EXPECT_EQ(77u, value);
    }
    EXPECT_EQ(0u, kit::Op<Operation>().Calls());
    for (const uint32_t index : {1u, 0x80000000u, 0xFFFFFFFEu}) {
        uint32_t value = 77;
        EXPECT_EQ(0u, exported(index, &value));
    }
    EXPECT_EQ(3u, kit::Op<Operation>().Calls());
    kit::Op<Operation>().Reset();
}

TEST(Wrappers, DoNotAskForTheInvalidIndices) {
    ExpectGuarded<BDS_IfnetGetCardByIfIndex>(IFPDT_GetCardByIfIndex);
    ExpectGuarded<BDS_IfnetGetCardByIfIndex>(KIVO_IFPDT_GetCardByIfIndex);
    ExpectGuarded<BDS_IfnetGetPortByIfIndex>(IFPDT_GetPortByIfIndex);
    ExpectGuarded<BDS_IfnetGetPortByIfIndex>(KIVO_IFPDT_GetPortByIfIndex);
    ExpectGuarded<BDS_IfnetGetPortIndexByIfIndex>(IFPDT_GetPortIndexByIfIndex);
    ExpectGuarded<BDS_TrunkGetTrunkIfIndexByPort>(Trunk_sh_GetTrunkIfIndexByPort);
    ExpectGuarded<BDS_TrunkGetTrunkIfIndexByPort>(KIVO_Trunk_sh_GetTrunkIfIndexByPort);
}

TEST(Wrappers, ReadAnIpv4TextAsTheCLibraryDoes) {
    EXPECT_EQ(htonl(0x0A010203), KIVO_InetAddr("10.1.2.3"));
    EXPECT_EQ(htonl(0x7F000001), KIVO_InetAddr("127.1"));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_InetAddr("10.1.2.256"));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_InetAddr("255.255.255.255"));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_InetAddr(nullptr));
}

} // namespace
