/* How queries reach the model: each pins the published snapshot for as long as it reads, and waits for nobody.
 *
 *     Reading model;
 *     const MDL_IF_S *interface = model->interfaces.Get(7);
 *
 * A pin is an announcement in a slot that belongs to the thread: "I may hold what version n still showed". Whoever
 * publishes frees replaced blocks once no announcement is old enough to reach them. A reader that dawdles keeps memory
 * from being freed, nothing else. Pins nest.
 *
 * Announcing costs a plain store: the kernel (membarrier) makes the announcements of all threads known when a publisher
 * is about to free something. Where it cannot, readers order their accesses themselves. */
#ifndef UVEL_HOST_MODEL_READING_H
#define UVEL_HOST_MODEL_READING_H

#include "model/snapshot.h"
#include <atomic>
#include <cstdint>

namespace uvel::host::model {

/* What a thread announces; a slot outlives its thread and goes to a later one. */
struct alignas(64) ReaderSlot {
    std::atomic<uint64_t> version{0}; /* 0: reads nothing */
    bool fences = true;               /* what it announces is made known to publishers by the reader itself */
    std::atomic<bool> owned{false};
    ReaderSlot *next = nullptr;
};

/* What is published. The version says what readers may see; the other two are there before it and may be of the version
 * that follows. */
struct alignas(64) Published {
    std::atomic<const Snapshot *> snapshot;
    std::atomic<uint64_t> version;
    std::atomic<const NumberIndex::Places *> interfaces;
};

extern constinit Published g_published;
extern constinit thread_local ReaderSlot *t_slot __attribute__((tls_model("initial-exec")));

/* While there is one, what the versions from now on show is not freed. */
class Pin {
  public:
    Pin() : slot_(t_slot) {
        if (slot_ == nullptr) [[unlikely]]
            slot_ = TakeSlot();
        if (slot_ == nullptr) [[unlikely]] {
            AnnounceWithoutSlot();
            return;
        }
        outermost_ = slot_->version.load(std::memory_order_relaxed) == 0;
        if (!outermost_) [[unlikely]]
            return;
        /* The announcement and then the loads of what is published: a publisher sees the one, or the others see what it
         * published. Mostly publishers see to that themselves, and the compiler alone is to be told. */
        const uint64_t version = g_published.version.load(std::memory_order_relaxed);
        if (slot_->fences) [[unlikely]] {
            slot_->version.store(version, std::memory_order_seq_cst);
        } else {
            slot_->version.store(version, std::memory_order_release);
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
    }

    ~Pin() {
        if (slot_ == nullptr) [[unlikely]]
            WithdrawWithoutSlot();
        else if (outermost_) [[likely]]
            slot_->version.store(0, std::memory_order_release);
    }

    Pin(const Pin &) = delete;
    Pin &operator=(const Pin &) = delete;

  private:
    static ReaderSlot *TakeSlot();
    static void AnnounceWithoutSlot();
    static void WithdrawWithoutSlot();

    ReaderSlot *slot_;
    bool outermost_ = false;
};

/* The whole model as it was at one moment. */
class Reading {
  public:
    Reading() : snapshot_(g_published.snapshot.load(std::memory_order_seq_cst)) {
        if (snapshot_->version > g_published.version.load(std::memory_order_seq_cst)) [[unlikely]]
            snapshot_ = snapshot_->before;
    }

    const Snapshot *operator->() const { return snapshot_; }
    const Snapshot &operator*() const { return *snapshot_; }

  private:
    Pin pin_;
    const Snapshot *snapshot_;
};

/* One interface at one moment, without the snapshot around it: null when there is none. For questions about nothing
 * else, which are most. */
class OneInterface {
  public:
    explicit OneInterface(uint32_t if_index) {
        const uint64_t version = g_published.version.load(std::memory_order_seq_cst);
        const NumberIndex::Places *places = g_published.interfaces.load(std::memory_order_seq_cst);
        if (places == nullptr) [[unlikely]]
            return;
        const Link *shown = ShownBy(version, places->Newest(if_index));
        if (shown != nullptr) [[likely]]
            interface_ = &static_cast<const Node<MDL_IF_S> *>(shown)->value;
    }

    const MDL_IF_S *Get() const { return interface_; }

  private:
    Pin pin_;
    const MDL_IF_S *interface_ = nullptr;
};

/* Oldest version that a reader may hold; UINT64_MAX when nobody reads. */
uint64_t OldestVersionInUse();

} // namespace uvel::host::model

#endif
