#include "host_answers.h"

#include <barrier>
#include <thread>
#include <uvelcommon_base/kivo_board_query.h>
#include <uvelcommon_base/kivo_settings.h>

namespace {

/* ---- this board ---- */

using BoardQuery = Named<uint32_t()>;

class SelfBoard : public testing::TestWithParam<BoardQuery> {};

TEST_P(SelfBoard, IsReadEachTimeOrZero) {
    for (const uint32_t board : {0u, 9u, 0x80000001u}) {
        Answers<DEVM_DB_GetSelfBoardId>(board);
        EXPECT_EQ(board, GetParam().call());
    }
    FailsWriting<DEVM_DB_GetSelfBoardId>(9);
    EXPECT_EQ(0u, GetParam().call());
}

INSTANTIATE_TEST_SUITE_P(BothNames, SelfBoard,
                         testing::Values(BoardQuery{"NacUtilGetSelfBoardID", NacUtilGetSelfBoardID},
                                         BoardQuery{"KIVO_Adapt_GetSelfBoardId", KIVO_Adapt_GetSelfBoardId}));

template <auto Read>
void ExpectKept(uint32_t (*query)()) {
    FailsWriting<Read>(55, 2);
    EXPECT_EQ(0u, query()) << "not known yet";
    EXPECT_EQ(0u, query());
    EXPECT_EQ(2u, kit::Op<Read>().Calls()) << "a failure is not kept";
    Answers<Read>(0xFFFFFFFF);
    EXPECT_EQ(0xFFFFFFFFu, query());
    Answers<Read>(7);
    EXPECT_EQ(7u, query()) << "the mark of what was not read is not kept";
    const uint64_t calls = kit::Op<Read>().Calls();
    Answers<Read>(8);
    EXPECT_EQ(7u, query());
    FailsWriting<Read>(55);
    EXPECT_EQ(7u, query());
    EXPECT_EQ(calls, kit::Op<Read>().Calls());
}

TEST(OwnChassis, IsKeptOnceTheHostHasAnswered) {
    ExpectKept<DEVM_DB_GetSelfChassisId>(UVEL_GetSelfChassisId);
}

TEST(OwnSlot, IsKeptOnceTheHostHasAnswered) {
    ExpectKept<DEVM_DB_GetSelfSlotId>(UVEL_GetSelfSlotId);
}

TEST(OwnProcessor, IsKeptOnceTheHostHasAnswered) {
    ExpectKept<DEVM_DB_GetSelfCpuId>(UVEL_GetSelfCpuId);
}

TEST(OwnLocalProcessor, IsKeptOnceTheHostHasAnswered) {
    ExpectKept<DEVM_DB_GetSelfLocalCpuId>(UVEL_GetSelfLocalCpuId);
}

TEST(OwnNumbers, AreKeptApart) {
    Answers<DEVM_DB_GetSelfChassisId>(0);
    Answers<DEVM_DB_GetSelfSlotId>(2);
    Answers<DEVM_DB_GetSelfCpuId>(3);
    Answers<DEVM_DB_GetSelfLocalCpuId>(4);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0u, UVEL_GetSelfChassisId());
        EXPECT_EQ(2u, UVEL_GetSelfSlotId());
        EXPECT_EQ(3u, UVEL_GetSelfCpuId());
        EXPECT_EQ(4u, UVEL_GetSelfLocalCpuId());
    }
    EXPECT_EQ(1u, kit::Op<DEVM_DB_GetSelfChassisId>().Calls()) << "0 is a number like any other";
    EXPECT_EQ(1u, kit::Op<DEVM_DB_GetSelfSlotId>().Calls());
}

/* ---- any board ---- */

void MainCpu(uint32_t present, uint32_t local, uint32_t result = 0) {
    kit::Op<DEVM_DB_GetCpuInfoBySlotID>().Does([=](uint32_t, DEVM_CPU_INFO_S *info) {
        *info = {present, local, 4, 0};
        return result;
    });
}

