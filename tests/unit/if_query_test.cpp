#include "host_answers.h"

#include <cstdio>
#include <uvelcommon_base/kivo_if_query.h>
#include <uvelcommon_base/kivo_settings.h>

namespace {

using Index = uint32_t (*)(uint32_t);

const uint32_t INVALID[] = {0, 0xFFFFFFFF};
const uint32_t VALID[] = {1, 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE};

/* ---- index and kind ---- */

TEST(InterfaceIndex, IsInvalidForZeroAndAllOnes) {
    for (const uint32_t index : INVALID)
        EXPECT_EQ(0u, KIVO_IF_IsValidIfIndex(index));
    for (const uint32_t index : VALID)
        EXPECT_EQ(1u, KIVO_IF_IsValidIfIndex(index));
}

TEST(InterfaceLayer, IsTwoForTheTopByteSixtyWithoutAskingTheHost) {
    for (const uint32_t index : {0x60000000u, 0x60000001u, 0x60FFFFFFu})
        EXPECT_EQ(1u, KIVO_Adapt_IF_GetIFLayerType(index));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetIsSwitchPort>().Calls());
}

TEST(InterfaceLayer, IsTheHostsAnswerForAnyOtherIndex) {
    for (const uint32_t answer : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<BDS_IfnetIsSwitchPort>().Returns(answer);
        for (const uint32_t index : {0u, 5u, 0x5FFFFFFFu, 0x61000000u, 0x00600000u, 0xFFFFFFFFu}) {
            EXPECT_EQ(answer, KIVO_Adapt_IF_GetIFLayerType(index));
            EXPECT_EQ(index, std::get<0>(kit::Op<BDS_IfnetIsSwitchPort>().Last()));
        }
    }
}

TEST(InterfaceLayer, TwoIsAnswerOneAndThreeAnyOther) {
    for (const uint32_t answer : {0u, 1u, 2u, 0x80000001u}) {
        kit::Op<BDS_IfnetIsSwitchPort>().Returns(answer);
        for (const uint32_t index : VALID) {
            EXPECT_EQ(answer == 1 ? 1u : 0u, KIVO_Adapt_IF_IS_L2IF(index));
            EXPECT_EQ(answer == 1 ? 0u : 1u, KIVO_Adapt_IF_IS_L3IF(index));
        }
        EXPECT_EQ(1u, KIVO_Adapt_IF_IS_L2IF(0x60000001));
        EXPECT_EQ(0u, KIVO_Adapt_IF_IS_L3IF(0x60000001));
    }
}

TEST(InterfaceLayer, OfAnInvalidIndexIsNeitherTwoNorThree) {
    kit::Op<BDS_IfnetIsSwitchPort>().Returns(1);
    for (const uint32_t index : INVALID) {
        EXPECT_EQ(0u, KIVO_Adapt_IF_IS_L2IF(index));
        EXPECT_EQ(0u, KIVO_Adapt_IF_IS_L3IF(index));
    }
    EXPECT_EQ(0u, kit::Op<BDS_IfnetIsSwitchPort>().Calls());
}

TEST(SubInterface, IsWhatTheHostSaysForAValidIndex) {
    for (const uint32_t answer : {0u, 1u, 7u}) {
        kit::Op<BDS_IfnetIsSubIf>().Returns(answer);
        for (const uint32_t index : VALID) {
            EXPECT_EQ(answer, KIVO_Adapt_IF_IS_SUBIF(index));
            EXPECT_EQ(index, std::get<0>(kit::Op<BDS_IfnetIsSubIf>().Last()));
        }
    }
    const uint64_t calls = kit::Op<BDS_IfnetIsSubIf>().Calls();
    for (const uint32_t index : INVALID)
        EXPECT_EQ(0u, KIVO_Adapt_IF_IS_SUBIF(index));
    EXPECT_EQ(calls, kit::Op<BDS_IfnetIsSubIf>().Calls());
}

