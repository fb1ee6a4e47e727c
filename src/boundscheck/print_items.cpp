/* The single conversions of a print. Integers, characters and texts are formatted here, so that no width, precision or
 * text costs more than the room it is printed into. Floating-point numbers and wide characters are left to the C
 * library, within bounds. */
#include "printing.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cwchar>

using boundscheck::ALTERNATE;
using boundscheck::Arguments;
using boundscheck::BLANK;
using boundscheck::Kind;
using boundscheck::LEFT;
using boundscheck::PLUS;
using boundscheck::PrintConversion;
using boundscheck::Sink;
using boundscheck::Size;
using boundscheck::ZERO;

/* In the order of the bits. */
static constexpr char FLAG_LETTERS[] = "-+ #0";

/* What is left to the C library is worked off to the last character, room or not. C promises no more than 4095. */
static constexpr int MOST_BY_LIBRARY = 65535;

static int64_t TakeSigned(Size size, Arguments &arguments) {
    switch (size) {
    case Size::Char:
        return static_cast<signed char>(va_arg(arguments.list, int));
    case Size::Short:
        return static_cast<short>(va_arg(arguments.list, int));
    case Size::Long:
        return va_arg(arguments.list, long);
    case Size::LongLong:
        return va_arg(arguments.list, long long);
    case Size::Max:
        return va_arg(arguments.list, intmax_t);
    case Size::SizeT:
    case Size::Difference:
        return va_arg(arguments.list, ptrdiff_t);
    default:
        return va_arg(arguments.list, int);
    }
}

static uint64_t TakeUnsigned(Size size, Arguments &arguments) {
    switch (size) {
    case Size::Char:
        return static_cast<unsigned char>(va_arg(arguments.list, unsigned));
    case Size::Short:
        return static_cast<unsigned short>(va_arg(arguments.list, unsigned));
    case Size::Long:
        return va_arg(arguments.list, unsigned long);
    case Size::LongLong:
        return va_arg(arguments.list, unsigned long long);
    case Size::Max:
        return va_arg(arguments.list, uintmax_t);
    case Size::SizeT:
    case Size::Difference:
        return va_arg(arguments.list, size_t);
    default:
        return va_arg(arguments.list, unsigned);
    }
}

template <unsigned BASE>
static char *WriteDigits(uint64_t value, char *end, const char *digits) {
    for (; value != 0; value /= BASE)
        *--end = digits[value % BASE];
    return end;
}

/* `sign` is what stands before all digits and zeros: "-", "+", " ", or "". */
static void PutInteger(Sink &sink, const PrintConversion &conversion, const char *sign, uint64_t value) {
    char digits[22]; /* the octal digits of 64 bits */
    char *end = digits + sizeof(digits);
    char *first = nullptr;
    bool octal = conversion.letter == 'o';
    if (octal)
        first = WriteDigits<8>(value, end, "01234567");
    else if (conversion.letter == 'X')
        first = WriteDigits<16>(value, end, "0123456789ABCDEF");
    else if (conversion.letter == 'x')
        first = WriteDigits<16>(value, end, "0123456789abcdef");
    else
        first = WriteDigits<10>(value, end, "0123456789");
    if ((conversion.flags & ALTERNATE) != 0 && value != 0 && !octal)
        sign = conversion.letter == 'X' ? "0X" : conversion.letter == 'x' ? "0x" : sign;

    auto length = static_cast<size_t>(end - first);
    size_t signLength = strlen(sign);
    size_t least = conversion.precision < 0 ? 1 : static_cast<size_t>(conversion.precision);
    if (octal && (conversion.flags & ALTERNATE) != 0 && least <= length)
        least = length + 1;
    if (conversion.precision < 0 && (conversion.flags & (ZERO | LEFT)) == ZERO && conversion.width > least + signLength)
        least = conversion.width - signLength;

    size_t zeros = least > length ? least - length : 0;
    size_t whole = signLength + zeros + length;
    size_t blanks = conversion.width > whole ? conversion.width - whole : 0;
    if ((conversion.flags & LEFT) == 0)
        sink.Fill(' ', blanks);
    sink.Put(sign, signLength);
    sink.Fill('0', zeros);
    sink.Put(first, length);
    if ((conversion.flags & LEFT) != 0)
        sink.Fill(' ', blanks);
}

static void PutSigned(Sink &sink, const PrintConversion &conversion, int64_t value) {
    bool negative = value < 0;
    const char *plus = (conversion.flags & PLUS) != 0 ? "+" : (conversion.flags & BLANK) != 0 ? " " : "";
    auto magnitude = static_cast<uint64_t>(value);
    PutInteger(sink, conversion, negative ? "-" : plus, negative ? 0 - magnitude : magnitude);
}

