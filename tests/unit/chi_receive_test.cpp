#include "kit.h"
#include "smbuf_fake.h"

#include <algorithm>
#include <random>
#include <uvelcommon_base/kivo_chi_reassembly.h>

namespace {

const kit::Sources CHI{"src/common/src/smi/kivo_chi"};
constexpr uint32_t YSB = 2;

void PutWord(uint8_t *bytes, uint32_t offset, uint32_t value) {
    std::memcpy(bytes + offset, &value, 4);
}

/* A received buffer of HA or HSB with four bytes of payload. */
void *PlainBuffer(uint32_t back, uint32_t total) {
    void *buffer = nullptr;
    EXPECT_EQ(0u, CBUF_Alloc(back, &buffer, 4));
    PutWord(static_cast<uint8_t *>(buffer), back == 0 ? 32 : 336, total);
    return buffer;
}

class Receive : public testing::Test {
  protected:
    ~Receive() override {
        if (context.pBuffer != nullptr)
            CBUF_Free(YSB, context.pBuffer);
        if (complete != nullptr)
            CBUF_Free(YSB, complete);
        EXPECT_EQ(0, SmbufFake::live) << "socket buffers lost";
    }

    /* A received buffer with header and `payload`. */
    void *Buffer(uint32_t id, uint32_t fragment, uint32_t total, const std::string &payload) {
        void *buffer = nullptr;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &buffer, static_cast<uint32_t>(payload.size())));
        uint8_t *bytes = static_cast<FakeSmbuf *>(buffer)->data;
        PutWord(bytes, 32, total);
        PutWord(bytes, 40, id);
        PutWord(bytes, 44, fragment);
        std::copy(payload.begin(), payload.end(), bytes + 48);
        return buffer;
    }

    uint32_t Fragment(uint32_t id, uint32_t fragment, uint32_t total, const std::string &payload) {
        void *buffer = Buffer(id, fragment, total, payload);
        return CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), static_cast<uint32_t>(payload.size()),
                                  &complete);
    }

    std::string TakeComplete() {
        if (complete == nullptr)
            return "(none)";
        const auto *smbuf = static_cast<const FakeSmbuf *>(complete);
        std::string text(reinterpret_cast<const char *>(smbuf->data) + 48, smbuf->size - 48);
        CBUF_Free(YSB, complete);
        complete = nullptr;
        return text;
    }

    bool Idle() const {
        const CHI_RECV_CTX_S idle{};
        return std::memcmp(&idle, &context, sizeof idle) == 0;
    }

    SmbufFake fake;
    CHI_RECV_CTX_S context{};
    void *complete = nullptr;
};

TEST_F(Receive, AMessageThatCameWholeIsHandedThroughWithoutACopy) {
    void *buffer = Buffer(1, 0, 5, "hello");
    EXPECT_EQ(0u, CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), 5, &complete));
    EXPECT_EQ(buffer, complete);
    EXPECT_EQ(1, SmbufFake::created);
    EXPECT_TRUE(Idle());
}

TEST_F(Receive, AMessageShorterThanItsBufferIsWhole) {
    EXPECT_EQ(0u, Fragment(1, 0, 3, "hello"));
    EXPECT_EQ("hello", TakeComplete());
    EXPECT_EQ(0u, Fragment(1, 0, 0, "hello"));
    EXPECT_EQ("hello", TakeComplete());
}

TEST_F(Receive, FragmentsInOrderMakeTheMessageWithItsFirstHeader) {
    EXPECT_EQ(0u, Fragment(77, 7, 10, "abcd"));
    EXPECT_EQ(nullptr, complete);
    EXPECT_EQ(77u, context.ulMsgId);
    EXPECT_EQ(7u, context.ulFragment);
    EXPECT_EQ(4u, context.ulReceived);
    EXPECT_EQ(10u, context.ulTotal);
    EXPECT_EQ(0u, Fragment(77, 8, 10, "efg"));
    EXPECT_EQ(nullptr, complete);
    EXPECT_EQ(8u, context.ulFragment);
    EXPECT_EQ(7u, context.ulReceived);
    EXPECT_EQ(0u, Fragment(77, 9, 10, "hij"));
    ASSERT_NE(nullptr, complete);
    CHI_MSG_INFO_S info{};
    EXPECT_EQ(0u, CHI_GetMsgInfo(YSB, complete, &info));
    EXPECT_EQ(77u, info.ulMsgId);
    EXPECT_EQ(7u, info.ulFragment);
    EXPECT_EQ("abcdefghij", TakeComplete());
    EXPECT_TRUE(Idle());
}

