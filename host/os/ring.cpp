#include "os/ring.h"

#include "os/futex.h"
#include "os/run_delay.h"
#include <cstring>
#include <sched.h>
#include <sys/mman.h>

namespace uvel::host {

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

void Pause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

/* Lets another thread finish with a cell it has claimed. That takes it a copy of one element, unless it lost the
 * processor; should the scheduler prefer the caller even then (real-time priorities), only sleeping helps. */
void LetOtherFinish(unsigned &patience) {
    ++patience;
    if (patience < 64) {
        Pause();
    } else if (patience < 1024) {
        sched_yield();
    } else {
        timespec moment = {0, 50000};
        nanosleep(&moment, nullptr);
    }
}

void CopyElement(void *to, const void *from, uint32_t size) {
    if (size == 32)
        std::memcpy(to, from, 32);
    else
        std::memcpy(to, from, size);
}

} // namespace

/* The cell is free for the lap of a position that was claimed already. */
inline bool Ring::BeingFilled(const Cell *cell, uint64_t lap) {
    return cell->state.load(std::memory_order_acquire) == 2 * lap;
}

/* The cell still holds the element of the lap before, which a reader has claimed already. */
inline bool Ring::BeingEmptied(const Cell *cell, uint64_t lap) {
    return cell->state.load(std::memory_order_acquire) < 2 * lap;
}

Ring::~Ring() {
    if (cells_ != nullptr)
        munmap(cells_, depth_ * stride_);
}

bool Ring::Open(uint32_t depth, uint32_t element_size) {
    depth_ = depth;
    element_size_ = element_size;
    stride_ = (sizeof(Cell) + element_size + alignof(Cell) - 1) / alignof(Cell) * alignof(Cell);
    void *memory = mmap(nullptr, depth_ * stride_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return false;
    cells_ = static_cast<unsigned char *>(memory);
    return true;
}

/* `lap` remembers where the lap of an earlier call began, which spares all calls but one in a lap the division. Any
 * value it can hold is a multiple of the depth, so a stale one costs time and nothing else. */
inline Ring::Place Ring::PlaceOf(uint64_t position, std::atomic<uint64_t> &lap) {
    uint64_t begin = lap.load(relaxed);
    uint64_t index = position - begin;
    if (index >= depth_) [[unlikely]] {
        index = position % depth_;
        begin = position - index;
        lap.store(begin, relaxed);
    }
    return {reinterpret_cast<Cell *>(cells_ + index * stride_), begin};
}

bool Ring::Write(const void *element) {
    unsigned patience = 0;
    for (;;) {
        Outcome result = TryWrite(element, patience);
        if (result != Outcome::Again)
            return result == Outcome::Done;
    }
}

inline Ring::Outcome Ring::TryWrite(const void *element, unsigned &patience) {
    uint64_t tail = tail_.load(std::memory_order_acquire);
    uint64_t position = tail >> 1;
    auto [cell, lap] = PlaceOf(position, write_lap_);
    if (cell->state.load(std::memory_order_acquire) != 2 * lap) [[unlikely]] {
        uint64_t head = head_.load(std::memory_order_acquire);
        if (head > position || tail_.load(std::memory_order_acquire) >> 1 != position)
            return Outcome::Again;
        if (position - head == depth_ || (position - head == depth_ - 1 && BeingEmptied(cell, lap))) {
            refused_.fetch_add(1, relaxed);
            peak_.store(depth_, relaxed); /* an element that is just being taken out was not counted otherwise */
            return Outcome::Refused;
        }
        LetOtherFinish(patience);
        return Outcome::Again;
    }
    if (!tail_.compare_exchange_weak(tail, (position + 1) << 1, std::memory_order_acq_rel, relaxed))
        return Outcome::Again;
    NotePeak(position);
    CopyElement(cell->Element(), element, element_size_);
    cell->state.store(2 * lap + 1, std::memory_order_release);
    if ((tail & SLEEPERS) != 0) [[unlikely]]
        WakeReaders();
    return Outcome::Done;
}

/* Looks at the readers' line only when the elements could be more than ever before. */
inline void Ring::NotePeak(uint64_t position) {
    if (position + 1 - head_seen_.load(relaxed) <= peak_.load(relaxed)) [[likely]]
        return;
    uint64_t head = head_.load(relaxed);
    head_seen_.store(head, relaxed);
    uint64_t used = position + 1 - head;
    uint64_t peak = peak_.load(relaxed);
    while (peak < used && !peak_.compare_exchange_weak(peak, used, relaxed)) {
    }
}

bool Ring::TryRead(void *element) {
    unsigned patience = 0;
    for (;;) {
        Outcome result = TryTake(element, patience);
        if (result != Outcome::Again)
            return result == Outcome::Done;
    }
}

inline Ring::Outcome Ring::TryTake(void *element, unsigned &patience) {
    uint64_t head = head_.load(std::memory_order_acquire);
    auto [cell, lap] = PlaceOf(head, read_lap_);
    if (cell->state.load(std::memory_order_acquire) != 2 * lap + 1) [[unlikely]] {
        uint64_t tail = tail_.load(std::memory_order_acquire) >> 1;
        if (head_.load(std::memory_order_acquire) != head)
            return Outcome::Again;
        if (tail == head || (tail == head + 1 && BeingFilled(cell, lap)))
            return Outcome::Refused;
        LetOtherFinish(patience);
        return Outcome::Again;
    }
    if (!head_.compare_exchange_weak(head, head + 1, std::memory_order_acq_rel, relaxed))
        return Outcome::Again;
    CopyElement(element, cell->Element(), element_size_);
    cell->state.store(2 * (lap + depth_), std::memory_order_release);
    return Outcome::Done;
}

bool Ring::Read(void *element, uint32_t timeout_ms) {
    if (TryRead(element))
        return true;
    if (timeout_ms == 0)
        return false;
    /* About two microseconds: less than a sleep and a wake-up cost both sides. */
    for (int spin = 0; spin < 32; ++spin) {
        Pause();
        if (TryRead(element))
            return true;
    }
    Deadline deadline(timeout_ms);
    unsigned patience = 0;
    for (;;) {
        uint32_t wakes = wakes_.load(std::memory_order_acquire);
        if (PrepareSleep()) {
            if (FutexWait(&wakes_, wakes, deadline))
                NoteSlept();
            patience = 0;
        } else {
            LetOtherFinish(patience);
        }
        if (TryRead(element))
            return true;
        if (deadline.Passed())
            return false;
    }
}

/* Marks the tail, so that the next writer wakes the readers. False when there is an element or one on its way: its
 * writer has claimed already and may not have seen the mark. */
bool Ring::PrepareSleep() {
    uint64_t tail = tail_.fetch_or(SLEEPERS, std::memory_order_acq_rel);
    return tail >> 1 == head_.load(std::memory_order_acquire);
}

/* The claim of this writer took the mark away, so it wakes all sleepers; who finds nothing marks again. */
void Ring::WakeReaders() {
    wakes_.fetch_add(1, std::memory_order_release);
    FutexWakeAll(&wakes_);
}

} // namespace uvel::host
