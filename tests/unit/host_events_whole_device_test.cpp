// A whole device comes up and is changed: 4094 VLANs, 64 ports, trunks and virtual systems go through the event
// task, as a product starts it, to the callbacks of a module. What arrives is what was done, in order, and nothing of it
// stays behind.

#include "kit.h"

#include <condition_variable>
#include <cstring>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/model_events.h>

namespace {

constexpr uint32_t CHANNEL = 301;
constexpr uint32_t START_BIT = 0x1000;
constexpr uint32_t VLANS = 4094; /* 1 to 4094 */
constexpr uint32_t PORTS = 64;
constexpr uint32_t TRUNK_PORTS = 2; /* those that are in all VLANs; the others are in the first */
constexpr uint32_t FIRST_PORT_IF = 1000;

using Log = std::vector<std::string>;

std::mutex g_mutex;
std::condition_variable g_arrived;
Log g_queued;  /* on the event task */
Log g_at_once; /* on the host's thread */
uint32_t g_ends = 0;
uint64_t g_blocks = 0;

void Note(Log &log, const char *format, auto... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    const std::lock_guard lock(g_mutex);
    log.push_back(text);
}

/* Blocks in use on all accounts of the host. */
uint64_t BlocksOfAllAccounts() {
    uint64_t blocks = 0;
    QAL_MEM_STATS_S stats{};
    for (uint32_t handle = 0; QAL_MemGetStats(handle, &stats) == 0; ++handle)
        blocks += stats.ulBlocks;
    return blocks;
}

/* What is in use while this runs includes the message that it runs for, and nothing of those before. */
uint32_t OnEnd(uint32_t, void *) {
    const std::lock_guard lock(g_mutex);
    g_blocks = BlocksOfAllAccounts();
    ++g_ends;
    g_arrived.notify_all();
    return 0;
}

uint32_t OnInterface(uint32_t subEvent, void *data) {
    Note(g_queued, "interface %u %u", static_cast<const KIVO_EVT_IF_S *>(data)->ulIfIndex, subEvent);
    return 0;
}

/* A set of VLANs by its number, first and last. */
std::string TextOf(const uint32_t (&bitmap)[128]) {
    uint32_t count = 0, first = 0, last = 0;
    for (uint32_t vlan = 0; vlan < 4096; ++vlan) {
        if ((bitmap[vlan / 32] >> vlan % 32 & 1) == 0)
            continue;
        first = count++ == 0 ? vlan : first;
        last = vlan;
    }
    return std::to_string(count) + " from " + std::to_string(first) + " to " + std::to_string(last);
}

uint32_t OnVlans(uint32_t subEvent, void *data) {
    Note(subEvent == 13 ? g_at_once : g_queued, "vlans %u: %s", subEvent,
         TextOf(static_cast<const KIVO_EVT_VLANS_S *>(data)->aulBitmap).c_str());
    return 0;
}

/* Ports in order are told by the first and the last. */
uint32_t OnVlanPorts(uint32_t subEvent, void *data) {
    const auto *head = static_cast<const KIVO_EVT_VLAN_PORTS_S *>(data);
    const auto *ports = reinterpret_cast<const uint32_t *>(head + 1);
    for (uint32_t i = 0; i < head->ulCount; ++i)
        EXPECT_EQ(ports[0] + i, ports[i]);
    Note(g_queued, "ports %u: vlans %u-%u, %u from %u", subEvent, head->usFirstVlan, head->usLastVlan, head->ulCount,
         ports[0]);
    return 0;
}

uint32_t OnMember(uint32_t subEvent, void *data) {
    const auto *member = static_cast<const KIVO_EVT_TRUNK_MEMBER_S *>(data);
    const bool queued = subEvent == 22 || subEvent == 24;
    Note(queued ? g_queued : g_at_once, "member %u: %u of %u", subEvent, member->ulMember, member->ulTrunkIndex);
    return 0;
}

uint32_t OnVsys(uint32_t subEvent, void *data) {
    if (subEvent == 0)
        Note(g_queued, "there is %u %s", static_cast<const KIVO_EVT_VSYS_S *>(data)->ulVrfIndex,
             static_cast<const KIVO_EVT_VSYS_S *>(data)->szVrfName);
    else
        Note(g_queued, "created %u", *static_cast<const uint16_t *>(data));
    return 0;
}

void Change(const std::function<void(MDL_BATCH *)> &change) {
    MDL_BATCH *batch = MDL_Begin(1, 0);
    change(batch);
    EXPECT_EQ(0u, MDL_Commit(batch));
}

void PutVrf(MDL_BATCH *batch, uint32_t index) {
    MDL_VRF_S vrf{index, 1, 1, 1, {}};
    std::snprintf(vrf.szName, sizeof vrf.szName, "tenant%u", index);
    EXPECT_EQ(0u, MDL_PutVrf(batch, &vrf));
}

class WholeDevice : public testing::Test {
  protected:
    /* As a product does it. */
    void StartProduct() {
        ASSERT_EQ(0u, UVEL_GlobalVarInit());
        KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
        KIVO_SetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT, 100);
        UVEL_EVENT_Api_SetGlobalVariable(0xC21E0000, 0, CHANNEL);
        UVEL_EVENT_Api_SetSpecs(0, 1 << 16);
        Register(0, OnEnd);
        Register(KIVO_EVT_IF, OnInterface);
        for (const uint32_t event : {9u, 11u, 13u})
            Register(event, OnVlans);
        for (const uint32_t event : {14u, 15u, 46u})
            Register(event, OnVlanPorts);
        for (const uint32_t event : {22u, 23u, 24u, 25u})
            Register(event, OnMember);
        Register(KIVO_EVT_VSYS_CREATED, OnVsys);
        KIVO_RegEventCallBack();

