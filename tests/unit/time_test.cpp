#include <uvelcommon_base/kivo_time.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <optional>
#include <string>
#include <vector>

#include "kit.h"

namespace {

constexpr uint32_t NOT_SHOWN = 0xFFFFFFFF;

/* What the C library's time functions shall do; they do their own work where nothing is said. */
struct SystemTime {
    std::optional<time_t> now;
    std::optional<struct tm> local;
    bool localtimeFails = false;
};

SystemTime g_system;

template <typename F>
F *Next(const char *name) {
    return reinterpret_cast<F *>(dlsym(RTLD_NEXT, name));
}

/* Enters a call of the C library into the kit's record of host calls, so that the order of both shows. */
void Note(const std::string &call) {
    std::lock_guard lock(kit::detail::Mutex());
    if (kit::detail::Recording(call.c_str()))
        kit::detail::Record(call);
}

bool AllZero(const void *record, std::size_t size) {
    const std::vector<char> zeros(size, 0);
    return std::memcmp(record, zeros.data(), size) == 0;
}

std::string Quoted(const char *text) {
    return "\"" + std::string(text) + "\"";
}

} // namespace

/* The library's calls find these before the C library's. */
#pragma GCC visibility push(default)
extern "C" {

time_t time(time_t *result) noexcept {
    Note(result == nullptr ? "time(null)" : "time(ptr)");
    if (!g_system.now)
        return Next<time_t(time_t *)>("time")(result);
    if (result != nullptr)
        *result = *g_system.now;
    return *g_system.now;
}

int putenv(char *text) noexcept {
    Note("putenv(" + Quoted(text) + ")");
    return Next<int(char *)>("putenv")(text);
}

int unsetenv(const char *name) noexcept {
    Note("unsetenv(" + Quoted(name) + ")");
    return Next<int(const char *)>("unsetenv")(name);
}

void tzset() noexcept {
    Note("tzset()");
    Next<void()>("tzset")();
}

struct tm *localtime_r(const time_t *now, struct tm *result) noexcept {
    Note("localtime_r(" + std::to_string(*now) + ")");
    if (g_system.localtimeFails)
        return nullptr;
    if (!g_system.local)
        return Next<struct tm *(const time_t *, struct tm *)>("localtime_r")(now, result);
    EXPECT_TRUE(AllZero(result, offsetof(struct tm, tm_isdst) + sizeof result->tm_isdst)) << "not cleared before";
    *result = *g_system.local;
    return result;
}

} // extern "C"
#pragma GCC visibility pop

namespace {

struct tm Broken(int year, int month, int day, int hour, int minute, int second) {
    struct tm broken {};
    broken.tm_year = year - 1900;
    broken.tm_mon = month - 1;
    broken.tm_mday = day;
    broken.tm_hour = hour;
    broken.tm_min = minute;
    broken.tm_sec = second;
    return broken;
}

/* Host clocks and system time under the test's control. 2024-03-07 09:05:00 is 1709802300. */
class Time : public testing::Test {
  protected:
    Time() {
        if (const char *zone = getenv("TZ"))
            zone_ = zone;
    }

