/* A running uveld: from its configuration to its end. */
#pragma once

#include "configuration.h"

namespace uveld {

/* Runs until SIGTERM or SIGINT; SIGHUP opens the log anew. The signals must be blocked. Gives the exit status: 0 after
 * an ordinary end. Throws std::exception when it cannot start. */
int RunService(const Configuration &configuration);

} // namespace uveld
