#include <uvelhost/epoll.h>

#include "os/run_delay.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <sys/epoll.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t MOST_AT_ONCE = 64;

static_assert(MESH_EPOLL_IN == EPOLLIN);

bool IsEpollSet(int descriptor) {
    epoll_event event;
    return epoll_wait(descriptor, &event, 1, 0) >= 0 || errno == EINTR;
}

/* An end or an error is found by reading, so it comes back as readable. */
uint32_t EventsOf(uint32_t found) {
    return (found & (EPOLLIN | EPOLLHUP | EPOLLERR | EPOLLRDHUP)) != 0 ? MESH_EPOLL_IN : 0;
}

/* As epoll_wait; a signal does not end the wait, nor does it make it longer. */
int WaitThroughSignals(int set, epoll_event *events, int room, int timeout_ms) {
    const auto end = Clock::now() + std::chrono::milliseconds(std::max(timeout_ms, 0));
    for (;;) {
        const int ready = epoll_wait(set, events, room, timeout_ms);
        if (ready >= 0 || errno != EINTR)
            return ready;
        if (timeout_ms > 0) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            timeout_ms = static_cast<int>(std::max<long>(left, 0));
        }
    }
}

/* The same, and a wait that was one is noted as sleep. */
int WaitOrSleep(int set, epoll_event *events, int room, int timeout_ms) {
    int ready = WaitThroughSignals(set, events, room, 0);
    if (ready == 0 && timeout_ms != 0) {
        ready = WaitThroughSignals(set, events, room, timeout_ms);
        uvel::host::NoteSlept();
    }
    return ready;
}

} // namespace

int32_t MESH_EpollCreate(void) {
    return epoll_create1(EPOLL_CLOEXEC);
}

uint32_t MESH_EpollCtl(int32_t lEpFd, uint32_t ulOperation, int32_t lFd, const MESH_EPOLL_EVENT_S *pstEvent) {
    static constexpr int OPERATIONS[] = {EPOLL_CTL_ADD, EPOLL_CTL_MOD, EPOLL_CTL_DEL};
    if (ulOperation >= std::size(OPERATIONS) || (ulOperation != MESH_EPOLL_DEL && pstEvent == nullptr))
        return EINVAL;
    epoll_event event{};
    if (ulOperation != MESH_EPOLL_DEL) {
        event.events = pstEvent->ulEvents & MESH_EPOLL_IN;
        event.data.u32 = pstEvent->ulFd;
    }
    return epoll_ctl(lEpFd, OPERATIONS[ulOperation], lFd, &event) == 0 ? UVELHOST_OK : static_cast<uint32_t>(errno);
}

int32_t MESH_EpollWait(int32_t lEpFd, MESH_EPOLL_EVENT_S *pstEvents, uint32_t ulMax, int32_t lTimeoutMs) {
    if (pstEvents == nullptr || ulMax == 0)
        return -1;
    epoll_event found[MOST_AT_ONCE];
    const int room = static_cast<int>(std::min(ulMax, MOST_AT_ONCE));
    const int ready = WaitOrSleep(lEpFd, found, room, std::max(lTimeoutMs, -1));
    for (int i = 0; i < ready; ++i) {
        pstEvents[i] = {};
        pstEvents[i].ulEvents = EventsOf(found[i].events);
        pstEvents[i].ulFd = found[i].data.u32;
    }
    return ready;
}

uint32_t MESH_Close(int32_t lEpFd) {
    return IsEpollSet(lEpFd) && close(lEpFd) == 0 ? UVELHOST_OK : 1;
}
