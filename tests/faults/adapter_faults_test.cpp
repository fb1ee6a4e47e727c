// Failing bounds-checked functions in the adapters to the host.

#include "../unit/event_trap.h"
#include "securec_faults.h"

#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_vlan_events.h>

namespace {

class AdapterFaults : public testing::Test {
  protected:
    AdapterFaults() {
        kit::Op<EXEC_GetCurrentUserId>().Returns(1);
        kit::Op<BDS_IfnetGetPortType>().Does([](uint32_t, uint32_t *type) {
            *type = 11;
            return 0U;
        });
    }

    EventTrap trap;
};

TEST_F(AdapterFaults, ARecordThatCannotBeFilledIsNotRaised) {
    for (const auto &notification : {std::function([] { return KIVO_Adapt_SlotEvtCB(0, 1, 2); }),
                                     std::function([] { return KIVO_Adapt_IfLoopDeleteEvtCB(6, 1); }),
                                     std::function([] { return KIVO_Adapt_IFCfgCheckExtend(42, 1, 2, 3); })}) {
        kit::Op<memset_s>().FailsOn(1, 34);
        EXPECT_EQ(0u, notification());
        EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_oxmif"}, kit::TakeAsserts());
        EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
        EXPECT_EQ(0u, notification());
        EXPECT_EQ(1u, trap.Take().size()) << "the next one is raised";
    }
}

TEST_F(AdapterFaults, ABitmapThatCannotBeCopiedIsRaisedEmpty) {
    uint32_t bitmap[128] = {1, 2, 3};
    std::string empty = "08020000 01000000";
    for (int word = 0; word < 128; ++word)
        empty += " 00000000";
    kit::Op<memcpy_s>().FailsOn(1, 22);
    EXPECT_EQ(0u, KIVO_Adapt_VlanBatchEvtCB(nullptr, 577, bitmap));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_oxm"}, kit::TakeAsserts());
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 9, 9, empty}}), trap.Take());
}

} // namespace
