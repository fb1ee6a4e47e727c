// The queries from end to end: the library, the real host, and a device that a feeder has told it of.

#include "sample_device.h"

#include <atomic>
#include <string>
#include <thread>
#include <uvelcommon_base/kivo_addr_query.h>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_process_query.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/kivo_trunk_query.h>

namespace {

using namespace sample;

class Device : public testing::Test {
  protected:
    void SetUp() override {
        Load();
        KIVO_SetKivoCommonSpec(0, 64);
        KIVO_SetKivoCommonSpec(4, 250);
    }

    static void Change(uint32_t index, void (*change)(MDL_IF_S &)) {
        InBatch([&](MDL_BATCH *batch) {
            MDL_IF_S interface = OnCard(Interface(index, "GigabitEthernet1/0/2", 3), 2);
            change(interface);
            Put(batch, interface);
        });
    }
};

TEST_F(Device, TellsTheKindOfEachInterface) {
    KIVO_VirtualToHook();
    const struct {
        uint32_t index, layer2, layer3, sub, wan;
    } ROWS[] = {{ACCESS_PORT, 1, 0, 0, 0}, {UPLINK, 0, 1, 0, 1},      {SUB_INTERFACE, 0, 1, 1, 0},
                {TRUNK, 0, 1, 0, 1},       {MEMBER_DOWN, 0, 1, 0, 1}, {VLANIF, 0, 1, 0, 1},
                {NOBODY, 0, 1, 0, 0},      {0, 0, 0, 0, 0},           {0xFFFFFFFF, 0, 0, 0, 0}};
    for (const auto &row : ROWS) {
        SCOPED_TRACE(row.index);
        EXPECT_EQ(row.layer2, KIVO_IF_IsL2IF(row.index));
        EXPECT_EQ(row.layer3, KIVO_IF_IsL3IF(row.index));
        EXPECT_EQ(row.sub, KIVO_IF_IsSUBIF(row.index));
        EXPECT_EQ(row.wan, KIVO_IsWANInterface(row.index));
    }
    EXPECT_EQ(1u, KIVO_IF_GetPortType(UPLINK));
    EXPECT_EQ(3u, KIVO_IF_GetIfPhyType(UPLINK));
    EXPECT_EQ(0u, KIVO_IF_GetPortType(NOBODY));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_IF_GetIfPhyType(NOBODY));
}

TEST_F(Device, TellsStatesAndFollowsThem) {
    EXPECT_EQ(1u, KIVO_IF_GetIfLineStatuesByIndex(UPLINK));
    EXPECT_EQ(1u, KIVO_IF_GetIfPhyStatusByIndex(UPLINK));
    EXPECT_EQ(2u, KIVO_IF_GetIfLineStatuesByIndex(MEMBER_DOWN));
    EXPECT_EQ(2u, KIVO_IF_GetIfPhyStatusByIndex(MEMBER_DOWN));
    EXPECT_EQ(0u, KIVO_IF_IsPhyStateUp(MEMBER_DOWN));
    EXPECT_EQ(10u, KIVO_IF_GetIfPhyStatusByIndex(NOBODY));
    EXPECT_EQ(10u, KIVO_IF_GetIfLineStatuesByIndex(NOBODY));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_oxmif"}, kit::TakeAsserts());

    Change(UPLINK, [](MDL_IF_S &uplink) { uplink.ulLineState = IF_STATE_DOWN; });
    EXPECT_EQ(0u, KIVO_IF_IsLineStateUp(UPLINK));
    EXPECT_EQ(1u, KIVO_IF_GetIfLineStatuesByIndex(UPLINK)) << "IPv6 still can";
    Change(UPLINK, [](MDL_IF_S &uplink) { uplink.ulLineState = uplink.ulIpv6State = IF_STATE_DOWN; });
    EXPECT_EQ(2u, KIVO_IF_GetIfLineStatuesByIndex(UPLINK));
    EXPECT_EQ(1u, KIVO_IF_IsPhyStateUp(UPLINK));
    EXPECT_EQ(0u, KIVO_Adapt_IF_INTF_ShutDownInterface(UPLINK));
    EXPECT_EQ(0u, KIVO_IF_IsPhyStateUp(UPLINK));
    EXPECT_EQ(0u, KIVO_Adapt_IF_INTF_NoShutDownInterface(UPLINK));
    EXPECT_EQ(1u, KIVO_IF_IsPhyStateUp(UPLINK));
}

