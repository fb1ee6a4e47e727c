#include <uvelcommon_base/kivo_charset.h>

#include <algorithm>
#include <string>
#include <vector>

#include "guarded_text.h"
#include "kit.h"

namespace {

/* Every character that a class allows, in order. */
const std::string ALLOWED[] = {
    "!#$&()+,-.0123456789;=ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`abcdefghijklmnopqrstuvwxyz{}~",
    "!\"#$%&()*+,-./0123456789:;<=>@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~",
    "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz",
    "!\"#$%&()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~",
};

uint32_t Check(const std::string &text, uint8_t character_class) {
    return SRV_CheckValidCharFlat(reinterpret_cast<const uint8_t *>(text.data()), static_cast<uint32_t>(text.size()),
                                  character_class);
}

/* First of all, and in a process of its own: the table is built once. */
TEST(CharacterTable, IsEmptyUntilTheFirstCheckBuildsIt) {
    kit::InFreshProcess([] {
        const auto is_set = [](uint8_t entry) { return entry != 0; };
        EXPECT_TRUE(std::none_of(std::begin(g_pstUVELSrvCharSet), std::end(g_pstUVELSrvCharSet), is_set));
        EXPECT_EQ(1u, Check("-", 0)); /* is answered without the table */
        EXPECT_EQ(1u, Check("a", 4));
        EXPECT_TRUE(std::none_of(std::begin(g_pstUVELSrvCharSet), std::end(g_pstUVELSrvCharSet), is_set));
        EXPECT_EQ(0u, Check("", 0));
        EXPECT_TRUE(std::any_of(std::begin(g_pstUVELSrvCharSet), std::end(g_pstUVELSrvCharSet), is_set));
    });
}

class CharacterClass : public testing::TestWithParam<uint8_t> {
  protected:
    const std::string &Allowed() const { return ALLOWED[GetParam()]; }
};

TEST_P(CharacterClass, AllowsExactlyItsCharacters) {
    for (int byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        if (character == '-')
            continue; /* alone it stands for "no value" */
        const uint32_t expected = Allowed().find(character) == std::string::npos ? 1 : 0;
        EXPECT_EQ(expected, Check(std::string(1, character), GetParam())) << "byte " << byte;
        EXPECT_EQ(expected, Check(std::string("a") + character + "z", GetParam())) << "byte " << byte;
    }
}

TEST_P(CharacterClass, IsARowOfThePublishedTable) {
    EXPECT_EQ(0u, SRV_InitCharSet());
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(Allowed().find(static_cast<char>(byte)) != std::string::npos,
                  g_pstUVELSrvCharSet[GetParam() * 256 + byte] != 0)
            << "byte " << byte;
}

TEST_P(CharacterClass, AllowsATextOfAllItsCharacters) {
    EXPECT_EQ(0u, Check(Allowed(), GetParam()));
}

TEST_P(CharacterClass, FindsAForbiddenCharacterAtEveryPlace) {
    for (std::size_t place = 0; place < 40; ++place) {
        std::string text(40, 'x');
        text[place] = '\'';
        EXPECT_EQ(1u, Check(text, GetParam())) << "place " << place;
    }
}

TEST_P(CharacterClass, RefusesOneAndTwoHyphensAlone) {
    EXPECT_EQ(1u, Check("-", GetParam()));
    EXPECT_EQ(1u, Check("--", GetParam()));
}

TEST_P(CharacterClass, AllowsHyphensInOtherTexts) {
    EXPECT_EQ(0u, Check("---", GetParam()));
    EXPECT_EQ(0u, Check("-a", GetParam()));
    EXPECT_EQ(0u, Check("a-", GetParam()));
    EXPECT_EQ(0u, Check("--a", GetParam()));
}

TEST_P(CharacterClass, AllowsAnEmptyText) {
    EXPECT_EQ(0u, Check("", GetParam()));
    const uint8_t forbidden = ' ';
    EXPECT_EQ(0u, SRV_CheckValidCharFlat(&forbidden, 0, GetParam()));
}

TEST_P(CharacterClass, RefusesANullText) {
    EXPECT_EQ(1u, SRV_CheckValidCharFlat(nullptr, 0, GetParam()));
    EXPECT_EQ(1u, SRV_CheckValidCharFlat(nullptr, 3, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Classes, CharacterClass, testing::Values(uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{3}),
                         [](const testing::TestParamInfo<uint8_t> &row) { return std::to_string(row.param); });

TEST(CharacterClasses, DifferAsListed) {
    EXPECT_EQ(0u, Check("abc", SRV_CHARSET_WORD));
    EXPECT_EQ(1u, Check("a b", SRV_CHARSET_WORD));
    EXPECT_EQ(1u, Check("a@b", SRV_CHARSET_NAME));
    EXPECT_EQ(0u, Check("a@b", SRV_CHARSET_TEXT));
    EXPECT_EQ(1u, Check("a?b", SRV_CHARSET_TEXT));
    EXPECT_EQ(0u, Check("a?b", SRV_CHARSET_NOQUOTE));
    EXPECT_EQ(1u, Check("it's", SRV_CHARSET_NOQUOTE));
}

TEST(CharacterClasses, EndWithNumberThree) {
    for (int number = 4; number < 256; ++number) {
        EXPECT_EQ(1u, Check("abc", static_cast<uint8_t>(number))) << number;
        EXPECT_EQ(1u, Check("", static_cast<uint8_t>(number))) << number;
    }
}

TEST(CharacterClasses, ReadOnlyTheBytesOfTheText) {
    const GuardedText text("abc!", 3);
    EXPECT_EQ(0u, SRV_CheckValidCharFlat(reinterpret_cast<const uint8_t *>(text.Get()), 3, SRV_CHARSET_WORD));
    const GuardedText hyphen("-", 1);
    EXPECT_EQ(1u, SRV_CheckValidCharFlat(reinterpret_cast<const uint8_t *>(hyphen.Get()), 1, SRV_CHARSET_WORD));
}

TEST(CharacterTable, IsClearedBeforeItIsBuilt) {
    EXPECT_EQ(0u, SRV_InitCharSet());
    const std::vector<uint8_t> built(std::begin(g_pstUVELSrvCharSet), std::end(g_pstUVELSrvCharSet));
    std::fill(std::begin(g_pstUVELSrvCharSet), std::end(g_pstUVELSrvCharSet), uint8_t{0xAA});
    EXPECT_EQ(0u, SRV_InitCharSet());
    EXPECT_TRUE(std::equal(built.begin(), built.end(), std::begin(g_pstUVELSrvCharSet)));
}

TEST(CharacterTable, IsNotBuiltAgainByACheck) {
    EXPECT_EQ(0u, SRV_InitCharSet());
    uint8_t &blank = g_pstUVELSrvCharSet[32];
    const uint8_t before = blank;
    blank = 1;
    EXPECT_EQ(0u, Check("a b", 0));
    blank = before;
    EXPECT_EQ(1u, Check("a b", 0));
}

} // namespace
