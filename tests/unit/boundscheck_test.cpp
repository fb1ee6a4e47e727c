/* The bounds-checked copies, row by row. Runs against whichever library is linked, so the rows hold only what callers
 * may rely on. */
#include "boundscheck_rows.h"
#include "guarded_text.h"

#include <securec.h>

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

struct CopyRow {
    const char *name;
    const char *before;
    int dest;
    size_t destMax;
    int source;
    size_t count;
    int code;
    const char *after;
};

using MemoryCopy = errno_t (*)(void *, size_t, const void *, size_t);

void RunMemoryRow(const char *function, MemoryCopy copy, const CopyRow &row) {
    SCOPED_TRACE(std::string(function) + ": " + row.name);
    Arena arena(row.before);
    int code = Quietly([&] { return copy(arena.At(row.dest), row.destMax, arena.At(row.source), row.count); });
    EXPECT_EQ(row.code, code);
    EXPECT_EQ(row.after, arena.PictureLike(row.after));
}

// clang-format off
const CopyRow MEMORY_ROWS[] = {
    {"copies count bytes", "........abcd", 0, 8, 8, 3, 0, "abc.....abcd"},
    {"copies one byte", "........abcd", 2, 6, 8, 1, 0, "..a.....abcd"},
    {"fills the destination", "....abcd", 0, 4, 4, 4, 0, "abcdabcd"},
    {"copies zero bytes like others", "....a_b_", 0, 4, 4, 4, 0, "a_b_a_b_"},
    {"room for one", "..ab", 0, 1, 2, 1, 0, "a.ab"},
    {"count 0", "....abcd", 0, 4, 4, 0, 0, "....abcd"},
    {"destMax at the limit", "....abcd", 0, LIMIT, 4, 2, 0, "ab..abcd"},

    {"destMax 0", "....abcd", 0, 0, 4, 1, ERANGE, "....abcd"},
    {"destMax 0, count 0", "....abcd", 0, 0, 4, 0, ERANGE, "....abcd"},
    {"destMax above the limit", "....abcd", 0, LIMIT + 1, 4, 2, ERANGE, "....abcd"},
    {"destMax above the limit, count 0", "....abcd", 0, LIMIT + 1, 4, 0, ERANGE, "....abcd"},
    {"destMax of all ones", "....abcd", 0, SIZE_MAX, 4, 2, ERANGE, "....abcd"},
    {"destMax 0 before dest null", "....", NONE, 0, 0, 2, ERANGE, "...."},
    {"destMax above the limit before dest null", "....", NONE, LIMIT + 1, 0, 2, ERANGE, "...."},
    {"destMax 0 before source null", "....", 0, 0, NONE, 2, ERANGE, "...."},
    {"destMax above the limit before source null", "....", 0, LIMIT + 1, NONE, 2, ERANGE, "...."},
    {"destMax above the limit before overlap", "abcdefgh", 0, LIMIT + 1, 1, 4, ERANGE, "abcdefgh"},

    {"dest null", "abcd", NONE, 4, 0, 4, EINVAL, "abcd"},
    {"dest null, count 0", "abcd", NONE, 4, 0, 0, EINVAL, "abcd"},
    {"dest null before source null", "abcd", NONE, 4, NONE, 4, EINVAL, "abcd"},
    {"dest null before too long", "abcd", NONE, 4, 0, 5, EINVAL, "abcd"},
    {"dest null with destMax at the limit", "abcd", NONE, LIMIT, 0, 4, EINVAL, "abcd"},

    {"source null", "abcdefgh", 0, 6, NONE, 2, EINVAL_AND_RESET, "______gh"},
    {"source null, count 0", "abcdefgh", 0, 6, NONE, 0, EINVAL_AND_RESET, "______gh"},
    {"source null before too long", "abcdefgh", 0, 6, NONE, 7, EINVAL_AND_RESET, "______gh"},

    {"one byte too long", "abcdefgh12345", 0, 4, 8, 5, ERANGE_AND_RESET, "____efgh12345"},
    {"count above the limit", "abcdefgh", 0, 4, 4, LIMIT + 1, ERANGE_AND_RESET, "____efgh"},
    {"count of all ones", "abcdefgh", 1, 2, 4, SIZE_MAX, ERANGE_AND_RESET, "a__defgh"},
    {"too long before overlap", "abcdefgh", 0, 4, 2, 5, ERANGE_AND_RESET, "____efgh"},
    {"too long, dest is source", "abcdefgh", 0, 4, 0, 5, ERANGE_AND_RESET, "____efgh"},

    {"dest is source", "abcdefgh", 0, 8, 0, 4, 0, "abcdefgh"},
    {"dest is source, to the last byte", "abcdefgh", 2, 4, 2, 4, 0, "abcdefgh"},
    {"dest is source, count 0", "abcdefgh", 2, 4, 2, 0, 0, "abcdefgh"},
    {"neighbours, dest below", "....abcd", 0, 8, 4, 4, 0, "abcdabcd"},
    {"neighbours, dest above", "abcd....", 4, 4, 0, 4, 0, "abcdabcd"},
    {"only the room reaches the source", "..abcd", 0, 6, 2, 2, 0, "ababcd"},
    {"count 0 one byte apart", "abcd", 0, 4, 1, 0, 0, "abcd"},
};

