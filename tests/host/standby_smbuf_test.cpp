// Socket buffers, modules and output of the hot-standby service while no link is open.

#include <cstring>
#include <gtest/gtest.h>
#include <uvelhost/memory.h>
#include <uvelhost/standby.h>
#include <uvelhost/standby_link.h>

namespace {

uint64_t BlocksOf(uint32_t handle) {
    QAL_MEM_STATS_S stats{};
    EXPECT_EQ(0u, QAL_MemGetStats(handle, &stats));
    return stats.ulBlocks;
}

TEST(SocketBuffer, IsOneBlockOfItsSizeOnTheModulesAccount) {
    const uint32_t handle = QAL_ConverMIDTOHandle(0x00990000);
    const uint64_t before = BlocksOf(handle);
    YSB_SMBUF_S *smbuf = YSB_Adapt_Smbuf_Create(0x00990000, 1000);
    ASSERT_NE(nullptr, smbuf);
    EXPECT_EQ(before + 1, BlocksOf(handle));
    auto *data = static_cast<uint8_t *>(YSB_Adapt_Smbuf_M2D(smbuf));
    ASSERT_NE(nullptr, data);
    std::memset(data, 0x5A, 1000);
    EXPECT_EQ(data, YSB_Adapt_Smbuf_M2D(smbuf)) << "it stays where it is";
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(data) % 16);
    YSB_Adapt_Smbuf_Destroy(smbuf);
    EXPECT_EQ(before, BlocksOf(handle));
}

TEST(SocketBuffer, OfNoBytesHasNoData) {
    YSB_SMBUF_S *smbuf = YSB_Adapt_Smbuf_Create(1, 0);
    ASSERT_NE(nullptr, smbuf);
    EXPECT_EQ(nullptr, YSB_Adapt_Smbuf_M2D(smbuf));
    YSB_Adapt_Smbuf_Destroy(smbuf);
}

TEST(SocketBuffer, NullIsIgnoredAndHasNoData) {
    YSB_Adapt_Smbuf_Destroy(nullptr);
    EXPECT_EQ(nullptr, YSB_Adapt_Smbuf_M2D(nullptr));
}

TEST(SocketBuffer, AboveWhatLinksCarryIsRefused) {
    EXPECT_EQ(nullptr, YSB_Adapt_Smbuf_Create(1, 0xFFFFFFFF));
    EXPECT_EQ(nullptr, YSB_Adapt_Smbuf_Create(1, 0xFFFFFFE0));
    EXPECT_EQ(nullptr, YSB_Adapt_Smbuf_Create(1, (64u << 20) + 49));
}

TEST(OutputWithoutALink, FailsAndTakesTheBuffer) {
    const uint32_t handle = QAL_ConverMIDTOHandle(7);
    const uint64_t before = BlocksOf(handle);
    EXPECT_EQ(1u, YSB_Adapt_Output_Packet_Smbuf(7, YSB_Adapt_Smbuf_Create(7, 100), 100));
    EXPECT_EQ(1u, YSB_Adapt_Output_Packet_Smbuf(7, YSB_Adapt_Smbuf_Create(7, 100), 101)) << "beyond the buffer";
    EXPECT_EQ(1u, YSB_Adapt_Output_Packet_ToCtrlCpu(7, YSB_Adapt_Smbuf_Create(7, 100), 100, 3));
    EXPECT_EQ(1u, YSB_Adapt_Output_Packet_Smbuf(7, nullptr, 0));
    EXPECT_EQ(before, BlocksOf(handle));
}

TEST(StateWithoutALink, IsThatOfADeviceWithoutHotStandby) {
    uint32_t active = 9;
    EXPECT_EQ(0u, YSB_Adapt_IsActiveStatus(&active));
    EXPECT_EQ(0u, active);
    EXPECT_EQ(1u, YSB_Adapt_IsActiveStatus(nullptr));
    EXPECT_EQ(0u, YsbAdaptIsRealEnable());
    EXPECT_EQ(0u, YsbAdaptIsBackup());
    EXPECT_EQ(1u, YsbAdaptGetCpuNum());
    EXPECT_EQ(1u, YsbAdaptIsLocalCpuId(0));
    EXPECT_EQ(0u, YsbAdaptIsLocalCpuId(1));
    EXPECT_EQ(0xFFu, YsbAdaptCalcRemoteTpb(0));
    YSB_LINK_STATE_S state;
    YSB_LINK_COUNTERS_S counters;
    EXPECT_EQ(1u, YSB_Link_GetState(&state));
    EXPECT_EQ(1u, YSB_Link_GetCounters(&counters));
    EXPECT_EQ(1u, YSB_Link_BatchDone(1));
    EXPECT_EQ(1u, YSB_Link_StartBatch());
    EXPECT_EQ(1u, YSB_Link_SetRole(YSB_LINK_ROLE_ACTIVE));
    YSB_Link_Close();
}

TEST(Modules, AreKnownByTheSameIdOnEveryDeviceUntilTheTableIsFull) {
    const uint32_t first = YsbAdaptGetModId(0x00010000);
    EXPECT_NE(UVELHOST_NONE, first);
    EXPECT_EQ(first, YsbAdaptGetModId(0x00010000));
    EXPECT_NE(first, YsbAdaptGetModId(0x00020000));
    EXPECT_EQ(UVELHOST_NONE, YsbAdaptGetModId(UVELHOST_NONE));
    uint32_t refused = 0;
    for (uint32_t mid = 1; mid <= 300; ++mid)
        refused += YsbAdaptGetModId(mid) == UVELHOST_NONE ? 1 : 0;
    EXPECT_EQ(300u - 254u, refused) << "256 with the two above";
    EXPECT_EQ(first, YsbAdaptGetModId(0x00010000));
}

TEST(Versions, AreForKnownModulesAndAgreedOnWithAPeer) {
    EXPECT_EQ(1u, YsbAdaptRegisterVersion(0x00070000, 3, 1)) << "unknown";
    const uint32_t module = YsbAdaptGetModId(0x00070000);
    EXPECT_EQ(0u, YsbAdaptRegisterVersion(module, 3, 1));
    uint32_t version = 9;
    EXPECT_EQ(1u, YsbAdaptGetNegoVersion(module, &version)) << "without a peer";
    EXPECT_EQ(9u, version);
    EXPECT_EQ(1u, YsbAdaptGetNegoVersion(module, nullptr));
}

TEST(BatchFinish, TakesEachFunctionOnceAndSixtyFourAtMost) {
    EXPECT_EQ(1u, YsbAdaptRegRecvBatchFinish(nullptr));
    const auto function = [](unsigned n) { return reinterpret_cast<YSB_BATCH_FINISH_FUNC>(uintptr_t{0x1000} + n); };
    for (unsigned n = 0; n < 64; ++n) /* never called: no link is open here */
        EXPECT_EQ(0u, YsbAdaptRegRecvBatchFinish(function(n)));
    EXPECT_EQ(0u, YsbAdaptRegRecvBatchFinish(function(5))) << "there already";
    EXPECT_EQ(1u, YsbAdaptRegRecvBatchFinish(function(64)));
}

TEST(RefusalTexts, AreThereForEveryNumber) {
    for (uint32_t reason = 0; reason < YSB_LINK_REFUSALS + 3; ++reason)
        EXPECT_STRNE("", YSB_Link_RefusalText(reason));
    EXPECT_STREQ("no certificate", YSB_Link_RefusalText(YSB_LINK_REFUSED_NO_CERTIFICATE));
}

} // namespace
