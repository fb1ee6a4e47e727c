#include <uvelcommon_base/kivo_string.h>

#include <securec.h>
#include <uvelhost/strings.h>

static constexpr char CASE_BIT = 'a' - 'A';

uint32_t SRV_StringToUpper(char *pszText) {
    if (pszText == nullptr)
        return KIVO_FAIL;

    const uint32_t ulLen = QAL_StrLen(pszText);
    for (uint32_t i = 0; i < ulLen; ++i) {
        if (pszText[i] >= 'a' && pszText[i] <= 'z')
            pszText[i] = static_cast<char>(pszText[i] - CASE_BIT);
    }
    return KIVO_OK;
}

uint32_t SRV_StringToLower(char *pszText) {
    if (pszText == nullptr)
        return KIVO_FAIL;

    for (; *pszText != '\0'; ++pszText) {
        if (*pszText >= 'A' && *pszText <= 'Z')
            *pszText = static_cast<char>(*pszText + CASE_BIT);
    }
    return KIVO_OK;
}

uint32_t SRV_Atoul(const char *pszText, uint32_t *pulValue) {
    if (pszText == nullptr || pulValue == nullptr)
        return KIVO_NONE;

    uint32_t ulValue = 0;
    if (sscanf_s(pszText, "%u", &ulValue) != 1) {
        *pulValue = 0;
        return KIVO_NONE;
    }
    *pulValue = ulValue;
    return KIVO_OK;
}
