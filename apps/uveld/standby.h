/* The standby link of this process, shared by its modules. */
#pragma once

#include "configuration.h"
#include "modules.h"

namespace uveld {

/* Opens the link; what it brings goes to the modules that take part, by the id of the packets. `modules` must outlive
 * the link. Throws std::runtime_error. */
void OpenLink(const StandbyConfiguration &configuration, const Modules &modules);

void CloseLink();

} // namespace uveld