const CopyRow MEMCPY_OVERLAPS[] = {
    {"one byte below the source", "abcdefgh", 0, 4, 1, 4, EOVERLAP_AND_RESET, "____efgh"},
    {"one byte above the source", "abcdefgh", 1, 4, 0, 4, EOVERLAP_AND_RESET, "a____fgh"},
    {"shares the last byte only", "abcdefgh", 0, 4, 3, 4, EOVERLAP_AND_RESET, "____efgh"},
    {"shares the first byte only", "abcdefgh", 3, 4, 0, 4, EOVERLAP_AND_RESET, "abc____h"},
    {"two bytes one apart", "abcd", 0, 2, 1, 2, EOVERLAP_AND_RESET, "__cd"},
    {"the whole room is zeroed", "abcdefgh", 0, 7, 1, 3, EOVERLAP_AND_RESET, "_______h"},
};

const CopyRow MEMMOVE_OVERLAPS[] = {
    {"one byte below the source", "abcdefgh", 0, 4, 1, 4, 0, "bcdeefgh"},
    {"one byte above the source", "abcdefgh", 1, 4, 0, 4, 0, "aabcdfgh"},
    {"shares the last byte only", "abcdefgh", 0, 4, 3, 4, 0, "defgefgh"},
    {"shares the first byte only", "abcdefgh", 3, 4, 0, 4, 0, "abcabcdh"},
    {"two bytes one apart", "abcd", 0, 2, 1, 2, 0, "bccd"},
    {"nothing behind count is touched", "abcdefgh", 0, 7, 1, 3, 0, "bcddefgh"},
};
// clang-format on

TEST(Boundscheck, MemoryCopiesFollowTheirTable) {
    for (const CopyRow &row : MEMORY_ROWS) {
        RunMemoryRow("memcpy_s", memcpy_s, row);
        RunMemoryRow("memmove_s", memmove_s, row);
    }
}

TEST(Boundscheck, CopyingBetweenOverlappingRangesIsRefused) {
    for (const CopyRow &row : MEMCPY_OVERLAPS)
        RunMemoryRow("memcpy_s", memcpy_s, row);
}

TEST(Boundscheck, MovingBetweenOverlappingRangesWorks) {
    for (const CopyRow &row : MEMMOVE_OVERLAPS)
        RunMemoryRow("memmove_s", memmove_s, row);
}

struct FillRow {
    const char *name;
    const char *before;
    int dest;
    size_t destMax;
    int c;
    size_t count;
    int code;
    const char *after;
};

