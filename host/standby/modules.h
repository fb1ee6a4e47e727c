/* Modules that use the service, and the versions of their messages on both devices. Any thread. */
#ifndef UVEL_HOST_STANDBY_MODULES_H
#define UVEL_HOST_STANDBY_MODULES_H

#include "standby/wire.h"

#include <map>
#include <mutex>
#include <optional>

namespace uvel::host::standby {

class Modules {
  public:
    static constexpr std::size_t CAPACITY = 256;

    /* The one table of the process: modules register before a link is opened. */
    static Modules &Instance();

    /* Adds the module when it is new. False when the table is full. */
    bool Add(uint32_t module);
    /* False for a module that was not added. True in *tell_now: the peer is to be told now. */
    bool Register(const ModuleVersion &version, bool *tell_now);
    std::optional<uint32_t> Negotiated(uint32_t module) const;

    /* The versions that hold for a new connection. */
    std::vector<ModuleVersion> Begin();
    /* Versions that were registered for the first time since the peer was told. */
    std::vector<ModuleVersion> TakeNew();
    /* What the peer told; added to what it told before on this connection. */
    void PeerTold(const std::vector<ModuleVersion> &versions);
    void End();

  private:
    struct Entry {
        std::optional<ModuleVersion> registered;
        std::optional<ModuleVersion> told; /* on this connection */
    };

    mutable std::mutex lock_;
    std::map<uint32_t, Entry> entries_;
    std::map<uint32_t, ModuleVersion> peer_;
    bool connected_ = false;
};

} // namespace uvel::host::standby

#endif
