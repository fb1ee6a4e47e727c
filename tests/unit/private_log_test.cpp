#include <kit.h>

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <uvelcommon_base/nac_log.h>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = "/opt/oxmv8";
const fs::path kMark = "/opt/oxmv8/made-by-a-test";
const fs::path kAside = "/opt/oxmv8.before-test";
const fs::path kFolder = "/opt/oxmv8/home";
const fs::path kFile = "/opt/oxmv8/home/nacutils.log";

/* The log's folder, empty and for one test alone. What stood there is put aside and brought back afterwards; the mark
 * tells the folder of a test, also of one that was killed, from a real one. */
class LogFolder {
  public:
    LogFolder() {
        lock_ = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (lock_ < 0 || flock(lock_, LOCK_EX) != 0) {
            problem_ = std::string("no lock: ") + strerror(errno);
            return;
        }
        std::error_code error;
        if (fs::exists(kMark, error))
            fs::remove_all(kRoot, error);
        if (fs::exists(kRoot, error))
            fs::rename(kRoot, kAside, error);
        if (!error)
            ours_ = fs::create_directories(kFolder, error) && std::ofstream(kMark).good();
        if (!ours_)
            problem_ = kFolder.string() + " cannot be made: " + error.message();
    }
    ~LogFolder() {
        std::error_code error;
        if (ours_) {
            fs::remove_all(kRoot, error);
            if (fs::exists(kAside))
                fs::rename(kAside, kRoot, error);
        }
        EXPECT_FALSE(error) << error.message();
        if (lock_ >= 0)
            close(lock_);
    }
    LogFolder(const LogFolder &) = delete;
    LogFolder &operator=(const LogFolder &) = delete;

    const std::string &Problem() const { return problem_; }

  private:
    int lock_ = -1;
    bool ours_ = false;
    std::string problem_;
};

class PrivateLog : public testing::Test {
  protected:
    void SetUp() override {
        if (!folder_.Problem().empty())
            GTEST_SKIP() << folder_.Problem();
        clock_.SetCalendar({2024, 3, 7}, {9, 5, 0, 0});
    }

    static void SwitchOn() { EXPECT_EQ(1u, *NAC_SetUtilsPvtLogGlobalSwitch()); }

