#include <uvelhost/strings.h>

#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

TEST(HostStrings, LengthCountsTheBytesBeforeTheTerminator) {
    EXPECT_EQ(0u, QAL_StrLen(""));
    EXPECT_EQ(3u, QAL_StrLen("abc"));
    EXPECT_EQ(2u, QAL_StrLen("\xC3\xA4"));
    EXPECT_EQ(0u, QAL_StrLen(nullptr));
}

TEST(HostStrings, ComparisonTellsTheOrderOfTheFirstDifferentByte) {
    EXPECT_EQ(0, QAL_MemCmp("abc", "abc", 3));
    EXPECT_LT(QAL_MemCmp("abc", "abd", 3), 0);
    EXPECT_GT(QAL_MemCmp("abd", "abc", 3), 0);
    EXPECT_EQ(0, QAL_MemCmp("abc", "abd", 2));
}

TEST(HostStrings, ComparisonTakesBytesAsUnsignedAndDoesNotStopAtZero) {
    EXPECT_GT(QAL_MemCmp("\x80", "\x7F", 1), 0);
    EXPECT_LT(QAL_MemCmp("a\0b", "a\0c", 3), 0);
}

TEST(HostStrings, AreasOfLengthZeroAreEqual) {
    EXPECT_EQ(0, QAL_MemCmp("a", "b", 0));
    EXPECT_EQ(0, QAL_MemCmp(nullptr, nullptr, 0));
}

namespace {

struct NumberRow {
    const char *text;
    uint32_t base;
    uint32_t value;
    std::size_t read; /* characters that belong to the number, 0 when there is none */
};

void PrintTo(const NumberRow &row, std::ostream *out) {
    *out << "base " << row.base;
}

/* By the rules of strtoul for an unsigned long of 32 bits. */
constexpr NumberRow NUMBERS[] = {
    {"0", 10, 0, 1},
    {"42", 10, 42, 2},
    {"042", 10, 42, 3},
    {" \t\n\v\f\r42", 10, 42, 8},
    {"+42", 10, 42, 3},
    {"-1", 10, 0xFFFFFFFF, 2},
    {"-2", 10, 0xFFFFFFFE, 2},
    {"-4294967295", 10, 1, 11},
    {"-4294967296", 10, 0xFFFFFFFF, 11},
    {"4294967295", 10, 0xFFFFFFFF, 10},
    {"4294967296", 10, 0xFFFFFFFF, 10},
    {"99999999999999999999999999", 10, 0xFFFFFFFF, 26},
    {"18446744073709551617", 10, 0xFFFFFFFF, 20},
    {"12abc", 10, 12, 2},
    {"12 34", 10, 12, 2},
    {"", 10, 0, 0},
    {"   ", 10, 0, 0},
    {"abc", 10, 0, 0},
    {"+", 10, 0, 0},
    {"-", 10, 0, 0},
    {"+-1", 10, 0, 0},
    {"- 1", 10, 0, 0},
    {"ff", 16, 255, 2},
    {"FF", 16, 255, 2},
    {"0xFf", 16, 255, 4},
    {"0Xff", 16, 255, 4},
    {"-0x10", 16, 0xFFFFFFF0, 5},
    {"0x", 16, 0, 1},
    {"0xg", 16, 0, 1},
    {"0x10", 10, 0, 1},
    {"0x1F", 0, 31, 4},
    {"017", 0, 15, 3},
    {"08", 0, 0, 1},
    {"0x", 0, 0, 1},
    {"19", 0, 19, 2},
    {"0", 0, 0, 1},
    {"102", 2, 2, 2},
    {"z", 36, 35, 1},
    {"Z", 36, 35, 1},
    {"1z141z3", 36, 0xFFFFFFFF, 7},
    {"1z141z2", 36, 0xFFFFFFFE, 7},
    {"1z141z4", 36, 0xFFFFFFFF, 7},
    {"g", 16, 0, 0},
    {"7", 1, 0, 0},
    {"7", 37, 0, 0},
    {"7", 0xFFFFFFFF, 0, 0},
    {"/", 10, 0, 0},
    {":", 10, 0, 0},
    {"@", 36, 0, 0},
    {"`", 36, 0, 0},
    {"\xB2", 10, 0, 0},
};

} // namespace

class HostNumbers : public testing::TestWithParam<NumberRow> {};

TEST_P(HostNumbers, AreReadLikeStrtoulDoes) {
    const NumberRow &row = GetParam();
    char *end = nullptr;
    EXPECT_EQ(row.value, QAL_strtoul(row.text, &end, row.base)) << '"' << row.text << "\" in base " << row.base;
    EXPECT_EQ(row.text + row.read, end);
    EXPECT_EQ(row.value, QAL_strtoul(row.text, nullptr, row.base));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostNumbers, testing::ValuesIn(NUMBERS));

TEST(HostStrings, ANullTextIsTheNumberZeroAndLeavesTheEndAlone) {
    char *end = reinterpret_cast<char *>(1);
    EXPECT_EQ(0u, QAL_strtoul(nullptr, &end, 10));
    EXPECT_EQ(reinterpret_cast<char *>(1), end);
}

TEST(HostStrings, DottedQuadsAreReadMostSignificantOctetFirst) {
    const struct {
        const char *text;
        uint32_t address;
    } rows[] = {{"10.1.2.3", 0x0A010203},        {"0.0.0.0", 0},           {"255.255.255.255", 0xFFFFFFFF},
                {"192.168.0.1", 0xC0A80001},     {"1.2.3.4", 0x01020304},  {"001.002.003.004", 0x01020304},
                {"010.000.000.099", 0x0A000063}, {"127.0.0.1", 0x7F000001}};
    for (const auto &row : rows) {
        uint32_t address = 0x55555555;
        EXPECT_EQ(0u, QAL_StrToIpAddr(row.text, &address)) << row.text;
        EXPECT_EQ(row.address, address) << row.text;
    }
}

TEST(HostStrings, EverythingElseIsNoAddressAndWritesNothing) {
    const char *texts[] = {"",          "1",         "1.2.3",     "1.2.3.",    "1.2.3.4.",   ".1.2.3.4",  "1..3.4",
                           "1.2.3.4.5", "256.1.1.1", "1.1.1.256", "1.999.1.1", "0001.2.3.4", " 1.2.3.4",  "1.2.3.4 ",
                           "1.2.3.a",   "1.2.3.-4",  "1.2.3.+4",  "1,2,3,4",   "0x1.2.3.4",  "1.2.3.4\n", "a.b.c.d"};
    for (const char *text : texts) {
        uint32_t address = 0x55555555;
        EXPECT_EQ(1u, QAL_StrToIpAddr(text, &address)) << '"' << text << '"';
        EXPECT_EQ(0x55555555u, address);
    }
}

TEST(HostStrings, NullArgumentsAreNoAddress) {
    uint32_t address = 0x55555555;
    EXPECT_EQ(1u, QAL_StrToIpAddr(nullptr, &address));
    EXPECT_EQ(1u, QAL_StrToIpAddr("1.2.3.4", nullptr));
    EXPECT_EQ(0x55555555u, address);
}
