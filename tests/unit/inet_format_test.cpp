#include <uvelcommon_base/kivo_inet.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <random>
#include <string>

#include "kit.h"
#include "unit/address_samples.h"
#include "unit/guarded_text.h"

namespace {

using namespace address_samples;

const kit::Sources kAssert = {"src/common_adp/src/kivo_oxm_adapt"};

/* A buffer that shows what was written: it holds '#' before, and ends where no access is allowed. */
class Room {
  public:
    explicit Room(std::size_t size) : size_(size), bytes_(std::string(size, '#').data(), size) {}

    char *Get() const { return bytes_.Get(); }

    /* True when nothing was written but the text with its terminator. */
    bool Holds(const std::string &text) const {
        return std::memcmp(Get(), text.c_str(), text.size() + 1) == 0 && Rest(text.size() + 1);
    }
    bool Untouched() const { return Rest(0); }

  private:
    bool Rest(std::size_t from) const {
        return std::count(Get() + from, Get() + size_, '#') == static_cast<std::ptrdiff_t>(size_ - from);
    }

    std::size_t size_;
    GuardedText bytes_;
};

std::string Ntop4(const Packed4 &packed) {
    Room room(16);
    EXPECT_EQ(room.Get(), kivo_inet_ntop4(packed.data(), room.Get(), 16));
    const std::string text = room.Get();
    EXPECT_TRUE(room.Holds(text)) << text;
    return text;
}

std::string Ntop6(const Packed6 &packed) {
    char text[46];
    EXPECT_EQ(text, kivo_inet_ntop6(packed.data(), text, sizeof text));
    return text;
}

std::string UpperCase(std::string text) {
    for (char &c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/* --- IPv4 --- */

TEST(InetNtop4, WritesFourDecimalPartsWithoutLeadingZeros) {
    EXPECT_EQ("0.0.0.0", Ntop4({0, 0, 0, 0}));
    EXPECT_EQ("10.1.2.3", Ntop4({10, 1, 2, 3}));
    EXPECT_EQ("255.255.255.255", Ntop4({255, 255, 255, 255}));
    EXPECT_EQ("9.10.99.100", Ntop4({9, 10, 99, 100}));
}

TEST(InetNtop4, WritesEveryValueInEveryPart) {
    for (std::size_t part = 0; part < 4; ++part) {
        for (unsigned value = 0; value < 256; ++value) {
            for (Packed4 packed : {Packed4{0, 0, 0, 0}, Packed4{10, 20, 30, 40}, Packed4{200, 201, 202, 203}}) {
                packed[part] = static_cast<uint8_t>(value);
                EXPECT_EQ(inet_reference::Write4(packed.data()), Ntop4(packed));
            }
        }
    }
}

TEST(InetNtop4, ReadsNoByteBehindTheAddress) {
    const GuardedText packed("\x0A\x01\x02\x03", 4);
    char text[16];
    EXPECT_STREQ("10.1.2.3", kivo_inet_ntop4(reinterpret_cast<const uint8_t *>(packed.Get()), text, sizeof text));
}

TEST(InetNtop4, RoomBelow16IsRefusedHoweverShortTheText) {
    const Packed4 zero{};
    for (uint32_t size = 0; size < 16; ++size) {
        Room room(16);
        EXPECT_EQ(nullptr, kivo_inet_ntop4(zero.data(), room.Get(), size)) << size;
        EXPECT_TRUE(room.Untouched()) << size;
    }
    Room room(40);
    EXPECT_EQ(room.Get(), kivo_inet_ntop4(zero.data(), room.Get(), 40));
    EXPECT_TRUE(room.Holds("0.0.0.0"));
    EXPECT_EQ(room.Get(), kivo_inet_ntop4(zero.data(), room.Get(), 0xFFFFFFFF));
}

TEST(InetNtop4, WhatIsWrittenReadsBackAsItWas) {
    std::mt19937_64 random(SEED);
    for (unsigned i = 0; i < MILLION; ++i) {
        Packed4 packed;
        Packed4 back{};
        const auto number = static_cast<uint32_t>(random());
        std::memcpy(packed.data(), &number, sizeof number);
        char text[16];
        ASSERT_EQ(text, kivo_inet_ntop4(packed.data(), text, sizeof text));
        ASSERT_EQ(1, kivo_inet_pton4(text, back.data())) << text << ", seed " << SEED;
        ASSERT_EQ(packed, back) << text << ", seed " << SEED;
    }
}

TEST(InetNtop4, TheTextMayTakeThePlaceOfTheAddress) {
    for (std::size_t at = 0; at <= 12; ++at) {
        char area[16] = {};
        const Packed4 packed = {101, 202, 3, 44};
        std::memcpy(area + at, packed.data(), packed.size());
        kivo_inet_ntop4(reinterpret_cast<uint8_t *>(area) + at, area, sizeof area);
        EXPECT_STREQ("101.202.3.44", area) << at;
    }
}

/* --- IPv6 --- */

TEST(InetNtop6, WritesGroupsInUpperCaseWithoutLeadingZeros) {
    EXPECT_EQ("2001:DB8::1", Ntop6(Ip6("2001:db8::1")));
    EXPECT_EQ("::", Ntop6(Ip6("::")));
    EXPECT_EQ("::1", Ntop6(Ip6("::1")));
    EXPECT_EQ("1::", Ntop6(Ip6("1::")));
    EXPECT_EQ("1:2:3:4:5:6:7:8", Ntop6(Ip6("1:2:3:4:5:6:7:8")));
    EXPECT_EQ("ABCD:EF01:2345:6789:ABCD:EF:12:3", Ntop6(Ip6("abcd:ef01:2345:6789:abcd:00ef:0012:0003")));
    EXPECT_EQ("FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF", Ntop6(Ip6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff")));
}

TEST(InetNtop6, TheLongestRunOfZerosBecomesTheGap) {
    EXPECT_EQ("1:0:0:1::1", Ntop6(Ip6("1:0:0:1:0:0:0:1")));
    EXPECT_EQ("1::1:0:0:1", Ntop6(Ip6("1:0:0:0:1:0:0:1")));
    EXPECT_EQ("0:0:1::", Ntop6(Ip6("0:0:1:0:0:0:0:0")));
    EXPECT_EQ("::1:0:0:0", Ntop6(Ip6("0:0:0:0:1:0:0:0")));
}

TEST(InetNtop6, OfEqualRunsTheFirstBecomesTheGap) {
    EXPECT_EQ("1::2:0:0:3:4", Ntop6(Ip6("1:0:0:2:0:0:3:4")));
    EXPECT_EQ("::1:0:0:1:0:0", Ntop6(Ip6("0:0:1:0:0:1:0:0")));
    EXPECT_EQ("::1:2:0:0:0", Ntop6(Ip6("0:0:0:1:2:0:0:0")));
}

TEST(InetNtop6, ASingleZeroIsWrittenAsItIs) {
    EXPECT_EQ("1:2:3:4:5:6:7:0", Ntop6(Ip6("1:2:3:4:5:6:7:0")));
    EXPECT_EQ("0:2:3:4:5:6:7:8", Ntop6(Ip6("0:2:3:4:5:6:7:8")));
    EXPECT_EQ("0:2:0:4:0:6:0:8", Ntop6(Ip6("0:2:0:4:0:6:0:8")));
    EXPECT_EQ("1:0:3::", Ntop6(Ip6("1:0:3:0:0:0:0:0")));
}

TEST(InetNtop6, AddressesThatEndLikeIpv4OnesAreWrittenSo) {
    EXPECT_EQ("::FFFF:10.1.2.3", Ntop6(Ip6("::ffff:a01:203")));
    EXPECT_EQ("::10.1.2.3", Ntop6(Ip6("::a01:203")));
    EXPECT_EQ("::0.1.0.0", Ntop6(Ip6("0:0:0:0:0:0:1:0")));
    EXPECT_EQ("::FFFF:0.0.0.0", Ntop6(Ip6("::ffff:0:0")));
    EXPECT_EQ("::FFFF:255.255.255.255", Ntop6(Ip6("::ffff:ffff:ffff")));
}

TEST(InetNtop6, AddressesThatOnlyResembleThoseAreNot) {
    EXPECT_EQ("::203", Ntop6(Ip6("::203")));
    EXPECT_EQ("::FFFE:A01:203", Ntop6(Ip6("::fffe:a01:203")));
    EXPECT_EQ("::1:FFFF:A01:203", Ntop6(Ip6("::1:ffff:a01:203")));
    EXPECT_EQ("1::FFFF:A01:203", Ntop6(Ip6("1::ffff:a01:203")));
    EXPECT_EQ("64:FF9B::A01:203", Ntop6(Ip6("64:ff9b::a01:203")));
    EXPECT_EQ("::FFFF:0:A01:203", Ntop6(Ip6("::ffff:0:a01:203")));
}

TEST(InetNtop6, IsTheCLibrarysTextAndReadsBackAsItWasForEveryShapeOfZeros) {
    for (const Packed6 &packed : AllZeroShapes()) {
        const std::string text = Ntop6(packed);
        EXPECT_EQ(UpperCase(Name(packed)), text);
        EXPECT_EQ(inet_reference::Write6(packed), text);
        Packed6 back{};
        EXPECT_EQ(1, kivo_inet_pton6(text.c_str(), back.data())) << text;
        EXPECT_EQ(packed, back) << text;
    }
}

TEST(InetNtop6, IsTheCLibrarysTextInUpperCaseAndReadsBackAsItWas) {
    std::mt19937_64 random(SEED);
    for (unsigned i = 0; i < MILLION; ++i) {
        const Packed6 packed = AnyPacked6(random);
        const std::string text = Ntop6(packed);
        ASSERT_EQ(UpperCase(Name(packed)), text) << "seed " << SEED;
        Packed6 back{};
        ASSERT_EQ(1, kivo_inet_pton6(text.c_str(), back.data())) << text << ", seed " << SEED;
        ASSERT_EQ(packed, back) << text << ", seed " << SEED;
    }
}

TEST(InetNtop6, ReadsNoByteBehindTheAddress) {
    const GuardedText packed("\x20\x01\x0D\xB8\0\0\0\0\0\0\0\0\0\0\0\x01", 16);
    char text[46];
    EXPECT_STREQ("2001:DB8::1", kivo_inet_ntop6(reinterpret_cast<const uint8_t *>(packed.Get()), text, sizeof text));
}

TEST(InetNtop6, NeedsRoomForTheTextAndItsTerminator) {
    const Packed6 packed = Ip6("2001:db8::1");
    Room eleven(11);
    EXPECT_EQ(nullptr, kivo_inet_ntop6(packed.data(), eleven.Get(), 11));
    EXPECT_TRUE(eleven.Untouched());
    Room twelve(12);
    EXPECT_EQ(twelve.Get(), kivo_inet_ntop6(packed.data(), twelve.Get(), 12));
    EXPECT_TRUE(twelve.Holds("2001:DB8::1"));
}

TEST(InetNtop6, WritesTheTextAndNothingElseInEveryRoom) {
    std::vector<Packed6> all = {Ip6("::"),
                                Ip6("::1"),
                                Ip6("1::"),
                                Ip6("1111:2222:3333:4444:5555:6666:7777:8888"),
                                Ip6("1:2:3:4:5:6:7:8"),
                                Ip6("1:2:3:4:5:6:7:0"),
                                Ip6("1:2:3:4:5:6:77:88"),
                                Ip6("1:2:3:4:5:6:777:888"),
                                Ip6("::ffff:255.255.255.255"),
                                Ip6("::1.2.3.4"),
                                Ip6("::255.255.255.255"),
                                Ip6("1234::")};
    std::mt19937_64 random(SEED);
    while (all.size() < 60)
        all.push_back(AnyPacked6(random));
    for (const Packed6 &packed : all) {
        const std::string text = UpperCase(Name(packed));
        for (uint32_t size = 0; size < 64; ++size) {
            Room room(size);
            if (size <= text.size()) {
                EXPECT_EQ(nullptr, kivo_inet_ntop6(packed.data(), room.Get(), size)) << text << ", " << size;
                EXPECT_TRUE(room.Untouched()) << text << ", " << size;
            } else {
                EXPECT_EQ(room.Get(), kivo_inet_ntop6(packed.data(), room.Get(), size)) << text << ", " << size;
                EXPECT_TRUE(room.Holds(text)) << text << ", " << size;
            }
        }
    }
}

TEST(InetNtop6, TheTextMayTakeThePlaceOfTheAddress) {
    for (const char *address : {"1111:2222:3333:4444:5555:6666:7777:8888", "::ffff:101.202.3.44", "::101.202.3.44"}) {
        const Packed6 packed = Ip6(address);
        for (std::size_t at = 0; at <= 30; ++at) {
            char area[46] = {};
            std::memcpy(area + at, packed.data(), packed.size());
            kivo_inet_ntop6(reinterpret_cast<uint8_t *>(area) + at, area, sizeof area);
            EXPECT_EQ(UpperCase(address), area) << at;
        }
    }
}

TEST(InetNtop6, AMissingBufferIsReportedWhenThereWouldBeRoom) {
    const Packed6 packed = Ip6("::1");
    EXPECT_EQ(nullptr, kivo_inet_ntop6(packed.data(), nullptr, 46));
    EXPECT_EQ(kAssert, kit::TakeAsserts());
    EXPECT_EQ(nullptr, kivo_inet_ntop6(packed.data(), nullptr, 3));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

/* --- by family --- */

template <auto Fn>
void ExpectFamilies() {
    const Packed4 packed4 = {10, 1, 2, 3};
    const Packed6 packed6 = Ip6("2001:db8::1");
    char text[46];
    EXPECT_EQ(text, Fn(2, packed4.data(), text, sizeof text));
    EXPECT_STREQ("10.1.2.3", text);
    EXPECT_EQ(nullptr, Fn(2, packed4.data(), text, 15));
    EXPECT_EQ(text, Fn(29, packed6.data(), text, sizeof text));
    EXPECT_STREQ("2001:DB8::1", text);
    EXPECT_EQ(nullptr, Fn(29, packed6.data(), text, 11));
    for (const int16_t family : {int16_t{2}, int16_t{29}}) {
        EXPECT_EQ(nullptr, Fn(family, nullptr, text, sizeof text));
        EXPECT_EQ(nullptr, Fn(family, packed6.data(), nullptr, sizeof text));
    }
    std::strcpy(text, "as it was");
    for (int family = INT16_MIN; family <= INT16_MAX; ++family) {
        if (family != 2 && family != 29) {
            ASSERT_EQ(nullptr, Fn(static_cast<int16_t>(family), packed6.data(), text, sizeof text)) << family;
        }
    }
    EXPECT_STREQ("as it was", text);
}

TEST(OxmInetNtop, ChoosesTheWriterByThePlatformsFamilyNumbers) {
    ExpectFamilies<oxm_inet_ntop>();
}

TEST(OxmInetNtop, TheForwarderDoesTheSame) {
    ExpectFamilies<KIVO_oxm_inet_ntop>();
}

} // namespace
