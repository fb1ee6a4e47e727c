/* What ha.h answers follows the link. */
#ifndef UVEL_HOST_STANDBY_HA_FOLLOW_H
#define UVEL_HOST_STANDBY_HA_FOLLOW_H

#include <uvelhost/standby_link.h>

namespace uvel::host::standby {

void FollowHa(const YSB_LINK_STATE_S &state, uint32_t board, uint32_t peer_board);

/* No link any more: this device is alone. */
void EndOfHa(uint32_t board, uint32_t peer_board);

} // namespace uvel::host::standby

#endif
