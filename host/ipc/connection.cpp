#include "ipc/connection.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

namespace uvel::host {

/* Stands in front of every packet. Processes of one device are of one make, so it travels as it is in memory. */
struct Connection::Packet {
    ParcelKind kind;
    uint32_t number;
    uint32_t mid;
    uint32_t result;
    uint32_t type;
    uint32_t src_channel;
    uint32_t dst_channel;
    uint32_t has_body;
    uint32_t total;  /* bytes of the whole body */
    uint32_t offset; /* of this packet's bytes in it */
};

namespace {

constexpr uint32_t MOST_BYTES = 60 * 1024; /* of a body in one packet; fits every socket's buffer */
constexpr int MOST_PACKETS = 64;           /* read in a row, for the other connections' sake */
constexpr std::chrono::milliseconds PATIENCE{1000};

/* Waits until the socket takes another packet. */
bool WaitForRoom(int socket, std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        pollfd room = {socket, POLLOUT, 0};
        const int ready = poll(&room, 1, static_cast<int>(left.count()));
        if (ready > 0)
            return (room.revents & POLLOUT) != 0;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

} // namespace

Connection::~Connection() {
    ReleaseMessage(parcel_.body);
    close(socket_);
}

uint32_t Connection::PeerOf(int socket) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0)
        return 0;
    return peer.uid == geteuid() || peer.uid == 0 ? static_cast<uint32_t>(peer.pid) : 0;
}

bool Connection::SendPacket(Packet &packet, const void *bytes, uint32_t length) {
    iovec parts[2] = {{&packet, sizeof packet}, {const_cast<void *>(bytes), length}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = length == 0 ? 1 : 2;
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    for (;;) {
        if (sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
            return true;
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN || !WaitForRoom(socket_, deadline))
            return false;
    }
}

bool Connection::Send(const Parcel &parcel) {
    Packet packet = {parcel.kind, parcel.number, parcel.mid, parcel.result, 0, 0, 0, 0, 0, 0};
    const auto *bytes = static_cast<const unsigned char *>(parcel.body);
    if (bytes != nullptr) {
        const Message *message = MessageOf(parcel.body);
        if (message->length > MAX_BODY)
            return false;
        packet.type = message->type;
        packet.src_channel = message->src_channel;
        packet.dst_channel = message->dst_channel;
        packet.has_body = 1;
        packet.total = message->length;
    }
    std::lock_guard lock(send_lock_);
    do {
        const uint32_t length = std::min(packet.total - packet.offset, MOST_BYTES);
        if (!SendPacket(packet, bytes + packet.offset, length)) {
            if (packet.offset != 0) /* the peer waits for a rest that does not come */
                shutdown(socket_, SHUT_RDWR);
            return false;
        }
        packet.offset += length;
    } while (packet.offset < packet.total);
    return true;
}

bool Connection::TakePacket(const Packet &packet, const void *bytes, uint32_t length,
                            const std::function<void(const Parcel &)> &deliver) {
    if (!arriving_) {
        if (packet.offset != 0 || packet.total > MAX_BODY || (packet.has_body == 0 && packet.total != 0))
            return false;
        parcel_ = {packet.kind, packet.number, packet.mid, packet.result, nullptr};
        arrived_ = 0;
        total_ = packet.total;
        if (packet.has_body != 0) {
            parcel_.body = AllocateMessage(packet.mid, packet.total);
            if (parcel_.body != nullptr)
                *MessageOf(parcel_.body) = {packet.total,       packet.mid, packet.type, packet.src_channel,
                                            packet.dst_channel, peer_,      SelfNode(),  0};
        }
        arriving_ = true;
    }
    if (packet.offset != arrived_ || packet.total != total_ || length > total_ - arrived_ ||
        (length == 0 && arrived_ != total_))
        return false;
    if (length != 0 && parcel_.body != nullptr) /* without memory it is taken and delivered without its body */
        std::memcpy(static_cast<unsigned char *>(parcel_.body) + arrived_, bytes, length);
    arrived_ += length;
    if (arrived_ == total_) {
        arriving_ = false;
        Parcel whole = parcel_;
        parcel_.body = nullptr;
        deliver(whole);
    }
    return true;
}

bool Connection::Receive(const std::function<void(const Parcel &)> &deliver) {
    alignas(16) unsigned char bytes[MOST_BYTES];
    for (int count = 0; count < MOST_PACKETS; ++count) {
        Packet packet;
        iovec parts[2] = {{&packet, sizeof packet}, {bytes, sizeof bytes}};
        msghdr message = {};
        message.msg_iov = parts;
        message.msg_iovlen = 2;
        const ssize_t size = recvmsg(socket_, &message, MSG_DONTWAIT);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return errno == EAGAIN;
        const auto length = static_cast<std::size_t>(size);
        if (length < sizeof packet || (message.msg_flags & MSG_TRUNC) != 0 ||
            !TakePacket(packet, bytes, static_cast<uint32_t>(length - sizeof packet), deliver))
            return false;
    }
    return true;
}

} // namespace uvel::host
