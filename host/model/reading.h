/* How queries reach the model: each pins the published snapshot for as long as it reads, and waits for nobody.
 *
 *     Reading model;
 *     const MDL_IF_S *interface = model->interfaces.Get(7);
 *
 * A pin is an announcement in a slot that belongs to the thread: "I may hold what version n still showed". Whoever
 * publishes frees replaced blocks once no announcement is old enough to reach them. A reader that dawdles keeps memory
 * from being freed, nothing else. Pins nest. */
#ifndef UVEL_HOST_MODEL_READING_H
#define UVEL_HOST_MODEL_READING_H

#include "model/snapshot.h"
#include <atomic>
#include <cstdint>

namespace uvel::host::model {

/* What a thread announces; a slot outlives its thread and goes to a later one. */
struct alignas(64) ReaderSlot {
    std::atomic<uint64_t> version{0}; /* 0: reads nothing */
    uint32_t depth = 0;
    std::atomic<bool> owned{false};
    ReaderSlot *next = nullptr;
};

struct alignas(64) Published {
    std::atomic<const Snapshot *> snapshot;
    std::atomic<uint64_t> version; /* of that snapshot or, for a moment, of the one before */
};

extern constinit Published g_published;
extern constinit thread_local ReaderSlot *t_slot __attribute__((tls_model("initial-exec")));

class Reading {
  public:
    Reading() : slot_(t_slot) {
        if (slot_ == nullptr) [[unlikely]]
            slot_ = TakeSlot();
        if (slot_ == nullptr) [[unlikely]]
            AnnounceWithoutSlot();
        else if (slot_->depth++ == 0)
            /* In one order with the loads below and with what a publisher does: either it sees this announcement, or
             * this thread sees its snapshot. */
            slot_->version.store(g_published.version.load(std::memory_order_relaxed), std::memory_order_seq_cst);
        snapshot_ = g_published.snapshot.load(std::memory_order_seq_cst);
    }

    ~Reading() {
        if (slot_ == nullptr) [[unlikely]]
            WithdrawWithoutSlot();
        else if (--slot_->depth == 0)
            slot_->version.store(0, std::memory_order_release);
    }

    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    const Snapshot *operator->() const { return snapshot_; }
    const Snapshot &operator*() const { return *snapshot_; }

  private:
    static ReaderSlot *TakeSlot();
    static void AnnounceWithoutSlot();
    static void WithdrawWithoutSlot();

    ReaderSlot *slot_;
    const Snapshot *snapshot_;
};

/* Oldest version that a reader may hold; UINT64_MAX when nobody reads. */
uint64_t OldestVersionInUse();

} // namespace uvel::host::model

#endif
