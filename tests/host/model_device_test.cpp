/* Boards, addresses, VRFs, roles and command-line texts of the model. */
#include "model_fixtures.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <thread>
#include <uvelhost/cli.h>
#include <uvelhost/ha.h>

namespace {

using HostDevice = ModelTest;
using HostAddress = ModelTest;
using HostVrf = ModelTest;
using HostCli = ModelTest;

using Query = uint32_t (*)(uint32_t *);
using SlotQuery = uint32_t (*)(uint32_t, uint32_t *);

void PutBoards(const std::vector<MDL_BOARD_S> &boards, uint32_t self) {
    InBatch([&](MDL_BATCH *batch) {
        MDL_DEVICE_S device;
        MDL_InitDevice(&device);
        device.ulSelfSlot = self;
        device.ulSelfCpu = 1;
        EXPECT_EQ(0u, MDL_PutDevice(batch, &device));
        for (const MDL_BOARD_S &board : boards)
            EXPECT_EQ(0u, MDL_PutBoard(batch, &board));
    });
}

void PutAddr(uint32_t if_index, uint32_t addr, uint32_t length, uint32_t main, uint32_t flag = IP_FLAG_CONFIGURED) {
    InBatch([&](MDL_BATCH *batch) {
        const MDL_ADDR4_S record = {if_index, addr, length, main, flag};
        EXPECT_EQ(0u, MDL_PutAddr4(batch, &record));
    });
}

void PutVrf(uint32_t index, const char *name, uint32_t ipv4 = 1, uint32_t ipv6 = 1) {
    InBatch([&](MDL_BATCH *batch) {
        MDL_VRF_S vrf = {index, ipv4, ipv6, 0, {}};
        std::strcpy(vrf.szName, name);
        EXPECT_EQ(0u, MDL_PutVrf(batch, &vrf));
    });
}

} // namespace

/* ---- device */

TEST_F(HostDevice, WhatIsNotKnownYetIsAFailure) {
    uint32_t value = UNTOUCHED;
    for (Query query :
         {DEVM_DB_GetSelfBoardId, DEVM_DB_GetSelfChassisId, DEVM_DB_GetSelfSlotId, DEVM_DB_GetSelfCpuId,
          DEVM_DB_GetSelfLocalCpuId, DEVM_DB_GetSelfBoardIp, DEVM_DB_GetMinMpuBoardId, DEVM_DB_GetMaxMpuBoardId}) {
        EXPECT_NE(0u, query(&value));
        EXPECT_NE(0u, query(nullptr));
    }
    char name[4] = "old";
    uint8_t mac[6];
    EXPECT_NE(0u, DEV_GetSystemName(name, sizeof name));
    EXPECT_NE(0u, DEVM_DB_GetSysMac(mac));
    EXPECT_EQ(0u, DEV_SupportOnlyLsw());
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_STREQ("old", name);
}

TEST_F(HostDevice, ThisBoardKnowsItself) {
    MDL_BOARD_S board = Board(5, MDL_BOARD_MAIN, 2);
    board.ulChassis = 2;
    PutBoards({board}, 5);
    const std::pair<Query, uint32_t> rows[] = {{DEVM_DB_GetSelfBoardId, 5},    {DEVM_DB_GetSelfChassisId, 2},
                                               {DEVM_DB_GetSelfSlotId, 5},     {DEVM_DB_GetSelfCpuId, 81},
                                               {DEVM_DB_GetSelfLocalCpuId, 1}, {DEVM_DB_GetSelfBoardIp, 0x0A000005},
                                               {DEVM_DB_GetMinMpuBoardId, 5},  {DEVM_DB_GetMaxMpuBoardId, 5}};
    for (const auto &[query, expected] : rows) {
        uint32_t value = UNTOUCHED;
        EXPECT_EQ(0u, query(&value));
        EXPECT_EQ(expected, value);
        EXPECT_NE(0u, query(nullptr));
    }
    EXPECT_EQ(5u, HA_GetMasterBoardID() & 0xFFFF);
}

