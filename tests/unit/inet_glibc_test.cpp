/* The address readers beside the C library's: they differ in what is listed here, and in nothing else. */
#include <uvelcommon_base/kivo_inet.h>

#include <cctype>
#include <set>
#include <string>

#include "kit.h"
#include "unit/address_samples.h"

namespace {

using namespace address_samples;

/* Result and, when there is one, the address. */
template <typename Packed>
using Reading = std::optional<Packed>;

template <typename Packed, int32_t (*Read)(const char *, uint8_t *)>
Reading<Packed> Ours(const std::string &text) {
    Packed packed;
    return Read(text.c_str(), packed.data()) == 1 ? Reading<Packed>(packed) : std::nullopt;
}

template <typename Packed, int FAMILY>
Reading<Packed> Theirs(const std::string &text) {
    Packed packed;
    return inet_pton(FAMILY, text.c_str(), packed.data()) == 1 ? Reading<Packed>(packed) : std::nullopt;
}

constexpr auto Ours4 = Ours<Packed4, kivo_inet_pton4>;
constexpr auto Ours6 = Ours<Packed6, kivo_inet_pton6>;
constexpr auto Theirs4 = Theirs<Packed4, AF_INET>;
constexpr auto Theirs6 = Theirs<Packed6, AF_INET6>;

/* --- what differs --- */

/* A part of "00" or "012" becomes "0" or "12". */
std::string WithoutLeadingZeros(const std::string &text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool digitBefore = !plain.empty() && std::isdigit(static_cast<unsigned char>(plain.back())) != 0;
        const bool digitBehind = i + 1 < text.size() && std::isdigit(static_cast<unsigned char>(text[i + 1])) != 0;
        if (text[i] != '0' || digitBefore || !digitBehind)
            plain += text[i];
    }
    return plain;
}

template <typename F>
std::string ForEachGroup(const std::string &text, F &&change) {
    std::string changed;
    const char *separator = "";
    for (const std::string &group : inet_reference::Split(text, ':')) {
        changed += separator + change(group);
        separator = ":";
    }
    return changed;
}

/* Of a group of more than four digits the last four are left. */
std::string WithShortGroups(const std::string &text) {
    return ForEachGroup(text, [](const std::string &group) {
        const bool isLong = group.size() > 4 && inet_reference::OnlyOf(group, inet_reference::HEX_DIGITS);
        return isLong ? group.substr(group.size() - 4) : group;
    });
}

std::string WithoutLeadingZerosInTail(const std::string &text) {
    return ForEachGroup(text, [](const std::string &group) {
        return group.find('.') == std::string::npos ? group : WithoutLeadingZeros(group);
    });
}

/* A kind of text that the C library rejects and we read as we, and it, read the plain form. */
struct Difference {
    const char *name;
    std::string (*plain)(const std::string &text);
    const char *example;
    const char *itsPlainForm;
};

constexpr Difference DIFFERENCES4[] = {
    {"a part with leading zeros", WithoutLeadingZeros, "010.001.00.0001", "10.1.0.1"},
};

constexpr Difference DIFFERENCES6[] = {
    {"a group of more than four digits", WithShortGroups, "123456:0000a::fffff", "3456:000a::ffff"},
    {"an IPv4 tail with leading zeros", WithoutLeadingZerosInTail, "::ffff:01.002.0.0003", "::ffff:1.2.0.3"},
};

template <typename Read, std::size_t COUNT>
void ExpectRejectedAndReadAsTheirPlainForm(const Difference (&differences)[COUNT], Read ours, Read theirs) {
    for (const Difference &difference : differences) {
        EXPECT_EQ(difference.itsPlainForm, difference.plain(difference.example));
        EXPECT_FALSE(theirs(difference.example).has_value()) << difference.name;
        ASSERT_TRUE(theirs(difference.itsPlainForm).has_value()) << difference.name;
        EXPECT_EQ(theirs(difference.itsPlainForm), ours(difference.example)) << difference.name;
        EXPECT_EQ(theirs(difference.itsPlainForm), ours(difference.itsPlainForm)) << difference.name;
    }
}

TEST(InetGlibc, RejectsTheListedKindsOfIpv4TextsThatWeRead) {
    ExpectRejectedAndReadAsTheirPlainForm(DIFFERENCES4, Ours4, Theirs4);
}

TEST(InetGlibc, RejectsTheListedKindsOfIpv6TextsThatWeRead) {
    ExpectRejectedAndReadAsTheirPlainForm(DIFFERENCES6, Ours6, Theirs6);
}

/* --- and nothing else does --- */

struct Counts {
    unsigned read = 0;
    unsigned different = 0;
    std::set<std::string> kinds; /* of difference that were met alone */
};

/* Reads a million generated texts. Where the results differ the C library must have rejected a text of the listed kinds
 * and read its plain form as we read the text. */
template <typename Read, std::size_t COUNT>
void Compare(std::string (*generate)(std::mt19937_64 &), const Difference (&differences)[COUNT], Read ours, Read theirs,
             Counts &counts) {
    std::mt19937_64 random(SEED);
    for (unsigned i = 0; i < MILLION; ++i) {
        const std::string text = generate(random);
        const auto our = ours(text);
        const auto their = theirs(text);
        counts.read += our.has_value() ? 1 : 0;
        if (our == their)
            continue;
        ++counts.different;
        ASSERT_FALSE(their.has_value()) << text << ", seed " << SEED;
        std::string plain = text;
        for (const Difference &difference : differences) {
            if (our == theirs(difference.plain(text)))
                counts.kinds.insert(difference.name);
            plain = difference.plain(plain);
        }
        ASSERT_EQ(theirs(plain), our) << text << ", seed " << SEED;
    }
}

std::string AnyText4(std::mt19937_64 &random) {
    std::string text;
    const std::size_t parts = random() % 16 == 0 ? random() % 7 : 4;
    for (std::size_t i = 0; i < parts; ++i) {
        const uint64_t value = random() % (random() % 16 == 0 ? 400 : 256);
        text += (i == 0 ? "" : ".") + std::string(random() % 8 == 0 ? random() % 4 : 0, '0') + std::to_string(value);
    }
    if (random() % 8 == 0 && !text.empty())
        text[random() % text.size()] = "0123456789. -+x/:\xff"[random() % 18];
    return text;
}

TEST(InetGlibc, ReadsAMillionIpv4TextsAsWeDoButForThoseKinds) {
    Counts counts;
    Compare(AnyText4, DIFFERENCES4, Ours4, Theirs4, counts);
    EXPECT_LT(MILLION / 2, counts.read);
    EXPECT_GT(MILLION, counts.read + MILLION / 20) << "some texts are no addresses";
    EXPECT_LT(MILLION / 20, counts.different);
    EXPECT_EQ(std::size(DIFFERENCES4), counts.kinds.size());
}

TEST(InetGlibc, ReadsAMillionIpv6TextsAsWeDoButForThoseKinds) {
    Counts counts;
    Compare(AnyText6, DIFFERENCES6, Ours6, Theirs6, counts);
    EXPECT_LT(MILLION / 10, counts.read);
    EXPECT_GT(MILLION, counts.read + MILLION / 5) << "many texts are no addresses";
    EXPECT_LT(MILLION / 100, counts.different);
    EXPECT_EQ(std::size(DIFFERENCES6), counts.kinds.size());
}

} // namespace
