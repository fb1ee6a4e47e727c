/* Prints: the format, and what becomes of a text that does not fit. */
#include <securec.h>

#include "printing.h"

#include <cstdint>
#include <cstring>

using boundscheck::Arguments;
using boundscheck::Kind;
using boundscheck::PrintConversion;
using boundscheck::Sink;
using boundscheck::Size;

namespace {

struct Printed {
    bool valid;
    bool truncated;
    int length;
};

} // namespace

/* What writes through an argument is refused, and what only scans have. */
static bool IsKnown(Kind kind, Size size) {
    return kind != Kind::None && kind != Kind::Count && kind != Kind::Set && boundscheck::Fits(size, kind);
}

static unsigned FlagOf(char c) {
    switch (c) {
    case '-':
        return boundscheck::LEFT;
    case '+':
        return boundscheck::PLUS;
    case ' ':
        return boundscheck::BLANK;
    case '#':
        return boundscheck::ALTERNATE;
    case '0':
        return boundscheck::ZERO;
    default:
        return 0;
    }
}

static unsigned ReadFlags(const char *&format) {
    unsigned flags = 0;
    for (unsigned flag = FlagOf(*format); flag != 0; flag = FlagOf(*++format))
        flags |= flag;
    return flags;
}

static void ReadWidth(const char *&format, Arguments &arguments, PrintConversion &conversion) {
    if (!boundscheck::Skip(format, '*')) {
        conversion.width = static_cast<size_t>(boundscheck::ReadNumber(format));
        return;
    }
    int64_t width = va_arg(arguments.list, int);
    if (width < 0)
        conversion.flags |= boundscheck::LEFT;
    conversion.width = static_cast<size_t>(width < 0 ? -width : width);
}

/* Reads what follows a '%'. Its result says whether that is a conversion. */
static bool ReadConversion(const char *&format, Arguments &arguments, PrintConversion &conversion) {
    conversion.flags = ReadFlags(format);
    ReadWidth(format, arguments, conversion);
    conversion.precision = -1;
    if (boundscheck::Skip(format, '.'))
        conversion.precision =
            boundscheck::Skip(format, '*') ? va_arg(arguments.list, int) : boundscheck::ReadNumber(format);
    conversion.size = boundscheck::ReadSize(format);
    conversion.letter = *format;
    conversion.kind = boundscheck::KindOf(*format);
    if (!IsKnown(conversion.kind, conversion.size))
        return false;
    ++format;
    return true;
}

/* Prints at most `room` characters and a terminator. Behind a full room the format is only checked: a bad conversion
 * counts wherever it stands. */
static Printed Print(char *dest, size_t room, const char *format, va_list list) {
    Arguments arguments;
    va_copy(arguments.list, list);
    Sink sink = {dest, room, false};
    bool valid = true;
    while (valid && *format != '\0') {
        const char *percent = strchrnul(format, '%');
        sink.Put(format, static_cast<size_t>(percent - format));
        format = percent;
        if (!boundscheck::Skip(format, '%'))
            break;
        PrintConversion conversion;
        valid = ReadConversion(format, arguments, conversion) &&
                (sink.truncated || boundscheck::PutConversion(sink, conversion, arguments));
    }
    va_end(arguments.list);
    *sink.next = '\0';
    return {valid, sink.truncated, static_cast<int>(sink.next - dest)};
}

static bool IsGoodRoom(const char *dest, size_t destMax) {
    return dest != nullptr && destMax - 1 < SECUREC_STRING_MAX_LEN; /* 0 wraps to the largest size */
}

static int Reset(char *dest) {
    dest[0] = '\0';
    return -1;
}

int vsprintf_s(char *dest, size_t destMax, const char *format, va_list list) {
    if (!IsGoodRoom(dest, destMax))
        return -1;
    if (format == nullptr)
        return Reset(dest);
    Printed printed = Print(dest, destMax - 1, format, list);
    return printed.valid && !printed.truncated ? printed.length : Reset(dest);
}

int vsnprintf_s(char *dest, size_t destMax, size_t count, const char *format, va_list list) {
    if (!IsGoodRoom(dest, destMax))
        return -1;
    if (format == nullptr || count > SECUREC_STRING_MAX_LEN - 1)
        return Reset(dest);
    Printed printed = Print(dest, count < destMax ? count : destMax - 1, format, list);
    if (!printed.valid || (printed.truncated && count >= destMax))
        return Reset(dest);
    return printed.truncated ? -1 : printed.length; /* what count cut off is missing, but the rest may be used */
}

int vsnprintf_truncated_s(char *dest, size_t destMax, const char *format, va_list list) {
    if (!IsGoodRoom(dest, destMax))
        return -1;
    if (format == nullptr)
        return Reset(dest);
    Printed printed = Print(dest, destMax - 1, format, list);
    return printed.valid ? printed.length : Reset(dest);
}

int sprintf_s(char *dest, size_t destMax, const char *format, ...) {
    va_list list;
    va_start(list, format);
    int result = vsprintf_s(dest, destMax, format, list);
    va_end(list);
    return result;
}

int snprintf_s(char *dest, size_t destMax, size_t count, const char *format, ...) {
    va_list list;
    va_start(list, format);
    int result = vsnprintf_s(dest, destMax, count, format, list);
    va_end(list);
    return result;
}

int snprintf_truncated_s(char *dest, size_t destMax, const char *format, ...) {
    va_list list;
    va_start(list, format);
    int result = vsnprintf_truncated_s(dest, destMax, format, list);
    va_end(list);
    return result;
}
