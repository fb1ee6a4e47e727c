// Two real processes, and what happens to them.

#include "node_process.h"
#include "proxy.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <uvelhost/ha.h>
#include <uvelhost/standby_link.h>

namespace {

using namespace std::chrono_literals;

bool LongTests() {
    return std::getenv("UVEL_LONG_TESTS") != nullptr;
}

/* A folder that is gone afterwards, with the keys of the devices "a" and "b". */
class Folder {
  public:
    Folder() {
        char path[] = "/tmp/standby.XXXXXX";
        if (mkdtemp(path) == nullptr)
            std::abort();
        path_ = path;
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string Keys(const std::string &name, const std::string &first, const std::string &second) const {
        char error[256] = "";
        EXPECT_EQ(
            0u, YSB_Link_MakeKeys((path_ + "/" + name).c_str(), first.c_str(), second.c_str(), 1, error, sizeof error))
            << error;
        return path_ + "/" + name;
    }
    const std::string &Path() const { return path_; }

  private:
    std::string path_;
};

bool Eventually(const std::function<bool()> &condition, std::chrono::milliseconds limit = 20s) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

/* Device "a" connects through the proxy to "b". */
class Devices : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(StartB());
        ASSERT_TRUE(StartA());
    }
    void TearDown() override {
        /* A command to a process that is gone is an empty answer, not a signal. */
        for (NodeProcess *node : {&a, &b}) {
            if (node->Runs()) {
                EXPECT_EQ(0u, node->AskState().broken) << "a payload was not what had been sent";
            }
        }
    }
    bool StartA() { return a.Start("-", "127.0.0.1:" + std::to_string(proxy.Port()), mtu, timeout_ms); }
    bool StartB() {
        const bool started = b.Start("127.0.0.1:0", "-", mtu, timeout_ms);
        proxy.SetTarget(static_cast<uint16_t>(b.AskState().port));
        return started;
    }
    NodeProcess *Active() {
        NodeProcess *active = nullptr;
        (void)Eventually([&] {
            for (NodeProcess *node : {&a, &b}) {
                if (node->Runs() && node->AskState().active)
                    active = node;
            }
            return active != nullptr;
        });
        return active;
    }
    NodeProcess &Other(const NodeProcess *node) { return node == &a ? b : a; }

    /* Both connected, one active, everything backed up, equal tables. */
    bool InStep() {
        return Eventually([&] {
            const NodeProcess::State x = a.AskState();
            const NodeProcess::State y = b.AskState();
            return x.connected && y.connected && x.active != y.active && x.backup == HA_STATE_REALTIME &&
                   y.backup == HA_STATE_REALTIME && a.Ask("digest") == b.Ask("digest");
        });
    }
    std::map<uint32_t, uint32_t> Table(NodeProcess &node) {
        const std::string file = folder.Path() + "/dump";
        EXPECT_EQ("ok", node.Ask("dump " + file));
        std::ifstream in(file);
        std::map<uint32_t, uint32_t> table;
        for (uint32_t key, version; in >> key >> version;)
            table[key] = version;
        return table;
    }

    Folder folder;
    std::string keys = folder.Keys("keys", "a", "b");
    uint32_t mtu = 1400;
    uint32_t timeout_ms = 600;
    Proxy proxy;
    NodeProcess a{keys, "a", "b"};
    NodeProcess b{keys, "b", "a"};
};

/* Devices that do not take a busy machine for a dead peer. */
class PatientDevices : public Devices {
  protected:
    PatientDevices() { timeout_ms = 10000; }
};

TEST_F(PatientDevices, KeepEqualTables) {
    ASSERT_TRUE(InStep());
    NodeProcess *active = Active();
    EXPECT_EQ(&a, active) << "the lower name";
    EXPECT_EQ("ok", active->Ask("many 1 500 1 100"));
    EXPECT_EQ("ok", active->Ask("set 1000 1 200000")) << "many fragments";
    EXPECT_EQ("ok", active->Ask("set 1001 1 0"));
    EXPECT_EQ("ok", active->Ask("sync 10000"));
    EXPECT_TRUE(InStep());
    EXPECT_EQ(502u, Table(b).size());
    EXPECT_EQ("standby", b.Ask("set 1 1 1"));
}

TEST_F(PatientDevices, ChangeTheirRolesOnRequest) {
    ASSERT_TRUE(InStep());
    EXPECT_EQ("ok", b.Ask("role 1"));
    EXPECT_TRUE(Eventually([&] { return b.AskState().active && !a.AskState().active; }));
    EXPECT_EQ("ok", b.Ask("many 1 10 1 10"));
    EXPECT_TRUE(Eventually([&] { return a.Ask("digest") == b.Ask("digest"); }));
}

