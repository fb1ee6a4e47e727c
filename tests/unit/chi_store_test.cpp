#include "kit.h"
#include "smbuf_fake.h"

#include <uvelcommon_base/kivo_chi_reassembly.h>

namespace {

const kit::Sources CHI{"src/common/src/smi/kivo_chi"};
constexpr uint32_t HSB = 1;
constexpr uint32_t YSB = 2;
constexpr uint32_t MID = 0x00770000;

std::vector<std::string> g_reports;

void Report(uint32_t back, uint32_t reason, uint32_t fragment) {
    g_reports.push_back(std::to_string(back) + "/" + std::to_string(reason) + "/" + std::to_string(fragment));
}

using Reports = std::vector<std::string>;

class Store : public testing::Test {
  protected:
    Store() {
        g_reports.clear();
        EXPECT_EQ(0u, CHI_InitMsgRsmCtl(&control, Report, MID));
    }
    ~Store() override {
        while (control.stList.ulCount != 0)
            CHI_DestroyMsgForRsm(YSB, &control, reinterpret_cast<CHI_RSM_MSG_S *>(control.stList.pstNext));
        LITE_HASH_Destroy(control.pstHash);
        EXPECT_EQ(0, SmbufFake::live) << "socket buffers lost";
    }

    /* A record with a message buffer for `total` bytes, linked by age as an owner does. */
    CHI_RSM_MSG_S *Add(uint32_t key, uint32_t id, uint32_t total) {
        CHI_RSM_MSG_S record{};
        record.ulKey = key;
        record.ulMsgId = id;
        record.ulTotal = total;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &record.pBuffer, total));
        CHI_RSM_MSG_S *node = CHI_AddMsgRsmHash(YSB, &control, &record);
        EXPECT_NE(nullptr, node);
        if (node != nullptr)
            DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
        return node;
    }

    uint32_t AddFragment(CHI_RSM_MSG_S *record, uint32_t id, uint16_t number, const std::string &payload) {
        void *fragment = nullptr;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &fragment, static_cast<uint32_t>(payload.size())));
        uint8_t *bytes = static_cast<FakeSmbuf *>(fragment)->data;
        std::memcpy(bytes, &id, 4);
        std::memcpy(bytes + 44, &number, 2);
        std::memcpy(bytes + 48, payload.data(), payload.size());
        complete = &complete;
        const uint32_t result = CHI_AddFrag2Msg(YSB, &control, fragment, bytes + 48,
                                                static_cast<uint32_t>(payload.size()), &complete, bytes, record);
        CBUF_Free(YSB, fragment); /* the store leaves it to the caller */
        return result;
    }

    SmbufFake fake;
    CHI_RSM_CTL_S control{};
    void *complete = nullptr;
};

TEST_F(Store, StartsEmptyWithAHashTableOfItsOwn) {
    EXPECT_EQ(MID, control.ulMid);
    EXPECT_EQ(reinterpret_cast<DLL_NODE_S *>(&control.stList), control.stList.pstNext);
    EXPECT_EQ(reinterpret_cast<DLL_NODE_S *>(&control.stList), control.stList.pstPrev);
    EXPECT_EQ(0u, control.stList.ulCount);
    EXPECT_EQ(QAL_ConverMIDTOHandle(MID), std::get<5>(kit::Op<LITE_HASH_CreateWithListCurr>().Last()));
    EXPECT_EQ(0xFFFFFFFCu, std::get<0>(kit::Op<LITE_HASH_CreateWithListCurr>().Last()));
    EXPECT_EQ(56u, std::get<1>(kit::Op<LITE_HASH_CreateWithListCurr>().Last()));
    EXPECT_EQ(128u, std::get<2>(kit::Op<LITE_HASH_CreateWithListCurr>().Last()));
}

TEST(StoreCreation, FailsForNullAndWithoutAHashTable) {
    EXPECT_EQ(1u, CHI_InitMsgRsmCtl(nullptr, nullptr, MID));
    CHI_RSM_CTL_S control{};
    kit::Op<LITE_HASH_CreateWithListCurr>().FailsOn(1);
    EXPECT_EQ(1u, CHI_InitMsgRsmCtl(&control, nullptr, MID));
}

