/* The formats of stored passwords, and what opens and seals them.
 *
 * A cipher text begins with "$uvpNN$", NN being the format in two digits; the part behind it is printable and depends
 * on the format. All keys come from the device key by HKDF-SHA-256 without salt, with "uvelhost password NN" as info.
 *
 *     10  base64url of nonce (12) | box | tag (16). AES-256-GCM over the clear text padded with zeros, at least one, to
 *         a multiple of 16 bytes, so that the text tells little of the length. Key: 32 bytes.
 *     11  as 10 with ChaCha20-Poly1305.
 *     08  old: upper-case hexadecimal of iv (16) | box | mac (32). AES-256-CBC with PKCS #7 padding over the clear
 *         text, then HMAC-SHA-256 over "$uvp08$" | block | iv | box. Key: 64 bytes, the first half for AES, the other
 *         for HMAC.
 *
 * 10 and 11 authenticate "$uvpNN$" | block along with the box. "block" is the caller's parameter block of 32 bytes. */
#ifndef UVEL_HOST_CRYPTO_PASSWORD_FORMATS_H
#define UVEL_HOST_CRYPTO_PASSWORD_FORMATS_H

#include "crypto/key_file.h"

namespace uvel::host {

constexpr std::size_t FORMAT_PREFIX_SIZE = 7;

/* The number in a text's prefix when it is 8 or more, else 0. */
uint32_t FormatOfText(const char *text);

/* Opens a text of `length` characters that begins with the prefix of `format`. `clear` receives the clear text with a
 * terminator and maybe more zeros behind it. False for what was not sealed with this key and block. */
bool OpenPassword(uint32_t format, const DeviceKey &key, const char *text, std::size_t length, const uint8_t *block,
                  SecretBytes &clear);

/* Characters that SealPassword writes for a clear text of `length` characters. */
std::size_t SealedLength(std::size_t length);

/* Writes SealedLength(length) characters of format 10 or 11 and no terminator. */
bool SealPassword(uint32_t format, const DeviceKey &key, const char *clear, std::size_t length, const uint8_t *block,
                  char *text);

} // namespace uvel::host

#endif
