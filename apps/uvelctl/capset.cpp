// uvelctl capset: what the capability file says the device can do.

#include <cstdlib>
#include <iostream>
#include <uvelhost/capset.h>

#include "commands.h"
#include "render.h"

namespace uvelctl {

/* What is wrong with the file the host has told on standard error by the time capset_init fails. */
void ListCapabilities(const Options &options, const std::string &file) {
    if (!file.empty())
        setenv("UVELHOST_CAPSET_FILE", file.c_str(), 1);
    if (capset_init() != UVELHOST_OK)
        throw Failure("the capability set cannot be read");
    Table items({{"item", "Item"}, {"value", "Value"}});
    capset_walk(
        [](const char *item, uint32_t value, void *table) {
            static_cast<Table *>(table)->Add({item, value});
        },
        &items);
    capset_destroy();
    std::cout << Render(options, items);
}

} // namespace uvelctl
