// Plain TCP, and what TLS and its cipher add to it.

#include "carriers.h"
#include "child.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <vector>

namespace standby_bench {

namespace {

constexpr std::size_t BLOCK = 256 * 1024;

/* A child that tells its address, and gives the connection that comes to `body`. */
Child StartTcpReceiver(const std::function<void(int connection, int to)> &body) {
    return Start([&](int, int to) {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(listener, reinterpret_cast<sockaddr *>(&address), length) != 0 || listen(listener, 1) != 0)
            std::_Exit(1);
        getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length);
        Tell(to, address);
        body(accept(listener, nullptr, nullptr), to);
    });
}

int ConnectTo(const Child &receiver) {
    const auto address = receiver.Get<sockaddr_in>();
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        Fail("TCP does not connect");
    return connection;
}

/* Copies messages into blocks and writes these; the seconds until the receiver has told that it has all of them. */
double WriteBlocks(const Child &receiver, uint64_t count, uint32_t size,
                   const std::function<void(uint8_t *block, std::size_t used)> &write_block) {
    const std::vector<uint8_t> payload(size, 0x5A);
    std::vector<uint8_t> block(BLOCK);
    const auto begin = Clock::now();
    std::size_t used = 0;
    for (uint64_t i = 0; i < count; ++i) {
        std::memcpy(&block[used], payload.data(), size);
        used += size;
        if (used + size <= BLOCK && i + 1 < count)
            continue;
        write_block(block.data(), used);
        used = 0;
    }
    (void)receiver.Get<uint64_t>();
    return Seconds(Clock::now() - begin);
}

void SendAll(int connection, const uint8_t *bytes, std::size_t size) {
    for (std::size_t at = 0; at < size;) {
        const ssize_t part = send(connection, bytes + at, size - at, MSG_NOSIGNAL);
        if (part <= 0)
            Fail("TCP ended");
        at += static_cast<std::size_t>(part);
    }
}

void ReceiveAll(int connection, uint8_t *bytes, std::size_t size) {
    for (std::size_t at = 0; at < size;) {
        const ssize_t part = recv(connection, bytes + at, size - at, 0);
        if (part <= 0)
            std::_Exit(1);
        at += static_cast<std::size_t>(part);
    }
}

} // namespace

double RunTcp(uint64_t count, uint32_t size) {
    const uint64_t bytes = count * size;
    Child receiver = StartTcpReceiver([=](int connection, int to) {
        std::vector<uint8_t> block(BLOCK);
        for (uint64_t got = 0; got < bytes;) {
            const ssize_t part = recv(connection, block.data(), block.size(), 0);
            if (part <= 0)
                std::_Exit(1);
            got += static_cast<uint64_t>(part);
        }
        Tell(to, bytes);
    });
    const int connection = ConnectTo(receiver);
    const double seconds =
        WriteBlocks(receiver, count, size, [&](uint8_t *block, std::size_t used) { SendAll(connection, block, used); });
    close(connection);
    receiver.End();
    return seconds;
}

/* ---- TLS */

namespace {

struct TlsEnd {
    TlsEnd(const char *name, int descriptor) : socket(descriptor), context(SSL_CTX_new(TLS_method())) {
        const std::string file = g_keys + "/" + name;
        SSL_CTX_set_min_proto_version(context, TLS1_3_VERSION);
        SSL_CTX_set_ciphersuites(context, "TLS_AES_128_GCM_SHA256");
        if (SSL_CTX_use_certificate_chain_file(context, (file + ".pem").c_str()) != 1 ||
            SSL_CTX_use_PrivateKey_file(context, (file + ".key").c_str(), SSL_FILETYPE_PEM) != 1)
            Fail("TLS does not start");
        SSL_CTX_set_num_tickets(context, 0);
        ssl = SSL_new(context);
        SSL_set_fd(ssl, socket);
    }
    ~TlsEnd() {
        SSL_free(ssl);
        SSL_CTX_free(context);
        close(socket);
    }

    int socket;
    SSL_CTX *context;
    SSL *ssl;
};

} // namespace

