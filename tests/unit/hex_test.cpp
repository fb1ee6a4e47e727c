#include <uvelcommon_base/kivo_hex.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kit.h"
#include "unit/guarded_text.h"

namespace {

std::vector<uint8_t> RandomBytes(std::size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(size);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}

std::string Printed(const std::vector<uint8_t> &bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02X", byte);
        text += pair;
    }
    return text;
}

struct Filtered {
    uint32_t digits;
    std::string dest; /* all of the destination, '#' where nothing was written */
};

Filtered Filter(const std::string &source) {
    const GuardedText guarded(source);
    std::string dest(source.size() + 2, '#');
    const uint32_t digits = SRVHEX_FilterBlank(guarded, dest.data());
    EXPECT_EQ('#', dest.back());
    return {digits, dest};
}

TEST(HexFilter, DropsBlanksAndTerminates) {
    const Filtered filtered = Filter("0a 1B");
    EXPECT_EQ(4u, filtered.digits);
    EXPECT_STREQ("0a1B", filtered.dest.c_str());
    EXPECT_STREQ("0123456789ABCDEFabcdef", Filter("  0123456789 ABCDEF   abcdef ").dest.c_str());
    EXPECT_EQ(22u, Filter("  0123456789 ABCDEF   abcdef ").digits);
}

TEST(HexFilter, StopsWithoutTerminatorAtAnythingElse) {
    const Filtered filtered = Filter("0a-1B");
    EXPECT_EQ(0u, filtered.digits);
    EXPECT_EQ("0a#####", filtered.dest);
    EXPECT_EQ("0a#####", Filter("0a\t1B").dest);
    EXPECT_EQ("123####", Filter("12 3g").dest);
    EXPECT_EQ(0u, Filter("g").digits);
    EXPECT_EQ("###", Filter("g").dest);
}

TEST(HexFilter, KnowsEveryCharacter) {
    for (int c = 1; c < 256; ++c) {
        const Filtered filtered = Filter(std::string(1, static_cast<char>(c)));
        const bool digit = std::strchr("0123456789abcdefABCDEF", c) != nullptr;
        EXPECT_EQ(digit ? 1u : 0u, filtered.digits) << c;
        EXPECT_EQ(digit ? static_cast<char>(c) : c == ' ' ? '\0' : '#', filtered.dest[0]) << c;
    }
}

TEST(HexFilter, MakesAnEmptyTextOfNothing) {
    EXPECT_EQ(0u, Filter("").digits);
    EXPECT_EQ(std::string("\0#", 2), Filter("").dest);
    EXPECT_EQ(0u, Filter("   ").digits);
    EXPECT_STREQ("", Filter("   ").dest.c_str());
    char dest[2] = "#";
    EXPECT_EQ(0u, SRVHEX_FilterBlank(nullptr, dest));
    EXPECT_STREQ("", dest);
    EXPECT_EQ(0u, SRVHEX_FilterBlank("12", nullptr));
}

TEST(HexFilter, WorksInPlace) {
    char text[] = " 1 2 a F ";
    EXPECT_EQ(4u, SRVHEX_FilterBlank(text, text));
    EXPECT_STREQ("12aF", text);
}

TEST(HexToText, WritesUpperCasePairs) {
    const uint8_t bytes[] = {0x0F, 0xA0};
    char text[8];
    uint32_t length = 99;
    EXPECT_EQ(text, SRVHEX_TransHexDataToString(bytes, 2, text, sizeof text, &length));
    EXPECT_STREQ("0FA0", text);
    EXPECT_EQ(4u, length);
}

TEST(HexToText, WritesEveryLengthWithinTheRoomItNeeds) {
    for (std::size_t size = 0; size <= 200; ++size) {
        const std::vector<uint8_t> bytes = RandomBytes(size, static_cast<uint32_t>(size));
        const GuardedText guarded(bytes.data(), bytes.size());
        std::string text(2 * size + 2, '#');
        uint32_t length = 99;
        EXPECT_EQ(text.data(), SRVHEX_TransHexDataToString(guarded, static_cast<uint32_t>(size), text.data(),
                                                           static_cast<uint32_t>(2 * size + 1), &length));
        EXPECT_EQ(2 * size, length);
        EXPECT_EQ(Printed(bytes), text.c_str());
        EXPECT_EQ('#', text.back());
    }
}

TEST(HexToText, WritesEveryByteValueInEveryLane) {
    for (unsigned shift = 0; shift < 16; ++shift) {
        std::vector<uint8_t> bytes(256);
        for (unsigned i = 0; i < 256; ++i)
            bytes[i] = static_cast<uint8_t>(i + shift);
        char text[513];
        SRVHEX_TransHexDataToString(bytes.data(), 256, text, sizeof text, nullptr);
        EXPECT_EQ(Printed(bytes), text);
    }
}