        OXM_SetTaskFollowMe(QAL_TaskGetSelf());
        uint32_t task = 0;
        ASSERT_EQ(0u, QAL_CreateTask("EVNT", &task, UVEL_EVENT_TaskEntry, 85, 0, nullptr));
        ASSERT_EQ(0u, QAL_EventWrite(task, START_BIT));
        ASSERT_EQ(0u, QAL_EventRead(START_BIT, QAL_EVENT_ALL, 10000, nullptr)) << "the task is ready";
        ASSERT_EQ(0u, QAL_EventWrite(task, START_BIT));
    }

    static void Register(uint32_t event, UVEL_EVENT_CALLBACK callback) {
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, UVEL_EVENT_ANY_VALUE, 0, 0, 0, callback));
    }

    /* Everything done so far has gone its whole way. */
    void Finish() {
        EXPECT_EQ(0u, MDL_Drain(60000));
        EXPECT_EQ(0u, UVEL_EVENT_Api_SendEventMsg(0, 0, nullptr, 0));
        std::unique_lock lock(g_mutex);
        EXPECT_TRUE(g_arrived.wait_for(lock, std::chrono::seconds(60), [&] { return g_ends == ends_ + 1; }));
        ++ends_;
    }

    Log Take(Log &log) {
        const std::lock_guard lock(g_mutex);
        return std::exchange(log, {});
    }

  private:
    uint32_t ends_ = 0;
};

