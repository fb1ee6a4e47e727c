#include "securec_faults.h"

#include "jump.h"

#include <cstdarg>

KIT_TRAMPOLINE(memcpy_s)
KIT_TRAMPOLINE(memmove_s)
KIT_TRAMPOLINE(memset_s)
KIT_TRAMPOLINE(strcpy_s)
KIT_TRAMPOLINE(strncpy_s)
KIT_TRAMPOLINE(strcat_s)
KIT_TRAMPOLINE(vsprintf_s)
KIT_TRAMPOLINE(sprintf_s)
KIT_TRAMPOLINE(snprintf_s)
KIT_TRAMPOLINE(snprintf_truncated_s)
KIT_TRAMPOLINE(sscanf_s)

namespace {

int Failing(...) {
    return -1;
}

void *g_beforeSecond;

/* Works once and brings Failing into its place. */
int WorkingOnce(char *dest, size_t destMax, const char *format, ...) {
    kit_slot_snprintf_truncated_s = reinterpret_cast<void *>(&Failing);
    va_list list;
    va_start(list, format);
    const int length = vsnprintf_truncated_s(dest, destMax, format, list);
    va_end(list);
    return length;
}

void **SlotOf(kit::Variadic function) {
    switch (function) {
    case kit::Variadic::SPRINTF_S:
        return &kit_slot_sprintf_s;
    case kit::Variadic::SNPRINTF_S:
        return &kit_slot_snprintf_s;
    case kit::Variadic::SNPRINTF_TRUNCATED_S:
        return &kit_slot_snprintf_truncated_s;
    case kit::Variadic::VSPRINTF_S:
        return &kit_slot_vsprintf_s;
    case kit::Variadic::SSCANF_S:
        break;
    }
    return &kit_slot_sscanf_s;
}

__attribute__((constructor(101))) void InstallThunks() {
    kit_slot_memcpy_s = kit::Operation<memcpy_s>::Install("memcpy_s");
    kit_slot_memmove_s = kit::Operation<memmove_s>::Install("memmove_s");
    kit_slot_memset_s = kit::Operation<memset_s>::Install("memset_s");
    kit_slot_strcpy_s = kit::Operation<strcpy_s>::Install("strcpy_s");
    kit_slot_strncpy_s = kit::Operation<strncpy_s>::Install("strncpy_s");
    kit_slot_strcat_s = kit::Operation<strcat_s>::Install("strcat_s");
    kit_slot_vsprintf_s = kit::detail::RealOperation("vsprintf_s");
    kit_slot_sprintf_s = kit::detail::RealOperation("sprintf_s");
    kit_slot_snprintf_s = kit::detail::RealOperation("snprintf_s");
    kit_slot_snprintf_truncated_s = kit::detail::RealOperation("snprintf_truncated_s");
    kit_slot_sscanf_s = kit::detail::RealOperation("sscanf_s");
}

} // namespace

namespace kit {

PrintFault::PrintFault(Variadic function) : slot_(SlotOf(function)), before_(*slot_) {
    *slot_ = reinterpret_cast<void *>(&Failing);
}

PrintFault::~PrintFault() {
    *slot_ = before_;
}

SecondPrintFault::SecondPrintFault() {
    g_beforeSecond = kit_slot_snprintf_truncated_s;
    kit_slot_snprintf_truncated_s = reinterpret_cast<void *>(&WorkingOnce);
}

SecondPrintFault::~SecondPrintFault() {
    kit_slot_snprintf_truncated_s = g_beforeSecond;
}

} // namespace kit