double RunTls(uint64_t count, uint32_t size) {
    const uint64_t bytes = count * size;
    Child receiver = StartTcpReceiver([=](int connection, int to) {
        TlsEnd end("b", connection);
        if (SSL_accept(end.ssl) != 1)
            std::_Exit(1);
        std::vector<uint8_t> block(SSL3_RT_MAX_PLAIN_LENGTH);
        for (uint64_t got = 0; got < bytes;) {
            const int part = SSL_read(end.ssl, block.data(), static_cast<int>(block.size()));
            if (part <= 0)
                std::_Exit(1);
            got += static_cast<uint64_t>(part);
        }
        Tell(to, bytes);
    });
    TlsEnd end("a", ConnectTo(receiver));
    if (SSL_connect(end.ssl) != 1)
        Fail("TLS does not connect");
    const double seconds = WriteBlocks(receiver, count, size, [&](uint8_t *block, std::size_t used) {
        if (SSL_write(end.ssl, block, static_cast<int>(used)) != static_cast<int>(used))
            Fail("TLS ended");
    });
    receiver.End();
    return seconds;
}

/* ---- the cipher */

namespace {

constexpr std::size_t RECORD = 16384;
constexpr std::size_t TAG = 16;

/* Seals or opens records under one key, each with a number of its own as TLS does. */
class Cipher {
  public:
    explicit Cipher(bool seals) : seals_(seals) {
        const uint8_t key[16] = {1, 2, 3};
        if (EVP_CipherInit_ex(context_, EVP_aes_128_gcm(), nullptr, key, nullptr, seals ? 1 : 0) != 1)
            Fail("no cipher");
    }
    ~Cipher() { EVP_CIPHER_CTX_free(context_); }
    Cipher(const Cipher &) = delete;
    Cipher &operator=(const Cipher &) = delete;

    /* `size` bytes from `plain` become size + TAG at `sealed`, or the other way about. False for a false tag. */
    bool Record(uint8_t *plain, uint8_t *sealed, std::size_t size) {
        uint8_t nonce[12] = {};
        std::memcpy(nonce, &number_, sizeof number_);
        ++number_;
        int done = 0;
        const int bytes = static_cast<int>(size);
        EVP_CipherInit_ex(context_, nullptr, nullptr, nullptr, nonce, -1);
        if (!seals_)
            EVP_CIPHER_CTX_ctrl(context_, EVP_CTRL_AEAD_SET_TAG, TAG, sealed + size);
        EVP_CipherUpdate(context_, seals_ ? sealed : plain, &done, seals_ ? plain : sealed, bytes);
        if (EVP_CipherFinal_ex(context_, plain + size, &done) != 1)
            return false;
        return !seals_ || EVP_CIPHER_CTX_ctrl(context_, EVP_CTRL_AEAD_GET_TAG, TAG, sealed + size) == 1;
    }

    /* A block of `size` bytes in records. */
    bool Block(uint8_t *plain, uint8_t *sealed, std::size_t size) {
        for (std::size_t at = 0; at < size; at += RECORD, sealed += RECORD + TAG) {
            if (!Record(plain + at, sealed, std::min(RECORD, size - at)))
                return false;
        }
        return true;
    }

    static std::size_t Sealed(std::size_t size) { return size + (size + RECORD - 1) / RECORD * TAG; }

  private:
    EVP_CIPHER_CTX *context_ = EVP_CIPHER_CTX_new();
    bool seals_;
    uint64_t number_ = 0;
};

} // namespace

double RunCipher(uint64_t count, uint32_t size) {
    const uint64_t bytes = count * size;
    Child receiver = StartTcpReceiver([=](int connection, int to) {
        Cipher cipher(false);
        std::vector<uint8_t> sealed(Cipher::Sealed(BLOCK));
        std::vector<uint8_t> block(BLOCK + TAG);
        const std::size_t whole = BLOCK / size * size; /* as WriteBlocks fills blocks */
        for (uint64_t got = 0; got < bytes;) {
            const std::size_t part = std::min<uint64_t>(whole, bytes - got);
            ReceiveAll(connection, sealed.data(), Cipher::Sealed(part));
            if (!cipher.Block(block.data(), sealed.data(), part))
                std::_Exit(1);
            got += part;
        }
        Tell(to, bytes);
    });
    const int connection = ConnectTo(receiver);
    Cipher cipher(true);
    std::vector<uint8_t> sealed(Cipher::Sealed(BLOCK));
    const double seconds = WriteBlocks(receiver, count, size, [&](uint8_t *block, std::size_t used) {
        if (!cipher.Block(block, sealed.data(), used))
            Fail("the cipher failed");
        SendAll(connection, sealed.data(), Cipher::Sealed(used));
    });
    close(connection);
    receiver.End();
    return seconds;
}

} // namespace standby_bench
