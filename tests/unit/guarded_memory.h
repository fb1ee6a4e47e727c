/* Blocks of the library that end where a page without access begins. */
#ifndef UVEL_TESTS_UNIT_GUARDED_MEMORY_H
#define UVEL_TESTS_UNIT_GUARDED_MEMORY_H

#include <algorithm>
#include <cstring>
#include <map>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "kit.h"

/* While it lives every block that the library allocates ends at a page without access, begins behind a page without
 * access and known bytes, and is gone once it is released. So whoever reads or writes behind a block, or a released
 * block, gets SIGSEGV, and a write before a block fails the test when the block is released. */
class GuardedMemory {
  public:
    GuardedMemory() {
        kit::Op<QAL_MemAlloc_F>().Does(
            [this](uint32_t, uint8_t, uint32_t size, const char *, uint32_t) { return Allocate(size); });
        kit::Op<QAL_MemFree_F>().Does([this](uint32_t, void *block, const char *, uint32_t) { return Release(block); });
    }

    ~GuardedMemory() {
        kit::Op<QAL_MemAlloc_F>().Does(nullptr);
        kit::Op<QAL_MemFree_F>().Does(nullptr);
        EXPECT_TRUE(blocks_.empty()) << blocks_.size() << " blocks lost";
    }

    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

    /* Bytes of the block that begins here; fails the test when none does. */
    std::size_t SizeOf(const void *block) const {
        const auto found = blocks_.find(block);
        EXPECT_NE(blocks_.end(), found) << "not a block";
        return found == blocks_.end() ? 0 : found->second;
    }

    std::size_t Blocks() const { return blocks_.size(); }

    /* The blocks that were released so far, in order. */
    const std::vector<const void *> &Released() const { return released_; }

  private:
    static constexpr uint8_t KNOWN = 0xA5;

    static std::size_t Page() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
    static std::size_t Room(std::size_t size) { return (size + Page()) / Page() * Page(); }

    void *Allocate(std::size_t size) {
        void *area = mmap(nullptr, Room(size) + 2 * Page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED)
            return nullptr;
        uint8_t *begin = static_cast<uint8_t *>(area) + Page();
        if (mprotect(begin, Room(size), PROT_READ | PROT_WRITE) != 0)
            return nullptr;
        std::memset(begin, KNOWN, Room(size));
        uint8_t *block = begin + Room(size) - size;
        blocks_[block] = size;
        return block;
    }

    uint32_t Release(void *block) {
        const auto found = blocks_.find(block);
        if (found == blocks_.end()) {
            ADD_FAILURE() << "released what is no block";
            return 1;
        }
        const std::size_t size = found->second;
        uint8_t *begin = static_cast<uint8_t *>(block) + size - Room(size);
        const auto same = [](uint8_t byte) { return byte == KNOWN; };
        EXPECT_TRUE(std::all_of(begin, static_cast<uint8_t *>(block), same)) << "written before a block";
        munmap(begin - Page(), Room(size) + 2 * Page());
        blocks_.erase(found);
        released_.push_back(block);
        return 0;
    }

    std::map<const void *, std::size_t> blocks_;
    std::vector<const void *> released_;
};

#endif
