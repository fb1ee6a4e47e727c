#include <uvelhost/scenario.h>

#include "model_notices.h"
#include <chrono>
#include <cstring>
#include <fstream>
#include <random>
#include <thread>
#include <uvelhost/ha.h>
#include <uvelhost/model_view.h>

using notices::Take;

namespace {

using HostScenario = NoticedModelTest;

struct Freed {
    void operator()(SCN_SCENARIO *scenario) const { SCN_Free(scenario); }
};
using Scenario = std::unique_ptr<SCN_SCENARIO, Freed>;

Scenario Load(const std::string &text) {
    char error[512] = "";
    Scenario scenario(SCN_LoadText(text.c_str(), "s.yaml", error, sizeof error));
    EXPECT_STREQ("", error);
    return scenario;
}

std::string ComplaintOf(const std::string &text) {
    char error[512] = "";
    const Scenario scenario(SCN_LoadText(text.c_str(), "s.yaml", error, sizeof error));
    return scenario == nullptr ? error : "accepted";
}

/* Carries everything out without waiting. */
void Play(const std::string &text) {
    const Scenario scenario = Load(text);
    ASSERT_NE(nullptr, scenario);
    char error[512] = "";
    EXPECT_EQ(0u, SCN_Run(scenario.get(), 0, error, sizeof error)) << error;
}

/* A step that raises one notification. */
Lines Raised(const std::string &event) {
    Play("steps: [{at: 0ms, raise: [{" + event + "}]}]");
    return Take();
}

} // namespace

TEST_F(HostScenario, DescribesADevice) {
    Play(R"(
device:
  name: edge-1
  mac: 00:11:22:aa:BB:cc
  self-slot: 1
  self-cpu: 1
  boards:
    - {slot: 1, role: main, cpus: 2, addresses: [10.0.0.1]}
    - {slot: 3, role: service, cpus: 4}
  vrfs: [{index: 0, name: _public_}, {index: 5, name: blue, system: true}]
  vlans: [{id: 20, bridge-domain: 5000}, {id: 100-102}]
  interfaces:
    - index: 7
      name: GigabitEthernet1/0/1
      short-name: GE1/0/1
      port-type: 11
      layer: 2
      state: up
      slot: 1
      card: 0
      port: 1
      port-index: auto
      port-mode: hybrid
      pvid: 20
      mac: 00:11:22:33:44:55
      addresses: [192.0.2.1/24, 192.0.2.2/32, "2001:db8::1/64"]
      vlans: {tagged: [100-101], untagged: [20], dynamic-tagged: [102]}
    - {index: 100, name: Eth-Trunk1}
  trunks: [{id: 1, interface: 100, members: [7, {interface: 8, active: false}]}]
  vrrp: [{interface: 7, address: 192.0.2.254, mac: 00:00:5e:00:01:01, master: true}]
  availability: {role: slave, master: 3, state: realtime, ready: true}
)");
    char text[64];
    uint8_t mac[6];
    const uint8_t virtual_mac[] = {0, 0, 0x5E, 0, 1, 1};
    uint32_t value = 0, length = 0;
    EXPECT_EQ(0u, DEV_GetSystemName(text, sizeof text));
    EXPECT_STREQ("edge-1", text);
    EXPECT_EQ(0u, DEVM_DB_GetSysMac(mac));
    EXPECT_EQ(0xCC, mac[5]);
    EXPECT_EQ(0u, DEVM_DB_GetSelfCpuId(&value));
    EXPECT_EQ(17u, value);
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(7, &value, &length));
    EXPECT_EQ(0xC0000201u, value);
    EXPECT_EQ(24u, length);
    EXPECT_EQ(0u, BDS_IfnetGetLineState(7, &value));
    EXPECT_EQ(IF_STATE_UP, value);
    EXPECT_EQ(1u, L2IF_VP_PortIsInCfgVlan(0, 101));
    EXPECT_EQ(0u, L2IF_VP_PortIsInCfgVlan(0, 102));
    EXPECT_EQ(1u, BDS_L2IF_VLAN_IsUsed(102));
    EXPECT_EQ(0u, BDS_l3vpnName2VrfIdQueryByName("blue", &value));
    EXPECT_EQ(5u, value);
    EXPECT_EQ(1u, BDS_TrunkIsPortInTrunk(7));
    EXPECT_EQ(1u, VRRP_IsIfMasterByVMac(7, virtual_mac));
    EXPECT_EQ(HA_BOARD_SLAVE, HA_GetBoardType());
    EXPECT_EQ(3u, HA_GetMasterBoardID());
    EXPECT_EQ(HA_STATE_REALTIME, HA_GetState());
    EXPECT_EQ(0u, HA_SlaveIsReady());
    const MDL_HA_S alone = {HA_BOARD_MASTER, UVELHOST_NONE, UVELHOST_NONE, HA_STATE_ALONE, 0};
    EXPECT_EQ(0u, MDL_SetHa(&alone));
}

