/* Subscriptions to a SQLite file. */
#ifndef UVEL_HOST_CONFDB_SQLITE_CONNECTION_H
#define UVEL_HOST_CONFDB_SQLITE_CONNECTION_H

#include <optional>

#include "confdb/connection.h"
#include "confdb/sqlite_database.h"

namespace uvel::host::confdb {

/* Reads the log of changes when a writer wakes it, and on a timer in case a writer died before it could. */
class SqliteConnection : public Connection {
  public:
    SqliteConnection(const SqliteEndpoint &endpoint, const std::string &client);

  private:
    void OnNewSubscriptions() override;
    void OnReady(int descriptor, uint32_t events) override;
    void OnFailure() noexcept override;

    void Open(SqliteDatabase::WhenBusy when_busy);
    bool FollowPath();
    void ReadTables();
    void ReadChanges();

    SqliteEndpoint endpoint_;
    Timer timer_;
    std::optional<SqliteDatabase> database_; /* none while the file cannot be used */
    std::optional<WakeUpSocket> wake_up_;
};

} // namespace uvel::host::confdb

#endif
