/* Scenarios: pieces of work for the library that a sweep repeats while the host refuses one thing after the other.
 *
 * A scenario is a class. For every run a sweep makes a new one and calls
 *     SetUp          the host is in order
 *     Operate(false) the host refuses something. The scenario compares what the library did with what it answered: a
 *                    refused step has changed nothing, and every other step has done its work
 *     Operate(true)  the host is in order again, and so every step succeeds
 *     TearDown       what SetUp made goes; a run leaves no memory behind
 * so a scenario says once what it does, and `faultless` only adds that it must succeed.
 *
 *     const bool added = sweeps::Add<UseATable>("ordered table");
 *
 * What a run does to the process for good (start-up, registrations) needs sweeps::Process::OWN: each run has a process
 * of its own then, and what a run without faults leaves behind counts as kept on purpose; with faults it may be less. */
#ifndef UVEL_TESTS_SWEEPS_SCENARIO_H
#define UVEL_TESTS_SWEEPS_SCENARIO_H

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace sweeps {

class Scenario {
  public:
    Scenario() = default;
    virtual ~Scenario() = default;
    Scenario(const Scenario &) = delete;
    Scenario &operator=(const Scenario &) = delete;

    virtual void SetUp() {}
    virtual void Operate(bool faultless) = 0;
    virtual void TearDown() {}
};

enum class Process { SHARED, OWN };

struct Entry {
    std::string name; /* letters, digits and underscores: part of the tests' names */
    Process process;
    std::unique_ptr<Scenario> (*make)();
};

/* All scenarios, by name; those with processes of their own first, while the process is fresh. */
std::vector<Entry> Scenarios();

void PrintTo(const Entry &entry, std::ostream *out);

bool Add(Entry entry);

template <typename S>
bool Add(const char *name, Process process = Process::SHARED) {
    return Add(Entry{name, process, []() -> std::unique_ptr<Scenario> { return std::make_unique<S>(); }});
}

} // namespace sweeps

#endif
