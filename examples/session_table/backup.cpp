#include "backup.h"

#include <uvelcommon_base/kivo_chi.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelhost/standby_link.h>

namespace session_table {

namespace {

constexpr uint32_t MESSAGE_TYPE = 2; /* channel type of a table's changes */

} // namespace

void Backup::Output(Change change, const Session &session) {
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

void Backup::Send(Change change, const Session &session) {
    if (active_.load())
        Output(change, session);
}

void Backup::SendAll() {
    if (active_.load())
        sessions_->ForAll([this](const Session &session) { Output(Change::ADDED, session); });
}

void Backup::Receive(void *message) {
    CHI_MSG_INFO_S info{};
    Change change{};
    Session session;
    if (CHI_GetMsgInfo(CHI_BACK_YSB, message, &info) != KIVO_OK ||
        !ReadMessage(static_cast<const uint8_t *>(CBUF_C2D(CHI_BACK_YSB, message)), info.ulTotalLength, &change,
                     &session))
        ++malformed_;
    else if (!active_.load())
        sessions_->Apply(change, session);
    CBUF_Free(CHI_BACK_YSB, message);
}

void Backup::PeerBatch(bool begins) {
    if (active_.load())
        return;
    if (begins)
        sessions_->BeginBatch();
    else
        sessions_->EndOfBatch();
}

} // namespace session_table
