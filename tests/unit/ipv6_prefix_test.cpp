#include <uvelcommon_base/kivo_ip.h>

#include <cstring>

#include "kit.h"
#include "unit/ipv6_number.h"

namespace {

using namespace address_samples;

Packed6 Mask(unsigned length) {
    Packed6 mask;
    mask.fill(0xEE);
    SRV_IPv6PrefixLen2Mask(static_cast<uint8_t>(length), mask.data());
    return mask;
}

TEST(Ipv6Mask, HasTheFirstBitsSetForEveryLength) {
    EXPECT_EQ(Ip6("::"), Mask(0));
    EXPECT_EQ(Ip6("8000::"), Mask(1));
    EXPECT_EQ(Ip6("fe00::"), Mask(7));
    EXPECT_EQ(Ip6("ffff:ffff::"), Mask(32));
    EXPECT_EQ(Ip6("ffff:ffff:ffff:fffe::"), Mask(63));
    EXPECT_EQ(Ip6("ffff:ffff:ffff:ffff:8000::"), Mask(65));
    EXPECT_EQ(Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"), Mask(128));
    for (unsigned length = 0; length <= 128; ++length)
        EXPECT_EQ(PackedOf(MaskNumber(length)), Mask(length)) << length;
}

TEST(Ipv6Mask, NoLengthWritesBehindThe16Bytes) {
    for (unsigned length = 0; length < 256; ++length) {
        uint8_t area[18];
        std::memset(area, 0xEE, sizeof area);
        SRV_IPv6PrefixLen2Mask(static_cast<uint8_t>(length), area + 1);
        EXPECT_EQ(0xEE, area[0]) << length;
        EXPECT_EQ(0xEE, area[17]) << length;
    }
    EXPECT_EQ(PackedOf(ALL_ONES), Mask(129));
    EXPECT_EQ(PackedOf(ALL_ONES), Mask(255));
}

TEST(Ipv6MaskLength, IsThatOfTheMaskFrom8Up) {
    for (unsigned length = 8; length <= 128; ++length)
        EXPECT_EQ(length, SRV_IPv6Mask2PrefixLen(Mask(length).data())) << length;
    EXPECT_EQ(25u, SRV_IPv6Mask2PrefixLen(Ip6("ffff:ff80::").data()));
}

TEST(Ipv6MaskLength, EveryMaskOfOneByteReadsAs8) {
    for (unsigned length = 1; length < 8; ++length)
        EXPECT_EQ(8u, SRV_IPv6Mask2PrefixLen(Mask(length).data())) << length;
    for (unsigned byte = 1; byte < 256; ++byte) {
        Packed6 mask{};
        mask[0] = static_cast<uint8_t>(byte);
        EXPECT_EQ(8u, SRV_IPv6Mask2PrefixLen(mask.data())) << byte;
    }
    EXPECT_EQ(0u, SRV_IPv6Mask2PrefixLen(Packed6{}.data()));
}

TEST(Ipv6MaskLength, DoesNotLookForGaps) {
    EXPECT_EQ(128u, SRV_IPv6Mask2PrefixLen(Ip6("::1").data()));
    EXPECT_EQ(127u, SRV_IPv6Mask2PrefixLen(Ip6("ff00::aaaa").data()));
    EXPECT_EQ(16u, SRV_IPv6Mask2PrefixLen(Ip6("1::").data()));
    EXPECT_EQ(9u, SRV_IPv6Mask2PrefixLen(Ip6("80::").data()));
    for (std::size_t i = 1; i < 16; ++i) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            Packed6 mask{};
            mask[i] = static_cast<uint8_t>(1u << bit);
            EXPECT_EQ(8 * (i + 1) - bit, SRV_IPv6Mask2PrefixLen(mask.data())) << i << ", " << bit;
        }
    }
}

TEST(Ipv6Bit, IsCountedFrom1AtTheMostSignificant) {
    for (unsigned length = 0; length < 256; ++length) {
        Packed6 packed;
        packed.fill(0xEE);
        SRV_IPv6PrefixLen2Addr(static_cast<uint8_t>(length), packed.data());
        EXPECT_EQ(PackedOf(BitNumber(length)), packed) << length;
    }
    Packed6 packed;
    SRV_IPv6PrefixLen2Addr(1, packed.data());
    EXPECT_EQ(Ip6("8000::"), packed);
    SRV_IPv6PrefixLen2Addr(128, packed.data());
    EXPECT_EQ(Ip6("::1"), packed);
}

