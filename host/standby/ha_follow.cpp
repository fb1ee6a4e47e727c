#include "standby/ha_follow.h"

#include <uvelhost/ha.h>
#include <uvelhost/model.h>

namespace uvel::host::standby {

static void Boards(MDL_HA_S &ha, uint32_t master, uint32_t slave) {
    if (master == slave)
        return;
    ha.ulMasterBoard = master;
    ha.ulSlaveBoard = slave;
}

void FollowHa(const YSB_LINK_STATE_S &state, uint32_t board, uint32_t peer_board) {
    MDL_HA_S ha;
    MDL_GetHa(&ha);
    const bool active = state.ulActive != 0;
    ha.ulBoardType = active ? HA_BOARD_MASTER : HA_BOARD_SLAVE;
    ha.ulState = state.ulBackup;
    ha.ulSlaveReady = state.ulBackup == HA_STATE_REALTIME ? 1 : 0;
    Boards(ha, active ? board : peer_board, active ? peer_board : board);
    (void)MDL_SetHa(&ha);
}

void EndOfHa(uint32_t board, uint32_t peer_board) {
    MDL_HA_S ha;
    MDL_GetHa(&ha);
    ha.ulBoardType = HA_BOARD_MASTER;
    ha.ulState = HA_STATE_ALONE;
    ha.ulSlaveReady = 0;
    if (board != peer_board)
        Boards(ha, board, UVELHOST_NONE);
    (void)MDL_SetHa(&ha);
}

} // namespace uvel::host::standby
