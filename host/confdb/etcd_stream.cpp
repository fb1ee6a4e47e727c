#include "confdb/etcd_stream.h"

namespace uvel::host::confdb {

/* A node that answers so many questions meanwhile will not confirm the watch any more. */
static constexpr unsigned QUESTIONS_TO_CONFIRM = 3;

EtcdStream::EtcdStream(Subscription &subscription, const EtcdEndpoint &endpoint, HttpClient &http)
    : subscription_(subscription), endpoint_(endpoint), http_(http),
      range_(etcd::RangeOfTable(endpoint.prefix, subscription.Table())) {}

void EtcdStream::Start(const std::string &node) {
    Stop();
    node_ = node;
    if (!subscription_.NeedsSnapshot()) {
        AskForChanges();
        return;
    }
    table_ = {};
    next_key_ = range_.first;
    AskForPage();
}

void EtcdStream::Stop() {
    http_.Stop(request_);
    is_watching_ = is_up_ = false;
}

void EtcdStream::AskForPage() {
    const std::string body = etcd::RangeRequest({next_key_, range_.end}, table_.revision, etcd::PAGE);
    request_.Prepare(endpoint_, node_ + "/v3/kv/range", body, HttpRequest::Patience::WHILE_IT_FLOWS);
    http_.Start(request_);
}

void EtcdStream::TakePage() {
    etcd::RangeReply page = etcd::ReadRange(request_.Received(), endpoint_.prefix);
    if (table_.revision == 0)
        table_.revision = page.revision;
    cluster_ = page.cluster;
    table_.items.insert(table_.items.end(), std::make_move_iterator(page.items.begin()),
                        std::make_move_iterator(page.items.end()));
    if (!page.is_last) {
        next_key_ = page.last_key + '\0';
        AskForPage();
        return;
    }
    subscription_.Replace(table_);
    table_ = {};
    AskForChanges();
}

void EtcdStream::AskForChanges() {
    const std::string body = etcd::WatchRequest(range_, subscription_.Revision() + 1);
    request_.Prepare(endpoint_, node_ + "/v3/watch", body, HttpRequest::Patience::ENDLESS);
    http_.Start(request_);
    is_watching_ = true;
    questions_ = 0;
}

void EtcdStream::TakeLines() {
    if (!is_watching_)
        return;
    /* A line may start the stream anew, which empties what was received. */
    std::string received;
    received.swap(request_.Received());
    std::size_t start = 0;
    for (std::size_t end; is_watching_ && (end = received.find('\n', start)) != received.npos; start = end + 1) {
        if (end > start)
            TakeLine(std::string_view(received).substr(start, end - start));
    }
    if (is_watching_)
        request_.Received() = received.substr(start);
}

void EtcdStream::TakeLine(std::string_view line) {
    const etcd::WatchReply reply = etcd::ReadWatchLine(line, endpoint_.prefix);
    /* A store that is younger than what is known from it was replaced or put back. */
    const bool is_another =
        reply.cluster != cluster_ || (reply.is_created && reply.revision < subscription_.Revision());
    if (reply.is_compacted || is_another) {
        subscription_.AskForSnapshot();
        Start(std::string(node_));
        return;
    }
    is_up_ = is_up_ || reply.is_created;
    subscription_.Apply(reply.changes);
    if (reply.is_progress)
        subscription_.PassTo(reply.revision);
}

bool EtcdStream::IsLate() {
    return is_watching_ && !is_up_ && ++questions_ > QUESTIONS_TO_CONFIRM;
}

void EtcdStream::OnFinished(CURLcode code) {
    TakeLines();
    request_.Judge(code);
    if (is_watching_)
        throw StoreError(node_ + ": the watch ended");
    TakePage();
}

} // namespace uvel::host::confdb
