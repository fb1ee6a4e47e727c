// Views of the library's tables: callbacks, hooks, settings, pools.

#include "views.h"

#include <charconv>
#include <uvelcommon_base/kivo_hooks.h>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/uvel_event_callback.h>

namespace uveld {

namespace {

/* Names of the hook ids, in their order; made from the public header. */
constexpr const char *HOOK_NAMES[] = {
#include "hook_names.inc"
};
static_assert(std::size(HOOK_NAMES) == KIVO_HOOK_COUNT);

constexpr uint32_t SPEC_COUNT = KIVO_COMMON_SPEC_NUM;

void AddCallback(const ViewContext &context, uint32_t event, const UVEL_EVENT_NODE_S &node, Table *table) {
    const auto value = node.ulSubKey == UVEL_EVENT_ANY_VALUE ? Value("any") : Value(node.ulSubKey);
    const auto mean = node.ulCalls == 0 ? Value() : Value(static_cast<double>(node.ulTotalMs) / node.ulCalls);
    table->Add({event, value, node.ucPriority, OwnerOf(context, node.ulMid),
                FunctionName(reinterpret_cast<const void *>(node.pfCallback)), node.ucUnregistered == 0, node.ulCalls,
                node.ulFailures, node.ulLastResult, node.ulTotalMs, mean, node.ulWorstMs});
}

/* The event number in the arguments, UVEL_EVENT_COUNT for all. */
uint32_t EventOf(const std::vector<std::string> &arguments) {
    if (arguments.empty())
        return UVEL_EVENT_COUNT;
    uint32_t event = 0;
    const std::string &text = arguments[0];
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), event);
    if (error != std::errc() || end != text.data() + text.size() || event >= UVEL_EVENT_COUNT)
        throw NoView("\"" + text + "\" is no event number (0 to " + std::to_string(UVEL_EVENT_COUNT - 1) + ")");
    return event;
}

template <typename Get>
void AddSettings(const char *kind, uint32_t count, uint32_t unset, Get get, Table *table) {
    for (uint32_t index = 0; index < count; ++index) {
        const uint32_t value = get(index);
        if (value != unset)
            table->Add({kind, index, value});
    }
}

} // namespace

/* The registry is written by the event task while this walks it: nodes are only ever freed when one is registered again
 * with another priority, which belongs to start-up. */
Table ShowCallbacks(const ViewContext &context, const std::vector<std::string> &arguments) {
    Table table({{"event", "Event"},
                 {"value", "Value"},
                 {"priority", "Priority"},
                 {"owner", "Owner"},
                 {"function", "Function"},
                 {"registered", "Registered"},
                 {"calls", "Calls"},
                 {"failures", "Failures"},
                 {"last_result", "Last result"},
                 {"total_ms", "Total ms"},
                 {"mean_ms", "Mean ms"},
                 {"worst_ms", "Worst ms"}});
    const uint32_t only = EventOf(arguments);
    if (g_szDllKIVOEvtCBRegTbl == nullptr)
        return table;
    for (uint32_t event = 0; event < UVEL_EVENT_COUNT; ++event) {
        if (only != UVEL_EVENT_COUNT && only != event)
            continue;
        const DLL_S *list = &g_szDllKIVOEvtCBRegTbl[event];
        const auto *head = reinterpret_cast<const DLL_NODE_S *>(list);
        for (const DLL_NODE_S *node = head->pstNext; node != head; node = node->pstNext)
            AddCallback(context, event, *reinterpret_cast<const UVEL_EVENT_NODE_S *>(node), &table);
    }
    return table;
}

Table ShowHooks(const ViewContext &, const std::vector<std::string> &arguments) {
    if (!arguments.empty() && arguments[0] != "installed" && arguments[0] != "empty")
        throw NoView("\"" + arguments[0] + "\" is neither installed nor empty");
    Table table({{"id", "Id"}, {"name", "Hook"}, {"function", "Installed"}});
    for (uint32_t id = 0; id < KIVO_HOOK_COUNT; ++id) {
        const KIVO_HOOK hook = KIVOShell_GetHookFunc(id);
        if (!arguments.empty() && (arguments[0] == "installed") != (hook != nullptr))
            continue;
        table.Add({id, HOOK_NAMES[id],
                   hook == nullptr ? Value() : Value(FunctionName(reinterpret_cast<const void *>(hook)))});
    }
    return table;
}

Table ShowSettings(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"kind", "Kind"}, {"number", "Number"}, {"value", "Value"}});
    AddSettings("specification", SPEC_COUNT, 0, KIVO_GetKivoCommonSpec, &table);
    AddSettings("service specification", SRVCOMMON_SPEC_NUM, 0, SRVCOMMON_GetSpecs, &table);
    AddSettings("switch", KIVO_PDT_OXM_CFG_NUM, 0, KIVO_GetPdtOxmCfgSwitch, &table);
    AddSettings("product macro", KIVO_PDT_MACRO_NUM, 0, UVEL_GetPdtMacroDefineCfg, &table);
    AddSettings("task", KIVO_TID_NUM, KIVO_NONE, UVEL_GetKivoTid, &table);
    AddSettings("module", KIVO_MODULE_ID_NUM, KIVO_NONE, KIVO_GetModuleID, &table);
    AddSettings("task priority", KIVO_TASK_PRIORITY_NUM, KIVO_NONE, UVEL_GetKivoTaskPriority, &table);
    return table;
}

Table ShowPools(const ViewContext &, const std::vector<std::string> &) {
    Table table({{"pool", "Pool"}, {"first", "First"}, {"last", "Last"}, {"used", "Used"}, {"free", "Free"}});
    for (uint32_t pool = 0; g_stTableIndex != nullptr && pool < g_ulTotalTableNum; ++pool) {
        const KIVO_TABLE_INDEX_S &record = g_stTableIndex[pool];
        if (record.pullSlots == nullptr)
            continue;
        const uint64_t size = uint64_t{record.ulMax} - record.ulMin + 1;
        table.Add({pool, record.ulMin, record.ulMax, record.ulUsed, size - record.ulUsed});
    }
    return table;
}

} // namespace uveld
