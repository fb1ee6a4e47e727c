// Every notification that the adapters translate: event, sub-event, way, the record byte by byte, and the result.

#include "event_trap.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vlan_events.h>
#include <uvelcommon_base/kivo_vsys.h>

namespace {

struct Row {
    const char *name;
    std::function<uint32_t()> notification;
    RaisedEvent expected;
    bool resultIsHidden = false; /* the adapter does not tell what became of the event */
};

/* What the host's pointers lead to. */
const uint32_t PORT_INDEX = 0x01020304;
const uint16_t VLAN = 0x0123;
const uint16_t VLANS[2] = {0x0123, 0x0456};
uint16_t g_value = 0xABCD;
uint32_t g_attribute = 0xA1B2C3D4;
uint32_t g_flags = 0x41;
uint32_t g_noFlags = 0xFFFFFFBE;
uint32_t g_allFlags = 0xFFFFFFFF;
const uint32_t ADDRESS_NET = 0x0100000A; /* the bytes 0A 00 00 01 */
uint16_t g_qinq[10] = {1, 2, 3, 4, 5, 6, 0x6677, 8, 0x8899, 0x99AA};
uint32_t g_bitmap[128] = {0x80000001, 0, 0x00010000};

struct {
    uint32_t unused = 99;
    uint32_t count = 3;
    uint32_t entries[3] = {0x11, 0x22, 0x33334444};
} g_ports;

std::string BitmapHex() {
    std::string text = "08020000 EEFFC000 01000080 00000000 00000100";
    for (int word = 3; word < 128; ++word)
        text += " 00000000";
    return text;
}

const std::string IF_RECORD = "1C000000 EEFFC000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 44332211";
const std::string COMMAND_RECORD = "1C000000 EEFFC000 FFFFFFFF 88776655 FFFFFFFF FFFFFFFF 44332211";
const std::string SLOT_RECORD = "10000000 EEFFC000 44332211 88776655";
const std::string CARD_RECORD = "14000000 EEFFC000 44332211 88776655 CCBBAA99";
const std::string QINQ_RECORD = "14000000 EEFFC000 78563412 77669988 AA990000";
const std::string SWITCH_RECORD = "0C000000 EEFFC000 04030201";
const std::string MEMBER_RECORD = "10000000 EEFFC000 88776655 09000000";

/* clang-format off */
const Row INTERFACES[] = {
    {"configuration recovered", [] { return KIVO_Adapt_CfmRecoveOverCB(); }, {QUEUE, 0, 0, ""}},

    {"interface 2",  [] { return KIVO_Adapt_IFEvtCB(2, 0x11223344); },  {QUEUE, 1, 0, IF_RECORD}},
    {"interface 3",  [] { return KIVO_Adapt_IFEvtCB(3, 0x11223344); },  {QUEUE, 1, 19, IF_RECORD}},
    {"interface 6",  [] { return KIVO_Adapt_IFEvtCB(6, 0x11223344); },  {QUEUE, 1, 1, IF_RECORD}},
    {"interface 25", [] { return KIVO_Adapt_IFEvtCB(25, 0x11223344); }, {QUEUE, 1, 21, IF_RECORD}},

    {"command 0",  [] { return KIVO_Adapt_IFNotifyEvtCB(0x11223344, 0, 0x55667788, 0x99AABBCC); },  {QUEUE, 1, 0, COMMAND_RECORD}},
    {"command 1",  [] { return KIVO_Adapt_IFNotifyEvtCB(0x11223344, 1, 0x55667788, 0x99AABBCC); },  {QUEUE, 1, 1, COMMAND_RECORD}},
    {"command 3",  [] { return KIVO_Adapt_IFNotifyEvtCB(0x11223344, 3, 0x55667788, 0x99AABBCC); },  {QUEUE, 1, 3, COMMAND_RECORD}},
    {"command 23", [] { return KIVO_Adapt_IFNotifyEvtCB(0x11223344, 23, 0x55667788, 0x99AABBCC); }, {QUEUE, 1, 23, COMMAND_RECORD}},

    {"loopback deleted", [] { return KIVO_Adapt_IfLoopDeleteEvtCB(6, 0x11223344); }, {QUEUE, 1, 1, IF_RECORD}},

    {"slot 0", [] { return KIVO_Adapt_SlotEvtCB(0, 0x11223344, 0x55667788); }, {QUEUE, 3, 0, SLOT_RECORD}},
    {"slot 1", [] { return KIVO_Adapt_SlotEvtCB(1, 0x11223344, 0x55667788); }, {QUEUE, 3, 2, SLOT_RECORD}},
    {"slot 2", [] { return KIVO_Adapt_SlotEvtCB(2, 0x11223344, 0x55667788); }, {QUEUE, 3, 1, SLOT_RECORD}},
    {"slot 3", [] { return KIVO_Adapt_SlotEvtCB(3, 0x11223344, 0x55667788); }, {QUEUE, 3, 3, SLOT_RECORD}},

    {"card 0", [] { return KIVO_Adapt_CardEvtCB(0, 0x11223344, 0x55667788, 0x99AABBCC); }, {QUEUE, 4, 4, CARD_RECORD}},
    {"card 1", [] { return KIVO_Adapt_CardEvtCB(1, 0x11223344, 0x55667788, 0x99AABBCC); }, {QUEUE, 4, 5, CARD_RECORD}},
    {"card 2", [] { return KIVO_Adapt_CardEvtCB(2, 0x11223344, 0x55667788, 0x99AABBCC); }, {QUEUE, 4, 8, CARD_RECORD}},
    {"card 3", [] { return KIVO_Adapt_CardEvtCB(3, 0x11223344, 0x55667788, 0x99AABBCC); }, {QUEUE, 4, 7, CARD_RECORD}},
    {"card 4", [] { return KIVO_Adapt_CardEvtCB(4, 0x11223344, 0x55667788, 0x99AABBCC); }, {QUEUE, 4, 6, CARD_RECORD}},

    {"state 2, down", [] { return KIVO_Adapt_IOCTLCB(2, 0, 0x11223344, &g_noFlags); },
     {QUEUE, 5, 27, "14000000 EEFFC000 44332211 1C000000 00000000"}},
    {"state 2, up, both flags", [] { return KIVO_Adapt_IOCTLCB(2, 1, 0x11223344, &g_flags); },
     {QUEUE, 5, 27, "14000000 EEFFC000 44332211 1D000000 41000000"}},
    {"state 3, any other state", [] { return KIVO_Adapt_IOCTLCB(3, 2, 0x11223344, &g_allFlags); },
     {QUEUE, 5, 26, "14000000 EEFFC000 44332211 02000000 41000000"}},
    {"state 7, the largest state", [] { return KIVO_Adapt_IOCTLCB(7, 0xFFFFFFFF, 0x11223344, nullptr); },
     {QUEUE, 5, 23, "14000000 EEFFC000 44332211 FFFFFFFF 00000000"}},
    {"state 8, no flags", [] { return KIVO_Adapt_IOCTLCB(8, 1, 0x11223344, nullptr); },
     {QUEUE, 5, 24, "14000000 EEFFC000 44332211 1D000000 00000000"}},
    {"layer-2 sub-interface down", [] { return KIVO_Adapt_IOCTLCB_L2SUBIF(12, 0, 0x11223344, &g_allFlags); },
     {QUEUE, 5, 32, "14000000 EEFFC000 44332211 21000000 41000000"}},
    {"layer-2 sub-interface up", [] { return KIVO_Adapt_IOCTLCB_L2SUBIF(12, 1, 0x11223344, nullptr); },
     {QUEUE, 5, 32, "14000000 EEFFC000 44332211 22000000 00000000"}},

    {"address 16", [] { return KIVO_Adapt_IPEvtCB(&PORT_INDEX, 16, &ADDRESS_NET); },
     {NOW, 6, 0, "10000000 EEFFC000 04030201 0100000A"}},
    {"address 32", [] { return KIVO_Adapt_IPEvtCB(&PORT_INDEX, 32, &ADDRESS_NET); },
     {NOW, 6, 1, "10000000 EEFFC000 04030201 0100000A"}},

    {"VRF set", [] { return KIVO_Adapt_VrfSetCB(10, 0x11223344); }, {QUEUE, 41, 31, "EEFFC000 44332211"}},
    {"bridge domain 0", [] { return KIVO_Adapt_BdEvtCB(0, 0x11223344, 0x5566); }, {NOW, 45, 45, "44332211 66550000"}},
    {"bridge domain 1", [] { return KIVO_Adapt_BdEvtCB(1, 0x11223344, 0x5566); }, {NOW, 45, 45, "44332211 66550000"}},

    {"port 241", [] { return KIVO_Adapt_PortChgEvtCB(&PORT_INDEX, 241, &g_value); },
     {QUEUE, 48, 48, "EEFFC000 04030201 CDAB0000"}},
    {"port 593", [] { return KIVO_Adapt_PortChgEvtCB(&PORT_INDEX, 593, &g_value); },
     {QUEUE, 47, 47, "EEFFC000 04030201 CDAB0000"}},

    {"configuration check", [] { return KIVO_Adapt_IFCfgCheckExtend(42, 0x11223344, 0x55667788, 0x99AABBCC); },
     {NOW, 1300, 0, "1C000000 CCBBAA99 FFFFFFFF 88776655 FFFFFFFF FFFFFFFF 44332211"}},
};

const Row VLANS_AND_PORTS[] = {
    {"batch 577", [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 577, g_bitmap); }, {QUEUE, 9, 9, BitmapHex()}},
    {"batch 578", [] { return KIVO_Adapt_VlanBatchEvtCB(&VLAN, 578, g_bitmap); },   {QUEUE, 10, 10, BitmapHex()}},
    {"batch 579", [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 579, g_bitmap); }, {QUEUE, 11, 11, BitmapHex()}},
    {"batch 580", [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 580, g_bitmap); }, {QUEUE, 12, 12, BitmapHex()}},
    {"batch 582", [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 582, g_bitmap); }, {QUEUE, 42, 42, BitmapHex()}},
    {"batch 579 now", [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 0x40000243, g_bitmap); }, {NOW, 13, 13, BitmapHex()}},

    {"QinQ 337", [] { return KIVO_Adapt_QinQEvtCB(&PORT_INDEX, 337, g_qinq); },            {QUEUE, 18, 0, QINQ_RECORD}},
    {"QinQ 337 now", [] { return KIVO_Adapt_QinQEvtCB(&PORT_INDEX, 0x40000151, g_qinq); }, {NOW, 19, 0, QINQ_RECORD}},
    {"QinQ 353", [] { return KIVO_Adapt_QinQEvtCB(&PORT_INDEX, 353, g_qinq); },            {QUEUE, 20, 0, QINQ_RECORD}},
    {"QinQ 353 now", [] { return KIVO_Adapt_QinQEvtCB(&PORT_INDEX, 0x40000161, g_qinq); }, {NOW, 21, 0, QINQ_RECORD}},

    {"sub-VLAN 49", [] { return KIVO_Adapt_SubVlanEvtCB(&VLAN, 49, &g_value); }, {QUEUE, 16, 0, "0C000000 EEFFC000 2301CDAB"}},
    {"sub-VLAN 65", [] { return KIVO_Adapt_SubVlanEvtCB(&VLAN, 65, &g_value); }, {QUEUE, 17, 0, "0C000000 EEFFC000 2301CDAB"}},

    {"attribute", [] { return KIVO_Adapt_VlanSetAttrEvtCB(&VLAN, 0x40000051, &g_attribute); },
     {NOW, 8, 0, "10000000 EEFFC000 D4C3B2A1 23010000"}},

    {"ports 161", [] { return KIVO_Adapt_VlanAddDelPortEvtCB(VLANS, 161, &g_ports); },
     {QUEUE, 14, 14, "EEFFC000 23012301 03000000 11000000 22000000 44443333"}, true},
    {"ports 177", [] { return KIVO_Adapt_VlanAddDelPortEvtCB(VLANS, 177, &g_ports); },
     {QUEUE, 15, 15, "EEFFC000 23012301 03000000 11000000 22000000 44443333"}, true},
    {"ports 179, of a range", [] { return KIVO_Adapt_VlanAddDelPortEvtCB(VLANS, 179, &g_ports); },
     {QUEUE, 46, 46, "EEFFC000 23015604 03000000 11000000 22000000 44443333"}, true},

    {"VLAN interface 129", [] { return KIVO_Adapt_L2ifVlanUpDownEvtCB(&VLAN, 129, nullptr); },
     {QUEUE, 27, 17, "0C000000 EEFFC000 23010000"}},
    {"VLAN interface 130", [] { return KIVO_Adapt_L2ifVlanUpDownEvtCB(&VLAN, 130, &g_value); },
     {QUEUE, 27, 16, "0C000000 EEFFC000 23010000"}},

    {"switch 193", [] { return KIVO_Adapt_PortSwitchEvtCB(&PORT_INDEX, 193, nullptr); }, {QUEUE, 32, 32, SWITCH_RECORD}},
    {"switch 209", [] { return KIVO_Adapt_PortSwitchEvtCB(&PORT_INDEX, 209, nullptr); }, {QUEUE, 28, 28, SWITCH_RECORD}},
    {"switch 210", [] { return KIVO_Adapt_PortSwitchEvtCB(&PORT_INDEX, 210, nullptr); }, {QUEUE, 30, 30, SWITCH_RECORD}},
    {"switch 193 now", [] { return KIVO_Adapt_PortSwitchEvtCB(&PORT_INDEX, 0x400000C1, nullptr); }, {NOW, 31, 31, SWITCH_RECORD}},
    {"switch 209 now", [] { return KIVO_Adapt_PortSwitchEvtCB(&PORT_INDEX, 0x400000D1, nullptr); }, {NOW, 29, 29, SWITCH_RECORD}},

    {"build-run 368", [] { return UVEL_Vlan_BuildRun(&VLAN, 368, reinterpret_cast<void *>(0x1122334455667788)); },
     {NOW, 35, 0, "18000000 EEFFC000 88776655 44332211 23010000 00000000"}},
};

