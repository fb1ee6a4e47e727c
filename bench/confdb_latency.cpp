// confdb_latency UPDATES ENDPOINT...: how long a change of the configuration database takes to the callback of a
// subscriber in another process. bench/confdb-latency starts what it needs and runs it.
//
// The writer puts the time at which it calls into the value, one change after the other with a pause between them, so
// that none waits for the one before. Two figures come out: the call of the writer, and from its beginning to the
// callback, which therefore contains the time that makes the change durable. For comparison disk:FILE measures an append
// of 4 KiB and its way to the disk.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <uvelhost/confdb_writer.h>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr char DISK[] = "disk:";

int64_t Now() {
    return Clock::now().time_since_epoch() / 1ns;
}

[[noreturn]] void Fail() {
    std::fprintf(stderr, "%s\n", db_last_error());
    std::exit(1);
}

/* Ends with 1 when something fails; durations of its calls go through the pipe. */
void RunWriter(const char *endpoint, unsigned updates, int pipe) {
    DB_STORE_S *store = nullptr;
    if (db_store_open(endpoint, &store) != DB_OK)
        Fail();
    for (unsigned i = 0; i < updates; ++i) {
        std::this_thread::sleep_for(2ms);
        const int64_t begin = Now();
        if (db_store_put(store, "latency", "time", &begin, sizeof begin, nullptr) != DB_OK)
            Fail();
        const int64_t took = Now() - begin;
        if (write(pipe, &took, sizeof took) != sizeof took)
            std::exit(1);
    }
}

void OnRecord(void *context, const DB_RECORD_S *record) {
    int64_t begin = 0;
    if (record->stKv.ulChange == DB_CHANGE_PRESENT || record->stKv.ulValueLength != sizeof begin)
        return;
    const int64_t now = Now();
    std::memcpy(&begin, record->stKv.pValue, sizeof begin);
    static_cast<std::vector<int64_t> *>(context)->push_back(now - begin);
}

double Percentile(std::vector<int64_t> &times, unsigned percent) {
    std::sort(times.begin(), times.end());
    return static_cast<double>(times[(times.size() - 1) * percent / 100]) / 1e3;
}

/* One row of the table. */
void Measure(const char *endpoint, unsigned updates) {
    std::vector<int64_t> arrivals, calls(updates);
    DB_WATCH_S *watch = nullptr;
    if (db_watch_open(endpoint, "latency", OnRecord, &arrivals, &watch) != DB_OK)
        Fail();
    const auto handle_for = [&](std::chrono::milliseconds time) {
        pollfd ready{db_watch_descriptor(watch), POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(time.count())) > 0)
            db_watch_handle(watch);
    };
    for (const auto end = Clock::now() + 1s; Clock::now() < end;)
        handle_for(100ms);

    int ends[2];
    if (pipe(ends) != 0)
        std::exit(1);
    const pid_t writer = fork();
    if (writer == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        RunWriter(endpoint, updates, ends[1]);
        _exit(0);
    }
    for (const auto end = Clock::now() + 300s; arrivals.size() < updates && Clock::now() < end;)
        handle_for(1000ms);
    int status = 1;
    waitpid(writer, &status, 0);
    const auto bytes = static_cast<ssize_t>(calls.size() * sizeof calls[0]);
    ssize_t got = 0;
    while (got < bytes) {
        const ssize_t more =
            read(ends[0], reinterpret_cast<char *>(calls.data()) + got, static_cast<std::size_t>(bytes - got));
        if (more <= 0)
            break;
        got += more;
    }
    if (status != 0 || got != bytes || arrivals.size() != updates) {
        std::fprintf(stderr, "%s: %zu of %u changes arrived\n", endpoint, arrivals.size(), updates);
        std::exit(1);
    }
    std::printf("| %.0f µs | %.0f µs | %.0f µs | %.0f µs |\n", Percentile(calls, 50), Percentile(calls, 99),
                Percentile(arrivals, 50), Percentile(arrivals, 99));
    db_watch_close(watch);
    close(ends[0]);
    close(ends[1]);
}

/* What the disk alone takes to keep 4 KiB. */
void MeasureDisk(const char *file, unsigned updates) {
    const int descriptor = open(file, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::vector<char> block(4096, 'x');
    std::vector<int64_t> calls;
    for (unsigned i = 0; i < updates; ++i) {
        std::this_thread::sleep_for(2ms);
        const int64_t begin = Now();
        if (write(descriptor, block.data(), block.size()) < 0 || fdatasync(descriptor) != 0) {
            std::perror(file);
            std::exit(1);
        }
        calls.push_back(Now() - begin);
    }
    close(descriptor);
    std::printf("| %.0f µs | %.0f µs | | |\n", Percentile(calls, 50), Percentile(calls, 99));
}

} // namespace

int main(int argc, char **argv) {
    const unsigned updates = argc > 2 ? static_cast<unsigned>(std::atoi(argv[1])) : 0;
    if (updates == 0 || updates > 8000) { /* the pipe holds their times */
        std::fprintf(stderr, "usage: confdb_latency UPDATES ENDPOINT..., 1 to 8000 updates\n");
        return 2;
    }
    for (int i = 2; i < argc; ++i) {
        if (std::strncmp(argv[i], DISK, sizeof DISK - 1) == 0)
            MeasureDisk(argv[i] + sizeof DISK - 1, updates);
        else
            Measure(argv[i], updates);
    }
    return 0;
}
