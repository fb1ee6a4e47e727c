// The hot-standby link between two processes over loopback, beside ZeroMQ with CURVE and beside what bounds it: TLS alone,
// the cipher alone, and plain TCP with batched writes.
//
//     standby_bench [ROUNDS]    messages of 64 bytes and 64 KiB, all of them, several rounds in turn; medians
//     standby_bench link|zmq|tls|cipher|tcp SIZE COUNT    one of them alone, for a profiler
//     standby_bench batch       a batch backup of 10,000 to 1,000,000 records of 128 bytes to a fresh peer

#include "carriers.h"
#include "child.h"
#include "standby_hooks.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelhost/standby_link.h>
#include <vector>

namespace {

using namespace standby_bench;

struct Result {
    double messages_per_second;
    double bytes_per_second;
    double processor_ns; /* of both processes, for a message */
};

/* Processor time of this process and of the children that have ended. */
double ProcessorSeconds() {
    double seconds = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval &time : {usage.ru_utime, usage.ru_stime})
            seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    return seconds;
}

/* `body` gives the seconds that `count` messages took. */
template <typename Body>
Result Measure(uint64_t count, uint32_t size, Body body) {
    const double before = ProcessorSeconds();
    const double seconds = body();
    const double messages = static_cast<double>(count);
    return {messages / seconds, messages * size / seconds, (ProcessorSeconds() - before) / messages * 1e9};
}

/* The median of each column for itself. */
Result Median(const std::vector<Result> &results) {
    const auto median = [&](double Result::*column) {
        std::vector<double> values;
        for (const Result &result : results)
            values.push_back(result.*column);
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    return {median(&Result::messages_per_second), median(&Result::bytes_per_second), median(&Result::processor_ns)};
}

struct Carrier {
    const char *name;
    const char *text;
    double (*run)(uint64_t count, uint32_t size);
    uint64_t small, large; /* messages of 64 bytes and of 64 KiB: about half a second each; 0 leaves it out */
};

constexpr Carrier CARRIERS[] = {
    {"link", "link", [](uint64_t count, uint32_t size) { return RunLink(count, size); }, 1'500'000, 12'000},
    {"cut", "link, cut into packets of 1,400 bytes",
     [](uint64_t count, uint32_t size) { return RunLink(count, size, 1400); }, 0, 12'000},
    {"zmq", "ZeroMQ, CURVE", RunZmq, 400'000, 5'000},
    {"tls", "TLS 1.3 alone, nothing kept, writes of 256 KiB", RunTls, 8'000'000, 12'000},
    {"cipher", "its cipher alone, over TCP", RunCipher, 8'000'000, 12'000},
    {"tcp", "plain TCP, not encrypted, writes of 256 KiB", RunTcp, 10'000'000, 20'000},
};

void Traffic(int rounds) {
    std::printf(
        "| messages | carried by | messages/s | MB/s | beside ZeroMQ | processor, ns a message | beside ZeroMQ |\n"
        "|---|---|---|---|---|---|---|\n");
    for (const uint32_t size : {64u, 65536u}) {
        std::vector<Result> results[std::size(CARRIERS)];
        const auto count = [&](const Carrier &carrier) { return size == 64 ? carrier.small : carrier.large; };
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < std::size(CARRIERS); ++i) {
                const Carrier &carrier = CARRIERS[i];
                if (count(carrier) != 0)
                    results[i].push_back(
                        Measure(count(carrier), size, [&] { return carrier.run(count(carrier), size); }));
            }
        }
        const Result peer = Median(results[2]);
        for (std::size_t i = 0; i < std::size(CARRIERS); ++i) {
            if (results[i].empty())
                continue;
            const Result result = Median(results[i]);
            std::printf("| %u bytes | %s | %.0f | %.0f | %.2f × | %.0f | %.2f × |\n", size, CARRIERS[i].text,
                        result.messages_per_second, result.bytes_per_second / 1e6,
                        result.messages_per_second / peer.messages_per_second, result.processor_ns,
                        peer.processor_ns / result.processor_ns);
        }
    }
}

void Batches() {
    std::printf("| records of 128 bytes | seconds | records/s |\n|---|---|---|\n");
    for (const uint64_t records : {10'000, 31'623, 100'000, 316'228, 1'000'000}) {
        const double seconds = RunBatch(records);
        std::printf("| %llu | %.3f | %.0f |\n", static_cast<unsigned long long>(records), seconds,
                    static_cast<double>(records) / seconds);
    }
}

void Alone(const char *name, uint32_t size, uint64_t count) {
    const auto *carrier = std::find_if(std::begin(CARRIERS), std::end(CARRIERS),
                                       [&](const Carrier &one) { return std::strcmp(one.name, name) == 0; });
    if (carrier == std::end(CARRIERS))
        Fail("nothing has this name");
    const Result result = Measure(count, size, [&] { return carrier->run(count, size); });
    std::printf("%.0f messages/s, %.0f MB/s, %.0f ns of processor a message\n", result.messages_per_second,
                result.bytes_per_second / 1e6, result.processor_ns);
}

} // namespace

int main(int argc, char **argv) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    char folder[] = "/tmp/standby_bench.XXXXXX";
    char error[256] = "";
    if (mkdtemp(folder) == nullptr || YSB_Link_MakeKeys(folder, "a", "b", 1, error, sizeof error) != 0)
        Fail(error);
    g_keys = folder;
    (void)UVEL_GlobalVarInit();
    KIVO_VirtualToHook();
    uvel::apps::InstallStandbyHooks();
    if (argc > 1 && std::strcmp(argv[1], "batch") == 0)
        Batches();
    else if (argc > 3)
        Alone(argv[1], static_cast<uint32_t>(std::atoi(argv[2])), std::strtoull(argv[3], nullptr, 10));
    else
        Traffic(argc > 1 ? std::max(1, std::atoi(argv[1])) : 5);
    std::filesystem::remove_all(folder);
    return 0;
}
