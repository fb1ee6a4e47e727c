#include <uvelcommon_base/kivo_version.h>

#include <securec.h>
#include <uvelhost/assert.h>

static constexpr char SOURCE[] = "src/common/src/smi/kivo_version";

static constexpr char PLATFORM_VERSION[] = "V300R021C10B517";
static constexpr char SERVICE_VERSION[] = "V100R007C00B250";
static constexpr char COMPILE_TIME[] = "Apr  9 2012 10:15:09";
static constexpr char PRODUCT[] = "uVEL (R)";
static constexpr uint32_t PLATFORM_VERSION_NUMBER = 0xC8010FC4U;

static_assert(sizeof(PLATFORM_VERSION) == 16 && sizeof(SERVICE_VERSION) == 16 && sizeof(COMPILE_TIME) == 21);

char *UVEL_TransVerNoToStr(uint32_t, char *pszBuffer) {
    if (pszBuffer == nullptr) {
        qal_assert(SOURCE, __LINE__);
        return nullptr;
    }
    if (snprintf_s(pszBuffer, UVEL_VERSION_SIZE, UVEL_VERSION_SIZE - 1, "%s", PLATFORM_VERSION) < 0)
        qal_assert(SOURCE, __LINE__);
    pszBuffer[UVEL_VERSION_SIZE - 1] = '\0';
    return pszBuffer;
}

char *UVEL_GetVersion(char *pszBuffer) {
    return UVEL_TransVerNoToStr(PLATFORM_VERSION_NUMBER, pszBuffer);
}

/* Length of the first line in pszOutput, or -1 when nothing could be written. */
static int WriteProductLine(char *pszOutput, const char *pszProduct, const char *pszVersion) {
    const int iLength =
        snprintf_truncated_s(pszOutput, UVEL_BANNER_SIZE, "\r\n\r\n%s Software, Version %s", pszProduct, pszVersion);
    if (iLength < 0)
        qal_assert(SOURCE, __LINE__);
    return iLength;
}

char *UVEL_VersionInfoFmt(char *pszOutput, const char *pszProduct, const char *pszVersion, const char *pszCompileTime) {
    const int iLength = WriteProductLine(pszOutput, pszProduct, pszVersion);
    if (iLength < 0)
        return pszOutput;
    if (snprintf_truncated_s(pszOutput + iLength, UVEL_BANNER_SIZE - static_cast<uint32_t>(iLength),
                             "\r\nCompiled on %s by %s Team\r\n", pszCompileTime, pszProduct) < 0)
        qal_assert(SOURCE, __LINE__);
    return pszOutput;
}

char *UVEL_VersionInfoWithoutCompileTime(char *pszOutput, const char *pszProduct, const char *pszVersion) {
    (void)WriteProductLine(pszOutput, pszProduct, pszVersion);
    return pszOutput;
}

char *UVEL_VersionInfo(char *pszOutput) {
    char szVersion[UVEL_VERSION_SIZE] = {};
    return UVEL_VersionInfoWithoutCompileTime(pszOutput, PRODUCT, UVEL_GetVersion(szVersion));
}

const char *KIVO_GetVerion(void) {
    return SERVICE_VERSION;
}

const char *KIVO_GetCompileTime(void) {
    return COMPILE_TIME;
}
