/* One end of the link, without sockets, encryption and threads of its own: messages in, bytes out, bytes in, messages
 * out. It lives through many connections.
 *
 * Send, BatchDone, StartBatch, SetRole and the queries may be called on any thread; all else belongs to the link's
 * thread. Times are milliseconds of a clock that only runs forward. */
#ifndef UVEL_HOST_STANDBY_ENDPOINT_H
#define UVEL_HOST_STANDBY_ENDPOINT_H

#include "standby/counters.h"
#include "standby/frame_reader.h"
#include "standby/modules.h"
#include "standby/send_stream.h"

#include <condition_variable>
#include <mutex>
#include <string>

namespace uvel::host::standby {

struct EndpointSettings {
    uint32_t mtu = 65536;
    uint32_t max_message = 16 << 20;
    uint32_t window = 4 << 20;
    uint32_t send_wait_ms = 200;
    uint32_t heartbeat_ms = 1000;
    uint32_t timeout_ms = 3000;
    uint32_t takeover_ms = 3000;
    uint32_t cpus = 1;
    uint32_t role = YSB_LINK_ROLE_AUTO;
    uint32_t priority = 0;
    std::string name;
    std::string peer_name;
};

/* What an endpoint tells its owner. No lock is held. */
class EndpointOwner {
  public:
    /* False: could not be taken, must come again. */
    virtual bool Received(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length) = 0;
    virtual void PeerIsNew() = 0;
    virtual void BatchWanted(uint32_t batch) = 0; /* any thread */
    virtual void BatchDelivered(uint32_t batch) = 0;
    virtual void PeerBatch(bool begins) = 0;
    virtual void StateChanged() = 0; /* any thread */
    virtual void Progress() = 0;     /* Fate may answer otherwise than before */
    virtual void Wake() = 0;         /* there is something to send; any thread */

  protected:
    ~EndpointOwner() = default;
};

class Endpoint {
  public:
    enum class Patience { NONE, SHORT, BATCH };
    enum class Sending { ACCEPTED, NO_PEER, NO_ROOM, TOO_LARGE, MALFORMED, NO_MEMORY };
    enum class Step { GOOD, CLOSE };

    Endpoint(EndpointSettings settings, EndpointOwner &owner, Counters &counters, uint64_t now);

    /* ---- any thread */

    /* Takes the message: the first `length` bytes of the buffer, header and payload. */
    Sending Send(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length, Patience patience);
    bool BatchDone(uint32_t batch);
    bool StartBatch();
    void SetRole(uint32_t role);
    void TellVersions();
    YSB_LINK_STATE_S State() const;
    std::size_t BytesHeld() const;
    /* See YSB_Link_GetPosition and YSB_Link_GetFate. */
    uint64_t Position() const;
    uint32_t Fate(uint64_t position) const;
    /* Ends all waiting for room, for good. */
    void Shut();

    /* ---- the link's thread: a connection's life */

    void Connected(uint64_t now);
    void Lost();

    std::span<uint8_t> Room() { return reader_.Room(); }
    /* After CLOSE: send what Output still gives, then end the connection. */
    Step Filled(std::size_t bytes, uint64_t now);
    /* Everything that came was handed in: what was taken is to be acknowledged now. */
    void Drained();

    /* The next bytes to send, none when there are none for now; Written says they were. */
    std::span<const uint8_t> Output();
    void Written(uint64_t now);

    /* Heartbeats, silence of the peer, takeover. */
    Step Tick(uint64_t now);
    uint64_t NextTick() const;

    bool IsUp() const { return phase_ == Phase::RUNNING; }
    /* Why the latest CLOSE; NONE for other reasons than a refusal, which stand in the text. */
    Refusal Refused() const { return refused_; }
    const std::string &Trouble() const { return trouble_; }

  private:
    enum class Phase { AWAY, AWAIT_HELLO, AWAIT_STREAM, RUNNING };

    /* Calls to the owner that wait until the lock is given back. */
    struct Calls {
        uint32_t batch_wanted = 0;
        uint32_t batch_delivered = 0;
        bool state_changed = false;
        bool progress = false;
    };
    void Make(const Calls &calls);

    /* Sending; the lock is held. */
    Sending Check(YSB_SMBUF &message, uint32_t length);
    void AppendMessage(uint32_t module, uint8_t cpu, Smbuf message, uint32_t length);
    bool WaitForRoom(std::unique_lock<std::mutex> &lock, std::size_t bytes, Patience patience);
    void Overflow();
    bool NewStream(Calls &calls); /* false, like the next two, when memory is short */
    bool NewBatch(Calls &calls);
    bool AppendMark(FrameType type);
    RoleInfo OwnRole() const;
    uint32_t NextTerm() const; /* of a device that takes over */
    bool IsToBeActive() const;
    void BecomeActive(bool active, uint32_t least_term, Calls &calls);
    uint32_t Backup() const;

    /* Receiving. */
    Step Take(Frame &frame);
    Step OnHello(const Frame &frame);
    Step Agree(const Hello &hello);
    Step OnRefuse(const Frame &frame);
    Step OnStream(const Frame &frame);
    Step OnData(Frame &frame);
    Step OnMark(const Frame &frame);
    Step OnAcknowledge(const Frame &frame);
    Step OnRole(const Frame &frame);
    Step OnVersions(const Frame &frame);
    bool TakeNumber(const Frame &frame);
    Step Close(const char *why, Counters::Field field);
    Step Refuse(Refusal reason, const char *why);

    const EndpointSettings settings_;
    EndpointOwner &owner_;
    Counters &counters_;

    mutable std::mutex lock_;
    std::condition_variable room_;
    uint32_t waiting_ = 0;
    bool shut_ = false;
    SendStream stream_;
    bool up_ = false;
    bool attached_ = false;    /* the link's thread sends the stream, and holds on to its bytes */
    bool gap_ = false;         /* a message was refused for want of room: the owner must send everything again */
    bool fell_behind_ = false; /* and that is to be told */
    uint32_t batch_ = 0;
    uint64_t batch_end_ = 0; /* number of the mark that ends the batch; 0: not ended */
    bool delivered_ = false; /* the peer has all of the latest batch */
    uint32_t peer_max_message_ = 0;
    uint32_t peer_cpus_ = 0;
    uint32_t role_;
    bool active_;
    uint32_t term_ = 0;
    RoleInfo peer_role_;
    enum class PeerBatchState { NONE, BEGUN, DONE } peer_batch_ = PeerBatchState::NONE;
    bool tell_role_ = false;
    bool tell_versions_ = false;

    /* The link's thread alone. */
    Phase phase_ = Phase::AWAY;
    FrameReader reader_;
    std::vector<uint8_t> control_; /* frames outside the stream */
    std::vector<uint8_t> sending_; /* of these, what Output gave */
    bool acknowledge_ = false;
    bool heartbeat_ = false;
    uint64_t peer_stream_ = 0;
    uint64_t received_ = 0; /* last number taken of the peer's stream */
    uint64_t told_ = 0;     /* last number acknowledged */
    std::size_t untold_bytes_ = 0;
    uint64_t last_in_ = 0;
    uint64_t last_out_ = 0;
    uint64_t alone_since_;
    Refusal refused_ = Refusal::NONE;
    std::string trouble_;
};

} // namespace uvel::host::standby

#endif
