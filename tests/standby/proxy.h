/* Stands between two processes as the network does, and does what networks do: stops carrying, cuts, resets. */
#ifndef UVEL_TESTS_STANDBY_PROXY_H
#define UVEL_TESTS_STANDBY_PROXY_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class Proxy {
  public:
    Proxy();
    ~Proxy();
    Proxy(const Proxy &) = delete;
    Proxy &operator=(const Proxy &) = delete;

    uint16_t Port() const { return port_; }
    void SetTarget(uint16_t port) { target_ = port; }

    /* Ends all connections: orderly, or with a reset. */
    void Cut(bool reset);
    /* From now on nothing is carried, and nobody is told. */
    void Stall(bool stalled) { StallFrom(stalled, stalled); }
    /* The same for what comes from the connecting side, and for what comes from the other one. */
    void StallFrom(bool client, bool server) {
        stalled_client_ = client;
        stalled_server_ = server;
    }
    /* The next connections are cut after so many bytes from the connecting side (or from the other one). */
    void CutAfter(uint64_t from_client, uint64_t from_server);
    uint64_t Connections() const { return connections_; }

  private:
    struct Line {
        int client;
        int server;
        uint64_t from_client = 0;
        uint64_t from_server = 0;
        bool dead = false;
    };

    void Run();
    void Accept();
    void Carry(Line &line, int from, int to, uint64_t &count, uint64_t limit);
    static void Close(Line &line, bool reset);

    int listener_ = -1;
    int wake_ = -1;
    uint16_t port_ = 0;
    std::atomic<uint16_t> target_{0};
    std::atomic<bool> stop_{false};
    std::atomic<bool> stalled_client_{false};
    std::atomic<bool> stalled_server_{false};
    std::atomic<int> cut_{0}; /* 1: orderly, 2: reset */
    std::atomic<uint64_t> limit_client_{UINT64_MAX};
    std::atomic<uint64_t> limit_server_{UINT64_MAX};
    std::atomic<uint64_t> connections_{0};
    std::vector<Line> lines_;
    std::thread thread_;
};

#endif
