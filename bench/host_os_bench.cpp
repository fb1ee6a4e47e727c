// The host's OS services beside what they stand on: memory accounts, queues, giving way.

#include <array>
#include <atomic>
#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <mutex>
#include <sched.h>
#include <thread>
#include <uvelhost/memory.h>
#include <uvelhost/queue.h>
#include <uvelhost/task.h>
#include <vector>
#ifdef BENCH_MIMALLOC
#include <mimalloc.h>
#endif

namespace {

using Element = std::array<uint32_t, 8>;
static_assert(sizeof(Element) == 32);

const uint32_t g_account = [] {
    uint32_t handle = 0;
    QAL_HandleInitialize("bench", &handle);
    return handle;
}();

uint32_t MakeQueue(uint32_t depth) {
    uint32_t queue = 0;
    if (QAL_QueueCreate("bench", depth, sizeof(Element), &queue) != 0)
        std::abort();
    return queue;
}

/* ---- memory

   Allocation and release of one block and of a hundred. The plain allocators are asked for as much as the host asks
   for: a block and the host's 16 bytes in front. One more block of the size lives all the time, as in a real process. */

/* The C library's allocator, also where another one has taken the place of malloc. */
struct CLibrary {
    static void *Symbol(const char *name) {
        void *library = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
        return library == nullptr ? nullptr : dlsym(library, name);
    }
    static inline auto *const s_malloc = reinterpret_cast<void *(*)(std::size_t)>(Symbol("malloc"));
    static inline auto *const s_free = reinterpret_cast<void (*)(void *)>(Symbol("free"));

    static void *Allocate(std::size_t size) { return s_malloc(size + 16); }
    static void Release(void *block) { s_free(block); }
};

#ifdef BENCH_MIMALLOC
struct Mimalloc {
    static void *Allocate(std::size_t size) { return mi_malloc(size + 16); }
    static void Release(void *block) { mi_free(block); }
};
#endif

struct Host {
    static void *Allocate(std::size_t size) { return QAL_MemAlloc(g_account, 0, static_cast<uint32_t>(size)); }
    static void Release(void *block) { QAL_MemFree(0, block); }
};

template <typename Memory>
void OneBlock(benchmark::State &state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    void *keeps_the_page = Memory::Allocate(size);
    for (auto _ : state) {
        void *block = Memory::Allocate(size);
        benchmark::DoNotOptimize(block);
        Memory::Release(block);
    }
    Memory::Release(keeps_the_page);
}

template <typename Memory>
void HundredBlocks(benchmark::State &state) {
    void *blocks[100];
    for (auto _ : state) {
        for (void *&block : blocks)
            benchmark::DoNotOptimize(block = Memory::Allocate(64));
        for (void *block : blocks)
            Memory::Release(block);
    }
    state.SetItemsProcessed(state.iterations() * 100);
}

#define MEMORY_BENCHMARKS(Memory)                                                                                      \
    BENCHMARK(OneBlock<Memory>)->Arg(64)->Arg(1024);                                                                   \
    BENCHMARK(OneBlock<Memory>)->Arg(64)->Threads(2)->UseRealTime();                                                   \
    BENCHMARK(HundredBlocks<Memory>)

MEMORY_BENCHMARKS(CLibrary);
#ifdef BENCH_MIMALLOC
MEMORY_BENCHMARKS(Mimalloc);
#endif
MEMORY_BENCHMARKS(Host);

/* ---- queues */

void QueueWriteRead(benchmark::State &state) {
    const uint32_t queue = MakeQueue(static_cast<uint32_t>(state.range(0)));
    Element element = {};
    for (auto _ : state) {
        QAL_QueueAsyWrite(queue, &element, sizeof element);
        QAL_QueueRead(queue, &element, sizeof element, 0);
    }
    QAL_QueueDelete(queue);
}
BENCHMARK(QueueWriteRead)->Arg(16)->Arg(10240);

/* A ring under a mutex with a condition variable, as one would write it first. */
class MutexRing {
  public:
    explicit MutexRing(std::size_t depth) : cells_(depth) {}

    bool Write(const Element &element) {
        {
            std::lock_guard lock(mutex_);
            if (used_ == cells_.size())
                return false;
            cells_[(first_ + used_++) % cells_.size()] = element;
        }
        filled_.notify_one();
        return true;
    }

    void Read(Element &element) {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [this] { return used_ != 0; });
        element = cells_[first_];
        first_ = first_ + 1 == cells_.size() ? 0 : first_ + 1;
        --used_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable filled_;
    std::vector<Element> cells_;
    std::size_t first_ = 0;
    std::size_t used_ = 0;
};

void MutexRingWriteRead(benchmark::State &state) {
    MutexRing ring(10240);
    Element element = {};
    for (auto _ : state) {
        ring.Write(element);
        ring.Read(element);
    }
}
BENCHMARK(MutexRingWriteRead);

/* One thread writes, the measuring thread reads; a full queue makes the writer give way. */
constexpr uint32_t HANDED_OVER = 1000000;

template <typename Write, typename Read>
void HandOver(benchmark::State &state, Write write, Read read) {
    for (auto _ : state) {
        std::thread writer([&] {
            Element element = {};
            for (uint32_t i = 0; i < HANDED_OVER; ++i) {
                element[0] = i;
                while (!write(element))
                    sched_yield();
            }
        });
        Element element = {};
        for (uint32_t i = 0; i < HANDED_OVER; ++i) {
            read(element);
            if (element[0] != i)
                state.SkipWithError("out of order");
        }
        writer.join();
    }
    state.SetItemsProcessed(state.iterations() * int64_t{HANDED_OVER});
}

void QueueHandOver(benchmark::State &state) {
    const uint32_t queue = MakeQueue(static_cast<uint32_t>(state.range(0)));
    HandOver(
        state, [=](const Element &e) { return QAL_QueueAsyWrite(queue, &e, sizeof e) == 0; },
        [=](Element &e) { QAL_QueueRead(queue, &e, sizeof e, UVELHOST_WAIT_FOREVER); });
    QAL_QueueDelete(queue);
}
BENCHMARK(QueueHandOver)->Arg(1024)->Arg(10240)->UseRealTime()->Unit(benchmark::kMillisecond);

void MutexRingHandOver(benchmark::State &state) {
    MutexRing ring(10240);
    HandOver(
        state, [&](const Element &e) { return ring.Write(e); }, [&](Element &e) { ring.Read(e); });
}
BENCHMARK(MutexRingHandOver)->UseRealTime()->Unit(benchmark::kMillisecond);

/* ---- giving way */

void CoarseClock(benchmark::State &state) {
    for (auto _ : state) {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        benchmark::DoNotOptimize(now);
    }
}
BENCHMARK(CoarseClock);

void TaskRunDelay(benchmark::State &state) {
    for (auto _ : state)
        QAL_TaskRunDelay(200, 20);
}
BENCHMARK(TaskRunDelay);

} // namespace
