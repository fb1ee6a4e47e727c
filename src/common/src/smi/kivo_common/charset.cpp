#include <uvelcommon_base/kivo_charset.h>

#include <cstring>

uint8_t g_pstUVELSrvCharSet[SRV_CHARSET_TABLE_SIZE];

static uint32_t g_ulBuildNeeded = 1;

struct CHARSET_TABLE_S {
    uint8_t aucRow[SRV_CHARSET_NUM][SRV_CHARSET_ROW_SIZE];
};
static_assert(sizeof(CHARSET_TABLE_S) == sizeof(g_pstUVELSrvCharSet));

static constexpr void Set(uint8_t (&aucRow)[SRV_CHARSET_ROW_SIZE], const char *pszChars, uint8_t ucAllowed) {
    for (; *pszChars != '\0'; ++pszChars)
        aucRow[static_cast<uint8_t>(*pszChars)] = ucAllowed;
}

/* Allows '!' to '~', the printable characters but for the space, without those of pszExcept. */
static constexpr void AllowPrintable(uint8_t (&aucRow)[SRV_CHARSET_ROW_SIZE], const char *pszExcept) {
    for (uint32_t ulChar = '!'; ulChar <= '~'; ++ulChar)
        aucRow[ulChar] = 1;
    Set(aucRow, pszExcept, 0);
}

static constexpr CHARSET_TABLE_S Classes() {
    CHARSET_TABLE_S stTable = {};
    AllowPrintable(stTable.aucRow[SRV_CHARSET_NAME], "\"%'*/:<>?@\\|");
    AllowPrintable(stTable.aucRow[SRV_CHARSET_TEXT], "'?");
    Set(stTable.aucRow[SRV_CHARSET_WORD], "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_-.", 1);
    AllowPrintable(stTable.aucRow[SRV_CHARSET_NOQUOTE], "'");
    return stTable;
}

static constexpr CHARSET_TABLE_S CLASSES = Classes();

/* The flag is cleared first and here, so that threads which check after a start-up call never write the table. */
uint32_t SRV_InitCharSet(void) {
    __atomic_store_n(&g_ulBuildNeeded, 0U, __ATOMIC_RELAXED);
    std::memcpy(g_pstUVELSrvCharSet, &CLASSES, sizeof(CLASSES));
    return KIVO_OK;
}

static bool IsNoValue(const uint8_t *pucText, uint32_t ulLen) {
    return (ulLen == 1 && pucText[0] == '-') || (ulLen == 2 && pucText[0] == '-' && pucText[1] == '-');
}

uint32_t SRV_CheckValidCharFlat(const uint8_t *pucText, uint32_t ulLen, uint8_t ucClass) {
    if (pucText == nullptr || ucClass >= SRV_CHARSET_NUM || IsNoValue(pucText, ulLen))
        return KIVO_FAIL;
    if (__atomic_load_n(&g_ulBuildNeeded, __ATOMIC_RELAXED) != 0)
        (void)SRV_InitCharSet();

    const uint8_t *pucRow = &g_pstUVELSrvCharSet[ucClass * SRV_CHARSET_ROW_SIZE];
    for (const uint8_t *pucChar = pucText + ulLen; pucChar != pucText;)
        if (pucRow[*--pucChar] == 0)
            return KIVO_FAIL;
    return KIVO_OK;
}