// clang-format off
const FillRow FILL_ROWS[] = {
    {"sets count bytes", "abcdefgh", 0, 8, 'x', 3, 0, "xxxdefgh"},
    {"sets one byte", "abcdefgh", 1, 4, 'x', 1, 0, "axcdefgh"},
    {"fills the destination", "abcdefgh", 0, 4, 'x', 4, 0, "xxxxefgh"},
    {"sets zero bytes", "abcdefgh", 2, 4, 0, 4, 0, "ab____gh"},
    {"only the low byte of the value counts", "abcd", 0, 4, 0x100 + 'x', 2, 0, "xxcd"},
    {"count 0", "abcdefgh", 0, 4, 'x', 0, 0, "abcdefgh"},
    {"destMax at the limit", "abcdefgh", 0, LIMIT, 'x', 2, 0, "xxcdefgh"},

    {"destMax 0 and count 0", "abcd", 0, 0, 'x', 0, 0, "abcd"},
    {"destMax 0 and count 0, dest null", "abcd", NONE, 0, 'x', 0, ERANGE, "abcd"},
    {"destMax 0", "abcd", 0, 0, 'x', 1, ERANGE, "abcd"},
    {"destMax above the limit", "abcd", 0, LIMIT + 1, 'x', 1, ERANGE, "abcd"},
    {"destMax above the limit, count 0", "abcd", 0, LIMIT + 1, 'x', 0, ERANGE, "abcd"},
    {"destMax of all ones", "abcd", 0, SIZE_MAX, 'x', SIZE_MAX, ERANGE, "abcd"},
    {"destMax 0 before dest null", "abcd", NONE, 0, 'x', 1, ERANGE, "abcd"},
    {"destMax above the limit before dest null", "abcd", NONE, LIMIT + 1, 'x', 1, ERANGE, "abcd"},

    {"dest null", "abcd", NONE, 4, 'x', 4, EINVAL, "abcd"},
    {"dest null, count 0", "abcd", NONE, 4, 'x', 0, EINVAL, "abcd"},
    {"dest null before too long", "abcd", NONE, 4, 'x', 5, EINVAL, "abcd"},

    {"one byte too long", "abcdefgh", 0, 4, 'x', 5, ERANGE_AND_RESET, "xxxxefgh"},
    {"too long with value 0", "abcdefgh", 2, 4, 0, 5, ERANGE_AND_RESET, "ab____gh"},
    {"count above the limit", "abcdefgh", 0, 4, 'x', LIMIT + 1, ERANGE_AND_RESET, "xxxxefgh"},
    {"count of all ones", "abcdefgh", 0, 4, 'x', SIZE_MAX, ERANGE_AND_RESET, "xxxxefgh"},
};
// clang-format on

TEST(Boundscheck, MemsetFollowsItsTable) {
    for (const FillRow &row : FILL_ROWS) {
        SCOPED_TRACE(row.name);
        Arena arena(row.before);
        EXPECT_EQ(row.code, Quietly([&] { return memset_s(arena.At(row.dest), row.destMax, row.c, row.count); }));
        EXPECT_EQ(row.after, arena.PictureLike(row.after));
    }
}

using TextCopy = std::function<errno_t(char *, size_t, const char *, size_t)>;

void RunTextRow(const char *function, const TextCopy &copy, const CopyRow &row) {
    SCOPED_TRACE(std::string(function) + ": " + row.name);
    Arena arena(row.before);
    int code = Quietly([&] { return copy(arena.At(row.dest), row.destMax, arena.At(row.source), row.count); });
    EXPECT_EQ(row.code, code);
    EXPECT_EQ(row.after, arena.PictureLike(row.after));
}

