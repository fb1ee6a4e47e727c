#include <yaml/document.h>

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace uvel::yaml;

namespace {

Node Value(const std::string &text) {
    return Fields(LoadText("value: " + text, "t.yaml"), {"value"}).Required("value");
}

template <typename Read>
std::string ComplaintOf(Read read) {
    try {
        read();
    } catch (const WrongDocument &wrong) {
        return wrong.what();
    }
    return "accepted";
}

TEST(YamlNumber, IsReadInDecimalAndHexadecimal) {
    EXPECT_EQ(42, Value("42").Number(0, 100));
    EXPECT_EQ(-7, Value("-7").Number(-10, 0));
    EXPECT_EQ(0xC21E0000, Value("0xC21E0000").Number(0, UINT32_MAX));
    EXPECT_EQ(INT64_MAX, Value("9223372036854775807").Number(INT64_MIN, INT64_MAX));
}

TEST(YamlNumber, OutsideItsRangeOrWithAnythingElseIsRefused) {
    for (const char *text : {"101", "-1", "4 2", "4x", "0x", "", "-", "1.5", "9223372036854775808", "[1]", "{a: 1}"}) {
        const std::string complaint = ComplaintOf([&] { Value(text).Number(0, 100); });
        EXPECT_NE(std::string::npos, complaint.find(": ")) << text << ": " << complaint;
        EXPECT_NE("accepted", complaint) << text;
    }
    EXPECT_EQ("t.yaml:1:8: expected a number from 0 to 100, found \"101\"",
              ComplaintOf([] { Value("101").Number(0, 100); }));
}

TEST(YamlFlag, IsAWordForTrueOrFalse) {
    EXPECT_TRUE(Value("true").Flag());
    EXPECT_TRUE(Value("yes").Flag());
    EXPECT_FALSE(Value("off").Flag());
    EXPECT_EQ("t.yaml:1:8: expected true or false, found \"2\"", ComplaintOf([] { Value("2").Flag(); }));
}

TEST(YamlTime, NeedsItsUnit) {
    EXPECT_EQ(250, Value("250ms").Milliseconds(0, 1000));
    EXPECT_EQ(3000, Value("3s").Milliseconds(0, 5000));
    EXPECT_EQ(120'000, Value("2min").Milliseconds(0, 200'000));
    EXPECT_EQ(3'600'000, Value("1h").Milliseconds(0, 4'000'000));
    for (const char *text : {"5", "s", "5 parsecs", "6s", "-1s", "9223372036854775807h"})
        EXPECT_EQ(
            std::string("t.yaml:1:8: expected a time from 0ms to 5000ms with its unit (ms, s, min or h), found \"") +
                text + "\"",
            ComplaintOf([&] { Value(text).Milliseconds(0, 5000); }));
}

TEST(YamlText, HasABoundedLength) {
    EXPECT_EQ("abc", Value("abc").Text(1, 3));
    EXPECT_EQ("t.yaml:1:8: expected a text of 1 to 3 bytes, found \"abcd\"",
              ComplaintOf([] { Value("abcd").Text(1, 3); }));
    EXPECT_EQ("t.yaml:1:8: expected a text, found a list", ComplaintOf([] { Value("[a]").Text(); }));
}

TEST(YamlText, IsShortenedInAComplaint) {
    EXPECT_EQ("t.yaml:1:8: expected true or false, found \"" + std::string(60, 'x') + "...\"",
              ComplaintOf([] { Value(std::string(61, 'x')).Flag(); }));
}

TEST(YamlWord, GivesWhatBelongsToIt) {
    const std::vector<std::pair<std::string_view, int>> words = {{"master", 0}, {"standby", 1}};
    EXPECT_EQ(1, Value("standby").OneOf(words));
    EXPECT_EQ("t.yaml:1:8: expected one of master, standby, found \"slave\"",
              ComplaintOf([&] { Value("slave").OneOf(words); }));
}

TEST(YamlList, OfNothingIsEmpty) {
    EXPECT_TRUE(LoadText("", "t.yaml").Items().empty());
    EXPECT_TRUE(Value("[]").Items().empty());
    EXPECT_EQ(2u, Value("[a, b]").Items().size());
    EXPECT_EQ("t.yaml:1:8: expected a list, found \"a\"", ComplaintOf([] { Value("a").Items(); }));
}

