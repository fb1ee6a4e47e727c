#include "scenario.h"

#include <algorithm>
#include <tuple>

namespace sweeps {

namespace {

std::vector<Entry> &Registry() {
    static std::vector<Entry> registry;
    return registry;
}

} // namespace

std::vector<Entry> Scenarios() {
    std::vector<Entry> all = Registry();
    std::sort(all.begin(), all.end(), [](const Entry &a, const Entry &b) {
        return std::tuple(a.process != Process::OWN, a.name) < std::tuple(b.process != Process::OWN, b.name);
    });
    return all;
}

void PrintTo(const Entry &entry, std::ostream *out) {
    *out << entry.name;
}

bool Add(Entry entry) {
    Registry().push_back(std::move(entry));
    return true;
}

} // namespace sweeps
