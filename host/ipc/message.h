/* What the host keeps with a message, in front of its body. */
#ifndef UVEL_HOST_IPC_MESSAGE_H
#define UVEL_HOST_IPC_MESSAGE_H

#include <cstdint>

namespace uvel::host {

struct alignas(16) Message {
    uint32_t length; /* bytes of the body */
    uint32_t mid;    /* module that is charged */
    uint32_t type;   /* set when it is sent */
    uint32_t src_channel;
    uint32_t dst_channel;
    uint32_t src_node;
    uint32_t dst_node;
    uint32_t reserved;

    void *Body() { return this + 1; }
};
static_assert(sizeof(Message) == 32, "the body keeps the block's alignment");

inline Message *MessageOf(void *body) {
    return static_cast<Message *>(body) - 1;
}
inline const Message *MessageOf(const void *body) {
    return static_cast<const Message *>(body) - 1;
}

/* The operations of the interface, for use inside the host: replacing those in a test leaves these alone. */
void *AllocateMessage(uint32_t mid, uint32_t length);
bool ReleaseMessage(void *body);

/* Number of this process among those of the device. */
uint32_t SelfNode();

} // namespace uvel::host

#endif
