#include <uvelhost/device.h>

#include "model/query.h"

using namespace uvel::host::model;

namespace {

const MDL_BOARD_S *SelfBoard(const Reading &model) {
    return model->boards.Get(model->device.ulSelfSlot);
}

/* Writes a field of a slot's record. */
uint32_t WriteBoard(uint32_t slot, uint32_t *out, uint32_t MDL_BOARD_S::*field) {
    const Reading model;
    return Write(model->boards.Get(slot), out, [&](const MDL_BOARD_S &each) { return each.*field; });
}

uint32_t WriteSelf(uint32_t *out, uint32_t MDL_BOARD_S::*field) {
    const Reading model;
    return Write(SelfBoard(model), out, [&](const MDL_BOARD_S &each) { return each.*field; });
}

/* Writes an address that is known. */
uint32_t WriteAddress(const MDL_BOARD_S *board, uint32_t cpu, uint32_t *out) {
    if (board == nullptr || out == nullptr || cpu >= MDL_MAX_CPUS || board->aulAddr[cpu] == 0)
        return 1;
    *out = board->aulAddr[cpu];
    return UVELHOST_OK;
}

/* Calls visit(board) in ascending order of the slots until it answers false. */
template <typename Visit>
void VisitBoards(const Reading &model, Visit &&visit) {
    model->boards.VisitFrom(0, [&](uint32_t, const Node<MDL_BOARD_S> &node) { return visit(node.value); });
}

template <typename Visit>
void VisitMainBoards(const Reading &model, Visit &&visit) {
    VisitBoards(model, [&](const MDL_BOARD_S &board) {
        if (board.ulRole == MDL_BOARD_MAIN && board.ulPresent != 0)
            visit(board);
        return true;
    });
}

} // namespace

/* ---- this board */

uint32_t DEVM_DB_GetSelfBoardId(uint32_t *pulBoardId) {
    return DEVM_DB_GetSelfSlotId(pulBoardId);
}

uint32_t DEVM_DB_GetSelfChassisId(uint32_t *pulChassisId) {
    return WriteSelf(pulChassisId, &MDL_BOARD_S::ulChassis);
}

uint32_t DEVM_DB_GetSelfSlotId(uint32_t *pulSlot) {
    return WriteSelf(pulSlot, &MDL_BOARD_S::ulSlot);
}

uint32_t DEVM_DB_GetSelfCpuId(uint32_t *pulCpuId) {
    const Reading model;
    return Write(SelfBoard(model), pulCpuId,
                 [&](const MDL_BOARD_S &each) { return each.ulFirstCpu + model->device.ulSelfCpu; });
}

uint32_t DEVM_DB_GetSelfLocalCpuId(uint32_t *pulCpuId) {
    const Reading model;
    return Write(SelfBoard(model), pulCpuId, [&](const MDL_BOARD_S &) { return model->device.ulSelfCpu; });
}

uint32_t DEVM_DB_GetSelfBoardIp(uint32_t *pulAddr) {
    const Reading model;
    return WriteAddress(SelfBoard(model), 0, pulAddr);
}

/* ---- any board */

uint32_t DEVM_DB_GetBoardPresent(uint32_t ulSlot, uint32_t *pulPresent) {
    return WriteBoard(ulSlot, pulPresent, &MDL_BOARD_S::ulPresent);
}

uint32_t DEVM_DB_GetBoardRegisterStatus(uint32_t ulSlot, uint32_t *pulStatus) {
    return WriteBoard(ulSlot, pulStatus, &MDL_BOARD_S::ulRegistered);
}

uint32_t DEVM_DB_GetOnlinStatus(uint32_t ulSlot, uint32_t *pulStatus) {
    return WriteBoard(ulSlot, pulStatus, &MDL_BOARD_S::ulOnline);
}

uint32_t DEVM_DB_GetCpuInfoBySlotID(uint32_t ulSlot, DEVM_CPU_INFO_S *pstInfo) {
    const Reading model;
    const MDL_BOARD_S *board = model->boards.Get(ulSlot);
    if (board == nullptr || pstInfo == nullptr)
        return 1;
    const uint32_t present = board->ulPresent != 0 && board->ulCpuCount != 0;
    *pstInfo = {present, present != 0 ? board->ulMainCpu : 0, present != 0 ? board->ulCpuCount : 0, 0};
    return UVELHOST_OK;
}

