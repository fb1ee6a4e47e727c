#include "model_fixtures.h"

#include <array>
#include <cstring>
#include <thread>

namespace {

using HostInterface = ModelTest;

/* One number of an interface. */
using Query = uint32_t (*)(uint32_t, uint32_t *);

uint32_t Ask(Query query, uint32_t if_index) {
    uint32_t value = UNTOUCHED;
    EXPECT_EQ(0u, query(if_index, &value));
    return value;
}

} // namespace

/* ---- numbers */

TEST_F(HostInterface, EveryFieldIsAnsweredAsItWasPut) {
    MDL_IF_S interface = Interface(7, "GigabitEthernet1/2/3");
    interface.ulPortType = 11;
    interface.ulPhyType = 47;
    interface.ulLineState = IF_STATE_UP;
    interface.ulSlot = 5;
    interface.ulCard = 3;
    interface.ulPort = 5;
    interface.ulVrf = 12;
    interface.ulIpv6Vrf = 13;
    interface.ulVap = 14;
    PutIf(interface);
    EXPECT_EQ(11u, Ask(BDS_IfnetGetPortType, 7));
    EXPECT_EQ(47u, Ask(BDS_IfnetGetPhyType, 7));
    EXPECT_EQ(IF_STATE_UP, Ask(BDS_IfnetGetLineState, 7));
    EXPECT_EQ(IF_STATE_DOWN, Ask(BDS_IfnetGetIpv6LinkState, 7));
    EXPECT_EQ(IF_STATE_DOWN, Ask(BDS_IfnetGetIfPhyState, 7));
    EXPECT_EQ(5u, Ask(BDS_IfnetGetSlotByIfIndex, 7));
    EXPECT_EQ(3u, Ask(BDS_IfnetGetCardByIfIndex, 7));
    EXPECT_EQ(5u, Ask(BDS_IfnetGetPortByIfIndex, 7));
    EXPECT_EQ(0x00056005u, Ask(BDS_IfnetGetPortIndexByIfIndex, 7));
    EXPECT_EQ(7u, Ask(BDS_IfnetGetMainIfIndex, 7));
    EXPECT_EQ(12u, Ask(BDS_IfnetGetVrfIndexByIfIndex, 7));
    EXPECT_EQ(13u, Ask(BDS_IfnetGetIpv6VrfIndexByIfIndex, 7));
    EXPECT_EQ(14u, Ask(BDS_IfnetGetVapIndexByDbssIfIndex, 7));
}

