#include "configuration.h"

#include <uvelcommon_base/kivo_settings.h>
#include <uvelhost/standby_link.h>
#include <yaml/document.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace uveld {

namespace {

using uvel::yaml::Fields;
using uvel::yaml::Node;

constexpr size_t MAX_PATH_BYTES = 4095;
constexpr size_t MAX_SOCKET_FOLDER_BYTES = 80; /* sockets in it have names of at most 107 bytes */
constexpr int64_t HOUR_MS = 3'600'000;

/* A file that is named in the configuration, seen from the folder of the configuration. */
class Paths {
  public:
    explicit Paths(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::string Read(const Node &node, size_t max = MAX_PATH_BYTES) const {
        return (folder_ / node.Text(1, max)).lexically_normal().string();
    }

    /* One that must be there already. */
    std::string ReadExisting(const Node &node) const {
        const std::string path = Read(node);
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error))
            node.Complain("there is no file " + path);
        return path;
    }

  private:
    std::filesystem::path folder_;
};

LogConfiguration ReadLog(const Node &node, const Paths &paths) {
    const Fields fields(node, {"file", "level"});
    LogConfiguration log;
    if (const auto file = fields.Optional("file"))
        log.file = paths.Read(*file);
    if (const auto level = fields.Optional("level"))
        log.level = level->OneOf<LogLevel>({{"trace", LogLevel::TRACE},
                                            {"debug", LogLevel::DEBUG},
                                            {"info", LogLevel::INFO},
                                            {"warning", LogLevel::WARNING},
                                            {"error", LogLevel::ERROR}});
    return log;
}

template <typename T>
void ReadNumber(const Fields &fields, std::string_view key, int64_t min, int64_t max, T *value) {
    if (const auto node = fields.Optional(key))
        *value = node->NumberOf<T>(min, max);
}

ProcessConfiguration ReadProcess(const Node &node) {
    const Fields fields(node, {"module_id", "io_module_id", "channel", "component_type", "main", "event_queue_depth"});
    ProcessConfiguration process;
    ReadNumber(fields, "module_id", 1, UINT32_MAX, &process.module_id);
    ReadNumber(fields, "io_module_id", 1, UINT32_MAX, &process.io_module_id);
    ReadNumber(fields, "channel", 1, UINT32_MAX - 1, &process.channel);
    ReadNumber(fields, "component_type", 0, UINT32_MAX, &process.component_type);
    ReadNumber(fields, "event_queue_depth", 1, 1 << 24, &process.event_queue_depth);
    if (const auto main = fields.Optional("main"))
        process.main_process = main->Flag();
    return process;
}

/* "netlink", or a map that names a scenario or says more of the kernel's interfaces. */
FeederConfiguration ReadFeeder(const Node &node, const Paths &paths) {
    FeederConfiguration feeder;
    if (node.IsScalar()) {
        (void)node.OneOf<int>({{"netlink", 0}});
        return feeder;
    }
    const Fields fields(node, {"scenario", "speed", "netlink"});
    if (const auto netlink = fields.Optional("netlink")) {
        ReadNumber(Fields(*netlink, {"slot"}), "slot", 0, 0xFFFE, &feeder.slot);
        if (const auto scenario = fields.Optional("scenario"))
            scenario->Complain("a device comes from the kernel or from a scenario, not from both");
        return feeder;
    }
    feeder.scenario = paths.ReadExisting(fields.Required("scenario"));
    ReadNumber(fields, "speed", 1, 1000, &feeder.speed);
    return feeder;
}

uint32_t ReadTime(const Fields &fields, std::string_view key, int64_t min, uint32_t otherwise) {
    const auto node = fields.Optional(key);
    return node.has_value() ? static_cast<uint32_t>(node->Milliseconds(min, HOUR_MS)) : otherwise;
}

bool IsPort(const std::string &text) {
    uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size();
}

/* The form of it; whether there is such an address shows when the link is opened. */
std::string ReadAddress(const Node &node) {
    const std::string text = node.Text(3, 64);
    const size_t colon = text.rfind(':');
    const std::string host = text.substr(0, colon == std::string::npos ? 0 : colon);
    const bool is_bracketed = host.starts_with('[') && host.ends_with(']') && host.size() > 2;
    if (host.empty() || (!is_bracketed && host.find_first_of(":[]") != std::string::npos) ||
        !IsPort(text.substr(colon + 1)))
        node.Complain("expected ADDRESS:PORT or [ADDRESS]:PORT, found \"" + text + "\"");
    return text;
}

/* How it begins; the host, which opens it, knows the rest. */
std::string ReadDatabase(const Node &node) {
    std::string text = node.Text(1, MAX_PATH_BYTES);
    for (const char *start : {"sqlite:", "etcd://", "etcds://", "shm:"}) {
        if (text.starts_with(start) && text != start)
            return text;
    }
    node.Complain("expected sqlite:PATH, etcd://HOST:PORT,... or etcds://HOST:PORT,..., found \"" + text + "\"");
}

