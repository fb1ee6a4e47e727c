// Events: one thread sends, the event task calls back and frees; beside it GLib's queue between threads and
// boost::asio::post, carrying an allocated message of the same size. Time is that of the wall, for the two sides work at
// the same time and wait for each other's locks; beside it stands what either needed of its processor, which a busy
// machine disturbs less. Nobody is allowed to be more than a number of messages ahead.

#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <glib.h>
#include <pthread.h>
#include <thread>
#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/queue.h>
#include <uvelhost/task.h>
#include <vector>

namespace {

constexpr uint32_t EVENT = 20;
constexpr uint32_t LATENCY_EVENT = 21;
constexpr uint32_t WALK_EVENT = 1000;
constexpr uint64_t AHEAD = 8192;
constexpr uint32_t ANY = UVEL_EVENT_ANY_VALUE;

/* Written by the receiver alone. */
alignas(64) std::atomic<uint64_t> g_received{0};
alignas(64) std::atomic<int64_t> g_arrived{0};

/* The receiving thread, as soon as it has received. */
std::atomic<pthread_t> g_receiver{};

void Receive() {
    if (g_receiver.load(std::memory_order_relaxed) == 0) [[unlikely]]
        g_receiver.store(pthread_self());
    g_received.store(g_received.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

int64_t Now() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

void Arrive() {
    g_arrived.store(Now(), std::memory_order_release);
}

/* ---- this library ---- */

template <int>
uint32_t OnEvent(uint32_t, void *) {
    return 0;
}

uint32_t OnCounted(uint32_t, void *) {
    Receive();
    return 0;
}

uint32_t OnLatency(uint32_t, void *) {
    Arrive();
    return 0;
}

void StartEventTask() {
    static const bool once = [] {
        char folder[] = "/tmp/uvelhost-bench-XXXXXX";
        setenv("UVELHOST_RUN_DIR", mkdtemp(folder), 1);
        UVEL_EVENT_Api_SetGlobalVariable(1, 2, 3);
        UVEL_EVENT_CreateQueIpc();
        UVEL_EventCallBackReg(1, EVENT, ANY, 0, 0, 0, OnCounted);
        UVEL_EventCallBackReg(1, LATENCY_EVENT, ANY, 0, 0, 0, OnLatency);
        uint32_t task = 0;
        QAL_CreateTask("EVNT", &task, UVEL_EVENT_Main, 85, 0, nullptr);
        return true;
    }();
    benchmark::DoNotOptimize(once);
}

struct Events {
    Events() { StartEventTask(); }
    void Send(const void *data, uint32_t size) { UVEL_EVENT_Api_SendEventMsg(EVENT, 1, data, size); }
    void SendForLatency() { UVEL_EVENT_Api_SendEventMsg(LATENCY_EVENT, 1, nullptr, 0); }
};

/* ---- peers ---- */

/* What a program would queue: a header as ours and the data. */
struct Note {
    uint32_t what;
    uint32_t value;
    uint32_t reserved;
};

Note *MakeNote(uint32_t what, const void *data, uint32_t size) {
    auto *note = static_cast<Note *>(std::malloc(sizeof(Note) + size));
    *note = {what, 1, 0};
    if (size != 0)
        std::memcpy(note + 1, data, size);
    return note;
}

/* False when the note tells the receiver to stop. */
bool Handle(Note *note) {
    const uint32_t what = note->what;
    if (what == EVENT)
        Receive();
    else if (what == LATENCY_EVENT)
        Arrive();
    std::free(note);
    return what != 0;
}

struct GlibQueue {
    GlibQueue()
        : queue(g_async_queue_new()), thread([this] {
              while (Handle(static_cast<Note *>(g_async_queue_pop(queue)))) {
              }
          }) {}
    ~GlibQueue() {
        g_async_queue_push(queue, MakeNote(0, nullptr, 0));
        thread.join();
        g_async_queue_unref(queue);
    }
    void Send(const void *data, uint32_t size) { g_async_queue_push(queue, MakeNote(EVENT, data, size)); }
    void SendForLatency() { g_async_queue_push(queue, MakeNote(LATENCY_EVENT, nullptr, 0)); }

    GAsyncQueue *queue;
    std::thread thread;
};

struct AsioPost {
    AsioPost() : work(context.get_executor()), thread([this] { context.run(); }) {}
    ~AsioPost() {
        work.reset();
        thread.join();
    }
    void Send(const void *data, uint32_t size) { Post(MakeNote(EVENT, data, size)); }
    void SendForLatency() { Post(MakeNote(LATENCY_EVENT, nullptr, 0)); }
    void Post(Note *note) {
        boost::asio::post(context, [note] { Handle(note); });
    }

    boost::asio::io_context context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work;
    std::thread thread;
};

/* ---- throughput ---- */

double Seconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/* Waits, without giving the processor away, until the receiver has come as far; returns the time that took. */
double WaitFor(uint64_t received) {
    if (g_received.load(std::memory_order_acquire) >= received)
        return 0;
    const double begin = Seconds(CLOCK_THREAD_CPUTIME_ID);
    for (uint32_t i = 1; g_received.load(std::memory_order_acquire) < received; ++i)
        if (i % 65536 == 0)
            std::this_thread::yield();
    return Seconds(CLOCK_THREAD_CPUTIME_ID) - begin;
}

/* Sends and returns the processor time that it took, waiting for the receiver excluded. */
template <typename Road>
double SendAll(Road &road, const std::vector<char> &data, uint64_t count) {
    const double start = Seconds(CLOCK_THREAD_CPUTIME_ID);
    const uint64_t begin = g_received.load();
    const auto size = static_cast<uint32_t>(data.size());
    double waited = 0;
    for (uint64_t sent = 0; sent < count; ++sent) {
        if (sent % 256 == 0 && sent >= AHEAD)
            waited += WaitFor(begin + sent - AHEAD + 256);
        road.Send(size == 0 ? nullptr : data.data(), size);
    }
    waited += WaitFor(begin + count);
    return Seconds(CLOCK_THREAD_CPUTIME_ID) - start - waited;
}

/* Sends batches and says how long they took, and what either thread needed for them. */
template <typename Road>
void Measure(benchmark::State &state, Road &road, const std::vector<char> &data, uint64_t batch) {
    g_receiver.store(0);
    SendAll(road, data, batch / 10);
    clockid_t receiver;
    pthread_getcpuclockid(g_receiver.load(), &receiver);
    double sending = 0;
    double receiving = 0;
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(batch))) {
        const double begun = Seconds(CLOCK_MONOTONIC);
        const double received = Seconds(receiver);
        sending += SendAll(road, data, batch);
        receiving += Seconds(receiver) - received;
        state.SetIterationTime(Seconds(CLOCK_MONOTONIC) - begun);
    }
    const auto events = static_cast<double>(state.iterations());
    state.counters["send_ns"] = sending / events * 1e9;
    state.counters["receive_ns"] = receiving / events * 1e9;
    state.SetItemsProcessed(state.iterations());
}

template <typename Road>
void Throughput(benchmark::State &state) {
    Road road;
    const std::vector<char> data(static_cast<std::size_t>(state.range(0)), 'x');
    Measure(state, road, data, data.size() > 4096 ? 20000 : 100000);
}

void Sizes(benchmark::internal::Benchmark *it) {
    for (const int64_t size : {64, 0, 16, 256, 1024, 4096, 16384, 65536})
        it->Arg(size);
    it->UseManualTime();
}

BENCHMARK_TEMPLATE(Throughput, Events)->Apply(Sizes);
BENCHMARK_TEMPLATE(Throughput, GlibQueue)->Apply(Sizes);
BENCHMARK_TEMPLATE(Throughput, AsioPost)->Apply(Sizes);

/* ---- latency of a single event while nothing else goes on ---- */

template <typename Road>
void Latency(benchmark::State &state) {
    Road road;
    std::vector<int64_t> times;
    for (auto _ : state) {
        std::this_thread::sleep_for(std::chrono::microseconds(200)); /* the receiver is asleep */
        g_arrived.store(0, std::memory_order_release);
        const int64_t begin = Now();
        road.SendForLatency();
        int64_t arrived;
        while ((arrived = g_arrived.load(std::memory_order_acquire)) == 0)
            std::this_thread::yield();
        times.push_back(arrived - begin);
        state.SetIterationTime(static_cast<double>(arrived - begin) * 1e-9);
    }
    std::sort(times.begin(), times.end());
    state.counters["p50_us"] = static_cast<double>(times[times.size() / 2]) / 1e3;
    state.counters["p99_us"] = static_cast<double>(times[times.size() * 99 / 100]) / 1e3;
}

BENCHMARK_TEMPLATE(Latency, Events)->UseManualTime()->Iterations(2000);
BENCHMARK_TEMPLATE(Latency, GlibQueue)->UseManualTime()->Iterations(2000);
BENCHMARK_TEMPLATE(Latency, AsioPost)->UseManualTime()->Iterations(2000);

/* ---- the walk over the callbacks ---- */

constexpr uint32_t MOST_CALLBACKS = 1000;

/* Registered under as many module ids, so one function stands for all of them. */
uint32_t WalkEvent(uint32_t callbacks) {
    const uint32_t event = WALK_EVENT + (callbacks == 1 ? 0 : callbacks == 10 ? 1 : callbacks == 100 ? 2 : 3);
    for (uint32_t mid = 1; mid <= callbacks; ++mid)
        UVEL_EventCallBackReg(mid, event, ANY, 0, 0, 0, OnEvent<0>);
    return event;
}

void Notify(benchmark::State &state) {
    const auto callbacks = static_cast<uint32_t>(state.range(0));
    const uint32_t event = WalkEvent(callbacks);
    while (state.KeepRunningBatch(callbacks))
        benchmark::DoNotOptimize(UVEL_EventCallBackNotify(event, 1, nullptr));
}

/* The callbacks themselves, called one after another. */
void CallbacksAlone(benchmark::State &state) {
    const auto callbacks = static_cast<uint32_t>(state.range(0));
    std::vector<UVEL_EVENT_CALLBACK> functions(MOST_CALLBACKS, OnEvent<0>);
    benchmark::DoNotOptimize(functions.data());
    while (state.KeepRunningBatch(callbacks)) {
        benchmark::ClobberMemory();
        for (uint32_t i = 0; i < callbacks; ++i)
            benchmark::DoNotOptimize(functions[i](1, nullptr));
    }
}

BENCHMARK(Notify)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(CallbacksAlone)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

/* The whole road with so many callbacks behind each event, the last of them counting. */
struct EventsToMany : Events {
    explicit EventsToMany(uint32_t callbacks) : event(WALK_EVENT + 10 + callbacks % 97) {
        for (uint32_t mid = 2; mid <= callbacks; ++mid)
            UVEL_EventCallBackReg(mid, event, ANY, 1, 0, 0, OnEvent<1>);
        UVEL_EventCallBackReg(1, event, ANY, 0, 0, 0, OnCounted);
    }
    void Send(const void *data, uint32_t size) { UVEL_EVENT_Api_SendEventMsg(event, 1, data, size); }

    const uint32_t event;
};

void ThroughputByCallbacks(benchmark::State &state) {
    const auto callbacks = static_cast<uint32_t>(state.range(0));
    EventsToMany road(callbacks);
    const std::vector<char> data(64, 'x');
    Measure(state, road, data, 100000 / callbacks + 100);
}

BENCHMARK(ThroughputByCallbacks)->Arg(1)->Arg(3)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->Arg(1000)->UseManualTime();

} // namespace
