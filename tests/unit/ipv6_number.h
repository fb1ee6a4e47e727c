/* IPv6 addresses as integers of 128 bits, byte by byte: what the arithmetic of the library is compared with. */
#ifndef UVEL_TESTS_UNIT_IPV6_NUMBER_H
#define UVEL_TESTS_UNIT_IPV6_NUMBER_H

#include "unit/address_samples.h"

namespace address_samples {

__extension__ typedef unsigned __int128 Number;

inline constexpr Number ALL_ONES = ~Number{0};

inline Number NumberOf(const Packed6 &packed) {
    Number number = 0;
    for (const uint8_t byte : packed)
        number = number * 256 + byte;
    return number;
}

inline Packed6 PackedOf(Number number) {
    Packed6 packed;
    for (std::size_t i = 16; i-- > 0; number /= 256)
        packed[i] = static_cast<uint8_t>(number % 256);
    return packed;
}

/* The number with only bit `length` set, counted from 1 at the most significant one. */
inline Number BitNumber(unsigned length) {
    return length == 0 || length > 128 ? 0 : Number{1} << (128 - length);
}

inline Number MaskNumber(unsigned length) {
    Number mask = 0;
    for (unsigned bit = 1; bit <= length; ++bit)
        mask |= BitNumber(bit);
    return mask;
}

/* Numbers where carries begin and end: around every power of two, and random ones. */
inline std::vector<Number> NumbersOfInterest() {
    std::vector<Number> numbers = {0, 1, ALL_ONES, ALL_ONES - 1};
    for (unsigned bit = 1; bit < 128; ++bit) {
        const Number power = Number{1} << bit;
        for (const Number number : {power, power - 1, power + 1, ALL_ONES - power, ALL_ONES << bit})
            numbers.push_back(number);
    }
    std::mt19937_64 random(SEED);
    for (unsigned i = 0; i < 100; ++i)
        numbers.push_back(NumberOf(AnyPacked6(random)));
    return numbers;
}

} // namespace address_samples

#endif
