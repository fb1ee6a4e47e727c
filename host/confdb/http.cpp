#include "confdb/http.h"

#include <sys/epoll.h>

namespace uvel::host::confdb {

namespace {

constexpr long CONNECT_MS = 2000;
constexpr long SHORT_MS = 2000;
constexpr long SILENCE_SECONDS = 3;
constexpr std::size_t LONGEST_ANSWER = std::size_t{1} << 30;

void InitialiseOnce() {
    static const CURLcode done = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (done != CURLE_OK)
        throw StoreError(curl_easy_strerror(done));
}

template <typename Value>
void Set(CURL *handle, CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(handle, option, value);
    if (code != CURLE_OK)
        throw StoreError(curl_easy_strerror(code));
}

void SetTls(CURL *handle, const EtcdEndpoint &etcd) {
    if (!etcd.ca_file.empty())
        Set(handle, CURLOPT_CAINFO, etcd.ca_file.c_str());
    if (!etcd.cert_file.empty()) {
        Set(handle, CURLOPT_SSLCERT, etcd.cert_file.c_str());
        Set(handle, CURLOPT_SSLKEY, etcd.key_file.c_str());
    }
}

} // namespace

HttpRequest::HttpRequest() {
    InitialiseOnce();
    handle_.reset(curl_easy_init());
    /* Without a leader a watch is silent for ever unless it asks to be told. An empty "Expect" saves a round trip. */
    for (const char *line : {"Content-Type: application/json", "Grpc-Metadata-hasleader: true", "Expect:"}) {
        curl_slist *longer = curl_slist_append(headers_.get(), line);
        if (longer == nullptr)
            throw std::bad_alloc();
        (void)headers_.release();
        headers_.reset(longer);
    }
    if (handle_ == nullptr)
        throw std::bad_alloc();
}

HttpRequest::~HttpRequest() = default;

void HttpRequest::Prepare(const EtcdEndpoint &etcd, const std::string &url, const std::string &body,
                          Patience patience) {
    CURL *handle = handle_.get();
    curl_easy_reset(handle); /* keeps open connections */
    url_ = url;
    received_.clear();
    error_[0] = '\0';
    Set(handle, CURLOPT_URL, url_.c_str());
    Set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    Set(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    Set(handle, CURLOPT_NOPROXY, "*");
    Set(handle, CURLOPT_NOSIGNAL, 1L);
    Set(handle, CURLOPT_TCP_KEEPALIVE, 1L);
    Set(handle, CURLOPT_HTTPHEADER, headers_.get());
    Set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    Set(handle, CURLOPT_COPYPOSTFIELDS, body.data());
    Set(handle, CURLOPT_ERRORBUFFER, error_);
    Set(handle, CURLOPT_WRITEFUNCTION, &HttpRequest::Receive);
    Set(handle, CURLOPT_WRITEDATA, static_cast<void *>(this));
    Set(handle, CURLOPT_PRIVATE, static_cast<void *>(this));
    Set(handle, CURLOPT_CONNECTTIMEOUT_MS, CONNECT_MS);
    if (patience == Patience::SHORT)
        Set(handle, CURLOPT_TIMEOUT_MS, SHORT_MS);
    if (patience == Patience::WHILE_IT_FLOWS) {
        Set(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
        Set(handle, CURLOPT_LOW_SPEED_TIME, SILENCE_SECONDS);
    }
    SetTls(handle, etcd);
}

std::size_t HttpRequest::Receive(char *bytes, std::size_t size, std::size_t count, void *self) noexcept {
    auto &received = static_cast<HttpRequest *>(self)->received_;
    if (size * count > LONGEST_ANSWER - received.size())
        return 0;
    try {
        received.append(bytes, size * count);
    } catch (const std::exception &) {
        return 0; /* curl then gives up */
    }
    return size * count;
}

void HttpRequest::Judge(CURLcode code) const {
    if (code == CURLE_OK)
        return;
    /* These say how many milliseconds it took, which makes the same reason look like another one. */
    const bool has_time = code == CURLE_COULDNT_CONNECT || code == CURLE_OPERATION_TIMEDOUT;
    const std::string text =
        url_.substr(0, url_.find("/v3/")) + ": " + (has_time || error_[0] == '\0' ? curl_easy_strerror(code) : error_);
    if (code == CURLE_PEER_FAILED_VERIFICATION || code == CURLE_SSL_CERTPROBLEM || code == CURLE_SSL_CACERT_BADFILE)
        throw TrustError(text);
    const bool had_no_server = code == CURLE_COULDNT_RESOLVE_HOST || code == CURLE_COULDNT_CONNECT;
    if (had_no_server && Info<CURLINFO_REQUEST_SIZE>() == 0)
        throw NotSent(text);
    throw StoreError(text);
}

/* An old connection that breaks before the answer is replaced by curl on its own, and the request sent again. A new
 * connection is all that can be seen of it. */
bool HttpRequest::MayHaveBeenRepeated() const {
    return Info<CURLINFO_NUM_CONNECTS>() != 0;
}

template <CURLINFO WHAT>
long HttpRequest::Info() const {
    long value = 0;
    curl_easy_getinfo(handle_.get(), WHAT, &value);
    return value;
}

void HttpRequest::Perform() {
    Judge(curl_easy_perform(handle_.get()));
}

HttpClient::HttpClient(Poller &poller) : poller_(poller), timer_(poller) {
    InitialiseOnce();
    multi_ = curl_multi_init();
    if (multi_ == nullptr)
        throw std::bad_alloc();
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &HttpClient::OnSocket);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &HttpClient::OnTimer);
    curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
}

HttpClient::~HttpClient() {
    curl_multi_cleanup(multi_);
}

void HttpClient::Start(HttpRequest &request) {
    const CURLMcode code = curl_multi_add_handle(multi_, request.Handle());
    if (code != CURLM_OK)
        throw StoreError(curl_multi_strerror(code));
}

void HttpClient::Stop(HttpRequest &request) {
    curl_multi_remove_handle(multi_, request.Handle());
}

void HttpClient::OnReady(int descriptor, uint32_t events) {
    int running;
    if (descriptor == timer_.Get()) {
        timer_.Stop();
        curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
        return;
    }
    const int what = ((events & EPOLLIN) != 0 ? CURL_CSELECT_IN : 0) |
                     ((events & EPOLLOUT) != 0 ? CURL_CSELECT_OUT : 0) |
                     ((events & (EPOLLERR | EPOLLHUP)) != 0 ? CURL_CSELECT_ERR : 0);
    curl_multi_socket_action(multi_, descriptor, what, &running);
}

std::optional<HttpClient::Finished> HttpClient::TakeFinished() {
    int left;
    while (const CURLMsg *message = curl_multi_info_read(multi_, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        char *request = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &request);
        curl_multi_remove_handle(multi_, message->easy_handle);
        return Finished{static_cast<HttpRequest *>(static_cast<void *>(request)), code};
    }
    return std::nullopt;
}

int HttpClient::OnSocket(CURL *, curl_socket_t socket, int what, void *self, void *) noexcept {
    Poller &poller = static_cast<HttpClient *>(self)->poller_;
    if (what == CURL_POLL_REMOVE) {
        poller.Forget(socket);
        return 0;
    }
    try {
        poller.Watch(socket,
                     ((what & CURL_POLL_IN) != 0 ? EPOLLIN : 0U) | ((what & CURL_POLL_OUT) != 0 ? EPOLLOUT : 0U));
    } catch (const std::exception &) {
        return -1;
    }
    return 0;
}

int HttpClient::OnTimer(CURLM *, long timeout_ms, void *self) noexcept {
    Timer &timer = static_cast<HttpClient *>(self)->timer_;
    if (timeout_ms < 0)
        timer.Stop();
    else
        timer.Start(std::chrono::milliseconds(timeout_ms));
    return 0;
}

} // namespace uvel::host::confdb
