// The hot-standby link, through the library's channel on both sides.

#include "carriers.h"
#include "child.h"
#include "standby_hooks.h"

#include <atomic>
#include <cstring>
#include <semaphore>
#include <string>
#include <thread>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelhost/standby_link.h>
#include <vector>

namespace standby_bench {

std::string g_keys;

namespace {

constexpr uint32_t MODULE = 0x00990000;
constexpr uint32_t HEADER = 48;

/* What the link's thread writes while the process waits until all is there. */
struct Receiver {
    uint64_t expected = UINT64_MAX;
    uint64_t messages = 0;
    uint64_t bytes = 0;
    bool batch = false;  /* a whole one has come */
    uint64_t digest = 0; /* of what came, in order */
    uvel::apps::MessageAssembler assembler;
    std::binary_semaphore all{0};

    void Check() {
        if (messages == expected && batch)
            all.release();
    }
};

/* The digest of a row of records, one after the other: each begins with its number. */
uint64_t Digest(uint64_t before, const uint8_t *record) {
    uint64_t number;
    std::memcpy(&number, record, sizeof number);
    return before * 0x9E3779B97F4A7C15U + number + 1;
}

uint32_t TakeMessage(void *context, uint32_t, uint8_t, YSB_SMBUF_S *smbuf, uint32_t length) {
    auto *receiver = static_cast<Receiver *>(context);
    void *message = nullptr;
    const uint32_t result = receiver->assembler.Take(smbuf, length, &message);
    if (message == nullptr)
        return result;
    CHI_MSG_INFO_S info{};
    (void)CHI_GetMsgInfo(CHI_BACK_YSB, message, &info);
    receiver->digest = Digest(receiver->digest, static_cast<const uint8_t *>(CBUF_C2D(CHI_BACK_YSB, message)));
    receiver->bytes += info.ulTotalLength;
    ++receiver->messages;
    CBUF_Free(CHI_BACK_YSB, message);
    receiver->Check();
    return UVELHOST_OK;
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
    config.pfPeerBatch = [](void *owner, uint32_t begins) {
        auto *receiver = static_cast<Receiver *>(owner);
        if (begins != 0 || receiver->batch)
            return;
        receiver->batch = true;
        receiver->Check();
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

/* Tells its port, and when a batch and so many messages have come, their digest. */
Child StartReceiver(uint64_t expected) {
    return Start([=](int from, int to) {
        (void)UVEL_GlobalVarInit();
        KIVO_VirtualToHook();
        uvel::apps::InstallStandbyHooks();
        static Receiver receiver;
        receiver.expected = expected;
        YSB_LINK_CONFIG_S config = Config("b", "a", &receiver);
        config.pszListen = "127.0.0.1:0";
        OpenLink(config);
        YSB_LINK_STATE_S state{};
        (void)YSB_Link_GetState(&state);
        Tell(to, state.ulPort);
        receiver.all.acquire();
        Tell(to, receiver.digest);
        char end;
        (void)!read(from, &end, 1); /* the parent closes when it has measured */
        YSB_Link_Close();
    });
}

} // namespace

double RunLink(uint64_t count, uint32_t size, uint32_t mtu) {
    Child receiver = StartReceiver(count);
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

double RunBatch(uint64_t records) {
    Child receiver = StartReceiver(records);
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
    g_send_all = nullptr;
    return seconds;
}

} // namespace standby_bench