TEST(YamlFields, AreKnownOrRefused) {
    const Node map = LoadText("name: r1\nslots: 4\nports:\n", "t.yaml");
    const Fields fields(map, {"name", "slots", "ports"});
    EXPECT_EQ("r1", fields.Required("name").Text());
    EXPECT_FALSE(fields.Has("ports"));
    EXPECT_EQ("t.yaml:2:1: expected one of the keys name, found \"slots\"",
              ComplaintOf([&] { Fields(map, {"name"}); }));
}

TEST(YamlFields, ThatAreMissingAreNamedAtTheirMap) {
    const Node list = LoadText("- name: a\n- title: b\n", "t.yaml");
    EXPECT_EQ("t.yaml:2:3: the key \"name\" is missing here", ComplaintOf([&] {
                  Fields(list.Items()[1], {"name", "title"}).Required("name");
              }));
}

TEST(YamlFields, StandOnlyOnce) {
    EXPECT_EQ("t.yaml:3:1: the key \"a\" stands here twice, first at t.yaml:1:1", ComplaintOf([] {
                  Fields(LoadText("a: 1\nb: 2\na: 3\n", "t.yaml"), {"a", "b"});
              }));
}

TEST(YamlFields, NeedAMap) {
    EXPECT_EQ("t.yaml:1:1: expected a map, found a list",
              ComplaintOf([] { Fields(LoadText("[a]", "t.yaml"), {"a"}); }));
    EXPECT_EQ("t.yaml:1:1: expected a map, found nothing", ComplaintOf([] { Fields(LoadText("", "t.yaml"), {"a"}); }));
}

TEST(YamlDocument, ThatIsNoYamlIsRefusedWithItsPlace) {
    EXPECT_EQ(0u, ComplaintOf([] { LoadText("a: 1\nb: [1, 2\n", "t.yaml"); }).find("t.yaml:3:1: "));
    EXPECT_EQ("t.yaml:3:1: expected one document, found another",
              ComplaintOf([] { LoadText("a\n---\nb\n", "t.yaml"); }));
    EXPECT_NE("accepted", ComplaintOf([] { LoadText(std::string(100'000, '['), "t.yaml"); }));
}

TEST(YamlDocument, WithAStrayCommaBehindItIsRefused) {
    EXPECT_EQ("t.yaml:3:1: expected one document, found another",
              ComplaintOf([] { LoadText("x\n#\n, a\n", "t.yaml"); }));
}

TEST(YamlFile, ThatCannotBeReadSaysWhy) {
    EXPECT_EQ("/no/such/file.yaml: No such file or directory", ComplaintOf([] { LoadFile("/no/such/file.yaml"); }));
    EXPECT_NE("accepted", ComplaintOf([] { LoadFile("/"); }));
}

TEST(YamlFile, ThatIsEmptyHoldsNothing) {
    const std::string path = testing::TempDir() + "empty.yaml";
    std::ofstream(path).flush();
    errno = EISDIR; /* left by something else */
    EXPECT_TRUE(LoadFile(path).IsNothing());
}

TEST(YamlFile, ThatIsNoRegularOneIsRefusedWithoutWaiting) {
    EXPECT_EQ("/tmp: expected a regular file", ComplaintOf([] { LoadFile("/tmp"); }));
    const std::string path = testing::TempDir() + "yaml_pipe_" + std::to_string(getpid());
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    EXPECT_EQ(path + ": expected a regular file", ComplaintOf([&] { LoadFile(path); }));
    unlink(path.c_str());
}

TEST(YamlFile, IsReadWhole) {
    char path[] = "/tmp/yaml_document_XXXXXX";
    const int file = mkstemp(path);
    ASSERT_GE(file, 0);
    close(file);
    std::ofstream(path) << "# comment\nname: r1\n";
    EXPECT_EQ("r1", Fields(LoadFile(path), {"name"}).Required("name").Text());
    EXPECT_EQ(std::string(path) + ":2:7", Fields(LoadFile(path), {"name"}).Required("name").Place());
    unlink(path);
}

} // namespace
