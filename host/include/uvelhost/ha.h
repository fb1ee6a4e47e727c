/* High availability: which board is the master, and how far its standby is.
 *
 * The answers are read on hot paths (one before every notification of events): they cost a load each. */
#ifndef UVELHOST_HA_H
#define UVELHOST_HA_H

#include "types.h"

/* Roles of a board. */
#define HA_BOARD_MASTER 0U
#define HA_BOARD_SLAVE 1U

/* States of the backup between master and standby board. */
#define HA_STATE_ALONE 0U    /* no standby board */
#define HA_STATE_WAIT 1U     /* the standby board is there and not ready for data */
#define HA_STATE_BATCH 2U    /* everything that exists is being sent to it */
#define HA_STATE_REALTIME 3U /* it has everything and gets each change */

/* Role of this board: HA_BOARD_MASTER, any other value for a board that is not the master. Without high availability
 * every board is the master. */
UVELHOST_API uint32_t HA_GetBoardType(void);

/* Number of the master board in the low 16 bits; what the upper ones hold is the host's. */
UVELHOST_API uint32_t HA_GetMasterBoardID(void);

/* Number of the standby board in the low 16 bits, all ones when there is none. */
UVELHOST_API uint32_t HA_GetSlaveBoardID(void);

/* State of the backup: HA_STATE_*. */
UVELHOST_API uint32_t HA_GetState(void);

/* 0 when the standby board is ready to take over, 1 when it is not or there is none. */
UVELHOST_API uint32_t HA_SlaveIsReady(void);

#endif
