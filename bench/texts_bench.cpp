// Texts of MAC addresses, dates and hexadecimal data, each beside what a program would use without the library.
// Every loop walks through 65536 different inputs, so that no branch predictor learns them.

#include <array>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/crypto.h>
#include <uvelcommon_base/kivo_date.h>
#include <uvelcommon_base/kivo_hex.h>
#include <uvelcommon_base/kivo_mac.h>

namespace {

constexpr uint32_t INPUTS = 65536;
constexpr uint32_t SEED = 1970;

using Mac = std::array<uint8_t, SRV_MAC_SIZE>;

const std::vector<Mac> &Macs() {
    static const std::vector<Mac> macs = [] {
        std::mt19937 random(SEED);
        std::vector<Mac> made(INPUTS);
        for (Mac &mac : made) {
            for (uint8_t &byte : mac)
                byte = static_cast<uint8_t>(random());
        }
        return made;
    }();
    return macs;
}

template <typename F>
void ForEveryMac(benchmark::State &state, F &&write) {
    const std::vector<Mac> &macs = Macs();
    uint32_t i = 0;
    for (auto _ : state) {
        write(macs[i++ % INPUTS]);
        benchmark::ClobberMemory();
    }
}

} // namespace

#define MAC_ARGUMENTS(mac) mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]

static void MacGroups(benchmark::State &state) {
    alignas(16) char text[SRV_MAC_GROUP_TEXT_ROOM];
    ForEveryMac(state, [&](const Mac &mac) { benchmark::DoNotOptimize(SRV_MacAddrToStr(mac.data(), text)); });
}
BENCHMARK(MacGroups);

static void MacGroupsSnprintf(benchmark::State &state) {
    alignas(16) char text[SRV_MAC_GROUP_TEXT_ROOM];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%02x%02x-%02x%02x-%02x%02x", MAC_ARGUMENTS(mac)));
    });
}
BENCHMARK(MacGroupsSnprintf);

static void MacGroupsInRing(benchmark::State &state) {
    ForEveryMac(state, [](const Mac &mac) { benchmark::DoNotOptimize(SRV_MacAddrtoStr(mac.data())); });
}
BENCHMARK(MacGroupsInRing);

static void MacBytesInRing(benchmark::State &state) {
    ForEveryMac(state, [](const Mac &mac) { benchmark::DoNotOptimize(SRV_MacAddrtoStrByteSplit(mac.data())); });
}
BENCHMARK(MacBytesInRing);

static void MacBytesSnprintf(benchmark::State &state) {
    alignas(16) char text[SRV_MAC_TEXT_ROOM];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%02x-%02x-%02x-%02x-%02x-%02x", MAC_ARGUMENTS(mac)));
    });
}
BENCHMARK(MacBytesSnprintf);

static void MacPlain(benchmark::State &state) {
    alignas(16) char text[13];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(SRV_MacToStrWithoutHyphen(mac.data(), text, sizeof text));
    });
}
BENCHMARK(MacPlain);

static void MacPlainSnprintf(benchmark::State &state) {
    alignas(16) char text[13];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%02x%02x%02x%02x%02x%02x", MAC_ARGUMENTS(mac)));
    });
}
BENCHMARK(MacPlainSnprintf);

static void MacByFlags(benchmark::State &state) {
    alignas(16) char text[SRV_MAC_TEXT_ROOM];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(SRV_MacAddrToStrPswWithType(mac.data(), text, 1, 1, 1, 1));
    });
}
BENCHMARK(MacByFlags);

static void MacByFlagsSnprintf(benchmark::State &state) {
    alignas(16) char text[SRV_MAC_TEXT_ROOM];
    ForEveryMac(state, [&](const Mac &mac) {
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", MAC_ARGUMENTS(mac)));
    });
}
BENCHMARK(MacByFlagsSnprintf);

/* Texts of the canonical form. */
static const std::vector<std::array<char, 16>> &MacTexts() {
    static const std::vector<std::array<char, 16>> texts = [] {
        std::vector<std::array<char, 16>> made(INPUTS);
        for (uint32_t i = 0; i < INPUTS; ++i)
            (void)SRV_MacAddrToStr(Macs()[i].data(), made[i].data());
        return made;
    }();
    return texts;
}

