#include "views.h"

#include <cstdlib>
#include <uvelhost/confdb.h>

namespace uveld {

Table ShowDatabase(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"client", "Client"},
                 {"endpoint", "Database"},
                 {"there", "There"},
                 {"trouble", "Trouble"},
                 {"subscriptions", "Tables"},
                 {"outages", "Outages"}});
    const char *endpoint = std::getenv("UVELHOST_CONFDB");
    DB_CONN_STATE_S state;
    if (db_get_state(0, &state) != UVELHOST_OK)
        throw NoView("the configuration database " + std::string(endpoint == nullptr ? "" : endpoint) +
                     " cannot be opened; the log says why");
    for (uint32_t number = 0; db_get_state(number, &state) == UVELHOST_OK; ++number) {
        const std::string trouble = state.szTrouble;
        table.Add({state.szClient, endpoint == nullptr ? Value() : Value(endpoint), trouble.empty(),
                   trouble.empty() ? Value() : Value(trouble), state.ulSubscriptions, state.ulOutages});
    }
    return table;
}

} // namespace uveld
