/* The configuration database as a SQLite file.
 *
 * A table of what is there, and a log of changes that is written in the same transaction and numbers them: a reader who
 * asks for what came after the last number that it has seen misses nothing. The log keeps the latest LOG_LENGTH changes
 * at least; a reader further behind reads everything again.
 *
 * Writers take turns by a lock of their own beside the file, because SQLite's way of waiting lets some of them starve,
 * and wake the readers when they are done. */
#ifndef UVEL_HOST_CONFDB_SQLITE_DATABASE_H
#define UVEL_HOST_CONFDB_SQLITE_DATABASE_H

#include <optional>
#include <sys/types.h>

#include "confdb/endpoint.h"
#include "confdb/sqlite_statement.h"
#include "confdb/store.h"
#include "confdb/wake_up.h"

namespace uvel::host::confdb {

class SqliteDatabase : public Store {
  public:
    static constexpr uint64_t LOG_LENGTH = 10000;

    enum class WhenBusy { WAIT, THROW };

    /* Opens the file, or makes it. Throws for a file that is something else or damaged; that is left as it is. */
    SqliteDatabase(const SqliteEndpoint &endpoint, WhenBusy when_busy);

    uint64_t Put(const Name &name, std::string_view value) override;
    std::optional<uint64_t> Delete(const Name &name) override;
    std::optional<Item> Get(const Name &name) override;
    Snapshot List(const std::string &table) override;

    /* The same of the file that is open, wherever its path leads. */
    Snapshot ListOpened(const std::string &table);

    /* At most `limit` changes that came after a revision, in their order; nothing when the log does not reach back so
     * far or the database has gone back to an older state. */
    std::optional<std::vector<Item>> ChangesAfter(uint64_t revision, std::size_t limit);

    /* Whether the path leads to the file that was opened. */
    bool IsInPlace() const;

    void SetWhenBusy(WhenBusy when_busy);
    const WakeUpFolder &WakeUps() const { return wake_ups_; }

  private:
    void Open();
    void FollowPath();
    void CheckContents();
    uint64_t Log(const Name &name, const std::string_view *value);

    std::string path_;
    WhenBusy when_busy_;
    WakeUpFolder wake_ups_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    SqliteHandle database_;

    /* after the handle: they are finalised before it is closed */
    struct Statements;
    struct StatementsDeleter {
        void operator()(Statements *statements) const;
    };
    std::unique_ptr<Statements, StatementsDeleter> statements_;
};

} // namespace uvel::host::confdb

#endif
