/* Wake-ups between processes: a folder with one datagram socket for each that wants to be woken. */
#ifndef UVEL_HOST_CONFDB_WAKE_UP_H
#define UVEL_HOST_CONFDB_WAKE_UP_H

#include <string>

#include "confdb/descriptor.h"

namespace uvel::host::confdb {

/* A wake-up may get lost (who sends it may die before), so whoever waits for one looks by himself now and then. */
class WakeUpFolder {
  public:
    explicit WakeUpFolder(std::string path) : path_(std::move(path)) {}

    /* Makes the folder if there is none. Throws StoreError. */
    void Make() const;

    /* Wakes everybody, never waits, and clears away the sockets of those who have died. */
    void WakeAll() const;

  private:
    friend class WakeUpSocket;
    std::string path_;
};

/* Can be read after a wake-up. */
class WakeUpSocket {
  public:
    /* Throws StoreError. */
    explicit WakeUpSocket(const WakeUpFolder &folder);
    ~WakeUpSocket();
    WakeUpSocket(const WakeUpSocket &) = delete;
    WakeUpSocket &operator=(const WakeUpSocket &) = delete;

    int Get() const { return socket_.Get(); }
    void TakeAll() const;

  private:
    Descriptor folder_;
    Descriptor socket_;
    std::string name_;
};

} // namespace uvel::host::confdb

#endif