TEST_F(HostDevice, AnEmptySlotIsThereAndWithoutAProcessor) {
    MDL_BOARD_S empty = Board(3, MDL_BOARD_LINE);
    empty.ulPresent = empty.ulRegistered = empty.ulOnline = 0;
    PutBoards({empty, Board(4, MDL_BOARD_LINE, 4)}, 4);
    uint32_t value = UNTOUCHED;
    for (SlotQuery query : {DEVM_DB_GetBoardPresent, DEVM_DB_GetBoardRegisterStatus, DEVM_DB_GetOnlinStatus}) {
        EXPECT_EQ(0u, query(3, &value));
        EXPECT_EQ(0u, value);
        EXPECT_EQ(0u, query(4, &value));
        EXPECT_EQ(1u, value);
        EXPECT_NE(0u, query(5, &value));
        EXPECT_NE(0u, query(4, nullptr));
    }
    DEVM_CPU_INFO_S info = {9, 9, 9, 9};
    EXPECT_EQ(0u, DEVM_DB_GetCpuInfoBySlotID(3, &info));
    EXPECT_EQ(0u, info.ulPresent);
    EXPECT_EQ(0u, DEVM_DB_GetCpuInfoBySlotID(4, &info));
    EXPECT_NE(0u, info.ulPresent);
    EXPECT_EQ(4u, info.ulCpuCount);
    EXPECT_NE(0u, DEVM_DB_GetCpuInfoBySlotID(5, &info));
    EXPECT_NE(0u, DEVM_DB_GetCpuInfoBySlotID(4, nullptr));
}

TEST_F(HostDevice, ProcessorsHaveGlobalNumbersAndAddresses) {
    MDL_BOARD_S board = Board(4, MDL_BOARD_LINE, 2);
    board.aulAddr[1] = 0x0A000104;
    PutBoards({board}, 4);
    uint32_t value = UNTOUCHED;
    EXPECT_NE(0u, DEVM_DB_LocalCpuId2GlobalCpuId(4, 2, &value));
    EXPECT_NE(0u, DEVM_DB_LocalCpuId2GlobalCpuId(5, 0, &value));
    EXPECT_NE(0u, DEVM_DB_GetIpBySlotAndCpu(4, 2, &value));
    EXPECT_NE(0u, DEVM_DB_GetIpBySlotAndCpu(4, MDL_MAX_CPUS, &value));
    EXPECT_NE(0u, DEVM_DB_GetIpBySlotAndCpu(5, 0, &value));
    EXPECT_NE(0u, DEVM_DB_GetIpBySlotAndCpu(4, 0, nullptr));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, DEVM_DB_LocalCpuId2GlobalCpuId(4, 1, &value));
    EXPECT_EQ(65u, value);
    EXPECT_EQ(0u, DEVM_DB_GetIpBySlotAndCpu(4, 1, &value));
    EXPECT_EQ(0x0A000104u, value);
}

TEST_F(HostDevice, MainBoardsThatAreThereAreListedAscending) {
    MDL_BOARD_S absent = Board(9, MDL_BOARD_MAIN), silent = Board(2, MDL_BOARD_MAIN);
    absent.ulPresent = 0;
    silent.aulAddr[0] = 0;
    PutBoards({Board(7, MDL_BOARD_MAIN), absent, silent, Board(3, MDL_BOARD_LINE)}, 7);
    uint32_t slots[3] = {UNTOUCHED, UNTOUCHED, UNTOUCHED}, addresses[3] = {UNTOUCHED, UNTOUCHED, UNTOUCHED}, count = 1;
    EXPECT_NE(0u, DEVM_DB_GetMpuAllSlot(slots, &count));
    EXPECT_NE(0u, DEVM_GetMpuAllSlotAndIp(slots, addresses, &count));
    EXPECT_EQ(1u, count);
    count = 3;
    EXPECT_NE(0u, DEVM_DB_GetMpuAllSlot(nullptr, &count));
    EXPECT_NE(0u, DEVM_DB_GetMpuAllSlot(slots, nullptr));
    EXPECT_NE(0u, DEVM_GetMpuAllSlotAndIp(slots, nullptr, &count));
    EXPECT_EQ(UNTOUCHED, slots[0]);
    EXPECT_EQ(0u, DEVM_GetMpuAllSlotAndIp(slots, addresses, &count));
    EXPECT_EQ(2u, count);
    EXPECT_EQ((std::array{2u, 7u, UNTOUCHED}), (std::array{slots[0], slots[1], slots[2]}));
    EXPECT_EQ((std::array{0u, 0x0A000007u, UNTOUCHED}), (std::array{addresses[0], addresses[1], addresses[2]}));
    uint32_t lowest = 0, highest = 0;
    EXPECT_EQ(0u, DEVM_DB_GetMinMpuBoardId(&lowest));
    EXPECT_EQ(0u, DEVM_DB_GetMaxMpuBoardId(&highest));
    EXPECT_EQ((std::array{2u, 9u}), (std::array{lowest, highest}));
}

