/* Small helpers of the host under the library's names, for modules that are linked with the library alone.
 *
 * Threads: any; a list belongs to one caller at a time. */
#ifndef UVELCOMMON_BASE_KIVO_HOST_HELPERS_H
#define UVELCOMMON_BASE_KIVO_HOST_HELPERS_H

#include <uvelcommon_base/kivo_types.h>
#include <uvelhost/list.h>

/* The IPv4 address that a text names, in network order, by the rules of the C library's inet_addr; 0xFFFFFFFF for any
 * other text and for null. */
UVEL_API uint32_t KIVO_InetAddr(const char *pszAddr);

/* Internet checksum of ulLen bytes, to be stored as it is; 0xFFFF for length 0 and for null. */
UVEL_API uint16_t KIVO_INET_Cksum(const void *pData, uint32_t ulLen);

/* 1 when the one bits of a mask are contiguous from the most significant bit on, otherwise 0. */
UVEL_API uint32_t KIVO_IP_NetmaskIsContinue(uint32_t ulMask);

/* Unlinks pstNode from a list. Null list or node, and a node that is in no list: nothing happens. */
UVEL_API void KIVO_DLL_Delete(DLL_S *pstList, DLL_NODE_S *pstNode);

#endif
