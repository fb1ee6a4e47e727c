/* How notifications are delivered: order, threads, what is still known inside them, questions. */
#include "model_notices.h"

#include <atomic>
#include <string>
#include <thread>
#include <uvelhost/events.h>
#include <uvelhost/exec.h>
#include <uvelhost/task.h>
#include <vector>

namespace {

using HostDelivery = ModelTest;

std::vector<std::string> g_heard; /* the notifying thread writes it, tests read it after a drain */

template <typename Function>
UVELHOST_CALLBACK As(Function function) {
    return reinterpret_cast<UVELHOST_CALLBACK>(function);
}

/* Raises a command on an interface and waits for its delivery. */
void Notify(uint32_t if_index, uint32_t command) {
    MDL_EVENT_S event = {};
    event.ulTopic = MDL_TOPIC_NOTIFY;
    event.ulEvent = command;
    event.ulA = if_index;
    ASSERT_EQ(0u, MDL_Raise(nullptr, &event));
    ASSERT_EQ(0u, MDL_Drain(10000));
}

MDL_EVENT_S L2Event(uint32_t number) {
    MDL_EVENT_S event = {};
    event.ulTopic = MDL_TOPIC_L2;
    event.ulEvent = number;
    return event;
}

} // namespace

TEST_F(HostDelivery, ARegistrationNeedsACallbackANameAndSomethingThatTheHostKnows) {
    const IF_NOTIFY_CB notify = [](uint32_t, uint32_t, uint32_t, uint32_t) { return 0U; };
    const IP_EVT_CB ip = [](const uint32_t *, uint32_t, const uint32_t *) { return 0U; };
    const L2IF_EVT_CB l2 = [](const void *, uint32_t, void *) { return 0U; };
    const VRF_EVT_CB vrf = [](uint32_t, uint16_t *) { return 0U; };
    const CFM_OVER_CB over = [] { return 0U; };
    EXPECT_NE(0u, IF_INTF_RegEvtCb(IF_EVT_IF, IF_EVT_ALL_SUB, nullptr, 1, IF_EVT_MASK_ALL));
    for (uint32_t type : {0u, 1u, 4u, 6u, 7u, 10u, 14u, 100u, UVELHOST_NONE})
        EXPECT_NE(0u, IF_INTF_RegEvtCb(type, IF_EVT_ALL_SUB, As(notify), 1, IF_EVT_MASK_ALL)) << type;
    EXPECT_NE(0u, IF_RegNotifyFunc(1, nullptr));
    EXPECT_NE(0u, IP_EventNotifyFuncRegister(nullptr, IP_EVT_CLASS_ADDR, ip));
    EXPECT_NE(0u, IP_EventNotifyFuncRegister("x", 5, ip));
    EXPECT_NE(0u, IP_EventNotifyFuncRegister("x", IP_EVT_CLASS_ADDR, nullptr));
    EXPECT_NE(0u, CFM_OverNotifyModuleRegister(1, 0, 0, 0, nullptr));
    EXPECT_NE(0u, CFM_OverNotifyModuleRegister(1, 0, 0, 1, over));
    EXPECT_NE(0u, L2IF_SH_EvtCbFuncReg(nullptr, 4, 1, l2));
    EXPECT_NE(0u, L2IF_SH_EvtCbFuncReg("x", 3, 1, l2));
    EXPECT_NE(0u, L2IF_SH_EvtCbFuncReg("x", 4, 1, nullptr));
    EXPECT_NE(0u, Trunk_EventNotifyFuncRegister(nullptr, 1, 2, 1, As(l2)));
    EXPECT_NE(0u, Trunk_EventNotifyFuncRegister("x", 1, 3, 1, As(l2)));
    EXPECT_NE(0u, Trunk_EventNotifyFuncRegister("x", 4, 6, 1, As(l2)));
    EXPECT_NE(0u, Trunk_EventNotifyFuncRegister("x", 1, 2, 1, nullptr));
    EXPECT_NE(0u, VPNBASE_VRFMGM_RegisterCb(1, 0, vrf));
    EXPECT_NE(0u, VPNBASE_VRFMGM_RegisterCb(1, 3, vrf));
    EXPECT_NE(0u, VPNBASE_VRFMGM_RegisterCb(1, VRF_EVT_CREATED, nullptr));
}