    ~Time() override {
        g_system = SystemTime{};
        if (zone_)
            setenv("TZ", zone_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

    static void SetBoot(uint32_t seconds, uint32_t remainder) {
        kit::Op<QAL_SecondNow>().Does([=](uint32_t *s, uint32_t *r) -> uint32_t {
            EXPECT_EQ(0u, *r) << "the remainder was not cleared before";
            *s = seconds;
            *r = remainder;
            return 0;
        });
    }

    static void SetHost(QAL_DATE_S date, QAL_TIME_S time, uint32_t remainder) {
        const auto clock = [=](QAL_DATE_S *d, QAL_TIME_S *t, uint32_t *r) -> uint32_t {
            EXPECT_TRUE(AllZero(d, sizeof *d)) << "the date record was not cleared before";
            EXPECT_TRUE(AllZero(t, sizeof *t)) << "the time record was not cleared before";
            EXPECT_EQ(0u, *r) << "the remainder was not cleared before";
            *d = date;
            *t = time;
            *r = remainder;
            return 0;
        };
        kit::Op<QAL_TmGet>().Does(clock);
        kit::Op<QAL_GmTmGet>().Does(clock);
    }

    /* Both start-up offsets are `diff` from now on. */
    static void SetDiff(uint32_t diff) {
        SetBoot(0, 0);
        SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 1);
        kit::Op<QAL_TmDateTimeInSec>().Does([=](const QAL_DATE_S *, const QAL_TIME_S *, uint32_t *s) -> uint32_t {
            *s = diff;
            return 0;
        });
    }

  private:
    std::optional<std::string> zone_;
};

using Calls = std::vector<std::string>;

TEST_F(Time, BootTimeIsTheHostsSecondsWithoutTheRemainder) {
    SetBoot(4711, 999);
    EXPECT_EQ(4711u, SRV_TmBootInSec());
    SetBoot(0xFFFFFFFF, 0);
    EXPECT_EQ(0xFFFFFFFFu, SRV_TmBootInSec());
}

TEST_F(Time, LocalNowConvertsTheHostsLocalDateAndTime) {
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 999);
    kit::Recorder recorder;
    EXPECT_EQ(1709802300u, SRV_TmNowInSec());
    EXPECT_EQ((Calls{"QAL_TmGet(ptr, ptr, ptr)", "QAL_TmDateTimeInSec(ptr, ptr, ptr)"}), recorder.Calls());
}

TEST_F(Time, UtcNowConvertsTheHostsUtcDateAndTime) {
    SetHost(QAL_DATE_S{1970, 1, 1}, QAL_TIME_S{0, 0, 1, 0}, 0);
    kit::Recorder recorder;
    EXPECT_EQ(1u, SRV_GmTmNowInSec());
    EXPECT_EQ((Calls{"QAL_GmTmGet(ptr, ptr, ptr)", "QAL_TmDateTimeInSec(ptr, ptr, ptr)"}), recorder.Calls());
}

TEST_F(Time, EveryCallReadsTheClocksAfresh) {
    SetBoot(1, 0);
    EXPECT_EQ(1u, SRV_TmBootInSec());
    SetBoot(2, 0);
    EXPECT_EQ(2u, SRV_TmBootInSec());
    SetDiff(100);
    EXPECT_EQ(100u, SRV_GMTMNowBootDiff());
    EXPECT_EQ(100u, SRV_TMNowBootDiff());
    SetDiff(200);
    EXPECT_EQ(200u, SRV_GMTMNowBootDiff());
    EXPECT_EQ(200u, SRV_TMNowBootDiff());
}

TEST_F(Time, LocalOffsetCallsHostAndSystemInItsExactOrder) {
    SetBoot(100, 0);
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 0);
    g_system.now = 1709802300;
    kit::Recorder recorder;
    (void)SRV_TMNowBootDiff();
    EXPECT_EQ(
        (Calls{"QAL_SecondNow(ptr, ptr)", "QAL_TmGet(ptr, ptr, ptr)", "time(null)", "putenv(\"TZ=UTC\")", "tzset()",
               "unsetenv(\"TZ\")", "tzset()", "localtime_r(1709802300)", "QAL_TmDateTimeInSec(ptr, ptr, ptr)"}),
        recorder.Calls());
}

TEST_F(Time, UtcOffsetCallsTheHostOnlyInItsExactOrder) {
    SetBoot(100, 0);
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 0);
    kit::Recorder recorder;
    (void)SRV_GMTMNowBootDiff();
    EXPECT_EQ((Calls{"QAL_SecondNow(ptr, ptr)", "QAL_GmTmGet(ptr, ptr, ptr)", "QAL_TmDateTimeInSec(ptr, ptr, ptr)"}),
              recorder.Calls());
}

TEST_F(Time, LocalOffsetTakesEveryFieldOfTheSystemsLocalTime) {
    SetBoot(0, 0);
    SetHost(QAL_DATE_S{1999, 1, 2}, QAL_TIME_S{3, 4, 5, 0}, 0);
    g_system.now = 0;
    g_system.local = Broken(2024, 12, 31, 23, 58, 59);
    QAL_DATE_S date{};
    QAL_TIME_S time{};
    kit::Op<QAL_TmDateTimeInSec>().Does([&](const QAL_DATE_S *d, const QAL_TIME_S *t, uint32_t *seconds) -> uint32_t {
        date = *d;
        time = *t;
        *seconds = 77;
        return 0;
    });
    EXPECT_EQ(77u, SRV_TMNowBootDiff());
    EXPECT_EQ(2024, date.usYear);
    EXPECT_EQ(12, date.ucMonth);
    EXPECT_EQ(31, date.ucDay);
    EXPECT_EQ(23, time.ucHour);
    EXPECT_EQ(58, time.ucMinute);
    EXPECT_EQ(59, time.ucSecond);
    EXPECT_EQ(0, time.ucReserved);
}

