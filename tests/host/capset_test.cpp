#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <uvelhost/capset.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

/* A file of the test's own that the variable names. */
class Capset : public testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/capset.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        folder_ = pattern;
        file_ = folder_ / "capset.yaml";
        setenv("UVELHOST_CAPSET_FILE", file_.c_str(), 1);
    }

    void TearDown() override {
        capset_destroy();
        unsetenv("UVELHOST_CAPSET_FILE");
        fs::remove_all(folder_);
    }

    void Write(const std::string &text) const { std::ofstream(file_, std::ios::binary) << text; }

    void Open(const std::string &text) const {
        Write(text);
        ASSERT_EQ(0u, capset_init());
    }

    /* What is told about a file that is refused, without the file's name. */
    std::string Complaint(const std::string &text) const {
        Write(text);
        return ComplaintAboutFile(":");
    }

    std::string ComplaintAboutFile(const std::string &behind_name) const {
        testing::internal::CaptureStderr();
        EXPECT_NE(0u, capset_init());
        const std::string told = testing::internal::GetCapturedStderr();
        uint32_t value = 0;
        EXPECT_FALSE(Ask("GOOD", value)) << "no part of it is used";
        const std::string head = "uvelhost: capability set " + file_.string() + behind_name;
        EXPECT_EQ(0u, told.rfind(head, 0)) << told;
        EXPECT_EQ(1, std::count(told.begin(), told.end(), '\n')) << told;
        return told.substr(std::min(head.size(), told.size()));
    }

    static bool Ask(const char *item, uint32_t &value) {
        uint32_t size = sizeof value;
        const bool found = capset_query_with_itemname(item, &value, &size) == 0;
        EXPECT_EQ(4u, size);
        return found;
    }

    fs::path folder_;
    fs::path file_;
};

TEST_F(Capset, HoldsDecimalAndHexadecimalNumbers) {
    Open("# what this device can do\nitems:\n  ZERO: 0\n  MOST: 4294967295\n  MASK: 0xFF00fF00\n  PADDED: 007\n"
         "  QUOTED: \"12\"\n  'A.b-c/d:e': 1\n");
    const struct {
        const char *name;
        uint32_t value;
    } ROWS[] = {{"ZERO", 0},   {"MOST", 0xFFFFFFFF}, {"MASK", 0xFF00FF00},
                {"PADDED", 7}, {"QUOTED", 12},       {"A.b-c/d:e", 1}};
    for (const auto &row : ROWS) {
        uint32_t value = 77;
        EXPECT_TRUE(Ask(row.name, value)) << row.name;
        EXPECT_EQ(row.value, value) << row.name;
    }
}

TEST_F(Capset, MayBeEmpty) {
    for (const char *text : {"items: {}\n", "---\nitems: {}\n...\n"}) {
        Open(text);
        uint32_t value = 77;
        EXPECT_FALSE(Ask("X", value));
        EXPECT_EQ(77u, value);
        EXPECT_EQ(0u, capset_destroy());
    }
}

TEST_F(Capset, AnswersOnlyWhileItIsOpen) {
    uint32_t value = 77;
    EXPECT_FALSE(Ask("X", value));
    EXPECT_NE(0u, capset_destroy());
    Open("items: {X: 1}");
    EXPECT_TRUE(Ask("X", value));
    EXPECT_EQ(0u, capset_destroy());
    EXPECT_FALSE(Ask("X", value));
    EXPECT_NE(0u, capset_destroy());
}

TEST_F(Capset, IsFixedFromItsOpeningOn) {
    Open("items: {X: 1}");
    Write("items: {X: 2}");
    EXPECT_EQ(0u, capset_init()) << "again is a success";
    uint32_t value = 0;
    EXPECT_TRUE(Ask("X", value));
    EXPECT_EQ(1u, value);
    fs::remove(file_);
    EXPECT_EQ(0u, capset_init());
    EXPECT_EQ(0u, capset_destroy());
    Open("items: {X: 2}");
    EXPECT_TRUE(Ask("X", value));
    EXPECT_EQ(2u, value);
}

TEST_F(Capset, FailsUntouchedForWhatItCannotAnswer) {
    Open("items: {X: 1}");
    uint32_t value = 77;
    uint32_t size = 4;
    EXPECT_NE(0u, capset_query_with_itemname(nullptr, &value, &size));
    EXPECT_NE(0u, capset_query_with_itemname("X", nullptr, &size));
    EXPECT_NE(0u, capset_query_with_itemname("X", &value, nullptr));
    for (const char *name : {"", "x", "X ", "XX"})
        EXPECT_NE(0u, capset_query_with_itemname(name, &value, &size)) << name;
    EXPECT_EQ(4u, size);
    size = 3;
    EXPECT_NE(0u, capset_query_with_itemname("X", &value, &size)) << "no room";
    EXPECT_EQ(3u, size);
    EXPECT_EQ(77u, value);
}

TEST_F(Capset, TellsTheSizeOfAValueThatHasMoreRoom) {
    Open("items: {X: 1}");
    uint32_t area[2] = {77, 77};
    uint32_t size = sizeof area;
    EXPECT_EQ(0u, capset_query_with_itemname("X", area, &size));
    EXPECT_EQ(4u, size);
    EXPECT_EQ(1u, area[0]);
    EXPECT_EQ(77u, area[1]);
}

