// etcd servers of a test's own, on free ports of this machine, with data that goes away with them.
#pragma once

#include "confdb_fixtures.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <numeric>
#include <sys/socket.h>
#include <thread>

namespace confdb_test {

inline bool HasEtcd() {
    return access("/usr/bin/etcd", X_OK) == 0 && access("/usr/bin/etcdctl", X_OK) == 0;
}

/* A socket on a port of this machine that was free, and the port. */
inline int BoundSocket(int &port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(0, bind(socket, reinterpret_cast<sockaddr *>(&address), size));
    EXPECT_EQ(0, getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size));
    port = ntohs(address.sin_port);
    return socket;
}

/* A port that nobody listens on at the moment. */
inline int FreePort() {
    int port = 0;
    close(BoundSocket(port));
    return port;
}

/* Waits until somebody does; false after half a minute. */
inline bool IsListening(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    for (const auto end = Clock::now() + 30s; Clock::now() < end; std::this_thread::sleep_for(5ms)) {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int result = connect(socket, reinterpret_cast<sockaddr *>(&address), sizeof address);
        close(socket);
        if (result == 0)
            return true;
    }
    return false;
}

struct TlsFiles {
    std::string ca, cert, key;
};

/* One or several nodes. */
class Etcd {
  public:
    explicit Etcd(int nodes = 1, const TlsFiles *tls = nullptr) : tls_(tls) {
        for (int i = 0; i < nodes; ++i)
            nodes_.push_back({FreePort(), FreePort(), {}});
        for (int i = 0; i < nodes; ++i)
            Start(i);
        for (int i = 0; i < nodes; ++i)
            EXPECT_TRUE(IsListening(At(i).client_port)) << "etcd does not start";
    }

    /* Starts a node, or starts it again where it left off. */
    void Start(int number) {
        std::vector<std::string> words{"/usr/bin/etcd",
                                       "--name",
                                       Name(number),
                                       "--data-dir",
                                       folder_ / Name(number),
                                       "--listen-peer-urls",
                                       PeerUrl(number),
                                       "--initial-advertise-peer-urls",
                                       PeerUrl(number),
                                       "--listen-client-urls",
                                       ClientUrl(number),
                                       "--advertise-client-urls",
                                       ClientUrl(number),
                                       "--initial-cluster",
                                       Cluster(),
                                       "--heartbeat-interval",
                                       "50",
                                       "--election-timeout",
                                       "500",
                                       "--log-level",
                                       "error"};
        if (tls_ != nullptr)
            words.insert(words.end(), {"--cert-file", tls_->cert, "--key-file", tls_->key, "--client-cert-auth",
                                       "--trusted-ca-file", tls_->ca});
        At(number).process = Child([&] {
            const int log = open((folder_ / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            dup2(log, STDOUT_FILENO);
            dup2(log, STDERR_FILENO);
            std::vector<char *> arguments;
            for (std::string &word : words)
                arguments.push_back(word.data());
            arguments.push_back(nullptr);
            execv(arguments[0], arguments.data());
        });
    }

    void Kill(int number) { At(number).process.Kill(); }
    void Signal(int number, int signal) { At(number).process.Signal(signal); }

    /* Forgets what a killed node has stored. */
    void Wipe(int number) { fs::remove_all(folder_ / Name(number)); }

    /* etcd://... of the nodes in this order, or of all. */
    std::string Endpoint() const {
        std::vector<int> all(nodes_.size());
        std::iota(all.begin(), all.end(), 0);
        return Endpoint(all);
    }
    std::string Endpoint(const std::vector<int> &order) const {
        std::string endpoint = tls_ == nullptr ? "etcd://" : "etcds://";
        for (const int number : order)
            endpoint += "127.0.0.1:" + std::to_string(nodes_[static_cast<std::size_t>(number)].client_port) + ",";
        endpoint.pop_back();
        return endpoint;
    }

    /* Runs etcdctl with these arguments against one node. */
    int Control(const std::string &arguments, int number = 0) const {
        const std::string command =
            "ETCDCTL_API=3 /usr/bin/etcdctl --command-timeout=10s --endpoints=" + ClientUrl(number) + " " + arguments +
            " >/dev/null 2>&1";
        return std::system(command.c_str());
    }

  private:
    struct Node {
        int client_port;
        int peer_port;
        Child process;
    };

    Node &At(int number) { return nodes_[static_cast<std::size_t>(number)]; }
    const Node &At(int number) const { return nodes_[static_cast<std::size_t>(number)]; }

    static std::string Name(int number) { return "n" + std::to_string(number); }
    std::string PeerUrl(int number) const { return "http://127.0.0.1:" + std::to_string(At(number).peer_port); }
    std::string ClientUrl(int number) const {
        return (tls_ == nullptr ? "http://127.0.0.1:" : "https://127.0.0.1:") + std::to_string(At(number).client_port);
    }
    std::string Cluster() const {
        std::string all;
        for (int i = 0; i < static_cast<int>(nodes_.size()); ++i)
            all += (i == 0 ? "" : ",") + Name(i) + "=" + PeerUrl(i);
        return all;
    }

    const TlsFiles *tls_;
    TempFolder folder_;
    std::vector<Node> nodes_;
};

/* A test that needs etcd. */
class EtcdTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!HasEtcd())
            GTEST_SKIP() << "etcd-server and etcd-client are not installed";
    }
};

} // namespace confdb_test
