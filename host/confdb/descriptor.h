/* A descriptor that is closed with its owner. */
#ifndef UVEL_HOST_CONFDB_DESCRIPTOR_H
#define UVEL_HOST_CONFDB_DESCRIPTOR_H

#include <unistd.h>
#include <utility>

namespace uvel::host::confdb {

class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }
    Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    bool IsOpen() const { return number_ >= 0; }
    int Get() const { return number_; }

  private:
    int number_;
};

} // namespace uvel::host::confdb

#endif
