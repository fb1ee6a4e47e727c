/* Role of the board. */
#include <uvelhost/ha.h>
#include <uvelhost/model.h>

#include "model/query.h"
#include <atomic>

using namespace uvel::host::model;

namespace {

constexpr uint32_t NO_BOARD = 0xFFFF;

/* All of it in one word, so that every answer is one load and a change is seen whole. Aligned as one, or clang
 * calls a library for it. */
struct alignas(uint64_t) Role {
    uint16_t master;
    uint16_t slave;
    uint8_t type;
    uint8_t state;
    uint8_t slave_ready;
    uint8_t reserved;
};
static_assert(sizeof(Role) == sizeof(uint64_t));

constinit std::atomic<Role> g_role = Role{NO_BOARD, NO_BOARD, HA_BOARD_MASTER, HA_STATE_ALONE, 0, 0};
static_assert(std::atomic<Role>::is_always_lock_free);

bool IsBoard(uint32_t board) {
    return board < NO_BOARD || board == UVELHOST_NONE;
}

} // namespace

uint32_t HA_GetBoardType(void) {
    return g_role.load(std::memory_order_acquire).type;
}

uint32_t HA_GetMasterBoardID(void) {
    const Role role = g_role.load(std::memory_order_acquire);
    if (role.master != NO_BOARD || role.type != HA_BOARD_MASTER)
        return role.master;
    const Reading model;
    return model->device.ulSelfSlot & 0xFFFF;
}

uint32_t HA_GetSlaveBoardID(void) {
    return g_role.load(std::memory_order_acquire).slave;
}

uint32_t HA_GetState(void) {
    return g_role.load(std::memory_order_acquire).state;
}

uint32_t HA_SlaveIsReady(void) {
    return g_role.load(std::memory_order_acquire).slave_ready != 0 ? 0 : 1;
}

uint32_t MDL_SetHa(const MDL_HA_S *pstHa) {
    if (pstHa == nullptr || pstHa->ulBoardType > 0xFF || pstHa->ulState > HA_STATE_REALTIME ||
        pstHa->ulSlaveReady > 1 || !IsBoard(pstHa->ulMasterBoard) || !IsBoard(pstHa->ulSlaveBoard))
        return 1;
    g_role.store(Role{static_cast<uint16_t>(pstHa->ulMasterBoard), static_cast<uint16_t>(pstHa->ulSlaveBoard),
                      static_cast<uint8_t>(pstHa->ulBoardType), static_cast<uint8_t>(pstHa->ulState),
                      static_cast<uint8_t>(pstHa->ulSlaveReady), 0},
                 std::memory_order_release);
    return UVELHOST_OK;
}

void MDL_GetHa(MDL_HA_S *pstHa) {
    if (pstHa == nullptr)
        return;
    const auto board = [](uint16_t number) { return number == NO_BOARD ? UVELHOST_NONE : number; };
    const Role role = g_role.load(std::memory_order_acquire);
    *pstHa = {role.type, board(role.master), board(role.slave), role.state, role.slave_ready};
}
