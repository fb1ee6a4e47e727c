/* Trunks: several ports that act as one interface.
 *
 * A trunk has an index, its place in the host's table counted from 0, and an interface index. Its members are
 * interfaces; a member is active when the trunk may send through it.
 *
 * Usage:
 *     ulKey = UVEL_L2IF_GetTrunkIndex(ulIfIndex);                       // the same for all members of a trunk
 *     ulCount = 8;                                                      // room of the array
 *     if (Trunk_GetTrunkMem(ulTrunkIndex, aulMember, &ulCount) == KIVO_OK) ...
 *
 * Ownership: nothing is allocated or kept.
 * Threads: any.
 * Errors: the host's result: 0, or a failure that leaves the out-parameters as they were; a null out-pointer is a
 * failure. Where the room of an array, in entries on the way in, does not suffice, nothing is written. Nothing is
 * logged. */
#ifndef UVELCOMMON_BASE_KIVO_TRUNK_QUERY_H
#define UVELCOMMON_BASE_KIVO_TRUNK_QUERY_H

#include <uvelcommon_base/kivo_types.h>

/* Whether the interface is a trunk or a member of one (1, otherwise 0) and, with 1, the trunk's index. */
UVEL_API uint32_t Trunk_GetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex);

/* The same as Trunk_GetTrunkIndex. */
UVEL_API uint32_t KIVO_Trunk_GetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex);

/* Index of the trunk that the interface is or belongs to; for any other interface, an invalid index and after a failure
 * ulIfIndex itself. */
UVEL_API uint32_t UVEL_L2IF_GetTrunkIndex(uint32_t ulIfIndex);

/* Interface index of the trunk that the interface is a member of. 1 for the interface indices 0 and 0xFFFFFFFF. */
UVEL_API uint32_t Trunk_sh_GetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex);

/* The same as Trunk_sh_GetTrunkIfIndexByPort. */
UVEL_API uint32_t KIVO_Trunk_sh_GetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex);

/* Interface indices of the members, ascending, and their number. */
UVEL_API uint32_t Trunk_GetTrunkMem(uint32_t ulTrunkIndex, uint32_t *pulIfIndex, uint32_t *pulCount);

/* Slots of the boards that carry members, ascending, and their number. */
UVEL_API uint32_t Trunk_ADP_GetAllBoard(uint32_t ulTrunkIndex, uint32_t *pulSlot, uint32_t *pulCount);

/* Number of members on the board in ulSlot; 0 also for no such trunk. */
UVEL_API uint32_t TRUNK_ADP_GetMemCountOnSlot(uint32_t ulTrunkIfIndex, uint32_t ulSlot);

/* The member that is up with the lowest interface index. */
UVEL_API uint32_t Trunk_SelectFirstUpPortByTrunkIndex(uint32_t ulTrunkIndex, uint32_t *pulIfIndex);

/* The active member that traffic with the hash value ulHash leaves by. */
UVEL_API uint32_t KIVO_Trunk_SelectActivePortByHash(uint32_t ulTrunkIfIndex, uint32_t ulHash, uint32_t *pulIfIndex);

#endif
