#include "session.h"

#include <cstring>

namespace session_table {

namespace {

constexpr uint8_t VERSION = 1;

/* Writes numbers in network order, one after the other. */
class Writer {
  public:
    explicit Writer(uint8_t *bytes) : next_(bytes) {}

    void Number(uint32_t value, int bytes) {
        while (bytes-- > 0)
            *next_++ = static_cast<uint8_t>(value >> (8 * bytes));
    }
    void Bytes(const void *data, size_t size) {
        std::memcpy(next_, data, size);
        next_ += size;
    }

  private:
    uint8_t *next_;
};

class Reader {
  public:
    explicit Reader(const uint8_t *bytes) : next_(bytes) {}

    uint32_t Number(int bytes) {
        uint32_t value = 0;
        while (bytes-- > 0)
            value = value << 8 | *next_++;
        return value;
    }
    void Bytes(void *data, size_t size) {
        std::memcpy(data, next_, size);
        next_ += size;
    }

  private:
    const uint8_t *next_;
};

} // namespace

void WriteMessage(Change change, const Session &session, uint8_t *bytes) {
    Writer writer(bytes);
    writer.Number(VERSION, 1);
    writer.Number(static_cast<uint8_t>(change), 1);
    writer.Number(0, 2);
    writer.Bytes(session.mac.data(), session.mac.size());
    writer.Number(session.vlan, 2);
    writer.Number(session.ifindex, 4);
    writer.Number(session.start, 4);
    writer.Number(session.ipv4, 4);
    writer.Bytes(session.ipv6.data(), session.ipv6.size());
    writer.Bytes(session.name, sizeof session.name);
}

bool ReadMessage(const uint8_t *bytes, uint32_t length, Change *change, Session *session) {
    if (length != MESSAGE_SIZE)
        return false;
    Reader reader(bytes);
    const uint32_t version = reader.Number(1);
    const uint32_t kind = reader.Number(1);
    (void)reader.Number(2);
    if (version != VERSION || (kind != 1 && kind != 2))
        return false;
    *change = static_cast<Change>(kind);
    reader.Bytes(session->mac.data(), session->mac.size());
    session->vlan = static_cast<uint16_t>(reader.Number(2));
    session->ifindex = reader.Number(4);
    session->start = reader.Number(4);
    session->ipv4 = reader.Number(4);
    reader.Bytes(session->ipv6.data(), session->ipv6.size());
    reader.Bytes(session->name, sizeof session->name);
    return std::memchr(session->name, '\0', sizeof session->name) != nullptr;
}

/* FNV-1a over the message's bytes; what is in a name behind its end does not count, since it is zero. */
uint64_t Fingerprint(const Session &session) {
    uint8_t bytes[MESSAGE_SIZE];
    WriteMessage(Change::ADDED, session, bytes);
    uint64_t hash = 0xCBF29CE484222325;
    for (const uint8_t byte : bytes)
        hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

} // namespace session_table
