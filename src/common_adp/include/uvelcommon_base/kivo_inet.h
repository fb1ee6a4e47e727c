/* IPv4 and IPv6 addresses between text and their packed form in network order.
 *
 * The library's own conversions, with the platform's family numbers. They accept more than the C library's (leading
 * zeros, groups of more than four digits) and write IPv6 in upper case.
 *
 * Usage:
 *     if (oxm_inet_pton(KIVO_INET_V6, pszText, aucAddr) != 1) ...                       // 0: no address, -1: no family
 *     if (oxm_inet_ntop(KIVO_INET_V6, aucAddr, szText, sizeof(szText)) == NULL) ...     // no room
 *
 * Ownership: nothing is allocated or kept.
 * Threads: any.
 * Errors: an output is written only on success; a text is read up to its terminator and no further. Where the text of
 * an address fits into its buffer, bytes behind the terminator stay as they were. */
#ifndef UVELCOMMON_BASE_KIVO_INET_H
#define UVELCOMMON_BASE_KIVO_INET_H

#include <uvelcommon_base/kivo_types.h>

/* Address families of the platform. They are not those of the C library. */
#define KIVO_INET_V4 2
#define KIVO_INET_V6 29

/* Bytes of a packed address. */
#define KIVO_INET_V4_SIZE 4U
#define KIVO_INET_V6_SIZE 16U

/* Room of the longest text with its terminator. */
#define KIVO_INET_V4_ROOM 16U
#define KIVO_INET_V6_ROOM 46U

/* Reads the text of an address of family sFamily (KIVO_INET_V4, KIVO_INET_V6) into pAddr (4 or 16 bytes) as
 * kivo_inet_pton4 or kivo_inet_pton6 do. -1, and nothing is read, for any other family. */
UVEL_API int32_t oxm_inet_pton(int16_t sFamily, const char *pszText, void *pAddr);

/* Calls oxm_inet_pton. */
UVEL_API int32_t KIVO_oxm_inet_pton(int16_t sFamily, const char *pszText, void *pAddr);

/* Reads exactly four decimal parts of 0 to 255, separated by '.', into the 4 bytes at pucAddr. Leading zeros are
 * accepted in any number and mean nothing: "010.001.0.0001" is 10.1.0.1. Nothing may stand before or behind. pszText
 * must not be null. 1, or 0 for a text that is no address. */
UVEL_API int32_t kivo_inet_pton4(const char *pszText, uint8_t *pucAddr);

/* Reads eight groups of hexadecimal digits, separated by ':', into the 16 bytes at pucAddr. Once "::" may stand for one
 * group of zero or more; the last two groups may be written as an IPv4 address. Of a group only the last four digits
 * count: "10000::" is "0::". pszText must not be null. 1, or 0 for a text that is no address. */
UVEL_API int32_t kivo_inet_pton6(const char *pszText, uint8_t *pucAddr);

/* Writes the text of the address pAddr of family sFamily into szBuffer of ulSize bytes as kivo_inet_ntop4 or
 * kivo_inet_ntop6 do. Null for a null argument and for any other family. */
UVEL_API char *oxm_inet_ntop(int16_t sFamily, const void *pAddr, char *szBuffer, uint32_t ulSize);

/* Calls oxm_inet_ntop. */
UVEL_API char *KIVO_oxm_inet_ntop(int16_t sFamily, const void *pAddr, char *szBuffer, uint32_t ulSize);

/* Writes "10.1.2.3" for the 4 bytes at pucAddr and returns szBuffer. Null when ulSize is below 16, be the text as short
 * as it may. */
UVEL_API char *kivo_inet_ntop4(const uint8_t *pucAddr, char *szBuffer, uint32_t ulSize);

/* Writes the 16 bytes at pucAddr as groups in upper case without leading zeros, "2001:DB8::1", and returns szBuffer:
 * the first of the longest runs of two or more groups of zero becomes "::"; "::10.1.2.3" and "::FFFF:10.1.2.3" are
 * written where only the first six groups are zero, or the first five with FFFF behind. Null when the text with its
 * terminator is longer than ulSize, szBuffer is untouched then. */
UVEL_API char *kivo_inet_ntop6(const uint8_t *pucAddr, char *szBuffer, uint32_t ulSize);

#endif
