#include "netlink/feeder.h"

#include <algorithm>
#include <linux/rtnetlink.h>
#include <memory>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

#include "netlink/requests.h"

namespace uvel::host::netlink {

namespace {

constexpr uint32_t DEFAULT_RECEIVE_BYTES = 8U << 20;
constexpr int DATAGRAMS_A_BATCH = 256;
constexpr std::chrono::milliseconds RETRY{1000};

} // namespace

Feeder::~Feeder() {
    stop_ = true;
    if (thread_.joinable()) {
        Wake();
        thread_.join();
    }
    if (wake_ >= 0)
        close(wake_);
}

bool Feeder::Start() {
    wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake_ < 0 || !socket_.Open(config_.ulRcvBytes))
        return false;
    for (unsigned group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR}) {
        if (!socket_.Join(group))
            return false;
    }
    (void)socket_.Join(RTNLGRP_BRVLAN); /* a kernel without filtering bridges has no such group */
    if (!Load() || !writer_.Commit())
        return false;
    refused_ = writer_.Refused();
    thread_ = std::thread([this] { Run(); });
    (void)pthread_setname_np(thread_.native_handle(), "netlink");
    return true;
}

bool Feeder::Sync(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    const uint64_t ticket = ++asked_;
    Wake();
    const auto done = [&] { return answered_ >= ticket; };
    if (timeout == std::chrono::milliseconds::max()) {
        synced_.wait(lock, done);
        return true;
    }
    return synced_.wait_for(lock, timeout, done);
}

void Feeder::Reload() {
    reload_asked_ = true;
    Wake();
}

NLF_STATS_S Feeder::Stats() const {
    return {messages_, overruns_, loads_, interrupted_, refused_, lost_};
}

void Feeder::Wake() {
    const uint64_t one = 1;
    (void)!write(wake_, &one, sizeof one);
}

/* ---- the feeder's thread ---- */

void Feeder::Run() {
    while (!stop_) {
        Wait();
        try {
            Step();
        } catch (const std::bad_alloc &) {
            (void)writer_.Commit(); /* ends the batch */
            lost_.fetch_add(1, std::memory_order_relaxed);
            ReloadSoon(RETRY);
        }
    }
}

void Feeder::Wait() {
    int timeout_ms = -1;
    if (reload_at_.has_value()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*reload_at_ - std::chrono::steady_clock::now());
        timeout_ms = static_cast<int>(std::max<int64_t>(0, left.count()));
    }
    pollfd waits[] = {{socket_.Descriptor(), POLLIN, 0}, {wake_, POLLIN, 0}};
    (void)poll(waits, 2, timeout_ms);
    uint64_t count;
    (void)!read(wake_, &count, sizeof count);
}

void Feeder::Step() {
    uint64_t asked;
    {
        const std::lock_guard lock(mutex_);
        asked = asked_;
    }
    while (!stop_ && Pump())
        CommitOrReload();
    const bool due = reload_at_.has_value() && std::chrono::steady_clock::now() >= *reload_at_;
    if (reload_asked_.exchange(false) || due) {
        reload_at_.reset();
        if (!Load())
            ReloadSoon(RETRY);
    }
    CommitOrReload();
    if (!reload_at_.has_value())
        FinishSyncs(asked);
}

/* Reads what has come, at most a batch of it; true when there may be more. */
bool Feeder::Pump() {
    for (int i = 0; i < DATAGRAMS_A_BATCH; ++i) {
        std::span<const std::byte> datagram;
        switch (socket_.Receive(datagram)) {
        case Socket::Read::NOTHING:
            return false;
        case Socket::Read::OVERRUN:
            overruns_.fetch_add(1, std::memory_order_relaxed);
            reload_asked_ = true;
            return false;
        case Socket::Read::FAILED:
            ReloadSoon(RETRY);
            return false;
        case Socket::Read::DATA:
            break;
        }
        for (const nlmsghdr *message : Messages(datagram))
            Apply(message);
    }
    return true;
}

void Feeder::CommitOrReload() {
    if (!writer_.Commit()) {
        lost_.fetch_add(1, std::memory_order_relaxed);
        ReloadSoon(RETRY);
    }
    refused_ = writer_.Refused();
}

void Feeder::ReloadSoon(std::chrono::milliseconds delay) {
    reload_at_ = std::chrono::steady_clock::now() + delay;
}

void Feeder::FinishSyncs(uint64_t asked) {
    const std::lock_guard lock(mutex_);
    answered_ = asked;
    synced_.notify_all();
}

} // namespace uvel::host::netlink

using uvel::host::netlink::Feeder;

struct NLF_FEEDER {
    explicit NLF_FEEDER(const NLF_CONFIG_S &config) : feeder(config), carries_out(config.ulCarryOut != 0) {}

    Feeder feeder;
    bool carries_out;
};

void NLF_InitConfig(NLF_CONFIG_S *pstConfig) {
    if (pstConfig != nullptr)
        *pstConfig = {1, UVELHOST_NONE, uvel::host::netlink::DEFAULT_RECEIVE_BYTES, 0};
}

NLF_FEEDER *NLF_Start(const NLF_CONFIG_S *pstConfig) {
    if (pstConfig == nullptr)
        return nullptr;
    try {
        auto started = std::make_unique<NLF_FEEDER>(*pstConfig);
        if (!started->feeder.Start() || (started->carries_out && !uvel::host::netlink::BeginRequests()))
            return nullptr;
        return started.release();
    } catch (const std::bad_alloc &) {
        return nullptr;
    } catch (const std::system_error &) { /* no thread */
        return nullptr;
    }
}

uint32_t NLF_Sync(NLF_FEEDER *pstFeeder, uint32_t ulTimeoutMs) {
    if (pstFeeder == nullptr)
        return 1;
    const bool for_ever = ulTimeoutMs == UVELHOST_WAIT_FOREVER;
    return pstFeeder->feeder.Sync(for_ever ? std::chrono::milliseconds::max() : std::chrono::milliseconds(ulTimeoutMs))
               ? UVELHOST_OK
               : 1;
}

void NLF_Reload(NLF_FEEDER *pstFeeder) {
    if (pstFeeder != nullptr)
        pstFeeder->feeder.Reload();
}

void NLF_Stop(NLF_FEEDER *pstFeeder) {
    if (pstFeeder == nullptr)
        return;
    if (pstFeeder->carries_out)
        uvel::host::netlink::EndRequests();
    delete pstFeeder;
}

uint32_t NLF_GetStats(const NLF_FEEDER *pstFeeder, NLF_STATS_S *pstStats) {
    if (pstFeeder == nullptr || pstStats == nullptr)
        return 1;
    *pstStats = pstFeeder->feeder.Stats();
    return UVELHOST_OK;
}
