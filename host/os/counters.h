/* Levels of the memory accounts, kept so that counting costs an allocation next to nothing.
 *
 * Every thread counts in a shard of its own with plain loads and stores; a query adds the shards up. A shard outlives
 * its thread and goes to a later one with its contents, so nothing is ever lost or moved.
 *
 * Bytes additionally pass into a total that all threads share, whenever what a thread has not passed on yet exceeds
 * SHARD_SLACK in either direction. The highest level is taken there: it is exact for an account that one thread uses,
 * and with several threads off by at most SHARD_SLACK for each of them. */
#ifndef UVEL_HOST_OS_COUNTERS_H
#define UVEL_HOST_OS_COUNTERS_H

#include <atomic>
#include <cstdint>

namespace uvel::host {

constexpr uint32_t MAX_ACCOUNTS = 1024;
constexpr int64_t SHARD_SLACK = 16 * 1024;

struct Level {
    uint64_t granted;
    uint64_t blocks;
    uint64_t bytes;
    uint64_t peak_bytes;
};

/* What one thread counted for one account. */
struct ShardSlot {
    std::atomic<uint64_t> granted;
    std::atomic<uint64_t> released;
    std::atomic<int64_t> bytes;      /* not yet passed to the total */
    std::atomic<int64_t> peak_bytes; /* highest `bytes` since they were passed on last */
};

struct Shard {
    ShardSlot slots[MAX_ACCOUNTS];
    Shard *next;
    bool owned;
};

/* The calling thread's shard; null before its first call, and when there was no memory for one. */
extern constinit thread_local Shard *t_shard __attribute__((tls_model("initial-exec")));

/* A block was granted, released or both (resized), which changed the level by `bytes`. */
void Count(uint32_t account, bool granted, bool released, int64_t bytes);

inline void Increment(std::atomic<uint64_t> &own_counter) {
    own_counter.store(own_counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

/* The common case of Count for a granted block; false when it is not the common case and nothing was counted. */
inline bool CountGrantedFast(uint32_t account, uint32_t size) {
    Shard *shard = t_shard;
    if (shard == nullptr) [[unlikely]]
        return false;
    ShardSlot &slot = shard->slots[account];
    int64_t level = slot.bytes.load(std::memory_order_relaxed) + size;
    if (level > slot.peak_bytes.load(std::memory_order_relaxed)) [[unlikely]]
        return false;
    slot.bytes.store(level, std::memory_order_relaxed);
    Increment(slot.granted);
    return true;
}

/* The same for a released one. */
inline bool CountReleasedFast(uint32_t account, uint32_t size) {
    Shard *shard = t_shard;
    if (shard == nullptr) [[unlikely]]
        return false;
    ShardSlot &slot = shard->slots[account];
    int64_t level = slot.bytes.load(std::memory_order_relaxed) - size;
    if (level < -SHARD_SLACK) [[unlikely]]
        return false;
    slot.bytes.store(level, std::memory_order_relaxed);
    Increment(slot.released);
    return true;
}

/* Sum over all threads. A query during traffic may see an allocation and not yet the release before it. */
Level SumOf(uint32_t account);

} // namespace uvel::host

#endif
