/* The link's counters: the fields of YSB_LINK_COUNTERS_S that are counted up, readable while they are. */
#ifndef UVEL_HOST_STANDBY_COUNTERS_H
#define UVEL_HOST_STANDBY_COUNTERS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <uvelhost/standby_link.h>

namespace uvel::host::standby {

class Counters {
  public:
    using Field = uint64_t YSB_LINK_COUNTERS_S::*;

    void Add(Field field, uint64_t by = 1) { At(field).fetch_add(by, std::memory_order_relaxed); }
    /* For a field that only one thread, or who holds one lock, counts. */
    void AddAlone(Field field, uint64_t by = 1) {
        std::atomic_ref<uint64_t> value = At(field);
        value.store(value.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
    }
    void AddRefused(uint32_t reason) { Add(values_.aulRefused[reason < YSB_LINK_REFUSALS ? reason : 0]); }
    void AddRefusedBy(uint32_t reason) { Add(values_.aulRefusedBy[reason < YSB_LINK_REFUSALS ? reason : 0]); }

    YSB_LINK_COUNTERS_S Copy() {
        static_assert(sizeof values_ % sizeof(uint64_t) == 0);
        YSB_LINK_COUNTERS_S copy;
        auto *from = reinterpret_cast<uint64_t *>(&values_);
        auto *to = reinterpret_cast<uint64_t *>(&copy);
        for (std::size_t i = 0; i < sizeof values_ / sizeof(uint64_t); ++i)
            to[i] = std::atomic_ref(from[i]).load(std::memory_order_relaxed);
        return copy;
    }

  private:
    std::atomic_ref<uint64_t> At(Field field) { return std::atomic_ref(values_.*field); }
    static void Add(uint64_t &value) { std::atomic_ref(value).fetch_add(1, std::memory_order_relaxed); }

    YSB_LINK_COUNTERS_S values_{};
};

} // namespace uvel::host::standby

#endif
