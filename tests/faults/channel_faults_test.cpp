// Failing bounds-checked functions in the hot-standby channel.

#include "../unit/smbuf_fake.h"
#include "securec_faults.h"

#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_mem.h>

namespace {

const kit::Sources CHI{"src/common/src/smi/kivo_chi"};

TEST(FailingClear, OfAChannelBufferAssertsAndTheBufferIsThere) {
    SmbufFake fake;
    for (const uint32_t back : {0u, 1u, 2u}) {
        void *buffer = nullptr;
        kit::Op<memset_s>().FailsOn(1, 34);
        EXPECT_EQ(0u, CBUF_Alloc(back, &buffer, 10));
        EXPECT_EQ(CHI, kit::TakeAsserts());
        ASSERT_NE(nullptr, buffer);
        CBUF_Free(back, buffer);
    }
}

/* A received YSB buffer of four bytes that announces eight. */
void *FirstFragment(uint32_t fragment) {
    void *buffer = nullptr;
    EXPECT_EQ(0u, CBUF_Alloc(2, &buffer, 4));
    uint8_t *bytes = static_cast<FakeSmbuf *>(buffer)->data;
    const uint32_t total = 8;
    std::memcpy(bytes + 32, &total, 4);
    std::memcpy(bytes + 44, &fragment, 4);
    return buffer;
}

TEST(FailingCopy, OfALaterFragmentEndsTheMessage) {
    SmbufFake fake;
    CHI_RECV_CTX_S context{};
    void *complete = nullptr;
    void *first = FirstFragment(0);
    ASSERT_EQ(0u, CHI_RecvMsgForFrag(2, &context, first, CBUF_C2D(2, first), 4, &complete));
    void *second = FirstFragment(1);
    kit::Op<memcpy_s>().FailsOn(1, 162);
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(2, &context, second, CBUF_C2D(2, second), 4, &complete));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(nullptr, context.pBuffer);
    EXPECT_EQ(nullptr, complete);
    EXPECT_EQ(0, SmbufFake::live);
}

TEST(FailingCopies, OfAFirstFragmentRefuseTheMessage) {
    SmbufFake fake;
    for (const uint32_t copy : {1u, 2u}) { /* header, payload */
        CHI_RECV_CTX_S context{};
        void *complete = nullptr;
        void *first = FirstFragment(0);
        kit::Op<memcpy_s>().FailsOn(copy, 22);
        EXPECT_EQ(1u, CHI_RecvMsgForFrag(2, &context, first, CBUF_C2D(2, first), 4, &complete));
        EXPECT_EQ(CHI, kit::TakeAsserts());
        EXPECT_EQ(nullptr, context.pBuffer);
        EXPECT_EQ(nullptr, complete);
        EXPECT_EQ(0, SmbufFake::live);
    }
}

TEST(FailingCopy, OfARecordOrAFragmentIntoTheStoreAsserts) {
    SmbufFake fake;
    CHI_RSM_CTL_S control{};
    ASSERT_EQ(0u, CHI_InitMsgRsmCtl(&control, nullptr, 1));
    CHI_RSM_MSG_S record{};
    record.ulTotal = 8;
    ASSERT_EQ(0u, CBUF_Alloc(2, &record.pBuffer, 8));
    kit::Op<memcpy_s>().FailsOn(1, 22);
    CHI_RSM_MSG_S *node = CHI_AddMsgRsmHash(2, &control, &record);
    EXPECT_EQ(CHI, kit::TakeAsserts());
    ASSERT_NE(nullptr, node);
    *node = record;
    DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
    void *fragment = FirstFragment(0);
    void *complete = nullptr;
    kit::Op<memcpy_s>().FailsOn(1, 22);
    EXPECT_EQ(0u, CHI_AddFrag2Msg(2, &control, fragment, CBUF_C2D(2, fragment), 4, &complete,
                                  static_cast<FakeSmbuf *>(fragment)->data, node));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_EQ(4u, node->ulReceived);
    CBUF_Free(2, fragment);
    CHI_DestroyMsgForRsm(2, &control, node);
    LITE_HASH_Destroy(control.pstHash);
    EXPECT_EQ(0, SmbufFake::live);
}

} // namespace
