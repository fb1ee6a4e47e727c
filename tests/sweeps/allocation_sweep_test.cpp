// Every allocation of every scenario fails once, and once with all that follow it.

#include "allocation_fault.h"
#include "kit.h"
#include "scenario.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

using sweeps::Entry;
using sweeps::Process;

uint64_t g_injected = 0;

struct Outcome {
    uint64_t allocations;
    uint64_t blocks; /* on all accounts when all is over */
};

/* One life of a scenario, with the allocations first to last of its operation failing. */
Outcome Live(const Entry &entry, uint64_t first, uint64_t last) {
    const std::unique_ptr<sweeps::Scenario> scenario = entry.make();
    scenario->SetUp();
    uint64_t seen = 0;
    {
        kit::AllocationFault fault(first, last);
        scenario->Operate(false);
        seen = fault.Seen();
    }
    kit::TakeAsserts();
    kit::TakeFatals();
    scenario->Operate(true);
    scenario->TearDown();
    return {seen, kit::LiveBlocksOfAllAccounts()};
}

/* The same in a process of its own; what it counted comes back through a pipe. */
Outcome LiveApart(const Entry &entry, uint64_t first, uint64_t last) {
    int ends[2];
    EXPECT_EQ(0, pipe(ends));
    kit::InFreshProcess([&] {
        const Outcome outcome = Live(entry, first, last);
        EXPECT_EQ(static_cast<ssize_t>(sizeof outcome), write(ends[1], &outcome, sizeof outcome));
    });
    close(ends[1]);
    Outcome outcome{};
    EXPECT_EQ(static_cast<ssize_t>(sizeof outcome), read(ends[0], &outcome, sizeof outcome));
    close(ends[0]);
    return outcome;
}

class AllocationSweep : public testing::TestWithParam<Entry> {};

TEST_P(AllocationSweep, LosesNothingAndWorksAgainAfterwards) {
    const Entry &entry = GetParam();
    const auto live = entry.process == Process::OWN ? LiveApart : Live;
    live(entry, UINT64_MAX, UINT64_MAX); /* what is opened once in a process is open now */
    const Outcome clean = live(entry, UINT64_MAX, UINT64_MAX);
    EXPECT_GT(clean.allocations, 0u);
    for (uint64_t k = 1; k <= clean.allocations && !HasFailure(); ++k) {
        for (const uint64_t last : {k, UINT64_MAX}) {
            const Outcome outcome = live(entry, k, last);
            ++g_injected;
            EXPECT_LE(outcome.blocks, clean.blocks) << "memory lost";
            EXPECT_TRUE(outcome.blocks == clean.blocks || entry.process == Process::OWN) << "memory freed twice";
            if (HasFailure()) {
                ADD_FAILURE() << "when allocation " << k << (last == k ? " fails" : " and all that follow fail");
                return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, AllocationSweep, testing::ValuesIn(sweeps::Scenarios()),
                         [](const testing::TestParamInfo<Entry> &each) { return each.param.name; });

/* Says how much was tried, and requires enough of it of a run that left nothing out. */
class Total : public testing::Environment {
    void TearDown() override {
        const testing::UnitTest &all = *testing::UnitTest::GetInstance();
        std::printf("%llu allocations failed in %zu scenarios\n", static_cast<unsigned long long>(g_injected),
                    sweeps::Scenarios().size());
        if (all.test_to_run_count() == all.total_test_count()) {
            EXPECT_GE(g_injected, 10'000u);
        }
    }
};

const testing::Environment *const g_total = testing::AddGlobalTestEnvironment(new Total);

} // namespace
