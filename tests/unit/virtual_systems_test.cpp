// Virtual systems: notices, their replay at start-up, and the maps of tasks.

#include "event_trap.h"

#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_vsys.h>

namespace {

class VirtualSystems : public testing::Test {
  protected:
    VirtualSystems() {
        KIVO_SetPdtOxmCfgSwitch(55, 1);
        KIVO_SetKivoCommonSpec(0, 16);
        trap.dataSize = 36;
    }

    uint32_t Notice(uint32_t kind, uint16_t id) { return KIVO_VsysNotifyCallBack(kind, &id); }

    /* A host with these VRFs. */
    void Vrfs(std::vector<std::pair<uint32_t, std::string>> list) {
        vrfs = std::move(list);
        auto step = [this](uint32_t *index, char *name) {
            if (next >= vrfs.size())
                return 1U;
            *index = vrfs[next].first;
            std::strcpy(name, vrfs[next].second.c_str());
            ++next;
            return 0U;
        };
        kit::Op<L3VPN_GetFirstVrfIdAndVrfName>().Does([this, step](uint32_t *index, char *name) {
            next = 0;
            return step(index, name);
        });
        kit::Op<L3VPN_GetNextVrfIdAndVrfName>().Does(step);
        kit::Op<L3VPN_ScanVrfIdAndVrfNameFinish>().Does([] {});
    }

    EventTrap trap;
    std::vector<std::pair<uint32_t, std::string>> vrfs;
    std::size_t next = 0;
};

TEST_F(VirtualSystems, AreToldOnProductsWithSeveralOnly) {
    Vrfs({{0, "public"}});
    for (const uint32_t value : {0u, 2u, 255u, 256u}) {
        KIVO_SetPdtOxmCfgSwitch(55, value);
        EXPECT_EQ(0u, Notice(1, 5)) << value;
        EXPECT_EQ(0u, Notice(1, 16)) << value;
        EXPECT_EQ(0u, KIVO_VsysNotifyCallBack(2, nullptr));
        EXPECT_EQ(0u, KIVO_VsysRecoverInit()) << value;
    }
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
    EXPECT_EQ(0u, kit::Op<L3VPN_GetFirstVrfIdAndVrfName>().Calls());
    EXPECT_EQ(0u, kit::Op<L3VPN_ScanVrfIdAndVrfNameFinish>().Calls());
}

TEST_F(VirtualSystems, AreQueuedWhenTheyComeAndGo) {
    EXPECT_EQ(0u, Notice(1, 0));
    EXPECT_EQ(0u, Notice(2, 15));
    EXPECT_EQ((std::vector<RaisedEvent>{{QUEUE, 1101, 0xFFFFFFFF, "0000"}, {QUEUE, 1102, 0xFFFFFFFF, "0F00"}}),
              trap.Take());
}

TEST_F(VirtualSystems, BeyondTheLimitAreRefused) {
    EXPECT_EQ(1u, Notice(1, 16));
    EXPECT_EQ(1u, Notice(2, 0xFFFF));
    EXPECT_EQ(1u, Notice(3, 16)) << "also for an unknown kind";
    KIVO_SetKivoCommonSpec(0, 0);
    EXPECT_EQ(1u, Notice(1, 0));
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
    KIVO_SetKivoCommonSpec(0, 0x10000);
    EXPECT_EQ(0u, Notice(1, 0xFFFF));
    EXPECT_EQ(1u, trap.Take().size());
}

TEST_F(VirtualSystems, OfOtherKindsOfNoticeAreIgnored) {
    for (const uint32_t kind : {0u, 3u, 0xFFFFFFFFu})
        EXPECT_EQ(0u, Notice(kind, 5));
    EXPECT_EQ(0u, KIVO_VsysNotifyCallBack(1, nullptr));
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
}

TEST_F(VirtualSystems, ThatExistAreReplayedWithTheirNames) {
    Vrfs({{0, "public"}, {17, "beyond the limit"}, {5, "tenant"}});
    kit::Recorder recorder({"L3VPN", "QAL_TaskRunDelay"});
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ((std::vector<RaisedEvent>{
                  {NOW, 1101, 0, "00000000 7075626C 69630000 00000000 00000000 00000000 00000000 00000000 00000000"},
                  {NOW, 1101, 0, "05000000 74656E61 6E740074 6865206C 696D6974 00000000 00000000 00000000 00000000"}}),
              trap.Take())
        << "the record is cleared before the first name only";

    std::vector<std::string> scan;
    uint32_t walks = 0; /* of the two notifications, which give way as well */
    for (const std::string &call : recorder.Calls()) {
        if (call.starts_with("L3VPN"))
            scan.push_back(call);
        else
            walks += call == "QAL_TaskRunDelay(200, 20)" ? 1 : 0;
    }
    EXPECT_EQ(
        (std::vector<std::string>{"L3VPN_GetFirstVrfIdAndVrfName(ptr, ptr)", "L3VPN_GetNextVrfIdAndVrfName(ptr, ptr)",
                                  "L3VPN_GetNextVrfIdAndVrfName(ptr, ptr)", "L3VPN_GetNextVrfIdAndVrfName(ptr, ptr)",
                                  "L3VPN_ScanVrfIdAndVrfNameFinish()"}),
        scan);
    const uint64_t before = kit::Op<QAL_TaskRunDelay>().Calls();
    EXPECT_EQ(0u, UVEL_EventCallBackNotify(1101, 0, nullptr));
    const uint64_t ofOneWalk = kit::Op<QAL_TaskRunDelay>().Calls() - before;
    EXPECT_EQ(3 + 2 * ofOneWalk, walks) << "three pauses, also before the one that is left out";
}

TEST_F(VirtualSystems, AreReplayedBelowTheLimitByTheirWholeNumber) {
    trap.dataSize = 4;
    Vrfs({{0x10005, "a"}, {5, "b"}, {16, "c"}, {15, "d"}});
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1101, 0, "05000000"}, {NOW, 1101, 0, "0F000000"}}), trap.Take());
    KIVO_SetKivoCommonSpec(0, 0x20000);
    Vrfs({{0x10001, "e"}});
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ((std::vector<RaisedEvent>{{NOW, 1101, 0, "01000100"}}), trap.Take());
}

