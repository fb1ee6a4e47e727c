// The hot-standby link between two processes over loopback, beside ZeroMQ with CURVE and plain TCP with batched writes.
//
//     standby_bench             messages of 64 bytes and 64 KiB, all three, several rounds in turn; medians
//     standby_bench link SIZE COUNT    the link alone, for a profiler
//     standby_bench batch       a batch backup of 10,000 to 1,000,000 records of 128 bytes to a fresh peer

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelhost/standby_link.h>
#include <vector>
#include <zmq.h>

#include "standby_hooks.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr uint32_t MODULE = 0x00990000;
constexpr uint32_t HEADER = 48;

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

[[noreturn]] void Fail(const char *what) {
    std::fprintf(stderr, "standby_bench: %s\n", what);
    std::exit(1);
}

/* A child process that talks to its parent through one pipe each way. */
struct Child {
    pid_t pid = -1;
    int to = -1;
    int from = -1;

    template <typename T>
    T Get() const {
        T value;
        if (read(from, &value, sizeof value) != sizeof value)
            Fail("the other process ended early");
        return value;
    }
    void End() {
        close(to);
        close(from);
        int status = 0;
        waitpid(pid, &status, 0);
        if (status != 0)
            Fail("the other process failed");
    }
};

template <typename T>
void Tell(int descriptor, const T &value) {
    if (write(descriptor, &value, sizeof value) != sizeof value)
        std::_Exit(1);
}

Child Start(const std::function<void(int from, int to)> &body) {
    int to[2];
    int from[2];
    if (pipe(to) != 0 || pipe(from) != 0)
        Fail("no pipe");
    Child child;
    child.pid = fork();
    if (child.pid == 0) {
        close(to[1]);
        close(from[0]);
        body(to[0], from[1]);
        std::_Exit(0);
    }
    close(to[0]);
    close(from[1]);
    child.to = to[1];
    child.from = from[0];
    return child;
}

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

/* ---- the link */

std::string g_keys;

struct Receiver {
    std::atomic<uint64_t> messages{0};
    std::atomic<uint64_t> bytes{0};
    std::atomic<uint32_t> batches{0};
    uint64_t digest = 0; /* of what came, in order */
    uvel::apps::MessageAssembler assembler;
};

/* The digest of a row of records, one after the other: each begins with its number. */
uint64_t Digest(uint64_t before, const uint8_t *record) {
    uint64_t number;
    std::memcpy(&number, record, sizeof number);
    return before * 0x9E3779B97F4A7C15U + number + 1;
}

