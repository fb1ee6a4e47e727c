/* fork() for tests of processes that have threads. */
#ifndef UVEL_TESTS_HOST_QUIET_FORK_H
#define UVEL_TESTS_HOST_QUIET_FORK_H

#include <chrono>
#include <dirent.h>
#include <fstream>
#include <string>
#include <sys/types.h>
#include <thread>
#include <unistd.h>

namespace quiet_fork {

/* True when every other thread of this process waits for something. */
inline bool OtherThreadsSleep() {
    DIR *tasks = opendir("/proc/self/task");
    if (tasks == nullptr)
        return true;
    bool sleep = true;
    while (const dirent *entry = readdir(tasks)) {
        if (entry->d_name[0] == '.' || entry->d_name == std::to_string(gettid()))
            continue;
        std::string status;
        std::getline(std::ifstream("/proc/self/task/" + std::string(entry->d_name) + "/stat"), status);
        const std::size_t name_end = status.rfind(')'); /* a name may hold anything; the state follows it */
        sleep = sleep && (name_end == std::string::npos || status.compare(name_end, 3, ") S") == 0);
    }
    closedir(tasks);
    return sleep;
}

/* Forks when the other threads sleep, or after ten seconds. The allocator of a sanitizer does not prepare for a fork:
 * when another thread holds it at that moment, the child waits for it for ever. */
inline pid_t QuietFork() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!OtherThreadsSleep() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return fork();
}

} // namespace quiet_fork

#endif
