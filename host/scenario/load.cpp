/* Reading a scenario: its outline, its times, and the trial that refuses what the model would refuse. */
#include <uvelhost/scenario.h>

#include "scenario/scenario.h"
#include "scenario/text.h"
#include "scenario/values.h"
#include <memory>

using namespace uvel::host::scenario;
namespace yaml = uvel::yaml;

namespace {

constexpr int64_t MAX_TIME_MS = 366LL * 24 * 3600 * 1000;

Step ReadStep(const yaml::Node &node, uint64_t before) {
    const yaml::Fields fields(node, {"at", "after", "user", "put", "remove", "raise"});
    Step step;
    if (fields.Has("at") == fields.Has("after"))
        node.Complain("expected either \"at\" or \"after\"");
    if (const auto after = fields.Optional("after"))
        step.at_ms = before + static_cast<uint64_t>(after->Milliseconds(0, MAX_TIME_MS));
    if (const auto at = fields.Optional("at")) {
        step.at_ms = static_cast<uint64_t>(at->Milliseconds(0, MAX_TIME_MS));
        if (step.at_ms < before)
            at->Refuse("a time not before the step above (" + std::to_string(before) + "ms)");
    }
    if (const auto user = fields.Optional("user"))
        step.user = ReadU32(*user);
    Operations operations(step);
    if (const auto put = fields.Optional("put"))
        ReadPut(*put, operations);
    if (const auto remove = fields.Optional("remove"))
        ReadRemove(*remove, operations);
    if (const auto raise = fields.Optional("raise"))
        ReadRaise(*raise, operations);
    return step;
}

void Read(const yaml::Node &document, SCN_SCENARIO &scenario) {
    const yaml::Fields fields(document, {"device", "steps"});
    if (const auto device = fields.Optional("device")) {
        scenario.has_device = true;
        Operations operations(scenario.device);
        ReadPut(*device, operations);
    }
    if (const auto steps = fields.Optional("steps"))
        for (const yaml::Node &node : steps->Items())
            scenario.steps.push_back(ReadStep(node, scenario.steps.empty() ? 0 : scenario.steps.back().at_ms));
}

/* Does everything in one batch that is given up; throws what the model refuses. */
void Try(const SCN_SCENARIO &scenario) {
    const std::unique_ptr<MDL_BATCH, void (*)(MDL_BATCH *)> batch(MDL_Begin(MDL_FEEDER_SCENARIO, 0), MDL_Abort);
    if (batch == nullptr)
        throw yaml::WrongDocument("a scenario cannot be loaded while this thread changes the model");
    std::string refusal = scenario.has_device ? ApplyDevice(batch.get(), scenario.device) : std::string();
    for (const Step &step : scenario.steps)
        refusal = refusal.empty() ? ApplyStep(batch.get(), step) : refusal;
    if (!refusal.empty())
        throw yaml::WrongDocument(refusal);
}

template <typename LoadDocument>
SCN_SCENARIO *Load(char *error, uint32_t size, LoadDocument &&load) noexcept {
    try {
        auto scenario = std::make_unique<SCN_SCENARIO>();
        Read(load(), *scenario);
        Try(*scenario);
        return scenario.release();
    } catch (const std::exception &wrong) {
        WriteCut(wrong.what(), error, size);
        return nullptr;
    }
}

} // namespace

SCN_SCENARIO *SCN_Load(const char *pszPath, char *pszError, uint32_t ulSize) {
    return Load(pszError, ulSize, [&] { return yaml::LoadFile(pszPath == nullptr ? "" : pszPath); });
}

SCN_SCENARIO *SCN_LoadText(const char *pszText, const char *pszName, char *pszError, uint32_t ulSize) {
    return Load(pszError, ulSize, [&] {
        return yaml::LoadText(pszText == nullptr ? "" : pszText, pszName == nullptr ? "scenario" : pszName);
    });
}

void SCN_Free(SCN_SCENARIO *pstScenario) {
    delete pstScenario;
}
