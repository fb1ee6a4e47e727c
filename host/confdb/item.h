/* What the configuration database is made of, whatever keeps it. */
#ifndef UVEL_HOST_CONFDB_ITEM_H
#define UVEL_HOST_CONFDB_ITEM_H

#include <compare>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace uvel::host::confdb {

struct Name {
    std::string table;
    std::string key;

    auto operator<=>(const Name &) const = default;
};

/* A key as some revision left it. */
struct Item {
    Name name;
    std::string value;
    uint64_t revision = 0;
    bool deleted = false;
};

/* Everything that a table held (or all tables) at one revision of the database. */
struct Snapshot {
    std::vector<Item> items;
    uint64_t revision = 0;
};

/* What the database cannot do, with a text for people. */
class StoreError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace uvel::host::confdb

#endif
