#include "configuration.h"

#include <gtest/gtest.h>
#include <yaml/document.h>

#include "temporary_folder.h"

using namespace uveld;

namespace {

Configuration Parse(const std::string &text, const std::string &folder = "/nowhere") {
    return ParseConfiguration(text, "u.yaml", folder);
}

std::string ComplaintAbout(const std::string &text, const std::string &folder = "/nowhere") {
    try {
        Parse(text, folder);
    } catch (const uvel::yaml::WrongDocument &wrong) {
        return wrong.what();
    }
    return "accepted";
}

TEST(UveldConfiguration, OfNothingIsTheUsualOne) {
    const Configuration configuration = Parse("");
    EXPECT_EQ("/run/uveld", configuration.run_directory);
    EXPECT_EQ("", configuration.log.file);
    EXPECT_EQ(LogLevel::INFO, configuration.log.level);
    EXPECT_EQ(10240u, configuration.process.event_queue_depth);
    EXPECT_EQ("", configuration.feeder.scenario);
    EXPECT_FALSE(configuration.standby.has_value());
    EXPECT_TRUE(configuration.modules.empty());
}

TEST(UveldConfiguration, ReadsEverything) {
    const TemporaryFolder folder;
    for (const char *name : {"a.pem", "a.key", "authority.pem", "sessions.so", "device.yaml", "capabilities.yaml"})
        folder.Write(name, "x");
    const Configuration configuration = Parse(R"(
run_directory: run
log: {file: log/uveld.log, level: debug}
process: {module_id: 0xC2300000, io_module_id: 7, channel: 3, component_type: 9, main: false, event_queue_depth: 64}
feeder: {scenario: device.yaml, speed: 10}
configuration_database: "etcd://127.0.0.1:2379"
capabilities: capabilities.yaml
standby:
  listen: 0.0.0.0:4711
  peer: 192.0.2.2:4711
  certificate: a.pem
  key: a.key
  authority: authority.pem
  peer_name: b
  role: active
  priority: 5
  takeover: 1s
  heartbeat: 200ms
  timeout: 600ms
  board: 1
  peer_board: 2
  window: 1048576
specifications: {0: 16, 6: 0xFFFF}
switches: {8: 1}
modules:
  - file: sessions.so
    settings: {document: sessions.xml, socket: s.sock}
)",
                                              folder.Path());
    EXPECT_EQ(folder.File("run"), configuration.run_directory);
    EXPECT_EQ(folder.File("log/uveld.log"), configuration.log.file);
    EXPECT_EQ(LogLevel::DEBUG, configuration.log.level);
    EXPECT_EQ(0xC2300000u, configuration.process.module_id);
    EXPECT_EQ(7u, configuration.process.io_module_id);
    EXPECT_EQ(3u, configuration.process.channel);
    EXPECT_EQ(9u, configuration.process.component_type);
    EXPECT_FALSE(configuration.process.main_process);
    EXPECT_EQ(64u, configuration.process.event_queue_depth);
    EXPECT_EQ(folder.File("device.yaml"), configuration.feeder.scenario);
    EXPECT_EQ(10u, configuration.feeder.speed);
    EXPECT_EQ("etcd://127.0.0.1:2379", configuration.configuration_database);
    EXPECT_EQ(folder.File("capabilities.yaml"), configuration.capabilities);
    ASSERT_TRUE(configuration.standby.has_value());
    EXPECT_EQ("0.0.0.0:4711", configuration.standby->listen);
    EXPECT_EQ("192.0.2.2:4711", configuration.standby->peer);
    EXPECT_EQ(folder.File("a.key"), configuration.standby->key);
    EXPECT_EQ("b", configuration.standby->peer_name);
    EXPECT_EQ(1u, configuration.standby->role);
    EXPECT_EQ(5u, configuration.standby->priority);
    EXPECT_EQ(1000u, configuration.standby->takeover_ms);
    EXPECT_EQ(200u, configuration.standby->heartbeat_ms);
    EXPECT_EQ(600u, configuration.standby->timeout_ms);
    EXPECT_EQ(1u, configuration.standby->board);
    EXPECT_EQ(2u, configuration.standby->peer_board);
    EXPECT_EQ(1048576u, configuration.standby->window_bytes);
    EXPECT_EQ((std::map<uint32_t, uint32_t>{{0, 16}, {6, 0xFFFF}}), configuration.specifications);
    EXPECT_EQ((std::map<uint32_t, uint32_t>{{8, 1}}), configuration.switches);
    ASSERT_EQ(1u, configuration.modules.size());
    EXPECT_EQ(folder.File("sessions.so"), configuration.modules[0].file);
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"document", "sessions.xml"}, {"socket", "s.sock"}}),
              configuration.modules[0].settings);
}

