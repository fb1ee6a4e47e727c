#include "kit.h"

#include <algorithm>
#include <uvelcommon_base/btrc_pub.h>
#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_startup.h>

namespace {

template <typename Table, typename Value>
bool AllAre(const Table &table, Value value) {
    return std::all_of(std::begin(table), std::end(table), [&](const auto &element) { return element == value; });
}

/* The tables that are cleared hold nothing. */
void ExpectTablesCleared() {
    for (const KIVO_CLI_TEMPLET_S &entry : g_stKIVOCliTemplet) {
        EXPECT_EQ(nullptr, entry.pTemplet);
        EXPECT_EQ(0u, entry.ulIfTypeFlag);
    }
    EXPECT_TRUE(AllAre(g_stKIVOPubHook, nullptr)) << "hooks installed before are gone";
    EXPECT_TRUE(AllAre(g_szKIVOPdtMacroDefineCfg, 0u));
    EXPECT_TRUE(AllAre(g_stKIVOPdtOxmCfg, 0u));
}

/* Every byte of every table, one behind the other. */
std::string Contents() {
    std::string bytes;
    const auto add = [&](const auto &...tables) {
        (bytes.append(reinterpret_cast<const char *>(&tables), sizeof tables), ...);
    };
    add(g_stKIVOPubHook, g_stBtrcPubApiHook, g_aulKivoCommonSpecs, g_stKIVOPdtOxmCfg, g_stKIVOCliTemplet, g_aulKivoTid,
        g_aulKivoTaskPriority, g_KivoModuleIDs, g_szKIVOPdtMacroDefineCfg, g_aulSRVCOMMON_Specs, g_aulSRVCOMMON_Feature,
        g_stTableIndex, g_ulTotalTableNum);
    return bytes;
}

/* Something other than the default into every table, as far as their setters reach. */
void SetEverything() {
    static int template_ = 0;
    KIVO_SetCliCmdTemplet(1023, &template_);
    KIVO_SetIfTypeFlag(0, 7);
    KIVO_SetPdtMacroDefine(2047, 7);
    KIVO_SetPdtOxmCfgSwitch(255, 7);
    KIVO_SetTID(61, 7);
    KIVO_SetTaskPriority(0, 7);
    KIVO_SetModuleID(74, 7);
    KIVO_SetKivoCommonSpec(6, 7);
    SRVCOMMON_SetSpecs(7, 7);
    SRVCOMMON_SetFeature(0, 1);
    const KIVO_HOOK hook = [] {};
    KIVOShell_SetHookFunc(KIVO_HOOK_IF_IS_L2IF, &hook);
    g_stBtrcPubApiHook[23] = hook;
}

TEST(Startup, TablesAreZeroUntilTheInitialisation) {
    EXPECT_EQ(0u, UVEL_GetKivoTid(0));
    EXPECT_EQ(0u, UVEL_GetKivoTaskPriority(0));
    EXPECT_EQ(0u, KIVO_GetModuleID(74));
    EXPECT_EQ(nullptr, g_stTableIndex);
    EXPECT_EQ(0u, g_ulTotalTableNum);
}

TEST(Startup, GivesEveryTableItsDefault) {
    SetEverything();
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    ExpectTablesCleared();
    EXPECT_TRUE(AllAre(g_aulKivoTid, 0xFFFFFFFFu));
    EXPECT_EQ(85u, UVEL_GetKivoTaskPriority(0));
    EXPECT_TRUE(AllAre(g_KivoModuleIDs, 0xFFFFFFFFu));
    EXPECT_EQ(0xFFFFFFFFu, UVEL_GetKivoTid(61));
}

TEST(Startup, KeepsTheSpecificationsThatWereSetBefore) {
    SetEverything();
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    EXPECT_EQ(7u, KIVO_GetKivoCommonSpec(6));
    EXPECT_EQ(7u, SRVCOMMON_GetSpecs(7));
    EXPECT_EQ(1u, SRVCOMMON_GetFeature(0));
}

TEST(Startup, MakesAnEmptyRegistryOfThirtyIndexPools) {
    kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
        void *block = kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
        std::fill_n(static_cast<uint8_t *>(block), size, uint8_t{0xEE});
        return block;
    });
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    EXPECT_EQ(1u, kit::Op<QAL_MemAlloc>().Calls());
    EXPECT_EQ(960u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
    EXPECT_EQ(30u, g_ulTotalTableNum);
    const auto *bytes = reinterpret_cast<const uint8_t *>(g_stTableIndex);
    EXPECT_TRUE(std::all_of(bytes, bytes + 960, [](uint8_t byte) { return byte == 0; }));

    uint32_t pool = 9;
    EXPECT_EQ(0u, KIVO_InitTableIndex(&pool, 1, 3));
    EXPECT_EQ(0u, pool);
    EXPECT_EQ(30u, g_ulTotalTableNum);
}

