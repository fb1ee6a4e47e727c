/* Addresses of sockets from texts: "192.0.2.1:4711", "[2001:db8::1]:4711", "host.example:4711". */
#ifndef UVEL_HOST_STANDBY_ADDRESS_H
#define UVEL_HOST_STANDBY_ADDRESS_H

#include <cstdint>
#include <string>
#include <sys/socket.h>

namespace uvel::host::standby {

struct Address {
    sockaddr_storage storage{};
    socklen_t length = 0;

    const sockaddr *Get() const { return reinterpret_cast<const sockaddr *>(&storage); }
};

/* False, with the reason in `error`, for what is no address and a host that is not known. */
bool ParseAddress(const std::string &text, Address &address, std::string &error);

/* The address of the other end of a socket, for people. */
std::string PeerText(int socket);

/* A listening socket that does not block, or -1 with the reason. */
int Listen(const Address &address, std::string &error);
/* The port that a socket is bound to. */
uint16_t PortOf(int socket);

/* Begins to connect; -1 when that fails at once. */
int Connect(const Address &address);
/* 0 when the connection is made, otherwise the error number. */
int ConnectResult(int socket);

/* Small frames leave at once, a peer that does not answer is noticed below TCP too. */
void Tune(int socket, uint32_t timeout_ms);

} // namespace uvel::host::standby

#endif