TEST_F(Receive, AllOfTheFirstHeaderIsKept) {
    uint8_t header[48];
    for (uint32_t i = 0; i < sizeof header; ++i)
        header[i] = static_cast<uint8_t>(0xC0 + i);
    PutWord(header, 32, 8); /* the total length */
    for (const uint32_t number : {0xEF000007u, 0xEF000008u}) {
        void *buffer = Buffer(0, 0, 0, "abcd");
        PutWord(header, 44, number);
        std::memcpy(static_cast<FakeSmbuf *>(buffer)->data, header, sizeof header);
        EXPECT_EQ(0u, CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), 4, &complete));
    }
    ASSERT_NE(nullptr, complete);
    PutWord(header, 44, 0xEF000007);
    EXPECT_EQ(0, std::memcmp(header, static_cast<FakeSmbuf *>(complete)->data, sizeof header));
}

TEST_F(Receive, AGapEndsTheMessage) {
    EXPECT_EQ(0u, Fragment(1, 7, 10, "abcd"));
    EXPECT_EQ(1u, Fragment(1, 9, 10, "efg"));
    EXPECT_TRUE(Idle());
    EXPECT_EQ(nullptr, complete);
}

TEST_F(Receive, ARepeatedFragmentEndsTheMessage) {
    EXPECT_EQ(0u, Fragment(1, 7, 10, "abcd"));
    EXPECT_EQ(1u, Fragment(1, 7, 10, "abcd"));
    EXPECT_TRUE(Idle());
}

TEST_F(Receive, FragmentNumbersMayWrap) {
    EXPECT_EQ(0u, Fragment(1, 0xFFFFFFFF, 8, "abcd"));
    EXPECT_EQ(0u, Fragment(1, 0, 8, "efgh"));
    EXPECT_EQ("abcdefgh", TakeComplete());
}

TEST_F(Receive, AnotherMessageReplacesTheOneInProgress) {
    EXPECT_EQ(0u, Fragment(1, 0, 10, "abcd"));
    EXPECT_EQ(0u, Fragment(2, 5, 6, "xyz"));
    EXPECT_EQ(2u, context.ulMsgId);
    EXPECT_EQ(0u, Fragment(2, 6, 6, "uvw"));
    EXPECT_EQ("xyzuvw", TakeComplete());
}

TEST_F(Receive, AWholeMessageEndsTheOneInProgressToo) {
    EXPECT_EQ(0u, Fragment(1, 0, 10, "abcd"));
    EXPECT_EQ(0u, Fragment(2, 0, 3, "xyz"));
    EXPECT_EQ("xyz", TakeComplete());
    EXPECT_TRUE(Idle());
}

/* What is in progress here would be continued by a message whose id and number were read as zero. */
TEST_F(Receive, AMessageOfAServiceWithoutIdsEndsTheOneInProgressAndIsTakenOrRefusedByItself) {
    for (const uint32_t back : {0u, 1u}) {
        for (const uint32_t total : {0u, 4u, 5u}) {
            EXPECT_EQ(0u, Fragment(0, 0xFFFFFFFF, 6, "ab"));
            void *buffer = PlainBuffer(back, total);
            void *whole = nullptr;
            EXPECT_EQ(total == 5 ? 1u : 0u,
                      CHI_RecvMsgForFrag(back, &context, buffer, CBUF_C2D(back, buffer), 4, &whole));
            EXPECT_EQ(total == 5 ? nullptr : buffer, whole) << "back type " << back << ", total " << total;
            EXPECT_TRUE(Idle());
            EXPECT_EQ(0, SmbufFake::live) << "the socket buffer goes back to its service";
            if (whole != nullptr)
                CBUF_Free(back, whole);
            EXPECT_EQ(0u, kit::LiveBlocks());
        }
    }
}

TEST_F(Receive, AFragmentOfNoBytesIsAcceptedLikeAnyOther) {
    EXPECT_EQ(0u, Fragment(1, 0, 4, ""));
    EXPECT_EQ(0u, Fragment(1, 1, 4, "ab"));
    EXPECT_EQ(0u, Fragment(1, 2, 4, ""));
    EXPECT_EQ(0u, Fragment(1, 3, 4, "cd"));
    EXPECT_EQ("abcd", TakeComplete());
}

TEST_F(Receive, ALastFragmentBeyondTheTotalIsRefusedWithEverythingBefore) {
    EXPECT_EQ(0u, Fragment(1, 0, 10, "abcd"));
    EXPECT_EQ(1u, Fragment(1, 1, 10, "efghijk"));
    EXPECT_EQ(CHI, kit::TakeAsserts());
    EXPECT_TRUE(Idle());
    EXPECT_EQ(nullptr, complete);
}

TEST_F(Receive, TheTotalOfTheFirstFragmentCounts) {
    EXPECT_EQ(0u, Fragment(1, 0, 8, "abcd"));
    EXPECT_EQ(0u, Fragment(1, 1, 4000000000u, "efgh"));
    EXPECT_EQ("abcdefgh", TakeComplete());
}

