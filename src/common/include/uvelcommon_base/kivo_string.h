/* Text helpers: letter case in place, decimal reader.
 *
 * Usage:
 *     (void)SRV_StringToUpper(szName);                       // "mon, 7 mar" becomes "MON, 7 MAR"
 *     if (SRV_Atoul(pszText, &ulValue) != KIVO_OK) ...       // no number at the beginning of the text
 *
 * Letters are those of ASCII; no locale is consulted.
 * Threads: any, nothing is kept; a text that is changed in place belongs to the caller during the call. */
#ifndef UVELCOMMON_BASE_KIVO_STRING_H
#define UVELCOMMON_BASE_KIVO_STRING_H

#include "kivo_types.h"

/* Makes 'a' to 'z' upper case in place; every other byte stays. 1 for a null text. */
UVEL_API uint32_t SRV_StringToUpper(char *pszText);

/* Makes 'A' to 'Z' lower case in place; every other byte stays. 1 for a null text. */
UVEL_API uint32_t SRV_StringToLower(char *pszText);

/* Reads the decimal number at the beginning of pszText, as scanf's "%u" does: leading white space is skipped, reading
 * stops at the first character that is no digit ("12ab" is 12), a sign is accepted ("-1" is 4294967295). A number that
 * does not fit is not reported: up to 64 bits its low 32 bits are taken. 0, or 0xFFFFFFFF when there is no number;
 * *pulValue is then 0, but untouched when an argument is null. */
UVEL_API uint32_t SRV_Atoul(const char *pszText, uint32_t *pulValue);

#endif
