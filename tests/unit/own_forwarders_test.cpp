#include "hook_recorder.h"
#include "kit.h"

#include <cstring>
#include <numeric>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_process.h>
#include <uvelcommon_base/kivo_hook_product.h>
#include <uvelcommon_base/kivo_hook_standby.h>

namespace {

const kit::Sources ADAPTFUNC{"src/common/src/smi/kivo_adaptfunc"};

/* Nodes */

uint32_t g_nodeCount;
uint32_t g_nodeResult;
uintptr_t g_leading[3];

uint32_t NodeHook(uintptr_t a1, uintptr_t a2, uintptr_t a3, uint32_t *nodes, uint32_t *count) {
    g_leading[0] = a1;
    g_leading[1] = a2;
    g_leading[2] = a3;
    for (uint32_t i = 0; i < g_nodeCount; ++i)
        nodes[i] = g_nodeCount - i; /* descending */
    *count = g_nodeCount;
    return g_nodeResult;
}

std::vector<uint32_t> NodesAfterCall(uint32_t count, uint32_t result = 0) {
    Install(43, NodeHook);
    g_nodeCount = count;
    g_nodeResult = result;
    std::vector<uint32_t> nodes(300, 0xEEEEEEEE);
    uint32_t reported = 0;
    EXPECT_EQ(result, KIVO_IPC_DBI_GetNodeID(11, 12, 13, nodes.data(), &reported));
    EXPECT_EQ(count, reported);
    EXPECT_EQ(0xEEEEEEEE, nodes[count]);
    nodes.resize(count);
    return nodes;
}

TEST(NodeList, IsOneWithoutAHook) {
    uint32_t count = 5;
    EXPECT_EQ(1u, KIVO_IPC_DBI_GetNodeID(0, 0, 0, nullptr, &count));
    EXPECT_EQ(5u, count);
}

TEST(NodeList, OfOneToTwoHundredAndFiftySixNodesComesSorted) {
    EXPECT_EQ(std::vector<uint32_t>{1}, NodesAfterCall(1));
    for (const uint32_t count : {2u, 3u, 255u, 256u}) {
        std::vector<uint32_t> expected(count);
        std::iota(expected.begin(), expected.end(), 1u);
        EXPECT_EQ(expected, NodesAfterCall(count)) << count;
    }
    EXPECT_EQ(11u, g_leading[0]);
    EXPECT_EQ(12u, g_leading[1]);
    EXPECT_EQ(13u, g_leading[2]);
}

TEST(NodeList, EmptyOrTooLongIsLeftAsTheHookWroteIt) {
    EXPECT_TRUE(NodesAfterCall(0).empty());
    const std::vector<uint32_t> nodes = NodesAfterCall(257);
    EXPECT_EQ(257u, nodes.front());
    EXPECT_EQ(1u, nodes.back());
}

TEST(NodeList, OfAFailingHookIsNotSorted) {
    const std::vector<uint32_t> nodes = NodesAfterCall(3, 9);
    EXPECT_EQ((std::vector<uint32_t>{3, 2, 1}), nodes);
}

TEST(NodeList, WithoutACountIsTheHooksAffair) {
    Install(
        43, +[](uintptr_t, uintptr_t, uintptr_t, uint32_t *, uint32_t *) -> uint32_t { return 0; });
    EXPECT_EQ(0u, KIVO_IPC_DBI_GetNodeID(0, 0, 0, nullptr, nullptr));
}

/* VLAN and ACL look-ups */

TEST(ManagementVlan, OfANullPointerIsRefusedBeforeTheHook) {
    g_called = 0;
    Install(
        44, +[](uint32_t *) -> uint32_t { return static_cast<uint32_t>(++g_called); });
    EXPECT_EQ(1u, KIVO_GetManagementVlan(nullptr));
    EXPECT_EQ(0, g_called);
}

TEST(ManagementVlan, IsZeroWithResultOneWithoutAHook) {
    uint32_t vlan = 123;
    EXPECT_EQ(1u, KIVO_GetManagementVlan(&vlan));
    EXPECT_EQ(0u, vlan);
}

TEST(ManagementVlan, IsTheLowHalfOfTheHooksResult) {
    Install(
        44, +[](uint32_t *vlan) -> uint32_t {
            EXPECT_EQ(0u, *vlan) << "cleared before the hook runs";
            *vlan = 55;
            return 74565;
        });
    uint32_t vlan = 123;
    EXPECT_EQ(0u, KIVO_GetManagementVlan(&vlan));
    EXPECT_EQ(9029u, vlan);
    vlan = 1;
    EXPECT_EQ(0u, KIVO_GetIfIndexForAP(&vlan)) << "the same operation under another name";
    EXPECT_EQ(9029u, vlan);
    EXPECT_EQ(1u, KIVO_GetIfIndexForAP(nullptr));
}

TEST(AclNumber, NeedsANameAPlaceAndAHook) {
    uint32_t number = 7;
    EXPECT_EQ(1u, KIVO_GetAclNumByName("web", &number));
    Install(
        45, +[](const char *, uint32_t *) -> uint32_t { return 3001; });
    EXPECT_EQ(1u, KIVO_GetAclNumByName(nullptr, &number));
    EXPECT_EQ(1u, KIVO_GetAclNumByName("web", nullptr));
    EXPECT_EQ(7u, number);
}

TEST(AclNumber, IsTheHooksResultWhateverItIs) {
    Install(
        45, +[](const char *name, uint32_t *number) -> uint32_t {
            EXPECT_STREQ("web", name);
            *number = 1;
            return 0xFFFFFFFF;
        });
    uint32_t number = 7;
    EXPECT_EQ(0u, KIVO_GetAclNumByName("web", &number));
    EXPECT_EQ(0xFFFFFFFFu, number);
}

/* Encoders */

TEST(Encoders, PassEightWordsAndReportOnlyWhetherThereIsAHook) {
    const struct {
        uint32_t id;
        uint32_t (*forwarder)(KIVO_WORDS);
    } encoders[] = {{63, KIVO_Encode_RegFunc},
                    {68, KIVO_Encode_SetTransResult},
                    {69, KIVO_Encode_SetAsysnResult},
                    {70, KIVO_Encode_SetPreResult}};
    for (const auto &encoder : encoders) {
        SCOPED_TRACE(encoder.id);
        EXPECT_EQ(1u, encoder.forwarder(1, 2, 3, 4, 5, 6, 7, 8));
        g_called = 0;
        g_answer = 99;
        Install(encoder.id, RecordingHook);
        EXPECT_EQ(0u, static_cast<uint32_t>(CallMarked(AnyForwarder(encoder.forwarder))));
        EXPECT_EQ(1, g_called);
        ExpectMarkedSeen();
    }
}

/* Hot standby */

TEST(ActiveStatus, IsInactiveWithoutAHook) {
    uint32_t active = 7;
    EXPECT_EQ(0u, KIVO_YSB_IsActiveStatus(&active));
    EXPECT_EQ(0u, active);
    EXPECT_EQ(0u, KIVO_YSB_IsActiveStatus(nullptr));
}

TEST(ActiveStatus, IsTheHooksAnswer) {
    Install(
        26, +[](uint32_t *active) -> uint32_t {
            if (active != nullptr)
                *active = 1;
            return 17;
        });
    uint32_t active = 7;
    EXPECT_EQ(17u, KIVO_YSB_IsActiveStatus(&active));
    EXPECT_EQ(1u, active);
    EXPECT_EQ(17u, KIVO_YSB_IsActiveStatus(nullptr));
}

uint32_t g_backup;

TEST(IsBackup, IsOneOnlyWhenTheHookSaysOne) {
    EXPECT_EQ(0u, KIVO_YSB_IsBackup());
    Install(
        27, +[]() -> uint32_t { return g_backup; });
    for (const auto &[answer, expected] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 0u}, {0x101u, 0u}, {0xFFFFFFFFu, 0u}}) {
        g_backup = answer;
        EXPECT_EQ(expected, KIVO_YSB_IsBackup()) << answer;
    }
}

