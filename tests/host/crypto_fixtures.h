/* What the tests of the host's cryptography share. */
#ifndef UVEL_TESTS_HOST_CRYPTO_FIXTURES_H
#define UVEL_TESTS_HOST_CRYPTO_FIXTURES_H

#define OPENSSL_SUPPRESS_DEPRECATED /* RAND_set_rand_method: the short way to a generator that fails */

#include <openssl/rand.h>
#include <sys/wait.h>
#include <unistd.h>
#include <uvelhost/crypto.h>
#include <vector>

#include "password_texts.h"

namespace crypto_fixtures {

using namespace password_texts;

/* Runs `body` in a child, which the results of body's expectations end with. */
template <typename Body>
void InChild(Body body) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        body();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "wait status " << status;
}

/* A random generator out of order, while it lives. */
class NoRandomNumbers {
  public:
    NoRandomNumbers() {
        static const RAND_METHOD failing = {nullptr, Fail, nullptr, nullptr, Fail, nullptr};
        RAND_set_rand_method(&failing);
    }
    ~NoRandomNumbers() { RAND_set_rand_method(nullptr); }
    NoRandomNumbers(const NoRandomNumbers &) = delete;
    NoRandomNumbers &operator=(const NoRandomNumbers &) = delete;

  private:
    static int Fail(unsigned char *, int) { return 0; }
};

class PasswordCipher : public testing::Test {
  protected:
    void SetUp() override { block_.fill(0xB1); }

    std::string Encrypt(const std::string &clear) {
        std::vector<char> cipher(PSSP_CIPHER_SIZE(clear.size()), '#');
        EXPECT_EQ(0u, PSSP_EncryptSec(clear.data(), static_cast<uint32_t>(clear.size()), cipher.data(),
                                      static_cast<uint32_t>(cipher.size()), 0, block_.data(), nullptr));
        return cipher.data();
    }

    uint32_t Decrypt(const std::string &cipher) {
        clear_.assign(5000, '#');
        return PSSP_DecryptSec(cipher.c_str(), static_cast<uint32_t>(cipher.size()), clear_.data(),
                               static_cast<uint32_t>(clear_.size()), 1, block_.data());
    }

    /* That the text is refused and nothing can be read in the buffer. */
    bool IsRefused(const std::string &cipher) {
        return Decrypt(cipher) != 0 && clear_ == std::string(clear_.size(), '\0');
    }

    std::string Opened() const { return clear_.c_str(); }

    KeyFolder keys_;
    Block block_;
    std::string clear_;
};

} // namespace crypto_fixtures

#endif
