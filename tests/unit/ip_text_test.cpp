#include <uvelcommon_base/kivo_ip.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <uvelcommon_base/kivo_inet.h>
#include <vector>

#include "kit.h"
#include "unit/address_samples.h"
#include "unit/guarded_text.h"

namespace {

using namespace address_samples;

/* The eight buffers of a ring in ascending order. */
template <typename Write>
std::set<const char *> BuffersOf(Write write) {
    std::set<const char *> buffers;
    for (int i = 0; i < 8; ++i)
        buffers.insert(write());
    return buffers;
}

/* How far the buffers of a ring lie apart; 0 when not all are equally far. */
std::ptrdiff_t SpacingOf(const std::set<const char *> &buffers) {
    const std::ptrdiff_t spacing = *std::next(buffers.begin()) - *buffers.begin();
    for (auto next = std::next(buffers.begin()); next != buffers.end(); ++next) {
        if (*next - *std::prev(next) != spacing)
            return 0;
    }
    return spacing;
}

const char *AnyIpv4Text() {
    return SRV_IpAddrtoStr(0xFFFFFFFF);
}

const char *AnyIpv6Text() {
    static const Packed6 longest = Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff");
    return SRV_Ipv6AddrtoStr(longest.data());
}

TEST(IpTextRings, AreEightBuffersOf16And64Bytes) {
    EXPECT_EQ(8u, BuffersOf(AnyIpv4Text).size());
    EXPECT_EQ(16, SpacingOf(BuffersOf(AnyIpv4Text)));
    EXPECT_EQ(8u, BuffersOf(AnyIpv6Text).size());
    EXPECT_EQ(64, SpacingOf(BuffersOf(AnyIpv6Text)));
}

TEST(IpTextRings, GiveOutNothingButTheirBuffersWhenThreadsMeetInThem) {
    const std::set<const char *> four = BuffersOf(AnyIpv4Text);
    const std::set<const char *> six = BuffersOf(AnyIpv6Text);
    std::array<unsigned, 4> strays{};
    std::vector<std::thread> threads;
    for (unsigned &stray : strays) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100000; ++i)
                stray += four.contains(AnyIpv4Text()) && six.contains(AnyIpv6Text()) ? 0 : 1;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ((std::array<unsigned, 4>{}), strays);
}

/* --- IPv4 --- */

TEST(Ipv4Text, IsFourDecimalNumbersMostSignificantFirst) {
    EXPECT_STREQ("10.1.2.3", SRV_IpAddrtoStr(0x0A010203));
    EXPECT_STREQ("0.0.0.0", SRV_IpAddrtoStr(0));
    EXPECT_STREQ("255.255.255.255", SRV_IpAddrtoStr(0xFFFFFFFF));
    EXPECT_STREQ("192.168.100.9", SRV_IpAddrtoStr(0xC0A86409));
}

TEST(Ipv4Text, EightResultsStandAndTheNinthTakesTheFirstBuffer) {
    std::vector<const char *> texts;
    for (uint32_t i = 0; i < 8; ++i)
        texts.push_back(SRV_IpAddrtoStr(i));
    EXPECT_EQ(8u, std::set<const char *>(texts.begin(), texts.end()).size());
    for (uint32_t i = 0; i < 8; ++i)
        EXPECT_EQ("0.0.0." + std::to_string(i), texts[i]);
    for (uint32_t i = 0; i < 20; ++i)
        EXPECT_EQ(texts[i % 8], SRV_IpAddrtoStr(100 + i));
    EXPECT_STREQ("0.0.0.119", texts[19 % 8]);
}

TEST(Ipv4Text, ASubnetIsTheAddressAndTheLength) {
    char text[32];
    EXPECT_EQ(11, SRV_SubnettoStr(0x0A010000, 16, text, sizeof text));
    EXPECT_STREQ("10.1.0.0/16", text);
    EXPECT_EQ(9, SRV_SubnettoStr(0, 0, text, sizeof text));
    EXPECT_STREQ("0.0.0.0/0", text);
    EXPECT_EQ(26, SRV_SubnettoStr(0xFFFFFFFF, 0xFFFFFFFF, text, sizeof text));
    EXPECT_STREQ("255.255.255.255/4294967295", text);
}

