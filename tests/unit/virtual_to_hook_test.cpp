#include "hook_recorder.h"
#include "kit.h"

#include <cstring>
#include <dlfcn.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelcommon_base/kivo_hook_product.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>

namespace {

/* By hook id: the slot, and what the library installs there. */
const struct Row {
    uint32_t slot;
    const char *adapter;
} ROWS[] = {
    {0, "KIVO_Adapt_GetIfIpAddrByIndex"},
    {1, "KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP"},
    {2, "KIVO_Adapt_IF_GetIFIndexByVlanID"},
    {3, "KIVO_Adapt_IF_GetVlanIdByIfIndex"},
    {4, "KIVO_Adapt_IF_IS_SUBIF"},
    {5, "KIVO_Adapt_IF_IS_L2IF"},
    {6, "KIVO_Adapt_IF_IS_L3IF"},
    {7, "KIVO_Adapt_GetBitByVlanIdAndPortIndex"},
    {8, "NacUtilGetSelfBoardID"},
    {9, "TRUNK_ADP_GetMemCountOnSlot"},
    {10, nullptr},
    {11, "KIVO_Adapt_PortIsInCfgVlan"},
    {12, "KIVO_Adapt_GetAddrFlag"},
    {13, "KIVO_Adapt_SetUnr4Rt"},
    {14, "KIVO_Adapt_IPC_GetMainNodeID"},
    {35, "KIVO_Adapt_GetProcessIdByMid"},
    {36, nullptr},
    {15, "KIVO_Adapt_Gethostname"},
    {16, nullptr},
    {75, nullptr},
    {76, nullptr},
    {17, "KIVO_Adapt_CFG_GetVsysID"},
    {18, "YSB_Adapt_Smbuf_Create"},
    {19, "YSB_Adapt_Smbuf_Destroy"},
    {20, "YSB_Adapt_Smbuf_M2D"},
    {21, "YSB_Adapt_Output_Packet_Smbuf"},
    {22, "YSB_Adapt_IsActiveStatus"},
    {23, nullptr},
    {24, "YsbAdaptIsRealEnable"},
    {25, nullptr},
    {26, "KIVO_Adapt_SpuCpuHelp"},
    {27, nullptr},
    {28, "KIVO_Adapt_SpuCpuCheck"},
    {29, nullptr},
    {30, nullptr},
    {31, "KIVO_Adapt_GetInstanceNameMaxLen"},
    {32, "KIVO_Adapt_GetInstanceNameByNodeID"},
    {33, nullptr},
    {34, nullptr},
    {37, "KIVO_Adapt_GetVsysIDByIfFullName"},
    {38, "KIVO_Adapt_GetIpv6VrfIndexByIfIndex"},
    {39, "KIVO_Adapt_RegistChineseCLI"},
    {40, "KIVO_Adapt_DRV_GetPhySlot"},
    {41, "KIVO_Adapt_IPC_GetNodeID"},
    {42, nullptr},
    {43, nullptr},
    {44, nullptr},
    {45, "YsbAdaptRegisterVersion"},
    {46, "YsbAdaptGetModId"},
    {47, "YsbAdaptGetNegoVersion"},
    {52, nullptr},
    {48, nullptr},
    {49, nullptr},
    {50, "YSB_Adapt_Output_Packet_ToCtrlCpu"},
    {51, nullptr},
    {53, nullptr},
    {54, nullptr},
    {55, nullptr},
    {56, nullptr},
    {57, nullptr},
    {58, nullptr},
    {59, nullptr},
    {60, nullptr},
    {61, nullptr},
    {62, nullptr},
    {63, nullptr},
    {64, nullptr},
    {65, nullptr},
    {66, nullptr},
    {67, nullptr},
    {68, nullptr},
    {69, nullptr},
    {70, "KIVO_Adapt_SupportOnlyLsw"},
    {71, "KIVO_Adapt_IsBatchBackupStatus"},
    {72, nullptr},
    {73, nullptr},
    {74, nullptr},
    {77, "KIVO_Adapt_IF_INTF_ShutDownInterface"},
    {78, "KIVO_Adapt_IF_INTF_NoShutDownInterface"},
    {79, "KIVO_Adapt_IF_FindFirstSubIfnet"},
    {80, "KIVO_Adapt_IF_FindNextSubIfnet"},
    {81, "UVEL_IF_QosL2BNGTransmit"},
    {82, nullptr},
    {83, nullptr},
    {84, nullptr},
    {85, nullptr},
    {86, nullptr},
    {87, nullptr},
    {88, "KIVO_ADP_IsSupportUserDetectBySam"},
    {89, "Kivo_Adapt_GetSelfBoardSlotId"},
    {90, "KIVO_Adapt_IsWANInterface"},
    {91, nullptr},
    {92, nullptr},
    {93, nullptr},
    {94, nullptr},
};

void ExpectAdapters() {
    ASSERT_EQ(95u, std::size(ROWS));
    uint32_t adapters = 0;
    for (std::size_t id = 0; id < std::size(ROWS); ++id) {
        SCOPED_TRACE(testing::Message() << "hook " << id);
        void *expected = nullptr;
        if (ROWS[id].adapter != nullptr) {
            expected = dlsym(RTLD_DEFAULT, ROWS[id].adapter);
            ASSERT_NE(nullptr, expected) << ROWS[id].adapter;
            ++adapters;
        }
        EXPECT_EQ(expected, reinterpret_cast<void *>(g_stKIVOPubHook[ROWS[id].slot]));
    }
    EXPECT_EQ(46u, adapters);
}

uint32_t MyIsL2If(uint32_t) {
    return 4711;
}

TEST(Adapters, StandInTheirSlotsAndTheOthersStayEmpty) {
    for (const KIVO_HOOK hook : g_stKIVOPubHook)
        ASSERT_EQ(nullptr, hook);
    KIVO_VirtualToHook();
    ExpectAdapters();
}

TEST(Adapters, AreInstalledOnceSoThatAnOverrideStays) {
    KIVO_VirtualToHook();
    Install(KIVO_HOOK_IF_IS_L2IF, MyIsL2If);
    Install<void()>(KIVO_HOOK_IF_IS_L3IF, nullptr);
    KIVO_VirtualToHook();
    EXPECT_EQ(4711u, KIVO_IF_IsL2IF(5));
    EXPECT_EQ(nullptr, g_stKIVOPubHook[6]);
}

TEST(Adapters, LeaveWhatTheProductInstalledElsewhere) {
    Install(KIVO_HOOK_IS_PORT_IN_USE, MyIsL2If);
    KIVO_VirtualToHook();
    EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(MyIsL2If), g_stKIVOPubHook[16]);
}

