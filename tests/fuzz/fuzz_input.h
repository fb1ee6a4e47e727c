/* What the fuzz targets share: inputs as texts of their own block, and a check that ends the run. */
#ifndef UVEL_TESTS_FUZZ_FUZZ_INPUT_H
#define UVEL_TESTS_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

/* A text in a heap block of exactly its size, so that AddressSanitizer sees whoever reads behind the terminator. */
class ExactText {
  public:
    explicit ExactText(const std::string &text) : block_(new char[text.size() + 1]) {
        text.copy(block_.get(), text.size());
        block_[text.size()] = '\0';
    }

    operator const char *() const { return block_.get(); }

  private:
    std::unique_ptr<char[]> block_;
};

/* The input up to its first '\0'. */
inline std::string TextOf(const uint8_t *data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    return bytes.substr(0, bytes.find('\0'));
}

#define REQUIRE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                               \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (0)

#endif
