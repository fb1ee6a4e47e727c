/* The service log: one line a message, with time, level and who speaks. */
#pragma once

#include <fmt/core.h>
#include <memory>
#include <string>

#include "configuration.h"

namespace spdlog {
class logger;
}

namespace uveld {

/* Opens the log as configured. Throws std::exception when the file cannot be opened. */
void OpenLog(const LogConfiguration &configuration);

/* Opens the log's file anew, after somebody has moved it away. A file that cannot be opened leaves the log as it is and
 * is reported in it. */
void ReopenLog();

/* uveld's own lines: a text and what stands in its place of each {}. */
void Log(LogLevel level, fmt::string_view text, fmt::format_args values);

template <typename... Values>
void LogInfo(fmt::format_string<Values...> text, Values &&...values) {
    Log(LogLevel::INFO, text, fmt::make_format_args(values...));
}

template <typename... Values>
void LogWarning(fmt::format_string<Values...> text, Values &&...values) {
    Log(LogLevel::WARNING, text, fmt::make_format_args(values...));
}

template <typename... Values>
void LogError(fmt::format_string<Values...> text, Values &&...values) {
    Log(LogLevel::ERROR, text, fmt::make_format_args(values...));
}

/* A module's lines, into the same log under the module's name. */
class ModuleLog {
  public:
    explicit ModuleLog(const std::string &module);
    void Write(LogLevel level, const char *text) const;

  private:
    std::shared_ptr<spdlog::logger> logger_;
};

} // namespace uveld
