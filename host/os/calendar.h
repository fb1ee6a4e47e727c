/* Arithmetic of the proleptic Gregorian calendar. */
#ifndef UVEL_HOST_OS_CALENDAR_H
#define UVEL_HOST_OS_CALENDAR_H

#include <cstdint>

namespace uvel::host {

struct CivilTime {
    int64_t year;
    uint32_t month; /* 1 to 12 */
    uint32_t day;   /* 1 to 31 */
    uint32_t hour;
    uint32_t minute;
    uint32_t second;
};

constexpr bool IsLeapYear(int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr uint32_t DaysInMonth(int64_t year, uint32_t month) {
    constexpr uint8_t days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29U : days[month - 1];
}

constexpr bool Exists(const CivilTime &t) {
    return t.month >= 1 && t.month <= 12 && t.day >= 1 && t.day <= DaysInMonth(t.year, t.month) && t.hour < 24 &&
           t.minute < 60 && t.second < 60;
}

/* Days from 1970-01-01 to a date that exists. Years are taken to begin in March, so that the day that comes and goes
 * is the last one; 400 of them are one era of 146097 days. */
constexpr int64_t DaysFromCivil(int64_t year, uint32_t month, uint32_t day) {
    year -= month <= 2 ? 1 : 0;
    int64_t era = (year >= 0 ? year : year - 399) / 400;
    int64_t year_of_era = year - era * 400;
    int64_t day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * 146097 + year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year - 719468;
}

/* Seconds from 1970-01-01 00:00:00 to a time that exists. */
constexpr int64_t SecondsFromCivil(const CivilTime &t) {
    return DaysFromCivil(t.year, t.month, t.day) * 86400 + t.hour * 3600 + t.minute * 60 + t.second;
}

/* The inverse for seconds at or behind the epoch. */
constexpr CivilTime CivilFromSeconds(uint64_t seconds) {
    auto second_of_day = static_cast<uint32_t>(seconds % 86400);
    uint64_t days = seconds / 86400 + 719468; /* from 0000-03-01 */
    uint64_t era = days / 146097;
    uint64_t day_of_era = days % 146097;
    uint64_t year_of_era = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    auto day_of_year = static_cast<uint32_t>(day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100));
    uint32_t month = (5 * day_of_year + 2) / 153; /* 0 is March */
    CivilTime t = {};
    t.day = day_of_year - (153 * month + 2) / 5 + 1;
    t.month = month < 10 ? month + 3 : month - 9;
    t.year = static_cast<int64_t>(era * 400 + year_of_era) + (t.month <= 2 ? 1 : 0);
    t.hour = second_of_day / 3600;
    t.minute = second_of_day / 60 % 60;
    t.second = second_of_day % 60;
    return t;
}

} // namespace uvel::host

#endif