static void MacRead(benchmark::State &state) {
    const auto &texts = MacTexts();
    Mac mac;
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SRV_MacStrToAddr(texts[i++ % INPUTS].data(), mac.data()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MacRead);

static void MacReadSscanf(benchmark::State &state) {
    const auto &texts = MacTexts();
    unsigned fields[SRV_MAC_SIZE];
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::sscanf(texts[i++ % INPUTS].data(), "%02x%02x-%02x%02x-%02x%02x", &fields[0],
                                             &fields[1], &fields[2], &fields[3], &fields[4], &fields[5]));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MacReadSscanf);

/* Dates of 1970 to 2105 as the library writes them. */
static const std::vector<std::array<char, 32>> &DateTexts() {
    static const std::vector<std::array<char, 32>> texts = [] {
        std::mt19937 random(SEED);
        const auto below = [&random](uint32_t end) { return static_cast<uint8_t>(random() % end); };
        std::vector<std::array<char, 32>> made(INPUTS);
        for (auto &text : made) {
            const SRV_DATE_S date = {static_cast<uint16_t>(1970 + random() % 136),
                                     static_cast<uint8_t>(1 + below(12)),
                                     static_cast<uint8_t>(1 + below(28)),
                                     below(24),
                                     below(60),
                                     below(60),
                                     below(7)};
            (void)SRV_DateToString(&date, text.data(), static_cast<uint32_t>(text.size()));
        }
        return made;
    }();
    return texts;
}

static void DateRead(benchmark::State &state) {
    const auto &texts = DateTexts();
    SRV_DATE_S date{};
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SRV_StringToDate(texts[i++ % INPUTS].data(), &date));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(DateRead);

static void DateReadSscanf(benchmark::State &state) {
    const auto &texts = DateTexts();
    char weekday[4];
    char month[4];
    unsigned numbers[5];
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::sscanf(texts[i++ % INPUTS].data(), "%3s, %u %3s %u %u:%u:%u", weekday,
                                             &numbers[0], month, &numbers[1], &numbers[2], &numbers[3], &numbers[4]));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(DateReadSscanf);

namespace {

constexpr uint32_t DATA = 1024;

/* Input i is the KiB that begins at byte i of one pool. */
const std::vector<uint8_t> &DataPool() {
    static const std::vector<uint8_t> pool = [] {
        std::mt19937 random(SEED);
        std::vector<uint8_t> made(INPUTS + DATA);
        for (uint8_t &byte : made)
            byte = static_cast<uint8_t>(random());
        return made;
    }();
    return pool;
}

/* Input i are the 2048 digits that begin at character i of one pool; a terminator stands behind them meanwhile. */
template <typename F>
void ForEveryHexText(benchmark::State &state, F &&read) {
    std::string pool(INPUTS + 2 * DATA + 1, '0');
    std::mt19937 random(SEED);
    for (char &digit : pool)
        digit = "0123456789ABCDEFabcdef"[random() % 22];
    uint32_t i = 0;
    for (auto _ : state) {
        char *const text = pool.data() + i++ % INPUTS;
        const char kept = std::exchange(text[2 * DATA], '\0');
        read(text);
        text[2 * DATA] = kept;
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * DATA);
}

} // namespace

static void HexToText(benchmark::State &state) {
    const std::vector<uint8_t> &pool = DataPool();
    std::vector<char> text(2 * DATA + 1);
    uint32_t length = 0;
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            SRVHEX_TransHexDataToString(&pool[i++ % INPUTS], DATA, text.data(), 2 * DATA + 1, &length));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * DATA);
}
BENCHMARK(HexToText);

static void HexToTextOpenssl(benchmark::State &state) {
    const std::vector<uint8_t> &pool = DataPool();
    std::vector<char> text(2 * DATA + 1);
    size_t length = 0;
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            OPENSSL_buf2hexstr_ex(text.data(), text.size(), &length, &pool[i++ % INPUTS], DATA, '\0'));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * DATA);
}
BENCHMARK(HexToTextOpenssl);

static void HexToData(benchmark::State &state) {
    std::vector<uint8_t> data(DATA);
    ForEveryHexText(state,
                    [&](const char *text) { benchmark::DoNotOptimize(SRVHEX_TransStringToData(text, data.data())); });
}
BENCHMARK(HexToData);

static void HexToDataOpenssl(benchmark::State &state) {
    std::vector<uint8_t> data(DATA);
    size_t length = 0;
    ForEveryHexText(state, [&](const char *text) {
        benchmark::DoNotOptimize(OPENSSL_hexstr2buf_ex(data.data(), data.size(), &length, text, '\0'));
    });
}
BENCHMARK(HexToDataOpenssl);
