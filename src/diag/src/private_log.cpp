#include <uvelcommon_base/nac_log.h>

#include <cstdarg>
#include <cstdio>
#include <securec.h>
#include <uvelhost/time.h>

static constexpr char LOG_FILE[] = "/opt/oxmv8/home/nacutils.log";
static constexpr char LEVEL_TEXT[] = "ERROR";
static constexpr uint32_t TIME_SIZE = 64;
static constexpr uint32_t MESSAGE_SIZE = 512;
static constexpr uint32_t LINE_SIZE = 1024;

static_assert(LINE_SIZE > TIME_SIZE + MESSAGE_SIZE + sizeof("[][NACUTILS][]\r\n") + sizeof(LEVEL_TEXT));

static uint32_t g_nacUtilsPvLogSupport;

uint32_t *NAC_SetUtilsPvtLogGlobalSwitch(void) {
    __atomic_store_n(&g_nacUtilsPvLogSupport, 1, __ATOMIC_RELAXED);
    return &g_nacUtilsPvLogSupport;
}

uint32_t NAC_GetUtilsPvtLogGlobalSwitch(void) {
    return __atomic_load_n(&g_nacUtilsPvLogSupport, __ATOMIC_RELAXED);
}

uint32_t NAC_Utils_GetPvLogTime(char *pszBuffer, uint32_t ulSize) {
    QAL_SYSTIME_S stNow = {};
    (void)QAL_SystimeGet(&stNow);
    (void)sprintf_s(pszBuffer, ulSize, "%4u-%02u-%02u %02u:%02u:%02u", stNow.usYear, stNow.ucMonth, stNow.ucDay,
                    stNow.ucHour, stNow.ucMinute, stNow.ucSecond);
    return KIVO_OK;
}

/* The stream's buffer holds the longest line, so that closing it makes one append of the whole line. */
static void AppendLine(const char *pszTime, const char *pszMessage) {
    char szLine[LINE_SIZE];
    FILE *pstFile = fopen(LOG_FILE, "a");
    if (pstFile == nullptr)
        return;
    (void)setvbuf(pstFile, szLine, _IOFBF, sizeof(szLine));
    (void)fprintf(pstFile, "[%s][NACUTILS][%s]%s\r\n", pszTime, LEVEL_TEXT, pszMessage);
    (void)fclose(pstFile);
}

static void WriteEntry(const char *pszFormat, va_list args) {
    char szTime[TIME_SIZE] = {};
    if (NAC_Utils_GetPvLogTime(szTime, sizeof(szTime)) != KIVO_OK)
        return;
    char szMessage[MESSAGE_SIZE] = {};
    if (vsprintf_s(szMessage, sizeof(szMessage), pszFormat, args) < 0)
        return;
    AppendLine(szTime, szMessage);
}

/* The level must equal 2. The library's own modules log at 0 and 1, so their lines are not written: intended. */
void NAC_Utils_PvtLog(uint32_t ulLevel, const char *pszFormat, ...) {
    if (ulLevel != NAC_PVTLOG_ERROR || NAC_GetUtilsPvtLogGlobalSwitch() == 0)
        return;
    va_list args;
    va_start(args, pszFormat);
    WriteEntry(pszFormat, args);
    va_end(args);
}
