/* Batches from begin to end, mark and sweep, and giving replaced memory back. */
#include "model/batch.h"

#include <map>
#include <mutex>

using namespace uvel::host;
using namespace uvel::host::model;

namespace {

constinit std::mutex g_writer; /* held while a batch is open; guards everything below */
constinit thread_local Batch *t_open = nullptr;
uint64_t g_last_draft = 0;

/* Never destroyed: threads may change the model while the process ends. In ascending order of the versions. */
std::list<Retired> &RetiredBlocks() {
    static auto *const retired = new std::list<Retired>;
    return *retired;
}

/* Of the feeders, the mark of their last mark and sweep. An open batch's feeder is there. */
std::map<uint32_t, uint32_t> &Marks() {
    static auto *const marks = new std::map<uint32_t, uint32_t>;
    return *marks;
}

/* Frees what nobody can read any more. Not after every batch: a look at what readers announce takes the announcement
 * out of their caches. */
void Reclaim() {
    constexpr std::size_t MANY_BATCHES = 64, MANY_BLOCKS = 4096;
    auto &retired = RetiredBlocks();
    if (retired.size() < MANY_BATCHES && retired.back().blocks.size() < MANY_BLOCKS)
        return;
    const uint64_t oldest = OldestVersionInUse();
    while (!retired.empty() && retired.front().version < oldest) {
        for (void *block : retired.front().blocks)
            RawRelease(block);
        retired.pop_front();
    }
}

void Publish(Batch &batch, Retired &retired) {
    const Snapshot *old = g_published.snapshot.load(std::memory_order_relaxed);
    const uint64_t version = batch.next->version;
    retired.blocks = batch.draft.Publish();
    batch.next->before = old;
    Marks().find(batch.feeder)->second = batch.mark;
    if (old->version != 1) /* the first one is static */
        retired.snapshot.reset(old);
    /* Readers go by the version; until it is there the new snapshot leads them to the one before. */
    g_published.interfaces.store(batch.next->interfaces.Numbers().Current(), std::memory_order_seq_cst);
    g_published.snapshot.store(batch.next.release(), std::memory_order_seq_cst);
    g_published.version.store(version, std::memory_order_seq_cst);
    Enqueue(batch.notices.release());
}

void End(Batch *batch, bool publish) {
    Retired &retired = batch->retired.front();
    retired.version = g_published.version.load(std::memory_order_relaxed);
    if (publish)
        Publish(*batch, retired);
    else
        retired.blocks = batch->draft.GiveUp();
    RetiredBlocks().splice(RetiredBlocks().end(), batch->retired);
    delete batch;
    Reclaim();
    t_open = nullptr;
    g_writer.unlock();
}

/* Keys of the objects that a sweep takes. They are collected first: removing changes what is walked. */
template <typename Key, typename T, typename Take>
std::vector<Key> Select(const Table<Key, T> &table, Take &&take) {
    std::vector<Key> keys;
    table.VisitFrom(Key{}, [&](const Key &key, const auto &node) {
        if (take(node.feeder, node.mark))
            keys.push_back(key);
        return true;
    });
    return keys;
}

/* What hangs on others goes before them. */
template <typename Take>
void RemoveWhere(Batch &batch, Take &&take) {
    Snapshot &next = *batch.next;
    for (const RouteKey &key : Select(next.routes, take))
        RemoveRoute(batch, key);
    for (uint64_t key : Select(next.vrrp, take))
        RemoveVrrp(batch, key);
    for (uint64_t key : Select(next.addr4, take))
        RemoveAddr4(batch, key);
    for (const Addr6Key &key : Select(next.addr6, take))
        RemoveAddr6(batch, key);
    for (uint32_t if_index : Select(next.members, take))
        RemoveMember(batch, if_index);
    for (uint32_t port : Select(next.port_vlans, take))
        RemovePortVlans(batch, port);
    for (uint32_t trunk : Select(next.trunks, take))
        RemoveTrunk(batch, trunk);
    for (uint32_t vlan : Select(next.vlans, take))
        RemoveVlan(batch, vlan);
    for (uint32_t if_index : Select(next.interfaces, take))
        RemoveIf(batch, if_index);
    for (uint32_t vrf : Select(next.vrfs, take))
        RemoveVrf(batch, vrf);
    for (uint32_t slot : Select(next.boards, take))
        RemoveBoard(batch, slot);
}

} // namespace

const Batch *uvel::host::model::OpenBatch() {
    return t_open;
}

MDL_BATCH *MDL_Begin(uint32_t ulFeeder, uint32_t ulUserId) {
    if (t_open != nullptr)
        return nullptr;
    g_writer.lock();
    try {
        auto batch = std::make_unique<Batch>(g_last_draft + 1);
        batch->next = std::make_unique<Snapshot>(*g_published.snapshot.load(std::memory_order_relaxed));
        batch->next->SetVersion(batch->next->version + 1);
        RetiredBlocks();
        batch->notices = std::make_unique<Notices>();
        batch->notices->user = ulUserId;
        batch->feeder = ulFeeder;
        batch->mark = Marks()[ulFeeder];
        ++g_last_draft;
        t_open = batch.release();
        return t_open;
    } catch (const std::bad_alloc &) {
        g_writer.unlock();
        return nullptr;
    }
}

uint32_t MDL_Commit(MDL_BATCH *pstBatch) {
    if (pstBatch == nullptr || pstBatch != t_open)
        return 1;
    const bool publish = !pstBatch->broken;
    if (publish)
        pstBatch->notices->Seal();
    End(pstBatch, publish);
    return publish ? UVELHOST_OK : 1;
}

void MDL_Abort(MDL_BATCH *pstBatch) {
    if (pstBatch != nullptr && pstBatch == t_open)
        End(pstBatch, false);
}

uint32_t MDL_MarkAll(MDL_BATCH *pstBatch) {
    return Change(pstBatch, [&] { pstBatch->mark = Marks()[pstBatch->feeder] + 1; });
}

uint32_t MDL_Sweep(MDL_BATCH *pstBatch) {
    return Change(pstBatch, [&] {
        RemoveWhere(*pstBatch, [&](uint32_t feeder, uint32_t mark) {
            return feeder == pstBatch->feeder && mark != pstBatch->mark;
        });
    });
}

uint32_t MDL_RemoveAll(MDL_BATCH *pstBatch) {
    return Change(pstBatch, [&] {
        RemoveWhere(*pstBatch, [](uint32_t, uint32_t) { return true; });
        pstBatch->next->device = Snapshot().device;
    });
}
