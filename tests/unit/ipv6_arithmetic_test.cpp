#include <uvelcommon_base/kivo_ip.h>

#include <cstring>

#include "kit.h"
#include "unit/guarded_text.h"
#include "unit/ipv6_number.h"

namespace {

using namespace address_samples;

constexpr uint32_t BELOW = 0xFFFFFFFF;

template <auto Fn>
Packed6 InPlace(Packed6 packed) {
    Fn(packed.data());
    return packed;
}

template <auto Fn>
Packed6 Of(const Packed6 &a, const Packed6 &b) {
    Packed6 out;
    out.fill(0xEE);
    Fn(a.data(), b.data(), out.data());
    return out;
}

/* Calls `check` with pairs of numbers of interest: every one with a few others and with itself. */
template <typename F>
void ForPairs(F &&check) {
    const std::vector<Number> numbers = NumbersOfInterest();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        check(numbers[i], numbers[i]);
        for (std::size_t k = i % 7; k < numbers.size(); k += 7)
            check(numbers[i], numbers[k]);
    }
}

TEST(Ipv6Next, IsOneMoreAndWrapsToZero) {
    EXPECT_EQ(Ip6("2001:db8::2"), InPlace<SRV_GetNextIPv6Addr>(Ip6("2001:db8::1")));
    EXPECT_EQ(Ip6("::1:0"), InPlace<SRV_GetNextIPv6Addr>(Ip6("::ffff")));
    EXPECT_EQ(Ip6("0:0:0:1::"), InPlace<SRV_GetNextIPv6Addr>(Ip6("::ffff:ffff:ffff:ffff")));
    EXPECT_EQ(Ip6("::"), InPlace<SRV_GetNextIPv6Addr>(Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff")));
    for (const Number number : NumbersOfInterest())
        EXPECT_EQ(PackedOf(number + 1), InPlace<SRV_GetNextIPv6Addr>(PackedOf(number)));
}

TEST(Ipv6Previous, IsOneLessAndWrapsToAllOnes) {
    EXPECT_EQ(Ip6("2001:db8::"), InPlace<SRV_GetPreIPv6Addr>(Ip6("2001:db8::1")));
    EXPECT_EQ(Ip6("::ffff"), InPlace<SRV_GetPreIPv6Addr>(Ip6("::1:0")));
    EXPECT_EQ(Ip6("::ffff:ffff:ffff:ffff"), InPlace<SRV_GetPreIPv6Addr>(Ip6("0:0:0:1::")));
    EXPECT_EQ(Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"), InPlace<SRV_GetPreIPv6Addr>(Ip6("::")));
    for (const Number number : NumbersOfInterest())
        EXPECT_EQ(PackedOf(number - 1), InPlace<SRV_GetPreIPv6Addr>(PackedOf(number)));
}

TEST(Ipv6Add, DropsTheLastCarry) {
    EXPECT_EQ(Ip6("2001:db8::1:1"), Of<SRV_IPv6Addr_ADD>(Ip6("2001:db8::1"), Ip6("::1:0")));
    EXPECT_EQ(Ip6("::"), Of<SRV_IPv6Addr_ADD>(Ip6("8000::"), Ip6("8000::")));
    ForPairs([](Number a, Number b) { EXPECT_EQ(PackedOf(a + b), Of<SRV_IPv6Addr_ADD>(PackedOf(a), PackedOf(b))); });
}

TEST(Ipv6Subtract, DropsTheLastBorrow) {
    EXPECT_EQ(Ip6("2001:db7:ffff:ffff:ffff:ffff:ffff:ffff"), Of<SRV_IPv6Addr_SUB>(Ip6("2001:db8::"), Ip6("::1")));
    EXPECT_EQ(Ip6("8000::"), Of<SRV_IPv6Addr_SUB>(Ip6("::"), Ip6("8000::")));
    ForPairs([](Number a, Number b) { EXPECT_EQ(PackedOf(a - b), Of<SRV_IPv6Addr_SUB>(PackedOf(a), PackedOf(b))); });
}

TEST(Ipv6Add, TheOutputMayBeOneOfTheInputs) {
    ForPairs([](Number a, Number b) {
        Packed6 first = PackedOf(a);
        Packed6 second = PackedOf(b);
        SRV_IPv6Addr_ADD(first.data(), second.data(), first.data());
        EXPECT_EQ(PackedOf(a + b), first);
        SRV_IPv6Addr_ADD(PackedOf(a).data(), second.data(), second.data());
        EXPECT_EQ(PackedOf(a + b), second);
        SRV_IPv6Addr_ADD(first.data(), first.data(), first.data());
        EXPECT_EQ(PackedOf(2 * (a + b)), first);
    });
}

TEST(Ipv6Subtract, TheOutputMayBeOneOfTheInputs) {
    ForPairs([](Number a, Number b) {
        Packed6 first = PackedOf(a);
        Packed6 second = PackedOf(b);
        SRV_IPv6Addr_SUB(first.data(), second.data(), first.data());
        EXPECT_EQ(PackedOf(a - b), first);
        SRV_IPv6Addr_SUB(PackedOf(a).data(), second.data(), second.data());
        EXPECT_EQ(PackedOf(a - b), second);
        SRV_IPv6Addr_SUB(first.data(), first.data(), first.data());
        EXPECT_EQ(Packed6{}, first);
    });
}

TEST(Ipv6Arithmetic, TouchesExactly16BytesWhereverTheyStand) {
    for (std::size_t at = 1; at < 16; ++at) {
        uint8_t area[48];
        std::memset(area, 0xFF, sizeof area);
        SRV_GetNextIPv6Addr(area + at);
        for (std::size_t i = 0; i < sizeof area; ++i)
            EXPECT_EQ(i >= at && i < at + 16 ? 0 : 0xFF, area[i]) << at << ", " << i;
        SRV_GetPreIPv6Addr(area + at);
        for (const uint8_t byte : area)
            EXPECT_EQ(0xFF, byte) << at;
    }
    const Packed6 packed = Ip6("2001:db8::ffff");
    GuardedText a(packed.data(), packed.size());
    GuardedText out(packed.data(), packed.size());
    auto *bytes = reinterpret_cast<uint8_t *>(a.Get());
    SRV_IPv6Addr_ADD(bytes, bytes, reinterpret_cast<uint8_t *>(out.Get()));
    EXPECT_EQ(0, std::memcmp(out.Get(), Ip6("4002:1b70::1:fffe").data(), 16));
    EXPECT_EQ(BELOW, SRV_CompareIPv6Addr(bytes, reinterpret_cast<uint8_t *>(out.Get())));
    EXPECT_EQ(-0x00FFFFFF, SRV_IPv6AddrDiff(bytes, reinterpret_cast<uint8_t *>(out.Get())));
}

TEST(Ipv6Compare, OrdersByTheNumber) {
    EXPECT_EQ(1u, SRV_CompareIPv6Addr(Ip6("::2").data(), Ip6("::1").data()));
    EXPECT_EQ(BELOW, SRV_CompareIPv6Addr(Ip6("::1").data(), Ip6("::2").data()));
    EXPECT_EQ(0u, SRV_CompareIPv6Addr(Ip6("::1").data(), Ip6("::1").data()));
    EXPECT_EQ(1u, SRV_CompareIPv6Addr(Ip6("1::").data(), Ip6("0:ffff:ffff:ffff:ffff:ffff:ffff:ffff").data()));
    ForPairs([](Number a, Number b) {
        const uint32_t expected = a > b ? 1 : a < b ? BELOW : 0;
        EXPECT_EQ(expected, SRV_CompareIPv6Addr(PackedOf(a).data(), PackedOf(b).data()));
    });
}

TEST(Ipv6Compare, EveryByteCountsAsUnsigned) {
    for (std::size_t i = 0; i < 16; ++i) {
        Packed6 small = Ip6("101:101:101:101:101:101:101:101");
        Packed6 large = small;
        small[i] = 0x7F;
        large[i] = 0x80;
        EXPECT_EQ(1u, SRV_CompareIPv6Addr(large.data(), small.data())) << i;
        EXPECT_EQ(BELOW, SRV_CompareIPv6Addr(small.data(), large.data())) << i;
    }
}

TEST(Ipv6Compare, OnePointerIsEqualToItselfWithoutALook) {
    EXPECT_EQ(0u, SRV_CompareIPv6Addr(nullptr, nullptr));
    const Packed6 packed = Ip6("::1");
    EXPECT_EQ(0u, SRV_CompareIPv6Addr(packed.data(), packed.data()));
}

TEST(Ipv6Distance, IsExactWithinOneSlash104) {
    EXPECT_EQ(1, SRV_IPv6AddrDiff(Ip6("::1:0").data(), Ip6("::ffff").data()));
    EXPECT_EQ(-1, SRV_IPv6AddrDiff(Ip6("::ffff").data(), Ip6("::1:0").data()));
    EXPECT_EQ(0, SRV_IPv6AddrDiff(Ip6("2001:db8::5").data(), Ip6("2001:db8::5").data()));
    EXPECT_EQ(0x00FFFFFF, SRV_IPv6AddrDiff(Ip6("::ff:ffff").data(), Ip6("::").data()));
    EXPECT_EQ(-0x00FFFFFF, SRV_IPv6AddrDiff(Ip6("::").data(), Ip6("::ff:ffff").data()));
    EXPECT_EQ(0x00FFFFFE, SRV_IPv6AddrDiff(Ip6("abcd::ff:ffff").data(), Ip6("abcd::1").data()));
}

TEST(Ipv6Distance, SaturatesBeyondThat) {
    EXPECT_EQ(0x00FFFFFF, SRV_IPv6AddrDiff(Ip6("::1:0:0:0").data(), Ip6("::").data()));
    EXPECT_EQ(-16777215, SRV_IPv6AddrDiff(Ip6("::").data(), Ip6("::1:0:0:0").data()));
    /* One apart, but not in one /104. */
    EXPECT_EQ(0x00FFFFFF, SRV_IPv6AddrDiff(Ip6("::100:0").data(), Ip6("::ff:ffff").data()));
    EXPECT_EQ(-0x00FFFFFF, SRV_IPv6AddrDiff(Ip6("::ff:ffff").data(), Ip6("::100:0").data()));
    for (std::size_t i = 0; i < 16; ++i) {
        Packed6 large{};
        large[i] = 1;
        const int32_t expected = i < 13 ? 0x00FFFFFF : 1 << (8 * (15 - i));
        EXPECT_EQ(expected, SRV_IPv6AddrDiff(large.data(), Packed6{}.data())) << i;
        EXPECT_EQ(-expected, SRV_IPv6AddrDiff(Packed6{}.data(), large.data())) << i;
    }
}

TEST(Ipv6Distance, IsTheDifferenceOfTheNumbers) {
    ForPairs([](Number a, Number b) {
        int32_t expected = a > b ? 0x00FFFFFF : -0x00FFFFFF;
        if (a / 0x1000000 == b / 0x1000000)
            expected = static_cast<int32_t>(a % 0x1000000) - static_cast<int32_t>(b % 0x1000000);
        EXPECT_EQ(expected, SRV_IPv6AddrDiff(PackedOf(a).data(), PackedOf(b).data()));
    });
}

Number AnyNumber(std::mt19937_64 &random) {
    return Number{random()} << 64 | random();
}

TEST(Ipv6Arithmetic, IsThatOfIntegersOf128Bits) {
    std::mt19937_64 random(SEED);
    for (unsigned i = 0; i < MILLION / 5; ++i) {
        const Number a = AnyNumber(random);
        /* Any other number, or one that has the first bits of `a`, up to all of them. */
        const Number b = random() % 4 == 0 ? AnyNumber(random) : a ^ (AnyNumber(random) >> (random() % 128));
        const Packed6 packedA = PackedOf(a);
        const Packed6 packedB = PackedOf(b);
        ASSERT_EQ(PackedOf(a + b), Of<SRV_IPv6Addr_ADD>(packedA, packedB)) << "seed " << SEED;
        ASSERT_EQ(PackedOf(a - b), Of<SRV_IPv6Addr_SUB>(packedA, packedB)) << "seed " << SEED;
        ASSERT_EQ(PackedOf(a + 1), InPlace<SRV_GetNextIPv6Addr>(packedA)) << "seed " << SEED;
        ASSERT_EQ(PackedOf(a - 1), InPlace<SRV_GetPreIPv6Addr>(packedA)) << "seed " << SEED;
        ASSERT_EQ(a > b ? 1 : a < b ? BELOW : 0, SRV_CompareIPv6Addr(packedA.data(), packedB.data())) << SEED;
        const Number distance = a > b ? a - b : b - a;
        const int32_t size = a >> 24 == b >> 24 ? static_cast<int32_t>(distance) : 0x00FFFFFF;
        ASSERT_EQ(a >= b ? size : -size, SRV_IPv6AddrDiff(packedA.data(), packedB.data())) << "seed " << SEED;
    }
}

uint32_t InSection(const char *address, const char *low, const char *high) {
    return SRV_IPv6AddrInSection(Ip6(address).data(), Ip6(low).data(), Ip6(high).data());
}

TEST(Ipv6Section, HoldsBothEnds) {
    EXPECT_EQ(0u, InSection("2001:db8::10", "2001:db8::10", "2001:db8::20"));
    EXPECT_EQ(0u, InSection("2001:db8::18", "2001:db8::10", "2001:db8::20"));
    EXPECT_EQ(0u, InSection("2001:db8::20", "2001:db8::10", "2001:db8::20"));
    EXPECT_EQ(BELOW, InSection("2001:db8::f", "2001:db8::10", "2001:db8::20"));
    EXPECT_EQ(1u, InSection("2001:db8::21", "2001:db8::10", "2001:db8::20"));
    EXPECT_EQ(0u, InSection("::5", "::5", "::5"));
    EXPECT_EQ(BELOW, InSection("::", "1::", "2::"));
    EXPECT_EQ(1u, InSection("ffff::", "1::", "2::"));
}

TEST(Ipv6Section, TheLowerEndIsLookedAtFirst) {
    /* A section that ends before it begins: everything below its low end is below, the rest above its high end. */
    EXPECT_EQ(BELOW, InSection("::5", "::10", "::1"));
    EXPECT_EQ(1u, InSection("::10", "::10", "::1"));
    EXPECT_EQ(1u, InSection("::20", "::10", "::1"));
}

} // namespace
