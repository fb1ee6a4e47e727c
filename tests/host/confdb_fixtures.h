// What the tests of the configuration database share: a folder for a database, a watch that remembers, processes.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <uvelhost/confdb_writer.h>
#include <vector>

#include "quiet_fork.h"

namespace confdb_test {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

inline bool LongTests() {
    return std::getenv("UVEL_LONG_TESTS") != nullptr;
}

class TempFolder {
  public:
    TempFolder() {
        std::string name = (fs::temp_directory_path() / "confdb-XXXXXX").string();
        EXPECT_NE(nullptr, mkdtemp(name.data()));
        path_ = name;
    }
    ~TempFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    std::string operator/(const std::string &name) const { return (path_ / name).string(); }

  private:
    fs::path path_;
};

/* A child process that runs a function or a program and is killed with its owner, also when the test dies. */
class Child {
  public:
    Child() = default;
    explicit Child(const std::function<void()> &body) {
        const pid_t parent = getpid();
        pid_ = quiet_fork::QuietFork();
        if (pid_ != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            body();
        _exit(0);
    }
    ~Child() { Kill(); }
    Child(Child &&other) noexcept : pid_(std::exchange(other.pid_, -1)) {}
    Child &operator=(Child &&other) noexcept {
        std::swap(pid_, other.pid_);
        return *this;
    }

    void Signal(int number) const {
        if (pid_ > 0)
            kill(pid_, number);
    }
    void Kill() {
        Signal(SIGKILL);
        Wait();
    }
    /* The exit code, or -1 when it ended by a signal. */
    int Wait() {
        int status = 0;
        if (pid_ <= 0 || waitpid(std::exchange(pid_, -1), &status, 0) <= 0)
            return -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t pid_ = -1;
};

/* A store that fails the test when an operation does. */
class Store {
  public:
    explicit Store(const std::string &endpoint) {
        EXPECT_EQ(0u, db_store_open(endpoint.c_str(), &store_)) << db_last_error();
    }
    ~Store() { db_store_close(store_); }
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    DB_STORE_S *Get() const { return store_; }

    uint64_t Put(const std::string &table, const std::string &key, const std::string &value) const {
        uint64_t revision = 0;
        EXPECT_EQ(0u, db_store_put(store_, table.c_str(), key.c_str(), value.data(),
                                   static_cast<uint32_t>(value.size()), &revision))
            << db_last_error();
        return revision;
    }
    uint64_t Delete(const std::string &table, const std::string &key) const {
        uint64_t revision = 0;
        EXPECT_EQ(0u, db_store_delete(store_, table.c_str(), key.c_str(), &revision)) << db_last_error();
        return revision;
    }
    std::string Value(const std::string &table, const std::string &key) const {
        std::string value(DB_VALUE_SIZE, '\0');
        uint32_t length = DB_VALUE_SIZE;
        const uint32_t result = db_store_get(store_, table.c_str(), key.c_str(), value.data(), &length);
        if (result == DB_NOT_FOUND)
            return "(none)";
        EXPECT_EQ(0u, result) << db_last_error();
        value.resize(result == 0 ? length : 0);
        return value;
    }

    using Contents = std::map<std::string, std::string>;
    Contents All(const char *table = nullptr) const {
        Contents contents;
        EXPECT_EQ(
            0u, db_store_list(
                    store_, table,
                    [](void *context, const DB_RECORD_S *record) {
                        const auto *bytes = static_cast<const char *>(record->stKv.pValue);
                        (*static_cast<Contents *>(context))[std::string(record->pszTable) + "/" + record->stKv.pszKey] =
                            std::string(bytes, bytes + record->stKv.ulValueLength);
                    },
                    &contents))
            << db_last_error();
        return contents;
    }

  private:
    DB_STORE_S *store_ = nullptr;
};

/* A watch and all it was told. */
class Watch {
  public:
    explicit Watch(const std::string &endpoint, const char *table = nullptr) {
        EXPECT_EQ(0u, db_watch_open(endpoint.c_str(), table, &Watch::OnRecord, this, &watch_)) << db_last_error();
    }
    ~Watch() { db_watch_close(watch_); }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    struct Event {
        std::string name; /* TABLE/KEY */
        std::string value;
        uint32_t change;
        uint64_t revision;
    };
    std::vector<Event> events;
    std::map<std::string, std::string> state;

    /* Handles what arrives until the condition holds; false when that takes too long. */
    bool Until(const std::function<bool()> &condition, std::chrono::milliseconds limit = 15s) {
        const auto end = Clock::now() + limit;
        while (!condition()) {
            pollfd ready{db_watch_descriptor(watch_), POLLIN, 0};
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
            if (left <= 0ms || poll(&ready, 1, static_cast<int>(left.count())) <= 0)
                return condition();
            EXPECT_EQ(0u, db_watch_handle(watch_));
        }
        return true;
    }
    bool UntilValue(const std::string &name, const std::string &value, std::chrono::milliseconds limit = 15s) {
        return Until([&] { return state.contains(name) && state.at(name) == value; }, limit);
    }
    bool UntilGone(const std::string &name) {
        return Until([&] { return !state.contains(name); });
    }
    void HandleFor(std::chrono::milliseconds time) {
        Until([] { return false; }, time);
    }

  private:
    static void OnRecord(void *context, const DB_RECORD_S *record) {
        auto &self = *static_cast<Watch *>(context);
        const auto *bytes = static_cast<const char *>(record->stKv.pValue);
        Event event{std::string(record->pszTable) + "/" + record->stKv.pszKey,
                    std::string(bytes, bytes + record->stKv.ulValueLength), record->stKv.ulChange, record->ullRevision};
        if (event.change == DB_CHANGE_DELETED)
            self.state.erase(event.name);
        else
            self.state[event.name] = event.value;
        self.events.push_back(std::move(event));
    }

    DB_WATCH_S *watch_ = nullptr;
};

} // namespace confdb_test
