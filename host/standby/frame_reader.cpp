#include "standby/frame_reader.h"

namespace uvel::host::standby {

FrameReader::FrameReader(uint32_t max_message) : max_message_(max_message), buffer_(new uint8_t[BUFFER]) {}

void FrameReader::Reset() {
    begin_ = end_ = got_ = 0;
    after_long_ = false;
    message_.reset();
}

std::span<uint8_t> FrameReader::Room() {
    if (message_ != nullptr)
        return {DataOf(message_.get()) + got_, head_.length - got_};
    if (begin_ == end_) {
        begin_ = end_ = 0;
        if (after_long_)
            return {buffer_.get(), FRAME_HEAD};
    }
    if (BUFFER - end_ < LEAST_ROOM) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    return {buffer_.get() + end_, BUFFER - end_};
}

void FrameReader::Filled(std::size_t bytes) {
    (message_ != nullptr ? got_ : end_) += bytes;
}

FrameReader::Result FrameReader::Check(const FrameHead &head) const {
    if (head.type == FrameType::DATA) {
        if (head.length < MESSAGE_HEADER)
            return Result::MALFORMED;
        return head.length - MESSAGE_HEADER > max_message_ ? Result::TOO_LONG : Result::FRAME;
    }
    if (head.type < FrameType::HELLO || head.type > FrameType::VERSIONS)
        return Result::MALFORMED;
    return head.length > MAX_CONTROL ? Result::TOO_LONG : Result::FRAME;
}

FrameReader::Result FrameReader::Start(const FrameHead &head, Frame &frame) {
    const std::size_t there = end_ - begin_ - FRAME_HEAD;
    const bool whole = there >= head.length;
    const uint8_t *body = buffer_.get() + begin_ + FRAME_HEAD;
    if (head.type != FrameType::DATA) {
        if (!whole)
            return Result::MORE;
        frame.body = {body, head.length};
    } else if (whole || head.length > LEAST_ROOM) {
        Smbuf message = MakeSmbuf(head.length);
        if (message == nullptr)
            return Result::NO_MEMORY;
        std::memcpy(DataOf(message.get()), body, whole ? head.length : there);
        if (!whole) {
            /* The rest of a long message is read where it belongs. */
            head_ = head;
            message_ = std::move(message);
            got_ = there;
            begin_ = end_;
            return Result::MORE;
        }
        frame.message = std::move(message);
    } else {
        return Result::MORE;
    }
    begin_ += FRAME_HEAD + head.length;
    frame.head = head;
    return Result::FRAME;
}

FrameReader::Result FrameReader::Take(Frame &frame) {
    if (message_ != nullptr) {
        if (got_ < head_.length)
            return Result::MORE;
        frame.head = head_;
        frame.message = std::move(message_);
        after_long_ = true;
        return Result::FRAME;
    }
    if (end_ - begin_ < FRAME_HEAD)
        return Result::MORE;
    after_long_ = false;
    const uint8_t *at = buffer_.get() + begin_;
    if (at[6] != 0 || at[7] != 0)
        return Result::MALFORMED;
    const FrameHead head = GetHead(at);
    const Result checked = Check(head);
    return checked == Result::FRAME ? Start(head, frame) : checked;
}

} // namespace uvel::host::standby
