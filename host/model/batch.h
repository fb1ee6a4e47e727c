/* A batch of changes on its way: the next snapshot, the memory of it and the notifications about it. */
#ifndef UVEL_HOST_MODEL_BATCH_H
#define UVEL_HOST_MODEL_BATCH_H

#include "model/notices.h"
#include "model/reading.h"
#include "model/snapshot.h"
#include <list>
#include <memory>
#include <new>
#include <vector>

namespace uvel::host::model {

/* Blocks that readers may still hold. */
struct Retired {
    uint64_t version = 0; /* last one whose readers do */
    std::vector<void *> blocks;
    std::unique_ptr<const Snapshot> snapshot;
};

} // namespace uvel::host::model

/* The feeders' view of it is opaque. */
struct MDL_BATCH {
    explicit MDL_BATCH(uint64_t id) : draft(id), retired(1) {}

    uvel::host::model::Draft draft;
    std::unique_ptr<uvel::host::model::Snapshot> next;
    std::unique_ptr<uvel::host::model::Notices> notices;
    std::list<uvel::host::model::Retired> retired; /* one entry, made beforehand: ending a batch needs no memory */
    uint32_t feeder = 0;
    uint32_t mark = 0;   /* of the feeder's last mark and sweep */
    bool broken = false; /* memory was short */
};

namespace uvel::host::model {

using Batch = MDL_BATCH;

/* The batch that the calling thread has open; null without one. */
const Batch *OpenBatch();

/* Runs a change of an open batch; 1 for a null batch and when memory is, or was, short. */
template <typename Function>
uint32_t Change(Batch *batch, Function &&change) noexcept {
    if (batch == nullptr || batch->broken)
        return 1;
    try {
        change();
        return UVELHOST_OK;
    } catch (const std::bad_alloc &) {
        batch->broken = true;
        return 1;
    }
}

/* The object as it was, or null. An equal one is only marked as seen: `changed` is then false. */
template <typename T>
struct Before {
    const T *old;
    bool changed;
};

/* What feeders look at in a node, packed so that giving a batch up can put it back. */
template <typename T>
void Stamp(void *node, const void *stamp) {
    const auto bits = reinterpret_cast<uintptr_t>(stamp);
    static_cast<Node<T> *>(node)->feeder = First(bits);
    static_cast<Node<T> *>(node)->mark = Second(bits);
}

template <typename T>
void MarkSeen(Batch &batch, const Node<T> *node) {
    if (node->feeder == batch.feeder && node->mark == batch.mark)
        return;
    batch.draft.UndoBy(Stamp<T>, const_cast<Node<T> *>(node),
                       reinterpret_cast<const void *>(Pair(node->feeder, node->mark)));
    node->feeder = batch.feeder;
    node->mark = batch.mark;
}

template <typename Key, typename T>
Before<T> Put(Batch &batch, Table<Key, T> &table, const Key &key, const T &value) {
    static_assert(std::has_unique_object_representations_v<T>, "equal records are equal byte by byte");
    const Node<T> *node = table.GetNode(key);
    if (node != nullptr && std::memcmp(&node->value, &value, sizeof value) == 0) {
        MarkSeen(batch, node);
        return {&node->value, false};
    }
    table.Set(batch.draft, key, value, batch.feeder, batch.mark);
    /* The node that was replaced is not freed before the batch ends. */
    return {node == nullptr ? nullptr : &node->value, true};
}

/* Lowest number from 0 on that is no key of the map. */
template <typename Map>
uint32_t LowestFree(const Map &map) {
    uint32_t next = 0;
    map.VisitFrom(0, [&](uint32_t key, const auto &) { return key == next && ++next != 0; });
    return next;
}

/* A copy of a text with nothing behind its terminator; false when it does not fit. */
template <std::size_t Size>
bool CopyText(char (&to)[Size], const char (&from)[Size]) {
    const std::size_t length = strnlen(from, Size);
    if (length == Size)
        return false;
    std::memcpy(to, from, length);
    std::memset(to + length, 0, Size - length);
    return true;
}

/* What goes with something that goes; each notifies. */
void RemoveIf(Batch &batch, uint32_t if_index);
void RemoveAddr4(Batch &batch, uint64_t key);
void RemoveAddr6(Batch &batch, const Addr6Key &key);
void RemoveVlan(Batch &batch, uint32_t vlan);
void PutPortVlans(Batch &batch, const MDL_PORT_VLANS_S &vlans);
void RemovePortVlans(Batch &batch, uint32_t port_index);
void RemoveTrunk(Batch &batch, uint32_t trunk_index);
void RemoveMember(Batch &batch, uint32_t if_index);
void RemoveVrf(Batch &batch, uint32_t vrf_index);
void RemoveVrrp(Batch &batch, uint64_t key);
void RemoveBoard(Batch &batch, uint32_t slot);
void RemoveRoute(Batch &batch, const RouteKey &key);

} // namespace uvel::host::model

#endif
