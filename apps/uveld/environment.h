/* Where the host finds what the configuration names: it reads its own environment variables. */
#pragma once

#include "configuration.h"
#include "run_directory.h"

namespace uveld {

/* Before any thread starts: the configuration database (a file in the run directory unless one is configured) and the
 * capability file, when one is configured. */
void SetHostEnvironment(const Configuration &configuration, const RunDirectory &run_directory);

} // namespace uveld
