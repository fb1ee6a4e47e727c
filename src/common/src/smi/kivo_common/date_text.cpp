/* Dates, weekdays and months as text. */
#include <uvelcommon_base/kivo_date.h>

#include <cstddef>
#include <securec.h>

static_assert(sizeof(SRV_DATE_S) == 8);
static_assert(offsetof(SRV_DATE_S, usYear) == 0);
static_assert(offsetof(SRV_DATE_S, ucMonth) == 2);
static_assert(offsetof(SRV_DATE_S, ucDay) == 3);
static_assert(offsetof(SRV_DATE_S, ucHour) == 4);
static_assert(offsetof(SRV_DATE_S, ucMinute) == 5);
static_assert(offsetof(SRV_DATE_S, ucSecond) == 6);
static_assert(offsetof(SRV_DATE_S, ucWeekDay) == 7);

/* Weekdays in capitals, months in mixed case: a contract, not a slip. */
static constexpr char WEEK_DAYS[7][4] = {"SUN", "MON", "TUE", "WED", "THU", "FRI", "SAT"};
static constexpr char MONTHS[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

uint32_t SRV_DateToString(const SRV_DATE_S *pstDate, char *szBuffer, uint32_t ulSize) {
    char szWeekDay[5] = ""; /* and stays so when the name cannot be copied */
    char szMonth[5] = "";
    if (pstDate == nullptr || szBuffer == nullptr)
        return KIVO_FAIL;
    if (SRV_WeekToString(pstDate->ucWeekDay, szWeekDay, sizeof(szWeekDay)) != KIVO_OK ||
        SRV_MonthToString(pstDate->ucMonth, szMonth, sizeof(szMonth)) != KIVO_OK)
        return KIVO_FAIL;
    (void)snprintf_truncated_s(szBuffer, ulSize, "%3s, %u %3s %u %02u:%02u:%02u", szWeekDay, pstDate->ucDay, szMonth,
                               pstDate->usYear, pstDate->ucHour, pstDate->ucMinute, pstDate->ucSecond);
    return KIVO_OK; /* a short buffer is no failure */
}

uint32_t SRV_WeekToString(uint32_t ulWeekDay, char *szBuffer, uint32_t ulSize) {
    if (ulWeekDay >= 7 || szBuffer == nullptr)
        return KIVO_FAIL;
    (void)strcpy_s(szBuffer, ulSize, WEEK_DAYS[ulWeekDay]);
    return KIVO_OK;
}

uint32_t SRV_MonthToString(uint32_t ulMonth, char *szBuffer, uint32_t ulSize) {
    if (ulMonth == 0 || ulMonth > 12 || szBuffer == nullptr)
        return KIVO_FAIL;
    (void)strcpy_s(szBuffer, ulSize, MONTHS[ulMonth - 1]);
    return KIVO_OK;
}
