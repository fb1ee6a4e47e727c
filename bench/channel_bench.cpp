// Putting messages of 64 KiB together from fragments of 1,400 bytes, beside copying the same bytes into one allocation.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelhost/standby.h>

namespace {

constexpr uint32_t HEADER = 48;
constexpr uint32_t MESSAGE = 65536;
constexpr uint32_t PAYLOAD = 1400;
constexpr uint32_t FRAGMENTS = (MESSAGE + PAYLOAD - 1) / PAYLOAD;
constexpr uint32_t MESSAGES = 8; /* different ones, in turn */

/* A fragment as it came; its buffer is used again for the next one, so that releasing it costs nothing. */
struct Fragment {
    uint8_t bytes[HEADER + PAYLOAD];
    uint32_t payload;
};

Fragment g_fragments[MESSAGES][FRAGMENTS];

bool IsFragment(const void *smbuf) {
    return smbuf >= static_cast<const void *>(g_fragments) && smbuf < static_cast<const void *>(&g_fragments[MESSAGES]);
}

void *DataOf(void *smbuf) {
    return IsFragment(smbuf) ? smbuf : YSB_Adapt_Smbuf_M2D(static_cast<YSB_SMBUF_S *>(smbuf));
}

void Release(void *smbuf) {
    if (!IsFragment(smbuf))
        YSB_Adapt_Smbuf_Destroy(static_cast<YSB_SMBUF_S *>(smbuf));
}

template <typename Function>
void Install(uint32_t id, Function *function) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
    KIVOShell_SetHookFunc(id, &hook);
}

void PrepareFragments() {
    Install(KIVO_HOOK_YSB_SMBUF_CREATE, YSB_Adapt_Smbuf_Create);
    Install(KIVO_HOOK_YSB_SMBUF_DESTROY, Release);
    Install(KIVO_HOOK_YSB_SMBUF_M2D, DataOf);
    for (uint32_t message = 0; message < MESSAGES; ++message) {
        uint32_t left = MESSAGE;
        for (uint32_t number = 0; number < FRAGMENTS; ++number) {
            Fragment &fragment = g_fragments[message][number];
            fragment.payload = left < PAYLOAD ? left : PAYLOAD;
            left -= fragment.payload;
            std::memset(fragment.bytes, static_cast<int>(message + number), sizeof fragment.bytes);
            std::memcpy(fragment.bytes + 32, &MESSAGE, 4);
            std::memcpy(fragment.bytes + 40, &message, 4);
            std::memcpy(fragment.bytes + 44, &number, 4);
        }
    }
}

void SequentialReceiver(benchmark::State &state) {
    PrepareFragments();
    CHI_RECV_CTX_S context{};
    uint32_t next = 0;
    for (auto _ : state) {
        void *complete = nullptr;
        for (Fragment &fragment : g_fragments[next++ % MESSAGES])
            (void)CHI_RecvMsgForFrag(CHI_BACK_YSB, &context, &fragment, fragment.bytes + HEADER, fragment.payload,
                                     &complete);
        if (complete == nullptr)
            std::abort();
        CBUF_Free(CHI_BACK_YSB, complete);
    }
    state.SetBytesProcessed(state.iterations() * MESSAGE);
}
BENCHMARK(SequentialReceiver);

void CopyIntoOneAllocation(benchmark::State &state) {
    PrepareFragments();
    uint32_t next = 0;
    for (auto _ : state) {
        YSB_SMBUF_S *message = YSB_Adapt_Smbuf_Create(0, HEADER + MESSAGE);
        auto *at = static_cast<uint8_t *>(YSB_Adapt_Smbuf_M2D(message)) + HEADER;
        for (const Fragment &fragment : g_fragments[next++ % MESSAGES]) {
            std::memcpy(at, fragment.bytes + HEADER, fragment.payload);
            at += fragment.payload;
        }
        benchmark::DoNotOptimize(message);
        benchmark::ClobberMemory();
        YSB_Adapt_Smbuf_Destroy(message);
    }
    state.SetBytesProcessed(state.iterations() * MESSAGE);
}
BENCHMARK(CopyIntoOneAllocation);

} // namespace
