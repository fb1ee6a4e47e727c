/* A whole device passes through the library: 4094 VLANs, 64 ports in all of them, trunks, virtual systems; from the
 * changes of the model through the adapters and the event task to the callbacks of a module. Nothing stands between. */

#include "all_events.h"

#include "host/sanitizers.h"

#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <thread>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelhost/model_events.h>

namespace {

/* The sanitizers make each step ten times, that of threads a hundred times as long. */
constexpr uint32_t VLANS = UNDER_THREAD_SANITIZER ? 200 : UNDER_SANITIZER ? 1000 : 4094;
constexpr uint32_t PORTS = 64;
constexpr uint32_t TRUNKS = 8;
constexpr uint32_t MEMBERS = 4; /* of each trunk */
constexpr uint32_t SYSTEMS = 16;
constexpr uint32_t PORT_IF = 100;   /* interface of port 0; the others follow */
constexpr uint32_t TRUNK_IF = 1000; /* interface of trunk 1 */
constexpr uint32_t MEMBER_IF = 2000;
constexpr uint32_t USER = 7;

using Events = std::vector<std::string>;

uint32_t Word(const void *data, uint32_t offset) {
    uint32_t word;
    std::memcpy(&word, static_cast<const uint8_t *>(data) + offset, 4);
    return word;
}

uint16_t Half(const void *data, uint32_t offset) {
    uint16_t half;
    std::memcpy(&half, static_cast<const uint8_t *>(data) + offset, 2);
    return half;
}

std::string Text(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string Text(const char *format, ...) {
    char text[128];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

/* What a record says, in the words in which the scenario tells what must come. */
std::string Told(uint32_t event, uint32_t subEvent, const void *data) {
    switch (event) {
    case 1:
        return Text("interface %u/%u: %u by %u", event, subEvent, Word(data, 24), Word(data, 4));
    case 9:
    case 11:
    case 13: {
        std::string vlans;
        uint32_t count = 0;
        for (uint32_t vlan = 0; vlan < 4096; ++vlan)
            if ((Word(data, 8 + vlan / 32 * 4) >> vlan % 32 & 1) != 0 && ++count <= 2)
                vlans += " " + std::to_string(vlan);
        return Text("vlans %u/%u: %u,%s by %u", event, subEvent, count, vlans.c_str(), Word(data, 4));
    }
    case 14:
    case 15:
    case 46: {
        const uint32_t count = Word(data, 8);
        uint32_t inOrder = 0;
        while (inOrder < count && Word(data, 12 + 4 * inOrder) == Word(data, 12) + inOrder)
            ++inOrder;
        return Text("ports %u/%u: vlans %u to %u, %u from %u%s by %u", event, subEvent, Half(data, 4), Half(data, 6),
                    count, Word(data, 12), inOrder == count ? "" : " in disorder", Word(data, 0));
    }
    case 22:
    case 23:
    case 24:
    case 25:
        return Text("member %u/%u: %u of %u by %u", event, subEvent, Word(data, 8), Word(data, 12), Word(data, 4));
    case 26:
        return Text("trunk %u/%u: %u by %u", event, subEvent, Word(data, 12), Word(data, 4));
    case 1101:
        if (subEvent == 0)
            return Text("replay %u/0: %u %s", event, Word(data, 0), static_cast<const char *>(data) + 4);
        return Text("system %u: %u", event, Half(data, 0));
    case 1102:
        return Text("system %u: %u", event, Half(data, 0));
    default:
        return Text("event %u/%u", event, subEvent);
    }
}

class EventRoadLoad : public testing::Test {
  protected:
    /* Callbacks of a module that wants to hear of everything; each event goes to the list of the task that it came on. */
    void Take(uint32_t event, uint32_t subEvent, void *data) {
        const std::string told = Told(event, subEvent, data);
        std::lock_guard lock(lock_);
        (QAL_TaskGetSelf() == g_eventTaskID ? queued : now).push_back(told);
        arrived_.notify_all();
    }

    void BringUp() {
        char folder[] = "/tmp/uvelhost-test-XXXXXX";
        setenv("UVELHOST_RUN_DIR", mkdtemp(folder), 1);
        ASSERT_EQ(0u, UVEL_GlobalVarInit());
        KIVO_SetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT, SYSTEMS + 1);
        KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
        UVEL_EVENT_Api_SetGlobalVariable(66, 67, 119);
        UVEL_EVENT_Api_SetSpecs(UVEL_EVENT_SPEC_QUEUE_DEPTH, 65536);
        const UVEL_EVENT_ADP_HOOK_S hooks = {[] { return 0u; }, nullptr, [] { KIVO_RegEventCallBack(); },
                                             [] { return 1u; }};
        UVEL_EVENT_Api_SetAdpHook(&hooks);
        ASSERT_EQ(0u, UVEL_EVENT_Api_RegApp());
        OXM_SetTaskFollowMe(QAL_TaskGetSelf());
        ASSERT_EQ(0u, SYS_StartApp("EVNT", UVEL_EVENT_TaskEntry));
        const uint32_t task = g_eventdpAppInfo.ulTaskId;
        ASSERT_EQ(0u, QAL_EventWrite(task, UVEL_EVENT_START_BIT));
        ASSERT_EQ(0u, QAL_EventRead(UVEL_EVENT_START_BIT, QAL_EVENT_ALL, 20000, nullptr));
        ASSERT_EQ(0u, QAL_EventWrite(task, UVEL_EVENT_START_BIT));
        std::filesystem::remove_all(folder);
    }

    static void Change(const std::function<void(MDL_BATCH *)> &change) {
        MDL_BATCH *batch = MDL_Begin(1, USER);
        change(batch);
        ASSERT_EQ(0u, MDL_Commit(batch));
    }

    void WaitForQueued(std::size_t count) {
        EXPECT_EQ(0u, MDL_Drain(60000));
        std::unique_lock lock(lock_);
        arrived_.wait_for(lock, std::chrono::seconds(60), [&] { return queued.size() >= count; });
    }

    static uint64_t BlocksOf(uint32_t handle) {
        QAL_MEM_STATS_S stats{};
        EXPECT_EQ(0u, QAL_MemGetStats(handle, &stats));
        return stats.ulBlocks;
    }

    Events now;
    Events queued;

  private:
    std::mutex lock_;
    std::condition_variable arrived_;
    AllEvents events_{[this](uint32_t event, uint32_t subEvent, void *data) {
        Take(event, subEvent, data);
        return 0u;
    }};
};

MDL_VRF_S System(uint32_t number) {
    MDL_VRF_S vrf{number, 1, 1, 1, ""};
    std::snprintf(vrf.szName, sizeof vrf.szName, "tenant%u", number);
    return vrf;
}

MDL_IF_S Interface(uint32_t index, const char *kind, uint32_t number) {
    MDL_IF_S record;
    MDL_InitIf(&record, index, Text("%s%u", kind, number).c_str());
    return record;
}

/* Equal, with the first difference told rather than thousands of lines. */
void ExpectSame(const Events &expected, const Events &arrived, const char *what) {
    EXPECT_EQ(expected.size(), arrived.size()) << what;
    const std::size_t common = std::min(expected.size(), arrived.size());
    for (std::size_t i = 0; i < common; ++i)
        ASSERT_EQ(expected[i], arrived[i]) << what << " " << i;
}

TEST_F(EventRoadLoad, AWholeDeviceArrivesAsItWasTold) {
    Events expectedNow;
    Events expectedQueued;
    const auto byTask = [&](const std::string &event) { expectedQueued.push_back(event); };
    const auto atOnce = [&](const std::string &event) { expectedNow.push_back(event); };

    /* virtual systems that exist before the task comes up are replayed */
    for (uint32_t system = 1; system <= SYSTEMS / 2; ++system) {
        const MDL_VRF_S vrf = System(system);
        Change([&](MDL_BATCH *batch) { MDL_PutVrf(batch, &vrf); });
        byTask(Text("replay 1101/0: %u tenant%u", system, system));
    }
    BringUp();
    WaitForQueued(expectedQueued.size());
    const uint64_t messages = BlocksOf(0);
    const uint64_t blocks = kit::LiveBlocks();

    for (uint32_t system = SYSTEMS / 2 + 1; system <= SYSTEMS + 1; ++system) { /* one beyond the limit */
        const MDL_VRF_S vrf = System(system);
        Change([&](MDL_BATCH *batch) { MDL_PutVrf(batch, &vrf); });
        if (system <= SYSTEMS)
            byTask(Text("system 1101: %u", system));
    }
    Change([&](MDL_BATCH *batch) {
        for (uint32_t port = 0; port < PORTS; ++port) {
            MDL_IF_S record = Interface(PORT_IF + port, "GigabitEthernet0/0/", port);
            record.ulLayer = 2;
            record.ulPortIndex = port;
            EXPECT_EQ(0u, MDL_PutIf(batch, &record));
            byTask(Text("interface 1/0: %u by 7", PORT_IF + port));
        }
    });
    for (uint32_t vlan = 1; vlan <= VLANS; ++vlan) {
        const MDL_VLAN_S record{vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
        Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutVlan(batch, &record)); });
        byTask(Text("vlans 9/9: 1, %u by 7", vlan));
    }
    Change([&](MDL_BATCH *batch) {
        for (uint32_t vlan = 1; vlan <= VLANS; ++vlan) {
            for (uint32_t port = 0; port < PORTS; ++port)
                EXPECT_EQ(0u, MDL_BindVlans(batch, port, vlan, vlan, L2IF_BIND_TAGGED, 0));
            byTask(Text("ports 14/14: vlans %u to %u, 64 from 0 by 7", vlan, vlan));
        }
    });
    for (uint32_t trunk = 1; trunk <= TRUNKS; ++trunk) {
        const MDL_IF_S trunkIf = Interface(TRUNK_IF + trunk, "Eth-Trunk", trunk);
        const MDL_TRUNK_S record{trunk - 1, trunk, TRUNK_IF + trunk};
        Change([&](MDL_BATCH *batch) {
            EXPECT_EQ(0u, MDL_PutIf(batch, &trunkIf));
            EXPECT_EQ(0u, MDL_PutTrunk(batch, &record));
        });
        byTask(Text("interface 1/0: %u by 7", TRUNK_IF + trunk));
        for (uint32_t member = trunk * 10; member < trunk * 10 + MEMBERS; ++member) {
            const MDL_IF_S memberIf = Interface(MEMBER_IF + member, "XGigabitEthernet0/1/", member);
            const MDL_MEMBER_S membership{MEMBER_IF + member, trunk, 1};
            Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutIf(batch, &memberIf)); });
            Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_PutMember(batch, &membership)); });
            byTask(Text("interface 1/0: %u by 7", MEMBER_IF + member));
            atOnce(Text("member 23/23: %u of %u by 7", MEMBER_IF + member, trunk - 1));
            byTask(Text("member 22/22: %u of %u by 7", MEMBER_IF + member, trunk - 1));
        }
    }

    /* and it goes, when all of it has been told: adapters ask the model while they are told */
    ASSERT_EQ(0u, MDL_Drain(60000));
    for (uint32_t trunk = 1; trunk <= TRUNKS; ++trunk) {
        for (uint32_t member = trunk * 10; member < trunk * 10 + MEMBERS; ++member) {
            Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_RemoveMember(batch, MEMBER_IF + member)); });
            atOnce(Text("member 25/25: %u of %u by 7", MEMBER_IF + member, trunk - 1));
            byTask(Text("member 24/24: %u of %u by 7", MEMBER_IF + member, trunk - 1));
        }
        ASSERT_EQ(0u, MDL_Drain(60000));
        Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_RemoveTrunk(batch, trunk)); });
        byTask(Text("trunk 26/0: %u by 7", TRUNK_IF + trunk));
    }
    for (uint32_t port = 0; port < PORTS; ++port) {
        Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_RemovePortVlans(batch, port)); });
        byTask(Text("ports 46/46: vlans 1 to %u, 1 from %u by 7", VLANS, port));
    }
    Change([&](MDL_BATCH *batch) {
        for (uint32_t vlan = 1; vlan <= VLANS; ++vlan)
            EXPECT_EQ(0u, MDL_RemoveVlan(batch, vlan));
        atOnce(Text("vlans 13/13: %u, 1 2 by 7", VLANS));
        byTask(Text("vlans 11/11: %u, 1 2 by 7", VLANS));
    });
    for (uint32_t system = 1; system <= SYSTEMS; ++system) {
        Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_RemoveVrf(batch, system)); });
        byTask(Text("system 1102: %u", system));
    }

    WaitForQueued(expectedQueued.size());
    ExpectSame(expectedNow, now, "at once");
    ExpectSame(expectedQueued, queued, "by the event task");

    for (int i = 0; i < 10000 && BlocksOf(0) != messages; ++i) /* the last message is freed behind its last callback */
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(messages, BlocksOf(0));
    EXPECT_EQ(blocks, kit::LiveBlocks());
    QAL_QUEUE_STATS_S stats{};
    EXPECT_EQ(0u, QAL_QueueGetStats(g_eventQueID, &stats));
    EXPECT_EQ(0u, stats.ulRefused);
    EXPECT_EQ(expectedQueued.size() - SYSTEMS / 2, stats.ulRead) << "all but the replayed ones";
}

} // namespace
