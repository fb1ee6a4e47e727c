#include "os/counters.h"

#include <algorithm>
#include <mutex>
#include <pthread.h>
#include <sys/mman.h>

namespace uvel::host {

constinit thread_local Shard *t_shard __attribute__((tls_model("initial-exec"))) = nullptr;

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

struct Total {
    std::atomic<uint64_t> granted; /* these two count for threads that got no shard */
    std::atomic<uint64_t> released;
    std::atomic<int64_t> bytes;
    std::atomic<int64_t> peak_bytes;
};

Total g_totals[MAX_ACCOUNTS];
std::atomic<Shard *> g_shards{nullptr}; /* only ever grows, at the front */
std::mutex g_lock;                      /* ownership and growth of the list */
pthread_key_t g_exit_key;
bool g_exit_key_made = false;

void RaiseTo(std::atomic<int64_t> &peak, int64_t level) {
    int64_t seen = peak.load(relaxed);
    while (seen < level && !peak.compare_exchange_weak(seen, level, relaxed)) {
    }
}

/* Runs when a thread ends. A release in a later destructor of the same thread simply takes a shard again. */
void GiveBack(void *shard) {
    t_shard = nullptr;
    std::lock_guard lock(g_lock);
    static_cast<Shard *>(shard)->owned = false;
}

Shard *FindFree() {
    for (Shard *shard = g_shards.load(relaxed); shard != nullptr; shard = shard->next)
        if (!shard->owned)
            return shard;
    return nullptr;
}

/* Pages that are never counted in stay untouched, so a shard costs one or two pages in practice. */
Shard *Make() {
    void *memory = mmap(nullptr, sizeof(Shard), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    auto *shard = static_cast<Shard *>(memory);
    shard->next = g_shards.load(relaxed);
    g_shards.store(shard, std::memory_order_release);
    return shard;
}

Shard *TakeShard() {
    std::lock_guard lock(g_lock);
    if (!g_exit_key_made && pthread_key_create(&g_exit_key, GiveBack) != 0)
        return nullptr;
    g_exit_key_made = true;
    Shard *shard = FindFree();
    if (shard == nullptr)
        shard = Make();
    if (shard == nullptr || pthread_setspecific(g_exit_key, shard) != 0)
        return nullptr;
    shard->owned = true;
    t_shard = shard;
    return shard;
}

void PassOn(Total &total, ShardSlot &slot) {
    int64_t bytes = slot.bytes.load(relaxed);
    int64_t before = total.bytes.fetch_add(bytes, relaxed);
    RaiseTo(total.peak_bytes, before + slot.peak_bytes.load(relaxed));
    slot.bytes.store(0, relaxed);
    slot.peak_bytes.store(0, relaxed);
}

void CountWithoutShard(Total &total, bool granted, bool released, int64_t bytes) {
    total.granted.fetch_add(granted ? 1 : 0, relaxed);
    total.released.fetch_add(released ? 1 : 0, relaxed);
    RaiseTo(total.peak_bytes, total.bytes.fetch_add(bytes, relaxed) + bytes);
}

} // namespace

void Count(uint32_t account, bool granted, bool released, int64_t bytes) {
    Shard *shard = t_shard != nullptr ? t_shard : TakeShard();
    if (shard == nullptr)
        return CountWithoutShard(g_totals[account], granted, released, bytes);
    ShardSlot &slot = shard->slots[account];
    if (granted)
        Increment(slot.granted);
    if (released)
        Increment(slot.released);
    int64_t level = slot.bytes.load(relaxed) + bytes;
    slot.bytes.store(level, relaxed);
    if (level > slot.peak_bytes.load(relaxed))
        slot.peak_bytes.store(level, relaxed);
    if (level > SHARD_SLACK || level < -SHARD_SLACK)
        PassOn(g_totals[account], slot);
}

Level SumOf(uint32_t account) {
    Total &total = g_totals[account];
    /* what came back is read first, so that a block which comes and goes in between does not count as less than none */
    uint64_t released = total.released.load(relaxed);
    for (Shard *shard = g_shards.load(std::memory_order_acquire); shard != nullptr; shard = shard->next)
        released += shard->slots[account].released.load(std::memory_order_acquire);

    uint64_t granted = total.granted.load(relaxed);
    int64_t shared = total.bytes.load(relaxed);
    int64_t bytes = shared;
    int64_t peak = 0;
    for (Shard *shard = g_shards.load(std::memory_order_acquire); shard != nullptr; shard = shard->next) {
        ShardSlot &slot = shard->slots[account];
        granted += slot.granted.load(relaxed);
        bytes += slot.bytes.load(relaxed);
        peak = std::max(peak, shared + slot.peak_bytes.load(relaxed));
    }
    RaiseTo(total.peak_bytes, std::max(peak, bytes));
    return {granted, granted > released ? granted - released : 0, static_cast<uint64_t>(std::max<int64_t>(bytes, 0)),
            static_cast<uint64_t>(total.peak_bytes.load(relaxed))};
}

} // namespace uvel::host
