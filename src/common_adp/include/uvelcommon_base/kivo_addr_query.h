/* Addresses: IPv4 and MAC addresses of interfaces, VRFs.
 *
 * IPv4 addresses and masks are u32 in host order, 10.1.2.3 is 0x0A010203, unless a function says network order. A VRF
 * index of 0 is the public one.
 *
 * Usage:
 *     if (KIVO_IF_GetMainIpAddr(ulIfIndex, &ulAddr, &ulMask) != KIVO_OK) ...
 *     if (UVEL_IF_GetThisIfMacAddrByIfIp(ulIfIndex, ulAddr, aucMac) != KIVO_OK) ...
 *
 * Ownership: nothing is allocated or kept.
 * Threads: any.
 * Errors: queries that give a value give a fixed one, named with each, for what does not exist. The others give the
 * host's result: 0, or a failure that leaves the out-parameters as they were unless it says otherwise. A null
 * out-pointer is a failure. Nothing is logged. */
#ifndef UVELCOMMON_BASE_KIVO_ADDR_QUERY_H
#define UVELCOMMON_BASE_KIVO_ADDR_QUERY_H

#include <uvelcommon_base/kivo_types.h>

/* Bytes of a MAC address. */
#define KIVO_MAC_SIZE 6U

/* ---- IPv4 addresses of interfaces ---- */

/* The interface's first address, in network order. */
UVEL_API uint32_t IP_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet);

/* The same as IP_GetIfIpAddrByIndex. */
UVEL_API uint32_t KIVO_IP_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddrNet);

/* The interface's first address. 1, with an assertion, for null. */
UVEL_API uint32_t KIVO_Adapt_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddr);

/* The interface's main address and its mask. After a failure *pulMask is 0, or what the host wrote. A prefix length
 * above 32, which is none, is left in *pulMask as the host gave it. 1 for a null pulMask. */
UVEL_API uint32_t KIVO_IF_GetMainIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr, uint32_t *pulMask);

/* The interface's own address, the one it sends from. */
UVEL_API uint32_t UVEL_IP_IF_GetThisIfIpAddr(uint32_t ulIfIndex, uint32_t *pulAddr);

/* Mask of the interface's main address; 0 for none. */
UVEL_API uint32_t KIVO_IP_GetMask(uint32_t ulIfIndex);

/* How the interface came to its address (the host's IP_FLAG_*). */
UVEL_API uint32_t KIVO_Adapt_GetAddrFlag(uint32_t ulIfIndex, uint32_t *pulFlag);

/* Adds or removes the route to a user; the arguments are those of the host's RM_SetUnr4Rt. */
UVEL_API uint32_t KIVO_Adapt_SetUnr4Rt(uint32_t ulOperation, uint32_t ulVrfIndex, uint32_t ulAddr, uint32_t ulPrefixLen,
                                       uint32_t ulIfIndex, uint32_t ulNextHop);

/* ---- MAC addresses ---- */

/* 1 when aucMac is the interface's MAC address, 0 when it is not or the interface has none. 1 also for the invalid
 * interface indices 0 and 0xFFFFFFFF. */
UVEL_API uint32_t UVEL_IF_IsThisIfMacAddr(uint32_t ulIfIndex, const uint8_t aucMac[KIVO_MAC_SIZE]);

/* The MAC address that answers for ulAddr on the interface: for the virtual address of a VRRP group whose master this
 * device is the group's, otherwise the interface's. */
UVEL_API uint32_t UVEL_IF_GetThisIfMacAddrByIfIp(uint32_t ulIfIndex, uint32_t ulAddr, uint8_t aucMac[KIVO_MAC_SIZE]);

/* ---- VRFs ---- */

/* VRF of the interface's IPv4 traffic. 0 for the interface indices 0 and 0xFFFFFFFF, for a switch port and after a
 * failure. */
UVEL_API uint32_t KIVO_IF_GetVrfIndexByIfIndex(uint32_t ulIfIndex);

/* VRF of the interface's IPv6 traffic; 0xFFFFFFFF for none. */
UVEL_API uint32_t KIVO_IF_GetIpV6VrfIndexByIfIndex(uint32_t ulIfIndex);

/* The same as KIVO_IF_GetIpV6VrfIndexByIfIndex. */
UVEL_API uint32_t KIVO_Adapt_GetIpv6VrfIndexByIfIndex(uint32_t ulIfIndex);

/* 1 when the interface's traffic belongs to a VRF other than the public one: that of IPv4, or, where IPv4's is the
 * public one, that of IPv6. 0 when IPv4's VRF cannot be told. */
UVEL_API uint32_t KIVO_IF_IsSetVpn(uint32_t ulIfIndex);

/* Index of the VRF with an IPv6 instance of this name. */
UVEL_API uint32_t KIVO_L3VPN6_VRFMGM_VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex);

/* Name, at most 31 characters, of a VRF with an IPv6 instance. */
UVEL_API uint32_t KIVO_L3VPN6_VRFMGM_VrfNameQueryById(uint32_t ulVrfIndex, char szName[32]);

#endif
