// The kernel's interfaces in the device model.

#include "../host/sanitizers.h"
#include "namespace.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <ifaddrs.h>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <set>
#include <unistd.h>
#include <uvelhost/events.h>
#include <uvelhost/interface.h>
#include <uvelhost/ip.h>
#include <uvelhost/l2if.h>
#include <uvelhost/model_events.h>
#include <uvelhost/netlink.h>
#include <uvelhost/trunk.h>
#include <uvelhost/vrf.h>
#include <vector>

namespace {

using Notices = std::vector<std::string>;

std::mutex g_mutex;
Notices g_notices;

void Note(const char *format, auto... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    const std::lock_guard lock(g_mutex);
    g_notices.push_back(text);
}

std::string NameOf(uint32_t index) {
    char name[IF_NAME_SIZE] = "?";
    (void)BDS_IfnetGetIfNameByIfIndex(index, name, sizeof name);
    return name;
}

uint32_t OnIf(uint32_t event, uint32_t index) {
    Note("%s %s",
         event == 2   ? "new"
         : event == 3 ? "renamed"
         : event == 6 ? "going"
                      : "changed",
         NameOf(index).c_str());
    return 0;
}

uint32_t OnState(uint32_t command, uint32_t up, uint32_t index, const uint32_t *) {
    const char *what = command == 2 ? "line" : command == 3 ? "carrier" : command == 7 ? "ipv6" : "admin";
    Note("%s %s %s", what, up != 0 ? "up" : "down", NameOf(index).c_str());
    return 0;
}

uint32_t OnAddress(const uint32_t *index, uint32_t event, const uint32_t *address) {
    Note("%s %08X %s", event == 16 ? "address" : "no address", __builtin_bswap32(*address), NameOf(*index).c_str());
    return 0;
}

uint32_t OnVrf(uint32_t, uint32_t index) {
    uint32_t vrf = 0;
    (void)BDS_IfnetGetVrfIndexByIfIndex(index, &vrf);
    Note("vrf %u %s", vrf, NameOf(index).c_str());
    return 0;
}

uint32_t OnVirtualSystem(uint32_t kind, uint16_t *id) {
    Note("virtual system %u %s", *id, kind == VRF_EVT_CREATED ? "created" : "deleted");
    return 0;
}

uint32_t OnLayer2(const void *key, uint32_t event, void *data) {
    const auto *vlans = static_cast<const uint16_t *>(key);
    switch (event) {
    case 161:
    case 177:
    case 179:
        Note("%s %u-%u ports %u", event == 161 ? "joined" : "left", vlans[0], event == 179 ? vlans[1] : vlans[0],
             static_cast<const L2IF_PORT_LIST_S *>(data)->ulCount);
        break;
    case 577:
    case 579:
        Note("vlans %s", event == 577 ? "created" : "gone");
        break;
    case 241:
        Note("pvid %u", *static_cast<const uint16_t *>(data));
        break;
    case 193:
    case 209:
        Note("layer %u %s", event == 193 ? 3 : 2, NameOf(*static_cast<const uint32_t *>(key)).c_str());
        break;
    default:
        break;
    }
    return 0;
}

uint32_t OnTrunk(uint32_t trunk, uint32_t event, uint32_t value) {
    Note("trunk %u %s %s", trunk, event == 3 ? "member" : event == 2 ? "no member" : "going", NameOf(value).c_str());
    return 0;
}

void ListenToAll() {
    const auto untyped = [](auto function) { return reinterpret_cast<UVELHOST_CALLBACK>(function); };
    EXPECT_EQ(0u, IF_INTF_RegEvtCb(IF_EVT_IF, IF_EVT_ALL_SUB, untyped(&OnIf), 1, IF_EVT_MASK_ALL));
    EXPECT_EQ(0u, IF_INTF_RegEvtCb(IF_EVT_IOCTL, IF_EVT_ALL_SUB, untyped(&OnState), 1, IF_EVT_MASK_ALL));
    EXPECT_EQ(0u, IF_INTF_RegEvtCb(IF_EVT_VRF_SET, IF_EVT_ALL_SUB, untyped(&OnVrf), 1, IF_EVT_MASK_ALL));
    EXPECT_EQ(0u, IP_EventNotifyFuncRegister("test", IP_EVT_CLASS_ADDR, OnAddress));
    for (uint32_t group : {11u, 12u, 13u, 14u, 16u, 37u})
        EXPECT_EQ(0u, L2IF_SH_EvtCbFuncReg("test", group, 1, OnLayer2));
    EXPECT_EQ(0u, Trunk_EventNotifyFuncRegister("test", 1, 2, 1, untyped(&OnTrunk)));
    EXPECT_EQ(0u, Trunk_EventNotifyFuncRegister("test", 2, 3, 1, untyped(&OnTrunk)));
    EXPECT_EQ(0u, Trunk_EventNotifyFuncRegister("test", 3, 6, 1, untyped(&OnTrunk)));
    EXPECT_EQ(0u, VPNBASE_VRFMGM_RegisterCb(1, VRF_EVT_CREATED, OnVirtualSystem));
    EXPECT_EQ(0u, VPNBASE_VRFMGM_RegisterCb(1, VRF_EVT_DELETED, OnVirtualSystem));
}

class Netlink : public testing::Test {
  protected:
    void SetUp() override {
        if (!EnterNewNamespace())
            GTEST_SKIP() << "network namespaces need the right to make them";
        static const bool listening = [] {
            ListenToAll();
            return true;
        }();
        ASSERT_TRUE(listening);
        NLF_InitConfig(&config);
    }