TEST(UveldConfiguration, SaysWhereItIsWrongAndWhatWasExpected) {
    const struct {
        const char *text;
        const char *complaint;
    } rows[] = {
        {"rundirectory: /run", "u.yaml:1:1: expected one of the keys run_directory, log, process, feeder, "
                               "configuration_database, capabilities, standby, specifications, switches, modules, "
                               "found \"rundirectory\""},
        {"- a", "u.yaml:1:1: expected a map, found a list"},
        {"log: {level: loud}", "u.yaml:1:14: expected one of trace, debug, info, warning, error, found \"loud\""},
        {"log:\n  levle: info", "u.yaml:2:3: expected one of the keys file, level, found \"levle\""},
        {"process: {channel: 0}", "u.yaml:1:20: expected a number from 1 to 4294967294, found \"0\""},
        {"process: {main: perhaps}", "u.yaml:1:17: expected true or false, found \"perhaps\""},
        {"feeder: kernel", "u.yaml:1:9: expected one of netlink, found \"kernel\""},
        {"feeder: {speed: 2}", "u.yaml:1:9: the key \"scenario\" is missing here"},
        {"feeder: {scenario: d.yaml}", "u.yaml:1:20: there is no file /nowhere/d.yaml"},
        {"feeder: {netlink: {slots: 2}}", "u.yaml:1:20: expected one of the keys slot, found \"slots\""},
        {"feeder: {netlink: {slot: 2}, scenario: d}",
         "u.yaml:1:40: a device comes from the kernel or from a scenario, not from both"},
        {"capabilities: c.yaml", "u.yaml:1:15: there is no file /nowhere/c.yaml"},
        {"standby: {peer_name: b}", "u.yaml:1:10: one of the keys \"listen\" and \"peer\" is needed here"},
        {"standby: {listen: 1.2.3.4:5}", "u.yaml:1:10: the key \"certificate\" is missing here"},
        {"standby: {listen: 1.2.3.4}", "u.yaml:1:19: expected ADDRESS:PORT or [ADDRESS]:PORT, found \"1.2.3.4\""},
        {"standby: {peer: '1.2.3.4:65536'}",
         "u.yaml:1:17: expected ADDRESS:PORT or [ADDRESS]:PORT, found \"1.2.3.4:65536\""},
        {"standby: {peer: '::1:5'}", "u.yaml:1:17: expected ADDRESS:PORT or [ADDRESS]:PORT, found \"::1:5\""},
        {"standby: {peer: '[]:5'}", "u.yaml:1:17: expected ADDRESS:PORT or [ADDRESS]:PORT, found \"[]:5\""},
        {"configuration_database: /var/db", "u.yaml:1:25: expected sqlite:PATH, etcd://HOST:PORT,... or "
                                            "etcds://HOST:PORT,..., found \"/var/db\""},
        {"configuration_database: 'sqlite:'", "u.yaml:1:25: expected sqlite:PATH, etcd://HOST:PORT,... or "
                                              "etcds://HOST:PORT,..., found \"sqlite:\""},
        {"specifications: {7: 1}", "u.yaml:1:18: expected a number from 0 to 6, found \"7\""},
        {"specifications: {1: 1, 0x1: 2}", "u.yaml:1:24: the number 1 stands here twice"},
        {"switches: {8: 256}", "u.yaml:1:15: expected a number from 0 to 255, found \"256\""},
        {"modules: {file: a.so}", "u.yaml:1:10: expected a list, found a map"},
        {"modules: [{settings: {}}]", "u.yaml:1:11: the key \"file\" is missing here"},
    };
    for (const auto &[text, complaint] : rows)
        EXPECT_EQ(complaint, ComplaintAbout(text)) << text;
    EXPECT_EQ(0u,
              ComplaintAbout("run_directory: " + std::string(81, 'r')).find("u.yaml:1:16: expected a text of 1 to 80"));
}

TEST(UveldConfiguration, ATimeoutThatIsNotAboveTheHeartbeatIsRefused) {
    const TemporaryFolder folder;
    for (const char *name : {"a.pem", "a.key", "authority.pem"})
        folder.Write(name, "x");
    EXPECT_EQ("u.yaml:3:73: expected a time from 1001ms to 3600000ms with its unit (ms, s, min or h), found \"1s\"",
              ComplaintAbout("standby:\n  {listen: 1.2.3.4:5, certificate: a.pem, key: a.key,\n"
                             "   authority: authority.pem, peer_name: b, heartbeat: 1s, timeout:      1s}",
                             folder.Path()));
}

TEST(UveldConfiguration, ALongHeartbeatAloneMakesALongTimeout) {
    const TemporaryFolder folder;
    for (const char *name : {"a.pem", "a.key", "authority.pem"})
        folder.Write(name, "x");
    const auto configuration =
        ParseConfiguration("standby: {listen: '[::1]:5', certificate: a.pem, key: a.key, authority: authority.pem, "
                           "peer_name: b, heartbeat: 5s}",
                           "u.yaml", folder.Path());
    EXPECT_EQ(15000u, configuration.standby->timeout_ms);
    EXPECT_EQ("[::1]:5", configuration.standby->listen);
}

TEST(UveldConfiguration, RelativePathsCountFromTheFolderOfTheFile) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("uveld.yaml", "run_directory: here\n");
    EXPECT_EQ(folder.File("here"), LoadConfiguration(file).run_directory);
}

} // namespace