TEST(MainProcessor, IsFoundByItsNumberOnTheBoard) {
    for (const uint32_t present : {1u, 2u, 0x80000000u}) {
        MainCpu(present, 3);
        Answers<DEVM_DB_LocalCpuId2GlobalCpuId>(19);
        EXPECT_EQ(19u, UVEL_GetMainCpuIdBySlotId(5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<DEVM_DB_GetCpuInfoBySlotID>().Last()));
        EXPECT_EQ(5u, std::get<0>(kit::Op<DEVM_DB_LocalCpuId2GlobalCpuId>().Last()));
        EXPECT_EQ(3u, std::get<1>(kit::Op<DEVM_DB_LocalCpuId2GlobalCpuId>().Last()));
        EXPECT_EQ(3u, UVEL_GetMainLocalCpuIdBySlotId(5));
    }
}

TEST(MainProcessor, IsZeroWithoutABoardOrAnAnswer) {
    Answers<DEVM_DB_LocalCpuId2GlobalCpuId>(19);
    MainCpu(0, 3);
    EXPECT_EQ(0u, UVEL_GetMainCpuIdBySlotId(5));
    EXPECT_EQ(0u, UVEL_GetMainLocalCpuIdBySlotId(5));
    MainCpu(1, 3, 1);
    EXPECT_EQ(0u, UVEL_GetMainCpuIdBySlotId(5));
    EXPECT_EQ(0u, UVEL_GetMainLocalCpuIdBySlotId(5));
    kit::Op<DEVM_DB_GetCpuInfoBySlotID>().Returns(0);
    EXPECT_EQ(0u, UVEL_GetMainCpuIdBySlotId(5)) << "a record that nobody filled";
    EXPECT_EQ(0u, kit::Op<DEVM_DB_LocalCpuId2GlobalCpuId>().Calls());
    MainCpu(1, 3);
    FailsWriting<DEVM_DB_LocalCpuId2GlobalCpuId>(19);
    EXPECT_EQ(0u, UVEL_GetMainCpuIdBySlotId(5));
}

TEST(RealBoard, IsUpForTheStatusOneOnly) {
    for (const uint32_t status : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        Answers<DEVM_DB_GetOnlinStatus>(status);
        EXPECT_EQ(status == 1 ? 1u : 0u, UVEL_IF_RealBoardIsUp(5));
        EXPECT_EQ(5u, std::get<0>(kit::Op<DEVM_DB_GetOnlinStatus>().Last()));
    }
    FailsWriting<DEVM_DB_GetOnlinStatus>(1);
    EXPECT_EQ(0u, UVEL_IF_RealBoardIsUp(5));
}

/* ---- main boards ---- */

TEST(MainBoardRange, AsksForTheHighestFirst) {
    Answers<DEVM_DB_GetMinMpuBoardId>(9);
    Answers<DEVM_DB_GetMaxMpuBoardId>(10);
    kit::Recorder recorder;
    uint32_t lowest = 0;
    uint32_t highest = 0;
    EXPECT_EQ(0u, UVEL_DevGetMpuBoardRange(&lowest, &highest));
    EXPECT_EQ(9u, lowest);
    EXPECT_EQ(10u, highest);
    EXPECT_EQ((std::vector<std::string>{"DEVM_DB_GetMaxMpuBoardId(ptr)", "DEVM_DB_GetMinMpuBoardId(ptr)"}),
              recorder.Calls());
}

TEST(MainBoardRange, GivesTheFirstFailure) {
    kit::Op<DEVM_DB_GetMinMpuBoardId>().Returns(5);
    kit::Op<DEVM_DB_GetMaxMpuBoardId>().Returns(6);
    uint32_t lowest = 77;
    uint32_t highest = 77;
    EXPECT_EQ(6u, UVEL_DevGetMpuBoardRange(&lowest, &highest));
    EXPECT_EQ(0u, kit::Op<DEVM_DB_GetMinMpuBoardId>().Calls());
    Answers<DEVM_DB_GetMaxMpuBoardId>(10);
    EXPECT_EQ(5u, UVEL_DevGetMpuBoardRange(&lowest, &highest));
    EXPECT_EQ(77u, lowest);
    EXPECT_EQ(10u, highest);
}

using AddressQuery = Named<uint32_t(uint32_t *)>;

class BoardIp : public testing::TestWithParam<std::tuple<bool, AddressQuery>> {};

