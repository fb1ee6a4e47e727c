// Texts of IPv4 and IPv6 addresses, each beside glibc's conversion. Every loop walks through 65536 different inputs, so
// that no branch predictor learns them.

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <uvelcommon_base/kivo_inet.h>

namespace {

constexpr uint32_t INPUTS = 65536;
constexpr uint32_t SEED = 29;

using Packed4 = std::array<uint8_t, KIVO_INET_V4_SIZE>;
using Packed6 = std::array<uint8_t, KIVO_INET_V6_SIZE>;

/* The addresses a router sees: their kinds differ in length and in where the zeros are. */
enum class Kind { RANDOM, GLOBAL, LINK_LOCAL, SERVER, ZERO_RUN, MAPPED, MULTICAST, SHORT_WORDS, COUNT };

uint32_t WordOf(Kind kind, uint32_t i, uint32_t random, uint32_t shape) {
    switch (kind) {
    case Kind::GLOBAL: /* 2001:db8:x:x:x:x:x:x */
        return i == 0 ? 0x2001 : i == 1 ? 0x0DB8 : random;
    case Kind::LINK_LOCAL: /* fe80::x:xxff:fexx:x */
        return i == 0 ? 0xFE80 : i < 4 ? 0 : i == 5 ? random | 0xFF : i == 6 ? 0xFE00 | (random & 0xFF) : random;
    case Kind::SERVER: /* 2001:db8::x */
        return i == 0 ? 0x2001 : i == 1 ? 0x0DB8 : i < 7 ? 0 : random;
    case Kind::ZERO_RUN: { /* two to seven zeros anywhere */
        const uint32_t length = 2 + shape % 6;
        const uint32_t start = shape / 6 % (9 - length);
        return i >= start && i < start + length ? 0 : random;
    }
    case Kind::MAPPED: /* ::ffff:10.1.2.3 */
        return i < 5 ? 0 : i == 5 ? 0xFFFF : random;
    case Kind::MULTICAST: /* ff02::1:ffxx:x */
        return i == 0 ? 0xFF02 : i < 5 ? 0 : i == 5 ? 1 : i == 6 ? random | 0xFF00 : random;
    case Kind::SHORT_WORDS: /* words of one to four digits */
        return random >> (shape >> (2 * i) & 3) * 4;
    default:
        return random;
    }
}

/* A table of addresses and their texts. */
template <typename Packed, uint32_t ROOM>
struct Inputs {
    std::vector<Packed> packed;
    std::vector<std::array<char, ROOM>> texts;
};

const Inputs<Packed4, KIVO_INET_V4_ROOM> &Inputs4() {
    static const auto inputs = [] {
        std::mt19937 random(SEED);
        Inputs<Packed4, KIVO_INET_V4_ROOM> made{std::vector<Packed4>(INPUTS), {}};
        made.texts.resize(INPUTS);
        for (uint32_t i = 0; i < INPUTS; ++i) {
            const auto number = static_cast<uint32_t>(random());
            std::memcpy(made.packed[i].data(), &number, sizeof number);
            inet_ntop(AF_INET, made.packed[i].data(), made.texts[i].data(), KIVO_INET_V4_ROOM);
        }
        return made;
    }();
    return inputs;
}

/* Addresses of one kind, or of all kinds in random order. */
const Inputs<Packed6, KIVO_INET_V6_ROOM> &Inputs6(Kind kind) {
    static std::array<Inputs<Packed6, KIVO_INET_V6_ROOM>, static_cast<std::size_t>(Kind::COUNT) + 1> all;
    auto &made = all[static_cast<std::size_t>(kind)];
    if (!made.packed.empty())
        return made;
    std::mt19937 random(SEED);
    made.packed.resize(INPUTS);
    made.texts.resize(INPUTS);
    for (uint32_t i = 0; i < INPUTS; ++i) {
        const Kind one = kind == Kind::COUNT ? static_cast<Kind>(random() % static_cast<uint32_t>(Kind::COUNT)) : kind;
        const auto shape = static_cast<uint32_t>(random());
        for (uint32_t k = 0; k < 8; ++k) {
            const uint32_t word = WordOf(one, k, static_cast<uint32_t>(random()) & 0xFFFF, shape);
            made.packed[i][2 * k] = static_cast<uint8_t>(word >> 8);
            made.packed[i][2 * k + 1] = static_cast<uint8_t>(word);
        }
        inet_ntop(AF_INET6, made.packed[i].data(), made.texts[i].data(), KIVO_INET_V6_ROOM);
    }
    return made;
}

template <typename Table, typename F>
void Read(benchmark::State &state, const Table &inputs, F &&read) {
    alignas(16) Packed6 packed;
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(read(inputs.texts[i++ % INPUTS].data(), packed.data()));
        benchmark::ClobberMemory();
    }
}

