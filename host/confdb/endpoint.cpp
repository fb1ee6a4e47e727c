#include "confdb/endpoint.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "confdb/item.h"

namespace uvel::host::confdb {

namespace {

constexpr std::string_view OWN_DATABASE = "shm:unix_emserver";
constexpr char OWN_PATH[] = "/run/uvelhost/confdb.sqlite";
constexpr char OWN_VARIABLE[] = "UVELHOST_CONFDB";
constexpr std::string_view DEFAULT_PREFIX = "uvel";

[[noreturn]] void Refuse(const std::string &text, const std::string &why) {
    throw StoreError("endpoint '" + text + "': " + why);
}

bool TakeStart(std::string_view &text, std::string_view start) {
    if (!text.starts_with(start))
        return false;
    text.remove_prefix(start.size());
    return true;
}

/* What stands before the mark, which is taken as well; all of it when there is no mark. */
std::string_view TakeUntil(std::string_view &text, char mark) {
    const std::size_t end = std::min(text.find(mark), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

bool IsPort(std::string_view text) {
    return !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == text.npos &&
           static_cast<unsigned>(std::atoi(std::string(text).c_str())) - 1 < 65535;
}

/* A name or an address, that of IPv6 in brackets, and a port. */
bool IsHostAndPort(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == text.npos || colon == 0 || !IsPort(text.substr(colon + 1)))
        return false;
    std::string_view host = text.substr(0, colon);
    const bool is_bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (is_bracketed)
        host = host.substr(1, host.size() - 2);
    return std::all_of(host.begin(), host.end(), [&](unsigned char c) {
        return std::isalnum(c) != 0 || c == '.' || c == '-' || c == '_' || (is_bracketed && (c == ':' || c == '%'));
    });
}

void ReadFiles(EtcdEndpoint &etcd, std::string_view query, const std::string &text) {
    while (!query.empty()) {
        std::string_view value = TakeUntil(query, '&');
        const std::string_view name = TakeUntil(value, '=');
        if (value.empty())
            Refuse(text, "after '?' ca=FILE, cert=FILE and key=FILE are expected, joined by '&'");
        if (name == "ca")
            etcd.ca_file = value;
        else if (name == "cert")
            etcd.cert_file = value;
        else if (name == "key")
            etcd.key_file = value;
        else
            Refuse(text, "'" + std::string(name) + "' is not one of ca, cert, key");
    }
    if (etcd.cert_file.empty() != etcd.key_file.empty())
        Refuse(text, "cert and key go together");
}

EtcdEndpoint ParseEtcd(std::string_view rest, bool tls, const std::string &text) {
    EtcdEndpoint etcd;
    std::string_view place = TakeUntil(rest, '?');
    if (!rest.empty() && !tls)
        Refuse(text, "ca, cert and key belong to etcds://");
    ReadFiles(etcd, rest, text);

    std::string_view hosts = TakeUntil(place, '/');
    do {
        const std::string_view host = TakeUntil(hosts, ',');
        if (!IsHostAndPort(host))
            Refuse(text, "HOST:PORT,HOST:PORT is expected after '//', port 1 to 65535");
        etcd.urls.push_back((tls ? "https://" : "http://") + std::string(host));
    } while (!hosts.empty());
    while (place.ends_with('/'))
        place.remove_suffix(1);
    etcd.prefix = "/" + std::string(place.empty() ? DEFAULT_PREFIX : place) + "/";
    return etcd;
}

Endpoint Parse(const std::string &text, bool is_own) {
    std::string_view rest = text;
    if (TakeStart(rest, "sqlite:")) {
        if (rest.empty())
            Refuse(text, "the path of a file is expected after 'sqlite:'");
        return SqliteEndpoint{std::string(rest), is_own};
    }
    if (TakeStart(rest, "etcd://"))
        return ParseEtcd(rest, false, text);
    if (TakeStart(rest, "etcds://"))
        return ParseEtcd(rest, true, text);
    Refuse(text, "sqlite:PATH, etcd://HOST:PORT,... or etcds://HOST:PORT,... is expected");
}

} // namespace

Endpoint ParseEndpoint(const std::string &text) {
    if (text != OWN_DATABASE)
        return Parse(text, false);
    const char *own = secure_getenv(OWN_VARIABLE);
    return Parse(own == nullptr || *own == '\0' ? std::string("sqlite:") + OWN_PATH : own, true);
}

} // namespace uvel::host::confdb