TEST_P(BoardIp, IsThatOfTheMainProcessorOfTheBoardInTheLowHalf) {
    const auto [master, query] = GetParam();
    kit::Op<HA_GetMasterBoardID>().Returns(master ? 0xABCD1234 : 0xFFFFFFFF);
    kit::Op<HA_GetSlaveBoardID>().Returns(master ? 0xFFFFFFFF : 0xABCD1234);
    Answers<DEVM_DB_GetIpBySlotAndCpu>(0x7F000001);
    uint32_t address = 0;
    EXPECT_EQ(0u, query.call(&address));
    EXPECT_EQ(0x7F000001u, address);
    const auto [slot, cpu, out] = kit::Op<DEVM_DB_GetIpBySlotAndCpu>().Last();
    EXPECT_EQ(0x1234u, slot);
    EXPECT_EQ(0u, cpu);
    EXPECT_EQ(&address, out);
    kit::Op<DEVM_DB_GetIpBySlotAndCpu>().Returns(4);
    EXPECT_EQ(4u, query.call(&address));
}

INSTANTIATE_TEST_SUITE_P(
    Master, BoardIp,
    testing::Combine(testing::Values(true),
                     testing::Values(AddressQuery{"UVEL_GetMasterMainBoardIp", UVEL_GetMasterMainBoardIp},
                                     AddressQuery{"UVEL_DevGetMasterMainBoardIp", UVEL_DevGetMasterMainBoardIp})));
INSTANTIATE_TEST_SUITE_P(
    Standby, BoardIp,
    testing::Combine(testing::Values(false),
                     testing::Values(AddressQuery{"UVEL_GetBackUpMainBoardIp", UVEL_GetBackUpMainBoardIp},
                                     AddressQuery{"UVEL_DevGetBackUpMainBoardIp", UVEL_DevGetBackUpMainBoardIp})));

/* ---- roles ---- */

TEST(Role, IsMasterForTheBoardTypeZeroOnly) {
    for (const uint32_t type : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<HA_GetBoardType>().Returns(type);
        EXPECT_EQ(type == 0 ? 1u : 0u, UVEL_IsMasterBoard());
    }
}

TEST(Role, HasAReadyStandbyForTheAnswerZeroOnly) {
    for (const uint32_t answer : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<HA_SlaveIsReady>().Returns(answer);
        EXPECT_EQ(answer == 0 ? 1u : 0u, KIVO_HA_SlaveIsReady());
    }
}

TEST(Role, IsInBatchBackupInStateTwoOnly) {
    for (const uint32_t state : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
        kit::Op<HA_GetState>().Returns(state);
        EXPECT_EQ(state == 2 ? 1u : 0u, KIVO_Adapt_IsBatchBackupStatus());
    }
}

TEST(SelfBoardSlot, IsTheMastersNumberOnTheMaster) {
    kit::Op<HA_GetBoardType>().Returns(0);
    kit::Op<HA_GetMasterBoardID>().Returns(0xABCD0009);
    EXPECT_EQ(9u, Kivo_Adapt_GetSelfBoardSlotId());
    EXPECT_EQ(0u, kit::Op<DEVM_DB_GetSelfBoardId>().Calls());
}

TEST(SelfBoardSlot, IsThisBoardsNumberElsewhere) {
    kit::Op<HA_GetBoardType>().Returns(1);
    kit::Op<HA_GetMasterBoardID>().Returns(9);
    Answers<DEVM_DB_GetSelfBoardId>(0x00010003);
    EXPECT_EQ(0x00010003u, Kivo_Adapt_GetSelfBoardSlotId());
    kit::Op<DEVM_DB_GetSelfBoardId>().Returns(1);
    EXPECT_EQ(0u, Kivo_Adapt_GetSelfBoardSlotId());
}

TEST(UserDetect, IsSupportedWhereTheMasterIsAnotherBoard) {
    Answers<DEVM_DB_GetSelfBoardId>(3);
    kit::Op<HA_GetMasterBoardID>().Returns(0xABCD0009);
    EXPECT_EQ(1u, KIVO_ADP_IsSupportUserDetectBySam());
    kit::Op<HA_GetMasterBoardID>().Returns(0xABCD0003);
    EXPECT_EQ(0u, KIVO_ADP_IsSupportUserDetectBySam());
    EXPECT_EQ(1u, kit::Op<DEVM_DB_GetSelfBoardId>().Calls()) << "this board's number is kept";
    EXPECT_EQ(2u, kit::Op<HA_GetMasterBoardID>().Calls()) << "the master may change";
}

TEST(UserDetect, ComparesTheWholeOfThisBoardsNumber) {
    Answers<DEVM_DB_GetSelfBoardId>(0x00010003);
    kit::Op<HA_GetMasterBoardID>().Returns(3);
    EXPECT_EQ(1u, KIVO_ADP_IsSupportUserDetectBySam());
}