void *g_destroyed;

TEST(SmbufDestroy, IgnoresNullAndAnEmptySlot) {
    int buffer = 0;
    KIVO_YSB_Smbuf_Destroy(&buffer);
    g_destroyed = nullptr;
    g_called = 0;
    Install(
        23, +[](void *smbuf) {
            g_destroyed = smbuf;
            ++g_called;
        });
    KIVO_YSB_Smbuf_Destroy(nullptr);
    EXPECT_EQ(0, g_called);
    KIVO_YSB_Smbuf_Destroy(&buffer);
    EXPECT_EQ(1, g_called);
    EXPECT_EQ(&buffer, g_destroyed);
}

/* Single facilities */

TEST(SpuProcessNameMaxLen, AssertsOnNullEvenWithAHook) {
    EXPECT_EQ(1u, KIVO_GetSpuProcessNameMaxLen(nullptr));
    EXPECT_EQ(ADAPTFUNC, kit::TakeAsserts());
    g_called = 0;
    Install(
        29, +[](uint32_t *length) -> uint32_t {
            ++g_called;
            *length = 24;
            return 77;
        });
    EXPECT_EQ(1u, KIVO_GetSpuProcessNameMaxLen(nullptr));
    EXPECT_EQ(ADAPTFUNC, kit::TakeAsserts());
    EXPECT_EQ(0, g_called);
    uint32_t length = 0;
    EXPECT_EQ(77u, KIVO_GetSpuProcessNameMaxLen(&length)) << "the hook's result";
    EXPECT_EQ(24u, length);
}