void TakeMessage(void *context, uint32_t, uint8_t, YSB_SMBUF_S *smbuf, uint32_t length) {
    auto *receiver = static_cast<Receiver *>(context);
    void *message = receiver->assembler.Take(smbuf, length);
    if (message == nullptr)
        return;
    CHI_MSG_INFO_S info{};
    (void)CHI_GetMsgInfo(CHI_BACK_YSB, message, &info);
    receiver->digest = Digest(receiver->digest, static_cast<const uint8_t *>(CBUF_C2D(CHI_BACK_YSB, message)));
    receiver->bytes.store(receiver->bytes.load(std::memory_order_relaxed) + info.ulTotalLength,
                          std::memory_order_relaxed);
    receiver->messages.store(receiver->messages.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    CBUF_Free(CHI_BACK_YSB, message);
}

std::atomic<uint32_t> g_delivered{0};
std::function<void()> g_send_all;

YSB_LINK_CONFIG_S Config(const char *name, const char *peer, void *context) {
    static std::string certificate, key, authority;
    certificate = g_keys + "/" + name + ".pem";
    key = g_keys + "/" + name + ".key";
    authority = g_keys + "/authority.pem";
    YSB_LINK_CONFIG_S config{};
    config.pszCertificate = certificate.c_str();
    config.pszKey = key.c_str();
    config.pszAuthority = authority.c_str();
    config.pszPeerName = peer;
    config.ulRetryMinMs = 10;
    config.ulRetryMaxMs = 20;
    config.ulTimeoutMs = 20000; /* a busy machine is no dead peer */
    config.ulSendWaitMs = 20000;
    config.pContext = context;
    config.pfReceive = TakeMessage;
    config.pfBatch = [](void *, uint32_t batch) {
        if (g_send_all)
            g_send_all();
        (void)YSB_Link_BatchDone(batch);
    };
    config.pfBatchDelivered = [](void *, uint32_t) { g_delivered.fetch_add(1); };
    config.pfPeerBatch = [](void *receiver, uint32_t begins) {
        if (begins == 0)
            static_cast<Receiver *>(receiver)->batches.fetch_add(1);
    };
    return config;
}

void OpenLink(const YSB_LINK_CONFIG_S &config) {
    char error[256] = "";
    if (YSB_Link_Open(&config, error, sizeof error) != 0)
        Fail(error);
}

void SendMessage(uint32_t size, const uint8_t *payload) {
    void *buffer = nullptr;
    if (CBUF_Alloc(CHI_BACK_YSB, &buffer, size) != KIVO_OK)
        Fail("no buffer");
    std::memcpy(CBUF_C2D(CHI_BACK_YSB, buffer), payload, size);
    CHI_MSG_INFO_S info{};
    info.ulTotalLength = size;
    info.ulMsgType = 3;
    (void)CHI_SetMsgInfo(CHI_BACK_YSB, buffer, &info);
    (void)CHI_YSB_OutputPacket(MODULE, reinterpret_cast<uintptr_t>(buffer), CHI_ANY_CHANNEL, HEADER + size);
}

Child StartReceiver(uint64_t expected, uint32_t batches) {
    return Start([=](int from, int to) {
        (void)UVEL_GlobalVarInit();
        KIVO_VirtualToHook();
        uvel::apps::InstallStandbyHooks();
        static Receiver receiver;
        YSB_LINK_CONFIG_S config = Config("b", "a", &receiver);
        config.pszListen = "127.0.0.1:0";
        OpenLink(config);
        YSB_LINK_STATE_S state{};
        (void)YSB_Link_GetState(&state);
        Tell(to, state.ulPort);
        while (receiver.messages.load(std::memory_order_acquire) < expected || receiver.batches.load() < batches)
            std::this_thread::sleep_for(200us);
        Tell(to, receiver.digest);
        char end;
        (void)!read(from, &end, 1); /* the parent closes when it has measured */
        YSB_Link_Close();
    });
}

double RunLink(uint64_t count, uint32_t size, uint32_t mtu) {
    Child receiver = StartReceiver(count, 1);
    const std::string peer = "127.0.0.1:" + std::to_string(receiver.Get<uint32_t>());
    static Receiver own;
    YSB_LINK_CONFIG_S config = Config("a", "b", &own);
    config.pszPeer = peer.c_str();
    config.ulMtu = mtu;
    g_delivered = 0;
    OpenLink(config);
    while (g_delivered.load() == 0)
        std::this_thread::sleep_for(1ms);
    const std::vector<uint8_t> payload(size, 0x5A);
    const auto begin = Clock::now();
    for (uint64_t i = 0; i < count; ++i)
        SendMessage(size, payload.data());
    (void)receiver.Get<uint64_t>();
    const double seconds = Seconds(Clock::now() - begin);
    YSB_LINK_COUNTERS_S counters{};
    (void)YSB_Link_GetCounters(&counters);
    if (counters.ulMessagesSent != count)
        Fail("the link refused messages");
    YSB_Link_Close();
    receiver.End();
    return seconds;
}

/* ---- ZeroMQ */

double RunZmq(uint64_t count, uint32_t size) {
    char server_public[41], server_secret[41], client_public[41], client_secret[41];
    if (zmq_curve_keypair(server_public, server_secret) != 0 || zmq_curve_keypair(client_public, client_secret) != 0)
        Fail("ZeroMQ without CURVE");
    Child receiver = Start([&](int, int to) {
        void *context = zmq_ctx_new();
        void *socket = zmq_socket(context, ZMQ_PULL);
        const int one = 1;
        const int mark = 100000;
        zmq_setsockopt(socket, ZMQ_CURVE_SERVER, &one, sizeof one);
        zmq_setsockopt(socket, ZMQ_CURVE_SECRETKEY, server_secret, 40);
        zmq_setsockopt(socket, ZMQ_RCVHWM, &mark, sizeof mark);
        if (zmq_bind(socket, "tcp://127.0.0.1:*") != 0)
            std::_Exit(1);
        char endpoint[64] = {};
        std::size_t length = sizeof endpoint;
        zmq_getsockopt(socket, ZMQ_LAST_ENDPOINT, endpoint, &length);
        if (write(to, endpoint, sizeof endpoint) != sizeof endpoint)
            std::_Exit(1);
        zmq_msg_t message;
        for (uint64_t i = 0; i <= count; ++i) { /* the first one only connects */
            zmq_msg_init(&message);
            if (zmq_msg_recv(&message, socket, 0) < 0)
                std::_Exit(1);
            zmq_msg_close(&message);
            if (i == 0)
                Tell(to, i);
        }
        Tell(to, count);
        zmq_close(socket);
        zmq_ctx_term(context);
    });
    struct Endpoint {
        char text[64];
    };
    const auto endpoint = receiver.Get<Endpoint>();
    void *context = zmq_ctx_new();
    void *socket = zmq_socket(context, ZMQ_PUSH);
    const int mark = 100000;
    zmq_setsockopt(socket, ZMQ_CURVE_SERVERKEY, server_public, 40);
    zmq_setsockopt(socket, ZMQ_CURVE_PUBLICKEY, client_public, 40);
    zmq_setsockopt(socket, ZMQ_CURVE_SECRETKEY, client_secret, 40);
    zmq_setsockopt(socket, ZMQ_SNDHWM, &mark, sizeof mark);
    if (zmq_connect(socket, endpoint.text) != 0)
        Fail("ZeroMQ does not connect");
    const std::vector<uint8_t> payload(size, 0x5A);
    zmq_send(socket, payload.data(), size, 0);
    (void)receiver.Get<uint64_t>();
    const auto begin = Clock::now();
    for (uint64_t i = 0; i < count; ++i)
        zmq_send(socket, payload.data(), size, 0);
    (void)receiver.Get<uint64_t>();
    const double seconds = Seconds(Clock::now() - begin);
    receiver.End();
    zmq_close(socket);
    zmq_ctx_term(context);
    return seconds;
}

/* ---- plain TCP: not encrypted, writes of 256 KiB: the limit */

double RunTcp(uint64_t count, uint32_t size) {
    constexpr std::size_t BLOCK = 256 * 1024;
    const uint64_t bytes = count * size;
    Child receiver = Start([=](int, int to) {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(listener, reinterpret_cast<sockaddr *>(&address), length) != 0 || listen(listener, 1) != 0)
            std::_Exit(1);
        getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length);
        Tell(to, address);
        const int connection = accept(listener, nullptr, nullptr);
        std::vector<uint8_t> block(BLOCK);
        for (uint64_t got = 0; got < bytes;) {
            const ssize_t part = recv(connection, block.data(), block.size(), 0);
            if (part <= 0)
                std::_Exit(1);
            got += static_cast<uint64_t>(part);
        }
        Tell(to, bytes);
    });
    const auto address = receiver.Get<sockaddr_in>();
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        Fail("TCP does not connect");
    const std::vector<uint8_t> payload(size, 0x5A);
    std::vector<uint8_t> block(BLOCK);
    const auto begin = Clock::now();
    std::size_t used = 0;
    for (uint64_t i = 0; i < count; ++i) {
        std::memcpy(&block[used], payload.data(), size);
        used += size;
        if (used + size <= BLOCK && i + 1 < count)
            continue;
        for (std::size_t at = 0; at < used;) {
            const ssize_t part = send(connection, &block[at], used - at, MSG_NOSIGNAL);
            if (part <= 0)
                Fail("TCP ended");
            at += static_cast<std::size_t>(part);
        }
        used = 0;
    }
    (void)receiver.Get<uint64_t>();
    const double seconds = Seconds(Clock::now() - begin);
    close(connection);
    receiver.End();
    return seconds;
}