TEST_F(HostDelivery, HigherPrioritiesComeFirstAndEqualOnesInTheOrderOfRegistration) {
    ASSERT_EQ(0u, L2IF_SH_EvtCbFuncReg("low", 22, 1, [](const void *, uint32_t, void *) {
                  g_heard.push_back("low");
                  return 0U;
              }));
    ASSERT_EQ(0u, L2IF_SH_EvtCbFuncReg("high", 22, 228, [](const void *, uint32_t, void *) {
                  g_heard.push_back("high");
                  return 1U;
              }));
    ASSERT_EQ(0u, L2IF_SH_EvtCbFuncReg("other low", 22, 1, [](const void *, uint32_t, void *) {
                  g_heard.push_back("other low");
                  return 0U;
              }));
    g_heard.clear();
    const MDL_EVENT_S event = L2Event(337), other_group = L2Event(353);
    ASSERT_EQ(0u, MDL_Raise(nullptr, &event));
    ASSERT_EQ(0u, MDL_Raise(nullptr, &other_group));
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ((std::vector<std::string>{"high", "low", "other low"}), g_heard);
}

TEST_F(HostDelivery, WhatWasQueuedBeforeARegistrationIsNotToldToIt) {
    static std::atomic<bool> blocked, release;
    static std::vector<uint32_t> early, late;
    ASSERT_EQ(0u, IF_RegNotifyFunc(1, [](uint32_t, uint32_t command, uint32_t, uint32_t) -> uint32_t {
                  early.push_back(command);
                  blocked = true;
                  while (command == 77 && !release)
                      std::this_thread::yield();
                  return 0;
              }));
    MDL_EVENT_S event = {};
    event.ulTopic = MDL_TOPIC_NOTIFY;
    event.ulEvent = 77;
    MDL_Raise(nullptr, &event);
    while (!blocked)
        std::this_thread::yield();
    event.ulEvent = 78;
    MDL_Raise(nullptr, &event);
    ASSERT_EQ(0u, IF_RegNotifyFunc(1, [](uint32_t, uint32_t command, uint32_t, uint32_t) -> uint32_t {
                  late.push_back(command);
                  return 0;
              }));
    EXPECT_NE(0u, MDL_Drain(1));
    release = true;
    Notify(1, 79);
    EXPECT_EQ((std::vector<uint32_t>{77, 78, 79}), early);
    EXPECT_EQ((std::vector<uint32_t>{79}), late);
}

TEST_F(HostDelivery, InsideItsNotificationWhatGoesIsStillKnown) {
    static uint32_t type, index, is_port, is_used, thread_sees;
    ASSERT_EQ(0u, IF_INTF_RegEvtCb(IF_EVT_IF, 6, As(+[](uint32_t, uint32_t if_index) -> uint32_t {
                                       BDS_IfnetGetPortType(if_index, &type);
                                       is_port = BDS_L2IF_PORT_GetIfIndex(3, &thread_sees);
                                       is_used = BDS_L2IF_PORT_IsUsed(3);
                                       return 0;
                                   }),
                                   1, IF_EVT_MASK_ALL));
    ASSERT_EQ(0u, Trunk_EventNotifyFuncRegister("x", 3, 6, 1, As(+[](uint32_t trunk, uint32_t, uint32_t) -> uint32_t {
                                                    index = Trunk_GetIndexByTrunkID(trunk);
                                                    return 0;
                                                })));
    MDL_IF_S interface = Interface(7);
    interface.ulPortType = 11;
    interface.ulPortIndex = 3;
    InBatch([&](MDL_BATCH *batch) {
        const MDL_TRUNK_S other = {0, 40, 99}, trunk = {1, 50, 100};
        EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &other));
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &trunk));
    });
    type = index = thread_sees = UNTOUCHED;
    InBatch([](MDL_BATCH *batch) {
        MDL_RemoveIf(batch, 7);
        MDL_RemoveTrunk(batch, 50);
    });
    uint32_t unknown = UNTOUCHED;
    EXPECT_NE(0u, BDS_IfnetGetPortType(7, &unknown));
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(11u, type);
    EXPECT_EQ(0u, is_port);
    EXPECT_EQ(1u, is_used);
    EXPECT_EQ(7u, thread_sees);
    EXPECT_EQ(1u, index);
    EXPECT_EQ(UVELHOST_NONE, Trunk_GetIndexByTrunkID(50));
}

