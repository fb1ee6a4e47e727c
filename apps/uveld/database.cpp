#include "database.h"

#include <cerrno>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelhost/confdb.h>

#include "service_log.h"

namespace uveld {

namespace {

constexpr time_t TRY_EVERY_SECONDS = 2;

bool IsOpen() {
    DB_CONN_STATE_S state;
    return db_get_state(0, &state) == UVELHOST_OK;
}

} // namespace

Database::Database(EventLoop *loop) : loop_(loop), timer_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
    if (timer_ < 0)
        throw std::system_error(errno, std::generic_category(), "timerfd_create");
    loop_->Watch(timer_, EPOLLIN, [this](uint32_t) { TryToOpen(); });
    TryToOpen();
}

Database::~Database() {
    loop_->Forget(timer_);
    close(timer_);
}

void Database::TryToOpen() {
    if (!IsOpen())
        uVEL_Adapt_SubPubEvent();
    if (IsOpen())
        LogInfo("the configuration database is open");
    itimerspec time{};
    time.it_value.tv_sec = IsOpen() ? 0 : TRY_EVERY_SECONDS;
    timerfd_settime(timer_, 0, &time, nullptr);
}

} // namespace uveld
