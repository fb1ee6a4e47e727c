/* Socket buffers as this folder sees them: one block, the data behind a head that has room for a frame's head directly
 * in front of the data, so that a message can travel out of its own buffer. */
#ifndef UVEL_HOST_STANDBY_SMBUF_H
#define UVEL_HOST_STANDBY_SMBUF_H

#include <cstdint>
#include <memory>
#include <uvelhost/standby.h>

struct YSB_SMBUF {
    uint32_t size; /* bytes of data */
    uint32_t reserved[2];
    uint8_t frame_head[20];
};
static_assert(sizeof(YSB_SMBUF) == 32, "the data is aligned like the block");

namespace uvel::host::standby {

constexpr uint32_t MESSAGE_HEADER = 48;        /* bytes that the channel above fills */
constexpr uint32_t TOTAL_LENGTH = 32;          /* where in it the payload bytes of the whole message stand */
constexpr uint32_t LARGEST_MESSAGE = 64 << 20; /* most payload bytes that a link can be configured for */
constexpr uint32_t LARGEST_SMBUF = MESSAGE_HEADER + LARGEST_MESSAGE;

inline uint8_t *DataOf(YSB_SMBUF *smbuf) {
    return reinterpret_cast<uint8_t *>(smbuf + 1);
}

struct SmbufRelease {
    void operator()(YSB_SMBUF *smbuf) const { YSB_Adapt_Smbuf_Destroy(smbuf); }
};
using Smbuf = std::unique_ptr<YSB_SMBUF, SmbufRelease>;

/* A buffer for what comes from the peer, charged to no module; null when memory is short. */
inline Smbuf MakeSmbuf(uint32_t size) {
    return Smbuf(YSB_Adapt_Smbuf_Create(0, size));
}

} // namespace uvel::host::standby

#endif
