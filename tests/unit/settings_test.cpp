#include <kit.h>

#include "host/sanitizers.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <uvelcommon_base/kivo_settings.h>

namespace {

/* One table of words with its setter and getter; setters without a result are given the result 0. */
struct Table {
    const char *name;
    uint32_t *words;
    uint32_t entries;
    uint32_t (*set)(uint32_t index, uint32_t value);
    uint32_t (*get)(uint32_t index);
    uint32_t setOutOfRange;
    uint32_t getOutOfRange;
    uint32_t valueMask;
};

template <void (*Setter)(uint32_t, uint32_t)>
uint32_t Silent(uint32_t index, uint32_t value) {
    Setter(index, value);
    return 0;
}

const Table kTables[] = {
    {"CommonSpecs", g_aulKivoCommonSpecs, 7, Silent<KIVO_SetKivoCommonSpec>, KIVO_GetKivoCommonSpec, 0, 0, 0xFFFFFFFF},
    {"Switches", g_stKIVOPdtOxmCfg, 256, Silent<KIVO_SetPdtOxmCfgSwitch>, KIVO_GetPdtOxmCfgSwitch, 0, 0, 0xFF},
    {"TaskIds", g_aulKivoTid, 62, KIVO_SetTID, UVEL_GetKivoTid, 1, 0xFFFFFFFF, 0xFFFFFFFF},
    {"TaskPriority", g_aulKivoTaskPriority, 1, KIVO_SetTaskPriority, UVEL_GetKivoTaskPriority, 1, 0xFFFFFFFF,
     0xFFFFFFFF},
    {"ModuleIds", g_KivoModuleIDs, 75, Silent<KIVO_SetModuleID>, KIVO_GetModuleID, 0, 0xFFFFFFFF, 0xFFFFFFFF},
    {"Macros", g_szKIVOPdtMacroDefineCfg, 2048, Silent<KIVO_SetPdtMacroDefine>, UVEL_GetPdtMacroDefineCfg, 0,
     0xFFFFFFFF, 0xFFFFFFFF},
    {"ServiceSpecs", g_aulSRVCOMMON_Specs, 8, Silent<SRVCOMMON_SetSpecs>, SRVCOMMON_GetSpecs, 0, 0, 0xFFFFFFFF},
};

std::vector<uint32_t> Contents(const Table &table) {
    return {table.words, table.words + table.entries};
}

/* What the tables held before any code of this program ran. */
const std::map<std::string, std::vector<uint32_t>> kAtLoad = [] {
    std::map<std::string, std::vector<uint32_t>> contents;
    for (const Table &table : kTables)
        contents[table.name] = Contents(table);
    return contents;
}();

const bool kTempletsZeroAtLoad =
    std::all_of(std::begin(g_stKIVOCliTemplet), std::end(g_stKIVOCliTemplet),
                [](const KIVO_CLI_TEMPLET_S &entry) { return entry.pTemplet == nullptr && entry.ulIfTypeFlag == 0; });
const uint32_t kFeaturesAtLoad = g_aulSRVCOMMON_Feature[0];

class SettingsTable : public testing::TestWithParam<Table> {
  protected:
    SettingsTable() : before_(Contents(GetParam())) {}
    ~SettingsTable() override { std::copy(before_.begin(), before_.end(), GetParam().words); }

    /* A value of its own for every entry, none of them 0. */
    static uint32_t ValueOf(uint32_t index) { return 0xA5000001U + index * 0x10001U; }

