/* Brings the library up in its process, in the library's order, with what the configuration says. */
#pragma once

#include "configuration.h"
#include "modules.h"

namespace uveld {

/* Global tables, the library's own adapters, the standby hooks, settings of the configuration, the event task's
 * identifiers and hooks. Throws std::runtime_error. */
void BringLibraryUp(const Configuration &configuration);

/* Creates the event task and completes the handshake with it: afterwards the task serves its queue. The host's
 * notifications are registered on the way. Throws std::runtime_error. */
void StartEventTask();

} // namespace uveld
