/* The service log: one line a message, with time, level and who speaks. */
#pragma once

#include <memory>
#include <spdlog/spdlog.h>

#include "configuration.h"

namespace uveld {

/* Opens the log as configured; it becomes spdlog's default. Throws spdlog::spdlog_ex when the file cannot be opened. */
void OpenLog(const LogConfiguration &configuration);

/* Opens the log's file anew, after somebody has moved it away. A file that cannot be opened leaves the log as it is and
 * is reported in it. */
void ReopenLog();

/* A logger for a module, into the same log. */
std::shared_ptr<spdlog::logger> ModuleLog(const std::string &module);

} // namespace uveld
