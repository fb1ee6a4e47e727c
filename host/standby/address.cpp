#include "standby/address.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <unistd.h>

namespace uvel::host::standby {

bool ParseAddress(const std::string &text, Address &address, std::string &error) {
    const std::size_t colon = text.rfind(':');
    std::string host = text.substr(0, colon == std::string::npos ? 0 : colon);
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (bracketed)
        host = host.substr(1, host.size() - 2);
    if (host.empty() || colon + 1 == text.size() || (!bracketed && host.find(':') != std::string::npos)) {
        error = "\"" + text + "\" is not of the form address:port or [address]:port";
        return false;
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo *found = nullptr;
    const int result = getaddrinfo(host.c_str(), text.c_str() + colon + 1, &hints, &found);
    if (result != 0) {
        error = "\"" + text + "\": " + gai_strerror(result);
        return false;
    }
    std::memcpy(&address.storage, found->ai_addr, found->ai_addrlen);
    address.length = found->ai_addrlen;
    freeaddrinfo(found);
    return true;
}

static std::string Text(const sockaddr_storage &storage, socklen_t length) {
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    if (getnameinfo(reinterpret_cast<const sockaddr *>(&storage), length, host, sizeof host, port, sizeof port,
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0)
        return "unknown address";
    return std::string(host) + " port " + port;
}

std::string PeerText(int socket) {
    sockaddr_storage storage{};
    socklen_t length = sizeof storage;
    if (getpeername(socket, reinterpret_cast<sockaddr *>(&storage), &length) != 0)
        return "unknown address";
    return Text(storage, length);
}

int Listen(const Address &address, std::string &error) {
    const int one = 1;
    const int made = socket(address.Get()->sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (made >= 0 && setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one) == 0 &&
        bind(made, address.Get(), address.length) == 0 && listen(made, 16) == 0)
        return made;
    error = "cannot listen on " + Text(address.storage, address.length) + ": " + std::strerror(errno);
    if (made >= 0)
        close(made);
    return -1;
}

uint16_t PortOf(int socket) {
    sockaddr_storage storage{};
    socklen_t length = sizeof storage;
    if (getsockname(socket, reinterpret_cast<sockaddr *>(&storage), &length) != 0)
        return 0;
    /* The port lies at the same place for both families. */
    return ntohs(reinterpret_cast<const sockaddr_in *>(&storage)->sin_port);
}

int Connect(const Address &address) {
    const int made = socket(address.Get()->sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (made >= 0 && connect(made, address.Get(), address.length) != 0 && errno != EINPROGRESS) {
        close(made);
        return -1;
    }
    return made;
}

int ConnectResult(int socket) {
    int error = 0;
    socklen_t length = sizeof error;
    return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? error : errno;
}

void Tune(int socket, uint32_t timeout_ms) {
    const int one = 1;
    (void)setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    (void)setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &timeout_ms, sizeof timeout_ms);
}

} // namespace uvel::host::standby