TEST(StoreDirectory, HoldsOneControlPerBackType) {
    CHI_RSM_CTL_S control{};
    for (uint32_t index = 0; index < 4; ++index) {
        EXPECT_EQ(nullptr, g_pstCMMsgReassemCtl[index]);
        EXPECT_EQ(0u, CHI_CM_SetMsgRsmCtl(index, &control));
        EXPECT_EQ(&control, g_pstCMMsgReassemCtl[index]);
        EXPECT_EQ(0u, CHI_CM_SetMsgRsmCtl(index, nullptr));
        EXPECT_EQ(nullptr, g_pstCMMsgReassemCtl[index]);
    }
    EXPECT_EQ(1u, CHI_CM_SetMsgRsmCtl(4, &control));
    EXPECT_EQ(1u, CHI_CM_SetMsgRsmCtl(0xFFFFFFFF, &control));
}

TEST(StoreKeys, HashToTheirLowSevenBitsAndCompareWhole) {
    CHI_RSM_MSG_S a{};
    CHI_RSM_MSG_S b{};
    a.ulKey = 0x12345685;
    b.ulKey = 0x05;
    EXPECT_EQ(5u, CHI_MsgRsmHashKey(&a));
    EXPECT_EQ(5u, CHI_MsgRsmHashKey(&b));
    EXPECT_EQ(0xFFFFFFFFu, CHI_MsgRsmHashKey(nullptr));
    EXPECT_EQ(0u, CHI_MsgRsmHashCompareKey(&a, &b));
    EXPECT_EQ(1u, CHI_MsgRsmHashCompareKey(&a, &a));
    EXPECT_EQ(0u, CHI_MsgRsmHashCompareKey(nullptr, &b));
    EXPECT_EQ(0u, CHI_MsgRsmHashCompareKey(&a, nullptr));
}

TEST_F(Store, FindsRecordsByTheirWholeKey) {
    CHI_RSM_MSG_S *first = Add(0x85, 1, 4);
    CHI_RSM_MSG_S *second = Add(0x05, 2, 4);
    EXPECT_NE(first, second);
    CHI_RSM_MSG_S key{};
    key.ulKey = 0x05;
    EXPECT_EQ(second, CHI_FindRsmHashNode(&control, &key));
    key.ulKey = 0x85;
    EXPECT_EQ(first, CHI_FindRsmHashNode(&control, &key));
    key.ulKey = 0x105;
    EXPECT_EQ(nullptr, CHI_FindRsmHashNode(&control, &key));
    EXPECT_EQ(nullptr, CHI_FindRsmHashNode(nullptr, &key));
    EXPECT_EQ(nullptr, CHI_FindRsmHashNode(&control, nullptr));
}

TEST_F(Store, KeepsTheRecordOfAKeyThatIsThereAlready) {
    CHI_RSM_MSG_S *first = Add(9, 1, 4);
    CHI_RSM_MSG_S again{};
    again.ulKey = 9;
    again.ulMsgId = 2;
    EXPECT_EQ(nullptr, CHI_AddMsgRsmHash(YSB, &control, &again));
    EXPECT_EQ(1u, first->ulMsgId);
    EXPECT_EQ(Reports{}, g_reports);
    EXPECT_EQ(nullptr, CHI_AddMsgRsmHash(YSB, nullptr, &again));
    EXPECT_EQ(nullptr, CHI_AddMsgRsmHash(YSB, &control, nullptr));
}

TEST_F(Store, ReportsWhenThereIsNoMemoryForARecord) {
    CHI_RSM_MSG_S record{};
    kit::Op<LITE_HASH_NewData>().FailsOn(1);
    EXPECT_EQ(nullptr, CHI_AddMsgRsmHash(YSB, &control, &record));
    EXPECT_EQ(Reports{"2/6/0"}, g_reports);
}

TEST_F(Store, ReportsAndFreesARecordThatCannotBeInserted) {
    CHI_RSM_MSG_S record{};
    kit::Op<LITE_HASH_AddNode>().FailsOn(1);
    EXPECT_EQ(nullptr, CHI_AddMsgRsmHash(YSB, &control, &record));
    EXPECT_EQ(Reports{"2/7/0"}, g_reports);
    EXPECT_EQ(1u, kit::Op<LITE_HASH_FreeData>().Calls());
}

