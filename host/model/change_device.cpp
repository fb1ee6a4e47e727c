/* Changes of the device and its boards. */
#include "model/batch.h"

using namespace uvel::host::model;

namespace {

bool IsFlag(uint32_t value) {
    return value <= 1;
}

bool IsGood(const MDL_BOARD_S &board) {
    return board.ulSlot < 0xFFFF && board.ulRole <= MDL_BOARD_SERVICE && IsFlag(board.ulPresent) &&
           IsFlag(board.ulRegistered) && IsFlag(board.ulOnline) && board.ulCpuCount <= MDL_MAX_CPUS &&
           (board.ulCpuCount == 0 || board.ulMainCpu < board.ulCpuCount);
}

void NotifySlot(Batch &batch, uint32_t kind, const MDL_BOARD_S &board) {
    batch.notices->Add({.topic = MDL_TOPIC_SLOT, .event = kind, .a = board.ulSlot, .b = board.ulRole});
}

void NotifyBoard(Batch &batch, const MDL_BOARD_S &before, const MDL_BOARD_S &after) {
    constexpr uint32_t PRESENT = 0, GONE = 1, ONLINE = 2, OFFLINE = 3;
    if (before.ulOnline != 0 && after.ulOnline == 0)
        NotifySlot(batch, OFFLINE, after);
    if (before.ulPresent != after.ulPresent)
        NotifySlot(batch, after.ulPresent != 0 ? PRESENT : GONE, after);
    if (before.ulOnline == 0 && after.ulOnline != 0)
        NotifySlot(batch, ONLINE, after);
}

} // namespace

void uvel::host::model::RemoveBoard(Batch &batch, uint32_t slot) {
    const MDL_BOARD_S *board = batch.next->boards.Get(slot);
    if (board == nullptr)
        return;
    MDL_BOARD_S empty = *board;
    empty.ulPresent = empty.ulOnline = 0;
    NotifyBoard(batch, *board, empty);
    batch.next->boards.Erase(batch.draft, slot);
}

void MDL_InitDevice(MDL_DEVICE_S *pstDevice) {
    if (pstDevice != nullptr)
        *pstDevice = Snapshot().device;
}

uint32_t MDL_PutDevice(MDL_BATCH *pstBatch, const MDL_DEVICE_S *pstDevice) {
    if (pstDevice == nullptr || !IsFlag(pstDevice->ulOnlyLsw) || !IsFlag(pstDevice->ulHasMac) ||
        !IsFlag(pstDevice->ulHasName) || pstDevice->ulMaxSwitchPorts == 0 ||
        pstDevice->ulMaxSwitchPorts > MDL_MAX_SWITCH_PORTS)
        return 1;
    MDL_DEVICE_S device = *pstDevice;
    if (!CopyText(device.szName, pstDevice->szName))
        return 1;
    return Change(pstBatch, [&] { pstBatch->next->device = device; });
}

uint32_t MDL_PutBoard(MDL_BATCH *pstBatch, const MDL_BOARD_S *pstBoard) {
    if (pstBoard == nullptr || !IsGood(*pstBoard))
        return 1;
    return Change(pstBatch, [&] {
        const auto before = Put(*pstBatch, pstBatch->next->boards, pstBoard->ulSlot, *pstBoard);
        MDL_BOARD_S empty = {};
        if (before.changed)
            NotifyBoard(*pstBatch, before.old == nullptr ? empty : *before.old, *pstBoard);
    });
}

uint32_t MDL_RemoveBoard(MDL_BATCH *pstBatch, uint32_t ulSlot) {
    return Change(pstBatch, [&] { RemoveBoard(*pstBatch, ulSlot); });
}
