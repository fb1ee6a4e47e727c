/* SQLite behind destructors and exceptions. */
#ifndef UVEL_HOST_CONFDB_SQLITE_STATEMENT_H
#define UVEL_HOST_CONFDB_SQLITE_STATEMENT_H

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

#include "confdb/item.h"

namespace uvel::host::confdb {

/* Somebody else is at it; the same may succeed a moment later. */
class StoreBusy : public StoreError {
    using StoreError::StoreError;
};

struct SqliteCloser {
    void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};

using SqliteHandle = std::unique_ptr<sqlite3, SqliteCloser>;

/* Throws what the database says about its latest failure. */
[[noreturn]] void ThrowSqliteError(sqlite3 *database);

/* Runs SQL whose rows do not matter. */
void Execute(sqlite3 *database, const char *sql);

/* A prepared statement, to be run any number of times: each Query lends it out for one run. */
class Statement {
  public:
    Statement(sqlite3 *database, const char *sql);

  private:
    friend class Query;
    std::unique_ptr<sqlite3_stmt, SqliteCloser> statement_;
};

class Query {
  public:
    explicit Query(Statement &statement) : statement_(statement.statement_.get()) {}
    ~Query() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;

    /* What is bound must live as long as the query. */
    Query &Text(int place, std::string_view text);
    Query &Blob(int place, std::string_view bytes);
    Query &Number(int place, uint64_t number);

    /* The next row; false when there is none. */
    bool Next();

    uint64_t NumberAt(int column) const;
    std::string BytesAt(int column) const;
    bool IsNullAt(int column) const;

  private:
    void Check(int result) const;

    sqlite3_stmt *statement_;
};

/* Rolled back unless it was committed. */
class Transaction {
  public:
    explicit Transaction(sqlite3 *database, const char *begin) : database_(database) { Execute(database, begin); }
    ~Transaction() {
        if (database_ != nullptr)
            sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void Commit() {
        Execute(database_, "COMMIT");
        database_ = nullptr;
    }

  private:
    sqlite3 *database_;
};

} // namespace uvel::host::confdb

#endif
