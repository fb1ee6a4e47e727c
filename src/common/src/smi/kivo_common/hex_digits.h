/* Tables for hexadecimal digits, shared by the MAC texts, the hex conversion and the reader of IPv6 groups. */
#ifndef KIVO_COMMON_HEX_DIGITS_H
#define KIVO_COMMON_HEX_DIGITS_H

#include <cstdint>

/* Both digits of every byte value, the high one first. */
struct HEX_PAIRS_S {
    char aacPair[256][2];
};

/* Value of every digit character, HEX_NO_DIGIT of every other one. */
struct HEX_VALUES_S {
    uint8_t aucValue[256];
};

constexpr uint8_t HEX_NO_DIGIT = 0xFF;

constexpr HEX_PAIRS_S HEX_MakePairs(const char (&szDigits)[17]) {
    HEX_PAIRS_S stPairs{};
    for (unsigned i = 0; i < 256; ++i) {
        stPairs.aacPair[i][0] = szDigits[i >> 4];
        stPairs.aacPair[i][1] = szDigits[i & 15];
    }
    return stPairs;
}

constexpr HEX_VALUES_S HEX_MakeValues() {
    HEX_VALUES_S stValues{};
    for (uint8_t &ucValue : stValues.aucValue)
        ucValue = HEX_NO_DIGIT;
    for (uint8_t i = 0; i < 16; ++i) {
        stValues.aucValue[static_cast<uint8_t>("0123456789ABCDEF"[i])] = i;
        stValues.aucValue[static_cast<uint8_t>("0123456789abcdef"[i])] = i;
    }
    return stValues;
}

inline constexpr HEX_PAIRS_S HEX_LOWER = HEX_MakePairs("0123456789abcdef");
inline constexpr HEX_PAIRS_S HEX_UPPER = HEX_MakePairs("0123456789ABCDEF");
inline constexpr HEX_VALUES_S HEX_VALUES = HEX_MakeValues();

static inline uint8_t HEX_ValueOf(char cDigit) {
    return HEX_VALUES.aucValue[static_cast<uint8_t>(cDigit)];
}

static inline bool HEX_IsDigit(char cDigit) {
    return HEX_ValueOf(cDigit) != HEX_NO_DIGIT;
}

#endif