    ~Netlink() override {
        NLF_Stop(std::exchange(feeder, nullptr));
        MDL_BATCH *batch = MDL_Begin(1, 0);
        MDL_RemoveAll(batch);
        EXPECT_EQ(0u, MDL_Commit(batch));
        (void)Heard();
    }

    void Start() {
        feeder = NLF_Start(&config);
        ASSERT_NE(nullptr, feeder);
        (void)Heard();
    }

    /* Notices since the last call, when all that the kernel reported has arrived. */
    Notices Heard() {
        if (feeder != nullptr) {
            EXPECT_EQ(0u, NLF_Sync(feeder, 20000));
        }
        EXPECT_EQ(0u, MDL_Drain(20000));
        const std::lock_guard lock(g_mutex);
        return std::exchange(g_notices, {});
    }

    Notices After(const std::string &command) {
        Ip(command);
        return Heard();
    }

    /* The kernel reports some of what it does a little later: waits for as many notices as are expected. */
    std::multiset<std::string> Eventually(const std::string &command, std::size_t count) {
        std::multiset<std::string> heard;
        Ip(command);
        for (int waited = 0; waited < 1000; ++waited) {
            for (const std::string &notice : Heard())
                heard.insert(notice);
            if (heard.size() >= count)
                break;
            usleep(5000);
        }
        return heard;
    }

    NLF_STATS_S Stats() const {
        NLF_STATS_S stats{};
        EXPECT_EQ(0u, NLF_GetStats(feeder, &stats));
        return stats;
    }

