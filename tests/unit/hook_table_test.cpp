#include "hook_recorder.h"

#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelcommon_base/kivo_hook_product.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_startup.h>

#include <algorithm>
#include <ostream>
#include <string_view>
#include <vector>

namespace {

enum class Kind { NUMBER, POINTER, VOID, OWN, NONE };

struct Row {
    uint32_t id;
    uint32_t slot;
    const char *name;
    WordFunction forwarder;
    Kind kind;
    uint32_t empty;
    /* One digit an argument: the bytes of it that reach the hook. Unless its type is that narrow the forwarder cuts it: 1
     * and 2 anywhere, and 4 in a row of eight words. */
    const char *widths;
};

void PrintTo(const Row &row, std::ostream *out) {
    *out << "hook " << row.id << " " << (row.name ? row.name : "-");
}

/* clang-format off */
const Row ROWS[] = {
    {0, 0, "KIVO_GetIfIpAddrByIndex", AnyForwarder(KIVO_GetIfIpAddrByIndex), Kind::NUMBER, 1, "48"},
    {1, 1, "KIVO_L2IF_GET_VLAN_IN_VLANBITMAP", AnyForwarder(KIVO_L2IF_GET_VLAN_IN_VLANBITMAP), Kind::NUMBER, 0, "28"},
    {2, 2, "KIVO_IF_GetIFIndexByVlanID", AnyForwarder(KIVO_IF_GetIFIndexByVlanID), Kind::NUMBER, 0xFFFFFFFF, "2"},
    {3, 3, nullptr, nullptr, Kind::NONE, 0, ""},
    {4, 4, "KIVO_IF_IsSUBIF", AnyForwarder(KIVO_IF_IsSUBIF), Kind::NUMBER, 0, "4"},
    {5, 5, "KIVO_IF_IsL2IF", AnyForwarder(KIVO_IF_IsL2IF), Kind::NUMBER, 0, "4"},
    {6, 6, "KIVO_IF_IsL3IF", AnyForwarder(KIVO_IF_IsL3IF), Kind::NUMBER, 0, "4"},
    {7, 7, "KIVO_GetBitByVlanIdAndIfIndex", AnyForwarder(KIVO_GetBitByVlanIdAndIfIndex), Kind::NUMBER, 0, "24"},
    {8, 8, "Kivo_GetSelfBoardId", AnyForwarder(Kivo_GetSelfBoardId), Kind::NUMBER, 0, ""},
    {9, 9, "KIVO_TRUNK_ADP_GetMemCountOnSlot", AnyForwarder(KIVO_TRUNK_ADP_GetMemCountOnSlot), Kind::NUMBER, 0, "88888888"},
    {10, 10, "KIVO_IFGetDbssAccessPort", AnyForwarder(KIVO_IFGetDbssAccessPort), Kind::NUMBER, 1, "88888888"},
    {11, 11, "KIVO_PortIsInCfgVlan", AnyForwarder(KIVO_PortIsInCfgVlan), Kind::NUMBER, 1, "82888888"},
    {12, 12, "KIVO_IF_GetAddrFlag", AnyForwarder(KIVO_IF_GetAddrFlag), Kind::NUMBER, 1, "88888888"},
    {13, 13, "KIVO_RM_Unr4Rt", AnyForwarder(KIVO_RM_Unr4Rt), Kind::NUMBER, 1, "88888888"},
    {14, 14, "KIVO_IPC_GetMainNodeID", AnyForwarder(KIVO_IPC_GetMainNodeID), Kind::NUMBER, 0xFFFFFFFF, ""},
    {15, 35, "KIVO_IPC_GetProcessIdByMidID", AnyForwarder(KIVO_IPC_GetProcessIdByMidID), Kind::NUMBER, 1, "88888888"},
    {16, 36, "KIVO_IPC_GetSelfProcessId", AnyForwarder(KIVO_IPC_GetSelfProcessId), Kind::NUMBER, 1, "88888888"},
    {17, 15, "KIVO_Gethostname", AnyForwarder(KIVO_Gethostname), Kind::NUMBER, 0xFFFFFFFF, "84"},
    {18, 16, "KIVO_IsPortInUse", AnyForwarder(KIVO_IsPortInUse), Kind::NUMBER, 0xFFFFFFFF, "22888888"},
    {19, 75, "KIVO_RegisterPort", AnyForwarder(KIVO_RegisterPort), Kind::NUMBER, 1, "88888888"},
    {20, 76, "KIVO_UnRegisterPort", AnyForwarder(KIVO_UnRegisterPort), Kind::VOID, 0, "88888888"},
    {21, 17, "KIVO_CFG_GetVsysID", AnyForwarder(KIVO_CFG_GetVsysID), Kind::NUMBER, 0, "88888888"},
    {22, 18, "KIVO_YSB_Smbuf_Create", AnyForwarder(KIVO_YSB_Smbuf_Create), Kind::POINTER, 0, "44"},
    {23, 19, "KIVO_YSB_Smbuf_Destroy", AnyForwarder(KIVO_YSB_Smbuf_Destroy), Kind::OWN, 0, ""},
    {24, 20, "KIVO_YSB_Smbuf_M2D", AnyForwarder(KIVO_YSB_Smbuf_M2D), Kind::POINTER, 0, "8"},
    {25, 21, "KIVO_YSB_Output_Packet_Smbuf", AnyForwarder(KIVO_YSB_Output_Packet_Smbuf), Kind::NUMBER, 1, "884"},
    {26, 22, "KIVO_YSB_IsActiveStatus", AnyForwarder(KIVO_YSB_IsActiveStatus), Kind::OWN, 0, ""},
    {27, 23, "KIVO_YSB_IsBackup", AnyForwarder(KIVO_YSB_IsBackup), Kind::OWN, 0, ""},
    {28, 24, "KIVO_YSB_IsRealEnable", AnyForwarder(KIVO_YSB_IsRealEnable), Kind::NUMBER, 0, "88888888"},
    {29, 25, "KIVO_GetSpuProcessNameMaxLen", AnyForwarder(KIVO_GetSpuProcessNameMaxLen), Kind::OWN, 0, ""},
    {30, 26, "KIVO_SpuCpuHelp", AnyForwarder(KIVO_SpuCpuHelp), Kind::NUMBER, 1, "88888888"},
    {31, 27, "KIVO_SpuProcessNameHelp", AnyForwarder(KIVO_SpuProcessNameHelp), Kind::NUMBER, 1, "88888888"},
    {32, 28, "KIVO_SpuCpuCheck", AnyForwarder(KIVO_SpuCpuCheck), Kind::NUMBER, 1, "88888888"},
    {33, 29, "KIVO_SpuProcessNameCheck", AnyForwarder(KIVO_SpuProcessNameCheck), Kind::NUMBER, 1, "88888888"},
    {34, 30, "KIVO_IPC_GetNodeIDByProcessName", AnyForwarder(KIVO_IPC_GetNodeIDByProcessName), Kind::NUMBER, 1, "88888888"},
    {35, 31, "KIVO_IPC_GetInstanceNameMaxLen", AnyForwarder(KIVO_IPC_GetInstanceNameMaxLen), Kind::NUMBER, 1, "8"},
    {36, 32, "KIVO_IPC_GetInstanceNameByNodeID", AnyForwarder(KIVO_IPC_GetInstanceNameByNodeID), Kind::NUMBER, 1, "4484"},
    {37, 33, "KIVO_IPC_GetProcessNameMaxLen", AnyForwarder(KIVO_IPC_GetProcessNameMaxLen), Kind::NUMBER, 1, "88888888"},
    {38, 34, "KIVO_IPC_GetProcessNameByNodeID", AnyForwarder(KIVO_IPC_GetProcessNameByNodeID), Kind::NUMBER, 1, "88888888"},
    {39, 37, "KIVO_GetVsysIDByIfFullName", AnyForwarder(KIVO_GetVsysIDByIfFullName), Kind::NUMBER, 0, "8"},
    {40, 38, "KIVO_GetIpv6VrfIndexByIfIndex", AnyForwarder(KIVO_GetIpv6VrfIndexByIfIndex), Kind::NUMBER, 0, "4"},
    {41, 39, "KIVO_RegistChineseCLI", AnyForwarder(KIVO_RegistChineseCLI), Kind::NUMBER, 1, "88888888"},
    {42, 40, "KIVO_DRV_GetPhySlot", AnyForwarder(KIVO_DRV_GetPhySlot), Kind::VOID, 0, "88888888"},
    {43, 41, "KIVO_IPC_DBI_GetNodeID", AnyForwarder(KIVO_IPC_DBI_GetNodeID), Kind::OWN, 0, ""},
    {44, 42, "KIVO_GetManagementVlan", AnyForwarder(KIVO_GetManagementVlan), Kind::OWN, 0, ""},
    {45, 43, "KIVO_GetAclNumByName", AnyForwarder(KIVO_GetAclNumByName), Kind::OWN, 0, ""},
    {46, 44, "KIVO_IFQosTransmit", AnyForwarder(KIVO_IFQosTransmit), Kind::NUMBER, 1, "88888888"},
    {47, 45, "KIVO_Ysb_LocalVersion_Register", AnyForwarder(KIVO_Ysb_LocalVersion_Register), Kind::NUMBER, 0, "88188888"},
    {48, 46, "KIVO_Ysb_MOID_Get", AnyForwarder(KIVO_Ysb_MOID_Get), Kind::NUMBER, 0xFFFFFFFF, "88888888"},
    {49, 47, "KIVO_Ysb_Nego_Version_Get", AnyForwarder(KIVO_Ysb_Nego_Version_Get), Kind::NUMBER, 1, "88888888"},
    {50, 52, "KIVO_Ysb_Reg_Recv_Batch_Finish_Callback", AnyForwarder(KIVO_Ysb_Reg_Recv_Batch_Finish_Callback), Kind::NUMBER, 0, "88888888"},
    {51, 48, "KIVO_Get_YsbCpuNum", AnyForwarder(KIVO_Get_YsbCpuNum), Kind::NUMBER, 1, "88888888"},
    {52, 49, "KIVO_Ysb_MsgCalc_RemoteTPB", AnyForwarder(KIVO_Ysb_MsgCalc_RemoteTPB), Kind::NUMBER, 0xFF, "88888888"},
    {53, 50, "KIVO_Ysb_AdaptOutputPacket_Smbuf", AnyForwarder(KIVO_Ysb_AdaptOutputPacket_Smbuf), Kind::NUMBER, 1, "8841"},
    {54, 51, "KIVO_Ysb_IsLocalCpuId", AnyForwarder(KIVO_Ysb_IsLocalCpuId), Kind::NUMBER, 1, "88888888"},
    {55, 53, "KIVO_DNSE_IsSupport_ClientVpn", AnyForwarder(KIVO_DNSE_IsSupport_ClientVpn), Kind::NUMBER, 0, "88888888"},
    {56, 54, "KIVO_IF_IsVBDIF", AnyForwarder(KIVO_IF_IsVBDIF), Kind::NUMBER, 0, "88888888"},
    {57, 55, "KIVO_Support_Thread_Register", AnyForwarder(KIVO_Support_Thread_Register), Kind::NUMBER, 0, "88888888"},
    {58, 56, "KIVO_SADP_HBTurnOnMine", AnyForwarder(KIVO_SADP_HBTurnOnMine), Kind::NUMBER, 0, "88888888"},
    {59, 57, "KIVO_SADP_HBTurnOffMine", AnyForwarder(KIVO_SADP_HBTurnOffMine), Kind::NUMBER, 0, "88888888"},
    {60, 58, "KIVO_SADP_HBResponse", AnyForwarder(KIVO_SADP_HBResponse), Kind::VOID, 0, "88888888"},
    {61, 59, "KIVO_SetBdIdToMbuf", AnyForwarder(KIVO_SetBdIdToMbuf), Kind::VOID, 0, "88888888"},
    {62, 60, "KIVO_GetBdIdFromMbuf", AnyForwarder(KIVO_GetBdIdFromMbuf), Kind::VOID, 0, "88888888"},
    {63, 61, "KIVO_Encode_RegFunc", AnyForwarder(KIVO_Encode_RegFunc), Kind::OWN, 0, ""},
    {64, 62, "KIVO_Encode_CheckStringAndInsert", AnyForwarder(KIVO_Encode_CheckStringAndInsert), Kind::NUMBER, 0, "88888828"},
    {65, 63, "KIVO_Encode_TransCode", AnyForwarder(KIVO_Encode_TransCode), Kind::NUMBER, 0, "88888888"},
    {66, 64, "KIVO_Encode_PreViewStringAndInsert", AnyForwarder(KIVO_Encode_PreViewStringAndInsert), Kind::NUMBER, 0, "88888888"},
    {67, 65, "KIVO_Encode_IsNeedTrans", AnyForwarder(KIVO_Encode_IsNeedTrans), Kind::NUMBER, 0, "88888888"},
    {68, 66, "KIVO_Encode_SetTransResult", AnyForwarder(KIVO_Encode_SetTransResult), Kind::OWN, 0, ""},
    {69, 67, "KIVO_Encode_SetAsysnResult", AnyForwarder(KIVO_Encode_SetAsysnResult), Kind::OWN, 0, ""},
    {70, 68, "KIVO_Encode_SetPreResult", AnyForwarder(KIVO_Encode_SetPreResult), Kind::OWN, 0, ""},
    {71, 69, "KIVO_Encode_GetLanCharset", AnyForwarder(KIVO_Encode_GetLanCharset), Kind::NUMBER, 1, "88888888"},
    {72, 70, "KIVO_Is_SupportOnlyLsw", AnyForwarder(KIVO_Is_SupportOnlyLsw), Kind::OWN, 0, ""},
    {73, 71, "KIVO_HA_IsBatchBackupStatus", AnyForwarder(KIVO_HA_IsBatchBackupStatus), Kind::NUMBER, 0, ""},
    {74, 72, "UVEL_COMP_MNG_Register", AnyForwarder(UVEL_COMP_MNG_Register), Kind::NUMBER, 0, "88888888"},
    {75, 73, "UVEL_COMP_MNG_RegisterEvent", AnyForwarder(UVEL_COMP_MNG_RegisterEvent), Kind::NUMBER, 1, "84888888"},
    {76, 74, "UVEL_COMP_MNG_PublishEvent", AnyForwarder(UVEL_COMP_MNG_PublishEvent), Kind::NUMBER, 1, "88888888"},
    {77, 77, "KIVO_IFPDT_ShutDownInterface", AnyForwarder(KIVO_IFPDT_ShutDownInterface), Kind::NUMBER, 0, "88888888"},
    {78, 78, "KIVO_IFPDT_NoShutDownInterface", AnyForwarder(KIVO_IFPDT_NoShutDownInterface), Kind::NUMBER, 0, "88888888"},
    {79, 79, "KIVO_IF_FindFirstSubIfnet", AnyForwarder(KIVO_IF_FindFirstSubIfnet), Kind::POINTER, 0, "88888888"},
    {80, 80, "KIVO_IF_FindNextSubIfnet", AnyForwarder(KIVO_IF_FindNextSubIfnet), Kind::POINTER, 0, "88888888"},
    {81, 81, "KIVO_IF_QosL2BNGTransmit", AnyForwarder(KIVO_IF_QosL2BNGTransmit), Kind::OWN, 0, ""},
    {82, 82, "KIVO_VAP_BdBuildrunRegister", AnyForwarder(KIVO_VAP_BdBuildrunRegister), Kind::NUMBER, 0, "88888888"},
    {83, 83, "KIVO_NotifyWlanAttrChange", AnyForwarder(KIVO_NotifyWlanAttrChange), Kind::OWN, 0, ""},
    {84, 84, "KIVO_GetFlexGroupIndexByName", AnyForwarder(KIVO_GetFlexGroupIndexByName), Kind::NUMBER, 0xFFFFFFFF, "88888888"},
    {85, 85, "KIVO_TransCfgAttrFromUvelToWlan", AnyForwarder(KIVO_TransCfgAttrFromUvelToWlan), Kind::VOID, 0, "88888888"},
    {86, 86, "KIVO_ProfileChangeNotifyCfg", AnyForwarder(KIVO_ProfileChangeNotifyCfg), Kind::OWN, 0, ""},
    {87, 87, "KIVO_BranchChangeNotifyCfg", AnyForwarder(KIVO_BranchChangeNotifyCfg), Kind::OWN, 0, ""},
    {88, 88, "KIVO_IsSupportUserDetectBySam", AnyForwarder(KIVO_IsSupportUserDetectBySam), Kind::NUMBER, 1, ""},
    {89, 89, "Kivo_GetSelfBoardSlotId", AnyForwarder(Kivo_GetSelfBoardSlotId), Kind::NUMBER, 0, ""},
    {90, 90, "KIVO_IsWANInterface", AnyForwarder(KIVO_IsWANInterface), Kind::NUMBER, 0, "4"},
    {91, 91, "KIVO_Yang_GetNaasVersion", AnyForwarder(KIVO_Yang_GetNaasVersion), Kind::NUMBER, 0, "88888888"},
    {92, 92, "KIVO_DNSE_GetDynServerFromDHCP", AnyForwarder(KIVO_DNSE_GetDynServerFromDHCP), Kind::NUMBER, 1, "88888888"},
    {93, 93, "KIVO_GetIfIndexByIPv6Addr", AnyForwarder(KIVO_GetIfIndexByIPv6Addr), Kind::NUMBER, 1, "88888888"},
    {94, 94, "KIVO_DebugOutput2IMAgent", AnyForwarder(KIVO_DebugOutput2IMAgent), Kind::NUMBER, 1, "88888888"},
};
/* clang-format on */

/* What the hook must see of an argument of which `bytes` reach it. One of eight words arrives cut as a whole; of a narrow
 * argument that the forwarder declares only the low half of the register counts. */
void ExpectArgument(unsigned bytes, bool word, Word passed, Word seen) {
    const Word reaches = bytes == 8 ? passed : passed & ((Word{1} << 8 * bytes) - 1);
    EXPECT_EQ(reaches, bytes == 8 || word ? seen : static_cast<uint32_t>(seen));
}

class HookRow : public testing::TestWithParam<Row> {
  protected:
    void SetUp() override {
        g_called = 0;
        g_answer = 0;
    }
};

TEST_P(HookRow, InstallingStoresIntoTheSlotOfTheIdAndNoOther) {
    Install(GetParam().id, RecordingHook);
    for (uint32_t slot = 0; slot < KIVO_HOOK_COUNT; ++slot) {
        if (slot == GetParam().slot) {
            EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(RecordingHook), g_stKIVOPubHook[slot]);
        } else {
            EXPECT_EQ(nullptr, g_stKIVOPubHook[slot]) << "slot " << slot;
        }
    }
    Install<void()>(GetParam().id, nullptr);
    EXPECT_EQ(nullptr, g_stKIVOPubHook[GetParam().slot]);
}