TEST_F(HostDevice, SlotsHaveNumbersInTheirChassis) {
    MDL_BOARD_S here = Board(1, MDL_BOARD_MAIN), there = Board(17, MDL_BOARD_LINE), other = Board(18, MDL_BOARD_LINE);
    here.ulChassis = 1;
    here.ulLocalSlot = 3;
    there.ulChassis = 2;
    there.ulLocalSlot = 3;
    other.ulChassis = 2;
    other.ulLocalSlot = 4;
    PutBoards({here, there, other}, 1);
    uint32_t value = UNTOUCHED;
    EXPECT_NE(0u, DEVM_DB_GetGlobalSlotIdByLocalSlotId(4, &value));
    DRV_GetPhySlot(99, &value);
    DRV_GetPhySlot(1, nullptr);
    for (const char *text : {"1", "1/4", "1/3/1", "/3", "1/", "", "1/ 3", "+1/3", "99999999999/3", "x"})
        EXPECT_NE(0u, BDS_IfnetGetSlotIdBySlotStr(text, &value)) << text;
    EXPECT_NE(0u, BDS_IfnetGetSlotIdBySlotStr(nullptr, &value));
    EXPECT_NE(0u, BDS_IfnetGetSlotIdBySlotStr("1/3", nullptr));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, DEVM_DB_GetGlobalSlotIdByLocalSlotId(3, &value));
    EXPECT_EQ(1u, value);
    EXPECT_EQ(0u, DEVM_DB_GetLocalSlotIdByGlobalSlotId(17, &value));
    EXPECT_EQ(3u, value);
    EXPECT_EQ(0u, BDS_IfnetGetSlotIdBySlotStr("2/4", &value));
    EXPECT_EQ(18u, value);
    DRV_GetPhySlot(18, &value);
    EXPECT_EQ(118u, value);
    char text[8] = "old";
    EXPECT_NE(0u, IF_GetSlotStrBySlotId(99, text, sizeof text));
    EXPECT_NE(0u, IF_GetSlotStrBySlotId(18, text, 3));
    EXPECT_STREQ("old", text);
    EXPECT_EQ(0u, IF_GetSlotStrBySlotId(18, text, 4));
    EXPECT_STREQ("2/4", text);
}

TEST_F(HostDevice, InOneChassisANumberNamesASlot) {
    PutBoards({Board(1, MDL_BOARD_MAIN)}, 1);
    uint32_t slot = UNTOUCHED;
    for (const char *text : {"", "1/1", "-1", " 1", "1 ", "0x1", "4294967295", "4294967296"})
        EXPECT_NE(0u, BDS_IfnetGetSlotIdBySlotStr(text, &slot)) << text;
    EXPECT_EQ(UNTOUCHED, slot);
    EXPECT_EQ(0u, BDS_IfnetGetSlotIdBySlotStr("12", &slot));
    EXPECT_EQ(12u, slot);
    char text[8];
    EXPECT_EQ(0u, IF_GetSlotStrBySlotId(12, text, 3));
    EXPECT_STREQ("12", text);
    EXPECT_NE(0u, IF_GetSlotStrBySlotId(UVELHOST_NONE, text, sizeof text));
}

