/* The bounds-checked scans, row by row. Runs against whichever library is linked, so the rows hold only what callers
 * may rely on. */
#include "boundscheck_rows.h"
#include "guarded_text.h"

#include <securec.h>

#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

using Scan = int (*)(const char *buffer, const char *format, ...);

struct NumberRow {
    const char *name;
    const char *input;
    const char *format;
    int result;
    uint32_t values[3]; /* 77: not assigned */
};

// clang-format off
const NumberRow NUMBER_ROWS[] = {
    {"one number", "42", "%u", 1, {42, 77, 77}},
    {"several numbers", "1 2 3", "%u %u %u", 3, {1, 2, 3}},
    {"blanks before a number", " \t\n42", "%u", 1, {42, 77, 77}},
    {"stops at what is no digit", "12ab", "%u", 1, {12, 77, 77}},
    {"largest unsigned", "4294967295", "%u", 1, {4294967295U, 77, 77}},
    {"unsigned beyond the range", "4294967296", "%u", 1, {0, 77, 77}},
    {"unsigned beyond the range by two", "4294967298", "%u", 1, {2, 77, 77}},
    {"negative unsigned", "-5", "%u", 1, {4294967291U, 77, 77}},
    {"signed", "-5", "%d", 1, {4294967291U, 77, 77}},
    {"explicit plus", "+5", "%d", 1, {5, 77, 77}},
    {"smallest signed", "-2147483648", "%d", 1, {2147483648U, 77, 77}},
    {"leading zeros", "007", "%d", 1, {7, 77, 77}},
    {"hexadecimal", "1f", "%x", 1, {31, 77, 77}},
    {"upper hexadecimal", "1F", "%x", 1, {31, 77, 77}},
    {"hexadecimal with prefix", "0x1f", "%x", 1, {31, 77, 77}},
    {"octal", "17", "%o", 1, {15, 77, 77}},
    {"any base: decimal", "17", "%i", 1, {17, 77, 77}},
    {"any base: octal", "017", "%i", 1, {15, 77, 77}},
    {"any base: hexadecimal", "0x17", "%i", 1, {23, 77, 77}},
    {"width of two reads one digit", "a", "%2x", 1, {10, 77, 77}},
    {"width of two reads two digits", "1f", "%2x", 1, {31, 77, 77}},
    {"width of two leaves the third digit", "1f3", "%2x%x", 2, {31, 3, 77}},
    {"width with a leading zero", "021a2b", "%02x%02x%02x", 3, {2, 26, 43}},
    {"a width stops at a separator", "2-1a", "%02x-%02x", 2, {2, 26, 77}},
    {"decimal width", "123456", "%3u%2u%u", 3, {123, 45, 6}},
    {"literals between", "10.20.30", "%u.%u.%u", 3, {10, 20, 30}},
    {"percent sign", "50%7", "%u%%%u", 2, {50, 7, 77}},
    {"suppressed", "1 2", "%*u %u", 1, {2, 77, 77}},
    {"blank in the format matches none", "1:2", "%u : %u", 2, {1, 2, 77}},
    {"blank in the format matches several", "1 \t 2", "%u %u", 2, {1, 2, 77}},

    {"empty input", "", "%u", -1, {77, 77, 77}},
    {"empty input and empty format", "", "", -1, {77, 77, 77}},
    {"input of blanks", "   ", "%u", -1, {77, 77, 77}},
    {"end of input before the first item", "abc", "abc%u", -1, {77, 77, 77}},
    {"end of input after an item", "1", "%u %u", 1, {1, 77, 77}},
    {"end of input after an item and blanks", "1   ", "%u %u", 1, {1, 77, 77}},
    {"input null", nullptr, "%u", -1, {77, 77, 77}},
    {"format null", "1", nullptr, -1, {77, 77, 77}},
    {"input null and format null", nullptr, nullptr, -1, {77, 77, 77}},

    {"mismatch", "x1", "%u", 0, {77, 77, 77}},
    {"mismatch of a literal", "a1", "b%u", 0, {77, 77, 77}},
    {"mismatch after an item", "1,2", "%u.%u", 1, {1, 77, 77}},
    {"mismatch of a hexadecimal digit", "zz", "%02x%02x", 0, {77, 77, 77}},
    {"second item does not match", "02:1a", "%02x%02x", 1, {2, 77, 77}},
};

struct ScanTextRow {
    const char *name;
    const char *input;
    const char *format;
    unsigned room;
    int result;
    const char *after;
};

const ScanTextRow SCAN_TEXT_ROWS[] = {
    {"word", "hello world", "%s", 12, 1, "hello_??????"},
    {"word after blanks", "  hello", "%s", 12, 1, "hello_??????"},
    {"word to the last byte", "hello", "%s", 6, 1, "hello_......"},
    {"word up to its width", "hello", "%3s", 6, 1, "hel_??......"},
    {"word up to its width to the last byte", "hello", "%3s", 4, 1, "hel_........"},
    {"word one character too long", "hello world", "%s", 5, 0, "_????......."},
    {"word far too long", "hello world", "%s", 2, 0, "_?.........."},
    {"word into room for one", "hello world", "%s", 1, 0, "_..........."},
    {"width one character too long", "hello", "%4s", 4, 0, "_???........"},
    {"no word", "   ", "%s", 12, -1, "............"},
    {"character", "hello", "%c", 1, 1, "h..........."},
    {"a blank is a character", " x", "%c", 1, 1, " ..........."},
    {"characters are not terminated", "hello", "%3c", 3, 1, "hel........."},
    {"characters with room to spare", "hello", "%3c", 8, 1, "hel?????...."},
    {"characters too long", "hello", "%3c", 2, 0, "_?.........."},
    {"set", "abcxyz", "%[abc]", 12, 1, "abc_????????"},
    {"range", "a1b2-", "%[a-z0-9]", 12, 1, "a1b2_???????"},
    {"inverted set", "key=value", "%[^=]", 12, 1, "key_????????"},
    {"set with a bracket", "]a]b", "%[]a]", 12, 1, "]a]_????????"},
    {"set with blanks", "a b\nc", "%[^\n]", 12, 1, "a b_????????"},
    {"set does not skip blanks", " abc", "%[abc]", 12, 0, "............"},
    {"set to the last byte", "abcx", "%[abc]", 4, 1, "abc_........"},
    {"set up to its width", "abcabc", "%4[abc]", 12, 1, "abca_???????"},
    {"set too long", "abcabcx", "%[abc]", 4, 0, "_???........"},
    {"set does not match", "xyz", "%[abc]", 12, 0, "............"},
};
// clang-format on

