#include "standby/tls.h"

#include <algorithm>
#include <cerrno>
#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace uvel::host::standby {

namespace {

constexpr std::size_t RECORD = SSL3_RT_MAX_PLAIN_LENGTH;
constexpr std::size_t READ_AHEAD = 4096; /* bytes for one call, where a head is awaited */
constexpr std::size_t LONG_BODY = 4096;  /* from here on a record's body is read into TLS's own buffer */
constexpr char CIPHERS[] = "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256";

std::string ErrorText(unsigned long error) {
    const char *reason = ERR_reason_error_string(error);
    return reason != nullptr ? reason : error == 0 ? "the connection ended" : "unknown error";
}

std::string FirstDnsName(X509 *certificate) {
    std::string name;
    auto *names = static_cast<GENERAL_NAMES *>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; name.empty() && i < sk_GENERAL_NAME_num(names); ++i) {
        const GENERAL_NAME *general = sk_GENERAL_NAME_value(names, i);
        if (general->type == GEN_DNS)
            name.assign(reinterpret_cast<const char *>(ASN1_STRING_get0_data(general->d.dNSName)),
                        static_cast<std::size_t>(ASN1_STRING_length(general->d.dNSName)));
    }
    GENERAL_NAMES_free(names);
    return name;
}

/* The other side's alert as a refusal. */
Refusal RefusalOfAlert(int alert) {
    switch (alert) {
    case SSL_AD_CERTIFICATE_REQUIRED:
        return Refusal::NO_CERTIFICATE;
    case SSL_AD_BAD_CERTIFICATE: /* sent for a name that does not match */
        return Refusal::NAME;
    case SSL_AD_UNKNOWN_CA:
    case SSL_AD_CERTIFICATE_EXPIRED:
    case SSL_AD_CERTIFICATE_REVOKED:
    case SSL_AD_CERTIFICATE_UNKNOWN:
    case SSL_AD_UNSUPPORTED_CERTIFICATE:
    case SSL_AD_DECRYPT_ERROR:
        return Refusal::AUTHORITY;
    case SSL_AD_PROTOCOL_VERSION:
        return Refusal::TLS_VERSION;
    default:
        return Refusal::TLS_OTHER;
    }
}

} // namespace

std::unique_ptr<TlsContext> TlsContext::Load(const Files &files, const std::string &peer_name, std::string &error) {
    ERR_clear_error();
    auto made = std::make_unique<TlsContext>();
    made->peer_name_ = peer_name;
    made->context_.reset(SSL_CTX_new(TLS_method()));
    SSL_CTX *context = made->Get();
    const auto fail = [&](const std::string &what) {
        error = what + ": " + ErrorText(ERR_peek_last_error());
        ERR_clear_error();
        return nullptr;
    };
    if (context == nullptr)
        return fail("TLS");
    if (SSL_CTX_set_min_proto_version(context, TLS1_3_VERSION) != 1 || SSL_CTX_set_ciphersuites(context, CIPHERS) != 1)
        return fail("TLS 1.3");
    if (SSL_CTX_use_certificate_chain_file(context, files.certificate.c_str()) != 1)
        return fail(files.certificate);
    if (SSL_CTX_use_PrivateKey_file(context, files.key.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_check_private_key(context) != 1)
        return fail(files.key);
    if (SSL_CTX_load_verify_file(context, files.authority.c_str()) != 1)
        return fail(files.authority);
    made->name_ = FirstDnsName(SSL_CTX_get0_certificate(context));
    if (made->name_.empty()) {
        error = files.certificate + ": the certificate has no DNS name";
        return nullptr;
    }
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    X509_VERIFY_PARAM *verify = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(verify, X509_CHECK_FLAG_NO_WILDCARDS | X509_CHECK_FLAG_NEVER_CHECK_SUBJECT);
    if (X509_VERIFY_PARAM_set1_host(verify, peer_name.c_str(), peer_name.size()) != 1)
        return fail("name of the peer");
    return made;
}

/* ---- the socket below TLS: reads go to it, writes into the buffer */

int TlsChannel::BioWrite(BIO *bio, const char *bytes, int count) {
    auto *channel = static_cast<TlsChannel *>(BIO_get_data(bio));
    const auto *first = reinterpret_cast<const uint8_t *>(bytes);
    try {
        channel->out_.insert(channel->out_.end(), first, first + count);
    } catch (const std::bad_alloc &) {
        return -1; /* no exception goes through OpenSSL */
    }
    return count;
}

/* One call brings the body of a long record to where TLS decrypts it, and the head of the next one. OpenSSL's own reading
 * ahead would move what it has read to the front of its buffer for every record. */
int TlsChannel::BioRead(BIO *bio, char *bytes, int count) {
    auto *channel = static_cast<TlsChannel *>(BIO_get_data(bio));
    BIO_clear_retry_flags(bio);
    if (channel->in_begin_ == channel->in_end_) {
        const bool body = count >= static_cast<int>(LONG_BODY);
        const std::size_t direct = body ? static_cast<std::size_t>(count) : 0;
        const iovec parts[] = {{bytes, direct}, {channel->in_.get(), body ? SSL3_RT_HEADER_LENGTH : READ_AHEAD}};
        const ssize_t got = readv(channel->socket_, parts, 2);
        if (got < 0 && (errno == EAGAIN || errno == EINTR))
            BIO_set_retry_read(bio);
        if (got <= 0)
            return static_cast<int>(got);
        const std::size_t there = std::min(static_cast<std::size_t>(got), direct);
        channel->in_begin_ = 0;
        channel->in_end_ = static_cast<std::size_t>(got) - there;
        if (body)
            return static_cast<int>(there);
    }
    const std::size_t part = std::min(static_cast<std::size_t>(count), channel->in_end_ - channel->in_begin_);
    std::memcpy(bytes, channel->in_.get() + channel->in_begin_, part);
    channel->in_begin_ += part;
    return static_cast<int>(part);
}

long TlsChannel::BioControl(BIO *, int command, long, void *) {
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

const BIO_METHOD *TlsChannel::Method() {
    static const BIO_METHOD *const method = [] {
        BIO_METHOD *made = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "standby link");
        BIO_meth_set_write(made, BioWrite);
        BIO_meth_set_read(made, BioRead);
        BIO_meth_set_ctrl(made, BioControl);
        return made;
    }();
    return method;
}

TlsChannel::TlsChannel(const TlsContext &context, int socket, bool server, uint64_t records_per_key)
    : socket_(socket), records_per_key_(records_per_key), ssl_(SSL_new(context.Get())), in_(new uint8_t[READ_AHEAD]) {
    begun_.reserve(RECORD);
    BIO *bio = BIO_new(Method());
    if (ssl_ == nullptr || bio == nullptr) {
        BIO_free(bio);
        throw std::bad_alloc();
    }
    BIO_set_data(bio, this);
    BIO_set_init(bio, 1);
    SSL_set_bio(ssl_.get(), bio, bio);
    if (server)
        SSL_set_accept_state(ssl_.get());
    else
        SSL_set_connect_state(ssl_.get());
}

/* ---- reading and writing */

TlsChannel::Io TlsChannel::Failed(int result) {
    const int error = SSL_get_error(ssl_.get(), result);
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE)
        return Io::AGAIN;
    if (error == SSL_ERROR_SSL)
        Classify(ERR_peek_last_error());
    else
        trouble_ = error == SSL_ERROR_ZERO_RETURN || errno == 0 ? "the peer closed the connection" : strerror(errno);
    ERR_clear_error();
    return Io::ENDED;
}