TEST_F(HostDevice, TheSystemsNameIsCutToFit) {
    InBatch([](MDL_BATCH *batch) {
        MDL_DEVICE_S device;
        MDL_InitDevice(&device);
        device.ulHasName = device.ulHasMac = device.ulOnlyLsw = 1;
        std::strcpy(device.szName, "edge-1");
        device.aucMac[5] = 9;
        EXPECT_EQ(0u, MDL_PutDevice(batch, &device));
    });
    char name[8] = "";
    uint8_t mac[6];
    EXPECT_EQ(0u, DEV_GetSystemName(name, 5));
    EXPECT_STREQ("edge", name);
    EXPECT_EQ(0u, DEV_GetSystemName(name, 1));
    EXPECT_STREQ("", name);
    EXPECT_NE(0u, DEV_GetSystemName(name, 0));
    EXPECT_NE(0u, DEV_GetSystemName(nullptr, 8));
    EXPECT_EQ(0u, DEVM_DB_GetSysMac(mac));
    EXPECT_EQ(9, mac[5]);
    EXPECT_NE(0u, DEVM_DB_GetSysMac(nullptr));
    EXPECT_EQ(1u, DEV_SupportOnlyLsw());
}

/* ---- addresses */

TEST_F(HostAddress, TheFirstIsTheMainOneElseTheOldest) {
    PutIf(Interface(7));
    PutAddr(7, 0x0A000009, 24, 0);
    PutAddr(7, 0x0A000001, 25, 0, IP_FLAG_OBTAINED);
    const auto first = [] {
        uint32_t net = 0;
        EXPECT_EQ(0u, BDS_IPGetFirstIpByIfIndex(7, &net));
        return ntohl(net);
    };
    EXPECT_EQ(0x0A000009u, first());
    PutAddr(7, 0x0A000001, 25, 1, IP_FLAG_OBTAINED);
    EXPECT_EQ(0x0A000001u, first());
    uint32_t addr = 0, value = 0;
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(7, &addr, &value));
    EXPECT_EQ((std::array{0x0A000001u, 25u}), (std::array{addr, value}));
    EXPECT_EQ(0u, IP_GetMask(7, &value));
    EXPECT_EQ(0xFFFFFF80u, value);
    EXPECT_EQ(0u, BDS_IPIFGetThisIfIpAddr(7, &addr));
    EXPECT_EQ(0x0A000001u, addr);
    EXPECT_EQ(0u, BDS_IPGetIpFlagByIfIndex(7, &value));
    EXPECT_EQ(IP_FLAG_OBTAINED, value);
    PutAddr(7, 0x0A000009, 0, 1);
    EXPECT_EQ(0x0A000009u, first());
    EXPECT_EQ(0u, IP_GetMask(7, &value));
    EXPECT_EQ(0u, value);
}

TEST_F(HostAddress, AnInterfaceWithoutOneHasNone) {
    PutIf(Interface(7));
    PutAddr(8, 0x0A000001, 24, 1); /* of no interface yet */
    uint32_t value = UNTOUCHED, other = UNTOUCHED;
    for (uint32_t if_index : {7u, 8u, 0u}) {
        for (SlotQuery query : {BDS_IPGetFirstIpByIfIndex, BDS_IPIFGetThisIfIpAddr, IP_GetMask})
            EXPECT_NE(0u, query(if_index, &value));
        EXPECT_NE(0u, BDS_IPGetMainIpByIfIndex(if_index, &value, &other));
    }
    EXPECT_NE(0u, BDS_IPGetIpFlagByIfIndex(8, &value));
    EXPECT_EQ(UNTOUCHED, value);
    EXPECT_EQ(0u, BDS_IPGetIpFlagByIfIndex(7, &value));
    EXPECT_EQ(IP_FLAG_NONE, value);
    PutIf(Interface(8));
    EXPECT_NE(0u, BDS_IPGetMainIpByIfIndex(8, &value, nullptr));
    EXPECT_NE(0u, BDS_IPGetMainIpByIfIndex(8, nullptr, &value));
    EXPECT_EQ(0u, BDS_IPGetMainIpByIfIndex(8, &value, &other));
}

