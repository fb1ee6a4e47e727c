/* Sizes and offsets that callers were compiled with: a change of one is a change of the interface. */
#include <cstddef>
#include <uvelhost/netlink.h>

static_assert(sizeof(NLF_CONFIG_S) == 16);
static_assert(offsetof(NLF_CONFIG_S, ulFeeder) == 0);
static_assert(offsetof(NLF_CONFIG_S, ulSlot) == 4);
static_assert(offsetof(NLF_CONFIG_S, ulRcvBytes) == 8);
static_assert(offsetof(NLF_CONFIG_S, ulCarryOut) == 12);

static_assert(sizeof(NLF_STATS_S) == 48);
static_assert(offsetof(NLF_STATS_S, ulMessages) == 0);
static_assert(offsetof(NLF_STATS_S, ulOverruns) == 8);
static_assert(offsetof(NLF_STATS_S, ulLoads) == 16);
static_assert(offsetof(NLF_STATS_S, ulInterrupted) == 24);
static_assert(offsetof(NLF_STATS_S, ulRefused) == 32);
static_assert(offsetof(NLF_STATS_S, ulLost) == 40);