const Row TRUNKS[] = {
    {"member 2", [] { return KIVO_Adapt_TrkMemChgEvtCB(7, 2, 0x55667788); }, {NOW, 25, 25, MEMBER_RECORD}},
    {"member 3", [] { return KIVO_Adapt_TrkMemChgEvtCB(7, 3, 0x55667788); }, {NOW, 23, 23, MEMBER_RECORD}},
    {"member 7", [] { return KIVO_Adapt_TrkMemChgEvtCB(7, 7, 0x55667788); }, {QUEUE, 24, 24, MEMBER_RECORD}},
    {"member 8", [] { return KIVO_Adapt_TrkMemChgEvtCB(7, 8, 0x55667788); }, {QUEUE, 22, 22, MEMBER_RECORD}},
    {"trunk deleted", [] { return KIVO_Adapt_TrunkDelEvtCB(7, 0x11223344, 0x55667788); },
     {QUEUE, 26, 0, "10000000 EEFFC000 44332211 88776655"}},
};

uint16_t g_vsys = 5;

const Row VIRTUAL_SYSTEMS[] = {
    {"created", [] { return KIVO_VsysNotifyCallBack(1, &g_vsys); }, {QUEUE, 1101, 0xFFFFFFFF, "0500"}},
    {"deleted", [] { return KIVO_VsysNotifyCallBack(2, &g_vsys); }, {QUEUE, 1102, 0xFFFFFFFF, "0500"}},
};
/* clang-format on */

