#include "kit.h"

#include "../host/quiet_fork.h"
#include "allocation_fault.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
/* Present only in builds that count coverage or look for leaks. */
__attribute__((weak)) void __gcov_dump(void);
__attribute__((weak)) int __lsan_do_recoverable_leak_check(void);
}

namespace kit {

namespace {

struct Log {
    bool active = false;
    std::vector<std::string> prefixes;
    std::vector<std::string> calls;
};

Log &TheLog() {
    static Log log;
    return log;
}

std::vector<void (*)()> &Resets() {
    static std::vector<void (*)()> resets;
    return resets;
}

std::vector<std::string> &Asserts() {
    static std::vector<std::string> asserts;
    return asserts;
}

std::vector<std::string> &Fatals() {
    static std::vector<std::string> fatals;
    return fatals;
}

/* What every test starts with: assertions and fatal errors are kept for the test to take. */
void Prepare() {
    for (void (*reset)() : Resets())
        reset();
    Op<qal_assert>().Does([](const char *source, uint32_t) {
        std::lock_guard lock(detail::Mutex());
        Asserts().emplace_back(source);
    });
    Op<QALFatalError_X>().Does([](const char *source, uint32_t) {
        std::lock_guard lock(detail::Mutex());
        Fatals().emplace_back(source);
    });
}

void JudgeLeftovers() {
    for (const std::string &source : TakeAsserts())
        ADD_FAILURE() << "the library asserted: " << source;
    for (const std::string &source : TakeFatals())
        ADD_FAILURE() << "the library raised a fatal error: " << source;
}

class Guard : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override { Prepare(); }
    void OnTestEnd(const testing::TestInfo &) override {
        JudgeLeftovers();
        Prepare();
    }
};

} // namespace

namespace detail {

std::recursive_mutex &Mutex() {
    static std::recursive_mutex mutex;
    return mutex;
}

std::string RenderNumber(uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, value <= 65535 ? "%llu" : "0x%llX", static_cast<unsigned long long>(value));
    return text;
}

std::string RenderText(const char *text) {
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

std::string RenderPointer(const void *pointer) {
    return pointer == nullptr ? "null" : "ptr";
}

std::string RenderFunction(const void *function) {
    if (function == nullptr)
        return "null";
    Dl_info info{};
    return dladdr(function, &info) != 0 && info.dli_sname != nullptr && info.dli_saddr == function ? info.dli_sname
                                                                                                   : "function";
}

bool Recording(const char *operation) {
    const Log &log = TheLog();
    if (!log.active)
        return false;
    return log.prefixes.empty() ||
           std::any_of(log.prefixes.begin(), log.prefixes.end(),
                       [&](const std::string &prefix) { return std::string(operation).starts_with(prefix); });
}

void Record(std::string call) {
    TheLog().calls.push_back(std::move(call));
}

void AddReset(void (*reset)()) {
    Resets().push_back(reset);
}

void *RealOperation(const char *name) {
    return dlsym(RTLD_NEXT, name);
}

} // namespace detail

Recorder::Recorder(std::vector<std::string> prefixes) {
    std::lock_guard lock(detail::Mutex());
    TheLog() = Log{true, std::move(prefixes), {}};
}

Recorder::~Recorder() {
    std::lock_guard lock(detail::Mutex());
    TheLog() = Log{};
}

std::vector<std::string> Recorder::Calls() const {
    std::lock_guard lock(detail::Mutex());
    return TheLog().calls;
}

void Recorder::Clear() {
    std::lock_guard lock(detail::Mutex());
    TheLog().calls.clear();
}

std::vector<std::string> TakeAsserts() {
    std::lock_guard lock(detail::Mutex());
    return std::exchange(Asserts(), {});
}

std::vector<std::string> TakeFatals() {
    std::lock_guard lock(detail::Mutex());
    return std::exchange(Fatals(), {});
}

uint64_t LiveBlocks() {
    QAL_MEM_STATS_S stats{};
    for (uint32_t handle = 0; QAL_MemGetStats(handle, &stats) == 0; ++handle) {
        if (std::string(stats.szName) == "nac-util")
            return stats.ulBlocks;
    }
    return 0;
}

uint64_t LiveBlocksOfAllAccounts() {
    uint64_t blocks = 0;
    QAL_MEM_STATS_S stats{};
    for (uint32_t handle = 0; QAL_MemGetStats(handle, &stats) == 0; ++handle)
        blocks += stats.ulBlocks;
    return blocks;
}

int StatusOfFreshProcess(const std::function<void()> &body) {
    std::fflush(nullptr);
    const pid_t child = quiet_fork::QuietFork();
    if (child == 0) {
        body();
        JudgeLeftovers();
        bool failed = testing::Test::HasFailure();
        if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0)
            failed = true;
        if (__gcov_dump != nullptr)
            __gcov_dump();
        std::fflush(nullptr);
        _exit(failed ? 1 : 0);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child)
        ADD_FAILURE() << "no child process";
    return status;
}

void InFreshProcess(const std::function<void()> &body) {
    const int status = StatusOfFreshProcess(body);
    EXPECT_TRUE(WIFEXITED(status)) << "the child ended by signal " << WTERMSIG(status);
    EXPECT_TRUE(!WIFEXITED(status) || WEXITSTATUS(status) == 0) << "the child failed, see above";
}

namespace {

struct SweepReport {
    uint64_t allocations;
    uint64_t liveBlocks;
};

/* One run of the scenario in a child; what it counted comes back through a pipe. */
SweepReport RunFaulted(uint64_t first, uint64_t last, const std::function<void()> &scenario,
                       const std::function<void()> &after) {
    int ends[2];
    EXPECT_EQ(0, pipe(ends));
    InFreshProcess([&] {
        uint64_t seen = 0;
        {
            AllocationFault fault(first, last);
            scenario();
            seen = fault.Seen();
        }
        TakeAsserts();
        TakeFatals();
        after();
        const SweepReport report{seen, LiveBlocks()};
        EXPECT_EQ(static_cast<ssize_t>(sizeof report), write(ends[1], &report, sizeof report));
    });
    close(ends[1]);
    SweepReport report{};
    EXPECT_EQ(static_cast<ssize_t>(sizeof report), read(ends[0], &report, sizeof report));
    close(ends[0]);
    return report;
}

} // namespace

int SweepAllocations(const std::function<void()> &scenario, const std::function<void()> &after) {
    const SweepReport clean = RunFaulted(UINT64_MAX, UINT64_MAX, scenario, after);
    int injected = 0;
    for (uint64_t k = 1; k <= clean.allocations; ++k) {
        for (const uint64_t last : {k, UINT64_MAX}) {
            const SweepReport report = RunFaulted(k, last, scenario, after);
            EXPECT_LE(report.liveBlocks, clean.liveBlocks) << "memory lost when allocation " << k << " fails";
            ++injected;
            if (testing::Test::HasFailure())
                return injected;
        }
    }
    return injected;
}

} // namespace kit

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new kit::Guard);
    return RUN_ALL_TESTS();
}
