/* The role of a board that no device model speaks for: it is alone, and alone it is the master. */

#include <uvelhost/ha.h>

__attribute__((weak)) uint32_t HA_GetBoardType(void) {
    return HA_BOARD_MASTER;
}
