/* An access session, and its form in the messages between two devices. */
#pragma once

#include <array>
#include <cstdint>

namespace session_table {

using Mac = std::array<uint8_t, 6>;

constexpr uint32_t NAME_SIZE = 64;

struct Session {
    Mac mac{};
    uint16_t vlan = 0;
    uint32_t ifindex = 0;
    uint32_t start = 0; /* absolute seconds */
    uint32_t ipv4 = 0;  /* 0: none */
    std::array<uint8_t, 16> ipv6{};
    char name[NAME_SIZE]{};

    bool operator==(const Session &) const = default;
};

/* What a message says about a session. */
enum class Change : uint8_t { ADDED = 1, REMOVED = 2 };

constexpr uint32_t MESSAGE_SIZE = 4 + 6 + 2 + 4 + 4 + 4 + 16 + NAME_SIZE;

/* Writes MESSAGE_SIZE bytes: version, change, two zeros, then the session, all in network order. */
void WriteMessage(Change change, const Session &session, uint8_t *bytes);

/* Reads a message; false for another length, version or change, and for a name that does not end. */
bool ReadMessage(const uint8_t *bytes, uint32_t length, Change *change, Session *session);

/* A number for each session; equal sessions have equal ones, whatever device they are on. */
uint64_t Fingerprint(const Session &session);

} // namespace session_table
