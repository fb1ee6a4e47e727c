#include "host_answers.h"

#include <cstring>
#include <uvelcommon_base/kivo_mbuf.h>
#include <uvelcommon_base/kivo_process_query.h>
#include <uvelcommon_base/kivo_settings.h>

namespace {

TEST(MainNode, IsWhatTheProductLayerSet) {
    EXPECT_EQ(0u, g_uveldMainNodeID) << "at load";
    EXPECT_EQ(0u, KIVO_Adapt_IPC_GetMainNodeID());
    for (const uint32_t node : {5u, 0xFFFFFFFFu, 0u}) {
        g_uveldMainNodeID = node;
        EXPECT_EQ(node, KIVO_Adapt_IPC_GetMainNodeID());
    }
}

TEST(Nodes, OfAModuleAreAskedForWithAllArguments) {
    uint32_t nodes[256] = {};
    uint32_t count = 0;
    kit::Op<CMNGA_QueryNodeId>().Does([](uint32_t, uint32_t, uint32_t, uint32_t *out, uint32_t *number) {
        out[0] = 31;
        *number = 1;
        return 0U;
    });
    EXPECT_EQ(0u, KIVO_Adapt_IPC_GetNodeID(11, 12, 13, nodes, &count));
    EXPECT_EQ(31u, nodes[0]);
    EXPECT_EQ(1u, count);
    EXPECT_EQ(std::make_tuple(11u, 12u, 13u, &nodes[0], &count), kit::Op<CMNGA_QueryNodeId>().Last());
}

TEST(Nodes, FailWithOneWhateverTheHostsFailure) {
    uint32_t nodes[256] = {};
    uint32_t count = 0;
    for (const uint32_t result : {1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<CMNGA_QueryNodeId>().Returns(result);
        EXPECT_EQ(1u, KIVO_Adapt_IPC_GetNodeID(1, 2, 3, nodes, &count));
    }
}

TEST(Nodes, NeedBothPointers) {
    uint32_t value = 0;
    EXPECT_EQ(1u, KIVO_Adapt_IPC_GetNodeID(1, 2, 3, nullptr, &value));
    EXPECT_EQ(1u, KIVO_Adapt_IPC_GetNodeID(1, 2, 3, &value, nullptr));
    EXPECT_EQ(0u, kit::Op<CMNGA_QueryNodeId>().Calls());
}

TEST(ProcessOfModule, IsReadOrFailsWithOne) {
    Answers<CMNGA_QueryCompProcByMid>(99);
    uint32_t process = 0;
    EXPECT_EQ(0u, KIVO_Adapt_GetProcessIdByMid(0xC21E0000, &process));
    EXPECT_EQ(99u, process);
    EXPECT_EQ(0xC21E0000u, std::get<0>(kit::Op<CMNGA_QueryCompProcByMid>().Last()));
    for (const uint32_t result : {1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<CMNGA_QueryCompProcByMid>().Returns(result);
        EXPECT_EQ(1u, KIVO_Adapt_GetProcessIdByMid(1, &process));
    }
    const uint64_t calls = kit::Op<CMNGA_QueryCompProcByMid>().Calls();
    EXPECT_EQ(1u, KIVO_Adapt_GetProcessIdByMid(1, nullptr));
    EXPECT_EQ(calls, kit::Op<CMNGA_QueryCompProcByMid>().Calls());
}

TEST(InstanceName, HoldsBitsTwelveToNineteenInTwoPlaces) {
    const struct {
        uint32_t instance;
        const char *name;
    } ROWS[] = {
        {0x3000, "process  3"},   {0, "process  0"},        {0xFFF, "process  0"},      {0xA000, "process 10"},
        {0xFF000, "process 255"}, {0x100000, "process  0"}, {0xFFF03FFF, "process  3"},
    };
    for (const auto &row : ROWS) {
        char name[32];
        std::memset(name, 'x', sizeof name);
        EXPECT_EQ(0u, KIVO_Adapt_GetInstanceNameByNodeID(7, row.instance, name, sizeof name));
        EXPECT_STREQ(row.name, name);
    }
}

TEST(InstanceName, FitsExactlyOrIsEmpty) {
    char name[12] = "xxxxxxxxxxx";
    EXPECT_EQ(0u, KIVO_Adapt_GetInstanceNameByNodeID(7, 0xFF000, name, 12));
    EXPECT_STREQ("process 255", name);
    std::strcpy(name, "xxxxxxxxxxx");
    EXPECT_EQ(0u, KIVO_Adapt_GetInstanceNameByNodeID(7, 0xFF000, name, 11));
    EXPECT_STREQ("", name);
    std::strcpy(name, "xxxxxxxxxxx");
    EXPECT_EQ(0u, KIVO_Adapt_GetInstanceNameByNodeID(7, 0xFF000, name, 0));
    EXPECT_STREQ("xxxxxxxxxxx", name);
}

TEST(InstanceName, AssertsForANullBuffer) {
    EXPECT_EQ(1u, KIVO_Adapt_GetInstanceNameByNodeID(7, 0x3000, nullptr, 32));
    EXPECT_EQ(kit::Sources{"src/common_adp/src/kivo_pdtadapt"}, kit::TakeAsserts());
}

TEST(InstanceName, HasRoomIn32Bytes) {
    uint32_t length = 0;
    EXPECT_EQ(0u, KIVO_Adapt_GetInstanceNameMaxLen(&length));
    EXPECT_EQ(32u, length);
    EXPECT_EQ(1u, KIVO_Adapt_GetInstanceNameMaxLen(nullptr));
}

TEST(VirtualSystemOfName, IsItsVrfBelowTheLimit) {
    KIVO_SetKivoCommonSpec(0, 64);
    const struct { uint32_t vrf, vsys; } ROWS[] = {{0, 0}, {1, 1}, {63, 63}, {64, 0}, {65, 0}, {0xFFFFFFFF, 0}};
    for (const auto &row : ROWS) {
        Answers<BDS_l3vpnName2VrfIdQueryByName>(row.vrf);
        EXPECT_EQ(row.vsys, KIVO_Adapt_GetVsysIDByIfFullName("blue"));
        EXPECT_STREQ("blue", std::get<0>(kit::Op<BDS_l3vpnName2VrfIdQueryByName>().Last()));
    }
    KIVO_SetKivoCommonSpec(0, 0);
    Answers<BDS_l3vpnName2VrfIdQueryByName>(1);
    EXPECT_EQ(0u, KIVO_Adapt_GetVsysIDByIfFullName("blue")) << "no virtual systems";
}

TEST(VirtualSystemOfName, IsZeroForAnUnknownOne) {
    KIVO_SetKivoCommonSpec(0, 64);
    FailsWriting<BDS_l3vpnName2VrfIdQueryByName>(5);
    EXPECT_EQ(0u, KIVO_Adapt_GetVsysIDByIfFullName("blue"));
}

/* ---- message buffers ---- */

TEST(PacketLengths, AreFieldsOfTheBuffer) {
    MBUF_S buffer = {nullptr, nullptr, 1, 2, 3, 4, 5};
    UVEL_MBUF_SET_TOTAL_DATA_LENGTH(&buffer, 0x80000001);
    EXPECT_EQ(0x80000001u, buffer.ulTotalDataLength);
    EXPECT_EQ(2u, UVEL_MBUF_GET_DATA_LENGTH(&buffer));
    UVEL_MBUF_SET_DATA_LENGTH(&buffer, 0xFFFE);
    EXPECT_EQ(0xFFFEu, buffer.usDataLength);
    EXPECT_EQ(0xFFFEu, UVEL_MBUF_GET_DATA_LENGTH(&buffer));
    EXPECT_EQ(3u, buffer.usReserved);
    EXPECT_EQ(4u, buffer.ulFlags);
    EXPECT_EQ(5u, buffer.ulReserved);
}

TEST(PacketLengths, OfNoPacketAreNone) {
    UVEL_MBUF_SET_TOTAL_DATA_LENGTH(nullptr, 5);
    UVEL_MBUF_SET_DATA_LENGTH(nullptr, 5);
    EXPECT_EQ(0u, UVEL_MBUF_GET_DATA_LENGTH(nullptr));
}

TEST(Layer2Transmit, MarksThePacketAndAnswersOne) {
    MBUF_S buffer = {};
    buffer.ulFlags = 0xFFFFFFF0;
    EXPECT_EQ(1u, UVEL_IF_QosL2BNGTransmit(&buffer));
    EXPECT_EQ(0xFFFFFFF1u, buffer.ulFlags);
    EXPECT_EQ(1u, UVEL_IF_QosL2BNGTransmit(&buffer));
    EXPECT_EQ(0xFFFFFFF1u, buffer.ulFlags);
    EXPECT_EQ(1u, UVEL_IF_QosL2BNGTransmit(nullptr));
    EXPECT_EQ(0u, kit::Op<MBUF_Destroy>().Calls());
}

} // namespace