// clang-format off
/* The count is for strncpy_s: no text is that long. */
const CopyRow TEXT_ROWS[] = {
    {"copies the terminator and pads nothing", "........ab_zz", 0, 8, 8, LIMIT, 0, "ab_.....ab_zz"},
    {"fits to the last byte", "....abc_", 0, 4, 4, LIMIT, 0, "abc_abc_"},
    {"empty text", "....____", 0, 4, 4, LIMIT, 0, "_...____"},
    {"empty text into room for one", "....____", 1, 1, 4, LIMIT, 0, "._..____"},
    {"destMax at the limit", "....ab_", 0, LIMIT, 4, LIMIT, 0, "ab_.ab_"},

    {"destMax 0", "....ab_", 0, 0, 4, LIMIT, ERANGE, "....ab_"},
    {"destMax above the limit", "....ab_", 0, LIMIT + 1, 4, LIMIT, ERANGE, "....ab_"},
    {"destMax of all ones", "....ab_", 0, SIZE_MAX, 4, LIMIT, ERANGE, "....ab_"},
    {"destMax 0 before dest null", "ab_", NONE, 0, 0, LIMIT, ERANGE, "ab_"},
    {"destMax above the limit before dest null", "ab_", NONE, LIMIT + 1, 0, LIMIT, ERANGE, "ab_"},
    {"destMax 0 before source null", "....", 0, 0, NONE, LIMIT, ERANGE, "...."},
    {"destMax above the limit before source null", "....", 0, LIMIT + 1, NONE, LIMIT, ERANGE, "...."},

    {"dest null", "ab_", NONE, 4, 0, LIMIT, EINVAL, "ab_"},
    {"dest null before source null", "ab_", NONE, 4, NONE, LIMIT, EINVAL, "ab_"},
    {"dest null before too long", "ab_", NONE, 1, 0, LIMIT, EINVAL, "ab_"},

    {"source null", "abcdefgh", 0, 6, NONE, LIMIT, EINVAL_AND_RESET, "_bcdefgh"},
    {"source null with destMax at the limit", "abcd", 0, LIMIT, NONE, LIMIT, EINVAL_AND_RESET, "_bcd"},
    {"source null, room for one", "abcd", 1, 1, NONE, LIMIT, EINVAL_AND_RESET, "a_cd"},

    {"one character too long", "....wxyz_", 0, 4, 4, LIMIT, ERANGE_AND_RESET, "_...wxyz_"},
    {"far too long", "..wxyzwxyz_", 0, 2, 2, LIMIT, ERANGE_AND_RESET, "_.wxyzwxyz_"},
    {"one character into room for one", "..a_", 0, 1, 2, LIMIT, ERANGE_AND_RESET, "_.a_"},
    {"too long before overlap", "abcdef_", 0, 3, 2, LIMIT, ERANGE_AND_RESET, "_bcdef_"},
    {"too long, dest is source", "abcdef_", 0, 3, 0, LIMIT, ERANGE_AND_RESET, "_bcdef_"},

    {"dest is source", "abc_efgh", 0, 8, 0, LIMIT, 0, "abc_efgh"},
    {"dest is source, to the last byte", "abc_efgh", 0, 4, 0, LIMIT, 0, "abc_efgh"},
    {"dest is source, empty", "_bc", 0, 3, 0, LIMIT, 0, "_bc"},
    {"below the source", "abcdef_", 0, 7, 2, LIMIT, EOVERLAP_AND_RESET, "_??????"},
    {"above the source", "abc_.....", 2, 7, 0, LIMIT, EOVERLAP_AND_RESET, "ab_??????"},
    {"shares its first byte with the terminator", "abc_.....", 3, 6, 0, LIMIT, EOVERLAP_AND_RESET, "abc_?????"},
    {"shares the last byte only", "...abc_", 0, 4, 3, LIMIT, EOVERLAP_AND_RESET, "_???bc_"},
    {"neighbours, dest above", "abc_....z", 4, 4, 0, LIMIT, 0, "abc_abc_z"},
    {"neighbours, dest below", "....abc_z", 0, 4, 4, LIMIT, 0, "abc_abc_z"},
    {"only the room reaches the source", "...ab_z", 0, 7, 3, LIMIT, 0, "ab_ab_z"},
    {"empty text one byte apart", ".__", 0, 3, 1, LIMIT, 0, "___"},
};

