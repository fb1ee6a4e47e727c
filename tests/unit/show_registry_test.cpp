#include <kit.h>

#include <cstring>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_show.h>

namespace {

struct Registry {
    const char *name;
    DLL_S *list;
    void (*init)();
    uint32_t (*add)(uint32_t mid, UVEL_SHOW_FUNC show);
    uint32_t (*remove)(uint32_t mid, UVEL_SHOW_FUNC show);
    DLL_S *otherList;
};

const Registry kRegistries[] = {
    {"Feature", &g_stDllShowFeatureTbl, UVEL_RegShowFeatureTbl_Init, UVEL_FuncRegShowFeature, UVEL_FuncUnRegShowFeature,
     &g_stDllShowModuleTbl},
    {"Module", &g_stDllShowModuleTbl, UVEL_RegShowModuleTbl_Init, UVEL_FuncRegShowModuleID, UVEL_FuncUnRegShowModule,
     &g_stDllShowFeatureTbl},
};

uint32_t ShowA() {
    return 0;
}
uint32_t ShowB() {
    return 1;
}
uint32_t ShowC() {
    return 2;
}

using Pairs = std::vector<std::pair<uint32_t, UVEL_SHOW_FUNC>>;

DLL_NODE_S *End(DLL_S *list) {
    return reinterpret_cast<DLL_NODE_S *>(list);
}

class ShowRegistry : public testing::TestWithParam<Registry> {
  protected:
    ~ShowRegistry() override {
        for (const auto &[mid, show] : Registered(registry.list))
            registry.remove(mid, show);
    }

    /* The pairs from first to last; the way back and the count must agree. */
    static Pairs Registered(DLL_S *list) {
        Pairs pairs;
        if (list->pstNext == nullptr)
            return pairs;
        DLL_NODE_S *previous = End(list);
        for (DLL_NODE_S *node = list->pstNext; node != End(list); node = node->pstNext) {
            EXPECT_EQ(previous, node->pstPrev);
            const auto *show = reinterpret_cast<const UVEL_SHOW_NODE_S *>(node);
            pairs.emplace_back(show->ulMid, show->pfShow);
            previous = node;
        }
        EXPECT_EQ(previous, list->pstPrev);
        EXPECT_EQ(pairs.size(), list->ulCount);
        return pairs;
    }

    bool NeverUsed() const { return registry.list->pstNext == nullptr; }

    const Registry &registry = GetParam();
};

TEST_P(ShowRegistry, NodesAreFortyBytes) {
    EXPECT_EQ(40u, sizeof(UVEL_SHOW_NODE_S));
    ASSERT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(40u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST_P(ShowRegistry, TheHeadPointsToItselfOnceInitialised) {
    registry.init();
    EXPECT_EQ(End(registry.list), registry.list->pstNext);
    EXPECT_EQ(End(registry.list), registry.list->pstPrev);
    EXPECT_EQ(0u, registry.list->ulCount);
}

TEST_P(ShowRegistry, InitialisingASecondTimeKeepsWhatIsRegistered) {
    registry.init();
    ASSERT_EQ(0u, registry.add(1, ShowA));
    registry.init();
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
}

TEST_P(ShowRegistry, EachListIsInitialisedForItself) {
    if (!NeverUsed() || registry.otherList->pstNext != nullptr)
        GTEST_SKIP() << "a list of this process was used before";
    registry.init();
    EXPECT_EQ(nullptr, registry.otherList->pstNext);
    EXPECT_EQ(nullptr, registry.otherList->pstPrev);
}

TEST_P(ShowRegistry, TheFirstRegistrationInitialisesTheHead) {
    if (!NeverUsed())
        GTEST_SKIP() << "the list of this process was used before";
    EXPECT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
    registry.init();
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
}

TEST_P(ShowRegistry, KeepsTheOrderOfRegistration) {
    EXPECT_EQ(0u, registry.add(30, ShowB));
    EXPECT_EQ(0u, registry.add(10, ShowA));
    EXPECT_EQ(0u, registry.add(20, ShowC));
    EXPECT_EQ((Pairs{{30, ShowB}, {10, ShowA}, {20, ShowC}}), Registered(registry.list));
}

TEST_P(ShowRegistry, ARegisteredFunctionCanBeCalledFromTheList) {
    ASSERT_EQ(0u, registry.add(1, ShowC));
    EXPECT_EQ(2u, reinterpret_cast<UVEL_SHOW_NODE_S *>(registry.list->pstNext)->pfShow());
}

TEST_P(ShowRegistry, APairIsThereOnlyOnce) {
    EXPECT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(0u, registry.add(2, ShowA));
    const uint64_t calls = kit::Op<QAL_MemAlloc>().Calls();
    EXPECT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(0u, registry.add(2, ShowA));
    EXPECT_EQ((Pairs{{1, ShowA}, {2, ShowA}}), Registered(registry.list));
    EXPECT_EQ(calls, kit::Op<QAL_MemAlloc>().Calls());
}

TEST_P(ShowRegistry, OneModuleMayRegisterSeveralFunctions) {
    EXPECT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(0u, registry.add(1, ShowB));
    EXPECT_EQ((Pairs{{1, ShowA}, {1, ShowB}}), Registered(registry.list));
}

TEST_P(ShowRegistry, ModuleIdsZeroAndAllOnesAreOrdinary) {
    EXPECT_EQ(0u, registry.add(0, ShowA));
    EXPECT_EQ(0u, registry.add(0xFFFFFFFFU, ShowA));
    EXPECT_EQ((Pairs{{0, ShowA}, {0xFFFFFFFFU, ShowA}}), Registered(registry.list));
}

TEST_P(ShowRegistry, ANullFunctionIsRefused) {
    const bool neverUsed = NeverUsed();
    EXPECT_EQ(1u, registry.add(1, nullptr));
    EXPECT_EQ(Pairs{}, Registered(registry.list));
    EXPECT_EQ(neverUsed, NeverUsed());
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc>().Calls());
}

TEST_P(ShowRegistry, NodesAreZeroedBeforeTheyAreFilled) {
    kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
        void *block = kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
        memset(block, 0xEE, size);
        return block;
    });
    ASSERT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(nullptr, registry.list->pstNext->pReserved);
}

