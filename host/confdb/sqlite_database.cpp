#include "confdb/sqlite_database.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "confdb/sqlite_file.h"

namespace uvel::host::confdb {

namespace {

constexpr int PATIENCE_MS = 10000;
constexpr uint64_t TRIM_EVERY = 256;

/* Everything that shall hold for one connection. A confirmed write survives a loss of power. */
constexpr char SETTINGS[] = R"(
    PRAGMA synchronous = FULL;
    PRAGMA journal_size_limit = 4194304;
)";

uint64_t ReadNumber(sqlite3 *database, const char *sql) {
    Statement statement(database, sql);
    Query query(statement);
    return query.Next() ? query.NumberAt(0) : 0;
}

std::string ReadText(sqlite3 *database, const char *sql) {
    Statement statement(database, sql);
    Query query(statement);
    return query.Next() ? query.BytesAt(0) : "";
}

void MakeFolderOf(const std::string &path) {
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    if (!folder.empty() && mkdir(folder.c_str(), S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH) != 0 &&
        errno != EEXIST)
        throw StoreError(folder + ": " + strerror(errno));
}

} // namespace

struct SqliteDatabase::Statements {
    explicit Statements(sqlite3 *database)
        : put(database, "INSERT OR REPLACE INTO item (tbl, key, value, revision) VALUES (?1, ?2, ?3, ?4)"),
          remove(database, "DELETE FROM item WHERE tbl = ?1 AND key = ?2 RETURNING revision"),
          get(database, "SELECT value, revision FROM item WHERE tbl = ?1 AND key = ?2"),
          list(database, "SELECT tbl, key, value, revision FROM item WHERE ?1 = '' OR tbl = ?1 ORDER BY tbl, key"),
          log(database, "INSERT INTO change (tbl, key, value) VALUES (?1, ?2, ?3) RETURNING revision"),
          trim(database, "DELETE FROM change WHERE revision <= ?1"),
          changes(database,
                  "SELECT tbl, key, value, revision FROM change WHERE revision > ?1 ORDER BY revision LIMIT ?2"),
          newest(database, "SELECT max(revision) FROM change") {}

    Statement put, remove, get, list, log, trim, changes, newest;
};

void SqliteDatabase::StatementsDeleter::operator()(Statements *statements) const {
    delete statements;
}

SqliteDatabase::SqliteDatabase(const SqliteEndpoint &endpoint, WhenBusy when_busy)
    : path_(endpoint.path), when_busy_(when_busy), wake_ups_(endpoint.path + "-wake") {
    if (endpoint.make_folder)
        MakeFolderOf(path_);
    Open();
}

void SqliteDatabase::Open() {
    struct stat status;
    if (stat(path_.c_str(), &status) != 0) {
        MakeSqliteFile(path_);
        if (stat(path_.c_str(), &status) != 0)
            throw StoreError(path_ + ": " + strerror(errno));
    }
    if (!S_ISREG(status.st_mode))
        throw StoreError(path_ + ": not a regular file");
    if (status.st_size == 0)
        throw StoreError(path_ + ": empty, not a configuration database (remove it to begin with a new one)");
    device_ = status.st_dev;
    inode_ = status.st_ino;
    wake_ups_.Make();
    database_ = OpenSqliteFile(path_);
    SetWhenBusy(when_busy_);
    CheckContents();
    Execute(database_.get(), SETTINGS);
    statements_.reset(new Statements(database_.get()));
}

void SqliteDatabase::SetWhenBusy(WhenBusy when_busy) {
    when_busy_ = when_busy;
    sqlite3_busy_timeout(database_.get(), when_busy == WhenBusy::WAIT ? PATIENCE_MS : 0);
}

