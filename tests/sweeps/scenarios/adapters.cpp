// What becomes of the host's notifications.

#include "../scenario.h"
#include "event_queue.h"

#include <array>
#include <functional>
#include <optional>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vlan_events.h>
#include <uvelcommon_base/kivo_vsys.h>

namespace {

struct Ports {
    L2IF_PORT_LIST_S head;
    std::array<uint32_t, 3> ports;
};

uint32_t g_port = 3;
uint32_t g_flags = 1;
uint16_t g_vlans[] = {10, 20};
uint32_t g_words[130] = {};
Ports g_ports = {{0, 3}, {4, 5, 6}};

/* Notifications that become one event of the queue each. */
const std::function<uint32_t()> NOTIFICATIONS[] = {
    [] { return KIVO_Adapt_CfmRecoveOverCB(); },
    [] { return KIVO_Adapt_IFEvtCB(2, 7); },
    [] { return KIVO_Adapt_IFNotifyEvtCB(7, 3, 1, 0); },
    [] { return KIVO_Adapt_IfLoopDeleteEvtCB(6, 7); },
    [] { return KIVO_Adapt_IOCTLCB(2, 1, 7, &g_flags); },
    [] { return KIVO_Adapt_IOCTLCB_L2SUBIF(12, 1, 7, &g_flags); },
    [] { return KIVO_Adapt_SlotEvtCB(1, 2, 3); },
    [] { return KIVO_Adapt_CardEvtCB(1, 2, 3, 4); },
    [] { return KIVO_Adapt_VrfSetCB(10, 5); },
    [] { return KIVO_Adapt_PortChgEvtCB(&g_port, 241, g_vlans); },
    [] { return KIVO_Adapt_VlanBatchEvtCB(nullptr, 577, g_words); },
    [] { return KIVO_Adapt_SubVlanEvtCB(&g_vlans[0], 49, &g_vlans[1]); },
    [] { return KIVO_Adapt_L2ifVlanUpDownEvtCB(g_vlans, 129, nullptr); },
    [] { return KIVO_Adapt_QinQEvtCB(&g_port, 337, g_words); },
    [] { return KIVO_Adapt_PortSwitchEvtCB(&g_port, 193, nullptr); },
    [] { return KIVO_Adapt_TrkMemChgEvtCB(1, 7, 9); },
    [] { return KIVO_Adapt_TrunkDelEvtCB(1, 2, 3); },
    [] { return KIVO_VsysNotifyCallBack(VRF_EVT_CREATED, &g_vlans[0]); },
};

/* The events that they become. */
constexpr uint32_t EVENTS[] = {0, 1, 3, 4, 5, 9, 14, 15, 16, 18, 22, 24, 26, 27, 32, 41, 46, 48, 1101};

/* A host that knows every interface, and a product with virtual systems. */
void PrepareHost() {
    kit::Op<BDS_IfnetGetPortType>().Does([](uint32_t, uint32_t *type) {
        *type = 11;
        return 0U;
    });
    kit::Op<BDS_IfnetGetPhyType>().Does([](uint32_t, uint32_t *type) {
        *type = 1;
        return 0U;
    });
    kit::Op<BDS_L2IF_PORT_GetIfIndex>().Does([](uint32_t, uint32_t *index) {
        *index = 7;
        return 0U;
    });
    kit::Op<Trunk_GetIndexByTrunkID>().Returns(1);
    KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
    KIVO_SetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT, 64);
}

class Notifications : public sweeps::Scenario {
    void SetUp() override {
        PrepareHost();
        queue_.emplace();
        for (const uint32_t event : EVENTS)
            EventQueue::ListenTo(event);
    }

    void Operate(bool faultless) override {
        for (int round = 0; round < 10; ++round) {
            for (std::size_t i = 0; i < std::size(NOTIFICATIONS); ++i) {
                const uint32_t result = NOTIFICATIONS[i]();
                EXPECT_TRUE(result == 0 || (!faultless && result == 1)) << i;
                EXPECT_EQ(result == 0 ? 1u : 0u, EventQueue::Take()) << i;
            }
        }
    }

    void TearDown() override { queue_.reset(); }

    std::optional<EventQueue> queue_;
};

/* These build a message first, and answer for that alone: what became of the event behind it is not told. */
class PortsOfVlans : public sweeps::Scenario {
    void SetUp() override {
        queue_.emplace();
        for (const uint32_t event : {14u, 15u, 46u})
            EventQueue::ListenTo(event);
    }

    void Operate(bool faultless) override {
        for (int round = 0; round < 30; ++round) {
            for (const uint32_t event : {161u, 177u, 179u})
                Judge(KIVO_Adapt_VlanAddDelPortEvtCB(g_vlans, event, &g_ports), faultless);
            const KIVO_EVT_VLAN_PORTS_S head{0, 10, 20, 0};
            Judge(KIVO_Adapt_VlanAddDelPortEvtCBEnque(46, &head, &g_ports.head), faultless);
        }
    }

    static void Judge(uint32_t result, bool faultless) {
        const uint32_t taken = EventQueue::Take();
        EXPECT_TRUE((result == 0 && taken == 1) || (!faultless && taken == 0)) << result << ", " << taken;
    }

    void TearDown() override { queue_.reset(); }

    std::optional<EventQueue> queue_;
};

/* The adapters as the host calls them, by what was registered with it. */
class RegisteredAdapters : public sweeps::Scenario {
    void SetUp() override {
        kit::Op<IF_INTF_RegEvtCb>().Does(
            [this](uint32_t type, uint32_t, UVELHOST_CALLBACK callback, uint32_t, uint32_t) {
                if (type == IF_EVT_IF)
                    callbacks_.push_back(reinterpret_cast<IF_IF_EVT_CB>(callback));
                return 0U;
            });
        KIVO_RegEventCallBack();
        KIVO_RegEventCallBack();   /* does nothing */
        KIVO_RegEventCallBackIf(); /* registers everything again */
        kit::Op<IF_INTF_RegEvtCb>().Does(nullptr);
        PrepareHost();
        queue_.emplace();
        EventQueue::ListenTo(1);
    }

    void Operate(bool faultless) override {
        EXPECT_FALSE(callbacks_.empty());
        for (const IF_IF_EVT_CB callback : callbacks_) {
            const uint32_t result = callback(6, 7);
            const uint32_t taken = EventQueue::Take();
            EXPECT_TRUE((result == 0 && taken == 1) || (!faultless && result == 1 && taken == 0)) << taken;
        }
    }

    void TearDown() override { queue_.reset(); }

    std::vector<IF_IF_EVT_CB> callbacks_;
    std::optional<EventQueue> queue_;
};

const bool g_added[] = {
    sweeps::Add<Notifications>("notifications"),
    sweeps::Add<PortsOfVlans>("ports_of_vlans"),
    sweeps::Add<RegisteredAdapters>("registered_adapters", sweeps::Process::OWN),
};

} // namespace