TEST_F(HostAddress, AVirtualRouterIsMasterByItsOwnMacOnItsInterface) {
    InBatch([](MDL_BATCH *batch) {
        const MDL_VRRP_S master = {7, 0x0A0000FE, 1, {0, 0, 0x5E, 0, 1, 1}, {}};
        const MDL_VRRP_S backup = {7, 0x0A0000FD, 0, {0, 0, 0x5E, 0, 1, 2}, {}};
        EXPECT_EQ(0u, MDL_PutVrrp(batch, &master));
        EXPECT_EQ(0u, MDL_PutVrrp(batch, &backup));
    });
    uint8_t mac[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(0u, VRRP4_VrrpIsVIp(7, 0x0A000001, mac));
    EXPECT_EQ(0u, VRRP4_VrrpIsVIp(8, 0x0A0000FE, mac));
    EXPECT_EQ(9, mac[0]);
    EXPECT_EQ(1u, VRRP4_VrrpIsVIp(7, 0x0A0000FE, mac));
    EXPECT_EQ(1u, VRRP_IsIfMasterByVMac(7, mac));
    EXPECT_EQ(0u, VRRP_IsIfMasterByVMac(8, mac));
    EXPECT_EQ(1u, VRRP4_VrrpIsVIp(7, 0x0A0000FD, mac));
    EXPECT_EQ(0u, VRRP_IsIfMasterByVMac(7, mac));
    EXPECT_EQ(0u, VRRP_IsIfMasterByVMac(7, nullptr));
}

TEST_F(HostAddress, ARouteIsAddedToAnInterfaceThatIsThere) {
    PutIf(Interface(7));
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_ADD, 0, 0x0A000001, 32, 7, 0));
    EXPECT_NE(0u, RM_SetUnr4Rt(RM_UNR_ADD, 0, 0x0A000001, 32, 8, 0));
    EXPECT_NE(0u, RM_SetUnr4Rt(RM_UNR_ADD, 0, 0x0A000001, 33, 7, 0));
    EXPECT_NE(0u, RM_SetUnr4Rt(2, 0, 0x0A000001, 32, 7, 0));
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_EQ(0u, RM_SetUnr4Rt(RM_UNR_DELETE, 0, 0x0A000001, 32, 7, 0));
}

TEST_F(HostAddress, AMaskIsContiguousOrNot) {
    for (uint32_t mask : {0u, 0x80000000u, 0xFFFFFF00u, 0xFFFFFFFFu})
        EXPECT_EQ(1u, IP_NetmaskIsContinue(mask));
    for (uint32_t mask : {1u, 0x7FFFFFFFu, 0xFF00FF00u, 0xFFFFFF01u})
        EXPECT_EQ(0u, IP_NetmaskIsContinue(mask));
}

TEST_F(HostAddress, DataWithItsChecksumSumsToAllOnes) {
    const uint8_t header[] = {0x45, 0x00, 0x00, 0x73, 0x00, 0x00, 0x40, 0x00, 0x40, 0x11,
                              0x00, 0x00, 0xC0, 0xA8, 0x00, 0x01, 0xC0, 0xA8, 0x00, 0xC7};
    EXPECT_EQ(0xB861, ntohs(INET_Cksum(header, sizeof header)));
    const uint8_t odd[] = {1, 2, 3};
    EXPECT_EQ(0xFBFD, ntohs(INET_Cksum(odd, 3)));
    EXPECT_EQ(0xFFFF, INET_Cksum(odd, 0));
    EXPECT_EQ(0xFFFF, INET_Cksum(nullptr, 3));
}

/* ---- VRFs */

