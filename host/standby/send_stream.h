/* The outgoing stream: numbered frames, kept until the peer has acknowledged them.
 *
 * Frames lie one behind the other in chunks, just as they travel: whoever sends takes long runs of bytes, and sending
 * again is a matter of going back. A frame never lies in two chunks. Not locked: the owner does. */
#ifndef UVEL_HOST_STANDBY_SEND_STREAM_H
#define UVEL_HOST_STANDBY_SEND_STREAM_H

#include "standby/smbuf.h"
#include "standby/wire.h"

#include <deque>
#include <memory>

namespace uvel::host::standby {

class SendStream {
  public:
    explicit SendStream(std::size_t window) : window_(window) { spare_.reserve(window / CHUNK); }

    /* Forgets everything and begins a stream of this name; 0 closes. */
    void Restart(uint64_t name);
    uint64_t Name() const { return name_; }
    bool IsOpen() const { return name_ != 0; }

    /* Whether there is room for `bytes` more: within the window, and for a long message as soon as half of that is free,
     * so that small ones cannot keep it out for ever. */
    bool Fits(std::size_t bytes) const {
        return bytes <= window_ / 2 ? held_ + bytes <= window_ : held_ <= window_ / 2;
    }

    /* Appends a frame of a message that is kept in its own buffer: worth it for long ones. Throws when memory is
     * short; nothing is appended then. */
    void Append(FrameHead head, Smbuf message);

    /* Makes room for frames of `bytes` together: all of a message or nothing. Throws when memory is short. Does not look
     * at the window. */
    void Prepare(std::size_t bytes);

    /* Appends a frame with the next number, which is written into its head, into the room that Prepare made. Returns
     * where its body goes. */
    uint8_t *Append(FrameHead head);

    /* The next bytes to send: whole frames, and none when all were sent. They stay where they are, whatever is appended,
     * until they are acknowledged. */
    std::span<const uint8_t> Unsent();
    /* What Unsent gave latest was sent. */
    void Sent();

    /* The peer has taken everything up to `number`. False when that was never sent. */
    bool Acknowledge(uint64_t number);

    /* Goes back to send again what follows `received`. False when the stream does not reach back so far, or not yet. */
    bool Resume(uint64_t received);

    uint64_t LastNumber() const { return next_ - 1; }
    uint64_t SentNumber() const { return sent_; } /* the highest that ever was sent */
    uint64_t Acknowledged() const { return acknowledged_; }
    std::size_t Held() const { return held_; }

    /* Numbers that go on growing when the stream begins anew: of the frame appended last, of the last one that the peer
     * has taken, of the last one of earlier streams. */
    uint64_t Position() const { return earlier_ + next_ - 1; }
    uint64_t TakenPosition() const { return earlier_ + acknowledged_; }
    uint64_t EarlierPosition() const { return earlier_; }

  private:
    struct Chunk {
        uint8_t *bytes = nullptr;
        std::unique_ptr<uint8_t[]> own; /* whose they are: this, */
        Smbuf message;                  /* or this */
        std::size_t size = 0;
        std::size_t used = 0;
        std::size_t sent = 0;
        uint64_t first = 0; /* number of its first frame */
        uint64_t last = 0;  /* number of its last frame */
    };
    static constexpr std::size_t CHUNK = 256 * 1024;
    static constexpr std::size_t SMALL_CHUNK = 4096; /* between messages in their own buffers */

    struct Run { /* what Unsent gave */
        std::size_t bytes = 0;
        uint64_t last = 0;
    };

    void DropFront();
    static std::size_t OffsetOf(const Chunk &chunk, uint64_t number);

    std::deque<Chunk> chunks_;
    std::size_t sending_ = 0; /* chunk that is sent from next */
    Run run_;
    std::vector<std::unique_ptr<uint8_t[]>> spare_; /* chunks to use again, no more than fill the window */
    std::size_t window_;
    std::size_t held_ = 0; /* bytes in all chunks */
    uint64_t name_ = 0;
    uint64_t earlier_ = 0; /* frames of earlier streams */
    uint64_t next_ = 1;
    uint64_t sent_ = 0;
    uint64_t acknowledged_ = 0;
};

} // namespace uvel::host::standby

#endif
