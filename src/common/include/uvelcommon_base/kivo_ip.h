/* IPv4 and IPv6 addresses: validity, masks, prefixes, 128-bit arithmetic, text.
 *
 * An IPv4 address is a number in host order, 10.1.2.3 is 0x0A010203. An IPv6 address is 16 bytes in network order and
 * counts as one number of 128 bits, the first byte most significant.
 *
 * Usage:
 *     SRV_IPv6PrefixLen2Mask(64, aucMask);
 *     for (; SRV_IPv6AddrInPrefix(aucAddr, aucPool, 112) == 1; SRV_GetNextIPv6Addr(aucAddr)) ...
 *     printf("%s to %s\n", SRV_Ipv6AddrtoStr(aucLow), SRV_Ipv6AddrtoStr(aucHigh));       // rings, see below
 *     if (SRV_StrtoIpv6Addr(pszText, aucAddr) != KIVO_OK) ...
 *
 * Ownership: nothing is allocated. A text of the two ring forms (SRV_IpAddrtoStr, SRV_Ipv6AddrtoStr) stands until 8
 * more of that form were made, by any thread; up to 8 may be used in one print.
 * Threads: any; the rings are not locked, threads that use them at the same time may share a text. A text in a ring
 * never leaves its buffer.
 * Errors: as each function says; arrays are not checked for null unless it says so. */
#ifndef UVELCOMMON_BASE_KIVO_IP_H
#define UVELCOMMON_BASE_KIVO_IP_H

#include "kivo_types.h"

/* Bytes of an IPv6 address. */
#define SRV_IPV6_SIZE 16U

/* Results of comparisons. */
#define SRV_IPV6_BELOW 0xFFFFFFFFU
#define SRV_IPV6_ABOVE 1U

/* What SRV_IPv6AddrDiff gives, with either sign, for addresses that are not in one /104. */
#define SRV_IPV6_FAR 0x00FFFFFF

/* --- IPv4 --- */

/* Mask of ulLen bits; all ones for 32 and everything above. */
UVEL_API uint32_t SRV_LentoMask(uint32_t ulLen);

/* 1 when ulAddr can be the address of a host: the first octet is 1 to 126 or 128 to 223. Else 0, for loopback too. */
UVEL_API uint32_t SRV_IsValidIpAddr(uint32_t ulAddr);

/* 1 when the first octet is 0 or 224 to 255, else 0. Loopback is not invalid here: this is another rule than that of
 * SRV_IsValidIpAddr. */
UVEL_API uint32_t KIVO_IP_IsInvalidAddr(uint32_t ulAddr);

/* "10.1.2.3" in a ring of 8 buffers. */
UVEL_API const char *SRV_IpAddrtoStr(uint32_t ulAddr);

/* Writes "10.1.0.0/16" into szBuffer of ulSize bytes; ulLen, any number, is written as it is. The number of characters,
 * or -1: a null buffer, or the text does not fit; it is empty then, if there is any room. */
UVEL_API int32_t SRV_SubnettoStr(uint32_t ulAddr, uint32_t ulLen, char *szBuffer, uint32_t ulSize);

/* Reads four decimal octets into *pulAddr, with the host's QAL_StrToIpAddr, whose result is returned. 1 without asking
 * the host for a null or empty text and for one with any character but '.' and '0' to '9'. */
UVEL_API uint32_t SRV_StrToIpAddr(const char *pszText, uint32_t *pulAddr);

/* --- IPv6 arithmetic --- */

/* pucAddr + 1 in place; the largest address is followed by "::". */
UVEL_API void SRV_GetNextIPv6Addr(uint8_t *pucAddr);

/* pucAddr - 1 in place; "::" is preceded by the largest address. */
UVEL_API void SRV_GetPreIPv6Addr(uint8_t *pucAddr);

/* pucOut = pucA + pucB modulo 2^128. pucOut may be one of the others. */
UVEL_API void SRV_IPv6Addr_ADD(const uint8_t *pucA, const uint8_t *pucB, uint8_t *pucOut);

/* pucOut = pucA - pucB modulo 2^128. pucOut may be one of the others. */
UVEL_API void SRV_IPv6Addr_SUB(const uint8_t *pucA, const uint8_t *pucB, uint8_t *pucOut);

/* SRV_IPV6_ABOVE when pucA is greater than pucB, SRV_IPV6_BELOW when it is smaller, 0 when they are equal. One pointer
 * given twice is equal to itself, without a look at what it points to. */
