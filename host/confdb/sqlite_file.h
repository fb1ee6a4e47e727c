/* Making and locking the file that a SQLite database is in. */
#ifndef UVEL_HOST_CONFDB_SQLITE_FILE_H
#define UVEL_HOST_CONFDB_SQLITE_FILE_H

#include <string>

#include "confdb/descriptor.h"
#include "confdb/sqlite_statement.h"

namespace uvel::host::confdb {

/* What tells our databases from those of other programs. */
inline constexpr uint64_t APPLICATION_ID = 0x55764344;
inline constexpr uint64_t FORMAT = 1;

/* The turn of one writer; dies with its process. */
class WriteLock {
  public:
    /* Waits, at most ten seconds. Throws StoreError. */
    explicit WriteLock(const std::string &database_path);

  private:
    Descriptor file_;
};

/* Opens a database file that exists. */
SqliteHandle OpenSqliteFile(const std::string &path);

/* Makes an empty configuration database unless there is a file of that name: it appears whole or not at all. */
void MakeSqliteFile(const std::string &path);

} // namespace uvel::host::confdb

#endif
