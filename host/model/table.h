/* Objects by key, of which every published state stays as it is. A change of an object copies nothing but the object, so
 * that readers keep the map in their caches however often objects change; adding and removing change the map. */
#ifndef UVEL_HOST_MODEL_TABLE_H
#define UVEL_HOST_MODEL_TABLE_H

#include "model/number_index.h"
#include "model/sorted_map.h"
#include <atomic>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace uvel::host::model {

/* The state of an object since one version. */
template <typename T>
struct alignas(CACHE_LINE) Node : Link {
    T value;
    mutable uint32_t feeder; /* this and the mark are looked at by feeders only, under their lock */
    mutable uint32_t mark;
};

/* Objects with numbers for keys are found by an index of those, others by their order. */
template <typename Key, typename T>
class Table {
    static constexpr bool NUMBERED = std::same_as<Key, uint32_t>;

  public:
    const T *Get(const Key &key) const {
        const Node<T> *node = GetNode(key);
        return node == nullptr ? nullptr : &node->value;
    }

    const Node<T> *GetNode(const Key &key) const {
        if constexpr (NUMBERED) {
            return Shown(numbers_.Newest(key));
        } else {
            const Place *place = map_.Find(key);
            return place == nullptr ? nullptr : ShownAt(*place);
        }
    }

    uint32_t Size() const { return map_.Size(); }

    /* visit(key, const Node<T> &) answers whether to go on. */
    template <typename Visit>
    void VisitFrom(const Key &from, Visit &&visit) const {
        map_.VisitFrom(from, [&](const Key &key, const Place &place) { return visit(key, *ShownAt(place)); });
    }

    void Set(Draft &draft, const Key &key, const T &value, uint32_t feeder, uint32_t mark) {
        const Place *place = map_.Find(key);
        const Link *old = place == nullptr ? nullptr : *place;
        if constexpr (NUMBERED)
            old = numbers_.Newest(key);
        const auto *node = new (draft.Allocate(sizeof(Node<T>))) Node<T>{After(old, key, false), value, feeder, mark};
        if constexpr (NUMBERED)
            numbers_.Put(draft, node);
        else if (old != nullptr)
            draft.Retire(old);
        if (place == nullptr) {
            map_.Set(draft, key, node);
            return;
        }
        draft.UndoBy(Put, const_cast<Place *>(place), *place);
        Put(const_cast<Place *>(place), node);
    }

    void Erase(Draft &draft, const Key &key) {
        const Place *place = map_.Find(key);
        if (place == nullptr)
            return;
        if constexpr (NUMBERED)
            numbers_.Put(draft, new (draft.Allocate(sizeof(Link))) Link(After(*place, key, true)));
        else
            draft.Retire(*place);
        map_.Erase(draft, key);
    }

    /* Whose nodes are shown, and since when those that are put from now on. */
    void SetVersion(uint64_t version) { version_ = version; }

    const NumberIndex &Numbers() const requires NUMBERED { return numbers_; }

  private:
    using Place = const Link *;
    struct NoNumbers {};

    static void Put(void *place, const void *link) {
        std::atomic_ref(*static_cast<Place *>(place)).store(static_cast<Place>(link), std::memory_order_release);
    }

    /* The head of what follows the state `old`. */
    Link After(const Link *old, const Key &key, bool gone) const {
        const Link *shown = old != nullptr && old->since == version_ ? old->before : old;
        Link head = {version_, shown, 0, gone};
        if constexpr (NUMBERED)
            head.number = key;
        return head;
    }

    const Node<T> *Shown(const Link *newest) const { return static_cast<const Node<T> *>(ShownBy(version_, newest)); }

    const Node<T> *ShownAt(const Place &place) const {
        return Shown(std::atomic_ref(const_cast<Place &>(place)).load(std::memory_order_acquire));
    }

    SortedMap<Key, Place> map_;
    [[no_unique_address]] std::conditional_t<NUMBERED, NumberIndex, NoNumbers> numbers_;
    uint64_t version_ = 1;
};

} // namespace uvel::host::model

#endif
