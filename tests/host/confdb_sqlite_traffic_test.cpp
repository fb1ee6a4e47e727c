// Many writers and readers of one file, some of which die.

#include "sqlite_fixtures.h"

#include <thread>

using namespace confdb_test;

namespace {

/* From its first change on a watch of everything was told each revision. */
void ExpectGapless(const Watch &watch) {
    uint64_t before = 0;
    for (const Watch::Event &event : watch.events) {
        if (event.change == DB_CHANGE_PRESENT)
            continue;
        if (before != 0) {
            ASSERT_EQ(before + 1, event.revision);
        }
        before = event.revision;
    }
}

class ConfdbTraffic : public SqliteTest {
  protected:
    /* A watch that knows the key of revision 1 stands. */
    ConfdbTraffic() { Store(endpoint).Put("mark", "k", "1"); }

    /* A process that writes `count` changes to a few keys of its own; one in ten is a deletion. */
    Child Writer(const std::string &name, int count) {
        return Child([=, this] {
            const Store store(endpoint);
            for (int i = 0; i < count; ++i) {
                const std::string key = "k" + std::to_string(i % 50);
                if (i % 10 == 9)
                    store.Delete(name, "k" + std::to_string((i - 1) % 50));
                else
                    store.Put(name, key, std::to_string(i));
            }
            _exit(HasFailure() ? 1 : 0);
        });
    }
};

TEST_F(ConfdbTraffic, SubscribersThatComeAndGoMissNothingOfTwoWriters) {
    const int each = LongTests() ? 10000 : 120;
    Watch always(endpoint);
    ASSERT_TRUE(always.UntilValue("mark/k", "1"));
    always.events.clear();
    Child writers[] = {Writer("a", each), Writer("b", each)};
    const auto total = static_cast<std::size_t>(2 * each);
    int visits = 0;
    while (always.events.size() < total) {
        const std::size_t begin = always.events.size();
        Watch visitor(endpoint);
        ASSERT_TRUE(visitor.Until([&] { return visitor.events.size() >= 20; }) || always.events.size() + 40 >= total);
        ASSERT_TRUE(always.Until([&] { return always.events.size() >= std::min(begin + 10, total); }));
        ExpectGapless(visitor);
        ++visits;
        /* The visitor knows the database as it was at its own last revision. */
        if (always.events.size() == total) {
            EXPECT_TRUE(visitor.Until([&] { return visitor.state == always.state; }));
        }
    }
    for (Child &writer : writers)
        EXPECT_EQ(0, writer.Wait());
    EXPECT_LT(1, visits);
    EXPECT_EQ(total, always.events.size());
    EXPECT_EQ(2u, always.events.front().revision);
    EXPECT_EQ(total + 1, always.events.back().revision);
    ExpectGapless(always);
    EXPECT_EQ(Store(endpoint).All(), always.state);
}

TEST_F(ConfdbTraffic, AWriterKilledInMidWriteLosesNothingThatWasToldAndHindersNobody) {
    const int rounds = LongTests() ? 200 : 8;
    Watch watch(endpoint);
    const Store survivor(endpoint);
    for (int round = 0; round < rounds; ++round) {
        Child victim = Writer("victim", 1000000);
        const std::size_t seen = watch.events.size();
        ASSERT_TRUE(watch.Until([&] { return watch.events.size() > seen + static_cast<std::size_t>(round % 7); }));
        victim.Kill();
        const std::string mark = std::to_string(round);
        survivor.Put("survivor", "round", mark);
        ASSERT_TRUE(watch.UntilValue("survivor/round", mark));
        ASSERT_EQ(survivor.All(), watch.state);
    }
    ExpectGapless(watch);
    EXPECT_EQ(Store(endpoint).All(), watch.state) << "the file passes the check of whoever opens it";
}

TEST_F(ConfdbTraffic, AWakeUpThatNeverCameIsMadeUpFor) {
    Watch watch(endpoint);
    Store(endpoint).Put("t", "k", "1");
    ASSERT_TRUE(watch.UntilValue("t/k", "1"));
    /* What a writer leaves that dies right after its transaction. */
    RunSql(path, "BEGIN; INSERT INTO change (tbl, key, value) VALUES ('t', 'k', CAST('2' AS BLOB));"
                 "UPDATE item SET value = CAST('2' AS BLOB), revision = 3 WHERE tbl = 't'; COMMIT");
    EXPECT_TRUE(watch.UntilValue("t/k", "2", 5s));
}

TEST_F(ConfdbTraffic, TheSocketOfADeadSubscriberIsClearedAway) {
    const auto sockets = [&] {
        return std::distance(fs::directory_iterator(path + "-wake"), fs::directory_iterator());
    };
    Watch alive(endpoint);
    alive.HandleFor(1ms);
    Child([&] {
        Watch dead(endpoint);
        dead.HandleFor(1ms);
        kill(getpid(), SIGKILL);
    }).Wait();
    EXPECT_EQ(2, sockets());
    Store(endpoint).Put("t", "k", "1");
    EXPECT_EQ(1, sockets());
    EXPECT_TRUE(alive.UntilValue("t/k", "1"));
}

TEST_F(ConfdbTraffic, AFrozenWriterIsReportedToTheOthers) {
    if (!LongTests())
        GTEST_SKIP() << "takes ten seconds; UVEL_LONG_TESTS=1 runs it";
    Watch watch(endpoint);
    const Store store(endpoint);
    for (int attempt = 0; attempt < 50; ++attempt) {
        Child writer = Writer("frozen", 1000000);
        const std::size_t seen = watch.events.size();
        ASSERT_TRUE(watch.Until([&] { return watch.events.size() > seen; }));
        /* The wake-up comes right after a turn; freeze it a little later. */
        std::this_thread::sleep_for(attempt * 37us);
        writer.Signal(SIGSTOP);
        const bool was_refused = db_store_put(store.Get(), "t", "k", "v", 1, nullptr) != 0;
        if (!was_refused)
            continue; /* it was frozen outside its turn */
        EXPECT_NE(nullptr, std::strstr(db_last_error(), "another writer")) << db_last_error();
        writer.Kill();
        store.Put("t", "k", "v");
        return;
    }
    FAIL() << "no writer was frozen in its turn";
}

} // namespace
