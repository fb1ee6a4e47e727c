/* Traffic through the event task for a while: 3 s, or 60 s with UVEL_LONG_TESTS=1.
 *
 * Four threads send as fast as they can into a queue that is far too small for them, while callbacks fail, sleep, move
 * each other and are unregistered. Nothing may be lost that was accepted, nothing come out of order, nothing be left
 * over. A thread sanitizer has nothing to say either: what the registry leaves unlocked (registrations belong to the
 * notifying task) is not done here from elsewhere. */

#include "kit.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>

namespace {

constexpr uint32_t PRODUCERS = 4;
constexpr uint32_t DEPTH = 512;
constexpr uint32_t FIRST_EVENT = 100; /* one event number for each producer */
constexpr uint32_t ANY = UVEL_EVENT_ANY_VALUE;
constexpr uint32_t CHANNEL = 0x77;

struct Record {
    uint32_t producer;
    uint32_t padding;
    uint64_t sequence;
    uint8_t rest[112]; /* sent in varying lengths, filled with the low byte of the sequence */
};

struct Counts {
    std::atomic<uint64_t> delivered{0};
    std::atomic<uint64_t> badOrder{0};
    std::atomic<uint64_t> badData{0};
    std::atomic<uint64_t> moved{0};
    uint64_t next[PRODUCERS] = {}; /* lowest sequence that may come; the event task's own */
};
Counts g_counts;

/* Highest priority: sees every event once. */
uint32_t Check(uint32_t value, void *data) {
    Record record;
    std::memcpy(&record, data, 16);
    uint64_t &next = g_counts.next[record.producer];
    if (record.sequence < next)
        ++g_counts.badOrder;
    next = record.sequence + 1;
    const auto *rest = static_cast<const uint8_t *>(data) + 16;
    for (uint32_t i = 0; i < record.sequence % 113; ++i)
        if (rest[i] != static_cast<uint8_t>(record.sequence))
            ++g_counts.badData;
    if (value != record.sequence % 8)
        ++g_counts.badData;
    ++g_counts.delivered;
    return 0;
}

uint32_t Fail(uint32_t, void *) {
    return 7;
}

uint32_t Sleep(uint32_t, void *) {
    static uint32_t s_calls;
    if (++s_calls % 2048 == 0)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    return 0;
}

uint32_t Victim(uint32_t, void *) {
    return 0;
}

/* Moves itself and its neighbours to other priorities below that of Check. */
uint32_t Move(uint32_t, void *data) {
    static std::mt19937 s_random(20240612);
    Record record;
    std::memcpy(&record, data, 16);
    const uint32_t event = FIRST_EVENT + record.producer;
    const auto priority = static_cast<uint8_t>(s_random() % 200);
    switch (s_random() % 64) {
    case 0:
        ++g_counts.moved;
        return UVEL_EventCallBackReg(1, event, ANY, priority, 0, 0, Move);
    case 1:
        ++g_counts.moved;
        return UVEL_EventCallBackReg(1, event, ANY, priority, 1, 0, Fail);
    case 2:
        return UVEL_EventCallBackUnReg(1, event, ANY, Victim);
    case 3:
        return UVEL_EventCallBackReg(1, event, ANY, 5, 0, 0, Victim);
    default:
        return 0;
    }
}

uint64_t BlocksOf(uint32_t handle) {
    QAL_MEM_STATS_S stats{};
    EXPECT_EQ(0u, QAL_MemGetStats(handle, &stats));
    return stats.ulBlocks;
}

QAL_QUEUE_STATS_S QueueStats() {
    QAL_QUEUE_STATS_S stats{};
    EXPECT_EQ(0u, QAL_QueueGetStats(g_eventQueID, &stats));
    return stats;
}

uint64_t Produce(uint32_t producer, std::chrono::steady_clock::time_point end) {
    uint64_t sent = 0;
    Record record{producer, 0, 0, {}};
    while (std::chrono::steady_clock::now() < end) {
        record.sequence = sent;
        std::memset(record.rest, static_cast<int>(sent & 0xFF), sizeof record.rest);
        const auto length = static_cast<uint32_t>(16 + sent % 113);
        if (UVEL_EVENT_Api_SendEventMsg(FIRST_EVENT + producer, static_cast<uint32_t>(sent % 8), &record, length) != 0)
            std::abort();
        ++sent;
        if (sent % 64 == 0) /* leaves the event task some room, and the machine to others */
            std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return sent;
}

TEST(EventSoak, NothingAcceptedIsLostNothingComesOutOfOrderNothingIsLeftOver) {
    const char *wish = std::getenv("UVEL_LONG_TESTS");
    const std::chrono::seconds duration(wish != nullptr && std::string(wish) == "1" ? 60 : 3);

    kit::Op<IPC_Create>().Returns(0);
    UVEL_EVENT_Api_SetGlobalVariable(1, 2, CHANNEL);
    UVEL_EVENT_Api_SetSpecs(UVEL_EVENT_SPEC_QUEUE_DEPTH, DEPTH);
    UVEL_EVENT_CreateQueIpc();
    for (uint32_t event = FIRST_EVENT; event < FIRST_EVENT + PRODUCERS; ++event) {
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, ANY, 255, 0, 0, Check));
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, ANY, 100, 1, 0, Fail));
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, ANY, 50, 0, 0, Sleep));
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, ANY, 50, 0, 0, Move));
        ASSERT_EQ(0u, UVEL_EventCallBackReg(1, event, ANY, 5, 0, 0, Victim));
    }
    const uint64_t messages = BlocksOf(0);
    const uint64_t blocks = kit::LiveBlocks();
    uint32_t task = 0;
    ASSERT_EQ(0u, QAL_CreateTask("EVNT", &task, UVEL_EVENT_Main, 85, 0, nullptr));

    std::atomic<uint64_t> sent{0};
    std::vector<std::thread> producers;
    const auto end = std::chrono::steady_clock::now() + duration;
    for (uint32_t producer = 0; producer < PRODUCERS; ++producer)
        producers.emplace_back([&sent, producer, end] { sent += Produce(producer, end); });
    for (std::thread &producer : producers)
        producer.join();

    for (int i = 0; i < 20000 && BlocksOf(0) != messages; ++i) /* the last message is freed behind its last callback */
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const QAL_QUEUE_STATS_S queue = QueueStats();
    RecordProperty("sent", std::to_string(sent.load()));
    RecordProperty("refused", std::to_string(queue.ulRefused));
    EXPECT_EQ(sent.load(), queue.ulWritten + queue.ulRefused);
    EXPECT_EQ(queue.ulWritten, queue.ulRead);
    EXPECT_EQ(queue.ulWritten, g_counts.delivered.load());
    EXPECT_GT(g_counts.delivered.load(), 1000u);
    EXPECT_GT(g_counts.moved.load(), 10u);
    EXPECT_EQ(0u, g_counts.badOrder.load());
    EXPECT_EQ(0u, g_counts.badData.load());
    EXPECT_EQ(messages, BlocksOf(0));
    EXPECT_EQ(blocks, kit::LiveBlocks()) << "moved, not multiplied";
}

} // namespace