    NLF_CONFIG_S config{};
    NLF_FEEDER *feeder = nullptr;
};

uint32_t Read(uint32_t (*query)(uint32_t, uint32_t *), const std::string &name) {
    uint32_t value = 0xDEAD;
    (void)query(IndexOf(name), &value);
    return value;
}

uint32_t AdminOf(const std::string &name) {
    return Read(BDS_IfnetGetIfPhyState, name);
}

/* Names and indices in the model, from what the records say. */
std::set<std::string> ModelLinks(uint32_t upTo) {
    std::set<std::string> links;
    for (uint32_t index = 1; index <= upTo; ++index) {
        if (const IF_IFNET_S *record = IF_GetIfByIndex(index))
            links.insert(std::to_string(index) + " " + record->szName);
    }
    return links;
}

std::set<std::string> KernelLinks() {
    std::set<std::string> links;
    struct if_nameindex *list = if_nameindex();
    for (const struct if_nameindex *each = list; each->if_index != 0; ++each)
        links.insert(std::to_string(each->if_index) + " " + each->if_name);
    if_freenameindex(list);
    return links;
}

TEST_F(Netlink, FindsWhatIsThereWhenItStarts) {
    Ip("link add west type veth peer name east");
    Ip("link set west address 02:00:00:00:00:07");
    Ip("link set west up");
    Ip("link set east up");
    Ip("addr add 10.1.2.3/24 dev west");
    config.ulSlot = 4;
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ("west", NameOf(IndexOf("west")));
    EXPECT_EQ(1u, Read(BDS_IfnetGetIfPhyState, "west"));
    EXPECT_EQ(1u, Read(BDS_IfnetGetLineState, "west"));
    EXPECT_EQ(1u, Read(BDS_IfnetGetIpv6LinkState, "west"));
    EXPECT_EQ(2u, Read(BDS_IfnetGetIfPhyState, "lo")) << "down in a new namespace";
    EXPECT_EQ(1u, Read(BDS_IfnetGetPortType, "west"));
    EXPECT_EQ(11u, Read(BDS_IfnetGetPortType, "lo"));
    EXPECT_EQ(4u, Read(BDS_IfnetGetSlotByIfIndex, "west"));
    EXPECT_EQ(0xDEADu, Read(BDS_IfnetGetSlotByIfIndex, "lo") | 0xDEAD) << "on no board";
    EXPECT_EQ(1u, BDS_IfnetIsL3IF(IndexOf("west")));
    uint8_t mac[6] = {};
    EXPECT_EQ(0u, BDS_IfnetGetMacByIfIndex(IndexOf("west"), mac));
    EXPECT_EQ(0, std::memcmp(mac, "\x02\0\0\0\0\x07", 6));
    uint32_t address = 0, length = 0;
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(IndexOf("west"), &address, &length));
    EXPECT_EQ(0x0A010203u, address);
    EXPECT_EQ(24u, length);
    uint32_t flag = 0;
    EXPECT_EQ(0u, BDS_IPGetIpFlagByIfIndex(IndexOf("west"), &flag));
    EXPECT_EQ(IP_FLAG_CONFIGURED, flag);
    EXPECT_EQ(1u, Stats().ulLoads);
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, FollowsLinksThatComeChangeAndGo) {
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ((Notices{"new east", "new west"}), After("link add west type veth peer name east"));
    const uint32_t index = IndexOf("west");
    EXPECT_EQ((Notices{"admin up west"}), After("link set west up"));
    EXPECT_EQ((std::multiset<std::string>{"admin up east", "carrier up east", "line up east", "ipv6 up east",
                                          "carrier up west", "line up west", "ipv6 up west"}),
              Eventually("link set east up", 7));
    EXPECT_EQ((std::multiset<std::string>{"admin down east", "carrier down east", "line down east", "ipv6 down east",
                                          "carrier down west", "line down west", "ipv6 down west"}),
              Eventually("link set east down", 7));
    (void)After("link set west down"); /* many kernels rename only what is down */
    EXPECT_EQ((Notices{"renamed north"}), After("link set west name north"));
    EXPECT_EQ(index, IndexOf("north"));
    EXPECT_EQ((Notices{"changed north"}), After("link set north address 02:00:00:00:00:01"));
    EXPECT_EQ(Notices{}, After("link set north alias nobody-cares"));
    EXPECT_EQ((std::multiset<std::string>{"going east", "going north"}), Eventually("link del north", 2));
    EXPECT_EQ(nullptr, IF_GetIfByIndex(index));
    EXPECT_EQ(KernelLinks(), ModelLinks(100));
}

TEST_F(Netlink, TellsALinkThatCameAgainUnderItsNameApart) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Ip("link add west type veth peer name east");
    const uint32_t first = IndexOf("west");
    (void)Heard();
    IpBatch("link del west\nlink add west type veth peer name east\n");
    const Notices heard = Heard();
    EXPECT_EQ((std::multiset<std::string>{"going east", "going west", "new east", "new west"}),
              std::multiset<std::string>(heard.begin(), heard.end()));
    EXPECT_NE(first, IndexOf("west"));
    EXPECT_EQ(nullptr, IF_GetIfByIndex(first));
    EXPECT_EQ(KernelLinks(), ModelLinks(100));
}

