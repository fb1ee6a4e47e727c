/* What the conversions of printing and scanning have in common: kinds of letters, sizes before them, numbers.
 *
 * The readers take a pointer into the format and leave it behind what they read. */
#ifndef BOUNDSCHECK_CONVERSION_H
#define BOUNDSCHECK_CONVERSION_H

#include <climits>
#include <cstdarg>

namespace boundscheck {

enum class Size : unsigned char { Char, Short, Plain, Long, LongLong, Max, SizeT, Difference, LongDouble };

enum class Kind : unsigned char { None, Signed, Unsigned, Float, Character, Text, Set, Pointer, Count, Percent };

/* Every letter of standard C. */
struct KindTable {
    Kind of[256] = {};

    constexpr KindTable() {
        Add("di", Kind::Signed);
        Add("uoxX", Kind::Unsigned);
        Add("aAeEfFgG", Kind::Float);
        Add("c", Kind::Character);
        Add("s", Kind::Text);
        Add("[", Kind::Set);
        Add("p", Kind::Pointer);
        Add("n", Kind::Count);
        Add("%", Kind::Percent);
    }
    constexpr void Add(const char *letters, Kind kind) {
        for (; *letters != '\0'; ++letters)
            of[static_cast<unsigned char>(*letters)] = kind;
    }
};

inline constexpr KindTable KINDS;

inline Kind KindOf(char letter) {
    return KINDS.of[static_cast<unsigned char>(letter)];
}

/* Whether C gives the size a meaning before this kind of letter. */
inline bool Fits(Size size, Kind kind) {
    switch (kind) {
    case Kind::Signed:
    case Kind::Unsigned:
    case Kind::Count:
        return size != Size::LongDouble;
    case Kind::Float:
        return size == Size::Plain || size == Size::Long || size == Size::LongDouble;
    case Kind::Character:
    case Kind::Text:
    case Kind::Set:
        return size == Size::Plain || size == Size::Long;
    default:
        return size == Size::Plain;
    }
}

inline bool Skip(const char *&format, char c) {
    bool found = *format == c;
    format += found ? 1 : 0;
    return found;
}

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/* A decimal number, 0 when there is none; INT_MAX stands for all above: no room is that large. */
inline int ReadNumber(const char *&format) {
    int number = 0;
    for (; IsDigit(*format); ++format)
        number = number > (INT_MAX - 9) / 10 ? INT_MAX : number * 10 + (*format - '0');
    return number;
}

inline Size ReadSize(const char *&format) {
    switch (*format) {
    case 'h':
        ++format;
        return Skip(format, 'h') ? Size::Char : Size::Short;
    case 'l':
        ++format;
        return Skip(format, 'l') ? Size::LongLong : Size::Long;
    case 'j':
        ++format;
        return Size::Max;
    case 'z':
        ++format;
        return Size::SizeT;
    case 't':
        ++format;
        return Size::Difference;
    case 'L':
        ++format;
        return Size::LongDouble;
    default:
        return Size::Plain;
    }
}

/* A va_list that functions can take from in turn. */
struct Arguments {
    va_list list;
};

} // namespace boundscheck

#endif