/* A routed interface of port type 1 outside any trunk, unless a test says otherwise. */
class WideArea : public testing::Test {
  protected:
    void SetUp() override {
        kit::Op<BDS_TrunkIsPortInTrunk>().Returns(0);
        Answers<BDS_IfnetGetPortType>(1U);
        kit::Op<BDS_IfnetIsL3IF>().Returns(1);
        kit::Op<BDS_IfnetIsSubIf>().Returns(0);
    }
};

TEST_F(WideArea, QualifiesByElevenPortTypes) {
    std::vector<uint32_t> qualifying;
    for (uint32_t type = 0; type < 70000; ++type) {
        Answers<BDS_IfnetGetPortType>(type);
        if (KIVO_Adapt_IsWANInterface(5) == 1)
            qualifying.push_back(type);
    }
    EXPECT_EQ((std::vector<uint32_t>{1, 25, 26, 32, 33, 43, 97, 98, 99, 102, 103}), qualifying);
    Answers<BDS_IfnetGetPortType>(0xFFFFFFFFU);
    EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(5));
}

TEST_F(WideArea, AsksAboutTheInterfaceInOrder) {
    kit::Recorder recorder;
    EXPECT_EQ(1u, KIVO_Adapt_IsWANInterface(5));
    EXPECT_EQ((std::vector<std::string>{"BDS_TrunkIsPortInTrunk(5)", "BDS_IfnetGetPortType(5, ptr)",
                                        "BDS_IfnetIsL3IF(5)", "BDS_IfnetIsSubIf(5)"}),
              recorder.Calls());
}

TEST_F(WideArea, LooksAtTheTrunkOfAMember) {
    kit::Op<BDS_TrunkIsPortInTrunk>().Returns(1);
    Answers<BDS_TrunkGetTrunkIfIndexByPort>(900U);
    kit::Recorder recorder;
    EXPECT_EQ(1u, KIVO_Adapt_IsWANInterface(5));
    EXPECT_EQ(
        (std::vector<std::string>{"BDS_TrunkIsPortInTrunk(5)", "BDS_TrunkGetTrunkIfIndexByPort(5, ptr)",
                                  "BDS_IfnetGetPortType(900, ptr)", "BDS_IfnetIsL3IF(900)", "BDS_IfnetIsSubIf(900)"}),
        recorder.Calls());
}

TEST_F(WideArea, IsNoMemberForAnyAnswerButOne) {
    kit::Op<BDS_TrunkIsPortInTrunk>().Returns(2);
    EXPECT_EQ(1u, KIVO_Adapt_IsWANInterface(5));
    EXPECT_EQ(0u, kit::Op<BDS_TrunkGetTrunkIfIndexByPort>().Calls());
}

TEST_F(WideArea, RefusesAMemberWithoutAnIndexOrTrunk) {
    kit::Op<BDS_TrunkIsPortInTrunk>().Returns(1);
    Answers<BDS_TrunkGetTrunkIfIndexByPort>(900U);
    EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(0xFFFFFFFF));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetPortType>().Calls());
    kit::Op<BDS_TrunkGetTrunkIfIndexByPort>().Returns(1);
    EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(5));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetPortType>().Calls());
}

TEST_F(WideArea, NeedsAPortTypeARoutedInterfaceAndNoSubInterface) {
    FailsWriting<BDS_IfnetGetPortType>(1);
    EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(5)) << "no port type";
    Answers<BDS_IfnetGetPortType>(1U);
    for (const uint32_t answer : {0u, 2u}) {
        kit::Op<BDS_IfnetIsL3IF>().Returns(answer);
        EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(5)) << "not routed";
    }
    kit::Op<BDS_IfnetIsL3IF>().Returns(1);
    kit::Op<BDS_IfnetIsSubIf>().Returns(1);
    EXPECT_EQ(0u, KIVO_Adapt_IsWANInterface(5)) << "a sub-interface";
    kit::Op<BDS_IfnetIsSubIf>().Returns(2);
    EXPECT_EQ(1u, KIVO_Adapt_IsWANInterface(5)) << "only 1 says sub-interface";
}