class PlainRow : public HookRow {};

TEST_P(PlainRow, AnswersItsFixedValueWhileTheSlotIsEmpty) {
    const Word result = CallMarked(GetParam().forwarder);
    if (GetParam().kind == Kind::NUMBER) {
        EXPECT_EQ(GetParam().empty, static_cast<uint32_t>(result));
    } else if (GetParam().kind == Kind::POINTER) {
        EXPECT_EQ(0u, result);
    }
    EXPECT_EQ(0, g_called);
}

TEST_P(PlainRow, PassesItsArgumentsAndTheResult) {
    Install(GetParam().id, RecordingHook);
    for (const Word answer : {Word{0}, Word{1}, Word{0x1122334455667788}, ~Word{0}}) {
        g_answer = answer;
        const Word result = CallMarked(GetParam().forwarder);
        if (GetParam().kind == Kind::NUMBER) {
            EXPECT_EQ(static_cast<uint32_t>(answer), static_cast<uint32_t>(result));
        } else if (GetParam().kind == Kind::POINTER) {
            EXPECT_EQ(answer, result);
        }
        const std::string_view widths = GetParam().widths;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "argument " << i + 1);
            ExpectArgument(static_cast<unsigned>(widths[i] - '0'), widths.size() == 8, MARKED[i], g_seen[i]);
        }
    }
    EXPECT_EQ(4, g_called);
}

