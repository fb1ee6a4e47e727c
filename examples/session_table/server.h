/* A Unix socket that takes requests, one line each, and answers each with a line. */
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <string>

namespace session_table {

/* An answer to a line. One that promises something that is not so yet waits, and with it those behind it on the same
 * connection; other connections go on. */
struct Reply {
    Reply(std::string answer, uint64_t position = 0) : text(std::move(answer)), wait_for(position) {}

    std::string text;
    uint64_t wait_for; /* 0: nothing */
};

class Server {
  public:
    using Answer = std::function<Reply(const std::string &line)>;
    /* Whether an answer that waits may go; may change its text. */
    using Ready = std::function<bool(Reply *reply)>;

    /* Lines longer than `max_line` are answered with an error and skipped. */
    Server(Answer answer, Ready ready, size_t max_line)
        : answer_(std::move(answer)), ready_(std::move(ready)), max_line_(max_line) {}
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    /* Listens at `path` (mode 0600). False, with a reason, when it cannot. */
    bool Open(const std::string &path, std::string *reason);

    /* Serves until Stop; on a thread of its own. */
    void Run();

    /* Some answers may be ready now; from any thread. */
    void LookAgain();

    /* Ends Run and takes the socket's name away; from any thread. */
    void Stop();

  private:
    struct Client {
        std::string received;
        std::deque<Reply> waiting;
        std::string to_send;
        bool skipping = false; /* the rest of a line that was too long */
        bool at_end = false;   /* it sends no more, but may still read */
        bool is_gone = false;  /* nobody reads the answers; what it sent is carried out all the same */
    };

    void Accept();
    bool Serve(int descriptor, Client *client, uint32_t ready);
    bool Receive(int descriptor, Client *client);
    void AnswerLines(Client *client);
    bool Send(int descriptor, Client *client);
    void SendWhatIsReady();
    void Wake();
    void Close(std::map<int, Client>::iterator client);

    Answer answer_;
    Ready ready_;
    size_t max_line_;
    std::string path_;
    int listener_ = -1;
    int epoll_ = -1;
    int wake_ = -1;
    std::atomic<bool> stop_{false};
    std::atomic<bool> look_again_{false};
    std::map<int, Client> clients_;
};

} // namespace session_table
