// uvelctl show: one view of a running uveld, once. uvelctl watch: the same again and again.

#include <chrono>
#include <iostream>
#include <memory>
#include <thread>

#include "commands.h"
#include "inspector_client.h"
#include "render.h"

namespace uvelctl {

namespace {

struct Request {
    std::string view;
    std::vector<std::string> arguments;
    double seconds = 1.0;
    uint32_t count = 0; /* of watch; 0: until interrupted */
};

constexpr char VIEWS[] =
    "callbacks [EVENT], queues, memory, hooks [installed|empty], settings, pools, interfaces, vlans, "
    "ports, trunks, vrfs, boards, device, standby, database, modules, module NAME, listeners, views";

std::string Render(const Options &options, const nlohmann::json &table) {
    return options.json ? RenderJson(table) : RenderText(table);
}

void Show(const Options &options, const Request &request) {
    InspectorClient uveld(options);
    std::cout << Render(options, uveld.Ask(request.view, request.arguments)) << std::flush;
}

void Watch(const Options &options, const Request &request) {
    constexpr char CLEAR_SCREEN[] = "\033[H\033[2J\033[3J";
    InspectorClient uveld(options);
    for (uint32_t i = 0; request.count == 0 || i < request.count; ++i) {
        if (i != 0)
            std::this_thread::sleep_for(std::chrono::duration<double>(request.seconds));
        const std::string shown = Render(options, uveld.Ask(request.view, request.arguments));
        std::cout << (options.json ? "" : CLEAR_SCREEN) << shown << std::flush;
    }
}

CLI::App *AddView(CLI::App *app, const char *name, const char *help, Request *request) {
    CLI::App *command = app->add_subcommand(name, help);
    command->add_option("view", request->view, VIEWS)->required();
    command->add_option("arguments", request->arguments, "What the view takes");
    return command;
}

} // namespace

void AddShow(CLI::App *app, const Options *options) {
    const auto request = std::make_shared<Request>();
    AddView(app, "show", "Shows a view of a running uveld", request.get())->callback([=] { Show(*options, *request); });
}

void AddWatch(CLI::App *app, const Options *options) {
    const auto request = std::make_shared<Request>();
    CLI::App *command = AddView(app, "watch", "Shows a view again and again", request.get());
    command->add_option("-i,--interval", request->seconds, "Seconds between two looks")
        ->check(CLI::Range(0.1, 3600.0))
        ->capture_default_str();
    command->add_option("-n,--count", request->count, "Looks; 0 goes on until interrupted")->capture_default_str();
    command->callback([=] { Watch(*options, *request); });
}

} // namespace uvelctl
