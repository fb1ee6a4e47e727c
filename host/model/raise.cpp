#include "model/batch.h"
#include "model/delivery.h"

using namespace uvel::host::model;

namespace {

bool IsWhole(const MDL_EVENT_S &event) {
    const auto fits = [](const void *bytes, uint32_t size) { return bytes == nullptr || size <= MDL_MAX_EVENT_BYTES; };
    return fits(event.pKey, event.ulKeySize) && fits(event.pData, event.ulDataSize) && IsKnownEvent(event);
}

/* A single notification, or null when memory is short. */
std::unique_ptr<Notices> Single(const MDL_EVENT_S &event) noexcept {
    try {
        auto notices = std::make_unique<Notices>();
        notices->AddEvent(event);
        notices->user = t_user;
        return notices;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

/* Who registers after the end of the recovery hears of it too: that one is delivered even when nobody listens yet. */
bool IsHeard(const MDL_EVENT_S &event) {
    return event.ulTopic != MDL_TOPIC_CFM_OVER || StartNotifying();
}

} // namespace

uint32_t MDL_Raise(MDL_BATCH *pstBatch, const MDL_EVENT_S *pstEvent) {
    if (pstEvent == nullptr || !IsWhole(*pstEvent) || !IsHeard(*pstEvent))
        return 1;
    if (pstBatch != nullptr)
        return Change(pstBatch, [&] { pstBatch->notices->AddEvent(*pstEvent); });
    auto notices = Single(*pstEvent);
    if (notices == nullptr)
        return 1;
    Enqueue(notices.release());
    return UVELHOST_OK;
}

uint32_t MDL_Ask(const MDL_EVENT_S *pstEvent, uint32_t *pulYes) {
    if (pstEvent == nullptr || pulYes == nullptr || !IsWhole(*pstEvent) || IsDelivering())
        return 1;
    auto notices = Single(*pstEvent);
    if (notices == nullptr)
        return 1;
    bool answer = true;
    notices->answer = &answer;
    Enqueue(notices.release());
    if (MDL_Drain(UVELHOST_WAIT_FOREVER) != UVELHOST_OK)
        return 1;
    *pulYes = answer;
    return UVELHOST_OK;
}