TEST_F(Netlink, FollowsAddresses) {
    Ip("link add west type veth peer name east");
    Ip("link set west up");
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ((Notices{"address 0A000001 west"}), After("addr add 10.0.0.1/24 dev west"));
    EXPECT_EQ((Notices{"address 0A000002 west"}), After("addr add 10.0.0.2/24 dev west"));
    EXPECT_EQ((Notices{"address 0B000001 west"}), After("addr add 11.0.0.1/8 dev west"));
    EXPECT_EQ(Notices{}, After("addr change 11.0.0.1/8 dev west valid_lft 1000 preferred_lft 1000"));
    uint32_t address = 0, length = 0;
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(IndexOf("west"), &address, &length));
    EXPECT_EQ(0x0A000001u, address);
    const Notices heard = After("addr del 10.0.0.1/24 dev west");
    EXPECT_EQ((std::multiset<std::string>{"no address 0A000001 west", "no address 0A000002 west"}),
              std::multiset<std::string>(heard.begin(), heard.end()))
        << "the kernel takes the secondary one with it";
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(IndexOf("west"), &address, &length));
    EXPECT_EQ(0x0B000001u, address);
    uint32_t flag = 0;
    EXPECT_EQ(0u, BDS_IPGetIpFlagByIfIndex(IndexOf("west"), &flag));
    EXPECT_EQ(IP_FLAG_OBTAINED, flag) << "it has a time to live";
}

TEST_F(Netlink, KeepsAnAddressThatStandsThereTwice) {
    Ip("link add west type veth peer name east");
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ((Notices{"address 0A000001 west"}), After("addr add 10.0.0.1/24 dev west"));
    EXPECT_EQ(Notices{}, After("addr add 10.0.0.1/32 dev west"));
    EXPECT_EQ(Notices{}, After("addr del 10.0.0.1/24 dev west"));
    uint32_t address = 0, length = 0;
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(IndexOf("west"), &address, &length));
    EXPECT_EQ(32u, length);
    EXPECT_EQ((Notices{"no address 0A000001 west"}), After("addr del 10.0.0.1/32 dev west"));
}

TEST_F(Netlink, TellsEveryFlapOfAnAddress) {
    Ip("link add west type veth peer name east");
    ASSERT_NO_FATAL_FAILURE(Start());
    std::string lines;
    Notices expected;
    for (int i = 0; i < 200; ++i) {
        lines += "addr add 10.0.0.1/24 dev west\naddr del 10.0.0.1/24 dev west\n";
        expected.push_back("address 0A000001 west");
        expected.push_back("no address 0A000001 west");
    }
    IpBatch(lines);
    EXPECT_EQ(expected, Heard());
}

TEST_F(Netlink, TakesPortsOfABridgeForSwitchPorts) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Ip("link add br0 type bridge");
    Ip("link add west type veth peer name east");
    (void)Heard();
    Notices heard = After("link set west master br0");
    EXPECT_NE(heard.end(), std::find(heard.begin(), heard.end(), "layer 2 west"));
    uint32_t port = 99;
    EXPECT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("west"), &port));
    EXPECT_EQ(0u, port);
    EXPECT_EQ(1u, BDS_IfnetIsSwitchPort(IndexOf("west")));
    Ip("link set east master br0");
    (void)Heard();
    EXPECT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("east"), &port));
    EXPECT_EQ(1u, port);
    heard = After("link set west nomaster");
    EXPECT_NE(heard.end(), std::find(heard.begin(), heard.end(), "layer 3 west"));
    EXPECT_EQ(1u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("west"), &port));
    Ip("link set west master br0");
    (void)Heard();
    EXPECT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("west"), &port));
    EXPECT_EQ(0u, port) << "the number is free again";
    Ip("link del br0");
    (void)Heard();
    EXPECT_EQ(0u, BDS_IfnetIsSwitchPort(IndexOf("east")));
    EXPECT_EQ(KernelLinks(), ModelLinks(100));
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, KeepsInterfacesForWhichTheDeviceHasNoPort) {
    MDL_DEVICE_S device;
    MDL_InitDevice(&device);
    device.ulMaxSwitchPorts = 1;
    MDL_BATCH *batch = MDL_Begin(99, 0);
    EXPECT_EQ(0u, MDL_PutDevice(batch, &device));
    EXPECT_EQ(0u, MDL_Commit(batch));
    Ip("link add br0 type bridge");
    Ip("link add west type veth peer name east");
    Ip("link set west master br0");
    Ip("link set east master br0");
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(KernelLinks(), ModelLinks(100));
    EXPECT_EQ(1u, Stats().ulRefused);
    uint32_t port = 99;
    EXPECT_EQ(1u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("west"), &port) +
                      BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("east"), &port))
        << "one of them is no switch port";
}

