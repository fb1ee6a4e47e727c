/* Counts per place in the source, without locks and without memory of its own. */
#ifndef UVEL_HOST_OS_PLACES_H
#define UVEL_HOST_OS_PLACES_H

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace uvel::host {

/* A place is a source text and a line; a 64-bit digest of both stands for it, so nothing of the caller's text is kept.
 * Places beyond the capacity are counted together. Any thread and any signal handler may call. */
template <std::size_t Capacity>
class PlaceTable {
  public:
    struct Result {
        uint64_t count; /* at this place, this time included; of all places without an entry when `known` is false */
        bool known;
    };

    Result Count(const char *source, uint32_t line) {
        total_.fetch_add(1, std::memory_order_relaxed);
        Entry *entry = Find(Digest(source, line), true);
        std::atomic<uint64_t> &counter = entry != nullptr ? entry->count : overflow_;
        return {counter.fetch_add(1, std::memory_order_relaxed) + 1, entry != nullptr};
    }

    uint64_t Total() const { return total_.load(std::memory_order_relaxed); }

    uint64_t CountAt(const char *source, uint32_t line) {
        const Entry *entry = Find(Digest(source, line), false);
        return entry == nullptr ? 0 : entry->count.load(std::memory_order_relaxed);
    }

  private:
    struct Entry {
        std::atomic<uint64_t> digest; /* 0: not taken */
        std::atomic<uint64_t> count;
    };

    static uint64_t Digest(const char *source, uint32_t line) {
        uint64_t h = 0xCBF29CE484222325U;
        for (; *source != '\0'; ++source)
            h = (h ^ static_cast<unsigned char>(*source)) * 0x100000001B3U;
        h = (h ^ line) * 0x9E3779B97F4A7C15U;
        h ^= h >> 29;
        return h == 0 ? 1 : h;
    }

    Entry *Find(uint64_t digest, bool insert) {
        for (std::size_t step = 0; step < Capacity; ++step) {
            Entry &entry = entries_[(digest + step) % Capacity];
            uint64_t found = entry.digest.load(std::memory_order_relaxed);
            if (found == 0) {
                if (!insert)
                    return nullptr;
                if (entry.digest.compare_exchange_strong(found, digest, std::memory_order_relaxed))
                    return &entry;
            }
            if (found == digest)
                return &entry;
        }
        return nullptr;
    }

    Entry entries_[Capacity] = {};
    std::atomic<uint64_t> overflow_{0};
    std::atomic<uint64_t> total_{0};
};

/* Writes one line "<what>: <source>:<line>" to standard error in one system call; usable in a signal handler. */
void ReportLine(const char *what, const char *source, uint32_t line);

} // namespace uvel::host

#endif
