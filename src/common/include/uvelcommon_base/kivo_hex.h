/* Hexadecimal text: bytes to digits as the system shows them, digits as operators type them to bytes.
 *
 * Usage:
 *     ulDigits = SRVHEX_FilterBlank("0a 1B", szDigits);                  // "0a1B", 4
 *     ulBytes = SRVHEX_TransStringToData(szDigits, aucData);             // 0x0A 0x1B, 2
 *     (void)SRVHEX_TransHexDataToString(aucData, ulBytes, szText, sizeof(szText), &ulLength);      // "0A1B", 4
 *
 * Digits are 0 to 9, A to F and a to f.
 * Threads: any; nothing is kept.
 * Errors: no codes; what is not hexadecimal shortens the result. A null text counts as empty; nothing is written
 * through a null pointer. */
#ifndef UVELCOMMON_BASE_KIVO_HEX_H
#define UVELCOMMON_BASE_KIVO_HEX_H

#include "kivo_types.h"

/* Copies the digits of pszSource to szDest, which must have as much room as the source needs (and may be the source),
 * and drops blanks. The number of digits; 0 at the first other character: the digits before it are copied then, without
 * a terminator. */
UVEL_API uint32_t SRVHEX_FilterBlank(const char *pszSource, char *szDest);

/* Writes ulLength bytes as pairs of upper-case digits into szBuffer of ulSize bytes, stores the text's length in
 * *pulTextLength (may be null) and returns szBuffer. The text needs 2 * ulLength + 1 bytes. A smaller buffer gets
 * the pairs that fit, terminated; the stored length, which is always that of the text, tells. In 0 bytes nothing
 * is written, and the length is 0. */
UVEL_API char *SRVHEX_TransHexDataToString(const void *pData, uint32_t ulLength, char *szBuffer, uint32_t ulSize,
                                           uint32_t *pulTextLength);

/* Packs the digits at the beginning of pszText, two a byte, into pBuffer, which must have one byte for each two digits
 * begun (and may be the text itself). The number of bytes written; after an odd number of digits the last one holds
 * its high digit only: "ABC" is 0xAB 0xC0, result 2. Beware: without any digit the result is 1 as well, and nothing is
 * written. 0 for digits without a buffer. */
UVEL_API uint32_t SRVHEX_TransStringToData(const char *pszText, void *pBuffer);

/* Number of digits in pszText, whatever stands between them. */
UVEL_API uint32_t SRVHEX_CalcXdigitNum(const char *pszText);

#endif
