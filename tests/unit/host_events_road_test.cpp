// The road of a host event, from a change of the device model through the adapter that was registered for it to the
// callbacks of a module. Nothing stands between: host, library, queue and messages are the real ones.

#include "all_events.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <uvelcommon_base/kivo_event_records.h>
#include <uvelcommon_base/kivo_host_events.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vsys.h>
#include <uvelcommon_base/uvel_event.h>
#include <uvelhost/model_events.h>

namespace {

/* Bytes of the record of an event; of those of variable size the head. */
std::size_t SizeOf(uint32_t event) {
    static const std::map<uint32_t, std::size_t> sizes{
        {1, 28},  {3, 16},  {4, 20},  {5, 20},  {6, 16},  {8, 16},   {14, 16},  {15, 16},  {16, 12}, {17, 12}, {18, 20},
        {19, 20}, {20, 20}, {21, 20}, {22, 16}, {23, 16}, {24, 16},  {25, 16},  {26, 16},  {27, 12}, {28, 12}, {29, 12},
        {30, 12}, {31, 12}, {32, 12}, {34, 8},  {35, 24}, {41, 8},   {45, 8},   {46, 16},  {47, 12}, {48, 12}, {9, 12},
        {10, 12}, {11, 12}, {12, 12}, {13, 12}, {42, 12}, {1101, 2}, {1102, 2}, {1200, 4}, {1201, 4}};
    const auto found = sizes.find(event);
    return found == sizes.end() ? 0 : found->second;
}

using Events = std::vector<std::string>;

class HostEventsRoad : public testing::Test {
  protected:
    HostEventsRoad() {
        EXPECT_EQ(0u, QAL_QueueCreate("EVNT", 1000, 32, &g_eventQueID));
        KIVO_RegEventCallBack();
    }
    ~HostEventsRoad() override {
        Change([](MDL_BATCH *batch) { MDL_RemoveAll(batch); });
        EXPECT_EQ(0u, QAL_QueueDelete(g_eventQueID));
    }

    /* Makes a change on behalf of user 7 and gives what the callbacks received: "now id/sub record" for those that ran
     * on the host's thread, then "queue id/sub record" for those on the event task. */
    Events Change(const std::function<void(MDL_BATCH *)> &change) {
        MDL_BATCH *batch = MDL_Begin(1, 7);
        change(batch);
        EXPECT_EQ(0u, MDL_Commit(batch));
        return Arrived();
    }

    Events Raise(const MDL_EVENT_S &event) {
        return Change([&](MDL_BATCH *batch) { EXPECT_EQ(0u, MDL_Raise(batch, &event)); });
    }

    Events Arrived() {
        EXPECT_EQ(0u, MDL_Drain(10000));
        way_ = "queue ";
        (void)UVEL_EVENT_QueReadWithEvent();
        way_ = "now ";
        return std::exchange(arrived_, {});
    }

    static MDL_IF_S Interface(uint32_t index, const char *name) {
        MDL_IF_S record;
        MDL_InitIf(&record, index, name);
        return record;
    }

    static MDL_EVENT_S Event(uint32_t topic, uint32_t event, uint32_t a = 0, uint32_t b = 0, uint32_t c = 0) {
        return {topic, event, a, b, c, 0, 0, nullptr, nullptr};
    }

    template <typename Key, typename Data>
    static MDL_EVENT_S Layer2(uint32_t event, const Key &key, const Data &data) {
        return {MDL_TOPIC_L2, event, 0, 0, 0, sizeof key, sizeof data, &key, &data};
    }

    uint32_t answer = 0;

  private:
    uint32_t Take(uint32_t event, uint32_t subEvent, void *data) {
        char head[32];
        std::snprintf(head, sizeof head, "%u/%u", event, subEvent);
        arrived_.push_back(way_ + head + (SizeOf(event) == 0 ? "" : " " + Hex(data, SizeOf(event))));
        return answer;
    }