TEST(Ipv6Bit, OfNothingIsNothing) {
    SRV_IPv6PrefixLen2Addr(64, nullptr);
    SRV_IPv6PrefixLen2Addr(0, nullptr);
    SRV_IPv6PrefixLen2Addr(200, nullptr);
}

TEST(Ipv6Subnet, KeepsTheFirstBitsForEveryLength) {
    std::mt19937_64 random(SEED);
    for (unsigned length = 0; length <= 128; ++length) {
        const Packed6 packed = AnyPacked6(random);
        const Packed6 expected = PackedOf(NumberOf(packed) & MaskNumber(length));
        Packed6 out;
        out.fill(0xEE);
        SRV_GetIPv6SubNet(packed.data(), static_cast<uint8_t>(length), out.data());
        EXPECT_EQ(expected, out) << length;
        Packed6 same = packed;
        SRV_GetIPv6SubNet(same.data(), static_cast<uint8_t>(length), same.data());
        EXPECT_EQ(expected, same) << length;
    }
    Packed6 out;
    SRV_GetIPv6SubNet(Ip6("2001:db8:1:2:3:4:5:6").data(), 48, out.data());
    EXPECT_EQ(Ip6("2001:db8:1::"), out);
    SRV_GetIPv6SubNet(Ip6("2001:db8:1:2:3:4:5:6").data(), 255, out.data());
    EXPECT_EQ(Ip6("2001:db8:1:2:3:4:5:6"), out);
}

Packed6 NextPrefix(Packed6 packed, unsigned length) {
    SRV_GetNextPrefix(packed.data(), static_cast<uint8_t>(length));
    return packed;
}

TEST(Ipv6NextPrefix, IsTheOneBehindTheAddressForEveryLength) {
    EXPECT_EQ(Ip6("2001:db9::"), NextPrefix(Ip6("2001:db8::"), 32));
    EXPECT_EQ(Ip6("2001:db9::"), NextPrefix(Ip6("2001:db8:1:2:3:4:5:6"), 32));
    EXPECT_EQ(Ip6("2001:db8::2"), NextPrefix(Ip6("2001:db8::1"), 128));
    EXPECT_EQ(Ip6("8000::"), NextPrefix(Ip6("::1"), 1));
    for (unsigned length = 1; length <= 128; ++length) {
        for (const Number number : NumbersOfInterest()) {
            const Number next = (number + BitNumber(length)) & MaskNumber(length);
            ASSERT_EQ(PackedOf(next), NextPrefix(PackedOf(number), length)) << length;
        }
    }
}

TEST(Ipv6NextPrefix, TheLastOneIsFollowedByTheFirst) {
    for (unsigned length = 1; length <= 128; ++length)
        EXPECT_EQ(Packed6{}, NextPrefix(Mask(length), length)) << length;
}

TEST(Ipv6NextPrefix, OfALengthThatIsNoneLeavesTheAddress) {
    const Packed6 packed = Ip6("2001:db8:1:2:3:4:5:6");
    EXPECT_EQ(packed, NextPrefix(packed, 0));
    for (unsigned length = 129; length < 256; ++length)
        EXPECT_EQ(packed, NextPrefix(packed, length)) << length;
}

uint32_t OverLap(const Packed6 &a, unsigned lengthA, const Packed6 &b, unsigned lengthB) {
    return SRV_IPv6PrefixOverLap(a.data(), static_cast<uint8_t>(lengthA), b.data(), static_cast<uint8_t>(lengthB));
}

TEST(Ipv6Overlap, TheBitsOfTheShorterPrefixDecide) {
    std::mt19937_64 random(SEED);
    for (unsigned differs = 1; differs <= 129; ++differs) { /* the first bit that differs; 129: none */
        const Packed6 a = AnyPacked6(random);
        /* Behind it anything may stand. */
        const Number behind = NumberOf(AnyPacked6(random)) & ~MaskNumber(differs);
        const Packed6 b = PackedOf(NumberOf(a) ^ BitNumber(differs) ^ behind);
        for (unsigned length = 0; length <= 128; ++length) {
            const uint32_t expected = length < differs ? 1 : 0;
            for (const unsigned other : {length, (length + 128) / 2, 128u}) {
                ASSERT_EQ(expected, OverLap(a, length, b, other)) << differs << ", " << length << ", " << other;
                ASSERT_EQ(expected, OverLap(a, other, b, length)) << differs << ", " << length << ", " << other;
            }
        }
    }
}

