#include "views.h"

#include <cstdio>
#include <dlfcn.h>
#include <filesystem>
#include <uvelhost/memory.h>
#include <uvelhost/queue.h>

namespace uveld {

const std::map<std::string, NamedView> &Views() {
    static const std::map<std::string, NamedView> views = {
        {"callbacks",
         {ShowCallbacks, "event callbacks with their calls, failures and times; argument: an event number"}},
        {"queues", {ShowQueues, "queues with their levels and refusals"}},
        {"memory", {ShowMemory, "memory accounts with their levels and failures"}},
        {"hooks", {ShowHooks, "product hooks and what is installed; argument: installed or empty"}},
        {"settings", {ShowSettings, "specifications, switches and identifiers that are set"}},
        {"pools", {ShowPools, "index pools and how many of their indexes are in use"}},
        {"modules", {ShowModules, "loaded product modules"}},
        {"module", {ShowModule, "what a module shows of itself; argument: its name"}},
        {"device", {ShowDevice, "name, MAC address and role of the device"}},
        {"interfaces", {ShowInterfaces, "interfaces of the device"}},
        {"vlans", {ShowVlans, "VLANs and their ports"}},
        {"ports", {ShowPorts, "switch ports and their VLANs"}},
        {"trunks", {ShowTrunks, "trunks and their members"}},
        {"vrfs", {ShowVrfs, "VRFs and virtual systems"}},
        {"boards", {ShowBoards, "boards of the device"}},
        {"listeners", {ShowListeners, "who hears of the host's notifications"}},
        {"views", {ShowViews, "all views"}},
        {"database", {ShowDatabase, "whether the configuration database is there"}},
        {"standby", {ShowStandby, "state and counters of the standby link"}},
    };
    return views;
}

static std::string HexText(uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", number);
    return text;
}

std::string OwnerOf(const ViewContext &context, uint32_t mid) {
    for (const auto &module : *context.modules) {
        if (module->Mid() == mid)
            return module->Name();
    }
    return HexText(mid);
}

std::string FunctionName(const void *function) {
    if (function == nullptr)
        return {};
    Dl_info info{};
    if (dladdr(function, &info) == 0 || info.dli_fname == nullptr)
        return "(unknown)";
    if (info.dli_sname != nullptr && info.dli_saddr == function)
        return info.dli_sname;
    char offset[32];
    std::snprintf(offset, sizeof offset, "+0x%zx",
                  static_cast<size_t>(static_cast<const char *>(function) - static_cast<const char *>(info.dli_fbase)));
    return std::filesystem::path(info.dli_fname).filename().string() + offset;
}

Table ShowQueues(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"number", "Queue"},
                 {"name", "Name"},
                 {"depth", "Depth"},
                 {"element_bytes", "Element"},
                 {"used", "Used"},
                 {"peak", "Peak"},
                 {"written", "Written"},
                 {"read", "Read"},
                 {"refused", "Refused"}});
    for (uint32_t number = 1; number <= QAL_MAX_QUEUES; ++number) {
        QAL_QUEUE_STATS_S stats;
        if (QAL_QueueGetStats(number, &stats) == UVELHOST_OK)
            table.Add({number, stats.szName, stats.ulDepth, stats.ulElementSize, stats.ulUsed, stats.ulPeak,
                       stats.ulWritten, stats.ulRead, stats.ulRefused});
    }
    return table;
}

Table ShowMemory(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"handle", "Handle"},
                 {"name", "Account"},
                 {"blocks", "Blocks"},
                 {"bytes", "Bytes"},
                 {"peak_bytes", "Peak"},
                 {"allocations", "Allocations"},
                 {"failures", "Failures"},
                 {"quota_bytes", "Quota"},
                 {"over_quota", "Over quota"}});
    QAL_MEM_STATS_S stats;
    for (uint32_t handle = 0; QAL_MemGetStats(handle, &stats) == UVELHOST_OK; ++handle)
        table.Add({handle, stats.szName, stats.ulBlocks, stats.ulBytes, stats.ulPeakBytes, stats.ulAllocs,
                   stats.ulFailures, stats.ulQuota, stats.ulOverQuota});
    return table;
}

Table ShowModules(const ViewContext &context, const std::vector<std::string> &) {
    Table table({{"name", "Module"}, {"mid", "Module id"}, {"file", "File"}, {"standby", "Standby"}});
    for (const auto &module : *context.modules) {
        const UVELD_STANDBY_S *standby = module->Standby();
        table.Add({module->Name(), HexText(module->Mid()), module->File(),
                   standby == nullptr ? Value() : Value(standby->ulModId)});
    }
    return table;
}

Table ShowViews(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"name", "View"}, {"help", "Shows"}});
    for (const auto &[name, view] : Views())
        table.Add({name, view.help});
    return table;
}

/* Calls the functions that the module registered for showing, and gives the lines that they print. */
Table ShowModule(const ViewContext &context, const std::vector<std::string> &arguments) {
    if (arguments.size() != 1)
        throw NoView("the name of a module is missing");
    for (const auto &module : *context.modules) {
        if (module->Name() != arguments[0])
            continue;
        Table table({{"line", "Module " + module->Name()}});
        for (std::string &line : module->Show())
            table.Add({std::move(line)});
        return table;
    }
    throw NoView("there is no module \"" + arguments[0] + "\"");
}

} // namespace uveld
