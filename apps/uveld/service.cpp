#include "service.h"

#include <csignal>
#include <memory>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "environment.h"
#include "event_loop.h"
#include "feeder.h"
#include "inspector.h"
#include "modules.h"
#include "product_layer.h"
#include "run_directory.h"
#include "service_log.h"
#include "standby.h"

namespace uveld {

namespace {

sigset_t ServedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

int OpenSignals() {
    const sigset_t signals = ServedSignals();
    const int descriptor = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "signalfd");
    return descriptor;
}

void ServeSignals(int descriptor, EventLoop *loop) {
    signalfd_siginfo info;
    while (read(descriptor, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo == SIGHUP) {
            ReopenLog();
            spdlog::info("the log was opened anew");
        } else {
            spdlog::info("ends on signal {}", info.ssi_signo);
            loop->Stop();
        }
    }
}

} // namespace

int RunService(const Configuration &configuration) {
    const RunDirectory run_directory(configuration.run_directory);
    OpenLog(configuration.log);
    spdlog::info("starts in {} as process {}", run_directory.Path(), getpid());
    SetHostEnvironment(configuration, run_directory);

    static const Modules modules = LoadModules(configuration); /* callbacks may come until the process ends */
    BringLibraryUp(configuration);
    for (const auto &module : modules)
        module->Start(configuration.standby.has_value());
    StartEventTask();
    const std::unique_ptr<Feeder> feeder = StartFeeder(configuration.feeder);
    if (configuration.standby.has_value())
        OpenLink(*configuration.standby, modules);

    EventLoop loop;
    const int signals = OpenSignals();
    loop.Watch(signals, EPOLLIN, [&](uint32_t) { ServeSignals(signals, &loop); });
    const Inspector inspector(&loop, run_directory.File("uveld.sock"), {&modules, configuration.standby.has_value()});
    for (const auto &module : modules)
        module->Run();
    spdlog::info("is ready: {} modules, device from {}", modules.size(), feeder->Description());
    (void)sd_notify(0, "READY=1");
    loop.Run();

    (void)sd_notify(0, "STOPPING=1");
    for (auto module = modules.rbegin(); module != modules.rend(); ++module)
        (*module)->Stop();
    CloseLink();
    feeder->Stop();
    spdlog::info("has ended");
    return 0;
}

} // namespace uveld
