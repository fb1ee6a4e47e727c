// Files that are no configuration database, or not any more: refused with a reason and left as they are.

#include "sqlite_fixtures.h"

#include <utility>

using namespace confdb_test;

namespace {

void Ignore(void *, const DB_RECORD_S *) {}
void IgnoreDescriptor(int32_t, uint32_t) {}

class ConfdbFile : public SqliteTest {
  protected:
    /* Nobody can open the file; everybody says why, and that it is this file. */
    void ExpectRefused(const std::string &reason) {
        DB_STORE_S *store = nullptr;
        EXPECT_EQ(DB_FAILED, db_store_open(endpoint.c_str(), &store));
        EXPECT_EQ(nullptr, store);
        ExpectSaid(db_last_error(), reason);

        DB_WATCH_S *watch = nullptr;
        EXPECT_EQ(DB_FAILED, db_watch_open(endpoint.c_str(), nullptr, Ignore, nullptr, &watch));
        ExpectSaid(db_last_error(), reason);

        DB_CONN_S *connection = nullptr;
        const DB_CONN_DESC_S desc{endpoint.c_str(), "a test", {}};
        testing::internal::CaptureStderr();
        EXPECT_NE(0u, db_create_sub_connect(&desc, IgnoreDescriptor, &connection));
        const std::string said = testing::internal::GetCapturedStderr();
        if (std::exchange(told_, db_last_error()) == db_last_error())
            EXPECT_EQ("", said) << "the same reason is told once";
        else
            ExpectSaid(said, reason);
        EXPECT_EQ(nullptr, connection);
    }

    void FillStore() {
        const Store store(endpoint);
        for (int i = 0; i < 30; ++i)
            store.Put("t", "k" + std::to_string(i), std::string(1000, 'v'));
    }

  private:
    void ExpectSaid(const std::string &text, const std::string &reason) {
        EXPECT_NE(text.npos, text.find(path)) << text;
        EXPECT_NE(text.npos, text.find(reason)) << text;
    }

    std::string told_; /* the reason that was reported latest */
};

TEST_F(ConfdbFile, AFileThatIsNoDatabaseIsRefusedAndLeftAlone) {
    const std::string text(5000, 'x');
    Write(path, text);
    ExpectRefused("not a database");
    EXPECT_EQ(text, Bytes(path));
}

TEST_F(ConfdbFile, AnEmptyFileIsRefused) {
    Write(path, "");
    ExpectRefused("empty");
    EXPECT_EQ("", Bytes(path));
}

TEST_F(ConfdbFile, AFileCutAnywhereIsRefusedAndLeftAlone) {
    FillStore();
    RunSql(path, "PRAGMA wal_checkpoint(TRUNCATE)");
    const std::string whole = Bytes(path);
    ASSERT_LT(30000u, whole.size());
    for (const std::size_t size : {whole.size() / 2, whole.size() / 2 + 100, whole.size() - 4096, std::size_t{4096},
                                   std::size_t{100}, std::size_t{17}}) {
        SCOPED_TRACE(std::to_string(size) + " of " + std::to_string(whole.size()));
        const std::string half = whole.substr(0, size);
        Write(path, half);
        ExpectRefused("");
        EXPECT_EQ(half, Bytes(path)) << size;
    }
    Write(path, whole);
    EXPECT_EQ(30u, Store(endpoint).All().size());
}

TEST_F(ConfdbFile, AFileWithBytesChangedInTheMiddleIsRefused) {
    FillStore();
    RunSql(path, "PRAGMA wal_checkpoint(TRUNCATE)");
    std::string bytes = Bytes(path);
    for (std::size_t i = 4096; i < 5 * 4096; i += 4096)
        bytes.replace(i, 64, std::string(64, '\x7F'));
    Write(path, bytes);
    ExpectRefused("");
    EXPECT_EQ(bytes, Bytes(path));
}

TEST_F(ConfdbFile, ADatabaseOfAnotherProgramIsRefused) {
    RunSql(path, "CREATE TABLE item (a); INSERT INTO item VALUES (1)");
    const std::string bytes = Bytes(path);
    ExpectRefused("another program");
    EXPECT_EQ(bytes, Bytes(path));
}

TEST_F(ConfdbFile, AnUnknownFormatIsRefused) {
    FillStore();
    RunSql(path, "PRAGMA user_version = 2");
    ExpectRefused("format 2");
}

TEST_F(ConfdbFile, AFolderIsRefused) {
    fs::create_directory(path);
    ExpectRefused("not a regular file");
}

TEST_F(ConfdbFile, AFileInAFolderThatIsMissingIsRefused) {
    DB_STORE_S *store = nullptr;
    EXPECT_EQ(DB_FAILED, db_store_open(("sqlite:" + (folder / "none/db")).c_str(), &store));
    EXPECT_NE(nullptr, std::strstr(db_last_error(), "No such file")) << db_last_error();
}

TEST_F(ConfdbFile, NamesThatSqliteGivesAMeaningAreFileNames) {
    ASSERT_EQ(0, chdir((folder / "").c_str()));
    for (const std::string name : {":memory:", "file:x?mode=memory", "a b"}) {
        Store("sqlite:" + name).Put("t", "k", name);
        EXPECT_TRUE(fs::exists(folder / name)) << name;
        EXPECT_EQ(name, Store("sqlite:" + name).Value("t", "k"));
    }
}

TEST_F(ConfdbFile, AVeryLongPathIsAPathAsAnyOther) {
    std::string deep = folder / "";
    for (int i = 0; i < 4; ++i)
        deep += std::string(100, 'd') + "/";
    fs::create_directories(deep);
    const std::string far = "sqlite:" + deep + "db";
    const Store store(far);
    Watch watch(far);
    watch.HandleFor(1ms);
    store.Put("t", "k", "1");
    EXPECT_TRUE(watch.UntilValue("t/k", "1"));
}

TEST_F(ConfdbFile, ManyWhoOpenANewOneAtOnceShareIt) {
    std::vector<Child> children;
    for (int i = 0; i < 8; ++i) {
        children.emplace_back([&] {
            const Store store(endpoint);
            store.Put("t", "k" + std::to_string(i), "v");
            _exit(HasFailure() ? 1 : 0);
        });
    }
    for (Child &child : children)
        EXPECT_EQ(0, child.Wait());
    EXPECT_EQ(8u, Store(endpoint).All().size());
    std::size_t leftovers = 0;
    for (const auto &entry : fs::directory_iterator(folder / ""))
        leftovers += entry.path().string().find(".new-") != std::string::npos;
    EXPECT_EQ(0u, leftovers);
}

TEST_F(ConfdbFile, TheLogOfAFileThatWasRemovedDoesNotComeBack) {
    FillStore();
    ASSERT_TRUE(fs::exists(path + "-wal"));
    fs::remove(path);
    EXPECT_EQ(Store::Contents(), Store(endpoint).All());
}

} // namespace
