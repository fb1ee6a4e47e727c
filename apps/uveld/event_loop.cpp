#include "event_loop.h"

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <system_error>
#include <unistd.h>

namespace uveld {

namespace {

[[noreturn]] void Fail(const char *what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

EventLoop::EventLoop() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
    if (epoll_ < 0)
        Fail("epoll_create1");
}

EventLoop::~EventLoop() {
    close(epoll_);
}

void EventLoop::Watch(int descriptor, uint32_t events, Handler handler) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    if (epoll_ctl(epoll_, EPOLL_CTL_ADD, descriptor, &event) != 0)
        Fail("epoll_ctl");
    handlers_[descriptor] = std::move(handler);
}

void EventLoop::Change(int descriptor, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    if (epoll_ctl(epoll_, EPOLL_CTL_MOD, descriptor, &event) != 0)
        Fail("epoll_ctl");
}

void EventLoop::Forget(int descriptor) {
    (void)epoll_ctl(epoll_, EPOLL_CTL_DEL, descriptor, nullptr);
    handlers_.erase(descriptor);
}

void EventLoop::Run() {
    std::array<epoll_event, 16> events;
    while (!stopped_) {
        const int count = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), -1);
        if (count < 0 && errno != EINTR)
            Fail("epoll_wait");
        for (int i = 0; i < count && !stopped_; ++i) {
            const auto found = handlers_.find(events[static_cast<size_t>(i)].data.fd);
            if (found == handlers_.end())
                continue;
            const Handler handler = found->second; /* it may forget its own descriptor */
            handler(events[static_cast<size_t>(i)].events);
        }
    }
}

} // namespace uveld
