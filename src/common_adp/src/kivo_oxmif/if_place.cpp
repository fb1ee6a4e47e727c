/* Interfaces: slot, card, port and main interface. */
#include <uvelcommon_base/kivo_if_query.h>

#include "host_read.h"
#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/trunk.h>

/* The common specification that holds the slot of trunks. */
static constexpr uint32_t SPEC_TRUNK_SLOT = 4;

uint32_t IFPDT_GetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot) {
    if (!IsIfIndex(ulIfIndex) || pulSlot == nullptr)
        return KIVO_FAIL;
    *pulSlot = 0;
    const uint32_t ulSlot = ReadOr<BDS_IfnetGetSlotByIfIndex>(KIVO_NONE, ulIfIndex);
    if (ulSlot != KIVO_NONE) {
        *pulSlot = ulSlot;
        return KIVO_OK;
    }
    if (Trunk_IF_IsTrunk(ulIfIndex) != 1)
        return KIVO_FAIL;
    *pulSlot = KIVO_GetKivoCommonSpec(SPEC_TRUNK_SLOT);
    return KIVO_OK;
}

uint32_t KIVO_IFPDT_GetSlotByIfIndex(uint32_t ulIfIndex, uint32_t *pulSlot) {
    return IFPDT_GetSlotByIfIndex(ulIfIndex, pulSlot);
}

uint32_t IFPDT_GetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard) {
    return ReadOfInterface<BDS_IfnetGetCardByIfIndex>(ulIfIndex, pulCard);
}

uint32_t KIVO_IFPDT_GetCardByIfIndex(uint32_t ulIfIndex, uint32_t *pulCard) {
    return IFPDT_GetCardByIfIndex(ulIfIndex, pulCard);
}

uint32_t IFPDT_GetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort) {
    return ReadOfInterface<BDS_IfnetGetPortByIfIndex>(ulIfIndex, pulPort);
}

uint32_t KIVO_IFPDT_GetPortByIfIndex(uint32_t ulIfIndex, uint32_t *pulPort) {
    return IFPDT_GetPortByIfIndex(ulIfIndex, pulPort);
}

uint32_t IFPDT_GetPortIndexByIfIndex(uint32_t ulIfIndex, uint32_t *pulPdtIndex) {
    return ReadOfInterface<BDS_IfnetGetPortIndexByIfIndex>(ulIfIndex, pulPdtIndex);
}

uint32_t KIVO_IFPDT_GetSlotByPdtIndex(uint32_t ulPdtIndex) {
    return ulPdtIndex >> 16 & 0xFF;
}

uint32_t KIVO_IFPDT_GetCardByPdtIndex(uint32_t ulPdtIndex) {
    return (ulPdtIndex & 0xFFFF) >> 13;
}

uint32_t KIVO_IFPDT_GetPortByPdtIndex(uint32_t ulPdtIndex) {
    return ulPdtIndex & 0x3F;
}

uint32_t KIVO_Adapt_GetMainIf(uint32_t ulIfIndex) {
    return ReadOr<BDS_IfnetGetMainIfIndex>(0U, ulIfIndex);
}

uint32_t IFPDT_GetVapIndexByDbssIfIndex(uint32_t ulIfIndex, uint32_t *pulVapIndex) {
    return BDS_IfnetGetVapIndexByDbssIfIndex(ulIfIndex, pulVapIndex);
}
