/* The bounds-checked prints, row by row. Runs against whichever library is linked, so the rows hold only what callers
 * may rely on. */
#include "boundscheck_rows.h"

#include <securec.h>

#include <cstdarg>
#include <gtest/gtest.h>
#include <string>

namespace {

/* Formats and arguments reach the functions through pointers, where no compiler can judge them. */
using Print = int (*)(char *dest, size_t destMax, const char *format, ...);
using CountedPrint = int (*)(char *dest, size_t destMax, size_t count, const char *format, ...);

int PrintWithList(char *dest, size_t destMax, const char *format, ...) {
    va_list list;
    va_start(list, format);
    int result = vsprintf_s(dest, destMax, format, list);
    va_end(list);
    return result;
}

constexpr const char *NO_TEXT = nullptr;

struct PrintRow {
    const char *name;
    int (*call)(Print print, char *dest);
    int result;
    const char *after;
    int truncatedResult;
    const char *truncatedAfter;
};

const PrintRow PRINT_ROWS[] = {
    {"plain text", [](Print p, char *d) { return p(d, 8, "abc"); }, 3, "abc_????....", 3, "abc_????...."},
    {"empty format", [](Print p, char *d) { return p(d, 8, ""); }, 0, "_???????....", 0, "_???????...."},
    {"empty format into room for one", [](Print p, char *d) { return p(d, 1, ""); }, 0, "_...........", 0,
     "_..........."},
    {"empty argument", [](Print p, char *d) { return p(d, 1, "%s", ""); }, 0, "_...........", 0, "_..........."},
    {"fits to the last byte", [](Print p, char *d) { return p(d, 6, "%s", "hello"); }, 5, "hello_......", 5,
     "hello_......"},
    {"destMax at the limit", [](Print p, char *d) { return p(d, LIMIT, "%s", "hi"); }, 2, "hi_?????????", 2,
     "hi_?????????"},
    {"mixed conversions", [](Print p, char *d) { return p(d, 12, "%s=%d/%c", "a", -42, 'z'); }, 7, "a=-42/z_????", 7,
     "a=-42/z_????"},
    {"signed", [](Print p, char *d) { return p(d, 12, "%d", INT32_MIN); }, 11, "-2147483648_", 11, "-2147483648_"},
    {"unsigned", [](Print p, char *d) { return p(d, 12, "%u", 4294967295U); }, 10, "4294967295_?", 10, "4294967295_?"},
    {"lower hexadecimal", [](Print p, char *d) { return p(d, 12, "%x", 0xdeadbeefU); }, 8, "deadbeef_???", 8,
     "deadbeef_???"},
    {"upper hexadecimal", [](Print p, char *d) { return p(d, 12, "%X", 0xabcU); }, 3, "ABC_????????", 3,
     "ABC_????????"},
    {"octal", [](Print p, char *d) { return p(d, 12, "%o", 0755U); }, 3, "755_????????", 3, "755_????????"},
    {"hexadecimal with prefix", [](Print p, char *d) { return p(d, 12, "%#x", 0x1fU); }, 4, "0x1f_???????", 4,
     "0x1f_???????"},
    {"width", [](Print p, char *d) { return p(d, 12, "%5d", 42); }, 5, "   42_??????", 5, "   42_??????"},
    {"width to the left", [](Print p, char *d) { return p(d, 12, "%-5d|", 42); }, 6, "42   |_?????", 6, "42   |_?????"},
    {"width with zeros", [](Print p, char *d) { return p(d, 12, "%05d", -42); }, 5, "-0042_??????", 5, "-0042_??????"},
    {"two digits", [](Print p, char *d) { return p(d, 12, "%02x-%02u", 10U, 7U); }, 5, "0a-07_??????", 5,
     "0a-07_??????"},
    {"width as argument", [](Print p, char *d) { return p(d, 12, "%*d", 4, 7); }, 4, "   7_???????", 4, "   7_???????"},
    {"negative width as argument", [](Print p, char *d) { return p(d, 12, "%*d|", -4, 7); }, 5, "7   |_??????", 5,
     "7   |_??????"},
    {"precision", [](Print p, char *d) { return p(d, 12, "%.3d", 7); }, 3, "007_????????", 3, "007_????????"},
    {"explicit plus", [](Print p, char *d) { return p(d, 12, "%+d", 7); }, 2, "+7_?????????", 2, "+7_?????????"},
    {"long long", [](Print p, char *d) { return p(d, 12, "%lld", 12345678901LL); }, 11, "12345678901_", 11,
     "12345678901_"},
    {"long", [](Print p, char *d) { return p(d, 12, "%lu", 12345678901UL); }, 11, "12345678901_", 11, "12345678901_"},
    {"size", [](Print p, char *d) { return p(d, 12, "%zu", size_t(99)); }, 2, "99_?????????", 2, "99_?????????"},
    {"byte", [](Print p, char *d) { return p(d, 12, "%hhu", 0x1ffU); }, 3, "255_????????", 3, "255_????????"},
    {"short", [](Print p, char *d) { return p(d, 12, "%hd", 0x1ffff); }, 2, "-1_?????????", 2, "-1_?????????"},
    {"floating point", [](Print p, char *d) { return p(d, 12, "%.2f", 3.14159); }, 4, "3.14_???????", 4,
     "3.14_???????"},
    {"precision of a text", [](Print p, char *d) { return p(d, 12, "%.3s", "abcdef"); }, 3, "abc_????????", 3,
     "abc_????????"},
    {"width of a text", [](Print p, char *d) { return p(d, 12, "%5s|%-3s|", "ab", "c"); }, 10, "   ab|c  |_?", 10,
     "   ab|c  |_?"},
    {"percent sign", [](Print p, char *d) { return p(d, 12, "%d%%", 50); }, 3, "50%_????????", 3, "50%_????????"},
    {"null text", [](Print p, char *d) { return p(d, 12, "%s", NO_TEXT); }, 6, "(null)_?????", 6, "(null)_?????"},
    {"null text among others", [](Print p, char *d) { return p(d, 12, "<%s>%d", NO_TEXT, 5); }, 9, "<(null)>5_??", 9,
     "<(null)>5_??"},

    {"dest null", [](Print p, char *) { return p(nullptr, 8, "abc"); }, -1, PAPER, -1, PAPER},
    {"destMax 0", [](Print p, char *d) { return p(d, 0, "abc"); }, -1, PAPER, -1, PAPER},
    {"destMax 0, empty format", [](Print p, char *d) { return p(d, 0, ""); }, -1, PAPER, -1, PAPER},
    {"destMax above the limit", [](Print p, char *d) { return p(d, LIMIT + 1, "abc"); }, -1, PAPER, -1, PAPER},
    {"destMax of all ones", [](Print p, char *d) { return p(d, SIZE_MAX, "abc"); }, -1, PAPER, -1, PAPER},
    {"destMax 0 before format null", [](Print p, char *d) { return p(d, 0, NO_TEXT); }, -1, PAPER, -1, PAPER},
    {"destMax above the limit before format null", [](Print p, char *d) { return p(d, LIMIT + 1, NO_TEXT); }, -1, PAPER,
     -1, PAPER},
    {"dest null and format null", [](Print p, char *) { return p(nullptr, 8, NO_TEXT); }, -1, PAPER, -1, PAPER},

    {"format null", [](Print p, char *d) { return p(d, 8, NO_TEXT); }, -1, "_???????....", -1, "_???????...."},
    {"unknown letter", [](Print p, char *d) { return p(d, 8, "ab%y", 1); }, -1, "_???????....", -1, "_???????...."},
    {"lone percent sign at the end", [](Print p, char *d) { return p(d, 8, "ab%"); }, -1, "_???????....", -1,
     "_???????...."},
    {"conversion without letter", [](Print p, char *d) { return p(d, 8, "ab%5"); }, -1, "_???????....", -1,
     "_???????...."},

    {"one character too long", [](Print p, char *d) { return p(d, 5, "%s", "hello"); }, -1, "_????.......", 4,
     "hell_......."},
    {"plain text too long", [](Print p, char *d) { return p(d, 4, "abcdefgh"); }, -1, "_???........", 3,
     "abc_........"},
    {"far too long", [](Print p, char *d) { return p(d, 4, "%s%s%s", "hello", "hello", "hello"); }, -1, "_???........",
     3, "hel_........"},
    {"too long in the second argument", [](Print p, char *d) { return p(d, 6, "%s%s", "abc", "defg"); }, -1,
     "_?????......", 5, "abcde_......"},
    {"number too long", [](Print p, char *d) { return p(d, 4, "%d", 123456); }, -1, "_???........", 3, "123_........"},
    {"width too long", [](Print p, char *d) { return p(d, 4, "%6d", 12); }, -1, "_???........", 3, "   _........"},
    {"one character into room for one", [](Print p, char *d) { return p(d, 1, "%s", "a"); }, -1, "_...........", 0,
     "_..........."},
    {"null text too long", [](Print p, char *d) { return p(d, 6, "%s", NO_TEXT); }, -1, "_?????......", 5,
     "(null_......"},
};

struct CountedPrintRow {
    const char *name;
    int (*call)(CountedPrint print, char *dest);
    int result;
    const char *after;
};

const CountedPrintRow COUNTED_PRINT_ROWS[] = {
    {"fits", [](CountedPrint p, char *d) { return p(d, 8, 7, "%s", "abc"); }, 3, "abc_????...."},
    {"fits count and room to the last byte", [](CountedPrint p, char *d) { return p(d, 6, 5, "%s", "hello"); }, 5,
     "hello_......"},
    {"fits count exactly", [](CountedPrint p, char *d) { return p(d, 12, 5, "%s", "hello"); }, 5, "hello_??????"},
    {"empty text, count 0", [](CountedPrint p, char *d) { return p(d, 8, 0, "%s", ""); }, 0, "_???????...."},
    {"empty text into room for one", [](CountedPrint p, char *d) { return p(d, 1, 0, "%s", ""); }, 0, "_..........."},
    {"count is destMax and the text fits", [](CountedPrint p, char *d) { return p(d, 6, 6, "%s", "hello"); }, 5,
     "hello_......"},
    {"count is above destMax and the text fits", [](CountedPrint p, char *d) { return p(d, 6, 99, "%s", "hello"); }, 5,
     "hello_......"},
    {"count at its limit and the text fits", [](CountedPrint p, char *d) { return p(d, 6, LIMIT - 1, "%s", "hello"); },
     5, "hello_......"},
    {"destMax at the limit", [](CountedPrint p, char *d) { return p(d, LIMIT, 5, "%d", 42); }, 2, "42_?????????"},
    {"destMax and count at their limits", [](CountedPrint p, char *d) { return p(d, LIMIT, LIMIT - 1, "%d", 42); }, 2,
     "42_?????????"},
    {"mixed conversions", [](CountedPrint p, char *d) { return p(d, 12, 11, "%u:%s", 7U, NO_TEXT); }, 8,
     "7:(null)_???"},

    {"dest null", [](CountedPrint p, char *) { return p(nullptr, 8, 7, "abc"); }, -1, PAPER},
    {"destMax 0", [](CountedPrint p, char *d) { return p(d, 0, 0, "abc"); }, -1, PAPER},
    {"destMax above the limit", [](CountedPrint p, char *d) { return p(d, LIMIT + 1, 7, "abc"); }, -1, PAPER},
    {"destMax of all ones", [](CountedPrint p, char *d) { return p(d, SIZE_MAX, 7, "abc"); }, -1, PAPER},
    {"destMax 0 before format null", [](CountedPrint p, char *d) { return p(d, 0, 0, NO_TEXT); }, -1, PAPER},
    {"destMax above the limit before count above its limit",
     [](CountedPrint p, char *d) { return p(d, LIMIT + 1, SIZE_MAX, "abc"); }, -1, PAPER},

    {"format null", [](CountedPrint p, char *d) { return p(d, 8, 7, NO_TEXT); }, -1, "_???????...."},
    {"unknown letter", [](CountedPrint p, char *d) { return p(d, 8, 7, "ab%y", 1); }, -1, "_???????...."},
    {"lone percent sign at the end", [](CountedPrint p, char *d) { return p(d, 8, 7, "ab%"); }, -1, "_???????...."},

    {"longer than count", [](CountedPrint p, char *d) { return p(d, 8, 3, "%s", "hello"); }, -1, "hel_????...."},
    {"longer than count by one", [](CountedPrint p, char *d) { return p(d, 8, 4, "%s", "hello"); }, -1, "hell_???...."},
    {"longer than count, which is one below destMax", [](CountedPrint p, char *d) { return p(d, 5, 4, "%s", "hello"); },
     -1, "hell_......."},
    {"longer than count and room", [](CountedPrint p, char *d) { return p(d, 4, 2, "%s", "hello"); }, -1,
     "he_?........"},
    {"count 0 keeps nothing", [](CountedPrint p, char *d) { return p(d, 8, 0, "%s", "hello"); }, -1, "_???????...."},
    {"longer than count 0 into room for one", [](CountedPrint p, char *d) { return p(d, 1, 0, "%s", "a"); }, -1,
     "_..........."},

    {"longer than room, count is destMax", [](CountedPrint p, char *d) { return p(d, 5, 5, "%s", "hello"); }, -1,
     "_????......."},
    {"longer than room, count is above destMax", [](CountedPrint p, char *d) { return p(d, 4, 99, "%s", "hello"); }, -1,
     "_???........"},
    {"longer than room, count at its limit", [](CountedPrint p, char *d) { return p(d, 4, LIMIT - 1, "%s", "hello"); },
     -1, "_???........"},

    {"count above its limit and the text fits", [](CountedPrint p, char *d) { return p(d, 8, LIMIT, "%s", "abc"); }, -1,
     "_???????...."},
    {"count above its limit and the text does not fit",
     [](CountedPrint p, char *d) { return p(d, 4, LIMIT, "%s", "hello"); }, -1, "_???........"},
    {"count of all ones and the text fits", [](CountedPrint p, char *d) { return p(d, 8, SIZE_MAX, "%s", "abc"); }, -1,
     "_???????...."},
};

TEST(Boundscheck, PrintsFollowTheirTable) {
    struct {
        const char *name;
        Print print;
    } functions[] = {{"sprintf_s", sprintf_s}, {"vsprintf_s", PrintWithList}};
    for (const PrintRow &row : PRINT_ROWS) {
        for (auto &function : functions) {
            SCOPED_TRACE(std::string(function.name) + ": " + row.name);
            Arena arena(PAPER);
            EXPECT_EQ(row.result, Quietly([&] { return row.call(function.print, arena.At(0)); }));
            EXPECT_EQ(row.after, arena.PictureLike(row.after));
        }
    }
}

TEST(Boundscheck, TruncatingPrintsFollowTheirTable) {
    for (const PrintRow &row : PRINT_ROWS) {
        SCOPED_TRACE(row.name);
        Arena arena(PAPER);
        EXPECT_EQ(row.truncatedResult, Quietly([&] { return row.call(snprintf_truncated_s, arena.At(0)); }));
        EXPECT_EQ(row.truncatedAfter, arena.PictureLike(row.truncatedAfter));
    }
}

TEST(Boundscheck, CountedPrintsFollowTheirTable) {
    for (const CountedPrintRow &row : COUNTED_PRINT_ROWS) {
        SCOPED_TRACE(row.name);
        Arena arena(PAPER);
        EXPECT_EQ(row.result, Quietly([&] { return row.call(snprintf_s, arena.At(0)); }));
        EXPECT_EQ(row.after, arena.PictureLike(row.after));
    }
}

TEST(Boundscheck, NoPrintWritesThroughAnArgument) {
    int written = 77;
    CountedPrint counted = snprintf_s;
    for (Print print : {Print(sprintf_s), Print(PrintWithList), Print(snprintf_truncated_s)}) {
        Arena arena(PAPER);
        EXPECT_EQ(-1, Quietly([&] { return print(arena.At(0), 8, "abc%n", &written); }));
        EXPECT_EQ("_???????....", arena.PictureLike("_???????...."));
    }
    Arena arena(PAPER);
    EXPECT_EQ(-1, Quietly([&] { return counted(arena.At(0), 8, 7, "abc%n", &written); }));
    EXPECT_EQ("_???????....", arena.PictureLike("_???????...."));
    EXPECT_EQ(77, written);
}

} // namespace
