#include <securec.h>

#include <cstdint>
#include <cstring>

/* 0 wraps to the largest size: one comparison for both ends. */
static bool IsGoodRoom(size_t destMax) {
    return destMax - 1 < SECUREC_MEM_MAX_LEN;
}

static size_t Distance(const void *a, const void *b) {
    auto first = reinterpret_cast<uintptr_t>(a);
    auto second = reinterpret_cast<uintptr_t>(b);
    return first < second ? second - first : first - second;
}

/* The checks that both copies share, out of the way of the call that succeeds. */
[[gnu::cold, gnu::noinline]] static errno_t RefuseCopy(void *dest, size_t destMax, const void *src) {
    if (!IsGoodRoom(destMax))
        return ERANGE;
    if (dest == nullptr)
        return EINVAL;
    memset(dest, 0, destMax);
    return src == nullptr ? EINVAL_AND_RESET : ERANGE_AND_RESET;
}

[[gnu::cold, gnu::noinline]] static errno_t RefuseOverlap(void *dest, size_t destMax, const void *src) {
    if (dest == src)
        return EOK; /* the bytes stand where they belong */
    memset(dest, 0, destMax);
    return EOVERLAP_AND_RESET;
}

errno_t memcpy_s(void *dest, size_t destMax, const void *src, size_t count) {
    if (!IsGoodRoom(destMax) || dest == nullptr || src == nullptr || count > destMax)
        return RefuseCopy(dest, destMax, src);
    if (Distance(dest, src) < count)
        return RefuseOverlap(dest, destMax, src);
    memcpy(dest, src, count);
    return EOK;
}

errno_t memmove_s(void *dest, size_t destMax, const void *src, size_t count) {
    if (!IsGoodRoom(destMax) || dest == nullptr || src == nullptr || count > destMax)
        return RefuseCopy(dest, destMax, src);
    memmove(dest, src, count);
    return EOK;
}

/* The compiler has to believe that somebody reads the bytes: they may be a secret that is being wiped. */
static void Fill(void *dest, int c, size_t count) {
    memset(dest, c, count);
    __asm__ volatile("" : : "r"(dest) : "memory");
}

errno_t memset_s(void *dest, size_t destMax, int c, size_t count) {
    if (!IsGoodRoom(destMax))
        return destMax == 0 && count == 0 && dest != nullptr ? EOK : ERANGE;
    if (dest == nullptr)
        return EINVAL;
    if (count > destMax) {
        Fill(dest, c, destMax);
        return ERANGE_AND_RESET;
    }
    Fill(dest, c, count);
    return EOK;
}
