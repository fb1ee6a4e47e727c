// A device of a pair, for tests: a table of records that the active one changes and the standby one follows.
//
//     standby_node FOLDER NAME PEER-NAME LISTEN PEER MTU TIMEOUT-MS      "-" for no address
//
// Commands on standard input, one answer line each:
//
//     set KEY VERSION LENGTH     ok | standby
//     many KEY COUNT VERSION LENGTH
//     sync MILLISECONDS          ok when the peer has acknowledged everything | late
//     digest                     COUNT HASH
//     dump FILE                  ok; "KEY VERSION" a line
//     state                      CONNECTED ACTIVE BACKUP PORT BROKEN
//     counter NAME               a number
//     batch                      ok: the peer gets everything once more
//     version MODULE VERSION     ok: tells it, as one that understands lower ones
//     agreed MODULE              a version | none
//     role NUMBER | quit

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <thread>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelhost/ha.h>

#include "standby_hooks.h"

namespace {

constexpr uint32_t MODULE = 0x00990000;

struct Record {
    uint32_t version;
    uint32_t length;
    bool operator==(const Record &) const = default;
};
using Table = std::map<uint32_t, Record>;

std::mutex g_lock;
Table g_table;
Table g_fresh;
bool g_batching = false;
std::atomic<unsigned> g_broken{0}; /* payloads that are not what was sent */
uvel::apps::MessageAssembler g_assembler;

uint8_t ByteOf(uint32_t key, const Record &record, uint32_t at) {
    return static_cast<uint8_t>(key * 31 + record.version * 7 + at * 13 + (at >> 8));
}

bool IsActive() {
    uint32_t active = 0;
    return KIVO_YSB_IsActiveStatus(&active) == 0 && active == 1;
}

void Send(uint32_t key, const Record &record) {
    void *buffer = nullptr;
    if (CBUF_Alloc(CHI_BACK_YSB, &buffer, record.length) != KIVO_OK)
        return;
    auto *payload = static_cast<uint8_t *>(CBUF_C2D(CHI_BACK_YSB, buffer));
    for (uint32_t i = 0; i < record.length; ++i)
        payload[i] = ByteOf(key, record, i);
    CHI_MSG_INFO_S info{};
    info.ulTotalLength = record.length;
    info.aulWordC[0] = key;
    info.aulWordC[1] = record.version;
    info.ulMsgType = 3;
    info.ulMsgId = key;
    (void)CHI_SetMsgInfo(CHI_BACK_YSB, buffer, &info);
    (void)CHI_YSB_OutputPacket(KIVO_Ysb_MOID_Get(MODULE, 0, 0, 0, 0, 0, 0, 0), reinterpret_cast<uintptr_t>(buffer),
                               CHI_ANY_CHANNEL, 48 + record.length);
}

uint32_t Receive(void *, uint32_t module, uint8_t cpu, YSB_SMBUF_S *smbuf, uint32_t length) {
    void *message = nullptr;
    const uint32_t result = g_assembler.Take(smbuf, length, &message);
    if (message == nullptr)
        return result;
    CHI_MSG_INFO_S info{};
    (void)CHI_GetMsgInfo(CHI_BACK_YSB, message, &info);
    const auto *payload = static_cast<const uint8_t *>(CBUF_C2D(CHI_BACK_YSB, message));
    const Record record{info.aulWordC[1], info.ulTotalLength};
    bool good = module == MODULE && cpu == YSB_LINK_ANY_CPU && info.ulMsgType == 3;
    for (uint32_t i = 0; i < record.length; ++i)
        good = good && payload[i] == ByteOf(info.aulWordC[0], record, i);
    CBUF_Free(CHI_BACK_YSB, message);
    std::lock_guard lock(g_lock);
    g_broken += good ? 0 : 1;
    if (IsActive())
        return UVELHOST_OK;
    g_table[info.aulWordC[0]] = record;
    if (g_batching)
        g_fresh[info.aulWordC[0]] = record;
    return UVELHOST_OK;
}

void PeerIsNew(void *) {
    g_assembler.Reset();
    std::lock_guard lock(g_lock);
    g_batching = false;
}

/* Sends a record, and again while others changed it meanwhile: they told the peer, perhaps before this did with what it
 * still was. */
void SendAsItIs(uint32_t key, Record told) {
    for (bool is_told = false; !is_told;) {
        Send(key, told);
        std::lock_guard lock(g_lock);
        const Record now = g_table[key];
        is_told = now == told;
        told = now;
    }
}

void Batch(void *, uint32_t batch) {
    Table table;
    {
        std::lock_guard lock(g_lock);
        table = g_table;
    }
    if (IsActive()) {
        for (const auto &[key, record] : table)
            SendAsItIs(key, record);
    }
    (void)YSB_Link_BatchDone(batch);
}

void PeerBatch(void *, uint32_t begins) {
    std::lock_guard lock(g_lock);
    if (IsActive())
        return;
    if (begins != 0)
        g_fresh.clear();
    else if (g_batching)
        g_table = g_fresh;
    g_batching = begins != 0;
}

bool Set(uint32_t key, const Record &record) {
    if (!IsActive())
        return false;
    std::lock_guard lock(g_lock); /* changes reach the peer in the order in which they were made */
    g_table[key] = record;
    Send(key, record);
    return true;
}

bool Sync(unsigned milliseconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    do {
        YSB_LINK_STATE_S state;
        YSB_LINK_COUNTERS_S counters;
        (void)YSB_Link_GetState(&state);
        (void)YSB_Link_GetCounters(&counters);
        if (state.ulConnected == 1 && state.ulActive == 1 && state.ulBackup == HA_STATE_REALTIME &&
            counters.ulBytesHeld == 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    } while (std::chrono::steady_clock::now() < until);
    return false;
}

std::string Digest() {
    std::lock_guard lock(g_lock);
    uint64_t hash = 1469598103934665603U;
    for (const auto &[key, record] : g_table) {
        for (const uint64_t word : {uint64_t{key}, uint64_t{record.version}, uint64_t{record.length}})
            hash = (hash ^ word) * 1099511628211U;
    }
    return std::to_string(g_table.size()) + " " + std::to_string(hash);
}

std::string Dump(const std::string &file) {
    std::lock_guard lock(g_lock);
    FILE *out = std::fopen(file.c_str(), "w");
    if (out == nullptr)
        return "cannot write";
    for (const auto &[key, record] : g_table)
        std::fprintf(out, "%u %u\n", key, record.version);
    std::fclose(out);
    return "ok";
}

std::string State() {
    YSB_LINK_STATE_S state{};
    (void)YSB_Link_GetState(&state);
    std::ostringstream text;
    text << state.ulConnected << ' ' << state.ulActive << ' ' << HA_GetState() << ' ' << state.ulPort << ' '
         << g_broken;
    return text.str();
}

std::string Counter(const std::string &name) {
    YSB_LINK_COUNTERS_S counters{};
    (void)YSB_Link_GetCounters(&counters);
    const std::map<std::string, uint64_t> values = {{"resumed", counters.ulResumed},
                                                    {"new_streams", counters.ulNewStreams},
                                                    {"connects", counters.ulConnects},
                                                    {"disconnects", counters.ulDisconnects},
                                                    {"timeouts", counters.ulTimeouts},
                                                    {"violations", counters.ulViolations},
                                                    {"resent", counters.ulResent},
                                                    {"batches", counters.ulBatchesDelivered},
                                                    {"received", counters.ulPacketsReceived},
                                                    {"sent", counters.ulPacketsSent}};
    if (name.rfind("refused_by", 0) == 0)
        return std::to_string(counters.aulRefusedBy[std::stoul(name.substr(10))]);
    if (name.rfind("refused", 0) == 0)
        return std::to_string(counters.aulRefused[std::stoul(name.substr(7))]);
    const auto found = values.find(name);
    return found == values.end() ? "unknown" : std::to_string(found->second);
}

std::string TellVersion(uint32_t module, uint32_t version) {
    return YsbAdaptRegisterVersion(YsbAdaptGetModId(module), version, 1) == 0 ? "ok" : "refused";
}

std::string AgreedVersion(uint32_t module) {
    uint32_t version = 0;
    return YsbAdaptGetNegoVersion(YsbAdaptGetModId(module), &version) == 0 ? std::to_string(version) : "none";
}

std::string Answer(const std::string &line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    uint32_t key = 0;
    uint32_t count = 1;
    Record record{0, 0};
    if (command == "set" || command == "many") {
        words >> key;
        if (command == "many")
            words >> count;
        words >> record.version >> record.length;
        for (uint32_t i = 0; i < count; ++i) {
            if (!Set(key + i, record))
                return "standby";
        }
        return "ok";
    }
    if (command == "version" || command == "agreed") {
        words >> key >> record.version;
        return command == "version" ? TellVersion(key, record.version) : AgreedVersion(key);
    }
    std::string rest;
    words >> rest;
    if (command == "batch")
        return YSB_Link_StartBatch() == 0 ? "ok" : "refused";
    if (command == "sync")
        return Sync(static_cast<unsigned>(std::stoul(rest))) ? "ok" : "late";
    if (command == "digest")
        return Digest();
    if (command == "dump")
        return Dump(rest);
    if (command == "state")
        return State();
    if (command == "counter")
        return Counter(rest);
    if (command == "role")
        return YSB_Link_SetRole(static_cast<uint32_t>(std::stoul(rest))) == 0 ? "ok" : "refused";
    return "unknown command";
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 8)
        return 2;
    prctl(PR_SET_PDEATHSIG, SIGKILL); /* nothing is left over when the test ends early */
    (void)UVEL_GlobalVarInit();
    KIVO_VirtualToHook();
    uvel::apps::InstallStandbyHooks();
    const std::string folder = std::string(argv[1]) + "/";
    const std::string certificate = folder + argv[2] + ".pem";
    const std::string key = folder + argv[2] + ".key";
    const std::string authority = folder + "authority.pem";
    YSB_LINK_CONFIG_S config{};
    config.pszListen = std::strcmp(argv[4], "-") == 0 ? nullptr : argv[4];
    config.pszPeer = std::strcmp(argv[5], "-") == 0 ? nullptr : argv[5];
    config.pszCertificate = certificate.c_str();
    config.pszKey = key.c_str();
    config.pszAuthority = authority.c_str();
    config.pszPeerName = argv[3];
    config.ulMtu = static_cast<uint32_t>(std::stoul(argv[6]));
    config.ulTimeoutMs = static_cast<uint32_t>(std::stoul(argv[7]));
    config.ulHeartbeatMs = 100;
    config.ulTakeoverMs = config.ulTimeoutMs * 3 / 2;
    config.ulRetryMinMs = 10;
    config.ulRetryMaxMs = 100;
    config.pfReceive = Receive;
    config.pfPeerIsNew = PeerIsNew;
    config.pfBatch = Batch;
    config.pfPeerBatch = PeerBatch;
    char error[512] = "";
    if (YSB_Link_Open(&config, error, sizeof error) != 0) {
        std::cout << "error " << error << std::endl;
        return 1;
    }
    std::cout << "open " << State() << std::endl;
    for (std::string line; std::getline(std::cin, line) && line != "quit";)
        std::cout << Answer(line) << std::endl;
    YSB_Link_Close();
    return 0;
}
