/* One machine instruction: the jump of a trampoline through its slot. */
#ifndef UVEL_TESTS_KIT_JUMP_H
#define UVEL_TESTS_KIT_JUMP_H

#if defined(__x86_64__)
#define KIT_JUMP(slot) "jmp *" slot "(%rip)\n"
#elif defined(__aarch64__)
#define KIT_JUMP(slot) "adrp x16, " slot "\nldr x16, [x16, :lo12:" slot "]\nbr x16\n"
#else
#error "the kit knows no jump for this processor"
#endif

/* Defines the function `name`, which jumps to where kit_slot_<name> points. */
#define KIT_TRAMPOLINE(name)                                                                                           \
    extern "C" {                                                                                                       \
    __attribute__((used)) void *kit_slot_##name;                                                                       \
    }                                                                                                                  \
    asm(".pushsection .text\n"                                                                                         \
        ".p2align 4\n"                                                                                                 \
        ".globl " #name "\n"                                                                                           \
        ".type " #name ", %function\n" #name ":\n" KIT_JUMP("kit_slot_" #name) ".size " #name ", . - " #name "\n"      \
                                                                               ".popsection\n");

#endif
