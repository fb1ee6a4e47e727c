/* Rings of buffers for texts that stand in the arguments of a print: the eight latest texts of a ring are valid. */
#ifndef KIVO_COMMON_TEXT_RING_H
#define KIVO_COMMON_TEXT_RING_H

#include <cstddef>
#include <cstdint>

constexpr uint32_t TEXT_RING_SIZE = 8;

/* What the rings show for null. */
inline constexpr char TEXT_RING_NONE[] = "-";

template <size_t ROOM>
struct TEXT_RING_S {
    char aszText[TEXT_RING_SIZE][ROOM];
    uint32_t ulLatest;
};

/* The next buffer of a ring. Unlocked: threads that meet here get the same buffer, but never one outside the ring. */
template <size_t ROOM>
static inline char *TEXT_RING_Next(TEXT_RING_S<ROOM> &stRing) {
    const uint32_t ulNext = (stRing.ulLatest + 1) % TEXT_RING_SIZE;
    stRing.ulLatest = ulNext;
    return stRing.aszText[ulNext];
}

#endif
