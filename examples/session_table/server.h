/* A Unix socket that takes requests, one line each, and answers each with a line. */
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>

namespace session_table {

class Server {
  public:
    using Answer = std::function<std::string(const std::string &line)>;

    /* Lines longer than `max_line` are answered with an error and skipped. */
    Server(Answer answer, size_t max_line) : answer_(std::move(answer)), max_line_(max_line) {}
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    /* Listens at `path` (mode 0600). False, with a reason, when it cannot. */
    bool Open(const std::string &path, std::string *reason);

    /* Serves until Stop; on a thread of its own. */
    void Run();

    /* Ends Run; from any thread. */
    void Stop();

  private:
    struct Client {
        std::string received;
        std::string to_send;
        bool skipping = false; /* the rest of a line that was too long */
    };

    void Accept();
    bool Serve(int descriptor, Client *client, uint32_t ready);
    bool Receive(int descriptor, Client *client);
    void AnswerLines(Client *client);
    bool Send(int descriptor, Client *client);

    Answer answer_;
    size_t max_line_;
    std::string path_;
    int listener_ = -1;
    int epoll_ = -1;
    int wake_ = -1;
    std::map<int, Client> clients_;
};

} // namespace session_table
