#include "kit.h"

namespace kit {

namespace {

struct Clock {
    uint64_t bootMs = 0;
    QAL_DATE_S date{2024, 1, 1};
    QAL_TIME_S time{0, 0, 0, 0};
    uint64_t calendarMs = 0; /* moved since `date` and `time` were set, plus their remainder */
};

Clock g_clock;

uint32_t CalendarNow(QAL_DATE_S *date, QAL_TIME_S *time, uint32_t *remainder) {
    uint32_t seconds = 0;
    if (QAL_TmDateTimeInSec(&g_clock.date, &g_clock.time, &seconds) != 0)
        return 1;
    seconds += static_cast<uint32_t>(g_clock.calendarMs / 1000);
    *remainder = static_cast<uint32_t>(g_clock.calendarMs % 1000);
    return QAL_TmSec2DateTime(seconds, date, time);
}

} // namespace

VirtualClock::VirtualClock() {
    g_clock = Clock{};
    Op<QAL_SecondNow>().Does([](uint32_t *seconds, uint32_t *remainder) -> uint32_t {
        *seconds = static_cast<uint32_t>(g_clock.bootMs / 1000);
        *remainder = static_cast<uint32_t>(g_clock.bootMs % 1000);
        return 0;
    });
    Op<QAL_TmGet>().Does(CalendarNow);
    Op<QAL_GmTmGet>().Does(CalendarNow);
    Op<QAL_SystimeGet>().Does([](QAL_SYSTIME_S *now) -> uint32_t {
        QAL_DATE_S date{};
        QAL_TIME_S time{};
        uint32_t remainder = 0;
        if (CalendarNow(&date, &time, &remainder) != 0)
            return 1;
        *now = QAL_SYSTIME_S{date.usYear,   date.ucMonth,  date.ucDay, time.ucHour,
                             time.ucMinute, time.ucSecond, 0,          remainder};
        return 0;
    });
}

VirtualClock::~VirtualClock() {
    Op<QAL_SecondNow>().Does(nullptr);
    Op<QAL_TmGet>().Does(nullptr);
    Op<QAL_GmTmGet>().Does(nullptr);
    Op<QAL_SystimeGet>().Does(nullptr);
}

void VirtualClock::SetBoot(uint32_t seconds, uint32_t remainder) {
    g_clock.bootMs = seconds * 1000ULL + remainder;
}

void VirtualClock::SetCalendar(QAL_DATE_S date, QAL_TIME_S time, uint32_t remainder) {
    g_clock.date = date;
    g_clock.time = time;
    g_clock.calendarMs = remainder;
}

void VirtualClock::Advance(uint32_t milliseconds) {
    g_clock.bootMs += milliseconds;
    g_clock.calendarMs += milliseconds;
}

} // namespace kit