TEST_F(Time, LocalOffsetKeepsTheHostsDateWhenTheSystemHasNoTime) {
    SetBoot(300, 0);
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 0);
    g_system.now = -1;
    g_system.local = Broken(1999, 1, 1, 0, 0, 0);
    kit::Recorder recorder;
    EXPECT_EQ(1709802000u, SRV_TMNowBootDiff());
    EXPECT_EQ((Calls{"QAL_SecondNow(ptr, ptr)", "QAL_TmGet(ptr, ptr, ptr)", "time(null)",
                     "QAL_TmDateTimeInSec(ptr, ptr, ptr)"}),
              recorder.Calls());
}

TEST_F(Time, LocalOffsetLeavesTheEnvironmentAloneWhenTheSystemHasNoTime) {
    SetBoot(0, 0);
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 0);
    setenv("TZ", "MINE-1", 1);
    g_system.now = -1;
    (void)SRV_TMNowBootDiff();
    EXPECT_STREQ("MINE-1", getenv("TZ"));
}

TEST_F(Time, LocalOffsetKeepsTheHostsDateWhenTheSystemCannotConvertItsTime) {
    SetBoot(300, 0);
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 0);
    g_system.now = 5;
    g_system.localtimeFails = true;
    EXPECT_EQ(1709802000u, SRV_TMNowBootDiff());
}

TEST_F(Time, LocalOffsetDropsAForeignZoneAndUsesTheSystemsDefault) {
    constexpr time_t NOW = 1720000000;
    unsetenv("TZ");
    tzset();
    struct tm local {};
    ASSERT_NE(nullptr, localtime_r(&NOW, &local));
    const uint32_t expected = static_cast<uint32_t>(timegm(&local)) - 1000;

    SetBoot(1000, 0);
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 0);
    setenv("TZ", "FAR-13:37", 1);
    tzset();
    g_system.now = NOW;
    EXPECT_EQ(expected, SRV_TMNowBootDiff());
    EXPECT_EQ(nullptr, getenv("TZ"));
}

TEST_F(Time, LocalOffsetBorrowsASecondOnlyForASmallerRemainder) {
    g_system.now = 1;
    g_system.local = Broken(2024, 3, 7, 9, 5, 0);
    SetBoot(300, 500);
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 499);
    EXPECT_EQ(1709801999u, SRV_TMNowBootDiff());
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 500);
    EXPECT_EQ(1709802000u, SRV_TMNowBootDiff());
    SetHost(QAL_DATE_S{1999, 1, 1}, QAL_TIME_S{0, 0, 0, 0}, 501);
    EXPECT_EQ(1709802000u, SRV_TMNowBootDiff());
}

TEST_F(Time, UtcOffsetBorrowsASecondForEqualRemaindersToo) {
    SetBoot(300, 500);
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 499);
    EXPECT_EQ(1709801999u, SRV_GMTMNowBootDiff());
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 500);
    EXPECT_EQ(1709801999u, SRV_GMTMNowBootDiff());
    SetHost(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 501);
    EXPECT_EQ(1709802000u, SRV_GMTMNowBootDiff());
}

TEST_F(Time, OffsetsWrapWhenTheBoardRunsLongerThanTheCalendar) {
    SetBoot(10, 0);
    SetHost(QAL_DATE_S{1970, 1, 1}, QAL_TIME_S{0, 0, 4, 0}, 1);
    g_system.now = -1;
    EXPECT_EQ(0xFFFFFFFAu, SRV_GMTMNowBootDiff());
    EXPECT_EQ(0xFFFFFFFAu, SRV_TMNowBootDiff());
}

TEST_F(Time, AFailingHostClockCountsAsZero) {
    kit::Op<QAL_SecondNow>().Returns(1);
    EXPECT_EQ(0u, SRV_TmBootInSec());
    kit::Op<QAL_TmGet>().Returns(1);
    kit::Op<QAL_GmTmGet>().Returns(1);
    kit::Op<QAL_TmDateTimeInSec>().Returns(1);
    EXPECT_EQ(0u, SRV_TmNowInSec());
    EXPECT_EQ(0u, SRV_GmTmNowInSec());
    EXPECT_EQ(0u, SRV_TMNowBootDiff());
    EXPECT_EQ(0xFFFFFFFFu, SRV_GMTMNowBootDiff()); /* both remainders 0: one borrowed */
}