TEST_F(HostVrf, NamesAndIndicesAreThoseOfTheFamily) {
    PutVrf(5, "blue", 1, 0);
    PutVrf(6, "red", 0, 1);
    uint32_t index = UNTOUCHED;
    char name[VRF_NAME_SIZE] = "old";
    EXPECT_NE(0u, BDS_l3vpnName2VrfIdQueryByName("red", &index));
    EXPECT_NE(0u, L3VPN6_VRFMGM_VrfIdQueryByName("blue", &index));
    for (auto query : {BDS_l3vpnName2VrfIdQueryByName, L3VPN6_VRFMGM_VrfIdQueryByName}) {
        EXPECT_NE(0u, query(nullptr, &index));
        EXPECT_NE(0u, query("", &index));
        EXPECT_NE(0u, query("nobody", &index));
        EXPECT_NE(0u, query(std::string(100, 'x').c_str(), &index));
    }
    EXPECT_NE(0u, BDS_l3vpnName2VrfIdQueryByName("blue", nullptr));
    EXPECT_NE(0u, L3VPN6_VRFMGM_VrfNameQueryById(5, name));
    EXPECT_NE(0u, L3VPN6_VRFMGM_VrfNameQueryById(7, name));
    EXPECT_NE(0u, L3VPN6_VRFMGM_VrfNameQueryById(6, nullptr));
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_STREQ("old", name);
    EXPECT_EQ(0u, BDS_l3vpnName2VrfIdQueryByName("blue", &index));
    EXPECT_EQ(5u, index);
    EXPECT_EQ(0u, L3VPN6_VRFMGM_VrfIdQueryByName("red", &index));
    EXPECT_EQ(6u, index);
    EXPECT_EQ(0u, L3VPN6_VRFMGM_VrfNameQueryById(6, name));
    EXPECT_STREQ("red", name);
}

TEST_F(HostVrf, AScanVisitsWhatWasThereAtItsBeginningAndIsStillThere) {
    for (auto [index, name] : {std::pair{9u, "nine"}, {0u, "public"}, {5u, "five"}})
        PutVrf(index, name);
    uint32_t index = UNTOUCHED;
    char name[VRF_NAME_SIZE];
    EXPECT_EQ(0u, L3VPN_GetFirstVrfIdAndVrfName(&index, name));
    EXPECT_EQ(0u, index);
    EXPECT_STREQ("public", name);
    PutVrf(7, "later");
    InBatch([](MDL_BATCH *batch) { MDL_RemoveVrf(batch, 5); });
    std::thread([] {
        uint32_t other;
        char text[VRF_NAME_SIZE];
        EXPECT_NE(0u, L3VPN_GetNextVrfIdAndVrfName(&other, text));
        L3VPN_ScanVrfIdAndVrfNameFinish();
    }).join();
    EXPECT_EQ(0u, L3VPN_GetNextVrfIdAndVrfName(&index, name));
    EXPECT_EQ(9u, index);
    EXPECT_NE(0u, L3VPN_GetNextVrfIdAndVrfName(&index, name));
    EXPECT_EQ(9u, index);
    EXPECT_STREQ("nine", name);
    L3VPN_ScanVrfIdAndVrfNameFinish();
    EXPECT_NE(0u, L3VPN_GetNextVrfIdAndVrfName(&index, name));
}

TEST_F(HostVrf, WithoutVrfsAScanFailsAtOnce) {
    uint32_t index = UNTOUCHED;
    char name[VRF_NAME_SIZE] = "old";
    EXPECT_NE(0u, L3VPN_GetFirstVrfIdAndVrfName(&index, name));
    L3VPN_ScanVrfIdAndVrfNameFinish();
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_STREQ("old", name);
}

TEST_F(HostVrf, ATaskWorksForTheDeviceUntilItIsGivenASystem) {
    std::thread([] {
        EXPECT_EQ(0u, CFG_GetVsysID());
        MDL_SetThreadVsys(5);
        EXPECT_EQ(5u, CFG_GetVsysID());
    }).join();
    EXPECT_EQ(0u, CFG_GetVsysID());
}

/* ---- roles and command line */