TEST(Ipv4Text, ASubnetThatDoesNotFitLeavesNoHalfText) {
    for (uint32_t size = 1; size <= 11; ++size) {
        GuardedText buffer(std::string(11, '#').data(), size);
        EXPECT_EQ(-1, SRV_SubnettoStr(0x0A010000, 16, buffer.Get(), size)) << size;
        EXPECT_STREQ("", buffer.Get()) << size;
    }
    GuardedText buffer(std::string(12, '#').data(), 12);
    EXPECT_EQ(11, SRV_SubnettoStr(0x0A010000, 16, buffer.Get(), 12));
    EXPECT_STREQ("10.1.0.0/16", buffer.Get());
    char none = '#';
    EXPECT_EQ(-1, SRV_SubnettoStr(0x0A010000, 16, &none, 0));
    EXPECT_EQ('#', none);
    EXPECT_EQ(-1, SRV_SubnettoStr(0x0A010000, 16, nullptr, 32));
}

TEST(Ipv4FromText, TheHostReadsTextsOfDigitsAndDots) {
    uint32_t address = 0;
    EXPECT_EQ(0u, SRV_StrToIpAddr("10.1.2.3", &address));
    EXPECT_EQ(0x0A010203u, address);
    kit::Recorder recorder({"QAL_"});
    EXPECT_EQ(1u, SRV_StrToIpAddr("...", &address));
    EXPECT_EQ((std::vector<std::string>{"QAL_StrLen(\"...\")", "QAL_StrToIpAddr(\"...\", ptr)"}), recorder.Calls());
    EXPECT_EQ(0x0A010203u, address);
}

TEST(Ipv4FromText, TheHostsResultIsReturned) {
    kit::Op<QAL_StrToIpAddr>().Does([](const char *text, uint32_t *address) {
        EXPECT_STREQ("1.2", text);
        *address = 5;
        return 0x77U;
    });
    uint32_t address = 0;
    EXPECT_EQ(0x77u, SRV_StrToIpAddr("1.2", &address));
    EXPECT_EQ(5u, address);
}

TEST(Ipv4FromText, OtherTextsDoNotReachTheHost) {
    uint32_t address = 42;
    EXPECT_EQ(1u, SRV_StrToIpAddr(nullptr, &address));
    EXPECT_EQ(1u, SRV_StrToIpAddr("", &address));
    for (unsigned c = 1; c < 256; ++c) {
        if (c == '.' || (c >= '0' && c <= '9'))
            continue;
        for (const std::size_t at : {0U, 3U, 7U}) {
            std::string text = "10.1.2.3";
            text[at] = static_cast<char>(c);
            EXPECT_EQ(1u, SRV_StrToIpAddr(text.c_str(), &address)) << text;
        }
    }
    EXPECT_EQ(0u, kit::Op<QAL_StrToIpAddr>().Calls());
    EXPECT_EQ(42u, address);
}

/* --- IPv6 --- */

