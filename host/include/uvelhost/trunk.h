/* Trunks: several ports that act as one interface.
 *
 * A trunk has an identifier (the number in its name), an index (its place in the host's table, counted from 0) and an
 * interface index. Its members are interfaces; a member is active when the trunk may send through it.
 *
 * Failures as for interfaces: what does not exist, and a null out-pointer. Callers turn a failure into a "none" value
 * of their own and neither retry nor log. */
#ifndef UVELHOST_TRUNK_H
#define UVELHOST_TRUNK_H

#include "types.h"

/* 1 when the interface is a trunk, otherwise 0. */
UVELHOST_API uint32_t Trunk_IF_IsTrunk(uint32_t ulIfIndex);

/* 1 when the interface is a member of a trunk, otherwise 0. */
UVELHOST_API uint32_t BDS_TrunkIsPortInTrunk(uint32_t ulIfIndex);

/* Writes whether the interface is a trunk or a member of one (1, otherwise 0) and, with 1, the trunk's index; with 0
 * *pulTrunkIndex is untouched and the result still a success. */
UVELHOST_API uint32_t BDS_TrunkGetTrunkIndex(uint32_t ulIfIndex, uint32_t *pulIsTrunk, uint32_t *pulTrunkIndex);

/* Writes the interface index of the trunk that the interface is a member of; fails when it is no member. */
UVELHOST_API uint32_t BDS_TrunkGetTrunkIfIndexByPort(uint32_t ulIfIndex, uint32_t *pulTrunkIfIndex);

/* Index of the trunk with an identifier, 0xFFFFFFFF when there is none. Called for every notification about members,
 * inside it, also when the trunk is just going: it must not wait for the notifying thread. */
UVELHOST_API uint32_t Trunk_GetIndexByTrunkID(uint32_t ulTrunkId);

/* Writes the interface indices of the members, ascending, and their number. *pulCount is the room of the array in
 * entries on the way in; fails, with both untouched, when they do not fit. */
UVELHOST_API uint32_t BDS_TrunkGetTrunkMem(uint32_t ulTrunkIndex, uint32_t *pulIfIndex, uint32_t *pulCount);

/* Writes the slots of the boards that carry members, ascending, each once, and their number; *pulCount as above. */
UVELHOST_API uint32_t BDS_TrunkGetAllBoard(uint32_t ulTrunkIndex, uint32_t *pulSlot, uint32_t *pulCount);

/* Number of members of the trunk on the board in ulSlot; 0 also when there is no such trunk or board. */
UVELHOST_API uint32_t BDS_TRUNK_GetMemCountOnSlot(uint32_t ulTrunkIfIndex, uint32_t ulSlot);

/* Writes the lowest interface index among the members that are up; fails when none is. */
UVELHOST_API uint32_t BDS_TrunkSelectFirstUpPort(uint32_t ulTrunkIndex, uint32_t *pulIfIndex);

/* Writes the active member that traffic with the hash value ulHash leaves by: with n active members in ascending order
 * number (ulHash mod n). Fails when none is active. */
UVELHOST_API uint32_t BDS_TrunkActiveIfIndexByTrunkIfIndex(uint32_t ulTrunkIfIndex, uint32_t ulHash,
                                                           uint32_t *pulIfIndex);

#endif
