/* Interfaces: names, slot texts and whole records. */
#include <uvelcommon_base/kivo_if_query.h>

#include "host_read.h"

/* One buffer for each of the two functions that give a text, so that one result of both can stand in one print. */
static char g_szNameByIfIndex[IF_NAME_SIZE];
static char g_szName[IF_NAME_SIZE];

const char *KIVO_IF_GetNameByIfIndex(uint32_t ulIfIndex) {
    if (!IsIfIndex(ulIfIndex))
        return nullptr;
    g_szNameByIfIndex[0] = '\0'; /* no name rather than that of the interface before */
    (void)IF_GetIfNameByIfIndex(ulIfIndex, g_szNameByIfIndex, sizeof(g_szNameByIfIndex));
    return g_szNameByIfIndex;
}

const char *KIVO_IF_GetName(uint32_t ulIfIndex) {
    g_szName[0] = '\0';
    return IF_GetIfNameByIfIndex(ulIfIndex, g_szName, sizeof(g_szName)) == KIVO_FAIL ? nullptr : g_szName;
}

uint32_t IF_GetIfNameByIfIndex(uint32_t ulIfIndex, char *pszName, uint32_t ulSize) {
    return BDS_IfnetGetIfNameByIfIndex(ulIfIndex, pszName, ulSize);
}

uint32_t KIVO_IF_INTF_GetSimpleName(uint32_t ulIfIndex, char *pszName, uint32_t ulSize) {
    return IF_INTF_GetSimpleName(ulIfIndex, pszName, ulSize);
}

uint32_t IF_INTF_GetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize) {
    return BDS_IfnetGetNumStrFromName(pszName, pszNumber, ulSize);
}

uint32_t KIVO_IF_GetNumStrFromName(const char *pszName, char *pszNumber, uint32_t ulSize) {
    return IF_INTF_GetNumStrFromName(pszName, pszNumber, ulSize);
}

uint32_t IF_GetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot) {
    return BDS_IfnetGetSlotIdBySlotStr(pszSlot, pulSlot);
}

uint32_t KIVO_IF_GetSlotIdBySlotStr(const char *pszSlot, uint32_t *pulSlot) {
    return IF_GetSlotIdBySlotStr(pszSlot, pulSlot);
}

uint32_t KIVO_GetSlotStrBySlotId(uint32_t ulSlot, char *pszSlot, uint32_t ulSize) {
    return IF_GetSlotStrBySlotId(ulSlot, pszSlot, ulSize);
}

const IF_IFNET_S *KIVO_IF_GetIfByIndex(uint32_t ulIfIndex) {
    return IF_GetIfByIndex(ulIfIndex);
}

const IF_IFNET_S *KIVO_Adapt_IF_FindFirstSubIfnet(uint32_t ulMainIfIndex) {
    return IF_FindFirstSubIfnet(ulMainIfIndex);
}

const IF_IFNET_S *KIVO_Adapt_IF_FindNextSubIfnet(uint32_t ulMainIfIndex, const IF_IFNET_S *pstCurrent) {
    return IF_FindNextSubIfnet(ulMainIfIndex, pstCurrent);
}