TEST_F(HostInterface, AnUnknownIndexFailsAndLeavesTheOutputUntouched) {
    PutIf(Interface(7));
    uint32_t value = UNTOUCHED;
    for (Query query :
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

TEST_F(HostInterface, WhatAnInterfaceDoesNotHaveIsAFailure) {
    PutIf(Interface(7));
    uint32_t value = UNTOUCHED;
    uint16_t vlan = 4711;
    for (Query query : {BDS_IfnetGetSlotByIfIndex, BDS_IfnetGetCardByIfIndex, BDS_IfnetGetPortByIfIndex,
                        BDS_IfnetGetPortIndexByIfIndex, BDS_IfnetGetVapIndexByDbssIfIndex})
        EXPECT_NE(0u, query(7, &value));
    EXPECT_NE(0u, BDS_IfnetGetVlanIdByIfIndex(7, &vlan));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(4711, vlan);
}

TEST_F(HostInterface, APlaceBeyondThePackedFormHasNoPortIndex) {
    for (auto [slot, card, port] : {std::array{256u, 0u, 0u}, {0u, 8u, 0u}, {0u, 0u, 64u}}) {
        MDL_IF_S interface = Interface(7);
        interface.ulSlot = slot;
        interface.ulCard = card;
        interface.ulPort = port;
        PutIf(interface);
        uint32_t value = UNTOUCHED;
        EXPECT_NE(0u, BDS_IfnetGetPortIndexByIfIndex(7, &value));
        EXPECT_EQ(UNTOUCHED, value);
    }
}

TEST_F(HostInterface, TheVlanThatAnInterfaceStandsForIsNotThatOfItsUntaggedFrames) {
    MDL_IF_S interface = Interface(7);
    interface.usPvid = 20;
    PutIf(interface);
    uint16_t vlan = 4711;
    EXPECT_NE(0u, BDS_IfnetGetVlanIdByIfIndex(7, &vlan));
    interface.usVlanId = 4095;
    PutIf(interface);
    EXPECT_EQ(0u, BDS_IfnetGetVlanIdByIfIndex(7, &vlan));
    EXPECT_EQ(4095, vlan);
    EXPECT_NE(0u, BDS_IfnetGetVlanIdByIfIndex(7, nullptr));
}

TEST_F(HostInterface, TheMacAddressIsSixBytesInOrder) {
    MDL_IF_S interface = Interface(7);
    const uint8_t mac[] = {1, 2, 3, 4, 5, 6};
    std::memcpy(interface.aucMac, mac, 6);
    PutIf(interface);
    uint8_t read[7] = {0, 0, 0, 0, 0, 0, 99};
    EXPECT_EQ(0u, BDS_IfnetGetMacByIfIndex(7, read));
    EXPECT_EQ(0, std::memcmp(read, mac, 6));
    EXPECT_EQ(99, read[6]);
    EXPECT_NE(0u, BDS_IfnetGetMacByIfIndex(8, read));
    EXPECT_NE(0u, BDS_IfnetGetMacByIfIndex(7, nullptr));
}

/* ---- yes and no */

TEST_F(HostInterface, ZeroAndAllOnesAreNoIndices) {
    EXPECT_EQ(0u, BDS_IsValidIfIndex(0));
    EXPECT_EQ(0u, BDS_IsValidIfIndex(0xFFFFFFFF));
    for (uint32_t if_index : {1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu})
        EXPECT_EQ(1u, BDS_IsValidIfIndex(if_index));
}

TEST_F(HostInterface, KindsAreToldApart) {
    MDL_IF_S port = Interface(7), router = Interface(8), sub = Interface(9);
    port.ulLayer = 2;
    router.ulFlags = MDL_IF_ADMIN_ETH;
    sub.ulMainIfIndex = 8;
    sub.ulFlags = MDL_IF_TEMP;
    for (const MDL_IF_S &each : {port, router, sub})
        PutIf(each);
    const auto answers = [](uint32_t if_index) {
        return std::array{BDS_IfnetIsSwitchPort(if_index), BDS_IfnetIsL3IF(if_index), BDS_IfnetIsSubIf(if_index),
                          BDS_IfnetIsTempIf(if_index), IFPDT_IsAdminEthPort(if_index)};
    };
    EXPECT_EQ((std::array{1u, 0u, 0u, 0u, 0u}), answers(7));
    EXPECT_EQ((std::array{0u, 1u, 0u, 0u, 1u}), answers(8));
    EXPECT_EQ((std::array{0u, 1u, 1u, 1u, 0u}), answers(9));
    for (uint32_t nobody : {0u, 10u, UVELHOST_NONE})
        EXPECT_EQ((std::array{0u, 0u, 0u, 0u, 0u}), answers(nobody));
}

/* ---- names */

TEST_F(HostInterface, ANameIsWrittenWholeOrNotAtAll) {
    PutIf(Interface(7, "Vlanif20"));
    char name[9] = "untouchd";
    EXPECT_NE(0u, BDS_IfnetGetIfNameByIfIndex(7, name, 8));
    EXPECT_NE(0u, BDS_IfnetGetIfNameByIfIndex(7, name, 0));
    EXPECT_EQ(1u, BDS_IfnetGetIfNameByIfIndex(8, name, 9));
    EXPECT_STREQ("untouchd", name);
    EXPECT_NE(0u, BDS_IfnetGetIfNameByIfIndex(7, nullptr, 9));
    EXPECT_EQ(0u, BDS_IfnetGetIfNameByIfIndex(7, name, 9));
    EXPECT_STREQ("Vlanif20", name);
}

TEST_F(HostInterface, TheLongestNameFits) {
    const std::string longest(IF_NAME_SIZE - 1, 'x');
    PutIf(Interface(7, longest));
    char name[IF_NAME_SIZE];
    EXPECT_EQ(0u, BDS_IfnetGetIfNameByIfIndex(7, name, sizeof name));
    EXPECT_EQ(longest, name);
}

TEST_F(HostInterface, WithoutAShortNameTheNameServes) {
    MDL_IF_S interface = Interface(7, "GigabitEthernet1/0/1");
    PutIf(interface);
    char name[IF_NAME_SIZE];
    EXPECT_EQ(0u, IF_INTF_GetSimpleName(7, name, sizeof name));
    EXPECT_STREQ("GigabitEthernet1/0/1", name);
    std::strcpy(interface.szShortName, "GE1/0/1");
    PutIf(interface);
    EXPECT_EQ(0u, IF_INTF_GetSimpleName(7, name, sizeof name));
    EXPECT_STREQ("GE1/0/1", name);
    EXPECT_NE(0u, IF_INTF_GetSimpleName(7, name, 7));
    EXPECT_NE(0u, IF_INTF_GetSimpleName(8, name, sizeof name));
}

TEST_F(HostInterface, TheNumberOfANameBeginsAtItsFirstDigit) {
    char number[8] = "old";
    EXPECT_EQ(0u, BDS_IfnetGetNumStrFromName("GigabitEthernet1/0/1", number, sizeof number));
    EXPECT_STREQ("1/0/1", number);
    EXPECT_EQ(0u, BDS_IfnetGetNumStrFromName("7", number, 2));
    EXPECT_STREQ("7", number);
    for (const char *name : {"", "NULL", "Eth"})
        EXPECT_NE(0u, BDS_IfnetGetNumStrFromName(name, number, sizeof number));
    EXPECT_NE(0u, BDS_IfnetGetNumStrFromName("Eth10", number, 2));
    EXPECT_NE(0u, BDS_IfnetGetNumStrFromName(nullptr, number, sizeof number));
    EXPECT_NE(0u, BDS_IfnetGetNumStrFromName("Eth1", nullptr, 8));
    EXPECT_STREQ("7", number);
}

/* ---- whole records */

TEST_F(HostInterface, ARecordStaysAsItWasUntilTheThreadAsksAgain) {
    MDL_IF_S interface = Interface(7, "before");
    interface.usVlanId = 20;
    PutIf(interface);
    const IF_IFNET_S *record = IF_GetIfByIndex(7);
    ASSERT_NE(nullptr, record);
    PutIf(Interface(7, "after"));
    std::thread([] { EXPECT_STREQ("after", IF_GetIfByIndex(7)->szName); }).join();
    EXPECT_STREQ("before", record->szName);
    EXPECT_EQ(20, record->usVlanId);
    EXPECT_EQ(7u, record->ulMainIfIndex);
    EXPECT_EQ(IF_STATE_DOWN, record->ulLineState);
    EXPECT_EQ(nullptr, IF_GetIfByIndex(8));
}

TEST_F(HostInterface, SubInterfacesAreWalkedInAscendingOrder) {
    PutIf(Interface(100, "main"));
    for (uint32_t if_index : {300u, 0x60000001u, 200u, 99u}) {
        MDL_IF_S sub = Interface(if_index);
        sub.ulMainIfIndex = 100;
        PutIf(sub);
    }
    std::vector<uint32_t> seen;
    for (const IF_IFNET_S *sub = IF_FindFirstSubIfnet(100); sub != nullptr; sub = IF_FindNextSubIfnet(100, sub))
        seen.push_back(sub->ulIfIndex);
    EXPECT_EQ((std::vector<uint32_t>{99, 200, 300, 0x60000001}), seen);
    EXPECT_EQ(nullptr, IF_FindFirstSubIfnet(200));
    EXPECT_EQ(nullptr, IF_FindNextSubIfnet(100, nullptr));
}

TEST_F(HostInterface, AWalkGoesOnWhenItsSubInterfaceHasBeenRemoved) {
    for (uint32_t if_index : {200u, 300u}) {
        MDL_IF_S sub = Interface(if_index);
        sub.ulMainIfIndex = 100;
        PutIf(sub);
    }
    const IF_IFNET_S *sub = IF_FindFirstSubIfnet(100);
    ASSERT_EQ(200u, sub->ulIfIndex);
    InBatch([](MDL_BATCH *batch) { MDL_RemoveIf(batch, 200); });
    sub = IF_FindNextSubIfnet(100, sub);
    ASSERT_NE(nullptr, sub);
    EXPECT_EQ(300u, sub->ulIfIndex);
    EXPECT_EQ(nullptr, IF_FindNextSubIfnet(100, sub));
}

/* ---- taken down by administration */

TEST_F(HostInterface, TakenDownItIsDownInEveryRespectUntilThatIsLifted) {
    MDL_IF_S interface = Interface(7);
    interface.ulLineState = interface.ulPhyState = interface.ulIpv6State = IF_STATE_UP;
    PutIf(interface);
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_EQ(0u, IF_INTF_ShutDownInterface(7));
    for (Query query : {BDS_IfnetGetLineState, BDS_IfnetGetIpv6LinkState, BDS_IfnetGetIfPhyState})
        EXPECT_EQ(IF_STATE_DOWN, Ask(query, 7));
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_EQ(0u, IF_INTF_NoShutDownInterface(7));
    for (Query query : {BDS_IfnetGetLineState, BDS_IfnetGetIpv6LinkState, BDS_IfnetGetIfPhyState})
        EXPECT_EQ(IF_STATE_UP, Ask(query, 7));
    EXPECT_NE(0u, IF_INTF_ShutDownInterface(8));
    EXPECT_NE(0u, IF_INTF_NoShutDownInterface(8));
}

TEST_F(HostInterface, AnActuatorIsAskedInPlaceOfTheModel) {
    static uint32_t asked_index, asked_down;
    const MDL_ACTUATOR_S actuator = {[](uint32_t if_index, uint32_t down) -> uint32_t {
                                         asked_index = if_index;
                                         asked_down = down;
                                         return if_index == 8;
                                     },
                                     nullptr};
    MDL_IF_S interface = Interface(7);
    interface.ulLineState = IF_STATE_UP;
    PutIf(interface);
    PutIf(Interface(8));
    MDL_SetActuator(&actuator);
    EXPECT_EQ(0u, IF_INTF_ShutDownInterface(7));
    EXPECT_EQ(7u, asked_index);
    EXPECT_EQ(1u, asked_down);
    EXPECT_EQ(IF_STATE_UP, Ask(BDS_IfnetGetLineState, 7));
    EXPECT_NE(0u, IF_INTF_NoShutDownInterface(8));
    EXPECT_EQ(0u, asked_down);
    MDL_SetActuator(nullptr);
}