TEST_F(HostDevice, WithoutHighAvailabilityABoardIsTheMasterAndAlone) {
    EXPECT_EQ(HA_BOARD_MASTER, HA_GetBoardType());
    EXPECT_EQ(0xFFFFu, HA_GetSlaveBoardID() & 0xFFFF);
    EXPECT_EQ(HA_STATE_ALONE, HA_GetState());
    EXPECT_EQ(1u, HA_SlaveIsReady());
    MDL_HA_S ha;
    MDL_GetHa(&ha);
    EXPECT_EQ(UVELHOST_NONE, ha.ulSlaveBoard);
    const MDL_HA_S alone = ha;
    ha = {HA_BOARD_SLAVE, 3, 5, HA_STATE_BATCH, 1};
    EXPECT_EQ(0u, MDL_SetHa(&ha));
    EXPECT_EQ(HA_BOARD_SLAVE, HA_GetBoardType());
    EXPECT_EQ(3u, HA_GetMasterBoardID() & 0xFFFF);
    EXPECT_EQ(5u, HA_GetSlaveBoardID() & 0xFFFF);
    EXPECT_EQ(HA_STATE_BATCH, HA_GetState());
    EXPECT_EQ(0u, HA_SlaveIsReady());
    ha.ulState = HA_STATE_REALTIME + 1;
    EXPECT_NE(0u, MDL_SetHa(&ha));
    EXPECT_NE(0u, MDL_SetHa(nullptr));
    EXPECT_EQ(HA_STATE_BATCH, HA_GetState());
    EXPECT_EQ(0u, MDL_SetHa(&alone));
}

TEST_F(HostCli, ATextThatIsThereIsReplaced) {
    static const CLI_TEXT_S first[] = {{"show", "eins"}, {"clear", "zwei"}}, second[] = {{"show", "drei"}};
    static const CLI_TEXT_S wrong[] = {{"show", nullptr}};
    EXPECT_EQ(0u, CLI_RegistChinese(77, first, 2));
    EXPECT_STREQ("eins", MDL_GetChinese(77, "show"));
    EXPECT_EQ(0u, CLI_RegistChinese(77, second, 1));
    EXPECT_STREQ("drei", MDL_GetChinese(77, "show"));
    EXPECT_STREQ("zwei", MDL_GetChinese(77, "clear"));
    EXPECT_EQ(nullptr, MDL_GetChinese(78, "show"));
    EXPECT_EQ(nullptr, MDL_GetChinese(77, nullptr));
    EXPECT_NE(0u, CLI_RegistChinese(77, nullptr, 1));
    EXPECT_NE(0u, CLI_RegistChinese(77, wrong, 1));
}

TEST_F(HostCli, ServiceProcessorsAreNamedBySlotAndNumber) {
    char help[64] = "old";
    EXPECT_NE(0u, SPU_CpuHelp(help, sizeof help));
    PutBoards({Board(1, MDL_BOARD_MAIN, 2), Board(3, MDL_BOARD_SERVICE, 2), Board(5, MDL_BOARD_SERVICE, 4)}, 1);
    EXPECT_NE(0u, SPU_CpuHelp(help, 8));
    EXPECT_NE(0u, SPU_CpuHelp(nullptr, 64));
    EXPECT_STREQ("old", help);
    EXPECT_EQ(0u, SPU_CpuHelp(help, sizeof help));
    EXPECT_STREQ("slot/cpu: <3-5>/<0-3>", help);
    uint32_t slot = UNTOUCHED, cpu = UNTOUCHED;
    for (const char *text : {"", "3", "3/", "/1", "3/2", "4/0", "1/0", "3/1x", " 3/1", "3/1/1", "-3/1"})
        EXPECT_NE(0u, SPU_CpuCheck(text, &slot, &cpu)) << text;
    EXPECT_NE(0u, SPU_CpuCheck(nullptr, &slot, &cpu));
    EXPECT_NE(0u, SPU_CpuCheck("3/1", nullptr, &cpu));
    EXPECT_NE(0u, SPU_CpuCheck("3/1", &slot, nullptr));
    EXPECT_EQ(UNTOUCHED, slot);
    EXPECT_EQ(0u, SPU_CpuCheck("5/3", &slot, &cpu));
    EXPECT_EQ((std::array{5u, 3u}), (std::array{slot, cpu}));
}
