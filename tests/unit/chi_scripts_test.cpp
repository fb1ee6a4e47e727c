// Scripts of fragments that are missing, double, out of order, of two messages, beyond the total or never finished: what
// puts them together accepts what is well formed, and nothing else.

#include "chi_fragments.h"

#include <utility>

namespace {

using namespace fragments;

using Scripts = Fragments;

/* Every script of up to six fragments, each of eight kinds: 8 + 64 + ... + 262,144, of which every third is played. */
TEST_F(Scripts, OfFragmentsCompleteExactlyTheMessagesThatCameWholeAndInOrder) {
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

/* The keyed store beside a model of it: scripts of fragments that are missing, double, out of order, of another message,
 * beyond the total, without bytes, numbered where no bit is, and messages that are never finished. */
class StoreScripts : public Fragments {
  protected:
    struct Kind {
        uint32_t id;
        uint16_t number;
        const char *payload;
    };
    static constexpr uint32_t TOTAL = 6;
    static constexpr Kind KINDS[] = {{1, 0, "ab"},  {1, 1, "cd"}, {1, 31, "ef"},     {1, 32, "gh"},
                                     {1, 65, "ij"}, {2, 0, "uv"}, {1, 2, "klmnopq"}, {1, 3, ""}};

    /* A message in progress, as the store should see it. */
    struct Model {
        std::set<uint32_t> seen;
        std::string bytes = std::string(TOTAL, '\xEE'); /* as the socket buffer came */
        std::size_t received = 0;

        /* 99, or the reason of a refusal. */
        uint32_t Add(const Kind &kind) {
            const std::string payload = kind.payload;
            if (kind.id != 1)
                return 2;
            if (received + payload.size() > TOTAL)
                return 3;
            if (kind.number < 32 && !seen.insert(kind.number).second)
                return 4;
            bytes.replace(0, payload.size(), payload);
            received += payload.size();
            return 99;
        }
    };

    StoreScripts() {
        EXPECT_EQ(0u, CHI_InitMsgRsmCtl(
                          &control,
                          [](uint32_t, uint32_t reason, uint32_t number) {
                              said = {reason, number};
                          },
                          1));
    }
    ~StoreScripts() override { LITE_HASH_Destroy(control.pstHash); }

    CHI_RSM_MSG_S *NewRecord() {
        CHI_RSM_MSG_S record{};
        record.ulKey = 9;
        record.ulMsgId = 1;
        record.ulTotal = TOTAL;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &record.pBuffer, TOTAL));
        CHI_RSM_MSG_S *node = CHI_AddMsgRsmHash(YSB, &control, &record);
        DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
        return node;
    }
    uint32_t Add(const Kind &kind, CHI_RSM_MSG_S *record) {
        std::vector<Field> fields = FieldsOf(TOTAL);
        fields[0].truth = kind.id;
        fields[12].truth = kind.number;
        const std::string payload = kind.payload;
        void *fragment = Buffer(HeaderOf(fields), payload);
        said = {99, 0};
        const uint32_t result =
            CHI_AddFrag2Msg(YSB, &control, fragment, CBUF_C2D(YSB, fragment), static_cast<uint32_t>(payload.size()),
                            &complete, static_cast<FakeSmbuf *>(fragment)->data, record);
        CBUF_Free(YSB, fragment);
        return result;
    }
    void Play(uint64_t word, int length) {
        CHI_RSM_MSG_S *record = NewRecord();
        Model model;
        for (int step = 0; step < length; ++step) {
            const Kind &kind = KINDS[word >> (3 * step) & 7];
            const uint32_t expected = model.Add(kind);
            ASSERT_EQ(expected == 99 ? 0u : 1u, Add(kind, record)) << "script " << word << ", step " << step;
            ASSERT_EQ(expected, said.first);
            ASSERT_EQ(expected == 4 ? kind.number : 0u, said.second);
            if (model.received == TOTAL && expected == 99) {
                ASSERT_NE(nullptr, complete) << "script " << word << ", step " << step;
                ASSERT_EQ(model.bytes, Completed());
                CBUF_Free(YSB, std::exchange(complete, nullptr));
                record = NewRecord();
                model = Model{};
            }
            ASSERT_EQ(nullptr, complete);
            ASSERT_EQ(model.received, record->ulReceived);
            ASSERT_EQ(0, std::memcmp(model.bytes.data(), CBUF_C2D(YSB, record->pBuffer), TOTAL));
            ASSERT_EQ(1, SmbufFake::live);
        }
        CHI_DestroyMsgForRsm(YSB, &control, record); /* never finished */
        ASSERT_EQ(0, SmbufFake::live);
        ASSERT_EQ(0u, LITE_HASH_GetCount(control.pstHash));
    }

    CHI_RSM_CTL_S control{};
    inline static std::pair<uint32_t, uint32_t> said; /* reason, fragment */
};

TEST_F(StoreScripts, AreAcceptedFragmentByFragmentAsTheRulesSay) {
    int played = 0;
    for (int length = 1; length <= 6; ++length) {
        for (uint64_t word = 0; word < 1ULL << (3 * length); word += length < 6 ? 1 : 11) {
            Play(word, length);
            if (HasFatalFailure())
                return;
            ++played;
        }
    }
    EXPECT_GE(played, 50000);
}

} // namespace
