/* Message types of the channel and of the services that carry it, and the facts about back types. */

#include "channel.h"

#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/assert.h>

using chi::SOURCE;

#define NONE CHI_NOT_CARRIED

/* Columns: HA, HSB, and one kept for a further service, which nobody reads. Not the mirror of the tables below: types 0
 * and 4 are received from HA, 0 and 8 from HSB, and never sent there. */
static constexpr uint32_t g_stChiC2PMapping[CHI_TYPE_COUNT][3] = {
    {NONE, NONE, NONE}, {6, 5, NONE},     {13, 4, 2},      {12, 8, 3},        {NONE, NONE, NONE},
    {9, NONE, NONE},    {NONE, 10, NONE}, {NONE, 9, NONE}, {NONE, NONE, NONE}};

static constexpr uint32_t HA_TYPES = 49;
static constexpr uint32_t HSB_TYPES = 255;

static uint32_t g_stChiHa2chiMapping[HA_TYPES];
static uint32_t g_stChiHsb2chiMapping[HSB_TYPES];

struct Pair {
    uint32_t ulServiceType;
    uint32_t ulChannelType;
};

static constexpr Pair FROM_HA[] = {{5, 0}, {6, 1}, {8, 4}, {9, 5}, {12, 3}, {13, 2}};
static constexpr Pair FROM_HSB[] = {{0, 8}, {3, 0}, {4, 2}, {5, 1}, {8, 3}, {9, 7}, {10, 6}};

static const char *const g_pszChiBackTypeDescr[] = {"HA", "HSB", "YSB", "DB"};

template <uint32_t COUNT, uint32_t PAIRS>
static void Fill(uint32_t (&aulMapping)[COUNT], const Pair (&astPairs)[PAIRS]) {
    for (uint32_t &ulChannelType : aulMapping)
        ulChannelType = NONE;
    for (const Pair &stPair : astPairs)
        aulMapping[stPair.ulServiceType] = stPair.ulChannelType;
}

uint32_t CHI_Init(void) {
    Fill(g_stChiHa2chiMapping, FROM_HA);
    Fill(g_stChiHsb2chiMapping, FROM_HSB);
    return KIVO_OK;
}

uint32_t CHI_MsgC2P(uint32_t ulBackType, uint32_t ulChannelType) {
    if (ulChannelType >= CHI_TYPE_COUNT)
        return CHI_NOT_CARRIED;
    switch (ulBackType) {
    case CHI_BACK_HA:
    case CHI_BACK_HSB:
        return g_stChiC2PMapping[ulChannelType][ulBackType];
    case CHI_BACK_YSB:
        return ulChannelType;
    default:
        qal_assert(SOURCE, __LINE__);
        return ulChannelType;
    }
}

uint32_t CHI_MsgP2C(uint32_t ulBackType, uint32_t ulServiceType) {
    switch (ulBackType) {
    case CHI_BACK_HA:
        return ulServiceType < HA_TYPES ? g_stChiHa2chiMapping[ulServiceType] : CHI_NOT_CARRIED;
    case CHI_BACK_HSB:
        return ulServiceType < HSB_TYPES ? g_stChiHsb2chiMapping[ulServiceType] : CHI_NOT_CARRIED;
    case CHI_BACK_YSB:
        return ulServiceType;
    default:
        qal_assert(SOURCE, __LINE__);
        return ulServiceType;
    }
}

uint32_t CHI_GetYsbMtu(void) {
    return KIVO_GetKivoCommonSpec(5);
}

uint32_t CHI_GetJumboMsgSize(void) {
    return KIVO_GetKivoCommonSpec(6);
}

uint32_t CHI_GetYsbMsgMaxFragNum(void) {
    const uint32_t ulMtu = CHI_GetYsbMtu();
    return ulMtu == 0 ? 1 : CHI_GetJumboMsgSize() / ulMtu + 1;
}

const char *CHI_GetBackTypeDescr(uint32_t ulBackType) {
    return ulBackType <= CHI_BACK_DB ? g_pszChiBackTypeDescr[ulBackType] : "";
}
