#include <kit.h>

#include <cstring>
#include <uvelcommon_base/kivo_version.h>

namespace {

const kit::Sources kOneAssert = {"src/common/src/smi/kivo_version"};

/* A buffer of `Size` bytes full of '#', with guards behind it. */
template <std::size_t Size>
struct Buffer {
    Buffer() { memset(bytes, '#', sizeof bytes); }
    ~Buffer() { EXPECT_EQ(std::string(sizeof bytes - Size, '#'), std::string(bytes + Size, sizeof bytes - Size)); }
    char bytes[Size + 16];
};

TEST(Version, EveryNumberGivesTheOneText) {
    for (const uint32_t number : {0U, 1U, 0x80000000U, 0xC8010FC4U, 0xFFFFFFFFU}) {
        Buffer<32> buffer;
        EXPECT_EQ(buffer.bytes, UVEL_TransVerNoToStr(number, buffer.bytes));
        EXPECT_STREQ("V300R021C10B517", buffer.bytes);
        EXPECT_EQ('\0', buffer.bytes[31]);
    }
}

TEST(Version, OnlyTheTextAndTheLastByteAreWritten) {
    Buffer<32> buffer;
    UVEL_TransVerNoToStr(7, buffer.bytes);
    EXPECT_EQ(std::string("V300R021C10B517\0###############\0", 32), std::string(buffer.bytes, 32));
}

TEST(Version, ThePlatformHasAVersion) {
    Buffer<32> buffer;
    EXPECT_EQ(buffer.bytes, UVEL_GetVersion(buffer.bytes));
    EXPECT_STREQ("V300R021C10B517", buffer.bytes);
    EXPECT_EQ('\0', buffer.bytes[31]);
}

TEST(Version, TheServiceLayerHasAVersionOfItsOwn) {
    EXPECT_STREQ("V100R007C00B250", KIVO_GetVerion());
}

TEST(Version, TheCompileTimeHasTheCompilersForm) {
    EXPECT_STREQ("Apr  9 2012 10:15:09", KIVO_GetCompileTime());
}

TEST(Version, TheBannerHasTwoLinesAndNamesTheProductTwice) {
    Buffer<512> output;
    EXPECT_EQ(output.bytes, UVEL_VersionInfoFmt(output.bytes, "P", "V1", "T"));
    EXPECT_STREQ("\r\n\r\nP Software, Version V1\r\nCompiled on T by P Team\r\n", output.bytes);
}

TEST(Version, TheShortBannerIsTheFirstLine) {
    Buffer<512> output;
    EXPECT_EQ(output.bytes, UVEL_VersionInfoWithoutCompileTime(output.bytes, "Prod", "V2"));
    EXPECT_STREQ("\r\n\r\nProd Software, Version V2", output.bytes);
}

TEST(Version, ThePlatformHasABanner) {
    Buffer<512> output;
    EXPECT_EQ(output.bytes, UVEL_VersionInfo(output.bytes));
    EXPECT_STREQ("\r\n\r\nuVEL (R) Software, Version V300R021C10B517", output.bytes);
}

TEST(Version, EmptyTextsAreBannersToo) {
    Buffer<512> output;
    UVEL_VersionInfoFmt(output.bytes, "", "", "");
    EXPECT_STREQ("\r\n\r\n Software, Version \r\nCompiled on  by  Team\r\n", output.bytes);
}

TEST(Version, PercentSignsInTextsAreJustCharacters) {
    Buffer<512> output;
    UVEL_VersionInfoFmt(output.bytes, "%s%n", "%d", "100%");
    EXPECT_STREQ("\r\n\r\n%s%n Software, Version %d\r\nCompiled on 100% by %s%n Team\r\n", output.bytes);
}

TEST(Version, ABannerOfExactly511CharactersIsWhole) {
    Buffer<512> output;
    /* 4 + p + 19 + 2 characters in the first line, 14 + 1 + 4 + p + 7 in the second: p = 230 leaves no room. */
    const std::string product(230, 'p');
    UVEL_VersionInfoFmt(output.bytes, product.c_str(), "V1", "T");
    EXPECT_EQ("\r\n\r\n" + product + " Software, Version V1\r\nCompiled on T by " + product + " Team\r\n",
              std::string(output.bytes));
    EXPECT_EQ(511u, strlen(output.bytes));
}

TEST(Version, ABannerThatDoesNotFitIsCutAt511Characters) {
    const std::string product(300, 'p');
    const std::string whole =
        "\r\n\r\n" + product + " Software, Version V1\r\nCompiled on T by " + product + " Team\r\n";
    Buffer<512> output;
    UVEL_VersionInfoFmt(output.bytes, product.c_str(), "V1", "T");
    EXPECT_EQ(whole.substr(0, 511), std::string(output.bytes));
}

TEST(Version, AFirstLineThatDoesNotFitLeavesNoRoomForTheSecond) {
    const std::string product(600, 'p');
    Buffer<512> output;
    UVEL_VersionInfoFmt(output.bytes, product.c_str(), "V1", "T");
    EXPECT_EQ("\r\n\r\n" + std::string(507, 'p'), std::string(output.bytes));
    Buffer<512> line;
    UVEL_VersionInfoWithoutCompileTime(line.bytes, product.c_str(), "V1");
    EXPECT_EQ("\r\n\r\n" + std::string(507, 'p'), std::string(line.bytes));
}

TEST(Version, ANullTextStandsInTheBannerAsSuch) {
    Buffer<512> output;
    UVEL_VersionInfoWithoutCompileTime(output.bytes, nullptr, "V1");
    EXPECT_STREQ("\r\n\r\n(null) Software, Version V1", output.bytes);
}

TEST(Version, ANullBufferIsReportedAndGivesNull) {
    EXPECT_EQ(nullptr, UVEL_TransVerNoToStr(1, nullptr));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(nullptr, UVEL_GetVersion(nullptr));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(nullptr, UVEL_VersionInfoFmt(nullptr, "P", "V1", "T"));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(nullptr, UVEL_VersionInfoWithoutCompileTime(nullptr, "P", "V1"));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(nullptr, UVEL_VersionInfo(nullptr));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
}

} // namespace
