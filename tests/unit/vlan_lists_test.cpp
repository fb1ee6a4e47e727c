// Adapters whose events carry lists: ports of a VLAN, created VLANs, hybrid trunk ports.

#include "event_trap.h"

#include <uvelcommon_base/kivo_vlan_events.h>

namespace {

struct Ports {
    L2IF_PORT_LIST_S head;
    uint32_t entries[8];
};

struct Vlans {
    L2IF_VLAN_LIST_S head;
    uint16_t ids[8];
};

class VlanLists : public testing::Test {
  protected:
    VlanLists() { kit::Op<EXEC_GetCurrentUserId>().Returns(0x0A0B0C0D); }

    uint32_t Hybrid(const Vlans &vlans, const Ports &ports) {
        return KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc(&vlans.head, &ports.head);
    }

    EventTrap trap;
};

TEST_F(VlanLists, OfNoPortsAreRefused) {
    Ports ports{{7, 0}, {1}};
    const uint16_t vlan[2] = {5, 6};
    for (const uint32_t event : {161u, 177u, 179u})
        EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(vlan, event, &ports));
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(vlan, 162, &ports)) << "not this adapter's affair";
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
    EXPECT_EQ(0u, kit::Op<IPC_AllocMsg_X>().Calls());
}

TEST_F(VlanLists, OfPortsAreCopiedWithTheirHead) {
    Ports ports{{0xFFFFFFFF, 1}, {0xDEADBEEF, 2}};
    const uint16_t vlan[2] = {0, 4095};
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(vlan, 161, &ports));
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(vlan, 179, &ports));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 14, 14, "0D0C0B0A 00000000 01000000 EFBEADDE"},
                                        {QUEUE, 46, 46, "0D0C0B0A 0000FF0F 01000000 EFBEADDE"}}),
              trap.Take());
}

TEST_F(VlanLists, OfPortsMayBeQueuedWithAHeadOfTheCallers) {
    const Ports ports{{0, 2}, {0x11, 0x22}};
    const KIVO_EVT_VLAN_PORTS_S head{1, 2, 3, 99};
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCBEnque(1234, &head, &ports.head));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 1234, 1234, "01000000 02000300 02000000 11000000 22000000"}}),
              trap.Take());
}

TEST_F(VlanLists, OfPortsDoNotTellWhetherTheyWereQueued) {
    Ports ports{{0, 1}, {1}};
    const uint16_t vlan = 5;
    kit::Op<IPC_AllocMsg_X>().FailsOn(1);
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports));
    kit::Op<QAL_QueueAsyWrite>().FailsOn(1);
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports));
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
}

TEST_F(VlanLists, OfPortsNeedMemoryForTheTimeOfTheCall) {
    const uint64_t blocks = kit::LiveBlocks();
    Ports ports{{0, 3}, {1, 2, 3}};
    const uint16_t vlan = 5;
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports));
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports));
    EXPECT_EQ(1u, trap.Take().size());
    EXPECT_EQ(24u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
    EXPECT_EQ(blocks, kit::LiveBlocks());
}

/* The count is the host's; a size beyond 32 bits must not wrap into a small one. */
TEST_F(VlanLists, OfPortsBeyondAnySizeAreRefusedBeforeTheyAreRead) {
    const uint16_t vlan = 5;
    const uint64_t allocations = kit::Op<QAL_MemAlloc>().Calls();
    for (const uint32_t count : {0x3FFFFFFDu, 0x40000000u, 0xFFFFFFFFu}) {
        Ports ports{{0, count}, {}};
        EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports)) << count;
    }
    EXPECT_EQ(allocations, kit::Op<QAL_MemAlloc>().Calls());
    Ports ports{{0, 0x3FFFFFFC}, {}};
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 161, &ports));
    EXPECT_EQ(0xFFFFFFFCu, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST_F(VlanLists, OfManyPortsArriveWhole) {
    std::vector<uint32_t> list{0, 5000};
    std::string expected = "0D0C0B0A 05000500 88130000";
    for (uint32_t port = 0; port < 5000; ++port) {
        list.push_back(port * 0x01010101);
        expected += " " + Hex(&list.back(), 4);
    }
    const uint16_t vlan = 5;
    EXPECT_EQ(0u, KIVO_Adapt_VlanAddDelPortEvtCB(&vlan, 177, list.data()));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 15, 15, expected}}), trap.Take());
}

/* The words of the bitmap that are not zero, "word:bits". */
std::string Bits(const void *data) {
    std::string text;
    for (uint32_t word = 0; word < 128; ++word) {
        uint32_t bits = 0;
        std::memcpy(&bits, static_cast<const uint8_t *>(data) + 8 + word * 4, sizeof bits);
        if (bits != 0) {
            char part[32];
            std::snprintf(part, sizeof part, "%u:%08X ", word, bits);
            text += part;
        }
    }
    return text;
}