TEST(Boundscheck, ScannedNumbersFollowTheirTable) {
    Scan scan = sscanf_s;
    for (const NumberRow &row : NUMBER_ROWS) {
        SCOPED_TRACE(row.name);
        uint32_t values[3] = {77, 77, 77};
        int result = Quietly([&] { return scan(row.input, row.format, &values[0], &values[1], &values[2]); });
        EXPECT_EQ(row.result, result);
        for (size_t i = 0; i < std::size(values); ++i)
            EXPECT_EQ(row.values[i], values[i]) << "value " << i;
    }
}

TEST(Boundscheck, ScannedTextsFollowTheirTable) {
    Scan scan = sscanf_s;
    for (const ScanTextRow &row : SCAN_TEXT_ROWS) {
        SCOPED_TRACE(row.name);
        Arena arena(PAPER);
        EXPECT_EQ(row.result, Quietly([&] { return scan(row.input, row.format, arena.At(0), row.room); }));
        EXPECT_EQ(row.after, arena.PictureLike(row.after));
    }
}

TEST(Boundscheck, AnItemThatIsTooLongEndsTheScan) {
    Scan scan = sscanf_s;
    uint32_t before = 77;
    uint32_t behind = 77;
    Arena arena("....");
    int result = Quietly([&] { return scan("7 toolong 8", "%u %s %u", &before, arena.At(0), 4U, &behind); });
    EXPECT_EQ(1, result);
    EXPECT_EQ(7U, before);
    EXPECT_EQ("_???", arena.PictureLike("_???"));
    EXPECT_EQ(77U, behind);
}

TEST(Boundscheck, TextsAndNumbersAreScannedTogether) {
    Scan scan = sscanf_s;
    uint32_t number = 77;
    Arena name("......");
    Arena rest("......");
    int result = Quietly([&] { return scan("eth 12 up!", "%s %u %[a-z]", name.At(0), 6U, &number, rest.At(0), 6U); });
    EXPECT_EQ(3, result);
    EXPECT_EQ(12U, number);
    EXPECT_EQ("eth_??", name.PictureLike("eth_??"));
    EXPECT_EQ("up_???", rest.PictureLike("up_???"));
}

TEST(Boundscheck, ASuppressedTextTakesNoArguments) {
    Scan scan = sscanf_s;
    uint32_t number = 77;
    EXPECT_EQ(1, Quietly([&] { return scan("skipped xx12", "%*s %*[x]%u", &number); }));
    EXPECT_EQ(12U, number);
}

TEST(Boundscheck, ScannedNumbersHaveTheSizeOfTheirConversion) {
    Scan scan = sscanf_s;
    struct {
        unsigned char bytes[2] = {77, 77};
        uint16_t shorts[2] = {77, 77};
        unsigned long longs[2] = {77, 77};
        long long longLongs[2] = {77, 77};
        size_t sizes[2] = {77, 77};
    } v;
    int result = Quietly([&] {
        return scan("300 65537 5000000000 -5000000000 6", "%hhu %hu %lu %lld %zu", &v.bytes[0], &v.shorts[0],
                    &v.longs[0], &v.longLongs[0], &v.sizes[0]);
    });
    EXPECT_EQ(5, result);
    EXPECT_EQ(44, v.bytes[0]);
    EXPECT_EQ(1, v.shorts[0]);
    EXPECT_EQ(5000000000UL, v.longs[0]);
    EXPECT_EQ(-5000000000LL, v.longLongs[0]);
    EXPECT_EQ(6U, v.sizes[0]);
    EXPECT_EQ(77, v.bytes[1]);
    EXPECT_EQ(77, v.shorts[1]);
    EXPECT_EQ(77UL, v.longs[1]);
    EXPECT_EQ(77, v.longLongs[1]);
    EXPECT_EQ(77U, v.sizes[1]);
}

TEST(Boundscheck, FloatingPointNumbersAreScanned) {
    Scan scan = sscanf_s;
    float single = 77;
    double twice = 77;
    EXPECT_EQ(2, Quietly([&] { return scan("0.5 -1.25e2", "%f %lf", &single, &twice); }));
    EXPECT_EQ(0.5F, single);
    EXPECT_EQ(-125.0, twice);
}

TEST(Boundscheck, AScanReadsUpToTheTerminator) {
    Scan scan = sscanf_s;
    for (const char *text : {"42", " 42", "4", "0x"}) {
        SCOPED_TRACE(text);
        GuardedText input(text);
        uint32_t number = 77;
        EXPECT_LE(0, scan(input, "%x%*s", &number));
    }
    GuardedText word("word");
    char dest[8];
    EXPECT_EQ(1, scan(word, "%s", dest, 8U));
    EXPECT_STREQ("word", dest);
}

} // namespace