TEST(HexToText, GivesTheWholePairsThatFitAShortBuffer) {
    const std::vector<uint8_t> bytes = RandomBytes(40, 40);
    const std::string whole = Printed(bytes);
    for (uint32_t size = 1; size <= 84; ++size) {
        std::string text(90, '#');
        uint32_t length = 99;
        EXPECT_EQ(text.data(), SRVHEX_TransHexDataToString(bytes.data(), 40, text.data(), size, &length));
        const uint32_t fits = std::min(80u, (size - 1) / 2 * 2);
        EXPECT_EQ(fits, length);
        EXPECT_EQ(whole.substr(0, fits), text.c_str());
        EXPECT_EQ(std::string(90 - fits - 1, '#'), text.substr(fits + 1));
    }
}

TEST(HexToText, WritesNothingIntoABufferOfNoBytes) {
    const uint8_t bytes[] = {1, 2};
    char text[4] = "###";
    uint32_t length = 99;
    EXPECT_EQ(text, SRVHEX_TransHexDataToString(bytes, 2, text, 0, &length));
    EXPECT_STREQ("###", text);
    EXPECT_EQ(0u, length);
}

TEST(HexToText, ALengthOfNothingGivesAnEmptyText) {
    const uint8_t bytes[] = {1, 2};
    char text[4] = "###";
    uint32_t length = 99;
    EXPECT_EQ(text, SRVHEX_TransHexDataToString(bytes, 0, text, 4, &length));
    EXPECT_EQ(std::string("\0##", 3), std::string(text, 3));
    EXPECT_EQ(0u, length);
}

