#include <uvelcommon_base/kivo_random.h>

#include <uvelcommon_base/nac_log.h>
#include <uvelhost/crypto.h>

static constexpr uint32_t LEVEL = 1;
static constexpr uint32_t FIPS_ON = 1;

/* In FIPS mode the host must hear of a failed generator; without a name there is nobody to report. */
static void ReportToHost(uint32_t ulFips, const char *pszModule) {
    if (ulFips == FIPS_ON)
        FIPS_SecTestContinuousRandomNumberError(pszModule);
}

uint32_t KIVO_GenerateRand(const char *pszModule) {
    uint32_t ulRandom = 0;
    if (CRYPT_random(reinterpret_cast<uint8_t *>(&ulRandom), sizeof(ulRandom)) == KIVO_OK)
        return ulRandom;
    const uint32_t ulFips = FIPSIsEnable();
    if (pszModule == nullptr)
        NAC_Utils_PvtLog(LEVEL, "[KIVO_GenerateRand] ModuleName is NUll! ulIsFipsMode=%u.", ulFips);
    else
        ReportToHost(ulFips, pszModule);
    return 0;
}

uint32_t KIVO_CRYPT_random(uint8_t *pucBuffer, uint32_t ulLen, const char *pszModule) {
    const uint32_t ulResult = CRYPT_random(pucBuffer, ulLen);
    if (ulResult == KIVO_OK)
        return KIVO_OK;
    const uint32_t ulFips = FIPSIsEnable();
    if (pszModule == nullptr)
        NAC_Utils_PvtLog(LEVEL, "[KIVO_CRYPT_random] ModuleName is NUll! ulFipsModeFlag=%u.", ulFips);
    else
        ReportToHost(ulFips, pszModule);
    return ulResult;
}
