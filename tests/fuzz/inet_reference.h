/* Second readers and writers of address texts, written straight from the rules with strings and lists and in no hurry.
 * What the library does is compared with them. */
#ifndef UVEL_TESTS_FUZZ_INET_REFERENCE_H
#define UVEL_TESTS_FUZZ_INET_REFERENCE_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace inet_reference {

using Packed4 = std::array<uint8_t, 4>;
using Packed6 = std::array<uint8_t, 16>;

inline constexpr const char *HEX_DIGITS = "0123456789abcdefABCDEF";

/* The pieces of a text between separators; one more than there are separators. */
inline std::vector<std::string> Split(const std::string &text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

inline bool OnlyOf(const std::string &text, const char *set) {
    return text.find_first_not_of(set) == std::string::npos;
}

inline std::optional<Packed4> Read4(const std::string &text) {
    const std::vector<std::string> pieces = Split(text, '.');
    if (pieces.size() != 4)
        return std::nullopt;
    Packed4 packed;
    for (std::size_t i = 0; i < 4; ++i) {
        if (pieces[i].empty() || !OnlyOf(pieces[i], "0123456789"))
            return std::nullopt;
        const std::size_t first = pieces[i].find_first_not_of('0');
        const std::string digits = first == std::string::npos ? "0" : pieces[i].substr(first);
        if (digits.size() > 3 || std::stoul(digits) > 255)
            return std::nullopt;
        packed[i] = static_cast<uint8_t>(std::stoul(digits));
    }
    return packed;
}

/* Appends the groups of a text without "::". A dotted last one gives two where that is allowed. */
inline bool AppendGroups(const std::string &text, bool dottedTail, std::vector<uint16_t> &groups) {
    const std::vector<std::string> pieces = Split(text, ':');
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const std::string &piece = pieces[i];
        if (dottedTail && i + 1 == pieces.size() && piece.find('.') != std::string::npos) {
            const std::optional<Packed4> tail = Read4(piece);
            if (!tail)
                return false;
            groups.push_back(static_cast<uint16_t>((*tail)[0] * 256 + (*tail)[1]));
            groups.push_back(static_cast<uint16_t>((*tail)[2] * 256 + (*tail)[3]));
            continue;
        }
        if (piece.empty() || !OnlyOf(piece, HEX_DIGITS))
            return false;
        const std::string digits = piece.size() > 4 ? piece.substr(piece.size() - 4) : piece;
        groups.push_back(static_cast<uint16_t>(std::strtoul(digits.c_str(), nullptr, 16)));
    }
    return true;
}

inline std::optional<Packed6> ReadGroups(const std::string &text, bool dottedTail) {
    std::vector<uint16_t> groups;
    const std::size_t gap = text.find("::");
    if (gap == std::string::npos) {
        if (!AppendGroups(text, dottedTail, groups) || groups.size() != 8)
            return std::nullopt;
    } else {
        const std::string left = text.substr(0, gap);
        const std::string right = text.substr(gap + 2);
        std::vector<uint16_t> behind;
        if ((!left.empty() && !AppendGroups(left, false, groups)) ||
            (!right.empty() && !AppendGroups(right, dottedTail, behind)) || groups.size() + behind.size() > 7)
            return std::nullopt;
        groups.resize(8 - behind.size());
        groups.insert(groups.end(), behind.begin(), behind.end());
    }
    Packed6 packed;
    for (std::size_t i = 0; i < 8; ++i) {
        packed[2 * i] = static_cast<uint8_t>(groups[i] >> 8);
        packed[2 * i + 1] = static_cast<uint8_t>(groups[i]);
    }
    return packed;
}

inline std::optional<Packed6> Read6(const std::string &text) {
    return ReadGroups(text, true);
}

/* What SRV_StrToIPv6 makes of a text: its result and, when there is one, the address it writes. */
struct GroupsOnly {
    uint32_t result;
    std::optional<Packed6> packed;
};

inline GroupsOnly ReadGroupsOnly(const std::string &text, uint32_t room) {
    const std::size_t foreign = text.find_first_not_of(std::string(HEX_DIGITS) + ":");
    if (foreign == std::string::npos) {
        const std::optional<Packed6> packed = ReadGroups(text, false);
        return packed && room >= 16 ? GroupsOnly{0, packed} : GroupsOnly{1, std::nullopt};
    }
    /* A foreign character is success, unless something before it was a fault already. */
    const std::string before = text.substr(0, foreign);
    if (before[0] == ':' && before[1] != ':')
        return {1, std::nullopt};
    std::size_t colonPairs = 0;
    std::size_t closedGroups = 0;
    for (std::size_t i = 1; i < before.size(); ++i) {
        if (before[i] == ':')
            ++(before[i - 1] == ':' ? colonPairs : closedGroups);
    }
    return {colonPairs > 1 || closedGroups > 8 ? 1U : 0U, std::nullopt};
}

inline std::string Write4(const uint8_t *packed) {
    char text[32];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", packed[0], packed[1], packed[2], packed[3]);
    return text;
}

inline std::string Write6(const Packed6 &packed) {
    std::array<unsigned, 8> words;
    for (std::size_t i = 0; i < 8; ++i)
        words[i] = packed[2 * i] * 256u + packed[2 * i + 1];
    std::size_t start = 0;
    std::size_t length = 1;
    for (std::size_t i = 0; i < 8; ++i) {
        std::size_t run = 0;
        while (i + run < 8 && words[i + run] == 0)
            ++run;
        if (run > length) {
            start = i;
            length = run;
        }
    }
    std::string text;
    for (std::size_t i = 0; i < 8; ++i) {
        if (length > 1 && i == start) {
            text += "::";
            i += length - 1;
            continue;
        }
        if (!text.empty() && text.back() != ':')
            text += ':';
        if (i == 6 && start == 0 && (length == 6 || (length == 5 && words[5] == 0xFFFF)))
            return text + Write4(packed.data() + 12);
        char word[8];
        std::snprintf(word, sizeof word, "%X", words[i]);
        text += word;
    }
    return text;
}

} // namespace inet_reference

#endif