TEST_F(Time, PlainConversionsAddAndSubtractTheOffset) {
    SetDiff(1000000);
    EXPECT_EQ(1000005u, SRV_TmRelative2Absolute(5));
    EXPECT_EQ(1000005u, SRV_GmTmRelative2Absolute(5));
    EXPECT_EQ(5u, SRV_TmAbsolute2Relative(1000005));
    EXPECT_EQ(5u, SRV_GmTmAbsolute2Relative(1000005));
}

TEST_F(Time, PlainConversionsWrap) {
    SetDiff(1000000);
    EXPECT_EQ(999999u, SRV_TmRelative2Absolute(0xFFFFFFFF));
    EXPECT_EQ(999999u, SRV_GmTmRelative2Absolute(0xFFFFFFFF));
    EXPECT_EQ(0xFFF0BDC0u, SRV_TmAbsolute2Relative(0)); /* 2^32 - 1000000 */
    EXPECT_EQ(0xFFF0BDC0u, SRV_GmTmAbsolute2Relative(0));
}

TEST_F(Time, LocalConversionsUseTheLocalOffsetAndUtcOnesTheUtcOffset) {
    SetDiff(0);
    g_system.now = -1;
    (void)SRV_TmRelative2Absolute(0);
    (void)SRV_TmAbsolute2Relative(0);
    (void)SRV_TmRelative2Absolute4Show(0, 0);
    EXPECT_EQ(3u, kit::Op<QAL_TmGet>().Calls());
    EXPECT_EQ(0u, kit::Op<QAL_GmTmGet>().Calls());
    (void)SRV_GmTmRelative2Absolute(0);
    (void)SRV_GmTmAbsolute2Relative(0);
    (void)SRV_GmTmRelative2Absolute4Show(0, 0);
    (void)SRV_GmTmAbsolute2Relative4Show(0);
    EXPECT_EQ(3u, kit::Op<QAL_TmGet>().Calls());
    EXPECT_EQ(4u, kit::Op<QAL_GmTmGet>().Calls());
}

struct ShowCase {
    int32_t offset;
    uint32_t relative;
    uint32_t diff;
    uint32_t expected;
};

TEST_F(Time, LocalDisplayTimeSaturates) {
    const ShowCase cases[] = {
        {0, 5, 1000, 1005},
        {7, 5, 1000, 1012},
        {-3, 5, 1000, 1002},
        {-5, 5, 1000, 1000},
        {1, 0xFFFFFFFF, 1000, NOT_SHOWN},       /* relative + offset exceeds 32 bits */
        {1, 0xFFFFFFFF, 0, NOT_SHOWN},          /* ... though the offset of start-up is 0 */
        {1, 0xFFFFFFFE, 0, 0xFFFFFFFF},         /* just fits */
        {INT32_MAX, 0x80000001, 0, NOT_SHOWN},  /* exceeds by one */
        {INT32_MAX, 0x80000000, 0, 0xFFFFFFFF}, /* just fits */
        {0, 0xFFFFFC17, 1000, 0xFFFFFFFF},      /* just fits */
        {0, 0xFFFFFC18, 1000, NOT_SHOWN},       /* exceeds by one */
        {0, 1000, 0xFFFFFFFF, NOT_SHOWN},
        {0, 0, 0xFFFFFFFF, 0xFFFFFFFF},
        {-10, 5, 1000, NOT_SHOWN}, /* wrapped before start-up: still tested */
        {-10, 5, 4, 0xFFFFFFFF},   /* ... and fits */
        {-10, 5, 5, NOT_SHOWN},
        {INT32_MIN, 0, 0x7FFFFFFF, 0xFFFFFFFF},
        {INT32_MIN, 0, 0x80000000, NOT_SHOWN},
        {-10, 0xFFFFFFFF, 1000, NOT_SHOWN},
    };
    for (const ShowCase &c : cases) {
        SetDiff(c.diff);
        EXPECT_EQ(c.expected, SRV_TmRelative2Absolute4Show(c.offset, c.relative))
            << c.offset << ", " << c.relative << ", start-up at " << c.diff;
    }
}

