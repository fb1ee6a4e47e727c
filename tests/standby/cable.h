/* Two endpoints of a link in one thread, and a cable between them that can be cut anywhere.
 *
 * On each side stands an owner as real ones are: a table of records, every change of which is sent to the peer, and a
 * copy of the peer's table, which a batch backup replaces. */
#ifndef UVEL_TESTS_STANDBY_CABLE_H
#define UVEL_TESTS_STANDBY_CABLE_H

#include <map>
#include <random>
#include <string>

#include <standby/endpoint.h>

namespace cable {

using uvel::host::standby::Counters;
using uvel::host::standby::Endpoint;
using uvel::host::standby::EndpointSettings;
using uvel::host::standby::Smbuf;

using Table = std::map<uint32_t, std::string>;

/* A message with a true header: `payload` behind 48 bytes, key in word C0, subtype `erase`. */
std::vector<uint8_t> Message(uint32_t key, const std::string &payload, bool erase = false);

Endpoint::Sending SendTo(Endpoint &endpoint, const std::vector<uint8_t> &message,
                         Endpoint::Patience patience = Endpoint::Patience::NONE);

class Side final : private uvel::host::standby::EndpointOwner {
  public:
    Side(const EndpointSettings &settings, uint64_t now) : endpoint(settings, *this, counters, now) {}

    /* Changes the own table and tells the peer. */
    Endpoint::Sending Set(uint32_t key, const std::string &value);
    Endpoint::Sending Erase(uint32_t key);
    /* Sends a message that belongs to no table. */
    Endpoint::Sending Say(const std::string &text);

    /* Sends everything where the link asked for it. */
    void Batch();

    Counters counters;
    Endpoint endpoint;
    Table own;
    Table copy;                    /* of the peer's */
    std::vector<std::string> said; /* by the peer */
    std::vector<uint32_t> delivered;
    uint32_t batch_wanted = 0;
    int news = 0;
    int states = 0;
    int progress = 0;
    int broken = 0;    /* fragments that did not fit together */
    int not_taken = 0; /* so many packets from now on are not taken */

  private:
    bool Received(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) override;
    void PeerIsNew() override;
    void BatchWanted(uint32_t batch) override { batch_wanted = batch; }
    void BatchDelivered(uint32_t batch) override { delivered.push_back(batch); }
    void PeerBatch(bool begins) override;
    void StateChanged() override { ++states; }
    void Progress() override { ++progress; }
    void Wake() override {}
    void Apply(uint32_t key, bool erase, const std::string &value);

    std::string partial_;
    uint32_t next_fragment_ = 0;
    bool batching_ = false;
    Table fresh_;
};

EndpointSettings Settings(const std::string &name, const std::string &peer_name);

/* What the endpoint has to say now. */
std::vector<uint8_t> TakeOutput(Side &from, uint64_t now);
/* Hands it in, up to where the endpoint closes. */
Endpoint::Step Hand(Side &to, const std::vector<uint8_t> &bytes, uint64_t now);

class Cable {
  public:
    Cable(Side &a, Side &b) : a_(&a), b_(&b) {}

    void Connect(uint64_t now);
    /* What was on its way is lost. */
    void Cut();
    bool Connected() const { return connected_; }

    /* Carries bytes both ways until nothing moves; cuts after `a_to_b` or `b_to_a` more bytes. Closes, too, what an
     * endpoint closes. In pieces of random size when `random` is given. */
    void Carry(uint64_t now, std::mt19937 *random = nullptr, std::size_t a_to_b = SIZE_MAX,
               std::size_t b_to_a = SIZE_MAX);

    uint64_t carried_a_to_b = 0;
    uint64_t carried_b_to_a = 0;

  private:
    bool Move(Side &from, Side &to, std::vector<uint8_t> &wire, std::size_t &budget, uint64_t &count, uint64_t now,
              std::mt19937 *random);

    Side *a_;
    Side *b_;
    std::vector<uint8_t> to_a_;
    std::vector<uint8_t> to_b_;
    bool connected_ = false;
};

/* Connects until both have everything, with batches where they are asked for. */
void Settle(Cable &cable, Side &a, Side &b, uint64_t now);

} // namespace cable

#endif
