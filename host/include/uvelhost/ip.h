/* IP: addresses of interfaces, virtual router addresses, user routes, small helpers.
 *
 * IPv4 addresses and masks are u32 in host order with the first dotted octet most significant, unless the operation
 * says network order. Failures: no such interface, an interface without an address, a null out-pointer. Callers turn a
 * failure into a fixed answer of their own and neither retry nor log. */
#ifndef UVELHOST_IP_H
#define UVELHOST_IP_H

#include "types.h"

/* How an interface came to its IPv4 address. */
#define IP_FLAG_NONE 0U       /* it has none */
#define IP_FLAG_CONFIGURED 1U /* by configuration */
#define IP_FLAG_OBTAINED 2U   /* from a server or the peer, for a time */
#define IP_FLAG_BORROWED 3U   /* lent by another interface */

/* What RM_SetUnr4Rt does with a route. */
#define RM_UNR_DELETE 0U
#define RM_UNR_ADD 1U

/* ---- addresses of interfaces ---- */

/* Writes the interface's first IPv4 address in network order. The first is the main one, without it the oldest. */
UVELHOST_API uint32_t BDS_IPGetFirstIpByIfIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet);

/* Writes the interface's main IPv4 address and its prefix length, 0 to 32. Both out-pointers must be given. */
UVELHOST_API uint32_t BDS_IPGetMainIpByIfIndex(uint32_t ulIfIndex, uint32_t *pulAddr, uint32_t *pulPrefixLen);

/* Writes the interface's own IPv4 address, the one it sends from. */
UVELHOST_API uint32_t BDS_IPIFGetThisIfIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr);

/* Writes how the interface came to its IPv4 address: IP_FLAG_*. An interface without one is a success here. */
UVELHOST_API uint32_t BDS_IPGetIpFlagByIfIndex(uint32_t ulIfIndex, uint32_t *pulFlag);

/* Writes the mask of the interface's main IPv4 address. */
UVELHOST_API uint32_t IP_GetMask(uint32_t ulIfIndex, uint32_t *pulMask);

/* ---- virtual router addresses ---- */

/* 1 when ulAddr is the virtual address of a VRRP group on the interface, and then aucMac is that group's virtual MAC
 * address; otherwise 0 and aucMac is untouched. Callers may leave the result unread and go by VRRP_IsIfMasterByVMac. */
UVELHOST_API uint32_t VRRP4_VrrpIsVIp(uint32_t ulIfIndex, uint32_t ulAddr, uint8_t aucMac[6]);

/* 1 when aucMac is the virtual MAC address of a VRRP group on the interface and this device is the group's master,
 * otherwise 0. */
UVELHOST_API uint32_t VRRP_IsIfMasterByVMac(uint32_t ulIfIndex, const uint8_t aucMac[6]);

/* ---- routes of users ---- */

/* Adds (RM_UNR_ADD) or removes (RM_UNR_DELETE) the IPv4 route to a user: ulAddr with ulPrefixLen 0 to 32 in the VRF,
 * out of the interface, by way of ulNextHop (0: directly connected). Adding what is there and removing what is not are
 * successes. */
UVELHOST_API uint32_t RM_SetUnr4Rt(uint32_t ulOperation, uint32_t ulVrfIndex, uint32_t ulAddr, uint32_t ulPrefixLen,
                                   uint32_t ulIfIndex, uint32_t ulNextHop);

/* ---- helpers ---- */

/* 1 when the one bits of the mask are contiguous from the most significant bit on (0 and 0xFFFFFFFF included),
 * otherwise 0. */
UVELHOST_API uint32_t IP_NetmaskIsContinue(uint32_t ulMask);

/* Internet checksum of ulLen bytes: the complement of the one's complement sum of their 16-bit words as they stand in
 * memory, an odd last byte padded with 0. Stored as it is it makes the sum over data and checksum 0xFFFF. 0xFFFF for
 * length 0 and for null. */
UVELHOST_API uint16_t INET_Cksum(const void *pData, uint32_t ulLen);

#endif