/* A query that reads one value and has a fixed one for an invalid index and for a failure. */
template <auto Read>
void ExpectValueOr(Index query, uint32_t none) {
    Answers<Read>(0U);
    for (const uint32_t index : INVALID)
        EXPECT_EQ(none, query(index));
    EXPECT_EQ(0u, kit::Op<Read>().Calls());
    for (const uint32_t value : {0u, 1u, 2u, 11u, 0xFFFFFFFFu}) {
        Answers<Read>(value);
        for (const uint32_t index : VALID) {
            EXPECT_EQ(value, query(index));
            EXPECT_EQ(index, std::get<0>(kit::Op<Read>().Last()));
        }
    }
    for (const uint32_t result : {1u, 2u, 0xFFFFFFFFu}) {
        FailsWriting<Read>(33, result);
        EXPECT_EQ(none, query(5));
    }
}

TEST(InterfaceTypes, AreReadOrHaveTheirNone) {
    ExpectValueOr<BDS_IfnetGetPortType>(KIVO_IF_GetPortType, 0);
    ExpectValueOr<BDS_IfnetGetPhyType>(KIVO_IF_GetIfPhyType, 0xFFFFFFFF);
}

TEST(InterfaceCommands, MapToThemselvesUpToTwentyThreeButForTwo) {
    for (uint32_t command = 0; command < 70000; ++command)
        EXPECT_EQ(command <= 23 && command != 2 ? command : 0xFFFFFFFF, KIVO_Get_KivoIFCmdtype(command));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Get_KivoIFCmdtype(0x80000000));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Get_KivoIFCmdtype(0xFFFFFFFF));
}

TEST(InterfaceNumbers, OfTypesAreTheHosts) {
    for (uint32_t type = 0; type < 1000; ++type)
        EXPECT_EQ(type, KIVO_Get_OxmIfType(type));
    EXPECT_EQ(0x80000000u, KIVO_Get_OxmIfType(0x80000000));
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Get_OxmIfType(0xFFFFFFFF));
}

/* ---- state ---- */

TEST(LineState, IsUpForEitherFamily) {
    for (const uint32_t ipv4 : {0u, 1u, 2u, 3u}) {
        for (const uint32_t ipv6 : {0u, 1u, 2u, 3u}) {
            Answers<BDS_IfnetGetLineState>(ipv4);
            Answers<BDS_IfnetGetIpv6LinkState>(ipv6);
            EXPECT_EQ(ipv4 == 1 || ipv6 == 1 ? 1u : 2u, KIVO_IF_GetIfLineStatuesByIndex(5));
        }
    }
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetLineState>().Last()));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetIpv6LinkState>().Last()));
}

TEST(LineState, IsUnknownWithAnAssertionWhenEitherCannotBeRead) {
    Answers<BDS_IfnetGetIpv6LinkState>(1U);
    FailsWriting<BDS_IfnetGetLineState>(1, 5);
    EXPECT_EQ(10u, KIVO_IF_GetIfLineStatuesByIndex(5));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_oxmif"}, kit::TakeAsserts());
    Answers<BDS_IfnetGetLineState>(1U);
    FailsWriting<BDS_IfnetGetIpv6LinkState>(1, 5);
    EXPECT_EQ(10u, KIVO_IF_GetIfLineStatuesByIndex(5));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_oxmif"}, kit::TakeAsserts());
}

TEST(PhysicalState, IsReadOrTen) {
    ExpectValueOr<BDS_IfnetGetIfPhyState>(KIVO_IF_GetIfPhyStatusByIndex, 10);
}

template <auto Read>
void ExpectUpForOneOnly(Index query) {
    for (const uint32_t state : {0u, 1u, 2u, 10u, 0xFFFFFFFFu}) {
        Answers<Read>(state);
        EXPECT_EQ(state == 1 ? 1u : 0u, query(5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<Read>().Last()));
    }
    FailsWriting<Read>(1, 2);
    EXPECT_EQ(0u, query(5));
}

TEST(States, AreUpForTheStateOneOnly) {
    ExpectUpForOneOnly<BDS_IfnetGetLineState>(KIVO_IF_IsLineStateUp);
    ExpectUpForOneOnly<BDS_IfnetGetIfPhyState>(KIVO_IF_IsPhyStateUp);
}