TEST_F(Netlink, NotifiesNothingWhenAReadingFindsNothingNew) {
    Ip("link add br0 type bridge");
    Ip("link add west type veth peer name east");
    Ip("link set west master br0 up");
    Ip("addr add 10.0.0.1/24 dev east");
    Ip("addr add fd00::1/64 dev east nodad");
    ASSERT_NO_FATAL_FAILURE(Start());
    NLF_Reload(feeder);
    EXPECT_EQ(Notices{}, Heard());
    EXPECT_EQ(2u, Stats().ulLoads);
}

/* The test holds the model, so that the feeder cannot read on while the kernel's messages pile up. */
TEST_F(Netlink, ReadsEverythingAnewWhenTheKernelLostMessages) {
    config.ulRcvBytes = 4096;
    Ip("link add keep type veth peer name kept");
    Ip("link add lose type veth peer name lost");
    Ip("addr add 10.0.0.1/24 dev lose");
    ASSERT_NO_FATAL_FAILURE(Start());
    MDL_BATCH *batch = MDL_Begin(99, 0);
    Ip("link set keep up");
    std::string lines = "link del lose\n";
    for (int i = 0; i < 60; ++i)
        lines += "link add a" + std::to_string(i) + " type veth peer name b" + std::to_string(i) + "\n";
    IpBatch(lines + "link set keep down\nlink set keep name final\naddr add 10.9.9.9/24 dev final\n");
    EXPECT_EQ(0u, MDL_Commit(batch));
    const Notices heard = Heard();
    EXPECT_LE(1u, Stats().ulOverruns);
    EXPECT_LE(2u, Stats().ulLoads);
    EXPECT_EQ(KernelLinks(), ModelLinks(1000));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "going lose"));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "no address 0A000001 lose"));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "renamed final"));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "address 0A090909 final"));
    EXPECT_EQ(2u, AdminOf("final"));
}

