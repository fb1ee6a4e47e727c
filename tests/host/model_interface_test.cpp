#include "model_fixtures.h"

namespace {

using HostInterface = ModelTest;

} // namespace

TEST_F(HostInterface, WhatIsCommittedIsAnsweredAtOnce) {
    MDL_IF_S interface = Interface(7, "GigabitEthernet1/0/1");
    interface.ulPortType = 11;
    interface.ulPhyType = 47;
    PutIf(interface);
    uint32_t type = UNTOUCHED;
    EXPECT_EQ(0u, BDS_IfnetGetPortType(7, &type));
    EXPECT_EQ(11u, type);
    EXPECT_EQ(0u, BDS_IfnetGetPhyType(7, &type));
    EXPECT_EQ(47u, type);
    char name[IF_NAME_SIZE] = "";
    EXPECT_EQ(0u, BDS_IfnetGetIfNameByIfIndex(7, name, sizeof name));
    EXPECT_STREQ("GigabitEthernet1/0/1", name);
}

TEST_F(HostInterface, AnUnknownIndexFailsAndLeavesTheOutputUntouched) {
    PutIf(Interface(7));
    uint32_t value = UNTOUCHED;
    for (auto query :
         {BDS_IfnetGetPortType, BDS_IfnetGetPhyType, BDS_IfnetGetLineState, BDS_IfnetGetIpv6LinkState,
          BDS_IfnetGetIfPhyState, BDS_IfnetGetSlotByIfIndex, BDS_IfnetGetCardByIfIndex, BDS_IfnetGetPortByIfIndex,
          BDS_IfnetGetPortIndexByIfIndex, BDS_IfnetGetMainIfIndex, BDS_IfnetGetVapIndexByDbssIfIndex,
          BDS_IfnetGetVrfIndexByIfIndex, BDS_IfnetGetIpv6VrfIndexByIfIndex}) {
        for (uint32_t if_index : {0u, 6u, 8u, UVELHOST_NONE})
            EXPECT_NE(0u, query(if_index, &value)) << if_index;
        EXPECT_NE(0u, query(7, nullptr));
    }
    EXPECT_EQ(UNTOUCHED, value);
}
