/* The library's connection to the configuration database, as far as this process has to care for it. */
#pragma once

#include "event_loop.h"

namespace uveld {

/* The library opens its connection when somebody first asks for a value, and would not try again when that fails. This
 * opens it at the start, and tries again until it is open; a database that is lost afterwards comes back by itself. */
class Database {
  public:
    /* Throws std::system_error. */
    explicit Database(EventLoop *loop);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

  private:
    void TryToOpen();

    EventLoop *loop_;
    int timer_;
};

} // namespace uveld
