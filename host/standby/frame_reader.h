/* Cuts the bytes that come from the peer into frames. Nothing that the peer announces is believed beyond the limits:
 * memory stays below one buffer and one message. */
#ifndef UVEL_HOST_STANDBY_FRAME_READER_H
#define UVEL_HOST_STANDBY_FRAME_READER_H

#include "standby/smbuf.h"
#include "standby/wire.h"

namespace uvel::host::standby {

struct Frame {
    FrameHead head;
    std::span<const uint8_t> body; /* of all but DATA; until the next call */
    Smbuf message;                 /* body of DATA */
};

class FrameReader {
  public:
    enum class Result { FRAME, MORE, MALFORMED, TOO_LONG, NO_MEMORY };

    explicit FrameReader(uint32_t max_message);

    /* Forgets what has come: a new connection. */
    void Reset();

    /* Where the next bytes from the peer go; never empty while Take said MORE. */
    std::span<uint8_t> Room();
    void Filled(std::size_t bytes);

    /* The next frame. After anything but FRAME and MORE only Reset helps. */
    Result Take(Frame &frame);

  private:
    static constexpr std::size_t BUFFER = 128 * 1024;
    static constexpr std::size_t LEAST_ROOM = 32 * 1024; /* a TLS record and more */
    static constexpr uint32_t MAX_CONTROL = 16 * 1024;

    Result Check(const FrameHead &head) const;
    Result Start(const FrameHead &head, Frame &frame);

    uint32_t max_message_;
    std::unique_ptr<uint8_t[]> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    FrameHead head_;
    Smbuf message_; /* one that is being received straight into its buffer */
    std::size_t got_ = 0;
    bool after_long_ = false; /* the next one may be long too: its head is read alone, to see where the rest belongs */
};

} // namespace uvel::host::standby

#endif