TEST_P(ShowRegistry, NodesAreInsertedBehindTheLastOne) {
    ASSERT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(std::make_tuple(registry.list, End(registry.list), registry.list->pstPrev), kit::Op<DLL_Insert>().Last());
    DLL_NODE_S *first = registry.list->pstPrev;
    ASSERT_EQ(0u, registry.add(2, ShowA));
    EXPECT_EQ(std::make_tuple(registry.list, first, registry.list->pstPrev), kit::Op<DLL_Insert>().Last());
}

TEST_P(ShowRegistry, UnregisteringFromAListThatWasNeverUsedLeavesItSoAndGivesTheModuleId) {
    if (!NeverUsed())
        GTEST_SKIP() << "the list of this process was used before";
    EXPECT_EQ(0xABCD0001U, registry.remove(0xABCD0001U, ShowA));
    EXPECT_TRUE(NeverUsed());
    EXPECT_EQ(nullptr, registry.list->pstPrev);
    EXPECT_EQ(0u, kit::Op<DLL_Delete>().Calls());
    EXPECT_EQ(0u, registry.add(1, ShowA)) << "the first use comes later";
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
}

TEST_P(ShowRegistry, UnregisteringWhatIsNotThereChangesNothingAndGivesTheModuleId) {
    registry.init();
    EXPECT_EQ(77u, registry.remove(77, ShowA)) << "empty list";
    ASSERT_EQ(0u, registry.add(1, ShowA));
    ASSERT_EQ(0u, registry.add(2, ShowB));
    EXPECT_EQ(1u, registry.remove(1, ShowB));
    EXPECT_EQ(2u, registry.remove(2, ShowA));
    EXPECT_EQ(3u, registry.remove(3, ShowA));
    EXPECT_EQ(2u, registry.remove(2, nullptr));
    EXPECT_EQ((Pairs{{1, ShowA}, {2, ShowB}}), Registered(registry.list));
    EXPECT_EQ(0u, kit::Op<DLL_Delete>().Calls());
    EXPECT_EQ(0u, kit::Op<QAL_MemFree>().Calls());
}

