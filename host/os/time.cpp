#include <uvelhost/time.h>

#include "os/calendar.h"
#include <ctime>

using namespace uvel::host;

static CivilTime FromTm(const struct tm &tm) {
    return {tm.tm_year + 1900LL,
            static_cast<uint32_t>(tm.tm_mon + 1),
            static_cast<uint32_t>(tm.tm_mday),
            static_cast<uint32_t>(tm.tm_hour),
            static_cast<uint32_t>(tm.tm_min),
            static_cast<uint32_t>(tm.tm_sec)};
}

static void Store(const CivilTime &t, QAL_DATE_S *date, QAL_TIME_S *time) {
    date->usYear = static_cast<uint16_t>(t.year);
    date->ucMonth = static_cast<uint8_t>(t.month);
    date->ucDay = static_cast<uint8_t>(t.day);
    time->ucHour = static_cast<uint8_t>(t.hour);
    time->ucMinute = static_cast<uint8_t>(t.minute);
    time->ucSecond = static_cast<uint8_t>(t.second);
}

/* The calendar clock, taken apart by localtime_r or gmtime_r. */
static bool CalendarNow(struct tm *(*split)(const time_t *, struct tm *), struct tm *tm, uint32_t *milliseconds) {
    timespec now;
    if (clock_gettime(CLOCK_REALTIME, &now) != 0 || split(&now.tv_sec, tm) == nullptr)
        return false;
    *milliseconds = static_cast<uint32_t>(now.tv_nsec / 1000000);
    return true;
}

static uint32_t DateTimeNow(struct tm *(*split)(const time_t *, struct tm *), QAL_DATE_S *date, QAL_TIME_S *time,
                            uint32_t *remainder) {
    struct tm tm = {};
    uint32_t milliseconds;
    if (date == nullptr || time == nullptr || remainder == nullptr || !CalendarNow(split, &tm, &milliseconds))
        return 1;
    Store(FromTm(tm), date, time);
    *remainder = milliseconds;
    return UVELHOST_OK;
}

uint32_t QAL_SecondNow(uint32_t *pulSeconds, uint32_t *pulRemainder) {
    timespec now;
    if (pulSeconds == nullptr || pulRemainder == nullptr || clock_gettime(CLOCK_BOOTTIME, &now) != 0)
        return 1;
    *pulSeconds = static_cast<uint32_t>(now.tv_sec);
    *pulRemainder = static_cast<uint32_t>(now.tv_nsec / 1000000);
    return UVELHOST_OK;
}

uint32_t QAL_TmGet(QAL_DATE_S *pstDate, QAL_TIME_S *pstTime, uint32_t *pulRemainder) {
    return DateTimeNow(localtime_r, pstDate, pstTime, pulRemainder);
}

uint32_t QAL_GmTmGet(QAL_DATE_S *pstDate, QAL_TIME_S *pstTime, uint32_t *pulRemainder) {
    return DateTimeNow(gmtime_r, pstDate, pstTime, pulRemainder);
}

uint32_t QAL_TmDateTimeInSec(const QAL_DATE_S *pstDate, const QAL_TIME_S *pstTime, uint32_t *pulSeconds) {
    if (pstDate == nullptr || pstTime == nullptr || pulSeconds == nullptr)
        return 1;
    CivilTime t = {pstDate->usYear, pstDate->ucMonth,  pstDate->ucDay,
                   pstTime->ucHour, pstTime->ucMinute, pstTime->ucSecond};
    if (!Exists(t))
        return 1;
    *pulSeconds = static_cast<uint32_t>(SecondsFromCivil(t));
    return UVELHOST_OK;
}

uint32_t QAL_TmSec2DateTime(uint32_t ulSeconds, QAL_DATE_S *pstDate, QAL_TIME_S *pstTime) {
    if (pstDate == nullptr || pstTime == nullptr)
        return 1;
    Store(CivilFromSeconds(ulSeconds), pstDate, pstTime);
    return UVELHOST_OK;
}

uint32_t QAL_SystimeGet(QAL_SYSTIME_S *pstTime) {
    struct tm tm = {};
    uint32_t milliseconds;
    if (pstTime == nullptr || !CalendarNow(localtime_r, &tm, &milliseconds))
        return 1;
    pstTime->usYear = static_cast<uint16_t>(tm.tm_year + 1900);
    pstTime->ucMonth = static_cast<uint8_t>(tm.tm_mon + 1);
    pstTime->ucDay = static_cast<uint8_t>(tm.tm_mday);
    pstTime->ucHour = static_cast<uint8_t>(tm.tm_hour);
    pstTime->ucMinute = static_cast<uint8_t>(tm.tm_min);
    pstTime->ucSecond = static_cast<uint8_t>(tm.tm_sec);
    pstTime->ucWeekDay = static_cast<uint8_t>(tm.tm_wday);
    pstTime->ulMillisecond = milliseconds;
    return UVELHOST_OK;
}

uint32_t QAL_SystimeSecSince1970(const QAL_SYSTIME_S *pstTime, uint32_t *pulHigh, uint32_t *pulLow) {
    if (pstTime == nullptr || pulHigh == nullptr || pulLow == nullptr)
        return 1;
    CivilTime t = {pstTime->usYear, pstTime->ucMonth,  pstTime->ucDay,
                   pstTime->ucHour, pstTime->ucMinute, pstTime->ucSecond};
    if (!Exists(t))
        return 1;
    auto seconds = static_cast<uint64_t>(SecondsFromCivil(t));
    *pulHigh = static_cast<uint32_t>(seconds >> 32);
    *pulLow = static_cast<uint32_t>(seconds);
    return UVELHOST_OK;
}
