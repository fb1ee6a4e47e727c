/* MAC address text forms. A MAC address is 6 bytes in the order of transmission.
 *
 * Usage:
 *     printf("%s moved to %s\n", SRV_MacAddrtoStr(aucOld), SRV_MacAddrtoStr(aucNew));        // rings, see below
 *     (void)SRV_MacAddrToStrPswWithType(aucMac, szUser, 1, 1, 1, 1);                         // "02:1A:2B:3C:4D:5E"
 *     if (SRV_MacStrToAddr("021a-2b3c-4d5e", aucMac) != KIVO_OK) ...                         // null arguments only
 *
 * Ownership: a text of the two ring forms stands until 8 more of that form were made, by any thread; up to 8 may
 * be used in one print.
 * Threads: any; the rings are not locked, threads that use them at the same time may share a text. A text in a ring
 * never leaves its buffer, whatever happens. */
#ifndef UVELCOMMON_BASE_KIVO_MAC_H
#define UVELCOMMON_BASE_KIVO_MAC_H

#include "kivo_types.h"

#define SRV_MAC_SIZE 6U /* bytes of a MAC address */

/* Room that the buffers of SRV_MacAddrToStr, QAL_LongMacToString and SRV_MacAddrToStrPswWithType must have. */
#define SRV_MAC_GROUP_TEXT_ROOM 15U
#define SRV_MAC_LONG_TEXT_ROOM 16U
#define SRV_MAC_TEXT_ROOM 18U

/* Writes "021a-2b3c-4d5e" into szBuffer of 15 bytes and returns szBuffer; null for a null argument. */
UVEL_API char *SRV_MacAddrToStr(const uint8_t *pucMac, char *szBuffer);

/* Writes "021a-2b3c-4d5e" into szBuffer of 16 bytes. The number of characters, 14, or -1 for a null argument. */
UVEL_API int32_t QAL_LongMacToString(const uint8_t *pucMac, char *szBuffer);

/* Writes "021a2b3c4d5e" into szBuffer of ulSize bytes. The number of characters, 12, or -1: a null argument, or the
 * text does not fit; it is empty then, if there is any room, for half an address must not pass for a whole one. */
UVEL_API int32_t SRV_MacToStrWithoutHyphen(const uint8_t *pucMac, char *szBuffer, uint32_t ulSize);

/* "021a-2b3c-4d5e" in a ring of 8 buffers; "-" for null. */
UVEL_API const char *SRV_MacAddrtoStr(const uint8_t *pucMac);

/* "02-1a-2b-3c-4d-5e" in another ring of 8 buffers; "-" for null. */
UVEL_API const char *SRV_MacAddrtoStrByteSplit(const uint8_t *pucMac);

/* Writes the layout that four flags choose, each set only when it is 1, into szBuffer of 18 bytes, which is cleared
 * first, and returns szBuffer; null for a null argument.
 *
 *     ucGrouped  ucPerByte  ucColon
 *     not set    any        any      021a2b3c4d5e
 *     set        set        set      02:1a:2b:3c:4d:5e
 *     set        set        not set  02-1a-2b-3c-4d-5e
 *     set        not set    set      021a:2b3c:4d5e
 *     set        not set    not set  021a-2b3c-4d5e
 *
 * ucUpperCase: letters A to F in place of a to f. */
UVEL_API char *SRV_MacAddrToStrPswWithType(const uint8_t *pucMac, char *szBuffer, uint8_t ucGrouped, uint8_t ucPerByte,
                                           uint8_t ucUpperCase, uint8_t ucColon);

/* Reads "021a-2b3c-4d5e" from pszText as scanf with "%02x%02x-%02x%02x-%02x%02x" would: bytes of one or two digits, '-'
 * behind the second and fourth, reading ends at the first character that does not fit. The bytes not read are 0, and
 * that is no error: who needs to know checks the text first. 1, and pucMac untouched, for a null argument only. */
UVEL_API uint32_t SRV_MacStrToAddr(const char *pszText, uint8_t *pucMac);

/* 1 when all six bytes are 0, else 0, for null too. */
UVEL_API uint32_t SRV_IsMacAddrZero(const uint8_t *pucMac);

/* 0 for ff-ff-ff-ff-ff-ff and null, 1 for every other address, 00-00-00-00-00-00 included. */
UVEL_API uint32_t SRV_MacAddrtoValid(const uint8_t *pucMac);

#endif
