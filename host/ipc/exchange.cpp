#include "ipc/exchange.h"

#include "crypto/report.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace uvel::host {

namespace {

constexpr std::size_t INBOX_ROOM = 16384;
constexpr int BACKLOG = 128;
constexpr int PAUSE_MS = 100; /* before connections are accepted again, where there was no descriptor for one */

std::mutex g_making;
std::atomic<Exchange *> g_exchange{nullptr};
Exchange *g_of_parent = nullptr; /* what a forked child was born with */

/* True on the thread that receives, which must not wait for itself. */
thread_local bool t_receiving = false;

bool AddressOf(const std::string &path, sockaddr_un &address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        ReportText("%.512s: too long a path for a socket", path.c_str());
        return false;
    }
    path.copy(address.sun_path, path.size());
    return true;
}

int NewSocket() {
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

} // namespace

/* Never destroyed: its thread runs until the process ends. A forked child has neither the thread nor the claims of its
 * parent, so it begins anew and leaves its parent's alone. */
Exchange &Exchange::The() {
    Exchange *exchange = g_exchange.load(std::memory_order_acquire);
    if (exchange != nullptr)
        return *exchange;
    std::lock_guard lock(g_making);
    exchange = g_exchange.load();
    if (exchange == nullptr) {
        static bool once = [] {
            pthread_atfork([] { g_making.lock(); }, [] { g_making.unlock(); },
                           [] {
                               g_making.unlock();
                               g_of_parent = g_exchange.exchange(nullptr);
                               t_receiving = false;
                           });
            std::atexit([] {
                if (Exchange *last = g_exchange.load(); last != nullptr)
                    last->Leave();
            });
            return true;
        }();
        (void)once;
        exchange = new Exchange;
        g_exchange.store(exchange, std::memory_order_release);
    }
    return *exchange;
}

void Exchange::Leave() {
    folder_.Leave();
}

bool Exchange::Watch(int file) {
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = file;
    return epoll_ctl(epoll_, EPOLL_CTL_ADD, file, &event) == 0;
}

/* Whether new connections are reported to the receiving thread. */
void Exchange::Attend(bool attend) {
    epoll_event event = {};
    event.events = attend ? EPOLLIN : 0U;
    event.data.fd = listener_;
    epoll_ctl(epoll_, EPOLL_CTL_MOD, listener_, &event);
    attends_ = attend;
}

bool Exchange::Join() try {
    std::lock_guard lock(lock_);
    if (!joined_)
        joined_ = folder_.Claim() && Listen() && StartReceiving();
    return joined_;
} catch (const std::bad_alloc &) {
    return false;
}

bool Exchange::Listen() {
    if (listener_ >= 0)
        return true;
    sockaddr_un address;
    const std::string path = folder_.SocketPath(SelfNode());
    const int listener = AddressOf(path, address) ? NewSocket() : -1;
    if (listener < 0)
        return false;
    unlink(path.c_str()); /* of an earlier process of this number */
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(listener, BACKLOG) != 0) {
        ReportText("%.512s: %s", path.c_str(), std::strerror(errno));
        close(listener);
        return false;
    }
    listener_ = listener;
    return true;
}

bool Exchange::StartReceiving() {
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    doorbell_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (epoll_ >= 0 && doorbell_ >= 0 && Watch(listener_) && Watch(doorbell_) && StartThread())
        return true;
    for (int *file : {&epoll_, &doorbell_}) {
        if (*file >= 0)
            close(*file);
        *file = -1;
    }
    return false;
}

bool Exchange::StartThread() {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before); /* signals are the program's affair */
    bool started = true;
    try {
        std::thread([this] { Receive(); }).detach();
    } catch (const std::exception &) { /* no memory for it, or no thread */
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

bool Exchange::OnReceivingThread() {
    return t_receiving;
}

void Exchange::Receive() {
    t_receiving = true;
    pthread_setname_np(pthread_self(), "ipc");
    for (;;) {
        epoll_event events[32];
        const int count = epoll_wait(epoll_, events, 32, attends_ ? -1 : PAUSE_MS);
        if (!attends_)
            Attend(true);
        for (int i = 0; i < count; ++i) {
            const int file = events[i].data.fd;
            if (file == doorbell_)
                ServeInbox();
            else if (file == listener_)
                Accept();
            else
                ServeSocket(file);
        }
    }
}

/* A connection that finds no descriptor waits in the kernel, which would report it again and again meanwhile. */
void Exchange::Accept() {
    for (;;) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (socket < 0) {
            if (errno != EAGAIN)
                Attend(false);
            return;
        }
        const uint32_t peer = Connection::PeerOf(socket);
        std::lock_guard lock(lock_);
        if (peer == 0)
            close(socket);
        if (peer == 0 || Adopt(socket, peer, false) == nullptr)
            ++stats_.ulRefusedPeers;
    }
}

