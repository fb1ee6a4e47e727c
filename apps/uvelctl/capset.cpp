// uvelctl capset: what the capability file says the device can do.

#include <cstdlib>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <uvelhost/capset.h>

#include "commands.h"
#include "render.h"

namespace uvelctl {

using nlohmann::json;

namespace {

/* A table of the items. What is wrong with the file the host has told on standard error by then. */
json ReadItems(const std::string &file) {
    if (!file.empty())
        setenv("UVELHOST_CAPSET_FILE", file.c_str(), 1);
    if (capset_init() != UVELHOST_OK)
        throw Failure("the capability set cannot be read");
    json table = {{"columns", {{{"title", "Item"}, {"name", "item"}}, {{"title", "Value"}, {"name", "value"}}}},
                  {"rows", json::array()}};
    capset_walk(
        [](const char *item, uint32_t value, void *rows) {
            static_cast<json *>(rows)->push_back(json::array({item, value}));
        },
        &table["rows"]);
    capset_destroy();
    return table;
}

} // namespace

void AddCapset(CLI::App *app, const Options *options) {
    const auto file = std::make_shared<std::string>();
    CLI::App *capset = app->add_subcommand("capset", "What the device can do");
    capset->require_subcommand(1);
    CLI::App *list =
        capset->add_subcommand("list", "Lists the items of the capability set, or says what is wrong in it");
    list->add_option("file", *file, "File to read instead of the device's own");
    list->callback([=] {
        const json items = ReadItems(*file);
        std::cout << (options->json ? RenderJson(items) : RenderText(items));
    });
}

} // namespace uvelctl