const CopyRow STRNCPY_ROWS[] = {
    {"count shortens the text", "........abcd_", 0, 8, 8, 2, 0, "ab_.....abcd_"},
    {"count is the length", "........abcd_", 0, 8, 8, 4, 0, "abcd_...abcd_"},
    {"count beyond the length pads nothing", "........ab_zz", 0, 8, 8, 5, 0, "ab_.....ab_zz"},
    {"count shortens the text to fit", "....abcdef_", 0, 4, 4, 3, 0, "abc_abcdef_"},
    {"count is destMax and the text fits", "....abc_", 0, 4, 4, 4, 0, "abc_abc_"},
    {"count is above destMax and the text fits", "....ab_z", 0, 4, 4, 9, 0, "ab_.ab_z"},
    {"count 0", "....abcd_", 0, 4, 4, 0, 0, "_...abcd_"},
    {"count 0 into room for one", "....abcd_", 1, 1, 4, 0, 0, "._..abcd_"},
    {"a text without terminator", "....abcd", 0, 4, 4, 3, 0, "abc_abcd"},

    {"count is destMax and the text does not fit", "....abcd_", 0, 4, 4, 4, ERANGE_AND_RESET, "_...abcd_"},
    {"count is above destMax and the text does not fit", "....abcde_", 0, 4, 4, 5, ERANGE_AND_RESET, "_...abcde_"},
    {"count 1 into room for one", "..ab_", 0, 1, 2, 1, ERANGE_AND_RESET, "_.ab_"},
    {"count at the limit", "....ab_", 0, 4, 4, LIMIT, 0, "ab_.ab_"},
    {"count above the limit", "....ab_", 0, 4, 4, LIMIT + 1, ERANGE_AND_RESET, "_...ab_"},
    {"count of all ones", "....ab_", 0, 4, 4, SIZE_MAX, ERANGE_AND_RESET, "_...ab_"},

    {"destMax 0 before count above the limit", "....ab_", 0, 0, 4, SIZE_MAX, ERANGE, "....ab_"},
    {"dest null before count above the limit", "....ab_", NONE, 4, 4, SIZE_MAX, EINVAL, "....ab_"},
    {"source null before count above the limit", "....ab_", 0, 4, NONE, SIZE_MAX, EINVAL_AND_RESET, "_...ab_"},
    {"source null, count 0", "....ab_", 0, 4, NONE, 0, EINVAL_AND_RESET, "_...ab_"},

    {"dest is source, shortened", "abcdef_", 0, 7, 0, 3, 0, "abc_ef_"},
    {"dest is source, not shortened", "abcdef_", 0, 7, 0, 6, 0, "abcdef_"},
    {"count + 1 bytes overlap, dest above", "abcdef_...", 3, 7, 0, 3, EOVERLAP_AND_RESET, "abc_??????"},
    {"count + 1 bytes overlap, dest below", "abcdef_", 0, 7, 2, 2, EOVERLAP_AND_RESET, "_??????"},
    {"count + 1 bytes are neighbours, dest above", "abcdef_...", 4, 6, 0, 3, 0, "abcdabc_.."},
    {"count + 1 bytes are neighbours, dest below", "abcdef_", 0, 7, 3, 2, 0, "de_def_"},
    {"count 0 one byte apart", "abcdef_", 0, 7, 1, 0, 0, "_bcdef_"},
};

