/* Memory of one change: blocks it made, which go when it is given up, and blocks it replaced, which go when it has been
 * published and no reader can hold them any more. */
#ifndef UVEL_HOST_MODEL_DRAFT_H
#define UVEL_HOST_MODEL_DRAFT_H

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

    ~Draft() {
        for (void *block : made_)
            ::operator delete(block);
    }

    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    uint64_t Id() const { return id_; }

    /* Both throw std::bad_alloc when memory is short; the draft can only be given up then. */
    void *Allocate(std::size_t size) {
        made_.push_back(nullptr);
        made_.back() = ::operator new(size);
        return made_.back();
    }

    void Retire(const void *block) { replaced_.push_back(const_cast<void *>(block)); }

    /* Published: keeps what was made and hands over what was replaced. */
    std::vector<void *> Publish() {
        made_.clear();
        return std::move(replaced_);
    }

  private:
    const uint64_t id_;
    std::vector<void *> made_;
    std::vector<void *> replaced_;
};

} // namespace uvel::host::model

#endif
