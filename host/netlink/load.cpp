/* Reading everything that the kernel has. Changes that arrive meanwhile come in the same queue as the lists, so applying
 * both in order gives the state at the end; only when the kernel had to drop something it is begun again. */
#include "netlink/feeder.h"

#include <algorithm>
#include <cerrno>
#include <linux/if_bridge.h>
#include <linux/rtnetlink.h>
#include <poll.h>

namespace uvel::host::netlink {

namespace {

constexpr int ANSWER_MS = 5000;
constexpr std::chrono::milliseconds OVERRUN_PAUSE{10};
constexpr int LONGEST_PAUSES = 10;
/* A list that keeps changing is taken as it comes after so many readings, and read again a little later. */
constexpr int MOST_READINGS = 20;
constexpr std::chrono::milliseconds LATER{1000};

/* Result of a list: 0, or the errno value with which the kernel ended it. */
int ErrorOf(const nlmsghdr *message) {
    int error = 0;
    if (mnl_nlmsg_get_payload_len(message) >= sizeof error)
        error = -*static_cast<const int *>(mnl_nlmsg_get_payload(message));
    return error;
}

} // namespace

/* False when it was not possible; it is then to be tried again. */
bool Feeder::Load() {
    loading_ = true;
    Outcome outcome = Outcome::OVERRUN;
    for (int pauses = 0; outcome == Outcome::OVERRUN && !stop_; ++pauses) {
        if (pauses > 0)
            std::this_thread::sleep_for(OVERRUN_PAUSE * std::min(pauses, LONGEST_PAUSES));
        DropQueued();
        state_ = {};
        outcome = ReadEverything();
    }
    loading_ = false;
    if (outcome != Outcome::DONE)
        return false;
    writer_.PutAll(state_);
    loads_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

/* What is queued may say that something came whose going was lost. The kernel reports the next loss only once the queue
 * has been empty, so it must be emptied before anything is believed again. */
void Feeder::DropQueued() {
    std::span<const std::byte> datagram;
    Socket::Read read;
    do {
        read = socket_.Receive(datagram);
    } while (read == Socket::Read::DATA || read == Socket::Read::OVERRUN);
}

Feeder::Outcome Feeder::ReadEverything() {
    for (const Dump &dump : {Dump{RTM_GETLINK, AF_UNSPEC}, Dump{RTM_GETADDR, AF_INET}, Dump{RTM_GETADDR, AF_INET6},
                             Dump{RTM_GETVLAN, AF_BRIDGE}}) {
        if (const Outcome outcome = ReadDump(dump); outcome != Outcome::DONE)
            return outcome;
    }
    return Outcome::DONE;
}

Feeder::Outcome Feeder::ReadDump(const Dump &dump) {
    for (int readings = 1;; ++readings) {
        if (!RequestDump(dump))
            return Outcome::FAILED;
        bool interrupted = false;
        std::optional<Outcome> outcome;
        while (!outcome.has_value())
            outcome = ReadAnswers(interrupted);
        if (*outcome != Outcome::DONE || !interrupted)
            return *outcome;
        interrupted_.fetch_add(1, std::memory_order_relaxed);
        if (readings == MOST_READINGS) {
            ReloadSoon(LATER);
            return Outcome::DONE;
        }
    }
}

bool Feeder::RequestDump(const Dump &dump) {
    alignas(nlmsghdr) std::byte buffer[128];
    nlmsghdr *request = mnl_nlmsg_put_header(buffer);
    request->nlmsg_type = dump.type;
    request->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request->nlmsg_seq = ++sequence_;
    switch (dump.type) {
    case RTM_GETLINK:
        static_cast<ifinfomsg *>(mnl_nlmsg_put_extra_header(request, sizeof(ifinfomsg)))->ifi_family = dump.family;
        mnl_attr_put_u32(request, IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
        break;
    case RTM_GETADDR:
        static_cast<ifaddrmsg *>(mnl_nlmsg_put_extra_header(request, sizeof(ifaddrmsg)))->ifa_family = dump.family;
        break;
    default:
        static_cast<br_vlan_msg *>(mnl_nlmsg_put_extra_header(request, sizeof(br_vlan_msg)))->family = dump.family;
        break;
    }
    return socket_.Send(request);
}

/* One datagram: an outcome when the list is at its end, or cannot be read to its end. */
std::optional<Feeder::Outcome> Feeder::ReadAnswers(bool &interrupted) {
    std::span<const std::byte> datagram;
    switch (socket_.Receive(datagram)) {
    case Socket::Read::OVERRUN:
        overruns_.fetch_add(1, std::memory_order_relaxed);
        return Outcome::OVERRUN;
    case Socket::Read::FAILED:
        return Outcome::FAILED;
    case Socket::Read::NOTHING:
        if (WaitForAnswer())
            return std::nullopt;
        return stop_ ? Outcome::STOPPED : Outcome::FAILED;
    case Socket::Read::DATA:
        break;
    }
    for (const nlmsghdr *message : Messages(datagram)) {
        const bool answer = message->nlmsg_seq == sequence_ && message->nlmsg_pid == socket_.Port();
        if (answer && (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0)
            interrupted = true;
        if (answer && (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR)) {
            /* A kernel without filtering bridges does not know the list of their VLANs. */
            const int error = ErrorOf(message);
            return error == 0 || error == EOPNOTSUPP ? Outcome::DONE : Outcome::FAILED;
        }
        Apply(message);
    }
    return std::nullopt;
}

/* False when nothing comes or the feeder ends. */
bool Feeder::WaitForAnswer() {
    pollfd wait = {socket_.Descriptor(), POLLIN, 0};
    constexpr int SLICE_MS = 100;
    for (int waited = 0; waited < ANSWER_MS && !stop_; waited += SLICE_MS) {
        if (poll(&wait, 1, SLICE_MS) != 0)
            return true;
    }
    return false;
}

} // namespace uvel::host::netlink