    std::string way_ = "now ";
    Events arrived_;
    AllEvents events_{[this](uint32_t event, uint32_t subEvent, void *data) { return Take(event, subEvent, data); }};
};

TEST_F(HostEventsRoad, OfSlots) {
    MDL_BOARD_S board{};
    board.ulSlot = 5;
    board.ulPresent = board.ulRegistered = board.ulOnline = 1;
    board.ulRole = MDL_BOARD_LINE;
    EXPECT_EQ(
        (Events{"queue 3/0 10000000 07000000 05000000 01000000", "queue 3/1 10000000 07000000 05000000 01000000"}),
        Change([&](MDL_BATCH *batch) { MDL_PutBoard(batch, &board); }));
    EXPECT_EQ(
        (Events{"queue 3/3 10000000 07000000 05000000 01000000", "queue 3/2 10000000 07000000 05000000 01000000"}),
        Change([](MDL_BATCH *batch) { MDL_RemoveBoard(batch, 5); }));
}

TEST_F(HostEventsRoad, OfInterfacesAndTheirStates) {
    MDL_IF_S record = Interface(0x100, "eth0");
    const std::string tail = " 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 00010000";
    EXPECT_EQ((Events{"queue 1/0" + tail}), Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));
    EXPECT_EQ(Events{}, Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); })) << "as it was";

    record.ulPhyState = record.ulLineState = record.ulIpv6State = IF_STATE_UP;
    EXPECT_EQ((Events{"queue 5/26 14000000 07000000 00010000 1D000000 01000000",
                      "queue 5/27 14000000 07000000 00010000 1D000000 01000000",
                      "queue 5/23 14000000 07000000 00010000 1D000000 01000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));

    record.ulAdminDown = 1;
    EXPECT_EQ((Events{"queue 5/24 14000000 07000000 00010000 1C000000 40000000",
                      "queue 5/26 14000000 07000000 00010000 1C000000 40000000",
                      "queue 5/27 14000000 07000000 00010000 1C000000 40000000",
                      "queue 5/23 14000000 07000000 00010000 1C000000 40000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));

    std::strcpy(record.szName, "wan0");
    EXPECT_EQ((Events{"queue 1/19" + tail}), Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));
    record.aucMac[5] = 1;
    EXPECT_EQ((Events{"queue 1/21" + tail}), Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));
    EXPECT_EQ((Events{"queue 1/1" + tail}), Change([](MDL_BATCH *batch) { MDL_RemoveIf(batch, 0x100); }));
}

TEST_F(HostEventsRoad, OfALoopbackThatGoesReachesTwoAdapters) {
    MDL_IF_S record = Interface(0x200, "lo0");
    record.ulPortType = 11;
    (void)Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); });
    const std::string gone = "queue 1/1 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 00020000";
    EXPECT_EQ((Events{gone, gone}), Change([](MDL_BATCH *batch) { MDL_RemoveIf(batch, 0x200); }));
}

TEST_F(HostEventsRoad, OfWhatGoesIsNotThatOfItsSuccessor) {
    MDL_IF_S loopback = Interface(0x200, "LoopBack0");
    loopback.ulPortType = 11;
    const MDL_IF_S memberIf = Interface(21, "eth21");
    const MDL_TRUNK_S trunk{0, 3, 20};
    const MDL_MEMBER_S member{21, 3, 1};
    (void)Change([&](MDL_BATCH *batch) {
        MDL_PutIf(batch, &loopback);
        MDL_PutIf(batch, &memberIf);
        MDL_PutTrunk(batch, &trunk);
        MDL_PutMember(batch, &member);
    });
    const std::string gone = "queue 1/1 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 00020000";
    loopback.ulPortType = 1;
    EXPECT_EQ((Events{gone, gone, "queue 1/0 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 00020000"}),
              Change([&](MDL_BATCH *batch) {
                  MDL_RemoveIf(batch, 0x200);
                  MDL_PutIf(batch, &loopback);
              }));
    const MDL_TRUNK_S successor{5, 3, 20};
    EXPECT_EQ(
        (Events{"now 25/25 10000000 07000000 15000000 00000000", "queue 24/24 10000000 07000000 15000000 00000000",
                "queue 26/0 10000000 07000000 06000000 14000000"}),
        Change([&](MDL_BATCH *batch) {
            MDL_RemoveTrunk(batch, 3);
            MDL_PutTrunk(batch, &successor);
        }));
}

