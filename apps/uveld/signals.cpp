#include "signals.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "service_log.h"

namespace uveld {

namespace {

constexpr int PATIENCE_MS = 800; /* whoever asked for the end has it within a second */

int OrThrow(int descriptor, const char *what) {
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return descriptor;
}

sigset_t ServedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

void Raise(int event) {
    const uint64_t one = 1;
    (void)!write(event, &one, sizeof one);
}

} // namespace

Signals::Signals() {
    const sigset_t signals = ServedSignals();
    signals_ = OrThrow(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
    end_ = OrThrow(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd");
    reached_ = OrThrow(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd");
    thread_ = std::thread([this] { Run(); });
}

Signals::~Signals() {
    Raise(reached_);
    thread_.join();
    for (const int descriptor : {signals_, end_, reached_})
        close(descriptor);
}

void Signals::Begin(const std::string &what) {
    const std::lock_guard lock(lock_);
    what_ = what;
}

void Signals::Run() {
    using Clock = std::chrono::steady_clock;
    std::array<pollfd, 2> ready{{{reached_, POLLIN, 0}, {signals_, POLLIN, 0}}};
    Clock::time_point asked{};
    while (true) {
        int wait_ms = -1;
        if (IsToEnd()) {
            const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - asked).count();
            wait_ms = passed < PATIENCE_MS ? static_cast<int>(PATIENCE_MS - passed) : 0;
        }
        const int count = poll(ready.data(), ready.size(), wait_ms);
        if (count < 0)
            continue;
        if ((ready[0].revents & POLLIN) != 0)
            return;
        if (count == 0)
            LeaveAtOnce();
        const bool before = IsToEnd();
        Take();
        if (IsToEnd() && !before)
            asked = Clock::now();
    }
}

void Signals::Take() {
    signalfd_siginfo info;
    while (read(signals_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo == SIGHUP) {
            ReopenLog();
            LogInfo("the log was opened anew");
        } else if (!is_to_end_.exchange(true)) {
            LogInfo("ends on signal {}", info.ssi_signo);
            (void)sd_notify(0, "STOPPING=1");
            Raise(end_);
        }
    }
}

void Signals::LeaveAtOnce() {
    {
        const std::lock_guard lock(lock_);
        LogWarning("ends without waiting any longer for this: {}", what_);
    }
    _exit(EXIT_SUCCESS);
}

} // namespace uveld
