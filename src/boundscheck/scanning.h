/* What the scan of a format and the scan of a number know in common. */
#ifndef BOUNDSCHECK_SCANNING_H
#define BOUNDSCHECK_SCANNING_H

#include "conversion.h"

#include <cstddef>
#include <cstdint>

namespace boundscheck {

/* A set of characters; the terminator is in none. */
struct CharacterSet {
    uint64_t words[4];

    constexpr void Add(unsigned char c) { words[c / 64] |= uint64_t(1) << c % 64; }
    constexpr bool Has(char c) const {
        auto index = static_cast<unsigned char>(c);
        return (words[index / 64] >> index % 64 & 1) != 0;
    }
    constexpr CharacterSet Others() const { return {{~words[0] & ~uint64_t(1), ~words[1], ~words[2], ~words[3]}}; }
};

constexpr CharacterSet SetOf(const char *characters) {
    CharacterSet set = {};
    for (; *characters != '\0'; ++characters)
        set.Add(static_cast<unsigned char>(*characters));
    return set;
}

inline constexpr CharacterSet BLANKS = SetOf(" \t\n\v\f\r");
inline constexpr CharacterSet ANY = SetOf("").Others();

inline const char *SkipBlanks(const char *text) {
    while (BLANKS.Has(*text))
        ++text;
    return text;
}

struct ScanConversion {
    bool assigns;
    size_t width; /* SIZE_MAX: none */
    Size size;
    Kind kind;
    char letter;
    CharacterSet set; /* of %s, %c and %[ */
};

enum class Outcome {
    Assigned,
    Passed, /* not counted: suppressed, or %n */
    Mismatch,
    End,
    NullArgument
};

/* Each leaves `input` behind the item that it has read, and its value where the next argument points to. */
Outcome ScanInteger(const char *&input, const ScanConversion &conversion, Arguments &arguments);
Outcome ScanFloat(const char *&input, const ScanConversion &conversion, Arguments &arguments);

/* Cuts the value to the type that the conversion names and stores it at the next argument. */
Outcome StoreInteger(const ScanConversion &conversion, uint64_t value, Arguments &arguments);

} // namespace boundscheck

#endif
