// A subscriber of a cluster whose nodes die, freeze, forget or come back as others.

#include "etcd_fixtures.h"

#include <algorithm>
#include <thread>

using namespace confdb_test;

namespace {

using Contents = Store::Contents;

class ConfdbEtcd : public EtcdTest {
  protected:
    /* Numbers of "t/k" that a watch was told, in the order in which it was. */
    static std::vector<int> Numbers(const Watch &watch) {
        std::vector<int> numbers;
        for (const Watch::Event &event : watch.events)
            numbers.push_back(std::atoi(event.value.c_str()));
        return numbers;
    }
    static std::vector<int> UpTo(int last) {
        std::vector<int> numbers(static_cast<std::size_t>(last) + 1);
        std::iota(numbers.begin(), numbers.end(), 0);
        return numbers;
    }

    /* Puts 0 to `last` under t/k, whatever happens meanwhile. */
    static std::thread Count(const std::string &endpoint, int last, std::chrono::milliseconds pause) {
        return std::thread([=] {
            const Store store(endpoint);
            for (int i = 0; i <= last; ++i) {
                store.Put("t", "k", std::to_string(i));
                std::this_thread::sleep_for(pause);
            }
        });
    }
};

TEST_F(ConfdbEtcd, TheNodeInUseIsKilledAndNothingIsMissedOrToldTwice) {
    const int last = LongTests() ? 3000 : 150;
    Etcd etcd(3);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    watch.events.clear();
    std::thread writer = Count(etcd.Endpoint({1, 2, 0}), last, 5ms);
    EXPECT_TRUE(watch.Until([&] { return static_cast<int>(watch.events.size()) > last / 3; }, 60s));
    etcd.Kill(0);
    const bool all = watch.UntilValue("t/k", std::to_string(last), 60s);
    writer.join();
    ASSERT_TRUE(all);
    EXPECT_EQ(UpTo(last), Numbers(watch));
}

TEST_F(ConfdbEtcd, OneOfThreeNodesIsDeadFromTheStart) {
    Etcd etcd(3);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    etcd.Kill(0);
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    const Store store(etcd.Endpoint());
    store.Put("t", "k", "1");
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
    EXPECT_EQ("1", store.Value("t", "k"));
}

TEST_F(ConfdbEtcd, TheWriterGoesOnWhenItsNodeIsKilled) {
    Etcd etcd(3);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    Watch watch(etcd.Endpoint({1, 2}), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    watch.events.clear();
    std::thread writer = Count(etcd.Endpoint(), 100, 2ms);
    EXPECT_TRUE(watch.Until([&] { return watch.events.size() > 20; }));
    etcd.Kill(0);
    const bool all = watch.UntilValue("t/k", "100", 30s);
    writer.join();
    ASSERT_TRUE(all);
    EXPECT_EQ(UpTo(100), Numbers(watch));
}

TEST_F(ConfdbEtcd, AFrozenNodeIsLeft) {
    Etcd etcd(3);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    etcd.Signal(0, SIGSTOP);
    Store(etcd.Endpoint({1, 2})).Put("t", "k", "1");
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
    etcd.Signal(0, SIGCONT);
    Store(etcd.Endpoint()).Put("t", "k", "2");
    EXPECT_TRUE(watch.UntilValue("t/k", "2"));
    EXPECT_EQ(UpTo(2), Numbers(watch));
}

TEST_F(ConfdbEtcd, ANodeWithoutTheMajorityIsLeft) {
    Etcd etcd(3);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    etcd.Kill(1);
    etcd.Kill(2);
    testing::internal::CaptureStderr();
    watch.HandleFor(3200ms);
    EXPECT_NE("", testing::internal::GetCapturedStderr());
    etcd.Start(1);
    Store(etcd.Endpoint({1, 0})).Put("t", "k", "1");
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
    EXPECT_EQ(UpTo(1), Numbers(watch));
}

TEST_F(ConfdbEtcd, TheOnlyNodeIsAwayForAWhile) {
    Etcd etcd;
    Store(etcd.Endpoint()).Put("t", "k", "0");
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/k", "0"));
    testing::internal::CaptureStderr();
    etcd.Kill(0);
    watch.HandleFor(300ms);
    etcd.Start(0);
    Store(etcd.Endpoint()).Put("t", "k", "1");
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
    EXPECT_EQ(UpTo(1), Numbers(watch));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.npos, said.find(": back\n")) << said;
    EXPECT_GE(6, std::count(said.begin(), said.end(), '\n')) << said;
}

TEST_F(ConfdbEtcd, AClusterThatIsNotThereYetIsWaitedFor) {
    Etcd etcd;
    Store(etcd.Endpoint()).Put("other", "k", "0"); /* a node that has not served anything may not come back */
    etcd.Kill(0);
    Watch watch(etcd.Endpoint(), "t");
    watch.HandleFor(200ms);
    etcd.Start(0);
    Store(etcd.Endpoint()).Put("t", "k", "0");
    EXPECT_TRUE(watch.UntilValue("t/k", "0"));
}

TEST_F(ConfdbEtcd, AfterACompactionOfWhatWasMissedTheDifferencesAreTold) {
    Etcd etcd;
    const Store store(etcd.Endpoint());
    store.Put("t", "stays", "1");
    store.Put("t", "goes", "1");
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.Until([&] { return watch.events.size() == 2; }));
    watch.events.clear();
    etcd.Kill(0); /* the watch does not look meanwhile */
    etcd.Start(0);
    store.Delete("t", "goes");
    for (int i = 0; i < 10; ++i)
        store.Put("t", "new", std::to_string(i));
    const uint64_t revision = store.Put("t", "last", "1");
    ASSERT_EQ(0, etcd.Control("compaction " + std::to_string(revision)));
    ASSERT_TRUE(watch.UntilValue("t/last", "1"));
    EXPECT_EQ((Contents{{"t/stays", "1"}, {"t/new", "9"}, {"t/last", "1"}}), watch.state);
    EXPECT_EQ(3u, watch.events.size());
    EXPECT_EQ("t/goes", watch.events[0].name);
    EXPECT_EQ(DB_CHANGE_DELETED, watch.events[0].change);
    store.Put("t", "last", "2");
    EXPECT_TRUE(watch.UntilValue("t/last", "2"));
}

