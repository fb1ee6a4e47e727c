#include "standby/send_stream.h"

#include <algorithm>

namespace uvel::host::standby {

void SendStream::Restart(uint64_t name) {
    while (!chunks_.empty())
        DropFront();
    sending_ = 0;
    name_ = name;
    earlier_ += next_ - 1;
    next_ = 1;
    sent_ = acknowledged_ = 0;
}

void SendStream::DropFront() {
    Chunk &chunk = chunks_.front();
    held_ -= chunk.used;
    if (chunk.size == CHUNK && chunk.own != nullptr && spare_.size() < spare_.capacity())
        spare_.push_back(std::move(chunk.own));
    chunks_.pop_front();
    if (sending_ > 0)
        --sending_;
}

void SendStream::Prepare(std::size_t bytes) {
    if (!chunks_.empty() && chunks_.back().size - chunks_.back().used >= bytes)
        return;
    const bool is_between = !chunks_.empty() && chunks_.back().own == nullptr;
    Chunk chunk;
    chunk.size = std::max(bytes, is_between ? SMALL_CHUNK : CHUNK);
    if (chunk.size == CHUNK && !spare_.empty()) {
        chunk.own = std::move(spare_.back());
        spare_.pop_back();
    } else {
        chunk.own.reset(new uint8_t[chunk.size]);
    }
    chunk.bytes = chunk.own.get();
    chunk.first = next_;
    chunk.last = next_ - 1;
    chunks_.push_back(std::move(chunk));
}

void SendStream::Append(FrameHead head, Smbuf message) {
    static_assert(offsetof(YSB_SMBUF, frame_head) + FRAME_HEAD == sizeof(YSB_SMBUF));
    Chunk chunk;
    chunk.bytes = DataOf(message.get()) - FRAME_HEAD;
    chunk.message = std::move(message);
    chunk.size = chunk.used = FRAME_HEAD + head.length;
    chunk.first = chunk.last = next_;
    head.number = next_;
    PutHead(chunk.bytes, head);
    chunks_.push_back(std::move(chunk));
    held_ += FRAME_HEAD + head.length;
    ++next_;
}

uint8_t *SendStream::Append(FrameHead head) {
    Chunk &chunk = chunks_.back();
    uint8_t *at = chunk.bytes + chunk.used;
    const std::size_t bytes = FRAME_HEAD + head.length;
    head.number = next_;
    PutHead(at, head);
    chunk.used += bytes;
    chunk.last = next_++;
    held_ += bytes;
    return at + FRAME_HEAD;
}

std::span<const uint8_t> SendStream::Unsent() {
    while (sending_ < chunks_.size() && chunks_[sending_].sent == chunks_[sending_].used &&
           sending_ + 1 < chunks_.size())
        ++sending_;
    if (sending_ >= chunks_.size())
        return {};
    const Chunk &chunk = chunks_[sending_];
    run_ = {chunk.used - chunk.sent, chunk.last};
    return {chunk.bytes + chunk.sent, run_.bytes};
}

void SendStream::Sent() {
    chunks_[sending_].sent += run_.bytes;
    sent_ = std::max(sent_, run_.last);
    run_ = {};
}

bool SendStream::Acknowledge(uint64_t number) {
    if (number > sent_)
        return false;
    acknowledged_ = std::max(acknowledged_, number);
    while (!chunks_.empty() && chunks_.front().last <= acknowledged_ && chunks_.front().sent == chunks_.front().used)
        DropFront();
    return true;
}

std::size_t SendStream::OffsetOf(const Chunk &chunk, uint64_t number) {
    std::size_t at = 0;
    while (at < chunk.used) {
        const FrameHead head = GetHead(chunk.bytes + at);
        if (head.number == number)
            break;
        at += FRAME_HEAD + head.length;
    }
    return at;
}

bool SendStream::Resume(uint64_t received) {
    if (received < acknowledged_ || received > sent_)
        return false;
    for (Chunk &chunk : chunks_)
        chunk.sent = chunk.last <= received ? chunk.used : chunk.first > received ? 0 : OffsetOf(chunk, received + 1);
    sending_ = 0;
    return Acknowledge(received);
}

} // namespace uvel::host::standby
