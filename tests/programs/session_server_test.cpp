#include "server.h"

#include <gtest/gtest.h>
#include <mutex>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "temporary_folder.h"

using session_table::Reply;
using session_table::Server;

namespace {

/* A server that echoes, and clients of it. */
class SessionServer : public testing::Test {
  protected:
    void SetUp() override {
        std::string reason;
        ASSERT_TRUE(server_.Open(Path(), &reason)) << reason;
        thread_ = std::thread([this] { server_.Run(); });
    }
    void TearDown() override {
        server_.Stop();
        if (thread_.joinable())
            thread_.join();
    }

    std::string Path() const { return folder_.File("s.sock"); }

    int Connect() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        Path().copy(address.sun_path, sizeof address.sun_path - 1);
        const int client = socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(0, connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address));
        return client;
    }

    /* Sends, closes its own side, and reads all answers. */
    std::string Exchange(const std::string &bytes) const {
        const int client = Connect();
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL));
        shutdown(client, SHUT_WR);
        std::string answers;
        char buffer[4096];
        for (ssize_t count; (count = read(client, buffer, sizeof buffer)) > 0;)
            answers.append(buffer, static_cast<size_t>(count));
        close(client);
        return answers;
    }

    TemporaryFolder folder_;
    Server server_{[](const std::string &line) { return "<" + line + ">"; }, nullptr, 16};
    std::thread thread_;
};

TEST_F(SessionServer, AnswersEveryLineInOrder) {
    EXPECT_EQ("<a>\n<b>\n<>\n<c d>\n", Exchange("a\nb\n\nc d\n"));
}

TEST_F(SessionServer, DoesNotCarryOutALineThatIsCutOff) {
    EXPECT_EQ("<a>\nerror the line has no end\n", Exchange("a\nlogoff x"));
}

TEST_F(SessionServer, AnswersALineThatIsTooLongOnceAndGoesOn) {
    EXPECT_EQ("<1234567890123456>\nerror the line is too long\n<b>\n",
              Exchange("1234567890123456\n12345678901234567\nb\n"));
    EXPECT_EQ("error the line is too long\n<b>\n", Exchange(std::string(100'000, 'x') + "\nb\n"));
}

TEST_F(SessionServer, TakesALineInPieces) {
    const int client = Connect();
    for (const char piece : std::string("ab\n"))
        ASSERT_EQ(1, send(client, &piece, 1, 0));
    char buffer[16] = "";
    ASSERT_EQ(5, recv(client, buffer, 5, MSG_WAITALL));
    EXPECT_STREQ("<ab>\n", buffer);
    close(client);
}

TEST_F(SessionServer, SurvivesClientsThatVanish) {
    for (int i = 0; i < 200; ++i) {
        const int client = Connect();
        ASSERT_EQ(4, send(client, "abc\n", 4, 0));
        close(client);
    }
    EXPECT_EQ("<a>\n", Exchange("a\n"));
}

TEST_F(SessionServer, IsForItsOwnerAlone) {
    struct stat status {};
    ASSERT_EQ(0, stat(Path().c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 0777);
}

TEST_F(SessionServer, AnswersALineThatIsTooLongAndCutOffOnce) {
    EXPECT_EQ("error the line is too long\n", Exchange(std::string(100'000, 'x')));
}

TEST_F(SessionServer, LosesNoAnswerToAClientThatReadsLate) {
    const int client = Connect();
    const std::string line(16, 'y');
    std::thread sender([&] {
        for (int i = 0; i < 100'000; ++i)
            ASSERT_EQ(17, send(client, (line + "\n").data(), 17, 0));
        shutdown(client, SHUT_WR);
    });
    usleep(200'000);
    size_t bytes = 0;
    char buffer[4096];
    for (ssize_t count; (count = read(client, buffer, sizeof buffer)) > 0;)
        bytes += static_cast<size_t>(count);
    sender.join();
    close(client);
    EXPECT_EQ(100'000u * 19, bytes);
}

TEST_F(SessionServer, TurnsAwayWhoComesWhenManyAreThere) {
    std::vector<int> clients;
    for (int i = 0; i < 64; ++i)
        clients.push_back(Connect());
    EXPECT_EQ("error too many clients are connected\n", Exchange(""));
    for (const int client : clients)
        close(client);
}

/* A server whose answers to "wait" are ready when the test says so. */
class SessionServerThatWaits : public SessionServer {
  protected:
    void SetUp() override {
        std::string reason;
        ASSERT_TRUE(waiting_.Open(folder_.File("s.sock"), &reason)) << reason;
        thread_ = std::thread([this] { waiting_.Run(); });
    }
    void TearDown() override {
        waiting_.Stop();
        thread_.join();
    }
    void Decide(const std::string &text) {
        {
            const std::lock_guard lock(lock_);
            decided_ = text;
        }
        waiting_.LookAgain();
    }
    bool IsReady(Reply *reply) {
        const std::lock_guard lock(lock_);
        reply->text += decided_;
        return !decided_.empty();
    }

    std::mutex lock_;
    std::string decided_;
    Server waiting_{[](const std::string &line) { return line == "wait" ? Reply(line, 1) : Reply(line); },
                    [this](Reply *reply) { return IsReady(reply); }, 16};
};

TEST_F(SessionServerThatWaits, HoldsAnswersBackInTheirOrderAndNobodyElse) {
    const int client = Connect();
    ASSERT_EQ(14, send(client, "a\nwait\nb\nwait\n", 14, 0));
    char buffer[64] = "";
    ASSERT_EQ(2, recv(client, buffer, 2, MSG_WAITALL));
    EXPECT_STREQ("a\n", buffer);
    EXPECT_EQ("c\n", Exchange("c\n"));
    EXPECT_EQ(-1, recv(client, buffer, 1, MSG_DONTWAIT));
    Decide("ed");
    ASSERT_EQ(16, recv(client, buffer, 16, MSG_WAITALL));
    EXPECT_STREQ("waited\nb\nwaited\n", buffer);
    close(client);
}

TEST_F(SessionServerThatWaits, AnswersAClientThatSendsNoMore) {
    const int client = Connect();
    ASSERT_EQ(5, send(client, "wait\n", 5, 0));
    shutdown(client, SHUT_WR);
    usleep(50'000);
    Decide("ed");
    char buffer[64] = "";
    ASSERT_EQ(7, recv(client, buffer, 7, MSG_WAITALL));
    EXPECT_EQ(0, recv(client, buffer, 1, 0));
    close(client);
}

TEST_F(SessionServerThatWaits, ForgetsAnswersToAClientThatIsGone) {
    for (int i = 0; i < 100; ++i) { /* more than there may be at a time */
        const int client = Connect();
        ASSERT_EQ(5, send(client, "wait\n", 5, 0));
        close(client);
    }
    EXPECT_EQ("a\n", Exchange("a\n"));
}

TEST(SessionServerPath, ThatIsTooLongIsRefused) {
    Server server([](const std::string &line) { return line; }, nullptr, 16);
    std::string reason;
    EXPECT_FALSE(server.Open("/tmp/" + std::string(200, 'x'), &reason));
    EXPECT_NE("", reason);
}

} // namespace
