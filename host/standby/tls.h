/* TLS 1.3 with a certificate on either side, over a socket that does not block. */
#ifndef UVEL_HOST_STANDBY_TLS_H
#define UVEL_HOST_STANDBY_TLS_H

#include "standby/wire.h"

#include <memory>
#include <openssl/ssl.h>
#include <string>

namespace uvel::host::standby {

class TlsContext {
  public:
    struct Files {
        std::string certificate;
        std::string key;
        std::string authority;
    };

    /* Null, with the reason in `error`, when a file cannot be read or does not fit. */
    static std::unique_ptr<TlsContext> Load(const Files &files, const std::string &peer_name, std::string &error);

    SSL_CTX *Get() const { return context_.get(); }
    /* This device's own name: the first DNS name of its certificate. */
    const std::string &Name() const { return name_; }
    const std::string &PeerName() const { return peer_name_; }

  private:
    struct Free {
        void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    };

    std::unique_ptr<SSL_CTX, Free> context_;
    std::string name_;
    std::string peer_name_;
};

/* One connection. What is written is gathered into full records and these are encrypted into a buffer that Flush sends, so
 * that many bytes make one record and many records one call. */
class TlsChannel {
  public:
    enum class Io { DONE, AGAIN, ENDED };

    static constexpr uint64_t RECORDS_PER_KEY = 1 << 22;

    TlsChannel(const TlsContext &context, int socket, bool server, uint64_t records_per_key = RECORDS_PER_KEY);
    TlsChannel(const TlsChannel &) = delete; /* OpenSSL knows its address */
    TlsChannel &operator=(const TlsChannel &) = delete;

    Io Handshake();
    /* DONE with at least one byte; ENDED for an end and for a failure alike. */
    Io Read(std::span<uint8_t> room, std::size_t &got);
    /* False when the connection has failed. Asks for new keys on both sides long before the present ones have encrypted
     * as much as they may: every so many records. */
    bool Write(std::span<const uint8_t> bytes);
    /* Encrypts what is left of the bytes written and does not fill a record: there are no more for now. */
    bool EndRecord();
    /* AGAIN while something is left. */
    Io Flush();
    std::size_t Pending() const { return out_.size() - out_at_; }
    void SayGoodbye();

    /* Why it ended: a refusal, and by whom. NONE for an ordinary end. */
    Refusal Refused() const { return refused_; }
    bool RefusedByPeer() const { return refused_by_peer_; }
    const std::string &Trouble() const { return trouble_; }

  private:
    struct Free {
        void operator()(SSL *ssl) const { SSL_free(ssl); }
    };

    static const BIO_METHOD *Method();
    static int BioWrite(BIO *bio, const char *bytes, int count);
    static int BioRead(BIO *bio, char *bytes, int count);
    static long BioControl(BIO *bio, int command, long, void *);

    bool Encrypt(std::span<const uint8_t> bytes);
    Io Failed(int result);
    void Classify(unsigned long error);

    int socket_;
    uint64_t records_ = 0; /* under the present key, at most */
    uint64_t records_per_key_;
    std::unique_ptr<SSL, Free> ssl_;
    std::unique_ptr<uint8_t[]> in_; /* read from the socket, not yet by TLS */
    std::size_t in_begin_ = 0;
    std::size_t in_end_ = 0;
    std::vector<uint8_t> begun_; /* written, less than a record */
    std::vector<uint8_t> out_;
    std::size_t out_at_ = 0;
    Refusal refused_ = Refusal::NONE;
    bool refused_by_peer_ = false;
    std::string trouble_;
};

} // namespace uvel::host::standby

#endif