TEST(Ipv6Overlap, LengthsAbove128CountAs128) {
    const Packed6 a = Ip6("2001:db8::1");
    EXPECT_EQ(1u, OverLap(a, 255, a, 255));
    EXPECT_EQ(0u, OverLap(a, 255, Ip6("2001:db8::2"), 129));
    EXPECT_EQ(1u, OverLap(a, 255, Ip6("2001:db8::2"), 126));
    EXPECT_EQ(1u, OverLap(a, 0, Ip6("ffff::"), 255));
}

TEST(Ipv6PrefixMatch, NeedsEqualLengths) {
    const Packed6 a = Ip6("2001:db8::1");
    const Packed6 b = Ip6("2001:db8::2");
    EXPECT_EQ(1u, SRV_IPv6PrefixMatch(a.data(), 64, b.data(), 64));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(a.data(), 64, b.data(), 63));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(a.data(), 63, a.data(), 64));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(a.data(), 128, b.data(), 128));
    EXPECT_EQ(1u, SRV_IPv6PrefixMatch(a.data(), 126, b.data(), 126));
    EXPECT_EQ(1u, SRV_IPv6PrefixMatch(a.data(), 0, Ip6("ffff::").data(), 0));
}

TEST(Ipv6PrefixMatch, IsDecidedByTheFirstBitsForEveryLength) {
    std::mt19937_64 random(SEED);
    for (unsigned length = 0; length <= 128; ++length) {
        const auto bits = static_cast<uint8_t>(length);
        const Packed6 a = AnyPacked6(random);
        const Packed6 behind = PackedOf(NumberOf(a) ^ (NumberOf(AnyPacked6(random)) & ~MaskNumber(length)));
        EXPECT_EQ(1u, SRV_IPv6PrefixMatch(a.data(), bits, behind.data(), bits)) << length;
        EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(a.data(), behind.data(), length)) << length;
        for (unsigned bit = 1; bit <= 128; ++bit) {
            const Packed6 b = PackedOf(NumberOf(a) ^ BitNumber(bit));
            const uint32_t expected = bit > length ? 1 : 0;
            ASSERT_EQ(expected, SRV_IPv6PrefixMatch(a.data(), bits, b.data(), bits)) << length << ", " << bit;
            ASSERT_EQ(expected, SRV_IPv6AddrInPrefix(a.data(), b.data(), length)) << length << ", " << bit;
        }
    }
}

TEST(Ipv6PrefixMatch, NothingMatchesAMissingAddress) {
    const Packed6 a = Ip6("2001:db8::1");
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(nullptr, 64, a.data(), 64));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(a.data(), 64, nullptr, 64));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(nullptr, 0, nullptr, 0));
    EXPECT_EQ(0u, SRV_IPv6PrefixMatch(nullptr, 1, nullptr, 2));
}

TEST(Ipv6AddrInPrefix, TheFirstBitsDecide) {
    const Packed6 prefix = Ip6("2001:db8:1::");
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:1:2::3").data(), prefix.data(), 48));
    EXPECT_EQ(0u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:2::").data(), prefix.data(), 48));
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:2::").data(), prefix.data(), 46));
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(prefix.data(), prefix.data(), 128));
    EXPECT_EQ(0u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:1::1").data(), prefix.data(), 128));
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(Ip6("ffff::").data(), prefix.data(), 0));
}

TEST(Ipv6AddrInPrefix, OnlyTheLow8BitsOfTheLengthCount) {
    const Packed6 prefix = Ip6("2001:db8:1::");
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(Ip6("ffff::").data(), prefix.data(), 256));
    EXPECT_EQ(1u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:1:2::3").data(), prefix.data(), 256 + 48));
    EXPECT_EQ(0u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:2::").data(), prefix.data(), 0xFFFFFF00 + 48));
    EXPECT_EQ(0u, SRV_IPv6AddrInPrefix(Ip6("2001:db8:1::1").data(), prefix.data(), 255));
}

} // namespace