TEST_F(Time, UtcDisplayTimeSaturatesButReachesBackBeforeStartUp) {
    const ShowCase cases[] = {
        {0, 5, 1000, 1005},
        {7, 5, 1000, 1012},
        {-3, 5, 1000, 1002},
        {-5, 5, 1000, 1000},
        {1, 0xFFFFFFFF, 1000, NOT_SHOWN},
        {1, 0xFFFFFFFE, 0, 0xFFFFFFFF},
        {INT32_MAX, 0x80000001, 0, NOT_SHOWN},
        {INT32_MAX, 0x80000000, 0, 0xFFFFFFFF},
        {0, 0xFFFFFC17, 1000, 0xFFFFFFFF},
        {0, 0xFFFFFC18, 1000, NOT_SHOWN}, /* offset 0 is tested, negative sum or not */
        {-10, 5, 1000, 995},              /* five seconds before start-up */
        {-1, 0, 1000, 999},
        {-10, 5, 3, 0xFFFFFFFE},          /* before start-up and before the calendar: wraps */
        {INT32_MIN, 0, 1000, 0x800003E8}, /* offset and sum equal */
        {INT32_MIN, 0, 0x80000000, 0},    /* ... without a check */
        {INT32_MIN, 0x7FFFFFFF, 5, 4},
        {-10, 0xFFFFFFFF, 1000, NOT_SHOWN}, /* sum -11 is below the offset: not before start-up, tested */
        {-10, 0xFFFFFFFF, 10, 0xFFFFFFFF},
        {-10, 0x80000005, 0x80000004, 0xFFFFFFFF}, /* sum not negative: tested */
        {-10, 0x80000005, 0x80000005, NOT_SHOWN},
        {-10, 0x80000009, 0x80000001, NOT_SHOWN},
    };
    for (const ShowCase &c : cases) {
        SetDiff(c.diff);
        EXPECT_EQ(c.expected, SRV_GmTmRelative2Absolute4Show(c.offset, c.relative))
            << c.offset << ", " << c.relative << ", start-up at " << c.diff;
    }
}

TEST_F(Time, LocalDisplayTimeReadsTheOffsetOnceEvenWhenItSaturatesBefore) {
    SetDiff(1000);
    EXPECT_EQ(NOT_SHOWN, SRV_TmRelative2Absolute4Show(1, 0xFFFFFFFF));
    EXPECT_EQ(1u, kit::Op<QAL_SecondNow>().Calls());
    EXPECT_EQ(1005u, SRV_TmRelative2Absolute4Show(0, 5));
    EXPECT_EQ(2u, kit::Op<QAL_SecondNow>().Calls());
}

TEST_F(Time, UtcDisplayTimeDoesNotReadTheOffsetWhenItSaturatesBefore) {
    SetDiff(1000);
    EXPECT_EQ(NOT_SHOWN, SRV_GmTmRelative2Absolute4Show(1, 0xFFFFFFFF));
    EXPECT_EQ(0u, kit::Op<QAL_SecondNow>().Calls());
    EXPECT_EQ(1005u, SRV_GmTmRelative2Absolute4Show(0, 5));
    EXPECT_EQ(1u, kit::Op<QAL_SecondNow>().Calls());
}

TEST_F(Time, UtcDisplayTimeBackToRelativeStopsAtStartUp) {
    SetDiff(1000);
    EXPECT_EQ(0u, SRV_GmTmAbsolute2Relative4Show(0));
    EXPECT_EQ(0u, SRV_GmTmAbsolute2Relative4Show(999));
    EXPECT_EQ(0u, SRV_GmTmAbsolute2Relative4Show(1000));
    EXPECT_EQ(7u, SRV_GmTmAbsolute2Relative4Show(1007));
    EXPECT_EQ(0xFFFFFC17u, SRV_GmTmAbsolute2Relative4Show(0xFFFFFFFF));
}

TEST_F(Time, TimeStampShowsDateAndTimeWithLeadingZeros) {
    char text[32];
    EXPECT_EQ(text, SRV_TmBuildTimeStampStr(1709802300, text, sizeof text));
    EXPECT_STREQ("2024-03-07 09:05:00", text);
    EXPECT_STREQ("2024-12-31 23:59:59", SRV_TmBuildTimeStampStr(1735689599, text, sizeof text));
    EXPECT_STREQ("1970-01-01 00:00:00", SRV_TmBuildTimeStampStr(0, text, sizeof text));
    EXPECT_STREQ("2106-02-07 06:28:15", SRV_TmBuildTimeStampStr(0xFFFFFFFF, text, sizeof text));
}

