/* Defines every host operation once more, in the test executable, where the dynamic linker finds it before the host's.
 * Each is one jump through a slot that leads to the kit, so no signature has to be repeated here. */

#include "jump.h"
#include "kit.h"

#define HOST_OPERATION(name) KIT_TRAMPOLINE(name)
#include "host_operations.inc"
#undef HOST_OPERATION

__attribute__((constructor(101))) static void InstallThunks() {
#define HOST_OPERATION(name) kit_slot_##name = kit::Operation<name>::Install(#name);
#include "host_operations.inc"
#undef HOST_OPERATION
}
