#include "crypto/password_formats.h"

#include <cstring>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>
#include <openssl/rand.h>
#include <uvelhost/crypto.h>

#include "crypto/base64url.h"

namespace uvel::host {

namespace {

constexpr std::size_t NONCE_SIZE = 12;
constexpr std::size_t TAG_SIZE = 16;
constexpr std::size_t PAD_UNIT = 16;
constexpr std::size_t KEY_SIZE = 32;
constexpr std::size_t IV_SIZE = 16;
constexpr std::size_t MAC_SIZE = 32;

struct FreeContext {
    void operator()(EVP_CIPHER_CTX *context) const { EVP_CIPHER_CTX_free(context); }
    void operator()(EVP_KDF_CTX *context) const { EVP_KDF_CTX_free(context); }
    void operator()(EVP_KDF *kdf) const { EVP_KDF_free(kdf); }
};
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

/* What is authenticated beside the box, and the prefix of the text at once. */
struct Label {
    uint8_t bytes[FORMAT_PREFIX_SIZE + PSSP_BLOCK_SIZE];

    Label(uint32_t format, const uint8_t *block) {
        const char prefix[] = {
            '$', 'u', 'v', 'p', static_cast<char>('0' + format / 10), static_cast<char>('0' + format % 10), '$'};
        static_assert(sizeof prefix == FORMAT_PREFIX_SIZE);
        memcpy(bytes, prefix, sizeof prefix);
        memcpy(bytes + sizeof prefix, block, PSSP_BLOCK_SIZE);
    }
};

template <std::size_t Size>
bool DeriveKey(const DeviceKey &device, uint32_t format, SecretArray<Size> &key) {
    char info[] = "uvelhost password NN";
    info[sizeof info - 3] = static_cast<char>('0' + format / 10);
    info[sizeof info - 2] = static_cast<char>('0' + format % 10);
    char digest[] = "SHA256";

    std::unique_ptr<EVP_KDF, FreeContext> kdf(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
    std::unique_ptr<EVP_KDF_CTX, FreeContext> context(kdf ? EVP_KDF_CTX_new(kdf.get()) : nullptr);
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, const_cast<uint8_t *>(device.bytes), sizeof device.bytes),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, info, sizeof info - 1),
        OSSL_PARAM_construct_end(),
    };
    return context && EVP_KDF_derive(context.get(), key.bytes, Size, parameters) == 1;
}

const EVP_CIPHER *AeadOf(uint32_t format) {
    return format == PSSP_FORMAT_CURRENT_B ? EVP_chacha20_poly1305() : EVP_aes_256_gcm();
}

/* Sealed bytes are nonce | box | tag; the box is as long as the padded clear text. */

bool SealBox(uint32_t format, const DeviceKey &device, const Label &label, const SecretBytes &padded, uint8_t *sealed) {
    SecretArray<KEY_SIZE> key;
    Cipher cipher(EVP_CIPHER_CTX_new());
    uint8_t *box = sealed + NONCE_SIZE;
    int size = static_cast<int>(padded.Size());
    int written = 0;
    return cipher && DeriveKey(device, format, key) && RAND_bytes(sealed, NONCE_SIZE) == 1 &&
           EVP_EncryptInit_ex(cipher.get(), AeadOf(format), nullptr, key.bytes, sealed) == 1 &&
           EVP_EncryptUpdate(cipher.get(), nullptr, &written, label.bytes, sizeof label.bytes) == 1 &&
           EVP_EncryptUpdate(cipher.get(), box, &written, padded.Get(), size) == 1 && written == size &&
           EVP_EncryptFinal_ex(cipher.get(), box + size, &written) == 1 &&
           EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_GET_TAG, TAG_SIZE, box + size) == 1;
}

bool OpenBox(uint32_t format, const DeviceKey &device, const Label &label, uint8_t *sealed, std::size_t sealed_size,
             SecretBytes &clear) {
    SecretArray<KEY_SIZE> key;
    Cipher cipher(EVP_CIPHER_CTX_new());
    uint8_t *box = sealed + NONCE_SIZE;
    int size = static_cast<int>(sealed_size - NONCE_SIZE - TAG_SIZE);
    int written = 0;
    if (!cipher || !DeriveKey(device, format, key) || !clear.Make(static_cast<std::size_t>(size)))
        return false;
    return EVP_DecryptInit_ex(cipher.get(), AeadOf(format), nullptr, key.bytes, sealed) == 1 &&
           EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_SET_TAG, TAG_SIZE, box + size) == 1 &&
           EVP_DecryptUpdate(cipher.get(), nullptr, &written, label.bytes, sizeof label.bytes) == 1 &&
           EVP_DecryptUpdate(cipher.get(), clear.Get(), &written, box, size) == 1 &&
           EVP_DecryptFinal_ex(cipher.get(), clear.Get() + size, &written) == 1 && clear.Get()[size - 1] == 0;
}

bool OpenCurrent(uint32_t format, const DeviceKey &device, const Label &label, const char *text, std::size_t length,
                 SecretBytes &clear) {
    std::size_t size = Base64Bytes(length);
    if (size < NONCE_SIZE + TAG_SIZE + PAD_UNIT || (size - NONCE_SIZE - TAG_SIZE) % PAD_UNIT != 0)
        return false;
    SecretBytes sealed;
    return sealed.Make(size) && DecodeBase64(text, length, sealed.Get()) &&
           OpenBox(format, device, label, sealed.Get(), size, clear);
}

