// Headers as no honest peer sends them: every field at its ends and beside its true value, one by one and in all pairs.

#include "chi_fragments.h"

#include <utility>

namespace {

using namespace fragments;

constexpr uint32_t MOST = 256; /* payload bytes that a link lets a header announce */

using Malformed = Fragments;

/* As a link bounds it: what announces more does not reach the library. */
bool PassesTheLink(const std::array<uint8_t, HEADER> &header) {
    return WordAt(header.data(), 32) <= MOST;
}

TEST_F(Malformed, FirstFragmentsAreTakenByTheirTotalAndNothingElse) {
    const int cases = ForAllHeaders(FieldsOf(20), [&](const std::array<uint8_t, HEADER> &header) {
        if (!PassesTheLink(header))
            return;
        const uint32_t total = WordAt(header.data(), 32);
        ASSERT_EQ(0u, Receive(header, "0123456789"));
        if (total <= 10) {
            ASSERT_NE(nullptr, complete);
            ASSERT_EQ("0123456789", Completed());
        } else {
            ASSERT_EQ(nullptr, complete);
            ASSERT_EQ(total, context.ulTotal);
            ASSERT_EQ(10u, context.ulReceived);
            ASSERT_EQ(1, SmbufFake::live);
            ASSERT_EQ(HEADER + total, static_cast<FakeSmbuf *>(context.pBuffer)->size);
        }
        Drop();
    });
    EXPECT_GT(cases, 3000);
}

TEST_F(Malformed, LaterFragmentsAreTakenOnlyWithTheirMessagesIdAndTheNextNumber) {
    std::vector<Field> fields = FieldsOf(20);
    const std::array<uint8_t, HEADER> first = HeaderOf(fields);
    fields.back().truth = NUMBER + 1;
    ForAllHeaders(fields, [&](const std::array<uint8_t, HEADER> &header) {
        if (!PassesTheLink(header))
            return;
        ASSERT_EQ(0u, Receive(first, "0123456789"));
        const uint32_t result = Receive(header, "abcdefghij");
        const bool same = WordAt(header.data(), 40) == ID;
        if (same && WordAt(header.data(), 44) == NUMBER + 1) {
            ASSERT_EQ(0u, result);
            ASSERT_NE(nullptr, complete);
            ASSERT_EQ("0123456789abcdefghij", Completed()) << "whatever total the second one announces";
        } else if (same) {
            ASSERT_EQ(1u, result);
            ASSERT_EQ(nullptr, complete);
            ASSERT_EQ(nullptr, context.pBuffer);
        } else {
            ASSERT_EQ(0u, result) << "a first fragment of another message, or all of one";
            ASSERT_TRUE(complete == nullptr || Completed() == "abcdefghij");
            ASSERT_EQ(complete == nullptr, context.pBuffer != nullptr);
        }
        ASSERT_EQ(result == 0 ? 1 : 0, SmbufFake::live);
        Drop();
    });
}

/* Without a link in front: totals of gigabytes. The allocation may be granted, as a host with overcommitment grants it,
 * or not; the fragment's bytes are kept in either case or the message refused. */
TEST_F(Malformed, TotalsBeyondTwoGigabytesAreCopiedOrRefused) {
    static uint8_t room[4096];
    SmbufFake::Install(
        KIVO_HOOK_YSB_SMBUF_CREATE, +[](uint32_t, uint32_t size) -> void * {
            if (size >= 0xFFFF0000)
                return nullptr;
            ++SmbufFake::live;
            auto *data = static_cast<uint8_t *>(std::malloc(size > sizeof room ? sizeof room : size));
            return new FakeSmbuf{data, size};
        });
    for (const uint32_t total : {0x7FFFFFFFu, 0x80000000u, 0x80000005u, 0xFFFE0000u, 0xFFFFFFD0u, 0xFFFFFFFFu}) {
        const std::array<uint8_t, HEADER> header = HeaderOf(FieldsOf(total));
        const uint32_t result = Receive(header, "0123456789");
        if (total < 0xFFFF0000 - HEADER) {
            ASSERT_EQ(0u, result) << total;
            ASSERT_EQ(0, std::memcmp("0123456789", CBUF_C2D(YSB, context.pBuffer), 10)) << total;
        } else {
            ASSERT_EQ(1u, result) << total;
            ASSERT_EQ(nullptr, context.pBuffer);
        }
        Drop();
        ASSERT_EQ(0, SmbufFake::live);
    }
}

TEST_F(Malformed, HeadersOfEveryKindAreReadAsTheyStand) {
    ForAllHeaders(FieldsOf(20), [&](const std::array<uint8_t, HEADER> &header) {
        void *buffer = Buffer(header, "");
        CHI_MSG_INFO_S info{};
        ASSERT_EQ(0u, CHI_GetMsgInfo(YSB, buffer, &info));
        ASSERT_EQ(WordAt(header.data(), 32), info.ulTotalLength);
        ASSERT_EQ(WordAt(header.data(), 28) & 0xFFFF, info.ulSubType);
        ASSERT_EQ(WordAt(header.data(), 28) >> 16, info.ulMsgType);
        ASSERT_EQ(WordAt(header.data(), 44), info.ulFragment);
        CBUF_Free(YSB, buffer);
    });
}

/* The headers in plain memory, which are read from a block of exactly their size. */
template <uint32_t BACK, std::size_t SIZE>
void ReadHeadersInPlainMemory(uint32_t base, uint32_t word_a) {
    const std::vector<Field> fields = {{base, 4, 7},       {base + 4, 4, 8},  {base + 8, 4, 9},   {base + 12, 4, 10},
                                       {base + 16, 2, 77}, {base + 18, 2, 3}, {base + 20, 4, 20}, {word_a, 4, 0xA}};
    const int cases = ForAllHeaders<SIZE>(fields, [&](const std::array<uint8_t, SIZE> &header) {
        const std::vector<uint8_t> block(header.begin(), header.end());
        CHI_MSG_INFO_S info{};
        ASSERT_EQ(0u, CHI_GetMsgInfo(BACK, const_cast<uint8_t *>(block.data()), &info));
        for (uint32_t i = 0; i < 4; ++i)
            ASSERT_EQ(WordAt(header.data(), base + 4 * i), info.aulWordC[i]);
        ASSERT_EQ(WordAt(header.data(), base + 16) & 0xFFFF, info.ulSubType);
        ASSERT_EQ(WordAt(header.data(), base + 16) >> 16, info.ulMsgType);
        ASSERT_EQ(WordAt(header.data(), base + 20), info.ulTotalLength);
        ASSERT_EQ(WordAt(header.data(), word_a), info.ulWordA);
    });
    EXPECT_GT(cases, 1000);
}

TEST_F(Malformed, HeadersInPlainMemoryAreReadAsTheyStand) {
    ReadHeadersInPlainMemory<0, 48>(12, 44);
    ReadHeadersInPlainMemory<1, 352>(316, 340);
}

/* What comes over a service that does not cut messages is whole, or refused: whatever its header says. */
TEST_F(Malformed, PlainMemoryIsNeverPutTogether) {
    for (const uint32_t back : {0u, 1u}) {
        for (const uint32_t total : {0u, 1u, 9u, 10u, 11u, MOST, 0x7FFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
            if (total > MOST)
                kit::Op<QAL_MemAlloc>().FailsOn(2); /* gigabytes that a host does not grant */
            void *buffer = nullptr;
            ASSERT_EQ(0u, CBUF_Alloc(back, &buffer, 10));
            std::memcpy(static_cast<uint8_t *>(buffer) + (back == 0 ? 32 : 336), &total, 4);
            const uint32_t result = CHI_RecvMsgForFrag(back, &context, buffer, CBUF_C2D(back, buffer), 10, &complete);
            ASSERT_EQ(total <= 10 ? 0u : 1u, result) << total;
            ASSERT_EQ(total <= 10 ? buffer : nullptr, complete);
            ASSERT_EQ(nullptr, context.pBuffer);
            if (complete != nullptr)
                CBUF_Free(back, std::exchange(complete, nullptr));
            ASSERT_EQ(0u, kit::LiveBlocks());
            kit::Op<QAL_MemAlloc>().Reset();
        }
    }
}

/* The keyed store: headers and lengths at their ends against one record. */
TEST_F(Malformed, TheStoreTakesFragmentsOfItsMessageThatFitAndWereNotThere) {
    CHI_RSM_CTL_S control{};
    static uint32_t reported;
    ASSERT_EQ(0u, CHI_InitMsgRsmCtl(
                      &control, [](uint32_t, uint32_t reason, uint32_t) { reported = reason; }, 1));
    std::vector<Field> fields = FieldsOf(20);
    int accepted = 0;
    ForAllHeaders(fields, [&](const std::array<uint8_t, HEADER> &header) {
        for (const uint32_t length : {0u, 1u, 10u, 11u, 0xFFFFFFFFu, 0xFFFFFFF6u}) {
            CHI_RSM_MSG_S record{};
            record.ulKey = 9;
            record.ulMsgId = ID;
            record.ulBitMap = 1u << 4;
            record.ulReceived = 10;
            record.ulTotal = 20;
            ASSERT_EQ(0u, CBUF_Alloc(YSB, &record.pBuffer, 20));
            CHI_RSM_MSG_S *node = CHI_AddMsgRsmHash(YSB, &control, &record);
            ASSERT_NE(nullptr, node);
            DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
            void *fragment = Buffer(header, "0123456789a");
            const uint32_t number = WordAt(header.data(), 44) & 0xFFFF;
            reported = 99;
            const uint32_t result = CHI_AddFrag2Msg(YSB, &control, fragment, CBUF_C2D(YSB, fragment), length, &complete,
                                                    static_cast<FakeSmbuf *>(fragment)->data, node);
            const uint32_t expected = WordAt(header.data(), 0) != ID ? 2 : length > 10 ? 3 : number == 4 ? 4 : 99;
            ASSERT_EQ(expected, reported);
            ASSERT_EQ(expected == 99 ? 0u : 1u, result);
            accepted += expected == 99 ? 1 : 0;
            CBUF_Free(YSB, fragment);
            if (complete != nullptr) {
                ASSERT_EQ(10u, length) << "the last bytes";
                CBUF_Free(YSB, std::exchange(complete, nullptr));
            } else {
                ASSERT_EQ(result == 0 ? 10 + length : 10u, node->ulReceived);
                CHI_DestroyMsgForRsm(YSB, &control, node);
            }
            ASSERT_EQ(0, SmbufFake::live);
            ASSERT_EQ(0u, LITE_HASH_GetCount(control.pstHash));
        }
    });
    EXPECT_GT(accepted, 1000);
    LITE_HASH_Destroy(control.pstHash);
}

} // namespace
