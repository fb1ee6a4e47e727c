/* A naive model of the sorted tables: a sorted vector and a cursor, told the rules in the plainest words. */
#ifndef UVEL_TESTS_UNIT_SORTED_MODEL_H
#define UVEL_TESTS_UNIT_SORTED_MODEL_H

#include <algorithm>
#include <cstdint>
#include <vector>

/* IdOf gives the key of an item. */
template <typename Item, uint32_t (*IdOf)(const Item &)>
class SortedModel {
  public:
    static constexpr uint32_t NONE = 0xFFFFFFFF;

    explicit SortedModel(uint32_t spec) : spec_(spec) {}

    std::vector<Item> items;
    uint32_t cursor = NONE;

    uint32_t Count() const { return static_cast<uint32_t>(items.size()); }

    uint32_t FirstAbove(uint32_t id) const {
        uint32_t index = 0;
        while (index < Count() && IdOf(items[index]) <= id)
            ++index;
        return index;
    }

    /* Position of the greatest item not above the id, 0 when all are above it. */
    uint32_t Nearest(uint32_t id) const { return FirstAbove(id) == 0 ? 0 : FirstAbove(id) - 1; }

    bool Has(uint32_t id) const { return Count() != 0 && IdOf(items[Nearest(id)]) == id; }

    uint32_t Add(const Item &item, bool memory) {
        const uint32_t id = IdOf(item);
        const uint32_t place = FirstAbove(id);
        const uint32_t before = cursor;
        if (Count() != 0)
            cursor = Has(id) ? place - 1 : place;
        if (Has(id))
            return 4;
        if (Count() >= spec_)
            return 3;
        if (!memory) {
            cursor = before;
            return 2;
        }
        items.insert(items.begin() + place, item);
        cursor = place;
        return 0;
    }

    void RemoveAll() {
        if (Count() != 0)
            cursor = NONE;
        items.clear();
    }

    /* The moves give the position of the item that they end on, NONE when they end on none. */
    uint32_t GoTo(uint32_t index) {
        if (Count() == 0)
            return NONE;
        cursor = index;
        return cursor < Count() ? cursor : NONE;
    }

    uint32_t Next() {
        if (cursor == NONE && Count() != 0)
            return GoTo(0);
        if (cursor < Count() && cursor + 1 < Count())
            return GoTo(cursor + 1);
        cursor = Count();
        return NONE;
    }

    uint32_t Previous() {
        if (cursor >= Count())
            return NONE;
        cursor = cursor == 0 ? NONE : cursor - 1;
        return cursor;
    }

  private:
    uint32_t spec_;
};

/* Counts for tests of the searches: all small ones, and those around the count from which on they fetch ahead. */
inline std::vector<uint32_t> SearchedCounts(uint32_t small) {
    std::vector<uint32_t> counts(small);
    for (uint32_t i = 0; i < small; ++i)
        counts[i] = i + 1;
    counts.insert(counts.end(), {511, 512, 513, 1025});
    return counts;
}

/* What a search for the key looks at in ascending ids: lo, hi and the middle between them. */
inline std::vector<uint32_t> ProbesOf(const std::vector<uint32_t> &ids, uint32_t key) {
    std::vector<uint32_t> probes;
    uint32_t lo = 0;
    uint32_t hi = static_cast<uint32_t>(ids.size());
    uint32_t mid = hi / 2;
    while (true) {
        probes.push_back(ids[mid]);
        if (ids[mid] == key)
            return probes;
        (ids[mid] > key ? hi : lo) = mid;
        if ((lo + hi) / 2 == mid)
            return probes;
        mid = (lo + hi) / 2;
    }
}

#endif
