/* What callbacks may do to the registry while a notification is calling them. */

#include "event_listeners.h"

#include <random>

namespace {

class EventWalk : public testing::Test {
  protected:
    EventWalk() {
        kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
        /* A freed node must not be looked at any more, also where no sanitizer watches. */
        kit::Op<QAL_MemFree>().Does([](uint32_t mid, void *block) {
            std::memset(block, 0xDD, sizeof(UVEL_EVENT_NODE_S));
            return kit::Op<QAL_MemFree>().Real(mid, block);
        });
    }

    static void Does(char letter, const std::function<void()> &action, uint32_t result = 0) {
        Listeners::On(letter, [action, result](uint32_t, void *) {
            action();
            return result;
        });
    }

    static std::string Run() {
        EXPECT_EQ(0u, Notify());
        return Listeners::Called();
    }

    Listeners listeners;
};

TEST_F(EventWalk, ANeighbourUnregisteredOnTheWayIsNotCalled) {
    Register('A', 9);
    Register('B', 8);
    Register('C', 7);
    Does('A', [] { Unregister('B'); });
    EXPECT_EQ("AC", Run());
    Does('A', [] { Register('B', 8); });
    EXPECT_EQ("ABC", Run()) << "revived before its place was passed";
    Does('A', [] {});
    Does('B', [] { Unregister('A'); });
    EXPECT_EQ("ABC", Run());
    EXPECT_EQ("BC", Run());
}

TEST_F(EventWalk, ACallbackMayUnregisterItself) {
    Register('A', 9);
    Register('B', 8);
    Does('A', [] { Unregister('A'); });
    EXPECT_EQ("AB", Run());
    EXPECT_EQ("B", Run());
    EXPECT_EQ(1u, NodeOf('A')->ulCalls);
}

TEST_F(EventWalk, WhatIsRegisteredBehindTheWalksPlaceTakesPartAndWhatIsInFrontDoesNot) {
    Register('A', 5);
    Register('B', 1);
    Does('A', [] {
        Register('C', 9); /* passed */
        Register('D', 5); /* behind A, as equals come in order */
        Register('E', 3);
        Register('F', 0); /* behind everybody */
    });
    EXPECT_EQ("ADEBF", Run());
    EXPECT_EQ("CADEBF", Run());
}

TEST_F(EventWalk, ACallbackThatRaisesItsOwnPriorityIsNotCalledAgain) {
    Register('A', 5);
    Register('B', 3);
    Does('A', [] { Register('A', 9); });
    EXPECT_EQ("AB", Run());
    EXPECT_EQ(0u, NodeOf('A')->ulCalls) << "it counts afresh; the call belonged to the node that is gone";
    EXPECT_EQ("AB", Run());
    EXPECT_EQ(1u, NodeOf('A')->ulCalls) << "the priority did not change again";
}

TEST_F(EventWalk, ACallbackThatLowersItsOwnPriorityHasItsNewPlaceBeforeIt) {
    Register('A', 5);
    Register('B', 3);
    Does('A', [] { Register('A', 1); });
    EXPECT_EQ("ABA", Run());
    EXPECT_EQ("BA", Run());
}

TEST_F(EventWalk, ACallbackThatChangesItsPriorityToAndFroEndsItsWalk) {
    Register('A', 5);
    Register('B', 3);
    static uint8_t s_next;
    s_next = 9;
    Does('A', [] { Register('A', std::exchange(s_next, static_cast<uint8_t>(14 - s_next))); });
    EXPECT_EQ("AB", Run());  /* to 9: passed */
    EXPECT_EQ("AAB", Run()); /* to 5: not passed yet; there to 9: passed */
}

TEST_F(EventWalk, TheOnlyAndTheLastCallbackMayMove) {
    Register('A', 5);
    Does('A', [] { Register('A', 6); });
    EXPECT_EQ("A", Run());
    Register('B', 1);
    Does('B', [] { Register('B', 2); });
    EXPECT_EQ("AB", Run());
    EXPECT_EQ(2u, NodeOf('B')->ucPriority);
}

TEST_F(EventWalk, TheNeighbourAheadAndTheNeighbourBehindMayMove) {
    Register('A', 9);
    Register('B', 8);
    Register('C', 7);
    Register('D', 6);
    Does('B', [] {
        Register('A', 1);  /* was called, comes once more */
        Register('C', 10); /* was not called, is passed now */
    });
    EXPECT_EQ("ABDA", Run());
    EXPECT_EQ("CBDA", Run());
}

TEST_F(EventWalk, TheNodeThatTheWalkFellBackToMayMoveToo) {
    Register('A', 9);
    Register('B', 8);
    Register('C', 7);
    Register('D', 6);
    Does('C', [] {
        Register('C', 10); /* the walk falls back to B */
        Register('B', 11); /* and to A */
        Register('A', 12); /* and to the head */
        Register('E', 9);  /* in front of the old place, although behind the head */
        Register('F', 7);  /* behind it */
    });
    EXPECT_EQ("ABCFD", Run());
    EXPECT_EQ("ABCEFD", Run());
}

TEST_F(EventWalk, AMovedCallbackThatFailsEndsTheWalkByTheFlagsItWasCalledWith) {
    Register('A', 5, {.mid = 0x100});
    Register('B', 1);
    Does(
        'A', [] { Register('A', 9, {.mid = 0x100, .continueOnFailure = 1}); }, 44);
    EXPECT_EQ(44u, Notify());
    EXPECT_EQ("A", Listeners::Called());
    EXPECT_EQ(0x100u, UVEL_GetMidOfEventCBErr());
    EXPECT_EQ(0u, NodeOf('A')->ulFailures);

    Does(
        'A', [] { Register('A', 7, {.mid = 0x100}); }, 45);
    EXPECT_EQ(45u, Notify());
    EXPECT_EQ("AA", Listeners::Called()) << "passed over, then called in its new place, where its failure counts";
    EXPECT_EQ(1u, NodeOf('A')->ulFailures);
}

TEST_F(EventWalk, FlagsChangedDuringTheCallCountForIt) {
    Register('A', 5);
    Register('B', 1);
    Does(
        'A', [] { Register('A', 5, {.continueOnFailure = 1}); }, 44);
    EXPECT_EQ("AB", Run());
    EXPECT_EQ(1u, NodeOf('A')->ulFailures);
}

TEST_F(EventWalk, WithoutMemoryForTheNewPlaceTheWalkGoesOn) {
    Register('A', 5);
    Register('B', 3);
    Does('A', [] {
        kit::Op<QAL_MemAlloc>().FailsOn(1);
        EXPECT_EQ(1u, Register('A', 9));
    });
    EXPECT_EQ("AB", Run());
    EXPECT_EQ("B", Run());
}

TEST_F(EventWalk, ANotificationInsideANotificationWalksByItself) {
    Register('A', 9);
    Register('B', 8);
    Register('C', 7);
    static int s_depth;
    s_depth = 0;
    Does('B', [] {
        if (s_depth++ == 0) {
            EXPECT_EQ(0u, Notify());
        }
    });
    EXPECT_EQ("ABABCC", Run());
    EXPECT_EQ(2u, NodeOf('B')->ulCalls);
}

TEST_F(EventWalk, WhatMovesInTheInnerWalkIsGoneForTheOuterToo) {
    Register('A', 9);
    Register('B', 8);
    Register('C', 7);
    static int s_depth;
    s_depth = 0;
    Does('B', [] {
        if (s_depth++ == 0) {
            EXPECT_EQ(0u, Notify());
        } else {
            Register('B', 5); /* both walks stand on it */
        }
    });
    EXPECT_EQ("ABABCBCB", Run()) << "the inner walk and then the outer one meet it in its new place";
    EXPECT_EQ(2u, NodeOf('B')->ulCalls);
}

TEST_F(EventWalk, OtherEventsAreWalkedAndChangedFromInside) {
    Register('A', 9);
    Register('B', 8, {.event = 21});
    Register('C', 7, {.event = 21});
    Does('A', [] { EXPECT_EQ(0u, Notify(1, nullptr, 21)); });
    Does('B', [] {
        Register('A', 3);
        Register('D', 5);
    });
    EXPECT_EQ("ABCDABC", Run()) << "A, moved, is called once more behind D";
}

/* Callbacks that do anything to anybody, many thousand times, beside a list that says what the registry must hold. */
TEST_F(EventWalk, RandomChangesFromInsideKeepTheListWellFormed) {
    constexpr uint32_t SEED = 20240611;
    RecordProperty("seed", SEED);
    static std::mt19937 s_random;
    s_random.seed(SEED);
    static uint32_t s_calls;
    s_calls = 0;
    const auto pick = [](uint32_t n) { return static_cast<uint32_t>(s_random() % n); };
    for (char letter = 'A'; letter <= 'J'; ++letter) {
        Listeners::On(letter, [pick](uint32_t, void *) {
            if (++s_calls % 50 == 0) /* or a walk might go on for long */
                return 0u;
            for (uint32_t i = pick(4); i > 0; --i) {
                const char other = static_cast<char>('A' + pick(10));
                switch (pick(6)) {
                case 0:
                    Unregister(other);
                    break;
                case 1:
                    if (pick(8) == 0)
                        Notify();
                    break;
                default:
                    Register(other, static_cast<uint8_t>(pick(5)),
                             {.continueOnFailure = static_cast<uint8_t>(pick(2))});
                    break;
                }
            }
            return pick(8) == 0 ? 1u : 0u;
        });
    }
    for (int round = 0; round < 3000; ++round) {
        Register(static_cast<char>('A' + pick(10)), static_cast<uint8_t>(pick(5)));
        Notify();
        Listeners::Called();
        const DLL_S *list = g_szDllKIVOEvtCBRegTbl + 20;
        uint32_t count = 0;
        uint8_t priority = 255;
        const auto *before = reinterpret_cast<const DLL_NODE_S *>(list);
        for (const DLL_NODE_S *links = list->pstNext; links != reinterpret_cast<const DLL_NODE_S *>(list);
             before = links, links = links->pstNext, ++count) {
            const auto *node = reinterpret_cast<const UVEL_EVENT_NODE_S *>(links);
            ASSERT_EQ(before, links->pstPrev);
            ASSERT_LE(node->ucPriority, priority);
            priority = node->ucPriority;
        }
        ASSERT_EQ(list->ulCount, count);
        ASSERT_EQ(1u + count, kit::LiveBlocks()) << "round " << round;
    }
}

} // namespace
