// Every host operation that a scenario calls fails in it: each of its calls, once and with all that follow, with each
// documented failure. The library neither crashes nor loses memory, and works again when the host does.

#include "host_failures.h"
#include "host_scenarios.h"

#include <algorithm>
#include <cstdio>
#include <dlfcn.h>
#include <map>
#include <set>
#include <sys/mman.h>
#include <unistd.h>
#include <uvelcommon_base/kivo_version.h>

namespace {

using namespace host_scenarios;
using kit::FailingOperation;

std::vector<Scenario> AllScenarios() {
    std::vector<Scenario> all = QueryScenarios();
    for (const auto more : {WorkScenarios, EventScenarios}) {
        const std::vector<Scenario> scenarios = more();
        all.insert(all.end(), scenarios.begin(), scenarios.end());
    }
    return all;
}

/* What the scenario says, failed assertions and fatal errors included. */
std::string Answers(const Scenario &scenario) {
    Transcript log;
    scenario.run(log);
    for (const std::string &source : kit::TakeAsserts())
        log.Say("assert " + source);
    for (const std::string &source : kit::TakeFatals())
        log.Say("fatal " + source);
    return log.Text();
}

/* One way of failing. */
struct Injection {
    const FailingOperation *operation;
    int failure;
    uint64_t call; /* from 1 */
    bool andAllThatFollow;

