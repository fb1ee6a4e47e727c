/* Where a configuration database is, read from the text that callers give. */
#ifndef UVEL_HOST_CONFDB_ENDPOINT_H
#define UVEL_HOST_CONFDB_ENDPOINT_H

#include <string>
#include <variant>
#include <vector>

namespace uvel::host::confdb {

struct SqliteEndpoint {
    std::string path;
    bool make_folder = false; /* the device's own database brings its folder along */
};

struct EtcdEndpoint {
    std::vector<std::string> urls; /* "http://127.0.0.1:2379", at least one */
    std::string prefix;            /* of all keys: "/uvel/" */
    std::string ca_file;           /* empty: the system's */
    std::string cert_file;         /* empty: none */
    std::string key_file;
};

using Endpoint = std::variant<SqliteEndpoint, EtcdEndpoint>;

/* Throws StoreError, with what was expected, for a text that is no endpoint. */
Endpoint ParseEndpoint(const std::string &text);

} // namespace uvel::host::confdb

#endif
