/* Bytes that end where a page without access begins, or begin where one ends: whoever reads beyond gets SIGSEGV. */
#ifndef UVEL_TESTS_UNIT_GUARDED_TEXT_H
#define UVEL_TESTS_UNIT_GUARDED_TEXT_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

/* Room for one text or block of bytes after the other. */
class GuardedRoom {
  public:
    explicit GuardedRoom(std::size_t size) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        room_ = (size + page - 1) / page * page;
        mapped_ = room_ + 2 * page;
        void *area = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED)
            throw std::runtime_error("no memory for a guarded text");
        area_ = static_cast<char *>(area) + page;
        if (mprotect(area_, room_, PROT_READ | PROT_WRITE) != 0)
            throw std::runtime_error("no room between guard pages");
    }

    ~GuardedRoom() { munmap(area_ - (mapped_ - room_) / 2, mapped_); }
    GuardedRoom(const GuardedRoom &) = delete;
    GuardedRoom &operator=(const GuardedRoom &) = delete;

    char *Put(const void *bytes, std::size_t size) {
        if (size > room_)
            throw std::runtime_error("the guarded room is too small");
        char *place = area_ + room_ - size;
        if (size != 0)
            std::memcpy(place, bytes, size);
        return place;
    }

    /* The text with its terminator. */
    char *Put(const std::string &text) { return Put(text.c_str(), text.size() + 1); }

    /* The same, with the page without access in front of it. */
    char *PutFirst(const std::string &text) {
        if (text.size() >= room_)
            throw std::runtime_error("the guarded room is too small");
        return std::strcpy(area_, text.c_str());
    }

  private:
    std::size_t room_;
    std::size_t mapped_;
    char *area_;
};

/* A copy of one text with its terminator, or of some bytes. */
class GuardedText {
  public:
    explicit GuardedText(const std::string &text) : room_(text.size() + 1), data_(room_.Put(text)) {}
    GuardedText(const void *bytes, std::size_t size) : room_(size), data_(room_.Put(bytes, size)) {}

    char *Get() const { return data_; }
    operator const char *() const { return data_; }

  private:
    GuardedRoom room_;
    char *data_;
};

#endif