TEST_P(PlainRow, SeesALateInstallationAnOverrideAndARemoval) {
    CallMarked(GetParam().forwarder);
    Install(GetParam().id, RecordingHook);
    CallMarked(GetParam().forwarder);
    EXPECT_EQ(1, g_called);
    Install(
        GetParam().id, +[](Word, Word, Word, Word, Word, Word, Word, Word) -> Word { return 4711; });
    const Word result = CallMarked(GetParam().forwarder);
    if (GetParam().kind != Kind::VOID) {
        EXPECT_EQ(4711u, static_cast<uint32_t>(result));
    }
    EXPECT_EQ(1, g_called);
    Install<void()>(GetParam().id, nullptr);
    CallMarked(GetParam().forwarder);
    EXPECT_EQ(1, g_called);
}

std::string NameOf(const testing::TestParamInfo<Row> &info) {
    return "Id" + std::to_string(info.param.id) + (info.param.name == nullptr ? "" : info.param.name);
}

std::vector<Row> PlainRows() {
    std::vector<Row> rows;
    for (const Row &row : ROWS) {
        if (row.kind != Kind::OWN && row.kind != Kind::NONE)
            rows.push_back(row);
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(AllHooks, HookRow, testing::ValuesIn(ROWS), NameOf);
INSTANTIATE_TEST_SUITE_P(PlainHooks, PlainRow, testing::ValuesIn(PlainRows()), NameOf);

TEST(HookTable, HasNinetyFiveIdsInOrder) {
    ASSERT_EQ(95u, std::size(ROWS));
    for (uint32_t id = 0; id < 95; ++id)
        EXPECT_EQ(id, ROWS[id].id);
    EXPECT_EQ(78u, PlainRows().size());
}

TEST(HookTable, AnUnknownIdChangesNothing) {
    for (const uint32_t id : {95u, 96u, 0x80000000u, 0xFFFFFFFFu})
        Install(id, RecordingHook);
    for (const KIVO_HOOK hook : g_stKIVOPubHook)
        EXPECT_EQ(nullptr, hook);
}

TEST(HookTable, ANullVariableChangesNothing) {
    Install(5, RecordingHook);
    KIVOShell_SetHookFunc(5, nullptr);
    EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(RecordingHook), g_stKIVOPubHook[5]);
}

TEST(HookTable, TellsWhatIsInstalledUnderAnId) {
    for (uint32_t id = 0; id < KIVO_HOOK_COUNT; ++id) {
        EXPECT_EQ(nullptr, KIVOShell_GetHookFunc(id)) << id;
        Install(id, RecordingHook);
        EXPECT_EQ(reinterpret_cast<KIVO_HOOK>(RecordingHook), KIVOShell_GetHookFunc(id)) << id;
    }
    EXPECT_EQ(nullptr, KIVOShell_GetHookFunc(95));
    EXPECT_EQ(nullptr, KIVOShell_GetHookFunc(0xFFFFFFFF));
}

TEST(HookTable, IdFifteenReachesTheProcessLookupAndNotTheHostName) {
    g_answer = 77;
    Install(15, RecordingHook);
    EXPECT_EQ(77u, KIVO_IPC_GetProcessIdByMidID(1, 2, 3, 4, 5, 6, 7, 8));
    char name[4];
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Gethostname(name, sizeof name));
}

