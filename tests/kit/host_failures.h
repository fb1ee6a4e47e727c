/* The documented failures of the host operations that the library calls, and a way to bring each of them about.
 *
 *     for (const kit::FailingOperation &operation : kit::FailingOperations())
 *         for (int failure = 0; failure < operation.failures; ++failure)
 *             operation.fail(failure, 3, true);            // from the third call from now on
 *
 * The table is host_failures.inc. */
#ifndef UVEL_TESTS_KIT_HOST_FAILURES_H
#define UVEL_TESTS_KIT_HOST_FAILURES_H

#include <cstdint>
#include <vector>

namespace kit {

struct FailingOperation {
    const char *name;
    int failures; /* documented failures, told apart by their answers; 0 for an operation that never fails */

    /* The n-th call from now (1 is the next), or that and every later one, gives the answer of a failure. */
    void (*fail)(int failure, uint64_t n, bool andAllThatFollow);
    void (*stopFailing)();
    uint64_t (*calls)(); /* since the test began */
};

const std::vector<FailingOperation> &FailingOperations();

} // namespace kit

#endif
