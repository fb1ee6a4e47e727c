// Servers that answer nonsense, too little or nothing: reported, and left for the next one.

#include "etcd_fixtures.h"

#include <atomic>
#include <thread>

using namespace confdb_test;

namespace {

/* Answers every request with the same bytes and closes the connection. */
class FakeServer {
  public:
    explicit FakeServer(std::string answer) : answer_(std::move(answer)), socket_(Listen()) {
        thread_ = std::thread([this] { Serve(); });
    }
    ~FakeServer() {
        shutdown(socket_, SHUT_RDWR);
        thread_.join();
        close(socket_);
    }
    FakeServer(const FakeServer &) = delete;
    FakeServer &operator=(const FakeServer &) = delete;

    std::string Endpoint() const { return "etcd://127.0.0.1:" + std::to_string(port_); }
    std::string HostAndPort() const { return "127.0.0.1:" + std::to_string(port_); }
    int Requests() const { return requests_; }

    static std::string Http(const std::string &body) {
        return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    }

  private:
    int Listen() {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, bind(socket, reinterpret_cast<sockaddr *>(&address), size));
        EXPECT_EQ(0, listen(socket, 16));
        EXPECT_EQ(0, getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size));
        port_ = ntohs(address.sin_port);
        return socket;
    }
    void Serve() {
        for (int peer; (peer = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0; close(peer)) {
            char request[4096];
            if (read(peer, request, sizeof request) <= 0)
                continue;
            ++requests_;
            [[maybe_unused]] const ssize_t sent = send(peer, answer_.data(), answer_.size(), MSG_NOSIGNAL);
            shutdown(peer, SHUT_WR);
            while (read(peer, request, sizeof request) > 0)
                ;
        }
    }

    std::string answer_;
    int port_ = 0;
    int socket_;
    std::atomic<int> requests_{0};
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