TEST_F(HostScenario, AStepChangesWhatItNamesAndLeavesTheRest) {
    const Scenario scenario = Load(R"(
device: {interfaces: [{index: 7, name: eth7, phy-type: 47, state: up}]}
steps:
  - {at: 10ms, put: {interfaces: [{index: 7, line: down}]}}
  - {after: 5ms, remove: {interfaces: [7]}}
)");
    ASSERT_NE(nullptr, scenario);
    EXPECT_EQ(0u, SCN_ApplyDevice(scenario.get(), nullptr, 0));
    Take();
    EXPECT_EQ(0u, SCN_ApplyStep(scenario.get(), 0, nullptr, 0));
    EXPECT_EQ((Lines{"ioctl 2 0 7 0"}), Take());
    uint32_t type = 0;
    EXPECT_EQ(0u, BDS_IfnetGetPhyType(7, &type));
    EXPECT_EQ(47u, type);
    EXPECT_EQ(0u, SCN_ApplyStep(scenario.get(), 1, nullptr, 0));
    EXPECT_EQ((Lines{"if 6 7"}), Take());
    EXPECT_NE(0u, SCN_ApplyStep(scenario.get(), 2, nullptr, 0));
    uint64_t at = 0;
    EXPECT_EQ(2u, SCN_GetStepCount(scenario.get()));
    EXPECT_EQ(0u, SCN_GetStepTime(scenario.get(), 1, &at));
    EXPECT_EQ(15u, at);
    EXPECT_NE(0u, SCN_GetStepTime(scenario.get(), 2, &at));
}

TEST_F(HostScenario, TheNextDeviceReplacesTheOneBefore) {
    Play("device: {interfaces: [{index: 1, name: a}, {index: 2, name: b}]}");
    PutIf(Interface(9, "not of a scenario"));
    Take();
    Play("device: {interfaces: [{index: 2, name: b}, {index: 3, name: c}]}");
    EXPECT_EQ((Lines{"if 2 3", "if 6 1"}), Take());
}

TEST_F(HostScenario, RemovesEveryKindOfThing) {
    Play(R"(
device:
  boards: [{slot: 3}]
  vrfs: [{index: 5, name: blue}]
  vlans: [{id: 20-22}]
  interfaces: [{index: 7, name: a, port-index: 3, addresses: [192.0.2.1/24, "2001:db8::1/64"], vlans: {tagged: [20]}}]
  trunks: [{id: 1, interface: 100, members: [7, 8]}]
  vrrp: [{interface: 7, address: 192.0.2.254, mac: 00:00:5e:00:01:01}]
  routes: [{destination: 198.51.100.0/24, interface: 7, next-hop: 192.0.2.9, vrf: 5}]
steps:
  - at: 1ms
    remove:
      routes: [{destination: 198.51.100.0/24, interface: 7, next-hop: 192.0.2.9, vrf: 5}]
      boards: [3]
      vrfs: [5]
      vlans: [20-21, 22]
      addresses: [{interface: 7, address: 192.0.2.1/24}, {interface: 7, address: "2001:db8::1/64"}]
      port-vlans: [3]
      members: [7]
      trunks: [1]
      vrrp: [{interface: 7, address: 192.0.2.254}]
      interfaces: [7]
)");
    MDL_BOARD_S board;
    MDL_VRF_S vrf;
    MDL_VLAN_S vlan;
    MDL_ADDR4_S addr;
    MDL_ADDR6_S addr6;
    MDL_PORT_VLANS_S ports;
    MDL_MEMBER_S member;
    MDL_TRUNK_S trunk;
    MDL_VRRP_S vrrp;
    MDL_IF_S interface;
    const uint8_t zero[16] = {};
    EXPECT_NE(0u, MDL_NextBoard(0, &board));
    EXPECT_NE(0u, MDL_NextVrf(0, &vrf));
    EXPECT_NE(0u, MDL_NextVlan(0, &vlan));
    EXPECT_NE(0u, MDL_NextAddr4(0, 0, &addr));
    EXPECT_NE(0u, MDL_NextAddr6(0, zero, &addr6));
    EXPECT_NE(0u, MDL_NextPortVlans(0, &ports));
    EXPECT_NE(0u, MDL_NextMember(0, &member));
    EXPECT_NE(0u, MDL_NextTrunk(0, &trunk));
    EXPECT_NE(0u, MDL_NextVrrp(0, 0, &vrrp));
    MDL_ROUTE_S route;
    EXPECT_NE(0u, MDL_NextRoute(nullptr, &route));
    EXPECT_NE(0u, MDL_NextIf(0, &interface));
}

