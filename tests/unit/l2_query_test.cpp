#include "host_answers.h"

#include <uvelcommon_base/kivo_l2_query.h>
#include <uvelcommon_base/kivo_trunk_query.h>

namespace {

/* ---- VLANs and interfaces ---- */

TEST(InterfaceOfVlan, IsThatOfItsBridgeDomainFirst) {
    Answers<BDS_L2_VlanGetVbdIfIndex>(500);
    Answers<BDS_L2IF_VLAN_GetIfIndexByVlanId>(600);
    EXPECT_EQ(500u, KIVO_Adapt_IF_GetIFIndexByVlanID(12));
    EXPECT_EQ(12u, std::get<0>(kit::Op<BDS_L2_VlanGetVbdIfIndex>().Last()));
    EXPECT_EQ(0u, kit::Op<BDS_L2IF_VLAN_GetIfIndexByVlanId>().Calls());
}

TEST(InterfaceOfVlan, IsTheVlansOwnOtherwise) {
    FailsWriting<BDS_L2_VlanGetVbdIfIndex>(500);
    Answers<BDS_L2IF_VLAN_GetIfIndexByVlanId>(600);
    EXPECT_EQ(600u, KIVO_Adapt_IF_GetIFIndexByVlanID(4095));
    EXPECT_EQ(4095u, std::get<0>(kit::Op<BDS_L2IF_VLAN_GetIfIndexByVlanId>().Last()));
}

TEST(InterfaceOfVlan, IsNoneWhenThereIsNeither) {
    FailsWriting<BDS_L2_VlanGetVbdIfIndex>(500);
    FailsWriting<BDS_L2IF_VLAN_GetIfIndexByVlanId>(600, 2);
    EXPECT_EQ(0xFFFFFFFFu, KIVO_Adapt_IF_GetIFIndexByVlanID(12));
}

TEST(InterfaceOfVlan, OfTheLayer2DatabaseIsReadOrNone) {
    Answers<BDS_L2_VlanGetIfIndex>(700);
    EXPECT_EQ(700u, UVEL_L2IF_GetIfIndexByVlanId(0xFFFF));
    EXPECT_EQ(0xFFFFu, std::get<0>(kit::Op<BDS_L2_VlanGetIfIndex>().Last()));
    kit::Op<BDS_L2_VlanGetIfIndex>().Returns(1);
    EXPECT_EQ(0xFFFFFFFFu, UVEL_L2IF_GetIfIndexByVlanId(1));
}

using VlanQuery = Named<uint32_t(uint32_t)>;

class VlanOfInterface : public testing::TestWithParam<VlanQuery> {};

TEST_P(VlanOfInterface, IsReadOr65535) {
    for (const uint32_t vlan : {0u, 1u, 4095u, 65534u}) {
        Answers<BDS_IfnetGetVlanIdByIfIndex>(vlan);
        EXPECT_EQ(vlan, GetParam().call(0x81020304));
        EXPECT_EQ(0x81020304u, std::get<0>(kit::Op<BDS_IfnetGetVlanIdByIfIndex>().Last()));
    }
    for (const uint32_t result : {1u, 0xFFFFFFFFu}) {
        FailsWriting<BDS_IfnetGetVlanIdByIfIndex>(12, result);
        EXPECT_EQ(65535u, GetParam().call(5));
    }
}

INSTANTIATE_TEST_SUITE_P(BothNames, VlanOfInterface,
                         testing::Values(VlanQuery{"KIVO_IF_GetVlanIdByIfIndex", KIVO_IF_GetVlanIdByIfIndex},
                                         VlanQuery{"KIVO_Adapt_IF_GetVlanIdByIfIndex",
                                                   KIVO_Adapt_IF_GetVlanIdByIfIndex}));

TEST(IdOfInterface, IsTheLowHalfWhateverTheStatus) {
    for (const uint32_t result : {0u, 1u}) {
        Writes<BDS_L2_VlanGetIdByIfIndex>(0x12340FFF, result);
        EXPECT_EQ(0x0FFFu, UVEL_L2IF_GetVlanIdByIfIndex(5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_L2_VlanGetIdByIfIndex>().Last()));
        EXPECT_EQ(0u, std::get<1>(kit::Op<BDS_L2_VlanGetIdByIfIndex>().Last())) << "the VLAN alone";
        uint32_t untouched = 77;
        EXPECT_EQ(0x0FFFu, UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(6, &untouched));
        EXPECT_EQ(6u, std::get<0>(kit::Op<BDS_L2_VlanGetIdByIfIndex>().Last()));
        EXPECT_EQ(1u, std::get<1>(kit::Op<BDS_L2_VlanGetIdByIfIndex>().Last())) << "VLAN or bridge domain";
        EXPECT_EQ(77u, untouched);
    }
}

TEST(IdOfInterface, Is65535WhenNothingIsWritten) {
    for (const uint32_t result : {0u, 1u}) {
        kit::Op<BDS_L2_VlanGetIdByIfIndex>().Returns(result);
        uint32_t any = 0;
        EXPECT_EQ(65535u, UVEL_L2IF_GetVlanIdByIfIndex(5));
        EXPECT_EQ(65535u, UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(5, &any));
    }
}

TEST(IdOfInterface, IsOneForANullPointerWithoutAskingTheHost) {
    EXPECT_EQ(1u, UVEL_L2IF_GetVlanIdOrBdIdByIfIndex(5, nullptr));
    EXPECT_EQ(0u, kit::Op<BDS_L2_VlanGetIdByIfIndex>().Calls());
}

TEST(VlanBitmap, HasVlanVInBitVModulo32OfWordVDividedBy32) {
    for (uint32_t set = 0; set < 4096; ++set) {
        uint32_t bitmap[128] = {};
        bitmap[set / 32] = 1U << set % 32;
        for (const uint32_t vlan : {0u, 31u, 32u, 63u, 4094u, 4095u, set, (set + 1) % 4096, (set + 32) % 4096})
            EXPECT_EQ(vlan == set ? 1u : 0u,
                      KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(static_cast<uint16_t>(vlan), bitmap));
    }
}

TEST(VlanBitmap, HoldsNoVlanBeyondItsEnd) {
    uint32_t area[256];
    std::fill(std::begin(area), std::end(area), 0xFFFFFFFFU);
    EXPECT_EQ(1u, KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(4095, area));
    for (const uint16_t vlan : {uint16_t{4096}, uint16_t{4097}, uint16_t{0xFFFF}})
        EXPECT_EQ(0u, KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(vlan, area));
    EXPECT_EQ(0u, KIVO_Adapt_L2IF_GET_VLAN_IN_VLANBITMAP(1, nullptr));
}

TEST(BitByPort, IsAlwaysZero) {
    for (const uint32_t result : {0u, 1u}) {
        Writes<BDS_L2IF_SH_PORT_GetIndexByIfIndex>(9, result);
        EXPECT_EQ(0u, KIVO_Adapt_GetBitByVlanIdAndPortIndex(12, 5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_L2IF_SH_PORT_GetIndexByIfIndex>().Last()));
    }
    EXPECT_EQ(2u, kit::Op<BDS_L2IF_SH_PORT_GetIndexByIfIndex>().Calls());
}

TEST(PortIndex, IsValidBelowTheNumberOfPorts) {
    kit::Op<BDS_L2IF_SH_GetMaxSwitchPortNum>().Returns(48);
    EXPECT_EQ(1u, KIVO_L2IF_IsValidPortIndex(0));
    EXPECT_EQ(1u, KIVO_L2IF_IsValidPortIndex(47));
    EXPECT_EQ(0u, KIVO_L2IF_IsValidPortIndex(48));
    EXPECT_EQ(0u, KIVO_L2IF_IsValidPortIndex(0xFFFFFFFF));
    kit::Op<BDS_L2IF_SH_GetMaxSwitchPortNum>().Returns(0);
    EXPECT_EQ(0u, KIVO_L2IF_IsValidPortIndex(0));
}

/* ---- trunks ---- */

void TrunkAnswer(uint32_t isTrunk, uint32_t trunkIndex, uint32_t result) {
    kit::Op<BDS_TrunkGetTrunkIndex>().Does([=](uint32_t, uint32_t *is, uint32_t *index) {
        *is = isTrunk;
        *index = trunkIndex;
        return result;
    });
}

TEST(TrunkIndex, ReplacesTheInterfaceOfATrunk) {
    TrunkAnswer(1, 3, 0);
    EXPECT_EQ(3u, UVEL_L2IF_GetTrunkIndex(0x80000005));
    EXPECT_EQ(0x80000005u, std::get<0>(kit::Op<BDS_TrunkGetTrunkIndex>().Last()));
    TrunkAnswer(1, 0, 0);
    EXPECT_EQ(0u, UVEL_L2IF_GetTrunkIndex(5));
}

TEST(TrunkIndex, IsTheInterfaceWhereThereIsNoTrunk) {
    for (const uint32_t isTrunk : {0u, 2u, 0xFFFFFFFFu}) {
        TrunkAnswer(isTrunk, 3, 0);
        EXPECT_EQ(5u, UVEL_L2IF_GetTrunkIndex(5));
    }
    TrunkAnswer(1, 3, 1);
    EXPECT_EQ(5u, UVEL_L2IF_GetTrunkIndex(5)) << "the call failed";
    kit::Op<BDS_TrunkGetTrunkIndex>().Returns(0);
    EXPECT_EQ(5u, UVEL_L2IF_GetTrunkIndex(5)) << "nothing was written";
}

TEST(TrunkIndex, OfAnInvalidIndexIsThatIndexWithoutAskingTheHost) {
    TrunkAnswer(1, 3, 0);
    EXPECT_EQ(0u, UVEL_L2IF_GetTrunkIndex(0));
    EXPECT_EQ(0xFFFFFFFFu, UVEL_L2IF_GetTrunkIndex(0xFFFFFFFF));
    EXPECT_EQ(0u, kit::Op<BDS_TrunkGetTrunkIndex>().Calls());
}

} // namespace