TEST_F(Device, TellsPlacesAndNames) {
    uint32_t value = 77;
    EXPECT_EQ(0u, IFPDT_GetSlotByIfIndex(UPLINK, &value));
    EXPECT_EQ(1u, value);
    EXPECT_EQ(0u, IFPDT_GetPortByIfIndex(UPLINK, &value));
    EXPECT_EQ(2u, value);
    EXPECT_EQ(0u, IFPDT_GetPortIndexByIfIndex(UPLINK, &value));
    EXPECT_EQ(1u, KIVO_IFPDT_GetSlotByPdtIndex(value));
    EXPECT_EQ(0u, KIVO_IFPDT_GetCardByPdtIndex(value));
    EXPECT_EQ(2u, KIVO_IFPDT_GetPortByPdtIndex(value));
    EXPECT_EQ(0u, IFPDT_GetSlotByIfIndex(TRUNK, &value));
    EXPECT_EQ(250u, value) << "the slot that stands for trunks";
    EXPECT_EQ(1u, IFPDT_GetSlotByIfIndex(VLANIF, &value));
    EXPECT_EQ(0u, value);
    EXPECT_EQ(static_cast<uint32_t>(UPLINK), KIVO_Adapt_GetMainIf(SUB_INTERFACE));
    EXPECT_EQ(static_cast<uint32_t>(UPLINK), KIVO_Adapt_GetMainIf(UPLINK));
    EXPECT_EQ(0u, KIVO_Adapt_GetMainIf(NOBODY));

    EXPECT_STREQ("GigabitEthernet1/0/2", KIVO_IF_GetName(UPLINK));
    EXPECT_STREQ("Vlanif12", KIVO_IF_GetNameByIfIndex(VLANIF));
    EXPECT_EQ(nullptr, KIVO_IF_GetName(NOBODY));
    EXPECT_STREQ("", KIVO_IF_GetNameByIfIndex(NOBODY));
    char text[64] = "";
    EXPECT_EQ(0u, KIVO_IF_INTF_GetSimpleName(UPLINK, text, sizeof text));
    EXPECT_STREQ("GE1/0/2", text);
    EXPECT_EQ(0u, KIVO_IF_GetNumStrFromName("GigabitEthernet1/0/2", text, sizeof text));
    EXPECT_STREQ("1/0/2", text);
}

TEST_F(Device, WalksSubInterfaces) {
    const IF_IFNET_S *found = KIVO_Adapt_IF_FindFirstSubIfnet(UPLINK);
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(static_cast<uint32_t>(SUB_INTERFACE), found->ulIfIndex);
    EXPECT_EQ(107u, found->usVlanId);
    found = KIVO_Adapt_IF_FindNextSubIfnet(UPLINK, found);
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(static_cast<uint32_t>(SECOND_SUB), found->ulIfIndex);
    EXPECT_EQ(nullptr, KIVO_Adapt_IF_FindNextSubIfnet(UPLINK, found));
    EXPECT_EQ(nullptr, KIVO_Adapt_IF_FindFirstSubIfnet(TRUNK));
    EXPECT_EQ(nullptr, KIVO_IF_GetIfByIndex(NOBODY));
    EXPECT_STREQ("Eth-Trunk3", KIVO_IF_GetIfByIndex(TRUNK)->szName);
}

TEST_F(Device, TellsVlansAndTheirPorts) {
    EXPECT_EQ(static_cast<uint32_t>(VLANIF), KIVO_Adapt_IF_GetIFIndexByVlanID(12));
    EXPECT_EQ(static_cast<uint32_t>(VBDIF), KIVO_Adapt_IF_GetIFIndexByVlanID(13)) << "bridged into a domain";
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Adapt_IF_GetIFIndexByVlanID(14));
    EXPECT_EQ(static_cast<uint32_t>(VLANIF), UVEL_L2IF_GetIfIndexByVlanId(12));
    EXPECT_EQ(0xFFFFFFFFu, UVEL_L2IF_GetIfIndexByVlanId(13));
    EXPECT_EQ(1u, L2IF_VLAN_IsUsed(13));
    EXPECT_EQ(0u, L2IF_VLAN_IsUsed(14));
    EXPECT_EQ(12u, KIVO_IF_GetVlanIdByIfIndex(VLANIF));
    EXPECT_EQ(65535u, KIVO_IF_GetVlanIdByIfIndex(UPLINK));
    EXPECT_EQ(12u, UVEL_L2IF_GetVlanIdByIfIndex(ACCESS_PORT));
    EXPECT_EQ(107u, UVEL_L2IF_GetVlanIdByIfIndex(SUB_INTERFACE));
    EXPECT_EQ(65535u, UVEL_L2IF_GetVlanIdByIfIndex(NOBODY));
    uint32_t any = 0;
    EXPECT_EQ(500u, UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(VBDIF, &any));

    uint32_t port = 77;
    EXPECT_EQ(0u, L2IF_SH_PORT_GetIndexByIfIndex(ACCESS_PORT, &port));
    EXPECT_EQ(0u, port);
    EXPECT_EQ(1u, KIVO_L2IF_IsValidPortIndex(47));
    EXPECT_EQ(0u, KIVO_L2IF_IsValidPortIndex(48));
    EXPECT_EQ(1u, KIVO_Adapt_PortIsInCfgVlan(0, 12));
    EXPECT_EQ(0u, KIVO_Adapt_PortIsInCfgVlan(0, 13)) << "joined without configuration";
    uint32_t bitmap[128];
    EXPECT_EQ(0u, L2IF_SH_DYNVP_GetVlanListByPort(0, bitmap));
    EXPECT_EQ(1u, KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(13, bitmap));
    EXPECT_EQ(0u, KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(12, bitmap));
}

