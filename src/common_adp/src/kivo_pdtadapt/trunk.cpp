/* Trunks and their members. */
#include <uvelcommon_base/kivo_trunk_query.h>

#include "host_read.h"
#include <uvelhost/trunk.h>

uint32_t Trunk_GetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex) {
    return BDS_TrunkGetTrunkIndex(ulIfIndex, pulIsTrunk, pulTrunkIndex);
}

uint32_t KIVO_Trunk_GetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex) {
    return Trunk_GetTrunkIndex(ulIfIndex, pulIsTrunk, pulTrunkIndex);
}

uint32_t UVEL_L2IF_GetTrunkIndex(uint32_t ulIfIndex) {
    if (!IsIfIndex(ulIfIndex))
        return ulIfIndex;
    uint32_t ulIsTrunk = 0;
    uint32_t ulTrunkIndex = ulIfIndex;
    const uint32_t ulResult = Trunk_GetTrunkIndex(ulIfIndex, &ulIsTrunk, &ulTrunkIndex);
    return ulResult == KIVO_OK && ulIsTrunk == 1 ? ulTrunkIndex : ulIfIndex;
}

uint32_t Trunk_sh_GetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex) {
    return ReadOfInterface<BDS_TrunkGetTrunkIfIndexByPort>(ulIfIndex, pulTrunkIfIndex);
}

uint32_t KIVO_Trunk_sh_GetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex) {
    return Trunk_sh_GetTrunkIfIndexByPort(ulIfIndex, pulTrunkIfIndex);
}

uint32_t Trunk_GetTrunkMem(uint32_t ulTrunkIndex, uint32_t *pulIfIndex, uint32_t *pulCount) {
    return BDS_TrunkGetTrunkMem(ulTrunkIndex, pulIfIndex, pulCount);
}

uint32_t Trunk_ADP_GetAllBoard(uint32_t ulTrunkIndex, uint32_t *pulSlot, uint32_t *pulCount) {
    return BDS_TrunkGetAllBoard(ulTrunkIndex, pulSlot, pulCount);
}

uint32_t TRUNK_ADP_GetMemCountOnSlot(uint32_t ulTrunkIfIndex, uint32_t ulSlot) {
    return BDS_TRUNK_GetMemCountOnSlot(ulTrunkIfIndex, ulSlot);
}

uint32_t Trunk_SelectFirstUpPortByTrunkIndex(uint32_t ulTrunkIndex, uint32_t *pulIfIndex) {
    return BDS_TrunkSelectFirstUpPort(ulTrunkIndex, pulIfIndex);
}

uint32_t KIVO_Trunk_SelectActivePortByHash(uint32_t ulTrunkIfIndex, uint32_t ulHash, uint32_t *pulIfIndex) {
    return BDS_TrunkActiveIfIndexByTrunkIfIndex(ulTrunkIfIndex, ulHash, pulIfIndex);
}
