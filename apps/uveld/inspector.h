/* The socket through which uvelctl looks into a running uveld.
 *
 * A Unix stream socket of mode 0600. A request is one line, {"view": NAME, "arguments": [TEXT, ...]}; the answer is one
 * line, the view's table or {"error": TEXT}. Requests of one connection are answered in order. */
#pragma once

#include <map>
#include <string>

#include "event_loop.h"
#include "views.h"

namespace uveld {

/* Answer to one request line; never throws. */
std::string AnswerRequest(const ViewContext &context, const std::string &line);

class Inspector {
  public:
    /* Listens at `path`, in place of a socket that a dead process has left there. Throws std::system_error. */
    Inspector(EventLoop *loop, const std::string &path, ViewContext context);
    ~Inspector();
    Inspector(const Inspector &) = delete;
    Inspector &operator=(const Inspector &) = delete;

  private:
    struct Connection {
        std::string received;
        std::string to_send;
    };

    void Accept();
    void Serve(int descriptor, uint32_t ready);
    bool Receive(int descriptor, Connection *connection);
    bool Answer(int descriptor, Connection *connection);
    bool Send(int descriptor, Connection *connection);
    void Close(int descriptor);

    EventLoop *loop_;
    std::string path_;
    ViewContext context_;
    int listener_;
    std::map<int, Connection> connections_;
};

} // namespace uveld
