/* The link's thread: connects or listens, introduces, carries bytes, notices silence. */

#include "standby/link.h"

#include "crypto/report.h"
#include <algorithm>
#include <cerrno>
#include <new>
#include <unistd.h>

namespace uvel::host::standby {

using C = YSB_LINK_COUNTERS_S;

constexpr std::size_t MAX_PENDING = 8;           /* peers that introduce themselves at one time */
constexpr std::size_t ENOUGH_TO_SEND = 64 << 10; /* encrypted bytes that wait for the socket; stays in the cache */
constexpr int READS_AT_ONCE = 64;                /* records, before it is the turn of sending again */
constexpr int WRITES_AT_ONCE = 32;
constexpr uint64_t LASTED_MS = 1000;
constexpr uint64_t SAY_EVERY_MS = 1000;
constexpr uint64_t DEAF_MS = 100; /* to peers who knock, while this process has no descriptor or memory left for them */

Link::Connection::~Connection() {
    tls.reset();
    close(socket);
}

/* At most a line a second: whoever knocks at the port must not fill the log. */
void Link::Say(const std::string &text) {
    const uint64_t now = Now();
    if (last_said_ != 0 && now < last_said_ + SAY_EVERY_MS) {
        ++unsaid_;
        return;
    }
    const std::string before = unsaid_ == 0 ? "" : " (" + std::to_string(unsaid_) + " lines left out before)";
    last_said_ = now;
    unsaid_ = 0;
    ReportText("standby link to %s: %s%s", settings_.peer_name.c_str(), text.c_str(), before.c_str());
}

void Link::CountRefusal(const Connection &connection) {
    const TlsChannel &tls = *connection.tls;
    if (tls.Refused() != Refusal::NONE) {
        const auto reason = static_cast<uint32_t>(tls.Refused());
        if (tls.RefusedByPeer())
            counters_.AddRefusedBy(reason);
        else
            counters_.AddRefused(reason);
        Say((tls.RefusedByPeer() ? "refused by " : "refused ") + connection.peer + ": " + YSB_Link_RefusalText(reason) +
            " (" + tls.Trouble() + ")");
    } else if (connection.state == Connection::State::UP && endpoint_.Refused() != Refusal::NONE) {
        const auto reason = static_cast<uint32_t>(endpoint_.Refused());
        counters_.AddRefused(reason);
        Say("refused " + connection.peer + ": " + YSB_Link_RefusalText(reason));
    } else if (connection.state == Connection::State::UP && !endpoint_.Trouble().empty()) {
        Say("connection to " + connection.peer + " ended: " + endpoint_.Trouble());
    } else if (!tls.Trouble().empty()) {
        Say("connection to " + connection.peer + " ended: " + tls.Trouble());
    }
}

/* ---- coming together */

void Link::StartConnecting(uint64_t now) {
    const int socket = Connect(peer_address_);
    if (socket < 0) {
        counters_.Add(&C::ulFailedConnects);
        BackOff(now);
        return;
    }
    pending_.push_back(std::make_unique<Connection>(socket, Connection::State::CONNECTING, now + settings_.timeout_ms));
}

void Link::BackOff(uint64_t now) {
    const uint32_t least = config_.ulRetryMinMs != 0 ? config_.ulRetryMinMs : 100;
    const uint32_t most = config_.ulRetryMaxMs != 0 ? config_.ulRetryMaxMs : 5000;
    pause_ms_ = pause_ms_ == 0 ? least : std::min(std::max(most, least), pause_ms_ * 2);
    next_connect_ = now + pause_ms_;
}

void Link::AcceptPeers(uint64_t now) {
    while (pending_.size() < MAX_PENDING) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket < 0) {
            if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
                deaf_until_ = now + DEAF_MS;
            return;
        }
        auto connection =
            std::make_unique<Connection>(socket, Connection::State::HANDSHAKE, now + settings_.timeout_ms);
        connection->peer = PeerText(socket);
        connection->tls = std::make_unique<TlsChannel>(*tls_, socket, true);
        Tune(socket, settings_.timeout_ms);
        pending_.push_back(std::move(connection));
    }
}

