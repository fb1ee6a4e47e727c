#include "host_answers.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <uvelcommon_base/kivo_addr_query.h>

namespace {

using Mac = std::array<uint8_t, 6>;

const Mac OWN = {0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
const Mac VIRTUAL = {0x00, 0x00, 0x5E, 0x00, 0x01, 0x07};

/* ---- IPv4 ---- */

TEST(FirstAddress, IsTurnedIntoHostOrder) {
    Answers<BDS_IPGetFirstIpByIfIndex>(htonl(0x0A010203));
    uint32_t address = 0;
    EXPECT_EQ(0u, KIVO_Adapt_GetIfIpAddrByIndex(5, &address));
    EXPECT_EQ(0x0A010203u, address);
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IPGetFirstIpByIfIndex>().Last()));
}

TEST(FirstAddress, StaysAsItWasWhenTheHostFails) {
    for (const uint32_t result : {1u, 7u, 0xFFFFFFFFu}) {
        FailsWriting<BDS_IPGetFirstIpByIfIndex>(0x01020304, result);
        uint32_t address = 77;
        EXPECT_EQ(result, KIVO_Adapt_GetIfIpAddrByIndex(5, &address));
        EXPECT_EQ(77u, address);
    }
}

TEST(FirstAddress, AssertsForANullPointer) {
    EXPECT_EQ(1u, KIVO_Adapt_GetIfIpAddrByIndex(5, nullptr));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_pdtadapt"}, kit::TakeAsserts());
    EXPECT_EQ(0u, kit::Op<BDS_IPGetFirstIpByIfIndex>().Calls());
}

void MainAddress(uint32_t address, uint32_t length, uint32_t result = 0) {
    kit::Op<BDS_IPGetMainIpByIfIndex>().Does([=](uint32_t, uint32_t *outAddress, uint32_t *outLength) {
        *outAddress = address;
        *outLength = length;
        return result;
    });
}

TEST(MainIpAddress, ComesWithAMaskOfItsPrefixLength) {
    const struct {
        uint32_t length, mask;
    } ROWS[] = {{0, 0}, {1, 0x80000000}, {8, 0xFF000000}, {24, 0xFFFFFF00}, {31, 0xFFFFFFFE}, {32, 0xFFFFFFFF}};
    for (const auto &row : ROWS) {
        MainAddress(0x0A010203, row.length);
        uint32_t address = 0;
        uint32_t mask = 77;
        EXPECT_EQ(0u, KIVO_IF_GetMainIpAddr(5, &address, &mask));
        EXPECT_EQ(0x0A010203u, address);
        EXPECT_EQ(row.mask, mask);
        EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IPGetMainIpByIfIndex>().Last()));
    }
}

TEST(MainIpAddress, KeepsALengthAbove32AsItIs) {
    for (const uint32_t length : {33u, 64u, 0xFFFFFFFFu}) {
        MainAddress(1, length);
        uint32_t address = 0;
        uint32_t mask = 77;
        EXPECT_EQ(0u, KIVO_IF_GetMainIpAddr(5, &address, &mask));
        EXPECT_EQ(length, mask);
    }
}

TEST(MainIpAddress, OfAFailureHasTheMaskZeroOrWhatTheHostWrote) {
    kit::Op<BDS_IPGetMainIpByIfIndex>().Returns(3);
    uint32_t address = 66;
    uint32_t mask = 77;
    EXPECT_EQ(3u, KIVO_IF_GetMainIpAddr(5, &address, &mask));
    EXPECT_EQ(66u, address);
    EXPECT_EQ(0u, mask);
    MainAddress(1, 24, 3);
    EXPECT_EQ(3u, KIVO_IF_GetMainIpAddr(5, &address, &mask));
    EXPECT_EQ(24u, mask) << "a length is made a mask on success only";
}

TEST(MainIpAddress, NeedsAMaskPointer) {
    uint32_t address = 66;
    EXPECT_EQ(1u, KIVO_IF_GetMainIpAddr(5, &address, nullptr));
    EXPECT_EQ(66u, address);
    EXPECT_EQ(0u, kit::Op<BDS_IPGetMainIpByIfIndex>().Calls());
    kit::Op<BDS_IPGetMainIpByIfIndex>().Returns(1);
    uint32_t mask = 77;
    EXPECT_EQ(1u, KIVO_IF_GetMainIpAddr(5, nullptr, &mask));
    EXPECT_EQ(nullptr, std::get<1>(kit::Op<BDS_IPGetMainIpByIfIndex>().Last())) << "that pointer is the host's affair";
}

TEST(Mask, IsReadForAnIndexThatTheHostCallsValid) {
    kit::Op<BDS_IsValidIfIndex>().Returns(1);
    Answers<IP_GetMask>(0xFFFFFF00);
    EXPECT_EQ(0xFFFFFF00u, KIVO_IP_GetMask(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IsValidIfIndex>().Last()));
    EXPECT_EQ(5u, std::get<0>(kit::Op<IP_GetMask>().Last()));
    FailsWriting<IP_GetMask>(0xFFFFFF00);
    EXPECT_EQ(0u, KIVO_IP_GetMask(5));
}