class AdapterRecords : public testing::Test {
  protected:
    AdapterRecords() {
        kit::Op<EXEC_GetCurrentUserId>().Returns(0x00C0FFEE);
        kit::Op<BDS_IfnetGetPortType>().Does([](uint32_t, uint32_t *type) {
            *type = 11;
            return 0U;
        });
        kit::Op<BDS_IfnetGetPhyType>().Does([](uint32_t, uint32_t *type) {
            *type = 46;
            return 0U;
        });
        kit::Op<BDS_L2IF_PORT_GetIfIndex>().Does([](uint32_t port, uint32_t *ifIndex) {
            *ifIndex = port == PORT_INDEX ? 0x12345678 : 0;
            return 0U;
        });
        kit::Op<Trunk_GetIndexByTrunkID>().Does([](uint32_t trunk) { return trunk == 7 ? 9U : 0U; });
        KIVO_SetPdtOxmCfgSwitch(55, 1);
        KIVO_SetKivoCommonSpec(0, 6);
    }

    template <std::size_t COUNT>
    void Check(const Row (&rows)[COUNT]) {
        for (const Row &row : rows) {
            SCOPED_TRACE(row.name);
            trap.dataSize = (row.expected.data.size() + 1) * 4 / 9;
            const uint64_t blocks = kit::LiveBlocks();
            EXPECT_EQ(0u, row.notification());
            EXPECT_EQ(std::vector{row.expected}, trap.Take());
            CheckFailure(row);
            EXPECT_EQ(blocks, kit::LiveBlocks());
        }
    }

