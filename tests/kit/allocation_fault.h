/* Makes what the library asks memory for fail: blocks, the memory account itself, messages, hash tables and their nodes.
 *
 *     {
 *         kit::AllocationFault fault(3, 3);          // the third allocation from now, once
 *         ...
 *     }                                              // memory again
 *
 * One at a time. A test that says itself what one of these operations does cannot use it. */
#ifndef UVEL_TESTS_KIT_ALLOCATION_FAULT_H
#define UVEL_TESTS_KIT_ALLOCATION_FAULT_H

#include <cstdint>

namespace kit {

class AllocationFault {
  public:
    /* The allocations first to last fail, counted from 1; UINT64_MAX as both: none, they are only counted. */
    AllocationFault(uint64_t first, uint64_t last);
    ~AllocationFault();
    AllocationFault(const AllocationFault &) = delete;
    AllocationFault &operator=(const AllocationFault &) = delete;

    /* Counts one more allocation and tells whether it is to fail; for allocators that the kit does not know. */
    bool Hit() { return ++seen_ >= first_ && seen_ <= last_; }

    /* Allocations asked for so far. */
    uint64_t Seen() const { return seen_; }

    /* The one that lives, or null. */
    static AllocationFault *Current();

  private:
    uint64_t first_;
    uint64_t last_;
    uint64_t seen_ = 0;
};

} // namespace kit

#endif