TEST_F(HostEventsRoad, OfALayer2SubInterface) {
    const MDL_IF_S main = Interface(1, "eth0");
    MDL_IF_S sub = Interface(2, "eth0.5");
    sub.ulMainIfIndex = 1;
    sub.ulLayer = 2;
    (void)Change([&](MDL_BATCH *batch) {
        MDL_PutIf(batch, &main);
        MDL_PutIf(batch, &sub);
    });
    sub.ulLineState = IF_STATE_UP;
    EXPECT_EQ((Events{"queue 5/32 14000000 07000000 02000000 22000000 01000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &sub); }));
    sub.ulLineState = IF_STATE_DOWN;
    EXPECT_EQ((Events{"queue 5/32 14000000 07000000 02000000 21000000 00000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &sub); }));
}

TEST_F(HostEventsRoad, OfAddressesAndVrfs) {
    MDL_IF_S record = Interface(9, "eth9");
    (void)Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); });
    const MDL_ADDR4_S address{9, 0x0A000001, 24, 1, IP_FLAG_CONFIGURED};
    EXPECT_EQ((Events{"now 6/0 10000000 07000000 09000000 0100000A"}),
              Change([&](MDL_BATCH *batch) { MDL_PutAddr4(batch, &address); }));
    EXPECT_EQ((Events{"now 6/1 10000000 07000000 09000000 0100000A"}),
              Change([](MDL_BATCH *batch) { MDL_RemoveAddr4(batch, 9, 0x0A000001); }));
    record.ulVrf = 12;
    EXPECT_EQ((Events{"queue 41/31 07000000 09000000"}), Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &record); }));
}

TEST_F(HostEventsRoad, OfVlansInBatches) {
    const auto put = [](uint32_t vlan) {
        return [vlan](MDL_BATCH *batch) {
            for (uint32_t id = vlan; id < vlan + 2; ++id) {
                const MDL_VLAN_S record{id, UVELHOST_NONE, 0, UVELHOST_NONE};
                MDL_PutVlan(batch, &record);
            }
        };
    };
    EXPECT_EQ((Events{"queue 9/9 08020000 07000000 06000000"}), Change(put(1)));
    EXPECT_EQ((Events{"now 13/13 08020000 07000000 06000000", "queue 11/11 08020000 07000000 06000000"}),
              Change([](MDL_BATCH *batch) {
                  MDL_RemoveVlan(batch, 1);
                  MDL_RemoveVlan(batch, 2);
              }));
}

TEST_F(HostEventsRoad, OfAVlanAndItsInterface) {
    MDL_VLAN_S vlan{5, UVELHOST_NONE, 0, UVELHOST_NONE};
    MDL_IF_S interface = Interface(3, "Vlanif5");
    interface.ulKind = MDL_IF_VLAN;
    interface.usVlanId = 5;
    (void)Change([&](MDL_BATCH *batch) {
        MDL_PutVlan(batch, &vlan);
        MDL_PutIf(batch, &interface);
    });
    vlan.ulAttribute = 0xAABBCCDD;
    EXPECT_EQ((Events{"now 8/0 10000000 07000000 DDCCBBAA 05000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutVlan(batch, &vlan); }));
    vlan.ulSuperVlan = 100;
    EXPECT_EQ((Events{"queue 16/0 0C000000 07000000 64000500"}),
              Change([&](MDL_BATCH *batch) { MDL_PutVlan(batch, &vlan); }));
    vlan.ulSuperVlan = UVELHOST_NONE;
    vlan.ulBd = 0x30;
    EXPECT_EQ((Events{"now 45/45 30000000 05000000", "queue 17/0 0C000000 07000000 64000500"}),
              Change([&](MDL_BATCH *batch) { MDL_PutVlan(batch, &vlan); }));
    interface.ulLineState = IF_STATE_UP;
    EXPECT_EQ(
        (Events{"queue 5/27 14000000 07000000 03000000 1D000000 01000000", "queue 27/17 0C000000 07000000 05000000"}),
        Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &interface); }));
    interface.ulLineState = IF_STATE_DOWN;
    EXPECT_EQ(
        (Events{"queue 5/27 14000000 07000000 03000000 1C000000 00000000", "queue 27/16 0C000000 07000000 05000000"}),
        Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &interface); }));
}

