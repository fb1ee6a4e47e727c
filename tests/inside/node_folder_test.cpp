// Processes that come up while others look through the folder.

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

int g_command;
std::function<void()> g_then;

/* The real one; what a test has planned happens right behind the first success of its command. */
int ProbedFcntl(int file, int command, struct flock *lock) {
    const int result = fcntl(file, command, lock);
    if (result == 0 && command == g_command && g_then)
        std::exchange(g_then, nullptr)();
    return result;
}

} // namespace

#define fcntl ProbedFcntl
#include "../../host/ipc/node_folder.cpp"
#undef fcntl

namespace uvel::host {

uint32_t SelfNode() {
    return static_cast<uint32_t>(getpid());
}

void ReportText(const char *, ...) {}

} // namespace uvel::host

using namespace uvel::host;

namespace {

struct TemporaryFolder {
    TemporaryFolder() { setenv("UVELHOST_RUN_DIR", mkdtemp(path), 1); }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    char path[32] = "/tmp/uvelhost-test-XXXXXX";
};

/* A process that claims its place when it is told to, and keeps it until the test lets go. */
class Newcomer {
  public:
    Newcomer() {
        int down[2];
        int up[2];
        if (pipe(down) != 0 || pipe(up) != 0)
            std::abort();
        pid_ = fork();
        if (pid_ == 0) {
            close(down[1]);
            char word;
            NodeFolder folder;
            if (read(down[0], &word, 1) == 1)
                word = folder.Claim() && std::ofstream(folder.SocketPath(SelfNode())) ? 'y' : 'n';
            _exit(write(up[1], &word, 1) == 1 && read(down[0], &word, 1) == 0 ? 0 : 1);
        }
        close(down[0]);
        close(up[1]);
        tell_ = down[1];
        hear_ = up[0];
    }

    ~Newcomer() {
        close(tell_);
        close(hear_);
        waitpid(pid_, nullptr, 0);
    }
    Newcomer(const Newcomer &) = delete;
    Newcomer &operator=(const Newcomer &) = delete;

    uint32_t Node() const { return static_cast<uint32_t>(pid_); }
    void Come() const { EXPECT_EQ(1, write(tell_, "c", 1)); }
    bool HasCome() const {
        char word = 'n';
        return read(hear_, &word, 1) == 1 && word == 'y';
    }

  private:
    pid_t pid_ = -1;
    int tell_ = -1;
    int hear_ = -1;
};

class Folder : public testing::Test {
  protected:
    Folder() {
        EXPECT_TRUE(folder_.Open());
        std::ofstream(File(".node")); /* an earlier process of the newcomer's number left it */
    }

    ~Folder() override { EXPECT_FALSE(g_then) << "what the test is about did not happen"; }

    std::string File(const char *ending) const {
        return path_.path + ("/" + std::to_string(newcomer_.Node())) + ending;
    }

    void After(int command, std::function<void()> then) {
        g_command = command;
        g_then = std::move(then);
        EXPECT_TRUE(folder_.Components().empty());
    }

    TemporaryFolder path_;
    NodeFolder folder_;
    Newcomer newcomer_;
};

TEST_F(Folder, AFileThatIsClaimedAfterItWasFoundLeftBehindStays) {
    After(F_GETLK, [&] {
        newcomer_.Come();
        EXPECT_TRUE(newcomer_.HasCome());
    });
    EXPECT_TRUE(std::filesystem::exists(File(".node")));
    EXPECT_TRUE(std::filesystem::exists(File(".sock")));
}

TEST_F(Folder, AProcessThatComesUpWhileItsNumberIsSweptWaitsForItsPlace) {
    After(F_SETLK, [&] {
        newcomer_.Come();
        usleep(50000); /* time enough to give up in */
    });
    EXPECT_TRUE(newcomer_.HasCome());
    EXPECT_TRUE(std::filesystem::exists(File(".node")));
    EXPECT_TRUE(std::filesystem::exists(File(".sock")));
}

} // namespace
