// uveld: the service process. Reads its configuration, brings the library up, loads product modules and runs them.

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "configuration.h"
#include "service.h"

namespace {

constexpr int WRONG_CONFIGURATION = 2; /* or command line */

/* All threads are to inherit this; one of them takes the signals. */
void BlockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

int Fail(int status, const std::exception &error) {
    std::cerr << "uveld: " << error.what() << "\n";
    (void)sd_notifyf(0, "STATUS=%s", error.what());
    return status;
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app{"Service process of the network-access platform."};
    std::string file = "/etc/uvel/uveld.yaml";
    bool check_only = false;
    app.add_option("-c,--config", file, "Configuration file")->capture_default_str();
    app.add_flag("--check-config", check_only, "Read the configuration, say what is wrong with it, and end");
    app.set_version_flag("--version", UVELD_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : WRONG_CONFIGURATION;
    }

    uveld::Configuration configuration;
    try {
        configuration = uveld::LoadConfiguration(file);
    } catch (const std::exception &error) {
        return Fail(WRONG_CONFIGURATION, error);
    }
    if (check_only) {
        std::cout << file << ": correct\n";
        return 0;
    }
    BlockSignals();
    int status = EXIT_FAILURE;
    try {
        status = uveld::RunService(configuration);
    } catch (const std::exception &error) {
        status = Fail(EXIT_FAILURE, error);
    }
    /* The host's tasks run on for ever; they must not meet the destruction of what they use. */
    std::fflush(nullptr);
    _exit(status);
}