bool Link::Advance(Connection &connection, uint64_t now) {
    if (connection.state == Connection::State::CONNECTING) {
        pollfd ready{connection.socket, POLLOUT, 0};
        if (poll(&ready, 1, 0) == 0 && now < connection.deadline)
            return true;
        if ((ready.revents & (POLLOUT | POLLERR | POLLHUP)) == 0 || ConnectResult(connection.socket) != 0)
            return false;
        connection.peer = PeerText(connection.socket);
        connection.tls = std::make_unique<TlsChannel>(*tls_, connection.socket, false);
        connection.state = Connection::State::HANDSHAKE;
        Tune(connection.socket, settings_.timeout_ms);
    }
    const TlsChannel::Io result = connection.tls->Handshake();
    connection.wants_write = connection.tls->Flush() == TlsChannel::Io::AGAIN;
    if (result == TlsChannel::Io::ENDED) {
        CountRefusal(connection);
        return false;
    }
    if (result == TlsChannel::Io::DONE)
        connection.state = Connection::State::UP;
    else if (now >= connection.deadline) {
        counters_.AddRefused(YSB_LINK_REFUSED_TIMEOUT);
        Say("refused " + connection.peer + ": " + YSB_Link_RefusalText(YSB_LINK_REFUSED_TIMEOUT));
        return false;
    }
    return true;
}

void Link::AdvancePending(uint64_t now) {
    for (std::size_t i = 0; i < pending_.size();) {
        const bool alive = Advance(*pending_[i], now);
        if (alive && pending_[i]->state != Connection::State::UP) {
            ++i;
            continue;
        }
        std::unique_ptr<Connection> connection = std::move(pending_[i]);
        pending_.erase(pending_.begin() + static_cast<std::ptrdiff_t>(i));
        if (alive)
            Adopt(std::move(connection), now);
        else if (connects_) {
            counters_.Add(&C::ulFailedConnects);
            BackOff(now);
        }
    }
}

/* The peer has proven itself. It has one process: a connection that is still there is dead, even where this side has
 * not noticed, and ends before the new one begins, so that nothing more is taken from it. */
void Link::Adopt(std::unique_ptr<Connection> connection, uint64_t now) {
    if (current_ != nullptr)
        Drop(now);
    current_ = std::move(connection);
    current_->since = now;
    endpoint_.Connected(now);
    read_more_ = true;
}

void Link::Drop(uint64_t now) {
    const bool lasted = endpoint_.IsUp() && now >= current_->since + LASTED_MS;
    CountRefusal(*current_);
    endpoint_.Lost();
    current_.reset();
    read_more_ = false;
    if (!connects_)
        return;
    /* At once after a connection that was good for something, otherwise with growing pauses. */
    if (lasted) {
        pause_ms_ = 0;
        next_connect_ = now;
    } else {
        BackOff(now);
    }
}

/* ---- carrying */

void Link::WritePeer(uint64_t now) {
    TlsChannel &tls = *current_->tls;
    bool good = true;
    write_more_ = true;
    for (int i = 0; good && write_more_ && i < WRITES_AT_ONCE; ++i) {
        for (bool more = true; good && more && tls.Pending() < ENOUGH_TO_SEND;) {
            const std::span<const uint8_t> bytes = endpoint_.Output();
            more = !bytes.empty();
            good = more ? tls.Write(bytes) : tls.EndRecord();
            if (more)
                endpoint_.Written(now);
        }
        write_more_ = tls.Pending() != 0;
        const TlsChannel::Io flushed = good ? tls.Flush() : TlsChannel::Io::ENDED;
        good = flushed != TlsChannel::Io::ENDED;
        write_more_ = write_more_ && flushed == TlsChannel::Io::DONE;
    }
    if (!good)
        Drop(now);
    else
        current_->wants_write = tls.Pending() != 0;
}

