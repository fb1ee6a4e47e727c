/* Base64 with '-' and '_' for the last two digits and without padding. */
#ifndef UVEL_HOST_CRYPTO_BASE64URL_H
#define UVEL_HOST_CRYPTO_BASE64URL_H

#include <cstddef>
#include <cstdint>

namespace uvel::host {

constexpr std::size_t Base64Length(std::size_t bytes) {
    return (bytes * 4 + 2) / 3;
}
constexpr std::size_t Base64Bytes(std::size_t length) {
    return length * 3 / 4;
}

/* Writes Base64Length(size) characters and no terminator. */
void EncodeBase64(const uint8_t *bytes, std::size_t size, char *text);

/* Writes Base64Bytes(length) bytes. False for any text that EncodeBase64 would not have written. */
bool DecodeBase64(const char *text, std::size_t length, uint8_t *bytes);

} // namespace uvel::host

#endif