TEST_F(PatientDevices, ResumeAfterAnInterruptionWithoutABatch) {
    ASSERT_TRUE(InStep());
    EXPECT_EQ("ok", a.Ask("many 1 100 1 50"));
    for (const bool reset : {false, true}) {
        proxy.Cut(reset);
        EXPECT_EQ("ok", a.Ask("many 50 100 2 50"));
        EXPECT_EQ("ok", a.Ask("sync 10000"));
        EXPECT_TRUE(InStep());
    }
    EXPECT_EQ(1u, a.Counter("new_streams"));
    EXPECT_EQ(1u, a.Counter("batches"));
    EXPECT_EQ(0u, b.Counter("violations"));
}

/* Whatever happens to processes and network: in the end both tables are equal, and nothing is missing that was
 * acknowledged. */
TEST_F(Devices, SurviveWhatHappensToThem) {
    constexpr uint32_t SEED = 20240317;
    std::mt19937 random(SEED);
    auto pick = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };
    const int cycles = LongTests() ? 200 : 10;
    std::map<uint32_t, uint32_t> acknowledged;
    uint32_t version = 0;

    for (int cycle = 0; cycle < cycles; ++cycle) {
        SCOPED_TRACE("seed " + std::to_string(SEED) + ", cycle " + std::to_string(cycle));
        ASSERT_TRUE(InStep()) << "a: " << a.Ask("state") << ", " << a.Ask("digest") << "; b: " << b.Ask("state") << ", "
                              << b.Ask("digest");
        NodeProcess *active = nullptr;
        const uint32_t first = pick(200);
        const uint32_t count = 1 + pick(300);
        const std::string change = "many " + std::to_string(first) + " " + std::to_string(count) + " " +
                                   std::to_string(++version) + " " + std::to_string(pick(4000));
        /* On a busy machine the roles may change once more. */
        ASSERT_TRUE(Eventually([&] {
            active = Active();
            return active != nullptr && active->Ask(change) == "ok" && active->Ask("sync 5000") == "ok";
        }));
        for (uint32_t key = first; key < first + count; ++key)
            acknowledged[key] = version;

        /* Some more that may or may not get through. */
        (void)active->Ask("many " + std::to_string(pick(200)) + " 200 " + std::to_string(++version) + " 700");
        NodeProcess &victim = pick(2) == 0 ? *active : Other(active);
        const uint32_t event = static_cast<uint32_t>(cycle) % 5;
        SCOPED_TRACE("event " + std::to_string(event) + (&victim == active ? " to the active" : " to the standby"));
        switch (event) {
        case 0: /* killed */
            victim.Kill();
            break;
        case 1: /* frozen for longer than the other one waits */
            victim.Signal(SIGSTOP);
            std::this_thread::sleep_for(1500ms);
            victim.Signal(SIGCONT);
            break;
        case 2:
            proxy.Cut(true);
            break;
        case 3: /* half-open: each believes the other to be there for a while */
            proxy.Stall(true);
            std::this_thread::sleep_for(pick(2) == 0 ? 100ms : 700ms);
            proxy.Cut(false);
            proxy.Stall(false);
            break;
        default:
            proxy.Cut(false);
        }
        if (!a.Runs()) {
            (void)Active();
            ASSERT_TRUE(StartA());
        }
        if (!b.Runs()) {
            (void)Active();
            ASSERT_TRUE(StartB());
        }
    }
    ASSERT_TRUE(InStep());
    const std::map<uint32_t, uint32_t> table = Table(a);
    for (const auto &[key, at_least] : acknowledged) {
        const auto found = table.find(key);
        ASSERT_NE(table.end(), found) << "key " << key << " was acknowledged and is missing";
        ASSERT_GE(found->second, at_least) << "key " << key;
    }
    EXPECT_EQ(table, Table(b));
}

