/* Calls between processes: a call is a parcel with a number, its answer one with the same number. */

#include "ipc/exchange.h"

#include <chrono>
#include <cstring>

namespace uvel::host {

namespace {

/* What the callee gets to see of a call. */
struct CallContext {
    uint32_t node;
    uint32_t mid;
    uint32_t number;
};

} // namespace

bool Exchange::OfferModule(uint32_t mid, IPC_RPC_CB serve) {
    {
        std::lock_guard lock(lock_);
        if (!offers_.emplace(mid, serve).second)
            return false;
    }
    if (Join())
        return true;
    std::lock_guard lock(lock_);
    offers_.erase(mid);
    return false;
}

void Exchange::DeliverCall(const Parcel &parcel, const Link &from) {
    IPC_RPC_CB serve = nullptr;
    {
        std::lock_guard lock(lock_);
        if (auto offer = offers_.find(parcel.mid); offer != offers_.end() && parcel.body != nullptr)
            serve = offer->second;
    }
    CallContext context = {from == nullptr ? SelfNode() : from->Peer(), parcel.mid, parcel.number};
    Parcel answer = {ParcelKind::ANSWER, parcel.number, parcel.mid, IPC_RPC_NOBODY, nullptr};
    if (serve != nullptr)
        answer.result = serve(context.node, parcel.body, MessageOf(parcel.body)->length, &context, &answer.body);
    ReleaseMessage(parcel.body);
    if (from == nullptr) {
        DeliverAnswer(answer, SelfNode());
    } else {
        from->Send(answer);
        ReleaseMessage(answer.body);
    }
}

/* An answer that nobody waits for any more, or from another node than was asked, is dropped. */
void Exchange::DeliverAnswer(const Parcel &parcel, uint32_t node) {
    std::lock_guard lock(lock_);
    auto call = calls_.find(parcel.number);
    if (call == calls_.end() || call->second.node != node || call->second.over) {
        ReleaseMessage(parcel.body);
        return;
    }
    call->second = {node, true, true, parcel.result, parcel.body};
    call_over_.notify_all();
}

bool Exchange::Ask(uint32_t node, const Parcel &call) {
    if (node != SelfNode()) {
        const Link link = Join() ? LinkTo(node) : nullptr;
        return link != nullptr && link->Send(call);
    }
    /* the inbox owns what is in it, and the message is the caller's */
    const Message *message = MessageOf(call.body);
    Parcel copy = call;
    copy.body = AllocateMessage(message->mid, message->length);
    if (copy.body == nullptr)
        return false;
    *MessageOf(copy.body) = *message;
    std::memcpy(copy.body, call.body, message->length);
    if (PostToSelf(copy))
        return true;
    ReleaseMessage(copy.body);
    return false;
}

bool Exchange::Call(uint32_t node, uint32_t mid, void *body, uint32_t timeout_ms, uint32_t *result, void **reply) {
    if (OnReceivingThread())
        return false; /* it would wait for itself */
    uint32_t number;
    {
        std::lock_guard lock(lock_);
        do
            number = ++last_call_;
        while (!calls_.emplace(number, PendingCall{node}).second);
    }
    const bool asked = Ask(node, {ParcelKind::CALL, number, mid, 0, body});

    std::unique_lock lock(lock_);
    PendingCall &call = calls_.at(number);
    const auto over = [&] { return call.over; };
    if (asked && timeout_ms == UVELHOST_WAIT_FOREVER)
        call_over_.wait(lock, over);
    else if (asked)
        call_over_.wait_for(lock, std::chrono::milliseconds(timeout_ms), over);
    const PendingCall outcome = call;
    calls_.erase(number);
    if (!outcome.answered)
        return false;
    *result = outcome.result;
    *reply = outcome.reply;
    return true;
}

} // namespace uvel::host