    static std::string Contents() {
        std::ifstream file(kFile, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    static std::size_t OpenDescriptors() {
        const fs::directory_iterator all("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    static std::string Line(const std::string &message) {
        return "[2024-03-07 09:05:00][NACUTILS][ERROR]" + message + "\r\n";
    }

  private:
    LogFolder folder_;
    kit::VirtualClock clock_;
};

TEST_F(PrivateLog, IsOffAtLoadAndWritesNothing) {
    kit::InFreshProcess([] {
        EXPECT_EQ(0u, NAC_GetUtilsPvtLogGlobalSwitch());
        NAC_Utils_PvtLog(2, "x");
        EXPECT_FALSE(fs::exists(kFile));
        EXPECT_EQ(0u, kit::Op<QAL_SystimeGet>().Calls());
    });
}

TEST_F(PrivateLog, SwitchingOnGivesTheAddressOfTheSwitch) {
    uint32_t *address = NAC_SetUtilsPvtLogGlobalSwitch();
    EXPECT_EQ(1u, *address);
    EXPECT_EQ(1u, NAC_GetUtilsPvtLogGlobalSwitch());
    *address = 5;
    EXPECT_EQ(5u, NAC_GetUtilsPvtLogGlobalSwitch());
    EXPECT_EQ(address, NAC_SetUtilsPvtLogGlobalSwitch());
    EXPECT_EQ(1u, *address);
}

TEST_F(PrivateLog, AnyValueOfTheSwitchButZeroIsOn) {
    *NAC_SetUtilsPvtLogGlobalSwitch() = 0x80000000U;
    NAC_Utils_PvtLog(2, "x");
    EXPECT_EQ(Line("x"), Contents());
    *NAC_SetUtilsPvtLogGlobalSwitch() = 0;
    NAC_Utils_PvtLog(2, "y");
    EXPECT_EQ(Line("x"), Contents());
}

TEST_F(PrivateLog, LevelTwoAppendsALine) {
    SwitchOn();
    NAC_Utils_PvtLog(2, "x=%u", 5U);
    EXPECT_EQ("[2024-03-07 09:05:00][NACUTILS][ERROR]x=5\r\n", Contents());
}

TEST_F(PrivateLog, NoOtherLevelWritesAnything) {
    SwitchOn();
    for (const uint32_t level : {0U, 1U, 3U, 4U, 0x102U, 0x80000002U, 0xFFFFFFFFU})
        NAC_Utils_PvtLog(level, "x");
    EXPECT_FALSE(fs::exists(kFile));
    EXPECT_EQ(0u, kit::Op<QAL_SystimeGet>().Calls());
}

TEST_F(PrivateLog, LinesAreAppendedInOrder) {
    { std::ofstream(kFile, std::ios::binary) << "older\n"; }
    SwitchOn();
    NAC_Utils_PvtLog(2, "%s-%d", "one", -1);
    NAC_Utils_PvtLog(2, "%s", "");
    NAC_Utils_PvtLog(2, "three");
    EXPECT_EQ("older\n" + Line("one--1") + Line("") + Line("three"), Contents());
}

TEST_F(PrivateLog, EachLineCarriesItsTime) {
    SwitchOn();
    NAC_Utils_PvtLog(2, "a");
    kit::Op<QAL_SystimeGet>().Does([](QAL_SYSTIME_S *now) {
        *now = {2031, 12, 31, 23, 59, 58, 3, 999};
        return 0U;
    });
    NAC_Utils_PvtLog(2, "b");
    EXPECT_EQ(Line("a") + "[2031-12-31 23:59:58][NACUTILS][ERROR]b\r\n", Contents());
}

TEST_F(PrivateLog, ATimeThatTheHostDoesNotKnowIsWrittenAsZeros) {
    SwitchOn();
    kit::Op<QAL_SystimeGet>().Returns(1);
    NAC_Utils_PvtLog(2, "a");
    EXPECT_EQ("[   0-00-00 00:00:00][NACUTILS][ERROR]a\r\n", Contents());
}

TEST_F(PrivateLog, PercentSignsInArgumentsAreJustCharacters) {
    SwitchOn();
    NAC_Utils_PvtLog(2, "%s 100%%", "%n%s%d");
    EXPECT_EQ(Line("%n%s%d 100%"), Contents());
}

TEST_F(PrivateLog, AMessageOf511CharactersIsWrittenWhole) {
    const std::string message(511, 'm');
    SwitchOn();
    NAC_Utils_PvtLog(2, "%s", message.c_str());
    EXPECT_EQ(Line(message), Contents());
}

TEST_F(PrivateLog, ALongerMessageIsDroppedNotCut) {
    SwitchOn();
    NAC_Utils_PvtLog(2, "%s", std::string(512, 'm').c_str());
    EXPECT_EQ(1u, kit::Op<QAL_SystimeGet>().Calls()) << "the time is asked for before the message is made";
    NAC_Utils_PvtLog(2, "%s", std::string(100000, 'm').c_str());
    EXPECT_FALSE(fs::exists(kFile));
    NAC_Utils_PvtLog(2, "short");
    EXPECT_EQ(Line("short"), Contents());
}

TEST_F(PrivateLog, AMessageThatCannotBeFormattedIsDropped) {
    const char *volatile none = nullptr;
    const char *volatile counting = "%s %n";
    int count = 0;
    SwitchOn();
    NAC_Utils_PvtLog(2, none, 0);
    NAC_Utils_PvtLog(2, counting, "x", &count);
    EXPECT_FALSE(fs::exists(kFile));
    EXPECT_EQ(0, count);
}

TEST_F(PrivateLog, WithoutItsFolderTheLogIsSilent) {
    SwitchOn();
    fs::remove(kFolder);
    const std::size_t before = OpenDescriptors();
    NAC_Utils_PvtLog(2, "lost");
    EXPECT_FALSE(fs::exists(kFolder));
    fs::create_directory(kFolder);
    NAC_Utils_PvtLog(2, "kept");
    EXPECT_EQ(Line("kept"), Contents());
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(PrivateLog, AFileThatCannotBeOpenedIsSilent) {
    SwitchOn();
    fs::create_directory(kFile);
    NAC_Utils_PvtLog(2, "lost");
    EXPECT_TRUE(fs::is_empty(kFile));
}

TEST_F(PrivateLog, AFullDiskIsSilent) {
    SwitchOn();
    const std::size_t before = OpenDescriptors();
    fs::create_symlink("/dev/full", kFile);
    NAC_Utils_PvtLog(2, "lost");
    fs::remove(kFile);
    NAC_Utils_PvtLog(2, "kept");
    EXPECT_EQ(Line("kept"), Contents());
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(PrivateLog, TheFileIsClosedAfterEachLineSoItMayBeMovedAway) {
    SwitchOn();
    const std::size_t before = OpenDescriptors();
    NAC_Utils_PvtLog(2, "old");
    EXPECT_EQ(before, OpenDescriptors());
    fs::rename(kFile, kFolder / "nacutils.log.1");
    NAC_Utils_PvtLog(2, "new");
    EXPECT_EQ(Line("new"), Contents());
}

/* How many write system calls this process has made, or nothing when the kernel does not tell. */
std::optional<uint64_t> Writes() {
    std::ifstream file("/proc/self/io");
    std::string key;
    for (uint64_t value = 0; file >> key >> value;) {
        if (key == "syscw:")
            return value;
    }
    return std::nullopt;
}

TEST_F(PrivateLog, ALineIsOneWriteHoweverLongItIs) {
    SwitchOn();
    const std::string longest(511, 'm');
    NAC_Utils_PvtLog(2, "%s", longest.c_str());
    Writes(); /* sanitizers make writes of their own when code runs for the first time */
    const std::optional<uint64_t> before = Writes();
    if (!before)
        GTEST_SKIP() << "this kernel does not count writes";
    for (int i = 0; i < 100; ++i)
        NAC_Utils_PvtLog(2, "%s", longest.c_str());
    EXPECT_EQ(100u, *Writes() - *before);
}

/* Lines of one writer: its letter repeated, as long as its number of the line says, up to the longest. */
std::string MessageOf(char writer, int line) {
    return std::string(static_cast<std::size_t>(line % 7) * 85 + 1, writer);
}

void WriteLines(char writer, int lines) {
    for (int line = 0; line < lines; ++line)
        NAC_Utils_PvtLog(2, "%s", MessageOf(writer, line).c_str());
}

/* Every line of the file is a whole line of one writer, each writer's lines are in order and none is missing. */
void ExpectWholeLines(const std::string &contents, const std::string &writers, int lines) {
    const std::string head = "[2024-03-07 09:05:00][NACUTILS][ERROR]";
    std::map<char, int> next;
    std::size_t at = 0;
    while (at < contents.size()) {
        const std::size_t end = contents.find("\r\n", at);
        ASSERT_NE(std::string::npos, end);
        const std::string line = contents.substr(at, end - at);
        ASSERT_EQ(head, line.substr(0, head.size()));
        ASSERT_LT(head.size(), line.size());
        const char writer = line[head.size()];
        ASSERT_EQ(MessageOf(writer, next[writer]++), line.substr(head.size()));
        at = end + 2;
    }
    for (const char writer : writers)
        EXPECT_EQ(lines, next[writer]) << writer;
    EXPECT_EQ(writers.size(), next.size());
}

TEST_F(PrivateLog, LinesOfSeveralThreadsStayWhole) {
    SwitchOn();
    std::vector<std::thread> threads;
    for (const char writer : {'a', 'b', 'c', 'd'})
        threads.emplace_back(WriteLines, writer, 300);
    for (std::thread &thread : threads)
        thread.join();
    ExpectWholeLines(Contents(), "abcd", 300);
}

TEST_F(PrivateLog, LinesOfSeveralProcessesStayWhole) {
    SwitchOn();
    std::vector<pid_t> children;
    for (const char writer : {'a', 'b', 'c'}) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            WriteLines(writer, 300);
            _exit(0);
        }
        children.push_back(child);
    }
    WriteLines('d', 300);
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        EXPECT_EQ(0, status);
    }
    ExpectWholeLines(Contents(), "abcd", 300);
}

struct TimeText {
    QAL_SYSTIME_S time;
    const char *text;
};

TEST(PrivateLogTime, IsPaddedFieldByField) {
    const TimeText rows[] = {
        {{2024, 3, 7, 9, 5, 0, 4, 0}, "2024-03-07 09:05:00"},
        {{1999, 12, 31, 23, 59, 59, 5, 999}, "1999-12-31 23:59:59"},
        {{0, 0, 0, 0, 0, 0, 0, 0}, "   0-00-00 00:00:00"},
        {{7, 1, 1, 0, 0, 1, 0, 0}, "   7-01-01 00:00:01"},
        {{987, 10, 20, 10, 20, 30, 0, 0}, " 987-10-20 10:20:30"},
        {{65535, 255, 255, 255, 255, 255, 255, 0xFFFFFFFF}, "65535-255-255 255:255:255"},
    };
    for (const TimeText &row : rows) {
        kit::Op<QAL_SystimeGet>().Does([&row](QAL_SYSTIME_S *now) {
            *now = row.time;
            return 0U;
        });
        char buffer[64];
        EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, sizeof buffer));
        EXPECT_STREQ(row.text, buffer);
    }
}