template <typename Table, typename F>
void Write(benchmark::State &state, const Table &inputs, F &&write) {
    alignas(16) char text[KIVO_INET_V6_ROOM];
    uint32_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(inputs.packed[i++ % INPUTS].data(), text));
        benchmark::ClobberMemory();
    }
}

int Glibc4(const char *text, uint8_t *packed) {
    return inet_pton(AF_INET, text, packed);
}

int Glibc6(const char *text, uint8_t *packed) {
    return inet_pton(AF_INET6, text, packed);
}

template <int FAMILY>
const char *GlibcText(const uint8_t *packed, char *text) {
    return inet_ntop(FAMILY, packed, text, KIVO_INET_V6_ROOM);
}

char *Text4(const uint8_t *packed, char *text) {
    return kivo_inet_ntop4(packed, text, KIVO_INET_V6_ROOM);
}

char *Text6(const uint8_t *packed, char *text) {
    return kivo_inet_ntop6(packed, text, KIVO_INET_V6_ROOM);
}

} // namespace

static void Pton4(benchmark::State &state) {
    Read(state, Inputs4(), kivo_inet_pton4);
}
BENCHMARK(Pton4);

static void Pton4Glibc(benchmark::State &state) {
    Read(state, Inputs4(), Glibc4);
}
BENCHMARK(Pton4Glibc);

static void Ntop4(benchmark::State &state) {
    Write(state, Inputs4(), Text4);
}
BENCHMARK(Ntop4);

static void Ntop4Glibc(benchmark::State &state) {
    Write(state, Inputs4(), GlibcText<AF_INET>);
}
BENCHMARK(Ntop4Glibc);

static void Pton6(benchmark::State &state, Kind kind) {
    Read(state, Inputs6(kind), kivo_inet_pton6);
}

static void Pton6Glibc(benchmark::State &state, Kind kind) {
    Read(state, Inputs6(kind), Glibc6);
}

static void Ntop6(benchmark::State &state, Kind kind) {
    Write(state, Inputs6(kind), Text6);
}

static void Ntop6Glibc(benchmark::State &state, Kind kind) {
    Write(state, Inputs6(kind), GlibcText<AF_INET6>);
}

BENCHMARK_CAPTURE(Pton6, all_kinds, Kind::COUNT);
BENCHMARK_CAPTURE(Pton6Glibc, all_kinds, Kind::COUNT);
BENCHMARK_CAPTURE(Pton6, random, Kind::RANDOM);
BENCHMARK_CAPTURE(Pton6Glibc, random, Kind::RANDOM);
BENCHMARK_CAPTURE(Pton6, server, Kind::SERVER);
BENCHMARK_CAPTURE(Pton6Glibc, server, Kind::SERVER);
BENCHMARK_CAPTURE(Ntop6, all_kinds, Kind::COUNT);
BENCHMARK_CAPTURE(Ntop6Glibc, all_kinds, Kind::COUNT);
BENCHMARK_CAPTURE(Ntop6, random, Kind::RANDOM);
BENCHMARK_CAPTURE(Ntop6Glibc, random, Kind::RANDOM);
BENCHMARK_CAPTURE(Ntop6, server, Kind::SERVER);
BENCHMARK_CAPTURE(Ntop6Glibc, server, Kind::SERVER);
