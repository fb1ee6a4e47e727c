#include "confdb/sqlite_file.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace uvel::host::confdb {

namespace {

using namespace std::chrono_literals;

constexpr auto LONGEST_TURN = 10s;

constexpr char SCHEMA[] = R"(
    PRAGMA journal_mode = WAL;
    BEGIN;
    CREATE TABLE item (
        tbl      TEXT NOT NULL,
        key      TEXT NOT NULL,
        value    BLOB NOT NULL,
        revision INTEGER NOT NULL, -- of its latest change
        PRIMARY KEY (tbl, key)
    ) WITHOUT ROWID;
    CREATE TABLE change (
        revision INTEGER PRIMARY KEY AUTOINCREMENT,
        tbl      TEXT NOT NULL,
        key      TEXT NOT NULL,
        value    BLOB -- NULL: deleted
    );
    PRAGMA user_version = 1;
    PRAGMA application_id = 0x55764344;
    COMMIT;
)";

static_assert(FORMAT == 1 && APPLICATION_ID == 0x55764344, "as the schema says");

[[noreturn]] void Fail(const std::string &path) {
    throw StoreError(path + ": " + strerror(errno));
}

/* Removed with its owner, together with what SQLite puts beside a database. */
class TemporaryDatabase {
  public:
    explicit TemporaryDatabase(const std::string &beside) : path_(beside + ".new-XXXXXX") {
        if (!Descriptor(mkostemp(path_.data(), O_CLOEXEC)).IsOpen())
            Fail(path_);
    }
    ~TemporaryDatabase() {
        for (const char *ending : {"", "-wal", "-shm"})
            unlink((path_ + ending).c_str());
    }
    TemporaryDatabase(const TemporaryDatabase &) = delete;
    TemporaryDatabase &operator=(const TemporaryDatabase &) = delete;

    const std::string &Path() const { return path_; }

  private:
    std::string path_;
};

bool Exists(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

} // namespace

WriteLock::WriteLock(const std::string &database_path) {
    const std::string path = database_path + "-lock";
    file_ = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file_.IsOpen())
        Fail(path);
    const auto end = std::chrono::steady_clock::now() + LONGEST_TURN;
    for (auto pause = 50us; flock(file_.Get(), LOCK_EX | LOCK_NB) != 0; pause = std::min(pause * 2, 1600us)) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            Fail(path);
        if (std::chrono::steady_clock::now() >= end)
            throw StoreError(path + ": another writer has held it for ten seconds");
        std::this_thread::sleep_for(pause);
    }
}

SqliteHandle OpenSqliteFile(const std::string &path) {
    sqlite3 *opened = nullptr;
    /* SQLite gives some names a meaning of their own (":memory:"); none begins like this. */
    const std::string plain = path.starts_with('/') ? path : "./" + path;
    const int result = sqlite3_open_v2(plain.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteHandle database(opened);
    if (result != SQLITE_OK)
        throw StoreError(path + ": " + (opened == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(opened)));
    /* The log is left where it is when the last process closes: that one may have an older file open, one that was
     * replaced since, and the log of this name would then be another one's. */
    int keep_log = 1;
    sqlite3_file_control(opened, "main", SQLITE_FCNTL_PERSIST_WAL, &keep_log);
    return database;
}

void MakeSqliteFile(const std::string &path) {
    WriteLock lock(path);
    if (Exists(path))
        return;
    TemporaryDatabase fresh(path);
    {
        const SqliteHandle database = OpenSqliteFile(fresh.Path());
        Execute(database.get(), SCHEMA);
        Execute(database.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    /* A log that is left of a database that was removed must not be taken for the new one's. */
    for (const char *ending : {"-wal", "-shm"})
        unlink((path + ending).c_str());
    if (link(fresh.Path().c_str(), path.c_str()) != 0 && errno != EEXIST)
        Fail(path);
}

} // namespace uvel::host::confdb
