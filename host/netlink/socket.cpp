#include "netlink/socket.h"

#include <cerrno>
#include <linux/netlink.h>
#include <poll.h>
#include <sys/socket.h>

#include "netlink/messages.h"

namespace uvel::host::netlink {

namespace {

constexpr std::size_t BUFFER_BYTES =
    128 * 1024; /* the kernel makes dumps of at most 32 KiB, single messages are smaller */
constexpr int ANSWER_MS = 2000;

} // namespace

Socket::~Socket() {
    if (socket_ != nullptr)
        mnl_socket_close(socket_);
}

bool Socket::Open(uint32_t receive_bytes) {
    socket_ = mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket_ == nullptr || mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) != 0)
        return false;
    int on = 1;
    (void)mnl_socket_setsockopt(socket_, NETLINK_GET_STRICT_CHK, &on, sizeof on);
    (void)mnl_socket_setsockopt(socket_, NETLINK_EXT_ACK, &on, sizeof on);
    if (receive_bytes != 0) {
        const int bytes = static_cast<int>(receive_bytes);
        if (setsockopt(Descriptor(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0)
            (void)setsockopt(Descriptor(), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
    buffer_.resize(BUFFER_BYTES);
    return true;
}

bool Socket::Join(unsigned group) {
    return mnl_socket_setsockopt(socket_, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) == 0;
}

int Socket::Descriptor() const {
    return mnl_socket_get_fd(socket_);
}

uint32_t Socket::Port() const {
    return mnl_socket_get_portid(socket_);
}

bool Socket::Send(const nlmsghdr *message) {
    return mnl_socket_sendto(socket_, message, message->nlmsg_len) >= 0;
}

Socket::Read Socket::Receive(std::span<const std::byte> &datagram) {
    for (;;) {
        sockaddr_nl sender = {};
        iovec part = {buffer_.data(), buffer_.size()};
        msghdr header = {};
        header.msg_name = &sender;
        header.msg_namelen = sizeof sender;
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        const ssize_t size = recvmsg(Descriptor(), &header, 0);
        if (size < 0) {
            if (errno == EINTR)
                continue;
            return errno == EAGAIN ? Read::NOTHING : errno == ENOBUFS ? Read::OVERRUN : Read::FAILED;
        }
        if (sender.nl_pid != 0)
            continue; /* another process: only the kernel is believed */
        if ((header.msg_flags & MSG_TRUNC) != 0)
            return Read::OVERRUN;
        datagram = {buffer_.data(), static_cast<std::size_t>(size)};
        return Read::DATA;
    }
}

int Ask(Socket &socket, nlmsghdr *request) {
    request->nlmsg_flags |= NLM_F_REQUEST | NLM_F_ACK;
    if (!socket.Send(request))
        return errno;
    pollfd wait = {socket.Descriptor(), POLLIN, 0};
    while (poll(&wait, 1, ANSWER_MS) > 0) {
        std::span<const std::byte> datagram;
        if (socket.Receive(datagram) != Socket::Read::DATA)
            return EIO;
        for (const nlmsghdr *message : Messages(datagram)) {
            if (message->nlmsg_type == NLMSG_ERROR && message->nlmsg_seq == request->nlmsg_seq &&
                mnl_nlmsg_get_payload_len(message) >= sizeof(nlmsgerr))
                return -static_cast<const nlmsgerr *>(mnl_nlmsg_get_payload(message))->error;
        }
    }
    return ETIMEDOUT;
}

} // namespace uvel::host::netlink