  private:
    std::vector<uint32_t> before_;
};

TEST_P(SettingsTable, HoldsZerosAtLoad) {
    const Table &table = GetParam();
    EXPECT_EQ(std::vector<uint32_t>(table.entries, 0), kAtLoad.at(table.name));
}

TEST_P(SettingsTable, EveryEntryGivesBackWhatWasSet) {
    const Table &table = GetParam();
    for (uint32_t i = 0; i < table.entries; ++i)
        EXPECT_EQ(0u, table.set(i, ValueOf(i))) << i;
    for (uint32_t i = 0; i < table.entries; ++i) {
        EXPECT_EQ(ValueOf(i) & table.valueMask, table.get(i)) << i;
        EXPECT_EQ(ValueOf(i) & table.valueMask, table.words[i]) << i;
    }
}

TEST_P(SettingsTable, SettingTheLastEntryTouchesNoOther) {
    const Table &table = GetParam();
    std::vector<uint32_t> expected = Contents(table);
    expected.back() = 0x77;
    EXPECT_EQ(0u, table.set(table.entries - 1, 0x77));
    EXPECT_EQ(expected, Contents(table));
}

TEST_P(SettingsTable, SettingBehindTheLastEntryChangesNothing) {
    const Table &table = GetParam();
    const std::vector<uint32_t> expected = Contents(table);
    for (const uint32_t index : {table.entries, table.entries + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(table.setOutOfRange, table.set(index, 0x77)) << index;
    EXPECT_EQ(expected, Contents(table));
}

TEST_P(SettingsTable, AskingBehindTheLastEntryGivesTheTablesOwnAnswer) {
    const Table &table = GetParam();
    std::fill_n(table.words, table.entries, 0x55);
    for (const uint32_t index : {table.entries, table.entries + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(table.getOutOfRange, table.get(index)) << index;
}

TEST_P(SettingsTable, ASecondValueReplacesTheFirst) {
    const Table &table = GetParam();
    table.set(0, 0x11);
    table.set(0, 0x22);
    EXPECT_EQ(0x22u, table.get(0));
    table.set(0, 0);
    EXPECT_EQ(0u, table.get(0));
}

TEST_P(SettingsTable, ChangesOfTheExportedObjectAreSeen) {
    const Table &table = GetParam();
    table.words[table.entries - 1] = 0x66;
    EXPECT_EQ(0x66u, table.get(table.entries - 1));
}

INSTANTIATE_TEST_SUITE_P(All, SettingsTable, testing::ValuesIn(kTables),
                         [](const testing::TestParamInfo<Table> &row) { return std::string(row.param.name); });

class Settings : public testing::Test {
  protected:
    Settings() {
        std::copy(std::begin(g_stKIVOCliTemplet), std::end(g_stKIVOCliTemplet), templets_.begin());
        std::copy(std::begin(g_stKIVOPdtOxmCfg), std::end(g_stKIVOPdtOxmCfg), switches_.begin());
    }
    ~Settings() override {
        std::copy(templets_.begin(), templets_.end(), g_stKIVOCliTemplet);
        std::copy(switches_.begin(), switches_.end(), g_stKIVOPdtOxmCfg);
        g_aulSRVCOMMON_Feature[0] = features_;
    }

    bool TempletsUnchanged() const {
        return std::equal(templets_.begin(), templets_.end(), g_stKIVOCliTemplet,
                          [](const KIVO_CLI_TEMPLET_S &a, const KIVO_CLI_TEMPLET_S &b) {
                              return a.pTemplet == b.pTemplet && a.ulIfTypeFlag == b.ulIfTypeFlag;
                          });
    }

  private:
    std::vector<KIVO_CLI_TEMPLET_S> templets_ = std::vector<KIVO_CLI_TEMPLET_S>(1024);
    std::vector<uint32_t> switches_ = std::vector<uint32_t>(256);
    uint32_t features_ = g_aulSRVCOMMON_Feature[0];
};

TEST_F(Settings, ASwitchKeepsTheLowEightBits) {
    KIVO_SetPdtOxmCfgSwitch(3, 0x1FF);
    EXPECT_EQ(255u, g_stKIVOPdtOxmCfg[3]);
    EXPECT_EQ(255u, KIVO_GetPdtOxmCfgSwitch(3));
    KIVO_SetPdtOxmCfgSwitch(3, 0xFFFFFF00U);
    EXPECT_EQ(0u, KIVO_GetPdtOxmCfgSwitch(3));
    KIVO_SetPdtOxmCfgSwitch(255, 0xDEADBE01U);
    EXPECT_EQ(1u, KIVO_GetPdtOxmCfgSwitch(255));
}

TEST_F(Settings, CommandTempletsAreEmptyAtLoad) {
    EXPECT_TRUE(kTempletsZeroAtLoad);
}

TEST_F(Settings, ACommandTempletIsGivenBack) {
    int first = 0;
    int last = 0;
    KIVO_SetCliCmdTemplet(0, &first);
    KIVO_SetCliCmdTemplet(1023, &last);
    EXPECT_EQ(&first, UVEL_GetCliCmdTemplet(0));
    EXPECT_EQ(&last, UVEL_GetCliCmdTemplet(1023));
    EXPECT_EQ(nullptr, UVEL_GetCliCmdTemplet(1022));
}

TEST_F(Settings, TheIndexOfACommandTempletIsTheCallersDuty) {
    if (UNDER_SANITIZER)
        GTEST_SKIP() << "a caller's mistake, which the sanitizer reports";
    char *volatile table = reinterpret_cast<char *>(g_stKIVOCliTemplet); /* so that compilers do not warn */
    char *const behind = table + 16384;
    int templet = 0;
    const void *const marked = &templet;
    void *before = nullptr;
    std::memcpy(&before, behind, sizeof before);
    std::memcpy(behind, &marked, sizeof marked);
    const void *const found = UVEL_GetCliCmdTemplet(1024);
    std::memcpy(behind, &before, sizeof before);
    EXPECT_EQ(marked, found);
}

TEST_F(Settings, ACommandTempletCanBeTakenAway) {
    int templet = 0;
    KIVO_SetCliCmdTemplet(5, &templet);
    KIVO_SetCliCmdTemplet(5, nullptr);
    EXPECT_EQ(nullptr, UVEL_GetCliCmdTemplet(5));
}

TEST_F(Settings, TempletAndFlagOfACommandAreSetApart) {
    int templet = 0;
    KIVO_SetIfTypeFlag(9, 0x80000001U);
    KIVO_SetCliCmdTemplet(9, &templet);
    EXPECT_EQ(0x80000001U, g_stKIVOCliTemplet[9].ulIfTypeFlag);
    KIVO_SetIfTypeFlag(9, 2);
    EXPECT_EQ(2u, g_stKIVOCliTemplet[9].ulIfTypeFlag);
    EXPECT_EQ(&templet, UVEL_GetCliCmdTemplet(9));
}

TEST_F(Settings, TheLastCommandHasAFlag) {
    KIVO_SetIfTypeFlag(1023, 77);
    EXPECT_EQ(77u, g_stKIVOCliTemplet[1023].ulIfTypeFlag);
    EXPECT_EQ(0u, g_stKIVOCliTemplet[1022].ulIfTypeFlag);
}

TEST_F(Settings, TempletsAndFlagsBehindTheLastCommandAreIgnored) {
    int templet = 0;
    for (const uint32_t index : {1024U, 1025U, 0x10000000U, 0x80000000U, 0xFFFFFFFFU}) {
        KIVO_SetCliCmdTemplet(index, &templet);
        KIVO_SetIfTypeFlag(index, 1);
    }
    EXPECT_TRUE(TempletsUnchanged());
}

TEST_F(Settings, FeaturesAreOffAtLoad) {
    EXPECT_EQ(0u, kFeaturesAtLoad);
}

TEST_F(Settings, FeatureZeroIsSwitchedOnAndOff) {
    SRVCOMMON_SetFeature(0, 0x100);
    EXPECT_EQ(1u, SRVCOMMON_GetFeature(0));
    EXPECT_EQ(1u, g_aulSRVCOMMON_Feature[0]);
    SRVCOMMON_SetFeature(0, 0);
    EXPECT_EQ(0u, SRVCOMMON_GetFeature(0));
}

TEST_F(Settings, OtherFeaturesCannotBeSet) {
    g_aulSRVCOMMON_Feature[0] = 0xFFFF0000U;
    for (const uint32_t feature : {1U, 16U, 31U, 32U, 64U, 0xFFFFFFFFU}) {
        SRVCOMMON_SetFeature(feature, 1);
        SRVCOMMON_SetFeature(feature, 0);
    }
    SRVCOMMON_SetFeature(1, 1);
    EXPECT_EQ(0xFFFF0000U, g_aulSRVCOMMON_Feature[0]);
}

TEST_F(Settings, FeatureZeroLeavesTheOthersAlone) {
    g_aulSRVCOMMON_Feature[0] = 0x80000002U;
    SRVCOMMON_SetFeature(0, 1);
    EXPECT_EQ(0x80000003U, g_aulSRVCOMMON_Feature[0]);
    SRVCOMMON_SetFeature(0, 0);
    EXPECT_EQ(0x80000002U, g_aulSRVCOMMON_Feature[0]);
}

TEST_F(Settings, AllThirtyTwoFeaturesCanBeAskedFor) {
    for (uint32_t bit = 0; bit < 32; ++bit) {
        g_aulSRVCOMMON_Feature[0] = 1U << bit;
        for (uint32_t feature = 0; feature < 32; ++feature)
            EXPECT_EQ(feature == bit ? 1u : 0u, SRVCOMMON_GetFeature(feature)) << bit << " " << feature;
    }
}

TEST_F(Settings, FeaturesAboveThirtyOneAreOff) {
    g_aulSRVCOMMON_Feature[0] = 0xFFFFFFFFU;
    for (const uint32_t feature : {32U, 33U, 63U, 64U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(0u, SRVCOMMON_GetFeature(feature)) << feature;
}

TEST_F(Settings, ThisIsNoDebugVersion) {
    EXPECT_EQ(0u, UVEL_IsDebugVersion());
}

} // namespace
