/* What the print of a format and the print of one conversion know in common. */
#ifndef BOUNDSCHECK_PRINTING_H
#define BOUNDSCHECK_PRINTING_H

#include "conversion.h"

#include <cstddef>
#include <cstring>

namespace boundscheck {

enum Flag : unsigned { LEFT = 1, PLUS = 2, BLANK = 4, ALTERNATE = 8, ZERO = 16 };

struct PrintConversion {
    unsigned flags;
    size_t width;
    int precision; /* below 0: none */
    Size size;
    Kind kind;
    char letter;
};

/* The part of the destination that is still free, its terminator's byte not counted. */
struct Sink {
    char *next;
    size_t room;
    bool truncated;

    size_t Take(size_t length) {
        truncated |= length > room;
        size_t taken = length < room ? length : room;
        next += taken;
        room -= taken;
        return taken;
    }
    void Put(const char *text, size_t length) {
        char *place = next;
        memcpy(place, text, Take(length));
    }
    void Fill(char c, size_t length) {
        if (length == 0)
            return;
        char *place = next;
        memset(place, c, Take(length));
    }
};

/* Prints the next argument; false when the conversion is too wide or the value has no text. */
bool PutConversion(Sink &sink, const PrintConversion &conversion, Arguments &arguments);

} // namespace boundscheck

#endif
