// A subscriber of a file that is trimmed, removed, replaced or damaged below it.

#include "sqlite_fixtures.h"

using namespace confdb_test;

namespace {

class ConfdbOutage : public SqliteTest {
  protected:
    /* A subscriber that knows keys "stays" and "goes" and does not look for now. */
    void SetUp() override {
        Store store(endpoint);
        store.Put("t", "stays", "1");
        store.Put("t", "goes", "1");
        watch = std::make_unique<Watch>(endpoint, "t");
        ASSERT_TRUE(watch->Until([&] { return watch->events.size() == 2; }));
        watch->events.clear();
    }

    /* What SQLite keeps beside a file belongs to that file: who replaces it by hand takes this away as well. */
    void RemoveLog() {
        for (const char *ending : {"-wal", "-shm"})
            fs::remove(path + ending);
    }

    std::unique_ptr<Watch> watch;
};

using Contents = Store::Contents;

TEST_F(ConfdbOutage, WhoIsFurtherBehindThanTheLogReachesIsToldWhatDiffers) {
    const Store store(endpoint);
    store.Delete("t", "goes");
    for (int i = 0; i < 20; ++i)
        store.Put("t", "new", std::to_string(i));
    RunSql(path, "DELETE FROM change WHERE revision < 15");
    ASSERT_TRUE(watch->UntilValue("t/new", "19"));
    EXPECT_EQ((Contents{{"t/new", "19"}, {"t/stays", "1"}}), watch->state);
    ASSERT_EQ(2u, watch->events.size());
    EXPECT_EQ("t/goes", watch->events[0].name);
    EXPECT_EQ(DB_CHANGE_DELETED, watch->events[0].change);
    EXPECT_EQ(DB_CHANGE_CREATED, watch->events[1].change);
    store.Put("t", "new", "last");
    EXPECT_TRUE(watch->UntilValue("t/new", "last"));
}

TEST_F(ConfdbOutage, TheLogIsTrimmedToItsLength) {
    RunSql(path, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 12000)"
                 "INSERT INTO change (tbl, key, value) SELECT 'x', 'y', x'00' FROM n");
    const Store store(endpoint);
    for (int i = 0; i < 256; ++i)
        store.Put("t", "stays", std::to_string(i));
    EXPECT_LE(10000, AskNumber("SELECT count(*) FROM change"));
    EXPECT_GE(10256, AskNumber("SELECT count(*) FROM change"));
    EXPECT_TRUE(watch->UntilValue("t/stays", "255"));
}

TEST_F(ConfdbOutage, AReplacedFileIsTheNewTruth) {
    const std::string other = folder / "other";
    {
        const Store store("sqlite:" + other);
        store.Put("t", "stays", "2");
        store.Put("t", "new", "1");
    }
    RunSql(other, "PRAGMA wal_checkpoint(TRUNCATE)");
    RemoveLog();
    fs::rename(other, path);
    ASSERT_TRUE(watch->UntilValue("t/new", "1"));
    EXPECT_EQ((Contents{{"t/stays", "2"}, {"t/new", "1"}}), watch->state);
    Store(endpoint).Put("t", "new", "2");
    EXPECT_TRUE(watch->UntilValue("t/new", "2"));
}

TEST_F(ConfdbOutage, ARemovedFileIsWaitedForAndEverythingIsKeptMeanwhile) {
    fs::remove(path);
    RemoveLog();
    testing::internal::CaptureStderr();
    watch->HandleFor(1200ms);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(path + ": removed"));
    EXPECT_EQ(2u, watch->state.size());
    EXPECT_FALSE(fs::exists(path)) << "a subscriber makes no new one";
    Store(endpoint).Put("t", "new", "1");
    testing::internal::CaptureStderr();
    ASSERT_TRUE(watch->UntilValue("t/new", "1"));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("back"));
    EXPECT_EQ((Contents{{"t/new", "1"}}), watch->state);
}

TEST_F(ConfdbOutage, AWriterFollowsAReplacedFile) {
    const Store store(endpoint);
    fs::remove(path);
    const uint64_t revision = store.Put("t", "new", "1");
    EXPECT_EQ(1u, revision);
    EXPECT_EQ((Contents{{"t/new", "1"}}), Store(endpoint).All());
    EXPECT_TRUE(watch->Until([&] { return watch->state == Contents{{"t/new", "1"}}; }));
}

TEST_F(ConfdbOutage, AFileCutInUseIsReportedOnceAndItsReplacementIsTaken) {
    RunSql(path, "PRAGMA wal_checkpoint(TRUNCATE)");
    const std::string whole = Bytes(path);
    fs::resize_file(path, whole.size() / 2);
    testing::internal::CaptureStderr();
    watch->HandleFor(1700ms);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.npos, said.find(path)) << said;
    EXPECT_LE(std::count(said.begin(), said.end(), '\n'), 2) << said;
    EXPECT_EQ(2u, watch->state.size());
    EXPECT_EQ(whole.substr(0, whole.size() / 2), Bytes(path));

    const std::string repaired = folder / "repaired";
    Write(repaired, whole);
    RemoveLog();
    fs::rename(repaired, path);
    Store(endpoint).Put("t", "stays", "2");
    EXPECT_TRUE(watch->UntilValue("t/stays", "2"));
    EXPECT_EQ(2u, watch->state.size());
}

} // namespace
