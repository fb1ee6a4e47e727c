/* What the tests of the bounds-checked functions share: pictures of memory, and calls that have to be silent.
 *
 * A picture has one character for each byte: '_' is a zero byte; in an expected picture '?' is a byte that no caller
 * may look at. */
#ifndef UVEL_TESTS_UNIT_BOUNDSCHECK_ROWS_H
#define UVEL_TESTS_UNIT_BOUNDSCHECK_ROWS_H

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

constexpr int NONE = -1; /* no offset: a null pointer */
constexpr size_t LIMIT = 0x7fffffff;
constexpr int SOME_ERRNO = 4711;
constexpr const char *PAPER = "............"; /* what stands in a destination before the call */

/* Memory of one row. It has the row's exact size, so that a sanitizer sees every step outside. */
class Arena {
  public:
    explicit Arena(std::string_view picture) : bytes_(picture.begin(), picture.end()) {
        for (char &byte : bytes_)
            byte = byte == '_' ? '\0' : byte;
    }
    char *At(int offset) { return offset == NONE ? nullptr : bytes_.data() + offset; }

    /* The bytes as a picture, with '?' wherever the expected picture has one. */
    std::string PictureLike(std::string_view expected) const {
        std::string picture(bytes_.begin(), bytes_.end());
        for (size_t i = 0; i < picture.size(); ++i) {
            if (i < expected.size() && expected[i] == '?')
                picture[i] = '?';
            else if (picture[i] == '\0')
                picture[i] = '_';
        }
        return picture;
    }

  private:
    std::vector<char> bytes_;
};

/* Standard output and standard error go into a file of memory while this stands. */
class Listener {
  public:
    Listener() : file_(memfd_create("listener", 0)), out_(dup(1)), err_(dup(2)) {
        fflush(nullptr);
        dup2(file_, 1);
        dup2(file_, 2);
    }
    ~Listener() {
        Stop();
        close(file_);
    }
    long long Heard() {
        Stop();
        return lseek(file_, 0, SEEK_END);
    }

  private:
    void Stop() {
        if (out_ < 0)
            return;
        fflush(nullptr);
        dup2(out_, 1);
        dup2(err_, 2);
        close(out_);
        close(err_);
        out_ = -1;
    }
    int file_;
    int out_;
    int err_;
};

/* The result of a call, which has to leave errno alone and to print nothing. */
template <typename Call>
int Quietly(Call call) {
    Listener listener;
    errno = SOME_ERRNO;
    int result = call();
    int errorAfter = errno;
    EXPECT_EQ(0, listener.Heard()) << "something was printed";
    EXPECT_EQ(SOME_ERRNO, errorAfter) << "errno was set";
    return result;
}

#endif
