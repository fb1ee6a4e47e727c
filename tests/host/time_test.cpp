#include <uvelhost/time.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <uvelhost/task.h>

namespace {

struct Moment {
    uint16_t year;
    uint8_t month, day, hour, minute, second;
};

uint32_t Seconds(const Moment &m, uint32_t *seconds) {
    QAL_DATE_S date = {m.year, m.month, m.day};
    QAL_TIME_S time = {m.hour, m.minute, m.second, 0xEE};
    return QAL_TmDateTimeInSec(&date, &time, seconds);
}

/* Sets the process's time zone while it lives. */
class TimeZone {
  public:
    explicit TimeZone(const char *zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone() {
        unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone &) = delete;
    TimeZone &operator=(const TimeZone &) = delete;
};

uint64_t Milliseconds(uint32_t seconds, uint32_t remainder) {
    return uint64_t{seconds} * 1000 + remainder;
}

/* Moments that do not exist. */
constexpr Moment IMPOSSIBLE[] = {
    {2024, 0, 1, 0, 0, 0},   {2024, 13, 1, 0, 0, 0},  {2024, 255, 1, 0, 0, 0}, {2024, 1, 0, 0, 0, 0},
    {2024, 1, 32, 0, 0, 0},  {2024, 4, 31, 0, 0, 0},  {2024, 6, 31, 0, 0, 0},  {2024, 9, 31, 0, 0, 0},
    {2024, 11, 31, 0, 0, 0}, {2024, 2, 30, 0, 0, 0},  {2023, 2, 29, 0, 0, 0},  {1900, 2, 29, 0, 0, 0},
    {2100, 2, 29, 0, 0, 0},  {2024, 1, 1, 24, 0, 0},  {2024, 1, 1, 0, 60, 0},  {2024, 1, 1, 23, 59, 60},
    {2024, 1, 1, 255, 0, 0}, {2024, 1, 1, 0, 255, 0}, {2024, 1, 1, 0, 0, 255},
};

} // namespace

/* ---- the calendar */

TEST(HostTime, KnownMomentsHaveTheirSeconds) {
    const struct {
        Moment moment;
        uint32_t seconds;
    } rows[] = {
        {{1970, 1, 1, 0, 0, 0}, 0},
        {{1970, 1, 1, 0, 0, 1}, 1},
        {{1970, 1, 2, 0, 0, 0}, 86400},
        {{1970, 3, 1, 0, 0, 0}, 5097600},
        {{1972, 2, 29, 12, 0, 0}, 68212800},
        {{2000, 1, 1, 0, 0, 0}, 946684800},
        {{2000, 2, 29, 23, 59, 59}, 951868799},
        {{2001, 9, 9, 1, 46, 40}, 1000000000},
        {{2024, 3, 7, 9, 5, 0}, 1709802300},
        {{2038, 1, 19, 3, 14, 7}, 0x7FFFFFFF},
        {{2038, 1, 19, 3, 14, 8}, 0x80000000},
        {{2100, 2, 28, 23, 59, 59}, 4107542399U},
        {{2100, 3, 1, 0, 0, 0}, 4107542400U},
        {{2106, 2, 7, 6, 28, 15}, 0xFFFFFFFF},
    };
    for (const auto &row : rows) {
        uint32_t seconds = 0x55555555;
        EXPECT_EQ(0u, Seconds(row.moment, &seconds));
        EXPECT_EQ(row.seconds, seconds) << row.moment.year << '-' << int{row.moment.month};
        QAL_DATE_S date = {};
        QAL_TIME_S time = {};
        EXPECT_EQ(0u, QAL_TmSec2DateTime(row.seconds, &date, &time));
        EXPECT_EQ(row.moment.year, date.usYear);
        EXPECT_EQ(row.moment.month, date.ucMonth);
        EXPECT_EQ(row.moment.day, date.ucDay);
        EXPECT_EQ(row.moment.hour, time.ucHour);
        EXPECT_EQ(row.moment.minute, time.ucMinute);
        EXPECT_EQ(row.moment.second, time.ucSecond);
    }
}

TEST(HostTime, SecondsOutsideTheirRangeComeModulo) {
    uint32_t seconds = 0;
    EXPECT_EQ(0u, Seconds({1969, 12, 31, 23, 59, 59}, &seconds));
    EXPECT_EQ(0xFFFFFFFFu, seconds);
    EXPECT_EQ(0u, Seconds({2106, 2, 7, 6, 28, 16}, &seconds));
    EXPECT_EQ(0u, seconds);
    EXPECT_EQ(0u, Seconds({1600, 2, 29, 0, 0, 0}, &seconds));
    EXPECT_EQ(static_cast<uint32_t>(-11670998400LL), seconds);
    EXPECT_EQ(0u, Seconds({0, 1, 1, 0, 0, 0}, &seconds));
    EXPECT_EQ(static_cast<uint32_t>(-62167219200LL), seconds);
    EXPECT_EQ(0u, Seconds({65535, 12, 31, 23, 59, 59}, &seconds));
    EXPECT_EQ(static_cast<uint32_t>(2005949145599LL), seconds);
}

/* The C library's calendar is the independent source here. Every day of the range, at a time that wanders. */
TEST(HostTime, EveryDayAgreesWithTheCLibraryInBothDirections) {
    for (uint64_t day = 0; day <= 0xFFFFFFFFU / 86400; ++day) {
        for (uint64_t second : {uint64_t{0}, day * 7919 % 86400, uint64_t{86399}}) {
            uint64_t moment = day * 86400 + second;
            if (moment > 0xFFFFFFFFU)
                continue;
            auto seconds = static_cast<uint32_t>(moment);
            auto clock = static_cast<time_t>(moment);
            struct tm expected = {};
            gmtime_r(&clock, &expected);
            QAL_DATE_S date = {};
            QAL_TIME_S time = {};
            ASSERT_EQ(0u, QAL_TmSec2DateTime(seconds, &date, &time));
            ASSERT_EQ(expected.tm_year + 1900, date.usYear) << seconds;
            ASSERT_EQ(expected.tm_mon + 1, date.ucMonth) << seconds;
            ASSERT_EQ(expected.tm_mday, date.ucDay) << seconds;
            ASSERT_EQ(expected.tm_hour, time.ucHour) << seconds;
            ASSERT_EQ(expected.tm_min, time.ucMinute) << seconds;
            ASSERT_EQ(expected.tm_sec, time.ucSecond) << seconds;
            uint32_t back = 0;
            ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &time, &back));
            ASSERT_EQ(seconds, back);
        }
    }
}

