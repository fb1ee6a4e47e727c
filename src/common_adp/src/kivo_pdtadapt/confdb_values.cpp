/* Copies of what the configuration database holds, the callbacks that refresh them, the queries that read them. */
#include <uvelcommon_base/kivo_confdb.h>

#include <cstring>
#include <pthread.h>
#include <securec.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/device.h>

static constexpr uint32_t MAC_SIZE = 6;
static constexpr uint32_t LONGEST_COPIED_NAME = 257;

/* Longer than a name can be: a name of full length ends all the same. */
static char g_szSysName[LONGEST_COPIED_NAME + 1];
static uint8_t g_aucSysMac[MAC_SIZE];
static uint32_t g_ulSysMacNumber;
static uint8_t g_ucBridgeMacReady;

/* Held by who writes a copy. */
static pthread_mutex_t g_stWriting = PTHREAD_MUTEX_INITIALIZER;

static_assert(sizeof(g_szSysName) > KIVO_SYS_NAME_SIZE);

/* The database's task writes the copies while anybody reads them. A reader may meet a value that is half the old and half
 * the new one, which changes rarely enough to be accepted; single bytes are never torn. */
static void Publish(void *pCopy, const void *pValue, size_t ulSize) {
    for (size_t i = 0; i < ulSize; ++i)
        __atomic_store_n(static_cast<uint8_t *>(pCopy) + i, static_cast<const uint8_t *>(pValue)[i], __ATOMIC_RELAXED);
}

static void Look(void *pValue, const void *pCopy, size_t ulSize) {
    for (size_t i = 0; i < ulSize; ++i)
        static_cast<uint8_t *>(pValue)[i] = __atomic_load_n(static_cast<const uint8_t *>(pCopy) + i, __ATOMIC_RELAXED);
}

static bool IsKey(const DB_KV_S *pstKv, const char *pszKey) {
    return pstKv->ulValueLength != 0 && pstKv->pszKey != nullptr && strcmp(pstKv->pszKey, pszKey) == 0;
}

/* Copies a value into ulSize bytes, and behind it a terminator where one is wanted. It passes through a buffer: a copy
 * that is refused clears its destination, and the value known so far has to survive that. */
static errno_t TakeValue(void *pCopy, uint32_t ulSize, const DB_KV_S *pstKv, uint32_t ulTerminator = 0) {
    uint8_t aucValue[KIVO_SYS_NAME_SIZE + 1];
    const errno_t ret = memcpy_s(aucValue, ulSize, pstKv->pValue, pstKv->ulValueLength);
    if (ret != EOK)
        return ret;
    aucValue[pstKv->ulValueLength] = 0;
    (void)pthread_mutex_lock(&g_stWriting);
    Publish(pCopy, aucValue, pstKv->ulValueLength + ulTerminator);
    (void)pthread_mutex_unlock(&g_stWriting);
    return EOK;
}

/* Copies what the host answered. The copy was as pBefore when the host was asked: what the database told since then is
 * newer and stays. */
static void TakeAnswer(void *pCopy, const void *pBefore, const void *pAnswer, size_t ulSize) {
    (void)pthread_mutex_lock(&g_stWriting);
    if (memcmp(pCopy, pBefore, ulSize) == 0)
        Publish(pCopy, pAnswer, ulSize);
    (void)pthread_mutex_unlock(&g_stWriting);
}

void KIVO_SysNameCallback(const DB_KV_S *pstKv) {
    if (pstKv == nullptr || !IsKey(pstKv, "sys_name"))
        return;
    /* Values come without a terminator; without one here the end of a longer name would stay behind a shorter one. */
    const errno_t ret = TakeValue(g_szSysName, KIVO_SYS_NAME_SIZE, pstKv, 1);
    if (ret != EOK)
        NAC_Utils_PvtLog(0, "KIVO_SysNameCallback memcpy sys_name fail, ret:%u \n", static_cast<uint32_t>(ret));
}

void KIVO_SysMacCallback(const DB_KV_S *pstKv) {
    if (pstKv == nullptr)
        return;
    if (IsKey(pstKv, "system_mac")) {
        const errno_t ret = TakeValue(g_aucSysMac, sizeof(g_aucSysMac), pstKv);
        if (ret != EOK)
            NAC_Utils_PvtLog(0, "KIVO_SysMacCallback memcpy system_mac fail, ret:%u \n", static_cast<uint32_t>(ret));
    } else if (IsKey(pstKv, "system_mac_number")) {
        const errno_t ret = TakeValue(&g_ulSysMacNumber, sizeof(g_ulSysMacNumber), pstKv);
        if (ret != EOK)
            NAC_Utils_PvtLog(0, "KIVO_SysMacCallback memcpy system_mac_number fail, ret:%u \n",
                             static_cast<uint32_t>(ret));
    }
}

/* Characters to copy into a buffer of ulSize bytes. */
static uint32_t NameRoom(uint32_t ulSize) {
    if (ulSize == 0)
        return 0;
    return ulSize > LONGEST_COPIED_NAME ? LONGEST_COPIED_NAME : ulSize - 1;
}

uint32_t KIVO_Adapt_Gethostname(char *szBuffer, uint32_t ulSize) {
    char szSysName[sizeof(g_szSysName)];
    Look(szSysName, g_szSysName, sizeof(szSysName));
    if (szSysName[0] == '\0') {
        uVEL_Adapt_SubPubEvent();
        char szAnswer[sizeof(g_szSysName)];
        (void)memcpy(szAnswer, szSysName, sizeof(szAnswer));
        if (DEV_GetSystemName(szAnswer, KIVO_SYS_NAME_SIZE) == UVELHOST_OK)
            TakeAnswer(g_szSysName, szSysName, szAnswer, sizeof(szAnswer));
        Look(szSysName, g_szSysName, sizeof(szSysName));
    }
    const errno_t ret = strncpy_s(szBuffer, ulSize, szSysName, NameRoom(ulSize));
    if (ret != EOK)
        NAC_Utils_PvtLog(0, "KIVO_Adapt_Gethostname strncpy fail, ret:%u \n", static_cast<uint32_t>(ret));
    if (szBuffer != nullptr && ulSize != 0)
        szBuffer[ulSize - 1] = '\0';
    return KIVO_OK;
}

uint32_t EAPADP_GetBridgeMac(uint8_t aucMac[6]) {
    if (aucMac == nullptr)
        return KIVO_FAIL;
    if (__atomic_load_n(&g_ucBridgeMacReady, __ATOMIC_RELAXED) == 0) {
        uint8_t aucBefore[MAC_SIZE];
        Look(aucBefore, g_aucSysMac, sizeof(aucBefore));
        uVEL_Adapt_SubPubEvent();
        uint8_t aucAnswer[MAC_SIZE] = {};
        if (DEVM_DB_GetSysMac(aucAnswer) == UVELHOST_OK)
            TakeAnswer(g_aucSysMac, aucBefore, aucAnswer, sizeof(aucAnswer));
        __atomic_store_n(&g_ucBridgeMacReady, 1, __ATOMIC_RELAXED);
    }
    Look(aucMac, g_aucSysMac, sizeof(g_aucSysMac));
    return KIVO_OK;
}

uint32_t UVEL_DevGetSysMac(uint8_t aucMac[6]) {
    return EAPADP_GetBridgeMac(aucMac);
}

uint32_t UVEL_GetSysMacAddr(uint8_t aucMac[6]) {
    return UVEL_DevGetSysMac(aucMac);
}