TEST_F(Capset, IsWalkedInTheOrderOfNames) {
    using Items = std::vector<std::pair<std::string, uint32_t>>;
    const auto add = [](const char *item, uint32_t value, void *context) {
        static_cast<Items *>(context)->emplace_back(item, value);
    };
    Items items;
    EXPECT_NE(0u, capset_walk(add, &items)) << "not open";
    Open("items: {b: 2, a: 1, B: 3, aa: 4}");
    EXPECT_EQ(0u, capset_walk(add, &items));
    EXPECT_EQ((Items{{"B", 3}, {"a", 1}, {"aa", 4}, {"b", 2}}), items);
    EXPECT_NE(0u, capset_walk(nullptr, &items));
}

TEST_F(Capset, MayBeClosedInsideAWalk) {
    Open("items: {a: 1, b: 2}");
    int calls = 0;
    EXPECT_EQ(0u, capset_walk(
                      [](const char *item, uint32_t, void *context) {
                          uint32_t value = 0;
                          EXPECT_EQ(*static_cast<int *>(context) == 0, Ask(item, value));
                          ++*static_cast<int *>(context);
                          capset_destroy();
                      },
                      &calls));
    EXPECT_EQ(2, calls);
}

TEST_F(Capset, TellsWhereAValueIsNoNumber) {
    const struct {
        const char *value;
        const char *found;
    } ROWS[] = {
        {"yes", "\"yes\""},
        {"-1", "\"-1\""},
        {"+1", "\"+1\""},
        {"4294967296", "\"4294967296\""},
        {"0x100000000", "\"0x100000000\""},
        {"0x", "\"0x\""},
        {"0xG", "\"0xG\""},
        {"1.5", "\"1.5\""},
        {"1 2", "\"1 2\""},
        {"\"\"", "\"\""},
        {"[1]", "a list"},
        {"{a: 1}", "a map"},
        {"~", "nothing"},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(std::string("3:10: expected a number from 0 to 4294967295, found ") + row.found + "\n",
                  Complaint(std::string("items:\n  GOOD: 1\n  WRONG: ") + row.value + "\n"));
}

TEST_F(Capset, RefusesNamesThatNobodyCanAskFor) {
    const std::string longest(127, 'N');
    Open("items: {" + longest + ": 1}");
    uint32_t value = 0;
    EXPECT_TRUE(Ask(longest.c_str(), value));
    EXPECT_EQ(0u, capset_destroy());
    EXPECT_EQ("3:3: expected a name of 1 to 127 printable characters without blanks, found \"a b\"\n",
              Complaint("items:\n  GOOD: 1\n  a b: 1\n"));
    for (const std::string &name : {std::string(128, 'N'), std::string("\"\""), std::string("\"a\\tb\""),
                                    std::string("\"a\\0b\""), std::string("caf\xC3\xA9"), std::string("{a: 1}")})
        EXPECT_EQ("3:5: expected a ", Complaint("items:\n  GOOD: 1\n  ? " + name + "\n  : 1\n").substr(0, 16)) << name;
}

TEST_F(Capset, RefusesAnItemThatStandsTwice) {
    const std::string told = Complaint("items:\n  GOOD: 1\n  OTHER: 2\n  GOOD: 1\n");
    EXPECT_EQ("4:3: the key \"GOOD\" stands here twice, first at " + file_.string() + ":2:3\n", told);
}

TEST_F(Capset, RefusesAnotherShape) {
    EXPECT_EQ("1:1: expected a map, found nothing\n", Complaint(""));
    EXPECT_EQ("1:1: expected a map, found a list\n", Complaint("- items\n"));
    EXPECT_EQ("1:1: the key \"items\" is missing here\n", Complaint("{}\n"));
    EXPECT_EQ("2:1: expected one of the keys items, found \"item\"\n", Complaint("items: {GOOD: 1}\nitem: {X: 1}\n"));
    EXPECT_EQ("1:8: expected a map, found a list\n", Complaint("items: [GOOD]\n"));
}

TEST_F(Capset, TellsWhereTheTextIsNoYaml) {
    for (const char *text : {"items: {GOOD: 1\n", "items:\n\tGOOD: 1\n", "items: *nobody\n", "items: \"GOOD\n",
                             "items: {GOOD: 1}}\n", "\xFF\xFEi\n"}) {
        const std::string told = Complaint(text);
        int line = 0;
        int column = 0;
        char rest[8] = "";
        EXPECT_EQ(3, std::sscanf(told.c_str(), "%d:%d: %7s", &line, &column, rest)) << told;
        EXPECT_GT(line, 0);
        EXPECT_GT(column, 0);
    }
}

TEST_F(Capset, OutlivesDeepNesting) {
    EXPECT_NE("", Complaint("items: " + std::string(100000, '[')));
    EXPECT_NE("", Complaint("items: " + std::string(100000, '{')));
}

TEST_F(Capset, RefusesWhatIsNoFile) {
    EXPECT_EQ("No such file or directory\n", ComplaintAboutFile(": "));
    fs::create_directory(file_);
    EXPECT_EQ("expected a regular file\n", ComplaintAboutFile(": "));
    fs::remove(file_);
    ASSERT_EQ(0, mkfifo(file_.c_str(), 0600));
    EXPECT_EQ("expected a regular file\n", ComplaintAboutFile(": ")) << "and nobody waits for a writer";
}

TEST_F(Capset, IsAskedWhileItIsOpenedAndClosed) {
    Write("items: {X: 5}");
    std::atomic<bool> done{false};
    std::thread other([&] {
        while (!done) {
            uint32_t value = 5;
            Ask("X", value);
            EXPECT_EQ(5u, value);
        }
    });
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(0u, capset_init());
        EXPECT_EQ(0u, capset_destroy());
    }
    done = true;
    other.join();
}

} // namespace
