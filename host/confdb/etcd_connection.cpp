#include "confdb/etcd_connection.h"

#include <algorithm>

namespace uvel::host::confdb {

namespace {

using namespace std::chrono_literals;

constexpr auto SHORTEST_PAUSE = 20ms;
constexpr auto LONGEST_PAUSE = 1000ms;
constexpr auto ASK_EVERY = 1000ms;

} // namespace

EtcdConnection::EtcdConnection(const EtcdEndpoint &endpoint, const std::string &client)
    : Connection(client), endpoint_(endpoint), http_(Events()), retry_(Events()), ask_(Events()),
      pause_(SHORTEST_PAUSE) {}

EtcdConnection::~EtcdConnection() {
    http_.Stop(question_);
}

void EtcdConnection::MakeStreams() {
    auto subscription = std::next(Subscriptions().begin(), static_cast<std::ptrdiff_t>(streams_.size()));
    for (; subscription != Subscriptions().end(); ++subscription)
        streams_.push_back(std::make_unique<EtcdStream>(**subscription, endpoint_, http_));
}

void EtcdConnection::OnNewSubscriptions() {
    const std::size_t old = streams_.size();
    MakeStreams();
    if (is_pausing_)
        return;
    for (std::size_t i = old; i < streams_.size(); ++i)
        streams_[i]->Start(Node());
    if (old == 0)
        ask_.Start(0ms);
}

void EtcdConnection::OnReady(int descriptor, uint32_t events) {
    if (descriptor == retry_.Get())
        StartStreams();
    else if (descriptor == ask_.Get())
        AskNode();
    else
        http_.OnReady(descriptor, events);
    TakeAnswers();
}

void EtcdConnection::StartStreams() {
    retry_.Stop();
    is_pausing_ = false;
    answers_ = 0;
    MakeStreams();
    for (auto &stream : streams_)
        stream->Start(Node());
    ask_.Start(0ms);
}

void EtcdConnection::AskNode() {
    ask_.Stop();
    const etcd::KeyRange any{endpoint_.prefix, ""};
    question_.Prepare(endpoint_, Node() + "/v3/kv/range", etcd::RangeRequest(any, 0, 1), HttpRequest::Patience::SHORT);
    http_.Start(question_);
}

void EtcdConnection::TakeAnswers() {
    while (const auto finished = http_.TakeFinished()) {
        if (finished->request == &question_) {
            question_.Judge(finished->code);
            etcd::ReadRange(question_.Received(), endpoint_.prefix);
            JudgeNode();
            continue;
        }
        for (auto &stream : streams_) {
            if (stream->Owns(finished->request))
                stream->OnFinished(finished->code);
        }
    }
    for (auto &stream : streams_)
        stream->TakeLines();
    if (std::all_of(streams_.begin(), streams_.end(), [](const auto &stream) { return stream->IsUp(); }))
        ReportRecovery();
}

/* The node is alive and has the majority behind it; the first answer alone does not make it a good one. */
void EtcdConnection::JudgeNode() {
    ask_.Start(ASK_EVERY);
    if (++answers_ > 1)
        pause_ = SHORTEST_PAUSE;
    if (std::any_of(streams_.begin(), streams_.end(), [](const auto &stream) { return stream->IsLate(); }))
        throw StoreError("does not confirm a watch");
}

std::string EtcdConnection::TroubleOf(const char *reason) const {
    return std::string_view(reason).starts_with(Node()) ? reason : Node() + ": " + reason;
}

void EtcdConnection::OnFailure() noexcept {
    http_.Stop(question_);
    for (auto &stream : streams_)
        stream->Stop();
    ask_.Stop();
    node_ = (node_ + 1) % endpoint_.urls.size();
    is_pausing_ = true;
    retry_.Start(pause_);
    pause_ = std::min<std::chrono::milliseconds>(pause_ * 2, LONGEST_PAUSE);
}

} // namespace uvel::host::confdb