TEST(HostTime, MomentsThatDoNotExistAreRefused) {
    for (const Moment &moment : IMPOSSIBLE) {
        uint32_t seconds = 0x55555555;
        EXPECT_NE(0u, Seconds(moment, &seconds)) << int{moment.month} << '/' << int{moment.day};
        EXPECT_EQ(0x55555555u, seconds);
    }
}

TEST(HostTime, ConversionWritesExactlyOneWordAndLeavesTheReservedByteAlone) {
    uint32_t words[3] = {0x11111111, 0x22222222, 0x33333333};
    EXPECT_EQ(0u, Seconds({2000, 1, 1, 0, 0, 0}, &words[1]));
    EXPECT_EQ(0x11111111u, words[0]);
    EXPECT_EQ(946684800u, words[1]);
    EXPECT_EQ(0x33333333u, words[2]);
    QAL_DATE_S date = {};
    QAL_TIME_S time = {1, 1, 1, 0xEE};
    EXPECT_EQ(0u, QAL_TmSec2DateTime(0, &date, &time));
    EXPECT_EQ(0xEE, time.ucReserved);
}

TEST(HostTime, ConversionsKnowNoTimeZone) {
    TimeZone zone("UVT-5:30");
    uint32_t seconds = 0;
    EXPECT_EQ(0u, Seconds({2000, 1, 1, 0, 0, 0}, &seconds));
    EXPECT_EQ(946684800u, seconds);
    QAL_DATE_S date = {};
    QAL_TIME_S time = {};
    EXPECT_EQ(0u, QAL_TmSec2DateTime(946684800, &date, &time));
    EXPECT_EQ(2000, date.usYear);
    EXPECT_EQ(0, time.ucHour);
}

