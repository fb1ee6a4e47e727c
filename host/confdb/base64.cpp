#include "confdb/base64.h"

#include <openssl/evp.h>

namespace uvel::host::confdb {

static unsigned char *Bytes(std::string &text) {
    return reinterpret_cast<unsigned char *>(text.data());
}

static const unsigned char *Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char *>(text.data());
}

std::string ToBase64(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); /* OpenSSL writes a terminator */
    const int length = EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    std::string bytes(text.size() / 4 * 3, '\0');
    /* Padding counts as zero bytes there. */
    const int length = EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size()));
    if (length != static_cast<int>(bytes.size()))
        return std::nullopt;
    bytes.resize(bytes.size() - padding);
    return bytes;
}

} // namespace uvel::host::confdb
