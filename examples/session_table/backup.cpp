#include "backup.h"

#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelhost/standby_link.h>

namespace session_table {

namespace {

constexpr uint32_t MESSAGE_TYPE = 2; /* channel type of a table's changes */
constexpr char ALONE[] = "ok alone";

} // namespace

void Backup::Send(Change change, const Session &session) {
    void *buffer = nullptr;
    if (CBUF_Alloc(CHI_BACK_YSB, &buffer, MESSAGE_SIZE) != KIVO_OK) {
        YSB_Link_StartBatch(); /* what cannot be said now is said again with all the rest */
        return;
    }
    WriteMessage(change, session, static_cast<uint8_t *>(CBUF_C2D(CHI_BACK_YSB, buffer)));
    CHI_MSG_INFO_S info{};
    info.ulTotalLength = MESSAGE_SIZE;
    info.ulMsgType = MESSAGE_TYPE;
    info.ulMsgId = ++message_id_;
    if (CHI_SetMsgInfo(CHI_BACK_YSB, buffer, &info) != KIVO_OK) {
        CBUF_Free(CHI_BACK_YSB, buffer);
        return;
    }
    const uint32_t length = CHI_GetMsgHeadLen(CHI_BACK_YSB) + MESSAGE_SIZE;
    CHI_YSB_OutputPacket(mod_id_, reinterpret_cast<uintptr_t>(buffer), CHI_ANY_CHANNEL, length);
}

void Backup::SendAll() {
    if (sessions_->IsActive())
        sessions_->TellAll([this](Change change, const Session &session) { Send(change, session); });
}

void Backup::Receive(void *message) {
    CHI_MSG_INFO_S info{};
    Change change{};
    Session session;
    if (CHI_GetMsgInfo(CHI_BACK_YSB, message, &info) != KIVO_OK ||
        !ReadMessage(static_cast<const uint8_t *>(CBUF_C2D(CHI_BACK_YSB, message)), info.ulTotalLength, &change,
                     &session))
        ++malformed_;
    else
        sessions_->Apply(change, session);
    CBUF_Free(CHI_BACK_YSB, message);
}

void Backup::PeerBatch(bool begins) {
    if (begins)
        sessions_->BeginBatch();
    else
        sessions_->EndOfBatch();
}

Reply Backup::Promise() {
    const uint64_t position = YSB_Link_GetPosition();
    return position == 0 ? Reply(ALONE) : Reply("ok", position);
}

bool Backup::IsKept(Reply *promise) {
    const uint32_t fate = YSB_Link_GetFate(promise->wait_for);
    if (fate == YSB_LINK_FATE_UNKNOWN)
        promise->text = ALONE;
    return fate != YSB_LINK_FATE_PENDING;
}

} // namespace session_table
