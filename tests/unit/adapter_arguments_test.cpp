// Adapters given null pointers, and a host that does not know what they ask for.

#include "event_trap.h"

#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_vlan_events.h>

namespace {

const kit::Sources VLAN_SOURCE{"src/common_adp/src/kivo_oxm"};
const kit::Sources INTERFACE_SOURCE{"src/common_adp/src/kivo_oxmif"};
const kit::Sources NONE;

class AdapterArguments : public testing::Test {
  protected:
    ~AdapterArguments() override { EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take()); }

    EventTrap trap;
    uint32_t words[130] = {0, 1};
};

TEST_F(AdapterArguments, OfAnAddressMustBeThere) {
    EXPECT_EQ(1u, KIVO_Adapt_IPEvtCB(nullptr, 16, words));
    EXPECT_EQ(INTERFACE_SOURCE, kit::TakeAsserts());
    EXPECT_EQ(1u, KIVO_Adapt_IPEvtCB(words, 16, nullptr));
    EXPECT_EQ(INTERFACE_SOURCE, kit::TakeAsserts());
    EXPECT_EQ(1u, KIVO_Adapt_IPEvtCB(nullptr, 16, nullptr));
    EXPECT_EQ(INTERFACE_SOURCE, kit::TakeAsserts());
}

TEST_F(AdapterArguments, ThatAreRefusedSilently) {
    EXPECT_EQ(1u, KIVO_Adapt_PortChgEvtCB(nullptr, 241, words));
    EXPECT_EQ(1u, KIVO_Adapt_PortChgEvtCB(words, 241, nullptr));
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(nullptr, 161, words));
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(words, 161, nullptr));
    const KIVO_EVT_VLAN_PORTS_S head{};
    const L2IF_PORT_LIST_S ports{};
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCBEnque(14, nullptr, &ports));
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCBEnque(14, &head, nullptr));
    for (const uint32_t event : {368u, 387u}) {
        EXPECT_EQ(1u, UVEL_Vlan_BuildRun(nullptr, event, words));
        EXPECT_EQ(1u, UVEL_Vlan_BuildRun(words, event, nullptr));
    }
    EXPECT_EQ(NONE, kit::TakeAsserts());
}

TEST_F(AdapterArguments, OfLayer2MustBeThere) {
    const std::function<uint32_t()> calls[] = {
        [&] { return KIVO_Adapt_VlanBatchEvtCB(words, 577, nullptr); },
        [&] { return KIVO_Adapt_QinQEvtCB(nullptr, 337, words); },
        [&] { return KIVO_Adapt_QinQEvtCB(words, 337, nullptr); },
        [&] { return KIVO_Adapt_SubVlanEvtCB(nullptr, 49, words); },
        [&] { return KIVO_Adapt_SubVlanEvtCB(words, 49, nullptr); },
        [&] { return KIVO_Adapt_VlanSetAttrEvtCB(nullptr, 0x40000051, words); },
        [&] { return KIVO_Adapt_VlanSetAttrEvtCB(words, 0x40000051, nullptr); },
        [&] { return KIVO_Adapt_L2ifVlanUpDownEvtCB(nullptr, 129, words); },
        [&] { return KIVO_Adapt_PortSwitchEvtCB(nullptr, 193, words); },
        [&] { return KIVO_Adapt_RcvVlanCreateEvt(words, 0x40000011, nullptr); },
        [&] { return KIVO_Adapt_RcvVlanCreateEvt(nullptr, 0x40000011, words + 1); },
        [&] {
            const L2IF_PORT_LIST_S ports{};
            return KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc(nullptr, &ports);
        },
        [&] {
            const L2IF_VLAN_LIST_S vlans{};
            return KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc(&vlans, nullptr);
        },
    };
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        EXPECT_EQ(1u, calls[i]()) << i;
        EXPECT_EQ(VLAN_SOURCE, kit::TakeAsserts()) << i;
    }
    EXPECT_EQ(0u, kit::Op<BDS_L2IF_PORT_GetIfIndex>().Calls());
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetPhyType>().Calls());
}