/* What one side says arrives, what the other one says does not: the deaf one ends the connection, and both go on. */
TEST_F(Devices, SurviveALineThatCarriesOneWayOnly) {
    for (const bool from_client : {true, false}) {
        SCOPED_TRACE(from_client ? "B hears nothing" : "A hears nothing");
        ASSERT_TRUE(InStep());
        NodeProcess &deaf = from_client ? b : a;
        const uint64_t timeouts = deaf.Counter("timeouts");
        const uint64_t of_a = a.Counter("disconnects");
        const uint64_t of_b = b.Counter("disconnects");
        proxy.StallFrom(from_client, !from_client);
        (void)Active()->Ask("many 1 50 " + std::to_string(from_client ? 1 : 2) + " 100");
        EXPECT_TRUE(Eventually([&] { return a.Counter("disconnects") > of_a && b.Counter("disconnects") > of_b; }));
        EXPECT_LT(timeouts, deaf.Counter("timeouts"));
        proxy.Stall(false);
        EXPECT_TRUE(InStep());
    }
    EXPECT_EQ(0u, a.Counter("violations"));
    EXPECT_EQ(0u, b.Counter("violations"));
}

TEST_F(PatientDevices, AgreeOnVersionsThatAreToldWhileTheyAreConnected) {
    ASSERT_TRUE(InStep());
    const auto agreed = [&](const std::string &version) {
        return Eventually([&] { return a.Ask("agreed 77") == version && b.Ask("agreed 77") == version; });
    };
    EXPECT_TRUE(agreed("none"));
    EXPECT_EQ("ok", a.Ask("version 77 5"));
    EXPECT_EQ("none", a.Ask("agreed 77")) << "B has none";
    EXPECT_EQ("ok", b.Ask("version 77 3"));
    EXPECT_TRUE(agreed("3"));
    EXPECT_EQ("ok", b.Ask("version 77 4"));
    EXPECT_EQ("3", b.Ask("agreed 77")) << "what is told again holds from the next connection on";
    proxy.Cut(false);
    EXPECT_TRUE(agreed("4"));
}

/* No old value of a batch overtakes a change that was made while it ran. */
TEST_F(PatientDevices, KeepEqualTablesWhenTheyChangeDuringABatch) {
    ASSERT_TRUE(InStep());
    for (uint32_t version = 1; version < 20; version += 2) {
        /* Long ones take a while; the short ones overtake them. */
        EXPECT_EQ("ok", a.Ask("many 1 1000 " + std::to_string(version) + " 2000"));
        EXPECT_EQ("ok", a.Ask("sync 10000"));
        const uint64_t batches = a.Counter("batches");
        EXPECT_EQ("ok", a.Ask("batch"));
        EXPECT_EQ("ok", a.Ask("many 1 1000 " + std::to_string(version + 1) + " 0"));
        EXPECT_TRUE(Eventually([&] { return a.Counter("batches") > batches; }));
        EXPECT_EQ("ok", a.Ask("sync 10000"));
        ASSERT_EQ(a.Ask("digest"), b.Ask("digest")) << "version " << version;
    }
    EXPECT_EQ(1000u, Table(b).size());
}

/* The encrypted stream is cut after n bytes of a connection, for every n: in the handshake, the introduction, messages
 * and acknowledgements. Most of it is waiting for the next connection, so there are shares of it that run side by side. */
class CutDevices : public PatientDevices, public testing::WithParamInterface<uint64_t> {
  public:
    static constexpr uint64_t SHARES = 8;
};

TEST_P(CutDevices, SurviveACutAfterAnyByteOfAConnection) {
    ASSERT_TRUE(InStep());
    uint32_t version = 0;
    const uint64_t step = LongTests() ? 1 : 331;
    for (const bool from_client : {true, false}) {
        for (uint64_t bytes = 1 + GetParam() * step; bytes <= 4096; bytes += SHARES * step) {
            proxy.CutAfter(from_client ? bytes : UINT64_MAX, from_client ? UINT64_MAX : bytes);
            const uint64_t connections = proxy.Connections();
            proxy.Cut(false);
            ++version;
            (void)a.Ask("many 1 20 " + std::to_string(version) + " 150");
            ASSERT_TRUE(Eventually([&] { return proxy.Connections() > connections; }));
            if (version % 8 == 0) {
                proxy.CutAfter(UINT64_MAX, UINT64_MAX);
                ASSERT_TRUE(InStep()) << bytes;
                ASSERT_EQ(a.Ask("digest"), b.Ask("digest"));
            }
        }
    }
    proxy.CutAfter(UINT64_MAX, UINT64_MAX);
    ASSERT_TRUE(InStep());
    EXPECT_EQ(0u, a.Counter("violations"));
    EXPECT_EQ(0u, b.Counter("violations"));
}

INSTANTIATE_TEST_SUITE_P(Share, CutDevices, testing::Range<uint64_t>(0, CutDevices::SHARES));

} // namespace

int main(int argc, char **argv) {
    signal(SIGPIPE, SIG_IGN);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
