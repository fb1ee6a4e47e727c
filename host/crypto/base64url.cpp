#include "crypto/base64url.h"

#include <algorithm>

namespace uvel::host {

static constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

void EncodeBase64(const uint8_t *bytes, std::size_t size, char *text) {
    for (std::size_t i = 0; i < size; i += 3) {
        std::size_t count = std::min<std::size_t>(size - i, 3);
        uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? bytes[i + k] : 0U);
        for (std::size_t k = 0; k <= count; ++k)
            *text++ = DIGITS[group >> (18 - 6 * k) & 63];
    }
}

/* 64 for a character that is no digit. */
static uint32_t DigitOf(char c) {
    return static_cast<uint32_t>(std::find(DIGITS, DIGITS + 64, c) - DIGITS);
}

bool DecodeBase64(const char *text, std::size_t length, uint8_t *bytes) {
    if (length % 4 == 1)
        return false;
    for (std::size_t i = 0; i < length; i += 4) {
        std::size_t count = std::min<std::size_t>(length - i, 4);
        uint32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            uint32_t digit = k < count ? DigitOf(text[i + k]) : 0;
            if (digit > 63)
                return false;
            group = group << 6 | digit;
        }
        for (std::size_t k = 0; k + 1 < count; ++k)
            *bytes++ = static_cast<uint8_t>(group >> (16 - 8 * k));
        /* The bits behind the last byte are zero, so that each text has one reading only. */
        if (count < 4 && (group & (0xFFFFFFU >> 8 * (count - 1))) != 0)
            return false;
    }
    return true;
}

} // namespace uvel::host