TEST_F(HostDelivery, WhatGoesIsNotTakenForWhatCameAfterIt) {
    static std::vector<std::string> seen;
    ASSERT_EQ(0u, IF_INTF_RegEvtCb(IF_EVT_IF, IF_EVT_ALL_SUB, As(+[](uint32_t event, uint32_t if_index) -> uint32_t {
                                       uint32_t type = UNTOUCHED, of_port = UNTOUCHED, mask = 0;
                                       BDS_IfnetGetPortType(if_index, &type);
                                       BDS_L2IF_PORT_GetIfIndex(3, &of_port);
                                       IP_GetMask(if_index, &mask);
                                       seen.push_back(notices::Join("if", event, if_index, type, of_port, mask >> 24,
                                                                    BDS_TrunkIsPortInTrunk(if_index)));
                                       return 0;
                                   }),
                                   1, IF_EVT_MASK_ALL));
    MDL_IF_S first = Interface(7), other = Interface(6), second = Interface(7);
    first.ulPortIndex = other.ulPortIndex = second.ulPortIndex = 3;
    first.ulPortType = 11;
    other.ulPortType = 5;
    second.ulPortType = 1;
    const MDL_ADDR4_S addr = {7, 0x0A000001, 24, 1, IP_FLAG_CONFIGURED};
    const MDL_TRUNK_S trunk = {0, 3, 20};
    const MDL_MEMBER_S member = {7, 3, 1};
    PutIf(first);
    ASSERT_EQ(0u, MDL_Drain(10000));
    seen.clear();
    InBatch([&](MDL_BATCH *batch) {
        EXPECT_EQ(0u, MDL_RemoveIf(batch, 7));
        EXPECT_EQ(0u, MDL_PutIf(batch, &other));
        EXPECT_EQ(0u, MDL_RemoveIf(batch, 6));
        EXPECT_EQ(0u, MDL_PutIf(batch, &second));
        EXPECT_EQ(0u, MDL_PutAddr4(batch, &addr));
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &trunk));
        EXPECT_EQ(0u, MDL_PutMember(batch, &member));
    });
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ((std::vector<std::string>{"if 6 7 11 7 0 0", "if 2 6 5 6 0 0", "if 6 6 5 6 0 0", "if 2 7 1 7 255 1"}),
              seen);
    uint32_t type = UNTOUCHED;
    EXPECT_EQ(0u, BDS_IfnetGetPortType(7, &type));
    EXPECT_EQ(1u, type);
}

TEST_F(HostDelivery, ATrunkThatGoesKeepsItsIndexAndHasNoMembersOfItsSuccessor) {
    static std::vector<std::string> seen;
    const auto look = +[](uint32_t trunk, uint32_t event, uint32_t value) -> uint32_t {
        uint32_t is_trunk = UNTOUCHED, index = UNTOUCHED;
        BDS_TrunkGetTrunkIndex(20, &is_trunk, &index);
        seen.push_back(notices::Join("trunk", event, value, Trunk_GetIndexByTrunkID(trunk), index,
                                     BDS_TRUNK_GetMemCountOnSlot(20, 1)));
        return 0;
    };
    for (const auto &[trunk_class, event] : {std::pair{1u, 2u}, {3u, 7u}, {3u, 6u}, {2u, 3u}, {3u, 8u}})
        ASSERT_EQ(0u, Trunk_EventNotifyFuncRegister("x", trunk_class, event, 1, As(look)));
    const MDL_TRUNK_S before = {0, 3, 20}, after = {5, 3, 20};
    const MDL_MEMBER_S member = {21, 3, 1};
    MDL_IF_S interface = Interface(21);
    interface.ulSlot = 1;
    InBatch([&](MDL_BATCH *batch) {
        EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &before));
        EXPECT_EQ(0u, MDL_PutMember(batch, &member));
    });
    ASSERT_EQ(0u, MDL_Drain(10000));
    seen.clear();
    InBatch([&](MDL_BATCH *batch) {
        EXPECT_EQ(0u, MDL_RemoveTrunk(batch, 3));
        EXPECT_EQ(0u, MDL_PutTrunk(batch, &after));
        EXPECT_EQ(0u, MDL_PutMember(batch, &member));
    });
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ((std::vector<std::string>{"trunk 2 21 0 0 0", "trunk 7 21 0 0 0", "trunk 6 20 0 0 0", "trunk 3 21 5 5 1",
                                        "trunk 8 21 5 5 1"}),
              seen);
}