TEST_F(Time, TimeStampShowsWhateverDateTheHostGives) {
    kit::Op<QAL_TmSec2DateTime>().Does([](uint32_t seconds, QAL_DATE_S *date, QAL_TIME_S *time) -> uint32_t {
        EXPECT_EQ(42u, seconds);
        EXPECT_TRUE(AllZero(date, sizeof *date));
        EXPECT_TRUE(AllZero(time, sizeof *time));
        *date = QAL_DATE_S{65535, 255, 255};
        *time = QAL_TIME_S{255, 255, 255, 255};
        return 0;
    });
    char text[32];
    EXPECT_STREQ("65535-255-255 255:255:255", SRV_TmBuildTimeStampStr(42, text, sizeof text));
    kit::Op<QAL_TmSec2DateTime>().Returns(1);
    EXPECT_STREQ("0000-00-00 00:00:00", SRV_TmBuildTimeStampStr(42, text, sizeof text));
}

TEST_F(Time, TimeStampNeverLeavesItsBuffer) {
    const std::string whole = "2024-03-07 09:05:00";
    for (uint32_t size = 0; size <= 24; ++size) {
        char text[32];
        std::memset(text, '#', sizeof text);
        EXPECT_EQ(text, SRV_TmBuildTimeStampStr(1709802300, text, size));
        for (uint32_t i = size; i < sizeof text; ++i)
            ASSERT_EQ('#', text[i]) << "size " << size;
        if (size != 0) {
            EXPECT_EQ(whole.substr(0, size - 1), text);
        }
    }
    EXPECT_EQ(nullptr, SRV_TmBuildTimeStampStr(1709802300, nullptr, 20));
}

TEST_F(Time, SecondsSince1970AreTheSecondOutputOfTheHost) {
    kit::Op<QAL_SystimeGet>().Does([](QAL_SYSTIME_S *now) -> uint32_t {
        *now = QAL_SYSTIME_S{2024, 3, 7, 9, 5, 0, 4, 0};
        return 0;
    });
    kit::Op<QAL_SystimeSecSince1970>().Does([](const QAL_SYSTIME_S *now, uint32_t *high, uint32_t *low) -> uint32_t {
        EXPECT_EQ(2024, now->usYear);
        *high = 11;
        *low = 22;
        return 0;
    });
    uint32_t seconds = 0;
    kit::Recorder recorder;
    EXPECT_EQ(0u, KIVO_GetSecSince1970(&seconds));
    EXPECT_EQ(22u, seconds);
    EXPECT_EQ((Calls{"QAL_SystimeGet(ptr)", "QAL_SystimeSecSince1970(ptr, ptr, ptr)"}), recorder.Calls());
}

TEST_F(Time, SecondsSince1970CountThroughTheRealHost) {
    kit::VirtualClock clock;
    clock.SetCalendar(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0});
    uint32_t seconds = 0;
    EXPECT_EQ(0u, KIVO_GetSecSince1970(&seconds));
    EXPECT_EQ(1709802300u, seconds);
}

TEST_F(Time, SecondsSince1970StayUntouchedWhenTheHostFails) {
    uint32_t seconds = 4711;
    kit::Op<QAL_SystimeGet>().FailsOn(1);
    EXPECT_EQ(0u, KIVO_GetSecSince1970(&seconds));
    EXPECT_EQ(0u, kit::Op<QAL_SystimeSecSince1970>().Calls());
    kit::Op<QAL_SystimeSecSince1970>().Does([](const QAL_SYSTIME_S *, uint32_t *high, uint32_t *low) -> uint32_t {
        *high = *low = 1;
        return 1;
    });
    EXPECT_EQ(0u, KIVO_GetSecSince1970(&seconds));
    EXPECT_EQ(4711u, seconds);
}

TEST_F(Time, SecondsSince1970IntoNowhereAreNoCrash) {
    EXPECT_EQ(0u, KIVO_GetSecSince1970(nullptr));
}

TEST_F(Time, BothClocksMoveTogether) {
    kit::VirtualClock clock;
    clock.SetBoot(1000, 250);
    clock.SetCalendar(QAL_DATE_S{2024, 3, 7}, QAL_TIME_S{9, 5, 0, 0}, 750);
    const uint32_t diff = SRV_GMTMNowBootDiff();
    EXPECT_EQ(1709801300u, diff);
    for (int i = 0; i < 100; ++i) {
        clock.Advance(77);
        EXPECT_EQ(diff, SRV_GMTMNowBootDiff()) << "after " << 77 * (i + 1) << " ms";
    }
}

} // namespace