TEST_F(AdapterArguments, AreLookedAtBeforeTheEvent) {
    const std::function<uint32_t()> asserted[] = {
        [&] { return KIVO_Adapt_IPEvtCB(nullptr, 1, words); },
        [&] { return KIVO_Adapt_IPEvtCB(words, 1, nullptr); },
        [&] { return KIVO_Adapt_VlanBatchEvtCB(words, 1, nullptr); },
        [&] { return KIVO_Adapt_QinQEvtCB(words, 1, nullptr); },
        [&] { return KIVO_Adapt_PortSwitchEvtCB(nullptr, 1, words); },
        [&] { return KIVO_Adapt_RcvVlanCreateEvt(words, 1, nullptr); },
    };
    for (std::size_t i = 0; i < std::size(asserted); ++i) {
        EXPECT_EQ(1u, asserted[i]()) << i;
        EXPECT_EQ(i < 2 ? INTERFACE_SOURCE : VLAN_SOURCE, kit::TakeAsserts()) << i;
    }
    EXPECT_EQ(1u, KIVO_Adapt_PortChgEvtCB(nullptr, 1, words));
    EXPECT_EQ(1u, KIVO_Adapt_PortChgEvtCB(words, 1, nullptr));
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(nullptr, 1, words));
    EXPECT_EQ(1u, KIVO_Adapt_VlanAddDelPortEvtCB(words, 1, nullptr));
    EXPECT_EQ(1u, UVEL_Vlan_BuildRun(nullptr, 1, words));
    EXPECT_EQ(1u, UVEL_Vlan_BuildRun(words, 1, nullptr));
    EXPECT_EQ(NONE, kit::TakeAsserts());
}

TEST_F(AdapterArguments, QinQOfAPortWithoutAnInterfaceIsIgnored) {
    kit::Op<BDS_L2IF_PORT_GetIfIndex>().Returns(1);
    words[0] = 0x77;
    for (const uint32_t event : {337u, 353u, 0x40000151u, 0x40000161u, 1u})
        EXPECT_EQ(0u, KIVO_Adapt_QinQEvtCB(words, event, words));
    EXPECT_EQ(5u, kit::Op<BDS_L2IF_PORT_GetIfIndex>().Calls()) << "asked before the event is looked at";
    EXPECT_EQ(0x77u, std::get<0>(kit::Op<BDS_L2IF_PORT_GetIfIndex>().Last()));
}

TEST_F(AdapterArguments, AChangeOfLayersNeedsAPhysicalTypeThatCounts) {
    kit::Op<BDS_IfnetGetPhyType>().Returns(1);
    for (const uint32_t event : {193u, 209u, 210u, 0x400000C1u, 0x400000D1u, 1u})
        EXPECT_EQ(1u, KIVO_Adapt_PortSwitchEvtCB(words, event, nullptr)) << event;
    kit::Op<BDS_IfnetGetPhyType>().Does([](uint32_t, uint32_t *type) {
        *type = 47;
        return 0U;
    });
    for (const uint32_t event : {193u, 209u, 210u, 0x400000C1u, 0x400000D1u, 1u})
        EXPECT_EQ(0u, KIVO_Adapt_PortSwitchEvtCB(words, event, nullptr)) << event;
    EXPECT_EQ(12u, kit::Op<BDS_IfnetGetPhyType>().Calls());
}

TEST_F(AdapterArguments, ADeletedInterfaceThatIsNoLoopbackIsIgnored) {
    for (const uint32_t type : {0u, 10u, 12u, 0xFFFFFFFFu}) {
        kit::Op<BDS_IfnetGetPortType>().Does([type](uint32_t, uint32_t *portType) {
            *portType = type;
            return 0U;
        });
        EXPECT_EQ(0u, KIVO_Adapt_IfLoopDeleteEvtCB(6, 1));
    }
    kit::Op<BDS_IfnetGetPortType>().Does([](uint32_t, uint32_t *portType) {
        *portType = 11;
        return 1U;
    });
    EXPECT_EQ(0u, KIVO_Adapt_IfLoopDeleteEvtCB(6, 1));
    EXPECT_EQ(5u, kit::Op<BDS_IfnetGetPortType>().Calls());
    EXPECT_EQ(0u, KIVO_Adapt_IfLoopDeleteEvtCB(7, 1));
    EXPECT_EQ(5u, kit::Op<BDS_IfnetGetPortType>().Calls()) << "not asked for another event";
}

TEST_F(AdapterArguments, TheTrunkIsLookedUpForEveryEvent) {
    kit::Op<Trunk_GetIndexByTrunkID>().Returns(0xFFFFFFFF);
    EXPECT_EQ(0u, KIVO_Adapt_TrkMemChgEvtCB(0x1234, 99, 1));
    EXPECT_EQ(1u, kit::Op<Trunk_GetIndexByTrunkID>().Calls());
    EXPECT_EQ(0x1234u, std::get<0>(kit::Op<Trunk_GetIndexByTrunkID>().Last()));
}

TEST_F(AdapterArguments, AnUnknownTrunkIsPassedOnAsNone) {
    kit::Op<Trunk_GetIndexByTrunkID>().Returns(0xFFFFFFFF);
    kit::Op<EXEC_GetCurrentUserId>().Returns(0);
    trap.dataSize = 16;
    EXPECT_EQ(0u, KIVO_Adapt_TrkMemChgEvtCB(1, 8, 2));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 22, 22, "10000000 00000000 02000000 FFFFFFFF"}}), trap.Take());
}

} // namespace
