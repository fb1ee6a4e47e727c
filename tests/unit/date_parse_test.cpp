#include <uvelcommon_base/kivo_date.h>

#include <array>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "fuzz/date_reference.h"
#include "host/sanitizers.h"
#include "kit.h"
#include "unit/guarded_text.h"

namespace {

/* Year, month, day, hour, minute, second, weekday. */
using Fields = std::array<int, 7>;

Fields FieldsOf(const SRV_DATE_S &date) {
    return {date.usYear, date.ucMonth, date.ucDay, date.ucHour, date.ucMinute, date.ucSecond, date.ucWeekDay};
}

/* What a record holds before it is read into: 1 is in no field of the texts below. */
constexpr int X = 0xEE;
constexpr int XYEAR = 0xEEEE;

struct Read {
    uint32_t result;
    Fields fields;
};

Read ReadDate(const std::string &text) {
    static GuardedRoom room(200000);
    SRV_DATE_S date;
    std::memset(&date, X, sizeof date);
    const uint32_t result = SRV_StringToDate(room.Put(text), &date);
    return {result, FieldsOf(date)};
}

void ExpectDate(const std::string &text, const Fields &fields) {
    const Read read = ReadDate(text);
    EXPECT_EQ(0u, read.result) << text;
    EXPECT_EQ(fields, read.fields) << text;
}

void ExpectFailure(const std::string &text, const Fields &fields) {
    const Read read = ReadDate(text);
    EXPECT_EQ(1u, read.result) << text;
    EXPECT_EQ(fields, read.fields) << text;
}

TEST(DateParse, ReadsTheWritersForm) {
    ExpectDate("MON, 7 Mar 2024 09:05:00", {2024, 3, 7, 9, 5, 0, 1});
    ExpectDate("SAT, 31 Dec 2105 23:59:59", {2105, 12, 31, 23, 59, 59, 6});
}

TEST(DateParse, IgnoresWhatFollowsTheSeconds) {
    ExpectDate("Sunday 01 jan 99 1:2:3 GMT", {2099, 1, 1, 1, 2, 3, 0});
    ExpectDate("MON, 7 Mar 2024 09:05:17 -x!", {2024, 3, 7, 9, 5, 17, 1});
    ExpectDate("MON, 7 Mar 2024 09:05:17,", {2024, 3, 7, 9, 5, 17, 1});
    ExpectDate("MON, 7 Mar 2024 09:05:17:x", {2024, 3, 7, 9, 5, 17, 1});
    ExpectDate("MON, 7 Mar 2024 09:05:17\t", {2024, 3, 7, 9, 5, 17, 1});
}

TEST(DateParse, ReadsEveryWeekdayShortAndLongInAnyCase) {
    const struct {
        const char *name;
        int weekday;
    } names[] = {{"SUN", 0},    {"MON", 1},      {"TUE", 2},    {"WED", 3},     {"THU", 4},       {"FRI", 5},
                 {"SAT", 6},    {"SUNDAY", 0},   {"MONDAY", 1}, {"TUESDAY", 2}, {"WEDNESDAY", 3}, {"THURSDAY", 4},
                 {"FRIDAY", 5}, {"SATURDAY", 6}, {"mon", 1},    {"tUeSdAy", 2}, {"Sat", 6},       {"saturdaY", 6}};
    for (const auto &name : names)
        ExpectDate(std::string(name.name) + " 2 Feb 2000 3:4:5", {2000, 2, 2, 3, 4, 5, name.weekday});
}

TEST(DateParse, CountsEveryOtherWordInTheWeekdaysPlaceAsSunday) {
    for (const char *word : {"Foo", "M", "Mo", "Mond", "Monda", "Mondayy", "TueX", "\xEDON", "\x0D\x0F\x0E", "MO\x6F",
                             "8", "WED.", "[ON", "SATURDAYSATURDAYSATURDAYSATURDAY"})
        ExpectDate(std::string(word) + " 2 Feb 2000 3:4:5", {2000, 2, 2, 3, 4, 5, 0});
}

TEST(DateParse, SkipsSeparatorsBeforeTheWeekday) {
    ExpectDate(" \t:,Tue,2 Feb 2000 3:4:5", {2000, 2, 2, 3, 4, 5, 2});
}

TEST(DateParse, TakesALeadingHyphenAsAnEmptyWeekday) {
    ExpectDate("-2 Feb 2000 3:4:5", {2000, 2, 2, 3, 4, 5, 0});
    ExpectDate(" - - 2 Feb 2000 3:4:5", {2000, 2, 2, 3, 4, 5, 0});
    ExpectFailure("-Mon 2 Feb 2000 3:4:5", {XYEAR, X, X, X, X, X, 0});
}

TEST(DateParse, TakesADayInFrontAsTheWeekday) {
    ExpectFailure("7 Mar 2024 09:05:00", {XYEAR, X, X, X, X, X, 0});
}

TEST(DateParse, ReadsEveryMonthInAnyCase) {
    const char *names[] = {"JAN", "Feb", "mar", "aPR", "May", "jun", "JUL", "AuG", "SEP", "oct", "NOV", "dec"};
    for (int i = 0; i < 12; ++i)
        ExpectDate("Mon 2 " + std::string(names[i]) + " 2000 3:4:5", {2000, i + 1, 2, 3, 4, 5, 1});
}

TEST(DateParse, CountsEveryOtherWordInTheMonthsPlaceAsMonthZero) {
    ExpectDate("Foo, 1 Xyz 2024 00:00:00", {2024, 0, 1, 0, 0, 0, 0});
    for (const char *word : {"March", "Ma", "M", "3", "Mar.", "\xCD\xC1\xD2", "J\x01N", "Decc", "fEbruary"})
        ExpectDate("Mon 2 " + std::string(word) + " 2000 3:4:5", {2000, 0, 2, 3, 4, 5, 1});
}

TEST(DateParse, CountsYearsBelow1000From2000) {
    const struct {
        const char *written;
        int year;
    } years[] = {{"24", 2024},     {"024", 2024}, {"0", 2000},  {"999", 2999},           {"1000", 1000}, {"1999", 1999},
                 {"65535", 65535}, {"65536", 0},  {"65537", 1}, {"0000000000024", 2024}, {"67560", 2024}};
    for (const auto &year : years)
        ExpectDate("Mon 2 Feb " + std::string(year.written) + " 3:4:5", {year.year, 2, 2, 3, 4, 5, 1});
}

TEST(DateParse, ReadsADashedFormWithAnEmptyYear) {
    ExpectDate("Mon, 07-Mar-2024 10:00:00", {2000, 3, 7, 232, 10, 0, 1});
}

TEST(DateParse, TakesAHyphenBetweenOtherFieldsAsASeparator) {
    ExpectDate("Mon-7-Mar 2024-9-5-1", {2024, 3, 7, 9, 5, 1, 1});
    ExpectDate("Mon- ,7 -:Mar\t,2024 --9\t5-:1", {2024, 3, 7, 9, 5, 1, 1});
}

TEST(DateParse, DoesNotSkipAHyphenBeforeTheYearEvenBehindBlanks) {
    ExpectDate("Mon 7 Mar , -2024 9:5:1", {2000, 3, 7, 232, 9, 5, 1});
}

TEST(DateParse, DoesNotCheckRanges) {
    ExpectDate("Mon, 45 Feb 2023 99:61:62", {2023, 2, 45, 99, 61, 62, 1});
}

TEST(DateParse, CutsNumbersToTheirField) {
    ExpectDate("Mon, 256 Feb 66000 257:511:4294967295", {464, 2, 0, 1, 255, 255, 1});
    ExpectDate("Mon, 999999999 Feb 999999999 1000000000:0001:2", {0xC9FF, 2, 255, 0, 1, 2, 1});
}

TEST(DateParse, CutsNumbersBeyond32BitsToTheirLowBits) {
    ExpectDate("Mon, 4294967296 Feb 4294967297 18446744073709551615:4294967303:4294967304", {2001, 2, 0, 255, 7, 8, 1});
}

TEST(DateParse, AcceptsNumbersOfManyDigits) {
    ExpectDate("M, " + std::string(60, '0') + "7 Mar 2024 9:5:1", {2024, 3, 7, 9, 5, 1, 0});
}

TEST(DateParse, FailsForNull) {
    SRV_DATE_S date;
    std::memset(&date, X, sizeof date);
    EXPECT_EQ(1u, SRV_StringToDate(nullptr, &date));
    EXPECT_EQ((Fields{XYEAR, X, X, X, X, X, X}), FieldsOf(date));
    EXPECT_EQ(1u, SRV_StringToDate("MON, 7 Mar 2024 09:05:00", nullptr));
    EXPECT_EQ(1u, SRV_StringToDate(nullptr, nullptr));
}

TEST(DateParse, AcceptsEightyCharactersAndNotOneMore) {
    std::string text = "MON, 7 Mar 2024 09:05:00";
    text.resize(80, ' ');
    ExpectDate(text, {2024, 3, 7, 9, 5, 0, 1});
    text.resize(81, ' ');
    ExpectFailure(text, {XYEAR, X, X, X, X, X, X});
    text.resize(100000, ' ');
    ExpectFailure(text, {XYEAR, X, X, X, X, X, X});
}

/* Every beginning of a text fails at the first field it lacks, and stores those it has. */
TEST(DateParse, KeepsTheFieldsBeforeTheEndOfACutText) {
    const struct {
        const char *text;
        Fields fields;
    } cases[] = {
        {"", {XYEAR, X, X, X, X, X, 0}},
        {" \t,:", {XYEAR, X, X, X, X, X, 0}},
        {"-", {XYEAR, X, X, X, X, X, 0}},
        {"MON", {XYEAR, X, X, X, X, X, 1}},
        {"MON, -", {XYEAR, X, X, X, X, X, 1}},
        {"MON, 7", {XYEAR, X, 7, X, X, X, 1}},
        {"MON, 7 ", {XYEAR, X, 7, X, X, X, 1}},
        {"MON, 7 M", {XYEAR, 0, 7, X, X, X, 1}},
        {"MON, 7 Mar", {XYEAR, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar ", {XYEAR, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar -", {2000, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024", {2024, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024 ", {2024, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024 09", {2024, 3, 7, 9, X, X, 1}},
        {"MON, 7 Mar 2024 09:", {2024, 3, 7, 9, X, X, 1}},
        {"MON, 7 Mar 2024 09:05", {2024, 3, 7, 9, 5, X, 1}},
        {"MON, 7 Mar 2024 09:05:", {2024, 3, 7, 9, 5, X, 1}},
    };
    for (const auto &c : cases)
        ExpectFailure(c.text, c.fields);
}

TEST(DateParse, KeepsTheFieldsBeforeAForeignCharacter) {
    const struct {
        const char *text;
        Fields fields;
    } cases[] = {
        {"MON, 7x Mar 2024 09:05:00", {XYEAR, X, X, X, X, X, 1}},
        {"MON, x7 Mar 2024 09:05:00", {XYEAR, X, X, X, X, X, 1}},
        {"MON, +7 Mar 2024 09:05:00", {XYEAR, X, X, X, X, X, 1}},
        {"MON, 7\n Mar 2024 09:05:00", {XYEAR, X, X, X, X, X, 1}},
        {"MON, 7 Mar x 09:05:00", {XYEAR, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024x 09:05:00", {XYEAR, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024 x:05:00", {2024, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024 09x:05:00", {2024, 3, 7, X, X, X, 1}},
        {"MON, 7 Mar 2024 09:x:00", {2024, 3, 7, 9, X, X, 1}},
        {"MON, 7 Mar 2024 09:05x:00", {2024, 3, 7, 9, X, X, 1}},
        {"MON, 7 Mar 2024 09:05:x", {2024, 3, 7, 9, 5, X, 1}},
        {"MON, 7 Mar 2024 09:05:0x", {2024, 3, 7, 9, 5, X, 1}},
        {"MON, 7 Mar 2024 09:05:0\xB2", {2024, 3, 7, 9, 5, X, 1}},
    };
    for (const auto &c : cases)
        ExpectFailure(c.text, c.fields);
}

TEST(DateParse, FailsForAHyphenInsideTheSeconds) {
    ExpectFailure("MON, 7 Mar 2024 09:05:0-1", {2024, 3, 7, 9, 5, X, 1});
    ExpectFailure("MON, 7 Mar 2024 09:05:17-", {2024, 3, 7, 9, 5, X, 1});
}

TEST(DateParse, ReadsWhatTheWriterWroteForEveryDayFrom1970To2105) {
    static const char *const weekdays[] = {"SUN", "MON", "TUE", "WED", "THU", "FRI", "SAT"};
    int days = 0;
    for (time_t now = 0; now < 4291747200; now += 86400, ++days) { /* 2106-01-01 */
        /* A time of day that differs from day to day; date and weekday come from the C library. */
        const time_t moment = now + days * 7919L % 86400;
        struct tm utc {};
        ASSERT_NE(nullptr, gmtime_r(&moment, &utc));
        const SRV_DATE_S date = {static_cast<uint16_t>(utc.tm_year + 1900), static_cast<uint8_t>(utc.tm_mon + 1),
                                 static_cast<uint8_t>(utc.tm_mday),         static_cast<uint8_t>(utc.tm_hour),
                                 static_cast<uint8_t>(utc.tm_min),          static_cast<uint8_t>(utc.tm_sec),
                                 static_cast<uint8_t>(utc.tm_wday)};
        char expected[64];
        char behindWeekday[40];
        std::strftime(behindWeekday, sizeof behindWeekday, "%b %Y %H:%M:%S", &utc);
        std::snprintf(expected, sizeof expected, "%s, %d %s", weekdays[utc.tm_wday], utc.tm_mday, behindWeekday);
        char text[32];
        ASSERT_EQ(0u, SRV_DateToString(&date, text, sizeof text));
        ASSERT_STREQ(expected, text);

        SRV_DATE_S back;
        std::memset(&back, X, sizeof back);
        ASSERT_EQ(0u, SRV_StringToDate(text, &back));
        ASSERT_EQ(FieldsOf(date), FieldsOf(back)) << text;
        /* The weekday also by a congruence that counts no days (Zeller's). */
        const int month = back.ucMonth < 3 ? back.ucMonth + 12 : back.ucMonth;
        const int year = back.ucMonth < 3 ? back.usYear - 1 : back.usYear;
        const int zeller = (back.ucDay + 13 * (month + 1) / 5 + year + year / 4 - year / 100 + year / 400) % 7;
        ASSERT_EQ((zeller + 6) % 7, back.ucWeekDay) << text;
    }
    EXPECT_EQ(49673, days);
}

TEST(DateParse, AgreesWithASlowReaderOnChangedTexts) {
    constexpr uint32_t SEED = 20240307;
    constexpr int TEXTS = UNDER_SANITIZER ? 30000 : 200000;
    const std::string alphabet = "0123456789 \t:,-MONmarxJ\x80\n";
    const std::string seeds[] = {"MON, 7 Mar 2024 09:05:00", "Sunday 01 jan 99 1:2:3 GMT", "Mon, 07-Mar-2024 10:00:00",
                                 "- 1 - 2 - 3 4 5 6 7", "wednesday\t4294967296 Dec 18446744073709551616:1:2:3"};
    std::mt19937 random(SEED);
    int accepted = 0;
    for (int i = 0; i < TEXTS; ++i) {
        std::string text = seeds[random() % std::size(seeds)];
        for (auto changes = random() % 6; changes > 0; --changes) {
            const std::size_t at = random() % (text.size() + 1);
            const char c = alphabet[random() % alphabet.size()];
            if (at == text.size() || random() % 3 == 0)
                text.insert(at, 1, c);
            else if (random() % 2 == 0)
                text[at] = c;
            else
                text.erase(at, 1 + random() % 4);
        }
        SRV_DATE_S expected;
        std::memset(&expected, X, sizeof expected);
        bool huge = false;
        const uint32_t result = DateReference::Read(text, expected, huge);
        const Read read = ReadDate(text);
        ASSERT_EQ(result, read.result) << text << " (seed " << SEED << ", text " << i << ")";
        if (!huge) {
            ASSERT_EQ(FieldsOf(expected), read.fields) << text << " (seed " << SEED << ", text " << i << ")";
        }
        accepted += result == 0 ? 1 : 0;
    }
    EXPECT_GT(accepted, TEXTS / 10);
    EXPECT_LT(accepted, TEXTS / 10 * 9);
}

} // namespace