class PrivateLogTimeBuffer : public testing::Test {
  protected:
    PrivateLogTimeBuffer() { clock_.SetCalendar({2024, 3, 7}, {9, 5, 0, 0}); }

  private:
    kit::VirtualClock clock_;
};

TEST_F(PrivateLogTimeBuffer, MayBeJustLargeEnough) {
    char buffer[21];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, 20));
    EXPECT_STREQ("2024-03-07 09:05:00", buffer);
    EXPECT_EQ('#', buffer[20]);
}

TEST_F(PrivateLogTimeBuffer, ThatIsTooSmallReceivesAnEmptyText) {
    char buffer[21];
    for (const uint32_t size : {1U, 5U, 19U}) {
        memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, size));
        EXPECT_STREQ("", buffer);
        EXPECT_EQ(std::string(sizeof buffer - size, '#'), std::string(buffer + size, sizeof buffer - size));
    }
}

TEST_F(PrivateLogTimeBuffer, OfNoBytesIsUntouched) {
    char buffer[1] = {'#'};
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, 0));
    EXPECT_EQ('#', buffer[0]);
}

TEST_F(PrivateLogTimeBuffer, ThatIsNullIsIgnored) {
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(nullptr, 64));
}

TEST_F(PrivateLogTimeBuffer, ReceivesZerosWhenTheHostDoesNotKnowTheTime) {
    kit::Op<QAL_SystimeGet>().Returns(1);
    char buffer[64];
    EXPECT_EQ(0u, NAC_Utils_GetPvLogTime(buffer, sizeof buffer));
    EXPECT_STREQ("   0-00-00 00:00:00", buffer);
}

} // namespace