TEST(SpuProcessNameMaxLen, IsOneWithoutAHook) {
    uint32_t length = 5;
    EXPECT_EQ(1u, KIVO_GetSpuProcessNameMaxLen(&length));
    EXPECT_EQ(5u, length);
}

TEST(OnlyLsw, IsAnsweredByPresenceAndTheHookIsNeverCalled) {
    EXPECT_EQ(0u, KIVO_Is_SupportOnlyLsw());
    g_called = 0;
    Install(
        72, +[]() -> uint32_t {
            ++g_called;
            return 0;
        });
    EXPECT_EQ(1u, KIVO_Is_SupportOnlyLsw());
    EXPECT_EQ(0, g_called);
    Install<void()>(72, nullptr);
    EXPECT_EQ(0u, KIVO_Is_SupportOnlyLsw());
}

TEST(QosL2BngTransmit, DestroysTheBufferWithoutAHook) {
    int mbuf = 0;
    kit::Op<MBUF_Destroy>().Does([](auto...) {});
    EXPECT_EQ(0u, KIVO_IF_QosL2BNGTransmit(&mbuf, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(1u, kit::Op<MBUF_Destroy>().Calls());
    EXPECT_EQ(static_cast<void *>(&mbuf), static_cast<void *>(std::get<0>(kit::Op<MBUF_Destroy>().Last())));
}

TEST(QosL2BngTransmit, HandsTheBufferAndTheOtherSevenWordsToTheHook) {
    g_called = 0;
    g_answer = 8;
    Install(81, RecordingHook);
    EXPECT_EQ(8u, static_cast<uint32_t>(CallMarked(AnyForwarder(KIVO_IF_QosL2BNGTransmit))));
    EXPECT_EQ(1, g_called);
    ExpectMarkedSeen();
    EXPECT_EQ(0u, kit::Op<MBUF_Destroy>().Calls());
}

/* Notices */

int g_pointees[3];
const KIVO_NOTIFY_S NOTICE{1,    0x22222222,     0x33, 0x44444444,     &g_pointees[0], 0x66666666,
                           0x77, &g_pointees[1], 0x99, &g_pointees[2], 0xBBBBBBBB,     0xCCCCCCCC};

std::string Fields(std::initializer_list<uint64_t> fields) {
    std::string text;
    for (const uint64_t field : fields)
        text += std::to_string(field) + " ";
    return text;
}

uint64_t Address(const void *pointer) {
    return reinterpret_cast<uintptr_t>(pointer);
}

std::string g_notice;

uint32_t ConfigurationHook(uint32_t f2, uint8_t f3, uint32_t f4, void *f5, uint32_t f6, uint8_t f7, void *f8,
                           uint32_t f9, void *f10, uint32_t f11, uint32_t f12) {
    g_notice = Fields({f2, f3, f4, Address(f5), f6, f7, Address(f8), f9, Address(f10), f11, f12});
    return 42;
}

const std::string FIELDS_2_TO_12 =
    Fields({0x22222222, 0x33, 0x44444444, Address(&g_pointees[0]), 0x66666666, 0x77, Address(&g_pointees[1]), 0x99,
            Address(&g_pointees[2]), 0xBBBBBBBB, 0xCCCCCCCC});

TEST(WlanNotice, CarriesAllTwelveFieldsInOrder) {
    KIVO_NotifyWlanAttrChange(&NOTICE);
    g_notice.clear();
    const KIVO_NOTIFY_WLAN_HOOK hook = [](uint8_t f1, uint32_t f2, uint8_t f3, uint32_t f4, void *f5, uint32_t f6,
                                          uint8_t f7, void *f8, uint32_t f9, void *f10, uint32_t f11, uint32_t f12) {
        g_notice = Fields({f1, f2, f3, f4, Address(f5), f6, f7, Address(f8), f9, Address(f10), f11, f12});
    };
    Install(83, hook);
    KIVO_NotifyWlanAttrChange(nullptr);
    EXPECT_EQ("", g_notice);
    KIVO_NotifyWlanAttrChange(&NOTICE);
    EXPECT_EQ("1 " + FIELDS_2_TO_12, g_notice);
}

TEST(ConfigurationNotices, CarryFieldsTwoToTwelveAndTheHooksResult) {
    const struct {
        uint32_t id;
        uint32_t (*forwarder)(const KIVO_NOTIFY_S *);
    } notices[] = {{86, KIVO_ProfileChangeNotifyCfg}, {87, KIVO_BranchChangeNotifyCfg}};
    for (const auto &notice : notices) {
        SCOPED_TRACE(notice.id);
        EXPECT_EQ(1u, notice.forwarder(&NOTICE));
        Install(notice.id, ConfigurationHook);
        g_notice.clear();
        EXPECT_EQ(1u, notice.forwarder(nullptr));
        EXPECT_EQ("", g_notice);
        EXPECT_EQ(42u, notice.forwarder(&NOTICE));
        EXPECT_EQ(FIELDS_2_TO_12, g_notice);
        Install<void()>(notice.id, nullptr);
    }
}

/* Functions that stand beside the hooks */

TEST(ConstantAnswers, StayWhatTheyAre) {
    EXPECT_EQ(0u, KIVO_IfSlotSupportWLAN());
    EXPECT_EQ(0u, KIVO_IsConfigSynEnable());
    EXPECT_EQ(1u, KIVO_IsBoardSupportNac());
}

TEST(SlotText, IsTheHostsTextOfTheSlot) {
    kit::Op<IF_GetSlotStrBySlotId>().Does([](uint32_t slot, char *text, uint32_t size) -> uint32_t {
        EXPECT_EQ(32u, size);
        for (uint32_t i = 0; i < size; ++i)
            EXPECT_EQ(0, text[i]) << "the buffer is handed over cleared";
        std::snprintf(text, size, "%u/0", slot);
        return 0;
    });
    char text[8];
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(12, text, sizeof text));
    EXPECT_STREQ("12/0", text);
}

TEST(SlotText, IsEmptyWhenTheHostHasNone) {
    kit::Op<IF_GetSlotStrBySlotId>().Returns(1);
    char text[8] = "before";
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(12, text, sizeof text));
    EXPECT_STREQ("", text);
}

TEST(SlotText, ThatDoesNotFitAsserts) {
    kit::Op<IF_GetSlotStrBySlotId>().Does([](uint32_t, char *text, uint32_t) -> uint32_t {
        std::strcpy(text, "1234");
        return 0;
    });
    char text[8] = "before";
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(1, text, 4));
    EXPECT_EQ(ADAPTFUNC, kit::TakeAsserts());
    EXPECT_STREQ("", text);
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(1, text, 5));
    EXPECT_STREQ("1234", text);
    EXPECT_EQ(0u, KIVO_GetStringByLogicSlotID(1, nullptr, 5));
    EXPECT_EQ(ADAPTFUNC, kit::TakeAsserts());
}

} // namespace
