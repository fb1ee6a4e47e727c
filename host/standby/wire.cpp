#include "standby/wire.h"

#include <uvelhost/standby_link.h>

namespace uvel::host::standby {

namespace {

constexpr uint32_t MAGIC = 0x53485655; /* "UVHS" */
constexpr std::size_t HELLO_FIXED = 4 + 2 + 2 + 8 + 8 + 4 + 4 + ROLE_BYTES;
constexpr std::size_t MAX_VERSIONS = 1024;

template <typename T>
void Push(std::vector<uint8_t> &out, T value) {
    const std::size_t at = out.size();
    out.resize(at + sizeof value);
    Put(out.data() + at, value);
}

void PushRole(std::vector<uint8_t> &out, const RoleInfo &role) {
    Push(out, role.configured);
    Push(out, role.active);
    Push(out, role.term);
    Push(out, role.priority);
}

bool RoleAt(const uint8_t *at, RoleInfo &role) {
    role = {at[0], at[1], Get<uint32_t>(at + 2), Get<uint32_t>(at + 6)};
    return role.configured <= YSB_LINK_ROLE_STANDBY && role.active <= 1;
}

} // namespace

void AppendFrame(std::vector<uint8_t> &out, FrameHead head, std::span<const uint8_t> body) {
    head.length = static_cast<uint32_t>(body.size());
    const std::size_t at = out.size();
    out.resize(at + FRAME_HEAD + body.size());
    PutHead(out.data() + at, head);
    if (!body.empty())
        std::memcpy(out.data() + at + FRAME_HEAD, body.data(), body.size());
}

std::vector<uint8_t> EncodeRole(const RoleInfo &role) {
    std::vector<uint8_t> out;
    PushRole(out, role);
    return out;
}

std::vector<uint8_t> EncodeVersions(const std::vector<ModuleVersion> &modules) {
    std::vector<uint8_t> out;
    for (const ModuleVersion &module : modules) {
        Push(out, module.module);
        Push(out, module.version);
        Push(out, module.compatible);
    }
    return out;
}

std::vector<uint8_t> EncodeHello(const Hello &hello) {
    std::vector<uint8_t> out;
    Push(out, MAGIC);
    Push(out, hello.version);
    Push(out, uint16_t{0});
    Push(out, hello.stream);
    Push(out, hello.received);
    Push(out, hello.max_message);
    Push(out, hello.cpus);
    PushRole(out, hello.role);
    const std::vector<uint8_t> versions = EncodeVersions(hello.modules);
    out.insert(out.end(), versions.begin(), versions.end());
    return out;
}

bool DecodeRole(std::span<const uint8_t> body, RoleInfo &role) {
    return body.size() == ROLE_BYTES && RoleAt(body.data(), role);
}

bool DecodeVersions(std::span<const uint8_t> body, std::vector<ModuleVersion> &modules) {
    if (body.size() % VERSION_BYTES != 0 || body.size() / VERSION_BYTES > MAX_VERSIONS)
        return false;
    modules.clear();
    for (std::size_t at = 0; at < body.size(); at += VERSION_BYTES)
        modules.push_back({Get<uint32_t>(&body[at]), Get<uint32_t>(&body[at + 4]), body[at + 8]});
    return true;
}

bool DecodeHello(std::span<const uint8_t> body, Hello &hello) {
    if (body.size() < 8 || Get<uint32_t>(body.data()) != MAGIC)
        return false;
    hello.version = Get<uint16_t>(&body[4]);
    if (hello.version != PROTOCOL_VERSION)
        return true;
    if (body.size() < HELLO_FIXED)
        return false;
    hello.stream = Get<uint64_t>(&body[8]);
    hello.received = Get<uint64_t>(&body[16]);
    hello.max_message = Get<uint32_t>(&body[24]);
    hello.cpus = Get<uint32_t>(&body[28]);
    if (hello.cpus == 0 || hello.cpus > YSB_LINK_ANY_CPU || !RoleAt(&body[32], hello.role))
        return false;
    return DecodeVersions(body.subspan(HELLO_FIXED), hello.modules);
}

} // namespace uvel::host::standby