TEST(HexToText, ALengthBeyondTheRoomIsComputedWithoutOverflow) {
    const std::vector<uint8_t> bytes = RandomBytes(16, 16);
    for (const uint32_t claimed : {0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
        std::string text(40, '#');
        uint32_t length = 99;
        SRVHEX_TransHexDataToString(bytes.data(), claimed, text.data(), 33, &length);
        EXPECT_EQ(32u, length);
        EXPECT_EQ(Printed(bytes), text.c_str());
        EXPECT_EQ(std::string(7, '#'), text.substr(33));
    }
}

TEST(HexToText, NullPointersAreNoCrash) {
    const uint8_t bytes[] = {0xAB};
    char text[4] = "###";
    uint32_t length = 99;
    EXPECT_EQ(nullptr, SRVHEX_TransHexDataToString(bytes, 1, nullptr, 4, &length));
    EXPECT_EQ(0u, length);
    length = 99;
    EXPECT_EQ(text, SRVHEX_TransHexDataToString(nullptr, 1, text, 4, &length));
    EXPECT_STREQ("", text);
    EXPECT_EQ(0u, length);
    EXPECT_EQ(text, SRVHEX_TransHexDataToString(bytes, 1, text, 4, nullptr));
    EXPECT_STREQ("AB", text);
}

struct Packed {
    uint32_t count;
    std::vector<uint8_t> bytes; /* all of the output, 0xEE where nothing was written */
};

Packed Pack(const std::string &text) {
    static GuardedRoom room(1024);
    std::vector<uint8_t> bytes(text.size() / 2 + 2, 0xEE);
    const uint32_t count = SRVHEX_TransStringToData(room.Put(text), bytes.data());
    EXPECT_EQ(0xEE, bytes.back()) << text;
    return {count, bytes};
}

TEST(HexToData, PacksTwoDigitsAByte) {
    EXPECT_EQ(2u, Pack("0FA0").count);
    EXPECT_EQ((std::vector<uint8_t>{0x0F, 0xA0, 0xEE, 0xEE}), Pack("0FA0").bytes);
    EXPECT_EQ((std::vector<uint8_t>{0xAB, 0xCD, 0xEF, 0xEE, 0xEE}), Pack("abCdeF").bytes);
}

TEST(HexToData, AnOddDigitIsTheHighOneOfTheLastByte) {
    EXPECT_EQ(2u, Pack("ABC").count);
    EXPECT_EQ((std::vector<uint8_t>{0xAB, 0xC0, 0xEE}), Pack("ABC").bytes);
    EXPECT_EQ(1u, Pack("1").count);
    EXPECT_EQ((std::vector<uint8_t>{0x10, 0xEE}), Pack("1").bytes);
}

TEST(HexToData, StopsAtTheFirstOtherCharacter) {
    EXPECT_EQ(1u, Pack("12g4").count);
    EXPECT_EQ((std::vector<uint8_t>{0x12, 0xEE, 0xEE, 0xEE}), Pack("12g4").bytes);
    EXPECT_EQ(2u, Pack("123 4").count);
    EXPECT_EQ((std::vector<uint8_t>{0x12, 0x30, 0xEE, 0xEE}), Pack("123 4").bytes);
}

TEST(HexToData, GivesOneWithoutAnyDigitAndWritesNothing) {
    EXPECT_EQ(1u, Pack("").count);
    EXPECT_EQ((std::vector<uint8_t>{0xEE, 0xEE}), Pack("").bytes);
    EXPECT_EQ(1u, Pack("g123").count);
    EXPECT_EQ((std::vector<uint8_t>{0xEE, 0xEE, 0xEE, 0xEE}), Pack("g123").bytes);
    uint8_t byte = 0xEE;
    EXPECT_EQ(1u, SRVHEX_TransStringToData(nullptr, &byte));
    EXPECT_EQ(0xEE, byte);
}

TEST(HexToData, GivesOneWithoutAnyDigitThoughThereIsNoBuffer) {
    EXPECT_EQ(1u, SRVHEX_TransStringToData("", nullptr));
    EXPECT_EQ(1u, SRVHEX_TransStringToData("g123", nullptr));
    EXPECT_EQ(1u, SRVHEX_TransStringToData(nullptr, nullptr));
}

TEST(HexToData, GivesZeroForDigitsWithoutABuffer) {
    EXPECT_EQ(0u, SRVHEX_TransStringToData("12", nullptr));
    EXPECT_EQ(0u, SRVHEX_TransStringToData("1", nullptr));
    EXPECT_EQ(0u, SRVHEX_TransStringToData("12g", nullptr));
}

TEST(HexToData, ReadsBackWhatWasWrittenInEveryLengthAndCase) {
    for (std::size_t size = 1; size <= 200; ++size) {
        const std::vector<uint8_t> bytes = RandomBytes(size, static_cast<uint32_t>(size));
        std::string text = Printed(bytes);
        for (std::size_t i = 0; i < text.size(); i += 3)
            text[i] = static_cast<char>(std::tolower(text[i]));
        Packed packed = Pack(text);
        EXPECT_EQ(size, packed.count);
        packed.bytes.resize(size);
        EXPECT_EQ(bytes, packed.bytes);
    }
}

TEST(HexToData, EveryCharacterAtEveryPlaceIsADigitOrTheEnd) {
    const std::string digits(100, '5');
    for (int c = 1; c < 256; ++c) {
        const char *digit = std::strchr("0123456789abcdef", std::tolower(c));
        for (std::size_t at = 0; at < digits.size(); ++at) {
            std::string text = digits;
            text[at] = static_cast<char>(c);
            const Packed packed = Pack(text);
            std::vector<uint8_t> expected(52, 0xEE);
            const std::size_t end = digit != nullptr ? digits.size() : at;
            std::fill_n(expected.begin(), (end + 1) / 2, static_cast<uint8_t>(0x55));
            if (digit != nullptr) {
                const long value = std::strtol(std::string(1, static_cast<char>(c)).c_str(), nullptr, 16);
                expected[at / 2] = static_cast<uint8_t>(at % 2 == 0 ? value * 16 + 5 : 0x50 + value);
            } else if (end % 2 == 1) {
                expected[end / 2] = 0x50;
            }
            ASSERT_EQ(expected, packed.bytes) << "character " << c << " at " << at;
            ASSERT_EQ(end == 0 ? 1 : (end + 1) / 2, packed.count) << "character " << c << " at " << at;
        }
    }
}

TEST(HexToData, WorksInPlace) {
    const std::vector<uint8_t> bytes = RandomBytes(77, 77);
    std::string text = Printed(bytes);
    EXPECT_EQ(77u, SRVHEX_TransStringToData(text.c_str(), text.data()));
    EXPECT_EQ(0, std::memcmp(bytes.data(), text.data(), 77));
}

TEST(HexCount, CountsDigitsWhateverLiesBetween) {
    EXPECT_EQ(3u, SRVHEX_CalcXdigitNum("x1-2:Fz"));
    EXPECT_EQ(22u, SRVHEX_CalcXdigitNum(GuardedText("0123456789abcdefABCDEFghijGHIJ /:@`")));
    EXPECT_EQ(0u, SRVHEX_CalcXdigitNum("xyz"));
    EXPECT_EQ(0u, SRVHEX_CalcXdigitNum(""));
    EXPECT_EQ(0u, SRVHEX_CalcXdigitNum(nullptr));
}

} // namespace