TEST(Adapters, ComeBackWithTheBodyOfTheInstallation) {
    KIVO_VirtualToHook();
    Install(KIVO_HOOK_IF_IS_L2IF, MyIsL2If);
    KIVO_VirtualToHookAdp();
    ExpectAdapters();
}

TEST(Adapters, OfTheBodyAloneDoNotCountAsInstalled) {
    KIVO_VirtualToHookAdp();
    Install(KIVO_HOOK_IF_IS_L2IF, MyIsL2If);
    KIVO_VirtualToHook();
    ExpectAdapters();
}

TEST(Adapters, AreGoneWhenTheTableIsInitialisedAfterwards) {
    KIVO_VirtualToHook();
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    KIVO_VirtualToHook();
    for (const KIVO_HOOK hook : g_stKIVOPubHook)
        EXPECT_EQ(nullptr, hook) << "the order of start-up is the caller's";
}

/* ---- from the forwarder through the adapter to the host, argument by argument ---- */

class ThroughTheTable : public testing::Test {
  protected:
    void SetUp() override { KIVO_VirtualToHook(); }

    /* What the host is asked while `call` runs. */
    template <typename Call>
    std::vector<std::string> Asked(Call call) {
        const kit::Recorder recorder;
        call();
        return recorder.Calls();
    }

    static uintptr_t Word(const void *pointer) { return reinterpret_cast<uintptr_t>(pointer); }

    uint32_t out_ = 0;
    uint32_t other_ = 0;
    char text_[64] = "";
};

using Calls = std::vector<std::string>;

