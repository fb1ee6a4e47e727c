#include "confdb/connection.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include "confdb/etcd_connection.h"
#include "confdb/sqlite_connection.h"
#include "crypto/report.h"

namespace uvel::host::confdb {

namespace {

constexpr int BATCH = 16;

confdb::Descriptor OpenOrThrow(int descriptor) {
    if (descriptor < 0)
        throw StoreError(strerror(errno));
    return confdb::Descriptor(descriptor);
}

/* Event and timer descriptors hold a count that one read takes. */
void TakeCount(int descriptor) {
    uint64_t count;
    [[maybe_unused]] const ssize_t size = read(descriptor, &count, sizeof count);
}

} // namespace

Poller::Poller() : set_(OpenOrThrow(epoll_create1(EPOLL_CLOEXEC))) {}

void Poller::Watch(int descriptor, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    if (epoll_ctl(set_.Get(), EPOLL_CTL_MOD, descriptor, &event) != 0 &&
        epoll_ctl(set_.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0)
        throw StoreError(strerror(errno));
}

void Poller::Forget(int descriptor) {
    epoll_ctl(set_.Get(), EPOLL_CTL_DEL, descriptor, nullptr);
}

Timer::Timer(Poller &poller) : timer_(OpenOrThrow(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))) {
    poller.Watch(timer_.Get(), EPOLLIN);
}

void Timer::Set(std::chrono::nanoseconds after) {
    itimerspec time{};
    time.it_value.tv_sec = after / std::chrono::seconds(1);
    time.it_value.tv_nsec = (after % std::chrono::seconds(1)).count();
    timerfd_settime(timer_.Get(), 0, &time, nullptr);
}

void Timer::Start(std::chrono::milliseconds after) {
    Set(std::max<std::chrono::nanoseconds>(after, std::chrono::nanoseconds(1)));
}

/* Takes its expiry back too. */
void Timer::Stop() {
    Set(std::chrono::nanoseconds(0));
}

Connection::Connection(std::string client)
    : client_(std::move(client)), news_(OpenOrThrow(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
    poller_.Watch(news_.Get(), EPOLLIN);
}

void Connection::Add(std::unique_ptr<Subscription> subscription) {
    {
        std::lock_guard lock(mutex_);
        new_.push_back(std::move(subscription));
    }
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t size = write(news_.Get(), &one, sizeof one);
}

void Connection::TakeNew() {
    {
        std::lock_guard lock(mutex_);
        subscriptions_.splice(subscriptions_.end(), new_);
    }
    OnNewSubscriptions();
}

void Connection::TakeReady() {
    epoll_event events[BATCH];
    const int ready = epoll_wait(poller_.Get(), events, BATCH, 0);
    for (int i = 0; i < ready; ++i) {
        if (events[i].data.fd == news_.Get()) {
            TakeCount(news_.Get());
            TakeNew();
        } else {
            OnReady(events[i].data.fd, events[i].events);
        }
    }
}

bool Connection::Handle() {
    if (is_busy_.test_and_set(std::memory_order_acquire))
        return false;
    try {
        TakeReady();
    } catch (const std::exception &error) {
        try {
            ReportOutage(TroubleOf(error.what()));
        } catch (const std::bad_alloc &) {
            /* Without memory to tell it, it is tried again all the same. */
        }
        OnFailure();
    }
    is_busy_.clear(std::memory_order_release);
    return true;
}

void Connection::ReportOutage(const std::string &reason) {
    const bool begins = outage_.empty();
    const bool is_news = outage_.insert(reason).second;
    {
        const std::lock_guard lock(mutex_);
        outages_ += begins ? 1 : 0;
        trouble_ = reason;
    }
    if (is_news)
        ReportText("configuration database of %s: %s", client_.c_str(), reason.c_str());
}

void Connection::ReportRecovery() {
    if (outage_.empty())
        return;
    outage_.clear();
    {
        const std::lock_guard lock(mutex_);
        trouble_.clear();
    }
    ReportText("configuration database of %s: back", client_.c_str());
}

uint32_t Connection::GetHealth(std::span<char> trouble) const {
    const std::lock_guard lock(mutex_);
    trouble[trouble_.copy(trouble.data(), trouble.size() - 1)] = '\0';
    return outages_;
}

std::unique_ptr<Connection> OpenConnection(const Endpoint &endpoint, const std::string &client) {
    if (const auto *sqlite = std::get_if<SqliteEndpoint>(&endpoint))
        return std::make_unique<SqliteConnection>(*sqlite, client);
    return std::make_unique<EtcdConnection>(std::get<EtcdEndpoint>(endpoint), client);
}

} // namespace uvel::host::confdb