TEST_F(Store, DeletesByKeyOnce) {
    CHI_RSM_MSG_S *record = Add(3, 1, 4);
    EXPECT_EQ(0u, CHI_DelMsgRsmHash(&control, record));
    EXPECT_EQ(1u, CHI_DelMsgRsmHash(&control, record)) << "absent";
    EXPECT_EQ(1u, CHI_DelMsgRsmHash(nullptr, record));
    EXPECT_EQ(1u, CHI_DelMsgRsmHash(&control, nullptr));
}

TEST_F(Store, DeletesWithARecordThatCarriesNothingButTheKey) {
    CHI_RSM_MSG_S *record = Add(3, 77, 4);
    CHI_RSM_MSG_S expected{};
    expected.ulKey = 3;
    kit::Op<LITE_HASH_RemoveElmtByKey>().Does([expected](LITE_HASH_S *hash, const void *key) {
        EXPECT_EQ(0, std::memcmp(&expected, key, offsetof(CHI_RSM_MSG_S, ulTotal) + sizeof expected.ulTotal));
        return kit::Op<LITE_HASH_RemoveElmtByKey>().Real(hash, key);
    });
    EXPECT_EQ(0u, CHI_DelMsgRsmHash(&control, record));
    EXPECT_EQ(1u, kit::Op<LITE_HASH_RemoveElmtByKey>().Calls());
}

TEST_F(Store, ReadsSixteenBitsOfAFragmentsNumber) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    EXPECT_EQ(0u, AddFragment(record, 77, 4, "a"));
    uint8_t header[48] = {};
    const uint32_t number = 0x00010004;
    std::memcpy(header + 44, &number, 4);
    void *fragment = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(YSB, &fragment, 1));
    std::memcpy(static_cast<FakeSmbuf *>(fragment)->data, &record->ulMsgId, 4);
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, "b", 1, &complete, header, record));
    EXPECT_EQ(Reports{"2/4/4"}, g_reports);
    CBUF_Free(YSB, fragment);
}

TEST_F(Store, CompletesAMessageWhenAllItsBytesHaveCome) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    void *buffer = record->pBuffer;
    EXPECT_EQ(0u, AddFragment(record, 77, 1, "abc"));
    EXPECT_EQ(nullptr, complete);
    EXPECT_EQ(3u, record->ulReceived);
    EXPECT_EQ(2u, record->ulBitMap);
    EXPECT_EQ(0u, AddFragment(record, 77, 0, "xyz"));
    EXPECT_EQ(buffer, complete);
    EXPECT_EQ(0, std::memcmp("xyz", CBUF_C2D(YSB, buffer), 3)) << "each fragment at the start of the payload";
    EXPECT_EQ(0u, control.stList.ulCount) << "the record is gone";
    EXPECT_EQ(0u, LITE_HASH_GetCount(control.pstHash));
    CBUF_Free(YSB, buffer);
    EXPECT_EQ(Reports{}, g_reports);
}

TEST_F(Store, RefusesAFragmentOfAnotherMessage) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    EXPECT_EQ(1u, AddFragment(record, 78, 0, "abc"));
    EXPECT_EQ(Reports{"2/2/0"}, g_reports);
    EXPECT_EQ(0u, record->ulReceived);
    EXPECT_EQ(0u, record->ulBitMap);
}

TEST_F(Store, RefusesAFragmentBeyondTheTotal) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    EXPECT_EQ(1u, AddFragment(record, 77, 0, "abcdefg"));
    EXPECT_EQ(0u, AddFragment(record, 77, 1, "abcd"));
    EXPECT_EQ(1u, AddFragment(record, 77, 2, "efg"));
    EXPECT_EQ((Reports{"2/3/0", "2/3/0"}), g_reports);
    EXPECT_EQ(4u, record->ulReceived);
    EXPECT_EQ(2u, record->ulBitMap);
}

TEST_F(Store, LengthsDoNotWrap) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    record->ulReceived = 5;
    uint8_t header[48] = {};
    std::memcpy(header, &record->ulMsgId, 4);
    void *fragment = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(YSB, &fragment, 4));
    std::memcpy(static_cast<FakeSmbuf *>(fragment)->data, header, 4);
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, header, 0xFFFFFFFF, &complete, header, record));
    EXPECT_EQ(Reports{"2/3/0"}, g_reports);
    CBUF_Free(YSB, fragment);
}

