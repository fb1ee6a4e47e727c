/* A child process that talks to its parent through one pipe each way. */
#ifndef UVEL_BENCH_STANDBY_CHILD_H
#define UVEL_BENCH_STANDBY_CHILD_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace standby_bench {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

inline double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

[[noreturn]] inline void Fail(const char *what) {
    std::fprintf(stderr, "standby_bench: %s\n", what);
    std::exit(1);
}

struct Child {
    pid_t pid = -1;
    int to = -1;
    int from = -1;

    template <typename T>
    T Get() const {
        T value;
        if (read(from, &value, sizeof value) != sizeof value)
            Fail("the other process ended early");
        return value;
    }
    void End() {
        close(to);
        close(from);
        int status = 0;
        waitpid(pid, &status, 0);
        if (status != 0)
            Fail("the other process failed");
    }
};

template <typename T>
void Tell(int descriptor, const T &value) {
    if (write(descriptor, &value, sizeof value) != sizeof value)
        std::_Exit(1);
}

inline Child Start(const std::function<void(int from, int to)> &body) {
    int to[2];
    int from[2];
    if (pipe(to) != 0 || pipe(from) != 0)
        Fail("no pipe");
    Child child;
    child.pid = fork();
    if (child.pid == 0) {
        close(to[1]);
        close(from[0]);
        body(to[0], from[1]);
        std::_Exit(0);
    }
    close(to[0]);
    close(from[1]);
    child.to = to[1];
    child.from = from[0];
    return child;
}

} // namespace standby_bench

#endif
