#include "server.h"

#include <cerrno>
#include <cstring>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace session_table {

namespace {

constexpr size_t MAX_CLIENTS = 64;
constexpr size_t MAX_UNSENT_BYTES = 1 << 20;

void Watch(int epoll, int operation, int descriptor, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    (void)epoll_ctl(epoll, operation, descriptor, &event);
}

} // namespace

Server::~Server() {
    for (const auto &[descriptor, client] : clients_)
        close(descriptor);
    for (const int descriptor : {listener_, epoll_, wake_}) {
        if (descriptor >= 0)
            close(descriptor);
    }
    if (listener_ >= 0)
        (void)unlink(path_.c_str());
}

bool Server::Open(const std::string &path, std::string *reason) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        *reason = path + " is too long for a socket";
        return false;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    path_ = path;
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    (void)unlink(path.c_str());
    if (epoll_ < 0 || wake_ < 0 || listener_ < 0 ||
        bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        chmod(path.c_str(), 0600) != 0 || listen(listener_, 16) != 0) {
        *reason = path + ": " + std::strerror(errno);
        return false;
    }
    Watch(epoll_, EPOLL_CTL_ADD, listener_, EPOLLIN);
    Watch(epoll_, EPOLL_CTL_ADD, wake_, EPOLLIN);
    return true;
}

void Server::Stop() {
    const uint64_t one = 1;
    (void)!write(wake_, &one, sizeof one);
}

void Server::Run() {
    while (true) {
        epoll_event events[16];
        const int count = epoll_wait(epoll_, events, 16, -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[i].data.fd;
            if (descriptor == wake_)
                return;
            if (descriptor == listener_) {
                Accept();
            } else if (const auto client = clients_.find(descriptor);
                       client != clients_.end() && !Serve(descriptor, &client->second, events[i].events)) {
                clients_.erase(client);
                close(descriptor);
            }
        }
    }
}

void Server::Accept() {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0)
        return;
    if (clients_.size() >= MAX_CLIENTS) {
        close(descriptor);
        return;
    }
    clients_[descriptor];
    Watch(epoll_, EPOLL_CTL_ADD, descriptor, EPOLLIN);
}

/* False when the client is gone. */
bool Server::Serve(int descriptor, Client *client, uint32_t ready) {
    if ((ready & EPOLLOUT) != 0 && !Send(descriptor, client))
        return false;
    return (ready & (EPOLLIN | EPOLLHUP | EPOLLERR)) == 0 || Receive(descriptor, client);
}

bool Server::Receive(int descriptor, Client *client) {
    char bytes[16384];
    const ssize_t count = recv(descriptor, bytes, sizeof bytes, 0);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR;
    client->received.append(bytes, static_cast<size_t>(count));
    AnswerLines(client);
    if (count == 0) {
        if (!client->received.empty()) /* a line that was cut off is not carried out */
            client->to_send += "error the line has no end\n";
        (void)Send(descriptor, client);
        return false;
    }
    return Send(descriptor, client);
}

void Server::AnswerLines(Client *client) {
    size_t begin = 0;
    for (size_t end = client->received.find('\n'); end != std::string::npos;
         begin = end + 1, end = client->received.find('\n', begin)) {
        if (client->skipping)
            client->skipping = false;
        else if (end - begin > max_line_)
            client->to_send += "error the line is too long\n";
        else
            client->to_send += answer_(client->received.substr(begin, end - begin)) + "\n";
    }
    client->received.erase(0, begin);
    if (client->received.size() > max_line_) {
        if (!client->skipping)
            client->to_send += "error the line is too long\n";
        client->skipping = true;
        client->received.clear();
    }
}

/* Sends what the socket takes. A client that does not read its answers is not read from either until it does. */
bool Server::Send(int descriptor, Client *client) {
    size_t sent = 0;
    while (sent < client->to_send.size()) {
        const ssize_t count =
            send(descriptor, client->to_send.data() + sent, client->to_send.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno != EAGAIN)
            return false;
        if (count < 0)
            break;
        sent += static_cast<size_t>(count);
    }
    client->to_send.erase(0, sent);
    const bool is_full = client->to_send.size() > MAX_UNSENT_BYTES;
    const uint32_t output = client->to_send.empty() ? 0U : uint32_t{EPOLLOUT};
    Watch(epoll_, EPOLL_CTL_MOD, descriptor, output | (is_full ? 0U : uint32_t{EPOLLIN}));
    return true;
}

} // namespace session_table