UVEL_API uint32_t SRV_CompareIPv6Addr(const uint8_t *pucA, const uint8_t *pucB);

/* pucA - pucB when the first 13 bytes are equal; otherwise SRV_IPV6_FAR when pucA is greater, -SRV_IPV6_FAR when it is
 * smaller. */
UVEL_API int32_t SRV_IPv6AddrDiff(const uint8_t *pucA, const uint8_t *pucB);

/* SRV_IPV6_BELOW when pucAddr is smaller than pucLow, SRV_IPV6_ABOVE when it is greater than pucHigh, 0 when it is
 * between them or one of them. */
UVEL_API uint32_t SRV_IPv6AddrInSection(const uint8_t *pucAddr, const uint8_t *pucLow, const uint8_t *pucHigh);

/* --- IPv6 prefixes --- */

/* Writes the mask of ucLen bits, 0 to 128, to pucMask. A greater length is not refused; it counts as 128. */
UVEL_API void SRV_IPv6PrefixLen2Mask(uint8_t ucLen, uint8_t *pucMask);

/* Writes to pucAddr the address with nothing but bit ucLen set, counted from 1 at the most significant one; "::" for 0
 * and everything above 128. Null: nothing happens. */
UVEL_API void SRV_IPv6PrefixLen2Addr(uint8_t ucLen, uint8_t *pucAddr);

/* Length of the prefix that pucMask stands for: 128 less its trailing zero bits. Whether it has gaps is not looked at.
 * A mask with nothing set behind its first byte gives 8 whatever that byte holds, 0 when it is 0 too. */
UVEL_API uint32_t SRV_IPv6Mask2PrefixLen(const uint8_t *pucMask);

/* pucOut = the first ucLen bits of pucAddr; a length above 128 counts as 128. pucOut may be pucAddr. */
UVEL_API void SRV_GetIPv6SubNet(const uint8_t *pucAddr, uint8_t ucLen, uint8_t *pucOut);

/* Makes pucAddr the prefix of ucLen bits that follows the one it is in; the last one is followed by "::". Nothing
 * happens for a length of 0 or above 128. */
UVEL_API void SRV_GetNextPrefix(uint8_t *pucAddr, uint8_t ucLen);

/* 1 when two prefixes overlap: the bits of the shorter one are the first bits of the other. Else 0. A length above 128
 * counts as 128. */
UVEL_API uint32_t SRV_IPv6PrefixOverLap(const uint8_t *pucA, uint8_t ucLenA, const uint8_t *pucB, uint8_t ucLenB);

/* 1 when two prefixes are the same: equal lengths, and equal bits in them. Else 0, for a null address too. */
UVEL_API uint32_t SRV_IPv6PrefixMatch(const uint8_t *pucA, uint8_t ucLenA, const uint8_t *pucB, uint8_t ucLenB);

/* 1 when the prefix pucPrefix of ulLen bits holds pucAddr, else 0. Only the low 8 bits of ulLen count: 256 is 0, and a
 * prefix of no bits holds every address. */
UVEL_API uint32_t SRV_IPv6AddrInPrefix(const uint8_t *pucAddr, const uint8_t *pucPrefix, uint32_t ulLen);

/* --- IPv6 text --- */

/* Text of pucAddr as kivo_inet_ntop6 writes it, "2001:DB8::1", in a ring of 8 buffers; "-" for null. */
UVEL_API const char *SRV_Ipv6AddrtoStr(const uint8_t *pucAddr);

/* Reads what kivo_inet_pton6 accepts into the 16 bytes at pucAddr. 0, or 1 for a null argument or any other text. */
UVEL_API uint32_t SRV_StrtoIpv6Addr(const char *pszText, uint8_t *pucAddr);

/* Reads groups of hex digits with an optional "::" into pucBuffer of ulSize bytes, which must be 16 or more. 1, and
 * pucBuffer untouched, for a text that is no address and for a smaller buffer.
 *
 * Beware: reading ends with 0, and pucBuffer untouched, at the first character that is neither a hex digit nor ':',
 * so that "::ffff:1.2.3.4" and "1::%eth0" look like success. Who needs a strict answer calls SRV_StrtoIpv6Addr. */
UVEL_API uint32_t SRV_StrToIPv6(const char *pszText, uint8_t *pucBuffer, uint32_t ulSize);

#endif
