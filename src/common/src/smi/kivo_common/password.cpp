#include <uvelcommon_base/kivo_password.h>

#include <cstddef>
#include <cstring>
#include <securec.h>
#include <uvelcommon_base/nac_log.h>
#include <uvelhost/assert.h>
#include <uvelhost/crypto.h>

static constexpr char SOURCE[] = "src/common/src/smi/kivo_common";

/* Old formats are decrypted with this parameter whatever the caller encrypts with. */
static constexpr uint32_t DECRYPT_PARAM = 1;
static constexpr uint32_t FORMAT_LAST = PSSP_FORMAT_CURRENT_B;
static constexpr uint32_t LOG_LEVEL = 1;

static_assert(SRV_CRYPT_BLOCK_SIZE == PSSP_BLOCK_SIZE && SRV_CRYPT_RESULT_SIZE == PSSP_RESULT_SIZE);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, pszInput) == 0 && offsetof(SRV_CRYPT_PASSWORD_S, ulInputLen) == 8);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, pszClear) == 16 && offsetof(SRV_CRYPT_PASSWORD_S, ulClearSize) == 24);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, pszCipher) == 32 && offsetof(SRV_CRYPT_PASSWORD_S, ulCipherSize) == 40);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, ulEncryptParam) == 44);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, ulMaxClearLen) == 48);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, ucAcceptUndecryptable) == 52);
static_assert(offsetof(SRV_CRYPT_PASSWORD_S, aucBlock) == 53 && offsetof(SRV_CRYPT_PASSWORD_S, aucResult) == 85);
static_assert(sizeof(SRV_CRYPT_PASSWORD_S) == 120);

static uint32_t LengthOf(const char *pszText, uint32_t ulMost) {
    return static_cast<uint32_t>(strnlen(pszText, ulMost));
}

uint32_t SRV_CRYPT_GetClearPassword(const char *pszCipher, char *pszClear, uint32_t ulClearSize, uint32_t ulParam,
                                    uint8_t *pucBlock) {
    if (pszCipher == nullptr || pszClear == nullptr || pucBlock == nullptr)
        return KIVO_FAIL;
    if (PSSP_CryptIsCipher(pszCipher) == PSSP_FORMAT_CLEAR)
        return KIVO_FAIL;
    if (memset_s(pszClear, ulClearSize, 0, ulClearSize) != EOK)
        qal_assert(SOURCE, __LINE__);
    const uint32_t ulCipherLen = LengthOf(pszCipher, UINT32_MAX);
    return PSSP_DecryptSec(pszCipher, ulCipherLen, pszClear, ulClearSize, ulParam, pucBlock) == UVELHOST_OK ? KIVO_OK
                                                                                                            : KIVO_FAIL;
}

/* The host's result is not looked at on purpose: callers live with an empty cipher text. */
static void Encrypt(SRV_CRYPT_PASSWORD_S *pstPassword, uint32_t ulClearLen) {
    /* Not one byte of a clear buffer of size 0 may be read: an empty text stands for it. */
    const char *pszClear = pstPassword->ulClearSize == 0 ? "" : pstPassword->pszClear;
    (void)PSSP_EncryptSec(pszClear, ulClearLen, pstPassword->pszCipher, pstPassword->ulCipherSize,
                          pstPassword->ulEncryptParam, pstPassword->aucBlock, pstPassword->aucResult);
}

/* A failing copy leaves an empty clear text and does not end the operation. */
static void TakeAsClear(SRV_CRYPT_PASSWORD_S *pstPassword) {
    if (strcpy_s(pstPassword->pszClear, pstPassword->ulClearSize, pstPassword->pszInput) != EOK)
        qal_assert(SOURCE, __LINE__);
    Encrypt(pstPassword, pstPassword->ulInputLen);
}

/* Here the text is measured; the length that came with it is what gets encrypted, as for every clear input. */
static uint32_t TakeUndecryptable(SRV_CRYPT_PASSWORD_S *pstPassword, uint32_t ulResult) {
    NAC_Utils_PvtLog(LOG_LEVEL, "SRV_CRYPT_GetClearAndCipherPassword failed. ulChkResult = %u", ulResult);
    if (pstPassword->ucAcceptUndecryptable != 1)
        return KIVO_FAIL;
    if (LengthOf(pstPassword->pszInput, UINT32_MAX) > pstPassword->ulMaxClearLen)
        return KIVO_FAIL;
    TakeAsClear(pstPassword);
    return KIVO_OK;
}

static uint32_t TakeCipher(SRV_CRYPT_PASSWORD_S *pstPassword, bool isCurrent) {
    const uint32_t ulResult = PSSP_DecryptSec(pstPassword->pszInput, pstPassword->ulInputLen, pstPassword->pszClear,
                                              pstPassword->ulClearSize, DECRYPT_PARAM, pstPassword->aucBlock);
    if (ulResult != UVELHOST_OK)
        return TakeUndecryptable(pstPassword, ulResult);
    if (!isCurrent)
        Encrypt(pstPassword, LengthOf(pstPassword->pszClear, pstPassword->ulClearSize));
    else if (strcpy_s(pstPassword->pszCipher, pstPassword->ulCipherSize, pstPassword->pszInput) != EOK)
        qal_assert(SOURCE, __LINE__);
    return KIVO_OK;
}

uint32_t SRV_CRYPT_GetClearAndCipherPassword(SRV_CRYPT_PASSWORD_S *pstPassword) {
    if (pstPassword == nullptr || pstPassword->pszInput == nullptr || pstPassword->pszClear == nullptr ||
        pstPassword->pszCipher == nullptr)
        return KIVO_FAIL;
    const uint32_t ulFormat = PSSP_CryptIsCipher(pstPassword->pszInput);
    if (ulFormat == PSSP_FORMAT_CLEAR) {
        if (pstPassword->ulInputLen > pstPassword->ulMaxClearLen)
            return KIVO_FAIL;
        TakeAsClear(pstPassword);
        return KIVO_OK;
    }
    if (ulFormat > FORMAT_LAST)
        return KIVO_FAIL;
    /* Formats 1 to 7 need no work: a success that writes nothing. */
    if (ulFormat < PSSP_FORMAT_OLD_A)
        return KIVO_OK;
    return TakeCipher(pstPassword, ulFormat >= PSSP_FORMAT_CURRENT_A);
}
