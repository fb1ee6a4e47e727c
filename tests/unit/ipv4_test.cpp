#include <uvelcommon_base/kivo_ip.h>

#include "kit.h"

namespace {

TEST(Ipv4Mask, HasTheFirstBitsSet) {
    EXPECT_EQ(0u, SRV_LentoMask(0));
    EXPECT_EQ(0x80000000u, SRV_LentoMask(1));
    EXPECT_EQ(0xFF000000u, SRV_LentoMask(8));
    EXPECT_EQ(0xFFFFFF00u, SRV_LentoMask(24));
    EXPECT_EQ(0xFFFFFFFEu, SRV_LentoMask(31));
    EXPECT_EQ(0xFFFFFFFFu, SRV_LentoMask(32));
    for (uint32_t length = 1; length <= 32; ++length)
        EXPECT_EQ(SRV_LentoMask(length - 1) | uint32_t{1} << (32 - length), SRV_LentoMask(length)) << length;
}

TEST(Ipv4Mask, IsAllOnesForEveryGreaterLength) {
    for (const uint32_t length : {33u, 40u, 63u, 64u, 65u, 96u, 255u, 256u, 288u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(0xFFFFFFFFu, SRV_LentoMask(length)) << length;
}

/* Addresses with this first octet. */
template <typename F>
void ForAddressesOf(uint32_t octet, F &&check) {
    for (const uint32_t rest : {0x000000u, 0x000001u, 0x7F0000u, 0x800000u, 0xFFFFFEu, 0xFFFFFFu})
        check(octet << 24 | rest);
}

TEST(Ipv4Validity, HostsHaveAFirstOctetOf1To126Or128To223) {
    for (uint32_t octet = 0; octet < 256; ++octet) {
        const uint32_t valid = (octet >= 1 && octet <= 126) || (octet >= 128 && octet <= 223) ? 1 : 0;
        ForAddressesOf(octet, [&](uint32_t address) { EXPECT_EQ(valid, SRV_IsValidIpAddr(address)) << address; });
    }
}

TEST(Ipv4Validity, InvalidAddressesHaveAFirstOctetOf0Or224To255) {
    for (uint32_t octet = 0; octet < 256; ++octet) {
        const uint32_t invalid = octet == 0 || octet >= 224 ? 1 : 0;
        ForAddressesOf(octet, [&](uint32_t address) { EXPECT_EQ(invalid, KIVO_IP_IsInvalidAddr(address)) << address; });
    }
}

TEST(Ipv4Validity, TheTwoRulesDifferInLoopback) {
    constexpr uint32_t loopback = 0x7F000001;
    EXPECT_EQ(0u, SRV_IsValidIpAddr(loopback));
    EXPECT_EQ(0u, KIVO_IP_IsInvalidAddr(loopback));
    constexpr uint32_t multicast = 0xE0000001;
    EXPECT_EQ(0u, SRV_IsValidIpAddr(multicast));
    EXPECT_EQ(1u, KIVO_IP_IsInvalidAddr(multicast));
    constexpr uint32_t lastOfClassB = 0xBFFFFFFF;
    EXPECT_EQ(1u, SRV_IsValidIpAddr(lastOfClassB));
    EXPECT_EQ(0u, KIVO_IP_IsInvalidAddr(lastOfClassB));
}

} // namespace
