#include <uvelcommon_base/kivo_inet.h>

#include <array>
#include <cstring>
#include <string>

#include "kit.h"
#include "unit/address_samples.h"
#include "unit/guarded_text.h"

namespace {

using namespace address_samples;

const kit::Sources kAssert = {"src/common_adp/src/kivo_oxm_adapt"};

template <typename Packed>
Packed Untouched() {
    Packed packed;
    packed.fill(0xEE);
    return packed;
}

/* Result and output of the library's reader. */
template <typename Packed>
struct Read {
    int32_t result;
    Packed packed;

    bool operator==(const Read &) const = default;
};

Read<Packed4> Pton4(const char *text) {
    Read<Packed4> read{0, Untouched<Packed4>()};
    read.result = kivo_inet_pton4(text, read.packed.data());
    return read;
}

Read<Packed6> Pton6(const char *text) {
    Read<Packed6> read{0, Untouched<Packed6>()};
    read.result = kivo_inet_pton6(text, read.packed.data());
    return read;
}

template <typename Packed>
Read<Packed> As(const std::optional<Packed> &packed) {
    return {packed ? 1 : 0, packed.value_or(Untouched<Packed>())};
}

template <typename Packed>
std::ostream &operator<<(std::ostream &stream, const Read<Packed> &read) {
    stream << read.result;
    for (const uint8_t byte : read.packed)
        stream << ' ' << static_cast<unsigned>(byte);
    return stream;
}

/* --- IPv4 --- */

TEST(InetPton4, ReadsFourDecimalPartsInNetworkOrder) {
    EXPECT_EQ((Read<Packed4>{1, {1, 2, 3, 4}}), Pton4("1.2.3.4"));
    EXPECT_EQ((Read<Packed4>{1, {10, 1, 2, 3}}), Pton4("10.1.2.3"));
    EXPECT_EQ((Read<Packed4>{1, {0, 0, 0, 0}}), Pton4("0.0.0.0"));
    EXPECT_EQ((Read<Packed4>{1, {255, 255, 255, 255}}), Pton4("255.255.255.255"));
    EXPECT_EQ((Read<Packed4>{1, {9, 99, 199, 249}}), Pton4("9.99.199.249"));
}

TEST(InetPton4, LeadingZerosMeanNothing) {
    EXPECT_EQ((Read<Packed4>{1, {10, 1, 0, 1}}), Pton4("010.001.0.0001"));
    EXPECT_EQ((Read<Packed4>{1, {1, 2, 3, 4}}), Pton4("1.2.3.04"));
    EXPECT_EQ((Read<Packed4>{1, {0, 0, 0, 0}}), Pton4("00.000.0000.00000"));
    EXPECT_EQ((Read<Packed4>{1, {255, 0, 0, 255}}), Pton4("0255.0.0.000000000000000000000000000000000000255"));
    EXPECT_EQ((Read<Packed4>{1, {8, 9, 77, 100}}), Pton4("08.09.077.0100")); /* decimal, not octal */
}

TEST(InetPton4, EveryValueOfEveryPartIsReadUpTo255) {
    for (std::size_t part = 0; part < 4; ++part) {
        for (unsigned value = 0; value < 1200; ++value) {
            std::array<std::string, 4> parts = {"7", "77", "177", "7"};
            parts[part] = std::to_string(value);
            const std::string text = parts[0] + "." + parts[1] + "." + parts[2] + "." + parts[3];
            Packed4 packed = {7, 77, 177, 7};
            packed[part] = static_cast<uint8_t>(value);
            EXPECT_EQ((value < 256 ? Read<Packed4>{1, packed} : As<Packed4>({})), Pton4(text.c_str())) << text;
        }
    }
}

TEST(InetPton4, WhatIsNoAddressIsRejectedAndLeavesTheOutput) {
    for (const char *text : {
             "",
             "1",
             "1.2.3",
             "1.2.3.4.",
             "1.2.3.4.5",
             ".1.2.3.4",
             "1..2.3",
             "1.2..3.4",
             "1.2.3.",
             "1.2.3..4",
             "....",
             ".",
             "...",
             " 1.2.3.4",
             "1.2.3.4 ",
             "1. 2.3.4",
             "1.2.3.4\n",
             "\t1.2.3.4",
             "+1.2.3.4",
             "1.2.3.-4",
             "0x1.2.3.4",
             "1.2.3.4/24",
             "1.2.3.4:80",
             "256.1.1.1",
             "1.256.1.1",
             "1.1.256.1",
             "1.1.1.256",
             "1.1.1.260",
             "1.1.1.300",
             "1.1.1.999",
             "1.1.1.1000",
             "1.1.1.0256",
             "4294967297.1.1.1",
             "1.2.3.:",
             "1.2.3./",
             "1.2.3.4a",
             "a.2.3.4",
             "1.2.3.\xb4",
             "\xb1.2.3.4",
             "1\xae"
             "2.3.4",
             "1,2,3,4",
             "12345678",
             "1.2.3.4\x01",
             "0256.1.1.1",
             "1.2.3.18446744073709551617",
         })
        EXPECT_EQ((Read<Packed4>{0, Untouched<Packed4>()}), Pton4(text)) << text;
}

TEST(InetPton4, EveryCharacterAtEveryPlaceIsJudgedAsTheRulesSay) {
    for (const std::string text : {"1.22.133.4", "255.0.10.199", "0001.2.3.0255"}) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            for (unsigned c = 1; c < 256; ++c) {
                std::string changed = text;
                changed[i] = static_cast<char>(c);
                EXPECT_EQ(As(inet_reference::Read4(changed)), Pton4(changed.c_str())) << changed;
            }
        }
    }
}

