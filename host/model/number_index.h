/* The newest state of objects by their numbers, for questions about one of many: what a number leads to lies in the two
 * cache lines of its place and of the object's head, and readers keep those however much else changes.
 *
 * Places are set in place, with the model's version saying from when on a reader sees it, and never emptied: an object
 * that was removed is followed by a mark of its removal. When half of the places are used they are made anew, and the
 * marks go. */
#ifndef UVEL_HOST_MODEL_NUMBER_INDEX_H
#define UVEL_HOST_MODEL_NUMBER_INDEX_H

#include "model/draft.h"
#include <atomic>
#include <cstdint>

namespace uvel::host::model {

/* Head of the state that an object has since one version. The newest one hangs in the object's place; who reads an
 * older version meets that one too and goes on to the state before it. */
struct Link {
    uint64_t since;     /* first version that shows it */
    const Link *before; /* what the versions before show; followed by their readers only */
    uint32_t number;    /* in an index by number */
    bool gone;          /* mark of a removal: nothing follows the head */
};

/* What a version shows of the states that begin with the newest one; null for nothing. */
inline const Link *ShownBy(uint64_t version, const Link *newest) {
    while (newest != nullptr && newest->since > version)
        [[unlikely]] newest = newest->before;
    return newest == nullptr || newest->gone ? nullptr : newest;
}

class NumberIndex {
  public:
    /* A power of two of places; a number's state is in the first place from its own on that leads to it. */
    struct Places {
        uint32_t shift;
        uint32_t count;
        alignas(CACHE_LINE) std::atomic<const Link *> first[1]; /* more follow */

        const Link *Newest(uint32_t number) const {
            for (uint32_t place = number * 0x9E3779B1U >> shift;; ++place) {
                const Link *link = first[place & (count - 1)].load(std::memory_order_acquire);
                if (link == nullptr || link->number == number) [[likely]]
                    return link;
            }
        }
    };

    /* Null while nothing was ever put. */
    const Places *Current() const { return places_; }

    const Link *Newest(uint32_t number) const { return places_ == nullptr ? nullptr : places_->Newest(number); }

    /* Makes `link` the newest state of its number. What it takes the place of is retired. */
    void Put(Draft &draft, const Link *link);

  private:
    std::atomic<const Link *> &PlaceOf(uint32_t number);
    void MakeRoom(Draft &draft, uint64_t version);

    Places *places_ = nullptr; /* shared with the snapshots before, back to when they were made */
    uint32_t used_ = 0;
};

} // namespace uvel::host::model

#endif
