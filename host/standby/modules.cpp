#include "standby/modules.h"

#include <algorithm>

namespace uvel::host::standby {

Modules &Modules::Instance() {
    static Modules instance;
    return instance;
}

bool Modules::Add(uint32_t module) {
    std::lock_guard lock(lock_);
    if (entries_.size() >= CAPACITY && entries_.count(module) == 0)
        return false;
    entries_.try_emplace(module);
    return true;
}

bool Modules::Register(const ModuleVersion &version, bool *tell_now) {
    std::lock_guard lock(lock_);
    auto entry = entries_.find(version.module);
    if (entry == entries_.end())
        return false;
    entry->second.registered = version;
    *tell_now = connected_ && !entry->second.told;
    return true;
}

std::optional<uint32_t> Modules::Negotiated(uint32_t module) const {
    std::lock_guard lock(lock_);
    auto entry = entries_.find(module);
    auto peer = peer_.find(module);
    if (!connected_ || entry == entries_.end() || !entry->second.told || peer == peer_.end())
        return std::nullopt;
    const ModuleVersion &own = *entry->second.told;
    const ModuleVersion &lower = own.version <= peer->second.version ? own : peer->second;
    const ModuleVersion &higher = own.version <= peer->second.version ? peer->second : own;
    if (lower.version != higher.version && higher.compatible != 1)
        return std::nullopt;
    return lower.version;
}

std::vector<ModuleVersion> Modules::Begin() {
    {
        std::lock_guard lock(lock_);
        for (auto &[module, entry] : entries_)
            entry.told.reset();
        peer_.clear();
        connected_ = true;
    }
    return TakeNew();
}

std::vector<ModuleVersion> Modules::TakeNew() {
    std::lock_guard lock(lock_);
    std::vector<ModuleVersion> versions;
    for (auto &[module, entry] : entries_) {
        if (!entry.registered || entry.told)
            continue;
        entry.told = entry.registered;
        versions.push_back(*entry.told);
    }
    return versions;
}

void Modules::PeerTold(const std::vector<ModuleVersion> &versions) {
    std::lock_guard lock(lock_);
    for (const ModuleVersion &version : versions) {
        if (peer_.size() < CAPACITY || peer_.count(version.module) != 0)
            peer_[version.module] = version;
    }
}

void Modules::End() {
    std::lock_guard lock(lock_);
    peer_.clear();
    connected_ = false;
}

} // namespace uvel::host::standby