struct TraceRow {
    uint32_t slot;
    WordFunction forwarder;
    bool valued;
    uint32_t empty;
};

const TraceRow TRACE_ROWS[] = {
    {0, AnyForwarder(BTRC_Pub_IsBTRCEnabled), true, 0},      {1, AnyForwarder(BTRC_Pub_ClearUserDesc), false, 0},
    {2, AnyForwarder(BTRC_Pub_InstFillInfoByMAC), true, 1},  {3, AnyForwarder(BTRC_Pub_InstFillInfoByIP), true, 1},
    {4, AnyForwarder(BTRC_Pub_InstFillInfoByID), true, 1},   {5, AnyForwarder(BTRC_Pub_InstFillInfoByCID), true, 1},
    {6, AnyForwarder(BTRC_Pub_InstQuitByMAC), true, 1},      {7, AnyForwarder(BTRC_Pub_InstQuitByIP), true, 1},
    {8, AnyForwarder(BTRC_Pub_InstQuitByID), true, 1},       {9, AnyForwarder(BTRC_Pub_InstQuitByCID), true, 1},
    {10, AnyForwarder(BTRC_Pub_GetInstStateByMAC), true, 1}, {11, AnyForwarder(BTRC_Pub_GetInstStateByIP), true, 1},
    {12, AnyForwarder(BTRC_Pub_GetInstStateByID), true, 1},  {13, AnyForwarder(BTRC_Pub_GetInstStateByCID), true, 1},
    {14, AnyForwarder(BTRC_Pub_OutInfoByMAC), true, 1},      {15, AnyForwarder(BTRC_Pub_OutInfoByIP), true, 1},
    {16, AnyForwarder(BTRC_Pub_OutInfoByID), true, 1},       {17, AnyForwarder(BTRC_Pub_OutInfoByCID), true, 1},
    {18, AnyForwarder(BTRC_Pub_NoInst_OutInfo), true, 1},    {19, AnyForwarder(BTRC_Pub_GetInfoLevel), true, 0},
};

