/* The allocator below everything, without accounts. */
#ifndef UVEL_HOST_OS_RAW_MEMORY_H
#define UVEL_HOST_OS_RAW_MEMORY_H

#include <cstddef>
#include <cstdlib>
#ifdef UVELHOST_MIMALLOC
#include <mimalloc.h>
#endif

namespace uvel::host {

constexpr std::size_t CACHE_LINE = 64;

#ifdef UVELHOST_MIMALLOC
inline void *RawAllocate(std::size_t size) {
    return mi_malloc(size);
}
inline void *RawReallocate(void *block, std::size_t size) {
    return mi_realloc(block, size);
}
inline void RawRelease(void *block) {
    mi_free(block);
}
#else
inline void *RawAllocate(std::size_t size) {
    return std::malloc(size);
}
inline void *RawReallocate(void *block, std::size_t size) {
    return std::realloc(block, size);
}
inline void RawRelease(void *block) {
    std::free(block);
}
#endif

/* A block that begins and ends with a cache line; null when memory is short. */
inline void *RawAllocateLines(std::size_t size) {
    const std::size_t whole_lines = (size + CACHE_LINE - 1) / CACHE_LINE * CACHE_LINE;
#ifdef UVELHOST_MIMALLOC
    return mi_malloc_aligned(whole_lines, CACHE_LINE);
#else
    return std::aligned_alloc(CACHE_LINE, whole_lines);
#endif
}

} // namespace uvel::host

#endif
