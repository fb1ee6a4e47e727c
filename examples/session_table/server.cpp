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

constexpr int MAX_CLIENTS = 64;
constexpr size_t MAX_UNSENT_BYTES = 1 << 20;
constexpr size_t MAX_WAITING = 8192; /* answers of a client */

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
    const mode_t mask = umask(0177); /* nobody else may connect, not even before a chmod */
    const bool bound = epoll_ >= 0 && wake_ >= 0 && listener_ >= 0 &&
                       bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    umask(mask);
    if (!bound || listen(listener_, MAX_CLIENTS) != 0) {
        *reason = path + ": " + std::strerror(errno);
        return false;
    }
    Watch(epoll_, EPOLL_CTL_ADD, listener_, EPOLLIN);
    Watch(epoll_, EPOLL_CTL_ADD, wake_, EPOLLIN);
    return true;
}

void Server::Wake() {
    const uint64_t one = 1;
    (void)!write(wake_, &one, sizeof one);
}

void Server::Stop() {
    stop_.store(true);
    if (listener_ >= 0)
        (void)unlink(path_.c_str());
    Wake();
}

void Server::LookAgain() {
    if (!look_again_.exchange(true))
        Wake();
}

void Server::Run() {
    while (true) {
        epoll_event events[16];
        const int count = epoll_wait(epoll_, events, 16, -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[i].data.fd;
            if (stop_.load())
                return;
            if (descriptor == wake_) {
                SendWhatIsReady();
            } else if (descriptor == listener_) {
                Accept();
            } else if (const auto client = clients_.find(descriptor);
                       client != clients_.end() && !Serve(descriptor, &client->second, events[i].events)) {
                Close(client);
            }
        }
    }
}

void Server::Accept() {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0)
        return;
    if (clients_.size() >= size_t{MAX_CLIENTS}) {
        constexpr char ANSWER[] = "error too many clients are connected\n";
        (void)!send(descriptor, ANSWER, sizeof ANSWER - 1, MSG_NOSIGNAL);
        close(descriptor);
        return;
    }
    clients_[descriptor];
    Watch(epoll_, EPOLL_CTL_ADD, descriptor, EPOLLIN);
}

void Server::Close(std::map<int, Client>::iterator client) {
    close(client->first);
    clients_.erase(client);
}

/* False when the client is done with. */
bool Server::Serve(int descriptor, Client *client, uint32_t ready) {
    client->is_gone = client->is_gone || (ready & (EPOLLHUP | EPOLLERR)) != 0;
    if ((ready & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && !client->at_end && !Receive(descriptor, client))
        return false;
    return Send(descriptor, client);
}

bool Server::Receive(int descriptor, Client *client) {
    char bytes[16384];
    const ssize_t count = recv(descriptor, bytes, sizeof bytes, 0);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR;
    client->received.append(bytes, static_cast<size_t>(count));
    AnswerLines(client);
    if (count == 0) {
        client->at_end = true;
        if (!client->received.empty() && !client->skipping) /* a line that was cut off is not carried out */
            client->waiting.emplace_back("error the line has no end");
    }
    return true;
}

void Server::AnswerLines(Client *client) {
    size_t begin = 0;
    for (size_t end = client->received.find('\n'); end != std::string::npos;
         begin = end + 1, end = client->received.find('\n', begin)) {
        if (client->skipping)
            client->skipping = false;
        else if (end - begin > max_line_)
            client->waiting.emplace_back("error the line is too long");
        else
            client->waiting.push_back(answer_(client->received.substr(begin, end - begin)));
    }
    client->received.erase(0, begin);
    if (client->received.size() > max_line_) {
        if (!client->skipping)
            client->waiting.emplace_back("error the line is too long");
        client->skipping = true;
        client->received.clear();
    }
}

/* Sends what is ready and what the socket takes. A client that does not read its answers, or that asks faster than they
 * become ready, is not read from until that is over. False when it is done with. */
bool Server::Send(int descriptor, Client *client) {
    while (!client->waiting.empty() && (client->waiting.front().wait_for == 0 || ready_(&client->waiting.front()))) {
        client->to_send += client->waiting.front().text + "\n";
        client->waiting.pop_front();
    }
    if (client->is_gone) {
        client->to_send.clear();
        client->waiting.clear();
    }
    size_t sent = 0;
    while (sent < client->to_send.size()) {
        const ssize_t count =
            send(descriptor, client->to_send.data() + sent, client->to_send.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EAGAIN)
            break;
        if (count < 0 && errno != EINTR)
            client->is_gone = true;
        if (client->is_gone)
            break;
        sent += count > 0 ? static_cast<size_t>(count) : 0;
    }
    client->to_send.erase(0, client->is_gone ? client->to_send.size() : sent);
    if (client->at_end && client->waiting.empty() && client->to_send.empty())
        return false;
    const bool is_full = client->to_send.size() > MAX_UNSENT_BYTES || client->waiting.size() > MAX_WAITING;
    Watch(epoll_, EPOLL_CTL_MOD, descriptor,
          (client->to_send.empty() ? 0U : uint32_t{EPOLLOUT}) | (is_full || client->at_end ? 0U : uint32_t{EPOLLIN}));
    return true;
}

void Server::SendWhatIsReady() {
    uint64_t times;
    (void)!read(wake_, &times, sizeof times);
    look_again_.store(false);
    for (auto client = clients_.begin(); client != clients_.end();) {
        const auto next = std::next(client);
        if (!client->second.waiting.empty() && !Send(client->first, &client->second))
            Close(client);
        client = next;
    }
}

} // namespace session_table
