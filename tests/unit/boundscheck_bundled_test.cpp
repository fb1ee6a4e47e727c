/* What only the bundled module promises: the exact result where the common tables leave one open, the C library's
 * results for every conversion that it formats or reads by itself, a cost that follows the room and not the format. */
#include "guarded_text.h"

#include <securec.h>

#ifdef SECUREC_BUNDLED

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

/* Formats reach the functions through pointers that may change, so that no compiler can judge them. */
using Print = int (*)(char *dest, size_t destMax, const char *format, ...);
using LibraryPrint = int (*)(char *dest, size_t size, const char *format, ...);
using Scan = int (*)(const char *buffer, const char *format, ...);

const volatile Print PRINT = sprintf_s;
const volatile Print PRINT_TRUNCATED = snprintf_truncated_s;
const volatile LibraryPrint LIBRARY_PRINT = snprintf;
const volatile Scan SCAN = sscanf_s;
const volatile Scan LIBRARY_SCAN = sscanf;

constexpr unsigned SEED = 20240229;

TEST(BoundscheckBundled, ATextAppendedToItselfIsDoubled) {
    char text[8] = "abc";
    EXPECT_EQ(EOK, strcat_s(text, sizeof(text), text));
    EXPECT_STREQ("abcabc", text);
    EXPECT_EQ(ERANGE_AND_RESET, strcat_s(text, sizeof(text), text));
    EXPECT_STREQ("", text);
}

TEST(BoundscheckBundled, AppendingChecksTheLengthBeforeTheOverlap) {
    char text[8] = "abc";
    EXPECT_EQ(ERANGE_AND_RESET, strcat_s(text, 5, text + 1));
}

TEST(BoundscheckBundled, ADestinationWithoutTerminatorHasNoRoomToAppend) {
    GuardedText dest("abcd", 4);
    EXPECT_EQ(ERANGE_AND_RESET, strcat_s(dest.Get(), 4, ""));
    EXPECT_EQ(0, memcmp(dest.Get(), "\0bcd", 4));
}

TEST(BoundscheckBundled, AppendingReadsNoMoreThanTheFreeRoom) {
    GuardedText source("xyz", 3);
    char text[6] = "abc";
    EXPECT_EQ(ERANGE_AND_RESET, strcat_s(text, sizeof(text), source));
}

std::string Printed(const char *format, const char *text) {
    char line[64];
    int length = PRINT(line, sizeof(line), format, text);
    return length < 0 ? "failed" : std::string(line, static_cast<size_t>(length));
}

TEST(BoundscheckBundled, APrecisionCutsTheTextOfNull) {
    EXPECT_EQ("(nu", Printed("%.3s", nullptr));
    EXPECT_EQ("  (nul", Printed("%6.4s", nullptr));
    EXPECT_EQ("(null)", Printed("%.6s", nullptr));
    EXPECT_EQ("", Printed("%.0s", nullptr));
    EXPECT_EQ("    (null)", Printed("%10s", nullptr));
}

TEST(BoundscheckBundled, APrecisionBoundsWhatIsReadOfAText) {
    GuardedText text("abc", 3);
    EXPECT_EQ("abc", Printed("%.3s", text));
}

TEST(BoundscheckBundled, ATextIsNotReadBeyondTheRoom) {
    GuardedText text("abcdefgh", 8);
    char line[8];
    EXPECT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%s", text.Get()));
    EXPECT_STREQ("abcdefg", line);
    EXPECT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%.1000s", text.Get())) << "nor up to a larger precision";
    EXPECT_STREQ("abcdefg", line);
}

TEST(BoundscheckBundled, WidthsAndPrecisionsCostNoMoreThanTheRoom) {
    /* Writing out all of the padding would take hours. */
    char line[8];
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%2147483647d", 1));
        ASSERT_STREQ("       ", line);
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%2147483650d", 1));
        ASSERT_STREQ("       ", line);
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%4294967297d", 1));
        ASSERT_STREQ("       ", line);
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%-99999999999s", "a"));
        ASSERT_STREQ("a      ", line);
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%+.2147483647d", 1));
        ASSERT_STREQ("+000000", line);
        ASSERT_EQ(7, PRINT_TRUNCATED(line, sizeof(line), "%*c", INT_MIN, 'z'));
        ASSERT_STREQ("z      ", line);
    }
}