TEST_F(VirtualSystems, AreReplayedAfterAPauseEach) {
    Vrfs({{1, "a"}});
    kit::Recorder recorder({"L3VPN", "QAL_TaskRunDelay", "HA_GetBoardType"});
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    const std::vector<std::string> calls = recorder.Calls();
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ("L3VPN_GetFirstVrfIdAndVrfName(ptr, ptr)", calls[0]);
    EXPECT_EQ("QAL_TaskRunDelay(200, 20)", calls[1]);
    EXPECT_EQ("HA_GetBoardType()", calls[2]) << "the notification begins";
}

TEST_F(VirtualSystems, AreReplayedWhateverTheCallbacksAnswer) {
    Vrfs({{1, "a"}, {2, "b"}});
    trap.result = 3;
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ(2u, trap.Take().size());
}

TEST_F(VirtualSystems, NeedAScanThatIsFinishedEvenIfItDidNotBegin) {
    Vrfs({});
    kit::Recorder recorder;
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ(
        (std::vector<std::string>{"L3VPN_GetFirstVrfIdAndVrfName(ptr, ptr)", "L3VPN_ScanVrfIdAndVrfNameFinish()"}),
        recorder.Calls());
    EXPECT_EQ(std::vector<RaisedEvent>{}, trap.Take());
}

TEST_F(VirtualSystems, OfTheLongestNameFillTheRecord) {
    Vrfs({{1, "0123456789012345678901234567890"}});
    EXPECT_EQ(0u, KIVO_VsysRecoverInit());
    EXPECT_EQ((std::vector<RaisedEvent>{
                  {NOW, 1101, 0, "01000000 30313233 34353637 38393031 32333435 36373839 30313233 34353637 38393000"}}),
              trap.Take());
}

/* One entry of the maps, byte by byte: name, zeros, id. */
bool EntryIs(const KIVO_TASK_VSYS_S &entry, const std::string &name) {
    char expected[36] = {};
    name.copy(expected, 32);
    return std::memcmp(&entry, expected, sizeof expected) == 0;
}

TEST(TaskMaps, NameTheTasksInTheirRows) {
    static_assert(sizeof g_stTaskVsysidMap == 2088);
    EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[0], "co0 "));
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[1 + i], "VT" + std::to_string(i) + " ")) << i;
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[24 + i], "CMP" + std::to_string(i))) << i;
        EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[34 + i], "CEP" + std::to_string(i))) << i;
    }
    const std::pair<int, const char *> single[] = {{17, "IPSV"}, {18, "LDPC"}, {20, "SCEP"}, {22, "PKIM"},
                                                   {23, "CMP"},  {44, "CFM "}, {45, "FW"},   {51, "WC0 "},
                                                   {52, "NLOG"}, {54, "DNS"},  {55, "LDAP"}, {57, "TICK"}};
    for (const auto &[row, name] : single)
        EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[row], name)) << name;
}

TEST(TaskMaps, NameFurtherTasksWithFourCharacters) {
    for (const int row : {19, 21, 46, 47, 48, 49, 50, 53, 56}) {
        const std::string name = g_stTaskVsysidMap[row].szTask;
        EXPECT_EQ(4u, name.size()) << row;
        EXPECT_TRUE(EntryIs(g_stTaskVsysidMap[row], name)) << row;
    }
    for (const KIVO_TASK_VSYS_S &a : g_stTaskVsysidMap) {
        for (const KIVO_TASK_VSYS_S &b : g_stTaskVsysidMap)
            EXPECT_TRUE(&a == &b || std::strcmp(a.szTask, b.szTask) != 0) << a.szTask << " stands twice";
    }
}

TEST(TaskMaps, ForTasksLearntLaterAreEmptyAndWritable) {
    static_assert(sizeof g_stDynTaskVsysidMap == 1800);
    for (KIVO_TASK_VSYS_S &entry : g_stDynTaskVsysidMap) {
        EXPECT_TRUE(EntryIs(entry, ""));
        std::memset(&entry, 0xFF, sizeof entry);
    }
    g_stTaskVsysidMap[57].ulVsysId = 3;
    EXPECT_EQ(3u, g_stTaskVsysidMap[57].ulVsysId);
}

} // namespace