TEST_F(HostScenario, PutsRoutes) {
    Play("device: {routes: [{destination: 198.51.100.0/24, interface: 7, next-hop: 192.0.2.9, vrf: 5},"
         "                  {destination: 203.0.113.7/32, interface: 8}]}");
    MDL_ROUTE_S route;
    ASSERT_EQ(0u, MDL_NextRoute(nullptr, &route));
    EXPECT_EQ(0u, route.ulVrfIndex);
    EXPECT_EQ(0xCB007107u, route.ulAddr);
    EXPECT_EQ(32u, route.ulPrefixLen);
    EXPECT_EQ(8u, route.ulIfIndex);
    EXPECT_EQ(0u, route.ulNextHop);
    ASSERT_EQ(0u, MDL_NextRoute(&route, &route));
    EXPECT_EQ(5u, route.ulVrfIndex);
    EXPECT_EQ(0xC6336400u, route.ulAddr);
    EXPECT_EQ(24u, route.ulPrefixLen);
    EXPECT_EQ(7u, route.ulIfIndex);
    EXPECT_EQ(0xC0000209u, route.ulNextHop);
    EXPECT_EQ("s.yaml:1:33: expected an IPv4 prefix such as 192.0.2.0/24, found \"2001:db8::/32\"",
              ComplaintOf("device: {routes: [{destination: \"2001:db8::/32\", interface: 7}]}"));
    EXPECT_NE("accepted", ComplaintOf("device: {routes: [{destination: 192.0.2.0/24}]}"));
    EXPECT_NE("accepted", ComplaintOf("device: {routes: [{interface: 7}]}"));
}

TEST_F(HostScenario, RaisesEveryNotification) {
    EXPECT_EQ((Lines{"slot 0 1 2"}), Raised("slot: {kind: 0, a: 1, b: 2}"));
    EXPECT_EQ((Lines{"card 4 1 2 3"}), Raised("card: {kind: 4, a: 1, b: 2, c: 3}"));
    EXPECT_EQ((Lines{"if 25 7"}), Raised("interface: {event: 25, interface: 7}"));
    EXPECT_EQ((Lines{"vrf-set 10 7"}), Raised("vrf-set: {event: 10, value: 7}"));
    EXPECT_EQ((Lines{"ioctl 2 1 7 65"}), Raised("ioctl: {command: 2, state: 1, interface: 7, flags: 0x41}"));
    EXPECT_EQ((Lines{"ioctl 12 0 7 null"}), Raised("ioctl: {command: 12, state: 0, interface: 7}"));
    EXPECT_EQ((Lines{"bd 1 5000 20"}), Raised("bridge-domain: {sub-type: 1, a: 5000, b: 20}"));
    EXPECT_EQ((Lines{"notify 7 23 1 2"}), Raised("notify: {interface: 7, command: 23, param: 1, extra: 2}"));
    EXPECT_EQ((Lines{"ip 7 16 10 0 0 1"}), Raised("address: {event: 16, interface: 7, address: 10.0.0.1}"));
    EXPECT_EQ((Lines{"trunk 50 8 7"}), Raised("trunk: {class: 3, event: 8, trunk: 50, value: 7}"));
    EXPECT_EQ((Lines{"trunk 50 2 7"}), Raised("trunk: {class: 1, event: 2, trunk: 50, value: 7}"));
    EXPECT_EQ((Lines{"trunk 50 3 7"}), Raised("trunk: {class: 2, event: 3, trunk: 50, value: 7}"));
    EXPECT_EQ((Lines{"trunk 50 6 9"}), Raised("trunk: {class: 3, event: 6, trunk: 50, value: 9}"));
    EXPECT_EQ((Lines{"trunk 50 7 7"}), Raised("trunk: {class: 3, event: 7, trunk: 50, value: 7}"));
    EXPECT_EQ((Lines{"trunk-cfg 50 11 1 2 255"}), Raised("trunk: {class: 1, event: 11, trunk: 50, data: 0102ff}"));
    EXPECT_EQ((Lines{"vsys 1 8"}), Raised("system: {kind: created, id: 8}"));
    EXPECT_EQ((Lines{"vsys 2 9"}), Raised("system: {kind: deleted, id: 9}"));
    EXPECT_EQ((Lines{"recovered"}), Raised("recovered: true"));
}