TEST(Startup, FillsTheChannelsTypeTables) {
    EXPECT_EQ(0u, CHI_MsgP2C(CHI_BACK_HA, 12)) << "nothing is known yet";
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    EXPECT_EQ(3u, CHI_MsgP2C(CHI_BACK_HA, 12));
    EXPECT_EQ(0xFFFFFFFFu, CHI_MsgP2C(CHI_BACK_HA, 48));
}

TEST(Startup, AllocatesBetweenTheTablesOfTasksAndTheModuleIds) {
    SetEverything();
    KIVO_SetModuleID(74, 0);
    kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
        ExpectTablesCleared();
        EXPECT_TRUE(AllAre(g_aulKivoTid, 0xFFFFFFFFu));
        EXPECT_EQ(85u, UVEL_GetKivoTaskPriority(0));
        EXPECT_TRUE(AllAre(g_KivoModuleIDs, 0u));
        EXPECT_EQ(1u, UVEL_GlobalVarInit()) << "a start that is under way counts";
        return kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
    });
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    EXPECT_EQ(1u, kit::Op<QAL_MemAlloc>().Calls());
    EXPECT_TRUE(AllAre(g_KivoModuleIDs, 0xFFFFFFFFu));
}

TEST(Startup, ASecondCallAnswersOneAndChangesNothing) {
    EXPECT_EQ(0u, UVEL_GlobalVarInit());
    SetEverything();
    const std::string before = Contents();
    EXPECT_EQ(1u, UVEL_GlobalVarInit());
    EXPECT_EQ(before, Contents());
    EXPECT_EQ(7u, UVEL_GetKivoTid(61));
    EXPECT_NE(nullptr, g_stKIVOPubHook[5]);
}

TEST(Startup, WithoutMemoryForTheRegistryIsFatalAndNotTriedAgain) {
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, UVEL_GlobalVarInit());
    EXPECT_EQ(kit::Sources{"src/common/src/smi/kivo_common"}, kit::TakeFatals());
    EXPECT_EQ(nullptr, g_stTableIndex);
    EXPECT_TRUE(AllAre(g_KivoModuleIDs, 0u)) << "nothing of what comes after";
    EXPECT_EQ(0u, CHI_MsgP2C(CHI_BACK_HA, 12));
    EXPECT_EQ(1u, UVEL_GlobalVarInit());
    EXPECT_EQ(kit::Sources{}, kit::TakeFatals());
    EXPECT_EQ(1u, kit::Op<QAL_MemAlloc>().Calls());
}

TEST(Startup, WithoutAMemoryAccountIsFatalToo) {
    kit::Op<QAL_HandleInitialize>().FailsOn(1);
    EXPECT_EQ(1u, UVEL_GlobalVarInit());
    EXPECT_EQ(kit::Sources{"src/common/src/smi/kivo_common"}, kit::TakeFatals());
}

} // namespace