TEST_F(Device, TellsTrunks) {
    for (const uint32_t index : {TRUNK, MEMBER_UP, MEMBER_DOWN})
        EXPECT_EQ(2u, UVEL_L2IF_GetTrunkIndex(index));
    EXPECT_EQ(static_cast<uint32_t>(UPLINK), UVEL_L2IF_GetTrunkIndex(UPLINK));
    uint32_t members[8] = {};
    uint32_t count = 8;
    EXPECT_EQ(0u, Trunk_GetTrunkMem(2, members, &count));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(static_cast<uint32_t>(MEMBER_UP), members[0]);
    EXPECT_EQ(static_cast<uint32_t>(MEMBER_DOWN), members[1]);
    uint32_t chosen = 0;
    for (const uint32_t hash : {0u, 1u, 0xFFFFFFFFu}) {
        EXPECT_EQ(0u, KIVO_Trunk_SelectActivePortByHash(TRUNK, hash, &chosen));
        EXPECT_EQ(static_cast<uint32_t>(MEMBER_UP), chosen) << "the only active one";
    }
    EXPECT_EQ(2u, TRUNK_ADP_GetMemCountOnSlot(TRUNK, 1));
    EXPECT_EQ(0u, TRUNK_ADP_GetMemCountOnSlot(TRUNK, 2));
    EXPECT_EQ(0u, KIVO_Trunk_sh_GetTrunkIfIndexByPort(MEMBER_UP, &chosen));
    EXPECT_EQ(static_cast<uint32_t>(TRUNK), chosen);
}

TEST_F(Device, TellsAddressesAndVrfs) {
    uint32_t address = 0;
    uint32_t mask = 0;
    EXPECT_EQ(0u, KIVO_Adapt_GetIfIpAddrByIndex(UPLINK, &address));
    EXPECT_EQ(0x0A010203u, address) << "the main one, though it came later";
    EXPECT_EQ(0u, KIVO_IF_GetMainIpAddr(UPLINK, &address, &mask));
    EXPECT_EQ(0xFFFFFF00u, mask);
    EXPECT_EQ(0xFFFFFF00u, KIVO_IP_GetMask(UPLINK));
    EXPECT_EQ(0u, KIVO_IP_GetMask(TRUNK));
    EXPECT_NE(0u, KIVO_IF_GetMainIpAddr(TRUNK, &address, &mask));
    EXPECT_EQ(0u, mask);

    uint8_t mac[6] = {};
    EXPECT_EQ(0u, UVEL_IF_GetThisIfMacAddrByIfIp(UPLINK, 0x0A0102FE, mac));
    EXPECT_EQ(0, std::memcmp(VIRTUAL_MAC, mac, 6));
    EXPECT_EQ(0u, UVEL_IF_GetThisIfMacAddrByIfIp(UPLINK, 0x0A010203, mac));
    EXPECT_EQ(0, std::memcmp(UPLINK_MAC, mac, 6));
    EXPECT_EQ(1u, UVEL_IF_IsThisIfMacAddr(UPLINK, UPLINK_MAC));
    EXPECT_EQ(0u, UVEL_IF_IsThisIfMacAddr(UPLINK, VIRTUAL_MAC));

    EXPECT_EQ(static_cast<uint32_t>(BLUE), KIVO_IF_GetVrfIndexByIfIndex(UPLINK));
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(ACCESS_PORT));
    EXPECT_EQ(0u, KIVO_IF_GetIpV6VrfIndexByIfIndex(UPLINK));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_IF_GetIpV6VrfIndexByIfIndex(NOBODY));
    EXPECT_EQ(1u, KIVO_IF_IsSetVpn(UPLINK));
    EXPECT_EQ(0u, KIVO_IF_IsSetVpn(TRUNK));
    EXPECT_EQ(static_cast<uint32_t>(BLUE), KIVO_Adapt_GetVsysIDByIfFullName("blue"));
    EXPECT_EQ(0u, KIVO_Adapt_GetVsysIDByIfFullName("red"));
    KIVO_SetKivoCommonSpec(0, BLUE);
    EXPECT_EQ(0u, KIVO_Adapt_GetVsysIDByIfFullName("blue")) << "not below the limit any more";
}

