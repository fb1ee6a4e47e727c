/* What uveld reads from its configuration file. */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace uveld {

enum class LogLevel { TRACE, DEBUG, INFO, WARNING, ERROR };

struct LogConfiguration {
    std::string file; /* empty: standard error */
    LogLevel level = LogLevel::INFO;
};

/* How the process presents itself on its device. */
struct ProcessConfiguration {
    uint32_t module_id = 0xC21F0000;
    uint32_t io_module_id = 0xC21F0001;
    uint32_t channel = 1;
    uint32_t component_type = 1;
    bool main_process = true; /* a main process registers no component */
    uint32_t event_queue_depth = 10240;
};

/* Where the device model comes from: the kernel, or a scenario file. */
struct FeederConfiguration {
    std::string scenario; /* empty: the kernel */
    uint32_t speed = 1;   /* of the scenario's clock */
    uint32_t slot = 0;    /* board that the kernel's Ethernet devices sit on */
};

struct StandbyConfiguration {
    std::string listen;
    std::string peer;
    std::string certificate;
    std::string key;
    std::string authority;
    std::string peer_name;
    uint32_t role = 0; /* YSB_LINK_ROLE_* */
    uint32_t priority = 0;
    uint32_t takeover_ms = 3000;
    uint32_t heartbeat_ms = 1000;
    uint32_t timeout_ms = 3000;
    uint32_t board = 0;
    uint32_t peer_board = 1;
    uint32_t window_bytes = 16U << 20;
};

struct ModuleConfiguration {
    std::string file;
    std::vector<std::pair<std::string, std::string>> settings;
};

struct Configuration {
    std::string run_directory = "/run/uveld";
    LogConfiguration log;
    ProcessConfiguration process;
    FeederConfiguration feeder;
    std::string configuration_database; /* empty: a file in the run directory */
    std::string capabilities;           /* empty: none */
    std::optional<StandbyConfiguration> standby;
    std::map<uint32_t, uint32_t> specifications;
    std::map<uint32_t, uint32_t> switches;
    std::vector<ModuleConfiguration> modules;
};

/* Reads and checks a configuration file. Throws uvel::yaml::WrongDocument, which names the place. Relative paths in it
 * count from the folder of the file. */
Configuration LoadConfiguration(const std::string &path);

/* The same from memory; `folder` is what relative paths count from. */
Configuration ParseConfiguration(const std::string &text, const std::string &name, const std::string &folder);

} // namespace uveld