TEST_F(HostEventsRoad, OfPortsAndTheirVlans) {
    MDL_IF_S port = Interface(4, "eth4");
    (void)Change([&](MDL_BATCH *batch) {
        MDL_PutIf(batch, &port);
        for (uint32_t id = 10; id < 13; ++id) {
            const MDL_VLAN_S vlan{id, UVELHOST_NONE, 0, UVELHOST_NONE};
            MDL_PutVlan(batch, &vlan);
        }
    });
    port.ulLayer = 2;
    port.ulPortIndex = 6;
    EXPECT_EQ((Events{"now 29/29 0C000000 07000000 04000000",
                      "queue 1/21 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 04000000",
                      "queue 28/28 0C000000 07000000 04000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &port); }));
    port.usPvid = 10;
    EXPECT_EQ((Events{"queue 48/48 07000000 06000000 0A000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &port); }));
    EXPECT_EQ(
        (Events{"queue 14/14 07000000 0A000A00 01000000 06000000", "queue 14/14 07000000 0B000B00 01000000 06000000",
                "queue 14/14 07000000 0C000C00 01000000 06000000"}),
        Change([](MDL_BATCH *batch) { MDL_BindVlans(batch, 6, 10, 12, L2IF_BIND_TAGGED, 0); }));
    EXPECT_EQ((Events{"queue 15/15 07000000 0B000B00 01000000 06000000"}),
              Change([](MDL_BATCH *batch) { MDL_BindVlans(batch, 6, 11, 11, L2IF_BIND_NONE, 0); }));
    (void)Change([](MDL_BATCH *batch) { MDL_BindVlans(batch, 6, 10, 12, L2IF_BIND_UNTAGGED, 0); });
    EXPECT_EQ((Events{"queue 46/46 07000000 0A000C00 01000000 06000000"}),
              Change([](MDL_BATCH *batch) { MDL_RemovePortVlans(batch, 6); }));
    port.ulLayer = 3;
    port.ulPortIndex = UVELHOST_NONE;
    port.usPvid = MDL_NO_VLAN;
    EXPECT_EQ((Events{"now 31/31 0C000000 07000000 04000000",
                      "queue 1/21 1C000000 07000000 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFF 04000000",
                      "queue 32/32 0C000000 07000000 04000000"}),
              Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &port); }));
}

TEST_F(HostEventsRoad, OfTrunks) {
    const MDL_IF_S trunkIf = Interface(20, "Eth-Trunk3");
    const MDL_IF_S memberIf = Interface(21, "eth21");
    const MDL_TRUNK_S trunk{MDL_AUTO, 3, 20};
    const MDL_MEMBER_S member{21, 3, 1};
    (void)Change([&](MDL_BATCH *batch) {
        MDL_PutIf(batch, &trunkIf);
        MDL_PutIf(batch, &memberIf);
        MDL_PutTrunk(batch, &trunk);
    });
    EXPECT_EQ(
        (Events{"now 23/23 10000000 07000000 15000000 00000000", "queue 22/22 10000000 07000000 15000000 00000000"}),
        Change([&](MDL_BATCH *batch) { MDL_PutMember(batch, &member); }));
    EXPECT_EQ(
        (Events{"now 25/25 10000000 07000000 15000000 00000000", "queue 24/24 10000000 07000000 15000000 00000000"}),
        Change([](MDL_BATCH *batch) { MDL_RemoveMember(batch, 21); }));
    EXPECT_EQ((Events{"queue 26/0 10000000 07000000 06000000 14000000"}),
              Change([](MDL_BATCH *batch) { MDL_RemoveTrunk(batch, 3); }));
}

TEST_F(HostEventsRoad, OfVirtualSystems) {
    KIVO_SetPdtOxmCfgSwitch(KIVO_SWITCH_VSYS, 1);
    KIVO_SetKivoCommonSpec(KIVO_SPEC_VSYS_LIMIT, 100);
    const MDL_VRF_S vrf{12, 1, 1, 1, "tenant"};
    const MDL_VRF_S beyond{100, 1, 1, 1, "beyond"};
    EXPECT_EQ((Events{"queue 1101/4294967295 0C00"}), Change([&](MDL_BATCH *batch) {
                  MDL_PutVrf(batch, &vrf);
                  MDL_PutVrf(batch, &beyond);
              }));
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ((Events{"now 1101/0 0C00"}), Arrived());
    EXPECT_EQ((Events{"queue 1102/4294967295 0C00"}), Change([](MDL_BATCH *batch) { MDL_RemoveVrf(batch, 12); }));
}

/* Notifications that the model's own changes do not cause. */
TEST_F(HostEventsRoad, OfWhatAFeederRaises) {
    EXPECT_EQ((Events{"queue 4/8 14000000 07000000 01000000 02000000 03000000"}),
              Raise(Event(MDL_TOPIC_CARD, 2, 1, 2, 3)));
    EXPECT_EQ((Events{"queue 1/7 1C000000 07000000 FFFFFFFF 05000000 FFFFFFFF FFFFFFFF 04000000"}),
              Raise(Event(MDL_TOPIC_NOTIFY, 7, 4, 5, 6)));
    EXPECT_EQ((Events{"queue 0/0"}), Raise(Event(MDL_TOPIC_CFM_OVER, 0)));

    const uint16_t vlan = 9;
    const uint32_t bitmap[128] = {2};
    for (const auto &[event, expected] :
         {std::pair{578u, "queue 10/10"}, std::pair{580u, "queue 12/12"}, std::pair{582u, "queue 42/42"}}) {
        EXPECT_EQ((Events{std::string(expected) + " 08020000 07000000 02000000"}), Raise(Layer2(event, vlan, bitmap)));
    }
    EXPECT_EQ((Events{"now 34/0 18000000 07000000"}), Raise(Layer2(387, vlan, bitmap)));

    const uint32_t port = 3;
    const uint16_t value = 77;
    EXPECT_EQ((Events{"queue 47/47 07000000 03000000 4D000000"}), Raise(Layer2(593, port, value)));
}

TEST_F(HostEventsRoad, OfQinQ) {
    MDL_IF_S interface = Interface(8, "eth8");
    interface.ulLayer = 2;
    interface.ulPortIndex = 3;
    (void)Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &interface); });
    const uint32_t port = 3, noPort = 4;
    const uint16_t words[10] = {0, 0, 0, 0, 0, 0, 6, 7, 8, 9};
    const auto qinq = [&](uint32_t event, const uint32_t &key) { return Raise(Layer2(event, key, words)); };
    const std::string tail = " 14000000 07000000 08000000 06000800 09000000";
    EXPECT_EQ((Events{"queue 18/0" + tail}), qinq(337, port));
    EXPECT_EQ((Events{"now 19/0" + tail}), qinq(337 | L2IF_EVT_NOW, port));
    EXPECT_EQ((Events{"queue 20/0" + tail}), qinq(353, port));
    EXPECT_EQ((Events{"now 21/0" + tail}), qinq(353 | L2IF_EVT_NOW, port));
    EXPECT_EQ(Events{}, qinq(337, noPort));
}