StandbyConfiguration ReadStandby(const Node &node, const Paths &paths) {
    const Fields fields(node, {"listen", "peer", "certificate", "key", "authority", "peer_name", "role", "priority",
                               "takeover", "heartbeat", "timeout", "board", "peer_board", "window"});
    StandbyConfiguration standby;
    if (const auto listen = fields.Optional("listen"))
        standby.listen = ReadAddress(*listen);
    if (const auto peer = fields.Optional("peer"))
        standby.peer = ReadAddress(*peer);
    if (standby.listen.empty() && standby.peer.empty())
        node.Complain("one of the keys \"listen\" and \"peer\" is needed here");
    standby.certificate = paths.ReadExisting(fields.Required("certificate"));
    standby.key = paths.ReadExisting(fields.Required("key"));
    standby.authority = paths.ReadExisting(fields.Required("authority"));
    standby.peer_name = fields.Required("peer_name").Text(1, 253);
    if (const auto role = fields.Optional("role"))
        standby.role = role->OneOf<uint32_t>(
            {{"auto", YSB_LINK_ROLE_AUTO}, {"active", YSB_LINK_ROLE_ACTIVE}, {"standby", YSB_LINK_ROLE_STANDBY}});
    ReadNumber(fields, "priority", 0, UINT32_MAX, &standby.priority);
    standby.takeover_ms = ReadTime(fields, "takeover", 1, standby.takeover_ms);
    standby.heartbeat_ms = ReadTime(fields, "heartbeat", 1, standby.heartbeat_ms);
    standby.timeout_ms = ReadTime(fields, "timeout", int64_t{standby.heartbeat_ms} + 1,
                                  std::max(standby.timeout_ms, 3 * standby.heartbeat_ms));
    ReadNumber(fields, "board", 0, 0xFFFE, &standby.board);
    ReadNumber(fields, "peer_board", 0, 0xFFFE, &standby.peer_board);
    ReadNumber(fields, "window", 1 << 16, 1 << 30, &standby.window_bytes);
    return standby;
}

/* A map from indexes below `count` to numbers. */
std::map<uint32_t, uint32_t> ReadTable(const Node &node, uint32_t count, uint32_t max) {
    std::map<uint32_t, uint32_t> table;
    for (const auto &[key, value] : node.Entries()) {
        const auto index = key.NumberOf<uint32_t>(0, count - 1);
        if (!table.emplace(index, value.NumberOf<uint32_t>(0, max)).second)
            key.Complain("the number " + std::to_string(index) + " stands here twice");
    }
    return table;
}

ModuleConfiguration ReadModule(const Node &node, const Paths &paths) {
    const Fields fields(node, {"file", "settings"});
    ModuleConfiguration module;
    module.file = paths.ReadExisting(fields.Required("file"));
    if (const auto settings = fields.Optional("settings")) {
        for (const auto &[name, value] : settings->Entries())
            module.settings.emplace_back(name.Text(1, 64), value.Text(0, MAX_PATH_BYTES));
    }
    return module;
}

Configuration Read(const Node &document, const Paths &paths) {
    const Fields fields(document, {"run_directory", "log", "process", "feeder", "configuration_database",
                                   "capabilities", "standby", "specifications", "switches", "modules"});
    Configuration configuration;
    if (const auto folder = fields.Optional("run_directory"))
        configuration.run_directory = paths.Read(*folder, MAX_SOCKET_FOLDER_BYTES);
    if (const auto log = fields.Optional("log"))
        configuration.log = ReadLog(*log, paths);
    if (const auto process = fields.Optional("process"))
        configuration.process = ReadProcess(*process);
    if (const auto feeder = fields.Optional("feeder"))
        configuration.feeder = ReadFeeder(*feeder, paths);
    if (const auto database = fields.Optional("configuration_database"))
        configuration.configuration_database = ReadDatabase(*database);
    if (const auto capabilities = fields.Optional("capabilities"))
        configuration.capabilities = paths.ReadExisting(*capabilities);
    if (const auto standby = fields.Optional("standby"))
        configuration.standby = ReadStandby(*standby, paths);
    if (const auto table = fields.Optional("specifications"))
        configuration.specifications = ReadTable(*table, KIVO_COMMON_SPEC_NUM, UINT32_MAX);
    if (const auto table = fields.Optional("switches"))
        configuration.switches = ReadTable(*table, KIVO_PDT_OXM_CFG_NUM, UINT8_MAX);
    if (const auto modules = fields.Optional("modules")) {
        for (const Node &module : modules->Items())
            configuration.modules.push_back(ReadModule(module, paths));
    }
    return configuration;
}

} // namespace

Configuration ParseConfiguration(const std::string &text, const std::string &name, const std::string &folder) {
    const Node document = uvel::yaml::LoadText(text, name);
    return document.IsNothing() ? Configuration() : Read(document, Paths(folder));
}

Configuration LoadConfiguration(const std::string &path) {
    const Node document = uvel::yaml::LoadFile(path);
    const std::filesystem::path folder = std::filesystem::absolute(path).parent_path();
    return document.IsNothing() ? Configuration() : Read(document, Paths(folder));
}

} // namespace uveld
