#include <uvelcommon_base/kivo_string.h>

#include <string>

#include "kit.h"

namespace {

const std::string UPPER = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string LOWER = "abcdefghijklmnopqrstuvwxyz";

/* All bytes that can stand in a text, in order. */
std::string AllBytes() {
    std::string text;
    for (int byte = 1; byte < 256; ++byte)
        text.push_back(static_cast<char>(byte));
    return text;
}

TEST(StringToUpper, ChangesTheLettersOfAText) {
    char text[] = "mon, 7 mar";
    EXPECT_EQ(0u, SRV_StringToUpper(text));
    EXPECT_STREQ("MON, 7 MAR", text);
}

TEST(StringToUpper, ChangesNoByteButTheTwentySixLetters) {
    std::string text = AllBytes();
    std::string expected = text;
    expected.replace(expected.find('a'), 26, UPPER);
    EXPECT_EQ(0u, SRV_StringToUpper(text.data()));
    EXPECT_EQ(expected, text);
}

TEST(StringToUpper, StopsAtTheTerminator) {
    char text[] = "ab\0cd";
    EXPECT_EQ(0u, SRV_StringToUpper(text));
    EXPECT_EQ(std::string("AB\0cd", 5), std::string(text, 5));
}

TEST(StringToUpper, LeavesAnEmptyTextEmpty) {
    char text[] = "";
    EXPECT_EQ(0u, SRV_StringToUpper(text));
    EXPECT_STREQ("", text);
}

TEST(StringToUpper, MeasuresWithTheHostsLength) {
    char text[] = "abcd";
    kit::Op<QAL_StrLen>().Returns(2);
    EXPECT_EQ(0u, SRV_StringToUpper(text));
    EXPECT_STREQ("ABcd", text);
    EXPECT_EQ(1u, kit::Op<QAL_StrLen>().Calls());
}

TEST(StringToUpper, RefusesANullText) {
    EXPECT_EQ(1u, SRV_StringToUpper(nullptr));
    EXPECT_EQ(0u, kit::Op<QAL_StrLen>().Calls());
}

TEST(StringToLower, ChangesTheLettersOfAText) {
    char text[] = "00E0-FC12-3456 Z";
    EXPECT_EQ(0u, SRV_StringToLower(text));
    EXPECT_STREQ("00e0-fc12-3456 z", text);
}

TEST(StringToLower, ChangesNoByteButTheTwentySixLetters) {
    std::string text = AllBytes();
    std::string expected = text;
    expected.replace(expected.find('A'), 26, LOWER);
    EXPECT_EQ(0u, SRV_StringToLower(text.data()));
    EXPECT_EQ(expected, text);
}

TEST(StringToLower, StopsAtTheTerminator) {
    char text[] = "AB\0CD";
    EXPECT_EQ(0u, SRV_StringToLower(text));
    EXPECT_EQ(std::string("ab\0CD", 5), std::string(text, 5));
}

TEST(StringToLower, LeavesAnEmptyTextEmpty) {
    char text[] = "";
    EXPECT_EQ(0u, SRV_StringToLower(text));
    EXPECT_STREQ("", text);
}

TEST(StringToLower, RefusesANullText) {
    EXPECT_EQ(1u, SRV_StringToLower(nullptr));
}

struct Reading {
    const char *text;
    uint32_t result;
    uint32_t value;
};

class Atoul : public testing::TestWithParam<Reading> {};

TEST_P(Atoul, ReadsTheNumberAtTheBeginning) {
    uint32_t value = 0xDEADBEEF;
    EXPECT_EQ(GetParam().result, SRV_Atoul(GetParam().text, &value));
    EXPECT_EQ(GetParam().value, value);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Atoul,
    testing::Values(Reading{"0", 0, 0}, Reading{"7", 0, 7}, Reading{"007", 0, 7}, Reading{"12ab", 0, 12},
                    Reading{"12 34", 0, 12}, Reading{"1.5", 0, 1}, Reading{"0x10", 0, 0}, Reading{" 42", 0, 42},
                    Reading{" \t\r\n\v\f42\n", 0, 42}, Reading{"+5", 0, 5}, Reading{"-1", 0, 4294967295},
                    Reading{"-5", 0, 4294967291}, Reading{"-0", 0, 0}, Reading{" -4294967295", 0, 1},
                    Reading{"2147483648", 0, 2147483648}, Reading{"4294967295", 0, 4294967295},
                    Reading{"4294967296", 0, 0}, Reading{"4294967297", 0, 1}, Reading{"", 0xFFFFFFFF, 0},
                    Reading{" ", 0xFFFFFFFF, 0}, Reading{"x1", 0xFFFFFFFF, 0}, Reading{"-", 0xFFFFFFFF, 0},
                    Reading{"+", 0xFFFFFFFF, 0}, Reading{"- 1", 0xFFFFFFFF, 0}, Reading{"--1", 0xFFFFFFFF, 0},
                    Reading{".5", 0xFFFFFFFF, 0}, Reading{"\xA0\x31", 0xFFFFFFFF, 0}),
    [](const testing::TestParamInfo<Reading> &row) { return "Row" + std::to_string(row.index); });

TEST(AtoulArguments, LeaveTheValueAloneWhenTheTextIsNull) {
    uint32_t value = 0xDEADBEEF;
    EXPECT_EQ(0xFFFFFFFFu, SRV_Atoul(nullptr, &value));
    EXPECT_EQ(0xDEADBEEFu, value);
}

TEST(AtoulArguments, MustNameAPlaceForTheValue) {
    EXPECT_EQ(0xFFFFFFFFu, SRV_Atoul("1", nullptr));
    EXPECT_EQ(0xFFFFFFFFu, SRV_Atoul(nullptr, nullptr));
}

} // namespace
