#include "event_listeners.h"

#include <algorithm>

namespace {

class EventRegistry : public testing::Test {
  protected:
    EventRegistry() { kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER); }

    Listeners listeners;
};

TEST_F(EventRegistry, CallbacksRunByDescendingPriorityAndEqualsInTheOrderOfRegistration) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 9));
    EXPECT_EQ(0u, Register('C', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("BAC", Listeners::Called());
}

TEST_F(EventRegistry, PrioritiesAreUnsignedAndReachFromZeroTo255) {
    EXPECT_EQ(0u, Register('A', 0));
    EXPECT_EQ(0u, Register('B', 255));
    EXPECT_EQ(0u, Register('C', 127));
    EXPECT_EQ(0u, Register('D', 128));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("BDCA", Listeners::Called());
}

TEST_F(EventRegistry, ValueAndDataReachTheCallback) {
    int record = 0;
    Listeners::On('A', [&](uint32_t value, void *data) {
        EXPECT_EQ(0x12345678u, value);
        EXPECT_EQ(&record, data);
        return 0u;
    });
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Notify(0x12345678, &record));
    EXPECT_EQ("A", Listeners::Called());
}

TEST_F(EventRegistry, EventsAreApart) {
    EXPECT_EQ(0u, Register('A', 5, {.event = 0}));
    EXPECT_EQ(0u, Register('B', 5, {.event = 1999}));
    EXPECT_EQ(0u, Notify(1, nullptr, 0));
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(0u, Notify(1, nullptr, 1999));
    EXPECT_EQ("B", Listeners::Called());
    EXPECT_EQ(0u, Notify(1, nullptr, 1998));
    EXPECT_EQ("", Listeners::Called());
}

TEST_F(EventRegistry, AnEventNumberAbove1999IsRefusedBeforeAndAfterTheFirstRegistration) {
    for (int round = 0; round < 2; ++round) {
        for (const uint32_t event : {2000u, 0xFFFFFFFFu}) {
            EXPECT_EQ(1u, Register('A', 5, {.event = event}));
            EXPECT_EQ(1u, Unregister('A', {.event = event}));
            EXPECT_EQ(1u, Notify(1, nullptr, event));
        }
        if (round == 0) {
            EXPECT_EQ(nullptr, g_szDllKIVOEvtCBRegTbl);
        }
        EXPECT_EQ(0u, Register('A', 5));
    }
}

TEST_F(EventRegistry, WithoutARegistryThereIsNothingToDo) {
    EXPECT_EQ(0u, Unregister('A'));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(nullptr, g_szDllKIVOEvtCBRegTbl);
    EXPECT_EQ(0u, kit::Op<HA_GetBoardType>().Calls());
}

TEST_F(EventRegistry, ANullCallbackIsRefused) {
    EXPECT_EQ(1u, UVEL_EventCallBackReg(7, 20, ANY, 5, 0, 0, nullptr));
    EXPECT_EQ(nullptr, g_szDllKIVOEvtCBRegTbl);
}

TEST_F(EventRegistry, TheFirstRegistrationMakesTheWholeRegistryEmpty) {
    kit::Recorder recorder({"QAL_Mem", "DLL_"});
    EXPECT_EQ(0u, Register('A', 5, {.event = 1000}));
    EXPECT_EQ(
        (std::vector<std::string>{"QAL_MemAlloc(1, 0, 64000)", "QAL_MemAlloc(1, 0, 88)", "DLL_Insert(ptr, ptr, ptr)"}),
        recorder.Calls());
    for (uint32_t event = 0; event < 2000; ++event) {
        const DLL_S &list = g_szDllKIVOEvtCBRegTbl[event];
        if (event == 1000)
            continue;
        ASSERT_EQ(reinterpret_cast<const DLL_NODE_S *>(&list), list.pstNext);
        ASSERT_EQ(reinterpret_cast<const DLL_NODE_S *>(&list), list.pstPrev);
        ASSERT_EQ(0u, list.ulCount);
    }
    EXPECT_EQ(1u, g_szDllKIVOEvtCBRegTbl[1000].ulCount);
}