/* ---- system time */

TEST(HostTime, SystemTimeBecomesA64BitNumberOfSeconds) {
    const struct {
        QAL_SYSTIME_S time;
        uint32_t high, low;
    } rows[] = {
        {{1970, 1, 1, 0, 0, 0, 4, 0}, 0, 0},
        {{2024, 3, 7, 9, 5, 0, 4, 999}, 0, 1709802300},
        {{2106, 2, 7, 6, 28, 16, 0, 0}, 1, 0},
        {{1969, 12, 31, 23, 59, 59, 3, 0}, 0xFFFFFFFF, 0xFFFFFFFF},
        {{65535, 12, 31, 23, 59, 59, 1, 0}, 467, 0x0BE2E1FF},
    };
    for (const auto &row : rows) {
        uint32_t high = 0x55555555, low = 0x55555555;
        EXPECT_EQ(0u, QAL_SystimeSecSince1970(&row.time, &high, &low));
        EXPECT_EQ(row.high, high) << row.time.usYear;
        EXPECT_EQ(row.low, low) << row.time.usYear;
    }
}

TEST(HostTime, SystemTimesThatDoNotExistAreRefused) {
    for (const Moment &m : IMPOSSIBLE) {
        QAL_SYSTIME_S time = {m.year, m.month, m.day, m.hour, m.minute, m.second, 0, 0};
        uint32_t high = 0x55555555, low = 0x55555555;
        EXPECT_NE(0u, QAL_SystimeSecSince1970(&time, &high, &low));
        EXPECT_EQ(0x55555555u, high);
        EXPECT_EQ(0x55555555u, low);
    }
}

/* ---- clocks */

TEST(HostTime, SecondsSinceStartGoForwardWithTheTime) {
    uint32_t seconds = 0, remainder = 1000;
    ASSERT_EQ(0u, QAL_SecondNow(&seconds, &remainder));
    EXPECT_LT(remainder, 1000u);
    uint64_t before = Milliseconds(seconds, remainder);
    EXPECT_NE(0u, QAL_EventRead(1, QAL_EVENT_ANY, 30, nullptr));
    ASSERT_EQ(0u, QAL_SecondNow(&seconds, &remainder));
    EXPECT_LT(remainder, 1000u);
    EXPECT_GE(Milliseconds(seconds, remainder), before + 29);
}

TEST(HostTime, SecondsSinceStartNeverGoBack) {
    uint64_t last = 0;
    for (int i = 0; i < 100000; ++i) {
        uint32_t seconds = 0, remainder = 0;
        ASSERT_EQ(0u, QAL_SecondNow(&seconds, &remainder));
        ASSERT_LE(last, Milliseconds(seconds, remainder));
        last = Milliseconds(seconds, remainder);
    }
}

/* The clock is between two readings of the C library's. */
TEST(HostTime, UtcIsTheCalendarClock) {
    TimeZone zone("UVT-5:30");
    time_t before = time(nullptr);
    QAL_DATE_S date = {};
    QAL_TIME_S clock = {};
    uint32_t remainder = 1000, seconds = 0;
    ASSERT_EQ(0u, QAL_GmTmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &seconds));
    EXPECT_GE(seconds + 1, static_cast<uint32_t>(before)); /* time() may read a coarser clock */
    EXPECT_LE(seconds, static_cast<uint32_t>(time(nullptr)) + 1);
    EXPECT_LT(remainder, 1000u);
}

