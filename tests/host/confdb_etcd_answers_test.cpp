// Servers that answer nonsense, too little or nothing: reported, and left for the next one.

#include "etcd_fixtures.h"

#include <atomic>
#include <functional>
#include <optional>
#include <thread>

using namespace confdb_test;

namespace {

/* Answers requests by what their first bytes say, and closes the connection; without an answer it leaves it open. */
class FakeServer {
  public:
    using Answer = std::function<std::optional<std::string>(const std::string &request)>;

    explicit FakeServer(Answer answer, std::function<void(int listener)> before = nullptr)
        : answer_(std::move(answer)), socket_(BoundSocket(port_)) {
        EXPECT_EQ(0, listen(socket_, 16));
        thread_ = std::thread([this, before = std::move(before)] {
            if (before != nullptr)
                before(socket_);
            Serve();
        });
    }
    explicit FakeServer(const std::string &bytes) : FakeServer([=](const std::string &) { return bytes; }) {}
    ~FakeServer() {
        shutdown(socket_, SHUT_RDWR);
        thread_.join();
        close(socket_);
        for (const int peer : left_open_)
            close(peer);
    }
    FakeServer(const FakeServer &) = delete;
    FakeServer &operator=(const FakeServer &) = delete;

    std::string HostAndPort() const { return "127.0.0.1:" + std::to_string(port_); }
    std::string Endpoint() const { return "etcd://" + HostAndPort(); }
    int Requests() const { return requests_; }

    static std::string Http(const std::string &body) {
        return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    }

  private:
    void Serve() {
        for (int peer; (peer = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            char bytes[4096];
            const ssize_t size = read(peer, bytes, sizeof bytes);
            const auto answer = answer_(std::string(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0))));
            ++requests_;
            if (!answer) {
                left_open_.push_back(peer);
                continue;
            }
            [[maybe_unused]] const ssize_t sent = send(peer, answer->data(), answer->size(), MSG_NOSIGNAL);
            shutdown(peer, SHUT_WR);
            while (read(peer, bytes, sizeof bytes) > 0)
                ;
            close(peer);
        }
    }

    Answer answer_;
    int port_ = 0;
    int socket_;
    std::atomic<int> requests_{0};
    std::vector<int> left_open_;
    std::thread thread_;
};

class ConfdbAnswers : public testing::TestWithParam<const char *> {};

TEST_P(ConfdbAnswers, AreReportedAndTriedAgainWithoutHaste) {
    const FakeServer server(FakeServer::Http(GetParam()));
    testing::internal::CaptureStderr();
    Watch watch(server.Endpoint());
    watch.HandleFor(300ms);
    EXPECT_TRUE(watch.events.empty());
    EXPECT_LT(0, server.Requests());
    EXPECT_GT(40, server.Requests());
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.npos, said.find("configuration database of a watch")) << said;
    EXPECT_GE(4, std::count(said.begin(), said.end(), '\n')) << said;
}

INSTANTIATE_TEST_SUITE_P(Of, ConfdbAnswers,
                         testing::Values("", "hello", "[]", "{}", R"({"header":{}})", R"({"header":{"revision":"x"}})",
                                         R"({"header":{"revision":"-1"}})", R"({"header":{"revision":"5"},"kvs":7})",
                                         R"({"header":{"revision":"5"},"kvs":[{"key":"?"}]})",
                                         R"({"error":"etcdserver: no leader"})",
                                         R"({"error":{"message":"etcdserver: no leader"}})",
                                         /* a table, but then no watch */
                                         R"({"header":{"revision":"5"}})"),
                         [](const auto &which) { return "Kind" + std::to_string(which.index); });

TEST(ConfdbServer, ThatTalksNoHttpIsReported) {
    const FakeServer server("SSH-2.0-OpenSSH_9.2\r\n");
    testing::internal::CaptureStderr();
    Watch watch(server.Endpoint());
    watch.HandleFor(200ms);
    EXPECT_NE("", testing::internal::GetCapturedStderr());
}

TEST(ConfdbServer, ThatNeverConfirmsAWatchIsReported) {
    const FakeServer server([](const std::string &request) {
        return request.starts_with("POST /v3/watch")
                   ? std::nullopt
                   : std::optional(FakeServer::Http(R"({"header":{"revision":"5"}})"));
    });
    testing::internal::CaptureStderr();
    Watch watch(server.Endpoint());
    watch.HandleFor(4s);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.npos, said.find("does not confirm a watch")) << said;
}

/* Answers a question on a connection that stays open and takes the write that follows; answers the connection. */
int TakeAWrite(int listener) {
    const int peer = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    char bytes[4096];
    EXPECT_LT(0, read(peer, bytes, sizeof bytes));
    const std::string there_is_nothing = "HTTP/1.1 200 OK\r\nContent-Length: 27\r\n\r\n"
                                         R"({"header":{"revision":"5"}})";
    EXPECT_LT(0, send(peer, there_is_nothing.data(), there_is_nothing.size(), MSG_NOSIGNAL));
    EXPECT_LT(0, read(peer, bytes, sizeof bytes));
    return peer;
}

/* What a cluster answers in which the write of "t/k" was done. */
FakeServer::Answer WriteWasDone(std::atomic<int> &writes) {
    return [&](const std::string &request) {
        const bool is_write = request.starts_with("POST /v3/kv/txn");
        writes += is_write;
        return FakeServer::Http(is_write ? R"({"header":{"revision":"7"}})"
                                         : R"({"header":{"revision":"7"},"kvs":[)"
                                           R"({"key":"L3V2ZWwvdC9r","value":"MQ==","mod_revision":"7"}]})");
    };
}

TEST(ConfdbServer, ThatDiesWithAWriteMayHaveDoneItAndIsNotOutdoneByASecondOne) {
    std::atomic<int> writes = 0;
    const FakeServer next(WriteWasDone(writes));
    int port = 0;
    const int listener = BoundSocket(port);
    ASSERT_EQ(0, listen(listener, 16));
    std::thread dying([=] {
        const int peer = TakeAWrite(listener);
        close(listener); /* first: nobody answers when the broken connection is replaced */
        close(peer);
    });
    Store("etcd://127.0.0.1:" + std::to_string(port) + "," + next.HostAndPort()).Put("t", "k", "1");
    dying.join();
    EXPECT_EQ(0, writes);
}

TEST(ConfdbServer, ThatBreaksTheConnectionOfAWriteMayHaveDoneItAndIsNotAskedForAThirdOne) {
    std::atomic<int> writes = 0;
    const FakeServer server(WriteWasDone(writes), [](int listener) { close(TakeAWrite(listener)); });
    Store(server.Endpoint()).Put("t", "k", "1");
    EXPECT_EQ(1, writes); /* the one that was sent again on a new connection, and came second */
}

class ConfdbServerBeside : public EtcdTest {};

TEST_F(ConfdbServerBeside, AGoodOneIsFoundBehindBadOnes) {
    const Etcd etcd;
    const FakeServer words(FakeServer::Http("hello"));
    const FakeServer error(FakeServer::Http(R"({"error":"etcdserver: no leader"})"));
    const std::string endpoint =
        "etcd://" + words.HostAndPort() + "," + error.HostAndPort() + "," + etcd.Endpoint().substr(7);
    Store(endpoint).Put("t", "k", "1");
    Watch watch(endpoint);
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
}

} // namespace
