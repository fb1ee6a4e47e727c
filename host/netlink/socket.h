/* A routing socket of the kernel. */
#ifndef UVEL_HOST_NETLINK_SOCKET_H
#define UVEL_HOST_NETLINK_SOCKET_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <libmnl/libmnl.h>
#include <optional>
#include <span>
#include <vector>

namespace uvel::host::netlink {

class Socket {
  public:
    Socket() = default;
    ~Socket();
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    /* Opens it in the network namespace of the calling thread. False when the kernel refuses. */
    bool Open(uint32_t receive_bytes);

    /* False for a group that this kernel does not have. */
    bool Join(unsigned group);

    int Descriptor() const;

    /* What the kernel addresses its answers to. */
    uint32_t Port() const;

    bool Send(const nlmsghdr *message);

    enum class Read { DATA, NOTHING, OVERRUN, FAILED };

    /* One datagram of the kernel's, valid until the next call. Does not wait. */
    Read Receive(std::span<const std::byte> &datagram);

  private:
    mnl_socket *socket_ = nullptr;
    std::vector<std::byte> buffer_;
};

/* Sends a request and waits for the kernel's answer: 0 or an errno value. */
int Ask(Socket &socket, nlmsghdr *request);

} // namespace uvel::host::netlink

#endif