TEST(UserDetect, TakesAnUnknownBoardForNumberZeroAndAsksAgain) {
    FailsWriting<DEVM_DB_GetSelfBoardId>(55);
    kit::Op<HA_GetMasterBoardID>().Returns(0);
    EXPECT_EQ(0u, KIVO_ADP_IsSupportUserDetectBySam());
    kit::Op<HA_GetMasterBoardID>().Returns(55);
    EXPECT_EQ(1u, KIVO_ADP_IsSupportUserDetectBySam()) << "what a failed read wrote does not count";
    kit::Op<HA_GetMasterBoardID>().Returns(3);
    Answers<DEVM_DB_GetSelfBoardId>(3);
    EXPECT_EQ(0u, KIVO_ADP_IsSupportUserDetectBySam());
    EXPECT_EQ(0u, KIVO_ADP_IsSupportUserDetectBySam());
    EXPECT_EQ(3u, kit::Op<DEVM_DB_GetSelfBoardId>().Calls());
}

/* ---- several threads ---- */

/* Four threads ask at once, as nobody has asked before. */
template <auto Read>
void ExpectOneAnswerForAll(uint32_t (*query)(), uint32_t expected) {
    Answers<Read>(7);
    std::barrier start(4);
    uint32_t answers[4] = {};
    std::vector<std::thread> threads;
    for (uint32_t &answer : answers) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            answer = query();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const uint32_t answer : answers)
        EXPECT_EQ(expected, answer);
    const uint64_t reads = kit::Op<Read>().Calls();
    EXPECT_LE(1u, reads);
    EXPECT_GE(4u, reads);
    EXPECT_EQ(expected, query());
    EXPECT_EQ(reads, kit::Op<Read>().Calls()) << "it is known now";
}

TEST(OwnNumbers, MayBeAskedForByManyThreadsAtOnce) {
    ExpectOneAnswerForAll<DEVM_DB_GetSelfSlotId>(UVEL_GetSelfSlotId, 7);
    ExpectOneAnswerForAll<DEVM_DB_GetSelfChassisId>(UVEL_GetSelfChassisId, 7);
    kit::Op<HA_GetMasterBoardID>().Returns(7);
    ExpectOneAnswerForAll<DEVM_DB_GetSelfBoardId>(KIVO_ADP_IsSupportUserDetectBySam, 0);
}

/* ---- roles of services ---- */

TEST(ServiceRole, IsTheHostsWhereSwitchEightIsOne) {
    KIVO_SetPdtOxmCfgSwitch(8, 1);
    kit::Op<HA_GetBoardType>().Returns(0);
    kit::Op<HA_SlaveIsReady>().Returns(0);
    EXPECT_EQ(1u, SRV_IsMasterBoard());
    EXPECT_EQ(0u, SRV_IsSlaveBoard());
    EXPECT_EQ(1u, SRV_IsSlaveReady());
    kit::Op<HA_GetBoardType>().Returns(1);
    kit::Op<HA_SlaveIsReady>().Returns(1);
    EXPECT_EQ(0u, SRV_IsMasterBoard());
    EXPECT_EQ(1u, SRV_IsSlaveBoard());
    EXPECT_EQ(0u, SRV_IsSlaveReady());
}

TEST(ServiceRole, IsMasterWithoutAStandbyForAnyOtherSwitchAndDoesNotAsk) {
    kit::Op<HA_GetBoardType>().Returns(1);
    kit::Op<HA_SlaveIsReady>().Returns(0);
    for (const uint32_t value : {0u, 2u, 255u}) {
        KIVO_SetPdtOxmCfgSwitch(8, value);
        EXPECT_EQ(1u, SRV_IsMasterBoard());
        EXPECT_EQ(0u, SRV_IsSlaveBoard());
        EXPECT_EQ(0u, SRV_IsSlaveReady());
    }
    KIVO_SetPdtOxmCfgSwitch(7, 1);
    KIVO_SetPdtOxmCfgSwitch(9, 1);
    EXPECT_EQ(1u, SRV_IsMasterBoard()) << "switch 8 alone counts";
    EXPECT_EQ(0u, kit::Op<HA_GetBoardType>().Calls());
    EXPECT_EQ(0u, kit::Op<HA_SlaveIsReady>().Calls());
}

} // namespace