TEST(InetPton4, AllShortTextsAreJudgedAsTheRulesSay) {
    unsigned accepted = 0;
    ForAllTexts("19.", 10, [&](const std::string &text) {
        const auto expected = As(inet_reference::Read4(text));
        accepted += static_cast<unsigned>(expected.result);
        if (expected != Pton4(text.c_str()))
            ADD_FAILURE() << text;
    });
    EXPECT_LT(100u, accepted);
}

TEST(InetPton4, ReadsNoByteBehindTheTerminator) {
    GuardedRoom room(64);
    for (const std::string text :
         {"255.255.255.255", "1.2.3.4", "0000000001.2.3.00004", "256.1.1.1", "1..2", "1.2.3.4.5", "12345678"}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const std::string cut = text.substr(0, size);
            EXPECT_EQ(As(inet_reference::Read4(cut)), Pton4(room.Put(cut))) << cut;
        }
    }
}

TEST(InetPton4, ReadsNoByteBeforeTheText) {
    GuardedRoom room(64);
    for (const std::string text : {"", ".", "1", "1.2.3.4", "12.3.4.5", "123.4.5.6", "256.1.1.1", "x"})
        EXPECT_EQ(As(inet_reference::Read4(text)), Pton4(room.PutFirst(text))) << text;
}

TEST(InetPton4, AMissingOutputIsReportedAndTheResultStays) {
    EXPECT_EQ(1, kivo_inet_pton4("1.2.3.4", nullptr));
    EXPECT_EQ(kAssert, kit::TakeAsserts());
    EXPECT_EQ(1, kivo_inet_pton4("1.2.3.0004", nullptr));
    EXPECT_EQ(kAssert, kit::TakeAsserts());
    EXPECT_EQ(0, kivo_inet_pton4("1.2.3", nullptr));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

/* --- IPv6 --- */

struct Row6 {
    const char *text;
    Packed6 packed;
};

TEST(InetPton6, ReadsGroupsAndGaps) {
    const Row6 rows[] = {
        {"::", {}},
        {"::1", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"1::", {0, 1}},
        {"1:2:3:4:5:6:7:8", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"2001:db8::1", {0x20, 1, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"2001:DB8:AbCd:eF01:2345:6789:abCD:0Ef",
         {0x20, 1, 0x0d, 0xb8, 0xab, 0xcd, 0xef, 1, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0, 0xef}},
        {"1:2:3:4:5:6:7::", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7}},
        {"::2:3:4:5:6:7:8", {0, 0, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"1:2:3::5:6:7:8", {0, 1, 0, 2, 0, 3, 0, 0, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"1:2::7:8", {0, 1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 8}},
        {"0:0:0:0:0:0:0:0", {}},
        {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff",
         {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255}},
    };
    for (const Row6 &row : rows)
        EXPECT_EQ((Read<Packed6>{1, row.packed}), Pton6(row.text)) << row.text;
}

TEST(InetPton6, OfAGroupTheLastFourDigitsCount) {
    EXPECT_EQ((Read<Packed6>{1, {}}), Pton6("10000::"));
    EXPECT_EQ((Read<Packed6>{1, {0x23, 0x45}}), Pton6("12345::"));
    EXPECT_EQ((Read<Packed6>{1, {0xcd, 0xef, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x89, 0xab}}),
              Pton6("0123456789abcdef0123456789abcdef::fedcba98765432100123456789ab"));
    EXPECT_EQ((Read<Packed6>{1, {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}}),
              Pton6("00001:00002:00003:00004:00005:00006:00007:00008"));
}

TEST(InetPton6, TheLastTwoGroupsMayBeAnIpv4Address) {
    const Row6 rows[] = {
        {"::ffff:1.2.3.4", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 1, 2, 3, 4}},
        {"::10.1.2.3", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 1, 2, 3}},
        {"1:2:3:4:5:6:255.254.253.252", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 255, 254, 253, 252}},
        {"1:2:3:4:5::1.2.3.4", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 0, 1, 2, 3, 4}},
        {"1::1.2.3.4", {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4}},
        {"64:ff9b::192.0.2.33", {0, 0x64, 0xff, 0x9b, 0, 0, 0, 0, 0, 0, 0, 0, 192, 0, 2, 33}},
        {"::0000001.002.3.04", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4}},
    };
    for (const Row6 &row : rows)
        EXPECT_EQ((Read<Packed6>{1, row.packed}), Pton6(row.text)) << row.text;
}

