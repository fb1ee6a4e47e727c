// uvelctl: looks into a running uveld, and keeps what belongs around it. All of the command line is here: its library's
// headers cost more than the rest of the program.

#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>
#include <memory>

#include "commands.h"

namespace uvelctl {

namespace {

constexpr int WRONG_COMMAND_LINE = 2;

constexpr char VIEWS[] =
    "callbacks [EVENT], queues, memory, hooks [installed|empty], settings, pools, interfaces, vlans, "
    "ports, trunks, vrfs, boards, device, standby, database, modules, module NAME, listeners, views";

CLI::App *AddView(CLI::App *app, const char *name, const char *help, Look *look) {
    CLI::App *command = app->add_subcommand(name, help);
    command->add_option("view", look->view, VIEWS)->required();
    command->add_option("arguments", look->arguments, "What the view takes");
    return command;
}

void AddShow(CLI::App *app, const Options *options) {
    const auto look = std::make_shared<Look>();
    AddView(app, "show", "Shows a view of a running uveld", look.get())->callback([=] { Show(*options, *look); });
}

void AddWatch(CLI::App *app, const Options *options) {
    const auto look = std::make_shared<Look>();
    CLI::App *command = AddView(app, "watch", "Shows a view again and again", look.get());
    command->add_option("-i,--interval", look->seconds, "Seconds between two looks")
        ->check(CLI::Range(0.1, 3600.0))
        ->capture_default_str();
    command->add_option("-n,--count", look->count, "Looks; 0 goes on until interrupted")->capture_default_str();
    command->callback([=] { Watch(*options, *look); });
}

void AddCapset(CLI::App *app, const Options *options) {
    const auto file = std::make_shared<std::string>();
    CLI::App *capset = app->add_subcommand("capset", "What the device can do");
    capset->require_subcommand(1);
    CLI::App *list =
        capset->add_subcommand("list", "Lists the items of the capability set, or says what is wrong in it");
    list->add_option("file", *file, "File to read instead of the device's own");
    list->callback([=] { ListCapabilities(*options, *file); });
}

void AddGet(CLI::App *get, DatabaseRequest *request) {
    get->add_option("TABLE", request->table);
    get->add_option("KEY", request->key);
    get->add_flag("--raw", request->is_raw, "Write the bytes of the value and nothing else");
}

void AddPut(CLI::App *put, DatabaseRequest *request) {
    put->add_option("TABLE", request->table)->required();
    put->add_option("KEY", request->key)->required();
    put->add_option("VALUE", request->value)->required();
    CLI::Option *hex = put->add_flag("--hex", request->is_hex, "VALUE is hexadecimal: 02:1a:2b:3c:4d:5e");
    CLI::Option *u32 = put->add_flag("--u32", request->is_u32, "VALUE is a number, stored as 4 bytes");
    put->add_flag("--file", request->is_file, "VALUE is the name of a file (-: standard input)")
        ->excludes(hex)
        ->excludes(u32);
    u32->excludes(hex);
}

void AddDatabaseWatch(CLI::App *watch, DatabaseRequest *request) {
    watch->add_option("TABLE", request->table);
    watch->add_option("--count", request->most_events, "End after so many lines")->option_text("N");
    watch->add_option("--time", request->most_seconds, "End after so many seconds")
        ->check(CLI::Range(0.001, 1e6))
        ->option_text("SECONDS");
}

void AddConfdb(CLI::App *app, const Options *options) {
    const auto request = std::make_shared<DatabaseRequest>();
    CLI::App *confdb = app->add_subcommand("confdb", "The configuration database");
    confdb->require_subcommand(1);
    confdb
        ->add_option("-e,--endpoint", request->endpoint,
                     "sqlite:PATH, etcd://HOST:PORT,..., etcds://HOST:PORT,...?ca=FILE&cert=FILE&key=FILE "
                     "(default: the device's own, or what UVELHOST_CONFDB says)")
        ->option_text("ENDPOINT");
    const auto add = [&](const char *name, const char *about, void (*run)(const Options &, const DatabaseRequest &)) {
        CLI::App *command = confdb->add_subcommand(name, about);
        command->fallthrough();
        command->callback([=] { run(*options, *request); });
        return command;
    };
    AddGet(add("get", "A value, a table or everything", GetFromDatabase), request.get());
    AddPut(add("put", "Write a value", PutIntoDatabase), request.get());
    CLI::App *del = add("del", "Delete a key", DeleteFromDatabase);
    del->add_option("TABLE", request->table)->required();
    del->add_option("KEY", request->key)->required();
    AddDatabaseWatch(add("watch", "What is there, then every change as it comes", WatchDatabase), request.get());
}

void AddKeys(CLI::App *app, const Options *options) {
    const auto request = std::make_shared<KeysRequest>();
    CLI::App *command =
        app->add_subcommand("keys", "Makes the certificates and keys of the standby link for two devices");
    command->add_option("folder", request->folder, "Where to write authority.pem, NAME.pem and NAME.key")->required();
    command->add_option("first", request->first, "Name of one device, as a DNS name")->required();
    command->add_option("second", request->second, "Name of the other device")->required();
    command->add_option("--days", request->days, "How long they are valid")
        ->check(CLI::Range(1, 36500))
        ->capture_default_str();
    command->callback([=] { MakeKeys(*options, *request); });
}

} // namespace

} // namespace uvelctl

int main(int argc, char **argv) {
    CLI::App app{"Looks into a running uveld."};
    uvelctl::Options options;
    app.add_option("-r,--run-directory", options.run_directory, "Run directory of the uveld to look into")
        ->envname("UVELD_RUN_DIRECTORY")
        ->capture_default_str();
    app.add_flag("--json", options.json, "Answers for machines");
    app.set_version_flag("--version", UVELCTL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    uvelctl::AddShow(&app, &options);
    uvelctl::AddWatch(&app, &options);
    uvelctl::AddCapset(&app, &options);
    uvelctl::AddConfdb(&app, &options);
    uvelctl::AddKeys(&app, &options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : uvelctl::WRONG_COMMAND_LINE;
    } catch (const std::exception &error) {
        std::cerr << "uvelctl: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