TEST_F(Netlink, EndsAStormWithWhatTheKernelHas) {
    config.ulRcvBytes = 65536;
    ASSERT_NO_FATAL_FAILURE(Start());
    std::string lines;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 60; ++i) {
            const std::string name = std::to_string(i);
            lines += "link add a" + name + " type veth peer name b" + name + "\n";
            lines += "link set a" + name + " up\nlink set b" + name + " up\n";
            lines += "addr add 10.0." + name + ".1/24 dev a" + name + "\n";
        }
        for (int i = round == 1 ? 30 : 0; i < 60; ++i)
            lines += "link del a" + std::to_string(i) + "\n";
    }
    IpBatch(lines);
    (void)Heard();
    EXPECT_EQ(KernelLinks(), ModelLinks(5000));
    for (int i = 0; i < 30; ++i) {
        const std::string name = "a" + std::to_string(i);
        uint32_t address = 0, length = 0;
        EXPECT_EQ(1u, Read(BDS_IfnetGetLineState, name)) << name;
        EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(IndexOf(name), &address, &length)) << name;
        EXPECT_EQ(0x0A000001u + static_cast<uint32_t>(i) * 256, address);
    }
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, CarriesOutWhatServicesAskFor) {
    Ip("link add west type veth peer name east");
    Ip("link set west up");
    Ip("link set east up");
    Ip("addr add 10.0.0.1/24 dev west");
    config.ulCarryOut = 1;
    ASSERT_NO_FATAL_FAILURE(Start());
    const uint32_t west = IndexOf("west");
    EXPECT_EQ(0u, IF_INTF_ShutDownInterface(west));
    Notices heard = Heard();
    EXPECT_NE(heard.end(), std::find(heard.begin(), heard.end(), "admin down west"));
    EXPECT_NE(0, std::system("ip link show west | grep -q ,UP"));
    EXPECT_EQ(0u, IF_INTF_ShutDownInterface(west)) << "it is down already";
    EXPECT_EQ(0u, IF_INTF_NoShutDownInterface(west));
    EXPECT_EQ(0, std::system("ip link show west | grep -q ,UP"));
    heard = Heard();
    EXPECT_NE(heard.end(), std::find(heard.begin(), heard.end(), "admin up west"));
    EXPECT_EQ(1u, IF_INTF_ShutDownInterface(12345));

    EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_ADD, 0, 0xC0A80105, 32, west, 0));
    EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_ADD, 0, 0xC0A80200, 24, west, 0x0A000009));
    EXPECT_EQ(0, std::system("ip route | grep -q '^192.168.1.5 dev west'"));
    EXPECT_EQ(0, std::system("ip route | grep -q '^192.168.2.0/24 via 10.0.0.9 dev west'"));
    EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_DELETE, 0, 0xC0A80105, 32, west, 0));
    EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_DELETE, 0, 0xC0A80105, 32, west, 0)) << "it is gone already";
    EXPECT_NE(0, std::system("ip route | grep -q '^192.168.1.5'"));
}

TEST_F(Netlink, StandsBadArguments) {
    NLF_InitConfig(nullptr);
    EXPECT_EQ(nullptr, NLF_Start(nullptr));
    EXPECT_EQ(1u, NLF_Sync(nullptr, 0));
    EXPECT_EQ(1u, NLF_GetStats(nullptr, nullptr));
    NLF_Reload(nullptr);
    NLF_Stop(nullptr);
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(1u, NLF_GetStats(feeder, nullptr));
    EXPECT_EQ(0u, NLF_Sync(feeder, UVELHOST_WAIT_FOREVER));
}

TEST_F(Netlink, LeavesTheModelAsItIsWhenItEnds) {
    Ip("link add west type veth peer name east");
    ASSERT_NO_FATAL_FAILURE(Start());
    NLF_Stop(std::exchange(feeder, nullptr));
    Ip("link del west");
    EXPECT_EQ(Notices{}, Heard());
    EXPECT_EQ(3u, ModelLinks(100).size());
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(1u, ModelLinks(100).size()) << "the next one takes over";
}

/* UVEL_LONG_TESTS in the environment: making so many devices takes its time. */
TEST_F(Netlink, LoadsTenThousandInterfacesInTwoSeconds) {
    if (std::getenv("UVEL_LONG_TESTS") == nullptr)
        GTEST_SKIP() << "a long test";
    std::string lines;
    for (int i = 0; i < 5000; ++i)
        lines += "link add a" + std::to_string(i) + " type veth peer name b" + std::to_string(i) + "\n";
    IpBatch(lines);
    const auto before = std::chrono::steady_clock::now();
    ASSERT_NO_FATAL_FAILURE(Start());
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - before;
    std::printf("10001 interfaces in %.3f s\n", taken.count());
    EXPECT_LT(taken.count(), UNDER_SANITIZER ? 20.0 : 2.0);
    EXPECT_EQ(KernelLinks(), ModelLinks(20000));
}

/* ---- what the kernel of this machine may lack; the guest has all of it ---- */

