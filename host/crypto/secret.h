/* Memory for keys and clear texts: wiped when it goes. */
#ifndef UVEL_HOST_CRYPTO_SECRET_H
#define UVEL_HOST_CRYPTO_SECRET_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <openssl/crypto.h>

namespace uvel::host {

template <std::size_t Size>
struct SecretArray {
    uint8_t bytes[Size] = {};

    SecretArray() = default;
    ~SecretArray() { OPENSSL_cleanse(bytes, Size); }
    SecretArray(const SecretArray &) = delete;
    SecretArray &operator=(const SecretArray &) = delete;
};

/* Bytes of a size known at run time only. */
class SecretBytes {
  public:
    SecretBytes() = default;
    ~SecretBytes() {
        if (bytes_)
            OPENSSL_cleanse(bytes_.get(), size_);
    }
    SecretBytes(const SecretBytes &) = delete;
    SecretBytes &operator=(const SecretBytes &) = delete;

    /* To be called once. False when memory is short; the bytes are zero otherwise. */
    bool Make(std::size_t size) {
        bytes_.reset(new (std::nothrow) uint8_t[size]());
        size_ = bytes_ ? size : 0;
        return bytes_ != nullptr;
    }

    uint8_t *Get() const { return bytes_.get(); }
    std::size_t Size() const { return size_; }

  private:
    std::unique_ptr<uint8_t[]> bytes_;
    std::size_t size_ = 0;
};

} // namespace uvel::host

#endif