TEST_F(ThroughTheTable, InterfacesAreAskedFor) {
    EXPECT_EQ(Calls{"BDS_IPGetFirstIpByIfIndex(5, ptr)"}, Asked([&] { KIVO_GetIfIpAddrByIndex(5, &out_); }));
    kit::Op<BDS_IfnetIsSubIf>().Returns(1);
    EXPECT_EQ(Calls{"BDS_IfnetIsSubIf(5)"}, Asked([] { EXPECT_EQ(1u, KIVO_IF_IsSUBIF(5)); }));
    kit::Op<BDS_IfnetIsSwitchPort>().Returns(1);
    EXPECT_EQ(Calls{"BDS_IfnetIsSwitchPort(5)"}, Asked([] { EXPECT_EQ(1u, KIVO_IF_IsL2IF(5)); }));
    EXPECT_EQ(Calls{"BDS_IfnetIsSwitchPort(5)"}, Asked([] { EXPECT_EQ(0u, KIVO_IF_IsL3IF(5)); }));
    EXPECT_EQ(Calls{"BDS_IPGetIpFlagByIfIndex(5, ptr)"},
              Asked([&] { KIVO_IF_GetAddrFlag(5, Word(&out_), 0, 0, 0, 0, 0, 0); }));
    EXPECT_EQ(Calls{"BDS_IfnetGetIpv6VrfIndexByIfIndex(5, ptr)"}, Asked([] { KIVO_GetIpv6VrfIndexByIfIndex(5); }));
    kit::Op<IF_INTF_ShutDownInterface>().Returns(3);
    kit::Op<IF_INTF_NoShutDownInterface>().Returns(4);
    EXPECT_EQ(Calls{"IF_INTF_ShutDownInterface(5)"},
              Asked([] { EXPECT_EQ(3u, KIVO_IFPDT_ShutDownInterface(5, 0, 0, 0, 0, 0, 0, 0)); }));
    EXPECT_EQ(Calls{"IF_INTF_NoShutDownInterface(5)"},
              Asked([] { EXPECT_EQ(4u, KIVO_IFPDT_NoShutDownInterface(5, 0, 0, 0, 0, 0, 0, 0)); }));
    IF_IFNET_S record = {};
    kit::Op<IF_FindFirstSubIfnet>().Returns(&record);
    kit::Op<IF_FindNextSubIfnet>().Returns(nullptr);
    EXPECT_EQ(Calls{"IF_FindFirstSubIfnet(5)"},
              Asked([&] { EXPECT_EQ(&record, KIVO_IF_FindFirstSubIfnet(5, 0, 0, 0, 0, 0, 0, 0)); }));
    EXPECT_EQ(Calls{"IF_FindNextSubIfnet(5, ptr)"},
              Asked([&] { EXPECT_EQ(nullptr, KIVO_IF_FindNextSubIfnet(5, Word(&record), 0, 0, 0, 0, 0, 0)); }));
    EXPECT_EQ("BDS_TrunkIsPortInTrunk(5)", Asked([] { KIVO_IsWANInterface(5); }).at(0));
}

TEST_F(ThroughTheTable, VlansAndTrunksAreAskedForWithTheVlanCut) {
    uint32_t bitmap[128] = {0, 1};
    EXPECT_EQ(1u, KIVO_L2IF_GET_VLAN_IN_VLANBITMAP(0xABC00020, bitmap));
    EXPECT_EQ((Calls{"BDS_L2_VlanGetVbdIfIndex(12, ptr)", "BDS_L2IF_VLAN_GetIfIndexByVlanId(12, ptr)"}),
              Asked([] { KIVO_IF_GetIFIndexByVlanID(0xABC0000C); }));
    EXPECT_EQ(Calls{"BDS_L2IF_SH_PORT_GetIndexByIfIndex(5, ptr)"}, Asked([] { KIVO_GetBitByVlanIdAndIfIndex(12, 5); }));
    kit::Op<L2IF_VP_PortIsInCfgVlan>().Returns(1);
    EXPECT_EQ(Calls{"L2IF_VP_PortIsInCfgVlan(5, 12)"},
              Asked([] { EXPECT_EQ(1u, KIVO_PortIsInCfgVlan(5, 0xABC0000C, 0, 0, 0, 0, 0, 0)); }));
    kit::Op<BDS_TRUNK_GetMemCountOnSlot>().Returns(7);
    EXPECT_EQ(Calls{"BDS_TRUNK_GetMemCountOnSlot(5, 3)"},
              Asked([] { EXPECT_EQ(7u, KIVO_TRUNK_ADP_GetMemCountOnSlot(5, 3, 0, 0, 0, 0, 0, 0)); }));
    kit::Op<RM_SetUnr4Rt>().Returns(9);
    EXPECT_EQ(Calls{"RM_SetUnr4Rt(1, 2, 3, 4, 5, 6)"},
              Asked([] { EXPECT_EQ(9u, KIVO_RM_Unr4Rt(1, 2, 3, 4, 5, 6, 0, 0)); }));
}

