/* Interfaces: index, kind and the host's numbers. */
#include <uvelcommon_base/kivo_if_query.h>

#include "host_read.h"
#include <uvelcommon_base/kivo_trunk_query.h>
#include <uvelhost/trunk.h>

static constexpr uint32_t LAYER_2 = 1;
static constexpr uint32_t LAYER_2_TOP_BYTE = 0x60;

uint32_t KIVO_IF_IsValidIfIndex(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) ? 1 : 0;
}

uint32_t KIVO_Adapt_IF_GetIFLayerType(uint32_t ulIfIndex) {
    return ulIfIndex >> 24 == LAYER_2_TOP_BYTE ? LAYER_2 : BDS_IfnetIsSwitchPort(ulIfIndex);
}

uint32_t KIVO_Adapt_IF_IS_L2IF(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) && KIVO_Adapt_IF_GetIFLayerType(ulIfIndex) == LAYER_2 ? 1 : 0;
}

uint32_t KIVO_Adapt_IF_IS_L3IF(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) && KIVO_Adapt_IF_GetIFLayerType(ulIfIndex) != LAYER_2 ? 1 : 0;
}

uint32_t KIVO_Adapt_IF_IS_SUBIF(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) ? BDS_IfnetIsSubIf(ulIfIndex) : 0;
}

static bool IsWideAreaPort(uint32_t ulPortType) {
    switch (ulPortType) {
    case 1:
    case 25:
    case 26:
    case 32:
    case 33:
    case 43:
    case 97:
    case 98:
    case 99:
    case 102:
    case 103:
        return true;
    default:
        return false;
    }
}

uint32_t KIVO_Adapt_IsWANInterface(uint32_t ulIfIndex) {
    uint32_t ulLooked = ulIfIndex;
    if (BDS_TrunkIsPortInTrunk(ulIfIndex) == 1 && Trunk_sh_GetTrunkIfIndexByPort(ulIfIndex, &ulLooked) != KIVO_OK)
        return 0;
    uint32_t ulPortType = 0;
    if (BDS_IfnetGetPortType(ulLooked, &ulPortType) != KIVO_OK || !IsWideAreaPort(ulPortType))
        return 0;
    return BDS_IfnetIsL3IF(ulLooked) == 1 && BDS_IfnetIsSubIf(ulLooked) != 1 ? 1 : 0;
}

uint32_t KIVO_IF_GetPortType(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) ? ReadOr<BDS_IfnetGetPortType>(0U, ulIfIndex) : 0;
}

uint32_t KIVO_IF_GetIfPhyType(uint32_t ulIfIndex) {
    return IsIfIndex(ulIfIndex) ? ReadOr<BDS_IfnetGetPhyType>(KIVO_NONE, ulIfIndex) : KIVO_NONE;
}

uint32_t IF_INTF_IsTempIf(uint32_t ulIfIndex) {
    return BDS_IfnetIsTempIf(ulIfIndex);
}

uint32_t KIVO_IFPDT_IsAdminEthPort(uint32_t ulIfIndex) {
    return IFPDT_IsAdminEthPort(ulIfIndex);
}

struct COMMAND {
    uint32_t ulHost;
    uint32_t ulLibrary;
};

/* The last row is out of reach, because no command above 23 is looked up: that 25 has no number is relied on. */
static constexpr COMMAND COMMANDS[] = {{3, 3},   {4, 4},   {5, 5},   {6, 6},   {7, 7},   {8, 8},   {9, 9},   {10, 10},
                                       {11, 11}, {12, 12}, {13, 13}, {14, 14}, {15, 15}, {16, 16}, {17, 17}, {18, 18},
                                       {19, 19}, {20, 20}, {21, 21}, {22, 22}, {23, 23}, {1, 1},   {0, 0},   {25, 21}};
static constexpr uint32_t LAST_COMMAND = 23;
static_assert(sizeof(COMMANDS) / sizeof(COMMANDS[0]) == 24);

uint32_t KIVO_Get_KivoIFCmdtype(uint32_t ulCommand) {
    if (ulCommand > LAST_COMMAND)
        return KIVO_NONE;
    for (const COMMAND &stCommand : COMMANDS) {
        if (stCommand.ulHost == ulCommand)
            return stCommand.ulLibrary;
    }
    return KIVO_NONE;
}

/* The one place where the host's numbers and the library's may come to differ. Today they are the same: 0, 2, 4, 6, 7,
 * 12, 15, 16, 19 to 24, 32 to 36, 38, 40 to 45, 52, 54, 72, 75 and 79 to 81 are in use, and any other is passed on. */
uint32_t KIVO_Get_OxmIfType(uint32_t ulType) {
    return ulType;
}
