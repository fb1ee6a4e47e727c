/* The memory functions of libxml2, counted and made to fail. Threads other than the test's must not use libxml2. */
#ifndef UVEL_TESTS_UNIT_XML_MEMORY_H
#define UVEL_TESTS_UNIT_XML_MEMORY_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <libxml/parser.h>
#include <libxml/xmlmemory.h>
#include <unordered_map>
#include <utility>

/* Stands between libxml2 and malloc while it lives. What libxml2 has not freed by then is freed with it: short of
 * memory it loses blocks by itself. */
class XmlMemory {
  public:
    /* With `refuses`, every allocation that it answers with true fails. */
    explicit XmlMemory(std::function<bool()> refuses = {}) {
        xmlInitParser(); /* what that allocates stays */
        xmlResetLastError();
        Get() = State{};
        Get().refuses = std::move(refuses);
        xmlMemSetup(Free, Malloc, Realloc, Strdup);
    }
    ~XmlMemory() {
        xmlResetLastError();
        xmlMemSetup(std::free, std::malloc, std::realloc, ::strdup);
        for (const auto &[block, size] : Get().blocks)
            std::free(block);
    }
    XmlMemory(const XmlMemory &) = delete;
    XmlMemory &operator=(const XmlMemory &) = delete;

    /* The n-th allocation from now fails (1 is the next), and with `forever` every later one. */
    static void FailOn(uint64_t n, bool forever) {
        Get().asked = 0;
        Get().fail = n;
        Get().forever = forever;
    }

    /* Ends that; true when an allocation failed. */
    static bool FailNoMore() {
        const bool failed = Get().fail != 0 && Get().asked >= Get().fail;
        Get().fail = 0;
        return failed;
    }

    /* Blocks that were allocated and not freed. */
    static std::size_t Live() {
        xmlResetLastError();
        return Get().blocks.size();
    }

    /* Most bytes that were allocated at a time. */
    static std::size_t Peak() { return Get().peak; }

  private:
    struct State {
        uint64_t asked = 0;
        uint64_t fail = 0;
        bool forever = false;
        std::function<bool()> refuses;
        std::unordered_map<void *, std::size_t> blocks;
        std::size_t bytes = 0;
        std::size_t peak = 0;
    };

    static State &Get() {
        static State state;
        return state;
    }

    static bool MayAllocate() {
        State &state = Get();
        ++state.asked;
        if (state.refuses && state.refuses())
            return false;
        return state.fail == 0 || state.asked < state.fail || (state.asked > state.fail && !state.forever);
    }

    static void *Malloc(std::size_t size) {
        void *block = MayAllocate() ? std::malloc(size) : nullptr;
        if (block != nullptr) {
            State &state = Get();
            state.blocks[block] = size;
            state.bytes += size;
            state.peak = std::max(state.peak, state.bytes);
        }
        return block;
    }
    static void Free(void *block) {
        State &state = Get();
        if (const auto found = state.blocks.find(block); found != state.blocks.end()) {
            state.bytes -= found->second;
            state.blocks.erase(found);
        }
        std::free(block);
    }
    static void *Realloc(void *block, std::size_t size) {
        void *moved = Malloc(size);
        if (moved == nullptr || block == nullptr)
            return moved;
        const auto found = Get().blocks.find(block);
        if (found == Get().blocks.end())
            std::abort(); /* a block of before our time has no known size */
        std::memcpy(moved, block, std::min(size, found->second));
        Free(block);
        return moved;
    }
    static char *Strdup(const char *text) {
        const std::size_t size = std::strlen(text) + 1;
        void *copy = Malloc(size);
        return copy == nullptr ? nullptr : static_cast<char *>(std::memcpy(copy, text, size));
    }
};

#endif
