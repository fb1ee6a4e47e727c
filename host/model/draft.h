/* Memory of one change: blocks that it made, which go when it is given up, blocks that it replaced, which go when it has
 * been published, and how to undo what it did in place. Either way blocks go only when no reader can hold them. */
#ifndef UVEL_HOST_MODEL_DRAFT_H
#define UVEL_HOST_MODEL_DRAFT_H

#include "os/raw_memory.h"
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace uvel::host::model {

class Draft {
  public:
    /* `id` is never 0 and differs from that of every other draft: a block that bears it is not published yet. */
    explicit Draft(uint64_t id) : id_(id) {}

    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    uint64_t Id() const { return id_; }

    /* All three throw std::bad_alloc when memory is short; the draft can only be given up then. A block shares no cache
     * line with another one, so that readers miss what changes and nothing else. */
    void *Allocate(std::size_t size) {
        made_.push_back(nullptr);
        made_.back() = RawAllocateLines(size);
        if (made_.back() == nullptr)
            throw std::bad_alloc();
        return made_.back();
    }

    void Retire(const void *block) { replaced_.push_back(const_cast<void *>(block)); }

    /* Giving the draft up calls undo(place, old), the last one first. */
    void UndoBy(void (*undo)(void *, const void *), void *place, const void *old) {
        undo_.push_back({undo, place, old});
    }

    /* Published: what was made stays. Answers the blocks that it replaced. */
    std::vector<void *> Publish() {
        made_.clear();
        return std::move(replaced_);
    }

    /* Given up: what was replaced is back in its place. Answers the blocks that it made. */
    std::vector<void *> GiveUp() {
        for (auto step = undo_.rbegin(); step != undo_.rend(); ++step)
            step->undo(step->place, step->old);
        return std::move(made_);
    }

  private:
    const uint64_t id_;
    std::vector<void *> made_;
    std::vector<void *> replaced_;

    struct Undo {
        void (*undo)(void *, const void *);
        void *place;
        const void *old;
    };
    std::vector<Undo> undo_;
};

} // namespace uvel::host::model

#endif