static void PutPadded(Sink &sink, const PrintConversion &conversion, const char *text, size_t length) {
    size_t blanks = conversion.width > length ? conversion.width - length : 0;
    if ((conversion.flags & LEFT) == 0)
        sink.Fill(' ', blanks);
    sink.Put(text, length);
    if ((conversion.flags & LEFT) != 0)
        sink.Fill(' ', blanks);
}

static void PutText(Sink &sink, const PrintConversion &conversion, const char *text) {
    if (text == nullptr)
        text = "(null)"; /* cut by the precision like any text */
    /* One character beyond the room and the width is enough to know that it is too long. */
    size_t most = (sink.room > conversion.width ? sink.room : conversion.width) + 1;
    if (conversion.precision >= 0 && static_cast<size_t>(conversion.precision) < most)
        most = static_cast<size_t>(conversion.precision);
    PutPadded(sink, conversion, text, strnlen(text, most));
}

static void PutPointer(Sink &sink, PrintConversion conversion, const void *pointer) {
    if (pointer == nullptr) {
        PutPadded(sink, conversion, "(nil)", 5);
        return;
    }
    conversion.flags |= ALTERNATE;
    conversion.letter = 'x';
    PutInteger(sink, conversion, "", reinterpret_cast<uintptr_t>(pointer));
}

/* Leaves a conversion to the C library; false when it is too wide or has no text for the value. */
template <typename Value>
static bool PutByLibrary(Sink &sink, const PrintConversion &conversion, const char *size, Value value) {
    if (conversion.width > MOST_BY_LIBRARY)
        return false;
    char format[16] = "%"; /* at most % -+ #0 *.* L f */
    char *end = format + 1;
    for (unsigned bit = 0; FLAG_LETTERS[bit] != '\0'; ++bit)
        if ((conversion.flags & (1U << bit)) != 0)
            *end++ = FLAG_LETTERS[bit];
    end = stpcpy(stpcpy(end, "*.*"), size);
    *end = conversion.letter;

    int errorBefore = errno;
    int length =
        snprintf(sink.next, sink.room + 1, format, static_cast<int>(conversion.width), conversion.precision, value);
    errno = errorBefore;
    if (length < 0)
        return false;
    sink.Take(static_cast<size_t>(length));
    return true;
}

static bool PutCharacter(Sink &sink, PrintConversion conversion, Arguments &arguments) {
    if (conversion.size == Size::Long) {
        conversion.flags &= LEFT;
        return PutByLibrary(sink, conversion, "l", va_arg(arguments.list, wint_t));
    }
    char c = static_cast<char>(va_arg(arguments.list, int));
    PutPadded(sink, conversion, &c, 1);
    return true;
}

static bool PutString(Sink &sink, PrintConversion conversion, Arguments &arguments) {
    if (conversion.size == Size::Long) {
        conversion.flags &= LEFT;
        const wchar_t *text = va_arg(arguments.list, const wchar_t *);
        return PutByLibrary(sink, conversion, "l", text == nullptr ? L"(null)" : text);
    }
    PutText(sink, conversion, va_arg(arguments.list, const char *));
    return true;
}

static bool PutFloat(Sink &sink, const PrintConversion &conversion, Arguments &arguments) {
    if (conversion.precision > MOST_BY_LIBRARY)
        return false;
    if (conversion.size == Size::LongDouble)
        return PutByLibrary(sink, conversion, "L", va_arg(arguments.list, long double));
    return PutByLibrary(sink, conversion, "", va_arg(arguments.list, double));
}

bool boundscheck::PutConversion(Sink &sink, const PrintConversion &conversion, Arguments &arguments) {
    switch (conversion.kind) {
    case Kind::Signed:
        PutSigned(sink, conversion, TakeSigned(conversion.size, arguments));
        return true;
    case Kind::Unsigned:
        PutInteger(sink, conversion, "", TakeUnsigned(conversion.size, arguments));
        return true;
    case Kind::Float:
        return PutFloat(sink, conversion, arguments);
    case Kind::Character:
        return PutCharacter(sink, conversion, arguments);
    case Kind::Text:
        return PutString(sink, conversion, arguments);
    case Kind::Pointer:
        PutPointer(sink, conversion, va_arg(arguments.list, void *));
        return true;
    default:
        sink.Put("%", 1);
        return true;
    }
}