TEST_F(Netlink, TakesVlanDevicesForSubInterfacesAndVlanInterfaces) {
    if (Lacks(KernelHasVlans()))
        GTEST_SKIP() << "this kernel has no VLANs";
    Ip("link add west type veth peer name east");
    Ip("link add br0 type bridge");
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ((Notices{"new west.7"}), After("link add link west name west.7 type vlan id 7"));
    EXPECT_EQ(1u, BDS_IfnetIsSubIf(IndexOf("west.7")));
    EXPECT_EQ(IndexOf("west"), Read(BDS_IfnetGetMainIfIndex, "west.7"));
    uint16_t vlan = 0;
    EXPECT_EQ(0u, BDS_IfnetGetVlanIdByIfIndex(IndexOf("west.7"), &vlan));
    EXPECT_EQ(7u, vlan);
    EXPECT_EQ((Notices{"new office"}), After("link add link br0 name office type vlan id 100"));
    EXPECT_EQ(0u, BDS_IfnetIsSubIf(IndexOf("office")));
    uint32_t index = 0;
    EXPECT_EQ(0u, BDS_L2IF_VLAN_GetIfIndexByVlanId(100, &index));
    EXPECT_EQ(IndexOf("office"), index);
    (void)After("link del west");
    EXPECT_EQ(KernelLinks(), ModelLinks(100));
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, TakesVlansOfAFilteringBridge) {
    if (Lacks(KernelHas("bridge", "vlan_filtering 1")))
        GTEST_SKIP() << "this kernel has no filtering bridges";
    Ip("link add br0 type bridge vlan_filtering 1 vlan_default_pvid 0");
    Ip("link add west type veth peer name east");
    Ip("link set west master br0");
    ASSERT_NO_FATAL_FAILURE(Start());
    uint32_t port = 99;
    ASSERT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf("west"), &port));
    Bridge("vlan add dev west vid 10 pvid untagged");
    EXPECT_EQ((Notices{"vlans created", "joined 10-10 ports 1", "pvid 10"}), Heard());
    EXPECT_EQ(1u, BDS_L2IF_VLAN_IsUsed(10));
    EXPECT_EQ(1u, L2IF_VP_PortIsInCfgVlan(port, 10));
    uint16_t vlan = 0;
    EXPECT_EQ(0u, BDS_L2IF_SH_GetVlanIdFromMode(port, L2IF_MODE_ACCESS, &vlan));
    EXPECT_EQ(10u, vlan);
    Bridge("vlan add dev west vid 20-22");
    Notices heard = Heard();
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "vlans created"));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "joined 22-22 ports 1"));
    EXPECT_EQ(0u, BDS_L2IF_SH_GetVlanIdFromMode(port, L2IF_MODE_TRUNK, &vlan)) << "tagged VLANs make it a trunk";
    Bridge("vlan add dev west vid 30 untagged");
    (void)Heard();
    EXPECT_EQ(0u, BDS_L2IF_SH_GetVlanIdFromMode(port, L2IF_MODE_HYBRID, &vlan)) << "two untagged ones a hybrid";
    Bridge("vlan del dev west vid 20-22");
    heard = Heard();
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "left 20-22 ports 1"));
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "vlans gone"));
    EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(21));

    Ip("link set br0 up"); /* of a bridge that is down the kernel reports no such change */
    Ip("link set br0 type bridge vlan_filtering 0");
    (void)Heard();
    EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(10)) << "a bridge that does not filter has no VLANs";
    Ip("link set br0 type bridge vlan_filtering 1");
    (void)Heard();
    EXPECT_EQ(1u, L2IF_VP_PortIsInCfgVlan(port, 10));
    NLF_Reload(feeder);
    EXPECT_EQ(Notices{}, Heard());
    Ip("link set west nomaster");
    (void)Heard();
    EXPECT_EQ(0u, BDS_L2IF_VLAN_IsUsed(10));
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, TakesAllVlansOfManyPorts) {
    if (Lacks(KernelHas("bridge", "vlan_filtering 1")))
        GTEST_SKIP() << "this kernel has no filtering bridges";
    Ip("link add br0 type bridge vlan_filtering 1");
    for (const char *name : {"p0", "p1", "p2", "p3"}) {
        Ip("link add " + std::string(name) + " type veth peer name x" + name);
        Ip("link set " + std::string(name) + " master br0");
        Bridge("vlan add dev " + std::string(name) + " vid 2-4094");
    }
    ASSERT_NO_FATAL_FAILURE(Start());
    for (const char *name : {"p0", "p1", "p2", "p3"}) {
        uint32_t port = 99, joined = 0;
        ASSERT_EQ(0u, BDS_L2IF_SH_PORT_GetIndexByIfIndex(IndexOf(name), &port));
        for (uint32_t vlan = 0; vlan < 4096; ++vlan)
            joined += L2IF_VP_PortIsInCfgVlan(port, static_cast<uint16_t>(vlan));
        EXPECT_EQ(4094u, joined) << name;
    }
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, TakesBondsForTrunks) {
    if (Lacks(KernelHas("bond")))
        GTEST_SKIP() << "this kernel has no bonds";
    ASSERT_NO_FATAL_FAILURE(Start());
    Ip("link add bond3 type bond mode active-backup");
    Ip("link add lag type bond");
    Ip("link add west type veth peer name east");
    (void)Heard();
    EXPECT_EQ(1u, Trunk_IF_IsTrunk(IndexOf("bond3")));
    Notices heard = After("link set west master bond3");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "trunk 3 member west"));
    uint32_t index = 0;
    EXPECT_EQ(0u, BDS_TrunkGetTrunkIfIndexByPort(IndexOf("west"), &index));
    EXPECT_EQ(IndexOf("bond3"), index);
    Ip("link set bond3 up");
    Ip("link set east up");
    const uint32_t trunk = Trunk_GetIndexByTrunkID(3);
    for (int waited = 0; waited < 1000; ++waited) {
        (void)Heard();
        if (BDS_TrunkActiveIfIndexByTrunkIfIndex(IndexOf("bond3"), 0, &index) == 0)
            break;
        usleep(5000);
    }
    EXPECT_EQ(IndexOf("west"), index) << "the member has become active";
    EXPECT_NE(UVELHOST_NONE, Trunk_GetIndexByTrunkID(4096)) << "no number in its name";
    heard = After("link set west nomaster");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "trunk 3 no member west"));
    EXPECT_NE(UVELHOST_NONE, trunk);
    heard = After("link del bond3");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "trunk 3 going bond3"));
    EXPECT_EQ(UVELHOST_NONE, Trunk_GetIndexByTrunkID(3));
    EXPECT_EQ(0u, Stats().ulRefused);
}

