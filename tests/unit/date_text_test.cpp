#include <uvelcommon_base/kivo_date.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "kit.h"

namespace {

using NameWriter = uint32_t (*)(uint32_t, char *, uint32_t);

std::string NameOf(NameWriter write, uint32_t number) {
    char text[8] = "unset";
    EXPECT_EQ(0u, write(number, text, sizeof text));
    return text;
}

void ExpectNoName(NameWriter write, uint32_t number) {
    char text[8] = "unset";
    EXPECT_EQ(1u, write(number, text, sizeof text));
    EXPECT_STREQ("unset", text);
}

std::string TextOf(const SRV_DATE_S &date) {
    char text[40] = "unset";
    EXPECT_EQ(0u, SRV_DateToString(&date, text, sizeof text));
    return text;
}

TEST(DateText, RecordHasItsEightBytesInOrder) {
    EXPECT_EQ(8u, sizeof(SRV_DATE_S));
    EXPECT_EQ(0u, offsetof(SRV_DATE_S, usYear));
    EXPECT_EQ(2u, offsetof(SRV_DATE_S, ucMonth));
    EXPECT_EQ(3u, offsetof(SRV_DATE_S, ucDay));
    EXPECT_EQ(4u, offsetof(SRV_DATE_S, ucHour));
    EXPECT_EQ(5u, offsetof(SRV_DATE_S, ucMinute));
    EXPECT_EQ(6u, offsetof(SRV_DATE_S, ucSecond));
    EXPECT_EQ(7u, offsetof(SRV_DATE_S, ucWeekDay));
}

TEST(DateText, WeekdaysAreWrittenInCapitals) {
    const char *const names[] = {"SUN", "MON", "TUE", "WED", "THU", "FRI", "SAT"};
    for (uint32_t i = 0; i < 7; ++i)
        EXPECT_EQ(names[i], NameOf(SRV_WeekToString, i));
}

TEST(DateText, MonthsAreWrittenInMixedCase) {
    const char *const names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (uint32_t i = 0; i < 12; ++i)
        EXPECT_EQ(names[i], NameOf(SRV_MonthToString, i + 1));
}

TEST(DateText, OtherWeekdaysAndMonthsHaveNoName) {
    for (uint32_t number : {7u, 8u, 255u, 256u, 0x80000000u, 0xFFFFFFFFu})
        ExpectNoName(SRV_WeekToString, number);
    for (uint32_t number : {0u, 13u, 256u, 257u, 0x80000001u, 0xFFFFFFFFu})
        ExpectNoName(SRV_MonthToString, number);
}

TEST(DateText, NamesNeedABuffer) {
    EXPECT_EQ(1u, SRV_WeekToString(0, nullptr, 4));
    EXPECT_EQ(1u, SRV_MonthToString(1, nullptr, 4));
}

TEST(DateText, NamesInAShortBufferAreEmptyAndNoFailure) {
    for (NameWriter write : {&SRV_WeekToString, &SRV_MonthToString}) {
        for (uint32_t size = 0; size <= 4; ++size) {
            char text[8] = "#######";
            EXPECT_EQ(0u, write(1, text, size));
            EXPECT_EQ(size == 0 ? '#' : size < 4 ? '\0' : write == &SRV_WeekToString ? 'M' : 'J', text[0]);
            EXPECT_EQ(std::string(text + size, 7 - size), std::string(7 - size, '#'));
        }
    }
}

TEST(DateText, WritesDayAndYearUnpaddedAndTheTimeWithTwoDigits) {
    EXPECT_EQ("MON, 7 Mar 2024 09:05:00", TextOf({2024, 3, 7, 9, 5, 0, 1}));
    EXPECT_EQ("SAT, 31 Dec 99 23:59:59", TextOf({99, 12, 31, 23, 59, 59, 6}));
    EXPECT_EQ("SUN, 0 Jan 0 00:00:00", TextOf({0, 1, 0, 0, 0, 0, 0}));
}

TEST(DateText, WritesValuesOutOfRangeAsTheyAre) {
    EXPECT_EQ("FRI, 255 Feb 65535 255:255:255", TextOf({65535, 2, 255, 255, 255, 255, 5}));
}

TEST(DateText, WritesNothingForAWeekdayOrMonthWithoutName) {
    for (const SRV_DATE_S &date : {SRV_DATE_S{2024, 3, 7, 9, 5, 0, 9}, SRV_DATE_S{2024, 3, 7, 9, 5, 0, 7},
                                   SRV_DATE_S{2024, 0, 7, 9, 5, 0, 1}, SRV_DATE_S{2024, 13, 7, 9, 5, 0, 1}}) {
        char text[40] = "unset";
        EXPECT_EQ(1u, SRV_DateToString(&date, text, sizeof text));
        EXPECT_STREQ("unset", text);
    }
}

TEST(DateText, WritingNeedsARecordAndABuffer) {
    const SRV_DATE_S date{2024, 3, 7, 9, 5, 0, 1};
    char text[40] = "unset";
    EXPECT_EQ(1u, SRV_DateToString(nullptr, text, sizeof text));
    EXPECT_STREQ("unset", text);
    EXPECT_EQ(1u, SRV_DateToString(&date, nullptr, 40));
}

TEST(DateText, AShortBufferGetsTheBeginning) {
    const SRV_DATE_S date{2024, 3, 7, 9, 5, 0, 1};
    const std::string whole = "MON, 7 Mar 2024 09:05:00";
    for (uint32_t size = 0; size <= 30; ++size) {
        char text[40];
        std::memset(text, '#', sizeof text);
        EXPECT_EQ(0u, SRV_DateToString(&date, text, size));
        for (uint32_t i = size; i < sizeof text; ++i)
            ASSERT_EQ('#', text[i]) << "size " << size;
        if (size != 0) {
            EXPECT_EQ(whole.substr(0, size - 1), text);
        }
    }
}

} // namespace