TEST(BoundscheckBundled, FloatingPointNumbersOfAbsurdSizeAreRefused) {
    std::string line(70000, '.');
    for (const char *format : {"%65536f", "%.65536f", "%2147483647e", "%.2147483647g", "%65536ls"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(-1, format[strlen(format) - 1] == 's' ? PRINT(line.data(), line.size(), format, L"a")
                                                        : PRINT(line.data(), line.size(), format, 1.0));
        EXPECT_EQ('\0', line[0]);
    }
    EXPECT_EQ(65535, PRINT(line.data(), line.size(), "%65535f", 1.0));
    EXPECT_EQ(65537, PRINT(line.data(), line.size(), "%.65535f", 1.0));
    EXPECT_EQ(1, PRINT(line.data(), line.size(), "%.2147483647ls", L"a"));
}

TEST(BoundscheckBundled, ABadConversionCountsBehindAFullRoom) {
    char line[4];
    for (const char *format : {"abcdef%y", "abcdef%", "%s%n", "%s%1$d", "%s%Ls", "%s%hf", "%s%m", "%s%[", "%s%'d"}) {
        SCOPED_TRACE(format);
        strcpy(line, "xyz");
        EXPECT_EQ(-1, PRINT_TRUNCATED(line, sizeof(line), format, "abcdef", 1));
        EXPECT_EQ('\0', line[0]);
    }
}

TEST(BoundscheckBundled, WideCharactersArePrinted) {
    char line[16];
    EXPECT_EQ(5, PRINT(line, sizeof(line), "%ls %lc", L"abc", wint_t(L'd')));
    EXPECT_STREQ("abc d", line);
    EXPECT_EQ(6, PRINT(line, sizeof(line), "%ls", static_cast<const wchar_t *>(nullptr)));
    EXPECT_STREQ("(null)", line);
    errno = 4711;
    EXPECT_EQ(-1, PRINT(line, sizeof(line), "%ls", L"\xd800"));
    EXPECT_STREQ("", line);
    EXPECT_EQ(4711, errno);
}

TEST(BoundscheckBundled, PointersArePrintedInHexadecimal) {
    char line[32];
    EXPECT_EQ(6, PRINT(line, sizeof(line), "%p", reinterpret_cast<void *>(uintptr_t(0xbeef))));
    EXPECT_STREQ("0xbeef", line);
    EXPECT_EQ(5, PRINT(line, sizeof(line), "%p", static_cast<void *>(nullptr)));
    EXPECT_STREQ("(nil)", line);
}

/* One random conversion; '%' and flags that C leaves undefined for the letter are not made. */
std::string RandomSpec(std::mt19937 &random, const char *flags, const char *sizeAndLetter) {
    std::string spec = "%";
    for (const char *flag = flags; *flag != '\0'; ++flag)
        if (random() % 3 == 0)
            spec += *flag;
    if (random() % 2 == 0)
        spec += std::to_string(1 + random() % 30);
    if (random() % 2 == 0 && strchr("c", sizeAndLetter[strlen(sizeAndLetter) - 1]) == nullptr)
        spec += random() % 8 == 0 ? "." : "." + std::to_string(random() % 25);
    return spec + sizeAndLetter;
}

template <typename... Values>
void ExpectTheLibrarysText(const std::string &format, Values... values) {
    char expected[512];
    char text[512];
    int length = LIBRARY_PRINT(expected, sizeof(expected), format.c_str(), values...);
    ASSERT_LE(0, length);
    ASSERT_EQ(length, PRINT(text, sizeof(text), format.c_str(), values...)) << format;
    ASSERT_STREQ(expected, text) << format;

    /* The same in every room that is too small near the end. */
    auto whole = static_cast<size_t>(length);
    for (size_t room = whole > 4 ? whole - 4 : 0; room <= whole; ++room) {
        std::vector<char> dest(room + 1, '#');
        int result = PRINT_TRUNCATED(dest.data(), room + 1, format.c_str(), values...);
        ASSERT_EQ(static_cast<int>(room), result) << format;
        ASSERT_EQ(std::string(expected, room), dest.data()) << format;
    }
}

uint64_t RandomValue(std::mt19937 &random) {
    const uint64_t extremes[] = {
        0, 1, 9, 10, 127, 128, 255, INT32_MAX, uint64_t(1) << 31, INT64_MAX, uint64_t(1) << 63, UINT64_MAX};
    if (random() % 3 == 0)
        return extremes[random() % std::size(extremes)];
    uint64_t value = uint64_t(random()) << 32 | random();
    return value >> random() % 64;
}

TEST(BoundscheckBundled, IntegersArePrintedAsByTheCLibrary) {
    std::mt19937 random(SEED);
    SCOPED_TRACE("seed " + std::to_string(SEED));
    for (int i = 0; i < 20000 && !HasFatalFailure(); ++i) {
        uint64_t value = RandomValue(random);
        const char *flags[] = {"-+ 0", "-0", "-#0", "-#0", "-#0", "-+ 0"};
        const char letters[] = "duoxXi";
        size_t which = random() % 6;
        auto spec = [&](const char *size) {
            return "<" + RandomSpec(random, flags[which], (size + std::string(1, letters[which])).c_str()) + ">";
        };
        switch (random() % 8) {
        case 0:
            ExpectTheLibrarysText(spec("hh"), static_cast<int>(value & 0xffff));
            break;
        case 1:
            ExpectTheLibrarysText(spec("h"), static_cast<int>(value & 0xfffff));
            break;
        case 2:
            ExpectTheLibrarysText(spec(""), static_cast<int>(value));
            break;
        case 3:
            ExpectTheLibrarysText(spec("l"), static_cast<long>(value));
            break;
        case 4:
            ExpectTheLibrarysText(spec("ll"), static_cast<long long>(value));
            break;
        case 5:
            ExpectTheLibrarysText(spec("j"), static_cast<intmax_t>(value));
            break;
        case 6:
            ExpectTheLibrarysText(spec("z"), static_cast<size_t>(value));
            break;
        default:
            ExpectTheLibrarysText(spec("t"), static_cast<ptrdiff_t>(value));
            break;
        }
    }
}

TEST(BoundscheckBundled, TextsArePrintedAsByTheCLibrary) {
    std::mt19937 random(SEED);
    SCOPED_TRACE("seed " + std::to_string(SEED));
    const std::string texts[] = {"", "a", "hello", "a rather long text, longer than the widths"};
    for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) {
        const std::string &text = texts[random() % std::size(texts)];
        std::string format = RandomSpec(random, "-", "s") + "," + RandomSpec(random, "-", "c") + "%%,";
        ExpectTheLibrarysText(format + "%*.*s", text.c_str(), 'x', static_cast<int>(random() % 20) - 10,
                              static_cast<int>(random() % 20) - 10, text.c_str());
    }
}

