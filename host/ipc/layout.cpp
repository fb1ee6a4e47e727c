/* Sizes and offsets that callers were compiled with: a change of one is a change of the interface. */
#include <cstddef>
#include <uvelhost/component.h>
#include <uvelhost/ipc.h>

static_assert(sizeof(SYS_APP_INFO_S) == 192);
static_assert(offsetof(SYS_APP_INFO_S, ulMid) == 0);
static_assert(offsetof(SYS_APP_INFO_S, ulPriority) == 4);
static_assert(offsetof(SYS_APP_INFO_S, ulTaskId) == 8);
static_assert(offsetof(SYS_APP_INFO_S, aulReserved) == 12);

static_assert(sizeof(IPC_STATS_S) == 40);
static_assert(offsetof(IPC_STATS_S, ulSent) == 0);
static_assert(offsetof(IPC_STATS_S, ulRefused) == 8);
static_assert(offsetof(IPC_STATS_S, ulReceived) == 16);
static_assert(offsetof(IPC_STATS_S, ulDropped) == 24);
static_assert(offsetof(IPC_STATS_S, ulRefusedPeers) == 32);

static_assert(sizeof(DBI_MSG_HEAD_S) == 16);
static_assert(offsetof(DBI_MSG_HEAD_S, ulMagic) == 0);
static_assert(offsetof(DBI_MSG_HEAD_S, ulVersion) == 4);
static_assert(offsetof(DBI_MSG_HEAD_S, ulLength) == 8);
static_assert(offsetof(DBI_MSG_HEAD_S, ulReserved) == 12);
