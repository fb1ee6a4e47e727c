/* The place of a board that no device model speaks for: alone, and therefore the master, in slot 0. */

#include <uvelhost/device.h>
#include <uvelhost/ha.h>

__attribute__((weak)) uint32_t HA_GetBoardType(void) {
    return HA_BOARD_MASTER;
}

__attribute__((weak)) uint32_t DEVM_DB_GetSelfSlotId(uint32_t *pulSlot) {
    if (pulSlot == nullptr)
        return 1;
    *pulSlot = 0;
    return UVELHOST_OK;
}
