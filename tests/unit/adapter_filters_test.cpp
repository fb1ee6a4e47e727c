// Which of the host's event numbers the adapters translate: all numbers around those they know, and those with bit 30.

#include "event_trap.h"

#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_vlan_events.h>

namespace {

class AdapterFilter : public testing::Test {
  protected:
    AdapterFilter() {
        kit::Op<EXEC_GetCurrentUserId>().Returns(1);
        kit::Op<BDS_IfnetGetPortType>().Does([](uint32_t, uint32_t *type) {
            *type = 11;
            return 0U;
        });
        kit::Op<BDS_IfnetGetPhyType>().Does([](uint32_t, uint32_t *type) {
            *type = 0;
            return 0U;
        });
        kit::Op<BDS_L2IF_PORT_GetIfIndex>().Does([](uint32_t, uint32_t *ifIndex) {
            *ifIndex = 1;
            return 0U;
        });
        kit::Op<Trunk_GetIndexByTrunkID>().Returns(1);
    }

    /* "host number: event/sub-event way" for every number that raises an event. */
    std::vector<std::string> Sweep(const std::function<uint32_t(uint32_t)> &adapter) {
        std::vector<std::string> found;
        for (const uint32_t upper : {0U, 0x40000000U, 0x80000000U, 0xC0000000U, 0xFFFFF000U}) {
            for (uint32_t lower = 0; lower < 0x1000; ++lower) {
                EXPECT_EQ(0u, adapter(upper | lower)) << (upper | lower);
                for (const RaisedEvent &raised : trap.Take()) {
                    char text[64];
                    std::snprintf(text, sizeof text, "%s%u: %u/%u %c", upper == 0x40000000U ? "now+" : "", lower,
                                  raised.event, raised.subEvent, raised.way);
                    found.push_back(text);
                }
            }
        }
        return found;
    }

