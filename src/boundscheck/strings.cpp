#include <securec.h>

#include <cstdint>
#include <cstring>

/* What can be said before either text is read: 0 when there is nothing against it. */
static errno_t CheckArguments(char *dest, size_t destMax, const char *src) {
    if (destMax - 1 >= SECUREC_STRING_MAX_LEN) /* 0 wraps to the largest size */
        return ERANGE;
    if (dest == nullptr)
        return EINVAL;
    if (src == nullptr) {
        dest[0] = '\0';
        return EINVAL_AND_RESET;
    }
    return EOK;
}

static errno_t Reset(char *dest, errno_t code) {
    dest[0] = '\0';
    return code;
}

/* True when the `size` bytes at each place share some without being the same. */
static bool Overlap(const char *a, const char *b, size_t size) {
    auto first = reinterpret_cast<uintptr_t>(a);
    auto second = reinterpret_cast<uintptr_t>(b);
    return first != second && (first < second ? second - first : first - second) < size;
}

/* `length` characters of src fit into dest: the rest of both string copies. */
static errno_t CopyText(char *dest, const char *src, size_t length) {
    if (Overlap(dest, src, length + 1))
        return Reset(dest, EOVERLAP_AND_RESET);
    if (dest != src)
        memcpy(dest, src, length);
    dest[length] = '\0';
    return EOK;
}

errno_t strcpy_s(char *dest, size_t destMax, const char *src) {
    if (errno_t code = CheckArguments(dest, destMax, src); code != EOK)
        return code;
    size_t length = strnlen(src, destMax);
    if (length == destMax)
        return Reset(dest, ERANGE_AND_RESET);
    return CopyText(dest, src, length);
}

errno_t strncpy_s(char *dest, size_t destMax, const char *src, size_t count) {
    if (errno_t code = CheckArguments(dest, destMax, src); code != EOK)
        return code;
    if (count > SECUREC_STRING_MAX_LEN)
        return Reset(dest, ERANGE_AND_RESET);
    size_t length = strnlen(src, count < destMax ? count : destMax);
    if (length == destMax)
        return Reset(dest, ERANGE_AND_RESET);
    return CopyText(dest, src, length);
}

errno_t strcat_s(char *dest, size_t destMax, const char *src) {
    if (errno_t code = CheckArguments(dest, destMax, src); code != EOK)
        return code;
    size_t destLength = strnlen(dest, destMax);
    size_t room = destMax - destLength;
    size_t length = room == 0 ? 0 : strnlen(src, room);
    if (length == room)
        return Reset(dest, ERANGE_AND_RESET);

    char *end = dest + destLength;
    if (dest != src && Overlap(end, src, length + 1))
        return Reset(dest, EOVERLAP_AND_RESET);
    memmove(end, src, length); /* a text appended to itself starts where its copy ends */
    end[length] = '\0';
    return EOK;
}
