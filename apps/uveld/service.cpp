#include "service.h"

#include <memory>
#include <sys/epoll.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <uvelhost/report.h>

#include "database.h"
#include "environment.h"
#include "event_loop.h"
#include "feeder.h"
#include "inspector.h"
#include "modules.h"
#include "product_layer.h"
#include "run_directory.h"
#include "service_log.h"
#include "signals.h"
#include "standby.h"

namespace uveld {

namespace {

void LogReport(const char *line) {
    LogWarning("{}", line);
}

void BringModulesUp(const Configuration &configuration, const Modules &modules, Signals *signals) {
    signals->Begin("the library comes up");
    BringLibraryUp(configuration);
    for (const auto &module : modules) {
        signals->Begin("the module " + module->Name() + " starts");
        module->Start(configuration.standby.has_value());
    }
}

/* The last one first, while the event task still runs. */
void StopModules(const Modules &modules, Signals *signals) {
    for (auto module = modules.rbegin(); module != modules.rend(); ++module) {
        signals->Begin("the module " + (*module)->Name() + " stops");
        (*module)->Stop();
    }
}

} // namespace

int RunService(const Configuration &configuration) {
    const RunDirectory run_directory(configuration.run_directory);
    OpenLog(configuration.log);
    QAL_ReportSetHook(LogReport);
    Signals signals;
    LogInfo("starts in {} as process {}", run_directory.Path(), getpid());
    SetHostEnvironment(configuration, run_directory);

    signals.Begin("modules are loaded");
    static const Modules modules = LoadModules(configuration); /* callbacks may come until the process ends */
    BringModulesUp(configuration, modules, &signals);
    signals.Begin("the event task comes up");
    StartEventTask();
    signals.Begin("the device is read");
    const std::unique_ptr<Feeder> feeder = StartFeeder(configuration.feeder);
    signals.Begin("the configuration database is opened");
    EventLoop loop;
    const Database database(&loop);
    signals.Begin("the standby link is opened");
    if (configuration.standby.has_value())
        OpenLink(*configuration.standby, modules);

    loop.Watch(signals.EndDescriptor(), EPOLLIN, [&](uint32_t) { loop.Stop(); });
    const Inspector inspector(&loop, run_directory.File("uveld.sock"), {&modules, configuration.standby.has_value()});
    for (const auto &module : modules) {
        signals.Begin("the module " + module->Name() + " begins to run");
        module->Run();
    }
    if (!signals.IsToEnd()) {
        LogInfo("is ready: {} modules, device from {}", modules.size(), feeder->Description());
        (void)sd_notify(0, "READY=1");
    }
    signals.Begin("a request of an inspector is answered");
    loop.Run();

    StopModules(modules, &signals);
    signals.Begin("the standby link is closed");
    CloseLink();
    signals.Begin("the device is no longer followed");
    feeder->Stop();
    LogInfo("has ended");
    return 0;
}

} // namespace uveld