TEST(Ipv6Text, IsTheFormattersText) {
    EXPECT_STREQ("2001:DB8::1", SRV_Ipv6AddrtoStr(Ip6("2001:db8::1").data()));
    EXPECT_STREQ("::FFFF:10.1.2.3", SRV_Ipv6AddrtoStr(Ip6("::ffff:10.1.2.3").data()));
    EXPECT_STREQ("FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF",
                 SRV_Ipv6AddrtoStr(Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff").data()));
}

TEST(Ipv6Text, OfNoAddressIsAHyphenThatTakesNoBuffer) {
    const char *first = SRV_Ipv6AddrtoStr(Ip6("::1").data());
    EXPECT_STREQ("-", SRV_Ipv6AddrtoStr(nullptr));
    for (int i = 0; i < 7; ++i)
        EXPECT_NE(first, SRV_Ipv6AddrtoStr(Ip6("::2").data()));
    EXPECT_STREQ("::1", first);
    EXPECT_EQ(first, SRV_Ipv6AddrtoStr(Ip6("::3").data()));
    EXPECT_EQ(SRV_Ipv6AddrtoStr(nullptr), SRV_Ipv6AddrtoStr(nullptr));
}

TEST(Ipv6Text, EightResultsStandAndTheNinthTakesTheFirstBuffer) {
    std::vector<const char *> texts;
    Packed6 packed{};
    for (uint8_t i = 0; i < 8; ++i) {
        packed[15] = static_cast<uint8_t>(i + 1);
        texts.push_back(SRV_Ipv6AddrtoStr(packed.data()));
    }
    EXPECT_EQ(8u, std::set<const char *>(texts.begin(), texts.end()).size());
    for (uint32_t i = 0; i < 8; ++i)
        EXPECT_EQ("::" + std::to_string(i + 1), texts[i]);
    for (uint32_t i = 0; i < 20; ++i)
        EXPECT_EQ(texts[i % 8], SRV_Ipv6AddrtoStr(packed.data()));
}

TEST(Ipv6Text, TheRingsOfBothFamiliesAreTheirOwn) {
    const char *four = SRV_IpAddrtoStr(0x0A010203);
    const char *six = SRV_Ipv6AddrtoStr(Ip6("::6").data());
    for (int i = 0; i < 7; ++i)
        (void)SRV_IpAddrtoStr(0);
    EXPECT_STREQ("10.1.2.3", four);
    EXPECT_STREQ("::6", six);
    for (int i = 0; i < 7; ++i)
        (void)SRV_Ipv6AddrtoStr(Packed6{}.data());
    EXPECT_STREQ("10.1.2.3", four);
    EXPECT_STREQ("::6", six);
}

TEST(Ipv6FromText, ReadsWhatTheParserAccepts) {
    Packed6 packed;
    packed.fill(0xEE);
    const Packed6 untouched = packed;
    for (const char *text : {"", "1.2.3.4", "::g", ":1", "::1%eth0"})
        EXPECT_EQ(1u, SRV_StrtoIpv6Addr(text, packed.data())) << text;
    EXPECT_EQ(1u, SRV_StrtoIpv6Addr(nullptr, packed.data()));
    EXPECT_EQ(1u, SRV_StrtoIpv6Addr("::1", nullptr));
    EXPECT_EQ(1u, SRV_StrtoIpv6Addr(nullptr, nullptr));
    EXPECT_EQ(untouched, packed);
    EXPECT_EQ(0u, SRV_StrtoIpv6Addr("2001:db8::1", packed.data()));
    EXPECT_EQ(Ip6("2001:db8::1"), packed);
    EXPECT_EQ(0u, SRV_StrtoIpv6Addr("::ffff:10.1.2.3", packed.data()));
    EXPECT_EQ(Ip6("::ffff:10.1.2.3"), packed);
}

/* --- the lenient reader --- */

struct Lenient {
    uint32_t result;
    Packed6 packed;

    bool operator==(const Lenient &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Lenient &lenient) {
    return stream << lenient.result << ' ' << Name(lenient.packed);
}

constexpr Packed6 UNTOUCHED = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE,
                               0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};

Lenient StrToIPv6(const char *text, uint32_t size = 16) {
    Lenient lenient{0, UNTOUCHED};
    lenient.result = SRV_StrToIPv6(text, lenient.packed.data(), size);
    return lenient;
}

Lenient Expected(const std::string &text, uint32_t size = 16) {
    const inet_reference::GroupsOnly expected = inet_reference::ReadGroupsOnly(text, size);
    return {expected.result, expected.packed.value_or(UNTOUCHED)};
}

TEST(Ipv6Groups, ReadsGroupsAndGaps) {
    for (const char *text : {"::", "1::", "::1", "1:2:3:4:5:6:7:8", "2001:dB8::aBcD", "1:2:3:4:5:6:7::",
                             "::2:3:4:5:6:7:8", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "1:2::7:8"})
        EXPECT_EQ((Lenient{0, Ip6(text)}), StrToIPv6(text)) << text;
}

TEST(Ipv6Groups, OfAGroupTheLastFourDigitsCount) {
    EXPECT_EQ((Lenient{0, Ip6("2345::")}), StrToIPv6("12345::"));
    EXPECT_EQ((Lenient{0, Ip6("::cdef")}), StrToIPv6("::0123456789abcdef0123456789ABCDEF"));
}

TEST(Ipv6Groups, WhatIsNoAddressFailsAndLeavesTheOutput) {
    for (const char *text :
         {"", ":", ":1", ":1::", "1:", "1", "1:::2", ":::", "1::2::3", "1:2:3:4:5:6:7",
          "1:2:3:4:5:6:7:", "1:2:3:4:5:6:7:8:", "1:2:3:4:5:6:7:8::", "1:2:3:4::5:6:7:8", "::1:2:3:4:5:6:7:8",
          "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7:8::9", "::1:", "1:2:3:4:5:6:7:8:9:a:b:c:d:e:f:10:11:12"})
        EXPECT_EQ((Lenient{1, UNTOUCHED}), StrToIPv6(text)) << text;
}

TEST(Ipv6Groups, AnyOtherCharacterEndsItWithSuccessAndNoOutput) {
    for (const char *text :
         {"::ffff:1.2.3.4", "1.2.3.4", ".", " ::1", "::1 ", "g", "::g", "1::%eth0", "2001:db8::/32", "::-1", "::\xff",
          "1:2:3:4:5:6:7:8x", "1::2:3 ", "1:2:3:4:5:6:7:8:9x", "x", "1:x", "1:2:3:4:5:6:7:8::x", "::x:::", "1 2::3::4"})
        EXPECT_EQ((Lenient{0, UNTOUCHED}), StrToIPv6(text)) << text;
    for (unsigned c = 1; c < 256; ++c) {
        if (std::strchr("0123456789abcdefABCDEF:", static_cast<int>(c)) == nullptr) {
            const std::string text = std::string("1:2") + static_cast<char>(c);
            EXPECT_EQ((Lenient{0, UNTOUCHED}), StrToIPv6(text.c_str())) << text;
        }
    }
}

TEST(Ipv6Groups, AFaultBeforeTheOtherCharacterFails) {
    for (const char *text : {":x", ":.", "1::2::x", ":::x", "1:2:3:4:5:6:7:8:9:x", "1:2:3:4:5:6:7:8::9:x"})
        EXPECT_EQ((Lenient{1, UNTOUCHED}), StrToIPv6(text)) << text;
}

TEST(Ipv6Groups, ABufferBelow16BytesFailsForGoodTextsOnly) {
    for (uint32_t size = 0; size < 16; ++size) {
        EXPECT_EQ((Lenient{1, UNTOUCHED}), StrToIPv6("::1", size)) << size;
        EXPECT_EQ((Lenient{0, UNTOUCHED}), StrToIPv6("::1.2", size)) << size;
    }
    EXPECT_EQ((Lenient{0, Ip6("::1")}), StrToIPv6("::1", 17));
    EXPECT_EQ((Lenient{0, Ip6("::1")}), StrToIPv6("::1", 0xFFFFFFFF));
}

TEST(Ipv6Groups, NoNumberOfGroupsLeavesTheAddress) {
    GuardedText buffer(UNTOUCHED.data(), UNTOUCHED.size());
    std::string text = "1";
    for (unsigned groups = 1; groups < 100; ++groups) {
        for (const std::string &variant : {text, "::" + text, text + "::", text + "::2", text + "x", text + ":"}) {
            const uint32_t result = SRV_StrToIPv6(variant.c_str(), reinterpret_cast<uint8_t *>(buffer.Get()), 16);
            EXPECT_EQ(Expected(variant).result, result) << variant;
        }
        text += ":" + std::to_string(groups + 1);
    }
}

TEST(Ipv6Groups, AllShortTextsAreJudgedAsTheRulesSay) {
    unsigned written = 0;
    ForAllTexts("1:.a", 8, [&](const std::string &text) {
        const Lenient expected = Expected(text);
        written += expected.packed != UNTOUCHED ? 1 : 0;
        if (expected != StrToIPv6(text.c_str()))
            ADD_FAILURE() << text;
    });
    EXPECT_LT(50u, written);
}

TEST(Ipv6Groups, RandomTextsAreJudgedAsTheRulesSay) {
    std::mt19937_64 random(SEED);
    unsigned written = 0;
    for (unsigned i = 0; i < MILLION / 5; ++i) {
        const std::string text = AnyText6(random);
        const Lenient expected = Expected(text);
        written += expected.packed != UNTOUCHED ? 1 : 0;
        ASSERT_EQ(expected, StrToIPv6(text.c_str())) << text << ", seed " << SEED;
    }
    EXPECT_LT(MILLION / 40, written);
    EXPECT_GT(MILLION / 5, written + MILLION / 40);
}

TEST(Ipv6Groups, ReadsNoByteBehindTheTerminator) {
    GuardedRoom room(64);
    for (const std::string text : {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "1:2:3:4:5:6:7:8:9", "::1",
                                   "::", "1::2::3", "0123456789abcdef0123456789abcdef::", "::ffff:1.2.3.4"}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const std::string cut = text.substr(0, size);
            EXPECT_EQ(Expected(cut), StrToIPv6(room.Put(cut))) << cut;
        }
    }
}

} // namespace
