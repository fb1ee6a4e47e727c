#include <uvelcommon_base/kivo_host_helpers.h>

#include <arpa/inet.h>

#include <uvelhost/ip.h>

static_assert(INADDR_NONE == KIVO_NONE);

uint32_t KIVO_InetAddr(const char *pszAddr) {
    return pszAddr == nullptr ? KIVO_NONE : inet_addr(pszAddr);
}

uint16_t KIVO_INET_Cksum(const void *pData, uint32_t ulLen) {
    return INET_Cksum(pData, ulLen);
}

uint32_t KIVO_IP_NetmaskIsContinue(uint32_t ulMask) {
    return IP_NetmaskIsContinue(ulMask);
}

void KIVO_DLL_Delete(DLL_S *pstList, DLL_NODE_S *pstNode) {
    DLL_Delete(pstList, pstNode);
}
