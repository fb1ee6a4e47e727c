#include "environment.h"

#include <cstdlib>

namespace uveld {

void SetHostEnvironment(const Configuration &configuration, const RunDirectory &run_directory) {
    const std::string &database = configuration.configuration_database;
    setenv("UVELHOST_CONFDB",
           database.empty() ? ("sqlite:" + run_directory.File("configuration.db")).c_str() : database.c_str(), 1);
    if (!configuration.capabilities.empty())
        setenv("UVELHOST_CAPSET_FILE", configuration.capabilities.c_str(), 1);
}

} // namespace uveld
