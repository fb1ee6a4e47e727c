#include <uvelcommon_base/kivo_ip.h>
#include <uvelcommon_base/kivo_mac.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "kit.h"
#include "unit/guarded_text.h"

namespace {

using Mac = std::array<uint8_t, 6>;

constexpr Mac SAMPLE = {0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};

std::string Printed(const char *format, const Mac &mac) {
    char text[32];
    std::snprintf(text, sizeof text, format, mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

constexpr const char *PLAIN = "%02x%02x%02x%02x%02x%02x";
constexpr const char *GROUPS = "%02x%02x-%02x%02x-%02x%02x";
constexpr const char *BYTES = "%02x-%02x-%02x-%02x-%02x-%02x";

/* Every value of every byte, the bytes of one address differing. */
template <typename F>
void ForAddresses(F &&check) {
    for (unsigned i = 0; i < 256; ++i) {
        Mac mac;
        for (unsigned k = 0; k < 6; ++k)
            mac[k] = static_cast<uint8_t>(i + 43 * k);
        check(mac);
    }
}

/* A buffer that shows what was written: it holds '#' before. */
struct Room {
    char text[24];

    Room() { std::memset(text, '#', sizeof text); }

    /* The bytes from `from` on. */
    std::string From(std::size_t from) const { return std::string(text + from, sizeof text - from); }
};

TEST(MacText, GroupsOfTwoBytes) {
    ForAddresses([](const Mac &mac) {
        Room room;
        EXPECT_EQ(room.text, SRV_MacAddrToStr(mac.data(), room.text));
        EXPECT_EQ(Printed(GROUPS, mac), room.text);
        EXPECT_EQ(std::string(24 - 15, '#'), room.From(15));
    });
    Room room;
    EXPECT_STREQ("021a-2b3c-4d5e", SRV_MacAddrToStr(SAMPLE.data(), room.text));
}

TEST(MacText, GroupsOfTwoBytesNeedAddressAndBuffer) {
    Room room;
    EXPECT_EQ(nullptr, SRV_MacAddrToStr(nullptr, room.text));
    EXPECT_EQ(std::string(24, '#'), room.From(0));
    EXPECT_EQ(nullptr, SRV_MacAddrToStr(SAMPLE.data(), nullptr));
}

TEST(MacText, LongMacGivesTheNumberOfCharacters) {
    ForAddresses([](const Mac &mac) {
        Room room;
        EXPECT_EQ(14, QAL_LongMacToString(mac.data(), room.text));
        EXPECT_EQ(Printed(GROUPS, mac), room.text);
        EXPECT_EQ(std::string(24 - 15, '#'), room.From(15));
    });
    Room room;
    EXPECT_EQ(-1, QAL_LongMacToString(SAMPLE.data(), nullptr));
    EXPECT_EQ(-1, QAL_LongMacToString(nullptr, room.text));
}

TEST(MacText, WithoutHyphenGivesTheNumberOfCharacters) {
    ForAddresses([](const Mac &mac) {
        Room room;
        EXPECT_EQ(12, SRV_MacToStrWithoutHyphen(mac.data(), room.text, 13));
        EXPECT_EQ(Printed(PLAIN, mac), room.text);
        EXPECT_EQ(std::string(24 - 13, '#'), room.From(13));
    });
    Room room;
    EXPECT_EQ(12, SRV_MacToStrWithoutHyphen(SAMPLE.data(), room.text, 0x7FFFFFFF));
    EXPECT_STREQ("021a2b3c4d5e", room.text);
}

TEST(MacText, WithoutHyphenGivesAnEmptyTextAndMinusOneInAShortBuffer) {
    for (uint32_t size = 1; size < 13; ++size) {
        Room room;
        EXPECT_EQ(-1, SRV_MacToStrWithoutHyphen(SAMPLE.data(), room.text, size));
        EXPECT_STREQ("", room.text);
        EXPECT_EQ(std::string(24 - size, '#'), room.From(size));
    }
}

TEST(MacText, WithoutHyphenWritesNothingWithoutARoomThatCanBe) {
    for (const uint32_t size : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        Room room;
        EXPECT_EQ(-1, SRV_MacToStrWithoutHyphen(SAMPLE.data(), room.text, size));
        EXPECT_EQ(std::string(24, '#'), room.From(0));
    }
    EXPECT_EQ(-1, SRV_MacToStrWithoutHyphen(SAMPLE.data(), nullptr, 13));
    Room room;
    EXPECT_EQ(-1, SRV_MacToStrWithoutHyphen(nullptr, room.text, 13));
    EXPECT_STREQ("", room.text);
}

TEST(MacText, RingsShowTheirForm) {
    ForAddresses([](const Mac &mac) {
        EXPECT_EQ(Printed(GROUPS, mac), SRV_MacAddrtoStr(mac.data()));
        EXPECT_EQ(Printed(BYTES, mac), SRV_MacAddrtoStrByteSplit(mac.data()));
    });
    EXPECT_STREQ("021a-2b3c-4d5e", SRV_MacAddrtoStr(SAMPLE.data()));
    EXPECT_STREQ("02-1a-2b-3c-4d-5e", SRV_MacAddrtoStrByteSplit(SAMPLE.data()));
}

TEST(MacText, RingsShowAHyphenForNull) {
    EXPECT_STREQ("-", SRV_MacAddrtoStr(nullptr));
    EXPECT_EQ(SRV_MacAddrtoStr(nullptr), SRV_MacAddrtoStrByteSplit(nullptr)) << "the same one";
    EXPECT_EQ(SRV_MacAddrtoStr(nullptr), SRV_Ipv6AddrtoStr(nullptr)) << "as for IPv6 addresses";
}

TEST(MacText, RingsKeepTheEightLatestTexts) {
    for (const char *(*write)(const uint8_t *) : {&SRV_MacAddrtoStr, &SRV_MacAddrtoStrByteSplit}) {
        const char *texts[16];
        for (uint8_t i = 0; i < 16; ++i) {
            const Mac mac = {i, i, i, i, i, i};
            texts[i] = write(mac.data());
            EXPECT_STREQ("-", write(nullptr)) << "null uses up no buffer";
        }
        for (uint8_t i = 8; i < 16; ++i) {
            const Mac mac = {i, i, i, i, i, i};
            EXPECT_EQ(Printed(write == &SRV_MacAddrtoStr ? GROUPS : BYTES, mac), texts[i]);
            EXPECT_EQ(texts[i - 8], texts[i]) << "the ring comes round after eight";
            for (int other = 8; other < i; ++other)
                EXPECT_NE(texts[other], texts[i]);
        }
    }
}

TEST(MacText, TheRingsAreTwo) {
    const char *groups = SRV_MacAddrtoStr(SAMPLE.data());
    for (int i = 0; i < 8; ++i)
        (void)SRV_MacAddrtoStrByteSplit(SAMPLE.data());
    EXPECT_STREQ("021a-2b3c-4d5e", groups);
}

TEST(MacText, RingsStartWithTheirSecondBuffer) {
    kit::InFreshProcess([] {
        const char *first = SRV_MacAddrtoStr(SAMPLE.data());
        const char *last = nullptr;
        for (int i = 0; i < 7; ++i)
            last = SRV_MacAddrtoStr(SAMPLE.data());
        EXPECT_EQ(first - 16, last);
        first = SRV_MacAddrtoStrByteSplit(SAMPLE.data());
        for (int i = 0; i < 7; ++i)
            last = SRV_MacAddrtoStrByteSplit(SAMPLE.data());
        EXPECT_EQ(first - 20, last);
    });
}

struct Layout {
    uint8_t grouped;
    uint8_t perByte;
    uint8_t colon;
    const char *lower;
    const char *upper;
};

constexpr Layout LAYOUTS[] = {
    {0, 0, 0, "021a2b3c4d5e", "021A2B3C4D5E"},           {0, 0, 1, "021a2b3c4d5e", "021A2B3C4D5E"},
    {0, 1, 0, "021a2b3c4d5e", "021A2B3C4D5E"},           {0, 1, 1, "021a2b3c4d5e", "021A2B3C4D5E"},
    {1, 1, 1, "02:1a:2b:3c:4d:5e", "02:1A:2B:3C:4D:5E"}, {1, 1, 0, "02-1a-2b-3c-4d-5e", "02-1A-2B-3C-4D-5E"},
    {1, 0, 1, "021a:2b3c:4d5e", "021A:2B3C:4D5E"},       {1, 0, 0, "021a-2b3c-4d5e", "021A-2B3C-4D5E"},
    {2, 1, 1, "021a2b3c4d5e", "021A2B3C4D5E"},           {255, 1, 1, "021a2b3c4d5e", "021A2B3C4D5E"},
    {1, 2, 1, "021a:2b3c:4d5e", "021A:2B3C:4D5E"},       {1, 255, 0, "021a-2b3c-4d5e", "021A-2B3C-4D5E"},
    {1, 1, 2, "02-1a-2b-3c-4d-5e", "02-1A-2B-3C-4D-5E"}, {1, 0, 255, "021a-2b3c-4d5e", "021A-2B3C-4D5E"},
};

TEST(MacText, FlagsChooseTheLayoutAndCountOnlyWhenTheyAreOne) {
    for (const Layout &layout : LAYOUTS) {
        for (const uint8_t upper : std::array<uint8_t, 4>{0, 1, 2, 255}) {
            Room room;
            EXPECT_EQ(room.text, SRV_MacAddrToStrPswWithType(SAMPLE.data(), room.text, layout.grouped, layout.perByte,
                                                             upper, layout.colon));
            EXPECT_STREQ(upper == 1 ? layout.upper : layout.lower, room.text)
                << +layout.grouped << +layout.perByte << +upper << +layout.colon;
        }
    }
}

TEST(MacText, FlaggedFormClearsEighteenBytes) {
    for (const Layout &layout : LAYOUTS) {
        Room room;
        (void)SRV_MacAddrToStrPswWithType(SAMPLE.data(), room.text, layout.grouped, layout.perByte, 1, layout.colon);
        const std::size_t length = std::strlen(room.text);
        EXPECT_EQ(std::string(18 - length, '\0') + std::string(6, '#'), room.From(length));
    }
}

TEST(MacText, FlaggedFormWritesEveryByteInBothCases) {
    ForAddresses([](const Mac &mac) {
        Room room;
        EXPECT_EQ(Printed(PLAIN, mac), SRV_MacAddrToStrPswWithType(mac.data(), room.text, 0, 0, 0, 0));
        EXPECT_EQ(Printed("%02X:%02X:%02X:%02X:%02X:%02X", mac),
                  SRV_MacAddrToStrPswWithType(mac.data(), room.text, 1, 1, 1, 1));
    });
}

TEST(MacText, FlaggedFormChoosesItsDigitsAndMeasuresNothing) {
    for (const uint8_t upper : std::array<uint8_t, 2>{0, 1}) {
        Room room;
        (void)SRV_MacAddrToStrPswWithType(SAMPLE.data(), room.text, 1, 1, upper, 1);
        EXPECT_EQ(0u, kit::Op<QAL_StrLen>().Calls()) << +upper;
    }
}

TEST(MacText, FlaggedFormNeedsAddressAndBuffer) {
    Room room;
    EXPECT_EQ(nullptr, SRV_MacAddrToStrPswWithType(nullptr, room.text, 1, 1, 1, 1));
    EXPECT_EQ(std::string(24, '#'), room.From(0));
    EXPECT_EQ(nullptr, SRV_MacAddrToStrPswWithType(SAMPLE.data(), nullptr, 1, 1, 1, 1));
}

/* Every writer with the address at the beginning of its buffer, or behind it. */
TEST(MacText, MayOverwriteItsAddress) {
    using Write = const char *(*)(const uint8_t *, char *);
    struct Form {
        Write write;
        const char *text;   /* of the address beside the buffer */
        const char *inside; /* of the address that the clearing of the buffer meets */
    };
    const auto longMac = [](const uint8_t *mac, char *text) -> const char * {
        return QAL_LongMacToString(mac, text) == 14 ? text : nullptr;
    };
    const auto plain = [](const uint8_t *mac, char *text) -> const char * {
        return SRV_MacToStrWithoutHyphen(mac, text, 13) == 12 ? text : nullptr;
    };
    const auto grouped = [](const uint8_t *mac, char *text) -> const char * { return SRV_MacAddrToStr(mac, text); };
    const auto flagged = [](const uint8_t *mac, char *text) -> const char * {
        return SRV_MacAddrToStrPswWithType(mac, text, 0, 0, 0, 0);
    };
    for (const Form &form :
         {Form{longMac, "021a-2b3c-4d5e", "021a-2b3c-4d5e"}, Form{plain, "021a2b3c4d5e", "021a2b3c4d5e"},
          Form{grouped, "021a-2b3c-4d5e", "0000-0000-0000"}, Form{flagged, "021a2b3c4d5e", "000000000000"}}) {
        for (const std::size_t at : {0u, 1u, 5u, 7u, 18u}) {
            Room room;
            std::memcpy(room.text + at, SAMPLE.data(), SAMPLE.size());
            const char *expected = at == 18 ? form.text : form.inside;
            EXPECT_STREQ(expected, form.write(reinterpret_cast<uint8_t *>(room.text + at), room.text)) << at;
        }
    }
}

Mac ReadMac(const std::string &text) {
    static GuardedRoom room(256);
    Mac mac = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(0u, SRV_MacStrToAddr(room.Put(text), mac.data())) << text;
    return mac;
}

TEST(MacRead, ReadsTheGroupedForm) {
    EXPECT_EQ(SAMPLE, ReadMac("021a-2b3c-4d5e"));
    EXPECT_EQ(SAMPLE, ReadMac("021A-2B3c-4D5E"));
    EXPECT_EQ((Mac{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), ReadMac("ffff-FFFF-fFfF"));
}

TEST(MacRead, IgnoresWhatFollows) {
    EXPECT_EQ(SAMPLE, ReadMac("021a-2b3c-4d5e7"));
    EXPECT_EQ(SAMPLE, ReadMac("021a-2b3c-4d5e-ffff and more"));
}

TEST(MacRead, LeavesZeroWhatItCouldNotReadWithoutAnError) {
    EXPECT_EQ((Mac{0x02, 0, 0, 0, 0, 0}), ReadMac("02:1a:2b:3c:4d:5e"));
    EXPECT_EQ((Mac{0x02, 0x1A, 0, 0, 0, 0}), ReadMac("021a2b3c4d5e"));
    EXPECT_EQ((Mac{0x02, 0x1A, 0x2B, 0, 0, 0}), ReadMac("021a-2b"));
    EXPECT_EQ((Mac{0x02, 0x1A, 0x2B, 0x03, 0, 0}), ReadMac("021a-2b3"));
    EXPECT_EQ((Mac{0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x05}), ReadMac("021a-2b3c-4d5g"));
    EXPECT_EQ((Mac{}), ReadMac("zz"));
    EXPECT_EQ((Mac{}), ReadMac(""));
}

TEST(MacRead, SkipsWhiteSpaceBeforeAByteButNotBeforeAHyphen) {
    EXPECT_EQ(SAMPLE, ReadMac(" 02\t1a-\n2b 3c- \r4d\v\f5e"));
    EXPECT_EQ((Mac{0x02, 0x1A, 0, 0, 0, 0}), ReadMac("021a -2b3c-4d5e"));
}

TEST(MacRead, AcceptsASignAsPartOfAByte) {
    EXPECT_EQ((Mac{0xFF, 0x02, 0x03, 0xFC, 0x0A, 0xF5}), ReadMac("-1+2-+3-4-+a-b"));
    EXPECT_EQ((Mac{0, 0x21, 0, 0, 0, 0}), ReadMac("-021a-2b3c-4d5e"));
    EXPECT_EQ((Mac{0x02, 0xFF, 0, 0, 0, 0}), ReadMac("02-1a-2b-3c-4d-5e"));
    EXPECT_EQ((Mac{}), ReadMac("--1"));
}

TEST(MacRead, ReadsBytesOfOneDigitBeforeSomethingElse) {
    EXPECT_EQ((Mac{0x02, 0x01, 0xA, 0xB, 0x0C, 0x0D}), ReadMac("2 1-a b-c d"));
}

TEST(MacRead, MayOverwriteItsText) {
    struct Case {
        const char *text;
        std::size_t at; /* the address in the text's buffer */
        Mac mac;
    };
    for (const Case &c :
         {Case{"021a-2b3c-4d5e", 0, SAMPLE}, Case{"021a-2b3c-4d5e", 2, SAMPLE}, Case{"02:1a:2b:3c:4d:5e", 0, Mac{0x02}},
          Case{"021a-2b3c-4d5", 0, {2, 0x1A, 0x2B, 0x3C, 0x4D, 5}},
          Case{"021a-2b3c-4d5", 3, {2, 0x1A, 0x2B, 0x3C, 0x4D, 5}}, Case{"zz", 0, Mac{}}}) {
        Room room;
        std::strcpy(room.text, c.text);
        auto *mac = reinterpret_cast<uint8_t *>(room.text + c.at);
        EXPECT_EQ(0u, SRV_MacStrToAddr(room.text, mac));
        EXPECT_EQ(0, std::memcmp(c.mac.data(), mac, 6)) << c.text << ", address at " << c.at;
    }
}

TEST(MacRead, NeedsTextAndAddress) {
    Mac mac = SAMPLE;
    EXPECT_EQ(1u, SRV_MacStrToAddr(nullptr, mac.data()));
    EXPECT_EQ(SAMPLE, mac);
    EXPECT_EQ(1u, SRV_MacStrToAddr("021a-2b3c-4d5e", nullptr));
    EXPECT_EQ(1u, SRV_MacStrToAddr(nullptr, nullptr));
}

TEST(MacRead, ReadsWhatTheWriterWrote) {
    ForAddresses([](const Mac &mac) { EXPECT_EQ(mac, ReadMac(SRV_MacAddrtoStr(mac.data()))); });
}

/* What the C library's scan makes of the text. */
Mac Scanned(const std::string &text) {
    unsigned fields[6] = {};
    (void)std::sscanf(text.c_str(), GROUPS, &fields[0], &fields[1], &fields[2], &fields[3], &fields[4], &fields[5]);
    Mac mac;
    for (unsigned i = 0; i < 6; ++i)
        mac[i] = static_cast<uint8_t>(fields[i]);
    return mac;
}

TEST(MacRead, AgreesWithTheScanOnChangedTexts) {
    constexpr uint32_t SEED = 271828;
    const std::string alphabet = "0123456789abcdefABCDEF-- \t+g:";
    std::mt19937 random(SEED);
    int whole = 0;
    for (int i = 0; i < 200000; ++i) {
        std::string text = "021a-2B3c-4d5e";
        for (auto changes = random() % 5; changes > 0; --changes) {
            const std::size_t at = random() % (text.size() + 1);
            const char c = alphabet[random() % alphabet.size()];
            if (at == text.size() || random() % 2 == 0)
                text.insert(at, 1, c);
            else if (random() % 3 != 0)
                text[at] = c;
            else
                text.erase(at, 1 + random() % 2);
        }
        ASSERT_EQ(Scanned(text), ReadMac(text)) << text << " (seed " << SEED << ", text " << i << ")";
        whole += ReadMac(text) == SAMPLE ? 1 : 0;
    }
    EXPECT_GT(whole, 20000);
    EXPECT_LT(whole, 180000);
}

TEST(MacTest, TellsTheZeroAddress) {
    EXPECT_EQ(1u, SRV_IsMacAddrZero(Mac{}.data()));
    for (unsigned byte = 0; byte < 6; ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            Mac mac{};
            mac[byte] = static_cast<uint8_t>(1 << bit);
            EXPECT_EQ(0u, SRV_IsMacAddrZero(mac.data()));
        }
    }
    EXPECT_EQ(0u, SRV_IsMacAddrZero(nullptr));
}

TEST(MacTest, OnlyBroadcastIsNotValid) {
    Mac mac;
    mac.fill(0xFF);
    EXPECT_EQ(0u, SRV_MacAddrtoValid(mac.data()));
    EXPECT_EQ(1u, SRV_MacAddrtoValid(Mac{}.data()));
    for (unsigned byte = 0; byte < 6; ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            mac.fill(0xFF);
            mac[byte] = static_cast<uint8_t>(mac[byte] ^ 1 << bit);
            EXPECT_EQ(1u, SRV_MacAddrtoValid(mac.data()));
        }
    }
    EXPECT_EQ(0u, SRV_MacAddrtoValid(nullptr));
}

TEST(MacTest, ReadsSixBytesAndNoMore) {
    const GuardedText zero(Mac{}.data(), 6);
    const GuardedText sample(SAMPLE.data(), 6);
    Room room;
    EXPECT_EQ(1u, SRV_IsMacAddrZero(reinterpret_cast<const uint8_t *>(zero.Get())));
    EXPECT_EQ(1u, SRV_MacAddrtoValid(reinterpret_cast<const uint8_t *>(sample.Get())));
    EXPECT_STREQ("021a-2b3c-4d5e", SRV_MacAddrToStr(reinterpret_cast<const uint8_t *>(sample.Get()), room.text));
    EXPECT_STREQ("02-1a-2b-3c-4d-5e",
                 SRV_MacAddrToStrPswWithType(reinterpret_cast<const uint8_t *>(sample.Get()), room.text, 1, 1, 0, 0));
}

} // namespace
