/* One subscription's stream of changes from an etcd node. */
#ifndef UVEL_HOST_CONFDB_ETCD_STREAM_H
#define UVEL_HOST_CONFDB_ETCD_STREAM_H

#include "confdb/etcd_messages.h"
#include "confdb/http.h"
#include "confdb/subscription.h"

namespace uvel::host::confdb {

/* Reads the whole table, page by page and all at one revision, and then watches for changes after that revision; starts
 * with watching where the subscription has a table already. What a node says wrong is thrown as StoreError; the owner
 * then starts the stream again, at another node. */
class EtcdStream {
  public:
    EtcdStream(Subscription &subscription, const EtcdEndpoint &endpoint, HttpClient &http);
    ~EtcdStream() { Stop(); }
    EtcdStream(const EtcdStream &) = delete;
    EtcdStream &operator=(const EtcdStream &) = delete;

    void Start(const std::string &node);
    void Stop();

    /* Whether the node has confirmed the watch. */
    bool IsUp() const { return is_up_; }

    /* To be asked each time when the node has answered something else: whether it should have confirmed by now. */
    bool IsLate();

    bool Owns(const HttpRequest *request) const { return request == &request_; }

    /* Something may have arrived: takes the whole lines of a watch. */
    void TakeLines();

    /* The node has ended the answer. */
    void OnFinished(CURLcode code);

  private:
    void AskForPage();
    void TakePage();
    void AskForChanges();
    void TakeLine(std::string_view line);

    Subscription &subscription_;
    const EtcdEndpoint &endpoint_;
    HttpClient &http_;
    HttpRequest request_;
    std::string node_;
    etcd::KeyRange range_;
    std::string next_key_; /* of the next page */
    Snapshot table_;       /* as far as it was read */
    uint64_t cluster_ = 0; /* that the table is from */
    bool is_watching_ = false;
    bool is_up_ = false;
    unsigned questions_ = 0; /* answered since the watch was asked for */
};

} // namespace uvel::host::confdb

#endif
