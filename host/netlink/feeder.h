/* Follows the kernel: reads everything once, then every change, and everything anew when something was lost. */
#ifndef UVEL_HOST_NETLINK_FEEDER_H
#define UVEL_HOST_NETLINK_FEEDER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "netlink/kernel_state.h"
#include "netlink/socket.h"
#include "netlink/writer.h"

namespace uvel::host::netlink {

class Feeder {
  public:
    explicit Feeder(const NLF_CONFIG_S &config) : config_(config), writer_(config) {}
    ~Feeder();
    Feeder(const Feeder &) = delete;
    Feeder &operator=(const Feeder &) = delete;

    bool Start();
    bool Sync(std::chrono::milliseconds timeout);
    void Reload();
    NLF_STATS_S Stats() const;

  private:
    enum class Outcome { DONE, OVERRUN, FAILED, STOPPED };
    struct Dump {
        uint16_t type;
        uint8_t family;
    };

    void Run();
    void Step();
    void Wait();
    void Wake();
    void FinishSyncs(uint64_t asked);

    bool Pump();
    void CommitOrReload();
    void ReloadSoon(std::chrono::milliseconds delay);

    bool Load();
    void DropQueued();
    Outcome ReadEverything();
    Outcome ReadDump(const Dump &dump);
    bool RequestDump(const Dump &dump);
    std::optional<Outcome> ReadAnswers(bool &interrupted);
    bool WaitForAnswer();

    void Apply(const nlmsghdr *message);
    void ApplyLink(const nlmsghdr *message);
    void ApplyLinkGone(const nlmsghdr *message);
    void ApplyAddress(const nlmsghdr *message, bool there);
    void ApplyVlans(const nlmsghdr *message, bool there);

    const NLF_CONFIG_S config_;
    Socket socket_;
    int wake_ = -1;
    std::thread thread_;

    /* Of the feeder's thread, and of the starting one before there is one. */
    KernelState state_;
    Writer writer_;
    bool loading_ = false;
    uint32_t sequence_ = 0;
    std::optional<std::chrono::steady_clock::time_point> reload_at_;

    std::mutex mutex_;
    std::condition_variable synced_;
    uint64_t asked_ = 0; /* calls of Sync */
    uint64_t answered_ = 0;
    std::atomic<bool> stop_ = false;
    std::atomic<bool> reload_asked_ = false;

    std::atomic<uint64_t> messages_ = 0;
    std::atomic<uint64_t> overruns_ = 0;
    std::atomic<uint64_t> loads_ = 0;
    std::atomic<uint64_t> interrupted_ = 0;
    std::atomic<uint64_t> refused_ = 0;
    std::atomic<uint64_t> lost_ = 0;
};

} // namespace uvel::host::netlink

#endif
