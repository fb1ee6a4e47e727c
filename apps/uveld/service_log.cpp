#include "service_log.h"

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

namespace uveld {

namespace {

constexpr char PATTERN[] = "%Y-%m-%dT%H:%M:%S.%e%z %l %n: %v";

spdlog::level::level_enum LevelOf(LogLevel level) {
    switch (level) {
    case LogLevel::TRACE:
        return spdlog::level::trace;
    case LogLevel::DEBUG:
        return spdlog::level::debug;
    case LogLevel::WARNING:
        return spdlog::level::warn;
    case LogLevel::ERROR:
        return spdlog::level::err;
    case LogLevel::INFO:
        break;
    }
    return spdlog::level::info;
}

/* All loggers write through one sink, which passes on to the real one: that can be replaced while others write. */
class SwitchedSink : public spdlog::sinks::base_sink<std::mutex> {
  public:
    void Open(const std::string &file) {
        std::shared_ptr<spdlog::sinks::sink> target;
        if (file.empty())
            target = std::make_shared<spdlog::sinks::stderr_sink_mt>();
        else
            target = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file);
        target->set_pattern(PATTERN);
        const std::lock_guard lock(mutex_);
        target_ = std::move(target);
    }

  protected:
    void sink_it_(const spdlog::details::log_msg &message) override { target_->log(message); }
    void flush_() override { target_->flush(); }

  private:
    std::shared_ptr<spdlog::sinks::sink> target_;
};

struct ServiceLog {
    std::shared_ptr<SwitchedSink> sink = std::make_shared<SwitchedSink>();
    LogConfiguration configuration;
};

ServiceLog &TheLog() {
    static ServiceLog log;
    return log;
}

std::shared_ptr<spdlog::logger> MakeLogger(const std::string &name) {
    auto logger = std::make_shared<spdlog::logger>(name, TheLog().sink);
    logger->set_level(LevelOf(TheLog().configuration.level));
    logger->flush_on(spdlog::level::trace);
    return logger;
}

} // namespace

void OpenLog(const LogConfiguration &configuration) {
    TheLog().configuration = configuration;
    TheLog().sink->Open(configuration.file);
    spdlog::set_default_logger(MakeLogger("uveld"));
}

void ReopenLog() {
    try {
        TheLog().sink->Open(TheLog().configuration.file);
    } catch (const spdlog::spdlog_ex &error) {
        LogError("the log cannot be opened anew: {}", error.what());
    }
}

void Log(LogLevel level, fmt::string_view text, fmt::format_args values) {
    spdlog::default_logger_raw()->log(LevelOf(level), fmt::vformat(text, values));
}

ModuleLog::ModuleLog(const std::string &module) : logger_(MakeLogger(module)) {}

void ModuleLog::Write(LogLevel level, const char *text) const {
    logger_->log(LevelOf(level), text);
}

} // namespace uveld
