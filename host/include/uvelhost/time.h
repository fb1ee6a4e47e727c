/* Clocks and calendar.
 *
 * Two clocks: seconds since the board started, which never jump, and the calendar. The remainder that comes with
 * seconds counts milliseconds, 0 to 999. Calendar seconds count from 1970-01-01 00:00:00 in the proleptic Gregorian
 * calendar, without leap seconds and without a time zone. */
#ifndef UVELHOST_TIME_H
#define UVELHOST_TIME_H

#include "types.h"

/* A date. */
typedef struct {
    uint16_t usYear; /* full year */
    uint8_t ucMonth; /* 1 to 12 */
    uint8_t ucDay;   /* 1 to 31 */
} QAL_DATE_S;

/* A time of the day. */
typedef struct {
    uint8_t ucHour;     /* 0 to 23 */
    uint8_t ucMinute;   /* 0 to 59 */
    uint8_t ucSecond;   /* 0 to 59 */
    uint8_t ucReserved; /* neither read nor written */
} QAL_TIME_S;

/* Date and time together. */
typedef struct {
    uint16_t usYear;        /* full year */
    uint8_t ucMonth;        /* 1 to 12 */
    uint8_t ucDay;          /* 1 to 31 */
    uint8_t ucHour;         /* 0 to 23 */
    uint8_t ucMinute;       /* 0 to 59 */
    uint8_t ucSecond;       /* 0 to 59 */
    uint8_t ucWeekDay;      /* 0 Sunday to 6 Saturday */
    uint32_t ulMillisecond; /* 0 to 999 */
} QAL_SYSTIME_S;

/* Seconds since the board started, time asleep included, and the remainder. */
UVELHOST_API uint32_t QAL_SecondNow(uint32_t *pulSeconds, uint32_t *pulRemainder);

/* Current local date, time and remainder. */
UVELHOST_API uint32_t QAL_TmGet(QAL_DATE_S *pstDate, QAL_TIME_S *pstTime, uint32_t *pulRemainder);

/* Current date, time and remainder in UTC. */
UVELHOST_API uint32_t QAL_GmTmGet(QAL_DATE_S *pstDate, QAL_TIME_S *pstTime, uint32_t *pulRemainder);

/* Calendar seconds of a date and time, modulo 2^32; writes exactly one u32. A date or time that does not exist (month
 * 13, 30 February, hour 24, second 60) is a failure. */
UVELHOST_API uint32_t QAL_TmDateTimeInSec(const QAL_DATE_S *pstDate, const QAL_TIME_S *pstTime, uint32_t *pulSeconds);

/* Date and time of calendar seconds: the inverse, for 1970 to 2106. */
UVELHOST_API uint32_t QAL_TmSec2DateTime(uint32_t ulSeconds, QAL_DATE_S *pstDate, QAL_TIME_S *pstTime);

/* Current local system time. */
UVELHOST_API uint32_t QAL_SystimeGet(QAL_SYSTIME_S *pstTime);

/* Calendar seconds of a system time as a 64-bit number in two words (two's complement before 1970). Fails for a date or
 * time that does not exist; the day of the week and the milliseconds are not looked at. */
UVELHOST_API uint32_t QAL_SystimeSecSince1970(const QAL_SYSTIME_S *pstTime, uint32_t *pulHigh, uint32_t *pulLow);

#endif
