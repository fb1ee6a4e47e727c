/* The time base on the real host's clocks. Two of its reads are never at one moment: results may be a second apart. */
#include <uvelcommon_base/kivo_time.h>

#include <cstdlib>
#include <ctime>

#include "kit.h"

namespace {

double Now(clockid_t clock) {
    timespec now;
    EXPECT_EQ(0, clock_gettime(clock, &now));
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/* Seconds that the system's default zone is ahead of UTC. */
double ZoneOffset() {
    const time_t now = time(nullptr);
    struct tm local {};
    unsetenv("TZ");
    tzset();
    EXPECT_NE(nullptr, localtime_r(&now, &local));
    return static_cast<double>(local.tm_gmtoff);
}

/* Each of the two numbers behind a conversion is cut to whole seconds. */
void ExpectMoment(double expected, uint32_t seconds) {
    EXPECT_GT(expected + 1.5, seconds);
    EXPECT_LT(expected - 2.5, seconds);
}

TEST(TimeOnThisHost, OffsetsAreTheCalendarTimeOfStartUp) {
    const double startUp = Now(CLOCK_REALTIME) - Now(CLOCK_BOOTTIME);
    ExpectMoment(startUp, SRV_GMTMNowBootDiff());
    ExpectMoment(startUp + ZoneOffset(), SRV_TMNowBootDiff());
}

TEST(TimeOnThisHost, LocalOffsetIsOfTheDefaultZoneWhateverTheProcessHadSet) {
    const double startUp = Now(CLOCK_REALTIME) - Now(CLOCK_BOOTTIME) + ZoneOffset();
    setenv("TZ", "XYZ-7:30", 1);
    tzset();
    ExpectMoment(startUp, SRV_TMNowBootDiff());
    EXPECT_EQ(nullptr, getenv("TZ"));
}

TEST(TimeOnThisHost, ClocksTellThisMoment) {
    const double offset = ZoneOffset();
    ExpectMoment(Now(CLOCK_BOOTTIME), SRV_TmBootInSec());
    ExpectMoment(Now(CLOCK_REALTIME), SRV_GmTmNowInSec());
    ExpectMoment(Now(CLOCK_REALTIME) + offset, SRV_TmNowInSec());
    uint32_t seconds = 0;
    EXPECT_EQ(0u, KIVO_GetSecSince1970(&seconds));
    ExpectMoment(Now(CLOCK_REALTIME) + offset, seconds);
}

TEST(TimeOnThisHost, ConversionsThereAndBackGiveTheSameMoment) {
    ExpectMoment(Now(CLOCK_BOOTTIME), SRV_GmTmAbsolute2Relative(SRV_GmTmNowInSec()));
    ExpectMoment(Now(CLOCK_BOOTTIME), SRV_TmAbsolute2Relative(SRV_TmNowInSec()));
    ExpectMoment(Now(CLOCK_REALTIME), SRV_GmTmRelative2Absolute4Show(0, SRV_TmBootInSec()));
    ExpectMoment(1000, SRV_GmTmAbsolute2Relative4Show(SRV_GmTmRelative2Absolute(1000)));
}

} // namespace
