#include "allocation_fault.h"

#include "kit.h"

namespace kit {

namespace {

/* In place of an operation that gives memory: asks the fault first. */
template <auto Fn, typename R, typename... A>
void Guard(AllocationFault &fault, R failure, R (*)(A...)) {
    Op<Fn>().Does([&fault, failure](A... arguments) { return fault.Hit() ? failure : Op<Fn>().Real(arguments...); });
}

AllocationFault *g_current = nullptr;

} // namespace

AllocationFault *AllocationFault::Current() {
    return g_current;
}

AllocationFault::AllocationFault(uint64_t first, uint64_t last) : first_(first), last_(last) {
    g_current = this;
    Guard<QAL_MemAlloc>(*this, static_cast<void *>(nullptr), QAL_MemAlloc);
    Guard<QAL_MemAlloc_F>(*this, static_cast<void *>(nullptr), QAL_MemAlloc_F);
    Guard<QAL_MemReAlloc>(*this, static_cast<void *>(nullptr), QAL_MemReAlloc);
    Guard<QAL_HandleInitialize>(*this, uint32_t{1}, QAL_HandleInitialize);
    Guard<IPC_AllocMsg_X>(*this, static_cast<void *>(nullptr), IPC_AllocMsg_X);
    Guard<LITE_HASH_CreateWithListCurr>(*this, static_cast<LITE_HASH_S *>(nullptr), LITE_HASH_CreateWithListCurr);
    Guard<LITE_HASH_NewData>(*this, static_cast<void *>(nullptr), LITE_HASH_NewData);
}

AllocationFault::~AllocationFault() {
    g_current = nullptr;
    Op<QAL_MemAlloc>().Does(nullptr);
    Op<QAL_MemAlloc_F>().Does(nullptr);
    Op<QAL_MemReAlloc>().Does(nullptr);
    Op<QAL_HandleInitialize>().Does(nullptr);
    Op<IPC_AllocMsg_X>().Does(nullptr);
    Op<LITE_HASH_CreateWithListCurr>().Does(nullptr);
    Op<LITE_HASH_NewData>().Does(nullptr);
}

} // namespace kit