TEST_F(Netlink, TakesVrfsForVirtualSystems) {
    if (Lacks(KernelHas("vrf", "table 99")))
        GTEST_SKIP() << "this kernel has no VRFs";
    Ip("link add west type veth peer name east");
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ((Notices{"virtual system 10 created", "new red", "vrf 10 red"}), After("link add red type vrf table 10"));
    EXPECT_EQ((Notices{"new big", "vrf 70000 big"}), After("link add big type vrf table 70000"));
    uint32_t index = 0;
    EXPECT_EQ(0u, BDS_l3vpnName2VrfIdQueryByName("red", &index));
    EXPECT_EQ(10u, index);
    Notices heard = After("link set west master red");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "vrf 10 west"));
    EXPECT_EQ(10u, Read(BDS_IfnetGetIpv6VrfIndexByIfIndex, "west"));
    heard = After("link set west master big");
    EXPECT_LE(1, std::count(heard.begin(), heard.end(), "vrf 70000 west"));
    heard = After("link set west nomaster");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "vrf 0 west"));
    heard = After("link del red");
    EXPECT_EQ(1, std::count(heard.begin(), heard.end(), "virtual system 10 deleted"));
    EXPECT_EQ(1u, BDS_l3vpnName2VrfIdQueryByName("red", &index));
    char name[VRF_NAME_SIZE] = {};
    EXPECT_EQ(0u, L3VPN_GetFirstVrfIdAndVrfName(&index, name));
    L3VPN_ScanVrfIdAndVrfNameFinish();
    EXPECT_EQ(0u, index);
    EXPECT_STREQ("public", name);
    EXPECT_EQ(0u, Stats().ulRefused);
}

} // namespace
