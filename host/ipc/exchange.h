/* Where the messages and calls of this process meet: its open channels, the modules it offers, its connections to the
 * other processes, and the one thread that receives.
 *
 * What is for this process goes through an inbox to the same thread, so a receiver sees no difference and a sender
 * never runs a receiver's code. */
#ifndef UVEL_HOST_IPC_EXCHANGE_H
#define UVEL_HOST_IPC_EXCHANGE_H

#include "ipc/connection.h"
#include "ipc/node_folder.h"
#include <condition_variable>
#include <deque>
#include <memory>
#include <unordered_map>
#include <uvelhost/ipc.h>

namespace uvel::host {

class Exchange {
  public:
    /* The exchange of this process; a forked child has a new one. */
    static Exchange &The();

    /* Makes this process one that others can reach. Again is a success. */
    bool Join();

    bool OpenChannel(uint32_t channel, IPC_RECV_CB receive);
    bool OfferModule(uint32_t mid, IPC_RPC_CB serve);

    /* Takes over the message on success. */
    bool SendMessage(void *body);

    /* Calls a module of a node; the message stays the caller's. False when there was no answer in time. */
    bool Call(uint32_t node, uint32_t mid, void *body, uint32_t timeout_ms, uint32_t *result, void **reply);

    bool RegisterComponent(uint32_t mid, uint32_t type, uint32_t slot);

    /* All components of the device; false when that cannot be told. */
    bool Components(std::vector<Component> &components);

    IPC_STATS_S Stats();

    /* Takes this process out of the folder, as it ends. */
    void Leave();

  private:
    using Link = std::shared_ptr<Connection>;

    struct PendingCall {
        uint32_t node;
        bool over = false;
        bool answered = false;
        uint32_t result = 0;
        void *reply = nullptr;
    };

    Exchange() = default;

    bool Listen();
    bool StartReceiving();
    bool StartThread();
    static bool OnReceivingThread();
    void Receive();
    void Accept();
    void ServeInbox();
    void ServeSocket(int socket);
    void Deliver(const Parcel &parcel, const Link &from);
    void DeliverMessage(void *body);
    void DeliverCall(const Parcel &parcel, const Link &from);
    void DeliverAnswer(const Parcel &parcel, uint32_t node);
    bool Ask(uint32_t node, const Parcel &call);
    bool PostToSelf(const Parcel &parcel);
    Link LinkTo(uint32_t node);
    bool Watch(int file);
    void Attend(bool attend);
    Link Adopt(int socket, uint32_t peer, bool for_sending);
    void Drop(const Link &link);

    std::mutex lock_; /* all below but what is said otherwise */
    bool joined_ = false;
    NodeFolder folder_;
    std::unordered_map<uint32_t, IPC_RECV_CB> channels_;
    std::unordered_map<uint32_t, IPC_RPC_CB> offers_;
    std::vector<Component> components_;         /* of this process */
    std::unordered_map<uint32_t, Link> routes_; /* to send, by node */
    std::unordered_map<int, Link> links_;       /* to receive, by socket */
    std::unordered_map<uint32_t, PendingCall> calls_;
    std::condition_variable call_over_;
    uint32_t last_call_ = 0;
    std::deque<Parcel> inbox_;
    IPC_STATS_S stats_ = {};

    std::deque<Parcel> at_hand_; /* of the inbox; this and the next are the receiving thread's alone */
    bool attends_ = true;        /* to new connections */

    int epoll_ = -1; /* these three are set before the thread starts */
    int listener_ = -1;
    int doorbell_ = -1; /* eventfd: there is something in the inbox */
};

} // namespace uvel::host

#endif
