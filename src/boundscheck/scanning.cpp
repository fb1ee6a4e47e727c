/* Scans: sscanf with the room of every text beside its pointer. */
#include <securec.h>

#include "scanning.h"

#include <cstring>

using boundscheck::Arguments;
using boundscheck::BLANKS;
using boundscheck::CharacterSet;
using boundscheck::Kind;
using boundscheck::Outcome;
using boundscheck::ScanConversion;
using boundscheck::Size;
using boundscheck::SkipBlanks;

/* Reads what follows "%[" up to and with the closing bracket; false when there is none. */
static bool ReadSet(const char *&format, CharacterSet &set) {
    bool inverted = boundscheck::Skip(format, '^');
    set = {};
    bool first = true; /* here a ']' is a member */
    for (; *format != '\0' && (first || *format != ']'); ++format, first = false) {
        unsigned low = static_cast<unsigned char>(*format);
        unsigned high = low;
        if (format[1] == '-' && format[2] != ']' && format[2] != '\0') {
            format += 2;
            high = static_cast<unsigned char>(*format);
        }
        for (unsigned c = low < high ? low : high; c <= (low < high ? high : low); ++c)
            set.Add(static_cast<unsigned char>(c));
    }
    if (inverted)
        set = set.Others();
    return boundscheck::Skip(format, ']');
}

/* Wide characters are not read. */
static bool IsKnown(Kind kind, Size size) {
    bool text = kind == Kind::Character || kind == Kind::Text || kind == Kind::Set;
    return kind != Kind::None && boundscheck::Fits(size, kind) && !(text && size == Size::Long);
}

/* Reads what follows a '%'. Its result says whether that is a conversion. */
static bool ReadConversion(const char *&format, ScanConversion &conversion) {
    conversion.assigns = !boundscheck::Skip(format, '*');
    int width = boundscheck::ReadNumber(format);
    conversion.width = width == 0 ? SIZE_MAX : static_cast<size_t>(width);
    conversion.size = boundscheck::ReadSize(format);
    conversion.letter = *format;
    conversion.kind = boundscheck::KindOf(*format);
    if (!IsKnown(conversion.kind, conversion.size))
        return false;
    ++format;
    switch (conversion.kind) {
    case Kind::Set:
        return ReadSet(format, conversion.set);
    case Kind::Character:
        conversion.set = boundscheck::ANY;
        conversion.width = width == 0 ? 1 : conversion.width;
        return true;
    case Kind::Text:
        conversion.set = BLANKS.Others();
        return true;
    default:
        return true;
    }
}

/* %s, %c and %[: the characters of a set. */
static Outcome ScanText(const char *&input, const ScanConversion &conversion, Arguments &arguments) {
    size_t length = 0;
    while (length < conversion.width && conversion.set.Has(input[length]))
        ++length;
    if (length == 0)
        return *input == '\0' ? Outcome::End : Outcome::Mismatch;
    const char *text = input;
    input += length;
    if (!conversion.assigns)
        return Outcome::Passed;

    char *dest = va_arg(arguments.list, char *);
    size_t room = va_arg(arguments.list, unsigned int);
    if (dest == nullptr)
        return Outcome::NullArgument;
    bool terminates = conversion.kind != Kind::Character;
    if (length + (terminates ? 1 : 0) > room) {
        if (room != 0)
            dest[0] = '\0';
        return Outcome::Mismatch;
    }
    memcpy(dest, text, length);
    if (terminates)
        dest[length] = '\0';
    return Outcome::Assigned;
}

/* How many characters were read so far; no item. */
static Outcome StoreCount(size_t count, const ScanConversion &conversion, Arguments &arguments) {
    if (!conversion.assigns)
        return Outcome::Passed;
    Outcome outcome = boundscheck::StoreInteger(conversion, count, arguments);
    return outcome == Outcome::Assigned ? Outcome::Passed : outcome;
}

static Outcome ScanLiteral(const char *&input, char c) {
    if (*input == c) {
        ++input;
        return Outcome::Passed;
    }
    return *input == '\0' ? Outcome::End : Outcome::Mismatch;
}

static Outcome ScanItem(const char *start, const char *&input, const ScanConversion &conversion, Arguments &arguments) {
    switch (conversion.kind) {
    case Kind::Signed:
    case Kind::Unsigned:
    case Kind::Pointer:
        return boundscheck::ScanInteger(input, conversion, arguments);
    case Kind::Float:
        return boundscheck::ScanFloat(input, conversion, arguments);
    case Kind::Count:
        return StoreCount(static_cast<size_t>(input - start), conversion, arguments);
    case Kind::Percent:
        input = SkipBlanks(input);
        return ScanLiteral(input, '%');
    case Kind::Text:
        input = SkipBlanks(input);
        return ScanText(input, conversion, arguments);
    default:
        return ScanText(input, conversion, arguments);
    }
}

/* One directive of the format: blanks, a character, or a conversion. */
static Outcome ScanDirective(const char *start, const char *&input, const char *&format, Arguments &arguments) {
    char directive = *format++;
    if (BLANKS.Has(directive)) {
        input = SkipBlanks(input);
        return Outcome::Passed;
    }
    if (directive != '%')
        return ScanLiteral(input, directive);
    ScanConversion conversion;
    if (!ReadConversion(format, conversion))
        return Outcome::Mismatch;
    return ScanItem(start, input, conversion, arguments);
}

int vsscanf_s(const char *buffer, const char *format, va_list list) {
    if (buffer == nullptr || format == nullptr || *buffer == '\0')
        return -1;
    Arguments arguments;
    va_copy(arguments.list, list);
    const char *input = buffer;
    int assigned = 0;
    Outcome outcome = Outcome::Passed;
    while (*format != '\0' && (outcome == Outcome::Passed || outcome == Outcome::Assigned)) {
        outcome = ScanDirective(buffer, input, format, arguments);
        assigned += outcome == Outcome::Assigned ? 1 : 0;
    }
    va_end(arguments.list);
    if (outcome == Outcome::NullArgument || (outcome == Outcome::End && assigned == 0))
        return -1;
    return assigned;
}

int sscanf_s(const char *buffer, const char *format, ...) {
    va_list list;
    va_start(list, format);
    int result = vsscanf_s(buffer, format, list);
    va_end(list);
    return result;
}
