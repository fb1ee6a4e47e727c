/* Which of the two devices is the active one. */
#ifndef UVEL_HOST_STANDBY_ROLE_H
#define UVEL_HOST_STANDBY_ROLE_H

#include "standby/wire.h"

#include <string_view>

namespace uvel::host::standby {

enum class Verdict { ACTIVE, STANDBY, CONFLICT };

/* Role of the device that says `own`, when the other says `peer`. Both devices come to opposite results (or none is
 * active, when both are configured as standby); CONFLICT when both are configured as active. */
Verdict DecideRole(const RoleInfo &own, const RoleInfo &peer, std::string_view own_name, std::string_view peer_name);

} // namespace uvel::host::standby

#endif