TEST_F(HostDelivery, AfterItsOwnNotificationWhatWentIsUnknown) {
    static uint32_t found;
    ASSERT_EQ(0u, IF_RegNotifyFunc(1, [](uint32_t if_index, uint32_t command, uint32_t, uint32_t) -> uint32_t {
                  if (command == 80)
                      found = IF_GetIfByIndex(if_index) != nullptr;
                  return 0;
              }));
    PutIf(Interface(7));
    found = UNTOUCHED;
    InBatch([](MDL_BATCH *batch) {
        MDL_EVENT_S event = {};
        event.ulTopic = MDL_TOPIC_NOTIFY;
        event.ulEvent = 80;
        event.ulA = 7;
        MDL_RemoveIf(batch, 7);
        EXPECT_EQ(0u, MDL_Raise(batch, &event));
    });
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(0u, found);
}

TEST_F(HostDelivery, CallbacksRunOnOneThreadOnBehalfOfWhoCausedTheChange) {
    static uint32_t user, task;
    ASSERT_EQ(0u, IF_RegNotifyFunc(1, [](uint32_t, uint32_t, uint32_t, uint32_t) -> uint32_t {
                  user = EXEC_GetCurrentUserId();
                  task = QAL_TaskGetSelf();
                  return 0;
              }));
    MDL_SetThreadUser(12);
    Notify(1, 81);
    EXPECT_EQ(12u, user);
    EXPECT_EQ(12u, EXEC_GetCurrentUserId());
    MDL_SetThreadUser(0);
    const uint32_t first = task;
    char name[16];
    EXPECT_EQ(0u, QAL_TaskGetName(first, name));
    EXPECT_STREQ("MDL_Notify", name);
    InBatch(
        [](MDL_BATCH *batch) {
            MDL_EVENT_S event = {};
            event.ulTopic = MDL_TOPIC_NOTIFY;
            EXPECT_EQ(0u, MDL_Raise(batch, &event));
        },
        FEEDER, 13);
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(13u, user);
    EXPECT_EQ(first, task);
    EXPECT_NE(first, QAL_TaskGetSelf());
}

TEST_F(HostDelivery, ACallbackMayChangeTheModelAndMayNotWaitForNotifications) {
    static uint32_t drained, asked, shut;
    ASSERT_EQ(0u, IF_RegNotifyFunc(1, [](uint32_t if_index, uint32_t command, uint32_t, uint32_t) -> uint32_t {
                  if (command != 82)
                      return 0;
                  const MDL_EVENT_S event = L2Event(337);
                  uint32_t yes;
                  drained = MDL_Drain(10000);
                  asked = MDL_Ask(&event, &yes);
                  shut = IF_INTF_ShutDownInterface(if_index);
                  return 0;
              }));
    MDL_IF_S interface = Interface(7);
    interface.ulLineState = IF_STATE_UP;
    PutIf(interface);
    Notify(7, 82);
    EXPECT_NE(0u, drained);
    EXPECT_NE(0u, asked);
    EXPECT_EQ(0u, shut);
    uint32_t state = UNTOUCHED;
    EXPECT_EQ(0u, BDS_IfnetGetLineState(7, &state));
    EXPECT_EQ(IF_STATE_DOWN, state);
}

TEST_F(HostDelivery, AQuestionIsAnsweredNoWhenAnybodySaysSo) {
    static uint32_t answer;
    ASSERT_EQ(0u, L2IF_SH_EvtCbFuncReg("x", 54, 1, [](const void *, uint32_t, void *data) -> uint32_t {
                  return data == nullptr ? 0 : answer;
              }));
    MDL_EVENT_S question = L2Event(848);
    uint32_t yes = UNTOUCHED;
    question.pData = &question;
    question.ulDataSize = 4;
    for (uint32_t result : {0u, 1u}) {
        answer = result;
        EXPECT_EQ(0u, MDL_Ask(&question, &yes));
        EXPECT_EQ(1 - result, yes);
    }
    EXPECT_NE(0u, MDL_Ask(&question, nullptr));
    EXPECT_NE(0u, MDL_Ask(nullptr, &yes));
}

