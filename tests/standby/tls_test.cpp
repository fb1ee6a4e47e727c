// TLS over a pair of sockets: what is written arrives, also when the keys change all the time.

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <standby/tls.h>
#include <sys/socket.h>
#include <unistd.h>
#include <uvelhost/standby_link.h>

namespace {

using namespace uvel::host::standby;
using Io = TlsChannel::Io;

class Tls : public testing::Test {
  protected:
    void SetUp() override {
        char path[] = "/tmp/standby.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(path));
        folder = path;
        ASSERT_EQ(0u, YSB_Link_MakeKeys((folder + "/keys").c_str(), "a", "b", 1, nullptr, 0));
        ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets));
        a = Load("a", "b");
        b = Load("b", "a");
        ASSERT_TRUE(a != nullptr && b != nullptr);
    }
    ~Tls() override {
        close(sockets[0]);
        close(sockets[1]);
        std::filesystem::remove_all(folder);
    }
    std::unique_ptr<TlsContext> Load(const std::string &name, const std::string &peer) {
        const std::string keys = folder + "/keys/";
        std::string error;
        return TlsContext::Load({keys + name + ".pem", keys + name + ".key", keys + "authority.pem"}, peer, error);
    }
    static bool Shake(TlsChannel &client, TlsChannel &server) {
        bool client_done = false;
        bool server_done = false;
        for (int i = 0; i < 20 && !(client_done && server_done); ++i) {
            client_done = client_done || client.Handshake() == Io::DONE;
            (void)client.Flush();
            server_done = server_done || server.Handshake() == Io::DONE;
            (void)server.Flush();
        }
        return client_done && server_done;
    }

    std::string folder;
    int sockets[2] = {-1, -1};
    std::unique_ptr<TlsContext> a, b;
};

TEST_F(Tls, CarriesBytesInBothDirectionsUnderKeysThatChange) {
    TlsChannel client(*a, sockets[0], false, 3);
    TlsChannel server(*b, sockets[1], true, 5);
    ASSERT_TRUE(Shake(client, server));
    std::vector<uint8_t> sent[2], received[2];
    TlsChannel *const channels[2] = {&client, &server};
    for (uint32_t round = 0; round < 300; ++round) {
        for (const int side : {0, 1}) {
            const std::vector<uint8_t> bytes(round * 97 % 40000 + 1, static_cast<uint8_t>(round + 100U * (side != 0)));
            ASSERT_TRUE(channels[side]->Write(bytes) && channels[side]->EndRecord());
            sent[side].insert(sent[side].end(), bytes.begin(), bytes.end());
        }
        for (int turn = 0; turn < 20; ++turn) {
            for (const int side : {0, 1}) {
                ASSERT_NE(Io::ENDED, channels[side]->Flush());
                uint8_t room[20000];
                std::size_t got = 0;
                Io io = Io::DONE;
                while ((io = channels[1 - side]->Read(room, got)) == Io::DONE)
                    received[side].insert(received[side].end(), room, room + got);
                ASSERT_EQ(Io::AGAIN, io) << channels[1 - side]->Trouble();
            }
        }
    }
    EXPECT_TRUE(sent[0] == received[0]);
    EXPECT_TRUE(sent[1] == received[1]);
}

TEST_F(Tls, WhatIsWrittenInPartsFillsRecords) {
    TlsChannel client(*a, sockets[0], false);
    TlsChannel server(*b, sockets[1], true);
    ASSERT_TRUE(Shake(client, server));
    std::vector<uint8_t> sent;
    for (uint8_t part = 0; part < 10; ++part) {
        const std::vector<uint8_t> bytes(5000, part);
        ASSERT_TRUE(client.Write(bytes));
        sent.insert(sent.end(), bytes.begin(), bytes.end());
    }
    ASSERT_TRUE(client.EndRecord());
    ASSERT_TRUE(client.EndRecord()) << "nothing is left: no empty record";
    ASSERT_EQ(Io::DONE, client.Flush());
    std::vector<uint8_t> received;
    std::vector<std::size_t> records;
    std::vector<uint8_t> room(100000);
    for (std::size_t got = 0; server.Read(room, got) == Io::DONE; records.push_back(got))
        received.insert(received.end(), room.begin(), room.begin() + static_cast<std::ptrdiff_t>(got));
    EXPECT_EQ((std::vector<std::size_t>{16384, 16384, 16384, 848}), records);
    EXPECT_TRUE(sent == received);
}

TEST_F(Tls, AGoodbyeBringsWhatWasWritten) {
    TlsChannel client(*a, sockets[0], false);
    TlsChannel server(*b, sockets[1], true);
    ASSERT_TRUE(Shake(client, server));
    const uint8_t bytes[] = {1, 2, 3};
    ASSERT_TRUE(client.Write(bytes));
    client.SayGoodbye();
    uint8_t room[100];
    std::size_t got = 0;
    ASSERT_EQ(Io::DONE, server.Read(room, got));
    EXPECT_EQ(3u, got);
    EXPECT_EQ(Io::ENDED, server.Read(room, got));
    EXPECT_EQ(Refusal::NONE, server.Refused());
}

TEST_F(Tls, AChangedByteEndsTheConnection) {
    TlsChannel client(*a, sockets[0], false);
    TlsChannel server(*b, sockets[1], true);
    ASSERT_TRUE(Shake(client, server));
    const uint8_t record[] = {23, 3,  3,  0,  30, 1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                              14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30};
    ASSERT_EQ(static_cast<ssize_t>(sizeof record), write(sockets[0], record, sizeof record));
    uint8_t room[100];
    std::size_t got = 0;
    EXPECT_EQ(Io::ENDED, server.Read(room, got));
    EXPECT_EQ(Refusal::TLS_OTHER, server.Refused());
}

TEST_F(Tls, AnErrorOfSomebodyElseOnTheThreadDoesNotEndTheConnection) {
    TlsChannel client(*a, sockets[0], false);
    TlsChannel server(*b, sockets[1], true);
    ASSERT_TRUE(Shake(client, server));
    uint8_t byte = 0;
    std::size_t got = 0;
    ERR_raise(ERR_LIB_USER, ERR_R_INTERNAL_ERROR);
    EXPECT_EQ(Io::AGAIN, server.Read({&byte, 1}, got));
    const uint8_t sent = 7;
    ERR_raise(ERR_LIB_USER, ERR_R_INTERNAL_ERROR);
    EXPECT_TRUE(client.Write({&sent, 1}) && client.EndRecord());
    EXPECT_EQ(Io::DONE, client.Flush());
    EXPECT_EQ(Io::DONE, server.Read({&byte, 1}, got));
    EXPECT_EQ(7, byte);
    EXPECT_EQ(Refusal::NONE, server.Refused());
}

TEST_F(Tls, AnEndOfTheSocketIsNoRefusal) {
    TlsChannel client(*a, sockets[0], false);
    TlsChannel server(*b, sockets[1], true);
    ASSERT_TRUE(Shake(client, server));
    shutdown(sockets[0], SHUT_RDWR);
    uint8_t room[100];
    std::size_t got = 0;
    EXPECT_EQ(Io::ENDED, server.Read(room, got));
    EXPECT_EQ(Refusal::NONE, server.Refused());
}

} // namespace
