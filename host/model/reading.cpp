#include "model/reading.h"

#include <linux/membarrier.h>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

namespace uvel::host::model {

namespace {

constinit Snapshot g_empty;

constinit std::atomic<ReaderSlot *> g_slots = nullptr; /* grows only */

/* Readers without a slot: memory was short, or their thread is ending. While there is one, nothing is freed. */
constinit std::atomic<uint32_t> g_readers_without_slot = 0;

constinit thread_local bool t_ended = false; /* the thread has given its slot back for good */

/* Gives the thread's slot back when the thread ends. */
struct SlotOfThread {
    ~SlotOfThread() {
        t_ended = true;
        if (t_slot != nullptr)
            t_slot->owned.store(false, std::memory_order_release);
        t_slot = nullptr;
    }
};
thread_local SlotOfThread t_slot_of_thread;

ReaderSlot *ReuseSlot() {
    for (ReaderSlot *slot = g_slots.load(std::memory_order_acquire); slot != nullptr; slot = slot->next) {
        bool owned = false;
        if (slot->owned.compare_exchange_strong(owned, true, std::memory_order_acq_rel))
            return slot;
    }
    return nullptr;
}

bool Membarrier(int command) {
    return syscall(SYS_membarrier, command, 0, 0) == 0;
}

/* Whether publishers make announcements known; settled before the first of them. */
bool PublishersFence() {
    static const bool can = Membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);
    return can;
}

ReaderSlot *AddSlot() {
    auto *slot = new (std::nothrow) ReaderSlot;
    if (slot == nullptr)
        return nullptr;
    slot->fences = !PublishersFence();
    slot->owned.store(true, std::memory_order_relaxed);
    slot->next = g_slots.load(std::memory_order_relaxed);
    while (!g_slots.compare_exchange_weak(slot->next, slot, std::memory_order_seq_cst)) {
    }
    return slot;
}

} // namespace

constinit Published g_published = {&g_empty, 1, nullptr};
constinit thread_local ReaderSlot *t_slot __attribute__((tls_model("initial-exec"))) = nullptr;

ReaderSlot *Pin::TakeSlot() {
    if (t_ended)
        return nullptr;
    [[maybe_unused]] const SlotOfThread *ends_with_the_thread = &t_slot_of_thread;
    t_slot = ReuseSlot();
    if (t_slot == nullptr)
        t_slot = AddSlot();
    return t_slot;
}

void Pin::AnnounceWithoutSlot() {
    g_readers_without_slot.fetch_add(1, std::memory_order_seq_cst);
}

void Pin::WithdrawWithoutSlot() {
    g_readers_without_slot.fetch_sub(1, std::memory_order_release);
}

uint64_t OldestVersionInUse() {
    if (PublishersFence() && !Membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED))
        return 0; /* nobody knows: nothing is old enough */
    if (g_readers_without_slot.load(std::memory_order_seq_cst) != 0)
        return 0;
    uint64_t oldest = UINT64_MAX;
    for (const ReaderSlot *slot = g_slots.load(std::memory_order_seq_cst); slot != nullptr; slot = slot->next) {
        const uint64_t version = slot->version.load(std::memory_order_seq_cst);
        if (version != 0 && version < oldest)
            oldest = version;
    }
    return oldest;
}

} // namespace uvel::host::model
