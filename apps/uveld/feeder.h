/* Where the device model comes from. */
#pragma once

#include <memory>
#include <string>

#include "configuration.h"

namespace uveld {

class Feeder {
  public:
    virtual ~Feeder() = default;
    virtual std::string Description() const = 0;
    virtual void Stop() = 0;
};

/* Starts the configured feeder on a thread of its own. Throws std::runtime_error when it cannot: a kernel that does not
 * answer, a scenario that is wrong. */
std::unique_ptr<Feeder> StartFeeder(const FeederConfiguration &configuration);

} // namespace uveld
