#include "confdb/sqlite_connection.h"

#include <algorithm>
#include <sys/epoll.h>
#include <unistd.h>

namespace uvel::host::confdb {

namespace {

using namespace std::chrono_literals;

constexpr auto LOOK_EVERY = 500ms;
constexpr auto WHILE_BUSY = 10ms;
constexpr std::size_t MOST_AT_ONCE = 256;

} // namespace

SqliteConnection::SqliteConnection(const SqliteEndpoint &endpoint, const std::string &client)
    : Connection(client), endpoint_(endpoint), timer_(Events()) {
    Open(SqliteDatabase::WhenBusy::WAIT);
    database_->SetWhenBusy(SqliteDatabase::WhenBusy::THROW);
    timer_.Start(LOOK_EVERY);
}

void SqliteConnection::Open(SqliteDatabase::WhenBusy when_busy) {
    database_.emplace(endpoint_, when_busy);
    wake_up_.emplace(database_->WakeUps());
    Events().Watch(wake_up_->Get(), EPOLLIN);
}

void SqliteConnection::OnNewSubscriptions() {
    timer_.Start(0ms);
}

void SqliteConnection::OnReady(int, uint32_t) {
    if (wake_up_)
        wake_up_->TakeAll();
    timer_.Start(LOOK_EVERY);
    try {
        if (!FollowPath() || Subscriptions().empty())
            return;
        ReadTables();
        ReadChanges();
    } catch (const StoreBusy &) {
        timer_.Start(WHILE_BUSY);
    }
}

/* Another file in place of the one that was open is read whole, and so is the same one after a failure. A file that was
 * removed is waited for: whoever writes next makes a new one. */
bool SqliteConnection::FollowPath() {
    if (database_ && database_->IsInPlace())
        return true;
    wake_up_.reset();
    database_.reset();
    if (access(endpoint_.path.c_str(), F_OK) != 0) {
        ReportOutage(endpoint_.path + ": removed");
        return false;
    }
    Open(SqliteDatabase::WhenBusy::THROW);
    ReportRecovery();
    for (auto &subscription : Subscriptions())
        subscription->AskForSnapshot();
    return true;
}

void SqliteConnection::ReadTables() {
    for (auto &subscription : Subscriptions()) {
        if (subscription->NeedsSnapshot())
            subscription->Replace(database_->ListOpened(subscription->Table()));
    }
}

/* One portion of the log, from where the subscription stands that is furthest behind. */
void SqliteConnection::ReadChanges() {
    const auto &slowest = *std::min_element(Subscriptions().begin(), Subscriptions().end(),
                                            [](auto &a, auto &b) { return a->Revision() < b->Revision(); });
    const auto changes = database_->ChangesAfter(slowest->Revision(), MOST_AT_ONCE);
    if (!changes || changes->size() == MOST_AT_ONCE)
        timer_.Start(0ms);
    for (auto &subscription : Subscriptions()) {
        if (!changes) {
            subscription->AskForSnapshot();
        } else if (!changes->empty()) {
            subscription->Apply(*changes);
            subscription->PassTo(changes->back().revision);
        }
    }
}

void SqliteConnection::OnFailure() noexcept {
    wake_up_.reset();
    database_.reset();
    timer_.Start(LOOK_EVERY);
}

} // namespace uvel::host::confdb