TEST(TraceHooks, AnswerThatTracingIsOffWhileTheTableIsEmpty) {
    for (const TraceRow &row : TRACE_ROWS) {
        const Word result = CallMarked(row.forwarder);
        if (row.valued) {
            EXPECT_EQ(row.empty, static_cast<uint32_t>(result)) << "slot " << row.slot;
        }
    }
}

TEST(TraceHooks, PassEightWordsAndTheResult) {
    for (const TraceRow &row : TRACE_ROWS) {
        SCOPED_TRACE(row.slot);
        g_called = 0;
        g_answer = 0xFFFFFFFF00000000 + row.slot + 100;
        g_stBtrcPubApiHook[row.slot] = reinterpret_cast<KIVO_HOOK>(RecordingHook);
        const Word result = CallMarked(row.forwarder);
        EXPECT_EQ(1, g_called);
        ExpectMarkedSeen();
        if (row.valued) {
            EXPECT_EQ(row.slot + 100, static_cast<uint32_t>(result));
        }
        g_stBtrcPubApiHook[row.slot] = nullptr;
    }
}

TEST(TraceHooks, AreTheirComponentsAloneThroughTheWholeStart) {
    std::vector<KIVO_HOOK> written;
    for (KIVO_HOOK &slot : g_stBtrcPubApiHook)
        written.push_back(slot = reinterpret_cast<KIVO_HOOK>(RecordingHook));
    EXPECT_EQ(24u, written.size());
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    KIVO_VirtualToHook();
    EXPECT_TRUE(std::equal(written.begin(), written.end(), g_stBtrcPubApiHook));
    g_answer = 1;
    EXPECT_EQ(1u, BTRC_Pub_IsBTRCEnabled(0, 0, 0, 0, 0, 0, 0, 0));
}

} // namespace