/* ---- tables */

Result Median(std::vector<Result> &results) {
    std::sort(results.begin(), results.end(),
              [](const Result &a, const Result &b) { return a.messages_per_second < b.messages_per_second; });
    return results[results.size() / 2];
}

void Traffic(int rounds) {
    struct Size {
        uint32_t bytes;
        uint64_t link, zmq, tcp; /* messages: about half a second each */
    };
    std::printf("| messages | carried by | messages/s | MB/s | beside ZeroMQ | processor, ns a message |\n"
                "|---|---|---|---|---|---|\n");
    for (const Size &size : {Size{64, 1'500'000, 400'000, 10'000'000}, Size{65536, 12'000, 5'000, 20'000}}) {
        std::vector<Result> link, link_cut, zmq, tcp;
        for (int round = 0; round < rounds; ++round) {
            link.push_back(Measure(size.link, size.bytes, [&] { return RunLink(size.link, size.bytes, 0); }));
            zmq.push_back(Measure(size.zmq, size.bytes, [&] { return RunZmq(size.zmq, size.bytes); }));
            if (size.bytes > 1400)
                link_cut.push_back(
                    Measure(size.link, size.bytes, [&] { return RunLink(size.link, size.bytes, 1400); }));
            tcp.push_back(Measure(size.tcp, size.bytes, [&] { return RunTcp(size.tcp, size.bytes); }));
        }
        const Result peer = Median(zmq);
        const auto line = [&](const char *name, std::vector<Result> &results) {
            const Result result = Median(results);
            std::printf("| %u bytes | %s | %.0f | %.0f | %.2f × | %.0f |\n", size.bytes, name,
                        result.messages_per_second, result.bytes_per_second / 1e6,
                        result.messages_per_second / peer.messages_per_second, result.processor_ns);
        };
        line("link", link);
        if (!link_cut.empty())
            line("link, cut into packets of 1,400 bytes", link_cut);
        line("ZeroMQ, CURVE", zmq);
        line("plain TCP, not encrypted, writes of 256 KiB", tcp);
    }
}