TEST_F(Receive, BadArgumentsFreeTheBuffer) {
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, nullptr, "x", 1, &complete));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, nullptr, Buffer(1, 0, 1, "x"), "x", 1, &complete));
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, Buffer(1, 0, 1, "x"), nullptr, 1, &complete));
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, Buffer(1, 0, 1, "x"), "x", 1, nullptr));
    EXPECT_EQ(3u, kit::TakeAsserts().size());
    EXPECT_EQ(0, SmbufFake::live);
}

TEST_F(Receive, ABufferWithoutDataIsRefusedAndFreed) {
    SmbufFake::withoutData = true;
    void *buffer = nullptr;
    ASSERT_EQ(0u, CBUF_Alloc(YSB, &buffer, 4));
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, buffer, "x", 1, &complete));
    EXPECT_EQ(0, SmbufFake::live);
}

TEST_F(Receive, NoMemoryForTheMessageRefusesItsFirstFragment) {
    void *buffer = Buffer(1, 0, 10, "abcd");
    SmbufFake::failCreation = true;
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), 4, &complete));
    EXPECT_TRUE(Idle());
    SmbufFake::failCreation = false;
    buffer = Buffer(1, 0, 10, "abcd");
    SmbufFake::withoutData = true;
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), 4, &complete));
    EXPECT_TRUE(Idle());
    EXPECT_EQ(0, SmbufFake::live);
}

TEST_F(Receive, AnnouncedTotalsUpToTheLargestAreSurvived) {
    EXPECT_EQ(1u, Fragment(1, 0, 0xFFFFFFFF, "abcd")) << "header and payload do not fit 32 bits";
    EXPECT_TRUE(Idle());
}

TEST(ReceivePlainMemory, FragmentsOfHaAndHsbAreRefusedAndWholeMessagesPass) {
    for (const uint32_t back : {0u, 1u}) {
        for (const uint32_t total : {5u, 4u}) {
            void *buffer = PlainBuffer(back, total);
            void *complete = nullptr;
            CHI_RECV_CTX_S context{};
            EXPECT_EQ(total == 5 ? 1u : 0u,
                      CHI_RecvMsgForFrag(back, &context, buffer, CBUF_C2D(back, buffer), 4, &complete));
            EXPECT_EQ(total == 5 ? nullptr : buffer, complete);
            EXPECT_EQ(nullptr, context.pBuffer);
            if (complete != nullptr)
                CBUF_Free(back, complete);
            EXPECT_EQ(0u, kit::LiveBlocks());
        }
    }
}

TEST(ReceivePlainMemory, AnUnknownBackTypeIsRefused) {
    CHI_RECV_CTX_S context{};
    void *complete = nullptr;
    uint8_t bytes[64] = {};
    EXPECT_EQ(1u, CHI_RecvMsgForFrag(3, &context, bytes, bytes, 4, &complete));
    EXPECT_EQ(2u, kit::TakeAsserts().size()) << "the header cannot be read, the buffer not be freed";
}

/* Scripts of fragments, hundreds of thousands of them, beside a model that knows which must be accepted. */
TEST_F(Receive, RandomScriptsAreAcceptedExactlyWhenTheyAreWellFormed) {
    constexpr uint32_t SEED = 20240307;
    RecordProperty("seed", SEED);
    std::mt19937 random(SEED);
    auto pick = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };

    struct Model {
        bool active = false;
        uint32_t id = 0, last = 0, total = 0;
        std::string text;
    } model;

    for (int step = 0; step < 60000; ++step) {
        const uint32_t id = pick(8) != 0 ? model.id : pick(3);
        const uint32_t number = pick(8) != 0 ? model.last + 1 : pick(40);
        const uint32_t total = pick(16) == 0 ? 0xFFFFFFFFu - pick(60) : pick(64);
        const std::string payload(pick(20), static_cast<char>('a' + pick(26)));
        const bool announcedTooMuch = total > 0xFFFFFFFFu - 48;
        if (total > 1000 && !announcedTooMuch)
            continue; /* would be allocated for real */

        uint32_t expected = 0;
        std::string completed;
        if (model.active && id == model.id) {
            if (number != model.last + 1 || model.text.size() + payload.size() > model.total) {
                expected = 1;
                model.active = false;
            } else {
                model.text += payload;
                model.last = number;
                if (model.text.size() == model.total) {
                    completed = model.text;
                    model.active = false;
                }
            }
        } else {
            model.active = false;
            if (total <= payload.size()) {
                completed = payload;
            } else if (announcedTooMuch) {
                expected = 1;
            } else {
                model = Model{true, id, number, total, payload};
            }
        }
        ASSERT_EQ(expected, Fragment(id, number, total, payload)) << "step " << step;
        kit::TakeAsserts();
        if (complete != nullptr) {
            ASSERT_EQ(completed, TakeComplete()) << "step " << step;
        } else {
            ASSERT_TRUE(completed.empty()) << "step " << step;
        }
        ASSERT_EQ(model.active, context.pBuffer != nullptr) << "step " << step;
        ASSERT_EQ(model.active ? 1 : 0, SmbufFake::live) << "step " << step;
    }
}

} // namespace
