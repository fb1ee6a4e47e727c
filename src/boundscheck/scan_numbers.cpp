/* The numbers of a scan: %d %i %u %o %x %p and the floating-point ones. */
#include "scanning.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

using boundscheck::Arguments;
using boundscheck::Kind;
using boundscheck::Outcome;
using boundscheck::ScanConversion;
using boundscheck::Size;

namespace {

/* What is left of the input for one item. */
struct Field {
    const char *next;
    size_t width;

    char Peek() const { return width == 0 ? '\0' : *next; }
    void Advance() {
        ++next;
        --width;
    }
    /* A lower-case letter passes in both cases. */
    bool Skip(char lower) {
        char c = Peek();
        bool found = c == lower || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == lower);
        if (found)
            Advance();
        return found;
    }
    bool Skip(const char *word) {
        while (*word != '\0')
            if (!Skip(*word++))
                return false;
        return true;
    }
};

} // namespace

template <typename Type>
static void Store(void *place, uint64_t value) {
    *static_cast<Type *>(place) = static_cast<Type>(value);
}

/* Signed and unsigned types have the same bytes. */
Outcome boundscheck::StoreInteger(const ScanConversion &conversion, uint64_t value, Arguments &arguments) {
    void *place = va_arg(arguments.list, void *);
    if (place == nullptr)
        return Outcome::NullArgument;
    switch (conversion.size) {
    case Size::Char:
        Store<unsigned char>(place, value);
        break;
    case Size::Short:
        Store<unsigned short>(place, value);
        break;
    case Size::Long:
        Store<unsigned long>(place, value);
        break;
    case Size::LongLong:
    case Size::Max:
        Store<unsigned long long>(place, value);
        break;
    case Size::SizeT:
    case Size::Difference:
        Store<size_t>(place, value);
        break;
    default:
        if (conversion.kind == Kind::Pointer)
            *static_cast<void **>(place) = reinterpret_cast<void *>(static_cast<uintptr_t>(value));
        else
            Store<unsigned>(place, value);
        break;
    }
    return Outcome::Assigned;
}

static bool IsWordCharacter(char c) {
    char lower = static_cast<char>(c | 0x20);
    return boundscheck::IsDigit(c) || c == '_' || (lower >= 'a' && lower <= 'z');
}

static unsigned DigitValue(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    auto lower = static_cast<unsigned char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : UINT_MAX;
}

static unsigned BaseOf(char letter) {
    switch (letter) {
    case 'd':
    case 'u':
        return 10;
    case 'o':
        return 8;
    case 'i':
        return 0; /* told by the digits */
    default:
        return 16;
    }
}

/* Leaves `field` behind the prefix and settles the base. */
static void SkipBasePrefix(Field &field, unsigned &base) {
    bool zero = field.Peek() == '0';
    if (base == 10 || base == 8 || !zero) {
        base = base == 0 ? 10 : base;
        return;
    }
    Field digits = field;
    digits.Advance();
    if (digits.Skip('x')) {
        field = digits; /* what is no digit now makes a mismatch */
        base = 16;
    } else if (base == 0) {
        base = 8;
    }
}

/* Beyond 64 bits the nearest 64-bit value; the cut to a smaller type comes later. */
static uint64_t Signed(uint64_t magnitude, bool negative) {
    uint64_t most = negative ? uint64_t(1) << 63 : INT64_MAX;
    magnitude = magnitude < most ? magnitude : most;
    return negative ? 0 - magnitude : magnitude;
}

Outcome boundscheck::ScanInteger(const char *&input, const ScanConversion &conversion, Arguments &arguments) {
    input = SkipBlanks(input);
    if (*input == '\0')
        return Outcome::End;
    Field field = {input, conversion.width};
    bool negative = field.Skip('-');
    if (!negative)
        field.Skip('+');
    unsigned base = BaseOf(conversion.letter);
    SkipBasePrefix(field, base);

    uint64_t value = 0;
    bool beyond = false;
    const char *first = field.next;
    for (unsigned digit = DigitValue(field.Peek()); digit < base; digit = DigitValue(field.Peek())) {
        beyond |= __builtin_mul_overflow(value, base, &value) || __builtin_add_overflow(value, digit, &value);
        field.Advance();
    }
    if (field.next == first)
        return Outcome::Mismatch;
    input = field.next;
    if (!conversion.assigns)
        return Outcome::Passed;
    if (beyond)
        value = UINT64_MAX;
    if (conversion.kind == Kind::Signed)
        value = Signed(value, negative);
    else if (negative && !beyond)
        value = 0 - value;
    return StoreInteger(conversion, value, arguments);
}

/* Digits with at most one point among them; false when there is no digit. */
static bool SkipMantissa(Field &field, unsigned base) {
    bool any = false;
    bool point = false;
    for (;; field.Advance()) {
        char c = field.Peek();
        if (DigitValue(c) < base)
            any = true;
        else if (c == '.' && !point)
            point = true;
        else
            return any;
    }
}

/* The "(...)" that may follow a nan. */
static bool SkipPayload(Field &field) {
    if (!field.Skip('('))
        return true;
    while (IsWordCharacter(field.Peek()))
        field.Advance();
    return field.Skip(')');
}

/* Passes the longest text that begins a floating-point number; false when it is not a whole one, as "1e+". */
static bool SkipFloat(Field &field) {
    if (!field.Skip('-'))
        field.Skip('+');
    if (field.Skip('i')) {
        if (!field.Skip("nf"))
            return false;
        return field.Skip('i') ? field.Skip("nity") : true;
    }
    if (field.Skip('n'))
        return field.Skip("an") && SkipPayload(field);
    unsigned base = 10;
    Field digits = field;
    if (digits.Skip('0') && digits.Skip('x')) {
        field = digits;
        base = 16;
    }
    if (!SkipMantissa(field, base))
        return false;
    if (!field.Skip(base == 16 ? 'p' : 'e'))
        return true;
    if (!field.Skip('-'))
        field.Skip('+');
    bool any = false;
    for (; boundscheck::IsDigit(field.Peek()); field.Advance())
        any = true;
    return any;
}

template <typename Value>
static Outcome StoreFloat(Arguments &arguments, const char *text, Value (*convert)(const char *, char **)) {
    Value *place = va_arg(arguments.list, Value *);
    if (place == nullptr)
        return Outcome::NullArgument;
    int errorBefore = errno;
    *place = convert(text, nullptr);
    errno = errorBefore;
    return Outcome::Assigned;
}

Outcome boundscheck::ScanFloat(const char *&input, const ScanConversion &conversion, Arguments &arguments) {
    input = SkipBlanks(input);
    if (*input == '\0')
        return Outcome::End;
    Field field = {input, conversion.width};
    if (!SkipFloat(field))
        return Outcome::Mismatch;
    const char *text = input;
    input = field.next;
    if (!conversion.assigns)
        return Outcome::Passed;

    /* Where the width ends a number that goes on, the C library has to be shown the number alone. */
    char copy[1024];
    auto length = static_cast<size_t>(field.next - text);
    if (field.width == 0) {
        if (length >= sizeof(copy))
            return Outcome::Mismatch;
        memcpy(copy, text, length);
        copy[length] = '\0';
        text = copy;
    }
    switch (conversion.size) {
    case Size::Plain:
        return StoreFloat<float>(arguments, text, strtof);
    case Size::Long:
        return StoreFloat<double>(arguments, text, strtod);
    default:
        return StoreFloat<long double>(arguments, text, strtold);
    }
}
