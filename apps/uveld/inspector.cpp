#include "inspector.h"

#include <cerrno>
#include <cstring>
#include <inspection/json_text.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "service_log.h"

namespace uveld {

namespace {

constexpr size_t MAX_REQUEST_BYTES = 64 << 10;
constexpr int MAX_CONNECTIONS = 32;

[[noreturn]] void Fail(const std::string &what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int ListenAt(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        Fail(path);
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        Fail("socket");
    (void)unlink(path.c_str()); /* the run directory's lock tells that nobody listens there */
    const mode_t mask = umask(0177);
    const int bound = bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    umask(mask);
    if (bound != 0 || listen(descriptor, MAX_CONNECTIONS) != 0) {
        const int reason = errno;
        close(descriptor);
        errno = reason;
        Fail(path);
    }
    return descriptor;
}

} // namespace

std::string AnswerRequest(const ViewContext &context, const std::string &line) {
    std::string answer;
    try {
        const auto request = uvel::inspection::ParseRequest(line);
        const auto view = Views().find(request.view);
        if (view == Views().end())
            throw NoView("there is no view \"" + request.view + "\"");
        answer = ToJson(view->second.view(context, request.arguments));
    } catch (const uvel::inspection::NotUnderstood &error) {
        answer = uvel::inspection::ErrorToJson(std::string("not a request: ") + error.what());
    } catch (const std::exception &error) {
        answer = uvel::inspection::ErrorToJson(error.what());
    }
    return answer + "\n";
}

Inspector::Inspector(EventLoop *loop, const std::string &path, ViewContext context)
    : loop_(loop), path_(path), context_(context), listener_(ListenAt(path)) {
    loop_->Watch(listener_, EPOLLIN, [this](uint32_t) { Accept(); });
}

Inspector::~Inspector() {
    while (!connections_.empty())
        Close(connections_.begin()->first);
    loop_->Forget(listener_);
    close(listener_);
    (void)unlink(path_.c_str());
}

void Inspector::Accept() {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0)
        return;
    if (connections_.size() >= size_t{MAX_CONNECTIONS}) {
        LogWarning("an inspector was turned away: {} are connected", connections_.size());
        const std::string answer =
            "{\"error\":\"" + std::to_string(connections_.size()) + " inspectors are connected already\"}\n";
        (void)!send(descriptor, answer.data(), answer.size(), MSG_NOSIGNAL);
        close(descriptor);
        return;
    }
    connections_[descriptor];
    loop_->Watch(descriptor, EPOLLIN, [this, descriptor](uint32_t ready) { Serve(descriptor, ready); });
}

void Inspector::Serve(int descriptor, uint32_t ready) {
    Connection &connection = connections_.at(descriptor);
    if ((ready & EPOLLOUT) != 0 && !(Send(descriptor, &connection) && Answer(descriptor, &connection)))
        return Close(descriptor);
    if ((ready & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && !Receive(descriptor, &connection))
        return Close(descriptor);
}

/* False at the end of the connection, and when a line is longer than any request. */
bool Inspector::Receive(int descriptor, Connection *connection) {
    char bytes[4096];
    const ssize_t count = recv(descriptor, bytes, sizeof bytes, 0);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
        return false;
    if (count > 0)
        connection->received.append(bytes, static_cast<size_t>(count));
    if (connection->received.size() > MAX_REQUEST_BYTES && connection->received.find('\n') == std::string::npos)
        return false;
    return Answer(descriptor, connection);
}

/* One request after the other: while an answer waits to be sent none is answered nor read, so a peer that does not read
 * holds up nobody but itself, and costs one answer. */
bool Inspector::Answer(int descriptor, Connection *connection) {
    while (connection->to_send.empty()) {
        const size_t end = connection->received.find('\n');
        if (end == std::string::npos)
            break;
        connection->to_send = AnswerRequest(context_, connection->received.substr(0, end));
        connection->received.erase(0, end + 1);
        if (!Send(descriptor, connection))
            return false;
    }
    return true;
}

bool Inspector::Send(int descriptor, Connection *connection) {
    while (!connection->to_send.empty()) {
        const ssize_t count = send(descriptor, connection->to_send.data(), connection->to_send.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EAGAIN)
            break;
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            connection->to_send.erase(0, static_cast<size_t>(count));
    }
    loop_->Change(descriptor, connection->to_send.empty() ? EPOLLIN : EPOLLOUT);
    return true;
}

void Inspector::Close(int descriptor) {
    loop_->Forget(descriptor);
    connections_.erase(descriptor);
    close(descriptor);
}

} // namespace uveld