TEST_F(HostScenario, RaisesEveryNotificationOfLayer2) {
    EXPECT_EQ((Lines{"l2 49 10 20"}), Raised("layer2: {event: 49, super: 10, sub: 20}"));
    EXPECT_EQ((Lines{"l2 81+ 20 9"}), Raised("layer2: {event: 81, now: true, vlan: 20, attribute: 9}"));
    EXPECT_EQ((Lines{"l2 130 20 null"}), Raised("layer2: {event: 130, vlan: 20}"));
    EXPECT_EQ((Lines{"l2 161 20 20 p3 p4"}), Raised("layer2: {event: 161, vlan: 20, ports: [3, 4]}"));
    EXPECT_EQ((Lines{"l2 177 20 20"}), Raised("layer2: {event: 177, vlan: 20, ports: []}"));
    EXPECT_EQ((Lines{"l2 179 20 29 p3"}), Raised("layer2: {event: 179, vlan: 20, last: 29, ports: [3]}"));
    EXPECT_EQ((Lines{"l2 210 7 null"}), Raised("layer2: {event: 210, interface: 7}"));
    EXPECT_EQ((Lines{"l2 593 3 20"}), Raised("layer2: {event: 593, port: 3, value: 20}"));
    EXPECT_EQ((Lines{"l2 337 3 1"}), Raised("layer2: {event: 337, port: 3, words: [1,2,3,4,5,6,7,8,9,10]}"));
    EXPECT_EQ((Lines{"l2 337+ 3 1"}),
              Raised("layer2: {event: 337, now: true, port: 3, words: [1,2,3,4,5,6,7,8,9,10]}"));
    EXPECT_EQ((Lines{"l2 353 3 7"}), Raised("layer2: {event: 353, port: 3, words: [7,2,3,4,5,6,7,8,9,10]}"));
    EXPECT_EQ((Lines{"l2 17+ 4095 2"}), Raised("layer2: {event: 17, now: true, vlan-list: [4095, 20]}"));
    EXPECT_EQ((Lines{"l2 17+ 4095 2"}), Raised("layer2: {event: 17, now: true, key: ff0f1400, data: \"02000000\"}"));
    EXPECT_EQ((Lines{"l2 65 10 20"}), Raised("layer2: {event: 65, super: 10, sub: 20}"));
    EXPECT_EQ((Lines{"l2 129 20 null"}), Raised("layer2: {event: 129, vlan: 20}"));
    EXPECT_EQ((Lines{"l2 193+ 7 null"}), Raised("layer2: {event: 193, now: true, interface: 7}"));
    EXPECT_EQ((Lines{"l2 209 7 null"}), Raised("layer2: {event: 209, interface: 7}"));
    EXPECT_EQ((Lines{"l2 241 3 20"}), Raised("layer2: {event: 241, port: 3, value: 20}"));
    EXPECT_EQ((Lines{"l2 368 20 9"}), Raised("layer2: {event: 368, vlan: 20, context: 9}"));
    EXPECT_EQ((Lines{"l2 387 20 9"}), Raised("layer2: {event: 387, vlan: 20, context: 9}"));
    EXPECT_EQ((Lines{"l2 577 null v1"}), Raised("layer2: {event: 577, vlans: [1]}"));
    EXPECT_EQ((Lines{"l2 578 null v1"}), Raised("layer2: {event: 578, vlans: [1]}"));
    EXPECT_EQ((Lines{"l2 579+ null v1"}), Raised("layer2: {event: 579, now: true, vlans: [1]}"));
    EXPECT_EQ((Lines{"l2 580 null v1"}), Raised("layer2: {event: 580, vlans: [1]}"));
    EXPECT_EQ((Lines{"l2 848 258 513"}), Raised("layer2: {event: 848, key: \"0201\", data: \"0102\"}"));
    EXPECT_EQ((Lines{"l2 582 null v1 v2 v4095"}), Raised("layer2: {event: 582, vlans: [1-2, 4095]}"));
}

