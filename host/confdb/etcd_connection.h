/* Subscriptions to an etcd cluster. */
#ifndef UVEL_HOST_CONFDB_ETCD_CONNECTION_H
#define UVEL_HOST_CONFDB_ETCD_CONNECTION_H

#include <vector>

#include "confdb/connection.h"
#include "confdb/etcd_stream.h"
#include "confdb/http.h"

namespace uvel::host::confdb {

/* Talks to one node at a time; each subscription has a stream of its own from there. A node that refuses, fails or is
 * silent is left for the next one, and each stream goes on where its subscription stands. Silence is found by asking
 * the node something every second, which it can answer only with the majority behind it. */
class EtcdConnection : public Connection {
  public:
    EtcdConnection(const EtcdEndpoint &endpoint, const std::string &client);
    ~EtcdConnection() override;

  private:
    void OnNewSubscriptions() override;
    void OnReady(int descriptor, uint32_t events) override;
    void OnFailure() noexcept override;
    std::string TroubleOf(const char *reason) const override;

    const std::string &Node() const { return endpoint_.urls[node_]; }
    void MakeStreams();
    void StartStreams();
    void AskNode();
    void TakeAnswers();
    void JudgeNode();

    EtcdEndpoint endpoint_;
    HttpClient http_;
    Timer retry_;
    Timer ask_;
    HttpRequest question_;
    std::vector<std::unique_ptr<EtcdStream>> streams_; /* in the order of their subscriptions */
    std::size_t node_ = 0;
    unsigned answers_ = 0;            /* to questions since the streams were started */
    std::chrono::milliseconds pause_; /* before the next attempt */
    bool is_pausing_ = false;
};

} // namespace uvel::host::confdb

#endif
