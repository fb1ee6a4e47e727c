/* A connection between two processes of the device: parcels over a Unix socket that keeps packets apart.
 *
 * Long bodies travel in several packets, which nothing comes between. A peer whose packets do not add up loses the
 * connection. */
#ifndef UVEL_HOST_IPC_CONNECTION_H
#define UVEL_HOST_IPC_CONNECTION_H

#include "ipc/message.h"
#include <functional>
#include <mutex>
#include <string>

namespace uvel::host {

enum class ParcelKind : uint32_t { MESSAGE = 1, CALL, ANSWER };

struct Parcel {
    ParcelKind kind;
    uint32_t number; /* of a call and its answer */
    uint32_t mid;    /* module that is called */
    uint32_t result; /* of a call, in its answer */
    void *body;      /* message, owned by whoever holds the parcel; null for none */
};

class Connection {
  public:
    /* Longest body that crosses from process to process. */
    static constexpr uint32_t MAX_BODY = 16 * 1024 * 1024;

    /* Takes over an accepted or connected socket. */
    Connection(int socket, uint32_t peer) : socket_(socket), peer_(peer) {}
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /* The node that the kernel says is at the other end of a socket; 0 when it belongs to another user. */
    static uint32_t PeerOf(int socket);

    int Socket() const { return socket_; }
    uint32_t Peer() const { return peer_; }

    /* Sends a parcel; its body stays the caller's. Waits a second at most for room. */
    bool Send(const Parcel &parcel);

    /* Reads what is there, a number of packets at most; whole parcels go to `deliver`, which owns their bodies. False
     * when the connection is over. */
    bool Receive(const std::function<void(const Parcel &)> &deliver);

  private:
    struct Packet;

    bool SendPacket(Packet &packet, const void *bytes, uint32_t length);
    bool TakePacket(const Packet &packet, const void *bytes, uint32_t length,
                    const std::function<void(const Parcel &)> &deliver);

    const int socket_;
    const uint32_t peer_;
    std::mutex send_lock_;

    /* the parcel that is arriving; only the receiving thread looks here */
    bool arriving_ = false;
    uint32_t arrived_ = 0;
    uint32_t total_ = 0;
    Parcel parcel_ = {};
};

} // namespace uvel::host

#endif
