// Messages of the hot-standby channel as a peer may cut and head them: nothing is written outside a buffer, no buffer is
// lost, and what is handed out whole has the length that its header announces.
//
// The input is a row of records: back type, payload length, header of 48 bytes (as much as there is), payload.

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <set>

#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelhost/assert.h>
#include <uvelhost/memory.h>

#include "fuzz_input.h"

/* Failed assertions of the library are its answer to bad headers. */
extern "C" void qal_assert(const char *, uint32_t) {}

namespace {

constexpr uint32_t TOTAL_OFFSET = 32;
constexpr uint32_t LARGEST = 1 << 16; /* of an announced message, to spare the machine */

} // namespace

extern "C" void *QAL_MemAlloc(uint32_t handle, uint8_t partition, uint32_t size) {
    static const auto allocate = reinterpret_cast<decltype(&QAL_MemAlloc)>(dlsym(RTLD_NEXT, "QAL_MemAlloc"));
    return size > LARGEST ? nullptr : allocate(handle, partition, size);
}

namespace {

struct Smbuf {
    uint32_t size;
    std::unique_ptr<uint8_t[]> data;
};

std::set<Smbuf *> g_live;

void *Create(uint32_t, uint32_t size) {
    if (size > LARGEST)
        return nullptr;
    auto *smbuf = new Smbuf{size, std::unique_ptr<uint8_t[]>(new uint8_t[size]())};
    g_live.insert(smbuf);
    return smbuf;
}

void Destroy(void *smbuf) {
    REQUIRE(g_live.erase(static_cast<Smbuf *>(smbuf)) == 1);
    delete static_cast<Smbuf *>(smbuf);
}

void *DataOf(void *smbuf) {
    return static_cast<Smbuf *>(smbuf)->data.get();
}

template <typename Function>
void Install(uint32_t id, Function *function) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
    KIVOShell_SetHookFunc(id, &hook);
}

/* Takes the input apart. */
class Input {
  public:
    Input(const uint8_t *data, std::size_t size) : data_(data), left_(size) {}
    bool AtEnd() const { return left_ == 0; }
    uint8_t Byte() {
        uint8_t byte = 0;
        Bytes(&byte, 1);
        return byte;
    }
    void Bytes(uint8_t *to, std::size_t count) {
        const std::size_t given = std::min(count, left_);
        std::memcpy(to, data_, given);
        data_ += given;
        left_ -= given;
    }

  private:
    const uint8_t *data_;
    std::size_t left_;
};

uint32_t WordAt(const uint8_t *bytes, uint32_t offset) {
    uint32_t word;
    std::memcpy(&word, bytes + offset, sizeof word);
    return word;
}

/* One received buffer, with the header that the peer made. */
void *Receive(uint32_t back, uint32_t length, Input &input) {
    void *buffer = nullptr;
    REQUIRE(CBUF_Alloc(back, &buffer, length) == 0);
    auto *header = static_cast<uint8_t *>(back == CHI_BACK_YSB ? DataOf(buffer) : buffer);
    input.Bytes(header, CHI_GetMsgHeadLen(back) + length);
    return buffer;
}

void FeedReceiver(CHI_RECV_CTX_S &context, uint32_t back, uint32_t length, void *buffer) {
    void *complete = nullptr;
    const uint32_t result = CHI_RecvMsgForFrag(back, &context, buffer, CBUF_C2D(back, buffer), length, &complete);
    REQUIRE(result == 0 || complete == nullptr);
    REQUIRE(context.pBuffer == nullptr || context.ulReceived < context.ulTotal);
    REQUIRE(context.pBuffer == nullptr || g_live.count(static_cast<Smbuf *>(context.pBuffer)) == 1);
    if (complete == nullptr)
        return;
    if (back == CHI_BACK_YSB) {
        const auto *smbuf = static_cast<const Smbuf *>(complete);
        REQUIRE(smbuf->size >= WordAt(smbuf->data.get(), TOTAL_OFFSET) ||
                smbuf->size >= CHI_GetMsgHeadLen(back) + length);
    } else {
        REQUIRE(complete == buffer);
    }
    CBUF_Free(back, complete);
}

/* The same fragment for the keyed store, whose record is made of what it says. */
void FeedStore(CHI_RSM_CTL_S &control, uint32_t length, void *buffer) {
    const auto *header = static_cast<const uint8_t *>(DataOf(buffer));
    CHI_RSM_MSG_S key{};
    key.ulKey = header[0];
    CHI_RSM_MSG_S *record = CHI_FindRsmHashNode(&control, &key);
    if (record == nullptr) {
        key.ulMsgId = WordAt(header, 0);
        key.ulTotal = WordAt(header, TOTAL_OFFSET);
        if (CBUF_Alloc(CHI_BACK_YSB, &key.pBuffer, key.ulTotal) != 0)
            return;
        record = CHI_AddMsgRsmHash(CHI_BACK_YSB, &control, &key);
        REQUIRE(record != nullptr);
        DLL_Insert(&control.stList, control.stList.pstPrev, &record->stLink);
        REQUIRE(CHI_MsgNumLimitForRsm(CHI_BACK_YSB, &control) == 0);
    }
    void *complete = nullptr;
    if (CHI_AddFrag2Msg(CHI_BACK_YSB, &control, buffer, CBUF_C2D(CHI_BACK_YSB, buffer), length, &complete, header,
                        record) == 0 &&
        complete != nullptr)
        CBUF_Free(CHI_BACK_YSB, complete);
}

void FeedAll(Input input) {
    CHI_RECV_CTX_S context{}; /* for what comes over all services */
    CHI_RSM_CTL_S control{};
    REQUIRE(CHI_InitMsgRsmCtl(&control, nullptr, 1) == 0);
    while (!input.AtEnd()) {
        const uint32_t back = input.Byte() % (CHI_BACK_YSB + 1);
        const uint32_t length = input.Byte();
        void *buffer = Receive(back, length, input);
        if (back == CHI_BACK_YSB)
            FeedStore(control, length, buffer);
        FeedReceiver(context, back, length, buffer);
    }
    if (context.pBuffer != nullptr)
        CBUF_Free(CHI_BACK_YSB, context.pBuffer);
    while (control.stList.ulCount != 0)
        CHI_DestroyMsgForRsm(CHI_BACK_YSB, &control, reinterpret_cast<CHI_RSM_MSG_S *>(control.stList.pstNext));
    LITE_HASH_Destroy(control.pstHash);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Install(KIVO_HOOK_YSB_SMBUF_CREATE, Create);
    Install(KIVO_HOOK_YSB_SMBUF_DESTROY, Destroy);
    Install(KIVO_HOOK_YSB_SMBUF_M2D, DataOf);
    FeedAll(Input(data, size));
    REQUIRE(g_live.empty());
    return 0;
}