TEST_F(HostScenario, WrongFilesAreRefusedWithPlaceAndExpectation) {
    const std::pair<const char *, const char *> rows[] = {
        {"[]", "s.yaml:1:1: expected a map, found a list"},
        {"devise: {}", "s.yaml:1:1: expected one of the keys device, steps, found \"devise\""},
        {"device:\n  self-slot: x", "s.yaml:2:14: expected none or a number from 0 to 65534, found \"x\""},
        {"device:\n  mac: 00:11:22:33:44", "s.yaml:2:8: expected a MAC address as 00:11:22:aa:bb:cc, found "
                                           "\"00:11:22:33:44\""},
        {"device:\n  interfaces: [{name: a}]", "s.yaml:2:16: the key \"index\" is missing here"},
        {"device:\n  interfaces: [{index: 0}]", "s.yaml:2:24: expected a number from 1 to 4294967294, found \"0\""},
        {"device:\n  interfaces: [{index: 1, state: off}]", "s.yaml:2:34: expected one of up, down, found \"off\""},
        {"device:\n  vlans: [{id: 4096}]",
         "s.yaml:2:16: expected a VLAN or a range of VLANs from 0 to 4095 as 20 or 100-199, found \"4096\""},
        {"device:\n  vlans: [{id: 9-8}]",
         "s.yaml:2:16: expected a VLAN or a range of VLANs from 0 to 4095 as 20 or 100-199, found \"9-8\""},
        {"device:\n  interfaces:\n    - {index: 1, name: a, addresses: [10.0.0.1/33]}",
         "s.yaml:3:39: expected an address and its prefix length as 192.0.2.1/24 or 2001:db8::1/64, found "
         "\"10.0.0.1/33\""},
        {"steps: [{put: {}}]", "s.yaml:1:9: expected either \"at\" or \"after\""},
        {"steps:\n  - {at: 5}", "s.yaml:2:10: expected a time from 0ms to 31622400000ms with its unit (ms, s, min or "
                                "h), found \"5\""},
        {"steps:\n  - {at: 5ms}\n  - {at: 4ms}",
         "s.yaml:3:10: expected a time not before the step above (5ms), found \"4ms\""},
        {"steps:\n  - {at: 1s, raise: [{layer2: {event: 337, port: 1, words: [1]}}]}",
         "s.yaml:2:60: expected 10 words, found 1"},
        {"steps:\n  - {at: 1s, raise: [{layer2: {event: 1}}]}",
         "s.yaml:2:23: expected an event of layer 2 or of a trunk that the host knows"},
    };
    for (const auto &[text, complaint] : rows)
        EXPECT_EQ(complaint, ComplaintOf(text)) << text;
}

TEST_F(HostScenario, AnEventNeverCarriesLessThanItsCallbacksRead) {
    for (const char *event :
         {"17", "17, key: ff0f, data: \"02000000\"", "49, super: 1", "81, vlan: 1", "129", "161, vlan: 1", "193",
          "241, port: 1", "337, port: 1", "577", "577, data: 00", "368", "161, key: 0100, ports: [1]"})
        EXPECT_NE(std::string::npos,
                  ComplaintOf("steps: [{at: 0ms, raise: [{layer2: {event: " + std::string(event) + "}}]}]")
                      .find("s.yaml:1:28: expected the keys that this layer-2 event needs"))
            << event;
}

TEST_F(HostScenario, WhatTheModelWouldRefuseIsRefusedAtOnceAndChangesNothing) {
    const std::string complaint = ComplaintOf(R"(device: {interfaces: [{index: 1, name: a, port-index: 3}]}
steps:
  - {at: 0ms, put: {interfaces: [{index: 2, name: b, port-index: 3}]}}
)");
    EXPECT_EQ(0u, complaint.find("s.yaml:3:34: expected an interface with a name, a free port-index")) << complaint;
    EXPECT_EQ(0u, ComplaintOf("device: {interfaces: [{index: 1}]}").find("s.yaml:1:23: "));
    EXPECT_EQ(0u,
              ComplaintOf("device: {interfaces: [{index: 1, name: a, vlans: {tagged: [1]}}]}").find("s.yaml:1:50: "));
    EXPECT_EQ(nullptr, IF_GetIfByIndex(1));
    EXPECT_EQ(Lines{}, Take());
}

