/* Time base: the relative and the absolute clock, conversions between them, time stamp text.
 *
 * Relative time counts seconds since the board started and never jumps: the moments of events are kept in it. Absolute
 * time is calendar seconds as the host counts them, for display and exchange, in two flavours: local time (Tm, TM) and
 * UTC (GmTm, GMTM). The calendar time of the start-up moment joins both; every conversion reads it afresh from the
 * host's clocks. Who converts many values takes it once and adds it himself.
 *
 * Usage:
 *     ulBorn = SRV_TmBootInSec();                                        // kept with the session
 *     ulShow = SRV_TmRelative2Absolute4Show(0, ulBorn);                  // 0xFFFFFFFF: cannot be shown
 *     printf("%s\n", SRV_TmBuildTimeStampStr(ulShow, szStamp, sizeof(szStamp)));
 *
 * Threads: any; but whatever converts local time removes TZ from the environment and reloads the time zone, without a
 * lock. No other thread may use the environment or the C library's time zone at that moment.
 * Errors: none is reported. Plain conversions wrap modulo 2^32, those for display saturate. A host clock that fails
 * counts as 0. */
#ifndef UVELCOMMON_BASE_KIVO_TIME_H
#define UVELCOMMON_BASE_KIVO_TIME_H

#include "kivo_types.h"

/* What the conversions for display give when the moment has no 32-bit calendar time. */
#define SRV_TIME_NOT_SHOWN 0xFFFFFFFFU

/* Seconds since the board started. */
UVEL_API uint32_t SRV_TmBootInSec(void);

/* Local calendar seconds of this moment. */
UVEL_API uint32_t SRV_TmNowInSec(void);

/* UTC calendar seconds of this moment. */
UVEL_API uint32_t SRV_GmTmNowInSec(void);

/* Local calendar seconds of the start-up moment, by the system's default time zone as it is set up now. TZ is gone from
 * the environment afterwards. Of equal sub-second remainders none is borrowed. */
UVEL_API uint32_t SRV_TMNowBootDiff(void);

/* UTC calendar seconds of the start-up moment. Unlike the local flavour it borrows one second when the sub-second
 * remainders of both clocks are equal. */
UVEL_API uint32_t SRV_GMTMNowBootDiff(void);

/* ulRelative in local calendar seconds, modulo 2^32. */
UVEL_API uint32_t SRV_TmRelative2Absolute(uint32_t ulRelative);

/* Local calendar seconds ulAbsolute in relative time, modulo 2^32. */
UVEL_API uint32_t SRV_TmAbsolute2Relative(uint32_t ulAbsolute);

/* ulRelative in UTC calendar seconds, modulo 2^32. */
UVEL_API uint32_t SRV_GmTmRelative2Absolute(uint32_t ulRelative);

/* UTC calendar seconds ulAbsolute in relative time, modulo 2^32. */
UVEL_API uint32_t SRV_GmTmAbsolute2Relative(uint32_t ulAbsolute);

/* ulRelative + lOffset in local calendar seconds, or SRV_TIME_NOT_SHOWN when a sum exceeds 32 bits. An offset that
 * leads before the start-up moment wraps to a large relative time, which then exceeds them as a rule. */
UVEL_API uint32_t SRV_TmRelative2Absolute4Show(int32_t lOffset, uint32_t ulRelative);

/* ulRelative + lOffset in UTC calendar seconds, or SRV_TIME_NOT_SHOWN when a sum exceeds 32 bits. Unlike in the local
 * flavour, an offset that leads before the start-up moment gives the moment before it. */
UVEL_API uint32_t SRV_GmTmRelative2Absolute4Show(int32_t lOffset, uint32_t ulRelative);

/* UTC calendar seconds ulAbsolute in relative time; 0 for a moment before start-up. There is none for local time. */
UVEL_API uint32_t SRV_GmTmAbsolute2Relative4Show(uint32_t ulAbsolute);

/* Writes ulSeconds as "2024-03-07 09:05:00" into szBuffer of ulSize bytes (20 hold it all; a shorter buffer gets the
 * beginning) and returns szBuffer. No time zone is applied. */
UVEL_API char *SRV_TmBuildTimeStampStr(uint32_t ulSeconds, char *szBuffer, uint32_t ulSize);

/* Seconds since 1970 of the host's system time into *pulSeconds, its low 32 bits. Always 0; *pulSeconds is untouched
 * when the host fails. */
UVEL_API uint32_t KIVO_GetSecSince1970(uint32_t *pulSeconds);

#endif
