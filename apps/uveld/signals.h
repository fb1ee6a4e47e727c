/* SIGTERM, SIGINT and SIGHUP of this process, from its beginning on. */
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace uveld {

/* A thread of its own takes the signals, so that they are served whatever the main thread is held up by: a database that
 * is sought, a module that does not return. SIGHUP opens the log anew. SIGTERM and SIGINT ask for the end; a process that
 * has not come to it by itself soon afterwards is ended all the same. */
class Signals {
  public:
    /* The signals must be blocked in all threads. Throws std::system_error. */
    Signals();
    /* The end was reached. */
    ~Signals();
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    /* Can be read once the process is to end. */
    int EndDescriptor() const { return end_; }
    bool IsToEnd() const { return is_to_end_.load(); }

    /* What the main thread is at from now on, for the log if that holds it up. */
    void Begin(const std::string &what);

  private:
    void Run();
    void Take();
    [[noreturn]] void LeaveAtOnce();

    int signals_;
    int end_;
    int reached_;
    std::atomic<bool> is_to_end_{false};
    std::mutex lock_;
    std::string what_;
    std::thread thread_;
};

} // namespace uveld