TEST_F(ThroughTheTable, BoardsAndProcessesAreAskedFor) {
    kit::Op<DEVM_DB_GetSelfBoardId>().Does([](uint32_t *board) {
        *board = 9;
        return 0U;
    });
    EXPECT_EQ(Calls{"DEVM_DB_GetSelfBoardId(ptr)"}, Asked([] { EXPECT_EQ(9u, Kivo_GetSelfBoardId()); }));
    kit::Op<HA_GetBoardType>().Returns(1);
    EXPECT_EQ((Calls{"HA_GetBoardType()", "DEVM_DB_GetSelfBoardId(ptr)"}),
              Asked([] { EXPECT_EQ(9u, Kivo_GetSelfBoardSlotId()); }));
    kit::Op<HA_GetMasterBoardID>().Returns(8);
    EXPECT_EQ(1u, KIVO_IsSupportUserDetectBySam());
    kit::Op<HA_GetState>().Returns(2);
    EXPECT_EQ(Calls{"HA_GetState()"}, Asked([] { EXPECT_EQ(1u, KIVO_HA_IsBatchBackupStatus()); }));
    kit::Op<DRV_GetPhySlot>().Does([](uint32_t, uint32_t *slot) { *slot = 31; });
    EXPECT_EQ(Calls{"DRV_GetPhySlot(5, ptr)"}, Asked([&] { KIVO_DRV_GetPhySlot(5, Word(&out_), 0, 0, 0, 0, 0, 0); }));
    EXPECT_EQ(31u, out_);
    kit::Op<CMNGA_QueryCompProcByMid>().Returns(0);
    EXPECT_EQ(Calls{"CMNGA_QueryCompProcByMid(5, ptr)"},
              Asked([&] { EXPECT_EQ(0u, KIVO_IPC_GetProcessIdByMidID(5, Word(&out_), 0, 0, 0, 0, 0, 0)); }));
    kit::Op<CFG_GetVsysID>().Returns(6);
    EXPECT_EQ(Calls{"CFG_GetVsysID()"}, Asked([] { EXPECT_EQ(6u, KIVO_CFG_GetVsysID(0, 0, 0, 0, 0, 0, 0, 0)); }));
    EXPECT_EQ(Calls{"BDS_l3vpnName2VrfIdQueryByName(\"blue\", ptr)"},
              Asked([] { EXPECT_EQ(0u, KIVO_GetVsysIDByIfFullName("blue")); }));
    EXPECT_EQ(0u, KIVO_IPC_GetMainNodeID());
    EXPECT_EQ(0u, KIVO_IPC_GetInstanceNameMaxLen(&out_));
    EXPECT_EQ(32u, out_);
    EXPECT_EQ(0u, KIVO_IPC_GetInstanceNameByNodeID(7, 0x3000, text_, sizeof text_));
    EXPECT_STREQ("process  3", text_);
}

TEST_F(ThroughTheTable, NodesComeSorted) {
    kit::Op<CMNGA_QueryNodeId>().Does([](uint32_t, uint32_t, uint32_t, uint32_t *nodes, uint32_t *count) {
        nodes[0] = 9;
        nodes[1] = 4;
        nodes[2] = 7;
        *count = 3;
        return 0U;
    });
    uint32_t nodes[256] = {};
    EXPECT_EQ(0u, KIVO_IPC_DBI_GetNodeID(1, 2, 3, nodes, &out_));
    EXPECT_EQ(3u, out_);
    EXPECT_EQ(4u, nodes[0]);
    EXPECT_EQ(7u, nodes[1]);
    EXPECT_EQ(9u, nodes[2]);
    const auto [mid, type, slot, list, count] = kit::Op<CMNGA_QueryNodeId>().Last();
    EXPECT_EQ(std::make_tuple(1u, 2u, 3u, &nodes[0], &out_), std::make_tuple(mid, type, slot, list, count));
}