TEST(BoundscheckBundled, FloatingPointNumbersArePrintedAsByTheCLibrary) {
    std::mt19937 random(SEED);
    SCOPED_TRACE("seed " + std::to_string(SEED));
    const double values[] = {0.0, -0.0, 1.0, -1.5, 3.14159, 1e10, 1e-10, 12345.678, INFINITY, NAN, 1e100};
    for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) {
        double value = values[random() % std::size(values)];
        const std::string letter(1, "aAeEfFgG"[random() % 8]);
        ExpectTheLibrarysText("<" + RandomSpec(random, "-+ #0", letter.c_str()) + ">", value);
        ExpectTheLibrarysText("<" + RandomSpec(random, "-+ #0", ("L" + letter).c_str()) + ">",
                              static_cast<long double>(value));
    }
}

TEST(BoundscheckBundled, ListsOfArgumentsMayBeUsedAgain) {
    auto twice = [](char *dest, size_t destMax, const char *format, ...) {
        va_list list;
        va_start(list, format);
        int first = vsnprintf_s(dest, destMax, destMax - 1, format, list);
        int second = vsnprintf_truncated_s(dest + first, destMax - static_cast<size_t>(first), format, list);
        va_end(list);
        return first + second;
    };
    char line[16];
    EXPECT_EQ(8, twice(line, sizeof(line), "%s%d", "abc", 7));
    EXPECT_STREQ("abc7abc7", line);
}

TEST(BoundscheckBundled, AScanTakesAListOfArguments) {
    auto scan = [](const char *text, const char *format, ...) {
        va_list list;
        va_start(list, format);
        int result = vsscanf_s(text, format, list);
        va_end(list);
        return result;
    };
    int number = 0;
    char word[4];
    EXPECT_EQ(2, scan("7 abc", "%d%s", &number, word, 4U));
    EXPECT_EQ(7, number);
    EXPECT_STREQ("abc", word);
}

TEST(BoundscheckBundled, ARoomOfZeroIsNotWrittenTo) {
    char dest[2] = "x";
    EXPECT_EQ(0, SCAN("abc", "%s", dest, 0U));
    EXPECT_EQ(0, SCAN("abc", "%c", dest, 0U));
    EXPECT_EQ(0, SCAN("abc", "%[a-z]", dest, 0U));
    EXPECT_EQ('x', dest[0]);
}

