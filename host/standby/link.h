/* The link of this process: an endpoint, its connection to the peer, and the threads that drive them. */
#ifndef UVEL_HOST_STANDBY_LINK_H
#define UVEL_HOST_STANDBY_LINK_H

#include "standby/address.h"
#include "standby/endpoint.h"
#include "standby/tls.h"

#include <atomic>
#include <poll.h>
#include <thread>

namespace uvel::host::standby {

class Link final : private EndpointOwner {
  public:
    /* Null, with the reason in `error`. */
    static std::unique_ptr<Link> Open(const YSB_LINK_CONFIG_S &config, std::string &error);
    ~Link();

    /* Starts the threads. From here on callbacks run: they must find the link where they look for it. */
    void Start();

    Endpoint::Sending Send(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length);
    bool BatchDone(uint32_t batch) { return endpoint_.BatchDone(batch); }
    bool StartBatch() { return endpoint_.StartBatch(); }
    /* Whoever waits for room gives up. */
    void Shut() { endpoint_.Shut(); }
    void SetRole(uint32_t role) { endpoint_.SetRole(role); }
    void TellVersions() { endpoint_.TellVersions(); }
    YSB_LINK_STATE_S State() const;
    YSB_LINK_COUNTERS_S CopyCounters();
    uint64_t Position() const { return endpoint_.Position(); }
    uint32_t Fate(uint64_t position) const { return endpoint_.Fate(position); }
    uint32_t CpuNum() const { return settings_.cpus; }
    bool IsActive() const { return active_.load(std::memory_order_relaxed); }
    bool IsConnected() const { return connected_.load(std::memory_order_relaxed); }

  private:
    struct Connection {
        enum class State { CONNECTING, HANDSHAKE, UP };

        Connection(int descriptor, State begin, uint64_t until) : socket(descriptor), state(begin), deadline(until) {}
        ~Connection();

        int socket;
        State state;
        uint64_t deadline; /* of the handshake */
        std::string peer;
        std::unique_ptr<TlsChannel> tls;
        uint64_t since = 0; /* it proved itself */
        bool wants_write = false;
    };

    Link(const YSB_LINK_CONFIG_S &config, EndpointSettings settings, std::unique_ptr<TlsContext> tls);

    /* EndpointOwner */
    bool Received(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) override;
    void PeerIsNew() override;
    void BatchWanted(uint32_t batch) override;
    void BatchDelivered(uint32_t batch) override;
    void PeerBatch(bool begins) override;
    void StateChanged() override;
    void Progress() override;
    void Wake() override;

    static uint64_t Now();
    void Publish();

    /* The link's thread. */
    void Run();
    void Turn();
    void GiveUpConnections();
    void Wait();
    int TimeoutOfWait(uint64_t now) const;
    void StartConnecting(uint64_t now);
    void BackOff(uint64_t now);
    void AcceptPeers(uint64_t now);
    bool Advance(Connection &connection, uint64_t now); /* false: it is over */
    void AdvancePending(uint64_t now);
    void Adopt(std::unique_ptr<Connection> connection, uint64_t now);
    void Drop(uint64_t now);
    void ReadPeer(uint64_t now);
    void WritePeer(uint64_t now);
    void CountRefusal(const Connection &connection);
    void Say(const std::string &text);

    void RunBatches();

    const YSB_LINK_CONFIG_S config_; /* its texts are gone */
    const EndpointSettings settings_;
    Counters counters_;
    std::unique_ptr<TlsContext> tls_;
    Endpoint endpoint_;

    int listener_ = -1;
    bool connects_ = false;
    Address peer_address_;
    int wake_;
    std::atomic<bool> idle_{false};
    std::atomic<bool> stop_{false};
    std::atomic<bool> active_{false};
    std::atomic<bool> connected_{false};
    std::mutex state_lock_;

    std::unique_ptr<Connection> current_;
    std::vector<std::unique_ptr<Connection>> pending_;
    std::vector<pollfd> polled_;
    uint64_t next_connect_ = 0;
    uint32_t pause_ms_ = 0;
    uint64_t deaf_until_ = 0; /* peers are not listened for */
    bool knocked_ = false;    /* peers wait to be accepted */
    bool read_more_ = false;  /* there is, or may be, something to read */
    bool write_more_ = false; /* the turn of writing ended before all was written */
    uint64_t last_said_ = 0;
    uint32_t unsaid_ = 0;

    std::mutex batch_lock_;
    std::condition_variable batch_changed_;
    uint32_t batch_wanted_ = 0;

    std::thread thread_;
    std::thread batch_thread_;
};

} // namespace uvel::host::standby

#endif
