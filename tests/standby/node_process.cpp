#include "node_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

bool NodeProcess::Start(const std::string &listen, const std::string &peer, uint32_t mtu, uint32_t timeout_ms) {
    Kill();
    int to[2];
    int from[2];
    if (pipe2(to, O_CLOEXEC) != 0 || pipe2(from, O_CLOEXEC) != 0)
        return false;
    const std::string log = LogFile();
    const std::string mtu_text = std::to_string(mtu);
    const std::string timeout_text = std::to_string(timeout_ms);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(to[0], STDIN_FILENO);
        dup2(from[1], STDOUT_FILENO);
        dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDERR_FILENO);
        execl(STANDBY_NODE, STANDBY_NODE, folder_.c_str(), name_.c_str(), peer_name_.c_str(), listen.c_str(),
              peer.c_str(), mtu_text.c_str(), timeout_text.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    close(to[0]);
    close(from[1]);
    to_ = to[1];
    from_ = from[0];
    unread_.clear();
    first_line_ = ReadLine(20);
    return first_line_.rfind("open ", 0) == 0;
}

void NodeProcess::Kill() {
    if (pid_ <= 0)
        return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    close(to_);
    close(from_);
    pid_ = -1;
    if (std::getenv("UVEL_TEST_LOG") != nullptr)
        std::fprintf(stderr, "--- %s:\n%s", name_.c_str(), Log().c_str());
}

std::string NodeProcess::Log() const {
    std::ifstream in(LogFile());
    return {std::istreambuf_iterator<char>(in), {}};
}

void NodeProcess::Signal(int number) const {
    if (pid_ > 0)
        kill(pid_, number);
}

std::string NodeProcess::ReadLine(int seconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (;;) {
        const std::size_t end = unread_.find('\n');
        if (end != std::string::npos) {
            const std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            return line;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd polled{from_, POLLIN, 0};
        if (left.count() <= 0 || poll(&polled, 1, static_cast<int>(left.count())) <= 0)
            return "";
        char bytes[4096];
        const ssize_t got = read(from_, bytes, sizeof bytes);
        if (got <= 0)
            return "";
        unread_.append(bytes, static_cast<std::size_t>(got));
    }
}

std::string NodeProcess::Ask(const std::string &command, int seconds) {
    const std::string line = command + "\n";
    if (pid_ <= 0 || write(to_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        return "";
    return ReadLine(seconds);
}

NodeProcess::State NodeProcess::AskState() {
    State state;
    std::istringstream words(Ask("state"));
    words >> state.connected >> state.active >> state.backup >> state.port >> state.broken;
    return state;
}

uint64_t NodeProcess::Counter(const std::string &name) {
    const std::string answer = Ask("counter " + name);
    return answer.empty() || answer == "unknown" ? UINT64_MAX : std::stoull(answer);
}