    EventTrap trap;
    uint32_t words[130] = {0, 1};
};

using Found = std::vector<std::string>;

TEST_F(AdapterFilter, OfInterfaces) {
    EXPECT_EQ((Found{"2: 1/0 q", "3: 1/19 q", "6: 1/1 q", "25: 1/21 q"}),
              Sweep([](uint32_t event) { return KIVO_Adapt_IFEvtCB(event, 1); }));
    EXPECT_EQ((Found{"6: 1/1 q"}), Sweep([](uint32_t event) { return KIVO_Adapt_IfLoopDeleteEvtCB(event, 1); }));
    EXPECT_EQ((Found{"42: 1300/0 n"}), Sweep([](uint32_t kind) { return KIVO_Adapt_IFCfgCheckExtend(kind, 1, 2, 3); }));
}

TEST_F(AdapterFilter, OfCommands) {
    EXPECT_EQ((Found{"0: 1/0 q",   "1: 1/1 q",   "3: 1/3 q",   "4: 1/4 q",   "5: 1/5 q",   "6: 1/6 q",
                     "7: 1/7 q",   "8: 1/8 q",   "9: 1/9 q",   "10: 1/10 q", "11: 1/11 q", "12: 1/12 q",
                     "13: 1/13 q", "14: 1/14 q", "15: 1/15 q", "16: 1/16 q", "17: 1/17 q", "18: 1/18 q",
                     "19: 1/19 q", "20: 1/20 q", "21: 1/21 q", "22: 1/22 q", "23: 1/23 q"}),
              Sweep([](uint32_t command) { return KIVO_Adapt_IFNotifyEvtCB(1, command, 0, 0); }));
}

TEST_F(AdapterFilter, OfSlotsAndCards) {
    EXPECT_EQ((Found{"0: 3/0 q", "1: 3/2 q", "2: 3/1 q", "3: 3/3 q"}),
              Sweep([](uint32_t kind) { return KIVO_Adapt_SlotEvtCB(kind, 1, 2); }));
    EXPECT_EQ((Found{"0: 4/4 q", "1: 4/5 q", "2: 4/8 q", "3: 4/7 q", "4: 4/6 q"}),
              Sweep([](uint32_t kind) { return KIVO_Adapt_CardEvtCB(kind, 1, 2, 3); }));
}

TEST_F(AdapterFilter, OfStates) {
    EXPECT_EQ((Found{"2: 5/27 q", "3: 5/26 q", "7: 5/23 q", "8: 5/24 q"}),
              Sweep([](uint32_t command) { return KIVO_Adapt_IOCTLCB(command, 0, 1, nullptr); }));
    EXPECT_EQ((Found{"12: 5/32 q"}),
              Sweep([](uint32_t command) { return KIVO_Adapt_IOCTLCB_L2SUBIF(command, 1, 1, nullptr); }));
    EXPECT_EQ((Found{"0: 5/32 q", "1: 5/32 q"}),
              Sweep([](uint32_t state) { return KIVO_Adapt_IOCTLCB_L2SUBIF(12, state, 1, nullptr); }));
}

TEST_F(AdapterFilter, OfAddressesVrfsBridgeDomainsAndPortValues) {
    EXPECT_EQ((Found{"16: 6/0 n", "32: 6/1 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_IPEvtCB(words, event, words); }));
    EXPECT_EQ((Found{"10: 41/31 q"}), Sweep([](uint32_t event) { return KIVO_Adapt_VrfSetCB(event, 1); }));
    EXPECT_EQ((Found{"0: 45/45 n", "1: 45/45 n"}),
              Sweep([](uint32_t subType) { return KIVO_Adapt_BdEvtCB(subType, 1, 2); }));
    EXPECT_EQ((Found{"241: 48/48 q", "593: 47/47 q"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_PortChgEvtCB(words, event, words); }));
}

TEST_F(AdapterFilter, OfVlans) {
    EXPECT_EQ((Found{"577: 9/9 q", "578: 10/10 q", "579: 11/11 q", "580: 12/12 q", "582: 42/42 q", "now+579: 13/13 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_VlanBatchEvtCB(nullptr, event, words); }));
    EXPECT_EQ((Found{"49: 16/0 q", "65: 17/0 q"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_SubVlanEvtCB(words, event, words); }));
    EXPECT_EQ((Found{"now+81: 8/0 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_VlanSetAttrEvtCB(words, event, words); }));
    EXPECT_EQ((Found{"129: 27/17 q", "130: 27/16 q"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_L2ifVlanUpDownEvtCB(words, event, nullptr); }));
    EXPECT_EQ((Found{"368: 35/0 n", "387: 34/0 n"}),
              Sweep([&](uint32_t event) { return UVEL_Vlan_BuildRun(words, event, words); }));
    EXPECT_EQ((Found{"now+17: 1301/1301 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_RcvVlanCreateEvt(words, event, words); }));
}

TEST_F(AdapterFilter, OfPorts) {
    EXPECT_EQ((Found{"161: 14/14 q", "177: 15/15 q", "179: 46/46 q"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_VlanAddDelPortEvtCB(words, event, words); }));
    EXPECT_EQ((Found{"337: 18/0 q", "353: 20/0 q", "now+337: 19/0 n", "now+353: 21/0 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_QinQEvtCB(words, event, words); }));
    EXPECT_EQ((Found{"193: 32/32 q", "209: 28/28 q", "210: 30/30 q", "now+193: 31/31 n", "now+209: 29/29 n"}),
              Sweep([&](uint32_t event) { return KIVO_Adapt_PortSwitchEvtCB(words, event, nullptr); }));
}

TEST_F(AdapterFilter, OfTrunkMembers) {
    EXPECT_EQ((Found{"2: 25/25 n", "3: 23/23 n", "7: 24/24 q", "8: 22/22 q"}),
              Sweep([](uint32_t event) { return KIVO_Adapt_TrkMemChgEvtCB(1, event, 2); }));
}

} // namespace