TEST_F(EventRegistry, ANodeStartsWithWhatWasRegisteredAndZeros) {
    kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
        void *block = kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
        std::fill_n(static_cast<uint8_t *>(block), size, uint8_t{0xEE});
        return block;
    });
    EXPECT_EQ(0u,
              Register('A', 200, {.event = 3, .mid = 0x10, .subKey = 7, .continueOnFailure = 2, .alsoOnStandby = 3}));
    const UVEL_EVENT_NODE_S *node = NodeOf('A', 3);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(0x10u, node->ulMid);
    EXPECT_EQ(7u, node->ulSubKey);
    EXPECT_EQ(200u, node->ucPriority);
    EXPECT_EQ(2u, node->ucContinueOnFailure);
    EXPECT_EQ(3u, node->ucAlsoOnStandby);
    EXPECT_EQ(0u, node->ucUnregistered);
    EXPECT_EQ(0u, node->ulCalls + node->ulFailures + node->ulStartSeconds + node->ulLastResult);
    EXPECT_EQ(0u, node->ulStartMs + node->ulTotalMs);
}

TEST_F(EventRegistry, ASubKeyReceivesItsValueOnlyAndAllOnesReceivesEveryValue) {
    EXPECT_EQ(0u, Register('A', 5, {.subKey = 7}));
    EXPECT_EQ(0u, Register('B', 5, {.subKey = ANY}));
    EXPECT_EQ(0u, Register('C', 5, {.subKey = 0}));
    EXPECT_EQ(0u, Notify(7));
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(0u, Notify(8));
    EXPECT_EQ("B", Listeners::Called());
    EXPECT_EQ(0u, Notify(0));
    EXPECT_EQ("BC", Listeners::Called());
    EXPECT_EQ(0u, Notify(ANY)) << "the value of all ones is a value like any other";
    EXPECT_EQ("B", Listeners::Called());
}

TEST_F(EventRegistry, OnAStandbyBoardOnlyThoseRunThatAskedForIt) {
    EXPECT_EQ(0u, Register('A', 9, {.alsoOnStandby = 0}));
    EXPECT_EQ(0u, Register('B', 5, {.alsoOnStandby = 1}));
    for (const uint32_t type : {1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<HA_GetBoardType>().Returns(type);
        EXPECT_EQ(0u, Notify());
        EXPECT_EQ("B", Listeners::Called());
    }
    kit::Op<HA_GetBoardType>().Returns(0);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
}

TEST_F(EventRegistry, TheRoleIsAskedForOnceANotificationAlsoForAnEmptyEvent) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ(1u, kit::Op<HA_GetBoardType>().Calls());
    EXPECT_EQ(0u, Notify(1, nullptr, 21));
    EXPECT_EQ(2u, kit::Op<HA_GetBoardType>().Calls());
}

TEST_F(EventRegistry, AnEqualRegistrationChangesTheFlagsInPlaceAndKeepsTheCounters) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 5));
    EXPECT_EQ(0u, Notify());
    Listeners::Called();
    const UVEL_EVENT_NODE_S *node = NodeOf('A');
    EXPECT_EQ(0u, Register('A', 5, {.continueOnFailure = 1, .alsoOnStandby = 1}));
    EXPECT_EQ(node, NodeOf('A'));
    EXPECT_EQ(2u, g_szDllKIVOEvtCBRegTbl[20].ulCount);
    EXPECT_EQ(1u, node->ulCalls);
    EXPECT_EQ(1u, node->ucContinueOnFailure);
    EXPECT_EQ(1u, node->ucAlsoOnStandby);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, node->ucContinueOnFailure);
    EXPECT_EQ(0u, node->ucAlsoOnStandby);
}

TEST_F(EventRegistry, AnotherPriorityMovesTheCallbackAndItCountsAfresh) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    kit::Recorder recorder({"QAL_Mem", "DLL_"});
    EXPECT_EQ(0u, Register('B', 6));
    EXPECT_EQ((std::vector<std::string>{"DLL_Delete(ptr, ptr)", "QAL_MemFree(0, ptr)", "QAL_MemAlloc(1, 0, 88)",
                                        "DLL_Insert(ptr, ptr, ptr)"}),
              recorder.Calls());
    EXPECT_EQ(0u, NodeOf('B')->ulCalls);
    EXPECT_EQ(1u, NodeOf('A')->ulCalls);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("BA", Listeners::Called());
    EXPECT_EQ(3u, kit::LiveBlocks()) << "the registry and two nodes";
}