uint32_t DEVM_DB_LocalCpuId2GlobalCpuId(uint32_t ulSlot, uint32_t ulLocalCpuId, uint32_t *pulGlobalCpuId) {
    const Reading model;
    const MDL_BOARD_S *board = model->boards.Get(ulSlot);
    if (board == nullptr || pulGlobalCpuId == nullptr || ulLocalCpuId >= board->ulCpuCount)
        return 1;
    *pulGlobalCpuId = board->ulFirstCpu + ulLocalCpuId;
    return UVELHOST_OK;
}

uint32_t DEVM_DB_GetIpBySlotAndCpu(uint32_t ulSlot, uint32_t ulCpu, uint32_t *pulAddr) {
    const Reading model;
    return WriteAddress(model->boards.Get(ulSlot), ulCpu, pulAddr);
}

/* ---- slots */

uint32_t DEVM_DB_GetLocalSlotIdByGlobalSlotId(uint32_t ulGlobalSlot, uint32_t *pulLocalSlot) {
    return WriteBoard(ulGlobalSlot, pulLocalSlot, &MDL_BOARD_S::ulLocalSlot);
}

uint32_t DEVM_DB_GetGlobalSlotIdByLocalSlotId(uint32_t ulLocalSlot, uint32_t *pulGlobalSlot) {
    const Reading model;
    const MDL_BOARD_S *self = SelfBoard(model);
    const MDL_BOARD_S *found = nullptr;
    if (self != nullptr)
        VisitBoards(model, [&](const MDL_BOARD_S &board) {
            if (board.ulChassis == self->ulChassis && board.ulLocalSlot == ulLocalSlot)
                found = &board;
            return found == nullptr;
        });
    return Write(found, pulGlobalSlot, [](const MDL_BOARD_S &each) { return each.ulSlot; });
}

void DRV_GetPhySlot(uint32_t ulSlot, uint32_t *pulPhySlot) {
    WriteBoard(ulSlot, pulPhySlot, &MDL_BOARD_S::ulPhySlot);
}

/* ---- main boards */

uint32_t DEVM_DB_GetMinMpuBoardId(uint32_t *pulSlot) {
    const Reading model;
    const MDL_BOARD_S *found = nullptr;
    VisitBoards(model, [&](const MDL_BOARD_S &board) {
        if (board.ulRole == MDL_BOARD_MAIN)
            found = &board;
        return found == nullptr;
    });
    return Write(found, pulSlot, [](const MDL_BOARD_S &each) { return each.ulSlot; });
}

uint32_t DEVM_DB_GetMaxMpuBoardId(uint32_t *pulSlot) {
    const Reading model;
    const MDL_BOARD_S *found = nullptr;
    VisitBoards(model, [&](const MDL_BOARD_S &board) {
        if (board.ulRole == MDL_BOARD_MAIN)
            found = &board;
        return true;
    });
    return Write(found, pulSlot, [](const MDL_BOARD_S &each) { return each.ulSlot; });
}

uint32_t DEVM_DB_GetMpuAllSlot(uint32_t *pulSlot, uint32_t *pulCount) {
    const Reading model;
    return WriteNumbers(pulSlot, pulCount, [&](auto &&add) {
        VisitMainBoards(model, [&](const MDL_BOARD_S &board) { add(board.ulSlot); });
    });
}

uint32_t DEVM_GetMpuAllSlotAndIp(uint32_t *pulSlot, uint32_t *pulAddr, uint32_t *pulCount) {
    const Reading model;
    if (pulAddr == nullptr || WriteNumbers(pulSlot, pulCount, [&](auto &&add) {
                                  VisitMainBoards(model, [&](const MDL_BOARD_S &board) { add(board.ulSlot); });
                              }) != UVELHOST_OK)
        return 1;
    VisitMainBoards(model, [&](const MDL_BOARD_S &board) { *pulAddr++ = board.aulAddr[0]; });
    return UVELHOST_OK;
}

/* ---- the system */

uint32_t DEVM_DB_GetSysMac(uint8_t aucMac[6]) {
    const Reading model;
    if (aucMac == nullptr || model->device.ulHasMac == 0)
        return 1;
    std::memcpy(aucMac, model->device.aucMac, sizeof model->device.aucMac);
    return UVELHOST_OK;
}

uint32_t DEV_GetSystemName(char *pszName, uint32_t ulSize) {
    const Reading model;
    if (pszName == nullptr || ulSize == 0 || model->device.ulHasName == 0)
        return 1;
    const std::size_t length = strnlen(model->device.szName, ulSize - 1);
    std::memcpy(pszName, model->device.szName, length);
    pszName[length] = '\0';
    return UVELHOST_OK;
}

uint32_t DEV_SupportOnlyLsw(void) {
    const Reading model;
    return model->device.ulOnlyLsw;
}