    /* What a callback or a full memory makes of the event comes back as the result. */
    void CheckFailure(const Row &row) {
        trap.result = 77;
        kit::Op<IPC_AllocMsg_X>().FailsOn(1);
        const uint32_t failure = row.expected.way == NOW ? 77 : 1;
        EXPECT_EQ(row.resultIsHidden ? 0 : failure, row.notification());
        EXPECT_EQ(row.expected.way == NOW ? 1u : 0u, trap.Take().size());
        trap.result = 0;
        kit::Op<IPC_AllocMsg_X>().FailsOn(0); /* unused when the event was raised at once */
    }

    EventTrap trap;
};

TEST_F(AdapterRecords, OfInterfacesBoardsAndAddressesAreExact) {
    Check(INTERFACES);
}

TEST_F(AdapterRecords, OfVlansAndTheirPortsAreExact) {
    Check(VLANS_AND_PORTS);
}

TEST_F(AdapterRecords, OfTrunksAreExact) {
    Check(TRUNKS);
}

TEST_F(AdapterRecords, OfVirtualSystemsAreExact) {
    Check(VIRTUAL_SYSTEMS);
}

TEST_F(AdapterRecords, OfTheSecondBuildRunLeadToACopyOfTheContext) {
    trap.dataSize = 24;
    int context = 0;
    uintptr_t seen = 0;
    trap.also = [&](void *data) {
        uint64_t address = 0;
        std::memcpy(&address, static_cast<uint8_t *>(data) + 8, sizeof address);
        EXPECT_NE(reinterpret_cast<uintptr_t>(&context), address);
        std::memcpy(&seen, reinterpret_cast<void *>(static_cast<uintptr_t>(address)), sizeof seen);
        return 0U;
    };
    EXPECT_EQ(0u, UVEL_Vlan_BuildRun(&VLAN, 387, &context));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(&context), seen);
    const std::vector<RaisedEvent> raised = trap.Take();
    ASSERT_EQ(1u, raised.size());
    EXPECT_EQ(NOW, raised[0].way);
    EXPECT_EQ(34u, raised[0].event);
    EXPECT_EQ(0u, raised[0].subEvent);
    EXPECT_EQ("18000000 EEFFC000", raised[0].data.substr(0, 17));
    EXPECT_EQ("23010000 00000000", raised[0].data.substr(36));
    trap.result = 77;
    EXPECT_EQ(77u, UVEL_Vlan_BuildRun(&VLAN, 387, &context));
}