TEST(Mask, OfAnInvalidIndexIsZeroAndNotAskedFor) {
    Answers<IP_GetMask>(0xFFFFFF00);
    for (const uint32_t answer : {0u, 2u, 0xFFFFFFFFu}) {
        kit::Op<BDS_IsValidIfIndex>().Returns(answer);
        EXPECT_EQ(0u, KIVO_IP_GetMask(5)) << "valid is 1 alone, not " << answer;
    }
    EXPECT_EQ(0u, kit::Op<IP_GetMask>().Calls());
}

/* ---- MAC addresses ---- */

void OwnMac(uint32_t result = 0) {
    kit::Op<BDS_IfnetGetMacByIfIndex>().Does([=](uint32_t, uint8_t *mac) {
        std::copy(OWN.begin(), OWN.end(), mac);
        return result;
    });
}

TEST(OwnMacAddress, IsComparedInAllSixBytes) {
    OwnMac();
    EXPECT_EQ(1u, UVEL_IF_IsThisIfMacAddr(5, OWN.data()));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetMacByIfIndex>().Last()));
    for (std::size_t i = 0; i < OWN.size(); ++i) {
        Mac other = OWN;
        other[i] ^= 0x80;
        EXPECT_EQ(0u, UVEL_IF_IsThisIfMacAddr(5, other.data())) << "byte " << i;
    }
}

TEST(OwnMacAddress, IsNotWhatCannotBeRead) {
    OwnMac(1);
    EXPECT_EQ(0u, UVEL_IF_IsThisIfMacAddr(5, OWN.data()));
    const Mac zero = {};
    kit::Op<BDS_IfnetGetMacByIfIndex>().Returns(1);
    EXPECT_EQ(0u, UVEL_IF_IsThisIfMacAddr(5, zero.data()));
    OwnMac();
    EXPECT_EQ(0u, UVEL_IF_IsThisIfMacAddr(5, nullptr));
}

TEST(OwnMacAddress, IsAnyForAnInvalidIndex) {
    OwnMac();
    const Mac other = {1};
    for (const uint32_t index : {0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(1u, UVEL_IF_IsThisIfMacAddr(index, other.data()));
        EXPECT_EQ(1u, UVEL_IF_IsThisIfMacAddr(index, nullptr));
    }
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetMacByIfIndex>().Calls());
}

/* Address 10.1.2.3 of interface 5 is that of a VRRP group; `master` is what the host says about being its master. */
void VirtualRouter(uint32_t isVirtual, uint32_t master) {
    kit::Op<VRRP4_VrrpIsVIp>().Does([=](uint32_t, uint32_t address, uint8_t *mac) {
        if (address == 0x0A010203)
            std::copy(VIRTUAL.begin(), VIRTUAL.end(), mac);
        return isVirtual;
    });
    kit::Op<VRRP_IsIfMasterByVMac>().Does([=](uint32_t, const uint8_t *mac) {
        return std::memcmp(mac, VIRTUAL.data(), VIRTUAL.size()) == 0 ? master : 0;
    });
}

TEST(MacForAddress, IsTheVirtualOneForItsMaster) {
    OwnMac();
    for (const uint32_t isVirtual : {0u, 1u}) { // not looked at
        VirtualRouter(isVirtual, 1);
        Mac mac = {};
        EXPECT_EQ(0u, UVEL_IF_GetThisIfMacAddrByIfIp(5, 0x0A010203, mac.data()));
        EXPECT_EQ(VIRTUAL, mac);
    }
    EXPECT_EQ(5u, std::get<0>(kit::Op<VRRP4_VrrpIsVIp>().Last()));
    EXPECT_EQ(0x0A010203u, std::get<1>(kit::Op<VRRP4_VrrpIsVIp>().Last()));
    EXPECT_EQ(5u, std::get<0>(kit::Op<VRRP_IsIfMasterByVMac>().Last()));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetMacByIfIndex>().Calls());
}

TEST(MacForAddress, IsTheInterfacesForAnyOther) {
    OwnMac();
    for (const uint32_t master : {0u, 2u}) {
        VirtualRouter(1, master);
        Mac mac = {};
        EXPECT_EQ(0u, UVEL_IF_GetThisIfMacAddrByIfIp(5, 0x0A010203, mac.data()));
        EXPECT_EQ(OWN, mac);
        EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetMacByIfIndex>().Last()));
    }
}

TEST(MacForAddress, DoesNotDependOnWhatTheBufferHeld) {
    OwnMac();
    VirtualRouter(1, 1);
    Mac mac = VIRTUAL;
    EXPECT_EQ(0u, UVEL_IF_GetThisIfMacAddrByIfIp(5, 0x0A010204, mac.data()));
    EXPECT_EQ(OWN, mac);
}

