/* Hexadecimal text. The long conversions take 16 bytes at a time, in vectors that the compiler knows on every
 * processor. */
#include <uvelcommon_base/kivo_hex.h>

#include <cstring>
#include <uvelhost/strings.h>

#include "kivo_common/hex_digits.h"

using BYTES = uint8_t __attribute__((vector_size(16)));
using SIGNED_BYTES = int8_t __attribute__((vector_size(16))); /* which compare faster on x86 */

static constexpr uint32_t BLOCK = sizeof(BYTES);

static inline BYTES Load(const void *pFrom) {
    BYTES bytes;
    memcpy(&bytes, pFrom, sizeof(bytes));
    return bytes;
}

static inline void Store(void *pTo, BYTES bytes) {
    memcpy(pTo, &bytes, sizeof(bytes));
}

uint32_t SRVHEX_FilterBlank(const char *pszSource, char *szDest) {
    const uint32_t ulLength = QAL_StrLen(pszSource);
    uint32_t ulDigits = 0;
    if (szDest == nullptr)
        return 0;
    for (uint32_t i = 0; i < ulLength; ++i) {
        if (HEX_IsDigit(pszSource[i]))
            szDest[ulDigits++] = pszSource[i];
        else if (pszSource[i] != ' ')
            return 0; /* the digits so far stay, without a terminator: a contract */
    }
    szDest[ulDigits] = '\0';
    return ulDigits;
}

/* Digit characters of values 0 to 15. */
static inline BYTES DigitsOf(BYTES values) {
    const BYTES letters = reinterpret_cast<BYTES>(reinterpret_cast<SIGNED_BYTES>(values) > 9);
    return values + '0' + (letters & ('A' - '9' - 1));
}

/* Writes the pairs of one block. */
static inline void WriteBlock(const uint8_t *pucData, char *szPairs) {
    const BYTES bytes = Load(pucData);
    const BYTES high = DigitsOf(bytes >> 4);
    const BYTES low = DigitsOf(bytes & 15);
    Store(szPairs, __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    Store(szPairs + BLOCK,
          __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

/* Writes the pairs of ulBytes bytes and returns where they end. */
static char *WritePairs(const uint8_t *pucData, uint32_t ulBytes, char *szPairs) {
    const uint8_t *const pucEnd = pucData + ulBytes;
    const uint8_t *const pucTwoBlocksEnd = pucData + ulBytes / (2 * BLOCK) * (2 * BLOCK);
    for (; pucData != pucTwoBlocksEnd; pucData += 2 * BLOCK, szPairs += 4 * BLOCK) {
        WriteBlock(pucData, szPairs);
        WriteBlock(pucData + BLOCK, szPairs + 2 * BLOCK);
    }
    for (; pucData != pucEnd; ++pucData, szPairs += 2)
        memcpy(szPairs, HEX_UPPER.aacPair[*pucData], 2);
    return szPairs;
}

char *SRVHEX_TransHexDataToString(const void *pData, uint32_t ulLength, char *szBuffer, uint32_t ulSize,
                                  uint32_t *pulTextLength) {
    uint32_t ulBytes = 0; /* those whose pairs fit */
    if (szBuffer != nullptr && ulSize != 0) {
        if (pData != nullptr)
            ulBytes = ulLength <= (ulSize - 1) / 2 ? ulLength : (ulSize - 1) / 2;
        *WritePairs(static_cast<const uint8_t *>(pData), ulBytes, szBuffer) = '\0';
    }
    if (pulTextLength != nullptr)
        *pulTextLength = 2 * ulBytes;
    return szBuffer;
}

/* Lanes from cFirst to cLast, both ASCII, all bits set, the others 0. A signed comparison does: what is above ASCII is
 * below cFirst then. */
static inline BYTES Between(BYTES text, char cFirst, char cLast) {
    const SIGNED_BYTES compared = reinterpret_cast<SIGNED_BYTES>(text);
    return reinterpret_cast<BYTES>((compared >= cFirst) & (compared <= cLast));
}

/* Values of digit characters; every other character sets its lane in *pOthers. */
static inline BYTES ValuesOf(BYTES text, BYTES *pOthers) {
    const BYTES digits = Between(text, '0', '9');
    const BYTES letters = Between(text | ('a' - 'A'), 'a', 'f');
    *pOthers |= ~(digits | letters);
    return (text & 15) + (letters & 9); /* the letters' low bits count from 1 */
}

static inline bool AnySet(BYTES lanes) {
    uint64_t aulHalf[2];
    memcpy(aulHalf, &lanes, sizeof(aulHalf));
    return (aulHalf[0] | aulHalf[1]) != 0;
}

uint32_t SRVHEX_TransStringToData(const char *pszText, void *pBuffer) {
    uint8_t *const pucBuffer = static_cast<uint8_t *>(pBuffer);
    const uint32_t ulLength = QAL_StrLen(pszText);
    if (ulLength == 0 || !HEX_IsDigit(pszText[0]))
        return 1; /* though nothing is written: a contract */
    if (pucBuffer == nullptr)
        return 0;

    uint32_t i = 0;
    for (; ulLength - i >= 2 * BLOCK; i += 2 * BLOCK) {
        BYTES others{};
        const BYTES first = ValuesOf(Load(pszText + i), &others);
        const BYTES second = ValuesOf(Load(pszText + i + BLOCK), &others);
        if (AnySet(others))
            break;
        const BYTES high =
            __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
        const BYTES low =
            __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
        Store(pucBuffer + i / 2, high << 4 | low);
    }
    for (; i < ulLength && HEX_IsDigit(pszText[i]); ++i) {
        const uint8_t ucValue = HEX_ValueOf(pszText[i]);
        if (i % 2 == 0)
            pucBuffer[i / 2] = static_cast<uint8_t>(ucValue << 4);
        else
            pucBuffer[i / 2] = static_cast<uint8_t>(pucBuffer[i / 2] + ucValue);
    }
    return i / 2 + i % 2;
}

uint32_t SRVHEX_CalcXdigitNum(const char *pszText) {
    const uint32_t ulLength = QAL_StrLen(pszText);
    uint32_t ulDigits = 0;
    for (uint32_t i = 0; i < ulLength; ++i)
        ulDigits += HEX_IsDigit(pszText[i]) ? 1U : 0U;
    return ulDigits;
}