TEST(HostTime, LocalTimeFollowsTheTimeZone) {
    TimeZone zone("UVT-5:30");
    QAL_DATE_S date = {};
    QAL_TIME_S clock = {};
    uint32_t remainder = 1000, utc = 0, local = 0, utc_after = 0;
    ASSERT_EQ(0u, QAL_GmTmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &utc));
    ASSERT_EQ(0u, QAL_TmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &local));
    EXPECT_LT(remainder, 1000u);
    ASSERT_EQ(0u, QAL_GmTmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &utc_after));
    EXPECT_GE(local, utc + 19800);
    EXPECT_LE(local, utc_after + 19800);
}

TEST(HostTime, SystemTimeIsLocalAndKnowsItsWeekday) {
    TimeZone zone("UVT-5:30");
    QAL_DATE_S date = {};
    QAL_TIME_S clock = {};
    QAL_SYSTIME_S system = {};
    uint32_t remainder = 0, before = 0, after = 0, high = 1, low = 0;
    ASSERT_EQ(0u, QAL_TmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &before));
    ASSERT_EQ(0u, QAL_SystimeGet(&system));
    ASSERT_EQ(0u, QAL_TmGet(&date, &clock, &remainder));
    ASSERT_EQ(0u, QAL_TmDateTimeInSec(&date, &clock, &after));
    ASSERT_EQ(0u, QAL_SystimeSecSince1970(&system, &high, &low));
    EXPECT_EQ(0u, high);
    EXPECT_GE(low, before);
    EXPECT_LE(low, after);
    EXPECT_EQ((low / 86400 + 4) % 7, system.ucWeekDay); /* the first day was a Thursday */
    EXPECT_LT(system.ulMillisecond, 1000u);
}

TEST(HostTime, NullArgumentsAreRefusedAndNothingIsWritten) {
    QAL_DATE_S date = {7, 7, 7};
    QAL_TIME_S clock = {7, 7, 7, 7};
    QAL_SYSTIME_S system = {2024, 1, 1, 0, 0, 0, 0, 0};
    uint32_t a = 7, b = 7;
    EXPECT_NE(0u, QAL_SecondNow(nullptr, &b));
    EXPECT_NE(0u, QAL_SecondNow(&a, nullptr));
    for (auto *get : {QAL_TmGet, QAL_GmTmGet}) {
        EXPECT_NE(0u, get(nullptr, &clock, &a));
        EXPECT_NE(0u, get(&date, nullptr, &a));
        EXPECT_NE(0u, get(&date, &clock, nullptr));
    }
    EXPECT_NE(0u, QAL_TmSec2DateTime(1, nullptr, &clock));
    EXPECT_NE(0u, QAL_TmSec2DateTime(1, &date, nullptr));
    EXPECT_NE(0u, QAL_SystimeGet(nullptr));
    EXPECT_NE(0u, QAL_SystimeSecSince1970(nullptr, &a, &b));
    EXPECT_NE(0u, QAL_SystimeSecSince1970(&system, nullptr, &b));
    EXPECT_NE(0u, QAL_SystimeSecSince1970(&system, &a, nullptr));
    EXPECT_EQ(7u, a);
    EXPECT_EQ(7u, b);
    EXPECT_EQ(7, date.usYear);
    EXPECT_EQ(7, clock.ucHour);
    QAL_DATE_S real_date = {2024, 1, 1};
    QAL_TIME_S real_clock = {0, 0, 0, 0};
    EXPECT_NE(0u, QAL_TmDateTimeInSec(nullptr, &real_clock, &a));
    EXPECT_NE(0u, QAL_TmDateTimeInSec(&real_date, nullptr, &a));
    EXPECT_NE(0u, QAL_TmDateTimeInSec(&real_date, &real_clock, nullptr));
    EXPECT_EQ(7u, a);
}
