/* A scenario in memory: steps of operations on the model. */
#ifndef UVEL_HOST_SCENARIO_SCENARIO_H
#define UVEL_HOST_SCENARIO_SCENARIO_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <uvelhost/model.h>
#include <uvelhost/model_events.h>
#include <vector>

#include "yaml/document.h"

namespace uvel::host::scenario {

/* Something done in a batch; 0 or, when the model refuses it, another value. */
struct Operation {
    std::function<uint32_t(MDL_BATCH *)> apply;
    std::string refusal; /* "FILE:LINE:COLUMN: expected ..." */
};

struct Step {
    uint64_t at_ms = 0;
    uint32_t user = 0;
    std::vector<Operation> operations;
    std::vector<MDL_HA_S> roles; /* take effect when the batch has been committed */
};

/* Collects the operations of a step. */
class Operations {
  public:
    explicit Operations(Step &step) : step_(step) {}

    /* `expected` says what the model wants of the value at `place`. */
    template <typename Apply>
    void Add(const yaml::Node &place, const std::string &expected, Apply &&apply) {
        step_.operations.push_back({std::forward<Apply>(apply), place.Place() + ": expected " + expected});
    }

    void AddRole(const MDL_HA_S &role) { step_.roles.push_back(role); }

  private:
    Step &step_;
};

/* Each reads a part of the file and throws yaml::WrongDocument. */
void ReadPut(const yaml::Node &put, Operations &operations);
void ReadInterface(const yaml::Node &node, Operations &operations);
void ReadRemove(const yaml::Node &remove, Operations &operations);
void ReadRaise(const yaml::Node &raise, Operations &operations);

} // namespace uvel::host::scenario

/* The users' view of it is opaque. */
struct SCN_SCENARIO {
    uvel::host::scenario::Step device;
    bool has_device = false;
    std::vector<uvel::host::scenario::Step> steps;
    std::atomic<uint32_t> stop = 0; /* a run sleeps on it */
};

#endif