/* Questions hand on the host's pointer and answer with what the callbacks answer. */
TEST_F(AdapterRecords, OfQuestionsAreTheHostsOwnData) {
    int data = 0;
    EXPECT_EQ(0u, KIVO_Adapt_TrkMemHasCfgEvtCB(1, 2, &data));
    EXPECT_EQ(&data, trap.data);
    EXPECT_EQ(0u, KIVO_Adapt_PortHasCfgEvtCB(nullptr, 3, &data));
    EXPECT_EQ(&data, trap.data);
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1200, 0, ""}, {NOW, 1201, 0, ""}}), trap.Take());
    trap.result = 5;
    EXPECT_EQ(5u, KIVO_Adapt_TrkMemHasCfgEvtCB(0xFFFFFFFF, 0, nullptr));
    EXPECT_EQ(nullptr, trap.data);
    EXPECT_EQ(5u, KIVO_Adapt_PortHasCfgEvtCB(nullptr, 0, nullptr));
    EXPECT_EQ(nullptr, trap.data);
}

TEST_F(AdapterRecords, AreBuiltInTheNameOfTheUserOfEachChange) {
    kit::Op<EXEC_GetCurrentUserId>().Returns(1);
    EXPECT_EQ(0u, KIVO_Adapt_VrfSetCB(10, 2));
    kit::Op<EXEC_GetCurrentUserId>().Returns(0xFFFFFFFF);
    EXPECT_EQ(0u, KIVO_Adapt_VrfSetCB(10, 2));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 41, 31, "01000000 02000000"}, {QUEUE, 41, 31, "FFFFFFFF 02000000"}}),
              trap.Take());
}

/* The host calls an adapter on whatever thread has something to tell. */
TEST(AdapterThreads, EachHaveTheirOwnRecord) {
    static thread_local uint32_t own;
    static std::atomic<uint32_t> heard, wrong;
    ASSERT_EQ(0u, UVEL_EventCallBackReg(2, 13, UVEL_EVENT_ANY_VALUE, 0, 0, 1, [](uint32_t, void *data) -> uint32_t {
                  const auto *vlans = static_cast<const KIVO_EVT_VLANS_S *>(data);
                  for (const uint32_t word : vlans->aulBitmap)
                      wrong += word == own ? 0 : 1;
                  ++heard;
                  return 0;
              }));
    std::thread threads[2];
    for (uint32_t i = 0; i < 2; ++i) {
        threads[i] = std::thread([i] {
            own = i == 0 ? 0x11111111 : 0x22222222;
            uint32_t bitmap[128];
            std::fill(std::begin(bitmap), std::end(bitmap), own);
            for (int round = 0; round < 10000; ++round)
                EXPECT_EQ(0u, KIVO_Adapt_VlanBatchEvtCB(nullptr, 0x40000243, bitmap));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(20000u, heard);
    EXPECT_EQ(0u, wrong);
}

} // namespace