TEST_F(HostScenario, ComplaintsAreCutToFit) {
    char error[8] = "";
    EXPECT_EQ(nullptr, SCN_LoadText("[]", "s.yaml", error, sizeof error));
    EXPECT_STREQ("s.yaml:", error);
    EXPECT_EQ(nullptr, SCN_LoadText("[]", "s.yaml", nullptr, 0));
    EXPECT_EQ(nullptr, SCN_Load("/no/such/file", error, sizeof error));
    EXPECT_EQ(nullptr, SCN_Load(nullptr, error, sizeof error));
    SCN_Free(nullptr);
    SCN_Stop(nullptr);
    EXPECT_EQ(0u, SCN_GetStepCount(nullptr));
    EXPECT_EQ(1u, SCN_Run(nullptr, 0, nullptr, 0));
}

TEST_F(HostScenario, TheExamplesRunToTheirEnd) {
    const char *source = std::getenv("UVEL_SOURCE_DIR"); /* CTest sets it */
    const std::string folder = std::string(source != nullptr ? source : ".") + "/examples/scenarios/";
    for (const char *name : {"edge.yaml", "churn.yaml"}) {
        char error[512] = "";
        const Scenario scenario(SCN_Load((folder + name).c_str(), error, sizeof error));
        ASSERT_NE(nullptr, scenario) << error;
        EXPECT_EQ(0u, SCN_Run(scenario.get(), 0, error, sizeof error)) << error;
        EXPECT_FALSE(Take().empty());
    }
}

TEST_F(HostScenario, StepsComeAtTheirTimesAtTheSpeedAskedFor) {
    const Scenario scenario = Load("steps: [{at: 400ms, raise: [{slot: {kind: 0, a: 1, b: 2}}]}]");
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(0u, SCN_Run(scenario.get(), 1000, nullptr, 0));
    EXPECT_LE(std::chrono::milliseconds(38), std::chrono::steady_clock::now() - before);
    EXPECT_EQ((Lines{"slot 0 1 2"}), Take());
}

TEST_F(HostScenario, AStopEndsTheWaitAndEveryLaterRun) {
    const Scenario scenario = Load("steps: [{at: 1h, raise: [{slot: {kind: 0, a: 1, b: 2}}]}]");
    uint32_t result = 0;
    std::thread running([&] { result = SCN_Run(scenario.get(), 100, nullptr, 0); });
    SCN_Stop(scenario.get());
    running.join();
    EXPECT_EQ(SCN_STOPPED, result);
    EXPECT_EQ(SCN_STOPPED, SCN_Run(scenario.get(), 0, nullptr, 0));
    EXPECT_EQ(Lines{}, Take());
}

TEST_F(HostScenario, NoDamagedTextDoesMoreThanBeRefused) {
    const std::string whole = R"(device:
  name: edge-1
  boards: [{slot: 1, role: main, addresses: [10.0.0.1]}]
  vlans: [{id: 20-22, super: 10}]
  interfaces:
    - {index: 7, name: eth, state: up, port-index: auto, addresses: [192.0.2.1/24], vlans: {tagged: [20]}}
  trunks: [{id: 1, interface: 100, members: [7]}]
steps:
  - at: 1ms
    put: {interfaces: [{index: 7, state: down}]}
    raise: [{layer2: {event: 161, vlan: 20, ports: [3]}}, {recovered: }]
  - {after: 1ms, remove: {vlans: [20]}}
)";
    ASSERT_EQ("accepted", ComplaintOf(whole));
    const uint32_t seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 1500; ++round) {
        std::string text = whole;
        for (uint32_t damage = static_cast<uint32_t>(random() % 3); damage <= 2; ++damage) {
            const std::size_t at = random() % text.size();
            switch (random() % 4) {
            case 0:
                text.erase(at, random() % 8 + 1);
                break;
            case 1:
                text.insert(at, 1, static_cast<char>("{}[]:,-&*!\"'\n\t #"[random() % 16]));
                break;
            case 2:
                text[at] = static_cast<char>(random());
                break;
            default:
                text.insert(at, text.substr(random() % text.size(), 20));
            }
        }
        const std::string complaint = ComplaintOf(text);
        EXPECT_FALSE(complaint.empty()) << "seed " << seed << " round " << round;
    }
    EXPECT_EQ(Lines{}, Take());
}
