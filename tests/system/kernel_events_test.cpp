// Changes of the kernel's interfaces, followed to the callbacks of a module and the records that they receive.

#include "namespace.h"

#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <unistd.h>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/model_events.h>
#include <uvelhost/netlink.h>
#include <uvelhost/queue.h>
#include <vector>

namespace {

using Events = std::vector<std::string>;

/* Some callbacks run on the task of the host that notifies. */
std::mutex g_lock;
Events g_events;

void Note(const char *format, auto... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    const std::lock_guard lock(g_lock);
    g_events.push_back(text);
}

Events NotedSoFar() {
    const std::lock_guard lock(g_lock);
    return g_events;
}

uint32_t OnIf(uint32_t subEvent, void *data) {
    const auto *record = static_cast<const KIVO_EVT_IF_S *>(data);
    EXPECT_EQ(28u, record->ulLen);
    EXPECT_EQ(0u, record->ulUserId);
    Note("interface %u event %u", record->ulIfIndex, subEvent);
    return 0;
}

uint32_t OnState(uint32_t subEvent, void *data) {
    const auto *record = static_cast<const KIVO_EVT_IF_STATE_S *>(data);
    EXPECT_EQ(20u, record->ulLen);
    Note("interface %u event %u state %u flags %u", record->ulIfIndex, subEvent, record->ulState, record->ulFlags);
    return 0;
}

uint32_t OnAddress(uint32_t subEvent, void *data) {
    const auto *record = static_cast<const KIVO_EVT_IP_S *>(data);
    EXPECT_EQ(16u, record->ulLen);
    Note("address %08X interface %u event %u", record->ulAddr, record->ulIfIndex, subEvent);
    return 0;
}

uint32_t OnPortSwitch(uint32_t subEvent, void *data) {
    const auto *record = static_cast<const KIVO_EVT_PORT_SWITCH_S *>(data);
    EXPECT_EQ(12u, record->ulLen);
    Note("port %u event %u", record->ulIfIndex, subEvent);
    return 0;
}

class KernelEvents : public testing::Test {
  protected:
    void SetUp() override {
        if (!EnterNewNamespace())
            GTEST_SKIP() << "network namespaces need the right to make them";
        Ip("link add west type veth peer name east");
        Ip("link add br0 type bridge");
        NLF_CONFIG_S config;
        NLF_InitConfig(&config);
        feeder = NLF_Start(&config);
        ASSERT_NE(nullptr, feeder);
        ASSERT_EQ(0u, MDL_Drain(10000));
        ASSERT_EQ(0u, QAL_QueueCreate("EVNT", 1000, 32, &g_eventQueID));
        for (const auto &[event, callback] :
             std::map<uint32_t, UVEL_EVENT_CALLBACK>{{KIVO_EVT_IF, OnIf},
                                                     {KIVO_EVT_IF_STATE, OnState},
                                                     {KIVO_EVT_IP, OnAddress},
                                                     {KIVO_EVT_PORT_SWITCH_193, OnPortSwitch},
                                                     {KIVO_EVT_PORT_SWITCH_209, OnPortSwitch},
                                                     {KIVO_EVT_PORT_SWITCH_NOW_193, OnPortSwitch},
                                                     {KIVO_EVT_PORT_SWITCH_NOW_209, OnPortSwitch}})
            ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, UVEL_EVENT_ANY_VALUE, 0, 0, 0, callback));
        KIVO_RegEventCallBack();
        west = std::to_string(IndexOf("west"));
    }

    ~KernelEvents() override {
        NLF_Stop(feeder);
        (void)QAL_QueueDelete(g_eventQueID);
    }

    /* What the callbacks received until there were as many as expected: the kernel reports some things a little later. */
    std::multiset<std::string> After(const std::string &command, std::size_t count) {
        {
            const std::lock_guard lock(g_lock);
            g_events.clear();
        }
        Ip(command);
        Events noted;
        for (int waited = 0; waited < 1000; ++waited) {
            EXPECT_EQ(0u, NLF_Sync(feeder, 10000));
            EXPECT_EQ(0u, MDL_Drain(10000));
            (void)UVEL_EVENT_QueReadWithEvent();
            noted = NotedSoFar();
            if (noted.size() >= count)
                break;
            usleep(5000);
        }
        return {noted.begin(), noted.end()};
    }

    NLF_FEEDER *feeder = nullptr;
    std::string west;
};

using Expected = std::multiset<std::string>;

TEST_F(KernelEvents, OfALinkReachCallbacksWithTheirRecords) {
    const std::string interface = "interface " + west;
    EXPECT_EQ((Expected{interface + " event 24 state 29 flags 65"}), After("link set west up", 1));
    const Expected carrier = After("link set east up", 7);
    for (const char *event : {" event 26", " event 27", " event 23"})
        EXPECT_EQ(1u, carrier.count(interface + event + " state 29 flags 1")) << event;
    EXPECT_EQ((Expected{interface + " event 21"}), After("link set west address 02:00:00:00:00:09", 1));
    EXPECT_EQ(1u, After("link set west down", 7).count(interface + " event 24 state 28 flags 64"));
    EXPECT_EQ((Expected{interface + " event 19"}), After("link set west name north", 1));
    EXPECT_EQ(1u, After("link del north", 2).count(interface + " event 1"));
}

TEST_F(KernelEvents, OfAddressesReachCallbacksAtOnce) {
    EXPECT_EQ((Expected{"address 0A010203 interface " + west + " event 0"}), After("addr add 10.1.2.3/24 dev west", 1));
    EXPECT_EQ((Expected{"address 0A010203 interface " + west + " event 1"}), After("addr del 10.1.2.3/24 dev west", 1));
}

TEST_F(KernelEvents, OfPortsReachCallbacksAtOnceAndFromTheQueue) {
    const Expected joined = After("link set west master br0", 3);
    EXPECT_EQ(1u, joined.count("port " + west + " event 29"));
    EXPECT_EQ(1u, joined.count("port " + west + " event 28"));
    const Expected left = After("link set west nomaster", 3);
    EXPECT_EQ(1u, left.count("port " + west + " event 31"));
    EXPECT_EQ(1u, left.count("port " + west + " event 32"));
}

} // namespace