TEST_F(ConfdbEtcd, AClusterThatForgotEverythingIsTheNewTruth) {
    Etcd etcd;
    {
        const Store store(etcd.Endpoint());
        for (int i = 0; i < 5; ++i)
            store.Put("t", "old", std::to_string(i));
    }
    Watch watch(etcd.Endpoint(), "t");
    ASSERT_TRUE(watch.UntilValue("t/old", "4"));
    etcd.Kill(0);
    etcd.Wipe(0);
    etcd.Start(0);
    Store(etcd.Endpoint()).Put("t", "new", "1");
    ASSERT_TRUE(watch.UntilGone("t/old"));
    EXPECT_TRUE(watch.UntilValue("t/new", "1"));
    EXPECT_EQ((Contents{{"t/new", "1"}}), watch.state);
}

TEST_F(ConfdbEtcd, WhatIsNotOursBelowThePrefixIsPassedOver) {
    Etcd etcd;
    Watch watch(etcd.Endpoint());
    for (const char *key : {"/uvel/", "/uvel/table", "/uvel//key", "/uvel/table/", "/other/t/k", "/uvel2/t/k"})
        ASSERT_EQ(0, etcd.Control(std::string("put ") + key + " x"));
    ASSERT_EQ(0, etcd.Control("put /uvel/t/k 1"));
    ASSERT_TRUE(watch.UntilValue("t/k", "1"));
    EXPECT_EQ(1u, watch.events.size());
    EXPECT_EQ((Contents{{"t/k", "1"}}), Store(etcd.Endpoint()).All());
    EXPECT_EQ((Contents{{"t/k", "x"}}), Store(etcd.Endpoint() + "/uvel2").All());
}

TEST_F(ConfdbEtcd, ChangesOfOneTransactionAreAllTold) {
    Etcd etcd;
    Watch watch(etcd.Endpoint(), "t");
    watch.HandleFor(300ms);
    ASSERT_EQ(0, std::system(("printf '\\nput /uvel/t/a 1\\nput /uvel/t/b 2\\nput /uvel/t/c 3\\n\\n\\n' | "
                              "ETCDCTL_API=3 etcdctl --endpoints=" +
                              etcd.Endpoint().substr(7) + " txn >/dev/null")
                                 .c_str()));
    ASSERT_TRUE(watch.Until([&] { return watch.events.size() == 3; }));
    EXPECT_EQ(watch.events[0].revision, watch.events[2].revision);
    EXPECT_EQ((Contents{{"t/a", "1"}, {"t/b", "2"}, {"t/c", "3"}}), watch.state);
}

} // namespace
