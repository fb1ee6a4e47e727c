// A cluster that proves who it is and wants to know who asks.

#include "etcd_fixtures.h"

#include <fstream>

using namespace confdb_test;

namespace {

class ConfdbTls : public EtcdTest {
  protected:
    void SetUp() override {
        EtcdTest::SetUp();
        if (IsSkipped())
            return;
        MakeAuthority("ca");
        MakeAuthority("other-ca");
        MakeCertificate("server", "ca");
        MakeCertificate("client", "ca");
        MakeCertificate("stranger", "other-ca");
        server_ = {folder / "ca.pem", folder / "server.pem", folder / "server.key"};
        etcd = std::make_unique<Etcd>(1, &server_);
    }

    std::string Endpoint(const std::string &ca, const std::string &client) const {
        std::string endpoint = etcd->Endpoint() + "?ca=" + (folder / ca) + ".pem";
        if (!client.empty())
            endpoint += "&cert=" + (folder / client) + ".pem&key=" + (folder / client) + ".key";
        return endpoint;
    }

    /* The reason why nothing can be read. */
    std::string Refusal(const std::string &endpoint) {
        DB_STORE_S *store = nullptr;
        EXPECT_EQ(0u, db_store_open(endpoint.c_str(), &store));
        char value[8];
        uint32_t length = sizeof value;
        EXPECT_EQ(DB_FAILED, db_store_get(store, "t", "k", value, &length));
        db_store_close(store);
        return db_last_error();
    }

    TempFolder folder;
    std::unique_ptr<Etcd> etcd;

  private:
    void Run(const std::string &command) {
        ASSERT_EQ(0, std::system(("cd " + (folder / "") + " && " + command + " >>openssl.log 2>&1").c_str()))
            << command;
    }
    void MakeAuthority(const std::string &name) {
        Run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=" + name +
            " -keyout " + name + ".key -out " + name + ".pem");
    }
    void MakeCertificate(const std::string &name, const std::string &authority) {
        Run("openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=" + name + " -keyout " + name +
            ".key -out " + name + ".csr");
        std::ofstream(folder / (name + ".ext"))
            << "subjectAltName=IP:127.0.0.1\nextendedKeyUsage=serverAuth,clientAuth\n";
        Run("openssl x509 -req -days 2 -in " + name + ".csr -CA " + authority + ".pem -CAkey " + authority +
            ".key -CAcreateserial -extfile " + name + ".ext -out " + name + ".pem");
    }

    TlsFiles server_;
};

TEST_F(ConfdbTls, WithTheRightCertificatesEverythingWorks) {
    const std::string endpoint = Endpoint("ca", "client");
    const Store store(endpoint);
    store.Put("t", "k", "1");
    Watch watch(endpoint, "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "1"));
    store.Put("t", "k", "2");
    EXPECT_TRUE(watch.UntilValue("t/k", "2"));
    etcd->Kill(0);
    etcd->Start(0);
    store.Put("t", "k", "3");
    EXPECT_TRUE(watch.UntilValue("t/k", "3"));
}

TEST_F(ConfdbTls, AServerOfAnotherAuthorityIsNotBelieved) {
    Store(Endpoint("ca", "client")).Put("t", "k", "1");
    Watch watch(Endpoint("other-ca", "client"), "t");
    testing::internal::CaptureStderr();
    watch.HandleFor(500ms);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("certificate"));
    EXPECT_TRUE(watch.events.empty());
    const std::string refusal = Refusal(Endpoint("other-ca", "client"));
    EXPECT_NE(refusal.npos, refusal.find("certificate")) << refusal;
}

TEST_F(ConfdbTls, AClientThatDoesNotSayWhoItIsIsRefused) {
    Store(Endpoint("ca", "client")).Put("t", "k", "1");
    Watch watch(Endpoint("ca", ""), "t");
    testing::internal::CaptureStderr();
    watch.HandleFor(500ms);
    EXPECT_NE("", testing::internal::GetCapturedStderr());
    EXPECT_TRUE(watch.events.empty());
    Watch stranger(Endpoint("ca", "stranger"), "t");
    stranger.HandleFor(500ms);
    EXPECT_TRUE(stranger.events.empty());
}

TEST_F(ConfdbTls, AFileThatIsMissingIsNamed) {
    const std::string refusal = Refusal(Endpoint("none", "client"));
    EXPECT_NE(refusal.npos, refusal.find("none.pem")) << refusal;
}

} // namespace
