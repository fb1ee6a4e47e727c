#include <uvelhost/crypto.h>

#include <cstdlib>
#include <cstring>
#include <openssl/err.h>

#include "crypto/password_formats.h"
#include "crypto/report.h"

using namespace uvel::host;

static constexpr uint32_t MAX_CIPHER_LENGTH = 4 * PSSP_CLEAR_MAX;

static_assert(PSSP_CIPHER_SIZE(0) == 7 + 59 + 1 && PSSP_CIPHER_SIZE(15) == 67 && PSSP_CIPHER_SIZE(16) == 88);

/* Leaves the thread's queue of OpenSSL errors as it was: what we try must not look like an error of somebody else's. */
struct ErrorMark {
    ErrorMark() { ERR_set_mark(); }
    ~ErrorMark() { ERR_pop_to_mark(); }
    ErrorMark(const ErrorMark &) = delete;
    ErrorMark &operator=(const ErrorMark &) = delete;
};

/* Boards without AES instructions may prefer ChaCha20: AES in tables is slow and leaks its key through the cache. */
static uint32_t FormatToWrite() {
    const char *cipher = secure_getenv("UVELHOST_PASSWORD_CIPHER");
    if (cipher == nullptr || *cipher == '\0' || strcmp(cipher, "aes-256-gcm") == 0)
        return PSSP_FORMAT_CURRENT_A;
    if (strcmp(cipher, "chacha20-poly1305") == 0)
        return PSSP_FORMAT_CURRENT_B;
    ReportTrouble(Trouble::CIPHER_UNKNOWN, "UVELHOST_PASSWORD_CIPHER=%.100s: no such cipher for passwords", cipher);
    return PSSP_FORMAT_CLEAR;
}

/* The clear text is opened in memory of our own and only shown when it is proven. */
static bool Decrypt(const char *cipher, std::size_t length, char *clear, std::size_t size, const uint8_t *block) {
    DeviceKey key;
    SecretBytes opened;
    if (length > MAX_CIPHER_LENGTH || strnlen(cipher, length) != length || length < FORMAT_PREFIX_SIZE)
        return false;
    if (!ReadDeviceKey(key) || !OpenPassword(FormatOfText(cipher), key, cipher, length, block, opened))
        return false;
    std::size_t needed = strlen(reinterpret_cast<const char *>(opened.Get())) + 1;
    if (needed > size)
        return false;
    memcpy(clear, opened.Get(), needed);
    return true;
}

static bool Encrypt(const char *clear, std::size_t length, char *cipher, std::size_t size, const uint8_t *block) {
    if (length > PSSP_CLEAR_MAX || strnlen(clear, length) != length)
        return false;
    std::size_t sealed_length = SealedLength(length);
    uint32_t format = FormatToWrite();
    DeviceKey key;
    if (sealed_length >= size || format == PSSP_FORMAT_CLEAR || !ReadOrMakeDeviceKey(key) ||
        !SealPassword(format, key, clear, length, block, cipher))
        return false;
    cipher[sealed_length] = '\0';
    return true;
}

uint32_t PSSP_CryptIsCipher(const char *pszText) {
    return pszText == nullptr ? PSSP_FORMAT_CLEAR : FormatOfText(pszText);
}

uint32_t PSSP_DecryptSec(const char *pszCipher, uint32_t ulCipherLen, char *pszClear, uint32_t ulClearSize, uint32_t,
                         const uint8_t *pucBlock) {
    if (pszClear == nullptr)
        return 1;
    ErrorMark mark;
    if (pszCipher != nullptr && pucBlock != nullptr && Decrypt(pszCipher, ulCipherLen, pszClear, ulClearSize, pucBlock))
        return UVELHOST_OK;
    OPENSSL_cleanse(pszClear, ulClearSize);
    return 1;
}

uint32_t PSSP_EncryptSec(const char *pszClear, uint32_t ulClearLen, char *pszCipher, uint32_t ulCipherSize, uint32_t,
                         const uint8_t *pucBlock, uint8_t *) {
    if (pszCipher == nullptr || ulCipherSize == 0)
        return 1;
    ErrorMark mark;
    if (pszClear != nullptr && pucBlock != nullptr && Encrypt(pszClear, ulClearLen, pszCipher, ulCipherSize, pucBlock))
        return UVELHOST_OK;
    *pszCipher = '\0';
    return 1;
}