/* 16 for a character that is no digit of the old format. */
uint32_t HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<uint32_t>(c - '0');
    return c >= 'A' && c <= 'F' ? static_cast<uint32_t>(c - 'A') + 10 : 16;
}

bool DecodeHex(const char *text, std::size_t size, uint8_t *bytes) {
    for (std::size_t i = 0; i < size; ++i) {
        uint32_t high = HexDigit(text[2 * i]);
        uint32_t low = HexDigit(text[2 * i + 1]);
        if (high > 15 || low > 15)
            return false;
        bytes[i] = static_cast<uint8_t>(high << 4 | low);
    }
    return true;
}

bool HasOldMac(const uint8_t *mac_key, const Label &label, const uint8_t *bytes, std::size_t size) {
    SecretBytes message;
    uint8_t expected[MAC_SIZE];
    if (!message.Make(sizeof label.bytes + size))
        return false;
    memcpy(message.Get(), label.bytes, sizeof label.bytes);
    memcpy(message.Get() + sizeof label.bytes, bytes, size);
    std::size_t written = 0;
    return EVP_Q_mac(nullptr, "HMAC", nullptr, "SHA256", nullptr, mac_key, KEY_SIZE, message.Get(), message.Size(),
                     expected, sizeof expected, &written) != nullptr &&
           written == MAC_SIZE && CRYPTO_memcmp(expected, bytes + size, MAC_SIZE) == 0;
}

bool OpenOld(const DeviceKey &device, const Label &label, const char *text, std::size_t length, SecretBytes &clear) {
    std::size_t size = length / 2;
    if (length % 2 != 0 || size < IV_SIZE + PAD_UNIT + MAC_SIZE || (size - IV_SIZE - MAC_SIZE) % PAD_UNIT != 0)
        return false;
    SecretBytes bytes;
    SecretArray<2 * KEY_SIZE> key;
    if (!bytes.Make(size) || !DecodeHex(text, size, bytes.Get()) || !DeriveKey(device, PSSP_FORMAT_OLD_A, key) ||
        !HasOldMac(key.bytes + KEY_SIZE, label, bytes.Get(), size - MAC_SIZE))
        return false;

    Cipher cipher(EVP_CIPHER_CTX_new());
    int box_size = static_cast<int>(size - IV_SIZE - MAC_SIZE);
    int written = 0;
    int last = 0;
    /* The padding goes, and the byte behind the clear text is its terminator. */
    return cipher && clear.Make(static_cast<std::size_t>(box_size) + 1) &&
           EVP_DecryptInit_ex(cipher.get(), EVP_aes_256_cbc(), nullptr, key.bytes, bytes.Get()) == 1 &&
           EVP_DecryptUpdate(cipher.get(), clear.Get(), &written, bytes.Get() + IV_SIZE, box_size) == 1 &&
           EVP_DecryptFinal_ex(cipher.get(), clear.Get() + written, &last) == 1 &&
           (clear.Get()[written + last] = 0, true);
}

/* Always at least one zero: the terminator. */
constexpr std::size_t PaddedSize(std::size_t length) {
    return (length / PAD_UNIT + 1) * PAD_UNIT;
}

} // namespace

uint32_t FormatOfText(const char *text) {
    if (strncmp(text, "$uvp", 4) != 0 || text[4] < '0' || text[4] > '9' || text[5] < '0' || text[5] > '9' ||
        text[6] != '$')
        return PSSP_FORMAT_CLEAR;
    uint32_t format = static_cast<uint32_t>((text[4] - '0') * 10 + (text[5] - '0'));
    return format < PSSP_FORMAT_OLD_A ? PSSP_FORMAT_CLEAR : format;
}

bool OpenPassword(uint32_t format, const DeviceKey &key, const char *text, std::size_t length, const uint8_t *block,
                  SecretBytes &clear) {
    if (length < FORMAT_PREFIX_SIZE)
        return false;
    const Label label(format, block);
    text += FORMAT_PREFIX_SIZE;
    length -= FORMAT_PREFIX_SIZE;
    if (format == PSSP_FORMAT_OLD_A)
        return OpenOld(key, label, text, length, clear);
    return (format == PSSP_FORMAT_CURRENT_A || format == PSSP_FORMAT_CURRENT_B) &&
           OpenCurrent(format, key, label, text, length, clear);
}

std::size_t SealedLength(std::size_t length) {
    return FORMAT_PREFIX_SIZE + Base64Length(NONCE_SIZE + PaddedSize(length) + TAG_SIZE);
}

bool SealPassword(uint32_t format, const DeviceKey &key, const char *clear, std::size_t length, const uint8_t *block,
                  char *text) {
    const Label label(format, block);
    SecretBytes padded;
    SecretBytes sealed;
    if (!padded.Make(PaddedSize(length)) || !sealed.Make(NONCE_SIZE + padded.Size() + TAG_SIZE))
        return false;
    memcpy(padded.Get(), clear, length);
    if (!SealBox(format, key, label, padded, sealed.Get()))
        return false;
    memcpy(text, label.bytes, FORMAT_PREFIX_SIZE);
    EncodeBase64(sealed.Get(), sealed.Size(), text + FORMAT_PREFIX_SIZE);
    return true;
}

} // namespace uvel::host