TEST_F(Store, RecognisesDuplicatesUpToFragmentThirtyOne) {
    CHI_RSM_MSG_S *record = Add(3, 77, 100);
    EXPECT_EQ(0u, AddFragment(record, 77, 31, "a"));
    EXPECT_EQ(0x80000000u, record->ulBitMap);
    EXPECT_EQ(1u, AddFragment(record, 77, 31, "b"));
    EXPECT_EQ(Reports{"2/4/31"}, g_reports);
    EXPECT_EQ(1u, record->ulReceived);
    EXPECT_EQ('a', *static_cast<char *>(CBUF_C2D(YSB, record->pBuffer)));
    EXPECT_EQ(0u, AddFragment(record, 77, 32, "c"));
    EXPECT_EQ(0u, AddFragment(record, 77, 32, "d")) << "no bit, never a duplicate";
    EXPECT_EQ(0x80000000u, record->ulBitMap);
    EXPECT_EQ(3u, record->ulReceived);
}

TEST_F(Store, AcceptsFragmentsOfNoBytes) {
    CHI_RSM_MSG_S *record = Add(3, 77, 0);
    EXPECT_EQ(0u, AddFragment(record, 77, 0, ""));
    ASSERT_NE(nullptr, complete) << "a message of no bytes is complete with its first fragment";
    CBUF_Free(YSB, complete);
}

TEST_F(Store, RefusesNullsRecordsWithoutBuffersAndBuffersWithoutData) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    void *fragment = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(YSB, &fragment, 4));
    const char data[] = "abc";
    const uint8_t header[48] = {};
    void *const untouched = complete;
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, nullptr, fragment, data, 3, &complete, header, record));
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, nullptr, data, 3, &complete, header, record));
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, nullptr, 3, &complete, header, record));
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, data, 3, nullptr, header, record));
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, data, 3, &complete, nullptr, record));
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, data, 3, &complete, header, nullptr));
    FakeSmbuf empty{nullptr, 0};
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, &empty, data, 3, &complete, header, record));
    CHI_RSM_MSG_S without = *record;
    without.pBuffer = nullptr;
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, data, 3, &complete, header, &without));
    without.pBuffer = &empty;
    EXPECT_EQ(1u, CHI_AddFrag2Msg(YSB, &control, fragment, data, 3, &complete, header, &without));
    EXPECT_EQ(untouched, complete);
    EXPECT_EQ(Reports{}, g_reports);
    CBUF_Free(YSB, fragment);
}

TEST_F(Store, AssertsOnABackTypeWithoutBuffers) {
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    void *fragment = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(YSB, &fragment, 3));
    const uint8_t header[48] = {};
    for (const uint32_t back : {3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(1u, CHI_AddFrag2Msg(back, &control, fragment, "abc", 3, &complete, header, record));
        EXPECT_EQ(CHI, kit::TakeAsserts()) << back;
    }
    EXPECT_EQ(Reports{}, g_reports);
    EXPECT_EQ(nullptr, complete);
    EXPECT_EQ(0u, record->ulReceived);
    CBUF_Free(YSB, fragment);
}

TEST_F(Store, ReadsTheMessageIdFortyEightBytesBeforeThePayloadHoweverLongTheHeaderIs) {
    CHI_RSM_MSG_S record{};
    record.ulMsgId = 77;
    record.ulTotal = 6;
    ASSERT_EQ(0u, CBUF_Alloc(HSB, &record.pBuffer, 6));
    void *fragment = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(HSB, &fragment, 3));
    auto *bytes = static_cast<uint8_t *>(fragment);
    std::memcpy(bytes, &record.ulMsgId, 4); /* the header's first word is not it */
    EXPECT_EQ(1u, CHI_AddFrag2Msg(HSB, &control, fragment, "abc", 3, &complete, bytes + 304, &record));
    EXPECT_EQ(Reports{"1/2/0"}, g_reports);
    std::memcpy(bytes + 304, &record.ulMsgId, 4);
    EXPECT_EQ(0u, CHI_AddFrag2Msg(HSB, &control, fragment, "abc", 3, &complete, bytes + 304, &record));
    EXPECT_EQ(3u, record.ulReceived);
    EXPECT_EQ(0, std::memcmp("abc", static_cast<uint8_t *>(record.pBuffer) + 352, 3));
    CBUF_Free(HSB, fragment);
    CBUF_Free(HSB, record.pBuffer);
}