TEST_F(Device, TellsBoardsAndRoles) {
    EXPECT_EQ(static_cast<uint32_t>(MASTER_SLOT), NacUtilGetSelfBoardID());
    EXPECT_EQ(static_cast<uint32_t>(MASTER_SLOT), Kivo_Adapt_GetSelfBoardSlotId());
    EXPECT_EQ(1u, UVEL_GetSelfChassisId());
    EXPECT_EQ(9u, UVEL_GetSelfSlotId());
    EXPECT_EQ(37u, UVEL_GetSelfCpuId());
    EXPECT_EQ(1u, UVEL_GetSelfLocalCpuId());
    EXPECT_EQ(5u, UVEL_GetMainCpuIdBySlotId(1));
    EXPECT_EQ(1u, UVEL_GetMainLocalCpuIdBySlotId(1));
    EXPECT_EQ(0u, UVEL_GetMainCpuIdBySlotId(2)) << "an empty slot";
    EXPECT_EQ(1u, UVEL_IF_RealBoardIsUp(1));
    EXPECT_EQ(0u, UVEL_IF_RealBoardIsUp(2));
    uint32_t lowest = 0;
    uint32_t highest = 0;
    EXPECT_EQ(0u, UVEL_DevGetMpuBoardRange(&lowest, &highest));
    EXPECT_EQ(9u, lowest);
    EXPECT_EQ(10u, highest);
    uint32_t address = 0;
    EXPECT_EQ(0u, UVEL_GetMasterMainBoardIp(&address));
    EXPECT_EQ(0x7F000009u, address);
    EXPECT_EQ(0u, UVEL_GetBackUpMainBoardIp(&address));
    EXPECT_EQ(0x7F00000Au, address);

    EXPECT_EQ(1u, UVEL_IsMasterBoard());
    EXPECT_EQ(1u, KIVO_HA_SlaveIsReady());
    EXPECT_EQ(1u, KIVO_Adapt_IsBatchBackupStatus());
    EXPECT_EQ(0u, KIVO_ADP_IsSupportUserDetectBySam());
    const MDL_HA_S standby = {1, STANDBY_SLOT, MASTER_SLOT, 3, 0};
    EXPECT_EQ(0u, MDL_SetHa(&standby));
    EXPECT_EQ(0u, UVEL_IsMasterBoard());
    EXPECT_EQ(0u, KIVO_HA_SlaveIsReady());
    EXPECT_EQ(0u, KIVO_Adapt_IsBatchBackupStatus());
    EXPECT_EQ(1u, KIVO_ADP_IsSupportUserDetectBySam());
}

TEST_F(Device, IsNoneOnceItIsGone) {
    InBatch([](MDL_BATCH *batch) { ASSERT_EQ(0u, MDL_RemoveIf(batch, UPLINK)); });
    EXPECT_EQ(0u, KIVO_IF_GetPortType(UPLINK));
    EXPECT_EQ(nullptr, KIVO_IF_GetName(UPLINK));
    EXPECT_EQ(0u, KIVO_IP_GetMask(UPLINK));
    uint32_t address = 77;
    EXPECT_NE(0u, KIVO_Adapt_GetIfIpAddrByIndex(UPLINK, &address));
    EXPECT_EQ(77u, address);
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(UPLINK));
}

TEST_F(Device, IsSeenWholeWhileAFeederChangesIt) {
    std::atomic<bool> done{false};
    std::atomic<bool> begun{false};
    std::thread feeder([&] {
        for (uint32_t i = 1; !done; ++i) {
            InBatch([&](MDL_BATCH *batch) {
                const std::string name = "port " + std::to_string(i);
                MDL_IF_S interface = OnCard(Interface(UPLINK, name.c_str(), 3), 2);
                interface.ulPortType = interface.ulPhyType = i;
                Put(batch, interface);
            });
            if (!begun.exchange(true))
                begun.notify_one();
        }
    });
    begun.wait(false);
    uint32_t latest = 0;
    uint32_t seen = 0;
    for (int i = 0; i < 20000; ++i) {
        const IF_IFNET_S *record = KIVO_IF_GetIfByIndex(UPLINK);
        ASSERT_NE(nullptr, record);
        ASSERT_EQ("port " + std::to_string(record->ulPortType), record->szName);
        ASSERT_EQ(record->ulPortType, record->ulPhyType);
        ASSERT_LE(latest, record->ulPortType) << "never back";
        seen += latest != record->ulPortType ? 1 : 0;
        latest = record->ulPortType;
    }
    done = true;
    feeder.join();
    EXPECT_NE(0u, seen);
    RecordProperty("versions_seen", static_cast<int>(seen));
}

} // namespace