/* A file that was cut shows it only where something is missing, so all of it is looked at. */
void SqliteDatabase::CheckContents() {
    sqlite3 *database = database_.get();
    if (ReadNumber(database, "PRAGMA application_id") != APPLICATION_ID)
        throw StoreError(path_ + ": a database of another program, not a configuration database");
    const uint64_t format = ReadNumber(database, "PRAGMA user_version");
    if (format != FORMAT)
        throw StoreError(path_ + ": has format " + std::to_string(format) + ", this program knows format " +
                         std::to_string(FORMAT));
    const std::string verdict = ReadText(database, "PRAGMA quick_check(1)");
    if (verdict != "ok")
        throw StoreError(path_ + ": damaged: " + verdict);
}

uint64_t SqliteDatabase::Log(const Name &name, const std::string_view *value) {
    uint64_t revision = 0;
    {
        Query log(statements_->log);
        log.Text(1, name.table).Text(2, name.key);
        if (value != nullptr)
            log.Blob(3, *value);
        while (log.Next())
            revision = log.NumberAt(0);
    }
    if (revision % TRIM_EVERY == 0 && revision > LOG_LENGTH) {
        Query trim(statements_->trim);
        trim.Number(1, revision - LOG_LENGTH).Next();
    }
    return revision;
}

/* What is written must not go to a file that has lost its name. */
void SqliteDatabase::FollowPath() {
    if (IsInPlace())
        return;
    statements_.reset();
    database_.reset();
    Open();
}

uint64_t SqliteDatabase::Put(const Name &name, std::string_view value) {
    FollowPath();
    uint64_t revision;
    {
        WriteLock lock(path_);
        Transaction transaction(database_.get(), "BEGIN IMMEDIATE");
        revision = Log(name, &value);
        Query(statements_->put).Text(1, name.table).Text(2, name.key).Blob(3, value).Number(4, revision).Next();
        transaction.Commit();
    }
    wake_ups_.WakeAll();
    return revision;
}

std::optional<uint64_t> SqliteDatabase::Delete(const Name &name) {
    FollowPath();
    uint64_t revision;
    {
        WriteLock lock(path_);
        Transaction transaction(database_.get(), "BEGIN IMMEDIATE");
        bool was_there = false;
        {
            Query remove(statements_->remove);
            remove.Text(1, name.table).Text(2, name.key);
            while (remove.Next())
                was_there = true;
        }
        if (!was_there)
            return std::nullopt;
        revision = Log(name, nullptr);
        transaction.Commit();
    }
    wake_ups_.WakeAll();
    return revision;
}

std::optional<Item> SqliteDatabase::Get(const Name &name) {
    FollowPath();
    Query get(statements_->get);
    get.Text(1, name.table).Text(2, name.key);
    if (!get.Next())
        return std::nullopt;
    return Item{name, get.BytesAt(0), get.NumberAt(1), false};
}

Snapshot SqliteDatabase::List(const std::string &table) {
    FollowPath();
    return ListOpened(table);
}

Snapshot SqliteDatabase::ListOpened(const std::string &table) {
    Transaction transaction(database_.get(), "BEGIN");
    Snapshot snapshot;
    {
        Query newest(statements_->newest);
        if (newest.Next())
            snapshot.revision = newest.NumberAt(0);
        Query list(statements_->list);
        list.Text(1, table);
        while (list.Next())
            snapshot.items.push_back({{list.BytesAt(0), list.BytesAt(1)}, list.BytesAt(2), list.NumberAt(3), false});
    }
    transaction.Commit();
    return snapshot;
}

std::optional<std::vector<Item>> SqliteDatabase::ChangesAfter(uint64_t revision, std::size_t limit) {
    std::vector<Item> items;
    Query changes(statements_->changes);
    changes.Number(1, revision).Number(2, limit);
    while (changes.Next())
        items.push_back(
            {{changes.BytesAt(0), changes.BytesAt(1)}, changes.BytesAt(2), changes.NumberAt(3), changes.IsNullAt(2)});
    if (items.empty()) {
        Query newest(statements_->newest);
        return newest.Next() && newest.NumberAt(0) < revision ? std::nullopt : std::optional(items);
    }
    return items.front().revision == revision + 1 ? std::optional(items) : std::nullopt;
}

bool SqliteDatabase::IsInPlace() const {
    struct stat status;
    return stat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

} // namespace uvel::host::confdb
