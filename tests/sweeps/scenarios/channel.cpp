// The hot-standby channel: buffers, and both ways of putting fragments together.

#include "../scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_mem.h>

namespace {

constexpr uint32_t MODULE = 0x00770000;
constexpr uint32_t COUNT = 120;
constexpr uint32_t TOTAL_OFFSET = 32;
constexpr uint32_t MESSAGE_OFFSET = 40;
constexpr uint32_t FRAGMENT_OFFSET = 44;

/* Socket buffers for the channel, of the library's memory: the buffer is its own data. */
void *Create(uint32_t mid, uint32_t size) {
    return KIVO_MemAlloc(mid, size);
}
void Destroy(void *buffer) {
    (void)KIVO_MemFree(buffer);
}
void *DataOf(void *buffer) {
    return buffer;
}

template <typename Function>
void Install(uint32_t id, Function *function) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
    KIVOShell_SetHookFunc(id, &hook);
}

class Channel : public sweeps::Scenario {
  protected:
    void SetUp() override {
        Install(KIVO_HOOK_YSB_SMBUF_CREATE, Create);
        Install(KIVO_HOOK_YSB_SMBUF_DESTROY, Destroy);
        Install(KIVO_HOOK_YSB_SMBUF_M2D, DataOf);
    }

    void TearDown() override {
        Install<void()>(KIVO_HOOK_YSB_SMBUF_CREATE, nullptr);
        Install<void()>(KIVO_HOOK_YSB_SMBUF_DESTROY, nullptr);
        Install<void()>(KIVO_HOOK_YSB_SMBUF_M2D, nullptr);
    }

    /* A buffer with a fragment of a message, or null. */
    static void *Fragment(uint32_t id, uint32_t number, uint32_t total, const std::string &payload, bool faultless) {
        void *buffer = nullptr;
        const uint32_t result = CBUF_Alloc(CHI_BACK_YSB, &buffer, static_cast<uint32_t>(payload.size()));
        EXPECT_TRUE(result == 0 || (!faultless && result == 1));
        EXPECT_EQ(result == 0, buffer != nullptr);
        if (buffer == nullptr)
            return nullptr;
        auto *bytes = static_cast<uint8_t *>(buffer);
        std::memcpy(bytes, &id, sizeof id);
        std::memcpy(bytes + TOTAL_OFFSET, &total, sizeof total);
        std::memcpy(bytes + MESSAGE_OFFSET, &id, sizeof id);
        std::memcpy(bytes + FRAGMENT_OFFSET, &number, sizeof number);
        std::memcpy(CBUF_C2D(CHI_BACK_YSB, buffer), payload.data(), payload.size());
        return buffer;
    }
};

class Buffers : public Channel {
    void Operate(bool faultless) override {
        for (uint32_t i = 0; i < COUNT; ++i) {
            for (const uint32_t back : {CHI_BACK_HA, CHI_BACK_HSB, CHI_BACK_YSB}) {
                void *buffer = &buffer;
                const uint32_t result = CBUF_Alloc(back, &buffer, i);
                EXPECT_TRUE(result == 0 || (!faultless && result == 1));
                if (result != 0) {
                    EXPECT_EQ(&buffer, buffer) << "written although there is none";
                    continue;
                }
                CBUF_Free(back, buffer);
            }
        }
    }
};

/* Messages of three fragments. Without memory for the message its fragments are refused, and nothing is kept. */
class SequentialReceiver : public Channel {
    void Operate(bool faultless) override {
        const std::string parts[] = {"abcd", "efgh", "ij"};
        CHI_RECV_CTX_S context{};
        for (uint32_t id = 1; id <= COUNT; ++id) {
            void *complete = nullptr;
            for (uint32_t number = 0; number < 3 && Receive(context, id, number, parts[number], &complete, faultless);)
                ++number;
            EXPECT_TRUE(complete != nullptr || !faultless);
            if (complete != nullptr) {
                EXPECT_EQ(0, std::memcmp("abcdefghij", CBUF_C2D(CHI_BACK_YSB, complete), 10));
                CBUF_Free(CHI_BACK_YSB, complete);
            }
        }
        if (context.pBuffer != nullptr)
            CBUF_Free(CHI_BACK_YSB, context.pBuffer);
    }

