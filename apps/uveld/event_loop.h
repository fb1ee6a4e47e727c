/* The main thread's loop: descriptors and what to do when one is ready. */
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>

namespace uveld {

class EventLoop {
  public:
    using Handler = std::function<void(uint32_t ready)>; /* EPOLLIN, EPOLLOUT, ... */

    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;

    /* Watches a descriptor for `events`; the loop does not own it. Throws std::system_error. */
    void Watch(int descriptor, uint32_t events, Handler handler);
    void Change(int descriptor, uint32_t events);
    /* Also from inside a handler, the descriptor's own included. */
    void Forget(int descriptor);

    /* Serves until Stop. */
    void Run();
    void Stop() { stopped_ = true; }

  private:
    int epoll_;
    bool stopped_ = false;
    std::unordered_map<int, Handler> handlers_;
};

} // namespace uveld