/* ---- place ---- */

using SlotQuery = Named<uint32_t(uint32_t, uint32_t *)>;

class Slot : public testing::TestWithParam<SlotQuery> {
  protected:
    void SetUp() override {
        KIVO_SetKivoCommonSpec(4, 250);
        kit::Op<Trunk_IF_IsTrunk>().Returns(0);
    }

    uint32_t slot_ = 77;
};

TEST_P(Slot, OfAnInvalidIndexIsNotAskedFor) {
    Answers<BDS_IfnetGetSlotByIfIndex>(3U);
    for (const uint32_t index : INVALID) {
        EXPECT_EQ(1u, GetParam().call(index, &slot_));
        EXPECT_EQ(77u, slot_);
    }
    EXPECT_EQ(1u, GetParam().call(5, nullptr));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetSlotByIfIndex>().Calls());
}

TEST_P(Slot, IsTheHostsWhereItNamesOne) {
    for (const uint32_t slot : {0u, 3u, 0xFFFFFFFEu}) {
        Answers<BDS_IfnetGetSlotByIfIndex>(slot);
        EXPECT_EQ(0u, GetParam().call(5, &slot_));
        EXPECT_EQ(slot, slot_);
    }
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetSlotByIfIndex>().Last()));
    EXPECT_EQ(0u, kit::Op<Trunk_IF_IsTrunk>().Calls());
}

TEST_P(Slot, OfATrunkIsTheOneReservedForTrunks) {
    kit::Op<Trunk_IF_IsTrunk>().Returns(1);
    kit::Op<BDS_IfnetGetSlotByIfIndex>().Returns(1);
    EXPECT_EQ(0u, GetParam().call(5, &slot_));
    EXPECT_EQ(250u, slot_);
    EXPECT_EQ(5u, std::get<0>(kit::Op<Trunk_IF_IsTrunk>().Last()));
    Answers<BDS_IfnetGetSlotByIfIndex>(0xFFFFFFFFU);
    KIVO_SetKivoCommonSpec(4, 251);
    EXPECT_EQ(0u, GetParam().call(5, &slot_));
    EXPECT_EQ(251u, slot_);
}

TEST_P(Slot, IsMissingForAnythingElse) {
    for (const uint32_t answer : {0u, 2u}) {
        kit::Op<Trunk_IF_IsTrunk>().Returns(answer);
        FailsWriting<BDS_IfnetGetSlotByIfIndex>(9);
        EXPECT_EQ(1u, GetParam().call(5, &slot_));
        EXPECT_EQ(0u, slot_);
        slot_ = 77;
        Answers<BDS_IfnetGetSlotByIfIndex>(0xFFFFFFFFU);
        EXPECT_EQ(1u, GetParam().call(5, &slot_));
        EXPECT_EQ(0u, slot_);
    }
}

INSTANTIATE_TEST_SUITE_P(BothNames, Slot,
                         testing::Values(SlotQuery{"IFPDT_GetSlotByIfIndex", IFPDT_GetSlotByIfIndex},
                                         SlotQuery{"KIVO_IFPDT_GetSlotByIfIndex", KIVO_IFPDT_GetSlotByIfIndex}));

TEST(ProductPortIndex, HoldsSlotCardAndPort) {
    EXPECT_EQ(5u, KIVO_IFPDT_GetSlotByPdtIndex(0x00056045));
    EXPECT_EQ(3u, KIVO_IFPDT_GetCardByPdtIndex(0x00056045));
    EXPECT_EQ(5u, KIVO_IFPDT_GetPortByPdtIndex(0x00056045));
}

