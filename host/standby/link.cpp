/* What the link's owner and other threads call. */

#include "standby/link.h"

#include "standby/batch_finish.h"
#include "standby/ha_follow.h"
#include <algorithm>
#include <cerrno>
#include <ctime>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace uvel::host::standby {

static thread_local Endpoint::Patience t_patience = Endpoint::Patience::SHORT;

uint64_t Link::Now() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

static uint32_t Or(uint32_t value, uint32_t otherwise) {
    return value != 0 ? value : otherwise;
}

/* Names in certificates are compared without regard to case; the order of the two devices must be too. */
static std::string Lower(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return name;
}

static EndpointSettings SettingsOf(const YSB_LINK_CONFIG_S &config) {
    EndpointSettings settings;
    settings.mtu = Or(config.ulMtu, settings.mtu);
    settings.max_message = Or(config.ulMaxMessage, settings.max_message);
    settings.window = Or(config.ulWindow, settings.window);
    settings.send_wait_ms = Or(config.ulSendWaitMs, settings.send_wait_ms);
    settings.heartbeat_ms = Or(config.ulHeartbeatMs, settings.heartbeat_ms);
    settings.timeout_ms = Or(config.ulTimeoutMs, settings.timeout_ms);
    settings.takeover_ms = Or(config.ulTakeoverMs, settings.takeover_ms);
    settings.cpus = Or(config.ulCpuNum, settings.cpus);
    settings.role = config.ulRole;
    settings.priority = config.ulPriority;
    return settings;
}

static const char *WhatIsWrong(const YSB_LINK_CONFIG_S &config, const EndpointSettings &settings) {
    if (config.pszListen == nullptr && config.pszPeer == nullptr)
        return "neither an address to listen on nor one of the peer";
    if (config.pszCertificate == nullptr || config.pszKey == nullptr || config.pszAuthority == nullptr)
        return "certificate, key or authority is missing";
    if (config.pszPeerName == nullptr || config.pszPeerName[0] == '\0')
        return "the peer's name is missing";
    if (config.pfReceive == nullptr || config.pfBatch == nullptr)
        return "no function for what is received, or for batch backups";
    if (config.ulRole > YSB_LINK_ROLE_STANDBY)
        return "unknown role";
    if (settings.max_message > LARGEST_MESSAGE)
        return "the largest message is above what links carry";
    if (settings.cpus > YSB_LINK_ANY_CPU)
        return "too many processors";
    if (settings.timeout_ms <= settings.heartbeat_ms)
        return "a peer would count as gone before its heartbeat is due";
    return nullptr;
}

std::unique_ptr<Link> Link::Open(const YSB_LINK_CONFIG_S &config, std::string &error) {
    EndpointSettings settings = SettingsOf(config);
    if (const char *wrong = WhatIsWrong(config, settings)) {
        error = wrong;
        return nullptr;
    }
    auto tls = TlsContext::Load({config.pszCertificate, config.pszKey, config.pszAuthority}, config.pszPeerName, error);
    if (tls == nullptr)
        return nullptr;
    settings.name = Lower(tls->Name());
    settings.peer_name = Lower(tls->PeerName());
    if (settings.name == settings.peer_name) {
        error = "both devices have the name " + settings.name;
        return nullptr;
    }
    const bool both = config.pszListen != nullptr && config.pszPeer != nullptr;
    const bool connects = both ? settings.name < settings.peer_name : config.pszPeer != nullptr;
    Address address;
    if (!ParseAddress(connects ? config.pszPeer : config.pszListen, address, error))
        return nullptr;
    std::unique_ptr<Link> link(new Link(config, std::move(settings), std::move(tls)));
    link->connects_ = connects;
    link->peer_address_ = address;
    if (!connects && (link->listener_ = Listen(address, error)) < 0)
        return nullptr;
    if (link->wake_ < 0) {
        error = std::strerror(errno);
        return nullptr;
    }
    link->Publish();
    return link;
}