const CopyRow STRCAT_ROWS[] = {
    {"appends and pads nothing", "ab_.....cd_zz", 0, 8, 8, 0, 0, "abcd_...cd_zz"},
    {"appends to an empty text", "_.......cd_zz", 0, 8, 8, 0, 0, "cd_.....cd_zz"},
    {"appends an empty text", "ab_....._zz", 0, 8, 8, 0, 0, "ab_....._zz"},
    {"fits to the last byte", "ab_..cd_", 0, 5, 5, 0, 0, "abcd_cd_"},
    {"empty text to a full destination", "abc__zz", 0, 4, 4, 0, 0, "abc__zz"},
    {"destMax at the limit", "ab_..cd_", 0, LIMIT, 5, 0, 0, "abcd_cd_"},

    {"destMax 0", "ab_..cd_", 0, 0, 5, 0, ERANGE, "ab_..cd_"},
    {"destMax above the limit", "ab_..cd_", 0, LIMIT + 1, 5, 0, ERANGE, "ab_..cd_"},
    {"destMax of all ones", "ab_..cd_", 0, SIZE_MAX, 5, 0, ERANGE, "ab_..cd_"},
    {"destMax 0 before dest null", "ab_", NONE, 0, 0, 0, ERANGE, "ab_"},
    {"destMax 0 before source null", "ab_", 0, 0, NONE, 0, ERANGE, "ab_"},
    {"destMax above the limit before source null", "ab_", 0, LIMIT + 1, NONE, 0, ERANGE, "ab_"},
    {"dest null", "ab_", NONE, 4, 0, 0, EINVAL, "ab_"},
    {"dest null before source null", "ab_", NONE, 4, NONE, 0, EINVAL, "ab_"},
    {"source null", "ab_..", 0, 5, NONE, 0, EINVAL_AND_RESET, "_b_.."},
    {"one character too long", "ab_.cd_", 0, 4, 4, 0, ERANGE_AND_RESET, "_b_.cd_"},
    {"far too long", "ab_.cdefgh_", 0, 4, 4, 0, ERANGE_AND_RESET, "_b_.cdefgh_"},
    {"one character to a full destination", "abc_x_", 0, 4, 4, 0, ERANGE_AND_RESET, "_bc_x_"},

    {"the source is the destination's tail", "abc_....", 0, 8, 1, 0, EOVERLAP_AND_RESET, "_???????"},
    {"the destination is the source's tail", "abcd_....", 2, 7, 0, 0, EOVERLAP_AND_RESET, "ab_??????"},
    {"the appended text would reach the source", "ab_.cd_", 0, 6, 4, 0, EOVERLAP_AND_RESET, "_?????_"},
    {"the appended text ends before the source", "ab_..cd_", 0, 8, 5, 0, 0, "abcd_cd_"},
    {"the source ends before the destination", "ab_cd_..", 3, 5, 0, 0, 0, "ab_cdab_"},
};
// clang-format on

TEST(Boundscheck, TextCopiesFollowTheirTable) {
    auto copyAll = [](char *dest, size_t destMax, const char *source, size_t) {
        return strcpy_s(dest, destMax, source);
    };
    for (const CopyRow &row : TEXT_ROWS) {
        RunTextRow("strcpy_s", copyAll, row);
        RunTextRow("strncpy_s", strncpy_s, row);
    }
}

TEST(Boundscheck, CountedTextCopiesFollowTheirTable) {
    for (const CopyRow &row : STRNCPY_ROWS)
        RunTextRow("strncpy_s", strncpy_s, row);
}

TEST(Boundscheck, AppendingFollowsItsTable) {
    auto append = [](char *dest, size_t destMax, const char *source, size_t) {
        return strcat_s(dest, destMax, source);
    };
    for (const CopyRow &row : STRCAT_ROWS)
        RunTextRow("strcat_s", append, row);
}

TEST(Boundscheck, AppendingATextToItselfIsNoOverlap) {
    Arena arena("ab_.....");
    EXPECT_NE(EOVERLAP_AND_RESET, strcat_s(arena.At(0), 8, arena.At(0)));
}

