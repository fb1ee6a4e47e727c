/* A subscriber's connection to a configuration database, whatever kind that is. */
#ifndef UVEL_HOST_CONFDB_CONNECTION_H
#define UVEL_HOST_CONFDB_CONNECTION_H

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>

#include "confdb/descriptor.h"
#include "confdb/endpoint.h"
#include "confdb/subscription.h"

namespace uvel::host::confdb {

/* A set of descriptors that is a descriptor itself. */
class Poller {
  public:
    Poller();

    int Get() const { return set_.Get(); }
    void Watch(int descriptor, uint32_t events); /* adds it or changes its events */
    void Forget(int descriptor);

  private:
    Descriptor set_;
};

/* A descriptor that can be read when the time has come. */
class Timer {
  public:
    explicit Timer(Poller &poller);

    int Get() const { return timer_.Get(); }
    void Start(std::chrono::milliseconds after); /* 0: at once */
    void Stop();

  private:
    void Set(std::chrono::nanoseconds after);
    Descriptor timer_;
};

/* Everything happens inside Handle, on the thread that calls it; only Add may be called by others meanwhile. A kind of
 * database derives from it, says what to do for new subscriptions and for its own descriptors, and reports what is
 * wrong, once for each outage. */
class Connection {
  public:
    explicit Connection(std::string client);
    virtual ~Connection() = default;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /* Can be read whenever Handle has something to do. */
    int Descriptor() const { return poller_.Get(); }

    void Add(std::unique_ptr<Subscription> subscription);

    /* What is wrong while the database is out of reach, otherwise empty, terminated and cut to the room; how often it
     * was. Any thread. */
    uint32_t GetHealth(std::span<char> trouble) const;

    const std::string &Client() const { return client_; }

    /* Does what can be done without waiting and calls the subscribers; false when another thread (or a subscriber) is
     * calling it already. */
    bool Handle();

  protected:
    /* Some were added at the end. A failure after this is also to begin with those that were not begun with. */
    virtual void OnNewSubscriptions() = 0;
    virtual void OnReady(int descriptor, uint32_t events) = 0;

    /* Something could not be done for want of memory and the like: everything is to be read again, after a pause. Takes
     * no memory. */
    virtual void OnFailure() noexcept = 0;

    /* What is told of a failure. */
    virtual std::string TroubleOf(const char *reason) const { return reason; }

    Poller &Events() { return poller_; }
    std::list<std::unique_ptr<Subscription>> &Subscriptions() { return subscriptions_; }

    /* Reports, one for each reason in an outage and one at its end. */
    void ReportOutage(const std::string &reason);
    void ReportRecovery();

  private:
    void TakeNew();
    void TakeReady();

    std::string client_;
    Poller poller_;
    confdb::Descriptor news_;
    std::list<std::unique_ptr<Subscription>> subscriptions_;
    std::atomic_flag is_busy_;
    std::set<std::string> outage_;

    mutable std::mutex mutex_; /* guards what follows */
    std::list<std::unique_ptr<Subscription>> new_;
    std::string trouble_;
    uint32_t outages_ = 0;
};

/* Throws StoreError for a database that cannot be used; one that cannot be reached at the moment can be. */
std::unique_ptr<Connection> OpenConnection(const Endpoint &endpoint, const std::string &client);

} // namespace uvel::host::confdb

#endif