/* A question is answered by the callbacks before the host goes on. */
TEST_F(HostEventsRoad, OfQuestions) {
    const uint32_t data = 0x11223344;
    MDL_EVENT_S question = Layer2(TRUNK_EVT_HAS_CFG, data, data);
    question.ulTopic = MDL_TOPIC_TRUNK;
    question.ulA = question.ulC = 1;
    uint32_t yes = 9;
    EXPECT_EQ(0u, MDL_Ask(&question, &yes));
    EXPECT_EQ(1u, yes);
    EXPECT_EQ((Events{"now 1200/0 44332211"}), Arrived());
    answer = 3;
    EXPECT_EQ(0u, MDL_Ask(&question, &yes));
    EXPECT_EQ(0u, yes);
    question.ulTopic = MDL_TOPIC_L2;
    question.ulEvent = 53 * 16 + 1;
    EXPECT_EQ(0u, MDL_Ask(&question, &yes));
    EXPECT_EQ(0u, yes);
    EXPECT_EQ((Events{"now 1200/0 44332211", "now 1201/0 44332211"}), Arrived());
}

TEST_F(HostEventsRoad, OfManyChangesIsInOrderAndLeavesNothingBehind) {
    MDL_IF_S interface = Interface(5, "eth5");
    (void)Change([&](MDL_BATCH *batch) { MDL_PutIf(batch, &interface); });
    const uint64_t blocks = kit::LiveBlocks();
    Events expected;
    const Events arrived = Change([&](MDL_BATCH *batch) {
        for (uint32_t i = 0; i < 300; ++i) {
            interface.ulPhyState = i % 2 == 0 ? IF_STATE_UP : IF_STATE_DOWN;
            MDL_PutIf(batch, &interface);
            expected.push_back(i % 2 == 0 ? "queue 5/26 14000000 07000000 05000000 1D000000 01000000"
                                          : "queue 5/26 14000000 07000000 05000000 1C000000 00000000");
        }
    });
    EXPECT_EQ(expected, arrived);
    EXPECT_EQ(blocks, kit::LiveBlocks());
}

} // namespace