TEST_F(EventRegistry, ModuleSubKeyAndCallbackTogetherMakeARegistration) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('A', 5, {.mid = 8}));
    EXPECT_EQ(0u, Register('A', 5, {.subKey = 1}));
    EXPECT_EQ(3u, g_szDllKIVOEvtCBRegTbl[20].ulCount);
    EXPECT_EQ(0u, Notify(1));
    EXPECT_EQ("AAA", Listeners::Called());
    EXPECT_EQ(0u, Unregister('A', {.mid = 8}));
    EXPECT_EQ(0u, Unregister('A', {.mid = 9})) << "there is none";
    EXPECT_EQ(0u, Notify(1));
    EXPECT_EQ("AA", Listeners::Called());
}

TEST_F(EventRegistry, AnUnregisteredCallbackIsNotCalledUntilItIsRegisteredAgain) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 5));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(0u, Unregister('A'));
    EXPECT_EQ(1u, NodeOf('A')->ucUnregistered);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("B", Listeners::Called());
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(2u, g_szDllKIVOEvtCBRegTbl[20].ulCount) << "no second node";
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(2u, NodeOf('A')->ulCalls) << "its counters were kept";
}

TEST_F(EventRegistry, UnregisteringTheSubKeyOfAllOnesLeavesTheOthers) {
    EXPECT_EQ(0u, Register('A', 5, {.subKey = 7}));
    EXPECT_EQ(0u, Register('A', 5, {.subKey = ANY}));
    EXPECT_EQ(0u, Unregister('A', {.subKey = ANY}));
    EXPECT_EQ(0u, Notify(7));
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(7u, NodeOf('A')->ulSubKey);
    EXPECT_EQ(1u, NodeOf('A')->ulCalls);
    EXPECT_EQ(0u, Notify(8));
    EXPECT_EQ("", Listeners::Called());
}

TEST_F(EventRegistry, AnUnregisteredCallbackThatComesBackWithAnotherPriorityIsCalled) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Unregister('A'));
    EXPECT_EQ(0u, Register('A', 9));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(1u, g_szDllKIVOEvtCBRegTbl[20].ulCount);
    EXPECT_EQ(0u, NodeOf('A')->ucUnregistered);
}

TEST_F(EventRegistry, UnregisteringFreesNothing) {
    EXPECT_EQ(0u, Register('A', 5));
    kit::Recorder recorder({"QAL_Mem", "DLL_"});
    EXPECT_EQ(0u, Unregister('A'));
    EXPECT_EQ(0u, Unregister('A'));
    EXPECT_EQ(0u, Unregister('B'));
    EXPECT_EQ(0u, Unregister('A', {.event = 21})) << "an event nobody hears of";
    EXPECT_EQ(std::vector<std::string>{}, recorder.Calls());
}

