#include <uvelcommon_base/kivo_time.h>

#include <cstdlib>
#include <ctime>
#include <securec.h>
#include <uvelhost/time.h>

uint32_t SRV_TmBootInSec() {
    uint32_t ulSeconds = 0;
    uint32_t ulRemainder = 0;
    (void)QAL_SecondNow(&ulSeconds, &ulRemainder);
    return ulSeconds;
}

/* Seconds of what a calendar clock of the host shows. */
static uint32_t SecondsOf(uint32_t (*pfClock)(QAL_DATE_S *, QAL_TIME_S *, uint32_t *)) {
    QAL_DATE_S stDate{};
    QAL_TIME_S stTime{};
    uint32_t ulRemainder = 0;
    uint32_t ulSeconds = 0;
    (void)pfClock(&stDate, &stTime, &ulRemainder);
    (void)QAL_TmDateTimeInSec(&stDate, &stTime, &ulSeconds);
    return ulSeconds;
}

uint32_t SRV_TmNowInSec() {
    return SecondsOf(QAL_TmGet);
}

uint32_t SRV_GmTmNowInSec() {
    return SecondsOf(QAL_GmTmGet);
}

/* Makes the C library forget the zone it knows: the detour over UTC counts as a change of TZ, so that the second tzset
 * reads the system's default zone again. TZ ends up unset, whatever the process had set. */
static void ReloadTimeZone() {
    static char szUtc[] = "TZ=UTC"; /* lent to the environment, hence static and not constant */
    (void)putenv(szUtc);
    tzset();
    (void)unsetenv("TZ");
    tzset();
}

/* Date and time of this moment in the system's default zone. Both stay as they are when the C library cannot tell. */
static void SystemLocalTime(QAL_DATE_S *pstDate, QAL_TIME_S *pstTime) {
    struct tm stLocal {};
    const time_t now = time(nullptr);
    if (now == static_cast<time_t>(-1))
        return;
    ReloadTimeZone();
    if (localtime_r(&now, &stLocal) == nullptr)
        return;
    pstDate->usYear = static_cast<uint16_t>(stLocal.tm_year + 1900);
    pstDate->ucMonth = static_cast<uint8_t>(stLocal.tm_mon + 1);
    pstDate->ucDay = static_cast<uint8_t>(stLocal.tm_mday);
    pstTime->ucHour = static_cast<uint8_t>(stLocal.tm_hour);
    pstTime->ucMinute = static_cast<uint8_t>(stLocal.tm_min);
    pstTime->ucSecond = static_cast<uint8_t>(stLocal.tm_sec);
}

uint32_t SRV_TMNowBootDiff() {
    QAL_DATE_S stDate{};
    QAL_TIME_S stTime{};
    uint32_t ulBoot = 0;
    uint32_t ulBootRemainder = 0;
    uint32_t ulNow = 0;
    uint32_t ulNowRemainder = 0;
    (void)QAL_SecondNow(&ulBoot, &ulBootRemainder);
    (void)QAL_TmGet(&stDate, &stTime, &ulNowRemainder);
    SystemLocalTime(&stDate, &stTime);
    (void)QAL_TmDateTimeInSec(&stDate, &stTime, &ulNow);
    return ulNow - ulBoot - (ulNowRemainder < ulBootRemainder ? 1U : 0U);
}

uint32_t SRV_GMTMNowBootDiff() {
    QAL_DATE_S stDate{};
    QAL_TIME_S stTime{};
    uint32_t ulBoot = 0;
    uint32_t ulBootRemainder = 0;
    uint32_t ulNow = 0;
    uint32_t ulNowRemainder = 0;
    (void)QAL_SecondNow(&ulBoot, &ulBootRemainder);
    (void)QAL_GmTmGet(&stDate, &stTime, &ulNowRemainder);
    (void)QAL_TmDateTimeInSec(&stDate, &stTime, &ulNow);
    /* Borrows on equal remainders too, which the local flavour does not: a contract, not a slip. */
    return ulNow - ulBoot - (ulNowRemainder <= ulBootRemainder ? 1U : 0U);
}