TEST(BoundscheckBundled, AnItemWithoutPlaceFailsTheScan) {
    int number = 77;
    EXPECT_EQ(-1, SCAN("1 2", "%d", nullptr));
    EXPECT_EQ(-1, SCAN("1 2", "%d %d", &number, nullptr));
    EXPECT_EQ(-1, SCAN("abc", "%s", nullptr, 4U));
    EXPECT_EQ(-1, SCAN("1.5", "%lf", nullptr));
    EXPECT_EQ(-1, SCAN("abc", "a%n", nullptr));
}

TEST(BoundscheckBundled, AnUnknownConversionEndsTheScan) {
    int number = 77;
    for (const char *format : {"%d%y%d", "%d%", "%d%ls", "%d%[a", "%d%Ld", "%d%5"}) {
        SCOPED_TRACE(format);
        char rest[8] = {};
        EXPECT_EQ(1, SCAN("7abc8", format, &number, rest, 8U));
        EXPECT_EQ(7, number);
    }
}

TEST(BoundscheckBundled, TheCountOfReadCharactersIsNoItem) {
    int number = 0;
    int count = 77;
    long wide = 77;
    EXPECT_EQ(1, SCAN(" 12ab", "%d%n", &number, &count));
    EXPECT_EQ(3, count);
    EXPECT_EQ(0, SCAN("ab", "ab%ln", &wide));
    EXPECT_EQ(2, wide);
}

TEST(BoundscheckBundled, APrefixWithoutDigitsIsNoNumber) {
    unsigned number = 77;
    for (const char *text : {"0x", "0xg", "-", "+", "-x", "0X "}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(0, SCAN(text, "%x", &number));
    }
    EXPECT_EQ(0, SCAN("0x1f", "%2x", &number));
    EXPECT_EQ(77U, number);
    EXPECT_EQ(1, SCAN("0x1f", "%3x", &number));
    EXPECT_EQ(1U, number);
}

TEST(BoundscheckBundled, ABrokenFloatingPointNumberIsNone) {
    double number = 77;
    for (const char *text : {"1e", "1e+", "0x", "0xp1", ".", "-", "in", "infi", "na", "nan(", "e5", "100ergs"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(0, SCAN(text, "%lf", &number));
    }
    EXPECT_EQ(77, number);
}

TEST(BoundscheckBundled, FloatingPointNumbersEndAtTheirWidth) {
    double first = 77;
    long double second = 77;
    EXPECT_EQ(2, SCAN("123.4567e1", "%5lf%Lf", &first, &second));
    EXPECT_EQ(123.4, first);
    EXPECT_EQ(5670.0L, second);
    EXPECT_EQ(1, SCAN("-Infinity", "%lf", &first));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), first);
    EXPECT_EQ(1, SCAN("0x1.8p3", "%lf", &first));
    EXPECT_EQ(12.0, first);
    errno = 4711;
    EXPECT_EQ(1, SCAN("1e999", "%lf", &first));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), first);
    EXPECT_EQ(4711, errno);
    EXPECT_EQ(0, SCAN((std::string(1500, '1') + ".5").c_str(), "%1400lf", &first));
}

TEST(BoundscheckBundled, NumbersThatAreNoneMayHaveAPayload) {
    for (const char *text : {"nan", "NaN!", "-nan", "nan()", "nan(0x1_b)"}) {
        SCOPED_TRACE(text);
        double number = 77;
        EXPECT_EQ(1, SCAN(text, "%lf", &number));
        EXPECT_TRUE(std::isnan(number));
    }
    double number = 77;
    EXPECT_EQ(0, SCAN("nan(-)", "%lf", &number));
    EXPECT_EQ(77, number);
}

TEST(BoundscheckBundled, AFloatingPointNumberMayBeSkippedAndNeedsInput) {
    double number = 77;
    EXPECT_EQ(1, SCAN("1.5e-3 2e+2", "%*lf%lf", &number));
    EXPECT_EQ(200, number);
    EXPECT_EQ(-1, SCAN("  ", "%lf", &number));
    EXPECT_EQ(1, SCAN("25e-1", "%lf", &number));
    EXPECT_EQ(2.5, number);
}

