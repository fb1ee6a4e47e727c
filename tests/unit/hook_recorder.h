/* A hook that notes the eight words it is called with, and eight words to call it with. */
#ifndef UVEL_TESTS_UNIT_HOOK_RECORDER_H
#define UVEL_TESTS_UNIT_HOOK_RECORDER_H

#include <cstring>
#include <gtest/gtest.h>
#include <uvelcommon_base/kivo_hooks.h>

using Word = uintptr_t;
using WordFunction = Word (*)(Word, Word, Word, Word, Word, Word, Word, Word);

/* Every forwarder can be called with eight words: what it does not declare lies in registers it leaves alone. */
template <typename Function>
WordFunction AnyForwarder(Function *forwarder) {
    return reinterpret_cast<WordFunction>(reinterpret_cast<KIVO_HOOK>(forwarder));
}

/* Eight different words with bits in all their bytes. */
inline constexpr Word MARKED[8] = {0xA1A2A3A4A5A6A7A8, 0xB1B2B3B4B5B6B7B8, 0xC1C2C3C4C5C6C7C8, 0xD1D2D3D4D5D6D7D8,
                                   0xE1E2E3E4E5E6E7E8, 0xF1F2F3F4F5F6F7F8, 0x9192939495969798, 0x8182838485868788};

inline Word CallMarked(WordFunction forwarder) {
    return forwarder(MARKED[0], MARKED[1], MARKED[2], MARKED[3], MARKED[4], MARKED[5], MARKED[6], MARKED[7]);
}

inline Word g_seen[8];
inline int g_called;
inline Word g_answer;

inline Word RecordingHook(Word a1, Word a2, Word a3, Word a4, Word a5, Word a6, Word a7, Word a8) {
    const Word arguments[8] = {a1, a2, a3, a4, a5, a6, a7, a8};
    std::memcpy(g_seen, arguments, sizeof g_seen);
    ++g_called;
    return g_answer;
}

/* What the recording hook saw last are the marked words, all eight in their order. */
inline void ExpectMarkedSeen() {
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(MARKED[i], g_seen[i]) << "argument " << i + 1;
}

template <typename Function>
void Install(uint32_t id, Function *function) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
    KIVOShell_SetHookFunc(id, &hook);
}

#endif