/* Takes over the socket; without memory for the connection it is closed. */
Exchange::Link Exchange::Adopt(int socket, uint32_t peer, bool for_sending) {
    Link link;
    try {
        link = std::make_shared<Connection>(socket, peer);
        links_[socket] = link;
        if (for_sending)
            routes_[peer] = link;
        if (Watch(socket))
            return link;
    } catch (const std::bad_alloc &) {
        if (link == nullptr)
            close(socket);
    }
    links_.erase(socket);
    if (for_sending)
        routes_.erase(peer);
    return nullptr;
}

/* The socket is closed when the last sender has let go of the connection, so that nobody writes to a later one that was
 * given the same number. */
void Exchange::Drop(const Link &link) {
    std::lock_guard lock(lock_);
    epoll_ctl(epoll_, EPOLL_CTL_DEL, link->Socket(), nullptr);
    links_.erase(link->Socket());
    if (auto route = routes_.find(link->Peer()); route != routes_.end() && route->second == link) {
        routes_.erase(route);
        for (auto &[number, call] : calls_)
            call.over = call.over || call.node == link->Peer();
        call_over_.notify_all();
    }
}

void Exchange::ServeSocket(int socket) {
    Link link;
    {
        std::lock_guard lock(lock_);
        if (auto found = links_.find(socket); found != links_.end())
            link = found->second;
    }
    if (link != nullptr && !link->Receive([&](const Parcel &parcel) { Deliver(parcel, link); }))
        Drop(link);
}

void Exchange::ServeInbox() {
    eventfd_t rings;
    eventfd_read(doorbell_, &rings);
    {
        std::lock_guard lock(lock_);
        at_hand_.swap(inbox_);
    }
    for (const Parcel &parcel : at_hand_)
        Deliver(parcel, nullptr);
    at_hand_.clear();
}

bool Exchange::PostToSelf(const Parcel &parcel) try {
    std::lock_guard lock(lock_);
    if (!joined_ || inbox_.size() >= INBOX_ROOM)
        return false;
    inbox_.push_back(parcel);
    if (inbox_.size() == 1)
        eventfd_write(doorbell_, 1);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

Exchange::Link Exchange::LinkTo(uint32_t node) try {
    std::lock_guard lock(lock_);
    if (auto route = routes_.find(node); route != routes_.end())
        return route->second;
    sockaddr_un address;
    if (!AddressOf(folder_.SocketPath(node), address))
        return nullptr;
    const int socket = NewSocket();
    if (socket < 0)
        return nullptr;
    if (connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        Connection::PeerOf(socket) != node) {
        close(socket);
        return nullptr;
    }
    return Adopt(socket, node, true);
} catch (const std::bad_alloc &) {
    return nullptr;
}

/* ---- messages ---- */

bool Exchange::OpenChannel(uint32_t channel, IPC_RECV_CB receive) {
    {
        std::lock_guard lock(lock_);
        if (!channels_.emplace(channel, receive).second)
            return false;
    }
    if (Join())
        return true;
    std::lock_guard lock(lock_);
    channels_.erase(channel);
    return false;
}

bool Exchange::SendMessage(void *body) {
    const Message *message = MessageOf(body);
    const Parcel parcel = {ParcelKind::MESSAGE, 0, message->mid, 0, body};
    bool sent = false;
    if (message->dst_node == SelfNode()) {
        {
            std::lock_guard lock(lock_);
            sent = channels_.contains(message->dst_channel);
        }
        sent = sent && PostToSelf(parcel);
    } else if (const Link link = Join() ? LinkTo(message->dst_node) : nullptr; link != nullptr && link->Send(parcel)) {
        sent = ReleaseMessage(body);
    }
    std::lock_guard lock(lock_);
    ++(sent ? stats_.ulSent : stats_.ulRefused);
    return sent;
}

void Exchange::DeliverMessage(void *body) {
    IPC_RECV_CB receive = nullptr;
    {
        std::lock_guard lock(lock_);
        if (auto channel = body == nullptr ? channels_.end() : channels_.find(MessageOf(body)->dst_channel);
            channel != channels_.end())
            receive = channel->second;
        ++(receive != nullptr ? stats_.ulReceived : stats_.ulDropped);
    }
    if (receive == nullptr) {
        ReleaseMessage(body);
        return;
    }
    const Message *message = MessageOf(body);
    receive(message->type, message->src_channel, message->dst_channel, body, message->length);
}

void Exchange::Deliver(const Parcel &parcel, const Link &from) {
    switch (parcel.kind) {
    case ParcelKind::MESSAGE:
        DeliverMessage(parcel.body);
        break;
    case ParcelKind::CALL:
        DeliverCall(parcel, from);
        break;
    case ParcelKind::ANSWER:
        DeliverAnswer(parcel, from == nullptr ? SelfNode() : from->Peer());
        break;
    default:
        ReleaseMessage(parcel.body);
        break;
    }
}

IPC_STATS_S Exchange::Stats() {
    std::lock_guard lock(lock_);
    return stats_;
}

} // namespace uvel::host