void TlsChannel::Classify(unsigned long error) {
    trouble_ = ErrorText(error);
    const int reason = ERR_GET_REASON(error);
    if (reason > SSL_AD_REASON_OFFSET && reason < SSL_AD_REASON_OFFSET + 256) {
        refused_by_peer_ = true;
        refused_ = RefusalOfAlert(reason - SSL_AD_REASON_OFFSET);
        return;
    }
    switch (reason) {
    case SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE:
        refused_ = Refusal::NO_CERTIFICATE;
        break;
    case SSL_R_CERTIFICATE_VERIFY_FAILED: {
        const long verified = SSL_get_verify_result(ssl_.get());
        refused_ = verified == X509_V_ERR_HOSTNAME_MISMATCH ? Refusal::NAME : Refusal::AUTHORITY;
        trouble_ = X509_verify_cert_error_string(verified);
        break;
    }
    case SSL_R_UNSUPPORTED_PROTOCOL:
        refused_ = Refusal::TLS_VERSION;
        break;
    case SSL_R_UNEXPECTED_EOF_WHILE_READING:
        break; /* the connection was cut */
    default:
        refused_ = Refusal::TLS_OTHER;
    }
}

TlsChannel::Io TlsChannel::Handshake() {
    ERR_clear_error();
    errno = 0;
    const int result = SSL_do_handshake(ssl_.get());
    return result == 1 ? Io::DONE : Failed(result);
}

TlsChannel::Io TlsChannel::Read(std::span<uint8_t> room, std::size_t &got) {
    if (ERR_peek_error() != 0)
        ERR_clear_error(); /* of whoever else uses OpenSSL on this thread: it would count as this connection's */
    errno = 0;
    const int result = SSL_read_ex(ssl_.get(), room.data(), room.size(), &got);
    return result == 1 ? Io::DONE : Failed(result);
}

bool TlsChannel::Write(std::span<const uint8_t> bytes) {
    if (!begun_.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), RECORD - begun_.size()));
        begun_.insert(begun_.end(), part.begin(), part.end());
        bytes = bytes.subspan(part.size());
        if (begun_.size() == RECORD && !EndRecord())
            return false;
    }
    const auto rest = bytes.last(bytes.size() % RECORD);
    begun_.insert(begun_.end(), rest.begin(), rest.end());
    return Encrypt(bytes.first(bytes.size() - rest.size()));
}

bool TlsChannel::EndRecord() {
    const bool good = Encrypt(begun_);
    begun_.clear();
    return good;
}

bool TlsChannel::Encrypt(std::span<const uint8_t> bytes) {
    records_ += (bytes.size() + RECORD - 1) / RECORD;
    if (records_ > records_per_key_) {
        records_ = 0;
        if (SSL_key_update(ssl_.get(), SSL_KEY_UPDATE_REQUESTED) != 1)
            return false;
    }
    std::size_t written = 0;
    return bytes.empty() || SSL_write_ex(ssl_.get(), bytes.data(), bytes.size(), &written) == 1;
}

TlsChannel::Io TlsChannel::Flush() {
    while (Pending() != 0) {
        const ssize_t sent = send(socket_, out_.data() + out_at_, Pending(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0 && errno == EAGAIN) {
            if (out_at_ >= Pending()) {
                out_.erase(out_.begin(), out_.begin() + static_cast<std::ptrdiff_t>(out_at_));
                out_at_ = 0;
            }
            return Io::AGAIN;
        }
        if (sent < 0) {
            if (trouble_.empty())
                trouble_ = strerror(errno);
            return Io::ENDED;
        }
        out_at_ += static_cast<std::size_t>(sent);
    }
    out_.clear();
    out_at_ = 0;
    return Io::DONE;
}

void TlsChannel::SayGoodbye() {
    ERR_clear_error();
    (void)EndRecord();
    (void)SSL_shutdown(ssl_.get());
    (void)Flush();
    ERR_clear_error();
}

} // namespace uvel::host::standby
