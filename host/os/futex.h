/* Waiting for a 32-bit word to change. */
#ifndef UVEL_HOST_OS_FUTEX_H
#define UVEL_HOST_OS_FUTEX_H

#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <uvelhost/types.h>

namespace uvel::host {

/* End of a waiting operation on the monotonic clock. */
class Deadline {
  public:
    explicit Deadline(uint32_t timeout_ms) : forever_(timeout_ms == UVELHOST_WAIT_FOREVER) {
        if (forever_)
            return;
        clock_gettime(CLOCK_MONOTONIC, &at_);
        at_.tv_sec += timeout_ms / 1000;
        at_.tv_nsec += timeout_ms % 1000 * 1000000L;
        if (at_.tv_nsec >= 1000000000L) {
            at_.tv_nsec -= 1000000000L;
            ++at_.tv_sec;
        }
    }

    const timespec *At() const { return forever_ ? nullptr : &at_; }

    bool Passed() const {
        if (forever_)
            return false;
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec != at_.tv_sec ? now.tv_sec > at_.tv_sec : now.tv_nsec >= at_.tv_nsec;
    }

  private:
    timespec at_ = {};
    bool forever_;
};

static_assert(sizeof(time_t) == sizeof(long), "the system call below takes the kernel's own timespec");

/* Sleeps while the 32-bit word is `expected`, at most to the deadline. Returns for other reasons too; callers look
 * again. False when it did not sleep because the word had changed. */
inline bool FutexWait(const void *word, uint32_t expected, const Deadline &deadline) {
    long result =
        syscall(SYS_futex, word, FUTEX_WAIT_BITSET_PRIVATE, expected, deadline.At(), nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != EAGAIN;
}

inline void FutexWakeAll(const void *word) {
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

} // namespace uvel::host

#endif