TEST(MacForAddress, IsTheHostsFailure) {
    VirtualRouter(0, 0);
    kit::Op<BDS_IfnetGetMacByIfIndex>().Returns(9);
    Mac mac = OWN;
    EXPECT_EQ(9u, UVEL_IF_GetThisIfMacAddrByIfIp(5, 0x0A010203, mac.data()));
    EXPECT_EQ(OWN, mac);
    EXPECT_EQ(1u, UVEL_IF_GetThisIfMacAddrByIfIp(5, 0x0A010203, nullptr));
}

/* ---- VRFs ---- */

TEST(VrfOfInterface, IsReadForARoutedInterface) {
    kit::Op<BDS_IfnetIsSwitchPort>().Returns(0);
    Answers<BDS_IfnetGetVrfIndexByIfIndex>(42);
    EXPECT_EQ(42u, KIVO_IF_GetVrfIndexByIfIndex(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetIsSwitchPort>().Last()));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetVrfIndexByIfIndex>().Last()));
    FailsWriting<BDS_IfnetGetVrfIndexByIfIndex>(42);
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(5));
}

TEST(VrfOfInterface, IsReadUnlessTheHostSaysOneForASwitchPort) {
    Answers<BDS_IfnetGetVrfIndexByIfIndex>(42);
    for (const uint32_t answer : {2u, 0xFFFFFFFFu}) {
        kit::Op<BDS_IfnetIsSwitchPort>().Returns(answer);
        EXPECT_EQ(42u, KIVO_IF_GetVrfIndexByIfIndex(5)) << answer;
    }
}

TEST(VrfOfInterface, IsZeroForASwitchPortAndAnInvalidIndexWithoutARead) {
    Answers<BDS_IfnetGetVrfIndexByIfIndex>(42);
    kit::Op<BDS_IfnetIsSwitchPort>().Returns(1);
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(5));
    kit::Op<BDS_IfnetIsSwitchPort>().Returns(0);
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(0));
    EXPECT_EQ(0u, KIVO_IF_GetVrfIndexByIfIndex(0xFFFFFFFF));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetVrfIndexByIfIndex>().Calls());
    EXPECT_EQ(1u, kit::Op<BDS_IfnetIsSwitchPort>().Calls()) << "for the valid index alone";
}

using VrfQuery = Named<uint32_t(uint32_t)>;

class Ipv6VrfOfInterface : public testing::TestWithParam<VrfQuery> {};

TEST_P(Ipv6VrfOfInterface, IsReadOrNone) {
    for (const uint32_t vrf : {0u, 42u}) {
        Answers<BDS_IfnetGetIpv6VrfIndexByIfIndex>(vrf);
        EXPECT_EQ(vrf, GetParam().call(5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetIpv6VrfIndexByIfIndex>().Last()));
    }
    FailsWriting<BDS_IfnetGetIpv6VrfIndexByIfIndex>(42);
    EXPECT_EQ(0xFFFFFFFFu, GetParam().call(5));
}

INSTANTIATE_TEST_SUITE_P(BothNames, Ipv6VrfOfInterface,
                         testing::Values(VrfQuery{"KIVO_IF_GetIpV6VrfIndexByIfIndex", KIVO_IF_GetIpV6VrfIndexByIfIndex},
                                         VrfQuery{"KIVO_Adapt_GetIpv6VrfIndexByIfIndex",
                                                  KIVO_Adapt_GetIpv6VrfIndexByIfIndex}));

TEST(VpnOfInterface, IsSetByTheIpv4VrfAlone) {
    Answers<BDS_IfnetGetVrfIndexByIfIndex>(42);
    EXPECT_EQ(1u, KIVO_IF_IsSetVpn(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetVrfIndexByIfIndex>().Last()));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetIpv6VrfIndexByIfIndex>().Calls());
}

TEST(VpnOfInterface, IsSetByTheIpv6VrfWhereIpv4sIsPublic) {
    Answers<BDS_IfnetGetVrfIndexByIfIndex>(0);
    Answers<BDS_IfnetGetIpv6VrfIndexByIfIndex>(42);
    EXPECT_EQ(1u, KIVO_IF_IsSetVpn(5));
    EXPECT_EQ(5u, std::get<0>(kit::Op<BDS_IfnetGetIpv6VrfIndexByIfIndex>().Last()));
    Answers<BDS_IfnetGetIpv6VrfIndexByIfIndex>(0);
    EXPECT_EQ(0u, KIVO_IF_IsSetVpn(5));
    FailsWriting<BDS_IfnetGetIpv6VrfIndexByIfIndex>(42);
    EXPECT_EQ(0u, KIVO_IF_IsSetVpn(5));
}

TEST(VpnOfInterface, IsNotSetWhenIpv4sVrfCannotBeRead) {
    FailsWriting<BDS_IfnetGetVrfIndexByIfIndex>(42);
    Answers<BDS_IfnetGetIpv6VrfIndexByIfIndex>(42);
    EXPECT_EQ(0u, KIVO_IF_IsSetVpn(5));
    EXPECT_EQ(0u, kit::Op<BDS_IfnetGetIpv6VrfIndexByIfIndex>().Calls());
}

} // namespace