TEST_P(ShowRegistry, UnregisteringTakesOutFirstMiddleAndLast) {
    for (uint32_t mid = 1; mid <= 5; ++mid)
        ASSERT_EQ(0u, registry.add(mid, ShowA));
    EXPECT_EQ(0u, registry.remove(3, ShowA));
    EXPECT_EQ((Pairs{{1, ShowA}, {2, ShowA}, {4, ShowA}, {5, ShowA}}), Registered(registry.list));
    EXPECT_EQ(0u, registry.remove(1, ShowA));
    EXPECT_EQ((Pairs{{2, ShowA}, {4, ShowA}, {5, ShowA}}), Registered(registry.list));
    EXPECT_EQ(0u, registry.remove(5, ShowA));
    EXPECT_EQ((Pairs{{2, ShowA}, {4, ShowA}}), Registered(registry.list));
}

TEST_P(ShowRegistry, AnEmptiedListCanBeUsedAgain) {
    ASSERT_EQ(0u, registry.add(1, ShowA));
    EXPECT_EQ(0u, registry.remove(1, ShowA));
    EXPECT_EQ(Pairs{}, Registered(registry.list));
    EXPECT_EQ(1u, registry.remove(1, ShowA));
    EXPECT_EQ(0u, registry.add(2, ShowB));
    EXPECT_EQ((Pairs{{2, ShowB}}), Registered(registry.list));
}

TEST_P(ShowRegistry, ANodeIsUnlinkedAndThenReleased) {
    ASSERT_EQ(0u, registry.add(1, ShowA));
    DLL_NODE_S *node = registry.list->pstNext;
    kit::Recorder recorder({"DLL_", "QAL_Mem"});
    EXPECT_EQ(0u, registry.remove(1, ShowA));
    EXPECT_EQ((std::vector<std::string>{"DLL_Delete(ptr, ptr)", "QAL_MemFree(0, ptr)"}), recorder.Calls());
    EXPECT_EQ(std::make_tuple(registry.list, node), kit::Op<DLL_Delete>().Last());
    EXPECT_EQ(static_cast<void *>(node), std::get<1>(kit::Op<QAL_MemFree>().Last()));
}

TEST_P(ShowRegistry, UnregisteringGivesTheResultOfReleasingTheNode) {
    ASSERT_EQ(0u, registry.add(1, ShowA));
    kit::Op<QAL_MemFree>().Does([](uint32_t mid, void *block) {
        kit::Op<QAL_MemFree>().Real(mid, block);
        return 7U;
    });
    EXPECT_EQ(7u, registry.remove(1, ShowA));
    EXPECT_EQ(Pairs{}, Registered(registry.list));
}

TEST_P(ShowRegistry, WithoutMemoryTheListStaysAsItWas) {
    ASSERT_EQ(0u, registry.add(1, ShowA));
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, registry.add(2, ShowB));
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
    EXPECT_EQ(0u, registry.add(2, ShowB));
    EXPECT_EQ((Pairs{{1, ShowA}, {2, ShowB}}), Registered(registry.list));
}

TEST_P(ShowRegistry, SurvivesEveryAllocationFailing) {
    const auto clear = [this] {
        for (const auto &[mid, show] : Registered(registry.list))
            EXPECT_EQ(0u, registry.remove(mid, show));
    };
    const auto scenario = [&] {
        registry.add(1, ShowA);
        registry.add(2, ShowA);
        EXPECT_GE(2u, Registered(registry.list).size());
        clear();
    };
    const auto after = [&] {
        EXPECT_EQ(0u, registry.add(1, ShowA));
        EXPECT_EQ((Pairs{{1, ShowA}}), Registered(registry.list));
        clear();
    };
    EXPECT_GE(kit::SweepAllocations(scenario, after), 4);
}

TEST_P(ShowRegistry, RegistrationsOfTheOtherKindAreNotSeen) {
    const Registry &other = kRegistries[registry.list == kRegistries[0].list ? 1 : 0];
    ASSERT_EQ(0u, other.add(1, ShowA));
    EXPECT_EQ(1u, registry.remove(1, ShowA));
    EXPECT_EQ(Pairs{}, Registered(registry.list));
    ASSERT_EQ(0u, registry.add(1, ShowA));
    ASSERT_EQ(0u, registry.add(2, ShowB));
    EXPECT_EQ((Pairs{{1, ShowA}}), Registered(other.list));
    EXPECT_EQ(0u, other.remove(1, ShowA));
    EXPECT_EQ((Pairs{{1, ShowA}, {2, ShowB}}), Registered(registry.list));
}

INSTANTIATE_TEST_SUITE_P(Both, ShowRegistry, testing::ValuesIn(kRegistries),
                         [](const testing::TestParamInfo<Registry> &row) { return std::string(row.param.name); });

} // namespace