TEST_F(Store, ANullCallbackSilencesIt) {
    control.pfError = nullptr;
    CHI_RSM_MSG_S *record = Add(3, 77, 6);
    EXPECT_EQ(1u, AddFragment(record, 78, 0, "abc"));
    EXPECT_EQ(1u, AddFragment(record, 77, 0, "abcdefg"));
    EXPECT_EQ(Reports{}, g_reports);
}

TEST_F(Store, DropsTheOldestMessageAboveTheLimitOnePerCall) {
    for (uint32_t key = 0; key < 128; ++key)
        Add(key + 1000, key, 4);
    EXPECT_EQ(0u, CHI_MsgNumLimitForRsm(YSB, &control));
    EXPECT_EQ(128u, control.stList.ulCount);
    Add(2000, 1, 4);
    Add(2001, 1, 4);
    EXPECT_EQ(0u, CHI_MsgNumLimitForRsm(YSB, &control));
    EXPECT_EQ(129u, control.stList.ulCount);
    EXPECT_EQ(Reports{"2/0/0"}, g_reports);
    CHI_RSM_MSG_S key{};
    key.ulKey = 1000;
    EXPECT_EQ(nullptr, CHI_FindRsmHashNode(&control, &key)) << "the oldest";
    key.ulKey = 1001;
    EXPECT_NE(nullptr, CHI_FindRsmHashNode(&control, &key));
    EXPECT_EQ(0u, CHI_MsgNumLimitForRsm(YSB, &control));
    EXPECT_EQ(0u, CHI_MsgNumLimitForRsm(YSB, &control));
    EXPECT_EQ(128u, control.stList.ulCount);
    EXPECT_EQ(1u, CHI_MsgNumLimitForRsm(YSB, nullptr));
}

TEST_F(Store, ReportsADroppedMessageWhenItIsGone) {
    static const CHI_RSM_CTL_S *s_control = nullptr;
    static std::vector<uint32_t> s_seen;
    s_control = &control;
    s_seen.clear();
    control.pfError = [](uint32_t, uint32_t, uint32_t) {
        s_seen = {s_control->stList.ulCount, LITE_HASH_GetCount(s_control->pstHash),
                  static_cast<uint32_t>(SmbufFake::live)};
    };
    for (uint32_t key = 0; key < 129; ++key)
        Add(key, key, 4);
    EXPECT_EQ(0u, CHI_MsgNumLimitForRsm(YSB, &control));
    EXPECT_EQ((std::vector<uint32_t>{128, 128, 128}), s_seen) << "in the list, in the hash table, buffers";
}

TEST_F(Store, DestroysARecordWithAndWithoutItsBuffer) {
    CHI_RSM_MSG_S *first = Add(1, 1, 4);
    CHI_RSM_MSG_S *second = Add(2, 2, 4);
    CBUF_Free(YSB, first->pBuffer);
    first->pBuffer = nullptr;
    CHI_DestroyMsgForRsm(YSB, &control, first);
    EXPECT_EQ(1u, control.stList.ulCount);
    CHI_DestroyMsgForRsm(YSB, &control, second);
    EXPECT_EQ(2u, kit::Op<LITE_HASH_FreeData>().Calls()) << "the records themselves";
    EXPECT_EQ(0u, control.stList.ulCount);
    EXPECT_EQ(0u, LITE_HASH_GetCount(control.pstHash));
    CHI_DestroyMsgForRsm(YSB, nullptr, second);
    CHI_DestroyMsgForRsm(YSB, &control, nullptr);
}

TEST(BitMaps, HoldThirtyTwoBits) {
    uint32_t map = 0;
    EXPECT_EQ(0u, CHI_SetBitMap(&map, 0));
    EXPECT_EQ(0u, CHI_SetBitMap(&map, 31));
    EXPECT_EQ(0x80000001u, map);
    EXPECT_EQ(1u, CHI_SetBitMap(&map, 32));
    EXPECT_EQ(1u, CHI_SetBitMap(&map, 0xFFFFFFFF));
    EXPECT_EQ(0x80000001u, map);
    EXPECT_NE(0u, CHI_GetBitMap(&map, 31));
    EXPECT_EQ(0u, CHI_GetBitMap(&map, 30));
    EXPECT_EQ(0u, CHI_GetBitMap(&map, 32));
    EXPECT_EQ(1u, CHI_SetBitMap(nullptr, 0));
    EXPECT_EQ(0u, CHI_GetBitMap(nullptr, 0));
}

} // namespace
