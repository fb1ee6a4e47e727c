/* Sizes and offsets that callers were compiled with: a change of one is a change of the interface. */
#include <cstddef>
#include <uvelhost/cli.h>
#include <uvelhost/list.h>
#include <uvelhost/mbuf.h>
#include <uvelhost/memory.h>
#include <uvelhost/queue.h>
#include <uvelhost/time.h>

static_assert(sizeof(CLI_TEXT_S) == 16);
static_assert(offsetof(CLI_TEXT_S, pszText) == 0);
static_assert(offsetof(CLI_TEXT_S, pszChinese) == 8);

static_assert(sizeof(DLL_NODE) == 24);
static_assert(offsetof(DLL_NODE, pstNext) == 0);
static_assert(offsetof(DLL_NODE, pstPrev) == 8);
static_assert(offsetof(DLL_NODE, pReserved) == 16);

static_assert(sizeof(DLL_S) == 32);
static_assert(offsetof(DLL_S, pstNext) == 0);
static_assert(offsetof(DLL_S, pstPrev) == 8);
static_assert(offsetof(DLL_S, pReserved) == 16);
static_assert(offsetof(DLL_S, ulCount) == 24);

static_assert(sizeof(MBUF) == 32);
static_assert(offsetof(MBUF, pstNext) == 0);
static_assert(offsetof(MBUF, pucData) == 8);
static_assert(offsetof(MBUF, ulTotalDataLength) == 16);
static_assert(offsetof(MBUF, usDataLength) == 20);
static_assert(offsetof(MBUF, usReserved) == 22);
static_assert(offsetof(MBUF, ulFlags) == 24);
static_assert(offsetof(MBUF, ulReserved) == 28);

static_assert(sizeof(QAL_MEM_STATS_S) == 88);
static_assert(offsetof(QAL_MEM_STATS_S, szName) == 0);
static_assert(offsetof(QAL_MEM_STATS_S, ulBlocks) == 32);
static_assert(offsetof(QAL_MEM_STATS_S, ulBytes) == 40);
static_assert(offsetof(QAL_MEM_STATS_S, ulPeakBytes) == 48);
static_assert(offsetof(QAL_MEM_STATS_S, ulAllocs) == 56);
static_assert(offsetof(QAL_MEM_STATS_S, ulFailures) == 64);
static_assert(offsetof(QAL_MEM_STATS_S, ulQuota) == 72);
static_assert(offsetof(QAL_MEM_STATS_S, ulOverQuota) == 80);

static_assert(sizeof(QAL_QUEUE_STATS_S) == 56);
static_assert(offsetof(QAL_QUEUE_STATS_S, szName) == 0);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulDepth) == 16);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulElementSize) == 20);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulUsed) == 24);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulPeak) == 28);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulWritten) == 32);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulRead) == 40);
static_assert(offsetof(QAL_QUEUE_STATS_S, ulRefused) == 48);

static_assert(sizeof(QAL_DATE_S) == 4);
static_assert(offsetof(QAL_DATE_S, usYear) == 0);
static_assert(offsetof(QAL_DATE_S, ucMonth) == 2);
static_assert(offsetof(QAL_DATE_S, ucDay) == 3);

static_assert(sizeof(QAL_TIME_S) == 4);
static_assert(offsetof(QAL_TIME_S, ucHour) == 0);
static_assert(offsetof(QAL_TIME_S, ucMinute) == 1);
static_assert(offsetof(QAL_TIME_S, ucSecond) == 2);
static_assert(offsetof(QAL_TIME_S, ucReserved) == 3);

static_assert(sizeof(QAL_SYSTIME_S) == 12);
static_assert(offsetof(QAL_SYSTIME_S, usYear) == 0);
static_assert(offsetof(QAL_SYSTIME_S, ucMonth) == 2);
static_assert(offsetof(QAL_SYSTIME_S, ucDay) == 3);
static_assert(offsetof(QAL_SYSTIME_S, ucHour) == 4);
static_assert(offsetof(QAL_SYSTIME_S, ucMinute) == 5);
static_assert(offsetof(QAL_SYSTIME_S, ucSecond) == 6);
static_assert(offsetof(QAL_SYSTIME_S, ucWeekDay) == 7);
static_assert(offsetof(QAL_SYSTIME_S, ulMillisecond) == 8);
