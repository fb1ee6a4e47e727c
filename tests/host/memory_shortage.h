// operator new that fails on demand, and counts. It belongs to the whole executable, libraries included, so one file of it
// includes this.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace memory_shortage {

inline std::atomic<int> g_left{-1}; /* allocations of the short thread that still succeed; negative: all */
inline std::atomic<bool> g_refused{false};
inline std::atomic<std::size_t> g_taken{0};
inline thread_local bool t_is_short = false;

/* Bytes that were ever asked for, whatever became of them. */
inline std::size_t Taken() {
    return g_taken;
}

inline bool IsRefused() {
    if (!t_is_short || g_left < 0)
        return false;
    if (g_left > 0) {
        --g_left;
        return false;
    }
    g_refused = true;
    return true;
}

/* While one lives, this thread gets so many allocations and none after them. */
class Shortage {
  public:
    explicit Shortage(int allocations) {
        g_refused = false;
        g_left = allocations;
        t_is_short = true;
    }
    ~Shortage() {
        t_is_short = false;
        g_left = -1;
    }
    Shortage(const Shortage &) = delete;
    Shortage &operator=(const Shortage &) = delete;

    static bool WasFelt() { return g_refused; }
};

/* In a callback: the memory of the test itself is not the matter. */
class Exempt {
  public:
    Exempt() : was_short_(t_is_short) { t_is_short = false; }
    ~Exempt() { t_is_short = was_short_; }
    Exempt(const Exempt &) = delete;
    Exempt &operator=(const Exempt &) = delete;

  private:
    bool was_short_;
};

/* Null when memory is short. */
inline void *Take(std::size_t size) noexcept {
    void *block = IsRefused() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block != nullptr)
        g_taken += size;
    return block;
}

inline void *TakeOrThrow(std::size_t size) {
    void *block = Take(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace memory_shortage

/* All of them: those of a sanitizer do not go through each other, and do not mix with these. */

void *operator new(std::size_t size) {
    return memory_shortage::TakeOrThrow(size);
}

void *operator new[](std::size_t size) {
    return memory_shortage::TakeOrThrow(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return memory_shortage::Take(size);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return memory_shortage::Take(size);
}

void operator delete(void *block) noexcept {
    std::free(block);
}

void operator delete[](void *block) noexcept {
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void *block, std::size_t) noexcept {
    std::free(block);
}
