/* Strings and bytes. */
#ifndef UVELHOST_STRINGS_H
#define UVELHOST_STRINGS_H

#include "types.h"

/* Characters before the terminator; 0 for null. */
UVELHOST_API uint32_t QAL_StrLen(const char *pszText);

/* 0 when ulLen bytes of both areas are equal, otherwise negative or positive as the first differing byte of pA is
 * below or above that of pB. Two areas of length 0 are equal. */
UVELHOST_API int32_t QAL_MemCmp(const void *pA, const void *pB, uint32_t ulLen);

/* Value of the number at the start of pszText in base ulBase, by the rules of the C library's strtoul: leading white
 * space and a sign are accepted, a negative number wraps, 0 when there is no number or the base is neither 0 nor 2 to
 * 36, the largest u32 when it does not fit. *ppszEnd, when ppszEnd is not null, is the first character not read, which
 * is pszText when there is no number. 0 for a null text, *ppszEnd is then untouched. */
UVELHOST_API uint32_t QAL_strtoul(const char *pszText, char **ppszEnd, uint32_t ulBase);

/* Reads four decimal octets 0 to 255 separated by '.' (each of one to three digits, nothing before or behind) into
 * *pulAddr, the first octet most significant. 0, or 1 for a null argument or any other text. */
UVELHOST_API uint32_t QAL_StrToIpAddr(const char *pszText, uint32_t *pulAddr);

#endif