    /* Whether a fragment was taken. Only the first of a message needs memory of the receiver. */
    static bool Receive(CHI_RECV_CTX_S &context, uint32_t id, uint32_t number, const std::string &part, void **complete,
                        bool faultless) {
        void *buffer = Fragment(id, number, 10, part, faultless);
        if (buffer == nullptr)
            return false;
        const uint32_t result = CHI_RecvMsgForFrag(CHI_BACK_YSB, &context, buffer, CBUF_C2D(CHI_BACK_YSB, buffer),
                                                   static_cast<uint32_t>(part.size()), complete);
        EXPECT_TRUE(result == 0 || (!faultless && result == 1 && number == 0));
        if (result != 0) {
            const CHI_RECV_CTX_S idle{};
            EXPECT_EQ(0, std::memcmp(&idle, &context, sizeof idle));
        }
        return result == 0;
    }
};

uint32_t g_reports;

class KeyedStore : public Channel {
    void Operate(bool faultless) override {
        g_reports = 0;
        CHI_RSM_CTL_S control{};
        const uint32_t result = CHI_InitMsgRsmCtl(
            &control, [](uint32_t, uint32_t reason, uint32_t) { g_reports += reason == CHI_RSM_NO_MEMORY; }, MODULE);
        EXPECT_TRUE(result == 0 || (!faultless && result == 1));
        if (result != 0) {
            EXPECT_EQ(nullptr, control.pstHash);
            return;
        }
        std::vector<CHI_RSM_MSG_S *> records;
        for (uint32_t key = 0; key < COUNT; ++key)
            Add(control, key, records, faultless);
        EXPECT_EQ(records.size(), LITE_HASH_GetCount(control.pstHash));
        for (CHI_RSM_MSG_S *record : records)
            Complete(control, record, faultless);
        while (control.stList.ulCount != 0)
            CHI_DestroyMsgForRsm(CHI_BACK_YSB, &control, reinterpret_cast<CHI_RSM_MSG_S *>(control.stList.pstNext));
        EXPECT_EQ(0u, LITE_HASH_GetCount(control.pstHash));
        LITE_HASH_Destroy(control.pstHash);
    }

    static void Add(CHI_RSM_CTL_S &control, uint32_t key, std::vector<CHI_RSM_MSG_S *> &records, bool faultless) {
        CHI_RSM_MSG_S record{};
        record.ulKey = key;
        record.ulMsgId = key;
        record.ulTotal = 4;
        record.pBuffer = Fragment(key, 0, 4, "    ", faultless);
        if (record.pBuffer == nullptr)
            return;
        const uint32_t reports = g_reports;
        CHI_RSM_MSG_S *node = CHI_AddMsgRsmHash(CHI_BACK_YSB, &control, &record);
        EXPECT_TRUE(node != nullptr || !faultless);
        EXPECT_EQ(node, CHI_FindRsmHashNode(&control, &record));
        EXPECT_EQ(reports + (node == nullptr ? 1 : 0), g_reports);
        if (node == nullptr) {
            CBUF_Free(CHI_BACK_YSB, record.pBuffer);
            return;
        }
        DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
        records.push_back(node);
    }

    static void Complete(CHI_RSM_CTL_S &control, CHI_RSM_MSG_S *record, bool faultless) {
        void *fragment = Fragment(record->ulMsgId, 0, 4, "data", faultless);
        if (fragment == nullptr)
            return;
        void *complete = nullptr;
        EXPECT_EQ(0u, CHI_AddFrag2Msg(CHI_BACK_YSB, &control, fragment, CBUF_C2D(CHI_BACK_YSB, fragment), 4, &complete,
                                      fragment, record));
        EXPECT_NE(nullptr, complete);
        if (complete != nullptr)
            CBUF_Free(CHI_BACK_YSB, complete);
        CBUF_Free(CHI_BACK_YSB, fragment);
    }
};

const bool g_added[] = {
    sweeps::Add<Buffers>("channel_buffers"),
    sweeps::Add<SequentialReceiver>("sequential_receiver"),
    sweeps::Add<KeyedStore>("keyed_store"),
};

} // namespace