uint32_t SRV_TmRelative2Absolute(uint32_t ulRelative) {
    return ulRelative + SRV_TMNowBootDiff();
}

uint32_t SRV_TmAbsolute2Relative(uint32_t ulAbsolute) {
    return ulAbsolute - SRV_TMNowBootDiff();
}

uint32_t SRV_GmTmRelative2Absolute(uint32_t ulRelative) {
    return ulRelative + SRV_GMTMNowBootDiff();
}

uint32_t SRV_GmTmAbsolute2Relative(uint32_t ulAbsolute) {
    return ulAbsolute - SRV_GMTMNowBootDiff();
}

/* True when ulA + ulB needs more than 32 bits. */
static bool Overflows(uint32_t ulA, uint32_t ulB) {
    return ~ulA < ulB;
}

uint32_t SRV_TmRelative2Absolute4Show(int32_t lOffset, uint32_t ulRelative) {
    const uint32_t ulOffset = static_cast<uint32_t>(lOffset);
    const uint32_t ulSum = ulRelative + ulOffset;
    /* Read in every case, even where its value does not matter. */
    const uint32_t ulDiff = SRV_TMNowBootDiff();
    if (lOffset > 0 && Overflows(ulRelative, ulOffset))
        return SRV_TIME_NOT_SHOWN;
    /* A sum before start-up has wrapped and is tested like any other, unlike in the UTC flavour. */
    return Overflows(ulSum, ulDiff) ? SRV_TIME_NOT_SHOWN : ulSum + ulDiff;
}

uint32_t SRV_GmTmRelative2Absolute4Show(int32_t lOffset, uint32_t ulRelative) {
    const uint32_t ulOffset = static_cast<uint32_t>(lOffset);
    const uint32_t ulSum = ulRelative + ulOffset;
    const int32_t lSum = static_cast<int32_t>(ulSum);
    if (lOffset > 0 && Overflows(ulRelative, ulOffset))
        return SRV_TIME_NOT_SHOWN;
    const uint32_t ulDiff = SRV_GMTMNowBootDiff();
    /* A negative offset led before start-up: the wrapped sum is meant, and its overflow brings it back. */
    if (lOffset < 0 && lSum < 0 && lOffset <= lSum)
        return ulSum + ulDiff;
    return Overflows(ulSum, ulDiff) ? SRV_TIME_NOT_SHOWN : ulSum + ulDiff;
}

uint32_t SRV_GmTmAbsolute2Relative4Show(uint32_t ulAbsolute) {
    const uint32_t ulDiff = SRV_GMTMNowBootDiff();
    return ulDiff <= ulAbsolute ? ulAbsolute - ulDiff : 0;
}

char *SRV_TmBuildTimeStampStr(uint32_t ulSeconds, char *szBuffer, uint32_t ulSize) {
    QAL_DATE_S stDate{};
    QAL_TIME_S stTime{};
    (void)QAL_TmSec2DateTime(ulSeconds, &stDate, &stTime);
    (void)snprintf_truncated_s(szBuffer, ulSize, "%04u-%02u-%02u %02u:%02u:%02u", stDate.usYear, stDate.ucMonth,
                               stDate.ucDay, stTime.ucHour, stTime.ucMinute, stTime.ucSecond);
    return szBuffer;
}

uint32_t KIVO_GetSecSince1970(uint32_t *pulSeconds) {
    QAL_SYSTIME_S stNow{};
    uint32_t ulHigh = 0;
    uint32_t ulLow = 0;
    if (QAL_SystimeGet(&stNow) == UVELHOST_OK && QAL_SystimeSecSince1970(&stNow, &ulHigh, &ulLow) == UVELHOST_OK &&
        pulSeconds != nullptr)
        *pulSeconds = ulLow;
    return KIVO_OK; /* in every case: callers preset *pulSeconds */
}