void Link::Start() {
    thread_ = std::thread([this] {
        t_patience = Endpoint::Patience::NONE;
        Run();
    });
    batch_thread_ = std::thread([this] { RunBatches(); });
}

Link::Link(const YSB_LINK_CONFIG_S &config, EndpointSettings settings, std::unique_ptr<TlsContext> tls)
    : config_(config), settings_(std::move(settings)), tls_(std::move(tls)),
      endpoint_(settings_, *this, counters_, Now()), wake_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

Link::~Link() {
    endpoint_.Shut();
    {
        std::lock_guard lock(batch_lock_);
        stop_ = true;
        batch_changed_.notify_all();
    }
    idle_ = true;
    Wake();
    if (thread_.joinable())
        thread_.join();
    if (batch_thread_.joinable())
        batch_thread_.join();
    current_.reset();
    pending_.clear();
    if (listener_ >= 0)
        close(listener_);
    if (wake_ >= 0)
        close(wake_);
    EndOfHa(config_.ulBoard, config_.ulPeerBoard);
}

Endpoint::Sending Link::Send(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) {
    const Endpoint::Sending sending = endpoint_.Send(module, cpu, std::move(message), length, t_patience);
    if (sending == Endpoint::Sending::ACCEPTED)
        Wake();
    return sending;
}

YSB_LINK_STATE_S Link::State() const {
    YSB_LINK_STATE_S state = endpoint_.State();
    state.ulPort = listener_ < 0 ? 0 : PortOf(listener_);
    return state;
}

YSB_LINK_COUNTERS_S Link::CopyCounters() {
    YSB_LINK_COUNTERS_S copy = counters_.Copy();
    copy.ulBytesHeld = endpoint_.BytesHeld();
    return copy;
}

/* ---- what the endpoint tells */

bool Link::Received(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) {
    return config_.pfReceive(config_.pContext, module, cpu, message.release(), length) == UVELHOST_OK;
}

void Link::PeerIsNew() {
    if (config_.pfPeerIsNew != nullptr)
        config_.pfPeerIsNew(config_.pContext);
}

void Link::BatchDelivered(uint32_t batch) {
    if (config_.pfBatchDelivered != nullptr)
        config_.pfBatchDelivered(config_.pContext, batch);
}

void Link::PeerBatch(bool begins) {
    if (config_.pfPeerBatch != nullptr)
        config_.pfPeerBatch(config_.pContext, begins ? 1 : 0);
    if (!begins)
        CallBatchFinish();
}

void Link::Publish() {
    std::lock_guard lock(state_lock_);
    const YSB_LINK_STATE_S state = endpoint_.State();
    active_.store(state.ulActive != 0, std::memory_order_relaxed);
    connected_.store(state.ulConnected != 0, std::memory_order_relaxed);
    FollowHa(state, config_.ulBoard, config_.ulPeerBoard);
}

void Link::StateChanged() {
    Publish();
    if (config_.pfStateChanged != nullptr)
        config_.pfStateChanged(config_.pContext);
}

void Link::Progress() {
    if (config_.pfProgress != nullptr)
        config_.pfProgress(config_.pContext);
}

void Link::Wake() {
    if (!idle_.load() || !idle_.exchange(false))
        return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t ignored = write(wake_, &one, sizeof one);
}

/* ---- batches: a thread of their own, which may wait for room */

void Link::BatchWanted(uint32_t batch) {
    std::lock_guard lock(batch_lock_);
    batch_wanted_ = batch;
    batch_changed_.notify_all();
}

void Link::RunBatches() {
    t_patience = Endpoint::Patience::BATCH;
    std::unique_lock lock(batch_lock_);
    for (;;) {
        batch_changed_.wait(lock, [this] { return stop_ || batch_wanted_ != 0; });
        if (stop_)
            return;
        const uint32_t batch = std::exchange(batch_wanted_, 0);
        lock.unlock();
        config_.pfBatch(config_.pContext, batch);
        lock.lock();
    }
}

} // namespace uvel::host::standby
