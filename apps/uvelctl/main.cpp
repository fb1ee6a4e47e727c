// uvelctl: looks into a running uveld, and keeps what belongs around it.

#include <iostream>

#include "commands.h"

static constexpr int WRONG_COMMAND_LINE = 2;

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
        return app.exit(error) == 0 ? 0 : WRONG_COMMAND_LINE;
    } catch (const std::exception &error) {
        std::cerr << "uvelctl: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
