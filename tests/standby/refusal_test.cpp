// Peers that are turned away: each is refused, counted by its reason and named in the log, and leaves the link as it was.

#include "authority.h"
#include "node_process.h"

#include <arpa/inet.h>
#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <uvelhost/ha.h>
#include <uvelhost/standby_link.h>
#include <vector>

namespace {

using namespace std::chrono_literals;

/* Someone who knocks at the port with TLS, or what is taken for it. */
class Knocker {
  public:
    explicit Knocker(unsigned port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address));
        const timeval patience{10, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        SSL_CTX_set_verify(context_, SSL_VERIFY_NONE, nullptr);
    }
    ~Knocker() {
        SSL_free(ssl_);
        SSL_CTX_free(context_);
        close(socket_);
    }
    Knocker(const Knocker &) = delete;
    Knocker &operator=(const Knocker &) = delete;

    Knocker &Certificate(const std::string &folder, const std::string &name) {
        EXPECT_EQ(1, SSL_CTX_use_certificate_chain_file(context_, (folder + "/" + name + ".pem").c_str()));
        EXPECT_EQ(1, SSL_CTX_use_PrivateKey_file(context_, (folder + "/" + name + ".key").c_str(), SSL_FILETYPE_PEM));
        return *this;
    }
    Knocker &AtMost(int version) {
        SSL_CTX_set_max_proto_version(context_, version);
        return *this;
    }
    void Handshake() {
        ssl_ = SSL_new(context_);
        SSL_set_fd(ssl_, socket_);
        (void)SSL_connect(ssl_);
    }
    void Send(const std::vector<uint8_t> &bytes) {
        EXPECT_EQ(static_cast<int>(bytes.size()), SSL_write(ssl_, bytes.data(), static_cast<int>(bytes.size())));
    }
    void SendPlain(const std::string &bytes) {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
    }
    /* Everything up to the end of the connection. */
    std::vector<uint8_t> Read() {
        std::vector<uint8_t> all;
        uint8_t bytes[4096];
        for (int got = 0; (got = SSL_read(ssl_, bytes, sizeof bytes)) > 0;)
            all.insert(all.end(), bytes, bytes + got);
        return all;
    }

  private:
    SSL_CTX *context_ = SSL_CTX_new(TLS_client_method());
    SSL *ssl_ = nullptr;
    int socket_;
};

/* A folder with the keys of the pair, and those of a pair that has the same names and another authority. */
class TwoPairs {
  public:
    TwoPairs() {
        char path[] = "/tmp/standby.XXXXXX";
        if (mkdtemp(path) == nullptr)
            std::abort();
        path_ = path;
        for (const std::string &folder : {Ours(), Others()}) {
            char error[256] = "";
            EXPECT_EQ(0u, YSB_Link_MakeKeys(folder.c_str(), "a", "b", 1, error, sizeof error)) << error;
        }
    }
    ~TwoPairs() { std::filesystem::remove_all(path_); }
    std::string Ours() const { return path_ + "/ours"; }
    std::string Others() const { return path_ + "/others"; }

  private:
    std::string path_;
};

bool Eventually(const std::function<bool()> &condition) {
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

class Refusals : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(b.Start("127.0.0.1:0", "-"));
        port = b.AskState().port;
    }
    /* After all that the right peer still gets in. */
    void TearDown() override {
        NodeProcess a(pairs.Ours(), "a", "b");
        ASSERT_TRUE(a.Start("-", Address()));
        EXPECT_TRUE(Counted(b, "connects"));
    }
    std::string Address() const { return "127.0.0.1:" + std::to_string(port); }

    static bool Counted(NodeProcess &node, const std::string &counter) {
        return Eventually([&] { return node.Counter(counter) != 0; });
    }
    static bool Logged(const NodeProcess &node, const std::string &text) {
        const bool logged = Eventually([&] { return node.Log().find(text) != std::string::npos; });
        EXPECT_TRUE(logged) << "\"" << text << "\" does not stand in:\n" << node.Log();
        return logged;
    }
    /* Counted, and a line that says whom and why. */
    static bool Refused(NodeProcess &node, uint32_t reason) {
        return Counted(node, "refused" + std::to_string(reason)) && Logged(node, ": refused 127.0.0.1 port ") &&
               Logged(node, std::string(": ") + YSB_Link_RefusalText(reason));
    }
    static bool RefusedBy(NodeProcess &node, uint32_t reason) {
        return Counted(node, "refused_by" + std::to_string(reason)) && Logged(node, YSB_Link_RefusalText(reason));
    }

    TwoPairs pairs;
    NodeProcess b{pairs.Ours(), "b", "a"};
    unsigned port = 0;
};