TEST_F(WholeDevice, ArrivesInOrderAndLeavesNothingBehind) {
    Change([](MDL_BATCH *batch) {
        for (const uint32_t index : {3u, 7u, 200u})
            PutVrf(batch, index);
    });
    ASSERT_EQ(0u, MDL_Drain(10000));
    ASSERT_NO_FATAL_FAILURE(StartProduct());
    Finish();
    EXPECT_EQ((Log{"there is 3 tenant3", "there is 7 tenant7"}), Take(g_queued)) << "200 is beyond the limit";
    const uint64_t blocks = g_blocks;

    /* 64 ports, and 4094 VLANs in one batch. */
    Log expected;
    Change([&](MDL_BATCH *batch) {
        for (uint32_t port = 0; port < PORTS; ++port) {
            MDL_IF_S record;
            MDL_InitIf(&record, FIRST_PORT_IF + port, ("port" + std::to_string(port)).c_str());
            record.ulLayer = 2;
            record.ulPortIndex = port;
            EXPECT_EQ(0u, MDL_PutIf(batch, &record));
            expected.push_back("interface " + std::to_string(FIRST_PORT_IF + port) + " 0");
        }
        for (uint32_t vlan = 1; vlan <= VLANS; ++vlan) {
            const MDL_VLAN_S record{vlan, UVELHOST_NONE, 0, UVELHOST_NONE};
            EXPECT_EQ(0u, MDL_PutVlan(batch, &record));
        }
        expected.push_back("vlans 9: 4094 from 1 to 4094");
    });
    Finish();
    EXPECT_EQ(expected, Take(g_queued));

    /* Ports join: one event a VLAN, with all ports. */
    expected.clear();
    Change([&](MDL_BATCH *batch) {
        for (uint32_t vlan = 1; vlan <= VLANS; ++vlan) {
            const uint32_t ports = vlan == 1 ? PORTS : TRUNK_PORTS;
            for (uint32_t port = 0; port < ports; ++port)
                EXPECT_EQ(0u, MDL_BindVlans(batch, port, vlan, vlan, L2IF_BIND_TAGGED, 0));
            const std::string id = std::to_string(vlan);
            expected.push_back("ports 14: vlans " + id + "-" + id + ", " + std::to_string(ports) + " from 0");
        }
    });
    Finish();
    EXPECT_EQ(expected, Take(g_queued));

    /* Eight trunks of four members each, and virtual systems. */
    expected.clear();
    Log expectedAtOnce;
    Change([&](MDL_BATCH *batch) {
        for (uint32_t trunk = 0; trunk < 8; ++trunk) {
            const MDL_TRUNK_S record{MDL_AUTO, trunk + 1, FIRST_PORT_IF + trunk * 4};
            EXPECT_EQ(0u, MDL_PutTrunk(batch, &record));
            for (uint32_t i = 0; i < 4; ++i) {
                const MDL_MEMBER_S member{FIRST_PORT_IF + 32 + trunk * 4 + i, trunk + 1, 1};
                EXPECT_EQ(0u, MDL_PutMember(batch, &member));
                const std::string text =
                    ": " + std::to_string(FIRST_PORT_IF + 32 + trunk * 4 + i) + " of " + std::to_string(trunk);
                expectedAtOnce.push_back("member 23" + text);
                expected.push_back("member 22" + text);
            }
        }
        for (uint32_t index = 20; index < 60; ++index) {
            PutVrf(batch, index);
            expected.push_back("created " + std::to_string(index));
        }
    });
    Finish();
    EXPECT_EQ(expected, Take(g_queued));
    EXPECT_EQ(expectedAtOnce, Take(g_at_once));

    /* All ports leave all VLANs, and the VLANs go. */
    expected = {"ports 46: vlans 1-4094, 2 from 0", "ports 15: vlans 1-1, 62 from 2", "vlans 11: 4094 from 1 to 4094"};
    Change([](MDL_BATCH *batch) {
        for (uint32_t port = 0; port < PORTS; ++port)
            EXPECT_EQ(0u, MDL_RemovePortVlans(batch, port));
        for (uint32_t vlan = 1; vlan <= VLANS; ++vlan)
            EXPECT_EQ(0u, MDL_RemoveVlan(batch, vlan));
    });
    Finish();
    EXPECT_EQ(expected, Take(g_queued));
    EXPECT_EQ((Log{"vlans 13: 4094 from 1 to 4094"}), Take(g_at_once));
    EXPECT_EQ(blocks, g_blocks);
}

} // namespace