TEST_F(VlanLists, OfCreatedVlansBecomeABitmap) {
    const uint16_t ids[] = {0, 4095, 33, 32, 31, 33};
    uint32_t count = 6;
    std::string bits;
    trap.dataSize = 8;
    trap.also = [&](void *data) {
        bits = Bits(data);
        return 0U;
    };
    EXPECT_EQ(0u, KIVO_Adapt_RcvVlanCreateEvt(ids, 0x40000011, &count));
    EXPECT_EQ("0:80000001 1:00000003 127:80000000 ", bits);
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1301, 1301, "08020000 0D0C0B0A"}}), trap.Take());

    count = 0;
    EXPECT_EQ(0u, KIVO_Adapt_RcvVlanCreateEvt(ids, 0x40000011, &count));
    EXPECT_EQ("", bits);
    EXPECT_EQ(0u, KIVO_Adapt_RcvVlanCreateEvt(nullptr, 0x40000011, &count));
    EXPECT_EQ(2u, trap.Take().size()) << "no VLANs are told too";

    trap.result = 9;
    EXPECT_EQ(9u, KIVO_Adapt_RcvVlanCreateEvt(ids, 0x40000011, &count));
}

TEST_F(VlanLists, OfCreatedVlansLeaveOutWhatIsNoVlan) {
    const uint16_t ids[] = {4096, 65535, 7};
    uint32_t count = 3;
    std::string bits;
    trap.also = [&](void *data) {
        bits = Bits(data);
        return 0U;
    };
    EXPECT_EQ(0u, KIVO_Adapt_RcvVlanCreateEvt(ids, 0x40000011, &count));
    EXPECT_EQ("0:00000080 ", bits);
}

TEST_F(VlanLists, OfHybridPortsAreToldPortByPort) {
    trap.dataSize = 16;
    EXPECT_EQ(0u, Hybrid({{3}, {10, 20, 4095}}, {{77, 2}, {0xA, 0xB}}));
    const std::string port1 = "10000000 0D0C0B0A 0A000000 ";
    const std::string port2 = "10000000 0D0C0B0A 0B000000 ";
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1302, 0, port1 + "0A000A00"},
                                        {NOW, 1302, 0, port1 + "14001400"},
                                        {NOW, 1302, 0, port1 + "FF0FFF0F"},
                                        {NOW, 1302, 0, port2 + "0A000A00"},
                                        {NOW, 1302, 0, port2 + "14001400"},
                                        {NOW, 1302, 0, port2 + "FF0FFF0F"}}),
              trap.Take());
}

TEST_F(VlanLists, OfHybridPortsMayBeEmpty) {
    EXPECT_EQ(0u, Hybrid({{0}, {10}}, {{0, 2}, {1, 2}}));
    EXPECT_EQ(0u, Hybrid({{2}, {10, 11}}, {{0, 0}, {1}}));
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
}

TEST_F(VlanLists, OfHybridPortsEndWithTheFirstFailure) {
    int calls = 0;
    trap.dataSize = 16;
    trap.also = [&](void *) { return ++calls == 4 ? 55U : 0U; };
    EXPECT_EQ(1u, Hybrid({{3}, {1, 2, 3}}, {{0, 2}, {8, 9}}));
    const std::vector<RaisedEvent> raised = trap.Take();
    ASSERT_EQ(4u, raised.size());
    EXPECT_EQ("10000000 0D0C0B0A 09000000 01000100", raised.back().data);
}

TEST_F(VlanLists, OfHybridPortsAreBuiltAnewForEachCallback) {
    trap.dataSize = 16;
    trap.also = [](void *data) {
        std::memset(data, 0xEE, 16);
        return 0U;
    };
    EXPECT_EQ(0u, Hybrid({{2}, {1, 2}}, {{0, 1}, {8}}));
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1302, 0, "10000000 0D0C0B0A 08000000 01000100"},
                                        {NOW, 1302, 0, "10000000 0D0C0B0A 08000000 02000200"}}),
              trap.Take());
}

TEST_F(VlanLists, OfHybridPortsGiveWayAfterEachNotification) {
    EXPECT_EQ(0u, UVEL_EventCallBackNotify(1302, 0, nullptr));
    const uint64_t walk = kit::Op<QAL_TaskRunDelay>().Calls();
    EXPECT_EQ(0u, Hybrid({{3}, {1, 2, 3}}, {{0, 2}, {8, 9}}));
    EXPECT_EQ(walk + 6 * (walk + 1), kit::Op<QAL_TaskRunDelay>().Calls());
    EXPECT_EQ((std::tuple{200u, 20u}), kit::Op<QAL_TaskRunDelay>().Last());
}

/* Notifications give way too, within themselves: what they do is taken off. */
TEST_F(VlanLists, OfHybridPortsGiveWayNotBeforeTheFirstNotificationAndAlsoAfterTheOneThatFails) {
    int calls = 0;
    int failing = 0;
    uint64_t atFirst = 0;
    const auto yields = [] { return kit::Op<QAL_TaskRunDelay>().Calls(); };
    trap.also = [&](void *) {
        atFirst = calls == 0 ? yields() : atFirst;
        return ++calls == failing ? 55U : 0U;
    };
    EXPECT_EQ(0u, UVEL_EventCallBackNotify(1302, 0, nullptr));
    const uint64_t walk = yields();
    const uint64_t beforeCallback = atFirst;
    failing = 2;
    EXPECT_EQ(55u, UVEL_EventCallBackNotify(1302, 0, nullptr));
    const uint64_t failingWalk = yields() - walk;

    calls = 0;
    failing = 4;
    const uint64_t before = yields();
    EXPECT_EQ(1u, Hybrid({{3}, {1, 2, 3}}, {{0, 2}, {8, 9}}));
    EXPECT_EQ(before + beforeCallback, atFirst);
    EXPECT_EQ(3 * walk + failingWalk + 4, yields() - before);
}

} // namespace
