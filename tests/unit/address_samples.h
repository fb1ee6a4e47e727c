/* Addresses and address texts that the tests of the address operations share. */
#ifndef UVEL_TESTS_UNIT_ADDRESS_SAMPLES_H
#define UVEL_TESTS_UNIT_ADDRESS_SAMPLES_H

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/inet_reference.h"
#include "host/sanitizers.h"

namespace address_samples {

using inet_reference::Packed4;
using inet_reference::Packed6;

/* Loops over random inputs run this many times; an instrumented library is ten to twenty times slower. */
inline constexpr unsigned MILLION = UNDER_SANITIZER ? 50'000 : 1'000'000;

inline constexpr uint32_t SEED = 20240307;

/* The address of a text, read by the C library. */
inline Packed6 Ip6(const std::string &text) {
    Packed6 packed;
    if (inet_pton(AF_INET6, text.c_str(), packed.data()) != 1)
        throw std::invalid_argument("no IPv6 address: " + text);
    return packed;
}

/* Text of an address in lower case, for messages. */
inline std::string Name(const Packed6 &packed) {
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, packed.data(), text, sizeof text);
}

inline void SetWord(Packed6 &packed, std::size_t index, uint32_t word) {
    packed[2 * index] = static_cast<uint8_t>(word >> 8);
    packed[2 * index + 1] = static_cast<uint8_t>(word);
}

/* A random address, made of words of all four lengths with many zeros among them. */
inline Packed6 AnyPacked6(std::mt19937_64 &random) {
    Packed6 packed;
    const uint64_t zeros = random() % 3 == 0 ? 0 : random() & random();
    for (std::size_t i = 0; i < 8; ++i) {
        const uint64_t word = random();
        SetWord(packed, i, (zeros >> i & 1) != 0 ? 0 : static_cast<uint32_t>((word & 0xFFFF) >> (word >> 16) % 16));
    }
    if (random() % 8 == 0) { /* as the addresses that end like IPv4 ones */
        for (std::size_t i = 0; i < 5; ++i)
            SetWord(packed, i, 0);
        SetWord(packed, 5, random() % 2 == 0 ? 0xFFFF : 0);
    }
    return packed;
}

/* Every set of words that are zero, the others filled in several ways. */
inline std::vector<Packed6> AllZeroShapes() {
    constexpr uint32_t FILLS[] = {0x1, 0xF, 0x10, 0x100, 0xABC, 0x1000, 0xFFFF, 0x0A0B};
    std::vector<Packed6> all;
    for (unsigned zeros = 0; zeros < 256; ++zeros) {
        for (const uint32_t fill : FILLS) {
            Packed6 packed{};
            for (std::size_t i = 0; i < 8; ++i)
                SetWord(packed, i, (zeros >> i & 1) != 0 ? 0 : fill);
            all.push_back(packed);
            SetWord(packed, 5, 0xFFFF);
            all.push_back(packed);
        }
    }
    return all;
}

/* Calls `check` with every text of up to `length` characters out of `alphabet`. */
template <typename F>
void ForAllTexts(const std::string &alphabet, std::size_t length, F &&check) {
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; i <= length; ++i) {
        std::vector<std::string> longer;
        for (const std::string &text : texts) {
            check(text);
            for (const char c : alphabet)
                longer.push_back(text + c);
        }
        texts = i == length ? std::vector<std::string>() : std::move(longer);
    }
}

/* A random text made of what IPv6 texts are made of: mostly nearly an address. What spoils one is rare, or nearly none
 * would be good. */
inline std::string AnyText6(std::mt19937_64 &random) {
    static constexpr const char *SPOILERS[] = {"12345", "", "0000000", "1.2.3.4", "g", "0fffff"};
    static constexpr const char *TAILS[] = {"1.2.3.4",    "255.255.255.255", "0.0.0.0",
                                            "01.2.3.004", "1.2.3",           "1.2.3.256"};
    const auto group = [&random] {
        if (random() % 16 == 0)
            return std::string(SPOILERS[random() % std::size(SPOILERS)]);
        std::string digits;
        for (uint64_t size = 1 + random() % 4; digits.size() < size;)
            digits += inet_reference::HEX_DIGITS[random() % 22];
        return digits;
    };
    std::string text = random() % 4 == 0 ? ":" : "";
    const bool isDotted = random() % 6 == 0;
    std::size_t groups = random() % 4 == 0 ? 1 + random() % 10 : 7 + random() % 3;
    for (; groups > (isDotted ? 2U : 0U); --groups)
        text += (random() % 16 == 0 ? "" : group()) + (groups > 1 ? ":" : "");
    if (isDotted)
        text += TAILS[random() % std::size(TAILS)];
    if (random() % 8 == 0)
        text += ':';
    if (random() % 4 == 0 && text.size() > 2)
        text.erase(random() % text.size(), 1);
    return text;
}

} // namespace address_samples

#endif
