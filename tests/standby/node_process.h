/* A standby_node as a child process. */
#ifndef UVEL_TESTS_STANDBY_NODE_PROCESS_H
#define UVEL_TESTS_STANDBY_NODE_PROCESS_H

#include <cstdint>
#include <string>
#include <sys/types.h>

class NodeProcess {
  public:
    NodeProcess(std::string folder, std::string name, std::string peer_name)
        : folder_(std::move(folder)), name_(std::move(name)), peer_name_(std::move(peer_name)) {}
    ~NodeProcess() { Kill(); }
    NodeProcess(const NodeProcess &) = delete;
    NodeProcess &operator=(const NodeProcess &) = delete;

    /* Starts it; false, with what it said in FirstLine, when it did not open its link. */
    bool Start(const std::string &listen, const std::string &peer, uint32_t mtu = 0, uint32_t timeout_ms = 600);
    void Kill();
    void Signal(int number) const;
    bool Runs() const { return pid_ > 0; }

    /* The answer to a command; empty when the process is gone or says nothing in `seconds`. */
    std::string Ask(const std::string &command, int seconds = 20);
    const std::string &FirstLine() const { return first_line_; }
    /* What it has said on standard error since it was started. */
    std::string Log() const;

    struct State {
        bool connected = false;
        bool active = false;
        unsigned backup = 0;
        unsigned port = 0;
        unsigned broken = 0;
    };
    State AskState();
    uint64_t Counter(const std::string &name);

  private:
    std::string LogFile() const { return folder_ + "/" + name_ + ".log"; }
    std::string ReadLine(int seconds);

    std::string folder_;
    std::string name_;
    std::string peer_name_;
    std::string first_line_;
    std::string unread_;
    pid_t pid_ = -1;
    int to_ = -1;
    int from_ = -1;
};

#endif
