/* Sizes and offsets that callers were compiled with: a change of one is a change of the interface. */
#include <cstddef>
#include <uvelhost/confdb.h>
#include <uvelhost/confdb_writer.h>
#include <uvelhost/epoll.h>

static_assert(sizeof(DB_CONN_DESC_S) == 64);
static_assert(offsetof(DB_CONN_DESC_S, pszEndpoint) == 0);
static_assert(offsetof(DB_CONN_DESC_S, pszClient) == 8);
static_assert(offsetof(DB_CONN_DESC_S, aulReserved) == 16);

static_assert(sizeof(DB_KV_S) == 24);
static_assert(offsetof(DB_KV_S, pszKey) == 0);
static_assert(offsetof(DB_KV_S, pValue) == 8);
static_assert(offsetof(DB_KV_S, ulValueLength) == 16);
static_assert(offsetof(DB_KV_S, ulChange) == 20);

static_assert(sizeof(DB_SUB_DESC_S) == 64);
static_assert(offsetof(DB_SUB_DESC_S, ulChangeMask) == 0);
static_assert(offsetof(DB_SUB_DESC_S, pfCallback) == 8);
static_assert(offsetof(DB_SUB_DESC_S, ucFromStart) == 16);
static_assert(offsetof(DB_SUB_DESC_S, aucReserved) == 17);
static_assert(offsetof(DB_SUB_DESC_S, aulReserved) == 24);

static_assert(sizeof(DB_RECORD_S) == 40);
static_assert(offsetof(DB_RECORD_S, pszTable) == 0);
static_assert(offsetof(DB_RECORD_S, stKv) == 8);
static_assert(offsetof(DB_RECORD_S, ullRevision) == 32);

static_assert(sizeof(MESH_EPOLL_EVENT_S) == 32);
static_assert(offsetof(MESH_EPOLL_EVENT_S, ulEvents) == 0);
static_assert(offsetof(MESH_EPOLL_EVENT_S, aulReserved1) == 4);
static_assert(offsetof(MESH_EPOLL_EVENT_S, ulFd) == 24);
static_assert(offsetof(MESH_EPOLL_EVENT_S, ulReserved2) == 28);

static_assert(sizeof(DB_CONN_STATE_S) == 296);
static_assert(offsetof(DB_CONN_STATE_S, szClient) == 0);
static_assert(offsetof(DB_CONN_STATE_S, szTrouble) == 32);
static_assert(offsetof(DB_CONN_STATE_S, ulSubscriptions) == 288);
static_assert(offsetof(DB_CONN_STATE_S, ulOutages) == 292);