TEST(InetPton6, WhatIsNoAddressIsRejectedAndLeavesTheOutput) {
    for (const char *text : {
             "",
             ":",
             ":1",
             "1:",
             ":1::",
             "1::2::3",
             "::1::",
             ":::",
             "1:::2",
             "::1:",
             "1:2:3:4:5:6:7",
             "1:2:3:4:5:6:7:",
             "1:2:3:4:5:6:7:8:",
             "1:2:3:4:5:6:7:8:9",
             "1:2:3:4:5:6:7:8::",
             "::1:2:3:4:5:6:7:8",
             "1:2:3:4::5:6:7:8",
             "1:2:3:4:5:6:7:8::9",
             "1.2.3.4",
             "::1.2.3",
             "::1.2.3.4.5",
             "::1.2.3.4:5",
             "::1.2.3.256",
             "::.1.2.3",
             "::.",
             ".",
             "::a.1.2.3",
             "1.2.3.4::",
             "1:2:3:4:5:6:7:1.2.3.4",
             "1:2:3:4:5:6:7:8:1.2.3.4",
             "1:2:3:4:5:6::1.2.3.4",
             "1:2:3:4:5:1.2.3.4",
             "::1.2.3.4 ",
             " ::1",
             "::1 ",
             "::g",
             "g::",
             "::1%eth0",
             "2001:db8::/32",
             "[::1]",
             "::-1",
             "::+1",
             "::0x1",
             "::\xff",
             "::1\n",
         })
        EXPECT_EQ((Read<Packed6>{0, Untouched<Packed6>()}), Pton6(text)) << text;
}

TEST(InetPton6, AllShortTextsAreJudgedAsTheRulesSay) {
    unsigned accepted = 0;
    ForAllTexts("1:.x", 8, [&](const std::string &text) {
        const auto expected = As(inet_reference::Read6(text));
        accepted += static_cast<unsigned>(expected.result);
        if (expected != Pton6(text.c_str()))
            ADD_FAILURE() << text;
    });
    EXPECT_LT(50u, accepted);
}

TEST(InetPton6, EveryCharacterAtEveryPlaceIsJudgedAsTheRulesSay) {
    for (const std::string text : {"2001:dB8::1:10.1.2.3", "1:22:333:4444:55555:6:77:8", "::f"}) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            for (unsigned c = 1; c < 256; ++c) {
                std::string changed = text;
                changed[i] = static_cast<char>(c);
                EXPECT_EQ(As(inet_reference::Read6(changed)), Pton6(changed.c_str())) << changed;
            }
        }
    }
}

TEST(InetPton6, ReadsNoByteBehindTheTerminator) {
    GuardedRoom room(128);
    for (const std::string text : {"ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255", "1:2:3:4:5:6:7:8:9", "::1", "::",
                                   "1::2::3", "0123456789abcdef0123456789abcdef::", "::ffff:1.2.3.4.5", "::ffff:g"}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const std::string cut = text.substr(0, size);
            EXPECT_EQ(As(inet_reference::Read6(cut)), Pton6(room.Put(cut))) << cut;
        }
    }
}

TEST(InetPton6, AMissingOutputIsReportedAndTheResultStays) {
    EXPECT_EQ(1, kivo_inet_pton6("::1", nullptr));
    EXPECT_EQ(kAssert, kit::TakeAsserts());
    EXPECT_EQ(0, kivo_inet_pton6(":1", nullptr));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

/* --- by family --- */

template <auto Fn>
void ExpectFamilies() {
    Packed4 packed4 = Untouched<Packed4>();
    EXPECT_EQ(1, Fn(2, "10.1.2.3", packed4.data()));
    EXPECT_EQ((Packed4{10, 1, 2, 3}), packed4);
    EXPECT_EQ(0, Fn(2, "::1", packed4.data()));
    Packed6 packed6 = Untouched<Packed6>();
    EXPECT_EQ(1, Fn(29, "2001:db8::1", packed6.data()));
    EXPECT_EQ(Ip6("2001:db8::1"), packed6);
    EXPECT_EQ(0, Fn(29, "10.1.2.3", packed6.data()));
    /* Any other family, 10 as well, gives -1 without a look at the text. */
    for (int family = INT16_MIN; family <= INT16_MAX; ++family) {
        if (family != 2 && family != 29) {
            ASSERT_EQ(-1, Fn(static_cast<int16_t>(family), nullptr, nullptr)) << family;
        }
    }
}

TEST(OxmInetPton, ChoosesTheReaderByThePlatformsFamilyNumbers) {
    ExpectFamilies<oxm_inet_pton>();
}

TEST(OxmInetPton, TheForwarderDoesTheSame) {
    ExpectFamilies<KIVO_oxm_inet_pton>();
}

} // namespace
