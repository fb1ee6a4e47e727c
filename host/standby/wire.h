/* What travels on the link, inside TLS: frames of a fixed head and a body, little endian.
 *
 *   offset  bytes
 *        0      4   bytes of the body
 *        4      1   type
 *        5      1   processor of the receiver (DATA), otherwise 0
 *        6      2   0
 *        8      4   module id (DATA), number of the batch (BATCH_*), otherwise 0
 *       12      8   number
 *
 * DATA, BATCH_BEGIN and BATCH_END are numbered without gaps from 1 within a stream. A stream is one direction of the
 * link between two processes; it outlives connections and has a random name. Each connection begins with HELLO from
 * both sides, in which each says what it has received of the other's stream, and STREAM, in which each says which
 * stream follows and from which number on. */
#ifndef UVEL_HOST_STANDBY_WIRE_H
#define UVEL_HOST_STANDBY_WIRE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace uvel::host::standby {

constexpr uint16_t PROTOCOL_VERSION = 1;

enum class FrameType : uint8_t {
    HELLO = 1,
    REFUSE = 2, /* number: a Refusal; nothing follows */
    STREAM = 3, /* number: the first that follows; body: the stream's name, 8 bytes */
    DATA = 4,
    BATCH_BEGIN = 5,
    BATCH_END = 6,
    ACK = 7,       /* number: the last that was taken */
    HEARTBEAT = 8, /* likewise */
    ROLE = 9,      /* body: RoleInfo */
    VERSIONS = 10, /* body: ModuleVersion, one behind the other */
};

/* Why a peer is turned away. The numbers travel and count. */
enum class Refusal : uint32_t {
    NONE = 0,
    NO_CERTIFICATE = 1,
    AUTHORITY = 2, /* the certificate is not of the pinned authority, or not valid now */
    NAME = 3,
    TLS_VERSION = 4,
    LINK_VERSION = 5,
    ROLE = 6, /* both devices are configured to be the active one */
    TLS_OTHER = 7,
    TIMEOUT = 8, /* did not come to the end of its introduction in time */
};
constexpr uint32_t REFUSALS = 9;

struct FrameHead {
    uint32_t length = 0;
    FrameType type = FrameType::HEARTBEAT;
    uint8_t cpu = 0;
    uint32_t module = 0;
    uint64_t number = 0;
};
constexpr std::size_t FRAME_HEAD = 20;

template <typename T>
inline void Put(uint8_t *at, T value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
        at[i] = static_cast<uint8_t>(value >> (8 * i));
}

template <typename T>
inline T Get(const uint8_t *at) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
        value = static_cast<T>(value | static_cast<T>(static_cast<T>(at[i]) << (8 * i)));
    return value;
}

inline void PutHead(uint8_t *at, const FrameHead &head) {
    Put(at, head.length);
    at[4] = static_cast<uint8_t>(head.type);
    at[5] = head.cpu;
    Put(at + 6, uint16_t{0});
    Put(at + 8, head.module);
    Put(at + 12, head.number);
}

inline FrameHead GetHead(const uint8_t *at) {
    return {Get<uint32_t>(at), static_cast<FrameType>(at[4]), at[5], Get<uint32_t>(at + 8), Get<uint64_t>(at + 12)};
}

/* What a device tells the other about its role. */
struct RoleInfo {
    uint8_t configured = 0; /* YSB_LINK_ROLE_* */
    uint8_t active = 0;     /* 1: it is the active one now */
    uint32_t term = 0;      /* grows whenever a device takes over */
    uint32_t priority = 0;
};
constexpr std::size_t ROLE_BYTES = 10;

struct ModuleVersion {
    uint32_t module = 0;
    uint32_t version = 0;
    uint8_t compatible = 0; /* 1: understands every lower version too */
};
constexpr std::size_t VERSION_BYTES = 9;

struct Hello {
    uint16_t version = PROTOCOL_VERSION;
    uint64_t stream = 0;      /* of the receiver's streams the one that the sender knows; 0 for none */
    uint64_t received = 0;    /* the last number that it took of it */
    uint32_t max_message = 0; /* most payload bytes that it takes */
    uint32_t cpus = 1;
    RoleInfo role;
    std::vector<ModuleVersion> modules;
};

/* Appends a whole frame to `out`. */
void AppendFrame(std::vector<uint8_t> &out, FrameHead head, std::span<const uint8_t> body = {});

std::vector<uint8_t> EncodeHello(const Hello &hello);
std::vector<uint8_t> EncodeRole(const RoleInfo &role);
std::vector<uint8_t> EncodeVersions(const std::vector<ModuleVersion> &modules);

/* False for a body that is none. Of a HELLO of another protocol version only the version is read. */
bool DecodeHello(std::span<const uint8_t> body, Hello &hello);
bool DecodeRole(std::span<const uint8_t> body, RoleInfo &role);
bool DecodeVersions(std::span<const uint8_t> body, std::vector<ModuleVersion> &modules);

} // namespace uvel::host::standby

#endif