TEST(BoundscheckBundled, APointerIsReadAsItIsPrinted) {
    int target = 0;
    char text[32];
    ASSERT_LT(0, PRINT(text, sizeof(text), "%p", static_cast<void *>(&target)));
    void *read = nullptr;
    EXPECT_EQ(1, SCAN(text, "%p", &read));
    EXPECT_EQ(static_cast<void *>(&target), read);
}

TEST(BoundscheckBundled, ACountThatIsNotAssignedNeedsNoPlace) {
    int number = 77;
    EXPECT_EQ(1, SCAN("ab12", "ab%*n%d", &number));
    EXPECT_EQ(12, number);
}

TEST(BoundscheckBundled, NumbersBeyond64BitsBecomeTheNearest) {
    long long number = 77;
    unsigned long long natural = 77;
    EXPECT_EQ(2, SCAN("9223372036854775808 18446744073709551616", "%lld %llu", &number, &natural));
    EXPECT_EQ(INT64_MAX, number);
    EXPECT_EQ(UINT64_MAX, natural);
    EXPECT_EQ(2, SCAN("-9223372036854775809 -18446744073709551616", "%lld %llu", &number, &natural));
    EXPECT_EQ(INT64_MIN, number);
    EXPECT_EQ(UINT64_MAX, natural);
    EXPECT_EQ(1, SCAN("-9223372036854775808", "%lld", &number));
    EXPECT_EQ(INT64_MIN, number);
}

/* Digits, signs, prefixes and separators: texts on which every rule of the integer conversions turns. */
std::string RandomNumberText(std::mt19937 &random) {
    std::string text;
    for (size_t length = random() % 26; length > 0; --length)
        text += "0011234567899afx-+ .g"[random() % 21];
    return text;
}

TEST(BoundscheckBundled, IntegersAreReadAsByTheCLibrary) {
    std::mt19937 random(SEED);
    SCOPED_TRACE("seed " + std::to_string(SEED));
    const char *formats[] = {"%lld%n", "%lli%n", "%llu%n", "%llo%n", "%3lld%n", "%2llo%n", "%20llu%n"};
    for (int i = 0; i < 100000; ++i) {
        std::string text = RandomNumberText(random);
        const char *format = formats[random() % std::size(formats)];
        /* "0x" without digits and a lone sign at the end: the C library reads the first as 0, the second as the end. */
        size_t x = text.find("0x");
        if (text.empty() || (x != text.npos && (x + 2 >= text.size() || !isxdigit(text[x + 2]))))
            continue;
        if (text.back() == '-' || text.back() == '+')
            text += '.';
        long long expected[2] = {77, 77};
        long long values[2] = {77, 77};
        int expectedResult = LIBRARY_SCAN(text.c_str(), format, &expected[0], &expected[1]);
        ASSERT_EQ(expectedResult, SCAN(text.c_str(), format, &values[0], &values[1])) << text << " " << format;
        ASSERT_EQ(expected[0], values[0]) << text << " " << format;
        ASSERT_EQ(static_cast<int>(expected[1]), static_cast<int>(values[1])) << text << " " << format;
    }
}

TEST(BoundscheckBundled, RandomFormatsAndTextsStayInTheirRoom) {
    std::mt19937 random(SEED);
    SCOPED_TRACE("seed " + std::to_string(SEED));
    const char formatLetters[] = "%%%%%%sssc[[]]^b-y-*0123456789hlLjzt q";
    GuardedRoom formatRoom(64);
    GuardedRoom textRoom(64);
    GuardedRoom destRooms[] = {GuardedRoom(8), GuardedRoom(8), GuardedRoom(8), GuardedRoom(8)};
    int assigned = 0;
    for (int i = 0; i < 50000; ++i) {
        std::string format;
        for (size_t length = random() % 14; length > 0; --length)
            format += formatLetters[random() % (sizeof(formatLetters) - 1)];
        const char *text = textRoom.Put(RandomNumberText(random));
        char *dest[4];
        for (size_t k = 0; k < std::size(dest); ++k)
            dest[k] = destRooms[k].Put(".......", 7);
        int result = SCAN(text, formatRoom.Put(format), dest[0], 7U, dest[1], 7U, dest[2], 7U, dest[3], 7U);
        ASSERT_LE(-1, result) << format << " / " << text;
        ASSERT_GE(4, result) << format << " / " << text;
        assigned += result > 0 ? 1 : 0;
    }
    EXPECT_LT(500, assigned) << "the formats hardly ever read anything";
}

} // namespace

#endif
