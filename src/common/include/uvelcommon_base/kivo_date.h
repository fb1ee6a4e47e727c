/* Date and weekday text: "MON, 7 Mar 2024 09:05:00" and back.
 *
 * Usage:
 *     (void)SRV_DateToString(&stDate, szText, sizeof(szText));           // 32 bytes hold every date
 *     if (SRV_StringToDate(szText, &stDate) != KIVO_OK) ...              // not of this form
 *
 * The reader is tolerant and checks the form, not the values: 45 Feb 99:00:00 is stored as it is written.
 * Threads: any; nothing is kept.
 * Errors: 0 success, 1 failure. */
#ifndef UVELCOMMON_BASE_KIVO_DATE_H
#define UVELCOMMON_BASE_KIVO_DATE_H

#include "kivo_types.h"

/* Longest text that SRV_StringToDate reads, in characters. */
#define SRV_DATE_TEXT_MAX 80U

/* A date with its time and weekday. */
typedef struct {
    uint16_t usYear;   /* full year */
    uint8_t ucMonth;   /* 1 to 12; 0: not recognised */
    uint8_t ucDay;     /* this and the following: as written, not checked */
    uint8_t ucHour;    /* as written */
    uint8_t ucMinute;  /* as written */
    uint8_t ucSecond;  /* as written */
    uint8_t ucWeekDay; /* 0 Sunday to 6 Saturday */
} SRV_DATE_S;

/* Reads "weekday day month year hour minute second" from pszText, separated by any of blank, tab, ':', ',' and '-';
 * what follows the seconds is ignored, as the zone in "Sun, 6 Nov 1994 08:49:37 GMT".
 *
 * Weekday: English name, short or long, in any case; anything else, "-" and nothing included, counts as Sunday. Month:
 * short English name in any case; anything else is month 0. Year: below 1000 it counts from 2000. Numbers are cut to
 * the width of their field. '-' does not lead to the year: in "Mon, 07-Mar-2024 10:00:00" the year is empty, thus 2000,
 * and 2024 the hour, cut to 232. It does not end the seconds either: "0-1" is a failure there.
 *
 * 1 for a null argument, more than SRV_DATE_TEXT_MAX characters or another form; the fields before the offending place
 * are then stored already, the others untouched. */
UVEL_API uint32_t SRV_StringToDate(const char *pszText, SRV_DATE_S *pstDate);

/* Writes pstDate as "MON, 7 Mar 2024 09:05:00" into szBuffer of ulSize bytes; a shorter buffer gets the beginning.
 * 1, and nothing written, for a null argument, a weekday above 6 or a month outside 1 to 12. */
UVEL_API uint32_t SRV_DateToString(const SRV_DATE_S *pstDate, char *szBuffer, uint32_t ulSize);

/* Name of weekday ulWeekDay, "SUN" (0) to "SAT" (6), into szBuffer of ulSize bytes. 1, and nothing written, for another
 * weekday or a null buffer. In less than 4 bytes the text is empty, with result 0. */
UVEL_API uint32_t SRV_WeekToString(uint32_t ulWeekDay, char *szBuffer, uint32_t ulSize);

/* Name of month ulMonth, "Jan" (1) to "Dec" (12), in the same way. */
UVEL_API uint32_t SRV_MonthToString(uint32_t ulMonth, char *szBuffer, uint32_t ulSize);

#endif