TEST_F(EventRegistry, AFailureEndsTheWalkAndLeavesItsModule) {
    EXPECT_EQ(0u, UVEL_GetMidOfEventCBErr());
    EXPECT_EQ(0u, Register('A', 9, {.mid = 0x100}));
    EXPECT_EQ(0u, Register('B', 5, {.mid = 0x200}));
    EXPECT_EQ(0u, Register('C', 1, {.mid = 0x300}));
    Listeners::Returns('B', 42);
    EXPECT_EQ(42u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(0x200u, UVEL_GetMidOfEventCBErr());
    EXPECT_EQ(0x200u, g_ulLastErrMid);
    EXPECT_EQ(1u, NodeOf('B')->ulFailures);
    EXPECT_EQ(42u, NodeOf('B')->ulLastResult);

    Listeners::Returns('B', 0);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("ABC", Listeners::Called());
    EXPECT_EQ(0x200u, UVEL_GetMidOfEventCBErr()) << "a success does not reset it";
    EXPECT_EQ(1u, NodeOf('B')->ulFailures);
    EXPECT_EQ(0u, NodeOf('B')->ulLastResult);
    EXPECT_EQ(2u, NodeOf('B')->ulCalls);
}

TEST_F(EventRegistry, TheModuleOfTheLatestFailureIsKept) {
    EXPECT_EQ(0u, Register('A', 5, {.event = 20, .mid = 0x100}));
    EXPECT_EQ(0u, Register('B', 5, {.event = 21, .mid = 0x200}));
    Listeners::Returns('A', 1);
    Listeners::Returns('B', 1);
    EXPECT_EQ(1u, Notify(1, nullptr, 20));
    EXPECT_EQ(0x100u, UVEL_GetMidOfEventCBErr());
    EXPECT_EQ(1u, Notify(1, nullptr, 21));
    EXPECT_EQ(0x200u, UVEL_GetMidOfEventCBErr());
}

TEST_F(EventRegistry, AFailureThatIsPassedOverIsCountedAndNotReported) {
    EXPECT_EQ(0u, Register('A', 9, {.mid = 0x100, .continueOnFailure = 1}));
    EXPECT_EQ(0u, Register('B', 5));
    Listeners::Returns('A', 42);
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("AB", Listeners::Called());
    EXPECT_EQ(1u, NodeOf('A')->ulFailures);
    EXPECT_EQ(42u, NodeOf('A')->ulLastResult);
    EXPECT_EQ(0u, UVEL_GetMidOfEventCBErr());
}

TEST_F(EventRegistry, TheWalkReadsTheClockAroundEachCallAndGivesWayAfterEachNode) {
    EXPECT_EQ(0u, Register('A', 9));
    EXPECT_EQ(0u, Register('B', 8, {.subKey = 3})); /* does not take part */
    EXPECT_EQ(0u, Register('C', 7));                /* unregistered */
    EXPECT_EQ(0u, Register('D', 6));
    EXPECT_EQ(0u, Register('E', 5));
    EXPECT_EQ(0u, Unregister('C'));
    Listeners::Returns('D', 1);
    kit::Recorder recorder;
    EXPECT_EQ(1u, Notify(1));
    EXPECT_EQ((std::vector<std::string>{
                  "HA_GetBoardType()",
                  "QAL_SecondNow(ptr, ptr)", /* A */
                  "QAL_SecondNow(ptr, ptr)",
                  "QAL_TaskRunDelay(200, 20)",
                  "QAL_TaskRunDelay(200, 20)", /* B */
                  "QAL_TaskRunDelay(200, 20)", /* C */
                  "QAL_SecondNow(ptr, ptr)",   /* D, which ends the walk at once */
                  "QAL_SecondNow(ptr, ptr)",
              }),
              recorder.Calls());
}

TEST_F(EventRegistry, ANodeWhoseCallbackWasTakenOutIsPassedOver) {
    EXPECT_EQ(0u, Register('A', 5));
    const_cast<UVEL_EVENT_NODE_S *>(NodeOf('A'))->pfCallback = nullptr;
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("", Listeners::Called());
}

TEST_F(EventRegistry, WithoutMemoryForTheRegistryNothingIsRegistered) {
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, Register('A', 5));
    EXPECT_EQ(nullptr, g_szDllKIVOEvtCBRegTbl);
    EXPECT_EQ(0u, Register('A', 5));
}

TEST_F(EventRegistry, WithoutMemoryForANodeTheRegistryStaysAsItWas) {
    EXPECT_EQ(0u, Register('A', 5));
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, Register('B', 9));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(0u, Register('B', 9));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("BA", Listeners::Called());
}

TEST_F(EventRegistry, WithoutMemoryForItsNewPlaceAMovedCallbackIsGone) {
    EXPECT_EQ(0u, Register('A', 5));
    EXPECT_EQ(0u, Register('B', 5));
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, Register('A', 6));
    EXPECT_EQ(nullptr, NodeOf('A'));
    EXPECT_EQ(0u, Notify());
    EXPECT_EQ("B", Listeners::Called());
    EXPECT_EQ(2u, kit::LiveBlocks());
}

TEST(EventRegistryMemory, EveryAllocationMayFail) {
    const int failures = kit::SweepAllocations(
        [] {
            kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
            Register('A', 5);
            Register('B', 9);
            Register('A', 7);
            Notify();
        },
        [] {
            EXPECT_EQ(0u, Register('A', 7));
            EXPECT_EQ(0u, Register('B', 9));
            Listeners::Called();
            EXPECT_EQ(0u, Notify());
            EXPECT_EQ("BA", Listeners::Called());
        });
    EXPECT_EQ(10, failures) << "the account, the registry and three nodes, each once and for ever";
}

} // namespace
