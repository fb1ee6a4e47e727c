/* HTTP requests with libcurl: one at a time and waited for, or many at once on a set of descriptors. */
#ifndef UVEL_HOST_CONFDB_HTTP_H
#define UVEL_HOST_CONFDB_HTTP_H

#include <chrono>
#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string>

#include "confdb/connection.h"
#include "confdb/endpoint.h"

namespace uvel::host::confdb {

/* The request cannot have reached the server. */
class NotSent : public StoreError {
    using StoreError::StoreError;
};

/* Certificates do not fit: a matter of configuration, which no other attempt will change. */
class TrustError : public NotSent {
    using NotSent::NotSent;
};

/* A POST to etcd and what has arrived of the answer. Can be used again when it is done. */
class HttpRequest {
  public:
    HttpRequest();
    ~HttpRequest();
    HttpRequest(const HttpRequest &) = delete;
    HttpRequest &operator=(const HttpRequest &) = delete;

    /* How long it may take. */
    enum class Patience {
        SHORT,          /* two seconds for all */
        WHILE_IT_FLOWS, /* three seconds without a byte */
        ENDLESS,        /* two seconds to connect, then without limit */
    };
    void Prepare(const EtcdEndpoint &etcd, const std::string &url, const std::string &body, Patience patience);

    /* Sends it and waits. Throws StoreError when no answer came. */
    void Perform();

    /* Throws StoreError for a request that failed. Answers of etcd that report an error are answers. */
    void Judge(CURLcode code) const;

    /* Whether the request that was answered may have reached a server before. */
    bool MayHaveBeenRepeated() const;

    CURL *Handle() const { return handle_.get(); }
    std::string &Received() { return received_; }

  private:
    static std::size_t Receive(char *bytes, std::size_t size, std::size_t count, void *self) noexcept;

    template <CURLINFO WHAT>
    long Info() const;

    struct Closer {
        void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };
    std::unique_ptr<CURL, Closer> handle_;
    std::unique_ptr<curl_slist, Closer> headers_;
    std::string url_;
    std::string received_;
    char error_[CURL_ERROR_SIZE] = {};
};

/* Runs requests whenever their sockets, which it puts into the set, are ready. */
class HttpClient {
  public:
    explicit HttpClient(Poller &poller);
    ~HttpClient();
    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;

    /* The request must live until it is finished or stopped; stopping one that is not running does nothing. */
    void Start(HttpRequest &request);
    void Stop(HttpRequest &request);

    /* Something of the set is ready that may be this client's. */
    void OnReady(int descriptor, uint32_t events);

    struct Finished {
        HttpRequest *request;
        CURLcode code;
    };
    std::optional<Finished> TakeFinished();

  private:
    static int OnSocket(CURL *, curl_socket_t socket, int what, void *self, void *) noexcept;
    static int OnTimer(CURLM *, long timeout_ms, void *self) noexcept;

    Poller &poller_;
    Timer timer_;
    CURLM *multi_;
};

} // namespace uvel::host::confdb

#endif
