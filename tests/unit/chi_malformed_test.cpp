// Headers and fragments as no honest peer sends them: every field at its ends and beside its true value, one by one and
// in all pairs, and scripts of fragments that are missing, double, out of order, of two messages or never finished.

#include "kit.h"
#include "smbuf_fake.h"

#include <array>
#include <cstring>
#include <set>
#include <uvelcommon_base/kivo_chi_reassembly.h>

namespace {

constexpr uint32_t YSB = 2;
constexpr uint32_t HEADER = 48;
constexpr uint32_t MOST = 256; /* payload bytes that a link lets a header announce */

/* One field of a header: where it stands, how wide it is, what it truly is. */
struct Field {
    uint32_t offset;
    uint32_t width;
    uint64_t truth;

    uint64_t Largest() const { return width == 4 ? 0xFFFFFFFF : (1ULL << (8 * width)) - 1; }
    std::vector<uint64_t> Values() const {
        const std::set<uint64_t> values = {0, 1, Largest(), Largest() - 1, truth, truth + 1, (truth - 1) & Largest()};
        return {values.begin(), values.end()};
    }
    void Put(uint8_t *header, uint64_t value) const { std::memcpy(header + offset, &value, width); }
};

constexpr uint32_t ID = 0x11223344;
constexpr uint32_t NUMBER = 5;

/* All fields of a YSB header of 20 payload bytes, of which `payload` are in this fragment. */
std::vector<Field> FieldsOf(uint32_t total) {
    return {{0, 4, ID},  {4, 4, 0},  {8, 4, 0},      {12, 4, 7},   {16, 4, 8},  {20, 4, 9},     {24, 4, 10},
            {28, 2, 77}, {30, 2, 3}, {32, 4, total}, {36, 4, 0xA}, {40, 4, ID}, {44, 4, NUMBER}};
}

std::array<uint8_t, HEADER> HeaderOf(const std::vector<Field> &fields) {
    std::array<uint8_t, HEADER> header{};
    for (const Field &field : fields)
        field.Put(header.data(), field.truth);
    return header;
}

/* Calls with every header that differs from the true one in one field or in two. */
template <typename Visit>
int ForAllHeaders(const std::vector<Field> &fields, Visit visit) {
    int cases = 0;
    const std::array<uint8_t, HEADER> truth = HeaderOf(fields);
    for (std::size_t first = 0; first < fields.size(); ++first) {
        for (const uint64_t a : fields[first].Values()) {
            for (std::size_t second = first; second < fields.size(); ++second) {
                for (const uint64_t b : fields[second].Values()) {
                    std::array<uint8_t, HEADER> header = truth;
                    fields[first].Put(header.data(), a);
                    fields[second].Put(header.data(), b);
                    visit(header);
                    ++cases;
                }
            }
        }
    }
    return cases;
}

uint32_t WordAt(const uint8_t *bytes, uint32_t offset) {
    uint32_t value;
    std::memcpy(&value, bytes + offset, sizeof value);
    return value;
}

class Malformed : public testing::Test {
  protected:
    ~Malformed() override {
        Drop();
        EXPECT_EQ(0, SmbufFake::live) << "socket buffers lost";
    }
    void Drop() {
        if (context.pBuffer != nullptr)
            CBUF_Free(YSB, context.pBuffer);
        context = {};
        if (complete != nullptr)
            CBUF_Free(YSB, complete);
        complete = nullptr;
    }
    /* A buffer of exactly header and payload, so that whoever reads or writes behind it is seen. */
    static void *Buffer(const std::array<uint8_t, HEADER> &header, const std::string &payload) {
        void *buffer = nullptr;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &buffer, static_cast<uint32_t>(payload.size())));
        uint8_t *bytes = static_cast<FakeSmbuf *>(buffer)->data;
        std::memcpy(bytes, header.data(), HEADER);
        std::memcpy(bytes + HEADER, payload.data(), payload.size());
        return buffer;
    }
    uint32_t Receive(const std::array<uint8_t, HEADER> &header, const std::string &payload) {
        void *buffer = Buffer(header, payload);
        return CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), static_cast<uint32_t>(payload.size()),
                                  &complete);
    }
    std::string Completed() const {
        const auto *smbuf = static_cast<const FakeSmbuf *>(complete);
        return std::string(reinterpret_cast<const char *>(smbuf->data) + HEADER, smbuf->size - HEADER);
    }

    SmbufFake fake;
    CHI_RECV_CTX_S context{};
    void *complete = nullptr;
};

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

/* Every script of up to six fragments, each of eight kinds: 8 + 64 + ... + 262,144, of which every third is played. */
TEST_F(Malformed, ScriptsOfFragmentsCompleteExactlyTheMessagesThatCameWholeAndInOrder) {
    struct Kind {
        uint32_t id, number, total;
        const char *payload;
    };
    /* Two messages of three fragments ("abcdef" and "uvwxyz"), and what does not belong there. */
    constexpr Kind KINDS[] = {{1, 30, 6, "ab"},  {1, 31, 6, "cd"}, {1, 32, 6, "ef"},    {2, 0, 6, "uv"},
                              {2, 1, 200, "wx"}, {2, 2, 6, "yz"},  {1, 32, 6, "efghi"}, {1, 31, 6, ""}};
    struct Model {
        bool active = false;
        uint32_t id = 0, last = 0, total = 0;
        std::string text;
    };
    int played = 0;
    uint64_t script = 0;
    for (int length = 1; length <= 6; ++length) {
        for (uint64_t word = 0; word < 1ULL << (3 * length); ++word) {
            if (length > 4 && script++ % 3 != 0)
                continue;
            Model model;
            for (int step = 0; step < length; ++step) {
                const Kind &kind = KINDS[word >> (3 * step) & 7];
                const std::string payload = kind.payload;
                std::vector<Field> fields = FieldsOf(kind.total);
                fields[11].truth = kind.id;
                fields[12].truth = kind.number;
                std::string expected;
                uint32_t result = 0;
                if (model.active && model.id == kind.id) {
                    if (kind.number != model.last + 1 || model.text.size() + payload.size() > model.total) {
                        result = 1;
                        model = Model{};
                    } else {
                        model.text += payload;
                        model.last = kind.number;
                        if (model.text.size() == model.total) {
                            expected = model.text;
                            model = Model{};
                        }
                    }
                } else if (kind.total <= payload.size()) {
                    expected = payload;
                    model = Model{};
                } else {
                    model = Model{true, kind.id, kind.number, kind.total, payload};
                }
                ASSERT_EQ(result, Receive(HeaderOf(fields), payload)) << "script " << word << ", step " << step;
                if (result == 1)
                    kit::TakeAsserts();
                ASSERT_EQ(expected, complete == nullptr ? "" : Completed()) << "script " << word << ", step " << step;
                if (complete != nullptr)
                    CBUF_Free(YSB, std::exchange(complete, nullptr));
                ASSERT_EQ(model.active ? 1 : 0, SmbufFake::live);
            }
            ++played;
            Drop(); /* never finished */
            ASSERT_EQ(0, SmbufFake::live);
        }
    }
    EXPECT_GE(played, 50000);
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