TEST(ProductPortIndex, KeepsItsFieldsApart) {
    const struct {
        uint32_t index, slot, card, port;
    } ROWS[] = {
        {0, 0, 0, 0},          {0xFFFFFFFF, 255, 7, 63}, {0x00FF0000, 255, 0, 0}, {0xFF000000, 0, 0, 0},
        {0x0000E000, 0, 7, 0}, {0x00001FC0, 0, 0, 0},    {0x0000003F, 0, 0, 63},  {0x00010000, 1, 0, 0},
    };
    for (const auto &row : ROWS) {
        SCOPED_TRACE(row.index);
        EXPECT_EQ(row.slot, KIVO_IFPDT_GetSlotByPdtIndex(row.index));
        EXPECT_EQ(row.card, KIVO_IFPDT_GetCardByPdtIndex(row.index));
        EXPECT_EQ(row.port, KIVO_IFPDT_GetPortByPdtIndex(row.index));
    }
}

TEST(MainInterface, IsReadOrZero) {
    Answers<BDS_IfnetGetMainIfIndex>(12U);
    EXPECT_EQ(12u, KIVO_Adapt_GetMainIf(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetMainIfIndex>().Last()));
    FailsWriting<BDS_IfnetGetMainIfIndex>(12);
    EXPECT_EQ(0u, KIVO_Adapt_GetMainIf(5));
}

/* ---- names ---- */

class InterfaceName : public testing::Test {
  protected:
    void SetUp() override {
        kit::Op<BDS_IfnetGetIfNameByIfIndex>().Does([](uint32_t index, char *name, uint32_t size) {
            std::snprintf(name, size, "GigabitEthernet1/0/%u", index);
            return 0U;
        });
    }
};

TEST_F(InterfaceName, IsGivenInABufferOfSixtyFourBytes) {
    EXPECT_STREQ("GigabitEthernet1/0/5", KIVO_IF_GetNameByIfIndex(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetIfNameByIfIndex>().Last()));
    EXPECT_EQ(64u, std::get<2>(kit::Op<BDS_IfnetGetIfNameByIfIndex>().Last()));
    EXPECT_STREQ("GigabitEthernet1/0/6", KIVO_IF_GetName(6));
    EXPECT_EQ(6u, std::get<0>(kit::Op<BDS_IfnetGetIfNameByIfIndex>().Last()));
    EXPECT_EQ(64u, std::get<2>(kit::Op<BDS_IfnetGetIfNameByIfIndex>().Last()));
}

TEST_F(InterfaceName, OfEachQueryHasABufferOfItsOwn) {
    const char *first = KIVO_IF_GetNameByIfIndex(1);
    const char *second = KIVO_IF_GetName(2);
    EXPECT_STREQ("GigabitEthernet1/0/1", first);
    EXPECT_STREQ("GigabitEthernet1/0/2", second);
    EXPECT_EQ(first, KIVO_IF_GetNameByIfIndex(3));
    EXPECT_STREQ("GigabitEthernet1/0/3", first);
    EXPECT_STREQ("GigabitEthernet1/0/2", second);
    EXPECT_EQ(second, KIVO_IF_GetName(4));
}

TEST_F(InterfaceName, ByIndexIsNullForAnInvalidIndexWithoutAskingTheHost) {
    for (const uint32_t index : INVALID)
        EXPECT_EQ(nullptr, KIVO_IF_GetNameByIfIndex(index));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetIfNameByIfIndex>().Calls());
}

TEST_F(InterfaceName, ByIndexIsEmptyWhenTheHostHasNone) {
    KIVO_IF_GetNameByIfIndex(1);
    for (const uint32_t result : {1u, 2u}) {
        kit::Op<BDS_IfnetGetIfNameByIfIndex>().Returns(result);
        EXPECT_STREQ("", KIVO_IF_GetNameByIfIndex(5));
    }
}

TEST_F(InterfaceName, IsNullWhenTheHostAnswersOne) {
    for (const uint32_t index : {5u, 0u, 0xFFFFFFFFu}) {
        kit::Op<BDS_IfnetGetIfNameByIfIndex>().Returns(1);
        EXPECT_EQ(nullptr, KIVO_IF_GetName(index));
    }
    EXPECT_EQ(3u, kit::Op<BDS_IfnetGetIfNameByIfIndex>().Calls());
    kit::Op<BDS_IfnetGetIfNameByIfIndex>().Returns(2);
    EXPECT_STREQ("", KIVO_IF_GetName(5));
}

} // namespace