TEST_F(ThroughTheTable, TheCommandLineIsReached) {
    CLI_TEXT_S texts[] = {{"a", "b"}};
    kit::Op<CLI_RegistChinese>().Returns(5);
    EXPECT_EQ(Calls{"CLI_RegistChinese(6, ptr, 1)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_RegistChineseCLI(6, Word(texts), 1, 0, 0, 0, 0, 0)); }));
    kit::Op<SPU_CpuHelp>().Returns(5);
    EXPECT_EQ(Calls{"SPU_CpuHelp(ptr, 64)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_SpuCpuHelp(Word(text_), 64, 0, 0, 0, 0, 0, 0)); }));
    kit::Op<SPU_CpuCheck>().Returns(5);
    EXPECT_EQ(Calls{"SPU_CpuCheck(\"1/0\", ptr, ptr)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_SpuCpuCheck(Word("1/0"), Word(&out_), Word(&other_), 0, 0, 0, 0, 0)); }));
    kit::Op<DEV_SupportOnlyLsw>().Returns(0);
    EXPECT_EQ(Calls{}, Asked([] { EXPECT_EQ(1u, KIVO_Is_SupportOnlyLsw()) << "an adapter is there, that is enough"; }));
}

TEST_F(ThroughTheTable, TheHostNameIsAskedFor) {
    kit::Op<db_create_sub_connect>().Returns(1);
    kit::Op<QAL_CreateTask>().Returns(1);
    kit::Op<DEV_GetSystemName>().Does([](char *name, uint32_t) {
        std::strcpy(name, "router");
        return 0U;
    });
    EXPECT_EQ(0u, KIVO_Gethostname(text_, sizeof text_));
    EXPECT_STREQ("router", text_);
}

TEST_F(ThroughTheTable, TheStandbyServiceIsReached) {
    auto *smbuf = reinterpret_cast<YSB_SMBUF_S *>(&other_);
    kit::Op<YSB_Adapt_Smbuf_Create>().Returns(smbuf);
    EXPECT_EQ(Calls{"YSB_Adapt_Smbuf_Create(5, 64)"},
              Asked([&] { EXPECT_EQ(static_cast<void *>(smbuf), KIVO_YSB_Smbuf_Create(5, 64)); }));
    kit::Op<YSB_Adapt_Smbuf_Destroy>().Does([](YSB_SMBUF_S *) {});
    EXPECT_EQ(Calls{"YSB_Adapt_Smbuf_Destroy(ptr)"}, Asked([&] { KIVO_YSB_Smbuf_Destroy(smbuf); }));
    kit::Op<YSB_Adapt_Smbuf_M2D>().Returns(&out_);
    EXPECT_EQ(Calls{"YSB_Adapt_Smbuf_M2D(ptr)"},
              Asked([&] { EXPECT_EQ(static_cast<void *>(&out_), KIVO_YSB_Smbuf_M2D(smbuf)); }));
    kit::Op<YSB_Adapt_Output_Packet_Smbuf>().Returns(5);
    EXPECT_EQ(Calls{"YSB_Adapt_Output_Packet_Smbuf(7, ptr, 48)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_YSB_Output_Packet_Smbuf(7, Word(smbuf), 48)); }));
    kit::Op<YSB_Adapt_Output_Packet_ToCtrlCpu>().Returns(5);
    EXPECT_EQ(Calls{"YSB_Adapt_Output_Packet_ToCtrlCpu(7, ptr, 48, 2)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_Ysb_AdaptOutputPacket_Smbuf(7, Word(smbuf), 48, 0xABCDEF02)); }));
    kit::Op<YSB_Adapt_IsActiveStatus>().Returns(5);
    EXPECT_EQ(Calls{"YSB_Adapt_IsActiveStatus(ptr)"}, Asked([&] { EXPECT_EQ(5u, KIVO_YSB_IsActiveStatus(&out_)); }));
    kit::Op<YsbAdaptIsRealEnable>().Returns(1);
    EXPECT_EQ(Calls{"YsbAdaptIsRealEnable()"},
              Asked([] { EXPECT_EQ(1u, KIVO_YSB_IsRealEnable(0, 0, 0, 0, 0, 0, 0, 0)); }));
    kit::Op<YsbAdaptGetModId>().Returns(5);
    EXPECT_EQ(Calls{"YsbAdaptGetModId(6)"}, Asked([] { EXPECT_EQ(5u, KIVO_Ysb_MOID_Get(6, 0, 0, 0, 0, 0, 0, 0)); }));
    kit::Op<YsbAdaptRegisterVersion>().Returns(5);
    EXPECT_EQ(Calls{"YsbAdaptRegisterVersion(6, 7, 1)"},
              Asked([] { EXPECT_EQ(5u, KIVO_Ysb_LocalVersion_Register(6, 7, 0xABCDEF01, 0, 0, 0, 0, 0)); }));
    kit::Op<YsbAdaptGetNegoVersion>().Returns(5);
    EXPECT_EQ(Calls{"YsbAdaptGetNegoVersion(6, ptr)"},
              Asked([&] { EXPECT_EQ(5u, KIVO_Ysb_Nego_Version_Get(6, Word(&out_), 0, 0, 0, 0, 0, 0)); }));
}

TEST_F(ThroughTheTable, APacketIsMarkedAndNotReleased) {
    MBUF_S packet = {};
    EXPECT_EQ(Calls{}, Asked([&] { EXPECT_EQ(1u, KIVO_IF_QosL2BNGTransmit(&packet, 0, 0, 0, 0, 0, 0, 0)); }));
    EXPECT_EQ(1u, packet.ulFlags);
}

} // namespace