TEST_F(Refusals, OfAPeerWithoutACertificate) {
    Knocker knocker(port);
    knocker.Handshake();
    EXPECT_TRUE(knocker.Read().empty()) << "it learns nothing";
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_NO_CERTIFICATE));
}

TEST_F(Refusals, OfAPeerOfAnotherAuthority) {
    Knocker knocker(port);
    knocker.Certificate(pairs.Others(), "a").Handshake();
    EXPECT_TRUE(knocker.Read().empty());
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_AUTHORITY));
}

TEST_F(Refusals, OfAPeerWithAnotherName) {
    Knocker knocker(port);
    knocker.Certificate(pairs.Ours(), "b").Handshake();
    EXPECT_TRUE(knocker.Read().empty());
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_NAME));
}

TEST_F(Refusals, OfTlsThatIsTooOld) {
    Knocker knocker(port);
    knocker.Certificate(pairs.Ours(), "a").AtMost(TLS1_2_VERSION).Handshake();
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_TLS_VERSION));
}

TEST_F(Refusals, OfWhatIsNoTls) {
    Knocker knocker(port);
    knocker.SendPlain("GET / HTTP/1.1\r\nHost: device\r\n\r\n");
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_TLS));
}

TEST_F(Refusals, OfAPeerThatSaysNothing) {
    Knocker silent(port);
    Knocker half(port);
    half.Certificate(pairs.Ours(), "a").Handshake();
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_TIMEOUT));
    EXPECT_TRUE(Counted(b, "timeouts")) << "the introduction never came";
}

TEST_F(Refusals, OfAnotherVersionOfTheProtocolWhichThePeerIsTold) {
    Knocker knocker(port);
    knocker.Certificate(pairs.Ours(), "a").Handshake();
    std::vector<uint8_t> hello(20 + 42);
    hello[0] = 42;
    hello[4] = 1;
    const uint8_t magic_and_version[] = {'U', 'V', 'H', 'S', 0, 0};
    std::copy(std::begin(magic_and_version), std::end(magic_and_version), hello.begin() + 20);
    knocker.Send(hello);
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_VERSION));
    const std::vector<uint8_t> answer = knocker.Read();
    ASSERT_GE(answer.size(), 20u);
    EXPECT_EQ(2, answer[answer.size() - 20 + 4]) << "the last frame refuses";
    EXPECT_EQ(YSB_LINK_REFUSED_VERSION, answer[answer.size() - 20 + 12]);
}

