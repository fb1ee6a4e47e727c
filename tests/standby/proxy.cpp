#include "proxy.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

static sockaddr_in Loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

Proxy::Proxy() : wake_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in address = Loopback(0);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr *>(&address), length) != 0 || listen(listener_, 16) != 0)
        std::abort();
    getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &length);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Run(); });
}

Proxy::~Proxy() {
    stop_ = true;
    Cut(false);
    thread_.join();
    for (Line &line : lines_)
        Close(line, false);
    close(listener_);
    close(wake_);
}

void Proxy::Cut(bool reset) {
    cut_ = reset ? 2 : 1;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t ignored = write(wake_, &one, sizeof one);
}

void Proxy::CutAfter(uint64_t from_client, uint64_t from_server) {
    limit_client_ = from_client;
    limit_server_ = from_server;
}

void Proxy::Close(Line &line, bool reset) {
    const linger hard{1, 0};
    for (const int socket : {line.client, line.server}) {
        if (reset)
            (void)setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        close(socket);
    }
    line.dead = true;
}

void Proxy::Accept() {
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0)
        return;
    ++connections_;
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(target_);
    if (connect(server, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        close(server);
        close(client);
        return;
    }
    lines_.push_back({client, server});
}

/* Sockets block: what was read is written before anything else is read. A receiver that has stopped reading would hold
 * up the proxy, so that a send gives up after a while and the connection with it. */
void Proxy::Carry(Line &line, int from, int to, uint64_t &count, uint64_t limit) {
    char bytes[64 * 1024];
    const uint64_t left = limit == UINT64_MAX ? sizeof bytes : std::min<uint64_t>(sizeof bytes, limit - count);
    const ssize_t got = recv(from, bytes, left, MSG_DONTWAIT);
    if (got < 0 && errno == EAGAIN)
        return;
    if (got <= 0) {
        Close(line, got < 0);
        return;
    }
    const timeval patience{2, 0};
    (void)setsockopt(to, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    for (ssize_t at = 0; at < got;) {
        const ssize_t sent = send(to, bytes + at, static_cast<std::size_t>(got - at), MSG_NOSIGNAL);
        if (sent <= 0) {
            Close(line, true);
            return;
        }
        at += sent;
    }
    count += static_cast<uint64_t>(got);
    if (count >= limit)
        Close(line, false);
}

void Proxy::Run() {
    while (!stop_) {
        std::vector<pollfd> polled = {{wake_, POLLIN, 0}, {listener_, POLLIN, 0}};
        const bool stalled_client = stalled_client_;
        const bool stalled_server = stalled_server_;
        for (const Line &line : lines_) {
            polled.push_back({stalled_client ? -1 : line.client, POLLIN, 0});
            polled.push_back({stalled_server ? -1 : line.server, POLLIN, 0});
        }
        (void)poll(polled.data(), polled.size(), 20);
        uint64_t ignored;
        if (polled[0].revents != 0 && read(wake_, &ignored, sizeof ignored) < 0)
            return;
        const int cut = cut_.exchange(0);
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            Line &line = lines_[i];
            if (cut != 0)
                Close(line, cut == 2);
            if (!line.dead && polled[2 + 2 * i].revents != 0)
                Carry(line, line.client, line.server, line.from_client, limit_client_);
            if (!line.dead && polled[3 + 2 * i].revents != 0)
                Carry(line, line.server, line.client, line.from_server, limit_server_);
        }
        std::erase_if(lines_, [](const Line &line) { return line.dead; });
        if (polled[1].revents != 0 && !(stalled_client && stalled_server))
            Accept();
    }
}
