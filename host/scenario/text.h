/* Complaints, and what loading and running share. */
#ifndef UVEL_HOST_SCENARIO_TEXT_H
#define UVEL_HOST_SCENARIO_TEXT_H

#include "scenario/scenario.h"
#include <cstring>
#include <string>

namespace uvel::host::scenario {

/* Writes a text, cut to fit into `size` bytes with its terminator; nothing for null. */
inline void WriteCut(const char *text, char *out, uint32_t size) {
    if (out == nullptr || size == 0)
        return;
    const std::size_t length = strnlen(text, size - 1);
    std::memcpy(out, text, length);
    out[length] = '\0';
}

/* Carries the step's operations out in the batch; the complaint about the first that is refused, empty without one. */
std::string ApplyStep(MDL_BATCH *batch, const Step &step);

/* The same, and what the scenario put earlier and the step does not name goes. */
std::string ApplyDevice(MDL_BATCH *batch, const Step &device);

} // namespace uvel::host::scenario

#endif