/* From opening the link to equal digests and the word that the peer has everything. */
void Batches() {
    std::printf("| records of 128 bytes | seconds | records/s |\n|---|---|---|\n");
    for (const uint64_t records : {10'000, 31'623, 100'000, 316'228, 1'000'000}) {
        Child receiver = StartReceiver(records, 1);
        const std::string peer = "127.0.0.1:" + std::to_string(receiver.Get<uint32_t>());
        static Receiver own;
        YSB_LINK_CONFIG_S config = Config("a", "b", &own);
        config.pszPeer = peer.c_str();
        g_delivered = 0;
        uint64_t digest = 0;
        g_send_all = [=, &digest] {
            std::vector<uint8_t> payload(128, 0x5A);
            for (uint64_t i = 0; i < records; ++i) {
                std::memcpy(payload.data(), &i, sizeof i);
                digest = Digest(digest, payload.data());
                SendMessage(128, payload.data());
            }
        };
        const auto begin = Clock::now();
        OpenLink(config);
        const auto of_peer = receiver.Get<uint64_t>();
        while (g_delivered.load() == 0)
            std::this_thread::sleep_for(100us);
        if (of_peer != digest)
            Fail("the digests differ");
        const double seconds = Seconds(Clock::now() - begin);
        YSB_Link_Close();
        receiver.End();
        std::printf("| %llu | %.3f | %.0f |\n", static_cast<unsigned long long>(records), seconds,
                    static_cast<double>(records) / seconds);
    }
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
    else if (argc > 3 && std::strcmp(argv[1], "link") == 0) {
        const uint64_t count = std::strtoull(argv[3], nullptr, 10);
        const auto size = static_cast<uint32_t>(std::atoi(argv[2]));
        const Result result = Measure(count, size, [&] { return RunLink(count, size, 0); });
        std::printf("%.0f messages/s, %.0f MB/s, %.0f ns of processor a message\n", result.messages_per_second,
                    result.bytes_per_second / 1e6, result.processor_ns);
    } else
        Traffic(argc > 1 ? std::max(1, std::atoi(argv[1])) : 5);
    std::filesystem::remove_all(folder);
    return 0;
}
