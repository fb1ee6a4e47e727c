/* A device for the tests of messages between processes: a folder of its own, and further processes on demand. */
#ifndef UVEL_TESTS_HOST_IPC_FIXTURES_H
#define UVEL_TESTS_HOST_IPC_FIXTURES_H

#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <uvelhost/component.h>
#include <uvelhost/ipc.h>
#include <vector>

#include "memory_account.h"
#include "quiet_fork.h"

constexpr uint32_t MID = 0x00420000;

class Device : public testing::Test {
  protected:
    Device() {
        char path[] = "/tmp/uvelhost-test-XXXXXX";
        folder = mkdtemp(path);
        setenv("UVELHOST_RUN_DIR", folder.c_str(), 1);
    }

    ~Device() override { std::filesystem::remove_all(folder); }

    std::string folder;
};

/* A further process. It says a word when it is ready and ends when the test lets go of it. */
class Process {
  public:
    explicit Process(const std::function<bool()> &start) {
        int up[2];
        int down[2];
        if (pipe(up) != 0 || pipe(down) != 0)
            std::abort();
        std::fflush(nullptr);
        pid_ = quiet_fork::QuietFork();
        if (pid_ == 0) {
            close(up[0]);
            close(down[1]);
            for (const int hold : Holds()) /* or its elder brothers would not learn that they shall end */
                close(hold);
            char word = start() ? 'y' : 'n';
            if (write(up[1], &word, 1) != 1 || read(down[0], &word, 1) != 0)
                _exit(2);
            exit(testing::Test::HasFailure() ? 1 : 0);
        }
        close(up[1]);
        close(down[0]);
        hold_ = down[1];
        Holds().push_back(hold_);
        char word = 'n';
        EXPECT_EQ(1, read(up[0], &word, 1));
        EXPECT_EQ('y', word) << "the process could not start";
        close(up[0]);
    }

    ~Process() { End(); }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    uint32_t Node() const { return static_cast<uint32_t>(pid_); }

    /* Ends by itself, as a process should. */
    void End() {
        if (hold_ < 0)
            return;
        LetGo();
        int status = -1;
        waitpid(pid_, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    }

    void Kill() {
        kill(pid_, SIGKILL);
        LetGo();
        waitpid(pid_, nullptr, 0);
    }

  private:
    static std::vector<int> &Holds() {
        static std::vector<int> holds;
        return holds;
    }

    void LetGo() {
        close(hold_);
        std::erase(Holds(), hold_);
        hold_ = -1;
    }

    pid_t pid_ = -1;
    int hold_ = -1;
};

/* The other end of a connection, which sends what it likes. */
class RawPeer {
  public:
    RawPeer() : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {}
    ~RawPeer() { close(socket_); }
    RawPeer(const RawPeer &) = delete;
    RawPeer &operator=(const RawPeer &) = delete;

    bool Connect(const std::string &folder, uint32_t node = IPC_GetSelfNodeId()) const {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        (folder + "/" + std::to_string(node) + ".sock").copy(address.sun_path, sizeof address.sun_path - 1);
        return connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }

    /* Kind, number, mid, result, type, source, destination, has body, total, offset and the body's bytes. */
    bool Send(const std::vector<uint32_t> &words) const {
        const std::size_t size = words.size() * sizeof words[0];
        return send(socket_, words.data(), size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }

    /* Waits for the end of the connection. */
    bool IsLetGo() const {
        char byte;
        return recv(socket_, &byte, 1, 0) <= 0;
    }

  private:
    const int socket_;
};

/* What arrived on a channel of this process. */
struct Mail {
    uint32_t type;
    uint32_t source;
    uint32_t channel;
    std::string text;
};

class Mailbox {
  public:
    static void Receive(uint32_t type, uint32_t source, uint32_t channel, void *message, uint32_t length) {
        Mail mail = {type, source, channel, std::string(static_cast<const char *>(message), length)};
        IPC_FreeMsg(message);
        std::lock_guard lock(The().lock);
        The().mails.push_back(std::move(mail));
        The().changed.notify_all();
    }

    /* All mails as soon as there are `count`. */
    static std::vector<Mail> Wait(std::size_t count) {
        std::unique_lock lock(The().lock);
        EXPECT_TRUE(The().changed.wait_for(lock, std::chrono::seconds(20), [&] { return The().mails.size() >= count; }))
            << The().mails.size() << " of " << count;
        return The().mails;
    }

  private:
    struct State {
        std::mutex lock;
        std::condition_variable changed;
        std::vector<Mail> mails;
    };

    static State &The() {
        static State &state = *new State; /* not destroyed: mail may come while the process ends */
        return state;
    }
};

inline void *MessageWith(const std::string &text, uint32_t node, uint32_t channel) {
    void *message = IPC_AllocMsg_X(MID, static_cast<uint32_t>(text.size()));
    std::memcpy(message, text.data(), text.size());
    IPC_SetSrcAndDstChannelId(message, 5, channel);
    IPC_SetSrcAndDstNodeId(message, IPC_GetSelfNodeId(), node);
    return message;
}

/* Sends, and frees what was refused. */
inline uint32_t Send(const std::string &text, uint32_t node, uint32_t channel, uint32_t type = 9) {
    void *message = MessageWith(text, node, channel);
    const uint32_t result = IPC_Send(type, message);
    if (result != 0)
        IPC_FreeMsg(message);
    return result;
}

#endif