TEST(Boundscheck, ATooLongTextThatOverlapsIsNotAppended) {
    Arena arena("abc_....");
    EXPECT_NE(EOK, strcat_s(arena.At(0), 5, arena.At(1)));
    EXPECT_EQ("_????...", arena.PictureLike("_????..."));
}

struct ReadRow {
    const char *name;
    const char *readable; /* what lies before the page that nobody may read */
    size_t destMax;
    size_t count;
    int code;
    const char *after;
};

// clang-format off
const ReadRow READ_ROWS[] = {
    {"count ends at the page", "abcd", 8, 4, 0, "abcd_..."},
    {"count 1", "a", 8, 1, 0, "a_......"},
    {"destMax ends at the page", "abcdefgh", 8, 9, ERANGE_AND_RESET, "_......."},
    {"destMax ends at the page, count at the limit", "abcdefgh", 8, LIMIT, ERANGE_AND_RESET, "_......."},
    {"count and destMax end at the page", "abcdefgh", 8, 8, ERANGE_AND_RESET, "_......."},
    {"count one below destMax", "abcdefg", 8, 7, 0, "abcdefg_"},
    {"the terminator ends at the page", "abc_", 8, 8, 0, "abc_...."},
    {"an empty text ends at the page", "_", 8, 8, 0, "_......."},
};
// clang-format on

TEST(Boundscheck, CountedTextCopiesReadNoMoreThanCountAndRoom) {
    for (const ReadRow &row : READ_ROWS) {
        SCOPED_TRACE(row.name);
        Arena picture(row.readable);
        GuardedText source(picture.At(0), strlen(row.readable));
        Arena arena("........");
        EXPECT_EQ(row.code, Quietly([&] { return strncpy_s(arena.At(0), row.destMax, source, row.count); }));
        EXPECT_EQ(row.after, arena.PictureLike(row.after));
    }
}

TEST(Boundscheck, ACountOfZeroReadsNothing) {
    GuardedText source("x", 1);
    Arena arena("....");
    EXPECT_EQ(EOK, strncpy_s(arena.At(0), 4, source.Get() + 1, 0));
    EXPECT_EQ("_...", arena.PictureLike("_..."));
}

TEST(Boundscheck, TextCopiesReadNoMoreThanTheRoomAndOneByte) {
    for (size_t destMax : {size_t(1), size_t(2), size_t(7), size_t(16), size_t(33), size_t(200)}) {
        SCOPED_TRACE(destMax);
        std::string text(destMax + 1, 'x');
        GuardedText source(text.data(), text.size());
        std::vector<char> dest(destMax, '.');
        EXPECT_EQ(ERANGE_AND_RESET, strcpy_s(dest.data(), destMax, source));
        EXPECT_EQ('\0', dest[0]);
    }
}

TEST(Boundscheck, TextCopiesReadUpToTheirTerminator) {
    GuardedText source("0123456789");
    char dest[11];
    EXPECT_EQ(EOK, strcpy_s(dest, sizeof(dest), source));
    EXPECT_STREQ("0123456789", dest);
}

TEST(Boundscheck, TextCopiesOfAllLengthsAreExact) {
    for (size_t length = 0; length < 300; ++length) {
        SCOPED_TRACE(length);
        GuardedText source(std::string(length, 'x'));
        std::vector<char> dest(length + 2, '.');
        ASSERT_EQ(EOK, strcpy_s(dest.data(), length + 1, source));
        ASSERT_EQ(std::string(length, 'x'), dest.data());
        ASSERT_EQ('.', dest[length + 1]);
        ASSERT_EQ(length == 0 ? EOK : ERANGE_AND_RESET, strcpy_s(dest.data(), length == 0 ? 1 : length, source));
        ASSERT_EQ('\0', dest[0]);
    }
}

} // namespace
