/* Bounded ring of elements for many writers and readers, first in first out.
 *
 * A writer claims the next position by moving `tail_`, fills the cell and publishes it; a reader claims by moving
 * `head_`, empties the cell and frees it. Each cell carries a state that says for which lap it is free or full, so the
 * two sides meet only in the cell.
 *
 * Full and empty are exact: a writer is refused only when at one instant of its call no cell was free, a reader only
 * when at one instant no element was complete. When the cell next in line is still being worked on although another
 * one would do, the caller lets the other thread finish.
 *
 * A reader that is about to sleep marks `tail_`, the one word that every writer changes anyway: writers learn of it
 * from their own claim, and while nobody sleeps a write costs one atomic exchange. */
#ifndef UVEL_HOST_OS_RING_H
#define UVEL_HOST_OS_RING_H

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace uvel::host {

class Ring {
  public:
    Ring() = default;
    Ring(const Ring &) = delete;
    Ring &operator=(const Ring &) = delete;
    ~Ring();

    /* False when memory is short. */
    bool Open(uint32_t depth, uint32_t element_size);

    /* False when it is full. */
    bool Write(const void *element);

    /* Takes the oldest element; false when there is none, or none came in time. */
    bool TryRead(void *element);
    bool Read(void *element, uint32_t timeout_ms);

    uint32_t Depth() const { return static_cast<uint32_t>(depth_); }
    uint32_t ElementSize() const { return element_size_; }
    uint64_t Written() const { return tail_.load(std::memory_order_relaxed) >> 1; }
    uint64_t Taken() const { return head_.load(std::memory_order_relaxed); }
    uint64_t Refused() const { return refused_.load(std::memory_order_relaxed); }
    uint64_t Peak() const { return peak_.load(std::memory_order_relaxed); }

  private:
    /* For the lap that begins at position L: 2 L free, 2 L + 1 full; the next lap begins at L + depth. Zero is what
     * fresh memory holds and means free for the first lap, so a new ring needs no pass over its cells. */
    struct Cell {
        std::atomic<uint64_t> state;
        unsigned char *Element() { return reinterpret_cast<unsigned char *>(this + 1); }
    };

    enum class Outcome { Done, Refused, Again };

    struct Place {
        Cell *cell;
        uint64_t lap;
    };

    static constexpr uint64_t SLEEPERS = 1; /* lowest bit of tail_ */

    static bool BeingFilled(const Cell *cell, uint64_t lap);
    static bool BeingEmptied(const Cell *cell, uint64_t lap);
    Place PlaceOf(uint64_t position, std::atomic<uint64_t> &lap);
    Outcome TryWrite(const void *element, unsigned &patience);
    Outcome TryTake(void *element, unsigned &patience);
    void NotePeak(uint64_t position);
    void WakeReaders();
    bool PrepareSleep();

    uint64_t depth_ = 0;
    std::size_t stride_ = 0; /* bytes from one cell to the next */
    unsigned char *cells_ = nullptr;
    uint32_t element_size_ = 0;

    /* What writers change, what readers change and what both change lie on cache lines of their own. */
    alignas(64) std::atomic<uint64_t> tail_{0}; /* next position to write times 2, plus SLEEPERS */
    std::atomic<uint64_t> write_lap_{0};
    std::atomic<uint64_t> head_seen_{0}; /* head_ at some earlier time */
    std::atomic<uint64_t> peak_{0};
    std::atomic<uint64_t> refused_{0};

    alignas(64) std::atomic<uint64_t> head_{0}; /* next position to read */
    std::atomic<uint64_t> read_lap_{0};

    alignas(64) std::atomic<uint32_t> wakes_{0}; /* what sleeping readers wait for to change */
};

} // namespace uvel::host

#endif