TEST_F(Refusals, OfAServerOfAnotherAuthorityByTheConnectingDevice) {
    NodeProcess stranger(pairs.Others(), "a", "b");
    ASSERT_TRUE(stranger.Start("-", Address()));
    EXPECT_TRUE(Refused(stranger, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_TRUE(RefusedBy(b, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_FALSE(stranger.AskState().connected);
}

TEST_F(Refusals, OfAServerWithAnotherNameByTheConnectingDevice) {
    NodeProcess stranger(pairs.Ours(), "a", "c");
    ASSERT_TRUE(stranger.Start("-", Address()));
    EXPECT_TRUE(Refused(stranger, YSB_LINK_REFUSED_NAME));
    EXPECT_TRUE(RefusedBy(b, YSB_LINK_REFUSED_NAME));
    EXPECT_FALSE(stranger.AskState().connected);
}

TEST_F(Refusals, OfTwoActiveDevices) {
    ASSERT_EQ("ok", b.Ask("role 1"));
    NodeProcess a(pairs.Ours(), "a", "b");
    ASSERT_TRUE(a.Start("-", Address()));
    ASSERT_TRUE(Counted(a, "connects"));
    EXPECT_EQ("ok", a.Ask("role 1"));
    EXPECT_TRUE(RefusedBy(a, YSB_LINK_REFUSED_ROLE));
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_ROLE));
    ASSERT_EQ("ok", b.Ask("role 0"));
}

/* Certificates out of their time */

class Untimely : public Refusals {
  protected:
    void SetUp() override {
        for (const std::string &folder : {pairs.Ours(), pairs.Others()}) {
            authority.Write(folder);
            authority.WriteDevice(folder, "a", "a", -1, 24);
            authority.WriteDevice(folder, "b", "b", -1, 24);
        }
        Refusals::SetUp();
    }

    Authority authority;
};

TEST_F(Untimely, OfAnExpiredCertificate) {
    authority.WriteDevice(pairs.Ours(), "expired", "a", -48, -24);
    Knocker knocker(port);
    knocker.Certificate(pairs.Ours(), "expired").Handshake();
    EXPECT_TRUE(knocker.Read().empty());
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_TRUE(Logged(b, "(certificate has expired)"));
}

TEST_F(Untimely, OfACertificateThatIsNotValidYet) {
    authority.WriteDevice(pairs.Ours(), "early", "a", 24, 48);
    Knocker knocker(port);
    knocker.Certificate(pairs.Ours(), "early").Handshake();
    EXPECT_TRUE(knocker.Read().empty());
    EXPECT_TRUE(Refused(b, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_TRUE(Logged(b, "(certificate is not yet valid)"));
}

TEST_F(Untimely, OfAnExpiredServerByTheConnectingDevice) {
    authority.WriteDevice(pairs.Others(), "b", "b", -48, -24);
    NodeProcess server(pairs.Others(), "b", "a");
    ASSERT_TRUE(server.Start("127.0.0.1:0", "-"));
    NodeProcess a(pairs.Ours(), "a", "b");
    ASSERT_TRUE(a.Start("-", "127.0.0.1:" + std::to_string(server.AskState().port)));
    EXPECT_TRUE(Refused(a, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_TRUE(Logged(a, "(certificate has expired)"));
    EXPECT_TRUE(RefusedBy(server, YSB_LINK_REFUSED_AUTHORITY));
    EXPECT_FALSE(a.AskState().connected);
}

/* Opening */

class Opening : public testing::Test {
  protected:
    Opening() {
        config.pszListen = "127.0.0.1:0";
        config.pszPeerName = "a";
        config.pfReceive = [](void *, uint32_t, uint8_t, YSB_SMBUF_S *smbuf, uint32_t) {
            YSB_Adapt_Smbuf_Destroy(smbuf);
            return UVELHOST_OK;
        };
        config.pfBatch = [](void *, uint32_t batch) { (void)YSB_Link_BatchDone(batch); };
        Files("b");
    }
    void Files(const std::string &name) {
        certificate = pairs.Ours() + "/" + name + ".pem";
        key = pairs.Ours() + "/" + name + ".key";
        authority = pairs.Ours() + "/authority.pem";
        config.pszCertificate = certificate.c_str();
        config.pszKey = key.c_str();
        config.pszAuthority = authority.c_str();
    }
    std::string Error() {
        char error[256] = "opened";
        if (YSB_Link_Open(&config, error, sizeof error) == 0)
            YSB_Link_Close();
        return error;
    }

    TwoPairs pairs;
    std::string certificate, key, authority;
    YSB_LINK_CONFIG_S config{};
};

TEST_F(Opening, NamesWhatIsWrong) {
    EXPECT_EQ("opened", Error());
    config.pfBatch = nullptr;
    EXPECT_EQ("no function for what is received, or for batch backups", Error());
    config.pfBatch = [](void *, uint32_t) {};
    config.ulRole = 3;
    EXPECT_EQ("unknown role", Error());
    config.ulRole = 0;
    config.pszListen = "127.0.0.1";
    EXPECT_EQ("\"127.0.0.1\" is not of the form address:port or [address]:port", Error());
    config.pszListen = nullptr;
    EXPECT_EQ("neither an address to listen on nor one of the peer", Error());
    config.pszListen = "127.0.0.1:0";
    config.pszPeerName = "B";
    EXPECT_EQ("both devices have the name b", Error());
    config.pszPeerName = "a";
    config.pszKey = "/nowhere/b.key";
    EXPECT_EQ(0u, Error().rfind("/nowhere/b.key: ", 0)) << Error();
    const std::string other = pairs.Ours() + "/a.key";
    config.pszKey = other.c_str();
    EXPECT_EQ(0u, Error().rfind(other, 0)) << "the key of another device: " << Error();
    Files("b");
    char error[8];
    config.ulHeartbeatMs = 5000;
    EXPECT_EQ(1u, YSB_Link_Open(&config, error, sizeof error));
    EXPECT_STREQ("a peer ", error) << "cut to its room";
    EXPECT_EQ(1u, YSB_Link_Open(nullptr, nullptr, 0));
}

TEST_F(Opening, IsForOneLinkAtATime) {
    ASSERT_EQ(0u, YSB_Link_Open(&config, nullptr, 0));
    EXPECT_EQ("the link of this process is open already", Error());
    YSB_Link_Close();
    YSB_Link_Close();
    EXPECT_EQ("opened", Error());
}

/* Board 3 listens, board 4 connects and is the active one, having the lower name. */
TEST_F(Opening, BoardsFollowTheLink) {
    struct Boards {
        uint32_t type = HA_GetBoardType();
        uint32_t master = HA_GetMasterBoardID() & 0xFFFF;
        uint32_t slave = HA_GetSlaveBoardID() & 0xFFFF;
        uint32_t state = HA_GetState();
        bool ready = HA_SlaveIsReady() == 0;
        bool operator==(const Boards &) const = default;
    };
    const auto become = [](const Boards &boards) { return Eventually([&] { return Boards() == boards; }); };
    config.ulBoard = 3;
    config.ulPeerBoard = 4;
    config.ulTimeoutMs = 1000;
    config.ulHeartbeatMs = 100;
    config.ulTakeoverMs = 2000;
    const Boards before;
    EXPECT_EQ(HA_BOARD_MASTER, before.type);
    EXPECT_EQ(0xFFFFu, before.slave) << "none";
    ASSERT_EQ(0u, YSB_Link_Open(&config, nullptr, 0));
    EXPECT_TRUE((Boards() == Boards{HA_BOARD_SLAVE, 4, 3, HA_STATE_ALONE, false})) << "nobody is active yet";
    YSB_LINK_STATE_S state{};
    ASSERT_EQ(0u, YSB_Link_GetState(&state));
    NodeProcess a(pairs.Ours(), "a", "b");
    ASSERT_TRUE(a.Start("-", "127.0.0.1:" + std::to_string(state.ulPort), 0, 1000));
    EXPECT_TRUE(become({HA_BOARD_SLAVE, 4, 3, HA_STATE_REALTIME, true})) << "follows";
    EXPECT_EQ("ok", a.Ask("role 2"));
    EXPECT_TRUE(become({HA_BOARD_MASTER, 3, 4, HA_STATE_REALTIME, true})) << "leads";
    EXPECT_EQ("ok", a.Ask("role 1"));
    EXPECT_TRUE(become({HA_BOARD_SLAVE, 4, 3, HA_STATE_REALTIME, true})) << "follows again";
    a.Kill();
    EXPECT_TRUE(become({HA_BOARD_SLAVE, 4, 3, HA_STATE_ALONE, false})) << "has lost its peer";
    EXPECT_TRUE(become({HA_BOARD_MASTER, 3, 4, HA_STATE_ALONE, false})) << "has taken over";
    YSB_Link_Close();
    EXPECT_TRUE((Boards() == Boards{HA_BOARD_MASTER, 3, 0xFFFF, HA_STATE_ALONE, false})) << "no link any more";
}

/* Stacks for which there is no room in any memory. */
TEST_F(Opening, WithoutThreadsFailsAndCanBeTriedAgain) {
    pthread_attr_t usual, vast;
    ASSERT_EQ(0, pthread_getattr_default_np(&usual));
    ASSERT_EQ(0, pthread_getattr_default_np(&vast));
    ASSERT_EQ(0, pthread_attr_setstacksize(&vast, std::size_t{1} << 47));
    ASSERT_EQ(0, pthread_setattr_default_np(&vast));
    const std::string error = Error();
    ASSERT_EQ(0, pthread_setattr_default_np(&usual));
    EXPECT_EQ("Resource temporarily unavailable", error);
    EXPECT_EQ("opened", Error());
}

/* Keys */

TEST_F(Opening, KeysAreMadeOnceAndReadByTheirOwnerAlone) {
    using std::filesystem::perms;
    EXPECT_EQ(perms::owner_read | perms::owner_write, std::filesystem::status(key).permissions() & perms::all);
    char error[256] = "";
    EXPECT_EQ(1u, YSB_Link_MakeKeys(pairs.Ours().c_str(), "a", "c", 1, error, sizeof error));
    EXPECT_EQ(pairs.Ours() + "/authority.pem is there already", error);
    const std::string fresh = pairs.Ours() + "/fresh";
    EXPECT_EQ(1u, YSB_Link_MakeKeys(fresh.c_str(), "a", "A", 1, error, sizeof error));
    EXPECT_EQ(1u, YSB_Link_MakeKeys(fresh.c_str(), "a", "../b", 1, error, sizeof error));
    EXPECT_EQ(1u, YSB_Link_MakeKeys(fresh.c_str(), "a", "authority", 1, error, sizeof error));
    EXPECT_EQ(1u, YSB_Link_MakeKeys(fresh.c_str(), "a", "b", 0, error, sizeof error));
    EXPECT_EQ(1u, YSB_Link_MakeKeys(fresh.c_str(), "a", "", 1, nullptr, 0));
    EXPECT_EQ(1u, YSB_Link_MakeKeys("/proc/nowhere", "a", "b", 1, error, sizeof error));
    EXPECT_FALSE(std::filesystem::exists(fresh));
}

TEST_F(Opening, KeysThatCannotAllBeMadeLeaveNothingInTheWay) {
    namespace fs = std::filesystem;
    const std::string folder = pairs.Ours() + "/half";
    ASSERT_TRUE(fs::create_directory(folder));
    const std::string third = folder + "/b.key";
    fs::create_symlink("nowhere", third); /* nothing is there, and nothing can be made */
    char error[256] = "";
    EXPECT_EQ(1u, YSB_Link_MakeKeys(folder.c_str(), "a", "b", 1, error, sizeof error));
    EXPECT_EQ(third + ": File exists", error);
    EXPECT_EQ(1, std::distance(fs::directory_iterator(folder), {})) << "what was there before stays";
    EXPECT_TRUE(fs::remove(third));
    EXPECT_EQ(0u, YSB_Link_MakeKeys(folder.c_str(), "a", "b", 1, error, sizeof error)) << error;
    EXPECT_EQ(5, std::distance(fs::directory_iterator(folder), {}));
}

} // namespace