void Link::ReadPeer(uint64_t now) {
    TlsChannel &tls = *current_->tls;
    read_more_ = false;
    for (int i = 0; i < READS_AT_ONCE; ++i) {
        std::size_t got = 0;
        const TlsChannel::Io result = tls.Read(endpoint_.Room(), got);
        if (result == TlsChannel::Io::AGAIN) {
            endpoint_.Drained();
            return;
        }
        if (result == TlsChannel::Io::ENDED) {
            Drop(now);
            return;
        }
        if (endpoint_.Filled(got, now) == Endpoint::Step::CLOSE) {
            const std::span<const uint8_t> farewell = endpoint_.Output();
            if (endpoint_.Refused() != Refusal::NONE && tls.Write(farewell))
                tls.SayGoodbye();
            Drop(now);
            return;
        }
    }
    read_more_ = true;
}

/* ---- the loop */

int Link::TimeoutOfWait(uint64_t now) const {
    if (current_ != nullptr && (read_more_ || write_more_))
        return 0;
    uint64_t next = endpoint_.NextTick();
    if (current_ == nullptr && endpoint_.NextTick() <= now)
        next = now + settings_.timeout_ms; /* took over long ago */
    if (connects_ && current_ == nullptr && pending_.empty())
        next = std::min(next, next_connect_);
    if (deaf_until_ > now)
        next = std::min(next, deaf_until_);
    for (const auto &connection : pending_)
        next = std::min(next, connection->deadline);
    return next <= now ? 0 : static_cast<int>(std::min<uint64_t>(next - now, 60000));
}

void Link::Wait() {
    polled_.clear();
    polled_.push_back({wake_, POLLIN, 0});
    const uint64_t now = Now();
    const bool listens = listener_ >= 0 && pending_.size() < MAX_PENDING && now >= deaf_until_;
    if (listens)
        polled_.push_back({listener_, POLLIN, 0});
    const auto add = [&](const Connection &connection) {
        const bool connecting = connection.state == Connection::State::CONNECTING;
        const int events = (connecting ? 0 : POLLIN) | (connecting || connection.wants_write ? POLLOUT : 0);
        polled_.push_back({connection.socket, static_cast<short>(events), 0});
    };
    for (const auto &connection : pending_)
        add(*connection);
    if (current_ != nullptr)
        add(*current_);
    (void)poll(polled_.data(), polled_.size(), TimeoutOfWait(now));
    if (polled_[0].revents != 0) {
        uint64_t count;
        [[maybe_unused]] const ssize_t ignored = read(wake_, &count, sizeof count);
    }
    knocked_ = listens && polled_[1].revents != 0;
    if (current_ != nullptr && (polled_.back().revents & ~POLLOUT) != 0)
        read_more_ = true;
}

void Link::Turn() {
    /* From here on whoever has something to send wakes this thread: what came before is sent below. */
    idle_.store(true);
    if (current_ != nullptr)
        WritePeer(Now());
    Wait();
    idle_.store(false);
    const uint64_t now = Now();
    if (knocked_)
        AcceptPeers(now);
    AdvancePending(now);
    if (current_ != nullptr && read_more_)
        ReadPeer(now);
    if (endpoint_.Tick(now) == Endpoint::Step::CLOSE && current_ != nullptr)
        Drop(now);
    if (connects_ && current_ == nullptr && pending_.empty() && now >= next_connect_)
        StartConnecting(now);
}

/* Memory was short in the middle of something: all connections end, the streams go on with the next one. */
void Link::GiveUpConnections() {
    if (current_ != nullptr)
        endpoint_.Lost();
    current_.reset();
    pending_.clear();
    read_more_ = write_more_ = false;
    deaf_until_ = Now() + DEAF_MS;
    BackOff(Now());
}

void Link::Run() {
    while (!stop_.load()) {
        try {
            Turn();
        } catch (const std::bad_alloc &) {
            GiveUpConnections();
        }
    }
    if (current_ != nullptr)
        current_->tls->SayGoodbye();
    endpoint_.Lost();
}

} // namespace uvel::host::standby