TEST_F(HostDelivery, OfTheRecoveredConfigurationEveryoneHearsOnce) {
    static uint32_t early, late;
    ASSERT_EQ(0u, CFM_OverNotifyModuleRegister(1, 0, 0, 0, [] { return early++; }));
    ASSERT_EQ(0u, MDL_Drain(10000));
    MDL_EVENT_S over = {};
    over.ulTopic = MDL_TOPIC_CFM_OVER;
    for (int twice = 0; twice < 2; ++twice)
        ASSERT_EQ(0u, MDL_Raise(nullptr, &over));
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(1u, early);
    ASSERT_EQ(0u, CFM_OverNotifyModuleRegister(1, 0, 0, 0, [] { return late++; }));
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(1u, early);
    EXPECT_EQ(1u, late);
}

TEST_F(HostDelivery, OfARecoveryBeforeTheFirstRegistrationOneHearsToo) {
    static uint32_t heard;
    MDL_EVENT_S over = {};
    over.ulTopic = MDL_TOPIC_CFM_OVER;
    ASSERT_EQ(0u, MDL_Raise(nullptr, &over));
    ASSERT_EQ(0u, MDL_Drain(10000));
    ASSERT_EQ(0u, CFM_OverNotifyModuleRegister(1, 0, 0, 0, [] { return heard++; }));
    ASSERT_EQ(0u, MDL_Drain(10000));
    EXPECT_EQ(1u, heard);
}

TEST_F(HostDelivery, WrongNotificationsAreNotRaised) {
    EXPECT_NE(0u, MDL_Raise(nullptr, nullptr));
    for (uint32_t topic : {0u, 1u, 99u, 106u}) {
        MDL_EVENT_S event = {};
        event.ulTopic = topic;
        EXPECT_NE(0u, MDL_Raise(nullptr, &event)) << topic;
    }
    for (uint32_t number : {0u, 32u, 600u}) {
        const MDL_EVENT_S event = L2Event(number);
        EXPECT_NE(0u, MDL_Raise(nullptr, &event)) << number;
    }
    MDL_EVENT_S trunk = {}, vrf = {}, large = L2Event(337);
    trunk.ulTopic = MDL_TOPIC_TRUNK;
    trunk.ulC = 3;
    trunk.ulEvent = 9;
    vrf.ulTopic = MDL_TOPIC_VRF;
    large.pData = &large;
    large.ulDataSize = MDL_MAX_EVENT_BYTES + 1;
    for (const MDL_EVENT_S &event : {trunk, vrf, large})
        EXPECT_NE(0u, MDL_Raise(nullptr, &event));
}

TEST_F(HostDelivery, RegistrationsAndTheirCallsAreShown) {
    uint32_t number = 0;
    MDL_LISTENER_S listener;
    while (MDL_GetListener(number, &listener) == 0)
        ++number;
    ASSERT_EQ(0u, Trunk_EventNotifyFuncRegister("a name that is longer than thirty-one characters", 2, 3, 100,
                                                As(+[](uint32_t, uint32_t, uint32_t value) { return value; })));
    for (uint32_t value : {0u, 5u}) {
        MDL_EVENT_S event = {};
        event.ulTopic = MDL_TOPIC_TRUNK;
        event.ulC = 2;
        event.ulEvent = 3;
        event.ulB = value;
        ASSERT_EQ(0u, MDL_Raise(nullptr, &event));
    }
    ASSERT_EQ(0u, MDL_Drain(10000));
    ASSERT_EQ(0u, MDL_GetListener(number, &listener));
    EXPECT_EQ(MDL_TOPIC_TRUNK, listener.ulTopic);
    EXPECT_EQ(2u, listener.ulSelector);
    EXPECT_EQ(3u, listener.ulEvent);
    EXPECT_EQ(100u, listener.ulPriority);
    EXPECT_EQ(2u, listener.ulCalls);
    EXPECT_EQ(1u, listener.ulFailures);
    EXPECT_STREQ("a name that is longer than thir", listener.szName);
    EXPECT_NE(0u, MDL_GetListener(number + 1, &listener));
    EXPECT_NE(0u, MDL_GetListener(number, nullptr));
}