    std::string Text() const {
        return std::string(operation->name) + ", call " + std::to_string(call) +
               (andAllThatFollow ? " and all that follow" : "") + ", failure " + std::to_string(failure);
    }
};

/* What the children tell the test. */
struct Shared {
    uint64_t calls[512];    /* of each operation in the scenario's first run */
    char current[256];      /* injection that is being tried */
    std::size_t textLength; /* what the scenario says without fault, the second time */
    uint64_t blocks;
    char text[1 << 20];
};

class HostFailureSweep : public testing::TestWithParam<Scenario> {
  protected:
    HostFailureSweep()
        : shared_(static_cast<Shared *>(
              mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    ~HostFailureSweep() override { munmap(shared_, sizeof(Shared)); }

    /* How often the scenario calls each operation, and what it says when it is repeated. */
    void RunWithoutFault() {
        kit::InFreshProcess([this] {
            const Scenario &scenario = GetParam();
            scenario.setUp();
            const std::vector<FailingOperation> &operations = kit::FailingOperations();
            ASSERT_LE(operations.size(), std::size(shared_->calls));
            std::vector<uint64_t> before;
            for (const FailingOperation &operation : operations)
                before.push_back(operation.calls());
            Answers(scenario);
            for (std::size_t i = 0; i < operations.size(); ++i)
                shared_->calls[i] = operations[i].calls() - before[i];
            const std::string text = Answers(scenario);
            EXPECT_EQ(text, Answers(scenario)) << "the scenario itself changes what it says";
            ASSERT_LT(text.size(), sizeof shared_->text);
            std::copy(text.begin(), text.end(), shared_->text);
            shared_->textLength = text.size();
            shared_->blocks = kit::LiveBlocksOfAllAccounts();
        });
    }

    std::vector<Injection> Injections() const {
        std::vector<Injection> all;
        const std::vector<FailingOperation> &operations = kit::FailingOperations();
        for (std::size_t i = 0; i < operations.size(); ++i)
            for (int failure = 0; failure < operations[i].failures; ++failure)
                for (uint64_t call = 1; call <= shared_->calls[i]; ++call)
                    for (const bool forever : {false, true})
                        all.push_back({&operations[i], failure, call, forever});
        return all;
    }

    /* In the child: the scenario with the failure, and without it again. */
    void Try(const Injection &injection) {
        std::snprintf(shared_->current, sizeof shared_->current, "%s", injection.Text().c_str());
        injection.operation->fail(injection.failure, injection.call, injection.andAllThatFollow);
        Answers(GetParam());
        injection.operation->stopFailing();
        Answers(GetParam()); /* whatever is only done once is done now */
        EXPECT_EQ(std::string(shared_->text, shared_->textLength), Answers(GetParam()))
            << "after: " << shared_->current;
        EXPECT_LE(kit::LiveBlocksOfAllAccounts(), shared_->blocks) << "memory lost after: " << shared_->current;
    }

    /* The injections from first to last in one child; they stand on each other's shoulders. */
    void TryInOneProcess(const std::vector<Injection> &injections, std::size_t first, std::size_t last) {
        kit::InFreshProcess([&] {
            alarm(60);
            GetParam().setUp();
            for (std::size_t i = first; i < last && !HasFailure(); ++i)
                Try(injections[i]);
        });
        if (HasFailure())
            ADD_FAILURE() << "with " << shared_->current;
    }

    Shared *shared_;
};

TEST_P(HostFailureSweep, CrashesNothingLosesNothingAndEndsWhenTheHostWorksAgain) {
    RunWithoutFault();
    const std::vector<Injection> injections = Injections();
    const std::size_t step = GetParam().life == Life::ONCE ? 1 : std::max<std::size_t>(1, injections.size());
    for (std::size_t first = 0; first < injections.size() && !HasFailure(); first += step)
        TryInOneProcess(injections, first, std::min(first + step, injections.size()));
    std::printf("%zu host failures injected\n", injections.size());
    RecordProperty("injections", static_cast<int>(injections.size()));
}

INSTANTIATE_TEST_SUITE_P(Scenarios, HostFailureSweep, testing::ValuesIn(AllScenarios()),
                         [](const testing::TestParamInfo<Scenario> &given) { return std::string(given.param.name); });

/* ---- the table of failures ---- */

/* Names that the built library leaves to others, as the linker's tool tells them. */
std::set<std::string> ImportsOfTheLibrary() {
    Dl_info info{};
    EXPECT_NE(0, dladdr(reinterpret_cast<const void *>(&UVEL_GetVersion), &info));
    const std::string command = std::string("nm -D --undefined-only '") + info.dli_fname + "'";
    FILE *pipe = popen(command.c_str(), "r");
    EXPECT_NE(nullptr, pipe);
    std::set<std::string> names;
    char line[512];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        char name[256] = "";
        if (std::sscanf(line, " %*1s %255[A-Za-z0-9_]", name) == 1)
            names.insert(name);
    }
    EXPECT_EQ(0, pclose(pipe));
    return names;
}

TEST(HostFailureTable, HasARowForEachHostOperationThatTheLibraryCallsAndNoOther) {
    static constexpr const char *HOST_OPERATIONS[] = {
#define HOST_OPERATION(name) #name,
#include "host_operations.inc"
#undef HOST_OPERATION
    };
    const std::set<std::string> imports = ImportsOfTheLibrary();
    std::set<std::string> called, rows;
    for (const char *operation : HOST_OPERATIONS) {
        if (imports.count(operation) != 0)
            called.insert(operation);
    }
    for (const FailingOperation &operation : kit::FailingOperations())
        EXPECT_TRUE(rows.insert(operation.name).second) << operation.name << " has two rows";
    EXPECT_GT(called.size(), 100u);
    EXPECT_EQ(called, rows);
}

/* Each operation that can fail does so in some scenario. */
TEST(HostFailureTable, IsSweptWhole) {
    std::set<std::string> untried;
    for (const FailingOperation &operation : kit::FailingOperations()) {
        if (operation.failures > 0)
            untried.insert(operation.name);
    }
    auto *called = static_cast<char *>(mmap(nullptr, 512, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    for (const Scenario &scenario : AllScenarios()) {
        kit::InFreshProcess([&] {
            scenario.setUp();
            Answers(scenario);
            const std::vector<FailingOperation> &operations = kit::FailingOperations();
            for (std::size_t i = 0; i < operations.size(); ++i)
                called[i] = static_cast<char>(called[i] | (operations[i].calls() > 0 ? 1 : 0));
        });
    }
    const std::vector<FailingOperation> &operations = kit::FailingOperations();
    for (std::size_t i = 0; i < operations.size(); ++i) {
        if (called[i] != 0)
            untried.erase(operations[i].name);
    }
    munmap(called, 512);
    EXPECT_EQ(std::set<std::string>{}, untried) << "no scenario calls these";
}

} // namespace
