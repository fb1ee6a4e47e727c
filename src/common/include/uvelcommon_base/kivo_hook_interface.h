/* Forwarders to product hooks: interfaces, VLANs, addresses and packets.
 *
 * Every function calls the hook of its name (see kivo_hooks.h) and returns its result; "0 without a hook" and the like
 * is the answer where none is installed. */
#ifndef UVELCOMMON_BASE_KIVO_HOOK_INTERFACE_H
#define UVELCOMMON_BASE_KIVO_HOOK_INTERFACE_H

#include "kivo_hooks.h"

/* First IPv4 address of an interface, in host order, into *pulAddr. 1 without a hook. */
UVEL_API uint32_t KIVO_GetIfIpAddrByIndex(uint32_t ulIfIndex, uint32_t *pulAddr);

/* 1 when VLAN ulVlanId (cut to 16 bits) is set in the 4096-bit bitmap. 0 without a hook. */
UVEL_API uint32_t KIVO_L2IF_GET_VLAN_IN_VLANBITMAP(uint32_t ulVlanId, const uint32_t *paulBitmap);

/* Interface index of a VLAN (cut to 16 bits), 0xFFFFFFFF for none. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_IF_GetIFIndexByVlanID(uint32_t ulVlanId);

/* 1 for a sub-interface. 0 without a hook. */
UVEL_API uint32_t KIVO_IF_IsSUBIF(uint32_t ulIfIndex);

/* 1 for a layer-2 interface. 0 without a hook. */
UVEL_API uint32_t KIVO_IF_IsL2IF(uint32_t ulIfIndex);

/* 1 for a layer-3 interface. 0 without a hook. */
UVEL_API uint32_t KIVO_IF_IsL3IF(uint32_t ulIfIndex);

/* Membership bit of an interface in a VLAN (cut to 16 bits). 0 without a hook. */
UVEL_API uint32_t KIVO_GetBitByVlanIdAndIfIndex(uint32_t ulVlanId, uint32_t ulIfIndex);

/* Members of a trunk on a slot. 0 without a hook. */
UVEL_API uint32_t KIVO_TRUNK_ADP_GetMemCountOnSlot(KIVO_WORDS);

/* Access port of a DBSS interface. 1 without a hook. */
UVEL_API uint32_t KIVO_IFGetDbssAccessPort(KIVO_WORDS);

/* Whether a port is configured in a VLAN; the second argument, the VLAN, is cut to 16 bits. 1 without a hook. */
UVEL_API uint32_t KIVO_PortIsInCfgVlan(KIVO_WORDS);

/* Flag of an interface's address. 1 without a hook. */
UVEL_API uint32_t KIVO_IF_GetAddrFlag(KIVO_WORDS);

/* Sets an IPv4 user network route. 1 without a hook. */
UVEL_API uint32_t KIVO_RM_Unr4Rt(KIVO_WORDS);

/* Virtual-system id from the configuration. 0 without a hook. */
UVEL_API uint32_t KIVO_CFG_GetVsysID(KIVO_WORDS);

/* Virtual-system id of the VPN instance that a full interface name carries. 0 without a hook. */
UVEL_API uint32_t KIVO_GetVsysIDByIfFullName(const char *pszName);

/* Index of the IPv6 VRF of an interface. 0 without a hook. */
UVEL_API uint32_t KIVO_GetIpv6VrfIndexByIfIndex(uint32_t ulIfIndex);

/* Physical slot, from the driver. Nothing happens without a hook. */
UVEL_API void KIVO_DRV_GetPhySlot(KIVO_WORDS);

/* Management VLAN, 0 to 65535, into *pulVlan. 1 for a null pointer; without a hook 1 and *pulVlan is 0; otherwise 0, and
 * what *pulVlan gets are the low 16 bits of the hook's result, whatever the hook wrote there. */
UVEL_API uint32_t KIVO_GetManagementVlan(uint32_t *pulVlan);

/* The same as KIVO_GetManagementVlan. The name is kept for those who link against it. */
UVEL_API uint32_t KIVO_GetIfIndexForAP(uint32_t *pulVlan);

/* Number of a named ACL into *pulAclNum. 1 for a null argument and without a hook; otherwise *pulAclNum is the hook's
 * result and this returns 0. */
UVEL_API uint32_t KIVO_GetAclNumByName(const char *pszName, uint32_t *pulAclNum);

/* Transmits a packet with quality of service. 1 without a hook. */
UVEL_API uint32_t KIVO_IFQosTransmit(KIVO_WORDS);

/* Transmits a packet, a host message buffer, in the layer-2 access gateway. The buffer belongs to the callee in every
 * case: without a hook it is destroyed and the result is 0. */
UVEL_API uint32_t KIVO_IF_QosL2BNGTransmit(void *pMbuf, uintptr_t ulArg2, uintptr_t ulArg3, uintptr_t ulArg4,
                                           uintptr_t ulArg5, uintptr_t ulArg6, uintptr_t ulArg7, uintptr_t ulArg8);

/* 1 for a bridge-domain interface. 0 without a hook. */
UVEL_API uint32_t KIVO_IF_IsVBDIF(KIVO_WORDS);

/* Puts a bridge-domain id into a message buffer. Nothing happens without a hook. */
UVEL_API void KIVO_SetBdIdToMbuf(KIVO_WORDS);

/* Reads the bridge-domain id of a message buffer. Nothing happens without a hook. */
UVEL_API void KIVO_GetBdIdFromMbuf(KIVO_WORDS);

/* Shuts an interface down. 0 without a hook. */
UVEL_API uint32_t KIVO_IFPDT_ShutDownInterface(KIVO_WORDS);

/* Takes the shutdown of an interface back. 0 without a hook. */
UVEL_API uint32_t KIVO_IFPDT_NoShutDownInterface(KIVO_WORDS);

/* First sub-interface of an interface, null for none. Null without a hook. */
UVEL_API void *KIVO_IF_FindFirstSubIfnet(KIVO_WORDS);

/* Sub-interface after another one, null for none. Null without a hook. */
UVEL_API void *KIVO_IF_FindNextSubIfnet(KIVO_WORDS);

/* 1 for an interface of the wide-area side. 0 without a hook. */
UVEL_API uint32_t KIVO_IsWANInterface(uint32_t ulIfIndex);

/* Interface that has an IPv6 address. 1 without a hook. */
UVEL_API uint32_t KIVO_GetIfIndexByIPv6Addr(KIVO_WORDS);

/* Always 0: no slot carries WLAN by itself. */
UVEL_API uint32_t KIVO_IfSlotSupportWLAN(void);

/* Text of a slot as the platform shows it (at most 31 characters) into pszText, which has room for ulSize; an empty text
 * for a slot that the platform has no text for. What does not fit asserts and leaves an empty text. Always 0. */
UVEL_API uint32_t KIVO_GetStringByLogicSlotID(uint32_t ulSlotId, char *pszText, uint32_t ulSize);

#endif
